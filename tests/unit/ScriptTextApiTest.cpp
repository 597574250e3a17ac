// Scripts from memory, interactive chunks, script arguments, the variable
// list and the readable details of error records, through the C API.
#include <gtest/gtest.h>

#include <orvobasic/orvobasic.h>

#include "HostTestUtil.h"

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace {

using ob::test::ScopedDesktop;

// The readable details of each reported error.
struct Details {
    int id;
    std::string subject, osReason, suggestion, hint;
    int subjectColumn;
};

int32_t Collect(OB_HANDLE, const OB_ErrorInfo* e, void* user) {
    static_cast<std::vector<Details>*>(user)->push_back(
        {e->id, e->subject, e->osReason, e->suggestion, e->hint, e->subjectColumn});
    return OB_CONTINUE;
}

void Remember(const char* name, const char* value, int32_t count, void* user) {
    (*static_cast<std::map<std::string, std::string>*>(user))[name] = std::string(value) + "/" + std::to_string(count);
}

class ScriptTextApi : public ::testing::Test {
protected:
    void SetUp() override {
        m_script = OB_CreateScript();
        OB_SetErrorHandler(m_script, Collect, &m_errors);
    }
    void TearDown() override { OB_FreeScript(m_script); }
    int32_t Run(const std::string& text) { return OB_RunScriptText(m_script, "mem", text.data(), -1); }

    ScopedDesktop m_desktop;
    OB_HANDLE m_script = nullptr;
    std::vector<Details> m_errors;
};

TEST_F(ScriptTextApi, RunsTextAndReportsUnderItsName) {
    ASSERT_EQ(Run("print \"a\"\ny = nosuch\n"), 1);
    EXPECT_EQ(m_desktop.Printed(), std::vector<std::string>{"a"});
    OB_ErrorInfo info;
    ASSERT_EQ(OB_GetLastErrorInfo(m_script, &info), 1);
    EXPECT_STREQ(info.script, "mem");
    EXPECT_EQ(info.line, 2);
    EXPECT_EQ(OB_RunScriptText(m_script, "x", nullptr, 0), 0);
    EXPECT_EQ(OB_RunScriptText(nullptr, "x", "print 1", -1), 0);
}

TEST_F(ScriptTextApi, ErrorRecordsCarryNameSuggestionReasonAndHint) {
    Run("total = 1\nx = totl\nopen \"/no/such/dir/f\" for input as 1\nnext = 2\n");
    ASSERT_GE(m_errors.size(), 3u);
    EXPECT_EQ(m_errors[0].id, 37);
    EXPECT_EQ(m_errors[0].subject, "totl");
    EXPECT_EQ(m_errors[0].suggestion, "total");
    EXPECT_EQ(m_errors[0].subjectColumn, 5);
    auto open = std::find_if(m_errors.begin(), m_errors.end(), [](const Details& d) { return d.id == 47; });
    ASSERT_NE(open, m_errors.end());
    EXPECT_EQ(open->subject, "/no/such/dir/f");
    EXPECT_FALSE(open->osReason.empty());
    EXPECT_NE(m_errors.back().hint.find("statement word"), std::string::npos);
    // Errors without a name have empty details, never NULL pointers.
    EXPECT_TRUE(m_errors.back().subject.empty());
}

TEST_F(ScriptTextApi, ArgumentsBecomeArgvOnlyWhenGiven) {
    Run("print ubound(\"ARGV\")\n");
    const char* args[] = {"one", "2"};
    OB_SetScriptArgumentsUtf8(m_script, 2, args);
    Run("print ubound(\"ARGV\"); ARGV[0]; ARGV[1] + 1\n");
    EXPECT_EQ(m_desktop.Printed(), (std::vector<std::string>{"0", "2one21.000000"}));
}

TEST_F(ScriptTextApi, InteractiveChunksShareOneLiveInterpreter) {
    auto chunk = [&](const std::string& text) { return OB_ExecuteInteractive(m_script, "s", text.data(), -1); };
    EXPECT_EQ(chunk("x = 20\n"), 1);
    EXPECT_EQ(chunk("function add(a, b)\n  add = a + b\nendfunction\n"), 0);   // entered, not run
    EXPECT_EQ(chunk("y = add(x, 22)\nprint y\n"), 1);
    EXPECT_EQ(chunk("z = nosuch\n"), 1);
    EXPECT_EQ(chunk("dim list[3]\nlist[0] = \"a\"\nprint \"after the error\"\n"), 1);
    EXPECT_EQ(m_desktop.Printed(), (std::vector<std::string>{"42.000000", "after the error"}));
    ASSERT_FALSE(m_errors.empty());
    EXPECT_EQ(m_errors[0].id, 37);

    std::map<std::string, std::string> vars;
    OB_ListVariablesUtf8(m_script, Remember, &vars);
    EXPECT_EQ(vars["x"], "20.000000/1");
    EXPECT_EQ(vars["y"], "42.000000/1");
    EXPECT_EQ(vars["list"], "a/3");
    EXPECT_EQ(vars.count("True"), 0u);
}

}  // namespace
