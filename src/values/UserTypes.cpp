// The "type" statement, record variables ("dim v as T", "global v as T") and
// field access by name.
#include "values/UserTypes.h"

using namespace ob;

// ---- CUserTypes -------------------------------------------------------------

void CUserTypes::AddType(const CString& name, std::unique_ptr<CTypeStructure> type) {
    m_types[name] = std::move(type);
}

const CTypeStructure* CUserTypes::LookupType(const CString& name) const {
    auto it = m_types.find(name);
    return it == m_types.end() ? nullptr : it->second.get();
}

CTypeStructure& CUserTypes::AddRecord(const CString& key, const CTypeStructure& type) {
    auto& slot = m_records[key];
    slot = std::make_unique<CTypeStructure>(type);
    return *slot;
}

CTypeStructure* CUserTypes::FindRecord(const CString& key) {
    auto it = m_records.find(key);
    return it == m_records.end() ? nullptr : it->second.get();
}

void CUserTypes::Clear() {
    m_records.clear();
    m_types.clear();
}

// ---- the "type" statement ---------------------------------------------------

namespace {

// Error already reported by the reader that failed (GetIndex).
constexpr int kReported = -1;

// Moves to the first token of the next line that holds one, skipping blank
// and comment lines. When the current token is already a line end, the line
// it ended is not skipped again.
void NextLineToken(COrvoBasic& b) {
    if (b.Command() != CMD_EOL) b.FindEOL();
    do {
        b.get_token();
    } while (b.Command() == CMD_EOL || b.TokenType() == COMMENT);
}

bool AtBlockEnd(const COrvoBasic& b) { return b.Command() == CMD_ENDTYPE || b.Command() == CMD_FINISHED; }

// Skips the rest of a declaration that failed, up to and including "endtype",
// so that its field lines are not run as statements.
void SkipTypeBody(COrvoBasic& b) {
    while (!AtBlockEnd(b)) NextLineToken(b);
}

// A field name: a word (statement and secondary keywords included, since
// "text" or "value" make natural field names) without a point.
bool IsFieldName(const COrvoBasic& b) {
    BASIC_TOKEN_TYPE t = b.TokenType();
    return (t == VARIABLE || t == KEYWORD || t == COMMAND) && !b.Token().empty();
}

// One field line, from its first token: name ["[" count "]"] "as" type-keyword.
// Returns 0, the number of the error to report, or kReported.
int ReadField(COrvoBasic& b, CTypeStructure& type) {
    if (!IsFieldName(b)) return 33;
    CString name = b.Token();
    int count = 1;
    b.get_token();
    if (b.TokenType() == DELIMITER) {
        if (b.Token() != u"[") return 1;
        if (!b.GetIndex(count)) return kReported;
        if (count < 1 || count > CTypeStructure::kMaxCount) return 32;
        b.get_token();
    }
    if (b.TokenType() != KEYWORD || b.Keyword() != KW_AS) return 1;
    b.get_token();
    int element = b.TokenType() == KEYWORD ? COrvoBasic::KeywordToType(b.Keyword()) : 0;
    if (element == 0) return 1;
    // the only refusal left is a record past its size ceiling
    if (!type.AddField(name, static_cast<TYPE_DEFINITION>(element), count)) return 32;
    return 0;
}

// The record variable a name refers to: the plain name first (globals), then
// the name decorated for the current scope level.
CTypeStructure* FindRecordVariable(COrvoBasic& b, const CString& name) {
    if (CTypeStructure* record = b.UserTypes().FindRecord(name)) return record;
    CString key = name;
    b.AddScopeLevelExtension(key);
    return b.UserTypes().FindRecord(key);
}

}  // namespace

// "type Name", one field per line, "endtype". A malformed declaration is
// reported (1 syntax, 33 field name, 32 count), skipped to its "endtype" and
// not entered. A type of an existing name replaces it. Blank and comment
// lines may stand between fields; the end of the program also ends the block.
bool COrvoBasic::ExecType() {
    get_token();
    if (m_tokenType != VARIABLE || m_token.empty()) {
        ReportError(1);
        SkipTypeBody(*this);
        return false;
    }
    CString typeName = m_token;
    auto type = std::make_unique<CTypeStructure>();
    for (NextLineToken(*this); !AtBlockEnd(*this); NextLineToken(*this)) {
        if (m_command == CMD_REM) continue;
        int error = ReadField(*this, *type);
        if (error == 0) continue;
        if (error != kReported) ReportError(error);
        SkipTypeBody(*this);
        return false;
    }
    type->AllocateBuffer();
    m_types->AddType(typeName, std::move(type));
    return true;
}

bool COrvoBasic::TypesFree() {
    m_types->Clear();
    return true;
}

// ---- record variables -------------------------------------------------------

// "dim v as T" (under the scope-decorated name) and "global v as T" (under the
// name as written); an existing record of that name is replaced by a fresh,
// zeroed one. An unknown type is error 1.
bool COrvoBasic::DimStructVariable(const CString& name, const CString& typeName, bool global) {
    const CTypeStructure* type = m_types->LookupType(typeName);
    if (!type) {
        ReportError(1);
        return false;
    }
    CString key = name;
    if (!global) AddScopeLevelExtension(key);
    m_types->AddRecord(key, *type);
    return true;
}

namespace {

// The pending element index, reset to 0: a subscript applies to the one field
// reference it was read for, never to a later one (the tokenizer probes the
// next "v.field" before its own subscript is read).
int TakePendingIndex(int& pending) {
    int index = pending;
    pending = 0;
    return index;
}

}  // namespace

// Reads element PendingIndex() of a field. An unknown record is error 37 when
// `report` is set; an unknown field or an element outside the field gives
// false without a report (the caller decides).
bool COrvoBasic::FindStructVariable(const CString& name, const CString& field, CBasicVariable& value, bool report) {
    int index = TakePendingIndex(m_pendingIndex);
    CTypeStructure* record = FindRecordVariable(*this, name);
    if (!record) {
        if (report) ReportError(37);
        return false;
    }
    return record->Read(field, index, value);
}

// Writes element PendingIndex() of a field (see CTypeStructure::Write). An
// unknown record is error 37; an unknown field or element gives false.
bool COrvoBasic::SetStructVariable(const CString& name, const CString& field, CBasicVariable& value) {
    int index = TakePendingIndex(m_pendingIndex);
    CTypeStructure* record = FindRecordVariable(*this, name);
    if (!record) {
        ReportError(37);
        return false;
    }
    return record->Write(field, index, value);
}
