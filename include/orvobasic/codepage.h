/* Code pages of 8-bit text: script files, 8-bit text files, dBase tables,
 * serial lines and the "string" parameters of declared functions. Each
 * interpreter has one (OB_SetCodePage, COrvoBasic::SetCodePage); Windows-1252
 * is the default. Usable from C and C++. */
#pragma once

enum {
    OB_CODEPAGE_1252 = 1252,  /* Windows-1252: one byte a character, every byte round-trips */
    OB_CODEPAGE_UTF8 = 65001  /* UTF-8: invalid bytes read as U+FFFD */
};

#ifdef __cplusplus
namespace ob {

enum class CodePage : int {
    Windows1252 = OB_CODEPAGE_1252,
    Utf8 = OB_CODEPAGE_UTF8,
};

}  // namespace ob
#endif
