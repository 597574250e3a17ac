// Sounds through the event-sound library, loaded with the first sound: a
// script that plays none does not load it, nor the codecs and database it
// brings along, when it starts. One context for the process, made then and
// kept until exit, so that a sound still playing when the statement has
// returned is not cut off.
#include "platform/Sound.h"

#include <canberra.h>
#include <dlfcn.h>

#include <mutex>

namespace ob::platform {

namespace {

// The run-time name of the library (its interface version).
constexpr const char* kLibrary = "libcanberra.so.0";

// The library's entry points used here, typed as it declares them.
struct Canberra {
    decltype(&ca_context_create) create = nullptr;
    decltype(&ca_context_change_props) changeProps = nullptr;
    decltype(&ca_context_play) play = nullptr;
    ca_context* context = nullptr;
};

template <typename Function>
bool Resolve(void* library, const char* name, Function& out) {
    out = reinterpret_cast<Function>(dlsym(library, name));
    return out != nullptr;
}

// Null when there is no library or no sound service.
const Canberra* Loaded() {
    static Canberra canberra;
    static std::once_flag once;
    std::call_once(once, [] {
        void* library = dlopen(kLibrary, RTLD_NOW | RTLD_LOCAL);
        if (!library) return;
        Canberra found;
        ca_context* made = nullptr;
        if (!Resolve(library, "ca_context_create", found.create) ||
            !Resolve(library, "ca_context_change_props", found.changeProps) ||
            !Resolve(library, "ca_context_play", found.play) || found.create(&made) != CA_SUCCESS) {
            dlclose(library);
            return;
        }
        found.changeProps(made, CA_PROP_APPLICATION_NAME, "OrvoBasic", nullptr);
        found.context = made;
        canberra = found;   // the library stays loaded: the context lives in it
    });
    return canberra.context ? &canberra : nullptr;
}

}  // namespace

bool PlaySoundFile(const std::string& path) {
    if (path.empty()) return false;
    const Canberra* canberra = Loaded();
    if (!canberra) return false;
    return canberra->play(canberra->context, 0, CA_PROP_MEDIA_FILENAME, path.c_str(), nullptr) == CA_SUCCESS;
}

}  // namespace ob::platform
