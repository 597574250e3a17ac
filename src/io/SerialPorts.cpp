// Port objects, the port table and the names of the devices behind port
// numbers.
#include "io/SerialPorts.h"

#include <chrono>
#include <mutex>
#include <thread>
#include <unordered_map>

namespace ob {

namespace {

struct DeviceNames {
    std::mutex lock;
    std::unordered_map<uint32_t, std::string> paths;
};

DeviceNames& Names() {
    static DeviceNames names;
    return names;
}

// How long a freshly opened line settles before its input is discarded.
constexpr auto kSettleTime = std::chrono::milliseconds(10);

}  // namespace

bool SetSerialDevicePath(uint32_t port, const std::string& path) {
    if (port == 0) return false;
    DeviceNames& names = Names();
    std::lock_guard<std::mutex> guard(names.lock);
    if (path.empty()) names.paths.erase(port);
    else names.paths[port] = path.find('/') == std::string::npos ? "/dev/" + path : path;
    return true;
}

std::string SerialDevicePath(uint32_t port) {
    if (port == 0) return {};
    DeviceNames& names = Names();
    std::lock_guard<std::mutex> guard(names.lock);
    auto it = names.paths.find(port);
    if (it != names.paths.end()) return it->second;
    return "/dev/ttyS" + std::to_string(port - 1);
}

bool CSerialPort::Record(bool ok) {
    if (!ok) m_status = m_device.LastError();
    return ok;
}

bool CSerialPort::Open() {
    if (IsOpen()) return true;
    std::string path = SerialDevicePath(m_portNumber);
    if (path.empty()) {
        m_status = "COM" + std::to_string(m_portNumber) + " names no device";
        return false;
    }
    if (!Record(m_device.Open(path))) return false;
    ApplySettings();
    std::this_thread::sleep_for(kSettleTime);
    m_device.PurgeInput();
    return true;
}

bool CSerialPort::Close() {
    if (!Record(m_device.Close())) return false;
    m_status.clear();
    return true;
}

bool CSerialPort::ApplySettings() { return IsOpen() && Record(m_device.Apply(m_settings)); }

std::string CSerialPort::Read() {
    int first = m_readTimeoutMs > INT32_MAX ? INT32_MAX : static_cast<int>(m_readTimeoutMs);
    return m_device.Read(first, static_cast<int>(kFollowMs), kMaxReadBytes);
}

bool CSerialPort::Write(std::string_view bytes) {
    size_t written = 0;
    return Record(m_device.Write(bytes, written)) && written == bytes.size();
}

bool CSerialPortTable::Add(Key key, std::unique_ptr<CSerialPort> port) {
    Close(key);
    m_ports.emplace(key, std::move(port));
    return true;
}

CSerialPort* CSerialPortTable::Find(Key key) const {
    auto it = m_ports.find(key);
    return it == m_ports.end() ? nullptr : it->second.get();
}

bool CSerialPortTable::Close(Key key) {
    auto it = m_ports.find(key);
    if (it == m_ports.end()) return false;
    if (!it->second->Close()) Notify(*it->second);
    m_ports.erase(it);
    return true;
}

void CSerialPortTable::CloseAll() {
    for (auto& entry : m_ports) entry.second->Close();
    m_ports.clear();
}

void CSerialPortTable::Notify(const CSerialPort& port) const {
    if (m_statusHandler && !port.StatusText().empty()) m_statusHandler(port.PortNumber(), port.StatusText());
}

}  // namespace ob
