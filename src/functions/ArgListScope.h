// The argument list of one call: taken from the interpreter's per-depth
// lists, so that a call allocates nothing once a list of its depth has grown
// to the size needed. The values are cleared when the call ends, as a list
// of the call's own would be destroyed then.
#pragma once

#include <orvobasic/COrvoBasic.h>

class ArgListScope {
public:
    explicit ArgListScope(COrvoBasic& basic) : m_basic(basic) {
        if (basic.m_argDepth == basic.m_argLists.size()) basic.m_argLists.emplace_back();
        m_args = &basic.m_argLists[basic.m_argDepth++];
    }
    ~ArgListScope() {
        m_args->clear();
        --m_basic.m_argDepth;
    }
    ArgListScope(const ArgListScope&) = delete;
    ArgListScope& operator=(const ArgListScope&) = delete;
    CArgArray& Args() { return *m_args; }

private:
    COrvoBasic& m_basic;
    CArgArray* m_args;
};
