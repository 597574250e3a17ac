// The prompts without a dialog of the script's own: the action verbs that
// answer them, the headless file dialog's rules for names, the wrong prompt
// for an action, and "ask" reaching a host's message-box handler.
#include "HostTestUtil.h"

#include <orvobasic/orvobasic.h>

#include "ui/ActionScript.h"

#include <filesystem>
#include <fstream>
#include <string>

using namespace ob;
using namespace ob::ui;

namespace {

class NotingDesktop : public test::ScopedDesktop {
public:
    void UiNote(const CString& line) override { notes.push_back(line.ToUtf8()); }
    std::vector<std::string> notes;
};

TEST(PromptActions, VerbsParseTheirArguments) {
    ActionScript script;
    CString error;
    ASSERT_TRUE(script.Load(u"answer yes\nanswer no\nanswer cancel\nmenu 2\nmenu \"Copy\"\nfile \"a b\"\nfile cancel",
                            u"p.actions", error))
        << error.ToUtf8();
    for (long button : {IDYES, IDNO, IDCANCEL}) EXPECT_EQ(script.Next()->args[0].number, button);
    EXPECT_FALSE(script.Next()->args[0].isText);
    EXPECT_TRUE(script.Next()->args[0].isText);
    EXPECT_EQ(script.Next()->args[0].text, u"a b");
    EXPECT_FALSE(script.Next()->args[0].isText);

    const std::pair<const char16_t*, const char*> bad[] = {
        {u"answer maybe", "p.actions:1: bad argument \"maybe\""},
        {u"answer \"yes\"", "p.actions:1: bad argument \"yes\""},
        {u"file later", "p.actions:1: bad argument \"later\""},
        {u"menu", "p.actions:1: missing argument"},
        {u"menu x", "p.actions:1: bad argument \"x\""},
    };
    for (const auto& [text, message] : bad) {
        ActionScript other;
        EXPECT_FALSE(other.Load(text, u"p.actions", error));
        EXPECT_EQ(error.ToUtf8(), message);
    }
}

class PromptRun : public ::testing::Test {
protected:
    void Run(const std::string& script, const std::u16string& actions) {
        CString error;
        if (!actions.empty()) {
            ASSERT_TRUE(m_desktop.LoadUiActions(actions, u"t.actions", error)) << error.ToUtf8();
        }
        COrvoBasic basic;
        ASSERT_TRUE(basic.ExecuteProgram(CString::FromUtf8(m_dir.Write("t.bas", script))));
    }

    test::TempDir m_dir;
    NotingDesktop m_desktop;
};

TEST_F(PromptRun, AnActionForAnotherPromptFailsAndEndsTheRun) {
    Run("a = ask(\"Go?\")\nprint \"after\"\n", u"menu 1\n");
    EXPECT_EQ(m_desktop.notes, std::vector<std::string>{"t.actions:1: menu: no menu is open (\"Go?\" is)"});
    EXPECT_TRUE(m_desktop.UiActionsFailed());
    EXPECT_TRUE(m_desktop.Printed().empty());
}

TEST_F(PromptRun, MenuNumbersBeyondTheItemsAreRefused) {
    Run("m = popupmenu(1, 2, \"a\", \"b\")\nprint m\n", u"menu 3\n");
    EXPECT_EQ(m_desktop.notes, std::vector<std::string>{"t.actions:1: menu: no item 3 in the menu"});
}

// Without an action file a question is a box like any other: a queued
// answer, else OK (which is not Yes), and no note.
TEST_F(PromptRun, WithoutActionsTheHeadlessDesktopAnswersAskAsAnyBox) {
    m_desktop.QueueAnswer(IDYES);
    Run("print ask(\"Sure?\")\nprint ask(\"Again?\")\n", u"");
    EXPECT_EQ(m_desktop.Printed(), (std::vector<std::string>{"1", "0"}));
    EXPECT_TRUE(m_desktop.notes.empty());
}

TEST_F(PromptRun, FileNamesAreCheckedAsTheRealDialogsCheckThem) {
    std::string dir = std::filesystem::path(m_dir.Path("x")).parent_path().string();
    std::ofstream(dir + "/has.ext") << "x";
    FileDialogRequest save;
    save.save = true;
    save.defaultExtension = u"txt";
    save.initialFolder = CString::FromUtf8(dir);
    CString error;
    ASSERT_TRUE(m_desktop.LoadUiActions(u"file \"has.ext\"\nfile \"sub/../new\"\nfile \"missing/x\"", u"t.actions", error));
    EXPECT_EQ(m_desktop.FileDialog(save).ToUtf8(), dir + "/has.ext");   // an extension is kept
    EXPECT_EQ(m_desktop.FileDialog(save).ToUtf8(), dir + "/new.txt");
    EXPECT_EQ(m_desktop.FileDialog(save).ToUtf8(), "");   // no such folder: refused
    ASSERT_EQ(m_desktop.notes.size(), 1u);
    EXPECT_EQ(m_desktop.notes[0], "t.actions:3: file: no folder for \"" + dir + "/missing/x.txt\"");

    FileDialogRequest open;
    open.initialFolder = save.initialFolder;
    ASSERT_TRUE(m_desktop.LoadUiActions(u"file \".\"", u"t.actions", error));
    EXPECT_EQ(m_desktop.FileDialog(open).ToUtf8(), "");
    EXPECT_EQ(m_desktop.notes.back(), "t.actions:1: file: \"" + dir + "/\" is a folder");
}

int32_t AnswerYes(OB_HANDLE, const char* text, uint32_t style, void* userData) {
    static_cast<std::string*>(userData)->append(std::to_string(style) + ":" + text + ";");
    return OB_IDYES;
}

TEST_F(PromptRun, AskReachesTheHostsMessageBoxHandler) {
    std::string seen;
    OB_OutputHandlers handlers = {nullptr, AnswerYes, &seen};
    OB_HANDLE h = OB_CreateScript();
    OB_SetOutputHandlers(h, &handlers);
    EXPECT_EQ(OB_RunScriptUtf8(h, m_dir.Write("a.bas", "a = ask(\"Keep?\")\n").c_str()), 1);
    VARIANT v;
    VariantInit(&v);
    ASSERT_TRUE(OB_GetVariableUtf8(h, "a", 0, &v));
    EXPECT_EQ(v.vt == VT_I4 ? v.lVal : -1, 1);
    VariantClear(&v);
    OB_FreeScript(h);
    EXPECT_EQ(seen, std::to_string(OB_MB_YESNO) + ":Keep?;");
    EXPECT_TRUE(m_desktop.Boxes().empty());
}

}  // namespace
