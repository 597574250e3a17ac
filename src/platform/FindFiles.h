// Lists the directory entries whose names match a wildcard pattern, as the
// device's find-first/find-next enumeration does: `*` matches any run of
// characters and `?` one character; every other character stands for itself.
#pragma once

#include <orvobasic/CString.h>

#include <vector>

namespace ob::platform {

// Bare names (no directory) of the entries matching `pattern`, sorted.
// The directory part of the pattern is taken literally, relative paths from
// the working directory. "*.*" matches every name, with or without a dot.
// Names starting with "." match only a pattern whose name part starts with
// ".". No match, an empty pattern or a missing directory give an empty list.
std::vector<CString> FindFiles(const CString& pattern);

}  // namespace ob::platform
