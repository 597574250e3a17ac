// Named maps: dictionaries from string keys to whole variables.
#pragma once

namespace ob {

class CMapDirectory {
public:
};

}  // namespace ob
