// A call site that found a script function finds a host function of the
// same name once the host adds one: between two runs of the site, and while
// the site's own arguments are being evaluated.
#include <gtest/gtest.h>

#include <orvobasic/COrvoBasic.h>
#include <orvobasic/orvobasic.h>

#include "HostTestUtil.h"

#include <string>
#include <vector>

namespace {

using ob::test::ScopedDesktop;
using ob::test::TempDir;
using Lines = std::vector<std::string>;

class HostFunctionCallSite : public ::testing::Test {
protected:
    OB_HANDLE Run(const std::string& name, const std::string& text) {
        return OB_ExecuteScriptFileUtf8(dir.Write(name, text).c_str(), nullptr);
    }

    TempDir dir;
    ScopedDesktop desktop;
};

CBasicVariable HostTwice(COrvoBasic*, CArgArray& args, int data) {
    return CBasicVariable(data + static_cast<int>(args.size()));
}

// Adds the host's "twicelater" while the script evaluates an argument.
void AddTwiceNow(OB_HANDLE basic, const VARIANT*, int32_t, VARIANT* result, void*) {
    basic->AddCustomFunction(u"twicelater", HostTwice, 1, 500);
    result->vt = VT_I4;
    result->lVal = 4;
}

TEST_F(HostFunctionCallSite, AHostFunctionAddedBetweenEventsTakesOverTheSite) {
    OB_HANDLE s = Run("between.bas", "event create Go, go\nstayresident\nend\n"
                                     "function go()\n  print twicenow(4)\n  call twicenow(1)\nendfunction\n"
                                     "function twicenow(n)\n  twicenow = n * 2\n  print \"script\"\nendfunction\n");
    OB_SendEvent(s, u"Go", nullptr, 0);
    EXPECT_EQ(desktop.Printed(), Lines({"script", "8.000000", "script"}));
    EXPECT_TRUE(s->AddCustomFunction(u"TwiceNow", HostTwice, 1, 100));
    OB_SendEvent(s, u"Go", nullptr, 0);
    EXPECT_EQ(desktop.Printed(), Lines({"script", "8.000000", "script", "101"}));
    EXPECT_TRUE(desktop.Errors().empty());
    OB_FreeScript(s);
}

TEST_F(HostFunctionCallSite, AnAssignmentThatRanItsCallOftenFindsTheHostFunctionThatTookOverTheName) {
    OB_HANDLE s = Run("assigned.bas", "event create Go, go\nstayresident\nend\n"
                                      "function go()\n  x = twicenow(4) + 1\n  print x\nendfunction\n"
                                      "function twicenow(n)\n  twicenow = n * 2\nendfunction\n");
    for (int i = 0; i < 3; ++i) OB_SendEvent(s, u"Go", nullptr, 0);
    EXPECT_TRUE(s->AddCustomFunction(u"TwiceNow", HostTwice, 1, 100));
    OB_SendEvent(s, u"Go", nullptr, 0);
    EXPECT_EQ(desktop.Printed(), Lines({"9.000000", "9.000000", "9.000000", "102.000000"}));
    EXPECT_TRUE(desktop.Errors().empty());
    OB_FreeScript(s);
}

TEST_F(HostFunctionCallSite, AHostFunctionAddedWhileTheArgumentsRunIsTheOneCalled) {
    ASSERT_EQ(OB_AddCustomFunctionUtf8("addtwice", AddTwiceNow, 0, nullptr), 1);
    OB_HANDLE s = Run("during.bas", "print twicelater(addtwice())\nprint twicelater(3)\nend\n"
                                    "function twicelater(n)\n  twicelater = n * 2\nendfunction\n");
    EXPECT_EQ(desktop.Printed(), Lines({"501", "501"}));
    EXPECT_TRUE(desktop.Errors().empty());
    OB_FreeScript(s);
}

}  // namespace
