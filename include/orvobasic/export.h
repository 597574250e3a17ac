/* OB_API marks the symbols that libOrvoBasic_Emb exports. The library is
 * built with hidden visibility, so everything without OB_API stays private
 * to it. Usable from C and C++. */
#pragma once

#if defined(__GNUC__) || defined(__clang__)
#define OB_API __attribute__((visibility("default")))
#else
#define OB_API
#endif
