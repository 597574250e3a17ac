// CBlowFish against the published Blowfish test vectors (ECB with 8-byte
// keys, keys of 1 to 24 bytes, and CBC), plus the class's own contract.
#include <orvobasic/CBlowFish.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::vector<uint8_t> Hex(const std::string& hex) {
    std::vector<uint8_t> bytes;
    for (size_t i = 0; i + 1 < hex.size(); i += 2) bytes.push_back(static_cast<uint8_t>(std::stoul(hex.substr(i, 2), nullptr, 16)));
    return bytes;
}

struct EcbVector {
    const char* key;
    const char* plain;
    const char* cipher;
};

const EcbVector kEcbVectors[] = {
    {"0000000000000000", "0000000000000000", "4EF997456198DD78"},
    {"FFFFFFFFFFFFFFFF", "FFFFFFFFFFFFFFFF", "51866FD5B85ECB8A"},
    {"3000000000000000", "1000000000000001", "7D856F9A613063F2"},
    {"1111111111111111", "1111111111111111", "2466DD878B963C9D"},
    {"0123456789ABCDEF", "1111111111111111", "61F9C3802281B096"},
    {"1111111111111111", "0123456789ABCDEF", "7D0CC630AFDA1EC7"},
    {"FEDCBA9876543210", "0123456789ABCDEF", "0ACEAB0FC6A0A28D"},
    {"7CA110454A1A6E57", "01A1D6D039776742", "59C68245EB05282B"},
    {"0131D9619DC1376E", "5CD54CA83DEF57DA", "B1B8CC0B250F09A0"},
    {"07A1133E4A0B2686", "0248D43806F67172", "1730E5778BEA1DA4"},
    {"3849674C2602319E", "51454B582DDF440A", "A25E7856CF2651EB"},
    {"04B915BA43FEB5B6", "42FD443059577FA2", "353882B109CE8F1A"},
    {"0113B970FD34F2CE", "059B5E0851CF143A", "48F4D0884C379918"},
    {"0170F175468FB5E6", "0756D8E0774761D2", "432193B78951FC98"},
    {"43297FAD38E373FE", "762514B829BF486A", "13F04154D69D1AE5"},
    {"07A7137045DA2A16", "3BDD119049372802", "2EEDDA93FFD39C79"},
    {"04689104C2FD3B2F", "26955F6835AF609A", "D887E0393C2DA6E3"},
    {"37D06BB516CB7546", "164D5E404F275232", "5F99D04F5B163969"},
    {"1F08260D1AC2465E", "6B056E18759F5CCA", "4A057A3B24D3977B"},
    {"584023641ABA6176", "004BD6EF09176062", "452031C1E4FADA8E"},
    {"025816164629B007", "480D39006EE762F2", "7555AE39F59B87BD"},
    {"49793EBC79B3258F", "437540C8698F3CFA", "53C55F9CB49FC019"},
    {"4FB05E1515AB73A7", "072D43A077075292", "7A8E7BFA937E89A3"},
    {"49E95D6D4CA229BF", "02FE55778117F12A", "CF9C5D7A4986ADB5"},
    {"018310DC409B26D6", "1D9D5C5018F728C2", "D1ABB290658BC778"},
    {"1C587F1C13924FEF", "305532286D6F295A", "55CB3774D13EF201"},
    {"0101010101010101", "0123456789ABCDEF", "FA34EC4847B268B2"},
    {"1F1F1F1F0E0E0E0E", "0123456789ABCDEF", "A790795108EA3CAE"},
    {"E0FEE0FEF1FEF1FE", "0123456789ABCDEF", "C39E072D9FAC631D"},
    {"0000000000000000", "FFFFFFFFFFFFFFFF", "014933E0CDAFF6E4"},
    {"FFFFFFFFFFFFFFFF", "0000000000000000", "F21E9A77B71C49BC"},
    {"0123456789ABCDEF", "0000000000000000", "245946885754369A"},
    {"FEDCBA9876543210", "FFFFFFFFFFFFFFFF", "6B5C5A9C5D9E0A5A"},
};

// FEDCBA9876543210 under the first 1, 2, ... 24 bytes of one long key.
const char kLongKey[] = "F0E1D2C3B4A5968778695A4B3C2D1E0F0011223344556677";
const char* const kKeyLengthCiphers[] = {
    "F9AD597C49DB005E", "E91D21C1D961A6D6", "E9C2B70A1BC65CF3", "BE1E639408640F05", "B39E44481BDB1E6E",
    "9457AA83B1928C0D", "8BB77032F960629D", "E87A244E2CC85E82", "15750E7A4F4EC577", "122BA70B3AB64AE0",
    "3A833C9AFFC537F6", "9409DA87A90F6BF2", "884F80625060B8B4", "1F85031C19E11968", "79D9373A714CA34F",
    "93142887EE3BE15C", "03429E838CE2D14B", "A4299E27469FF67B", "AFD5AED1C1BC96A8", "10851C0E3858DA9F",
    "E6F51ED79B9DB21F", "64A6E14AFD36B46F", "80C7D7D45A5479AD", "05044B62FA52D080",
};

TEST(CBlowFish, PublishedEcbVectorsBothWays) {
    for (const EcbVector& v : kEcbVectors) {
        std::vector<uint8_t> key = Hex(v.key), data = Hex(v.plain);
        CBlowFish cipher(key.data(), key.size());
        ASSERT_TRUE(cipher.HasKey()) << v.key;
        ASSERT_TRUE(cipher.EncryptECB(data.data(), data.size()));
        EXPECT_EQ(data, Hex(v.cipher)) << "key " << v.key << " plain " << v.plain;
        ASSERT_TRUE(cipher.DecryptECB(data.data(), data.size()));
        EXPECT_EQ(data, Hex(v.plain)) << "key " << v.key;
    }
}

TEST(CBlowFish, PublishedVectorsForEveryKeyLengthUpTo24) {
    std::vector<uint8_t> longKey = Hex(kLongKey);
    for (size_t length = 1; length <= 24; ++length) {
        CBlowFish cipher;
        ASSERT_TRUE(cipher.SetKey(longKey.data(), length)) << length;
        std::vector<uint8_t> data = Hex("FEDCBA9876543210");
        ASSERT_TRUE(cipher.EncryptECB(data.data(), data.size()));
        EXPECT_EQ(data, Hex(kKeyLengthCiphers[length - 1])) << "key length " << length;
    }
}

// The published CBC vector; done in two pieces to show that the IV carries on.
TEST(CBlowFish, PublishedCbcVectorAcrossTwoCalls) {
    std::vector<uint8_t> key = Hex("0123456789ABCDEFF0E1D2C3B4A59687");
    std::vector<uint8_t> plain = Hex("37363534333231204E6F77206973207468652074696D6520666F722000000000");
    std::vector<uint8_t> expected =
        Hex("6B77B4D63006DEE605B156E27403979358DEB9E7154616D959F1652BD5FF92CC");
    CBlowFish cipher(key.data(), key.size());
    std::vector<uint8_t> data = plain, iv = Hex("FEDCBA9876543210");
    ASSERT_TRUE(cipher.EncryptCBC(iv.data(), data.data(), 16));
    ASSERT_TRUE(cipher.EncryptCBC(iv.data(), data.data() + 16, 16));
    EXPECT_EQ(data, expected);
    iv = Hex("FEDCBA9876543210");
    ASSERT_TRUE(cipher.DecryptCBC(iv.data(), data.data(), data.size()));
    EXPECT_EQ(data, plain);
}

TEST(CBlowFish, RefusesBadKeysAndPartialBlocksWithoutTouchingData) {
    uint8_t key[57] = {1, 2, 3};
    CBlowFish cipher;
    EXPECT_FALSE(cipher.SetKey(key, 0));
    EXPECT_FALSE(cipher.SetKey(key, 57));
    EXPECT_FALSE(cipher.SetKey(nullptr, 8));
    EXPECT_FALSE(cipher.HasKey());
    uint8_t data[16] = {9, 9, 9};
    uint8_t iv[8] = {};
    EXPECT_FALSE(cipher.EncryptECB(data, 8));   // no key
    EXPECT_FALSE(cipher.EncryptCBC(iv, data, 8));
    ASSERT_TRUE(cipher.SetKey(key, 56));
    EXPECT_FALSE(cipher.EncryptECB(data, 12));
    EXPECT_FALSE(cipher.DecryptCBC(iv, data, 7));
    EXPECT_EQ(data[0], 9);
    EXPECT_TRUE(cipher.EncryptECB(data, 0));
    // A failed SetKey leaves no key behind, not the previous one.
    EXPECT_FALSE(cipher.SetKey(key, 0));
    EXPECT_FALSE(cipher.EncryptECB(data, 8));
}

TEST(CBlowFish, CopiesCarryTheKeySchedule) {
    std::vector<uint8_t> key = Hex("0123456789ABCDEF"), data = Hex("1111111111111111");
    CBlowFish original(key.data(), key.size());
    CBlowFish copy(original);
    CBlowFish assigned;
    assigned = original;
    original = CBlowFish();   // the copies do not share state with it
    ASSERT_TRUE(copy.EncryptECB(data.data(), 8));
    EXPECT_EQ(data, Hex("61F9C3802281B096"));
    ASSERT_TRUE(assigned.DecryptECB(data.data(), 8));
    EXPECT_EQ(data, Hex("1111111111111111"));
}

}  // namespace
