// SEED-CBC CipherValues the library writes decrypt with `openssl enc`, and what
// `openssl enc` writes decrypts in the library.
#include <cstdlib>
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>
#include <xercesc/util/XMLString.hpp>
#include <xsec/framework/XSECProvider.hpp>
#include <xsec/xenc/XENCCipher.hpp>

#include "XmlTestSupport.hpp"
#include "core/EngineLifecycle.hpp"
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
        char pattern[] = "/tmp/vqxml-seed-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        m_dir = pattern;
    }
    void TearDown() override { std::system(("rm -rf '" + m_dir + "'").c_str()); }

    std::string path(const char* name) const { return m_dir + "/" + name; }

    static void write(const std::string& file, const std::string& bytes) {
        std::ofstream(file, std::ios::binary) << bytes;
    }
    static std::string read(const std::string& file) {
        std::ifstream in(file, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }

    // Runs openssl enc in the given direction from file "in" to file "out".
    void openssl(bool encrypt, const Bytes& iv) const {
        std::string command = std::string("openssl enc ") + (encrypt ? "-e" : "-d") +
                              " -seed-cbc -provider legacy -provider default -K " + toHex(kKey) + " -iv " +
                              toHex(iv) + " -in '" + path("in") + "' -out '" + path("out") + "' 2>/dev/null";
        ASSERT_EQ(std::system(command.c_str()), 0) << command;
    }

    XSECCryptoSymmetricKey* seedKey() {
        XSECCryptoSymmetricKey* key = provider().keySymmetric(vqxml::kKeySeed);
        key->setKey(kKey.data(), unsigned(kKey.size()));
        return key;
    }

    std::string m_dir;
};

// Element texts of 3, 19 (a plaintext of exactly two blocks) and 35 characters.
const char* const kTexts[] = {"abc", "0123456789abcdefghi", "SEED &amp; 한글 - 0123456789abc"};

}  // namespace

TEST_F(SeedOpenSSLInterop, LibraryCipherValueDecryptsWithOpenSSL) {
    for (const char* text : kTexts) {
        const std::string element = std::string("<Data>") + text + "</Data>";
        Document doc = parse("<Doc>" + element + "</Doc>");
        XENCCipher* cipher = g_provider->newCipher(doc.get());
        cipher->setKey(seedKey());
        cipher->encryptElement(find(doc.get(), "Data"), vqxml::uri::kSeedCbc);
        g_provider->releaseCipher(cipher);

        char* value = XMLString::transcode(find(doc.get(), "CipherValue")->getTextContent());
        std::vector<std::uint8_t> framed;
        ASSERT_TRUE(vqxml::base64Decode(value, framed));
        XMLString::release(&value);
        ASSERT_GE(framed.size(), 32u);
        write(path("in"), std::string(framed.begin() + 16, framed.end()));
        openssl(false, Bytes(framed.begin(), framed.begin() + 16));
        EXPECT_EQ(read(path("out")), element);
    }
}

TEST_F(SeedOpenSSLInterop, OpenSSLCiphertextDecryptsInTheLibrary) {
    const Bytes iv = fromHex("268d66a735a81a816fbad9fa36162501");
    for (const char* text : kTexts) {
        const std::string element = std::string("<Data>") + text + "</Data>";
        write(path("in"), element);
        openssl(true, iv);
        std::string ciphertext = read(path("out"));
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
