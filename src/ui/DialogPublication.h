// A running script dialog or property sheet published in the session
// registry under its caption, so that other processes find it with
// "getwindowhandle" and send it "copydata".
//
// Messages wait in a mailbox that a desktop timer of the script's thread
// empties, so they arrive on that thread inside the window's modal loop, as
// the window's other messages do. Each raises the script event
// "OnCopyData" with three arguments: the code, the text and the sender's
// handle; the number the (last) handler returns is the answer, 0 when no
// handler runs or it returns nothing.
#pragma once

#include "platform/SessionRegistry.h"

#include <orvobasic/COrvoBasic.h>

#include <deque>
#include <memory>
#include <mutex>
#include <utility>

namespace ob::ui {
class Desktop;
}

namespace ob {

class CScriptWindow;

class CDialogPublication {
public:
    // Null when the session registry cannot be used.
    static std::unique_ptr<CDialogPublication> Publish(COrvoBasic& basic, CScriptWindow& window, const CString& title);
    // Withdraws the window; messages not yet delivered get no answer.
    ~CDialogPublication();
    CDialogPublication(const CDialogPublication&) = delete;
    CDialogPublication& operator=(const CDialogPublication&) = delete;

    int64_t Handle() const { return m_handle; }
    // Raises "OnCopyData" now, on the calling thread; returns the answer.
    int64_t Deliver(const platform::copydata::Request& message);

    // A window published on this thread with this handle, or null: a script
    // sending to its own dialog is answered directly, since its thread
    // cannot run the modal loop while it waits.
    static CDialogPublication* OnThisThread(int64_t handle);

private:
    struct Mailbox {
        std::mutex lock;
        std::deque<std::pair<platform::copydata::Request, platform::CopyDataReply>> pending;
    };

    CDialogPublication(COrvoBasic& basic, CScriptWindow& window);
    static void Tick(void* context, unsigned timerId);
    void DeliverPending();

    COrvoBasic& m_basic;
    CScriptWindow& m_window;
    ui::Desktop& m_desktop;
    std::shared_ptr<Mailbox> m_mailbox;
    int64_t m_handle = 0;
    unsigned m_timer = 0;
};

}  // namespace ob
