// The Blowfish cipher through nettle: this file only adapts nettle's key
// schedule and block functions to the class and adds the CBC chaining.
#include <orvobasic/CBlowFish.h>

#include <nettle/blowfish.h>
#include <nettle/cbc.h>

#include <cstring>

struct CBlowFish::Context {
    blowfish_ctx ctx;
};

namespace {

void EncryptBlocks(const void* ctx, size_t length, uint8_t* dst, const uint8_t* src) {
    blowfish_encrypt(static_cast<const blowfish_ctx*>(ctx), length, dst, src);
}

void DecryptBlocks(const void* ctx, size_t length, uint8_t* dst, const uint8_t* src) {
    blowfish_decrypt(static_cast<const blowfish_ctx*>(ctx), length, dst, src);
}

bool WholeBlocks(size_t length) { return length % CBlowFish::kBlockSize == 0; }

}  // namespace

CBlowFish::CBlowFish() = default;

CBlowFish::CBlowFish(const uint8_t* key, size_t length) { (void)SetKey(key, length); }

CBlowFish::~CBlowFish() = default;

CBlowFish::CBlowFish(const CBlowFish& other)
    : m_ctx(other.m_ctx ? std::make_unique<Context>(*other.m_ctx) : nullptr) {}

CBlowFish& CBlowFish::operator=(const CBlowFish& other) {
    if (this != &other) m_ctx = other.m_ctx ? std::make_unique<Context>(*other.m_ctx) : nullptr;
    return *this;
}

bool CBlowFish::SetKey(const uint8_t* key, size_t length) {
    m_ctx.reset();
    if (!key || length < kMinKeySize || length > kMaxKeySize) return false;
    auto ctx = std::make_unique<Context>();
    // nettle documents 8 bytes as its shortest key, but its schedule cycles
    // through any number of key bytes, as the cipher's definition does.
    if (!blowfish_set_key(&ctx->ctx, length, key)) return false;
    m_ctx = std::move(ctx);
    return true;
}

bool CBlowFish::EncryptECB(uint8_t* data, size_t length) const {
    if (!m_ctx || !WholeBlocks(length)) return false;
    if (length) blowfish_encrypt(&m_ctx->ctx, length, data, data);
    return true;
}

bool CBlowFish::DecryptECB(uint8_t* data, size_t length) const {
    if (!m_ctx || !WholeBlocks(length)) return false;
    if (length) blowfish_decrypt(&m_ctx->ctx, length, data, data);
    return true;
}

bool CBlowFish::EncryptCBC(uint8_t* iv, uint8_t* data, size_t length) const {
    if (!m_ctx || !iv || !WholeBlocks(length)) return false;
    if (length) cbc_encrypt(&m_ctx->ctx, EncryptBlocks, kBlockSize, iv, length, data, data);
    return true;
}

bool CBlowFish::DecryptCBC(uint8_t* iv, uint8_t* data, size_t length) const {
    if (!m_ctx || !iv || !WholeBlocks(length)) return false;
    if (length) cbc_decrypt(&m_ctx->ctx, DecryptBlocks, kBlockSize, iv, length, data, data);
    return true;
}
