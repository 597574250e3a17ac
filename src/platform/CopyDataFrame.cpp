#include "platform/CopyDataFrame.h"

namespace ob::platform::copydata {

namespace {

void Put(std::vector<uint8_t>& out, uint64_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) out.push_back(static_cast<uint8_t>(value >> (8 * i)));
}

uint64_t Get(const uint8_t* bytes, int count) {
    uint64_t value = 0;
    for (int i = 0; i < count; ++i) value |= static_cast<uint64_t>(bytes[i]) << (8 * i);
    return value;
}

// The four bytes every frame starts with.
FrameError CheckLead(const uint8_t* bytes, uint8_t type) {
    if (bytes[0] != kVersion) return FrameError::Version;
    if (bytes[1] != type) return FrameError::Type;
    if (bytes[2] != 0 || bytes[3] != 0) return FrameError::Reserved;
    return FrameError::None;
}

}  // namespace

bool EncodeRequest(const Request& request, std::vector<uint8_t>& out) {
    if (request.text.size() > kMaxTextUnits) return false;
    out.clear();
    out.reserve(kRequestHeaderSize + 2 * request.text.size());
    Put(out, kVersion, 1);
    Put(out, kRequestType, 1);
    Put(out, 0, 2);
    Put(out, static_cast<uint64_t>(request.sender), 8);
    Put(out, request.code, 4);
    Put(out, request.text.size(), 4);
    for (char16_t c : request.text) Put(out, c, 2);
    return true;
}

FrameError DecodeRequestHeader(const uint8_t* header, Request& out, size_t& textBytes) {
    if (FrameError lead = CheckLead(header, kRequestType); lead != FrameError::None) return lead;
    uint64_t units = Get(header + 16, 4);
    if (units > kMaxTextUnits) return FrameError::Oversize;
    out.sender = static_cast<int64_t>(Get(header + 4, 8));
    out.code = static_cast<uint32_t>(Get(header + 12, 4));
    textBytes = static_cast<size_t>(units) * 2;
    return FrameError::None;
}

void DecodeText(const uint8_t* bytes, size_t count, std::u16string& out) {
    out.resize(count / 2);
    for (size_t i = 0; i < out.size(); ++i) out[i] = static_cast<char16_t>(Get(bytes + 2 * i, 2));
}

FrameError DecodeRequest(const uint8_t* bytes, size_t count, Request& out) {
    if (count < kRequestHeaderSize) return FrameError::Truncated;
    size_t textBytes = 0;
    if (FrameError e = DecodeRequestHeader(bytes, out, textBytes); e != FrameError::None) return e;
    size_t rest = count - kRequestHeaderSize;
    if (rest < textBytes) return FrameError::Truncated;
    if (rest > textBytes) return FrameError::Trailing;
    DecodeText(bytes + kRequestHeaderSize, textBytes, out.text);
    return FrameError::None;
}

std::array<uint8_t, kAnswerSize> EncodeAnswer(int64_t answer) {
    std::array<uint8_t, kAnswerSize> out{kVersion, kAnswerType, 0, 0};
    for (int i = 0; i < 8; ++i) out[4 + i] = static_cast<uint8_t>(static_cast<uint64_t>(answer) >> (8 * i));
    return out;
}

FrameError DecodeAnswer(const uint8_t* bytes, size_t count, int64_t& answer) {
    if (count < kAnswerSize) return FrameError::Truncated;
    if (FrameError lead = CheckLead(bytes, kAnswerType); lead != FrameError::None) return lead;
    if (count > kAnswerSize) return FrameError::Trailing;
    answer = static_cast<int64_t>(Get(bytes + 4, 8));
    return FrameError::None;
}

}  // namespace ob::platform::copydata
