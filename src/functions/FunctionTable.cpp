// The table of callable names, the argument-list readers and the dispatch of
// a call to its family handler.
#include <orvobasic/COrvoBasic.h>

#include "compiled/CompiledStatements.h"
#include "engine/Registry.h"
#include "functions/ArgListScope.h"

#include "engine/Capabilities.h"

using namespace ob;

namespace {

struct BuiltIn {
    const char16_t* name;
    FUNCTION_TYPE type;
    FuncHandler handler;   // null: the family is not part of this build
    Needs needs;           // what a call needs from the sandbox
};

using B = COrvoBasic;

// The built-ins, in the order they are entered.
const BuiltIn kBuiltIns[] = {
    {u"year", FT_YEAR, &B::ExecTimeFunc, kInside}, {u"month", FT_MONTH, &B::ExecTimeFunc, kInside},
    {u"day", FT_DAY, &B::ExecTimeFunc, kInside}, {u"hour", FT_HOUR, &B::ExecTimeFunc, kInside},
    {u"minute", FT_MINUTE, &B::ExecTimeFunc, kInside}, {u"second", FT_SECOND, &B::ExecTimeFunc, kInside},
    {u"weekday", FT_WEEKDAY, &B::ExecTimeFunc, kInside}, {u"sin", FT_SIN, &B::ExecArithmetics, kInside},
    {u"cos", FT_COS, &B::ExecArithmetics, kInside}, {u"tan", FT_TAN, &B::ExecArithmetics, kInside},
    {u"asin", FT_ASIN, &B::ExecArithmetics, kInside}, {u"acos", FT_ACOS, &B::ExecArithmetics, kInside},
    {u"atan", FT_ATAN, &B::ExecArithmetics, kInside}, {u"log", FT_LOG, &B::ExecArithmetics, kInside},
    {u"log2", FT_LOG2, &B::ExecArithmetics, kInside}, {u"log10", FT_LOG10, &B::ExecArithmetics, kInside},
    {u"sqr", FT_SQR, &B::ExecArithmetics, kInside}, {u"abs", FT_ABS, &B::ExecArithmetics, kInside},
    {u"rad2dms", FT_RAD2DMS, &B::ExecArithmetics, kInside},
    {u"dms2rad", FT_DMS2RAD, &B::ExecArithmetics, kInside}, {u"isnan", FT_ISNAN, &B::ExecArithmetics, kInside},
    {u"loword", FT_LOWORD, &B::ExecArithmetics, kInside}, {u"hiword", FT_HIWORD, &B::ExecArithmetics, kInside},
    {u"swap", FT_SWAP, &B::ExecArithmetics, kInside}, {u"int", FT_INT, &B::ExecArithmetics, kInside},
    {u"max", FT_MAX, &B::ExecArithmetics, kInside}, {u"min", FT_MIN, &B::ExecArithmetics, kInside},
    {u"ubound", FT_UBOUND, &B::ExecArithmetics, kInside}, {u"rand", FT_RAND, &B::ExecArithmetics, kInside},
    {u"mapset", FT_MAPSET, &B::ExecMapOperation, kInside},
    {u"mapget", FT_MAPGET, &B::ExecMapOperation, kInside},
    {u"maphas", FT_MAPHAS, &B::ExecMapOperation, kInside},
    {u"mapremove", FT_MAPREMOVE, &B::ExecMapOperation, kInside},
    {u"mapgetkeys", FT_MAPGETKEYS, &B::ExecMapOperation, kInside},
    {u"mapgetvalues", FT_MAPGETVALUES, &B::ExecMapOperation, kInside},
    {u"left", FT_LEFT, &B::ExecStringOperation, kInside},
    {u"right", FT_RIGHT, &B::ExecStringOperation, kInside}, {u"mid", FT_MID, &B::ExecStringOperation, kInside},
    {u"instr", FT_INSTR, &B::ExecStringOperation, kInside},
    {u"replace", FT_REPLACE, &B::ExecStringOperation, kInside},
    {u"lcase", FT_LCASE, &B::ExecStringOperation, kInside},
    {u"ucase", FT_UCASE, &B::ExecStringOperation, kInside}, {u"len", FT_LEN, &B::ExecStringOperation, kInside},
    {u"repeat", FT_REPEAT, &B::ExecStringOperation, kInside},
    {u"format", FT_FORMAT, &B::ExecStringOperation, kInside},
    {u"val", FT_VAL, &B::ExecStringOperation, kInside}, {u"str", FT_STR, &B::ExecStringOperation, kInside},
    {u"getpath", FT_GETPATH, &B::ExecStringOperation, kInside},
    {u"getname", FT_GETNAME, &B::ExecStringOperation, kInside},
    {u"fileopendlg", FT_FILEOPENDLG, &B::ExecFileDlg, kDialogs},
    {u"filesaveasdlg", FT_FILESAVEASDLG, &B::ExecFileDlg, kDialogs}, {u"read", FT_READ, &B::ExecFileOperation, kFiles},
    {u"write", FT_WRITE, &B::ExecFileOperation, kFiles},
    {u"readline", FT_READLINE, &B::ExecFileOperation, kFiles},
    {u"readlist", FT_READLIST, &B::ExecFileOperation, kFiles},
    {u"writeline", FT_WRITELINE, &B::ExecFileOperation, kFiles},
    {u"filesize", FT_FILESIZE, &B::ExecFileOperation, kFiles},
    {u"seek", FT_SEEK, &B::ExecFileOperation, kFiles}, {u"iseof", FT_ISEOF, &B::ExecFileOperation, kFiles},
    {u"getfilepos", FT_GETFILEPOS, &B::ExecFileOperation, kFiles},
    {u"getwindowhandle", FT_GETWINDOWHANDLE, &B::ExecWindowHandle, kDialogs},
    {u"copydata", FT_COPYDATA, &B::ExecCopyData, kDialogs},
    {u"pointoffset", FT_POINTOFFSET, &B::ExecPointOffset, kInside},
    {u"sendmessage", FT_SENDMESSAGE, &B::ExecSendMessage, kDialogs},
    {u"popupmenu", FT_POPUPMENU, &B::ExecPopupMenu, kDialogs}, {u"ask", FT_ASK, &B::ExecAsk, kDialogs},
    {u"findfiles", FT_FINDFILES, &B::ExecFindFiles, kFiles},
    {u"controlvalue", FT_CONTROLVALUE, &B::ExecGetControlValue, kDialogs},
    {u"dbfopen", FT_DBFOPEN, &B::ExecDBFOperation, kFiles},
    {u"dbfcreate", FT_DBFCREATE, &B::ExecDBFOperation, kFiles},
    {u"dbfclose", FT_DBFCLOSE, &B::ExecDBFOperation, kFiles},
    {u"dbfnumrecords", FT_DBFNUMRECORDS, &B::ExecDBFOperation, kFiles},
    {u"dbfread", FT_DBFREAD, &B::ExecDBFOperation, kFiles},
    {u"dbfwrite", FT_DBFWRITE, &B::ExecDBFOperation, kFiles},
    {u"dbfappend", FT_DBFAPPEND, &B::ExecDBFOperation, kFiles},
    {u"dbfseek", FT_DBFSEEK, &B::ExecDBFOperation, kFiles},
    {u"dbfdelete", FT_DBFDELETE, &B::ExecDBFOperation, kFiles},
    {u"dbfnumfields", FT_DBFNUMFIELDS, &B::ExecDBFOperation, kFiles},
    {u"dbffieldnames", FT_DBFFIELDNAMES, &B::ExecDBFOperation, kFiles},
    {u"comportopen", FT_COMPORTOPEN, &B::ExecComPortOperation, kSerial},
    {u"comportclose", FT_COMPORTCLOSE, &B::ExecComPortOperation, kSerial},
    {u"comportread", FT_COMPORTREAD, &B::ExecComPortOperation, kSerial},
    {u"comportwrite", FT_COMPORTWRITE, &B::ExecComPortOperation, kSerial},
    {u"createobject", FT_CREATEOBJECT, &B::ExecCreateObject, kAutomation},
    {u"getvarstats", FT_GETVARSTATS, &B::ExecGetVarStats, kInside},
    {u"garbagecollection", FT_GARBAGECOLLECTION, &B::ExecGarbageCollection, kInside},
};

}  // namespace

std::vector<BuiltInFacts> ob::BuiltInTable() {
    std::vector<BuiltInFacts> facts;
    for (const auto& b : kBuiltIns) facts.push_back({b.name, b.type, b.needs.capabilities});
    return facts;
}

bool COrvoBasic::BuildFunctionTable() {
    m_functions.reserve(std::size(kBuiltIns) * 2);
    for (const auto& b : kBuiltIns) {
        auto desc = std::make_unique<CFuncDesc>();
        desc->name = b.name;
        desc->type = b.type;
        desc->handler = b.handler;
        desc->capabilities = b.needs.capabilities;
        if (AddFunction(desc.get())) desc.release();
    }
    return true;
}

// Enters a descriptor; a name already present is error 27 and the caller
// keeps the descriptor.
bool COrvoBasic::AddFunction(CFuncDesc* desc) {
    if (m_functions.count(desc->name)) {
        ReportError(27);
        return false;
    }
    m_functions.emplace(desc->name, std::unique_ptr<CFuncDesc>(desc));
    return true;
}

uint64_t COrvoBasic::FunctionEpoch() const {
    // The table counts its own changes from 0; 0 stays free to mean "unknown".
    return ((m_functions.Epoch() + 1) << 32) ^ static_cast<uint64_t>(ob::HostFunctionCount());
}

const CFuncDesc* COrvoBasic::FindFuncDesc(const CString& lowerName) const {
    if (const CFuncDesc* host = ob::FindHostFunction(lowerName)) return host;
    auto it = m_functions.find(lowerName);
    return it == m_functions.end() ? nullptr : it->second.get();
}

// The tokenizer asks about the name it has just read: what that call site
// found is kept until a function table changes.
FUNCTION_TYPE COrvoBasic::LookupFunction(const CString& name) {
    CFuncDesc unused;
    if (&name != &m_token || m_pos < name.size()) return LookupFunction(name, unused, false);
    uint32_t site = m_pos - static_cast<uint32_t>(name.size());
    uint64_t epoch = FunctionEpoch();
    PositionFacts* facts = &FactsAt(site);
    if (facts->callEpoch != epoch) {
        FUNCTION_TYPE type = LookupFunction(name, unused, false);
        facts = &FactsAt(site);
        facts->callType = type;
        facts->callDesc = type == FT_NONE || type == FT_AUTOMATION ? nullptr : m_curFuncDesc;
        facts->callEpoch = epoch;
        return type;
    }
    // As LookupFunction(name, ...) leaves them, without the look-up.
    if (facts->callType == FT_AUTOMATION) {
        m_curFuncName = name;
        m_curFuncDesc = nullptr;
    } else if (facts->callDesc) {
        m_curFuncName = facts->callDesc->name;
        m_curFuncPos = facts->callDesc->bodyPosition;
        m_curFuncDesc = facts->callDesc;
        m_curFuncEpoch = epoch;
    }
    return facts->callType;
}

// A name with a point is an automation method call; otherwise the host's
// functions are searched first, then this interpreter's table.
FUNCTION_TYPE COrvoBasic::LookupFunction(const CString& name, CFuncDesc& desc, bool copy) {
    if (name.Find(u'.') >= 0) {
        m_curFuncName = name;
        m_curFuncDesc = nullptr;
        return FT_AUTOMATION;
    }
    CString lower = name;
    lower.MakeLower();
    const CFuncDesc* found = FindFuncDesc(lower);
    if (!found) return FT_NONE;
    m_curFuncName = found->name;
    m_curFuncPos = found->bodyPosition;
    m_curFuncDesc = found;
    m_curFuncEpoch = FunctionEpoch();
    if (copy) desc = *found;
    return found->type;
}

// Reads "(" expression {"," expression} ")"; the ")" is put back.
int COrvoBasic::GetParamList(CArgArray& args) {
    args.clear();
    get_token();
    if (m_token != u"(") {
        ReportError(22);
        return 0;
    }
    get_token();
    if (m_token == u")") {
        putback();
        return 0;
    }
    putback();
    do {
        args.emplace_back();
        get_exp(args.back());
        get_token();
    } while (m_token == u",");
    if (m_token != u")") {
        ReportError(22);
        return 0;
    }
    putback();
    return static_cast<int>(args.size());
}

// Reads expressions separated by "," up to the end of the line; the token
// that ended the list is consumed.
int COrvoBasic::GetParamGroup(CArgArray& args) {
    args.clear();
    do {
        args.emplace_back();
        get_exp(args.back());
        get_token();
    } while (m_token == u"," && m_command != CMD_EOL);
    return static_cast<int>(args.size());
}

bool COrvoBasic::ExecFunction(CBasicVariable& result) {
    if (m_compiled && m_compiled->TakeLoggedCall(*this, result)) {
        get_token();   // the ")" the argument list ends with
        if (m_token != u")") ReportError(22);
        return true;
    }
    FUNCTION_TYPE type = m_function;
    CString name = m_curFuncName;
    CallTarget target = CurrentCallTarget();
    if (type == FT_NONE) {
        ReportErrorAbout(21, m_token);
        return false;
    }
    if (m_capabilities != OB_CAP_ALL && !FunctionAllowed(type, name)) {
        get_token();   // the ")" the skipped list ends with
        return false;
    }
    if (type == FT_DECLARED) {   // reads its own arguments: by-reference results need their names
        ExecDeclaredCall(name, result);
        get_token();
        if (m_token != u")") ReportError(22);
        return true;
    }
    size_t bufferMark = m_argBuffers;
    ArgListScope scope(*this);
    CArgArray& args = scope.Args();
    GetParamList(args);
    if (m_halted) {
        get_token();
        return false;
    }
    if (type == FT_USER || type == FT_CUSTOM || type == FT_DECLARED) {
        CBasicVariable value;
        ExecUserFunction(name, value, args, false, target);
        result = value;
    } else if (type == FT_AUTOMATION) {
        CBasicVariable value;
        ExecAutomationMethod(name, value, args);
        result = value;
    } else {
        const CFuncDesc* desc = target.epoch == FunctionEpoch() ? target.desc : FindFuncDesc(name);
        if (!desc || !desc->handler)
            ReportError(21);
        else if (CallAllowed(*desc))
            (this->*desc->handler)(result, args, type);
    }
    get_token();
    if (m_token != u")") ReportError(22);
    m_argBuffers = bufferMark;
    return true;
}

bool COrvoBasic::FunctionsFree() {
    m_functions.clear();   // the host's table goes with the last interpreter (Registry.cpp)
    return true;
}
