// The map directory where scripts cannot look: replaced maps are freed, and a
// large map is built, enumerated and freed (the asan build checks the frees).
#include "values/Maps.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using ob::CMapDirectory;

// A distinct key per number.
CString Key(int i) {
    std::string text = "k" + std::to_string(i);
    return CString(text.begin(), text.end());
}

TEST(MapsTest, RecreatingAMapFreesItsContents) {
    CMapDirectory maps;
    maps.Add(u"m");
    CBasicVariable big;
    big.SetArraySize(1000);
    for (int i = 0; i < 100; ++i) ASSERT_TRUE(maps.Store(u"m", Key(i), big));
    maps.Add(u"m");
    EXPECT_EQ(maps.Lookup(u"m")->size(), 0u);
    EXPECT_EQ(maps.Count(), 1u);
}

TEST(MapsTest, HundredThousandKeys) {
    CMapDirectory maps;
    maps.Add(u"big");
    for (int i = 0; i < 100000; ++i) ASSERT_TRUE(maps.Store(u"big", Key(i), CBasicVariable(i)));
    CBasicVariable keys, values;
    ASSERT_TRUE(maps.GetKeys(u"big", keys));
    ASSERT_TRUE(maps.GetValues(u"big", values));
    EXPECT_EQ(keys.GetNumItems(), 100000);
    EXPECT_EQ(values.GetNumItems(), 100000);
    // keys and values enumerate in the same order
    for (int i = 0; i < 100000; i += 9973) {
        CBasicVariable out;
        ASSERT_TRUE(maps.Get(u"big", keys.GetItem(i).GetStringValue(), out));
        EXPECT_EQ(out.GetLongValue(), values.GetItem(i).GetLongValue());
    }
    EXPECT_TRUE(maps.Remove(u"big", Key(5)));
    EXPECT_FALSE(maps.Has(u"big", Key(5)));
    EXPECT_TRUE(maps.Clear(u"big"));
    EXPECT_EQ(maps.Lookup(u"big")->size(), 0u);
    maps.FreeAll();
    EXPECT_EQ(maps.Count(), 0u);
}

}  // namespace
