// Compiled text assignments and built-in calls against the text path where
// the host changes what a name means while a loop runs, and where a watch
// sees every append.
#include <gtest/gtest.h>

#include <orvobasic/COrvoBasic.h>
#include <orvobasic/orvobasic.h>

#include "HostTestUtil.h"

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

using ob::test::ScopedDesktop;

struct Outcome {
    std::vector<std::string> printed;
    std::vector<std::string> errors;
    bool operator==(const Outcome&) const = default;
};

// "host" for any arguments: what "right" means once the host adds it.
void HostRight(OB_HANDLE, const VARIANT*, int32_t, VARIANT* result, void*) {
    result->vt = VT_BSTR;
    result->bstrVal = SysAllocString(u"host");
}

// Adds "right" to the host's functions, shadowing the built-in.
void AddRight(OB_HANDLE, const VARIANT*, int32_t, VARIANT* result, void*) {
    OB_AddCustomFunctionUtf8("right", HostRight, 2, nullptr);
    result->vt = VT_R8;
    result->dblVal = 0;
}

Outcome RunScript(bool compiled, const std::string& program) {
    if (compiled)
        unsetenv("OB_ENGINE");
    else
        setenv("OB_ENGINE", "text", 1);
    ScopedDesktop desktop;
    Outcome outcome;
    {
        auto basic = std::make_unique<COrvoBasic>();
        unsetenv("OB_ENGINE");
        basic->SetErrorHandler([&](const ob::ErrorRecord& record) {
            outcome.errors.push_back("error " + std::to_string(record.id) + " at " + std::to_string(record.line));
            return OB_CONTINUE;
        });
        // Registered per run: the table goes with the last interpreter.
        OB_AddCustomFunctionUtf8("addright", AddRight, 0, nullptr);
        basic->ExecuteProgramText(u"mem", program);
    }
    outcome.printed = desktop.Printed();
    return outcome;
}

TEST(CompiledStrings, HostFunctionAddedMidLoopShadowsTheBuiltIn) {
    const std::string program =
        "s = \"abcdef\"\n"
        "for i = 1 to 4\n"
        "  t = right(s, 2) + left(s, 1)\n"
        "  print t; len(t)\n"
        "  if i = 2 then\n"
        "    x = addright()\n"
        "  endif\n"
        "next\n";
    Outcome text = RunScript(false, program);
    EXPECT_EQ(RunScript(true, program), text);
    EXPECT_EQ(text.printed, (std::vector<std::string>{"efa3", "efa3", "hosta5", "hosta5"}));
    EXPECT_TRUE(text.errors.empty());
}

TEST(CompiledStrings, WatchedTextSeesEveryAppend) {
    const std::string program =
        "event create Changed, onchanged\n"
        "global s\n"
        "s = \"\"\n"
        "for i = 1 to 4\n"
        "  s = s + \"ab\"\n"
        "  if i = 2 then\n"
        "    watch create s, Changed\n"
        "  endif\n"
        "next\n"
        "print s\n"
        "end\n"
        "function onchanged(v)\n"
        "  print \"s \"; len(v)\n"
        "endfunction\n";
    Outcome text = RunScript(false, program);
    EXPECT_EQ(RunScript(true, program), text);
    EXPECT_EQ(text.printed, (std::vector<std::string>{"s 6", "s 8", "abababab"}));
}

}  // namespace
