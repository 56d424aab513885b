// Decrypted content goes through the same bounds as a loaded document: a sender
// who encrypts a deeply nested element gets the parse status, not a crash in
// the engine's own parser.
#include <gtest/gtest.h>

#include <openssl/evp.h>

#include <string>

#include "XencFixture.hpp"
#include "core/ParseLimits.hpp"

using namespace xenctest;

namespace {

const std::string kSessionKey = "0123456789abcdefFEDCBA98";  // Triple DES

std::string nested(std::size_t levels) {
    std::string text;
    for (std::size_t i = 0; i < levels; ++i)
        text += "<e a=\"1\">";
    for (std::size_t i = 0; i < levels; ++i)
        text += "</e>";
    return text;
}

// A document whose one element child is plain, encrypted with the session key.
std::string encryptedElement(const std::string& plain) {
    const std::string pad(8 - plain.size() % 8, char(8 - plain.size() % 8));
    return "<Root><xenc:EncryptedData xmlns:xenc=\"http://www.w3.org/2001/04/xmlenc#\" "
           "Type=\"http://www.w3.org/2001/04/xmlenc#Element\"><xenc:EncryptionMethod "
           "Algorithm=\"http://www.w3.org/2001/04/xmlenc#tripledes-cbc\"/><xenc:CipherData><xenc:CipherValue>" +
           cbcCipherValue(EVP_des_ede3_cbc(), kSessionKey, plain + pad) +
           "</xenc:CipherValue></xenc:CipherData></xenc:EncryptedData></Root>";
}

int decryptWithSessionKey(void* h, const std::string& text) {
    int rc = VQTK_XMLENC_SetEncXMLDocument(h, chars(text), size(text));
    if (rc != 0)
        return rc;
    VQTK_XMLENC_GetEncKeyInfo(h);  // no EncryptedKey: the key comes from the caller
    rc = VQTK_XMLENC_SetSymmKey(h, bytes(kSessionKey), size(kSessionKey), 1);
    return rc != 0 ? rc : VQTK_XMLENC_Decrypt(h);
}

// Content at the bounds decrypts; content over one fails like any ciphertext
// that does not decrypt to content: what it holds is not told, and the handle
// stays usable.
TEST(DecryptedShape, ContentOverABoundIsRefused) {
    ScopedHandle h;
    // Root is level 1, so the decrypted element may nest one level less.
    EXPECT_EQ(decryptWithSessionKey(h, encryptedElement(nested(vqxml::kMaxElementDepth - 1))), 0) << errorText(h);
    EXPECT_NE(resultDocument(h).find("<Root><e a=\"1\"><e a=\"1\">"), std::string::npos);
    std::string wide = "<e";
    for (std::size_t i = 0; i <= vqxml::kMaxAttributesPerElement; ++i)
        wide += " a" + std::to_string(i) + "=\"\"";
    wide += "/>";
    for (const std::string& content : {nested(vqxml::kMaxElementDepth), nested(100000), wide}) {
        EXPECT_EQ(decryptWithSessionKey(h, encryptedElement(content)), 46);
        EXPECT_NE(errorText(h).find("does not decrypt to well-formed content"), std::string::npos) << errorText(h);
    }
    EXPECT_EQ(decryptWithSessionKey(h, encryptedElement("<ok/>")), 0) << errorText(h);
}

}  // namespace
