// The variable store: decorated names of locals, exact names of globals,
// element writes and their errors, sizing, dim, and the two store built-ins.
#include <orvobasic/COrvoBasic.h>
#include <orvobasic/desktop.h>

#include "HostTestUtil.h"
#include "ui/headless/HeadlessDesktop.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace ob;

class VariableStoreTest : public test::InterpreterTest {
protected:

    // The first line of every error box shown so far, in order.
    std::vector<std::string> Errors() const {
        std::vector<std::string> out;
        for (const auto& box : m_desktop.Boxes()) {
            if (box.style != (ui::MB_OKCANCEL | ui::MB_ICONSTOP)) continue;
            std::string text = box.text.ToUtf8();
            out.push_back(text.substr(0, text.find('\n')));
        }
        return out;
    }

    // Runs one dim/global statement given as text.
    void RunDim(const std::u16string& statement) {
        B().SetProgramText(CString(statement));
        B().get_token();
        B().ExecDim(B().Command() == CMD_GLOBAL);
    }

    // The variable under exactly this key, or null (the key is not decorated).
    CBasicVariable* Key(const std::u16string& key) {
        CString name(key);
        CBasicVariable* var = B().FindVariable(name);
        return name == CString(key) ? var : nullptr;
    }
};

TEST_F(VariableStoreTest, PredefinedGlobalsKeepTheirSpelling) {
    CString name = u"True";
    CBasicVariable* t = B().FindVariable(name);
    ASSERT_NE(t, nullptr);
    EXPECT_EQ(t->GetStringValue(), u"True");
    CString lower = u"true";
    EXPECT_EQ(B().FindVariable(lower), nullptr);
    CString nothing = u"Nothing";
    ASSERT_NE(B().FindVariable(nothing), nullptr);
    EXPECT_EQ(B().FindVariable(nothing)->GetType(), BVT_OBJECT);
    EXPECT_EQ(B().VariableCount(), 3u);
}

TEST_F(VariableStoreTest, LocalsAreLowerCasedAndDecorated) {
    ASSERT_TRUE(B().SetVariable(u"Total", 5.0, 0));
    EXPECT_NE(Key(u"total__#1"), nullptr);
    CString upper = u"TOTAL";
    CBasicVariable* var = B().FindVariable(upper);
    ASSERT_NE(var, nullptr);
    EXPECT_EQ(upper, u"total__#1");   // the caller learns the decorated name
    EXPECT_EQ(var->GetNumberValue(), 5.0);
    EXPECT_EQ(B().GetVariableName(u"ToTaL"), u"total__#1");
    EXPECT_EQ(B().GetVariableName(u"unknown"), u"unknown__#1");
}

TEST_F(VariableStoreTest, GlobalsAreCaseSensitive) {
    ASSERT_TRUE(B().SetVariableDirect(u"Gx", CBasicVariable(1.0), 0, true));
    EXPECT_NE(Key(u"Gx"), nullptr);
    EXPECT_EQ(B().GetVariableName(u"Gx"), u"Gx");
    CString other = u"gx";
    EXPECT_EQ(B().FindVariable(other), nullptr);
    // a global cannot be undefined: undefining always means the local
    EXPECT_FALSE(B().VariableUndefine(u"Gx"));
    EXPECT_NE(Key(u"Gx"), nullptr);
}

TEST_F(VariableStoreTest, ElementWritesAndTheirErrors) {
    B().SetVariableSize(u"a", 5, false);
    EXPECT_TRUE(B().SetVariableDirect(u"a", CBasicVariable(1.0), 4, false));
    EXPECT_FALSE(B().SetVariableDirect(u"a", CBasicVariable(1.0), 5, false));
    EXPECT_FALSE(B().SetVariableDirect(u"a", CBasicVariable(1.0), -1, false));
    EXPECT_FALSE(B().SetVariableDirect(u"x", CBasicVariable(1.0), 2, false));
    EXPECT_EQ(Key(u"x__#1"), nullptr);
    EXPECT_TRUE(B().SetVariableDirect(u"x", CBasicVariable(1.0), 0, false));
    EXPECT_NE(Key(u"x__#1"), nullptr);
    EXPECT_EQ(Errors(), (std::vector<std::string>{"Array index is out of bounds", "Array index is out of bounds",
                                                  "Undefined array variable"}));
    // SetVariable reports the same errors but always answers true
    EXPECT_TRUE(B().SetVariable(u"a", 1.0, 9));
    EXPECT_EQ(Errors().size(), 4u);
}

TEST_F(VariableStoreTest, ElementWriteCopiesOnlyTheCurrentElement) {
    B().SetVariableSize(u"a", 3, false);
    CBasicVariable value;
    value.AddItem(u"first");
    value.AddItem(u"second");
    value.SetCurIndex(1);
    B().SetVariable(u"a", value, 2);
    CBasicVariable* a = Key(u"a__#1");
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(a->GetNumItems(), 3);
    EXPECT_EQ(a->GetItem(2).GetStringValue(), u"second");
}

TEST_F(VariableStoreTest, CopyVariableReplacesOrCreatesWhole) {
    CBasicVariable array;
    array.SetArraySize(4);
    array.SetValue(CString(u"x"), 3);
    B().CopyVariable(u"c", array);
    ASSERT_NE(Key(u"c__#1"), nullptr);
    EXPECT_EQ(Key(u"c__#1")->GetNumItems(), 4);
    B().CopyVariable(u"c", CBasicVariable(2.0));
    EXPECT_EQ(Key(u"c__#1")->GetNumItems(), 1);
    B().CopyVariable(u"G", array, true);
    EXPECT_NE(Key(u"G"), nullptr);
}

TEST_F(VariableStoreTest, SizesAndUndefine) {
    EXPECT_EQ(B().GetVariableSize(u"none"), 0);
    B().SetVariableSize(u"one", 1, false);
    EXPECT_EQ(B().GetVariableSize(u"one"), 0);   // one unset element counts as nothing
    B().SetVariable(u"one", 1.0, 0);
    EXPECT_EQ(B().GetVariableSize(u"one"), 1);
    B().SetVariableSize(u"arr", 7, false);
    EXPECT_EQ(B().GetVariableSize(u"arr"), 7);
    B().SetVariableSize(u"arr", 0, false);   // no size: unchanged
    EXPECT_EQ(B().GetVariableSize(u"arr"), 7);
    B().SetVariableSize(u"arr", 2, false);
    EXPECT_EQ(B().GetVariableSize(u"arr"), 2);
    EXPECT_TRUE(B().VariableUndefine(u"ARR"));
    EXPECT_FALSE(B().VariableUndefine(u"arr"));
    EXPECT_EQ(B().GetVariableSize(u"arr"), 0);
}

TEST_F(VariableStoreTest, DimDeclarations) {
    RunDim(u"dim a[5], b, c as integer, d[3] as string");
    EXPECT_TRUE(Errors().empty());
    ASSERT_NE(Key(u"a__#1"), nullptr);
    EXPECT_EQ(Key(u"a__#1")->GetNumItems(), 5);
    EXPECT_NE(Key(u"b__#1"), nullptr);
    EXPECT_NE(Key(u"c__#1"), nullptr);
    ASSERT_NE(Key(u"d__#1"), nullptr);
    EXPECT_EQ(Key(u"d__#1")->GetNumItems(), 3);
    RunDim(u"global Big[16000]");
    ASSERT_NE(Key(u"Big"), nullptr);
    EXPECT_EQ(Key(u"Big")->GetNumItems(), 16000);
}

TEST_F(VariableStoreTest, DimSizeLimits) {
    for (const char16_t* statement : {u"dim a[0]", u"dim a[16001]", u"dim a[-3]"}) RunDim(statement);
    EXPECT_EQ(Errors(), std::vector<std::string>(3, "Incorrect array size"));
    EXPECT_EQ(Key(u"a__#1"), nullptr);
    RunDim(u"dim a[2.9]");   // sizes truncate toward zero
    ASSERT_NE(Key(u"a__#1"), nullptr);
    EXPECT_EQ(Key(u"a__#1")->GetNumItems(), 2);
}

TEST_F(VariableStoreTest, RedeclaringAnExistingVariable) {
    RunDim(u"dim a[3]");
    Key(u"a__#1")->SetValue(CString(u"kept"), 1);
    RunDim(u"dim a[5]");
    EXPECT_EQ(Key(u"a__#1")->GetNumItems(), 5);
    EXPECT_EQ(Key(u"a__#1")->GetItem(1).GetStringValue(), u"kept");
    RunDim(u"dim a[16000]");   // the largest size leaves an existing array as it is
    EXPECT_EQ(Key(u"a__#1")->GetNumItems(), 5);
    Key(u"a__#1")->SetValue(CString(u"zero"), 0);
    RunDim(u"dim a as integer");   // keeps the size, clears element 0
    EXPECT_EQ(Key(u"a__#1")->GetNumItems(), 5);
    EXPECT_FALSE(Key(u"a__#1")->GetItem(0).IsSet());
    RunDim(u"dim a");
    EXPECT_EQ(Key(u"a__#1")->GetNumItems(), 1);
    EXPECT_TRUE(Errors().empty());
}

TEST_F(VariableStoreTest, MalformedDim) {
    for (const char16_t* statement : {u"dim 5", u"dim a as while", u"dim b as unknowntype", u"dim c[2", u"dim d e",
                                      u"dim f as integer g"})
        RunDim(statement);
    EXPECT_EQ(Errors(), std::vector<std::string>(6, "Syntax error"));
}

TEST_F(VariableStoreTest, SubscriptsFromTheSource) {
    B().SetProgramText(u"abc[2.9] = 1");
    CString name;
    ASSERT_TRUE(B().GetVariable(name));
    EXPECT_EQ(name, u"abc");
    EXPECT_EQ(B().PendingIndex(), 2);
    B().SetProgramText(u"9abc");
    EXPECT_FALSE(B().GetVariable(name));
    EXPECT_EQ(B().GetPosition(), 0u);
    int index = -5;
    B().SetProgramText(u"3 4]");
    EXPECT_FALSE(B().GetIndex(index));
    B().SetProgramText(u"]");
    EXPECT_FALSE(B().GetIndex(index));
    EXPECT_EQ(index, -5);
    B().SetProgramText(u"\"7\"]");
    EXPECT_TRUE(B().GetIndex(index));
    EXPECT_EQ(index, 7);
}

// Collecting at level 1 drops exactly the leftovers of level 2.
TEST_F(VariableStoreTest, GarbageCollectionTakesTheNextLevelOnly) {
    for (const char16_t* key : {u"a__#2", u"b__#2", u"c__#3", u"d__#12", u"__#2"})
        B().SetVariableDirect(key, CBasicVariable(1.0), 0, true);
    CBasicVariable result;
    CArgArray none;
    ASSERT_TRUE(B().ExecGarbageCollection(result, none, FT_GARBAGECOLLECTION));
    EXPECT_EQ(result.GetLongValue(), 2);
    EXPECT_EQ(Key(u"a__#2"), nullptr);
    EXPECT_NE(Key(u"c__#3"), nullptr);
    EXPECT_NE(Key(u"d__#12"), nullptr);
    EXPECT_NE(Key(u"__#2"), nullptr);   // a key no longer than the suffix is not a leftover
}

TEST_F(VariableStoreTest, VarStatsIsATwoElementArray) {
    B().SetVariable(u"x", 1.0, 0);
    CBasicVariable result;
    CArgArray none;
    ASSERT_TRUE(B().ExecGetVarStats(result, none, FT_GETVARSTATS));
    ASSERT_EQ(result.GetNumItems(), 2);
    EXPECT_EQ(result.GetItem(0).GetLongValue(), 4);
    EXPECT_EQ(result.GetItem(1).GetLongValue(), 0);
}

}  // namespace
