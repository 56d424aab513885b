// VQTK_XMLAPI_DecryptPriKey and VQTK_XMLAPI_GetRandomFromPriKey through the C interface.
#include <gtest/gtest.h>

#include <cstring>

#include <openssl/rsa.h>

#include "ScopedHandle.hpp"
#include "toolkit/ToolkitTestSupport.hpp"

using namespace vqtktest;
using apitest::errorText;

namespace {

char kPassword[] = "vqxml-test-1234";

struct Decrypted {
    int status;
    unsigned char* key;
    int length;
};

Decrypted decrypt(void* h, ByteVector key, char* password = kPassword) {
    Decrypted d{0, reinterpret_cast<unsigned char*>(1), -7};
    d.status = VQTK_XMLAPI_DecryptPriKey(h, password, key.data(), static_cast<int>(key.size()),
                                         &d.key, &d.length);
    return d;
}

struct Random {
    int status;
    std::string base64;
};

Random randomOf(void* h, ByteVector key, char* password, ByteVector recipient = {}) {
    unsigned char* out = reinterpret_cast<unsigned char*>(1);
    const int status = VQTK_XMLAPI_GetRandomFromPriKey(
        h, password, key.data(), static_cast<int>(key.size()),
        recipient.empty() ? nullptr : recipient.data(), static_cast<int>(recipient.size()), &out);
    return {status, out != nullptr ? reinterpret_cast<char*>(out) : "(null)"};
}

}  // namespace

TEST(DecryptPriKey, HandsOutThePrivateKeyInfoWithAZeroByteAfterIt) {
    ScopedHandle h;
    const ByteVector expected = fixture("user_key_plain.der");
    for (const char* name : {"user_key_seedsha1.der", "user_key_pbes2_seed.der"}) {
        const Decrypted d = decrypt(h, fixture(name));
        ASSERT_EQ(d.status, VQXML_OK) << name << ": " << errorText(h);
        ASSERT_EQ(d.length, static_cast<int>(expected.size()));
        EXPECT_EQ(ByteVector(d.key, d.key + d.length), expected);
        EXPECT_EQ(d.key[d.length], 0);
    }
}

TEST(DecryptPriKey, AWrongPasswordGives12011AndTheLastGoodKeyOrNull) {
    ScopedHandle h;
    char wrong[] = "wrong";
    Decrypted d = decrypt(h, fixture("user_key_seedsha1.der"), wrong);
    EXPECT_EQ(d.status, VQXML_ERR_UNKNOWN);
    EXPECT_EQ(d.key, nullptr);
    EXPECT_EQ(d.length, -7);  // written on success only
    EXPECT_EQ(errorText(h).rfind("decryptPriKey > Wrong password", 0), 0u) << errorText(h);

    const Decrypted good = decrypt(h, fixture("openssl_aes256.der"));
    ASSERT_EQ(good.status, VQXML_OK);
    d = decrypt(h, fixture("openssl_aes256.der"), wrong);
    EXPECT_EQ(d.status, VQXML_ERR_UNKNOWN);
    EXPECT_EQ(d.key, good.key);
}

// Null out pointers are refused before anything else (HandleLifecycle.EveryNullOutPointerIsRefused).
TEST(DecryptPriKey, NullOrEmptyInputsReachTheToolkitAndComeBackAs12011) {
    ScopedHandle h;
    unsigned char* out = nullptr;
    int length = 0;
    char empty[] = "";
    EXPECT_EQ(VQTK_XMLAPI_DecryptPriKey(h, kPassword, nullptr, 10, &out, &length), VQXML_ERR_UNKNOWN);
    EXPECT_EQ(errorText(h), "decryptPriKey > The encrypted key is empty");
    ByteVector key = fixture("user_key_seedsha1.der");
    EXPECT_EQ(decrypt(h, key, nullptr).status, VQXML_ERR_UNKNOWN);
    EXPECT_EQ(errorText(h), "decryptPriKey > No password was given");
    EXPECT_EQ(decrypt(h, key, empty).status, VQXML_ERR_UNKNOWN);
    EXPECT_EQ(errorText(h), "decryptPriKey > The password is empty");
    EXPECT_EQ(VQTK_XMLAPI_DecryptPriKey(h, kPassword, key.data(), -1, &out, &length),
              VQXML_ERR_UNKNOWN);
    EXPECT_EQ(decrypt(h, fixture("bad_iterations_huge.der")).status, VQXML_ERR_UNKNOWN);
    EXPECT_NE(errorText(h).find("iteration count"), std::string::npos);
}

TEST(GetRandomFromPriKey, GivesTheRandomAsBase64FromAnEncryptedOrPlainKey) {
    ScopedHandle h;
    const ByteVector random = fixture("user_random.bin");
    const Random fromEncrypted = randomOf(h, fixture("user_key_seedsha1.der"), kPassword);
    ASSERT_EQ(fromEncrypted.status, VQXML_OK) << errorText(h);
    EXPECT_EQ(fromBase64(fromEncrypted.base64), random);

    // The plain key that DecryptPriKey hands out goes straight on without a password.
    const Decrypted d = decrypt(h, fixture("user_key_pbes2_seed.der"));
    ASSERT_EQ(d.status, VQXML_OK);
    const Random fromPlain = randomOf(h, ByteVector(d.key, d.key + d.length), nullptr);
    ASSERT_EQ(fromPlain.status, VQXML_OK) << errorText(h);
    EXPECT_EQ(fromPlain.base64, fromEncrypted.base64);

    const Random kcdsa = randomOf(h, fixture("kcdsa_key_seedsha1.der"), kPassword);
    ASSERT_EQ(kcdsa.status, VQXML_OK) << errorText(h);
    EXPECT_EQ(fromBase64(kcdsa.base64), fixture("kcdsa_random.bin"));

    // A recipient length of zero or less means no recipient.
    ByteVector key = fixture("user_key_plain.der"), cert = fixture("leaf.der");
    for (int length : {0, -3}) {
        unsigned char* out = nullptr;
        ASSERT_EQ(VQTK_XMLAPI_GetRandomFromPriKey(h, nullptr, key.data(), static_cast<int>(key.size()), cert.data(),
                                                  length, &out),
                  VQXML_OK);
        EXPECT_EQ(fromBase64(reinterpret_cast<char*>(out)), fixture("user_random.bin"));
    }
}

TEST(GetRandomFromPriKey, EncryptsTheRandomForTheRecipientsCertificate) {
    ScopedHandle h;
    const Random sent = randomOf(h, fixture("user_key_seedsha1.der"), kPassword, fixture("leaf.der"));
    ASSERT_EQ(sent.status, VQXML_OK) << errorText(h);
    const PrivateKey recipient = loadPemKey("leaf.key");
    ASSERT_TRUE(recipient);
    EXPECT_EQ(rsaDecrypt(recipient.get(), RSA_PKCS1_PADDING, fromBase64(sent.base64)),
              fixture("user_random.bin"));
}

TEST(GetRandomFromPriKey, RefusalsCarryTheToolkitsReasonAndKeepTheEarlierResult) {
    ScopedHandle h;
    const Random first = randomOf(h, fixture("user_key_plain.der"), nullptr);
    ASSERT_EQ(first.status, VQXML_OK);

    Random r = randomOf(h, fixture("openssl_seed.der"), kPassword);
    EXPECT_EQ(r.status, VQXML_ERR_UNKNOWN);
    EXPECT_EQ(r.base64, first.base64);
    EXPECT_EQ(errorText(h), "getRandomFromPriKey > The private key carries no identity-verification "
                         "random (attribute randomNum)");

    r = randomOf(h, fixture("user_key_seedsha1.der"), nullptr);
    EXPECT_EQ(r.status, VQXML_ERR_UNKNOWN);
    EXPECT_EQ(errorText(h), "getRandomFromPriKey > The private key is still encrypted: give its password");

    char wrong[] = "wrong";
    EXPECT_EQ(randomOf(h, fixture("user_key_seedsha1.der"), wrong).status, VQXML_ERR_UNKNOWN);
    EXPECT_EQ(errorText(h).rfind("getRandomFromPriKey > Wrong password", 0), 0u) << errorText(h);

    EXPECT_EQ(randomOf(h, fixture("user_key_plain.der"), nullptr, fixture("kcdsa_leaf.der")).status,
              VQXML_ERR_UNKNOWN);
    EXPECT_NE(errorText(h).find("not RSA"), std::string::npos) << errorText(h);
}
