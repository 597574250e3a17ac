// Statements compiled on first execution against the text path, in the
// situations the runner's differential tests do not reach: chunks of an
// interactive session that add text after statements ran, a line hook and a
// step budget that see every statement, and a watch whose handler runs
// script code in the middle of a loop.
#include <gtest/gtest.h>

#include <orvobasic/COrvoBasic.h>

#include "HostTestUtil.h"

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

using ob::test::ScopedDesktop;

// What one run showed: printed lines, then "error N at LINE" for each report.
struct Outcome {
    std::vector<std::string> printed;
    std::vector<std::string> errors;
    std::vector<int> hookLines;
    int runResult = OB_OK;
    bool operator==(const Outcome&) const = default;
};

// An interpreter made with the compiled engine on or off (the switch is read
// when an interpreter is made).
std::unique_ptr<COrvoBasic> MakeInterpreter(bool compiled) {
    if (compiled)
        unsetenv("OB_ENGINE");
    else
        setenv("OB_ENGINE", "text", 1);
    auto basic = std::make_unique<COrvoBasic>();
    unsetenv("OB_ENGINE");
    return basic;
}

// Runs `chunks` (one text for a whole run, several for an interactive
// session) on one engine; `setup` may set hooks and budgets first.
template <typename Setup>
Outcome RunOn(bool compiled, const std::vector<std::string>& chunks, bool interactive, Setup setup) {
    ScopedDesktop desktop;
    Outcome outcome;
    {
        auto basic = MakeInterpreter(compiled);
        basic->SetErrorHandler([&](const ob::ErrorRecord& record) {
            outcome.errors.push_back("error " + std::to_string(record.id) + " at " + std::to_string(record.line));
            return OB_CONTINUE;
        });
        setup(*basic, outcome);
        for (const std::string& chunk : chunks) {
            if (interactive)
                basic->ExecuteInteractive(u"session", chunk);
            else
                basic->ExecuteProgramText(u"mem", chunk);
        }
        outcome.runResult = basic->GetRunResult();
    }
    outcome.printed = desktop.Printed();
    return outcome;
}

Outcome RunOn(bool compiled, const std::vector<std::string>& chunks, bool interactive = false) {
    return RunOn(compiled, chunks, interactive, [](COrvoBasic&, Outcome&) {});
}

const char* const kLoops =
    "s = 0\n"
    "dim a[4]\n"
    "for i = 0 to 3\n"
    "  a[i] = i * i\n"
    "  s = s + a[i] * 2 - 1\n"
    "  if s > 3 then\n"
    "    s = s - 1\n"
    "  else\n"
    "    s = s + 0.5\n"
    "  endif\n"
    "next\n"
    "k = 0\n"
    "do while k < 3\n"
    "  k = k + 1\n"
    "loop\n"
    "print s; \" \"; k\n";

TEST(CompiledStatements, InteractiveChunksAddTextAfterCompiledStatementsRan) {
    // The second chunk is appended behind the first: what was learned about
    // the text before must not misread it, and variables carry over.
    std::vector<std::string> chunks = {kLoops, "for i = 1 to 2\n  s = s + k * i\nnext\nprint s\n",
                                       "s = s + nosuch\nprint s\n", kLoops};
    Outcome text = RunOn(false, chunks, true);
    EXPECT_EQ(RunOn(true, chunks, true), text);
    ASSERT_EQ(text.printed.size(), 4u);
    EXPECT_EQ(text.printed[0], "23.000000 3.000000");
    EXPECT_EQ(text.printed[1], "32.000000");
    ASSERT_FALSE(text.errors.empty());
    EXPECT_EQ(text.errors[0].substr(0, 8), "error 37");
}

TEST(CompiledStatements, RunningTheSameInterpreterAgainStartsFromTheNewText) {
    std::vector<std::string> chunks = {kLoops, "x = 1\ns = 2\nfor i = 1 to 3\n  s = s * x + i\nnext\nprint s\n"};
    Outcome text = RunOn(false, chunks);
    EXPECT_EQ(RunOn(true, chunks), text);
    EXPECT_EQ(text.printed, (std::vector<std::string>{"23.000000 3.000000", "8.000000"}));
}

TEST(CompiledStatements, LineHookSeesEveryStatementOnBothEngines) {
    auto hooked = [](COrvoBasic& basic, Outcome& outcome) {
        basic.SetLineHook([&outcome](const CString&, int line, unsigned) {
            outcome.hookLines.push_back(line);
            return OB_CONTINUE;
        });
    };
    Outcome text = RunOn(false, {kLoops}, false, hooked);
    EXPECT_EQ(RunOn(true, {kLoops}, false, hooked), text);
    EXPECT_GT(text.hookLines.size(), 30u);
}

TEST(CompiledStatements, StepBudgetEndsTheRunAtTheSameStatement) {
    for (uint64_t steps : {5u, 12u, 25u}) {
        auto budget = [steps](COrvoBasic& basic, Outcome&) {
            ob::Budgets budgets;
            budgets.maxSteps = steps;
            basic.SetBudgets(budgets);
        };
        std::string program = std::string(kLoops) + "print s\n";
        Outcome text = RunOn(false, {program}, false, budget);
        EXPECT_EQ(RunOn(true, {program}, false, budget), text) << steps << " steps";
        EXPECT_EQ(text.runResult, OB_E_STEP_LIMIT) << steps << " steps";
    }
}

TEST(CompiledStatements, WatchCreatedAndRemovedInsideALoop) {
    // The handler of a watch runs script code in the middle of a compiled loop.
    const std::string program =
        "event create Changed, onchanged\n"
        "global w\n"
        "w = 0\n"
        "for i = 1 to 5\n"
        "  w = w + 1\n"
        "  if i = 2 then\n"
        "    watch create w, Changed\n"
        "  endif\n"
        "next\n"
        "print w\n"
        "end\n"
        "function onchanged(v)\n"
        "  print \"w \"; v\n"
        "  if v => 4 then\n"
        "    watch remove w\n"
        "  endif\n"
        "endfunction\n";
    Outcome text = RunOn(false, {program});
    EXPECT_EQ(RunOn(true, {program}), text);
    EXPECT_EQ(text.printed, (std::vector<std::string>{"w 3.000000", "w 4.000000", "5.000000"}));
}

}  // namespace
