// Argument slots of declared calls: how script values are converted for the
// callee, and what is read back from by-reference cells and text buffers
// whatever the callee left in them.
#include <orvobasic/COrvoBasic.h>

#include "functions/NativeArguments.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace {

using namespace ob;

class NativeArgumentsTest : public ::testing::Test {
protected:
    // The address a by-reference argument passes.
    template <typename T>
    T* Passed(size_t i) {
        return *static_cast<T**>(args.Values()[i]);
    }
    template <typename T>
    T ByValue(size_t i) {
        T v;
        std::memcpy(&v, args.Values()[i], sizeof v);
        return v;
    }

    COrvoBasic basic;
    CNativeArguments args{basic};
};

TEST_F(NativeArgumentsTest, NumbersAreTruncatedNarrowedAndCut) {
    args.Add(NF_CHAR, CBasicVariable(300.9));
    args.Add(NF_INTEGER, CBasicVariable(-7.9));
    args.Add(NF_INTEGER, CBasicVariable(1e12));
    args.Add(NF_INTEGER, CBasicVariable(std::nan("")));
    args.Add(NF_FLOAT, CBasicVariable(1e300));
    args.Add(NF_WORD, CBasicVariable(70000.0));
    args.Add(NF_DOUBLE, CBasicVariable(0.1));
    args.Add(NF_INTEGER, CBasicVariable(CString(u"42")));
    EXPECT_EQ(ByValue<int8_t>(0), 44);
    EXPECT_EQ(ByValue<int32_t>(1), -7);
    EXPECT_EQ(ByValue<int32_t>(2), std::numeric_limits<int32_t>::max());
    EXPECT_EQ(ByValue<int32_t>(3), 0);
    EXPECT_EQ(ByValue<float>(4), std::numeric_limits<float>::infinity());
    EXPECT_EQ(ByValue<uint16_t>(5), 70000 & 0xFFFF);
    EXPECT_EQ(ByValue<double>(6), 0.1);
    EXPECT_EQ(ByValue<int32_t>(7), 42);
    CBasicVariable back;
    EXPECT_FALSE(args.ReadBack(1, back));   // by value: nothing comes back
}

TEST_F(NativeArgumentsTest, ByReferenceCellsComeBackAsTheCalleeLeftThem) {
    args.Add(NF_INTEGER | NF_BYREF, CBasicVariable(5));
    args.Add(NF_FLOAT | NF_BYREF, CBasicVariable(2.5));
    args.Add(NF_CHAR | NF_BYREF, CBasicVariable(65));
    EXPECT_EQ(*Passed<int32_t>(0), 5);
    *Passed<int32_t>(0) = -9;
    *Passed<float>(1) *= 2;
    *Passed<int8_t>(2) = -1;
    CBasicVariable v;
    ASSERT_TRUE(args.ReadBack(0, v));
    EXPECT_EQ(v.GetLongValue(), -9);
    ASSERT_TRUE(args.ReadBack(1, v));
    EXPECT_EQ(v.GetNumberValue(), 5.0);
    ASSERT_TRUE(args.ReadBack(2, v));
    EXPECT_EQ(v.GetLongValue(), -1);
    EXPECT_FALSE(args.ReadBack(3, v));
}

TEST_F(NativeArgumentsTest, TextBuffersHoldAtLeast256AndAreReadOnlyWithin) {
    args.Add(NF_STRING | NF_BYREF, CBasicVariable(CString(u"caf\u00E9")));
    args.Add(NF_UNICODE | NF_BYREF, CBasicVariable(CString(u"\u20AC")));
    args.Add(NF_STRING | NF_BYREF, CBasicVariable(CString(1000, u'q')));
    char* bytes = Passed<char>(0);
    EXPECT_STREQ(bytes, "caf\xE9");   // 8-bit text in the code page
    EXPECT_EQ(Passed<char16_t>(1)[0], u'\u20AC');
    EXPECT_EQ(Passed<char>(2)[999], 'q');
    std::memset(bytes, 'x', 256);                          // the whole buffer, no terminator
    for (int i = 0; i < 256; ++i) Passed<char16_t>(1)[i] = u'y';
    std::memset(Passed<char>(2), 'z', 1001);               // a longer text has a larger buffer
    CBasicVariable v;
    ASSERT_TRUE(args.ReadBack(0, v));
    EXPECT_EQ(v.GetStringValue(), CString(256, u'x'));
    ASSERT_TRUE(args.ReadBack(1, v));
    EXPECT_EQ(v.GetStringValue(), CString(256, u'y'));
    ASSERT_TRUE(args.ReadBack(2, v));
    EXPECT_EQ(v.GetStringValue(), CString(1001, u'z'));
}

TEST_F(NativeArgumentsTest, BlocksGoToByReferenceParametersOnly) {
    unsigned char record[8] = {};
    EXPECT_FALSE(args.AddBlock(NF_INTEGER, record));
    EXPECT_TRUE(args.AddBlock(NF_INTEGER | NF_BYREF, record));
    EXPECT_EQ(Passed<unsigned char>(0), record);
    CBasicVariable v;
    EXPECT_FALSE(args.ReadBack(0, v));   // the callee wrote into the record itself
    for (size_t i = 1; i < kMaxNativeArguments; ++i) EXPECT_TRUE(args.Add(NF_INTEGER, CBasicVariable(1)));
    EXPECT_FALSE(args.Add(NF_INTEGER, CBasicVariable(1)));
    EXPECT_FALSE(args.AddBlock(NF_INTEGER | NF_BYREF, record));
}

TEST_F(NativeArgumentsTest, ResultsConvertByTheirKind) {
    NativeCell cell{};
    CBasicVariable v;
    cell.raw[0] = 0xFFFFFFFFFFFFFFF0u;   // a sign-extended -16 in the result register
    ASSERT_TRUE(CNativeArguments::ConvertResult(basic, NF_CHAR, cell, v));
    EXPECT_EQ(v.GetLongValue(), -16);
    ASSERT_TRUE(CNativeArguments::ConvertResult(basic, NF_INTEGER, cell, v));
    EXPECT_EQ(v.GetLongValue(), -16);
    ASSERT_TRUE(CNativeArguments::ConvertResult(basic, NF_WORD, cell, v));
    EXPECT_EQ(v.GetLongValue(), 0xFFF0);
    cell = NativeCell{};
    ASSERT_TRUE(CNativeArguments::ConvertResult(basic, NF_STRING, cell, v));   // a null text is empty
    EXPECT_EQ(v.GetStringValue(), CString());
    static const char16_t wide[] = u"w\u00E9";
    cell.p = const_cast<char16_t*>(wide);
    ASSERT_TRUE(CNativeArguments::ConvertResult(basic, NF_UNICODE, cell, v));
    EXPECT_EQ(v.GetStringValue(), CString(u"w\u00E9"));
    EXPECT_FALSE(CNativeArguments::ConvertResult(basic, NF_NONE, cell, v));
}

}  // namespace
