// The C API for what a script shows (print and message boxes as UTF-8
// callbacks), its variables, its code page, the defaults a NULL handle sets,
// and the last-error text: one test per promise of the header.
#include <gtest/gtest.h>

#include <orvobasic/COrvoBasic.h>
#include <orvobasic/orvobasic.h>

#include "HostTestUtil.h"

#include <sstream>
#include <string>
#include <vector>

namespace {

using ob::test::ScopedDesktop;
using ob::test::TempDir;
using Lines = std::vector<std::string>;

// What the callbacks received, in order, tagged with the kind.
struct Capture {
    Lines events;
    std::vector<OB_HANDLE> printers;
    int32_t answer = OB_IDYES;
};

void OnPrint(OB_HANDLE script, const char* text, int32_t length, void* userData) {
    auto* capture = static_cast<Capture*>(userData);
    capture->events.push_back("print " + std::to_string(length) + ":" + std::string(text, static_cast<size_t>(length)));
    capture->printers.push_back(script);
}

int32_t OnBox(OB_HANDLE, const char* text, uint32_t style, void* userData) {
    auto* capture = static_cast<Capture*>(userData);
    capture->events.push_back("box " + std::to_string(style) + ":" + text);
    return capture->answer;
}

int32_t OnError(OB_HANDLE, const OB_ErrorInfo* error, void* userData) {
    static_cast<Capture*>(userData)->events.push_back("error " + std::to_string(error->id));
    return OB_CONTINUE;
}

VARIANT Number(int32_t n) {
    VARIANT v;
    VariantInit(&v);
    v.vt = VT_I4;
    v.lVal = n;
    return v;
}

class HostOutputApi : public ::testing::Test {
protected:
    void TearDown() override {
        OB_SetOutputHandlers(nullptr, nullptr);
        OB_SetErrorHandler(nullptr, nullptr, nullptr);
        OB_SetCodePage(nullptr, OB_CODEPAGE_1252);
        for (OB_HANDLE h : m_scripts) OB_FreeScript(h);
    }
    // Creates a script, applies `setup`, runs `text`.
    template <typename Setup>
    OB_HANDLE Run(const std::string& text, Setup setup) {
        OB_HANDLE h = OB_CreateScript();
        m_scripts.push_back(h);
        setup(h);
        EXPECT_EQ(OB_RunScriptUtf8(h, dir.Write("s" + std::to_string(m_scripts.size()) + ".bas", text).c_str()), 1);
        return h;
    }
    OB_HANDLE Run(const std::string& text) {
        return Run(text, [](OB_HANDLE) {});
    }
    std::string Text(OB_HANDLE h, const char* name, int32_t index) {
        VARIANT v;
        VariantInit(&v);
        if (!OB_GetVariableUtf8(h, name, index, &v)) return "(none)";
        std::string text = v.vt == VT_BSTR ? CString(v.bstrVal, SysStringLen(v.bstrVal)).ToUtf8()
                           : v.vt == VT_EMPTY ? "(empty)"
                           : v.vt == VT_I4    ? std::to_string(v.lVal)
                           : v.vt == VT_R8    ? (std::ostringstream() << v.dblVal).str()
                                              : "vt" + std::to_string(v.vt);
        VariantClear(&v);
        return text;
    }

    TempDir dir;
    ScopedDesktop desktop;
    Capture capture;
    std::vector<OB_HANDLE> m_scripts;
};

TEST_F(HostOutputApi, PrintTextArrivesAsUtf8WithItsLengthAndTheDesktopGetsNothing) {
    OB_OutputHandlers handlers = {OnPrint, nullptr, &capture};
    OB_HANDLE h = Run("print \"Grüße €\"\nprint 1; \"\"\ndim broken[0]\n",
                      [&](OB_HANDLE s) { OB_SetOutputHandlers(s, &handlers); });
    EXPECT_EQ(capture.events, Lines({"print 12:Grüße €\n", "print 9:1.000000\n"}));
    EXPECT_EQ(capture.printers, std::vector<OB_HANDLE>({h, h}));
    EXPECT_TRUE(desktop.Printed().empty());
    EXPECT_EQ(desktop.Errors().size(), 1u);   // errors are not output handlers' business
}

TEST_F(HostOutputApi, NullMembersAndNullHandlersLeaveBoxesToTheDesktop) {
    OB_OutputHandlers boxOnly = {nullptr, OnBox, &capture};
    Run("print \"a\"\n", [&](OB_HANDLE s) { OB_SetOutputHandlers(s, &boxOnly); });
    OB_OutputHandlers printing = {OnPrint, nullptr, &capture};
    Run("print \"b\"\n", [&](OB_HANDLE s) {
        OB_SetOutputHandlers(s, &printing);
        OB_SetOutputHandlers(s, nullptr);
    });
    EXPECT_EQ(desktop.Printed(), Lines({"a", "b"}));
    EXPECT_TRUE(capture.events.empty());
}

TEST_F(HostOutputApi, MessageBoxesReachTheHandlerWithStyleAndAnswer) {
    OB_OutputHandlers handlers = {nullptr, OnBox, &capture};
    OB_HANDLE h = Run("", [&](OB_HANDLE s) { OB_SetOutputHandlers(s, &handlers); });
    capture.answer = OB_IDNO;
    EXPECT_EQ(h->ShowMessageBox(u"Weiter? ü", OB_MB_YESNO | OB_MB_ICONQUESTION), OB_IDNO);
    EXPECT_EQ(capture.events, Lines({"box 36:Weiter? ü"}));
    EXPECT_TRUE(desktop.Boxes().empty());
}

TEST_F(HostOutputApi, NullHandleSetsTheDefaultsOfScriptsCreatedLater) {
    OB_HANDLE before = OB_CreateScript();
    m_scripts.push_back(before);
    OB_OutputHandlers handlers = {OnPrint, OnBox, &capture};
    OB_SetOutputHandlers(nullptr, &handlers);
    OB_SetErrorHandler(nullptr, OnError, &capture);
    EXPECT_EQ(OB_SetCodePage(nullptr, OB_CODEPAGE_UTF8), 1);
    OB_RunScriptUtf8(before, dir.Write("old.bas", "print \"old\"\n").c_str());
    // OB_ExecuteScriptFile makes and runs at once: only the default reaches it.
    OB_HANDLE later = OB_ExecuteScriptFileUtf8(dir.Write("new.bas", "print \"new\"\ndim broken[0]\n").c_str(), nullptr);
    m_scripts.push_back(later);
    EXPECT_EQ(capture.events, Lines({"print 4:new\n", "error 32"}));
    EXPECT_EQ(capture.printers, std::vector<OB_HANDLE>({later}));
    EXPECT_EQ(later->GetCodePage(), ob::CodePage::Utf8);
    EXPECT_EQ(before->GetCodePage(), ob::CodePage::Windows1252);
    EXPECT_EQ(desktop.Printed(), Lines({"old"}));
}

TEST_F(HostOutputApi, AScriptStartedByRunTakesItsCallersHandlersAndCodePage) {
    dir.Write("child.bas", "print \"child\"\nopen \"" + dir.Path("data.txt") +
                               "\" as 1 text\nx = readline(1)\nprint len(x)\n");
    dir.Write("data.txt", "\xE2\x82\xAC\r\n");
    OB_OutputHandlers handlers = {OnPrint, nullptr, &capture};
    OB_HANDLE h = Run("run \"" + dir.Path("child.bas") + "\"\nprint \"parent\"\n", [&](OB_HANDLE s) {
        OB_SetOutputHandlers(s, &handlers);
        OB_SetCodePage(s, OB_CODEPAGE_UTF8);
        OB_SetPathResolver(s, nullptr, nullptr);
    });
    ASSERT_EQ(capture.events.size(), 3u) << desktop.Errors().size();
    EXPECT_EQ(capture.events[0], "print 6:child\n");
    EXPECT_EQ(capture.events[1], "print 2:3\n");   // "€" and "\r\n": one character, UTF-8 read
    EXPECT_NE(capture.printers[0], h);              // the inner interpreter shows it
    EXPECT_EQ(capture.printers[2], h);
}

TEST_F(HostOutputApi, CodePageAcceptsTheTwoCodePagesOnly) {
    OB_HANDLE h = OB_CreateScript();
    m_scripts.push_back(h);
    EXPECT_EQ(OB_SetCodePage(h, 437), 0);
    EXPECT_EQ(h->GetCodePage(), ob::CodePage::Windows1252);
    EXPECT_EQ(OB_SetCodePage(h, OB_CODEPAGE_UTF8), 1);
    EXPECT_EQ(h->GetCodePage(), ob::CodePage::Utf8);
    int local = 0;
    EXPECT_EQ(OB_SetCodePage(reinterpret_cast<OB_HANDLE>(&local), OB_CODEPAGE_UTF8), 0);
    EXPECT_EQ(OB_SetCodePage(nullptr, 850), 0);
}

TEST_F(HostOutputApi, VariablesSetBeforeTheRunAreThereAndResultsAreReadable) {
    OB_HANDLE h = Run("dim r[3]\nr[0] = n * 2\nr[1] = \"Grüße\"\nglobal G\nG = 7\n", [&](OB_HANDLE s) {
        VARIANT n = Number(21);
        EXPECT_EQ(OB_SetVariableUtf8(s, "N", -1, &n), 1);   // locals ignore case
    });
    EXPECT_EQ(OB_GetVariableSizeUtf8(h, "r"), 3);
    EXPECT_EQ(Text(h, "r", 0), "42");
    EXPECT_EQ(Text(h, "R", 1), "Grüße");
    EXPECT_EQ(Text(h, "r", 2), "(empty)");
    EXPECT_EQ(Text(h, "r", 3), "(none)");
    EXPECT_EQ(Text(h, "r", -2), "(none)");
    EXPECT_EQ(Text(h, "G", -1), "7");
    EXPECT_EQ(Text(h, "g", -1), "(none)");   // a global only by its spelling
    EXPECT_EQ(OB_GetVariableSizeUtf8(h, "missing"), 0);
}

TEST_F(HostOutputApi, SetVariableFollowsTheAssignmentRules) {
    OB_HANDLE h = Run("dim a[3]\nx = 1\n");
    VARIANT five = Number(5);
    EXPECT_EQ(OB_SetVariableUtf8(h, "a", 2, &five), 1);
    EXPECT_EQ(Text(h, "a", 2), "5");
    EXPECT_EQ(OB_SetVariableUtf8(h, "a", 3, &five), 0);         // no such element
    EXPECT_EQ(OB_SetVariableUtf8(h, "fresh", 1, &five), 0);     // element 1 of an unknown name
    EXPECT_EQ(OB_SetVariableUtf8(h, "fresh", 0, &five), 1);     // element 0 creates it
    EXPECT_EQ(Text(h, "fresh", -1), "5");
    EXPECT_EQ(OB_SetVariableUtf8(h, "a", -1, &five), 1);        // "a = 5": the array becomes one value
    EXPECT_EQ(OB_GetVariableSizeUtf8(h, "a"), 1);
    EXPECT_EQ(OB_SetVariableUtf8(h, "x", -1, nullptr), 1);      // NULL value: unset
    EXPECT_EQ(Text(h, "x", -1), "(empty)");
    for (const char* bad : {"", "1x", "a b", "a[1]"}) EXPECT_EQ(OB_SetVariableUtf8(h, bad, -1, &five), 0) << bad;
    EXPECT_EQ(OB_SetVariableUtf8(h, nullptr, -1, &five), 0);
    EXPECT_EQ(OB_SetVariable(nullptr, u"x", -1, &five), 0);
    VARIANT untouched = Number(9);
    EXPECT_EQ(OB_GetVariableUtf8(h, "nosuch", -1, &untouched), 0);
    EXPECT_EQ(untouched.lVal, 9);
    EXPECT_EQ(OB_GetVariableUtf8(h, "x", -1, nullptr), 0);
}

TEST_F(HostOutputApi, AWatchFiresWhenTheHostWritesTheVariable) {
    OB_HANDLE h = Run("global level\nlevel = 1\nevent create Changed, onlevel\nwatch create level, Changed\nend\n"
                      "function onlevel(v)\n  print \"level now \"; v\nendfunction\n");
    ASSERT_TRUE(desktop.Errors().empty()) << desktop.Errors()[0];
    VARIANT three = Number(3);
    EXPECT_EQ(OB_SetVariable(h, u"level", -1, &three), 1);
    EXPECT_EQ(desktop.Printed(), Lines({"level now 3"}));
}

// A host function reads the locals of the script function that called it.
void PeekLocal(OB_HANDLE script, const VARIANT*, int32_t, VARIANT* result, void*) {
    OB_GetVariableUtf8(script, "inner", -1, result);
}

TEST_F(HostOutputApi, InsideAHostFunctionTheCallersLocalsAreSeen) {
    OB_AddCustomFunctionUtf8("peeklocal", PeekLocal, 0, nullptr);
    OB_HANDLE h = Run("inner = \"main\"\nprint f()\nprint peeklocal()\nend\n"
                      "function f()\n  inner = \"in f\"\n  f = peeklocal()\nendfunction\n");
    EXPECT_EQ(desktop.Printed(), Lines({"in f", "main"}));
    EXPECT_EQ(Text(h, "inner", -1), "main");
}

TEST_F(HostOutputApi, LastErrorTextIsTheMessageAndTheFailingStatementsLine) {
    OB_HANDLE h = Run("x = f()\nprint \"after\"\nend\nfunction f()\n  y = 1\n  call nosuchfn()\n  f = 1\nendfunction\n");
    char text[128];
    OB_GetLastErrorUtf8(h, text, sizeof text);
    EXPECT_EQ(std::string(text), "Undefined function name\n  call nosuchfn()");
    OB_ErrorInfo info;
    ASSERT_EQ(OB_GetLastErrorInfo(h, &info), 1);
    EXPECT_EQ(std::string(text), std::string(info.message) + "\n" + info.sourceLine);
    // An error found when the function has returned belongs to the caller's line.
    OB_HANDLE g = Run("x = 1 + g()\nprint x\nend\nfunction g()\n  y = 2\nendfunction\n");
    char16_t wide[128];
    OB_GetLastError(g, wide, 128);
    EXPECT_EQ(std::u16string(wide), u"Return value of the function is not defined\nx = 1 + g()");
}

}  // namespace
