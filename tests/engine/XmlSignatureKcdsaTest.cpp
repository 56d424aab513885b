// KCDSA signatures and the HAS-160 digest through xml-security-c's own
// DSIGSignature, with the test PKI's keys.
#include <gtest/gtest.h>
#include <xsec/dsig/DSIGConstants.hpp>
#include <xsec/dsig/DSIGObject.hpp>
#include <xsec/dsig/DSIGReference.hpp>
#include <xsec/dsig/DSIGSignature.hpp>
#include <xsec/enc/XSECCryptoException.hpp>
#include <xsec/framework/XSECException.hpp>
#include <xsec/framework/XSECProvider.hpp>
#include <xercesc/util/XMLString.hpp>

#include "XmlTestSupport.hpp"
#include "engine/EngineLifecycle.hpp"
#include "engine/AlgorithmURIs.hpp"
#include "engine/Base64.hpp"
#include "engine/VQTKCryptoKeyKCDSA.hpp"

XERCES_CPP_NAMESPACE_USE
using namespace vqxml::test;

namespace {

const char kDocument[] = "<TaxInvoice><Seller>(주)브이큐</Seller><Total>110000</Total></TaxInvoice>";

struct SignatureDeleter {
    void operator()(DSIGSignature* s) const { g_provider->releaseSignature(s); }
};
using Signature = std::unique_ptr<DSIGSignature, SignatureDeleter>;

VQTKCryptoKeyKCDSA* key(const std::string& name, bool withPrivate) {
    Bytes cert = testPkiFile(name + ".crt.der");
    Bytes priv = withPrivate ? testPkiFile(name + ".key.der") : Bytes();
    return vqxml::createKCDSAKey(cert.data(), int(cert.size()), withPrivate ? priv.data() : nullptr,
                                 int(priv.size()));
}

struct Case {
    const char* keyName;
    const XMLCh* signatureMethod;
    const XMLCh* digestMethod;
    std::size_t signatureBytes;  // 2 x the bytes of q
};

class KcdsaSignatures : public EngineTest {
protected:
    // Signs kDocument with an enveloped signature and returns the signed text.
    std::string signEnveloped(const Case& c) {
        Document doc = parse(kDocument);
        Signature sig(g_provider->newSignature());
        sig->setDSIGNSPrefix(u"ds");
        DOMElement* node = sig->createBlankSignature(doc.get(), DSIGConstants::s_unicodeStrURIEXC_C14N_NOC,
                                                     c.signatureMethod);
        doc->getDocumentElement()->appendChild(node);
        DSIGReference* ref = sig->createReference(u"", c.digestMethod);
        ref->appendEnvelopedSignatureTransform();
        sig->setSigningKey(key(c.keyName, true));
        sig->sign();
        return serialise(doc.get());
    }

    // Verifies the signature in text with the certificate alone.
    bool verify(const std::string& text, const char* keyName) {
        Document doc = parse(text);
        Signature sig(g_provider->newSignatureFromDOM(doc.get(), find(doc.get(), "Signature")));
        sig->load();
        sig->setSigningKey(key(keyName, false));
        return sig->verify();
    }

    static std::string signatureValue(const std::string& text) {
        Document doc = parse(text);
        DOMElement* value = find(doc.get(), "SignatureValue");
        char* b64 = XMLString::transcode(value->getTextContent());
        std::string out(b64);
        XMLString::release(&b64);
        return out;
    }
};

// The engine's URI constants exist only once it has started.
std::vector<Case> cases() {
    return {
        {"ee-kcdsa1024", vqxml::uri::kKcdsaSha1, DSIGConstants::s_unicodeStrURISHA1, 40},
        {"ee-kcdsa1024", vqxml::uri::kKcdsaHas160, vqxml::uri::kHas160, 40},
        {"ee-kcdsa2048", vqxml::uri::kKcdsaSha256, DSIGConstants::s_unicodeStrURISHA256, 56},
        {"ee-kcdsa2048", vqxml::uri::kKcdsaSha256, vqxml::uri::kHas160, 56},
    };
}

}  // namespace

TEST_F(KcdsaSignatures, EnvelopedSignaturesVerifyWithTheCertificate) {
    for (const Case& c : cases()) {
        std::string signedText = signEnveloped(c);
        EXPECT_TRUE(verify(signedText, c.keyName)) << c.keyName;
        std::vector<std::uint8_t> value;
        ASSERT_TRUE(vqxml::base64Decode(signatureValue(signedText).c_str(), value));
        EXPECT_EQ(value.size(), c.signatureBytes) << "R || S, each as long as q";
    }
}

TEST_F(KcdsaSignatures, ChangedContentOrOtherCertificateFails) {
    std::string signedText = signEnveloped(cases()[1]);
    std::string changed = signedText;
    changed.replace(changed.find("110000"), 6, "990000");
    EXPECT_FALSE(verify(changed, "ee-kcdsa1024"));
    // Another key: a signature of the wrong size, or a hash too short for its q.
    EXPECT_FALSE(verify(signEnveloped(cases()[2]), "ee-kcdsa1024"));
    EXPECT_THROW(verify(signedText, "ee-kcdsa2048"), XSECCryptoException);

    // A changed SignatureValue (one bit of R) fails too.
    std::string value = signatureValue(signedText);
    std::vector<std::uint8_t> raw;
    ASSERT_TRUE(vqxml::base64Decode(value.c_str(), raw));
    raw[3] ^= 0x10;
    std::string forged = signedText;
    forged.replace(forged.find(value), value.size(), vqxml::base64Text(raw));
    EXPECT_FALSE(verify(forged, "ee-kcdsa1024"));
    std::string garbage = signedText;
    garbage.replace(garbage.find(value), value.size(), "not*base64");
    EXPECT_FALSE(verify(garbage, "ee-kcdsa1024"));
}

TEST_F(KcdsaSignatures, UnusableKeysAndMethodsAreRefusedCleanly) {
    // SHA-1 is shorter than the 224-bit q of the 2048-bit key.
    EXPECT_THROW(signEnveloped({"ee-kcdsa2048", vqxml::uri::kKcdsaSha1, DSIGConstants::s_unicodeStrURISHA1, 0}),
                 XSECCryptoException);
    // A certificate alone cannot sign.
    Document doc = parse(kDocument);
    Signature sig(g_provider->newSignature());
    doc->getDocumentElement()->appendChild(
        sig->createBlankSignature(doc.get(), DSIGConstants::s_unicodeStrURIC14N_NOC, vqxml::uri::kKcdsaSha1));
    sig->createReference(u"", DSIGConstants::s_unicodeStrURISHA1)->appendEnvelopedSignatureTransform();
    sig->setSigningKey(key("ee-kcdsa1024", false));
    EXPECT_THROW(sig->sign(), XSECCryptoException);
    // A KCDSA key under the RSA method, and a KCDSA method with no KCDSA key.
    sig->setSigningKey(key("ee-kcdsa1024", true));
    Signature rsa(g_provider->newSignature());
    Document doc2 = parse(kDocument);
    doc2->getDocumentElement()->appendChild(rsa->createBlankSignature(
        doc2.get(), DSIGConstants::s_unicodeStrURIC14N_NOC, DSIGConstants::s_unicodeStrURIRSA_SHA1));
    rsa->createReference(u"", DSIGConstants::s_unicodeStrURISHA1)->appendEnvelopedSignatureTransform();
    rsa->setSigningKey(key("ee-kcdsa1024", true));
    EXPECT_THROW(rsa->sign(), XSECException);
}
