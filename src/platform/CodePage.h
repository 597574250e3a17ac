// The 8-bit code page of script files, 8-bit text files, dBase tables and
// serial lines: Windows-1252 in both directions. The five bytes the code page
// leaves unassigned map to the C1 controls of the same value, so every byte
// sequence survives a round trip; characters with no byte become '?'.
#pragma once

#include <orvobasic/CString.h>

#include <string>
#include <string_view>

namespace ob::platform {

char16_t ByteToWide(unsigned char byte);
char WideToByte(char16_t c);   // '?' when the character has no byte

CString AnsiToWide(std::string_view bytes);
void AnsiToWide(std::string_view bytes, CString& out);   // appends
std::string WideToAnsi(std::u16string_view text);

}  // namespace ob::platform
