#include "stress/Workload.hpp"

#include <functional>
#include <initializer_list>
#include <utility>

#include "TestFiles.hpp"
#include "dsig/SignatureFixture.hpp"
#include "vqxml/vqxml.h"

namespace stress {
namespace {

using dsigtest::bytes;
using dsigtest::chars;
using dsigtest::errorText;
using dsigtest::resultDocument;

constexpr int kSignatureDoesNotVerify = 11213;

const char kEnvelope[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
    "<soap:Envelope xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\"><soap:Header/>"
    "<soap:Body><m:order xmlns:m=\"urn:test\"><m:item>tea</m:item><m:count>3</m:count></m:order></soap:Body>"
    "</soap:Envelope>";
const char kPlainOrder[] = "<m:item>tea</m:item><m:count>3</m:count>";

const char kSmallInvoice[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<Invoice xmlns=\"urn:example:invoice\"><Head>세금계산서 2026-0001</Head>"
    "<Amount currency=\"KRW\">1100000</Amount><Note>비고</Note></Invoice>";

int size(const std::string& s) {
    return static_cast<int>(s.size());
}

KeyPair pkiPair(const std::string& prefix) {
    return {testfiles::read(testfiles::dataPath("testpki/" + prefix + ".crt.der")),
            testfiles::read(testfiles::dataPath("testpki/" + prefix + ".key.der"))};
}

using Step = std::pair<const char*, std::function<int()>>;

// Runs the steps in order on handle h; "" if all return 0, else the first
// failing step, its status and the handle's error text.
std::string run(void* h, std::initializer_list<Step> steps) {
    for (const Step& step : steps) {
        const int rc = step.second();
        if (rc != 0)
            return std::string(step.first) + " returned " + std::to_string(rc) + ": " + errorText(h);
    }
    return "";
}

// text with the first occurrence of from replaced by to ("" if from is missing).
std::string replaced(std::string text, const std::string& from, const std::string& to) {
    const size_t at = text.find(from);
    if (at == std::string::npos)
        return "";
    return text.replace(at, from.size(), to);
}

// text with the first character of the first CipherValue changed: in an encrypted
// document that is the wrapped session key.
std::string withChangedWrappedKey(std::string text) {
    const size_t at = text.find("CipherValue>");
    if (at == std::string::npos)
        return "";
    char& c = text[at + 12];
    c = c == 'A' ? 'B' : 'A';
    return text;
}

std::string fromRoot(const std::string& text, const char* root) {
    const size_t at = text.find(root);
    return at == std::string::npos ? text : text.substr(at);
}

int verifyOn(void* h, std::string& signedText) {
    const int rc = VQTK_XMLDSIG_SetSignXMLDocument(h, chars(signedText), size(signedText));
    return rc != 0 ? rc : VQTK_XMLDSIG_Verify(h);
}

// Walks the message's encrypted keys, as a receiver does, and unwraps the first
// one read (the key information of the signature may come first).
int unwrapSessionKey(void* h, const KeyPair& recipient) {
    int rc = 10502;
    for (int walked = 0; walked < 4 && rc == 10502; ++walked) {
        int isEncrypted = 0;
        if (const int read = VQTK_SOAPSEC_GetEncKeyInfo(h, &isEncrypted); read != 0)
            return read;
        rc = VQTK_SOAPSEC_DecryptKeyWrapKey(h, bytes(recipient.cert), size(recipient.cert), bytes(recipient.key),
                                            size(recipient.key));
    }
    return rc;
}

}  // namespace

const KeyPair& rsaSigner() {
    static const KeyPair pair = pkiPair("ee-rsa");
    return pair;
}

const KeyPair& kcdsaSigner() {
    static const KeyPair pair = pkiPair("ee-kcdsa1024");
    return pair;
}

const KeyPair& rsaRecipient() {
    static const KeyPair pair = pkiPair("ee-rsa-b");
    return pair;
}

const std::string& taxInvoice() {
    return dsigtest::invoice();
}

Workload::Workload() {
    renewHandles();
}

void Workload::renewHandles() {
    sender_.reset();
    receiver_.reset();
    sender_ = std::make_unique<ScopedHandle>();
    receiver_ = std::make_unique<ScopedHandle>();
}

std::string Workload::signAndVerify(int signatureSelector, const KeyPair& signer) {
    void* h = *sender_;
    std::string document = taxInvoice();
    char enveloped[] = "not(ancestor-or-self::ds:Signature)";
    std::string failure =
        run(h, {{"SetXMLDocument", [&] { return VQTK_XMLDSIG_SetXMLDocument(h, chars(document), size(document)); }},
                {"SignatureMethod", [&] { return VQTK_XMLDSIG_SignatureMethod(h, signatureSelector, 3); }},
                {"createReference", [&] { return VQTK_XMLDSIG_createReference(h, nullptr, 3, 0, enveloped); }},
                {"SetSigner",
                 [&] {
                     return VQTK_XMLDSIG_SetSigner(h, bytes(signer.cert), size(signer.cert), bytes(signer.key),
                                                   size(signer.key));
                 }},
                {"sign", [&] { return VQTK_XMLDSIG_sign(h); }}});
    if (!failure.empty())
        return "signing: " + failure;
    std::string signedText = resultDocument(h);
    void* r = *receiver_;
    if (const int rc = verifyOn(r, signedText); rc != 0)
        return "verifying: " + std::to_string(rc) + ": " + errorText(r);
    std::string forged = replaced(signedText, "<GrandTotalAmount>1100000", "<GrandTotalAmount>9100000");
    if (forged.empty())
        return "signed document lost its amount";
    if (const int rc = verifyOn(r, forged); rc != kSignatureDoesNotVerify)
        return "forged amount gave " + std::to_string(rc) + " instead of 11213: " + errorText(r);
    return "";
}

std::string Workload::encryptAndDecrypt(int symmetricSelector, int transport) {
    void* h = *sender_;
    const KeyPair& recipient = rsaRecipient();
    std::string document = kSmallInvoice;
    char target[] = "Amount";
    std::string failure =
        run(h, {{"SetXMLDocument", [&] { return VQTK_XMLENC_SetXMLDocument(h, chars(document), size(document)); }},
                {"SetSymmAlg", [&] { return VQTK_XMLENC_SetSymmAlg(h, symmetricSelector); }},
                {"EncryptElement", [&] { return VQTK_XMLENC_EncryptElement(h, target, 2); }},
                {"EncryptKeyWrapKey",
                 [&] {
                     return VQTK_XMLENC_EncryptKeyWrapKey(h, bytes(recipient.cert), size(recipient.cert), transport);
                 }},
                {"Encrypt", [&] { return VQTK_XMLENC_Encrypt(h); }}});
    if (!failure.empty())
        return "encrypting: " + failure;
    const std::string encrypted = resultDocument(h);
    if (encrypted.find(">1100000<") != std::string::npos)
        return "the amount is still readable";

    void* r = *receiver_;
    auto open = [&](std::string text) {
        return run(r, {{"SetEncXMLDocument", [&] { return VQTK_XMLENC_SetEncXMLDocument(r, chars(text), size(text)); }},
                       {"GetEncKeyInfo", [&] { return VQTK_XMLENC_GetEncKeyInfo(r); }},
                       {"DecryptKeyWrapKey",
                        [&] {
                            return VQTK_XMLENC_DecryptKeyWrapKey(r, bytes(recipient.cert), size(recipient.cert),
                                                                 bytes(recipient.key), size(recipient.key));
                        }},
                       {"Decrypt", [&] { return VQTK_XMLENC_Decrypt(r); }}});
    };
    failure = open(encrypted);
    if (!failure.empty())
        return "decrypting: " + failure;
    if (fromRoot(resultDocument(r), "<Invoice") != fromRoot(kSmallInvoice, "<Invoice"))
        return "decrypted document differs: " + resultDocument(r);
    const std::string changed = withChangedWrappedKey(encrypted);
    if (open(changed).empty() && fromRoot(resultDocument(r), "<Invoice") == fromRoot(kSmallInvoice, "<Invoice"))
        return "a changed wrapped key still opened the document";
    return "";
}

std::string Workload::secureAndProcessSoap() {
    void* h = *sender_;
    const KeyPair& signer = rsaSigner();
    const KeyPair& recipient = rsaRecipient();
    std::string envelope = kEnvelope;
    std::string failure = run(
        h, {{"SetSOAPDocument", [&] { return VQTK_SOAPSEC_SetSOAPDocument(h, chars(envelope), size(envelope)); }},
            {"SignatureMethod", [&] { return VQTK_SOAPSEC_SignatureMethod(h, 5, 0); }},
            {"createReference", [&] { return VQTK_SOAPSEC_createReference(h, nullptr, 3, 3, nullptr); }},
            {"SetSigner",
             [&] {
                 return VQTK_SOAPSEC_SetSigner(h, bytes(signer.cert), size(signer.cert), bytes(signer.key),
                                               size(signer.key));
             }},
            {"Sign", [&] { return VQTK_SOAPSEC_Sign(h); }}});
    if (!failure.empty())
        return "SOAP signing: " + failure;
    std::string signedEnvelope = resultDocument(h);
    failure = run(
        h, {{"SetSOAPDocument",
             [&] { return VQTK_SOAPSEC_SetSOAPDocument(h, chars(signedEnvelope), size(signedEnvelope)); }},
            {"SetSymmAlg", [&] { return VQTK_SOAPSEC_SetSymmAlg(h, 2); }},
            {"EncryptElement", [&] { return VQTK_SOAPSEC_EncryptElement(h, nullptr, 1); }},
            {"EncryptKeyWrapKey",
             [&] { return VQTK_SOAPSEC_EncryptKeyWrapKey(h, bytes(recipient.cert), size(recipient.cert), 2); }},
            {"Encrypt", [&] { return VQTK_SOAPSEC_Encrypt(h); }}});
    if (!failure.empty())
        return "SOAP encrypting: " + failure;
    std::string secured = resultDocument(h);
    if (secured.find("<m:item>tea") != std::string::npos)
        return "the SOAP body is still readable";

    // Loading a message does not rewind the walk over its encrypted keys, so a
    // receiver processes each secured message on a handle of its own.
    ScopedHandle receiver;
    void* r = receiver;
    int isSigned = 0;
    failure = run(
        r, {{"SetSOAPSecXMLDocument", [&] { return VQTK_SOAPSEC_SetSOAPSecXMLDocument(r, chars(secured), size(secured)); }},
            {"GetSignKeyInfo", [&] { return VQTK_SOAPSEC_GetSignKeyInfo(r, &isSigned); }},
            {"GetEncKeyInfo and DecryptKeyWrapKey", [&] { return unwrapSessionKey(r, recipient); }},
            {"ProcessSOAP", [&] { return VQTK_SOAPSEC_ProcessSOAP(r); }}});
    if (!failure.empty())
        return "SOAP processing: " + failure;
    const std::string plain = resultDocument(r);
    if (plain.find(kPlainOrder) == std::string::npos || plain.find("Security") != std::string::npos)
        return "processed envelope is not the plain one: " + plain;

    std::string forged = replaced(signedEnvelope, "<m:item>tea", "<m:item>tee");
    if (forged.empty())
        return "signed envelope lost its body";
    const int loaded = VQTK_SOAPSEC_SetSOAPSecXMLDocument(r, chars(forged), size(forged));
    if (loaded == 0 && VQTK_SOAPSEC_GetSignKeyInfo(r, &isSigned) == 0 && VQTK_SOAPSEC_ProcessSOAP(r) == 0)
        return "a changed signed body was accepted";
    return "";
}

}  // namespace stress
