// A serial device on a terminal file descriptor (termios): opening with
// exclusive use, line settings, reads that wait with poll, writes that wait
// until the device has taken every byte.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

struct termios;

namespace ob::platform {

// Flow-control bits of SerialSettings::flow.
enum : uint8_t {
    kFlowDsrDtr = 1,    // DSR/DTR handshake: termios has none, so it is refused
    kFlowCtsRts = 2,    // hardware handshake (CRTSCTS)
    kFlowXonXoff = 4,   // software handshake, XON 17 / XOFF 19 both ways
};

// Line settings of a serial device.
struct SerialSettings {
    uint32_t baud = 4800;   // any rate > 0; rates without a B constant need termios2
    uint32_t parity = 0;    // 0 none, 1 odd, 2 even, 3 mark, 4 space
    uint8_t stopBits = 0;   // 0 one, 1 one and a half (5 data bits only), 2 two
    uint8_t dataBits = 0;   // 5 to 8; 0: 7 with parity, 8 without
    uint8_t flow = 0;       // kFlow* bits
};

// Turns `t` (what the device reported) into a raw 8-bit line with
// `settings`; false, with `t` unchanged, when the line cannot take them.
bool ComposeTermios(::termios& t, const SerialSettings& settings);

class SerialDevice {
public:
    SerialDevice() = default;
    ~SerialDevice();   // closes the device
    SerialDevice(const SerialDevice&) = delete;
    SerialDevice& operator=(const SerialDevice&) = delete;

    // Opens `path` for reading and writing, for this process alone. Anything
    // that is not a terminal is refused. False with LastError() set ("PATH:
    // reason"); an open device is closed first.
    [[nodiscard]] bool Open(const std::string& path);
    // Closes the device; false with LastError() set when close(2) failed (the
    // descriptor is gone either way). Closing a closed device succeeds.
    bool Close();
    bool IsOpen() const { return m_fd >= 0; }

    // Applies `settings` as a whole: raw 8-bit line, receiver on, modem
    // control lines ignored, DTR and RTS raised. A value the line cannot take
    // changes nothing and gives false with LastError() set.
    [[nodiscard]] bool Apply(const SerialSettings& settings);
    // Discards what was received and not yet read.
    void PurgeInput();

    // Waits up to `firstMs` for a first byte, then takes what follows it
    // with gaps of at most `followMs`, `maxBytes` in all: a reply whose bytes
    // follow each other closely arrives whole. "" on time-out or a lost device.
    std::string Read(int firstMs, int followMs, size_t maxBytes);
    // Writes every byte, waiting while the device cannot take more. The
    // count of bytes written goes to `written`; false with LastError() set
    // when the device failed (a lost device, a hang-up).
    [[nodiscard]] bool Write(std::string_view bytes, size_t& written);

    const std::string& LastError() const { return m_error; }
    const std::string& Path() const { return m_path; }
    int Descriptor() const { return m_fd; }

private:
    bool Fail(const std::string& reason);
    bool FailErrno(int error);

    int m_fd = -1;
    std::string m_path;
    std::string m_error;
};

}  // namespace ob::platform
