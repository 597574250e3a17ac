// dBase tables: any bytes as a ".dbf" file, read and changed through the
// table class and then through the dBase built-ins of a fixed script.
#include "FuzzSupport.h"

#include <orvobasic/CDbf.h>

#include <cstring>
#include <vector>

namespace {

constexpr uint32_t kMostRecords = 200;   // a header may promise billions

// Every field of every record, read both ways.
void ReadAll(CDbf& table) {
    std::vector<CString> values;
    uint32_t records = std::min(table.GetNumRecords(), kMostRecords);
    for (uint32_t i = 0; i < records; ++i) {
        table.ReadRecord(i, values);
        table.IsValidRecord(i);
        CString value;
        for (uint32_t f = 0; f < std::min(table.GetNumFields(), 8u); ++f)
            table.GetAttributeStr(value, i + 1, static_cast<int>(f));
    }
}

// Appends, rewrites, deletes and removes a record.
void Change(CDbf& table) {
    std::vector<CString> values(table.GetNumFields(), CString(u"12.5"));
    table.AppendRecord(values, true);
    if (table.GetNumRecords() > 0) {
        table.WriteRecord(0, values, false);
        table.MarkRecordAsDeleted(0);
    }
    table.DeleteLastRecord(1);
}

void ThroughTheClass(const CString& path) {
    try {
        CDbf table;
        if (table.Open(path, CDbf::modeRead)) ReadAll(table);
    } catch (const CFileException&) {
    }
    try {
        CDbf table;
        if (table.Open(path, CDbf::modeReadWrite)) {
            Change(table);
            ReadAll(table);
        }
    } catch (const CFileException&) {
    }
}

const char kScript[] =
    "h = dbfopen(\"t\")\n"
    "n = dbfnumrecords(h)\n"
    "f = dbfnumfields(h)\n"
    "k = dbffieldnames(h)\n"
    "r = dbfread(h)\n"
    "i = 0\n"
    "do while i < 20\n"
    "  r = dbfread(h)\n"
    "  i = i + 1\n"
    "loop\n"
    "x = dbfseek(h, 1)\n"
    "x = dbfwrite(h, r)\n"
    "x = dbfappend(h, r)\n"
    "x = dbfdelete(h, 0)\n"
    "x = dbfclose(h)\n";

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ob::fuzz::Environment& env = ob::fuzz::Environment::Get();
    CString table = CString::FromUtf8(env.Write("t.dbf", data, size));
    ThroughTheClass(table);
    env.Write("t.dbf", data, size);
    static const std::string script =
        env.Write("dbf.bas", reinterpret_cast<const uint8_t*>(kScript), std::strlen(kScript));
    COrvoBasic interpreter;
    ob::fuzz::ApplySmallBudgets(interpreter);
    // The script's relative paths are the scratch directory's.
    interpreter.SetPathResolver([&env](CString& path) {
        if (!path.IsEmpty() && path[0] != u'/') path = CString::FromUtf8(env.Path(path.ToUtf8()));
        return true;
    });
    interpreter.ExecuteProgram(CString::FromUtf8(script));
    return 0;
}
