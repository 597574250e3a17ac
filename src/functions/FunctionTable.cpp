// The table of callable names, the argument-list readers and the dispatch of
// a call to its family handler.
#include <orvobasic/COrvoBasic.h>

using namespace ob;

namespace {

struct BuiltIn {
    const char16_t* name;
    FUNCTION_TYPE type;
    FuncHandler handler;   // null: the family is not part of this build
};

using B = COrvoBasic;

// The built-ins, in the order they are entered.
const BuiltIn kBuiltIns[] = {
    {u"year", FT_YEAR, &B::ExecTimeFunc}, {u"month", FT_MONTH, &B::ExecTimeFunc},
    {u"day", FT_DAY, &B::ExecTimeFunc}, {u"hour", FT_HOUR, &B::ExecTimeFunc},
    {u"minute", FT_MINUTE, &B::ExecTimeFunc}, {u"second", FT_SECOND, &B::ExecTimeFunc},
    {u"weekday", FT_WEEKDAY, &B::ExecTimeFunc},
    {u"sin", FT_SIN, &B::ExecArithmetics}, {u"cos", FT_COS, &B::ExecArithmetics},
    {u"tan", FT_TAN, &B::ExecArithmetics}, {u"asin", FT_ASIN, &B::ExecArithmetics},
    {u"acos", FT_ACOS, &B::ExecArithmetics}, {u"atan", FT_ATAN, &B::ExecArithmetics},
    {u"log", FT_LOG, &B::ExecArithmetics}, {u"log2", FT_LOG2, &B::ExecArithmetics},
    {u"log10", FT_LOG10, &B::ExecArithmetics}, {u"sqr", FT_SQR, &B::ExecArithmetics},
    {u"abs", FT_ABS, &B::ExecArithmetics}, {u"rad2dms", FT_RAD2DMS, &B::ExecArithmetics},
    {u"dms2rad", FT_DMS2RAD, &B::ExecArithmetics}, {u"isnan", FT_ISNAN, &B::ExecArithmetics},
    {u"loword", FT_LOWORD, &B::ExecArithmetics}, {u"hiword", FT_HIWORD, &B::ExecArithmetics},
    {u"swap", FT_SWAP, &B::ExecArithmetics}, {u"int", FT_INT, &B::ExecArithmetics},
    {u"max", FT_MAX, &B::ExecArithmetics}, {u"min", FT_MIN, &B::ExecArithmetics},
    {u"ubound", FT_UBOUND, &B::ExecArithmetics}, {u"rand", FT_RAND, &B::ExecArithmetics},
    {u"mapset", FT_MAPSET, &B::ExecMapOperation}, {u"mapget", FT_MAPGET, &B::ExecMapOperation},
    {u"maphas", FT_MAPHAS, &B::ExecMapOperation}, {u"mapremove", FT_MAPREMOVE, &B::ExecMapOperation},
    {u"mapgetkeys", FT_MAPGETKEYS, &B::ExecMapOperation},
    {u"mapgetvalues", FT_MAPGETVALUES, &B::ExecMapOperation},
    {u"left", FT_LEFT, &B::ExecStringOperation}, {u"right", FT_RIGHT, &B::ExecStringOperation},
    {u"mid", FT_MID, &B::ExecStringOperation}, {u"instr", FT_INSTR, &B::ExecStringOperation},
    {u"replace", FT_REPLACE, &B::ExecStringOperation}, {u"lcase", FT_LCASE, &B::ExecStringOperation},
    {u"ucase", FT_UCASE, &B::ExecStringOperation}, {u"len", FT_LEN, &B::ExecStringOperation},
    {u"repeat", FT_REPEAT, &B::ExecStringOperation}, {u"format", FT_FORMAT, &B::ExecStringOperation},
    {u"val", FT_VAL, &B::ExecStringOperation}, {u"str", FT_STR, &B::ExecStringOperation},
    {u"getpath", FT_GETPATH, &B::ExecStringOperation}, {u"getname", FT_GETNAME, &B::ExecStringOperation},
    {u"fileopendlg", FT_FILEOPENDLG, nullptr}, {u"filesaveasdlg", FT_FILESAVEASDLG, nullptr},
    {u"read", FT_READ, &B::ExecFileOperation}, {u"write", FT_WRITE, &B::ExecFileOperation},
    {u"readline", FT_READLINE, &B::ExecFileOperation}, {u"readlist", FT_READLIST, &B::ExecFileOperation},
    {u"writeline", FT_WRITELINE, &B::ExecFileOperation}, {u"filesize", FT_FILESIZE, &B::ExecFileOperation},
    {u"seek", FT_SEEK, &B::ExecFileOperation}, {u"iseof", FT_ISEOF, &B::ExecFileOperation},
    {u"getfilepos", FT_GETFILEPOS, &B::ExecFileOperation},
    {u"getwindowhandle", FT_GETWINDOWHANDLE, nullptr}, {u"copydata", FT_COPYDATA, nullptr},
    {u"pointoffset", FT_POINTOFFSET, nullptr}, {u"sendmessage", FT_SENDMESSAGE, nullptr},
    {u"popupmenu", FT_POPUPMENU, nullptr}, {u"ask", FT_ASK, nullptr},
    {u"findfiles", FT_FINDFILES, &B::ExecFindFiles}, {u"controlvalue", FT_CONTROLVALUE, nullptr},
    {u"dbfopen", FT_DBFOPEN, &B::ExecDBFOperation}, {u"dbfcreate", FT_DBFCREATE, &B::ExecDBFOperation},
    {u"dbfclose", FT_DBFCLOSE, &B::ExecDBFOperation},
    {u"dbfnumrecords", FT_DBFNUMRECORDS, &B::ExecDBFOperation},
    {u"dbfread", FT_DBFREAD, &B::ExecDBFOperation}, {u"dbfwrite", FT_DBFWRITE, &B::ExecDBFOperation},
    {u"dbfappend", FT_DBFAPPEND, &B::ExecDBFOperation}, {u"dbfseek", FT_DBFSEEK, &B::ExecDBFOperation},
    {u"dbfdelete", FT_DBFDELETE, &B::ExecDBFOperation},
    {u"dbfnumfields", FT_DBFNUMFIELDS, &B::ExecDBFOperation},
    {u"dbffieldnames", FT_DBFFIELDNAMES, &B::ExecDBFOperation},
    {u"comportopen", FT_COMPORTOPEN, nullptr}, {u"comportclose", FT_COMPORTCLOSE, nullptr},
    {u"comportread", FT_COMPORTREAD, nullptr}, {u"comportwrite", FT_COMPORTWRITE, nullptr},
    {u"createobject", FT_CREATEOBJECT, &B::ExecCreateObject},
    {u"getvarstats", FT_GETVARSTATS, &B::ExecGetVarStats},
    {u"garbagecollection", FT_GARBAGECOLLECTION, &B::ExecGarbageCollection},
};

}  // namespace

bool COrvoBasic::BuildFunctionTable() {
    m_functions.reserve(std::size(kBuiltIns) * 2);
    for (const auto& b : kBuiltIns) {
        auto desc = std::make_unique<CFuncDesc>();
        desc->name = b.name;
        desc->type = b.type;
        desc->handler = b.handler;
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

const CFuncDesc* COrvoBasic::FindFuncDesc(const CString& lowerName) const {
    auto ext = m_ExtFunctionTable.find(lowerName);
    if (ext != m_ExtFunctionTable.end()) return ext->second;
    auto it = m_functions.find(lowerName);
    return it == m_functions.end() ? nullptr : it->second.get();
}

FUNCTION_TYPE COrvoBasic::LookupFunction(const CString& name) {
    CFuncDesc unused;
    return LookupFunction(name, unused, false);
}

// A name with a point is an automation method call; otherwise the host's
// functions are searched first, then this interpreter's table.
FUNCTION_TYPE COrvoBasic::LookupFunction(const CString& name, CFuncDesc& desc, bool copy) {
    if (name.Find(u'.') >= 0) {
        m_curFuncName = name;
        return FT_AUTOMATION;
    }
    CString lower = name;
    lower.MakeLower();
    const CFuncDesc* found = FindFuncDesc(lower);
    if (!found) return FT_NONE;
    m_curFuncName = found->name;
    m_curFuncPos = found->bodyPosition;
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
    FUNCTION_TYPE type = m_function;
    CString name = m_curFuncName;
    if (type == FT_NONE) {
        ReportError(21);
        return false;
    }
    if (m_capabilities != OB_CAP_ALL && !FunctionAllowed(type)) {
        get_token();   // the ")" the skipped list ends with
        return false;
    }
    size_t bufferMark = m_argBuffers;
    CArgArray args;
    GetParamList(args);
    if (m_halted) {
        get_token();
        return false;
    }
    if (type == FT_USER || type == FT_CUSTOM || type == FT_DECLARED) {
        CBasicVariable value;
        ExecUserFunction(name, value, args, false);
        result = value;
    } else if (type == FT_AUTOMATION) {
        CBasicVariable value;
        ExecAutomationMethod(name, value, args);
        result = value;
    } else {
        const CFuncDesc* desc = FindFuncDesc(name);
        if (!desc || !desc->handler)
            ReportError(21);
        else
            (this->*desc->handler)(result, args, type);
    }
    get_token();
    if (m_token != u")") ReportError(22);
    m_argBuffers = bufferMark;
    return true;
}

bool COrvoBasic::FunctionsFree() {
    m_functions.clear();
    if (m_nNumberOfCopies == 1) {
        for (auto& entry : m_ExtFunctionTable) delete entry.second;
        m_ExtFunctionTable.clear();
    }
    return true;
}
