// Starting other programs without waiting for them.
#pragma once

#include <string>
#include <vector>

namespace ob::platform {

// True when `path` names a regular file this process may execute.
bool IsExecutableFile(const std::string& path);

// The executable that a bare command name (no "/") runs through PATH, or
// empty. A name containing "/" is returned as it is when executable.
std::string FindExecutable(const std::string& name);

// Opens `path` the way a desktop shell does, without waiting: an executable
// is started with `args` as its arguments (each one argument, unsplit);
// anything else is handed to xdg-open (the arguments are dropped). The child
// gets /dev/null as stdin and its own process group, and is reaped when it
// ends. False when nothing could be started.
bool ShellOpen(const std::string& path, const std::vector<std::string>& args);

}  // namespace ob::platform
