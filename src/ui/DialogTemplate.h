// Dialog templates in memory: the item-record writers, the table of control
// keywords, and the growable template that "dialog" and "page" fill.
//
// Layout (little-endian, UTF-16 text): a header (style, extended style,
// item count, x, y, cx, cy, menu 0, class 0, caption, and with DS_SETFONT
// the point size and face name) padded with zeros to a multiple of 4, then
// one item record per control, each starting on a 4-byte boundary.
#pragma once

#include <orvobasic/CString.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace ob::ui {

// Style of every dialog and page: WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_THICKFRAME.
constexpr uint32_t kDialogStyle = 0x80CC0000;

// One row of the control table: the window class (an atom, or a name when
// the atom is 0) and the complete style.
struct ControlKind {
    uint16_t atom;
    const char16_t* className;
    uint32_t style;
};

// The row of a control keyword (its KEYWORD_TYPE number), or null for a
// keyword that names no control.
const ControlKind* FindControlKind(int keyword);

// Item record with a predefined class given by atom. Sets `length` (bytes).
std::unique_ptr<uint16_t[]> CreateItemTemplate(uint16_t classAtom, uint32_t style, uint16_t id, int16_t x,
                                               int16_t y, int16_t cx, int16_t cy, const CString& text,
                                               size_t& length);
// Item record with a class given by name.
std::unique_ptr<uint16_t[]> CreateItemTemplate(const CString& className, uint32_t style, uint16_t id, int16_t x,
                                               int16_t y, int16_t cx, int16_t cy, const CString& text,
                                               size_t& length);

// A script value as a 16-bit word: truncated toward zero, then its low 16
// bits; NaN and infinities give 0.
int16_t ToWord(double value);

// A template being assembled.
class CDialogTemplate {
public:
    // Sizes the buffer for the header of this caption and font; the header
    // itself is written by Finish.
    CDialogTemplate(const CString& caption, int16_t x, int16_t y, int16_t cx, int16_t cy, bool hasFont,
                    uint16_t pointSize, const CString& faceName);

    // Appends a record at the next multiple of 4 and counts it. False when
    // the count would pass 65,535 (the record is not added).
    bool AppendItem(const uint16_t* record, size_t length);
    // Clears the header area and writes the header.
    void Finish();

    const std::vector<uint8_t>& Bytes() const { return m_bytes; }
    uint16_t ItemCount() const { return m_count; }
    static size_t HeaderLength(size_t captionLength, bool hasFont, size_t faceLength);

private:
    std::vector<uint8_t> m_bytes;
    CString m_caption;
    CString m_face;
    int16_t m_x, m_y, m_cx, m_cy;
    bool m_hasFont;
    uint16_t m_pointSize;
    uint16_t m_count = 0;
};

}  // namespace ob::ui
