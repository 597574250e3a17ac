// The one template reader every desktop uses: template bytes to a dialog
// description. It checks every length against the buffer, so hostile bytes
// give a refusal, never a read outside them.
#include <orvobasic/dialogs.h>

#include <iterator>

namespace ob::ui {

namespace {

struct AtomName {
    uint16_t atom;
    const char16_t* name;
};

const AtomName kAtoms[] = {
    {0x0080, u"Button"}, {0x0081, u"Edit"}, {0x0082, u"Static"},
    {0x0083, u"ListBox"}, {0x0084, u"ScrollBar"}, {0x0085, u"ComboBox"},
};

// Reads words from the bytes; every read fails once past the end.
class WordReader {
public:
    WordReader(const uint8_t* bytes, size_t length) : m_bytes(bytes), m_length(length) {}

    bool Word(uint16_t& w) {
        if (m_at + 2 > m_length) return false;
        w = static_cast<uint16_t>(m_bytes[m_at] | (m_bytes[m_at + 1] << 8));
        m_at += 2;
        return true;
    }
    bool Short(int16_t& s) {
        uint16_t w;
        if (!Word(w)) return false;
        s = static_cast<int16_t>(w);
        return true;
    }
    bool Dword(uint32_t& d) {
        uint16_t lo, hi;
        if (!Word(lo) || !Word(hi)) return false;
        d = lo | (static_cast<uint32_t>(hi) << 16);
        return true;
    }
    // A zero-terminated string.
    bool Text(CString& s) {
        s.clear();
        for (uint16_t w; Word(w);) {
            if (w == 0) return true;
            s.push_back(static_cast<char16_t>(w));
        }
        return false;
    }
    void AlignTo4() { m_at = (m_at + 3) & ~size_t{3}; }
    bool AtEnd() const { return m_at >= m_length; }

private:
    const uint8_t* m_bytes;
    size_t m_length;
    size_t m_at = 0;
};

bool ReadGeometry(WordReader& r, int16_t& x, int16_t& y, int16_t& cx, int16_t& cy) {
    return r.Short(x) && r.Short(y) && r.Short(cx) && r.Short(cy);
}

// The class of an item: 0xFFFF and an atom, or a name.
bool ReadClass(WordReader& r, CString& className) {
    uint16_t first;
    if (!r.Word(first)) return false;
    if (first != 0xFFFF) {
        className.assign(1, static_cast<char16_t>(first));
        if (first == 0) return false;   // an empty class name names nothing
        CString rest;
        if (!r.Text(rest)) return false;
        className += rest;
        return true;
    }
    uint16_t atom;
    if (!r.Word(atom)) return false;
    for (const AtomName& a : kAtoms)
        if (a.atom == atom) {
            className = a.name;
            return true;
        }
    return false;
}

bool ReadItem(WordReader& r, DialogItem& item) {
    r.AlignTo4();
    uint16_t extra;
    if (!r.Dword(item.style) || !r.Dword(item.exStyle) || !ReadGeometry(r, item.x, item.y, item.cx, item.cy) ||
        !r.Word(item.id) || !ReadClass(r, item.className))
        return false;
    uint16_t first;
    if (!r.Word(first)) return false;
    if (first == 0xFFFF) {   // a resource ordinal as the title: kept as empty text
        uint16_t ordinal;
        if (!r.Word(ordinal)) return false;
        item.text.clear();
    } else if (first != 0) {
        CString rest;
        if (!r.Text(rest)) return false;
        item.text.assign(1, static_cast<char16_t>(first));
        item.text += rest;
    } else {
        item.text.clear();
    }
    return r.Word(extra) && extra == 0;
}

}  // namespace

bool ReadDialogTemplate(const uint8_t* bytes, size_t length, DialogDescription& out) {
    if (!bytes) return false;
    WordReader r(bytes, length);
    uint16_t count, menu, windowClass;
    if (!r.Dword(out.style) || !r.Dword(out.exStyle) || !r.Word(count) ||
        !ReadGeometry(r, out.x, out.y, out.cx, out.cy) || !r.Word(menu) || !r.Word(windowClass))
        return false;
    if (menu != 0 || windowClass != 0 || !r.Text(out.caption)) return false;
    out.hasFont = (out.style & DS_SETFONT) != 0;
    out.pointSize = 0;
    out.faceName.clear();
    if (out.hasFont && (!r.Word(out.pointSize) || !r.Text(out.faceName))) return false;
    out.items.clear();
    out.items.reserve(count);
    for (unsigned i = 0; i < count; ++i) {
        DialogItem item;
        if (!ReadItem(r, item)) return false;
        out.items.push_back(std::move(item));
    }
    return true;
}

}  // namespace ob::ui
