// How each argument of a call to a declared function was written, recorded
// while the argument list is read: by-reference results go back only to
// arguments written as a bare variable name, and a bare record name passes
// the record's buffer.
#pragma once

#include <orvobasic/CString.h>

namespace ob {

struct CDeclaredArg {
    enum class Kind { Expression, Variable, Record };
    Kind kind = Kind::Expression;
    CString name;   // Variable: the name as written; Record: the record's key in the store
};

}  // namespace ob
