// CDbf: layout of the files it writes, reading tables written by another
// implementation (tests/fixtures/people.dbf, made with Debian's python3-dbf:
// fields NAME C12, AGE N5, SCORE N7.2, ACTIVE L, BORN D, four records, the
// last one deleted), tables it writes read back by another implementation
// (python3-dbfread), and corrupt headers.
#include "IoTestUtil.h"

#include <orvobasic/CDbf.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <sstream>

using iotest::ReadBytes;
using iotest::TempDir;
using iotest::WriteBytes;

namespace {

uint32_t Le16(const std::string& b, size_t at) {
    return static_cast<unsigned char>(b[at]) | (static_cast<unsigned char>(b[at + 1]) << 8);
}
uint32_t Le32(const std::string& b, size_t at) { return Le16(b, at) | (Le16(b, at + 2) << 16); }

std::vector<CDbfFieldDescriptorEx> SampleFields() {
    return {{u"NAME", DBF_CHAR, 12}, {u"PRICE", DBF_NUMERIC, 5, 2}, {u"OK", DBF_LOGICAL, 1}};
}

// Creates `path` with the sample fields and the given records.
void MakeSample(const CString& path, const std::vector<std::vector<CString>>& records) {
    CDbf dbf;
    ASSERT_TRUE(dbf.Create(path, SampleFields()));
    for (const auto& record : records) ASSERT_TRUE(dbf.AppendRecord(record, true));
    ASSERT_TRUE(dbf.Close());
}

}  // namespace

TEST(CDbf, CreateWritesTheHeaderRecordsAndEndMark) {
    TempDir dir;
    MakeSample(dir.WPath("t"), {{u"Apple", u"1.5", u"y"}});
    std::string b = ReadBytes(dir.Path("t.dbf"));   // ".dbf" appended
    ASSERT_EQ(b.size(), 129u + 32u + 1u);
    EXPECT_EQ(b[0], 3);
    EXPECT_EQ(Le32(b, 4), 1u);
    EXPECT_EQ(Le16(b, 8), 129u);                 // 32 x 3 + 33
    EXPECT_EQ(Le16(b, 10), 32u);                 // 1 + 12 + 18 (forced) + 1
    EXPECT_EQ(b.substr(12, 20), std::string(20, '\0'));
    EXPECT_EQ(b.substr(32, 11), iotest::Bytes("NAME\0\0\0\0\0\0\0"));
    EXPECT_EQ(b[32 + 11], 'C');
    EXPECT_EQ(b[32 + 16], 12);
    EXPECT_EQ(b[64 + 11], 'N');
    EXPECT_EQ(b[64 + 16], 18);
    EXPECT_EQ(b[64 + 17], 2);
    EXPECT_EQ(b[96 + 11], 'L');
    EXPECT_EQ(b[128], 0x0D);
    EXPECT_EQ(b.substr(129, 32), " Apple       1.50              y");
    EXPECT_EQ(b.back(), 0x1A);
}

TEST(CDbf, NamesAreCutToTenCharactersAndUnknownTypesHaveNoLetter) {
    TempDir dir;
    CDbf dbf;
    ASSERT_TRUE(dbf.Create(dir.WPath("n.DBF"), {{u"ABCDEFGHIJKLMN", DBF_CHAR, 3}, {u"X", DBF_UNKNOWN, 4}}));
    ASSERT_TRUE(dbf.Close());
    std::string b = ReadBytes(dir.Path("n.DBF"));   // an existing ".DBF" ending is kept
    EXPECT_EQ(b.substr(32, 11), iotest::Bytes("ABCDEFGHIJ\0"));
    EXPECT_EQ(b[64 + 11], 0);
    EXPECT_EQ(b[64 + 16], 4);
}

TEST(CDbf, TypeNamesAndForcedLengths) {
    struct Case {
        const char16_t* name;
        DBF_FIELD_TYPE type;
        int32_t given, forced;
    } cases[] = {
        {u"L", DBF_LOGICAL, 10, 1},  {u"bool", DBF_LOGICAL, 0, 1},   {u"C", DBF_CHAR, 0, 1},
        {u"CHAR", DBF_CHAR, 300, 253}, {u"N", DBF_NUMERIC, 3, 18},   {u"Integer", DBF_NUMERIC, 3, 18},
        {u"NUMERIC", DBF_NUMERIC, 3, 18}, {u"D", DBF_DATE, 1, 8},    {u"DATE", DBF_DATE, 1, 8},
        {u"F", DBF_FLOAT, 1, 20},    {u"FLOAT", DBF_FLOAT, 1, 20},   {u"M", DBF_UNKNOWN, 7, 7},
        {u"", DBF_UNKNOWN, 9, 9},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(CDbf::StringToDBFFieldType(c.name), c.type) << CString(c.name).ToUtf8();
        EXPECT_EQ(CDbf::VerifyFieldLength(c.given, c.type), c.forced) << CString(c.name).ToUtf8();
    }
}

TEST(CDbf, CheckFieldFormat) {
    CDbfFieldDescriptorEx number(u"N", DBF_NUMERIC, 18, 2), logical(u"L", DBF_LOGICAL, 1);
    CDbfFieldDescriptorEx whole(u"W", DBF_FLOAT, 20, 0), text(u"C", DBF_CHAR, 5);
    EXPECT_EQ(CDbf::CheckFieldFormat(u"3.14159", number), u"3.14");   // cut, not rounded
    EXPECT_EQ(CDbf::CheckFieldFormat(u"7.5", number), u"7.50");
    EXPECT_EQ(CDbf::CheckFieldFormat(u"12", number), u"12");          // no point: as is
    EXPECT_EQ(CDbf::CheckFieldFormat(u".5", number), u".5");          // point first: as is
    EXPECT_EQ(CDbf::CheckFieldFormat(u"7.000000", whole), u"7.");
    EXPECT_EQ(CDbf::CheckFieldFormat(u"x", logical), u"?");
    EXPECT_EQ(CDbf::CheckFieldFormat(u"", logical), u"?");
    EXPECT_EQ(CDbf::CheckFieldFormat(u"true", logical), u"t");
    EXPECT_EQ(CDbf::CheckFieldFormat(u"1.23456", text), u"1.23456");
    CDbfFieldDescriptorEx huge(u"H", DBF_NUMERIC, 18, 1000000000);
    EXPECT_EQ(CDbf::CheckFieldFormat(u"1.5", huge).size(), 2u + 255u);   // decimals capped at a byte
}

TEST(CDbf, RecordsReadBackWithPaddingAndFlags) {
    TempDir dir;
    MakeSample(dir.WPath("r.dbf"), {{u"Ann", u"1", u"T"}, {u"Bob", u"2.345", u"n"}, {u"Zoë", u"-3", u"?"}});
    CDbf dbf;
    ASSERT_TRUE(dbf.Open(dir.WPath("r"), CDbf::modeRead));
    EXPECT_EQ(dbf.GetNumRecords(), 3u);
    EXPECT_TRUE(dbf.MarkRecordAsDeleted(1));   // first write: becomes read-write
    EXPECT_EQ(dbf.GetMode(), CDbf::modeReadWrite);
    std::vector<CString> values;
    ASSERT_TRUE(dbf.ReadRecord(0, values));
    EXPECT_EQ(values, (std::vector<CString> {u"Ann         ", u"1                 ", u"T"}));
    EXPECT_FALSE(dbf.IsRecordDeleted());
    ASSERT_TRUE(dbf.ReadRecord());             // moves on to record 1
    EXPECT_TRUE(dbf.IsRecordDeleted());
    EXPECT_FALSE(dbf.IsValidRecord(1));
    EXPECT_TRUE(dbf.IsValidRecord(2));
    ASSERT_TRUE(dbf.ReadRecord(2, values));
    EXPECT_EQ(values[0], u"Zoë         ");      // Windows-1252 in the file
    CString field;
    ASSERT_TRUE(dbf.GetAttributeStr(field, 2, 1));   // counts records from 1
    EXPECT_EQ(field, u"2.34              ");
    EXPECT_FALSE(dbf.GetAttributeStr(field, 0, 0));
    EXPECT_FALSE(dbf.ReadRecord(3));            // beyond the count
    EXPECT_TRUE(dbf.Close());
}

TEST(CDbf, DeleteLastRecordCutsTheFileAndCloseMarksTheEnd) {
    TempDir dir;
    MakeSample(dir.WPath("d.dbf"), {{u"a", u"1", u"y"}, {u"b", u"2", u"y"}, {u"c", u"3", u"y"}});
    CDbf dbf;
    ASSERT_TRUE(dbf.Open(dir.WPath("d.dbf"), CDbf::modeReadWrite));
    EXPECT_FALSE(dbf.DeleteLastRecord(0));
    EXPECT_FALSE(dbf.DeleteLastRecord(4));
    EXPECT_TRUE(dbf.DeleteLastRecord(1));
    EXPECT_EQ(dbf.GetNumRecords(), 2u);
    ASSERT_TRUE(dbf.Close());
    std::string b = ReadBytes(dir.Path("d.dbf"));
    EXPECT_EQ(Le32(b, 4), 2u);
    ASSERT_EQ(b.size(), 129u + 2 * 32u + 1u);   // one 0x1A after record 2, nothing more
    EXPECT_EQ(b.back(), 0x1A);
    EXPECT_EQ(b[129 + 32], ' ');
    EXPECT_EQ(b[129 + 33], 'b');
}

TEST(CDbf, AppendToAFullCountFailsInsteadOfWrappingToZero) {
    TempDir dir;
    MakeSample(dir.WPath("full.dbf"), {{u"a", u"1", u"y"}});
    std::string b = ReadBytes(dir.Path("full.dbf"));
    b.replace(4, 4, "\xFF\xFF\xFF\xFF");
    WriteBytes(dir.Path("full.dbf"), b);
    CDbf dbf;
    ASSERT_TRUE(dbf.Open(dir.WPath("full.dbf"), CDbf::modeReadWrite));
    EXPECT_FALSE(dbf.AppendRecord({u"b", u"2", u"n"}, true));
    EXPECT_EQ(dbf.GetNumRecords(), 0xFFFFFFFFu);
    ASSERT_TRUE(dbf.Close());
    std::string after = ReadBytes(dir.Path("full.dbf"));
    EXPECT_EQ(Le32(after, 4), 0xFFFFFFFFu);
    EXPECT_EQ(after.size(), b.size());
}

TEST(CDbf, AppendOverwritesTheEndMarkAndReadingNeedsNone) {
    TempDir dir;
    MakeSample(dir.WPath("a.dbf"), {{u"a", u"1", u"y"}});
    std::string b = ReadBytes(dir.Path("a.dbf"));
    b.pop_back();   // no 0x1A, as some writers leave it
    WriteBytes(dir.Path("a.dbf"), b);
    CDbf dbf;
    ASSERT_TRUE(dbf.Open(dir.WPath("a.dbf"), CDbf::modeRead));
    std::vector<CString> values;
    ASSERT_TRUE(dbf.ReadRecord(0, values));
    EXPECT_EQ(values[0], u"a           ");
    EXPECT_THROW(dbf.ReadRecord(), CFileException);   // no flag byte left
    ASSERT_TRUE(dbf.Close());

    b.push_back(0x1A);
    b.push_back('!');   // a partial record after the mark: overwritten too
    WriteBytes(dir.Path("a.dbf"), b);
    ASSERT_TRUE(dbf.Open(dir.WPath("a.dbf"), CDbf::modeRead));
    ASSERT_TRUE(dbf.AppendRecord({u"b", u"2", u"n"}, true));
    ASSERT_TRUE(dbf.Close());
    b = ReadBytes(dir.Path("a.dbf"));
    ASSERT_EQ(b.size(), 129u + 2 * 32u + 1u);
    EXPECT_EQ(b.substr(129 + 32, 2), " b");
    EXPECT_EQ(Le32(b, 4), 2u);
}

TEST(CDbf, WriteRecordReplacesOneRecordInPlace) {
    TempDir dir;
    MakeSample(dir.WPath("w.dbf"), {{u"a", u"1", u"y"}, {u"b", u"2", u"y"}});
    CDbf dbf;
    ASSERT_TRUE(dbf.Open(dir.WPath("w.dbf"), CDbf::modeRead));
    EXPECT_TRUE(dbf.MarkRecordAsDeleted(1));
    EXPECT_TRUE(dbf.WriteRecord(1, {u"a much too long name", u"9.999", u"F"}, true));
    EXPECT_FALSE(dbf.WriteRecord(2, {u"x", u"1", u"y"}, true));   // no record 2
    EXPECT_FALSE(dbf.SetRecordFields({u"too few"}));
    ASSERT_TRUE(dbf.Close());
    std::string b = ReadBytes(dir.Path("w.dbf"));
    EXPECT_EQ(b.substr(129 + 32, 32), " a much too l9.99              F");   // live again, cut
}

TEST(CDbf, OffsetsFollowTheGivenLengthsButRecordsAreSequential) {
    TempDir dir;
    CDbf dbf;
    ASSERT_TRUE(dbf.Create(dir.WPath("o.dbf"), {{u"FLAG", DBF_LOGICAL, 10}, {u"NAME", DBF_CHAR, 4}}));
    EXPECT_EQ(dbf.GetFieldDescriptor(0)->m_length, 1);
    EXPECT_EQ(dbf.GetFieldDescriptor(1)->m_offset, 10);   // from the length as given
    EXPECT_EQ(dbf.GetRecordLength(), 6u);
    ASSERT_TRUE(dbf.AppendRecord({u"Y", u"abcd"}, true));
    ASSERT_TRUE(dbf.Close());
    ASSERT_TRUE(dbf.Open(dir.WPath("o.dbf"), CDbf::modeRead));
    EXPECT_EQ(dbf.GetFieldDescriptor(1)->m_offset, 1);    // recomputed from the file
    std::vector<CString> values;
    ASSERT_TRUE(dbf.ReadRecord(0, values));
    EXPECT_EQ(values, (std::vector<CString> {u"Y", u"abcd"}));
}

TEST(CDbf, TemplateFilterAndRewind) {
    TempDir dir;
    MakeSample(dir.WPath("src.dbf"), {{u"a", u"1", u"y"}, {u"b", u"2", u"n"}});
    CDbf source, copy;
    ASSERT_TRUE(source.Open(dir.WPath("src.dbf"), CDbf::modeRead));
    EXPECT_FALSE(copy.Open(dir.WPath("none.dbf"), CDbf::modeWrite));   // no template
    source.SetAttributeFilter({true, false});   // PRICE out; OK has no flag: kept
    EXPECT_EQ(source.FilteredRecordSize(), 13);
    ASSERT_TRUE(copy.Open(dir.WPath("copy.dbf"), CDbf::modeWrite, &source));
    ASSERT_EQ(copy.GetNumFields(), 2u);
    ASSERT_TRUE(source.ReadRecord(1));
    std::vector<CString> all;
    source.GetRecordFields(all);
    ASSERT_TRUE(copy.AppendRecord({all[0], all[2]}, false));
    EXPECT_FALSE(copy.Rewind());   // not in write mode
    ASSERT_TRUE(copy.Close());

    ASSERT_TRUE(source.Rewind());
    std::vector<CString> first;
    ASSERT_TRUE(source.ReadRecord());
    source.GetRecordFields(first);
    EXPECT_EQ(first[0], u"a           ");
    ASSERT_TRUE(copy.Open(dir.WPath("copy.dbf"), CDbf::modeRead));
    std::vector<CString> names;
    copy.GetAttributes(names);
    EXPECT_EQ(names, (std::vector<CString> {u"NAME", u"OK"}));
    std::vector<CString> values;
    ASSERT_TRUE(copy.ReadRecord(0, values));
    EXPECT_EQ(values, (std::vector<CString> {u"b           ", u"n"}));
}

TEST(CDbf, ReadsATableWrittenByAnotherImplementation) {
    CDbf dbf;
    ASSERT_TRUE(dbf.Open(CString::FromUtf8(iotest::Fixture("people")), CDbf::modeRead));
    ASSERT_EQ(dbf.GetNumFields(), 5u);
    ASSERT_EQ(dbf.GetNumRecords(), 4u);
    struct {
        const char16_t* name;
        DBF_FIELD_TYPE type;
        int length, decimals;
    } expected[] = {{u"NAME", DBF_CHAR, 12, 0}, {u"AGE", DBF_NUMERIC, 5, 0}, {u"SCORE", DBF_NUMERIC, 7, 2},
                    {u"ACTIVE", DBF_LOGICAL, 1, 0}, {u"BORN", DBF_DATE, 8, 0}};
    for (int i = 0; i < 5; ++i) {
        const CDbfFieldDescriptorEx* field = dbf.GetFieldDescriptor(i);
        ASSERT_NE(field, nullptr);
        EXPECT_EQ(field->m_name, expected[i].name);
        EXPECT_EQ(field->m_type, expected[i].type);
        EXPECT_EQ(field->m_length, expected[i].length);
        EXPECT_EQ(field->m_decimals, expected[i].decimals);
    }
    std::vector<CString> v;
    ASSERT_TRUE(dbf.ReadRecord(0, v));
    EXPECT_EQ(v, (std::vector<CString> {u"Ann         ", u"   31", u"  12.50", u"T", u"19930405"}));
    ASSERT_TRUE(dbf.ReadRecord(2, v));
    EXPECT_EQ(v[0], u"Zoë Café    ");
    EXPECT_EQ(v[3], u"?");
    EXPECT_EQ(v[4], u"        ");
    ASSERT_TRUE(dbf.ReadRecord(3, v));
    EXPECT_TRUE(dbf.IsRecordDeleted());
    EXPECT_EQ(v[0], u"Gone        ");
}

// ---- an independent reader --------------------------------------------------

namespace {

// Runs python3-dbfread (Debian's package, for /usr/bin/python3) on a table
// and returns one line per field of every record, "index name repr(value)",
// then the fields and the number of deleted records. Empty when the reader
// is missing.
std::string DumpWithDbfread(const std::string& path) {
    if (std::system("/usr/bin/python3 -c 'import dbfread' >/dev/null 2>&1") != 0) return {};
    std::string command =
        "/usr/bin/python3 - '" + path + "' <<'EOF'\n"
        "import sys, dbfread\n"
        "t = dbfread.DBF(sys.argv[1], encoding='cp1252', load=True)\n"
        "for f in t.fields: print('field', f.name, f.type, f.length, f.decimal_count)\n"
        "for i, r in enumerate(t.records):\n"
        "    for k, v in r.items(): print(i, k, repr(v))\n"
        "print('deleted', len(t.deleted))\n"
        "EOF\n";
    std::string output;
    if (FILE* pipe = ::popen(command.c_str(), "r")) {
        char chunk[512];
        size_t n;
        while ((n = std::fread(chunk, 1, sizeof chunk, pipe)) > 0) output.append(chunk, n);
        ::pclose(pipe);
    }
    return output;
}

}  // namespace

TEST(CDbf, TablesWeWriteReadBackWithAnIndependentReader) {
    TempDir dir;
    CDbf dbf;
    ASSERT_TRUE(dbf.Create(dir.WPath("out.dbf"), {{u"NAME", DBF_CHAR, 10},
                                                  {u"QTY", DBF_NUMERIC, 0},
                                                  {u"PRICE", DBF_FLOAT, 0, 3},
                                                  {u"PAID", DBF_LOGICAL, 1},
                                                  {u"DUE", DBF_DATE, 8}}));
    ASSERT_TRUE(dbf.AppendRecord({u"Zoë", u"42", u"3.14159", u"yes", u"20240131"}, true));
    ASSERT_TRUE(dbf.AppendRecord({u"Bob", u"-7", u"2.5", u"F", u"19991231"}, true));
    ASSERT_TRUE(dbf.AppendRecord({u"Gone", u"0", u"0.0", u"?", u""}, true));
    ASSERT_TRUE(dbf.MarkRecordAsDeleted(2));
    ASSERT_TRUE(dbf.Close());

    std::string dump = DumpWithDbfread(dir.Path("out.dbf"));
    if (dump.empty()) GTEST_SKIP() << "python3-dbfread is not installed for /usr/bin/python3 "
                                      "(scripts/install-deps.sh installs it)";
    std::istringstream lines(dump);
    std::vector<std::string> got;
    for (std::string line; std::getline(lines, line);) got.push_back(line);
    std::vector<std::string> expected = {
        "field NAME C 10 0", "field QTY N 18 0", "field PRICE F 20 3", "field PAID L 1 0", "field DUE D 8 0",
        "0 NAME 'Zoë'", "0 QTY 42", "0 PRICE 3.141", "0 PAID True", "0 DUE datetime.date(2024, 1, 31)",
        "1 NAME 'Bob'", "1 QTY -7", "1 PRICE 2.5", "1 PAID False", "1 DUE datetime.date(1999, 12, 31)",
        "deleted 1",
    };
    EXPECT_EQ(got, expected);
}

TEST(CDbf, UpdatingAnotherImplementationsTableKeepsItReadable) {
    TempDir dir;
    std::filesystem::copy_file(iotest::Fixture("people.dbf"), dir.Path("people.dbf"));
    CDbf dbf;
    ASSERT_TRUE(dbf.Open(dir.WPath("people.dbf"), CDbf::modeRead));
    ASSERT_TRUE(dbf.AppendRecord({u"Eve", u"55", u"9.5", u"T", u"19700101"}, true));
    ASSERT_TRUE(dbf.WriteRecord(1, {u"Bobby", u"8", u"1.0", u"F", u"20171231"}, true));
    ASSERT_TRUE(dbf.Close());
    std::string b = ReadBytes(dir.Path("people.dbf"));
    EXPECT_EQ(Le32(b, 4), 5u);
    EXPECT_EQ(b.size(), 193u + 5 * 34u + 1u);

    std::string dump = DumpWithDbfread(dir.Path("people.dbf"));
    if (dump.empty()) GTEST_SKIP() << "python3-dbfread is not installed for /usr/bin/python3";
    EXPECT_NE(dump.find("1 NAME 'Bobby'\n1 AGE 8\n1 SCORE 1.0\n1 ACTIVE False\n"), std::string::npos) << dump;
    EXPECT_NE(dump.find("3 NAME 'Eve'\n3 AGE 55\n3 SCORE 9.5\n3 ACTIVE True\n3 BORN datetime.date(1970, 1, 1)"),
              std::string::npos) << dump;
    EXPECT_NE(dump.find("deleted 1"), std::string::npos) << dump;
}

// ---- corrupt tables ---------------------------------------------------------

namespace {

// A header: count, header length, record length, then `fields` descriptors
// of C fields of length `fieldLength`, then 0x0D.
std::string Header(uint32_t records, uint32_t headerLength, uint32_t recordLength, int fields,
                   int fieldLength = 4) {
    std::string b(32, '\0');
    b[0] = 3;
    for (int i = 0; i < 4; ++i) b[4 + i] = static_cast<char>(records >> (8 * i));
    b[8] = static_cast<char>(headerLength);
    b[9] = static_cast<char>(headerLength >> 8);
    b[10] = static_cast<char>(recordLength);
    b[11] = static_cast<char>(recordLength >> 8);
    for (int f = 0; f < fields; ++f) {
        std::string d(32, '\0');
        d[0] = static_cast<char>('A' + f % 26);
        d[11] = 'C';
        d[16] = static_cast<char>(fieldLength);
        b += d;
    }
    return b + "\x0D";
}

}  // namespace

TEST(CDbf, CorruptHeadersFailOrThrowWithoutCrashing) {
    struct Case {
        const char* what;
        std::string bytes;
        bool throws;
    } cases[] = {
        {"empty file", "", true},
        {"short header", std::string(20, '\3'), true},
        {"header length 65535, descriptors missing", Header(1, 0xFFFF, 5, 3).substr(0, 128), true},
        {"truncated descriptor", Header(0, 65, 5, 1).substr(0, 50), true},
        {"no terminator", Header(0, 65, 5, 1).substr(0, 64), true},
        {"header length below 33", Header(0, 20, 5, 0), false},
        {"record length 0", Header(1, 65, 0, 1) + "     ", false},
        {"record length 1 with a field", Header(1, 65, 1, 1) + " ", false},
    };
    TempDir dir;
    for (const Case& c : cases) {
        WriteBytes(dir.Path("bad.dbf"), c.bytes);
        for (int mode : {CDbf::modeRead, CDbf::modeReadWrite}) {
            CDbf dbf;
            if (c.throws) {
                EXPECT_THROW(dbf.Open(dir.WPath("bad.dbf"), mode), CFileException) << c.what;
            } else {
                EXPECT_FALSE(dbf.Open(dir.WPath("bad.dbf"), mode)) << c.what;
            }
            EXPECT_FALSE(dbf.IsOpen()) << c.what;
            EXPECT_FALSE(dbf.ReadRecord()) << c.what;
            EXPECT_FALSE(dbf.AppendRecord(true)) << c.what;
        }
        EXPECT_EQ(ReadBytes(dir.Path("bad.dbf")), c.bytes) << c.what << ": a failed open changes nothing";
    }
}

TEST(CDbf, OddButReadableHeadersOpen) {
    TempDir dir;
    // No fields at all: records are flag bytes only.
    WriteBytes(dir.Path("none.dbf"), Header(2, 33, 1, 0) + "  *");
    CDbf dbf;
    ASSERT_TRUE(dbf.Open(dir.WPath("none.dbf"), CDbf::modeRead));
    EXPECT_EQ(dbf.GetNumFields(), 0u);
    EXPECT_TRUE(dbf.ReadRecord(1));
    EXPECT_FALSE(dbf.IsRecordDeleted());
    ASSERT_TRUE(dbf.Close());

    // A header with room for more fields than it has ends at 0x0D; records
    // start at the header length. Its header bytes survive an update.
    std::string spare = Header(1, 33 + 32 * 3, 5, 1);
    spare += std::string(33 + 32 * 3 - spare.size(), '\0') + " abcd";
    spare[29] = 0x57;   // a language byte another writer put there
    WriteBytes(dir.Path("spare.dbf"), spare);
    ASSERT_TRUE(dbf.Open(dir.WPath("spare.dbf"), CDbf::modeRead));
    EXPECT_EQ(dbf.GetNumFields(), 1u);
    std::vector<CString> values;
    ASSERT_TRUE(dbf.ReadRecord(0, values));
    EXPECT_EQ(values[0], u"abcd");
    ASSERT_TRUE(dbf.AppendRecord({u"efgh"}, false));
    ASSERT_TRUE(dbf.Close());
    std::string b = ReadBytes(dir.Path("spare.dbf"));
    EXPECT_EQ(Le16(b, 8), 33u + 32 * 3);
    EXPECT_EQ(b[29], 0x57);
    EXPECT_EQ(Le32(b, 4), 2u);
    EXPECT_EQ(b.substr(b.size() - 6), " efgh\x1A");

    // Header length 65535 with one field and its terminator: records would
    // start beyond the end of the file, so reading and appending fail.
    WriteBytes(dir.Path("far.dbf"), Header(1, 0xFFFF, 5, 1) + " abcd");
    ASSERT_TRUE(dbf.Open(dir.WPath("far.dbf"), CDbf::modeRead));
    EXPECT_THROW(dbf.ReadRecord(), CFileException);
    EXPECT_FALSE(dbf.AppendRecord({u"x"}, false));
    EXPECT_FALSE(dbf.Close());

    // A record count far beyond the file: reads past the end fail.
    WriteBytes(dir.Path("count.dbf"), Header(0xFFFFFFFF, 65, 5, 1) + " abcd");
    ASSERT_TRUE(dbf.Open(dir.WPath("count.dbf"), CDbf::modeRead));
    EXPECT_TRUE(dbf.ReadRecord(0));
    EXPECT_THROW(dbf.ReadRecord(5), CFileException);
    EXPECT_TRUE(dbf.SeekToRecord(0xFFFFFFFF));
    EXPECT_THROW(dbf.ReadRecord(), CFileException);
}

TEST(CDbf, CreateRefusesWhatTheFormatCannotHold) {
    TempDir dir;
    CDbf dbf;
    std::vector<CDbfFieldDescriptorEx> many(2047, CDbfFieldDescriptorEx(u"F", DBF_LOGICAL, 1));
    EXPECT_FALSE(dbf.Create(dir.WPath("many"), many));
    EXPECT_FALSE(dbf.Create(dir.WPath("wide"), {{u"X", DBF_UNKNOWN, 256}}));
    EXPECT_FALSE(dbf.Create(dir.WPath("neg"), {{u"X", DBF_UNKNOWN, -1}}));
    std::vector<CDbfFieldDescriptorEx> long_(300, CDbfFieldDescriptorEx(u"F", DBF_CHAR, 253));
    EXPECT_FALSE(dbf.Create(dir.WPath("long"), long_));   // record beyond 65535 bytes
    EXPECT_FALSE(dbf.Create(dir.WPath("no/such/dir/t"), SampleFields()));
    EXPECT_FALSE(dbf.IsOpen());
}

TEST(CDbf, TenThousandAppendsAreFast) {
    TempDir dir;
    auto start = std::chrono::steady_clock::now();
    CDbf dbf;
    ASSERT_TRUE(dbf.Create(dir.WPath("big"), SampleFields()));
    for (int i = 0; i < 10000; ++i) ASSERT_TRUE(dbf.AppendRecord({u"name", u"1.5", u"y"}, true));
    ASSERT_TRUE(dbf.Close());
    ASSERT_TRUE(dbf.Open(dir.WPath("big"), CDbf::modeRead));
    EXPECT_EQ(dbf.GetNumRecords(), 10000u);
    for (uint32_t i = 0; i < 10000; ++i) ASSERT_TRUE(dbf.ReadRecord());
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_LT(seconds, 5.0);   // about 0.1 s in a release build; sanitizers are slower
}
