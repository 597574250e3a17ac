// The sandbox as a property of the tables: every statement word and every
// built-in carries a capability decision, and a denied built-in is denied
// whichever way a script reaches it (an expression, "call", an event handler,
// a timer tick).
#include "HostTestUtil.h"

#include "engine/Capabilities.h"

#include <filesystem>
#include <string>

namespace {

using ob::test::TempDir;

class SandboxTable : public ob::test::InterpreterTest {
protected:
    void SetUp() override {
        InterpreterTest::SetUp();
        B().SetErrorHandler([this](const ob::ErrorRecord& r) {
            m_errors.push_back(r.id);
            return OB_CONTINUE;
        });
    }
    // Runs `text` in the temporary directory with the capabilities given.
    void Run(const std::string& text, unsigned allowed) {
        m_errors.clear();
        B().SetCapabilities(allowed);
        m_dir.Write("s.bas", text);
        ASSERT_TRUE(B().ExecuteProgram(m_dir.WPath("s.bas")));
    }
    TempDir m_dir;
    std::vector<int> m_errors;
};

TEST(SandboxTables, EveryStatementWordHasADecision) {
    for (int c = ob::CMD_PRINT; c <= ob::CMD_ENCRYPT; ++c)
        EXPECT_TRUE(ob::StatementCapabilities(static_cast<ob::COMMAND_TYPE>(c)).has_value())
            << "statement value " << c << " has no capability decision";
}

TEST(SandboxTables, EveryBuiltInIsInTheInterpretersTable) {
    ob::test::ScopedDesktop desktop;
    COrvoBasic basic;
    for (const auto& b : ob::BuiltInTable()) {
        const CFuncDesc* desc = basic.FindFuncDesc(b.name);
        ASSERT_NE(desc, nullptr) << b.name.ToUtf8();
        EXPECT_EQ(desc->capabilities, b.capabilities) << b.name.ToUtf8();
    }
}

// Each built-in that needs a capability, called with the sandbox closed, as an
// expression and through "call": both report 21 and nothing else happens.
TEST_F(SandboxTable, ADeniedBuiltInIsDeniedBothWays) {
    for (const auto& b : ob::BuiltInTable()) {
        if (!b.capabilities) continue;
        std::string name = b.name.ToUtf8();
        std::string args = "(\"" + m_dir.Path("probe") + "\", 1)";
        Run("x = " + name + args + "\ncall " + name + args + "\n", OB_CAP_ALL & ~b.capabilities);
        EXPECT_EQ(m_errors, (std::vector<int>{21, 21})) << name;
    }
    EXPECT_FALSE(std::filesystem::exists(m_dir.Path("probe.dbf")));
}

// Each statement that needs a capability reports 40 under the sandbox.
TEST_F(SandboxTable, ADeniedStatementReportsUnsupportedKeyword) {
    const std::pair<const char*, unsigned> statements[] = {
        {"open \"f.txt\" for output as 1 text", OB_CAP_FILES}, {"close 1", OB_CAP_FILES},
        {"run \"x.bas\"", OB_CAP_PROCESS}, {"runexe \"/bin/true\", \"\"", OB_CAP_PROCESS},
        {"playsound \"a.wav\"", OB_CAP_SOUND}, {"closedialog", OB_CAP_DIALOGS},
    };
    for (const auto& [text, capability] : statements) {
        Run(std::string(text) + "\n", OB_CAP_ALL & ~capability);
        EXPECT_EQ(m_errors, (std::vector<int>{40})) << text;
    }
}

// The trial's escape: "call dbfcreate" next to an existing table, and appends
// in a loop, under the sandbox. The table must come out byte for byte as it was.
TEST_F(SandboxTable, CallCannotTouchATable) {
    std::string table(330, 'T');
    m_dir.Write("victim2.dbf", table);
    Run("dim f[3]\nf[0] = \"NAME\"\nf[1] = \"C\"\nf[2] = 10\ncall dbfcreate(\"" + m_dir.Path("victim2") + "\", f)\n"
        "for i = 1 to 3\ncall dbfappend(0)\nnext\ncall writeline(1, \"x\")\n",
        OB_CAP_NONE);
    EXPECT_EQ(m_errors, (std::vector<int>{21, 21, 21, 21, 21}));
    EXPECT_EQ(std::filesystem::file_size(m_dir.Path("victim2.dbf")), table.size());
}

// A denied built-in inside an event handler and a timer tick is denied too.
TEST_F(SandboxTable, HandlersAndTimersPassTheSameCheck) {
    Run("event create go, onGo\nevent create OnTimer, tick\nthrow go()\ntimerstart 10\nstayresident\nend\n"
        "function onGo()\ncall findfiles(\"*\", 0)\nendfunction\n"
        "function tick()\ntimerstop\ncall dbfcreate(\"" + m_dir.Path("t") + "\", 1)\nendfunction\n",
        OB_CAP_NONE);
    ob::ui::GetDesktop().RunMessageLoop(200);
    EXPECT_EQ(m_errors, (std::vector<int>{21, 21}));
    EXPECT_FALSE(std::filesystem::exists(m_dir.Path("t.dbf")));
}

}  // namespace
