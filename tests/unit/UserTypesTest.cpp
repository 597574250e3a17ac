// Record types: the packed layout, the conversions of field reads and
// writes, and the host's access to record variables by name.
#include <orvobasic/COrvoBasic.h>
#include <orvobasic/desktop.h>

#include "HostTestUtil.h"
#include "ui/headless/HeadlessDesktop.h"
#include "values/CTypeStructure.h"
#include "values/UserTypes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace ob;

constexpr size_t kPtr = sizeof(void*);

// A layout built field by field, with its buffer.
CTypeStructure Layout(std::initializer_list<std::tuple<const char16_t*, TYPE_DEFINITION, int>> fields) {
    CTypeStructure type;
    for (const auto& [name, kind, count] : fields) EXPECT_TRUE(type.AddField(name, kind, count));
    type.AllocateBuffer();
    return CTypeStructure(type);
}

TEST(CTypeStructureTest, FieldsArePackedWithoutPadding) {
    CTypeStructure t = Layout({{u"a", TD_CHAR, 1}, {u"b", TD_INTEGER, 1}, {u"c", TD_DOUBLE, 3}});
    ASSERT_EQ(t.Fields().size(), 3u);
    EXPECT_EQ(t.Fields()[0].offset, 0u);
    EXPECT_EQ(t.Fields()[1].offset, 1u);
    EXPECT_EQ(t.Fields()[2].offset, 5u);
    EXPECT_EQ(t.Size(), 29u);
}

TEST(CTypeStructureTest, StringFieldsArePointerSized) {
    CTypeStructure t = Layout({{u"one", TD_STRING, 1}, {u"four", TD_STRING, 4}, {u"w", TD_WORD, 1}});
    EXPECT_TRUE(t.Fields()[0].indirect);
    EXPECT_FALSE(t.Fields()[1].indirect);
    EXPECT_EQ(t.Fields()[1].offset, kPtr);
    EXPECT_EQ(t.Fields()[2].offset, 5 * kPtr);
    EXPECT_EQ(t.Size(), 5 * kPtr + 2);
}

TEST(CTypeStructureTest, RefusesBadCountsAndOversizedRecords) {
    CTypeStructure t;
    EXPECT_FALSE(t.AddField(u"z", TD_INTEGER, 0));
    EXPECT_FALSE(t.AddField(u"z", TD_INTEGER, CTypeStructure::kMaxCount + 1));
    EXPECT_FALSE(t.AddField(u"z", TD_NONE, 1));
    EXPECT_TRUE(t.AddField(u"z", TD_DOUBLE, CTypeStructure::kMaxCount));
    int accepted = 1;
    while (t.AddField(u"more", TD_DOUBLE, CTypeStructure::kMaxCount)) ++accepted;
    EXPECT_LE(t.Size(), CTypeStructure::kMaxRecordSize);
    EXPECT_EQ(accepted, static_cast<int>(CTypeStructure::kMaxRecordSize / (8 * CTypeStructure::kMaxCount)));
}

TEST(CTypeStructureTest, WritesConvertByFieldType) {
    CTypeStructure t = Layout({{u"c", TD_CHAR, 1}, {u"w", TD_WORD, 1}, {u"i", TD_INTEGER, 2},
                               {u"f", TD_FLOAT, 1}, {u"d", TD_DOUBLE, 1}});
    CBasicVariable out;
    struct Case {
        const char16_t* field;
        double written;
        const char* read;
    } cases[] = {
        {u"c", 300, "44"},          {u"c", -1, "-1"},          {u"c", 1e30, "-1"},
        {u"w", 70000.5, "4464"},    {u"w", -5, "0"},           {u"i", 2.9, "2"},
        {u"i", -2.9, "-2"},         {u"i", 1e20, "2147483647"}, {u"i", -1e20, "-2147483648"},
        {u"f", 0.1, "0.100000"},    {u"f", 1e300, "inf"},      {u"d", -0.125, "-0.125000"},
    };
    for (const auto& c : cases) {
        ASSERT_TRUE(t.Write(c.field, 0, CBasicVariable(c.written)));
        ASSERT_TRUE(t.Read(c.field, 0, out));
        EXPECT_EQ(out.GetStringValue().ToUtf8(), c.read) << CString(c.field).ToUtf8() << " " << c.written;
    }
    // a NaN written to an integer field stores 0
    ASSERT_TRUE(t.Write(u"i", 1, CBasicVariable(std::nan(""))));
    ASSERT_TRUE(t.Read(u"I", 1, out));
    EXPECT_EQ(out.GetStringValue().ToUtf8(), "0");
}

TEST(CTypeStructureTest, AccessOutsideAFieldIsRefused) {
    CTypeStructure t = Layout({{u"a", TD_INTEGER, 3}, {u"s", TD_STRING, 1}});
    CBasicVariable out(7);
    EXPECT_FALSE(t.Read(u"a", 3, out));
    EXPECT_FALSE(t.Read(u"a", -1, out));
    EXPECT_FALSE(t.Read(u"s", 1, out));
    EXPECT_FALSE(t.Read(u"nosuch", 0, out));
    EXPECT_FALSE(t.Write(u"a", 3, CBasicVariable(1)));
    EXPECT_EQ(out.GetStringValue().ToUtf8(), "7");
    // a layout without its buffer refuses every access
    CTypeStructure bare;
    ASSERT_TRUE(bare.AddField(u"x", TD_INTEGER, 1));
    EXPECT_FALSE(bare.Read(u"x", 0, out));
}

TEST(CTypeStructureTest, StringFieldsReadTheirTextButAreNotWritten) {
    CTypeStructure t = Layout({{u"p", TD_STRING, 1}, {u"inl", TD_STRING, 2}});
    CBasicVariable out;
    // a fresh record holds a null pointer: the empty text
    ASSERT_TRUE(t.Read(u"p", 0, out));
    EXPECT_EQ(out.GetType(), BVT_STRING);
    EXPECT_TRUE(out.GetStringValue().empty());
    // a host or library stores a pointer
    static const char16_t text[] = u"hello";
    const char16_t* pointer = text;
    std::memcpy(t.Data(), &pointer, sizeof pointer);
    ASSERT_TRUE(t.Read(u"p", 0, out));
    EXPECT_EQ(out.GetStringValue().ToUtf8(), "hello");
    EXPECT_TRUE(t.Write(u"p", 0, CBasicVariable(u"other")));
    ASSERT_TRUE(t.Read(u"p", 0, out));
    EXPECT_EQ(out.GetStringValue().ToUtf8(), "hello");
    // the text of a string array sits in the field and stops at its end
    // even without a terminating zero
    unsigned char* field = t.Data() + kPtr;
    for (size_t i = 0; i < 2 * kPtr / 2; ++i) std::memcpy(field + 2 * i, u"x", 2);
    ASSERT_TRUE(t.Read(u"inl", 1, out));
    EXPECT_EQ(out.GetStringValue(), CString(kPtr, u'x'));
}

// The interpreter side: "type" statements, record variables and the host's
// field access by name.
class UserTypesTest : public test::InterpreterTest {
protected:

    // Runs the statements of `text` one after another, as the statement loop does.
    void Run(const std::u16string& text) {
        B().SetProgramText(CString(text));
        for (int guard = 0; guard < 1000; ++guard) {
            B().get_token();
            if (B().Command() == CMD_FINISHED) return;
            if (B().TokenType() == COMMAND) B().Exec_command();
        }
        FAIL() << "statements did not finish";
    }

    std::vector<std::string> Errors() const {
        std::vector<std::string> out;
        for (const auto& box : m_desktop.Boxes()) {
            if (box.style == ui::MB_OK) continue;
            std::string text = box.text.ToUtf8();
            out.push_back(text.substr(0, text.find('\n')));
        }
        return out;
    }
};

TEST_F(UserTypesTest, TypeStatementBuildsTheLayout) {
    Run(u"type Rec\n a as char\n b as integer\n c[3] as double\n s as string\nendtype\n");
    const CTypeStructure* type = B().UserTypes().LookupType(u"Rec");
    ASSERT_NE(type, nullptr);
    EXPECT_EQ(type->Size(), 29u + kPtr);
    EXPECT_EQ(B().UserTypes().LookupType(u"rec"), nullptr);
    EXPECT_TRUE(Errors().empty());
}

TEST_F(UserTypesTest, HostReadsAndWritesFieldsByName) {
    Run(u"type Rec\n n as integer\n v[2] as double\nendtype\ndim r as Rec\nglobal G as Rec\n");
    CBasicVariable value(2.9);
    EXPECT_TRUE(B().SetStructVariable(u"R", u"N", value));
    CBasicVariable out;
    EXPECT_TRUE(B().FindStructVariable(u"r", u"n", out, true));
    EXPECT_EQ(out.GetStringValue().ToUtf8(), "2");
    EXPECT_TRUE(B().SetStructVariable(u"G", u"v", value));
    EXPECT_TRUE(B().FindStructVariable(u"G", u"v", out, true));
    EXPECT_EQ(out.GetStringValue().ToUtf8(), "2.900000");
    // globals keep their spelling; unknown records are error 37 only when reporting
    EXPECT_FALSE(B().FindStructVariable(u"g", u"v", out, false));
    EXPECT_TRUE(Errors().empty());
    EXPECT_FALSE(B().FindStructVariable(u"g", u"v", out, true));
    EXPECT_FALSE(B().SetStructVariable(u"nosuch", u"v", value));
    EXPECT_EQ(Errors(), (std::vector<std::string>{"Undefined variable", "Undefined variable"}));
    // an unknown field is refused without a report
    EXPECT_FALSE(B().SetStructVariable(u"r", u"nosuch", value));
    EXPECT_EQ(Errors().size(), 2u);
}

TEST_F(UserTypesTest, RecordsAreIndependentOfTheirTypeAndOfEachOther) {
    Run(u"type Rec\n n as integer\nendtype\ndim a as Rec\ndim b as Rec\n");
    CBasicVariable five(5);
    ASSERT_TRUE(B().SetStructVariable(u"a", u"n", five));
    CBasicVariable out;
    ASSERT_TRUE(B().FindStructVariable(u"b", u"n", out, true));
    EXPECT_EQ(out.GetStringValue().ToUtf8(), "0");
    // redefining the type leaves existing records alone; "dim" again makes a fresh one
    Run(u"type Rec\n other as double\nendtype\ndim b as Rec\n");
    ASSERT_TRUE(B().FindStructVariable(u"a", u"n", out, true));
    EXPECT_EQ(out.GetStringValue().ToUtf8(), "5");
    EXPECT_FALSE(B().FindStructVariable(u"b", u"n", out, true));
    EXPECT_TRUE(B().FindStructVariable(u"b", u"other", out, true));
}

TEST_F(UserTypesTest, BigRecordsAreFreedWithTheInterpreter) {
    Run(u"type Big\n d[16000] as double\n s[16000] as string\n i[16000] as integer\nendtype\n"
        u"dim a as Big\ndim b as Big\nglobal c as Big\n");
    ASSERT_EQ(B().UserTypes().RecordCount(), 3u);
    CTypeStructure* a = B().UserTypes().FindRecord(u"a__#1");
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(a->Size(), 16000u * (8 + kPtr + 4));
    EXPECT_TRUE(a->Write(u"i", 15999, CBasicVariable(-7)));
    CBasicVariable out;
    EXPECT_TRUE(a->Read(u"i", 15999, out));
    EXPECT_EQ(out.GetStringValue().ToUtf8(), "-7");
    EXPECT_TRUE(B().TypesFree());
    EXPECT_EQ(B().UserTypes().RecordCount(), 0u);
    EXPECT_EQ(B().UserTypes().TypeCount(), 0u);
}

}  // namespace
