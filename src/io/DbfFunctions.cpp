// The dBase built-ins ("dbfopen" ... "dbffieldnames") over the interpreter's
// table of open data files. A failing table operation is no error: it gives
// false or -1. A table whose file is cut short makes CDbf throw; every call
// catches that here, so a corrupt table gives a failed call, never a crash.
#include "io/DataFileTable.h"
#include "io/IoArgs.h"

#include <orvobasic/CDbf.h>
#include <orvobasic/COrvoBasic.h>

#include <algorithm>
#include <new>
#include <vector>

using namespace ob;

namespace {

// What one call on an open table works on.
struct DbfCall {
    COrvoBasic& interp;
    CBasicVariable& result;
    CArgArray& args;
    CDbf& dbf;
};

using DbfOp = bool (*)(DbfCall&);

bool Fail(COrvoBasic& interp, int id) {
    interp.ReportError(id);
    return false;
}

// Counts of records and fields are unsigned 32-bit; they are stored as
// integers while they fit.
void SetCount(CBasicVariable& result, uint32_t count) {
    if (count <= INT32_MAX) result.SetValue(static_cast<int>(count));
    else result.SetValue(static_cast<double>(count));
}

// Values `first`.. of the arguments as strings, one per field.
std::vector<CString> ValuesFrom(const CArgArray& args, size_t first, uint32_t fields) {
    std::vector<CString> values;
    for (size_t i = first; i < first + fields; ++i) values.push_back(args[i].GetStringValue());
    return values;
}

// "dbfread": the current record's values, padding kept, appended in order.
bool Read(DbfCall& c) {
    if (!c.dbf.ReadRecord()) return false;
    std::vector<CString> values;
    c.dbf.GetRecordFields(values);
    for (const CString& value : values) c.result.AddItem(value);
    return true;
}

// "dbfwrite" H, RECORD, VALUE...: one value per field at least.
bool Write(DbfCall& c) {
    uint32_t fields = c.dbf.GetNumFields();
    if (c.args.size() < fields + size_t {2}) return Fail(c.interp, 24);
    uint32_t record = io::TruncToUint32(c.args[1].GetNumberValue());
    c.result.SetValue(c.dbf.WriteRecord(record, ValuesFrom(c.args, 2, fields), true));
    return true;
}

// "dbfappend" H, VALUE...: one value per field at least.
bool Append(DbfCall& c) {
    uint32_t fields = c.dbf.GetNumFields();
    if (c.args.size() < fields + size_t {1}) return Fail(c.interp, 24);
    c.result.SetValue(c.dbf.AppendRecord(ValuesFrom(c.args, 1, fields), true));
    return true;
}

bool Seek(DbfCall& c) {
    if (c.args.size() < 2) return Fail(c.interp, 24);
    c.result.SetValue(c.dbf.SeekToRecord(io::TruncToUint32(c.args[1].GetNumberValue())));
    return true;
}

bool Delete(DbfCall& c) {
    if (c.args.size() < 2) return Fail(c.interp, 24);
    c.result.SetValue(c.dbf.MarkRecordAsDeleted(io::TruncToUint32(c.args[1].GetNumberValue())));
    return true;
}

bool NumRecords(DbfCall& c) {
    SetCount(c.result, c.dbf.GetNumRecords());
    return true;
}

bool NumFields(DbfCall& c) {
    SetCount(c.result, c.dbf.GetNumFields());
    return true;
}

bool FieldNames(DbfCall& c) {
    std::vector<CString> names;
    c.dbf.GetAttributes(names);
    for (const CString& name : names) c.result.AddItem(name);
    return true;
}

// The calls on an open table, with the result a missing table leaves:
// 0 for the ones that give a number, nothing for the others.
struct DbfOpEntry {
    FUNCTION_TYPE type;
    bool zeroFirst;
    DbfOp op;
};

const DbfOpEntry kDbfOps[] = {
    {FT_DBFREAD, false, Read},          {FT_DBFWRITE, true, Write},
    {FT_DBFAPPEND, true, Append},       {FT_DBFSEEK, false, Seek},
    {FT_DBFDELETE, false, Delete},      {FT_DBFNUMRECORDS, true, NumRecords},
    {FT_DBFNUMFIELDS, true, NumFields}, {FT_DBFFIELDNAMES, false, FieldNames},
};

// A script number truncated and held to the 32-bit range.
int32_t ToInt32(double number) {
    return static_cast<int32_t>(std::clamp<int64_t>(io::TruncToInt64(number), INT32_MIN, INT32_MAX));
}

// One field definition of "dbfcreate": name, type, length [, decimals].
CDbfFieldDescriptorEx FieldOf(const CBasicVariable& definition) {
    CDbfFieldDescriptorEx field;
    field.m_name = definition.GetItem(0).GetStringValue();
    field.m_type = CDbf::StringToDBFFieldType(definition.GetItem(1).GetStringValue());
    field.m_length = ToInt32(definition.GetItem(2).GetDoubleValue());
    if (definition.GetNumItems() > 3) field.m_decimals = ToInt32(definition.GetItem(3).GetDoubleValue());
    return field;
}

// Handles below zero (error 57) stay below zero; huge ones name no table.
int32_t HandleOf(const CBasicVariable& arg) { return ToInt32(arg.GetNumberValue()); }

// "dbfopen" NAME: the new handle, or -1. The table is opened for reading and
// becomes read-write on its first write. A name the host's path resolver
// refuses is error 47.
bool DbfOpen(COrvoBasic& interp, CBasicVariable& result, CArgArray& args) {
    result.SetValue(-1);
    CString path = args[0].GetStringValue();
    if (!interp.ResolvePath(path)) return Fail(interp, 47);
    auto file = std::make_unique<CDbfDataFile>();
    file->Dbf().SetCodePage(interp.GetCodePage());
    try {
        if (!file->Open(path, CDbf::modeRead)) return false;
    } catch (const CFileException&) {
        return false;
    }
    result.SetValue(interp.DataFiles().Add(std::move(file)));
    return true;
}

// "dbfcreate" NAME, DEFINITION...: the new handle, or -1. A definition of
// fewer than three items is error 24 and creates nothing; a name the host's
// path resolver refuses is error 47.
bool DbfCreate(COrvoBasic& interp, CBasicVariable& result, CArgArray& args) {
    result.SetValue(-1);
    if (args.size() < 2) return true;
    std::vector<CDbfFieldDescriptorEx> fields;
    for (size_t i = 1; i < args.size(); ++i) {
        if (args[i].GetNumItems() < 3) return Fail(interp, 24);
        fields.push_back(FieldOf(args[i]));
    }
    CString path = args[0].GetStringValue();
    if (!interp.ResolvePath(path)) return Fail(interp, 47);
    auto file = std::make_unique<CDbfDataFile>();
    file->Dbf().SetCodePage(interp.GetCodePage());
    if (!file->Dbf().Create(path, fields)) return false;
    result.SetValue(interp.DataFiles().Add(std::move(file)));
    return true;
}

// "dbfclose" HANDLE: true when a table was closed, false when none had the
// handle, -1 for a negative handle (no error). Later handles move down.
bool DbfClose(COrvoBasic& interp, CBasicVariable& result, CArgArray& args) {
    int32_t handle = HandleOf(args[0]);
    if (handle < 0) {
        result.SetValue(-1);
        return true;
    }
    result.SetValue(interp.DataFiles().Close(handle));
    return true;
}

}  // namespace

// Dispatches the eleven dBase built-ins. No argument at all is error 24;
// types outside the family do nothing.
bool COrvoBasic::ExecDBFOperation(CBasicVariable& result, CArgArray& args, FUNCTION_TYPE type) {
    if (args.empty()) return Fail(*this, 24);
    try {
        switch (type) {
        case FT_DBFOPEN: return DbfOpen(*this, result, args);
        case FT_DBFCREATE: return DbfCreate(*this, result, args);
        case FT_DBFCLOSE: return DbfClose(*this, result, args);
        default: break;
        }
        for (const DbfOpEntry& entry : kDbfOps) {
            if (entry.type != type) continue;
            int32_t handle = HandleOf(args[0]);
            if (handle < 0) return Fail(*this, 57);
            if (entry.zeroFirst) result.SetValue(0);
            CDataFile* file = m_dataFiles->Find(handle);
            if (!file || file->GetKind() != CDataFile::kDbase) return true;
            DbfCall call {*this, result, args, static_cast<CDbfDataFile*>(file)->Dbf()};
            return entry.op(call);
        }
        return true;
    } catch (const CFileException&) {
        return false;
    } catch (const std::bad_alloc&) {
        return Fail(*this, 50);
    }
}

bool COrvoBasic::FileFormatCloseAll() {
    if (m_dataFiles) m_dataFiles->CloseAll();
    return true;
}
