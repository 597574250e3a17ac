#include "ui/DialogPublication.h"

#include "ui/ScriptDialog.h"

#include <orvobasic/desktop.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace ob {

namespace {

// How often the script's thread looks for messages while the window runs.
constexpr unsigned kPollMs = 20;

thread_local std::vector<CDialogPublication*> t_published;

// The handler's value as an answer: truncated, NaN 0, saturated.
int64_t AnswerOf(const CBasicVariable& value) {
    double number = value.GetNumberValue();
    if (std::isnan(number)) return 0;
    if (number >= 9.2e18) return INT64_MAX;
    if (number <= -9.2e18) return INT64_MIN;
    return static_cast<int64_t>(number);
}

}  // namespace

CDialogPublication::CDialogPublication(COrvoBasic& basic, CScriptWindow& window)
    : m_basic(basic), m_window(window), m_desktop(basic.Desktop()), m_mailbox(std::make_shared<Mailbox>()) {}

std::unique_ptr<CDialogPublication> CDialogPublication::Publish(COrvoBasic& basic, CScriptWindow& window,
                                                                const CString& title) {
    std::unique_ptr<CDialogPublication> publication(new CDialogPublication(basic, window));
    std::shared_ptr<Mailbox> mailbox = publication->m_mailbox;
    publication->m_handle = platform::SessionRegistry::Instance().Publish(
        title, [mailbox](platform::copydata::Request&& message, platform::CopyDataReply&& reply) {
            std::lock_guard lock(mailbox->lock);
            mailbox->pending.emplace_back(std::move(message), std::move(reply));
        });
    if (!publication->m_handle) return nullptr;
    publication->m_timer = publication->m_desktop.SetTimer(kPollMs, &CDialogPublication::Tick, publication.get());
    t_published.push_back(publication.get());
    return publication;
}

CDialogPublication::~CDialogPublication() {
    t_published.erase(std::remove(t_published.begin(), t_published.end(), this), t_published.end());
    if (m_timer) m_desktop.KillTimer(m_timer);
    platform::SessionRegistry::Instance().Unpublish(m_handle);
    std::lock_guard lock(m_mailbox->lock);
    m_mailbox->pending.clear();
}

CDialogPublication* CDialogPublication::OnThisThread(int64_t handle) {
    for (CDialogPublication* p : t_published)
        if (p->m_handle == handle) return p;
    return nullptr;
}

void CDialogPublication::Tick(void* context, unsigned) {
    static_cast<CDialogPublication*>(context)->DeliverPending();
}

// One message at a time: a handler may run a nested modal loop, whose ticks
// deliver the next ones, or end the window, which destroys this object
// only after the handler has returned to its modal loop.
void CDialogPublication::DeliverPending() {
    for (;;) {
        std::pair<platform::copydata::Request, platform::CopyDataReply> next;
        {
            std::lock_guard lock(m_mailbox->lock);
            if (m_mailbox->pending.empty()) return;
            next = std::move(m_mailbox->pending.front());
            m_mailbox->pending.pop_front();
        }
        next.second.Answer(Deliver(next.first));
    }
}

int64_t CDialogPublication::Deliver(const platform::copydata::Request& message) {
    if (m_basic.RunAbandoned()) return 0;
    CArgArray args;
    args.emplace_back(static_cast<double>(message.code));
    args.emplace_back(CString(message.text));
    args.emplace_back(static_cast<double>(message.sender));
    CBasicVariable result;
    try {
        m_basic.EventThrow(u"OnCopyData", args, result);
    } catch (const ScriptAbort&) {
        m_window.OnEventAborted();
        return 0;
    }
    return AnswerOf(result);
}

void PublishScriptWindow(COrvoBasic& basic, CScriptWindow& window) {
    if (window.m_hWnd && !window.m_publication)
        window.m_publication = CDialogPublication::Publish(basic, window, basic.Desktop().GetWindowText(window.m_hWnd));
}

void UnpublishScriptWindow(CScriptWindow& window) { window.m_publication.reset(); }

}  // namespace ob
