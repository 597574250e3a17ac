// Whether Qt can open a display: checked before the application object is
// made, because Qt ends the process when its platform cannot connect.
#pragma once

#include <string>

namespace ob::ui {

// True when the platform Qt would pick can reach a display (or needs none:
// offscreen, minimal); else false with a short reason in `why`.
bool DisplayAvailable(std::string& why);

}  // namespace ob::ui
