// Sounds through the event-sound library: one context for the process,
// made on first use and kept until exit, so that a sound still playing when
// the statement has returned is not cut off.
#include "platform/Sound.h"

#include <canberra.h>

#include <mutex>

namespace ob::platform {

namespace {

ca_context* Context() {
    static ca_context* context = nullptr;
    static std::once_flag once;
    std::call_once(once, [] {
        ca_context* made = nullptr;
        if (ca_context_create(&made) != CA_SUCCESS) return;
        ca_context_change_props(made, CA_PROP_APPLICATION_NAME, "OrvoBasic", nullptr);
        context = made;
    });
    return context;
}

}  // namespace

bool PlaySoundFile(const std::string& path) {
    if (path.empty()) return false;
    ca_context* context = Context();
    if (!context) return false;
    return ca_context_play(context, 0, CA_PROP_MEDIA_FILENAME, path.c_str(), nullptr) == CA_SUCCESS;
}

}  // namespace ob::platform
