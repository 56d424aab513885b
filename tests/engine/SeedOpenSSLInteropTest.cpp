// What `openssl enc` writes with SEED-CBC decrypts in the library's handler (the
// other way, the library's CipherValue under openssl, runs in xenc's peer tests).
#include <cstdio>

#include <gtest/gtest.h>
#include <xsec/framework/XSECProvider.hpp>
#include <xsec/xenc/XENCCipher.hpp>

#include "TestFiles.hpp"
#include "XmlTestSupport.hpp"
#include "engine/EngineLifecycle.hpp"
#include "engine/AlgorithmURIs.hpp"
#include "engine/Base64.hpp"
#include "engine/VQTKCryptoSymmetricKey.hpp"

XERCES_CPP_NAMESPACE_USE
using namespace vqxml::test;

namespace {

const Bytes kKey = fromHex("88e34f8f081779f1e9f394370ad40589");

class SeedOpenSSLInterop : public EngineTest {
protected:
    void SetUp() override {
        if (!testfiles::haveProgram("openssl"))
            GTEST_SKIP() << "openssl is not installed";
    }
    void TearDown() override {
        std::remove(m_in.c_str());
        std::remove(m_out.c_str());
    }

    // openssl enc's SEED-CBC ciphertext of plain under kKey and iv.
    std::string opensslEncrypt(const std::string& plain, const Bytes& iv) const {
        testfiles::write(m_in, plain);
        const std::string command = "openssl enc -e -seed-cbc -provider legacy -provider default -K " + toHex(kKey) +
                                    " -iv " + toHex(iv) + " -in '" + m_in + "' -out '" + m_out + "'";
        EXPECT_EQ(testfiles::run(command), 0) << command;
        return testfiles::read(m_out);
    }

    XSECCryptoSymmetricKey* seedKey() {
        XSECCryptoSymmetricKey* key = provider().keySymmetric(vqxml::kKeySeed);
        key->setKey(kKey.data(), unsigned(kKey.size()));
        return key;
    }

    const std::string m_in = testfiles::scratch("seed-in");
    const std::string m_out = testfiles::scratch("seed-out");
};

// Element texts of 3, 19 (a plaintext of exactly two blocks) and 35 characters.
const char* const kTexts[] = {"abc", "0123456789abcdefghi", "SEED &amp; 한글 - 0123456789abc"};

}  // namespace

TEST_F(SeedOpenSSLInterop, OpenSSLCiphertextDecryptsInTheLibrary) {
    const Bytes iv = fromHex("268d66a735a81a816fbad9fa36162501");
    for (const char* text : kTexts) {
        const std::string element = std::string("<Data>") + text + "</Data>";
        const std::string ciphertext = opensslEncrypt(element, iv);
        Bytes framed = iv;
        framed.insert(framed.end(), ciphertext.begin(), ciphertext.end());
        std::u16string uri(vqxml::uri::kSeedCbc);
        Document doc = parse(
            "<Doc><EncryptedData xmlns=\"http://www.w3.org/2001/04/xmlenc#\" "
            "Type=\"http://www.w3.org/2001/04/xmlenc#Element\"><EncryptionMethod Algorithm=\"" +
            std::string(uri.begin(), uri.end()) + "\"/><CipherData><CipherValue>" +
            vqxml::base64Text(framed) + "</CipherValue></CipherData></EncryptedData></Doc>");
        XENCCipher* cipher = g_provider->newCipher(doc.get());
        cipher->setKey(seedKey());
        cipher->decryptElement(find(doc.get(), "EncryptedData"));
        g_provider->releaseCipher(cipher);
        EXPECT_EQ(serialise(doc.get()), "<Doc>" + element + "</Doc>");
    }
}
