// The interpreter's side of loading a program: merging its files into the
// program text, writing the encrypted copies its "encrypt" statements ask
// for, and the host's key of encrypted scripts.
#include <orvobasic/COrvoBasic.h>
#include <orvobasic/sources.h>

#include "engine/Capabilities.h"
#include "engine/ScriptCipher.h"
#include "engine/SourceLoader.h"

#include <cstdio>
#include <string>

using namespace ob;

// Reads the script and what it includes and uses into the program text.
// False when it cannot run (the error is reported). `aborted` tells that
// the user ended the run at an error that does not stop the load.
bool COrvoBasic::LoadSources(const CString& path, bool& aborted) {
    CSourceLoader loader(*this, *m_sourceMap);
    try {
        if (!loader.Load(path, m_text)) {
            m_text.clear();
            return false;
        }
    } catch (const ScriptAbort&) {
        m_text.clear();
        return false;
    }
    try {
        WriteEncryptedCopies(loader.EncryptRequests());
    } catch (const ScriptAbort&) {
        aborted = true;
    }
    return true;
}

// Each "encrypt" statement writes the program, as merged, encrypted under
// the script key, to its file (named like the files the script opens, so
// relative to the current folder). A script that may not do what the
// statement table says "encrypt" needs writes nothing; the statement loop
// reports error 40 when it meets the line, as for any denied statement. A
// refused path is error 47, a failed write error 53. None of these stops
// the program.
void COrvoBasic::WriteEncryptedCopies(const std::vector<SourceRequest>& requests) {
    if (requests.empty() || !IsAllowed(StatementCapabilities(CMD_ENCRYPT).value_or(OB_CAP_ALL))) return;
    std::string sealed;
    if (!EncryptScript(EncryptedCopySource(m_text), sealed)) sealed.clear();
    for (const SourceRequest& request : requests) {
        CString target = request.path;
        int error = 0;
        if (!ResolvePath(target)) error = 47;
        else if (sealed.empty()) error = 53;
        if (!error) {
            std::FILE* f = std::fopen(target.ToUtf8().c_str(), "wb");
            bool written = f && std::fwrite(sealed.data(), 1, sealed.size(), f) == sealed.size();
            if (f && std::fclose(f) != 0) written = false;
            if (!written) error = 53;
        }
        if (error) ReportLoadError(error, request.file, request.line, request.lineText);
    }
}

int32_t OB_SetScriptKey(const uint8_t* key, int32_t length) {
    if (length < 0) return 0;
    try {
        return SetScriptKey(length ? key : nullptr, static_cast<size_t>(length)) ? 1 : 0;
    } catch (...) {
        return 0;
    }
}
