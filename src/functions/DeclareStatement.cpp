// The "declare" statement: makes a function of a shared library callable
// from scripts under a name of their own.
//
//   declare function NAME lib "LIBRARY" [alias "ENTRY"] ([[byval] P as TYPE, ...]) [as TYPE]
//   declare sub NAME lib "LIBRARY" [alias "ENTRY"] ([[byval] P as TYPE, ...])
//
// The declaration is checked and its call interface prepared here; the
// library itself is opened at the first call.
#include <orvobasic/COrvoBasic.h>

#include "functions/NativeCall.h"

#include <memory>

using namespace ob;

namespace {

struct KeywordFlags {
    KEYWORD_TYPE keyword;
    uint32_t flags;
};

// A script "double" travels as a 32-bit float, like "float"; text always by reference.
const KeywordFlags kTypeFlags[] = {
    {KW_CHAR, NF_CHAR},       {KW_INTEGER, NF_INTEGER},           {KW_FLOAT, NF_FLOAT},
    {KW_DOUBLE, NF_FLOAT},    {KW_STRING, NF_STRING | NF_BYREF},  {KW_UNICODE, NF_UNICODE | NF_BYREF},
};

bool IsDelimiter(const COrvoBasic& b, char16_t c) {
    return b.TokenType() == DELIMITER && b.Token().size() == 1 && b.Token()[0] == c;
}

bool NextIsKeyword(COrvoBasic& b, KEYWORD_TYPE keyword) {
    b.get_token();
    return b.TokenType() == KEYWORD && b.Keyword() == keyword;
}

bool AtStatementEnd(const COrvoBasic& b) {
    return b.Command() == CMD_EOL || b.Command() == CMD_FINISHED || b.TokenType() == COMMENT;
}

// Reads "as TYPE" (the "as" already read) into flags; false for a word that is no type.
bool ReadTypeWord(COrvoBasic& b, uint32_t& flags) {
    b.get_token();
    flags = b.TokenType() == KEYWORD ? COrvoBasic::GetReturnTypeDef(b.Keyword()) : 0;
    return flags != 0;
}

// One parameter, its first token already read: [byval] NAME as TYPE.
bool ReadParameter(COrvoBasic& b, CFuncDesc& desc) {
    bool byValue = b.TokenType() == KEYWORD && b.Keyword() == KW_BYVAL;
    if (byValue) b.get_token();
    if (b.TokenType() != VARIABLE || !NextIsKeyword(b, KW_AS)) return false;
    uint32_t flags = 0;
    if (!ReadTypeWord(b, flags)) return false;
    desc.paramFlags.push_back(byValue ? flags : flags | NF_BYREF);
    return true;
}

// "(" [parameter {"," parameter}] ")".
bool ReadParameterList(COrvoBasic& b, CFuncDesc& desc) {
    b.get_token();
    if (!IsDelimiter(b, u'(')) return false;
    b.get_token();
    if (IsDelimiter(b, u')')) return true;
    for (;;) {
        if (!ReadParameter(b, desc)) return false;
        b.get_token();
        if (IsDelimiter(b, u')')) return true;
        if (!IsDelimiter(b, u',')) return false;
        b.get_token();
    }
}

// Everything after "declare"; false on any deviation from the grammar.
bool ReadDeclaration(COrvoBasic& b, CFuncDesc& desc) {
    b.get_token();
    if (b.Command() != CMD_FUNCTION && b.Command() != CMD_SUB) return false;
    desc.isSub = b.Command() == CMD_SUB;
    if (b.get_token() != VARIABLE) return false;
    CString scriptName = b.Token();
    if (!NextIsKeyword(b, KW_LIB) || b.get_token() != QUOTE) return false;
    desc.library = b.Token() + u".dll";
    desc.entry = scriptName;
    b.get_token();
    if (b.TokenType() == KEYWORD && b.Keyword() == KW_ALIAS) {
        if (b.get_token() != QUOTE) return false;
        desc.entry = b.Token();
    } else {
        b.putback();
    }
    if (!ReadParameterList(b, desc)) return false;
    b.get_token();
    if (b.TokenType() == KEYWORD && b.Keyword() == KW_AS) {
        uint32_t flags = 0;
        if (!ReadTypeWord(b, flags)) return false;
        // A sub returns nothing, whatever its declaration says.
        desc.returnFlags = desc.isSub ? 0 : flags & NF_KIND_MASK;
        b.get_token();
    }
    desc.name = scriptName;
    desc.name.MakeLower();
    return AtStatementEnd(b);
}

}  // namespace

uint32_t COrvoBasic::GetReturnTypeDef(KEYWORD_TYPE keyword) {
    for (const auto& entry : kTypeFlags)
        if (entry.keyword == keyword) return entry.flags;
    return 0;
}

// A malformed declaration is error 1 and a name already callable error 27;
// either way nothing is entered and the rest of the line is skipped.
bool COrvoBasic::ExecDeclare() {
    auto desc = std::make_unique<CFuncDesc>();
    desc->type = FT_DECLARED;
    bool ok = ReadDeclaration(*this, *desc);
    if (!ok) ReportError(1);
    if (ok) {
        // More than 32 parameters leave it unprepared: each call is then error 24.
        desc->native = std::make_shared<CNativeCall>();
        desc->native->Prepare(desc->paramFlags, desc->returnFlags);
        ok = AddFunction(desc.get());
        if (ok) desc.release();
    }
    if (m_command != CMD_EOL && m_command != CMD_FINISHED) FindEOL();
    return ok;
}
