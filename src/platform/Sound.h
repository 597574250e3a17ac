// Playing a sound file through the desktop's sound service, fire and
// forget.
#pragma once

#include <string>

namespace ob::platform {

// Starts playing the file (a path, UTF-8) and returns at once. False when
// it could not be started: no sound service, a missing or unreadable file.
// Callable from any thread.
bool PlaySoundFile(const std::string& path);

}  // namespace ob::platform
