// Record types declared with "type" ... "endtype" and the record variables made from them.
#pragma once

namespace ob {

class CUserTypes {
public:
};

}  // namespace ob
