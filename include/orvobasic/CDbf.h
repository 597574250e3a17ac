// CDbf: dBase III tables (".dbf" files without memo files) for scripts and hosts.
//
// A table is a 32-byte header, one 32-byte descriptor per field, the byte
// 0x0D, then fixed-length records: a flag byte (" " live, "*" deleted) and
// each field's characters, left-aligned and padded with spaces. Text in the
// file is 8-bit, Windows-1252 unless SetCodePage chooses UTF-8 (then a value
// longer than its field is cut before a whole character); everything
// crossing this interface is UTF-16 (CString).
//
// CDbf keeps one current record as name/value pairs (CAttributePair): the
// read operations fill them, the write operations write them out. Record
// numbers count from 0, except in GetAttributeStr, which counts from 1.
//
// Failures are reported by returning false. In addition, a read that comes
// up short where the format requires bytes (the header, a field descriptor,
// the terminator byte, a record's flag byte) and a write the system refuses
// throw CFileException; callers that open files they did not write must
// catch it. A CDbf is used by one thread at a time.
#pragma once

#include <orvobasic/CString.h>
#include <orvobasic/codepage.h>
#include <orvobasic/export.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <vector>

namespace ob::platform {
class CFile;
}

// Field types. The numbers are part of the interface.
enum DBF_FIELD_TYPE {
    DBF_LOGICAL = 1,    // "L" / "BOOL": one of Y y N n T t F f, or "?"
    DBF_CHAR = 2,       // "C" / "CHAR": 1..253 characters
    DBF_NUMERIC = 3,    // "N" / "NUMERIC" / "INTEGER": 18 characters
    DBF_DATE = 4,       // "D" / "DATE": 8 characters, YYYYMMDD by convention
    DBF_FLOAT = 5,      // "F" / "FLOAT": 20 characters
    DBF_UNKNOWN = 6,    // any other type; no letter is written for it
};

// Thrown by CDbf when the file system fails it (see the header comment).
class OB_API CFileException : public std::runtime_error {
public:
    enum Cause {
        none = 0,
        genericException = 1,
        hardIO = 9,         // a write was refused (disk full, read-only file...)
        endOfFile = 14,     // fewer bytes than the format requires
    };
    CFileException(Cause cause, const CString& fileName);
    Cause m_cause;
    CString m_strFileName;
};

// One field: its name (at most 10 characters are stored), length in bytes,
// decimal count, offset inside the record (after the flag byte) and type.
class OB_API CDbfFieldDescriptorEx {
public:
    CDbfFieldDescriptorEx() = default;
    CDbfFieldDescriptorEx(const CString& name, DBF_FIELD_TYPE type, int32_t length, int32_t decimals = 0)
        : m_name(name), m_length(length), m_decimals(decimals), m_type(type) {}

    CString m_name;
    int32_t m_length = 0;
    int32_t m_decimals = 0;
    int32_t m_offset = 0;
    DBF_FIELD_TYPE m_type = DBF_UNKNOWN;
};

// A field name with the current record's value of that field.
class OB_API CAttributePair {
public:
    CAttributePair() = default;
    CAttributePair(const CString& name, const CString& value) : m_name(name), m_value(value) {}

    CString m_name;
    CString m_value;
};

class OB_API CDbf {
public:
    // Open modes.
    enum ReadWrite { modeRead = 0, modeWrite = 1, modeReadWrite = 2 };

    CDbf();
    virtual ~CDbf();   // closes the table, finishing a written file
    CDbf(const CDbf&) = delete;
    CDbf& operator=(const CDbf&) = delete;

    // ---- opening and closing ----

    // Creates (or truncates) `name` as a new table with the given fields and
    // leaves it open for writing. ".dbf" is appended to a name that does not
    // already end in it (in any case). Each field's offset is the running sum
    // of the lengths as given; its length is then forced by
    // VerifyFieldLength. False when the file cannot be created, there are
    // more than 2046 fields, a forced length is outside 0..255, or the record
    // would exceed 65535 bytes. Whatever was open before is released first.
    bool Create(const CString& name, const CDbfFieldDescriptorEx* const* descriptors, int count);
    bool Create(const CString& name, const std::vector<CDbfFieldDescriptorEx>& fields);

    // Opens `name` (".dbf" completed as in Create). modeRead and
    // modeReadWrite read an existing table; the first write to a table opened
    // with modeRead reopens it read-write. modeWrite creates a new table with
    // the fields of `templ` that pass its attribute filter (false without a
    // template or when it has no fields). False when the file cannot be
    // opened or its header is inconsistent (header length below 33, record
    // length too small for its fields); throws CFileException(endOfFile) when
    // the header is cut short.
    bool Open(const CString& name, int mode, CDbf* templ = nullptr);

    // In a writing mode, rewrites the header (record count, today's date),
    // puts the end mark 0x1A after the last whole record and cuts the file
    // there. Then releases fields and pairs and closes the file. Never
    // throws; false only when finishing the file failed.
    bool Close();
    // Close() and release everything.
    void Delete();
    // Closes and reads the table again, positioned at the first record.
    // False in modeWrite or when not open.
    bool Rewind();
    // Makes written data durable (modeWrite and modeReadWrite).
    void Flush();

    bool IsOpen() const;
    int GetMode() const { return m_mode; }
    const CString& GetFileName() const { return m_fileName; }
    uint32_t GetNumRecords() const { return m_numRecords; }
    uint32_t GetNumFields() const { return m_numFields; }
    uint32_t GetHeaderLength() const { return m_headerLength; }
    uint32_t GetRecordLength() const { return m_recordLength; }
    // The code page of the text in the file; set it before opening.
    ob::CodePage GetCodePage() const { return m_codePage; }
    void SetCodePage(ob::CodePage codePage) { m_codePage = codePage; }

    // ---- fields ----

    // Null / false when `i` is out of range.
    const CDbfFieldDescriptorEx* GetFieldDescriptor(int i) const;
    bool GetFieldName(int i, CString& name) const;
    bool GetFieldType(int i, DBF_FIELD_TYPE& type) const;
    // The field names in order.
    void GetAttributes(std::vector<CString>& names) const;
    // One flag per field of this table for its later use as a template:
    // fields whose flag is false are left out of a table opened with
    // modeWrite from it; fields without a flag are kept.
    void SetAttributeFilter(const std::vector<bool>& flags);
    // Sum of the lengths of the fields that pass the filter; 0 when not open.
    int FilteredRecordSize();

    // ---- records ----

    // Positions the file at record `i` (from 0). False when not open or `i`
    // is beyond the record count.
    bool SeekToRecord(uint32_t i);
    // Reads the record at the file position into the pairs and moves to the
    // next record. A logical field keeps its one character; other fields are
    // read up to their first zero byte, trailing spaces kept. False when a
    // field read gets no byte; throws CFileException when the flag byte is
    // missing (at the end of the file).
    bool ReadRecord();
    bool ReadRecord(uint32_t i);
    bool ReadRecord(uint32_t i, std::vector<CString>& values);
    // Flag of the current record.
    bool IsRecordDeleted() const { return m_recordDeleted; }
    // Reads the flag byte of record `i`: true unless it is "*". False when
    // not open; throws CFileException when the byte is missing.
    bool IsValidRecord(uint32_t i);

    // Writes the pairs as a live record at the file position. With `format`
    // each value goes through CheckFieldFormat first. Values are cut at their
    // field's length and padded with spaces.
    bool WriteRecord(bool format);
    // The same at record `i`, which must be below the record count.
    bool WriteRecord(uint32_t i, bool format);
    bool WriteRecord(uint32_t i, const std::vector<CString>& values, bool format);
    // Writes the pairs after the last whole record of the file (over a
    // trailing 0x1A or partial record) and counts one record more.
    bool AppendRecord(bool format);
    bool AppendRecord(const std::vector<CString>& values, bool format);
    // Writes "*" into the flag byte of record `i` (below the record count).
    bool MarkRecordAsDeleted(uint32_t i);
    // Removes the last `n` records by shortening the file; the header is
    // brought up to date on Close. False when n is 0, the table is empty or
    // the file is not longer than n records.
    bool DeleteLastRecord(uint32_t n);

    // The pair values in field order / new values for them (false when fewer
    // values than fields are given; extra values are ignored).
    void GetRecordFields(std::vector<CString>& values) const;
    bool SetRecordFields(const std::vector<CString>& values);
    // Copies the values of another table's current record, field by field.
    void CopyRecord(const CDbf& other);
    // Reads one field straight from the file, pairs untouched. `record`
    // counts from 1 here.
    bool GetAttributeStr(CString& value, uint32_t record, int field);

    // ---- helpers ----

    // Type of a script's type name: "L"/"BOOL", "C"/"CHAR",
    // "N"/"NUMERIC"/"INTEGER", "D"/"DATE", "F"/"FLOAT" (case-insensitive);
    // anything else is DBF_UNKNOWN.
    static DBF_FIELD_TYPE StringToDBFFieldType(const CString& text);
    // The length a field of `type` gets: L 1, C clamped to 1..253, N 18,
    // D 8, F 20, unknown as given.
    static int32_t VerifyFieldLength(int32_t length, DBF_FIELD_TYPE type);
    // The value as written to a field when formatting is on: a logical field
    // takes the first character if it is one of "YyNnTtFf", else "?"; a
    // numeric or float value with a "." after its first character gets
    // exactly the decimal count of digits after the point (cut, or padded
    // with "0"); other values are unchanged.
    static CString CheckFieldFormat(const CString& value, const CDbfFieldDescriptorEx& field);

private:
    void CleanUp();
    void Abandon();
    void ReleaseFields();
    bool OpenRead(const CString& path, int mode);
    bool InitFromTemplate(const CString& path, CDbf& templ);
    bool AddFields(const CDbfFieldDescriptorEx* const* descriptors, int count);
    bool WriteHeader();
    bool Finish();
    bool SwitchToWriteMode();
    bool WriteRecordAt(uint64_t position, bool format);
    uint64_t OffsetToEnd() const;
    uint64_t RecordPosition(uint32_t i) const;
    void ReadExact(void* buffer, size_t count);
    void WriteExact(const void* buffer, size_t count);
    void MakePairs();

    std::unique_ptr<ob::platform::CFile> m_file;
    CString m_fileName;
    int m_filteredRecordSize = -1;
    uint32_t m_numRecords = 0;
    uint32_t m_numFields = 0;
    uint32_t m_headerLength = 0;
    uint32_t m_recordLength = 0;
    bool m_recordDeleted = false;
    std::vector<CDbfFieldDescriptorEx> m_fields;
    std::vector<CString> m_fieldNames;
    std::vector<bool> m_attributeFilter;
    std::vector<CAttributePair> m_pairs;
    int m_mode = modeRead;
    ob::CodePage m_codePage = ob::CodePage::Windows1252;
};
