// The dialog template builder: item records and the template header.
#include "ui/DialogTemplate.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <iterator>

namespace ob::ui {

// Records are built as native 16-bit words and copied as bytes.
static_assert(std::endian::native == std::endian::little, "templates are little-endian");

namespace {

constexpr uint16_t kButton = 0x0080, kEdit = 0x0081, kStatic = 0x0082, kListBox = 0x0083, kComboBox = 0x0085;
constexpr int kFirstKeyword = 17;   // "button"

// Indexed by keyword number minus 17; rows without a class are keywords
// that name no control ("font" to "position").
const ControlKind kControlKinds[] = {
    {kButton, nullptr, 0x10010000},                      // button
    {kEdit, nullptr, 0x10810080},                        // edittext
    {kButton, nullptr, 0x10010003},                      // checkbox
    {kListBox, nullptr, 0x10B10041},                     // listbox
    {kButton, nullptr, 0x10010001},                      // okbutton
    {kStatic, nullptr, 0x10000000},                      // statictext
    {kStatic, nullptr, 0x1000000E},                      // bitmap
    {kButton, nullptr, 0x10020007},                      // groupbox
    {kListBox, nullptr, 0x10B10049},                     // multilistbox
    {0, u"SysDateTimePick32", 0x10010020},               // datetime
    {kEdit, nullptr, 0x10B110C4},                        // editmultiline
    {kButton, nullptr, 0x10010000},                      // cancelbutton
    {kComboBox, nullptr, 0x10210203},                    // combobox
    {kEdit, nullptr, 0x10812080},                        // editnumber
    {kButton, nullptr, 0x10010009},                      // radiogroup
    {0, u"SysTreeView32", 0x10810037},                   // treeview
    {0, nullptr, 0}, {0, nullptr, 0}, {0, nullptr, 0}, {0, nullptr, 0}, {0, nullptr, 0},   // 33..37
    {0, nullptr, 0}, {0, nullptr, 0}, {0, nullptr, 0}, {0, nullptr, 0}, {0, nullptr, 0},   // 38..42
    {0, nullptr, 0}, {0, nullptr, 0}, {0, nullptr, 0}, {0, nullptr, 0}, {0, nullptr, 0},   // 43..47
    {0, nullptr, 0}, {0, nullptr, 0},                                                      // 48..49
    {0, u"msctls_trackbar32", 0x10010005},               // sliderhorz
    {0, u"msctls_trackbar32", 0x10010007},               // slidervert
    {0, u"SysTabControl32", 0x10010000},                 // tabcontrol
};

// Writes words into a record, advancing.
struct WordWriter {
    uint16_t* p;
    void Word(uint16_t w) { *p++ = w; }
    void Dword(uint32_t d) {
        Word(static_cast<uint16_t>(d & 0xFFFF));
        Word(static_cast<uint16_t>(d >> 16));
    }
    void Text(const CString& s) {
        for (char16_t c : s) Word(c);
        Word(0);
    }
};

// Style, extended style, geometry and id: the first 18 bytes of a record.
void WriteItemHead(WordWriter& w, uint32_t style, uint16_t id, int16_t x, int16_t y, int16_t cx, int16_t cy) {
    w.Dword(style);
    w.Dword(0);
    w.Word(static_cast<uint16_t>(x));
    w.Word(static_cast<uint16_t>(y));
    w.Word(static_cast<uint16_t>(cx));
    w.Word(static_cast<uint16_t>(cy));
    w.Word(id);
}

void PutWord(std::vector<uint8_t>& b, size_t at, uint16_t w) {
    b[at] = static_cast<uint8_t>(w & 0xFF);
    b[at + 1] = static_cast<uint8_t>(w >> 8);
}

}  // namespace

const ControlKind* FindControlKind(int keyword) {
    int index = keyword - kFirstKeyword;
    if (index < 0 || index >= static_cast<int>(std::size(kControlKinds))) return nullptr;
    const ControlKind& kind = kControlKinds[index];
    return kind.atom || kind.className ? &kind : nullptr;
}

std::unique_ptr<uint16_t[]> CreateItemTemplate(uint16_t classAtom, uint32_t style, uint16_t id, int16_t x,
                                               int16_t y, int16_t cx, int16_t cy, const CString& text,
                                               size_t& length) {
    length = 24 + 2 * (text.size() + 1);
    auto record = std::make_unique<uint16_t[]>(length / 2);
    WordWriter w{record.get()};
    WriteItemHead(w, style, id, x, y, cx, cy);
    w.Word(0xFFFF);
    w.Word(classAtom);
    w.Text(text);
    w.Word(0);
    return record;
}

std::unique_ptr<uint16_t[]> CreateItemTemplate(const CString& className, uint32_t style, uint16_t id, int16_t x,
                                               int16_t y, int16_t cx, int16_t cy, const CString& text,
                                               size_t& length) {
    length = 18 + 2 * (className.size() + 1) + 2 * (text.size() + 1) + 2;
    auto record = std::make_unique<uint16_t[]>(length / 2);
    WordWriter w{record.get()};
    WriteItemHead(w, style, id, x, y, cx, cy);
    w.Text(className);
    w.Text(text);
    w.Word(0);
    return record;
}

int16_t ToWord(double value) {
    if (!std::isfinite(value)) return 0;
    double low = std::fmod(std::trunc(value), 65536.0);   // exact for every finite double
    if (low < 0) low += 65536.0;
    return static_cast<int16_t>(static_cast<uint16_t>(low));
}

size_t CDialogTemplate::HeaderLength(size_t captionLength, bool hasFont, size_t faceLength) {
    size_t length = 22 + 2 * (captionLength + 1);
    if (hasFont) length += 2 + 2 * (faceLength + 1);
    return (length + 3) & ~size_t{3};
}

CDialogTemplate::CDialogTemplate(const CString& caption, int16_t x, int16_t y, int16_t cx, int16_t cy,
                                 bool hasFont, uint16_t pointSize, const CString& faceName)
    : m_caption(caption), m_face(faceName), m_x(x), m_y(y), m_cx(cx), m_cy(cy), m_hasFont(hasFont),
      m_pointSize(pointSize) {
    m_bytes.assign(HeaderLength(m_caption.size(), hasFont, m_face.size()), 0);
}

bool CDialogTemplate::AppendItem(const uint16_t* record, size_t length) {
    if (m_count == 0xFFFF) return false;
    size_t at = (m_bytes.size() + 3) & ~size_t{3};
    m_bytes.resize(at + length);   // the gap before `at` keeps its zeros
    std::memcpy(m_bytes.data() + at, record, length);
    ++m_count;
    return true;
}

void CDialogTemplate::Finish() {
    size_t header = HeaderLength(m_caption.size(), m_hasFont, m_face.size());
    std::memset(m_bytes.data(), 0, header);
    uint32_t style = kDialogStyle | (m_hasFont ? 0x40u : 0u);
    std::vector<uint16_t> words = {static_cast<uint16_t>(style & 0xFFFF), static_cast<uint16_t>(style >> 16), 0, 0,
                                   m_count, static_cast<uint16_t>(m_x), static_cast<uint16_t>(m_y),
                                   static_cast<uint16_t>(m_cx), static_cast<uint16_t>(m_cy), 0, 0};
    for (char16_t c : m_caption) words.push_back(c);
    words.push_back(0);
    if (m_hasFont) {
        words.push_back(m_pointSize);
        for (char16_t c : m_face) words.push_back(c);
        words.push_back(0);
    }
    for (size_t i = 0; i < words.size(); ++i) PutWord(m_bytes, 2 * i, words[i]);
}

}  // namespace ob::ui
