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

// IV and Triple DES CBC ciphertext of plain, base64: a CipherValue.
std::string cipherValue(const std::string& plain) {
    const unsigned char iv[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    std::string out(reinterpret_cast<const char*>(iv), sizeof iv);
    out.resize(sizeof iv + plain.size() + 8);
    EVP_CIPHER_CTX* ctx = EVP_CIPHER_CTX_new();
    int n = 0, last = 0;
    EVP_EncryptInit_ex(ctx, EVP_des_ede3_cbc(), nullptr, reinterpret_cast<const unsigned char*>(kSessionKey.data()),
                       iv);
    EVP_EncryptUpdate(ctx, reinterpret_cast<unsigned char*>(&out[sizeof iv]), &n,
                      reinterpret_cast<const unsigned char*>(plain.data()), static_cast<int>(plain.size()));
    EVP_EncryptFinal_ex(ctx, reinterpret_cast<unsigned char*>(&out[sizeof iv + n]), &last);
    EVP_CIPHER_CTX_free(ctx);
    out.resize(sizeof iv + n + last);
    std::string text(4 * ((out.size() + 2) / 3) + 1, '\0');
    text.resize(EVP_EncodeBlock(reinterpret_cast<unsigned char*>(&text[0]),
                                reinterpret_cast<const unsigned char*>(out.data()), static_cast<int>(out.size())));
    return text;
}

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
    return "<Root><xenc:EncryptedData xmlns:xenc=\"http://www.w3.org/2001/04/xmlenc#\" "
           "Type=\"http://www.w3.org/2001/04/xmlenc#Element\"><xenc:EncryptionMethod "
           "Algorithm=\"http://www.w3.org/2001/04/xmlenc#tripledes-cbc\"/><xenc:CipherData><xenc:CipherValue>" +
           cipherValue(plain) + "</xenc:CipherValue></xenc:CipherData></xenc:EncryptedData></Root>";
}

int decryptWithSessionKey(void* h, const std::string& text) {
    int rc = VQTK_XMLENC_SetEncXMLDocument(h, chars(text), size(text));
    if (rc != 0)
        return rc;
    VQTK_XMLENC_GetEncKeyInfo(h);  // no EncryptedKey: the key comes from the caller
    rc = VQTK_XMLENC_SetSymmKey(h, bytes(kSessionKey), size(kSessionKey), 1);
    return rc != 0 ? rc : VQTK_XMLENC_Decrypt(h);
}

TEST(DecryptedShape, ContentReachingTheBoundDecrypts) {
    ScopedHandle h;
    // Root is level 1, so the decrypted element may nest one level less.
    EXPECT_EQ(decryptWithSessionKey(h, encryptedElement(nested(vqxml::kMaxElementDepth - 1))), 0) << errorText(h);
    EXPECT_NE(resultDocument(h).find("<Root><e a=\"1\"><e a=\"1\">"), std::string::npos);
}

// Content over a bound fails like any ciphertext that does not decrypt to
// content: what it holds is not told.
TEST(DecryptedShape, ContentOverABoundIsRefusedAndTheHandleStaysUsable) {
    std::string wide = "<e";
    for (std::size_t i = 0; i <= vqxml::kMaxAttributesPerElement; ++i)
        wide += " a" + std::to_string(i) + "=\"\"";
    wide += "/>";
    ScopedHandle h;
    for (const std::string& content : {nested(vqxml::kMaxElementDepth), nested(100000), wide}) {
        EXPECT_EQ(decryptWithSessionKey(h, encryptedElement(content)), 46);
        EXPECT_NE(errorText(h).find("does not decrypt to well-formed content"), std::string::npos) << errorText(h);
    }
    EXPECT_EQ(decryptWithSessionKey(h, encryptedElement("<ok/>")), 0) << errorText(h);
}

}  // namespace
