// Script events: handler lists by event name, and the interpreter's timer.
#pragma once

namespace ob {

class CEventTable {
public:
};

}  // namespace ob
