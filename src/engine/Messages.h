// The catalogue of the interpreter's message texts, by number (1..59).
#pragma once

#include <orvobasic/CString.h>

namespace ob {

constexpr int kMessageCount = 59;
// The text of message `id`; empty for a number without text (0 and out of range).
const CString& Message(int id);
// Shown when a message number has no text.
inline constexpr char16_t kMissingMessageText[] = u"Error loading resource string. BasicEng";

}  // namespace ob
