// The frames that carry a copy-data message between processes of the
// session: a request (sender's window, a 32-bit code, UTF-16 text) and its
// numeric answer. All numbers little-endian.
//
//   request: version(1) type(1) reserved(2, zero) sender(8) code(4)
//            length(4, UTF-16 units) text(2 x length)
//   answer:  version(1) type(2) reserved(2, zero) answer(8)
//
// A frame of another version or type, with reserved bytes set, cut short,
// followed by stray bytes, or announcing more text than kMaxTextUnits, is
// refused as a whole; the receiver never allocates more than the limit.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ob::platform::copydata {

constexpr uint8_t kVersion = 1;
constexpr uint8_t kRequestType = 1;
constexpr uint8_t kAnswerType = 2;
constexpr size_t kRequestHeaderSize = 20;
constexpr size_t kAnswerSize = 12;
// 1 Mi UTF-16 units (2 MiB of text) at most.
constexpr uint32_t kMaxTextUnits = 1u << 20;

struct Request {
    int64_t sender = 0;   // the sending window's handle, 0 when none
    uint32_t code = 0;
    std::u16string text;
};

enum class FrameError { None, Version, Type, Reserved, Oversize, Truncated, Trailing };

// The request's bytes; false (and nothing made) when the text is longer
// than kMaxTextUnits.
bool EncodeRequest(const Request& request, std::vector<uint8_t>& out);
// Checks the fixed part of a request (kRequestHeaderSize bytes) and reads
// sender and code; `textBytes` receives the size of the text that follows.
FrameError DecodeRequestHeader(const uint8_t* header, Request& out, size_t& textBytes);
// `bytes` holds exactly `count` bytes of text (an even count).
void DecodeText(const uint8_t* bytes, size_t count, std::u16string& out);
// A whole request in one buffer: header, text, and nothing else.
FrameError DecodeRequest(const uint8_t* bytes, size_t count, Request& out);

std::array<uint8_t, kAnswerSize> EncodeAnswer(int64_t answer);
FrameError DecodeAnswer(const uint8_t* bytes, size_t count, int64_t& answer);

}  // namespace ob::platform::copydata
