// The C host API: running and freeing scripts, the registry, events with
// arguments, host functions, the last error, and many interpreters.
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

// Handlers shared by the scripts below: "Ping" prints the script's tag and
// its arguments.
std::string PingScript(const std::string& tag, bool resident = true) {
    return "event create Ping, onping\n" + std::string(resident ? "stayresident\n" : "") +
           "end\n"
           "function onping(a, b)\n"
           "  print \"" + tag + " \"; a; \" \"; b\n"
           "endfunction\n";
}

class HostApi : public ::testing::Test {
protected:
    OB_HANDLE Run(const std::string& name, const std::string& text, int32_t* resident = nullptr) {
        return OB_ExecuteScriptFileUtf8(dir.Write(name, text).c_str(), resident);
    }

    TempDir dir;
    ScopedDesktop desktop;
};

VARIANT Number(int32_t n) {
    VARIANT v;
    VariantInit(&v);
    v.vt = VT_I4;
    v.lVal = n;
    return v;
}

VARIANT Text(const char16_t* s) {
    VARIANT v;
    VariantInit(&v);
    v.vt = VT_BSTR;
    v.bstrVal = SysAllocString(s);
    return v;
}

TEST_F(HostApi, InitializeGivesTheInterfaceVersion) {
    EXPECT_EQ(OB_Initialize(), 65536);
    OB_Uninitialize();
}

TEST_F(HostApi, MissingFileGivesNullAndError17AndLeavesTheFlag) {
    int32_t resident = 7;
    EXPECT_EQ(OB_ExecuteScriptFileUtf8(dir.Path("missing.bas").c_str(), &resident), nullptr);
    EXPECT_EQ(resident, 7);
    ASSERT_EQ(desktop.Errors().size(), 1u);
    EXPECT_EQ(desktop.Errors()[0].rfind("Not enough memory to load source file", 0), 0u);
    EXPECT_EQ(OB_ExecuteScriptFile(nullptr, nullptr), nullptr);
}

TEST_F(HostApi, HandleIsReturnedWithTheResidentFlag) {
    int32_t resident = 7;
    OB_HANDLE plain = Run("plain.bas", "print \"hi\"\n", &resident);
    ASSERT_NE(plain, nullptr);
    EXPECT_EQ(resident, 0);
    EXPECT_EQ(OB_IsResident(plain), 0);
    OB_HANDLE kept = Run("kept.bas", "stayresident\n", &resident);
    EXPECT_EQ(resident, 1);
    EXPECT_EQ(OB_IsResident(kept), 1);
    OB_FreeScript(plain);
    OB_FreeScript(kept);
    EXPECT_EQ(desktop.Printed(), Lines({"hi"}));
}

TEST_F(HostApi, BroadcastReachesEveryScriptAndAHandleOnlyItsOwn) {
    OB_HANDLE a = Run("a.bas", PingScript("a"));
    OB_HANDLE b = Run("b.bas", PingScript("b"));
    OB_HANDLE c = Run("c.bas", PingScript("c", false));   // not resident: still live until freed
    VARIANT args[2] = {Number(1), Text(u"x")};
    EXPECT_EQ(OB_SendEvent(nullptr, u"Ping", args, 2), 1);
    EXPECT_EQ(desktop.Printed(), Lines({"a 1 x", "b 1 x", "c 1 x"}));
    desktop.ClearBoxes();
    OB_SendEventUtf8(b, "PING", args, 2);   // event names ignore case
    EXPECT_EQ(desktop.Printed(), Lines({"b 1 x"}));
    desktop.ClearBoxes();

    // Freeing one leaves its neighbours reachable; the freed handle is ignored.
    OB_FreeScript(b);
    OB_SendEvent(b, u"Ping", args, 2);
    OB_SendEvent(c, u"Ping", args, 2);
    OB_SendEvent(nullptr, u"Ping", args, 2);
    EXPECT_EQ(desktop.Printed(), Lines({"c 1 x", "a 1 x", "c 1 x"}));
    EXPECT_TRUE(desktop.Errors().empty());
    for (VARIANT& v : args) VariantClear(&v);
    OB_FreeScript(a);
    OB_FreeScript(c);
}

TEST_F(HostApi, ArgumentsBecomeScriptValues) {
    OB_HANDLE s = Run("args.bas",
                      "event create Display, display\nstayresident\nend\n"
                      "function display(a, b, c, d, e, f)\n"
                      "  print a; \"|\"; b; \"|\"; c; \"|\"; d; \"|\"; e; \"|\"; f\n"
                      "endfunction\n");
    VARIANT args[6];
    for (VARIANT& v : args) VariantInit(&v);
    args[0] = Number(-5);
    args[1].vt = VT_R8;
    args[1].dblVal = 2.5;
    args[2] = Text(u"t\u00e9xt");
    args[3].vt = VT_BOOL;
    args[3].boolVal = VARIANT_TRUE;
    args[4].vt = VT_I8;
    args[4].llVal = 12345678901LL;
    OB_SendEvent(s, u"Display", args, 6);   // args[5] is VT_EMPTY: unset
    EXPECT_EQ(desktop.Printed(), Lines({"-5|2.500000|t\u00e9xt|True|12345678901|"}));
    for (VARIANT& v : args) VariantClear(&v);
    OB_FreeScript(s);
}

TEST_F(HostApi, ThirtyTwoArgumentsAndUnknownEvents) {
    std::string params, sum;
    for (int i = 1; i <= 32; ++i) {
        params += (i > 1 ? ", p" : "p") + std::to_string(i);
        sum += (i > 1 ? " + p" : "p") + std::to_string(i);
    }
    OB_HANDLE s = Run("many.bas", "event create Many, many\nstayresident\nend\n"
                                  "function many(" + params + ")\n  print " + sum + "\nendfunction\n");
    std::vector<VARIANT> args;
    for (int i = 1; i <= 32; ++i) args.push_back(Number(i));
    OB_SendEvent(s, u"Many", args.data(), 32);
    OB_SendEvent(s, u"NoSuchEvent", args.data(), 32);
    OB_SendEvent(s, u"", nullptr, 0);
    OB_SendEvent(s, nullptr, nullptr, 5);   // no array: no arguments
    EXPECT_EQ(desktop.Printed(), Lines({"528.000000"}));
    EXPECT_TRUE(desktop.Errors().empty());
    OB_FreeScript(s);
}

// The host function "sendinner" raises "Inner" while the "Outer" handler runs.
void SendInner(OB_HANDLE script, const VARIANT*, int32_t, VARIANT*, void*) {
    OB_SendEvent(script, u"Inner", nullptr, 0);
}

TEST_F(HostApi, EventsNestAndHandlersRunInOrder) {
    ASSERT_EQ(OB_AddCustomFunctionUtf8("sendinner", SendInner, 0, nullptr), 1);
    OB_HANDLE s = Run("nest.bas",
                      "event create Outer, first\nevent create Outer, later\nevent create Inner, inner\n"
                      "event create Outer, FIRST\n"   // attached once only
                      "stayresident\nend\n"
                      "function first()\n  print \"first begins\"\n  call sendinner()\n"
                      "  throw Inner()\n  print \"first ends\"\nendfunction\n"
                      "function later()\n  print \"later\"\nendfunction\n"
                      "function inner()\n  print \"inner\"\nendfunction\n");
    OB_SendEvent(s, u"Outer", nullptr, 0);
    EXPECT_EQ(desktop.Printed(), Lines({"first begins", "inner", "inner", "first ends", "later"}));
    EXPECT_TRUE(desktop.Errors().empty());
    OB_FreeScript(s);
}

TEST_F(HostApi, HandlersRunFullyAfterTheProgramEnded) {
    OB_HANDLE s = Run("ended.bas", "event create Go, go\nstayresident\nend\n"
                                   "function go()\n  print \"one\"\n  print \"two\"\nendfunction\n");
    OB_SendEvent(s, u"Go", nullptr, 0);
    OB_SendEvent(s, u"Go", nullptr, 0);
    EXPECT_EQ(desktop.Printed(), Lines({"one", "two", "one", "two"}));
    OB_FreeScript(s);
}

TEST_F(HostApi, AnAbortedHandlerEndsOnlyThatDelivery) {
    OB_HANDLE s = Run("abort.bas", "event create Bad, bad\nevent create Good, good\nstayresident\nend\n"
                                   "function bad()\n  x = nosuch\n  print \"not reached\"\nendfunction\n"
                                   "function good()\n  print \"good\"\nendfunction\n");
    desktop.QueueAnswer(ob::ui::IDCANCEL);
    desktop.QueueAnswer(ob::ui::IDCANCEL);
    EXPECT_EQ(OB_SendEvent(s, u"Bad", nullptr, 0), 1);
    OB_SendEvent(nullptr, u"Bad", nullptr, 0);   // broadcast: aborted again, caught too
    OB_SendEvent(s, u"Good", nullptr, 0);
    EXPECT_EQ(desktop.Printed(), Lines({"good"}));
    EXPECT_FALSE(desktop.Errors().empty());
    OB_FreeScript(s);
}

// Host functions for the registration tests; the user data is a tag.
void Tagged(OB_HANDLE, const VARIANT* args, int32_t count, VARIANT* result, void* userData) {
    std::u16string text = static_cast<const char16_t*>(userData);
    for (int32_t i = 0; i < count; ++i)
        if (args[i].vt == VT_BSTR) text += u":" + std::u16string(args[i].bstrVal);
        else if (args[i].vt == VT_R8) text += u":" + std::u16string(1, char16_t(u'0' + int(args[i].dblVal)));
    result->vt = VT_BSTR;
    result->bstrVal = SysAllocString(text.c_str());
}

TEST_F(HostApi, TheFirstHostFunctionOfANameWins) {
    static const char16_t first[] = u"first", second[] = u"second";
    EXPECT_EQ(OB_AddCustomFunction(u"WinnerFn", Tagged, 1, const_cast<char16_t*>(first)), 1);
    EXPECT_EQ(OB_AddCustomFunctionUtf8("winnerfn", Tagged, 1, const_cast<char16_t*>(second)), 1);
    EXPECT_EQ(OB_AddCustomFunction(u"", Tagged, 0, nullptr), 0);
    EXPECT_EQ(OB_AddCustomFunction(u"nofunction", nullptr, 0, nullptr), 0);
    OB_HANDLE s = Run("winner.bas", "x = winnerfn(\"a\", 7)\nprint x\ncall WINNERFN()\nstayresident\n");
    EXPECT_EQ(desktop.Printed(), Lines({"first:a:7"}));
    EXPECT_TRUE(desktop.Errors().empty());

    // The C++ registration follows the same rule.
    auto cpp = [](COrvoBasic*, CArgArray& args, int data) { return CBasicVariable(data + (int)args.size()); };
    EXPECT_TRUE(s->AddCustomFunction(u"cppfn", cpp, 0, 100));
    EXPECT_TRUE(s->AddCustomFunction(u"cppfn", cpp, 0, 200));
    EXPECT_FALSE(s->AddCustomFunction(u"", cpp, 0, 0));
    EXPECT_FALSE(s->AddCustomFunction(u"nullfn", nullptr, 0, 0));
    OB_HANDLE t = Run("cpp.bas", "print cppfn(1, 2)\n");
    EXPECT_EQ(desktop.Printed(), Lines({"first:a:7", "102"}));
    OB_FreeScript(t);
    OB_FreeScript(s);
}

TEST_F(HostApi, HostFunctionsAreDroppedWithTheLastScript) {
    ASSERT_EQ(COrvoBasic::m_nNumberOfCopies, 0);
    static const char16_t tag[] = u"t";
    OB_AddCustomFunctionUtf8("shortlived", Tagged, 0, const_cast<char16_t*>(tag));
    OB_FreeScript(Run("one.bas", "print shortlived()\n"));
    OB_FreeScript(Run("two.bas", "print shortlived()\n"));
    EXPECT_EQ(desktop.Printed().front(), "t");
    ASSERT_EQ(desktop.Errors().size(), 1u);
    EXPECT_EQ(desktop.Errors()[0].rfind("Undefined function name", 0), 0u);
}

TEST_F(HostApi, LastErrorIsReadableAndCut) {
    OB_HANDLE s = Run("err.bas", "event create Fail, fail\nstayresident\nend\n"
                                 "function fail()\n  call missingfn()\nendfunction\n");
    char16_t wide[64];
    EXPECT_EQ(OB_GetLastError(s, wide, 64), 0);
    EXPECT_EQ(wide[0], 0);
    OB_SendEvent(s, u"Fail", nullptr, 0);
    char text[256];
    int32_t length = OB_GetLastErrorUtf8(s, text, sizeof text);
    EXPECT_EQ(std::string(text), "Undefined function name\n  call missingfn()");
    EXPECT_EQ(length, static_cast<int32_t>(std::string(text).size()));
    char small[8];
    EXPECT_EQ(OB_GetLastErrorUtf8(s, small, sizeof small), length);
    EXPECT_EQ(std::string(small), "Undefin");
    EXPECT_EQ(OB_GetLastError(s, wide, 10), length);
    EXPECT_EQ(std::u16string(wide), u"Undefined");
    EXPECT_EQ(OB_GetLastError(s, nullptr, 0), length);
    OB_FreeScript(s);
    EXPECT_EQ(OB_GetLastErrorUtf8(s, text, sizeof text), 0);   // freed: ""
}

TEST_F(HostApi, InvalidHandlesAreIgnored) {
    OB_FreeScript(nullptr);
    int local = 0;
    OB_HANDLE bogus = reinterpret_cast<OB_HANDLE>(&local);
    OB_FreeScript(bogus);
    EXPECT_EQ(OB_IsResident(bogus), 0);
    EXPECT_EQ(OB_SendEvent(bogus, u"Ping", nullptr, 0), 1);
}

TEST_F(HostApi, ManyScriptsLeaveNoTrace) {
    size_t listBefore = COrvoBasic::m_List.size();
    int32_t copiesBefore = COrvoBasic::m_nNumberOfCopies;
    std::string path = dir.Write("count.bas", "event create Count, count\nstayresident\nend\n"
                                              "function count()\n  print \"c\"\nendfunction\n");
    for (int i = 0; i < 1000; ++i) OB_FreeScript(OB_ExecuteScriptFileUtf8(path.c_str(), nullptr));
    EXPECT_EQ(COrvoBasic::m_List.size(), listBefore);

    std::vector<OB_HANDLE> live;
    for (int i = 0; i < 100; ++i) live.push_back(OB_ExecuteScriptFileUtf8(path.c_str(), nullptr));
    EXPECT_EQ(COrvoBasic::m_List.size(), listBefore + 100);
    OB_SendEvent(nullptr, u"Count", nullptr, 0);
    EXPECT_EQ(desktop.Printed().size(), 100u);
    for (OB_HANDLE h : live) OB_FreeScript(h);
    EXPECT_EQ(COrvoBasic::m_List.size(), listBefore);
    EXPECT_EQ(COrvoBasic::m_nNumberOfCopies, copiesBefore);
}

TEST_F(HostApi, RunOfAResidentScriptDestroysIt) {
    std::string inner = dir.Write("inner.bas", PingScript("inner"));
    size_t listBefore = COrvoBasic::m_List.size();
    OB_HANDLE outer = Run("outer.bas", "run \"" + inner + "\"\nprint \"back\"\n" + PingScript("outer"));
    EXPECT_EQ(COrvoBasic::m_List.size(), listBefore + 1);
    VARIANT args[2] = {Number(1), Number(2)};
    OB_SendEvent(nullptr, u"Ping", args, 2);
    EXPECT_EQ(desktop.Printed(), Lines({"back", "outer 1 2"}));
    EXPECT_TRUE(desktop.Errors().empty());
    OB_FreeScript(outer);
}

}  // namespace
