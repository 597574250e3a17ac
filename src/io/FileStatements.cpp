// The statements "open" and "close" and the closing of every file slot.
#include "io/FileSlots.h"
#include "io/IoArgs.h"

#include <orvobasic/COrvoBasic.h>

#include <cerrno>

using namespace ob;
using platform::CFile;

namespace {

// CFile flags of the three "open" modes. "append" deliberately lacks
// modeCreate (the file must exist) and does not move to the end.
enum class OpenMode { Input, Output, Append };

unsigned FlagsOf(OpenMode mode) {
    switch (mode) {
    case OpenMode::Output: return CFile::modeCreate | CFile::modeReadWrite | CFile::shareDenyNone;
    case OpenMode::Append: return CFile::modeNoTruncate | CFile::modeReadWrite | CFile::shareDenyNone;
    default: return CFile::modeRead | CFile::shareDenyNone;
    }
}

OpenMode ModeOfKeyword(KEYWORD_TYPE keyword) {
    if (keyword == KW_OUTPUT) return OpenMode::Output;
    if (keyword == KW_APPEND) return OpenMode::Append;
    return OpenMode::Input;   // "input" and any other keyword
}

// Opens the file as a binary or a text slot (8-bit text in `codePage`);
// null when the system refuses.
std::unique_ptr<CFileHolder> OpenHolder(const CString& name, OpenMode mode, bool text, CodePage codePage) {
    if (text) {
        auto file = std::make_unique<CTextFileLoc>(true, false);
        file->SetCodePage(codePage);
        if (!file->Open(name, FlagsOf(mode))) return nullptr;
        return std::make_unique<CFileHolder>(std::move(file));
    }
    auto file = std::make_unique<CFile>();
    if (!file->Open(name, FlagsOf(mode))) return nullptr;
    return std::make_unique<CFileHolder>(std::move(file));
}

bool IsLineEndToken(const COrvoBasic& b) {
    return b.Command() == CMD_EOL || b.Command() == CMD_FINISHED;
}

}  // namespace

// "open" NAME, then in any order up to the line end: "for" input|output|append,
// "as" NUMBER, "text". Other tokens are skipped. The number must lie in
// 1..256 (error 46; a missing "as" counts as -1); a file the system or the
// host's path resolver refuses is error 47 whatever the cause. The old file of the slot is closed only
// when the new one has opened.
bool COrvoBasic::ExecOpenFile() {
    CBasicVariable name;
    get_exp(name);
    if (name.GetType() != BVT_STRING) {
        ReportError(31);
        FindEOL();
        return false;
    }
    OpenMode mode = OpenMode::Input;
    int64_t number = -1;
    bool text = false;
    for (;;) {
        get_token();
        if (IsLineEndToken(*this)) {
            putback();
            break;
        }
        if (TokenType() == TOKEN_NONE) {
            NextChar();   // a character that begins no token: skip it
        } else if (TokenType() == COMMAND && Command() == CMD_FOR) {
            get_token();
            if (TokenType() != KEYWORD) {
                if (IsLineEndToken(*this)) putback();
                ReportError(1);
                FindEOL();
                return false;
            }
            mode = ModeOfKeyword(Keyword());
        } else if (TokenType() == KEYWORD && Keyword() == KW_AS) {
            CBasicVariable value;
            get_exp(value);
            number = io::TruncToInt64(value.GetNumberValue());
        } else if (TokenType() == KEYWORD && Keyword() == KW_TEXT) {
            text = true;
        }
    }
    if (number < CFileSlotTable::kFirstSlot || number > CFileSlotTable::kLastSlot) {
        ReportError(46);
        return false;
    }
    CString path = name.GetStringValue();
    errno = 0;
    std::unique_ptr<CFileHolder> holder = ResolvePath(path) ? OpenHolder(path, mode, text, m_codePage) : nullptr;
    if (!holder) {
        ReportErrorAbout(47, path, errno);
        return false;
    }
    m_fileSlots->Add(static_cast<uint16_t>(number), std::move(holder));
    return true;
}

// "close" NUMBER: a number that is not open is accepted silently.
bool COrvoBasic::ExecCloseFile() {
    CBasicVariable number;
    get_exp(number);
    if (number.GetType() != BVT_NUMBER) {
        ReportError(31);
        FindEOL();
        return false;
    }
    m_fileSlots->Close(io::TruncToInt64(number.GetNumberValue()));
    return true;
}

bool COrvoBasic::FileCloseAll() {
    if (m_fileSlots) m_fileSlots->CloseAll();
    return true;
}
