// A verified WS-Security signature binds what it reports: the Envelope's own
// Body is signed (a signed Body moved elsewhere, a forged one in its place, is
// refused), GetSignedParts names what was signed, and the getters report only
// the certificate whose key verified.
#include <memory>

#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/x509.h>

#include "TestVectors.hpp"
#include "soapsec/SoapSender.hpp"

using namespace soaptest;
using testvectors::toBase64;

namespace {

const char kSoapNs[] = "{http://schemas.xmlsoap.org/soap/envelope/}";
const std::string kForgedBody =
    "<soap:Body><m:order xmlns:m=\"urn:test\"><m:item>gold</m:item><m:count>999</m:count></m:order></soap:Body>";

struct Outcome {
    int status = -1;
    std::string text;  // the plain envelope, or the error text
    std::string parts;
    std::string cert;  // GetSignCert after GetSignKeyInfo
};

Outcome process(std::string message) {
    ScopedHandle h;
    Outcome out;
    out.status = VQTK_SOAPSEC_SetSOAPSecXMLDocument(h, &message[0], size(message));
    if (out.status != 0)
        return out;
    int isSigned = 0;
    EXPECT_EQ(VQTK_SOAPSEC_GetSignKeyInfo(h, &isSigned), 0);
    unsigned char* cert = nullptr;
    int certLen = 0;
    EXPECT_EQ(VQTK_SOAPSEC_GetSignCert(h, &cert, &certLen), 0);
    out.cert = cert != nullptr ? std::string(reinterpret_cast<char*>(cert), static_cast<size_t>(certLen)) : "";
    out.status = VQTK_SOAPSEC_ProcessSOAP(h);
    char* parts = nullptr;
    EXPECT_EQ(VQTK_SOAPSEC_GetSignedParts(h, &parts), 0);
    out.parts = parts != nullptr ? parts : "(null)";
    out.text = out.status == 0 ? resultDocument(h) : apitest::errorText(h);
    return out;
}

// The RSA modulus of a DER certificate, base64, as a KeyValue writes it.
std::string modulusOf(const std::string& der) {
    const auto* p = reinterpret_cast<const unsigned char*>(der.data());
    std::unique_ptr<X509, void (*)(X509*)> cert(d2i_X509(nullptr, &p, static_cast<long>(der.size())), X509_free);
    BIGNUM* n = nullptr;
    EXPECT_EQ(EVP_PKEY_get_bn_param(X509_get0_pubkey(cert.get()), OSSL_PKEY_PARAM_RSA_N, &n), 1);
    std::string bytes(static_cast<size_t>(BN_num_bytes(n)), '\0');
    BN_bn2bin(n, reinterpret_cast<unsigned char*>(&bytes[0]));
    BN_free(n);
    return toBase64(bytes);
}

// Takes [from the first open .. the end of close] out of text and returns it.
std::string cut(std::string& text, const std::string& open, const std::string& close) {
    const size_t from = text.find(open);
    const size_t to = text.find(close, from);
    EXPECT_NE(to, std::string::npos) << open;
    if (to == std::string::npos)
        return "";
    const std::string piece = text.substr(from, to + close.size() - from);
    text.erase(from, piece.size());
    return piece;
}

void insertBefore(std::string& text, const std::string& anchor, const std::string& what) {
    const size_t at = text.find(anchor);
    EXPECT_NE(at, std::string::npos) << anchor;
    if (at != std::string::npos)
        text.insert(at, what);
}

// The signed Body put elsewhere (before anchor, wrapped in open/close) and a
// forged Body where it was.
std::string wrapped(std::string message, const std::string& anchor, const std::string& open = "",
                    const std::string& close = "") {
    const size_t at = message.find("<soap:Body");
    const std::string body = cut(message, "<soap:Body", "</soap:Body>");
    message.insert(at, kForgedBody);
    insertBefore(message, anchor, open + body + close);
    return message;
}

std::string signedWith(const std::string& envelope, const std::vector<const char*>& uris, const Pki& pki) {
    ScopedHandle h;
    std::string xml = envelope;
    EXPECT_EQ(VQTK_SOAPSEC_SetSOAPDocument(h, &xml[0], size(xml)), 0);
    EXPECT_EQ(VQTK_SOAPSEC_SignatureMethod(h, 5, 0), 0);
    for (const char* uri : uris) {
        std::string text = uri != nullptr ? uri : "";
        EXPECT_EQ(VQTK_SOAPSEC_createReference(h, uri != nullptr ? &text[0] : nullptr, 3, 3, nullptr), 0);
    }
    EXPECT_EQ(VQTK_SOAPSEC_SetSigner(h, bytes(pki.cert), size(pki.cert), bytes(pki.key), size(pki.key)), 0);
    EXPECT_EQ(VQTK_SOAPSEC_Sign(h), 0) << apitest::errorText(h);
    return resultDocument(h);
}

const std::string kStampedEnvelope =
    "<soap:Envelope xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\"><soap:Header>"
    "<m:stamp xmlns:m=\"urn:test\" Id=\"stamp\">2026-11-24</m:stamp></soap:Header>"
    "<soap:Body>" + kBodyContent + "</soap:Body></soap:Envelope>";

TEST(SoapSignatureBinding, TheEnvelopesOwnBodyMustBeSigned) {
    Pki pki;
    const std::string good = sign(kEnvelope, 5, false, pki.cert, pki.key);
    const struct {
        const char* name;
        std::string message;
    } refused[] = {
        {"signed Body moved into wsse:Security", wrapped(good, "</wsse:Security>")},
        {"signed Body moved into the Header", wrapped(good, "</soap:Header>")},
        {"signed Body moved into a ds:Object", wrapped(good, "</Signature>", "<Object>", "</Object>")},
        {"a forged Body before the signed one", wrapped(good, "</soap:Envelope>")},
        {"a header entry signed, the Body not", signedWith(kStampedEnvelope, {"#stamp"}, pki)},
    };
    for (const auto& c : refused) {
        const Outcome out = process(c.message);
        EXPECT_EQ(out.status, 11213) << c.name << ": " << out.text;
        EXPECT_EQ(out.text.find("gold"), std::string::npos) << c.name;
        EXPECT_EQ(out.parts, "") << c.name;
    }
    const std::string body = std::string("/") + kSoapNs + "Envelope/" + kSoapNs + "Body\n";
    Outcome out = process(good);
    ASSERT_EQ(out.status, 0) << out.text;
    EXPECT_EQ(out.parts, body);
    out = process(signedWith(kStampedEnvelope, {"#stamp", nullptr}, pki));
    ASSERT_EQ(out.status, 0) << out.text;
    EXPECT_EQ(out.parts, std::string("/") + kSoapNs + "Envelope/" + kSoapNs + "Header/{urn:test}stamp\n" + body);
}

TEST(SoapSignatureBinding, KeyInformationNamingAnotherCertificateIsRefused) {
    Pki pki;  // the signer is pki.otherCert; pki.cert is the victim named beside its key
    const std::string good = sign(kEnvelope, 2, false, pki.otherCert, pki.otherKey);
    const std::string victimData = "<X509Data><X509Certificate>" + toBase64(pki.cert) + "</X509Certificate></X509Data>";
    std::string keyValue = good;
    cut(keyValue, "<wsse:SecurityTokenReference", "</wsse:SecurityTokenReference>");
    insertBefore(keyValue, "</KeyInfo>",
                 "<KeyValue><RSAKeyValue><Modulus>" + modulusOf(pki.otherCert) +
                     "</Modulus><Exponent>AQAB</Exponent></RSAKeyValue></KeyValue>");
    std::string tokenThenVictim = good, victimThenToken = good, keyValueAndVictim = keyValue;
    insertBefore(tokenThenVictim, "</KeyInfo>", victimData);
    insertBefore(victimThenToken, "<wsse:SecurityTokenReference", victimData);
    insertBefore(keyValueAndVictim, "</KeyInfo>", victimData);
    for (const std::string& message : {tokenThenVictim, victimThenToken, keyValueAndVictim}) {
        const Outcome out = process(message);
        EXPECT_EQ(out.status, 11213) << out.text;
        EXPECT_TRUE(out.cert.empty()) << "no certificate is reported for key information that disagrees";
    }
    Outcome out = process(good);
    EXPECT_EQ(out.status, 0) << out.text;
    EXPECT_TRUE(out.cert == pki.otherCert);
    out = process(keyValue);
    EXPECT_EQ(out.status, 0) << out.text;
    EXPECT_TRUE(out.cert.empty()) << "a KeyValue carries no certificate";
}

}  // namespace
