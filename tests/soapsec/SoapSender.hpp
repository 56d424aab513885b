// The sending side as the SOAP tests use it: test keys, signing and encrypting.
#ifndef VQXML_TESTS_SOAPSEC_SOAPSENDER_HPP
#define VQXML_TESTS_SOAPSEC_SOAPSENDER_HPP

#include <string>

#include "soapsec/SoapFixture.hpp"

namespace soaptest {

struct Pki {
    std::string cert = testfiles::read(testfiles::dataPath("testpki/ee-rsa.crt.der"));
    std::string key = testfiles::read(testfiles::dataPath("testpki/ee-rsa.key.der"));
    std::string otherCert = testfiles::read(testfiles::dataPath("testpki/ee-rsa-b.crt.der"));
    std::string otherKey = testfiles::read(testfiles::dataPath("testpki/ee-rsa-b.key.der"));
    std::string kcdsaCert = testfiles::read(testfiles::dataPath("testpki/ee-kcdsa1024.crt.der"));
    std::string kcdsaKey = testfiles::read(testfiles::dataPath("testpki/ee-kcdsa1024.key.der"));
    // EC and DSA signers, under tests/data/dsig/ca.der.
    std::string ecCert = testfiles::read(testfiles::dataPath("dsig/signer-ec256.crt.der"));
    std::string ecKey = testfiles::read(testfiles::dataPath("dsig/signer-ec256.key.pk8.der"));
    std::string dsaCert = testfiles::read(testfiles::dataPath("dsig/signer-dsa2048.crt.der"));
    std::string dsaKey = testfiles::read(testfiles::dataPath("dsig/signer-dsa2048.key.pk8.der"));
};

// The digest selector that goes with signature selector alg: the signature's own
// hash for the SHA-2 signatures, SHA-1 for the others.
inline int digestFor(int alg) {
    switch (alg) {
    case 5: case 9: case 12: case 15: case 17: return 3;        // SHA-256
    case 6: case 16: return 4;                                  // SHA-224
    case 7: case 10: case 13: case 18: return 5;                // SHA-384
    case 8: case 11: case 14: case 19: return 6;                // SHA-512
    default: return 1;
    }
}

// Signs the Body with signature selector alg (digestFor's references) and SOAP
// SignedInfo canonicalization c14n, naming the signer by issuer and serial or
// carrying its certificate as a token; without a certificate, key is the HMAC secret.
inline std::string sign(const std::string& envelope, int alg, bool issuerSerial, std::string cert, std::string key,
                        int c14n = 0) {
    ScopedHandle h;
    std::string xml = envelope;
    EXPECT_EQ(VQTK_SOAPSEC_SetSOAPDocument(h, &xml[0], size(xml)), 0);
    EXPECT_EQ(VQTK_SOAPSEC_SignatureMethod(h, alg, c14n), 0);
    EXPECT_EQ(VQTK_SOAPSEC_createReference(h, nullptr, digestFor(alg), 3, nullptr), 0);
    if (issuerSerial) {
        EXPECT_EQ(VQTK_SOAPSEC_SetIssuerSerial(h), 0);
    }
    if (cert.empty()) {
        EXPECT_EQ(VQTK_SOAPSEC_SetHMACKey(h, bytes(key), static_cast<unsigned>(key.size())), 0);
    } else {
        EXPECT_EQ(VQTK_SOAPSEC_SetSigner(h, bytes(cert), size(cert), bytes(key), size(key)), 0)
            << apitest::errorText(h);
    }
    EXPECT_EQ(VQTK_SOAPSEC_Sign(h), 0) << apitest::errorText(h);
    return resultDocument(h);
}

// Encrypts the Body's content (or target, of encryption type 1 or 2) with
// symmetric selector symm for one recipient, or two when second is not empty,
// named by issuer and serial.
inline std::string encrypt(const std::string& envelope, int symm, int wrap, std::string recipient,
                           std::string second, const char* target = nullptr, int type = 1) {
    ScopedHandle h;
    std::string xml = envelope;
    std::string targetText = target != nullptr ? target : "";
    EXPECT_EQ(VQTK_SOAPSEC_SetSOAPDocument(h, &xml[0], size(xml)), 0);
    EXPECT_EQ(VQTK_SOAPSEC_SetSymmAlg(h, symm), 0);
    EXPECT_EQ(VQTK_SOAPSEC_EncryptElement(h, target != nullptr ? &targetText[0] : nullptr, type), 0);
    EXPECT_EQ(VQTK_SOAPSEC_SetIssuerSerial(h), 0);
    EXPECT_EQ(VQTK_SOAPSEC_EncryptKeyWrapKey(h, bytes(recipient), size(recipient), wrap), 0);
    if (!second.empty()) {
        EXPECT_EQ(VQTK_SOAPSEC_EncryptKeyWrapKey(h, bytes(second), size(second), wrap), 0);
    }
    EXPECT_EQ(VQTK_SOAPSEC_Encrypt(h), 0);
    return resultDocument(h);
}

// The message with the Body's "tea" changed after it was secured.
inline std::string tampered(std::string message) {
    message.replace(message.find(">tea<"), 5, ">tee<");
    return message;
}

}  // namespace soaptest

#endif
