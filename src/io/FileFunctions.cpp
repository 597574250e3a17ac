// The built-ins on numbered file slots ("read", "write", "readline",
// "readlist", "writeline", "seek", "filesize", "iseof", "getfilepos") and
// "findfiles".
#include "io/FileSlots.h"
#include "io/IoArgs.h"
#include "io/StringTokenizer.h"
#include "platform/FindFiles.h"

#include <orvobasic/COrvoBasic.h>

#include <atomic>
#include <cstring>
#include <new>
#include <vector>

using namespace ob;

namespace {

// Set by "writeline"'s third argument ("UTF16" sets it, "ASCII" clears it).
// What is written follows each file's own encoding; nothing reads this.
std::atomic<bool> g_outputUnicode {true};

// More items than this in one "read" are refused with error 50, so that a
// large count cannot exhaust memory through the result array.
constexpr int64_t kMaxReadItems = int64_t {1} << 22;

// What one call works on.
struct FileCall {
    COrvoBasic& interp;
    CBasicVariable& result;
    CArgArray& args;
    CFileHolder& holder;
};

using FileOp = bool (*)(FileCall&);

// Reports error `id` and gives the failed result.
bool Fail(COrvoBasic& interp, int id) {
    interp.ReportError(id);
    return false;
}

// Resizes the result to `count` elements (count >= 1), also beyond the
// ceiling that "dim" keeps to.
void ResizeResult(CBasicVariable& result, int64_t count) {
    if (count < CBasicVariable::kMaxItems) {
        result.Redim(static_cast<int>(count));
        return;
    }
    result.Redim(1);
    result.SetArraySize(static_cast<int>(count));
}

// Stores item `i` of a packed little-endian buffer: size 1 signed, size 2
// unsigned, size 4 signed 32-bit, size 8 an IEEE double.
void StoreItem(CBasicVariable& result, const unsigned char* p, int64_t size, int i) {
    switch (size) {
    case 1: result.SetValue(static_cast<int>(static_cast<signed char>(p[0])), i); break;
    case 2: result.SetValue(static_cast<int>(p[0] | (p[1] << 8)), i); break;
    case 4: {
        uint32_t bits = p[0] | (p[1] << 8) | (p[2] << 16) | (static_cast<uint32_t>(p[3]) << 24);
        result.SetValue(static_cast<int>(static_cast<int32_t>(bits)), i);
        break;
    }
    default: {
        double value;
        std::memcpy(&value, p, sizeof value);
        result.SetValue(value, i);
        break;
    }
    }
}

// Packs one number: size 1 from a signed truncation, sizes 2 and 4 from an
// unsigned one (low bits kept), size 8 the double's own bytes.
void PackItem(unsigned char* p, double number, int64_t size) {
    if (size == 8) {
        std::memcpy(p, &number, sizeof number);
        return;
    }
    uint64_t bits = static_cast<uint64_t>(io::TruncToInt64(number));
    for (int64_t b = 0; b < size; ++b) p[b] = static_cast<unsigned char>(bits >> (8 * b));
}

bool ValidItemSize(int64_t size) { return size == 1 || size == 2 || size == 4 || size == 8; }

// "read" FILE, COUNT, SIZE: a count beyond the bytes left is error 51 (the
// position then stands at the end, as after a short read), without
// allocating anything.
bool ReadItems(FileCall& c) {
    int64_t count = io::TruncToInt64(c.args[1].GetNumberValue());
    int64_t size = io::TruncToInt64(c.args[2].GetNumberValue());
    if (!ValidItemSize(size)) return Fail(c.interp, 45);
    if (count < 0) return Fail(c.interp, 50);
    platform::CFile& file = c.holder.File();
    uint64_t length = file.GetLength(), position = file.GetPosition();
    uint64_t left = position < length ? length - position : 0;
    if (static_cast<uint64_t>(count) > left / static_cast<uint64_t>(size)) {
        file.SeekToEnd();
        return Fail(c.interp, 51);
    }
    if (count > kMaxReadItems) return Fail(c.interp, 50);
    if (count == 0) return true;
    uint64_t bytes = static_cast<uint64_t>(count) * (static_cast<uint64_t>(size) + sizeof(CVarBase));
    if (!c.interp.MayAllocate(bytes)) return false;
    std::vector<unsigned char> buffer;
    try {
        buffer.resize(static_cast<size_t>(count * size));
    } catch (const std::bad_alloc&) {
        return Fail(c.interp, 50);
    }
    if (file.Read(buffer.data(), buffer.size()) != buffer.size()) return Fail(c.interp, 51);
    ResizeResult(c.result, count);
    for (int i = 0; i < count; ++i) StoreItem(c.result, &buffer[static_cast<size_t>(i * size)], size, i);
    return true;
}

// "write" FILE, ARRAY, SIZE: all items in one write; the result is the count.
bool WriteItems(FileCall& c) {
    int64_t size = io::TruncToInt64(c.args[2].GetNumberValue());
    if (!ValidItemSize(size)) return Fail(c.interp, 45);
    const CBasicVariable& items = c.args[1];
    int count = items.GetNumItems();
    std::vector<unsigned char> buffer(static_cast<size_t>(count) * static_cast<size_t>(size));
    for (int i = 0; i < count; ++i)
        PackItem(&buffer[static_cast<size_t>(i) * static_cast<size_t>(size)], items.GetItem(i).GetDoubleValue(), size);
    if (!c.holder.File().Write(buffer.data(), buffer.size())) return Fail(c.interp, 53);
    c.result.SetValue(count);
    return true;
}

// A long line counts against the memory budget as it is read, and its
// reading notices the deadline and stop requests.
CTextFileLoc::GrowCheck LineGrowth(FileCall& c) {
    return [&interp = c.interp](size_t bytes) { return interp.MayAllocate(bytes); };
}

// "readline" FILE: the next line with "\r\n" added, or "" at the end.
bool ReadLine(FileCall& c) {
    CString line;
    if (c.holder.TextFile()->ReadString(line, LineGrowth(c))) line += u"\r\n";
    if (c.interp.IsHalted()) return false;
    c.result.SetValue(line);
    return true;
}

// "readlist" FILE, DELIMITERS: the numbers of the next line up to the first
// token that is no number, appended to the result; nothing at the end.
bool ReadList(FileCall& c) {
    CString line;
    if (!c.holder.TextFile()->ReadString(line, LineGrowth(c))) return !c.interp.IsHalted();
    StringTokenizer tokens(line, c.args[1].GetStringValue());
    double number;
    while (tokens.NextNumber(number)) c.result.AddItem(number);
    return true;
}

// Writes one item: cut after each "\n" into pieces that keep their "\n".
bool WriteTextItem(CTextFileLoc& file, const CString& text) {
    size_t start = 0;
    while (start < text.size()) {
        size_t newline = text.find(u'\n', start);
        size_t end = newline == CString::npos ? text.size() : newline + 1;
        if (!file.WriteString(text.substr(start, end - start))) return false;
        start = end;
    }
    return true;
}

// "writeline" FILE, TEXT-OR-ARRAY [, "ASCII" | "UTF16"]: the result is the
// number of items.
bool WriteLine(FileCall& c) {
    if (c.args.size() > 2) {
        CString encoding = c.args[2].GetStringValue();
        if (encoding == u"ASCII") g_outputUnicode = false;
        else if (encoding == u"UTF16") g_outputUnicode = true;
    }
    const CBasicVariable& items = c.args[1];
    int count = items.GetNumItems();
    for (int i = 0; i < count; ++i)
        if (!WriteTextItem(*c.holder.TextFile(), items.GetItem(i).GetStringValue()))
            return Fail(c.interp, 53);
    c.result.SetValue(count);
    return true;
}

// "seek" FILE, POSITION: a position at or past the length fails silently.
bool SeekTo(FileCall& c) {
    platform::CFile& file = c.holder.File();
    uint32_t position = io::TruncToUint32(c.args[1].GetNumberValue());
    if (position >= file.GetLength()) return false;
    if (CTextFileLoc* text = c.holder.TextFile()) text->ClearBuffer();
    int64_t now = file.Seek(position, platform::CFile::begin);
    if (now < 0) return false;
    c.result.SetValue(static_cast<double>(now));
    return true;
}

bool FileSize(FileCall& c) {
    c.result.SetValue(static_cast<double>(c.holder.File().GetLength()));
    return true;
}

// "iseof": a text slot's position counts back the characters still buffered.
bool IsEof(FileCall& c) {
    platform::CFile& file = c.holder.File();
    uint64_t position = file.GetPosition();
    if (CTextFileLoc* text = c.holder.TextFile())
        position = position > text->BufferedChars() ? position - text->BufferedChars() : 0;
    c.result.SetValue(file.GetLength() <= position ? 1 : 0);
    return true;
}

bool GetFilePos(FileCall& c) {
    c.result.SetValue(static_cast<double>(c.holder.File().GetPosition()));
    return true;
}

struct FileOpEntry {
    FUNCTION_TYPE type;
    size_t minArgs;
    bool needsText;
    FileOp op;
};

const FileOpEntry kFileOps[] = {
    {FT_READ, 3, false, ReadItems},     {FT_WRITE, 3, false, WriteItems},
    {FT_READLINE, 1, true, ReadLine},   {FT_READLIST, 2, true, ReadList},
    {FT_WRITELINE, 2, true, WriteLine}, {FT_SEEK, 2, false, SeekTo},
    {FT_FILESIZE, 1, false, FileSize},  {FT_ISEOF, 1, false, IsEof},
    {FT_GETFILEPOS, 1, false, GetFilePos},
};

}  // namespace

// Checks, in order: arguments present (24), enough of them (24), the slot
// open (49), a text slot for the line functions (52); then runs the call.
bool COrvoBasic::ExecFileOperation(CBasicVariable& result, CArgArray& args, FUNCTION_TYPE type) {
    if (args.empty()) return Fail(*this, 24);
    for (const FileOpEntry& entry : kFileOps) {
        if (entry.type != type) continue;
        if (args.size() < entry.minArgs) return Fail(*this, 24);
        CFileHolder* holder = m_fileSlots->Find(io::TruncToInt64(args[0].GetNumberValue()));
        if (!holder) return Fail(*this, 49);
        if (entry.needsText && !holder->IsTextFile()) return Fail(*this, 52);
        FileCall call {*this, result, args, *holder};
        try {
            return entry.op(call);
        } catch (const std::bad_alloc&) {
            return Fail(*this, 50);
        }
    }
    return true;
}

// "findfiles" PATTERN, ANY: the matching names appended to the result; a
// pattern the host's path resolver refuses is error 47.
bool COrvoBasic::ExecFindFiles(CBasicVariable& result, CArgArray& args, FUNCTION_TYPE) {
    if (args.size() < 2) return Fail(*this, 24);
    CString pattern = args[0].GetStringValue();
    if (!ResolvePath(pattern)) return Fail(*this, 47);
    for (const CString& name : platform::FindFiles(pattern)) result.AddItem(name);
    return true;
}
