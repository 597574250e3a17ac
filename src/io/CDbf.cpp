#include <orvobasic/CDbf.h>

#include "platform/CFile.h"
#include "platform/CharClass.h"
#include "platform/CodePage.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <ctime>

using ob::platform::CFile;

namespace {

constexpr uint32_t kMainHeaderSize = 32;
constexpr uint32_t kDescriptorSize = 32;
constexpr uint32_t kMinHeaderLength = kMainHeaderSize + 1;   // no field, terminator only
constexpr int kMaxFields = (0xFFFF - kMinHeaderLength) / kDescriptorSize;   // 2046
constexpr unsigned char kTerminator = 0x0D;
constexpr unsigned char kEndMark = 0x1A;
constexpr unsigned kShared = CFile::shareDenyNone;

// Type letters in the file, by DBF_FIELD_TYPE; unknown types have none.
constexpr struct {
    DBF_FIELD_TYPE type;
    char letter;
} kLetters[] = {
    {DBF_LOGICAL, 'L'}, {DBF_CHAR, 'C'}, {DBF_NUMERIC, 'N'}, {DBF_DATE, 'D'}, {DBF_FLOAT, 'F'},
};

// Script type names, one-letter forms first, as scripts write them.
constexpr struct {
    const char16_t* name;
    DBF_FIELD_TYPE type;
} kTypeNames[] = {
    {u"L", DBF_LOGICAL}, {u"C", DBF_CHAR}, {u"N", DBF_NUMERIC}, {u"D", DBF_DATE}, {u"F", DBF_FLOAT},
    {u"BOOL", DBF_LOGICAL}, {u"CHAR", DBF_CHAR}, {u"NUMERIC", DBF_NUMERIC}, {u"INTEGER", DBF_NUMERIC},
    {u"DATE", DBF_DATE}, {u"FLOAT", DBF_FLOAT},
};

char LetterOf(DBF_FIELD_TYPE type) {
    for (const auto& entry : kLetters)
        if (entry.type == type) return entry.letter;
    return 0;
}

DBF_FIELD_TYPE TypeOfLetter(unsigned char letter) {
    for (const auto& entry : kLetters)
        if (static_cast<unsigned char>(entry.letter) == letter) return entry.type;
    return DBF_UNKNOWN;
}

uint32_t Get16(const unsigned char* p) { return p[0] | (p[1] << 8); }
uint32_t Get32(const unsigned char* p) {
    return p[0] | (p[1] << 8) | (p[2] << 16) | (static_cast<uint32_t>(p[3]) << 24);
}
void Put16(unsigned char* p, uint32_t v) {
    p[0] = v & 0xFF;
    p[1] = (v >> 8) & 0xFF;
}
void Put32(unsigned char* p, uint32_t v) {
    Put16(p, v & 0xFFFF);
    Put16(p + 2, v >> 16);
}

// The name with ".dbf" appended unless it already ends in it, in any case.
CString CompleteName(const CString& name) {
    CString ending = name.Right(4);
    ending.MakeLower();
    return ending == u".dbf" ? name : CString(name + u".dbf");
}

// A field's bytes as text: a logical field as its one character, others up
// to the first zero byte with trailing spaces kept.
CString FieldText(const unsigned char* bytes, size_t count, DBF_FIELD_TYPE type, ob::CodePage codePage) {
    if (count == 0) return CString();
    const auto* text = reinterpret_cast<const char*>(bytes);
    if (type == DBF_LOGICAL) return ob::platform::AnsiToWide(std::string_view(text, 1), codePage);
    size_t end = std::string_view(text, count).find('\0');
    return ob::platform::AnsiToWide(std::string_view(text, std::min(end, count)), codePage);
}

}  // namespace

CFileException::CFileException(Cause cause, const CString& fileName)
    : std::runtime_error(cause == endOfFile ? "dBase table: unexpected end of file" : "dBase table: file error"),
      m_cause(cause), m_strFileName(fileName) {}

CDbf::CDbf() = default;

CDbf::~CDbf() { Delete(); }

bool CDbf::IsOpen() const { return m_file && m_file->IsOpen(); }

// ---- helpers -------------------------------------------------------------

DBF_FIELD_TYPE CDbf::StringToDBFFieldType(const CString& text) {
    CString upper = text;
    upper.MakeUpper();
    for (const auto& entry : kTypeNames)
        if (upper == entry.name) return entry.type;
    return DBF_UNKNOWN;
}

int32_t CDbf::VerifyFieldLength(int32_t length, DBF_FIELD_TYPE type) {
    switch (type) {
    case DBF_LOGICAL: return 1;
    case DBF_CHAR: return std::clamp<int32_t>(length, 1, 253);
    case DBF_NUMERIC: return 18;
    case DBF_DATE: return 8;
    case DBF_FLOAT: return 20;
    default: return length;
    }
}

// Decimal counts beyond what the file can hold (one byte) are taken as 255,
// so that a hostile count cannot make a huge string.
CString CDbf::CheckFieldFormat(const CString& value, const CDbfFieldDescriptorEx& field) {
    if (field.m_type == DBF_LOGICAL) {
        static constexpr std::u16string_view kLogical = u"YyNnTtFf";
        if (!value.empty() && kLogical.find(value[0]) != std::u16string_view::npos) return value.Left(1);
        return u"?";
    }
    if (field.m_type != DBF_NUMERIC && field.m_type != DBF_FLOAT) return value;
    int point = value.Find(u'.');
    if (point <= 0) return value;
    int decimals = std::clamp<int32_t>(field.m_decimals, 0, 255);
    int digits = value.GetLength() - point - 1;
    if (digits <= decimals) return value + CString(static_cast<size_t>(decimals - digits), u'0');
    return value.Left(point + 1 + decimals);
}

// Reads exactly `count` bytes or throws the end-of-file exception.
void CDbf::ReadExact(void* buffer, size_t count) {
    if (!IsOpen() || m_file->Read(buffer, count) != count)
        throw CFileException(CFileException::endOfFile, m_fileName);
}

// Writes all bytes or throws the hard-I/O exception.
void CDbf::WriteExact(const void* buffer, size_t count) {
    if (!IsOpen() || !m_file->Write(buffer, count)) throw CFileException(CFileException::hardIO, m_fileName);
}

uint64_t CDbf::RecordPosition(uint32_t i) const {
    return m_headerLength + static_cast<uint64_t>(i) * m_recordLength;
}

// Just after the last whole record; a trailing 0x1A or partial record lies
// beyond it. 0 when the file is shorter than its header.
uint64_t CDbf::OffsetToEnd() const {
    uint64_t length = m_file->GetLength();
    if (length < m_headerLength || m_recordLength == 0) return 0;
    return m_headerLength + (length - m_headerLength) / m_recordLength * m_recordLength;
}

void CDbf::MakePairs() {
    m_pairs.clear();
    m_fieldNames.clear();
    for (const auto& field : m_fields) {
        m_pairs.emplace_back(field.m_name, CString());
        m_fieldNames.push_back(field.m_name);
    }
    m_numFields = static_cast<uint32_t>(m_fields.size());
}

// ---- opening and closing -------------------------------------------------

// Copies the descriptors: offsets from the lengths as given, then the forced
// lengths. Fails on lengths a descriptor byte cannot hold, on too many
// fields and on records longer than 65535 bytes.
bool CDbf::AddFields(const CDbfFieldDescriptorEx* const* descriptors, int count) {
    if (count < 0 || count > kMaxFields || (count > 0 && !descriptors)) return false;
    int64_t offset = 0, recordLength = 1;
    for (int i = 0; i < count; ++i) {
        if (!descriptors[i]) return false;
        CDbfFieldDescriptorEx field = *descriptors[i];
        field.m_offset = static_cast<int32_t>(std::clamp<int64_t>(offset, INT32_MIN, INT32_MAX));
        offset += field.m_length;
        field.m_length = VerifyFieldLength(field.m_length, field.m_type);
        field.m_decimals = std::clamp<int32_t>(field.m_decimals, 0, 255);
        if (field.m_length < 0 || field.m_length > 255) return false;
        recordLength += field.m_length;
        m_fields.push_back(field);
    }
    return recordLength <= 0xFFFF;
}

bool CDbf::Create(const CString& name, const CDbfFieldDescriptorEx* const* descriptors, int count) {
    CleanUp();
    CString path = CompleteName(name);
    if (!AddFields(descriptors, count)) {
        CleanUp();
        return false;
    }
    m_file = std::make_unique<CFile>();
    if (!m_file->Open(path, CFile::modeCreate | CFile::modeReadWrite | kShared)) {
        CleanUp();
        return false;
    }
    m_fileName = path;
    m_mode = modeWrite;
    m_numRecords = 0;
    MakePairs();
    try {
        if (WriteHeader()) return true;
    } catch (const CFileException&) {
    }
    Abandon();
    return false;
}

bool CDbf::Create(const CString& name, const std::vector<CDbfFieldDescriptorEx>& fields) {
    std::vector<const CDbfFieldDescriptorEx*> pointers;
    for (const auto& field : fields) pointers.push_back(&field);
    return Create(name, pointers.data(), static_cast<int>(pointers.size()));
}

bool CDbf::Open(const CString& name, int mode, CDbf* templ) {
    CString path = CompleteName(name);
    if (mode == modeWrite) {
        if (!templ || templ->m_fields.empty()) return false;
        return InitFromTemplate(path, *templ);
    }
    if (mode != modeRead && mode != modeReadWrite) return false;
    CleanUp();
    try {
        if (OpenRead(path, mode)) return true;
    } catch (...) {
        Abandon();
        throw;
    }
    Abandon();
    return false;
}

// Releases a table that failed to open or create without finishing its file:
// a corrupt file is left exactly as it was.
void CDbf::Abandon() {
    m_mode = modeRead;
    CleanUp();
}

// Creates a table from the template's fields that pass its filter.
bool CDbf::InitFromTemplate(const CString& path, CDbf& templ) {
    std::vector<CDbfFieldDescriptorEx> kept;
    for (size_t i = 0; i < templ.m_fields.size(); ++i)
        if (i >= templ.m_attributeFilter.size() || templ.m_attributeFilter[i]) kept.push_back(templ.m_fields[i]);
    if (kept.empty()) return false;
    return Create(path, kept);
}

// Reads the header and the field descriptors. A descriptor area that ends
// early with 0x0D (header written with spare room) ends the field list
// there; the first record is always read from the header length on.
bool CDbf::OpenRead(const CString& path, int mode) {
    m_file = std::make_unique<CFile>();
    unsigned flags = (mode == modeRead ? CFile::modeRead : CFile::modeReadWrite) | kShared;
    if (!m_file->Open(path, flags)) return false;
    m_fileName = path;
    m_mode = mode;
    unsigned char header[kMainHeaderSize];
    ReadExact(header, sizeof header);
    m_numRecords = Get32(header + 4);
    m_headerLength = Get16(header + 8);
    m_recordLength = Get16(header + 10);
    if (m_headerLength < kMinHeaderLength) return false;
    uint32_t count = (m_headerLength - kMinHeaderLength) / kDescriptorSize;
    int32_t offset = 0;
    bool terminated = false;
    for (uint32_t i = 0; i < count && !terminated; ++i) {
        unsigned char d[kDescriptorSize];
        ReadExact(d, 1);
        if (d[0] == kTerminator) {
            terminated = true;
            break;
        }
        ReadExact(d + 1, kDescriptorSize - 1);
        const char* name = reinterpret_cast<const char*>(d);
        CDbfFieldDescriptorEx field(ob::platform::AnsiToWide(std::string_view(name, strnlen(name, 11)), m_codePage),
                                    TypeOfLetter(d[11]), d[16], d[17]);
        field.m_offset = offset;
        offset += field.m_length;
        m_fields.push_back(field);
    }
    if (!terminated) {
        unsigned char terminator;
        ReadExact(&terminator, 1);
    }
    if (m_recordLength == 0 || m_recordLength < static_cast<uint32_t>(offset) + 1) return false;
    MakePairs();
    return m_file->Seek(m_headerLength, CFile::begin) >= 0;
}

// Writes the 32-byte header, the descriptors and 0x0D at the start of the
// file; record length, field count and header length follow the fields.
bool CDbf::WriteHeader() {
    uint32_t recordLength = 1;
    for (const auto& field : m_fields) recordLength += static_cast<uint32_t>(field.m_length);
    m_numFields = static_cast<uint32_t>(m_fields.size());
    m_headerLength = kMinHeaderLength + kDescriptorSize * m_numFields;
    m_recordLength = recordLength;

    std::vector<unsigned char> bytes(m_headerLength, 0);
    std::time_t now = std::time(nullptr);
    std::tm local {};
    localtime_r(&now, &local);
    bytes[0] = 3;
    bytes[1] = static_cast<unsigned char>(local.tm_year % 100);
    bytes[2] = static_cast<unsigned char>(local.tm_mon + 1);
    bytes[3] = static_cast<unsigned char>(local.tm_mday);
    Put32(&bytes[4], m_numRecords);
    Put16(&bytes[8], m_headerLength);
    Put16(&bytes[10], m_recordLength);
    for (size_t i = 0; i < m_fields.size(); ++i) {
        unsigned char* d = &bytes[kMainHeaderSize + kDescriptorSize * i];
        std::string name = ob::platform::WideToAnsi(m_fields[i].m_name, m_codePage);
        name.resize(ob::platform::WholeCharacterPrefix(name, 10, m_codePage));
        std::copy(name.begin(), name.end(), d);
        d[11] = static_cast<unsigned char>(LetterOf(m_fields[i].m_type));
        d[16] = static_cast<unsigned char>(m_fields[i].m_length);
        d[17] = static_cast<unsigned char>(m_fields[i].m_decimals);
    }
    bytes.back() = kTerminator;
    if (m_file->Seek(0, CFile::begin) < 0) return false;
    WriteExact(bytes.data(), bytes.size());
    return true;
}

// Brings the header up to date and puts the end mark after the last record.
// A table read from a file whose layout this class would not write the same
// way (spare header room, padded records) keeps its header bytes: only the
// date and the record count are updated, so the records stay in place.
bool CDbf::Finish() {
    uint32_t recordLength = 1;
    for (const auto& field : m_fields) recordLength += static_cast<uint32_t>(field.m_length);
    bool ownLayout = m_headerLength == kMinHeaderLength + kDescriptorSize * m_fields.size() &&
                     m_recordLength == recordLength;
    if (ownLayout) {
        if (!WriteHeader()) return false;
    } else {
        std::time_t now = std::time(nullptr);
        std::tm local {};
        localtime_r(&now, &local);
        unsigned char patch[7] = {static_cast<unsigned char>(local.tm_year % 100),
                                  static_cast<unsigned char>(local.tm_mon + 1),
                                  static_cast<unsigned char>(local.tm_mday)};
        Put32(patch + 3, m_numRecords);
        if (m_file->Seek(1, CFile::begin) < 0) return false;
        WriteExact(patch, sizeof patch);
    }
    uint64_t end = OffsetToEnd();
    if (end == 0 || m_file->Seek(static_cast<int64_t>(end), CFile::begin) < 0) return false;
    WriteExact(&kEndMark, 1);
    return m_file->SetLength(end + 1);
}

bool CDbf::Close() {
    bool ok = true;
    if (IsOpen() && m_mode != modeRead) {
        try {
            ok = Finish();
        } catch (const CFileException&) {
            ok = false;
        }
    }
    if (m_file) m_file->Close();
    m_file.reset();
    ReleaseFields();
    return ok;
}

void CDbf::ReleaseFields() {
    m_fields.clear();
    m_fieldNames.clear();
    m_pairs.clear();
    m_attributeFilter.clear();
    m_filteredRecordSize = -1;
    m_numFields = 0;
    m_numRecords = 0;
    m_recordDeleted = false;
}

void CDbf::CleanUp() {
    Close();
    m_fileName.clear();
    m_headerLength = 0;
    m_recordLength = 0;
    m_mode = modeRead;
}

void CDbf::Delete() { CleanUp(); }

bool CDbf::Rewind() {
    if (!IsOpen() || m_mode == modeWrite) return false;
    CString name = m_fileName;
    int mode = m_mode;
    Close();
    return Open(name, mode);
}

void CDbf::Flush() {
    if (IsOpen() && m_mode != modeRead) m_file->Flush();
}

// A table opened for reading is reopened read-write at the same position;
// pairs and fields stay as they are. False when the file refuses writing.
bool CDbf::SwitchToWriteMode() {
    if (!IsOpen()) return false;
    if (m_mode != modeRead) return true;
    auto writable = std::make_unique<CFile>();
    if (!writable->Open(m_fileName, CFile::modeReadWrite | kShared)) return false;
    int64_t position = static_cast<int64_t>(m_file->GetPosition());
    m_file = std::move(writable);
    m_mode = modeReadWrite;
    return m_file->Seek(position, CFile::begin) >= 0;
}

// ---- fields --------------------------------------------------------------

const CDbfFieldDescriptorEx* CDbf::GetFieldDescriptor(int i) const {
    if (i < 0 || static_cast<size_t>(i) >= m_fields.size()) return nullptr;
    return &m_fields[static_cast<size_t>(i)];
}

bool CDbf::GetFieldName(int i, CString& name) const {
    const CDbfFieldDescriptorEx* field = GetFieldDescriptor(i);
    if (!field) return false;
    name = field->m_name;
    return true;
}

bool CDbf::GetFieldType(int i, DBF_FIELD_TYPE& type) const {
    const CDbfFieldDescriptorEx* field = GetFieldDescriptor(i);
    if (!field) return false;
    type = field->m_type;
    return true;
}

void CDbf::GetAttributes(std::vector<CString>& names) const { names = m_fieldNames; }

void CDbf::SetAttributeFilter(const std::vector<bool>& flags) {
    m_attributeFilter = flags;
    m_filteredRecordSize = -1;
}

int CDbf::FilteredRecordSize() {
    if (!IsOpen()) return 0;
    if (m_filteredRecordSize < 0) {
        int size = 0;
        for (size_t i = 0; i < m_fields.size(); ++i)
            if (i >= m_attributeFilter.size() || m_attributeFilter[i]) size += m_fields[i].m_length;
        m_filteredRecordSize = size;
    }
    return m_filteredRecordSize;
}

// ---- records -------------------------------------------------------------

bool CDbf::SeekToRecord(uint32_t i) {
    if (!IsOpen() || i > m_numRecords) return false;
    return m_file->Seek(static_cast<int64_t>(RecordPosition(i)), CFile::begin) >= 0;
}

// Reads the whole record in one request and hands the fields their bytes in
// order; a field of which no byte arrived fails the read. The position ends after the
// record (or at the end of the file).
bool CDbf::ReadRecord() {
    if (!IsOpen()) return false;
    unsigned char flag;
    ReadExact(&flag, 1);
    m_recordDeleted = flag == '*';
    std::vector<unsigned char> body(m_recordLength > 0 ? m_recordLength - 1 : 0);
    size_t got = m_file->Read(body.data(), body.size());
    size_t count = std::min(m_fields.size(), m_pairs.size());
    size_t start = 0;
    for (size_t i = 0; i < count; ++i) {
        const CDbfFieldDescriptorEx& field = m_fields[i];
        size_t length = static_cast<size_t>(std::max(field.m_length, 0));
        if (length > 0 && start >= got) return false;
        size_t available = start < got ? std::min(length, got - start) : 0;
        m_pairs[i].m_value = FieldText(body.data() + start, available, field.m_type, m_codePage);
        start += length;
    }
    return true;
}

bool CDbf::ReadRecord(uint32_t i) { return SeekToRecord(i) && ReadRecord(); }

bool CDbf::ReadRecord(uint32_t i, std::vector<CString>& values) {
    if (!ReadRecord(i)) return false;
    GetRecordFields(values);
    return true;
}

bool CDbf::IsValidRecord(uint32_t i) {
    if (!IsOpen()) return false;
    if (m_file->Seek(static_cast<int64_t>(RecordPosition(i)), CFile::begin) < 0)
        throw CFileException(CFileException::endOfFile, m_fileName);
    unsigned char flag;
    ReadExact(&flag, 1);
    return flag != '*';
}

// Builds the record (flag " ", each field's 8-bit text cut and padded with
// spaces, spaces up to the record length) and writes it in one request.
bool CDbf::WriteRecordAt(uint64_t position, bool format) {
    std::string record(std::max<uint32_t>(m_recordLength, 1), ' ');
    size_t count = std::min(m_fields.size(), m_pairs.size());
    size_t at = 1;
    for (size_t i = 0; i < count; ++i) {
        const CDbfFieldDescriptorEx& field = m_fields[i];
        CString value = format ? CheckFieldFormat(m_pairs[i].m_value, field) : m_pairs[i].m_value;
        std::string bytes = ob::platform::WideToAnsi(value, m_codePage);
        size_t length = static_cast<size_t>(field.m_length);
        if (at + length > record.size()) record.resize(at + length, ' ');
        size_t kept = ob::platform::WholeCharacterPrefix(bytes, length, m_codePage);
        std::copy_n(bytes.begin(), kept, record.begin() + static_cast<std::ptrdiff_t>(at));
        at += length;
    }
    if (m_file->Seek(static_cast<int64_t>(position), CFile::begin) < 0) return false;
    WriteExact(record.data(), record.size());
    m_recordDeleted = false;
    return true;
}

bool CDbf::WriteRecord(bool format) {
    if (!SwitchToWriteMode()) return false;
    return WriteRecordAt(m_file->GetPosition(), format);
}

bool CDbf::WriteRecord(uint32_t i, bool format) {
    if (!IsOpen() || i >= m_numRecords || !SwitchToWriteMode()) return false;
    return WriteRecordAt(RecordPosition(i), format);
}

bool CDbf::WriteRecord(uint32_t i, const std::vector<CString>& values, bool format) {
    return SetRecordFields(values) && WriteRecord(i, format);
}

// A table whose count is already the largest the header can hold takes no
// more records: the count would wrap to 0.
bool CDbf::AppendRecord(bool format) {
    if (m_numRecords == UINT32_MAX || !SwitchToWriteMode()) return false;
    uint64_t end = OffsetToEnd();
    if (end == 0 || !WriteRecordAt(end, format)) return false;
    ++m_numRecords;
    return true;
}

bool CDbf::AppendRecord(const std::vector<CString>& values, bool format) {
    return SetRecordFields(values) && AppendRecord(format);
}

bool CDbf::MarkRecordAsDeleted(uint32_t i) {
    if (!IsOpen() || i >= m_numRecords || !SwitchToWriteMode()) return false;
    if (m_file->Seek(static_cast<int64_t>(RecordPosition(i)), CFile::begin) < 0) return false;
    static constexpr unsigned char kDeleted = '*';
    WriteExact(&kDeleted, 1);
    return true;
}

bool CDbf::DeleteLastRecord(uint32_t n) {
    if (!IsOpen() || n == 0 || m_numRecords == 0 || n > m_numRecords) return false;
    uint64_t length = m_file->GetLength();
    uint64_t cut = static_cast<uint64_t>(n) * m_recordLength;
    if (length <= cut || !SwitchToWriteMode() || !m_file->SetLength(length - cut)) return false;
    m_numRecords -= n;
    return true;
}

void CDbf::GetRecordFields(std::vector<CString>& values) const {
    values.clear();
    for (const auto& pair : m_pairs) values.push_back(pair.m_value);
}

bool CDbf::SetRecordFields(const std::vector<CString>& values) {
    if (values.size() < m_pairs.size()) return false;
    for (size_t i = 0; i < m_pairs.size(); ++i) m_pairs[i].m_value = values[i];
    return true;
}

void CDbf::CopyRecord(const CDbf& other) {
    size_t count = std::min(m_pairs.size(), other.m_pairs.size());
    for (size_t i = 0; i < count; ++i) m_pairs[i].m_value = other.m_pairs[i].m_value;
}

// Position: header length + 1 + record length x (record - 1) + field offset.
// The file position is restored afterwards so sequential reads go on.
bool CDbf::GetAttributeStr(CString& value, uint32_t record, int field) {
    const CDbfFieldDescriptorEx* descriptor = GetFieldDescriptor(field);
    if (!IsOpen() || !descriptor || record == 0 || descriptor->m_offset < 0) return false;
    uint64_t position = RecordPosition(record - 1) + 1 + static_cast<uint64_t>(descriptor->m_offset);
    int64_t saved = static_cast<int64_t>(m_file->GetPosition());
    std::vector<unsigned char> bytes(static_cast<size_t>(descriptor->m_length));
    size_t got = 0;
    if (m_file->Seek(static_cast<int64_t>(position), CFile::begin) >= 0) got = m_file->Read(bytes.data(), bytes.size());
    m_file->Seek(saved, CFile::begin);
    if (got == 0 && !bytes.empty()) return false;
    value = FieldText(bytes.data(), got, descriptor->m_type, m_codePage);
    return true;
}
