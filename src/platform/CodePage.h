// The 8-bit code pages of script files, 8-bit text files, dBase tables and
// serial lines. Windows-1252 (the default): the five bytes the code page
// leaves unassigned map to the C1 controls of the same value, so every byte
// sequence survives a round trip; characters with no byte become '?'.
// UTF-8: malformed bytes read as U+FFFD; a lone surrogate is written as the
// encoding of U+FFFD.
#pragma once

#include <orvobasic/CString.h>
#include <orvobasic/codepage.h>

#include <string>
#include <string_view>

namespace ob::platform {

// Windows-1252.
char16_t ByteToWide(unsigned char byte);
char WideToByte(char16_t c);   // '?' when the character has no byte

CString AnsiToWide(std::string_view bytes);
void AnsiToWide(std::string_view bytes, CString& out);   // appends
std::string WideToAnsi(std::u16string_view text);

// The same in a chosen code page.
CString AnsiToWide(std::string_view bytes, CodePage codePage);
void AnsiToWide(std::string_view bytes, CString& out, CodePage codePage);   // appends
std::string WideToAnsi(std::u16string_view text, CodePage codePage);

// UTF-8 in both directions.
void Utf8ToWide(std::string_view bytes, CString& out);   // appends
std::string WideToUtf8(std::u16string_view text);

// True when `bytes` are valid UTF-8 and hold at least one multi-byte
// sequence: the sign, used by text editors too, that a file without a mark
// was written in UTF-8 (plain ASCII reads the same in every code page).
bool IsMultibyteUtf8(std::string_view bytes);

// Script text: with the UTF-8 mark EF BB BF (dropped), or valid UTF-8 with a
// multi-byte sequence, the text is UTF-8; anything else is read in
// `codePage`. Appends to `out`.
void DecodeScriptText(std::string_view bytes, CodePage codePage, CString& out);

// The number of bytes at the end of `bytes` that begin a UTF-8 sequence the
// text does not finish (0 to 3): a reader that decodes in chunks keeps them
// for the next chunk.
size_t Utf8UnfinishedTail(std::string_view bytes);

// The longest prefix of `bytes` no longer than `limit` that does not cut a
// character in two (in UTF-8 a sequence is kept whole or left out).
size_t WholeCharacterPrefix(std::string_view bytes, size_t limit, CodePage codePage);

}  // namespace ob::platform
