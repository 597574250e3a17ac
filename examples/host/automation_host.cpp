// A small C++ host that offers its scripts an object of its own: a
// thermostat with a reading, a set point the script may change within
// limits, and a log the script writes to. Its desktop prints what the
// script shows (print, the box of a failed call) to stdout.
//
//   c++ -std=c++20 automation_host.cpp $(pkg-config --cflags --libs orvobasic) -o automation_host
//   ./automation_host thermostat.bas
#include <orvobasic/CAutomationObject.h>
#include <orvobasic/desktop.h>
#include <orvobasic/orvobasic.h>

#include <cstdio>
#include <string>

class Thermostat : public ob::CAutomationObject {
public:
    Thermostat() : CAutomationObject(u"Host.Thermostat") {
        AddProperty(u"Reading", [this] { return CVarBase(m_reading); });
        AddProperty(u"SetPoint", [this] { return CVarBase(m_setPoint); },
                    [this](const CVarBase& value) {
                        long wanted = value.GetLongValue();
                        if (wanted < 5 || wanted > 30) throw ob::AutomationError("set point out of range 5..30");
                        m_setPoint = wanted;
                    });
        AddMethod(u"Log", 1, [](const Args& args) {
            std::printf("[log] %s\n", args[0].GetStringValue().ToUtf8().c_str());
            return CVarBase();
        });
    }

private:
    double m_reading = 19.5;
    long m_setPoint = 20;
};

// Message boxes as lines on stdout.
class PrintingDesktop : public ob::ui::Desktop {
public:
    int MessageBox(const CString& text, unsigned) override {
        std::string line = text.ToUtf8();
        if (!line.empty() && line.back() == '\n') line.pop_back();
        std::printf("[box] %s\n", line.c_str());
        return ob::ui::IDOK;
    }
};

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s SCRIPT\n", argv[0]);
        return 64;
    }
    PrintingDesktop desktop;
    ob::ui::SetDesktop(&desktop);
    ob::RegisterAutomationClass(u"Host.Thermostat", [] { return static_cast<IDispatch*>(new Thermostat); });

    OB_HANDLE script = OB_ExecuteScriptFileUtf8(argv[1], nullptr);
    if (!script) return 2;
    OB_FreeScript(script);   // releases every object the script still holds
    ob::ui::SetDesktop(nullptr);
    std::printf("done\n");
    return 0;
}
