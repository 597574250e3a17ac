// The host's side of the session registry: publishing receivers (C and C++)
// and the copy-data time-out.
#include <orvobasic/session.h>

#include "platform/SessionRegistry.h"

using namespace ob;

intptr_t ob::PublishWindow(const CString& title, CopyDataHandler handler) {
    if (!handler) return 0;
    try {
        return static_cast<intptr_t>(platform::SessionRegistry::Instance().Publish(
            title, [handler](platform::copydata::Request&& message, platform::CopyDataReply&& reply) {
                reply.Answer(handler(static_cast<intptr_t>(message.sender), message.code, CString(message.text)));
            }));
    } catch (...) {
        return 0;
    }
}

bool ob::UnpublishWindow(intptr_t handle) {
    try {
        return platform::SessionRegistry::Instance().Unpublish(handle);
    } catch (...) {
        return false;
    }
}

extern "C" {

OB_API intptr_t OB_PublishWindow(const char* titleUtf8, OB_CopyDataCallback callback, void* user) {
    if (!titleUtf8 || !callback) return 0;
    try {
        return ob::PublishWindow(CString::FromUtf8(titleUtf8),
                                 [callback, user](intptr_t sender, uint32_t code, const CString& text) {
                                     return callback(user, sender, code, text.ToUtf8().c_str());
                                 });
    } catch (...) {
        return 0;
    }
}

OB_API int32_t OB_UnpublishWindow(intptr_t handle) { return ob::UnpublishWindow(handle) ? 1 : 0; }

OB_API void OB_SetCopyDataTimeout(int32_t milliseconds) { platform::SetCopyDataTimeout(milliseconds); }

}  // extern "C"
