// Signature values that must never verify under the XML Signature 1.1
// algorithms: each SignedInfo is signed again here, past the library, with what
// an attacker or a careless peer would put in, and must be refused with its
// reason (or, for a MAC cut to exactly half the hash, accepted).
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <regex>
#include <string>
#include <vector>

#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>
#include <xsec/framework/XSECException.hpp>

#include "SignatureFixture.hpp"
#include "core/ParseLimits.hpp"
#include "dsig/SignedInfoCanonicalization.hpp"
#include "engine/Base64.hpp"

using namespace dsigtest;

namespace {

using Bytes = std::vector<unsigned char>;

const std::string kDocument = "<r><a>1100000</a></r>";

// Signed by the signer of signerFile's kind, or with the HMAC key for nullptr.
std::string signedBy(int selector, const char* signer) {
    Signing s;
    s.method = selector;
    s.c14n = 1;
    s.cert = signer != nullptr ? testfiles::read(signerFile(signer, "crt.der")) : "";
    s.key = signer != nullptr ? testfiles::read(signerFile(signer, "key.pk8.der")) : hmacKey();
    return signedText(kDocument, s);
}

// The canonical SignedInfo of signed text, as the library checks it.
Bytes canonicalSignedInfo(const std::string& text) {
    XERCES_CPP_NAMESPACE::DOMDocument* doc = nullptr;
    EXPECT_EQ(vqxml::parseBounded(text.data(), text.size(), &doc), 0);
    auto* signedInfo = doc->getDocumentElement()->getElementsByTagNameNS(u"*", u"SignedInfo")->item(0);
    const auto* element = static_cast<const XERCES_CPP_NAMESPACE::DOMElement*>(signedInfo);
    const std::string bytes = vqxml::canonicalForm(element, *vqxml::signedInfoCanonicalization(element));
    doc->release();
    return Bytes(bytes.begin(), bytes.end());
}

std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> privateKey(const std::string& signer) {
    const std::string pem = testfiles::read(signerFile(signer, "key.pem"));
    BIO* bio = BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size()));
    EVP_PKEY* key = PEM_read_bio_PrivateKey(bio, nullptr, nullptr, nullptr);
    BIO_free(bio);
    return {key, &EVP_PKEY_free};
}

// A DER signature (ECDSA, DSA) or PSS signature with saltLength over data.
Bytes evpSign(const std::string& signer, const EVP_MD* md, const Bytes& data, int saltLength = 0) {
    auto key = privateKey(signer);
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> ctx(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    EVP_PKEY_CTX* pctx = nullptr;
    EXPECT_EQ(EVP_DigestSignInit(ctx.get(), &pctx, md, nullptr, key.get()), 1);
    if (saltLength != 0) {
        EVP_PKEY_CTX_set_rsa_padding(pctx, RSA_PKCS1_PSS_PADDING);
        EVP_PKEY_CTX_set_rsa_pss_saltlen(pctx, saltLength);
    }
    size_t len = 0;
    EVP_DigestSign(ctx.get(), nullptr, &len, data.data(), data.size());
    Bytes out(len);
    EXPECT_EQ(EVP_DigestSign(ctx.get(), out.data(), &len, data.data(), data.size()), 1);
    out.resize(len);
    return out;
}

// text with the content of its first element named name (any prefix) replaced.
std::string withContent(std::string text, const std::string& name, const std::string& content) {
    std::smatch m;
    if (!std::regex_search(text, m, std::regex("<(\\w+:)?" + name + ">([^<]*)")))
        return text;
    return text.replace(static_cast<size_t>(m.position(2)), static_cast<size_t>(m.length(2)), content);
}

std::string withSignatureValue(const std::string& text, const Bytes& value) {
    return withContent(text, "SignatureValue", vqxml::base64Text(value));
}

Bytes signatureValue(const std::string& text) {
    std::smatch m;
    EXPECT_TRUE(std::regex_search(text, m, std::regex("SignatureValue>([^<]*)<")));
    std::string b64;
    for (char c : m[1].str())
        if (c != '\n' && c != '\r')
            b64 += c;
    Bytes out;
    EXPECT_TRUE(vqxml::base64Decode(b64.c_str(), out));
    return out;
}

// r||s with each half one zero byte longer: the same numbers, another length.
Bytes padded(const Bytes& rs) {
    const size_t n = rs.size() / 2;
    Bytes out{0};
    out.insert(out.end(), rs.begin(), rs.begin() + static_cast<std::ptrdiff_t>(n));
    out.push_back(0);
    out.insert(out.end(), rs.begin() + static_cast<std::ptrdiff_t>(n), rs.end());
    return out;
}

std::string withHmacLength(const std::string& text, int bits, const EVP_MD* md) {
    std::string out = std::regex_replace(text, std::regex("(<(\\w+:)?SignatureMethod [^>]*[^/])/>"),
                                         "$1><ds:HMACOutputLength xmlns:ds=\"http://www.w3.org/2000/09/xmldsig#\">" +
                                             std::to_string(bits) + "</ds:HMACOutputLength></SignatureMethod>");
    const Bytes data = canonicalSignedInfo(out);
    Bytes mac(EVP_MAX_MD_SIZE);
    unsigned int len = 0;
    HMAC(md, hmacKey().data(), static_cast<int>(hmacKey().size()), data.data(), data.size(), mac.data(), &len);
    mac.resize(static_cast<size_t>(bits / 8));
    return withSignatureValue(out, mac);
}

struct Attack {
    const char* name;
    int selector;
    const char* signer;  // signerFile's kind ("" the RSA signer); nullptr for HMAC
    std::function<std::string(const std::string&)> forge;
    int status;
    const char* reason;  // part of the error text
};

TEST(SignatureAttacks, RefusedWithTheirReason) {
    ScopedHandle engines;  // keeps Xerces running between the calls below
    const char* const kRs = "r||s, each at most as long as the key's group order";
    const Attack kAttacks[] = {
        {"ecdsa r||s padded with zeros", 12, "ec256", [](const std::string& t) {
             return withSignatureValue(t, padded(signatureValue(t)));
         }, XSECException::SigVfyError, kRs},
        {"ecdsa r||s cut short", 13, "ec384", [](const std::string& t) {
             Bytes v = signatureValue(t);
             v.pop_back();
             return withSignatureValue(t, v);
         }, XSECException::SigVfyError, kRs},
        {"ecdsa DER instead of r||s", 14, "ec521", [](const std::string& t) {
             return withSignatureValue(t, evpSign("ec521", EVP_sha512(), canonicalSignedInfo(t)));
         }, XSECException::SigVfyError, kRs},
        {"ecdsa key of another curve in KeyInfo", 12, "ec256", [](const std::string& t) {
             const std::string der = testfiles::read(signerFile("ec384", "crt.der"));
             const std::string other = vqxml::base64Text(Bytes(der.begin(), der.end()));
             return withContent(t, "X509Certificate", other);
         }, 11213, "Validation of <SignedInfo> failed"},
        {"dsa r||s padded with zeros", 15, "dsa2048", [](const std::string& t) {
             return withSignatureValue(t, padded(signatureValue(t)));
         }, XSECException::SigVfyError, kRs},
        {"rsa-pss with a 20-byte salt", 9, "", [](const std::string& t) {
             return withSignatureValue(t, evpSign("", EVP_sha256(), canonicalSignedInfo(t), 20));
         }, XSECException::SigVfyError, "salt is not as long as the hash"},
        {"rsa-pss value of PKCS #1 v1.5", 10, "", [](const std::string& t) {
             return withSignatureValue(t, evpSign("", EVP_sha384(), canonicalSignedInfo(t)));
         }, 11213, "Validation of <SignedInfo> failed"},
        {"hmac-sha512 cut below half", 19, nullptr, [](const std::string& t) { return withHmacLength(t, 128, EVP_sha512()); },
         XSECException::AlgorithmMapperError, "HMACOutputLength"},
        {"hmac-sha256 cut below 80 bits", 17, nullptr, [](const std::string& t) { return withHmacLength(t, 72, EVP_sha256()); },
         XSECException::SigVfyError, "HMACOutputLength is unsafe"},
        {"hmac-sha224 cut to half: accepted", 16, nullptr, [](const std::string& t) { return withHmacLength(t, 112, EVP_sha224()); },
         0, ""},
    };
    for (const Attack& a : kAttacks) {
        const bool hmac = a.signer == nullptr;
        const std::string original = signedBy(a.selector, a.signer);
        std::string why;
        ASSERT_EQ(verify(original, &why, hmac ? hmacKey() : ""), 0) << a.name << ": " << why;
        const std::string forged = a.forge(original);
        ASSERT_NE(forged, original) << a.name;
        EXPECT_EQ(verify(forged, &why, hmac ? hmacKey() : ""), a.status) << a.name << ": " << why;
        if (a.status != 0) {
            EXPECT_NE(why.find(a.reason), std::string::npos) << a.name << ": " << why;
        }
    }
}

// The public point of an EC signer's certificate, uncompressed.
std::string ecPoint(const std::string& kind) {
    const std::string der = testfiles::read(signerFile(kind, "crt.der"));
    const auto* p = reinterpret_cast<const unsigned char*>(der.data());
    std::unique_ptr<X509, decltype(&X509_free)> cert(d2i_X509(nullptr, &p, static_cast<long>(der.size())), &X509_free);
    Bytes point(256);
    size_t len = 0;
    EXPECT_EQ(EVP_PKEY_get_octet_string_param(X509_get0_pubkey(cert.get()), OSSL_PKEY_PARAM_ENCODED_PUBLIC_KEY,
                                              point.data(), point.size(), &len),
              1);
    point.resize(len);
    return vqxml::base64Text(point);
}

// The signer's key as a dsig11:ECKeyValue with a NamedCurve in place of its
// certificate; the key of another curve under that name, or that curve's name,
// is refused.
TEST(SignatureAttacks, EcKeyValueWithANamedCurve) {
    ScopedHandle engines;
    const std::string p256 = "urn:oid:1.2.840.10045.3.1.7", p384 = "urn:oid:1.3.132.0.34";
    const std::string original = signedBy(12, "ec256");
    const auto withKeyValue = [&](const std::string& curve, const std::string& point) {
        return std::regex_replace(original, std::regex("<(\\w+:)?X509Data>[^]*</(\\w+:)?X509Data>"),
                                  "<KeyValue><dsig11:ECKeyValue xmlns:dsig11=\"http://www.w3.org/2009/xmldsig11#\">"
                                  "<dsig11:NamedCurve URI=\"" + curve + "\"/><dsig11:PublicKey>" + point +
                                  "</dsig11:PublicKey></dsig11:ECKeyValue></KeyValue>");
    };
    std::string why;
    const std::string keyValue = withKeyValue(p256, ecPoint("ec256"));
    ASSERT_EQ(keyValue.find("X509"), std::string::npos) << keyValue;
    EXPECT_EQ(verify(keyValue, &why), 0) << why;
    EXPECT_EQ(verify(withKeyValue(p384, ecPoint("ec384")), &why), 11213) << why;
    EXPECT_NE(verify(withKeyValue(p384, ecPoint("ec256")), &why), 0) << why;
    EXPECT_NE(verify(withKeyValue(p256, ecPoint("ec384")), &why), 0) << why;
}

}  // namespace
