// Serial ports of an interpreter: the port object a script opens by number,
// the table of them keyed by the number's low 16 bits, and the names of the
// devices behind the numbers.
//
// COMn is the device /dev/ttyS(n-1) unless the host mapped n to another
// device (SetSerialDevicePath; the runner's --com N=PATH). Mappings are
// process-wide, like the port names of a machine, and apply from the next
// open.
#pragma once

#include <orvobasic/CString.h>

#include "platform/SerialDevice.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace ob {

// Maps COMn to `path` for every interpreter of the process; an empty path
// removes the mapping. A path without "/" names a device under /dev/. False
// for port 0.
bool SetSerialDevicePath(uint32_t port, const std::string& path);
// The device of COMn: the mapped path, else /dev/ttyS(n-1); "" for port 0.
std::string SerialDevicePath(uint32_t port);

// One port a script opened. Settings made while the device is not open are
// only recorded.
class CSerialPort {
public:
    static constexpr uint32_t kDefaultReadTimeoutMs = 1000;
    static constexpr uint32_t kMinReadTimeoutMs = 10;
    static constexpr uint32_t kFollowMs = 10;          // longest gap within one reply
    static constexpr size_t kMaxReadBytes = 4097;      // first byte and 4096 more
    static constexpr size_t kMaxWriteChars = 512;

    explicit CSerialPort(uint32_t portNumber) : m_portNumber(portNumber) {}

    uint32_t PortNumber() const { return m_portNumber; }
    platform::SerialSettings& Settings() { return m_settings; }
    void SetReadTimeout(uint32_t ms) { m_readTimeoutMs = ms < kMinReadTimeoutMs ? kMinReadTimeoutMs : ms; }
    uint32_t ReadTimeout() const { return m_readTimeoutMs; }

    bool IsOpen() const { return m_device.IsOpen(); }
    // Opens the device of the port number and applies the settings. Does
    // nothing when already open. False when the device could not be opened
    // (the status text says which and why); settings the line refuses leave
    // the port open with the refusal as status text.
    bool Open();
    // Empties the status text on success.
    bool Close();
    // Applies the settings when the device is open; false with the status
    // text set when the line refuses them.
    bool ApplySettings();
    // The bytes of one read: up to the read time-out for the first, then
    // what follows with gaps of at most kFollowMs, at most kMaxReadBytes in
    // all. "" when none came.
    std::string Read();
    // True when every byte was written; the status text says why not.
    bool Write(std::string_view bytes);

    // Empty, or why the last open, close, write or setting failed, with the
    // device path.
    const std::string& StatusText() const { return m_status; }
    const platform::SerialDevice& Device() const { return m_device; }

private:
    bool Record(bool ok);

    uint32_t m_portNumber;
    platform::SerialSettings m_settings;
    uint32_t m_readTimeoutMs = kDefaultReadTimeoutMs;
    platform::SerialDevice m_device;
    std::string m_status;
};

// The open ports of an interpreter, owned, by the low 16 bits of the number.
class CSerialPortTable {
public:
    using Key = uint16_t;
    // Told the port number and status text whenever a port fails.
    using StatusHandler = std::function<void(uint32_t port, const std::string& status)>;

    // Closes and removes what is stored under `key`, then stores `port`.
    bool Add(Key key, std::unique_ptr<CSerialPort> port);
    CSerialPort* Find(Key key) const;
    // Closes the port under `key` and removes it; false when there is none.
    bool Close(Key key);
    void CloseAll();
    size_t Count() const { return m_ports.size(); }

    void SetStatusHandler(StatusHandler handler) { m_statusHandler = std::move(handler); }
    // Passes a failed port's status text to the handler, if any.
    void Notify(const CSerialPort& port) const;

private:
    std::map<Key, std::unique_ptr<CSerialPort>> m_ports;
    StatusHandler m_statusHandler;
};

}  // namespace ob
