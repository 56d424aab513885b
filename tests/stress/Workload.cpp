#include "stress/Workload.hpp"

#include "TestFiles.hpp"
#include "dsig/SignatureFixture.hpp"
#include "soapsec/SoapFixture.hpp"
#include "vqxml/vqxml.h"

namespace stress {
namespace {

using dsigtest::bytes;
using dsigtest::chars;
using dsigtest::errorText;
using dsigtest::resultDocument;
using cbuffers::size;

constexpr int kSignatureDoesNotVerify = 11213;

KeyPair pkiPair(const std::string& prefix) {
    return {testfiles::read(testfiles::dataPath("testpki/" + prefix + ".crt.der")),
            testfiles::read(testfiles::dataPath("testpki/" + prefix + ".key.der"))};
}

// The chains of calls below read (rc = A) || (rc = B) || ...: each call runs
// only when the ones before it returned 0, and rc holds the first failure.
std::string failed(const std::string& what, int rc, void* h) {
    return what + " gave " + std::to_string(rc) + ": " + errorText(h);
}

// text with the first character of the first CipherValue changed: in an encrypted
// document that is the wrapped session key.
std::string withChangedWrappedKey(std::string text) {
    const size_t at = text.find("CipherValue>");
    if (at != std::string::npos)
        text[at + 12] = text[at + 12] == 'A' ? 'B' : 'A';
    return text;
}

std::string fromRoot(const std::string& text) {
    const size_t at = text.find("<Invoice");
    return at == std::string::npos ? text : text.substr(at);
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

const std::string& smallInvoice() {
    static const std::string text =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<Invoice xmlns=\"urn:example:invoice\"><Head>세금계산서 2026-0001</Head>"
        "<Amount currency=\"KRW\">1100000</Amount><Note>비고</Note></Invoice>";
    return text;
}

int sign(void* h, int signatureSelector, const KeyPair& signer) {
    const std::string& document = taxInvoice();
    char enveloped[] = "not(ancestor-or-self::ds:Signature)";
    int rc = 0;
    (rc = VQTK_XMLDSIG_SetXMLDocument(h, chars(document), size(document))) ||
        (rc = VQTK_XMLDSIG_SignatureMethod(h, signatureSelector, 3)) ||
        (rc = VQTK_XMLDSIG_createReference(h, nullptr, 3, 0, enveloped)) ||
        (rc = VQTK_XMLDSIG_SetSigner(h, bytes(signer.cert), size(signer.cert), bytes(signer.key), size(signer.key))) ||
        (rc = VQTK_XMLDSIG_sign(h));
    return rc;
}

int verify(void* h, const std::string& signedText) {
    const int rc = VQTK_XMLDSIG_SetSignXMLDocument(h, chars(signedText), size(signedText));
    return rc == 0 ? VQTK_XMLDSIG_Verify(h) : rc;
}

int encrypt(void* h, int symmetricSelector, int transport) {
    const KeyPair& recipient = rsaRecipient();
    const std::string& document = smallInvoice();
    char target[] = "Amount";
    int rc = 0;
    (rc = VQTK_XMLENC_SetXMLDocument(h, chars(document), size(document))) ||
        (rc = VQTK_XMLENC_SetSymmAlg(h, symmetricSelector)) || (rc = VQTK_XMLENC_EncryptElement(h, target, 2)) ||
        (rc = VQTK_XMLENC_EncryptKeyWrapKey(h, bytes(recipient.cert), size(recipient.cert), transport)) ||
        (rc = VQTK_XMLENC_Encrypt(h));
    return rc;
}

int decrypt(void* h, const std::string& encrypted) {
    const KeyPair& recipient = rsaRecipient();
    int rc = 0;
    (rc = VQTK_XMLENC_SetEncXMLDocument(h, chars(encrypted), size(encrypted))) ||
        (rc = VQTK_XMLENC_GetEncKeyInfo(h)) ||
        (rc = VQTK_XMLENC_DecryptKeyWrapKey(h, bytes(recipient.cert), size(recipient.cert), bytes(recipient.key),
                                            size(recipient.key))) ||
        (rc = VQTK_XMLENC_Decrypt(h));
    return rc;
}

bool isSmallInvoice(const std::string& document) {
    return document.find("<Invoice") != std::string::npos && fromRoot(document) == fromRoot(smallInvoice());
}

Workload::Workload() : sender_(std::make_unique<ScopedHandle>()), receiver_(std::make_unique<ScopedHandle>()) {}

std::string Workload::signAndVerify(int signatureSelector, const KeyPair& signer) {
    void* h = *sender_;
    void* r = *receiver_;
    if (const int rc = sign(h, signatureSelector, signer); rc != 0)
        return failed("signing", rc, h);
    const std::string signedText = resultDocument(h);
    if (const int rc = verify(r, signedText); rc != 0)
        return failed("verifying", rc, r);
    if (const int rc = verify(r, dsigtest::tampered(signedText)); rc != kSignatureDoesNotVerify)
        return failed("verifying a changed amount", rc, r);
    return "";
}

std::string Workload::encryptAndDecrypt(int symmetricSelector, int transport) {
    void* h = *sender_;
    void* r = *receiver_;
    if (const int rc = encrypt(h, symmetricSelector, transport); rc != 0)
        return failed("encrypting", rc, h);
    const std::string encrypted = resultDocument(h);
    if (encrypted.find(">1100000<") != std::string::npos)
        return "the amount is still readable";
    if (const int rc = decrypt(r, encrypted); rc != 0)
        return failed("decrypting", rc, r);
    if (!isSmallInvoice(resultDocument(r)))
        return "decrypted document differs: " + resultDocument(r);
    if (decrypt(r, withChangedWrappedKey(encrypted)) == 0 && isSmallInvoice(resultDocument(r)))
        return "a changed wrapped key still opened the document";
    return "";
}

std::string Workload::secureAndProcessSoap() {
    void* h = *sender_;
    const KeyPair& signer = rsaSigner();
    const KeyPair& recipient = rsaRecipient();
    const std::string& envelope = soaptest::kEnvelope;
    int rc = 0;
    (rc = VQTK_SOAPSEC_SetSOAPDocument(h, chars(envelope), size(envelope))) ||
        (rc = VQTK_SOAPSEC_SignatureMethod(h, 5, 0)) || (rc = VQTK_SOAPSEC_createReference(h, nullptr, 3, 3, nullptr)) ||
        (rc = VQTK_SOAPSEC_SetSigner(h, bytes(signer.cert), size(signer.cert), bytes(signer.key), size(signer.key))) ||
        (rc = VQTK_SOAPSEC_Sign(h));
    if (rc != 0)
        return failed("SOAP signing", rc, h);
    const std::string signedEnvelope = resultDocument(h);
    (rc = VQTK_SOAPSEC_SetSOAPDocument(h, chars(signedEnvelope), size(signedEnvelope))) ||
        (rc = VQTK_SOAPSEC_SetSymmAlg(h, 2)) || (rc = VQTK_SOAPSEC_EncryptElement(h, nullptr, 1)) ||
        (rc = VQTK_SOAPSEC_EncryptKeyWrapKey(h, bytes(recipient.cert), size(recipient.cert), 2)) ||
        (rc = VQTK_SOAPSEC_Encrypt(h));
    if (rc != 0)
        return failed("SOAP encrypting", rc, h);
    const std::string secured = resultDocument(h);
    if (secured.find("<m:item>tea") != std::string::npos)
        return "the SOAP body is still readable";

    // Loading a message does not rewind the walk over its encrypted keys, so a
    // receiver processes each secured message on a handle of its own.
    ScopedHandle receiver;
    void* r = receiver;
    int isSigned = 0;
    (rc = VQTK_SOAPSEC_SetSOAPSecXMLDocument(r, chars(secured), size(secured))) ||
        (rc = VQTK_SOAPSEC_GetSignKeyInfo(r, &isSigned)) || (rc = unwrapSessionKey(r, recipient)) ||
        (rc = VQTK_SOAPSEC_ProcessSOAP(r));
    if (rc != 0)
        return failed("SOAP processing", rc, r);
    const std::string plain = resultDocument(r);
    if (plain.find("<m:item>tea</m:item><m:count>3</m:count>") == std::string::npos ||
        plain.find("Security") != std::string::npos)
        return "processed envelope is not the plain one: " + plain;

    std::string forged = signedEnvelope;
    const size_t item = forged.find("<m:item>tea");
    if (item == std::string::npos)
        return "the signed envelope lost its body";
    forged[item + 10] = 'e';
    if (VQTK_SOAPSEC_SetSOAPSecXMLDocument(r, chars(forged), size(forged)) == 0 &&
        VQTK_SOAPSEC_GetSignKeyInfo(r, &isSigned) == 0 && VQTK_SOAPSEC_ProcessSOAP(r) == 0)
        return "a changed signed body was accepted";
    return "";
}

}  // namespace stress
