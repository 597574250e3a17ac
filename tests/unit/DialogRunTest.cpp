// Action scripts (parsing, errors with their lines), the headless controls'
// answers to window messages, and whole dialog runs that golden scripts
// cannot reach: huge templates, runs with no actions, failing actions.
#include "HostTestUtil.h"

#include <orvobasic/orvobasic.h>

#include "ui/ActionScript.h"
#include "ui/headless/Window.h"

#include <algorithm>
#include <chrono>
#include <string>

using namespace ob;
using namespace ob::ui;

namespace {

// A desktop that keeps the notes and snapshots instead of writing them out.
class RecordingDesktop : public test::ScopedDesktop {
public:
    void UiNote(const CString& line) override { notes.push_back(line.ToUtf8()); }
    void UiOutput(const CString& text) override { output += text.ToUtf8(); }
    std::vector<std::string> notes;
    std::string output;
};

TEST(ActionScript, ParsesVerbsArgumentsAndComments) {
    ActionScript script;
    CString error;
    ASSERT_TRUE(script.Load(u"# comment\n\n  type 5 \"a \\\"b\\\"\"\r\nselect 7 2\nselect 7 \"x\"\n"
                            u"date 9 2026-11-23 14:30\nwait-ms 10\nok",
                            u"f.actions", error))
        << error.ToUtf8();
    const Action* a = script.Next();
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(a->line, 3);
    EXPECT_EQ(a->args[0].number, 5);
    EXPECT_EQ(a->args[1].text, u"a \"b\"");
    a = script.Next();
    EXPECT_FALSE(a->args[1].isText);
    EXPECT_EQ(a->args[1].number, 2);
    EXPECT_TRUE(script.Next()->args[1].isText);
    a = script.Next();
    EXPECT_EQ(a->args[1].time.year, 2026);
    EXPECT_EQ(a->args[1].time.day, 23);
    EXPECT_EQ(a->args[1].time.hour, 14);
    EXPECT_EQ(a->args[1].time.minute, 30);
    script.Next();
    EXPECT_EQ(script.Next()->line, 8);
    EXPECT_EQ(script.Next(), nullptr);
}

TEST(ActionScript, MalformedLinesNameFileAndLine) {
    struct Case {
        const char16_t* text;
        const char* error;
    };
    const Case cases[] = {
        {u"ok\nfly 3", "a.actions:2: unknown action \"fly\""},
        {u"type 3", "a.actions:1: missing argument"},
        {u"type x \"t\"", "a.actions:1: bad argument \"x\""},
        {u"click 1 2", "a.actions:1: too many arguments"},
        {u"\ntype 1 \"open", "a.actions:2: unclosed quote"},
        {u"date 1 2026-11", "a.actions:1: bad argument \"2026-11\""},
        {u"slide 1 99999999999", "a.actions:1: bad argument \"99999999999\""},
    };
    for (const Case& c : cases) {
        ActionScript script;
        CString error;
        EXPECT_FALSE(script.Load(c.text, u"a.actions", error));
        EXPECT_EQ(error.ToUtf8(), c.error);
    }
}

Window MakeControl(const char16_t* className, uint32_t style) {
    Window w;
    w.className = className;
    w.style = style;
    w.control.type = ControlTypeOf(className, style);
    return w;
}

intptr_t Send(Window& w, unsigned message, uintptr_t wParam = 0, const char16_t* text = nullptr) {
    return ControlMessage(w, message, wParam, reinterpret_cast<intptr_t>(text));
}

TEST(HeadlessControls, ListBoxSelectsAsTheRealOneDoes) {
    Window list = MakeControl(u"LISTBOX", 0x10B10041);
    for (const char16_t* item : {u"apple", u"Banana", u"blue"}) Send(list, LB_ADDSTRING, 0, item);
    EXPECT_EQ(Send(list, LB_GETCURSEL), -1);
    EXPECT_EQ(Send(list, LB_SELECTSTRING, static_cast<uintptr_t>(-1), u"b"), 1);   // prefix, any case
    EXPECT_EQ(Send(list, LB_SELECTSTRING, 1, u"b"), 2);                            // searches after the start
    EXPECT_EQ(Send(list, LB_SELECTSTRING, 2, u"b"), 1);                            // and wraps round
    EXPECT_EQ(Send(list, LB_SETCURSEL, 7), LB_ERR);
    EXPECT_EQ(Send(list, LB_GETCURSEL), -1);   // an index out of range clears the selection
    CString text;
    EXPECT_EQ(ControlMessage(list, LB_GETTEXT, 0, reinterpret_cast<intptr_t>(&text)), 5);
    EXPECT_EQ(text, u"apple");
    EXPECT_EQ(ControlMessage(list, LB_GETTEXT, 3, reinterpret_cast<intptr_t>(&text)), LB_ERR);

    Window multi = MakeControl(u"ListBox", 0x10B10049);
    Send(multi, LB_ADDSTRING, 0, u"a");
    EXPECT_EQ(Send(multi, LB_SETCURSEL, 0), LB_ERR);   // not for multi-selection lists
    EXPECT_EQ(Send(multi, LB_GETCURSEL), 0);            // the caret, selected or not
}

TEST(HeadlessControls, TreeKeepsChildrenUnderTheirParents) {
    Window tree = MakeControl(u"SysTreeView32", 0x10810037);
    auto insert = [&](TreeItem parent, const char16_t* text) {
        TreeInsert in{parent, TVI_LAST, text};
        return ControlMessage(tree, TVM_INSERTITEMW, 0, reinterpret_cast<intptr_t>(&in));
    };
    TreeItem a = insert(TVI_ROOT, u"a");
    TreeItem b = insert(TVI_ROOT, u"b");
    TreeItem a1 = insert(a, u"a1");
    insert(a1, u"a1x");
    TreeItem a2 = insert(a, u"a2");
    EXPECT_EQ(insert(12345, u"orphan"), 0);
    EXPECT_EQ(ControlMessage(tree, TVM_GETNEXTITEM, TVGN_ROOT, 0), a);
    EXPECT_EQ(ControlMessage(tree, TVM_GETNEXTITEM, TVGN_NEXT, a), b);
    EXPECT_EQ(ControlMessage(tree, TVM_GETNEXTITEM, TVGN_CHILD, a), a1);
    EXPECT_EQ(ControlMessage(tree, TVM_GETNEXTITEM, TVGN_NEXT, a1), a2);
    EXPECT_EQ(ControlMessage(tree, TVM_GETNEXTITEM, TVGN_PARENT, a2), a);
    ControlMessage(tree, TVM_SELECTITEM, TVGN_CARET, a1);
    EXPECT_EQ(ControlMessage(tree, TVM_DELETEITEM, 0, a), 1);   // with its subtree and the selection
    EXPECT_EQ(ControlMessage(tree, TVM_GETCOUNT, 0, 0), 1);
    EXPECT_EQ(ControlMessage(tree, TVM_GETNEXTITEM, TVGN_CARET, 0), 0);
}

TEST(HeadlessControls, TabsSliderAndDate) {
    Window tabs = MakeControl(u"SysTabControl32", 0x10010000);
    EXPECT_EQ(Send(tabs, TCM_GETCURSEL), -1);
    Send(tabs, TCM_INSERTITEMW, 0, u"one");
    EXPECT_EQ(Send(tabs, TCM_GETCURSEL), 0);   // the first tab is selected
    Send(tabs, TCM_INSERTITEMW, 0, u"zero");
    EXPECT_EQ(Send(tabs, TCM_GETCURSEL), 1);   // the selected tab moved along
    EXPECT_EQ(Send(tabs, TCM_SETCURSEL, 5), -1);

    Window slider = MakeControl(u"msctls_trackbar32", 0x10010005);
    ControlMessage(slider, TBM_SETPOS, 1, 500);
    EXPECT_EQ(Send(slider, TBM_GETPOS), 100);   // kept inside the range

    Window date = MakeControl(u"SysDateTimePick32", 0x10010020);
    SystemTime leap{2024, 2, 29, 23, 59, 59}, bad{2023, 2, 29, 0, 0, 0};
    EXPECT_EQ(ControlMessage(date, DTM_SETSYSTEMTIME, 0, reinterpret_cast<intptr_t>(&leap)), 1);
    EXPECT_EQ(ControlMessage(date, DTM_SETSYSTEMTIME, 0, reinterpret_cast<intptr_t>(&bad)), 0);
    SystemTime got;
    ControlMessage(date, DTM_GETSYSTEMTIME, 0, reinterpret_cast<intptr_t>(&got));
    EXPECT_EQ(got.day, 29);
    EXPECT_EQ(got.second, 59);
}

// Whole runs through the interpreter.
class DialogRun : public ::testing::Test {
protected:
    void Run(const std::string& script, const std::u16string& actions = u"") {
        if (!actions.empty()) {
            CString error;
            ASSERT_TRUE(m_desktop.LoadUiActions(actions, u"t.actions", error)) << error.ToUtf8();
        }
        COrvoBasic basic;
        ASSERT_TRUE(basic.ExecuteProgram(CString::FromUtf8(m_dir.Write("t.bas", script))));
    }

    test::TempDir m_dir;
    RecordingDesktop m_desktop;
};

TEST_F(DialogRun, WithoutActionsADialogIsCancelledAtOnce) {
    auto start = std::chrono::steady_clock::now();
    Run("timerstart 10\ndialog \"Alone\", 0, 0, 10, 10\nenddialog\nprint \"after\"\n");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    ASSERT_EQ(m_desktop.notes.size(), 1u);
    EXPECT_EQ(m_desktop.notes[0], "no UI actions: \"Alone\" cancelled");
    EXPECT_EQ(m_desktop.Printed(), std::vector<std::string>{"after"});
}

TEST_F(DialogRun, AFailingActionIsNotedAndEndsTheRun) {
    Run("dialog \"D\", 0, 0, 10, 10\ncontrol edittext \"\", 5, 0, 0, 1, 1\nenddialog\nprint \"after\"\n",
        u"type 5 \"ok\"\n\nclick 6\n");
    ASSERT_EQ(m_desktop.notes.size(), 1u);
    EXPECT_EQ(m_desktop.notes[0], "t.actions:3: click: no control 6 in \"D\"");
    EXPECT_TRUE(m_desktop.UiActionsFailed());
    EXPECT_TRUE(m_desktop.Printed().empty());
}

TEST_F(DialogRun, The65535ControlLimit) {
    std::string block;
    for (int i = 0; i < 0xFFFF; ++i) block += "control statictext \"\", 7, 0, 0, 1, 1\n";
    Run("dialog \"Many\", 0, 0, 10, 10\n" + block + "enddialog\nprint \"shown\"\n", u"snapshot\nok\n");
    EXPECT_EQ(m_desktop.Printed(), std::vector<std::string>{"shown"});
    EXPECT_EQ(std::count(m_desktop.output.begin(), m_desktop.output.end(), '\n'), 0xFFFF + 1);
    m_desktop.ClearBoxes();
    Run("dialog \"Too many\", 0, 0, 10, 10\n" + block + "control statictext \"\", 7, 0, 0, 1, 1\nenddialog\n"
        "print \"went on\"\n");
    ASSERT_EQ(m_desktop.Errors().size(), 1u);
    EXPECT_NE(m_desktop.Errors()[0].find("Dialog creating error"), std::string::npos);
    EXPECT_EQ(m_desktop.Printed(), std::vector<std::string>{"went on"});
}

TEST_F(DialogRun, TheCApiLoadsActionsIntoTheCurrentDesktop) {
    char error[16];
    EXPECT_EQ(OB_SetUiActionsUtf8("ok\njump", "x.actions", error, sizeof error), 0);
    EXPECT_STREQ(error, "x.actions:2: un");   // cut to the buffer
    EXPECT_EQ(OB_LoadUiActionsFile(m_dir.Path("missing").c_str(), nullptr, 0), 0);
    ASSERT_EQ(OB_SetUiActionsUtf8("click 9", "x.actions", nullptr, 0), 1);
    Run("dialog \"D\", 0, 0, 10, 10\nenddialog\n");
    EXPECT_EQ(OB_UiActionsFailed(), 1);
    ASSERT_EQ(OB_SetUiActions(u"ok", u"y.actions", nullptr, 0), 1);   // a new file starts afresh
    EXPECT_EQ(OB_UiActionsFailed(), 0);
}

}  // namespace
