// Calling a declared library function: the argument list is read with a
// note of how each argument was written, the library and its entry point are
// looked up (once; libraries stay open), the arguments are converted by the
// declared flags, the function is called through its prepared interface,
// and results come back: the return value and, for arguments written as a
// bare variable, what the callee left in their by-reference cells and buffers.
#include <orvobasic/COrvoBasic.h>

#include "functions/DeclaredCall.h"
#include "functions/NativeArguments.h"
#include "functions/NativeCall.h"
#include "platform/CharClass.h"
#include "platform/DynamicLibrary.h"
#include "values/UserTypes.h"

using namespace ob;

namespace {

bool IsDelimiter(const COrvoBasic& b, char16_t c) {
    return b.TokenType() == DELIMITER && b.Token().size() == 1 && b.Token()[0] == c;
}

// The key of the record a bare name denotes (a global first, then the
// current level's local), or empty when it names no record.
CString RecordKey(COrvoBasic& b, const CString& name) {
    if (b.UserTypes().FindRecord(name)) return name;
    CString key = name;
    b.AddScopeLevelExtension(key);
    return b.UserTypes().FindRecord(key) ? key : CString();
}

// How the argument at the cursor is written; the cursor is left where it was.
CDeclaredArg ClassifyArgument(COrvoBasic& b) {
    CDeclaredArg arg;
    uint32_t start = b.GetPosition();
    while (b.CurChar() == u' ' || b.CurChar() == u'\t') b.NextChar();
    bool word = platform::IsAlpha(b.CurChar());   // only a name is looked at twice
    if (word && b.get_token() == VARIABLE && b.CurChar() != u'[') {
        CString name = b.Token();
        b.get_token();
        if (IsDelimiter(b, u',') || IsDelimiter(b, u')')) {
            CString key = RecordKey(b, name);
            arg.kind = key.empty() ? CDeclaredArg::Kind::Variable : CDeclaredArg::Kind::Record;
            arg.name = key.empty() ? name : key;
        }
    }
    b.Rewind(start);
    return arg;
}

// Reads "(" argument {"," argument} ")" as GetParamList does (the ")" is put
// back), noting for each argument how it was written. A record argument is
// not evaluated: its buffer is what the call passes.
void ReadDeclaredArguments(COrvoBasic& b, CArgArray& args, std::vector<CDeclaredArg>& sources) {
    b.get_token();
    if (!IsDelimiter(b, u'(')) {
        b.ReportError(22);
        return;
    }
    b.get_token();
    if (IsDelimiter(b, u')')) {
        b.putback();
        return;
    }
    b.putback();
    do {
        sources.push_back(ClassifyArgument(b));
        args.emplace_back();
        if (sources.back().kind == CDeclaredArg::Kind::Record)
            b.get_token();
        else
            b.get_exp(args.back());
        b.get_token();
    } while (IsDelimiter(b, u','));
    if (!IsDelimiter(b, u')')) {
        b.ReportError(22);
        return;
    }
    b.putback();
}

// Resolves the declaration's entry point once: 25 when the library cannot
// be opened, 26 when it lacks the entry; 0 on success.
int ResolveEntry(platform::CLibrarySet& libraries, const CFuncDesc& desc) {
    if (desc.native->Entry()) return 0;
    void* library = libraries.Open(desc.library.ToUtf8());
    if (!library) return 25;
    void* entry = platform::CLibrarySet::Symbol(library, desc.entry.ToUtf8());
    if (!entry) return 26;
    desc.native->SetEntry(entry);
    return 0;
}

// Converts the arguments into slots: a record written by its bare name goes
// as its buffer (to a by-reference parameter only: error 31 otherwise).
int FillArguments(COrvoBasic& b, const CFuncDesc& desc, CArgArray& args, const std::vector<CDeclaredArg>* sources,
                  CNativeArguments& slots) {
    for (size_t i = 0; i < args.size(); ++i) {
        uint32_t flags = desc.paramFlags[i];
        bool record = sources && i < sources->size() && (*sources)[i].kind == CDeclaredArg::Kind::Record;
        if (!record) {
            slots.Add(flags, args[i]);
            continue;
        }
        CTypeStructure* buffer = b.UserTypes().FindRecord((*sources)[i].name);
        if (!buffer || !slots.AddBlock(flags, buffer->Data())) return 31;
    }
    return 0;
}

// Stores what by-reference arguments hold after the call into the variables
// they were written as.
void CopyBack(COrvoBasic& b, const CNativeArguments& slots, const std::vector<CDeclaredArg>& sources) {
    for (size_t i = 0; i < sources.size() && i < slots.Count(); ++i) {
        if (sources[i].kind != CDeclaredArg::Kind::Variable) continue;
        CBasicVariable value;
        if (!slots.ReadBack(i, value)) continue;
        CString name = sources[i].name;
        if (CBasicVariable* var = b.FindVariable(name)) var->SetValue(value);
    }
}

}  // namespace

bool COrvoBasic::ExecDeclaredCall(const CString& name, CBasicVariable& result) {
    CArgArray args;
    std::vector<CDeclaredArg> sources;
    ReadDeclaredArguments(*this, args, sources);
    if (m_halted) return false;
    CString lower = name;
    lower.MakeLower();
    const CFuncDesc* desc = FindFuncDesc(lower);
    if (!desc) {
        ReportError(21);
        return false;
    }
    return ExecExternalFunction(*desc, result, args, &sources);
}

bool COrvoBasic::ExecExternalFunction(const CFuncDesc& desc, CBasicVariable& result, CArgArray& args,
                                      const std::vector<CDeclaredArg>* sources) {
    if (!desc.native) {   // not made by "declare"
        ReportError(21);
        return false;
    }
    if (!CallAllowed(desc)) return false;
    if (int error = ResolveEntry(*m_libraries, desc)) {
        ReportError(error);
        return false;
    }
    if (args.size() != desc.paramFlags.size() || !desc.native->IsPrepared()) {
        ReportError(24);
        return false;
    }
    CNativeArguments slots(*this);
    if (int error = FillArguments(*this, desc, args, sources, slots)) {
        ReportError(error);
        return false;
    }
    NativeCell returned;
    desc.native->Invoke(slots.Values(), returned);
    CNativeArguments::ConvertResult(*this, desc.returnFlags, returned, result);
    if (sources) CopyBack(*this, slots, *sources);
    return true;
}
