// Encrypted script files: sealing a script, recognising and opening one, and
// the process-wide script key. The layout is described in ScriptCipher.h.
#include "engine/ScriptCipher.h"

#include <orvobasic/CBlowFish.h>

#include <nettle/hmac.h>
#include <nettle/memops.h>
#include <nettle/sha2.h>

#include <sys/random.h>

#include <cerrno>
#include <cstring>
#include <mutex>

namespace ob {

namespace {

constexpr char kMagic[] = "\x89OBX\r\n\x1A\n";
constexpr size_t kMagicSize = 8;
constexpr uint8_t kVersion = 1;
constexpr size_t kHeaderSize = kMagicSize + 1;
constexpr size_t kIvSize = CBlowFish::kBlockSize;
constexpr size_t kTagSize = SHA256_DIGEST_SIZE;
constexpr char kTagKeyLabel[] = "OrvoBasic encrypted script tag key";

// The key scripts are sealed with until the host sets its own.
constexpr char kDefaultKey[] = "OrvoBasic/default script key/1";

std::mutex& KeyMutex() {
    static std::mutex mutex;
    return mutex;
}

std::string& KeyStore() {
    static std::string key(kDefaultKey);
    return key;
}

std::string CurrentKey() {
    std::lock_guard<std::mutex> lock(KeyMutex());
    return KeyStore();
}

const uint8_t* Bytes(std::string_view s) { return reinterpret_cast<const uint8_t*>(s.data()); }
uint8_t* Bytes(std::string& s) { return reinterpret_cast<uint8_t*>(s.data()); }

// The tag over `sealed` (header, IV and body) under the key derived from `key`.
void ComputeTag(const std::string& key, std::string_view sealed, uint8_t* tag) {
    uint8_t tagKey[SHA256_DIGEST_SIZE];
    sha256_ctx sha;
    sha256_init(&sha);
    sha256_update(&sha, sizeof kTagKeyLabel - 1, Bytes(kTagKeyLabel));
    sha256_update(&sha, key.size(), Bytes(key));
    sha256_digest(&sha, sizeof tagKey, tagKey);
    hmac_sha256_ctx hmac;
    hmac_sha256_set_key(&hmac, sizeof tagKey, tagKey);
    hmac_sha256_update(&hmac, sealed.size(), Bytes(sealed));
    hmac_sha256_digest(&hmac, kTagSize, tag);
}

bool RandomBytes(uint8_t* out, size_t n) {
    while (n > 0) {
        ssize_t got = getrandom(out, n, 0);
        if (got < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        out += got;
        n -= static_cast<size_t>(got);
    }
    return true;
}

// Removes the padding; false when it is not 1..8 bytes of its own length.
bool Unpad(std::string& plain) {
    if (plain.empty()) return false;
    size_t pad = static_cast<uint8_t>(plain.back());
    if (pad < 1 || pad > CBlowFish::kBlockSize || pad > plain.size()) return false;
    for (size_t i = plain.size() - pad; i < plain.size(); ++i)
        if (static_cast<uint8_t>(plain[i]) != pad) return false;
    plain.resize(plain.size() - pad);
    return true;
}

}  // namespace

bool IsEncryptedScript(std::string_view bytes) {
    return bytes.size() >= kMagicSize && std::memcmp(bytes.data(), kMagic, kMagicSize) == 0;
}

bool EncryptScript(std::string_view plain, std::string& out) {
    std::string key = CurrentKey();
    CBlowFish cipher;
    if (!cipher.SetKey(Bytes(key), key.size())) return false;
    uint8_t iv[kIvSize];
    if (!RandomBytes(iv, sizeof iv)) return false;
    std::string body(plain);
    size_t pad = CBlowFish::kBlockSize - body.size() % CBlowFish::kBlockSize;
    body.append(pad, static_cast<char>(pad));
    out.assign(kMagic, kMagicSize);
    out.push_back(static_cast<char>(kVersion));
    out.append(reinterpret_cast<const char*>(iv), sizeof iv);
    uint8_t chain[kIvSize];
    std::memcpy(chain, iv, sizeof chain);
    if (!cipher.EncryptCBC(chain, Bytes(body), body.size())) return false;
    out += body;
    uint8_t tag[kTagSize];
    ComputeTag(key, out, tag);
    out.append(reinterpret_cast<const char*>(tag), sizeof tag);
    return true;
}

bool DecryptScript(std::string_view file, std::string& plain) {
    constexpr size_t kFixed = kHeaderSize + kIvSize + kTagSize;
    if (!IsEncryptedScript(file) || file.size() < kFixed + CBlowFish::kBlockSize) return false;
    if (static_cast<uint8_t>(file[kMagicSize]) != kVersion) return false;
    size_t bodySize = file.size() - kFixed;
    if (bodySize % CBlowFish::kBlockSize != 0) return false;
    std::string key = CurrentKey();
    std::string_view sealed = file.substr(0, file.size() - kTagSize);
    uint8_t tag[kTagSize];
    ComputeTag(key, sealed, tag);
    if (!memeql_sec(tag, Bytes(file.substr(sealed.size())), kTagSize)) return false;
    CBlowFish cipher;
    if (!cipher.SetKey(Bytes(key), key.size())) return false;
    uint8_t chain[kIvSize];
    std::memcpy(chain, file.data() + kHeaderSize, sizeof chain);
    plain.assign(file.substr(kHeaderSize + kIvSize, bodySize));
    if (!cipher.DecryptCBC(chain, Bytes(plain), plain.size())) return false;
    return Unpad(plain);
}

bool SetScriptKey(const uint8_t* key, size_t length) {
    std::string next = (key && length) ? std::string(reinterpret_cast<const char*>(key), length)
                                       : std::string(kDefaultKey);
    CBlowFish check;
    if (!check.SetKey(Bytes(next), next.size())) return false;
    std::lock_guard<std::mutex> lock(KeyMutex());
    KeyStore() = std::move(next);
    return true;
}

}  // namespace ob
