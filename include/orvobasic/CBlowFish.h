// CBlowFish: the Blowfish block cipher (64-bit blocks, keys of 1 to 56
// bytes), the cipher of encrypted scripts. Blocks are big-endian byte
// strings, as in the published test vectors: the first byte of a block is
// the most significant byte of its left half.
//
// A CBlowFish without a key (default-constructed, or after SetKey failed)
// refuses to work: every operation returns false and leaves its data as it
// was. One object may be used by one thread at a time; the key schedule is
// computed once by SetKey and only read afterwards.
#pragma once

#include <orvobasic/export.h>

#include <cstddef>
#include <cstdint>
#include <memory>

class OB_API CBlowFish {
public:
    static constexpr size_t kBlockSize = 8;
    static constexpr size_t kMinKeySize = 1;
    static constexpr size_t kMaxKeySize = 56;

    CBlowFish();
    // Same as CBlowFish() followed by SetKey(key, length).
    CBlowFish(const uint8_t* key, size_t length);
    ~CBlowFish();
    CBlowFish(const CBlowFish& other);
    CBlowFish& operator=(const CBlowFish& other);

    // Computes the key schedule. False (and no key afterwards) when `length`
    // is outside 1..56, `key` is NULL, or the key is one of the rare weak
    // keys whose S-boxes repeat an entry.
    [[nodiscard]] bool SetKey(const uint8_t* key, size_t length);
    bool HasKey() const { return m_ctx != nullptr; }

    // Electronic codebook: each 8-byte block on its own, in place.
    // `length` must be a multiple of 8.
    [[nodiscard]] bool EncryptECB(uint8_t* data, size_t length) const;
    [[nodiscard]] bool DecryptECB(uint8_t* data, size_t length) const;

    // Cipher block chaining, in place. `iv` (8 bytes) is the chaining value
    // to start from and receives the one to go on with, so a long message
    // may be processed in pieces. `length` must be a multiple of 8.
    [[nodiscard]] bool EncryptCBC(uint8_t* iv, uint8_t* data, size_t length) const;
    [[nodiscard]] bool DecryptCBC(uint8_t* iv, uint8_t* data, size_t length) const;

private:
    struct Context;
    std::unique_ptr<Context> m_ctx;
};
