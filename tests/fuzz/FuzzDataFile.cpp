// Script data files: any bytes read as a text file (a UTF-16 file with its
// mark, or 8-bit text without one: the input decides) line by line and as a
// list, and as packed binary items of every size.
#include "FuzzSupport.h"

#include <cstring>

namespace {

const char kScript[] =
    "open \"d.txt\" as 1 text\n"
    "i = 0\n"
    "do while i < 50\n"
    "  x = readline(1)\n"
    "  i = i + 1\n"
    "loop\n"
    "close 1\n"
    "open \"d.txt\" as 2 text\n"
    "l = readlist(2, \",; \")\n"
    "close 2\n"
    "open \"d.txt\" as 3\n"
    "s = filesize(3)\n"
    "a = read(3, 3, 1)\n"
    "a = read(3, 2, 2)\n"
    "a = read(3, 2, 4)\n"
    "a = read(3, 1, 8)\n"
    "x = seek(3, 1)\n"
    "a = read(3, 5, 4)\n"
    "e = iseof(3)\n"
    "close 3\n";

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ob::fuzz::Environment& env = ob::fuzz::Environment::Get();
    env.Write("d.txt", data, size);
    static const std::string script =
        env.Write("data.bas", reinterpret_cast<const uint8_t*>(kScript), std::strlen(kScript));
    COrvoBasic interpreter;
    ob::fuzz::ApplySmallBudgets(interpreter);
    interpreter.SetPathResolver([&env](CString& path) {
        if (!path.IsEmpty() && path[0] != u'/') path = CString::FromUtf8(env.Path(path.ToUtf8()));
        return true;
    });
    interpreter.ExecuteProgram(CString::FromUtf8(script));
    return 0;
}
