// Scripts that come from memory instead of a file (a script read from
// standard input, statements given on the command line), the chunks of an
// interactive session that run one after another in one live interpreter,
// and the arguments a command line hands to a script.
#include <orvobasic/COrvoBasic.h>

#include "platform/LargeStack.h"

#include <algorithm>
#include <map>

using namespace ob;

bool COrvoBasic::ExecuteProgramText(const CString& name, const std::string& bytes) {
    m_sourceBytes = &bytes;
    struct Forget {
        const std::string*& bytes;
        ~Forget() { bytes = nullptr; }
    } forget{m_sourceBytes};
    return ExecuteProgram(name);
}

// ARGV[0..n-1]: the arguments, as strings. Nothing is defined without
// arguments, so a script run the usual way sees no new name.
void COrvoBasic::DefineScriptArguments() {
    if (m_scriptArguments.empty()) return;
    const CString name = u"ARGV";
    SetVariableSize(name, static_cast<int>(m_scriptArguments.size()), true);
    for (size_t i = 0; i < m_scriptArguments.size(); ++i)
        SetVariableDirect(name, CBasicVariable(m_scriptArguments[i]), static_cast<int>(i), true);
}

bool COrvoBasic::ExecuteInteractive(const CString& name, const std::string& bytes) {
    if (m_text.empty()) {
        m_scriptPath = name;
        m_prevTokenType = DELIMITER;
        DefineScriptArguments();
    }
    uint32_t start = static_cast<uint32_t>(m_text.size());
    DecodeScript(bytes, m_text);
    ForgetTextCaches();
    m_length = static_cast<uint32_t>(m_text.size());
    m_endIndex = m_length - 1;
    BuildLineIndex();
    m_runResult = OB_OK;
    m_halted = false;
    m_stop = false;
    bool ran = false;
    platform::RunOnLargeStack([&] {
        try {
            if (!ScanDefinitions(start) || !Rewind(start)) return;
            m_prevTokenType = DELIMITER;
            get_token();
            if (m_command == CMD_FUNCTION || m_command == CMD_SUB) return;   // entered, not run
            Rewind(start);
            ran = true;
            do {
                ExecStatement();
            } while (!m_stop && m_command != CMD_FINISHED);
        } catch (const ScriptAbort&) {
            m_stop = true;
        }
    });
    return ran;
}

void COrvoBasic::ForEachMainVariable(const std::function<void(const CString&, const CBasicVariable&)>& visit) const {
    static const CString kMainLevel = u"__#1";
    std::map<CString, const CBasicVariable*> sorted;
    for (const auto& [key, variable] : m_variables) {
        if (!variable || key == u"Nothing" || key == u"True" || key == u"False") continue;
        size_t mark = key.find(u"__#");
        if (mark == CString::npos) sorted.emplace(key, variable.get());
        else if (key.compare(mark, CString::npos, kMainLevel) == 0) sorted.emplace(CString(key.substr(0, mark)), variable.get());
    }
    for (const auto& [name, variable] : sorted) visit(name, *variable);
}
