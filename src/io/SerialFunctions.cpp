// The serial built-ins "comportopen", "comportclose", "comportread" and
// "comportwrite" over the interpreter's port table.
//
// A port whose device could not be opened is still stored and "comportopen"
// still answers true: scripts learn of it when "comportread" and
// "comportwrite" leave their results unset. The reason, with the device
// path, is the port's status text, passed to the host's status handler.
#include "io/IoArgs.h"
#include "io/SerialPorts.h"
#include "platform/CodePage.h"

#include <orvobasic/COrvoBasic.h>

#include <iterator>
#include <memory>

using namespace ob;

namespace {

// Serial lines carry text in the interpreter's code page. A received zero
// byte ends the text, as it ends any 8-bit string.
CString SerialText(const COrvoBasic& interp, std::string_view bytes) {
    return platform::AnsiToWide(bytes.substr(0, bytes.find('\0')), interp.GetCodePage());
}

std::string SerialBytes(const COrvoBasic& interp, std::u16string_view text) {
    return platform::WideToAnsi(text, interp.GetCodePage());
}

// What one call works on.
struct PortCall {
    COrvoBasic& interp;
    CBasicVariable& result;
    CArgArray& args;
    uint32_t port;   // the number as given, truncated
    uint16_t key;    // its low 16 bits
};

// Baud, parity, stop bits and read time-out from the optional arguments.
void TakeSettings(CSerialPort& port, const CArgArray& args) {
    platform::SerialSettings& s = port.Settings();
    if (args.size() > 1 && io::TruncToInt64(args[1].GetNumberValue()) > 0)
        s.baud = io::TruncToUint32(args[1].GetNumberValue());
    if (args.size() > 2) s.parity = io::TruncToUint32(args[2].GetNumberValue());
    if (args.size() > 3) s.stopBits = static_cast<uint8_t>(io::TruncToUint32(args[3].GetNumberValue()));
    if (args.size() > 4) port.SetReadTimeout(io::TruncToUint32(args[4].GetNumberValue()));
}

// "comportopen" PORT [, BAUD [, PARITY [, STOPBITS [, TIMEOUT]]]]: true,
// whether or not the device opened. A port of the same number is closed
// before the new device is opened, so the two never hold it together.
bool Open(PortCall& c) {
    auto port = std::make_unique<CSerialPort>(c.port);
    TakeSettings(*port, c.args);
    c.interp.COMPortClose(c.key);
    port->Open();
    c.interp.ComPorts().Notify(*port);
    c.result.SetValue(c.interp.COMPortAdd(c.key, std::move(port)));
    return true;
}

bool Close(PortCall& c) {
    c.result.SetValue(c.interp.COMPortClose(c.key));
    return true;
}

// "comportread" PORT: what arrived; "" for an unknown port, unset for a
// port whose device is not open.
bool Read(PortCall& c) {
    CSerialPort* port = c.interp.COMPortFind(c.key);
    if (!port) c.result.SetValue(CString());
    else if (port->IsOpen()) c.result.SetValue(SerialText(c.interp, port->Read()));
    return true;
}

// "comportwrite" PORT, TEXT: true when every byte went out; false for a
// text over 512 characters (nothing is written) or a failed write; "" for
// an unknown port, unset for a port whose device is not open.
bool Write(PortCall& c) {
    if (c.args.size() < 2) {
        c.interp.ReportError(24);
        return false;
    }
    CSerialPort* port = c.interp.COMPortFind(c.key);
    if (!port) {
        c.result.SetValue(CString());
        return true;
    }
    if (!port->IsOpen()) return true;
    CString text = c.args[1].GetStringValue();
    bool ok = text.size() <= CSerialPort::kMaxWriteChars && port->Write(SerialBytes(c.interp, text));
    if (!ok) c.interp.ComPorts().Notify(*port);
    c.result.SetValue(ok);
    return true;
}

using PortOp = bool (*)(PortCall&);

// By function type, from "comportopen" on.
const PortOp kPortOps[] = {Open, Close, Read, Write};

}  // namespace

bool COrvoBasic::ExecComPortOperation(CBasicVariable& result, CArgArray& args, FUNCTION_TYPE type) {
    if (args.empty()) {
        ReportError(24);
        return false;
    }
    size_t op = static_cast<size_t>(type - FT_COMPORTOPEN);
    if (type < FT_COMPORTOPEN || op >= std::size(kPortOps)) {
        ReportError(21);
        return false;
    }
    uint32_t port = io::TruncToUint32(args[0].GetNumberValue());
    PortCall call {*this, result, args, port, static_cast<uint16_t>(port & 0xFFFF)};
    return kPortOps[op](call);
}

bool COrvoBasic::COMPortAdd(uint16_t key, std::unique_ptr<CSerialPort> port) {
    return m_comPorts->Add(key, std::move(port));
}

CSerialPort* COrvoBasic::COMPortFind(uint16_t key) { return m_comPorts->Find(key); }

bool COrvoBasic::COMPortClose(uint16_t key) { return m_comPorts->Close(key); }

bool COrvoBasic::COMPortCloseAll() {
    m_comPorts->CloseAll();
    return true;
}
