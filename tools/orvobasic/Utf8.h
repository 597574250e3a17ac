// UTF-8 <-> UTF-16 for the runner, which sees the library only through its
// exported interface. Invalid input becomes U+FFFD, as in the library.
#pragma once

#include <string>
#include <string_view>

namespace ob::runner {

std::string ToUtf8(std::u16string_view text);
std::u16string FromUtf8(std::string_view text);

}  // namespace ob::runner
