// CVarBase (one tagged value) and CBasicVariable (an array of values with a
// current index): conversions, ownership of objects, sizing and positioning.
#include <orvobasic/CBasicVariable.h>
#include <orvobasic/COrvoBasic.h>
#include <orvobasic/CVarBase.h>
#include <orvobasic/desktop.h>

#include "ui/headless/HeadlessDesktop.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

namespace {

// An automation object that only counts its references.
class CountedObject : public IDispatch {
public:
    uint32_t AddRef() override { return ++refs; }
    uint32_t Release() override { return --refs; }
    HRESULT GetIDsOfNames(const OLECHAR**, uint32_t, LCID, DISPID*) override { return E_FAIL; }
    HRESULT Invoke(DISPID, LCID, uint16_t, DISPPARAMS*, VARIANT*, EXCEPINFO*, uint32_t*) override { return E_FAIL; }
    uint32_t refs = 1;   // the creator's own reference
};

TEST(CVarBase, FreshValueIsUnset) {
    CVarBase v;
    EXPECT_FALSE(v.IsSet());
    EXPECT_EQ(v.GetType(), BVT_UNSET);
    EXPECT_EQ(v.GetStringValue(), u"");
    EXPECT_EQ(v.GetDoubleValue(), 0.0);
    EXPECT_EQ(v.GetLongValue(), 0);
    EXPECT_EQ(v.GetObjectValue(), nullptr);
}

TEST(CVarBase, TruthValuesAreNumbersThatPrintAsWords) {
    CVarBase t(true), f(false);
    EXPECT_EQ(t.GetType(), BVT_NUMBER);
    EXPECT_EQ(t.GetStringValue(), u"True");
    EXPECT_EQ(f.GetStringValue(), u"False");
    EXPECT_EQ(t.GetLongValue(), 1);
    EXPECT_EQ(t.GetDoubleValue(), 1.0);
    EXPECT_EQ(f.GetDoubleValue(), 0.0);
}

TEST(CVarBase, StringForms) {
    EXPECT_EQ(CVarBase(2.5).GetStringValue(), u"2.500000");
    EXPECT_EQ(CVarBase(-0.125).GetStringValue(), u"-0.125000");
    EXPECT_EQ(CVarBase(3.0).GetStringValue(), u"3.000000");
    EXPECT_EQ(CVarBase(7L).GetStringValue(), u"7");
    EXPECT_EQ(CVarBase(-2147483647L - 1).GetStringValue(), u"-2147483648");
    EXPECT_EQ(CVarBase(std::numeric_limits<double>::infinity()).GetStringValue(), u"inf");
    EXPECT_EQ(CVarBase(-std::numeric_limits<double>::infinity()).GetStringValue(), u"-inf");
    EXPECT_EQ(CVarBase(u"text").GetStringValue(), u"text");
}

// Strings read as doubles with full syntax but as integers with a decimal prefix only.
TEST(CVarBase, StringToNumberConversions) {
    struct Case {
        const char16_t* text;
        double asDouble;
        long asLong;
    };
    const Case cases[] = {
        {u"12.75", 12.75, 12}, {u"12abc", 12, 12}, {u"abc", 0, 0},     {u"1e3", 1000, 1},
        {u"  -4.5", -4.5, -4}, {u"", 0, 0},        {u"x", 0, 0},       {u"+7", 7, 7},
        {u"\t12", 12, 12},     {u"0x10", 16, 0},   {u"99999999999", 99999999999.0, 2147483647},
    };
    for (const Case& c : cases) {
        CVarBase v(c.text);
        EXPECT_EQ(v.GetType(), BVT_STRING);
        EXPECT_DOUBLE_EQ(v.GetDoubleValue(), c.asDouble) << CString(c.text).ToUtf8();
        EXPECT_EQ(v.GetLongValue(), c.asLong) << CString(c.text).ToUtf8();
    }
}

// Doubles truncate toward zero; out-of-range values and NaN give a defined result.
TEST(CVarBase, DoubleToLongTruncates) {
    EXPECT_EQ(CVarBase(2.9).GetLongValue(), 2);
    EXPECT_EQ(CVarBase(-2.9).GetLongValue(), -2);
    const double extremes[] = {1e300, -1e300, std::numeric_limits<double>::quiet_NaN(),
                               std::numeric_limits<double>::infinity(), 4294967296.0};
    for (double d : extremes) (void)CVarBase(d).GetLongValue();   // no UB report under the sanitizer
}

TEST(CVarBase, IncrementOnlyNumbers) {
    CVarBase i(41L), d(1.5), s(u"1"), t(true), u;
    EXPECT_TRUE(i.Increment());
    EXPECT_EQ(i.GetLongValue(), 42);
    EXPECT_TRUE(d.Increment());
    EXPECT_EQ(d.GetDoubleValue(), 2.5);
    EXPECT_FALSE(s.Increment());
    EXPECT_EQ(s.GetStringValue(), u"1");
    EXPECT_FALSE(t.Increment());
    EXPECT_EQ(t.GetStringValue(), u"True");
    EXPECT_FALSE(u.Increment());
    EXPECT_FALSE(u.IsSet());
    CVarBase top(2147483647L);
    EXPECT_TRUE(top.Increment());   // wraps, without overflow UB
    EXPECT_EQ(top.GetLongValue(), -2147483647L - 1);
}

TEST(CVarBase, AssignmentKeepsTheTargetsFieldName) {
    CVarBase target(1.0), source(u"x");
    target.SetFieldName(u"field");
    source.SetFieldName(u"other");
    target = source;
    EXPECT_EQ(target.GetFieldName(), u"field");
    EXPECT_EQ(target.GetStringValue(), u"x");
    CVarBase copy(source);
    EXPECT_EQ(copy.GetFieldName(), u"");
}

// A text stored from a part of the value's own text, short and beyond the
// storage a cleared value keeps.
TEST(CVarBase, AssignTextFromAPartOfItsOwnText) {
    CVarBase small(CString(u"abcdefghijklmnopqrstuvwxyz"));
    small.AssignText(std::u16string_view(small.StringRef()).substr(20));
    EXPECT_EQ(small.StringRef(), u"uvwxyz");
    CVarBase big(CString(std::u16string(5000, u'x') + u"tail"));
    big.AssignText(std::u16string_view(big.StringRef()).substr(5000));
    EXPECT_EQ(big.StringRef(), u"tail");
}

TEST(CVarBase, RefusedVariantsLeaveTheValue) {
    CVarBase v(5.0);
    VARIANT in;
    VariantInit(&in);
    for (VARTYPE vt : {VARTYPE(VT_DATE), VARTYPE(VT_I4 | VT_BYREF), VARTYPE(VT_I4 | VT_ARRAY), VARTYPE(VT_EMPTY),
                       VARTYPE(VT_NULL), VARTYPE(VT_UI1), VARTYPE(VT_I1), VARTYPE(VT_I8), VARTYPE(VT_CY)}) {
        in.vt = vt;
        in.llVal = 0;
        EXPECT_FALSE(v.SetValue(in)) << vt;
        EXPECT_EQ(v.GetDoubleValue(), 5.0);
    }
}

TEST(CVarBase, AcceptedVariants) {
    CVarBase v;
    VARIANT in;
    VariantInit(&in);
    in.vt = VT_I2;
    in.iVal = -2;
    ASSERT_TRUE(v.SetValue(in));
    EXPECT_EQ(v.GetStringValue(), u"-2");
    in.vt = VT_UI2;
    in.uiVal = 65535;
    ASSERT_TRUE(v.SetValue(in));
    EXPECT_EQ(v.GetLongValue(), 65535);
    in.vt = VT_UI4;
    in.ulVal = 4294967295u;
    ASSERT_TRUE(v.SetValue(in));
    EXPECT_EQ(v.GetLongValue(), -1);
    in.vt = VT_R4;
    in.fltVal = 1.5f;
    ASSERT_TRUE(v.SetValue(in));
    EXPECT_EQ(v.GetStringValue(), u"1.500000");
    in.vt = VT_BOOL;
    in.boolVal = 1;
    ASSERT_TRUE(v.SetValue(in));
    EXPECT_EQ(v.GetStringValue(), u"True");
    in.vt = VT_BSTR;
    in.bstrVal = SysAllocString(u"wide");
    ASSERT_TRUE(v.SetValue(in));
    VariantClear(&in);
    EXPECT_EQ(v.GetStringValue(), u"wide");
}

TEST(CVarBase, ObjectReferencesAreCounted) {
    CountedObject object;
    {
        CVarBase v(static_cast<IDispatch*>(&object));
        EXPECT_EQ(object.refs, 2u);
        EXPECT_EQ(v.GetType(), BVT_OBJECT);
        EXPECT_EQ(v.GetObjectValue(), &object);
        CVarBase copy(v);
        EXPECT_EQ(object.refs, 3u);
        copy = 1.0;   // overwriting releases once
        EXPECT_EQ(object.refs, 2u);
        v.SetValue(static_cast<IDispatch*>(&object));   // re-storing the same object keeps the count
        EXPECT_EQ(object.refs, 2u);
    }
    EXPECT_EQ(object.refs, 1u);
}

TEST(CVarBase, NullObjectIsAnObjectValue) {
    CVarBase v(static_cast<IDispatch*>(nullptr));
    EXPECT_EQ(v.GetType(), BVT_OBJECT);
    EXPECT_EQ(v.GetStringValue(), u"0");
}

TEST(CVarBase, StringBufferEditsTheTextForm) {
    CVarBase v(12L);
    char16_t* buffer = v.GetStringBuffer(10);
    EXPECT_EQ(v.GetLongValue(), 12);   // unchanged until released
    buffer[0] = u'9';
    buffer[1] = 0;
    v.ReleaseStringBuffer();
    EXPECT_EQ(v.GetType(), BVT_STRING);
    EXPECT_EQ(v.GetStringValue(), u"9");
}

TEST(CBasicVariable, FreshVariable) {
    CBasicVariable v;
    EXPECT_EQ(v.GetNumItems(), 1);
    EXPECT_FALSE(v.IsSet());
    EXPECT_FALSE(v.IsArray());
    EXPECT_EQ(v.GetCurIndex(), 0);
}

// The first valued AddItem fills a fresh variable; later ones append.
TEST(CBasicVariable, AddItemFillsThenAppends) {
    CBasicVariable v;
    EXPECT_EQ(v.AddItem(5), 0);
    EXPECT_EQ(v.GetNumItems(), 1);
    EXPECT_EQ(v.GetLongValue(), 5);
    EXPECT_EQ(v.AddItem(6), 1);
    EXPECT_EQ(v.GetNumItems(), 2);
    EXPECT_TRUE(v.IsArray());
}

TEST(CBasicVariable, BareAddItemAlwaysAppends) {
    CBasicVariable v;
    EXPECT_EQ(v.AddItem(), 1);
    EXPECT_EQ(v.GetNumItems(), 2);
    EXPECT_TRUE(v.IsSet());   // an array counts as set even when its elements are not
}

// AddItem of a variable takes the element at this variable's own index.
TEST(CBasicVariable, AddItemOfAVariableUsesOwnIndex) {
    CBasicVariable src;
    src.AddItem(u"a");
    src.AddItem(u"b");
    src.SetCurIndex(0);
    CBasicVariable dst;
    dst.AddItem(1);
    dst.AddItem(2);
    dst.SetCurIndex(1);
    EXPECT_EQ(dst.AddItem(src), 2);
    EXPECT_EQ(dst.GetItem(2).GetStringValue(), u"b");
}

TEST(CBasicVariable, SizingAndIndex) {
    CBasicVariable v;
    v.SetArraySize(5);
    EXPECT_EQ(v.GetNumItems(), 5);
    v.SetArraySize(3);
    EXPECT_EQ(v.GetNumItems(), 5);   // never shrinks
    v.SetCurIndex(4);
    v.Redim(3);
    EXPECT_EQ(v.GetNumItems(), 3);
    EXPECT_EQ(v.GetCurIndex(), 0);
    v.SetCurIndex(2);
    v.Redim(16000);   // out of range: size kept, index reset
    EXPECT_EQ(v.GetNumItems(), 3);
    EXPECT_EQ(v.GetCurIndex(), 0);
    v.SetCurIndex(2);
    v.Redim(0);
    EXPECT_EQ(v.GetNumItems(), 3);
    EXPECT_EQ(v.GetCurIndex(), 0);
    v.Redim(15999);
    EXPECT_EQ(v.GetNumItems(), 15999);
}

TEST(CBasicVariable, SetCurIndexIgnoresOutOfRange) {
    CBasicVariable v;
    v.SetArraySize(3);
    v.SetCurIndex(1);
    v.SetCurIndex(-1);
    EXPECT_EQ(v.GetCurIndex(), 1);
    v.SetCurIndex(3);
    EXPECT_EQ(v.GetCurIndex(), 1);
}

TEST(CBasicVariable, ReadsAndWritesUseTheCurrentElement) {
    CBasicVariable v;
    v.SetArraySize(3);
    v.SetCurIndex(2);
    v = 2.5;
    EXPECT_EQ(v.GetItem(2).GetStringValue(), u"2.500000");
    EXPECT_FALSE(v.GetItem(0).IsSet());
    v.SetValue(CString(u"x"), 0);
    EXPECT_EQ(v.GetItem(0).GetStringValue(), u"x");
    EXPECT_EQ(v.GetStringValue(), u"2.500000");
}

// Set copies every element with its field name, and the index.
TEST(CBasicVariable, SetCopiesEverything) {
    CBasicVariable src;
    src.SetArraySize(2);
    src.SetCurIndex(1);
    src.SetFieldName(u"f");
    src = 3;
    CBasicVariable dst(u"old");
    dst.Set(src);
    EXPECT_EQ(dst.GetNumItems(), 2);
    EXPECT_EQ(dst.GetCurIndex(), 1);
    EXPECT_EQ(dst.GetFieldName(), u"f");
    EXPECT_EQ(dst.GetLongValue(), 3);
    dst.Set(dst);   // self-copy keeps the content
    EXPECT_EQ(dst.GetNumItems(), 2);
}

// One number over another keeps what is charged; a named target still
// takes the source's (empty) field name.
TEST(CBasicVariable, SetOfANumberOverANumber) {
    ob::MemoryMeter meter;
    CBasicVariable dst(2.5);
    dst.AttachMeter(&meter, 0);
    int64_t charged = meter.bytes;
    dst.Set(CBasicVariable(7));
    EXPECT_EQ(dst.GetCurrent().GetVarType(), VT_I4);
    EXPECT_EQ(dst.GetLongValue(), 7);
    EXPECT_EQ(meter.bytes, charged);
    CBasicVariable named(1.0);
    named.SetFieldName(u"a field name longer than a short text");
    named.AttachMeter(&meter, 0);
    named.Set(CBasicVariable(2.0));
    EXPECT_EQ(named.GetFieldName(), u"");
    EXPECT_EQ(named.GetNumberValue(), 2.0);
    EXPECT_EQ(meter.bytes, charged + named.ChargedBytes());
}

// SetValue of a variable copies its current element only; the field name stays.
TEST(CBasicVariable, SetValueOfAVariableCopiesOneElement) {
    CBasicVariable src;
    src.AddItem(u"a");
    src.AddItem(u"b");
    src.SetCurIndex(1);
    CBasicVariable dst;
    dst.SetFieldName(u"keep");
    dst.SetValue(src);
    EXPECT_EQ(dst.GetNumItems(), 1);
    EXPECT_EQ(dst.GetStringValue(), u"b");
    EXPECT_EQ(dst.GetFieldName(), u"keep");
}

TEST(CBasicVariable, SetCurField) {
    CBasicVariable v;
    v.SetArraySize(3);
    v.SetCurIndex(1);
    v.SetFieldName(u"name");
    v.SetCurIndex(2);
    v.SetFieldName(u"age");
    v.SetCurIndex(0);
    EXPECT_TRUE(v.SetCurField(u"age"));
    EXPECT_EQ(v.GetCurIndex(), 2);
    EXPECT_FALSE(v.SetCurField(u"missing"));
    EXPECT_EQ(v.GetCurIndex(), 2);
}

TEST(CBasicVariable, NarrowTypesConvert) {
    CBasicVariable v;
    v = static_cast<unsigned short>(65535);
    EXPECT_EQ(v.GetLongValue(), 65535);
    v = static_cast<char>(-1);
    EXPECT_EQ(v.GetLongValue(), -1);
    v = 0.5f;
    EXPECT_EQ(v.GetStringValue(), u"0.500000");
}

// An object stored by index is kept as a plain integer, without a reference.
TEST(CBasicVariable, IndexedObjectIsStoredAsInteger) {
    CountedObject object;
    CBasicVariable v;
    v.SetArraySize(2);
    v.SetValue(static_cast<IDispatch*>(&object), 1);
    EXPECT_EQ(object.refs, 1u);
    EXPECT_EQ(v.GetItem(1).GetType(), BVT_NUMBER);
    v.SetValue(static_cast<IDispatch*>(&object));
    EXPECT_EQ(object.refs, 2u);
    v = 1.0;
    EXPECT_EQ(object.refs, 1u);
}

TEST(CBasicVariable, IncrementFollowsTheElement) {
    CBasicVariable v(1.5);
    EXPECT_TRUE(v.Increment());
    EXPECT_EQ(v.GetNumberValue(), 2.5);
    CBasicVariable s(u"a");
    EXPECT_FALSE(s.Increment());
    ++v;
    EXPECT_EQ(v.GetNumberValue(), 3.5);
}

// An interpreter whose handler "hook" counts the change events it receives
// in the global N.
class ChangeHookTest : public ::testing::Test {
protected:
    void SetUp() override {
        ob::ui::SetDesktop(&m_desktop);
        m_basic = std::make_unique<COrvoBasic>();
        m_basic->SetProgramText(u"end\nfunction hook(v)\n  N = N + 1\nendfunction\n");
        m_basic->LabelsScan();
        m_basic->SetVariableDirect(u"N", CBasicVariable(0.0), 0, true);
        m_basic->EventAdd(u"changed", u"hook");
    }
    void TearDown() override {
        m_basic.reset();
        ob::ui::SetDesktop(nullptr);
    }

    // Events counted since the last call.
    int Events() {
        CString name = u"N";
        CBasicVariable* n = m_basic->FindVariable(name);
        int count = n ? static_cast<int>(n->GetNumberValue()) : -1;
        if (n) n->SetValue(0.0);
        return count;
    }

    ob::ui::HeadlessDesktop m_desktop;
    std::unique_ptr<COrvoBasic> m_basic;
};

// Every write raises the event once; positioning and naming raise none.
TEST_F(ChangeHookTest, EachWriteRaisesOneEvent) {
    CBasicVariable v;
    v.SetChangeEvent(m_basic.get(), u"changed");
    v.SetValue(1.0);
    EXPECT_EQ(Events(), 1);
    v.SetValue(CString(u"a"), 0);
    EXPECT_EQ(Events(), 1);
    v.AddItem(2);
    EXPECT_EQ(Events(), 1);
    v.AddItem();
    EXPECT_EQ(Events(), 1);
    v.Redim(2);
    EXPECT_EQ(Events(), 1);
    v.Set(CBasicVariable(3.0));
    EXPECT_EQ(Events(), 1);
    CBasicVariable one(1.0);
    one.SetChangeEvent(m_basic.get(), u"changed");
    one.Set(CBasicVariable(2.0));   // a number over a number
    EXPECT_EQ(Events(), 1);
    EXPECT_TRUE(v.Increment());
    EXPECT_EQ(Events(), 1);
    v.GetStringBuffer(4);
    v.ReleaseStringBuffer();
    EXPECT_EQ(Events(), 1);
    EXPECT_FALSE(v.Increment());   // now a string: no change, no event
    v.SetCurIndex(0);
    v.SetFieldName(u"f");
    v.SetCurField(u"f");
    EXPECT_EQ(Events(), 0);
    v.RemoveChangeEvent();
    v.SetValue(5.0);
    EXPECT_EQ(Events(), 0);
    EXPECT_TRUE(m_desktop.Boxes().empty());
}

TEST_F(ChangeHookTest, CopiesDoNotTakeTheHook) {
    CBasicVariable watched;
    watched.SetChangeEvent(m_basic.get(), u"changed");
    CBasicVariable copy;
    copy.Set(watched);
    EXPECT_FALSE(copy.HasChangeEvent());
    CBasicVariable constructed(watched);
    EXPECT_FALSE(constructed.HasChangeEvent());
    copy.SetValue(1.0);
    constructed.SetValue(1.0);
    EXPECT_EQ(Events(), 0);
}

}  // namespace
