// The template builder's bytes, checked field by field against the layout
// the dialog manager reads, and the template reader on good and bad bytes.
#include "ui/DialogTemplate.h"

#include <orvobasic/COrvoBasic.h>
#include <orvobasic/dialogs.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

using namespace ob;
using namespace ob::ui;

namespace {

// Little-endian fields of a byte buffer.
uint16_t Word(const uint8_t* b, size_t at) { return static_cast<uint16_t>(b[at] | (b[at + 1] << 8)); }
uint32_t Dword(const uint8_t* b, size_t at) { return Word(b, at) | (static_cast<uint32_t>(Word(b, at + 2)) << 16); }
std::u16string Text(const uint8_t* b, size_t at) {
    std::u16string s;
    for (uint16_t w; (w = Word(b, at)) != 0; at += 2) s.push_back(w);
    return s;
}
const uint8_t* Bytes(const std::unique_ptr<uint16_t[]>& record) {
    return reinterpret_cast<const uint8_t*>(record.get());
}

struct Expected {
    KEYWORD_TYPE keyword;
    uint16_t atom;              // 0: class by name
    const char16_t* className;
    uint32_t style;
};

// Written out from the layout, independently of the builder's table.
const Expected kControls[] = {
    {KW_BUTTON, 0x80, nullptr, 0x10010000},         {KW_EDITTEXT, 0x81, nullptr, 0x10810080},
    {KW_CHECKBOX, 0x80, nullptr, 0x10010003},       {KW_LISTBOX, 0x83, nullptr, 0x10B10041},
    {KW_OKBUTTON, 0x80, nullptr, 0x10010001},       {KW_STATICTEXT, 0x82, nullptr, 0x10000000},
    {KW_BITMAP, 0x82, nullptr, 0x1000000E},         {KW_GROUPBOX, 0x80, nullptr, 0x10020007},
    {KW_MULTILISTBOX, 0x83, nullptr, 0x10B10049},   {KW_DATETIME, 0, u"SysDateTimePick32", 0x10010020},
    {KW_EDITMULTILINE, 0x81, nullptr, 0x10B110C4},  {KW_CANCELBUTTON, 0x80, nullptr, 0x10010000},
    {KW_COMBOBOX, 0x85, nullptr, 0x10210203},       {KW_EDITNUMBER, 0x81, nullptr, 0x10812080},
    {KW_RADIOGROUP, 0x80, nullptr, 0x10010009},     {KW_TREEVIEW, 0, u"SysTreeView32", 0x10810037},
    {KW_SLIDERHORZ, 0, u"msctls_trackbar32", 0x10010005},
    {KW_SLIDERVERT, 0, u"msctls_trackbar32", 0x10010007},
    {KW_TABCONTROL, 0, u"SysTabControl32", 0x10010000},
};

TEST(DialogTemplate, EveryControlKeywordWritesItsClassAndStyle) {
    for (const Expected& e : kControls) {
        SCOPED_TRACE(static_cast<int>(e.keyword));
        const ControlKind* kind = FindControlKind(e.keyword);
        ASSERT_NE(kind, nullptr);
        size_t length = 0;
        auto record = kind->atom ? CreateItemTemplate(kind->atom, kind->style, 300, 1, -2, 30, 40, u"Go", length)
                                 : CreateItemTemplate(CString(kind->className), kind->style, 300, 1, -2, 30, 40,
                                                      u"Go", length);
        const uint8_t* b = Bytes(record);
        EXPECT_EQ(Dword(b, 0), e.style);
        EXPECT_EQ(Dword(b, 4), 0u);
        EXPECT_EQ(static_cast<int16_t>(Word(b, 8)), 1);
        EXPECT_EQ(static_cast<int16_t>(Word(b, 10)), -2);
        EXPECT_EQ(Word(b, 12), 30);
        EXPECT_EQ(Word(b, 14), 40);
        EXPECT_EQ(Word(b, 16), 300);
        size_t title;
        if (e.atom) {
            EXPECT_EQ(Word(b, 18), 0xFFFF);
            EXPECT_EQ(Word(b, 20), e.atom);
            title = 22;
            EXPECT_EQ(length, 24u + 2 * 3);
        } else {
            std::u16string name = e.className;
            EXPECT_EQ(Text(b, 18), name);
            title = 18 + 2 * (name.size() + 1);
            EXPECT_EQ(length, 18 + 2 * (name.size() + 1) + 2 * 3 + 2);
        }
        EXPECT_EQ(Text(b, title), u"Go");
        EXPECT_EQ(Word(b, title + 6), 0);   // creation data size
    }
}

TEST(DialogTemplate, KeywordsWithoutAControlHaveNoRow) {
    for (int keyword : {0, 16, 33, 34, 49, 53, -1}) EXPECT_EQ(FindControlKind(keyword), nullptr);
    size_t length = 0;
    CreateItemTemplate(0x82, 0x10000000, 5, 0, 0, 0, 0, u"", length);
    EXPECT_EQ(length, 26u);   // an empty title is one zero word
}

TEST(DialogTemplate, ValuesBecomeWordsByTruncationAndTheirLow16Bits) {
    EXPECT_EQ(ToWord(2.9), 2);
    EXPECT_EQ(ToWord(-2.9), -2);
    EXPECT_EQ(ToWord(70000), 70000 - 65536);
    EXPECT_EQ(ToWord(-70000), -70000 + 65536);
    EXPECT_EQ(ToWord(65535), -1);
    EXPECT_EQ(ToWord(1e300), 0);   // a multiple of 65536 far beyond 64 bits
    EXPECT_EQ(ToWord(std::nan("")), 0);
    EXPECT_EQ(ToWord(-INFINITY), 0);
}

TEST(DialogTemplate, HeaderWithAndWithoutFont) {
    CDialogTemplate plain(u"Hi", 1, 2, 3, 4, false, 8, u"");
    plain.Finish();
    const auto& p = plain.Bytes();
    ASSERT_EQ(p.size(), 28u);   // 22 + 6 rounded up
    EXPECT_EQ(Dword(p.data(), 0), 0x80CC0000u);
    EXPECT_EQ(Word(p.data(), 8), 0);
    for (size_t at : {10u, 12u, 14u, 16u}) EXPECT_EQ(Word(p.data(), at), (at - 8) / 2);
    EXPECT_EQ(Word(p.data(), 18), 0);
    EXPECT_EQ(Word(p.data(), 20), 0);
    EXPECT_EQ(Text(p.data(), 22), u"Hi");
    EXPECT_EQ(Word(p.data(), 26), 0);   // padding stays zero

    CDialogTemplate font(u"Hi", 1, 2, 3, 4, true, 9, u"Sans");
    font.Finish();
    const auto& f = font.Bytes();
    ASSERT_EQ(f.size(), 40u);   // 22 + 6 + 2 + 10
    EXPECT_EQ(Dword(f.data(), 0), 0x80CC0040u);
    EXPECT_EQ(Word(f.data(), 28), 9);
    EXPECT_EQ(Text(f.data(), 30), u"Sans");
}

TEST(DialogTemplate, RecordsStartOnFourByteBoundariesAndAreCounted) {
    CDialogTemplate t(u"T", 0, 0, 10, 10, false, 8, u"");
    size_t first = 0, second = 0;
    auto a = CreateItemTemplate(0x80, 0x10010000, 1, 0, 0, 1, 1, u"x", first);   // 28 bytes
    auto b = CreateItemTemplate(0x80, 0x10010000, 2, 0, 0, 1, 1, u"", second);   // 26 bytes: 2 mod 4
    size_t start = t.Bytes().size();
    ASSERT_TRUE(t.AppendItem(a.get(), first));
    ASSERT_TRUE(t.AppendItem(b.get(), second));
    ASSERT_TRUE(t.AppendItem(a.get(), first));
    t.Finish();
    const auto& bytes = t.Bytes();
    EXPECT_EQ(Word(bytes.data(), 8), 3);
    EXPECT_EQ(start % 4, 0u);
    size_t third = start + first + second + 2;   // after the second record, two bytes of padding
    EXPECT_EQ(third % 4, 0u);
    EXPECT_EQ(bytes.size(), third + first);
    EXPECT_EQ(Word(bytes.data(), third - 2), 0);
    EXPECT_EQ(Word(bytes.data(), third + 16), 1);   // the third record's id
}

TEST(DialogTemplate, CountStopsAt65535) {
    CDialogTemplate t(u"", 0, 0, 0, 0, false, 8, u"");
    size_t length = 0;
    auto record = CreateItemTemplate(0x82, 0x10000000, 0, 0, 0, 0, 0, u"", length);
    for (int i = 0; i < 0xFFFF; ++i) ASSERT_TRUE(t.AppendItem(record.get(), length));
    EXPECT_FALSE(t.AppendItem(record.get(), length));
    EXPECT_EQ(t.ItemCount(), 0xFFFF);
}

// A template of three controls of both record forms, with a font.
std::vector<uint8_t> SampleTemplate() {
    CDialogTemplate t(u"Sample", -5, 6, 200, 100, true, 10, u"Mono");
    size_t length = 0;
    auto edit = CreateItemTemplate(0x81, 0x10810080, 100, 1, 2, 3, 4, u"text", length);
    t.AppendItem(edit.get(), length);
    auto tree = CreateItemTemplate(CString(u"SysTreeView32"), 0x10810037, 101, 5, 6, 7, 8, u"", length);
    t.AppendItem(tree.get(), length);
    auto ok = CreateItemTemplate(0x80, 0x10010001, 1, 9, 10, 11, 12, u"OK", length);
    t.AppendItem(ok.get(), length);
    t.Finish();
    return t.Bytes();
}

TEST(TemplateReader, ReadsWhatTheBuilderWrote) {
    std::vector<uint8_t> bytes = SampleTemplate();
    DialogDescription d;
    ASSERT_TRUE(ReadDialogTemplate(bytes.data(), bytes.size(), d));
    EXPECT_EQ(d.caption, u"Sample");
    EXPECT_EQ(d.x, -5);
    EXPECT_EQ(d.cy, 100);
    EXPECT_TRUE(d.hasFont);
    EXPECT_EQ(d.pointSize, 10);
    EXPECT_EQ(d.faceName, u"Mono");
    ASSERT_EQ(d.items.size(), 3u);
    EXPECT_EQ(d.items[0].className, u"Edit");
    EXPECT_EQ(d.items[0].text, u"text");
    EXPECT_EQ(d.items[0].id, 100);
    EXPECT_EQ(d.items[1].className, u"SysTreeView32");
    EXPECT_EQ(d.items[1].style, 0x10810037u);
    EXPECT_EQ(d.items[1].cy, 8);
    EXPECT_EQ(d.items[2].className, u"Button");
    EXPECT_EQ(d.items[2].text, u"OK");
}

TEST(TemplateReader, RefusesEveryTruncationAndForeignParts) {
    std::vector<uint8_t> bytes = SampleTemplate();
    DialogDescription d;
    for (size_t n = 0; n < bytes.size(); ++n) {
        std::vector<uint8_t> cut(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(n));
        EXPECT_FALSE(ReadDialogTemplate(cut.data(), cut.size(), d)) << n;
    }
    std::vector<uint8_t> menu = bytes;
    menu[18] = 1;   // a menu
    EXPECT_FALSE(ReadDialogTemplate(menu.data(), menu.size(), d));
    std::vector<uint8_t> many = bytes;
    many[8] = 0xFF;   // more items than the bytes hold
    EXPECT_FALSE(ReadDialogTemplate(many.data(), many.size(), d));
    EXPECT_FALSE(ReadDialogTemplate(nullptr, 10, d));
}

}  // namespace
