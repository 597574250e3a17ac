// The process-wide registry of automation classes: programmatic identifiers
// (matched without regard to case) and the factories that make their objects.
#include <orvobasic/CAutomationObject.h>
#include <orvobasic/automation.h>

#include <mutex>
#include <string>
#include <unordered_map>

namespace ob {

namespace {

struct Registry {
    std::mutex lock;
    std::unordered_map<std::u16string, AutomationFactory> factories;
};

Registry& TheRegistry() {
    static Registry registry;
    return registry;
}

std::u16string Key(const CString& progid) {
    CString key = progid;
    key.MakeLower();
    return key;
}

}  // namespace

bool RegisterAutomationClass(const CString& progid, AutomationFactory factory) {
    if (progid.empty()) return false;
    Registry& registry = TheRegistry();
    std::lock_guard<std::mutex> guard(registry.lock);
    if (factory)
        registry.factories[Key(progid)] = std::move(factory);
    else
        registry.factories.erase(Key(progid));
    return true;
}

IDispatch* CreateAutomationObject(const CString& progid, HRESULT* code) {
    AutomationFactory factory;
    {
        Registry& registry = TheRegistry();
        std::lock_guard<std::mutex> guard(registry.lock);
        auto found = registry.factories.find(Key(progid));
        if (found != registry.factories.end()) factory = found->second;
    }
    IDispatch* object = nullptr;
    HRESULT result = CO_E_CLASSSTRING;
    if (factory) {
        try {
            object = factory();   // outside the lock: a factory may register classes itself
        } catch (...) {
            object = nullptr;
        }
        result = object ? S_OK : E_FAIL;
    }
    if (code) *code = result;
    return object;
}

}  // namespace ob

namespace {

int32_t RegisterFromC(const CString& progid, OB_AutomationFactory factory) {
    try {
        ob::AutomationFactory wrapped;
        if (factory) wrapped = [factory, progid] { return factory(progid.c_str()); };
        return ob::RegisterAutomationClass(progid, std::move(wrapped)) ? 1 : 0;
    } catch (...) {
        return 0;
    }
}

}  // namespace

extern "C" {

int32_t OB_RegisterAutomationClass(const char16_t* progid, OB_AutomationFactory factory) {
    try {
        return RegisterFromC(progid ? CString(progid) : CString(), factory);
    } catch (...) {
        return 0;
    }
}

int32_t OB_RegisterAutomationClassUtf8(const char* progid, OB_AutomationFactory factory) {
    try {
        return RegisterFromC(CString::FromUtf8(progid ? progid : ""), factory);
    } catch (...) {
        return 0;
    }
}

}  // extern "C"
