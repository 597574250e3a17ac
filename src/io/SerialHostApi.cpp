// The host's side of serial ports: device mappings, the status handler and
// the status text. No exception leaves these functions.
#include <orvobasic/orvobasic.h>

#include <orvobasic/COrvoBasic.h>

#include "io/SerialPorts.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace {

// Copies at most size - 1 bytes and a zero; returns the full length.
int32_t CopyOut(const std::string& text, char* buffer, int32_t size) {
    if (buffer && size > 0) {
        size_t n = std::min(text.size(), static_cast<size_t>(size - 1));
        std::memcpy(buffer, text.data(), n);
        buffer[n] = '\0';
    }
    return static_cast<int32_t>(std::min<size_t>(text.size(), INT32_MAX));
}

}  // namespace

extern "C" {

int32_t OB_SetComPortPath(int32_t port, const char* path) {
    if (port < 1) return 0;
    try {
        return ob::SetSerialDevicePath(static_cast<uint32_t>(port), path ? path : "") ? 1 : 0;
    } catch (...) {
        return 0;
    }
}

void OB_SetComPortStatusHandler(OB_HANDLE script, OB_ComPortStatusHandler handler, void* userData) {
    if (!COrvoBasic::IsValidInterpreter(script)) return;
    try {
        if (!handler) {
            script->ComPorts().SetStatusHandler(nullptr);
            return;
        }
        script->ComPorts().SetStatusHandler([script, handler, userData](uint32_t port, const std::string& status) {
            handler(script, static_cast<int32_t>(port), status.c_str(), userData);
        });
    } catch (...) {
    }
}

int32_t OB_GetComPortStatusUtf8(OB_HANDLE script, int32_t port, char* buffer, int32_t size) {
    try {
        const ob::CSerialPort* found = nullptr;
        if (COrvoBasic::IsValidInterpreter(script))
            found = script->ComPorts().Find(static_cast<uint16_t>(static_cast<uint32_t>(port) & 0xFFFF));
        return CopyOut(found ? found->StatusText() : std::string(), buffer, size);
    } catch (...) {
        return CopyOut(std::string(), buffer, size);
    }
}

}  // extern "C"
