// Which key a document was encrypted for, and unwrapping the session key.
//
// Two choices of ours where a document says more than the first EncryptedKey:
//  - An EncryptedData whose ds:KeyInfo holds no EncryptedKey (only a KeyName, say)
//    still has its document-level EncryptedKeys walked; the KeyName read from the
//    EncryptedData stays when the EncryptedKey names none.
//  - When the EncryptedKey that was read last is not the caller's (its recipient
//    names differ, or the key does not unwrap with it), the other EncryptedKeys of
//    the same ds:KeyInfo are tried in document order: every recipient of a
//    document with several can open it. When no name matches, the error is the
//    first EncryptedKey's name mismatch; when none unwraps, the first failure.
//  - An EncryptedKey that names its recipient by certificate alone (no subject,
//    issuer or serial stated) is compared by the names in that certificate, when
//    the caller gives its own: a key meant for someone else is refused by name
//    before the unwrapping fails on it.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <xercesc/dom/DOM.hpp>
#include <xsec/dsig/DSIGKeyInfoList.hpp>
#include <xsec/dsig/DSIGKeyInfoX509.hpp>
#include <xsec/enc/XSECCryptoSymmetricKey.hpp>
#include <xsec/xenc/XENCEncryptedData.hpp>
#include <xsec/xenc/XENCEncryptedKey.hpp>
#include <xsec/xenc/XENCEncryptionMethod.hpp>

#include "core/ErrorFrame.hpp"
#include "core/Transcode.hpp"
#include "engine/CertificateNames.hpp"
#include "engine/NameComparison.hpp"
#include "engine/VQTKCryptoKeyRSA.hpp"
#include "engine/VQTKCryptoSymmetricKey.hpp"
#include "engine/VQTKCryptoX509.hpp"
#include "engine/VQXMLXENCCipher.hpp"
#include "engine/XencReferences.hpp"
#include "xenc/KeyBuffer.hpp"
#include "xenc/XencAlgorithms.hpp"

XERCES_CPP_NAMESPACE_USE

namespace {

constexpr int kNoDocument = 10311;
constexpr int kTripleDesKeyWrap = 8;
constexpr int kRsa15 = 9;
constexpr int kRsaOaep = 10;
constexpr int kMaxUnwrappedKey = 32;

struct FreeDeleter {
    void operator()(char* text) const { std::free(text); }
};
using CText = std::unique_ptr<char, FreeDeleter>;

bool holdsEncryptedKey(DSIGKeyInfoList* list) {
    for (DSIGKeyInfoList::size_type i = 0; i < list->getSize(); ++i)
        if (list->item(i)->getKeyInfoType() == DSIGKeyInfo::KEYINFO_ENCRYPTEDKEY)
            return true;
    return false;
}

const XMLCh* transportOf(const XENCEncryptedKey* key) {
    const XENCEncryptionMethod* method = key->getEncryptionMethod();
    return method != nullptr ? method->getAlgorithm() : nullptr;
}

// Recipient names as the key information reader stores them: the subject in
// subjectEncoding, issuer and serial in the local code page.
struct RecipientNames {
    CText subject, issuer, serial;
};

CText converted(const std::string& utf8, const char* encoding) {
    return CText(vqxml::transcodeOut(vqxml::XMLT("UTF-8", utf8.c_str()).c_str(), encoding));
}

CText copyOf(const char* text) {
    return CText(text != nullptr ? strdup(text) : nullptr);
}

RecipientNames namesOf(const VQTKCryptoKeyRSA& key, const char* subjectEncoding) {
    return {converted(key.subjectName(), subjectEncoding), converted(key.issuerName(), nullptr),
            converted(key.serialNumber(), nullptr)};
}

// A recipient the document names by its certificate alone is told apart by the
// names in that certificate. Names the document states are compared as they are.
void fillFromCertificate(RecipientNames& names, const X509* cert, const char* subjectEncoding) {
    if (cert == nullptr || names.subject || names.issuer || names.serial)
        return;
    names.subject = converted(vqxml::certificateSubject(cert), subjectEncoding);
    names.issuer = converted(vqxml::certificateIssuer(cert), nullptr);
    names.serial = converted(vqxml::certificateSerialDecimal(cert), nullptr);
}

const X509* firstCertificateOf(const DSIGKeyInfoX509* x509) {
    return x509->getCertificateListSize() > 0 ? vqxml::opensslCertificate(x509->getCertificateCryptoItem(0)) : nullptr;
}

RecipientNames namesIn(XENCEncryptedKey* key, const char* subjectEncoding, bool completeFromCertificate) {
    RecipientNames names;
    const X509* cert = nullptr;
    DSIGKeyInfoList* list = key->getKeyInfoList();
    for (DSIGKeyInfoList::size_type i = 0; i < list->getSize(); ++i) {
        if (list->item(i)->getKeyInfoType() != DSIGKeyInfo::KEYINFO_X509)
            continue;
        auto* x509 = static_cast<DSIGKeyInfoX509*>(list->item(i));
        if (x509->getX509SubjectName() != nullptr)
            names.subject.reset(vqxml::transcodeOut(x509->getX509SubjectName(), subjectEncoding));
        if (x509->getX509IssuerName() != nullptr)
            names.issuer.reset(vqxml::transcodeOut(x509->getX509IssuerName(), nullptr));
        if (x509->getX509IssuerSerialNumber() != nullptr)
            names.serial.reset(vqxml::transcodeOut(x509->getX509IssuerSerialNumber(), nullptr));
        if (cert == nullptr)
            cert = firstCertificateOf(x509);
    }
    if (completeFromCertificate)
        fillFromCertificate(names, cert, subjectEncoding);
    return names;
}

// The names read for the EncryptedKey read last, completed from its certificate.
RecipientNames namesRead(const char* subject, const char* issuer, const char* serial, const unsigned char* cert,
                         int certLen, const char* subjectEncoding) {
    RecipientNames names{copyOf(subject), copyOf(issuer), copyOf(serial)};
    if (cert != nullptr && certLen > 0) {
        const unsigned char* der = cert;
        std::unique_ptr<X509, decltype(&X509_free)> x509(d2i_X509(nullptr, &der, certLen), X509_free);
        fillFromCertificate(names, x509.get(), subjectEncoding);
    }
    return names;
}

bool differs(const CText& stated, const CText& actual) {
    return stated && std::strcmp(stated.get(), actual.get()) != 0;
}

// 0, or the code of the first name the document states that the caller's
// certificate does not carry.
int recipientMismatch(const RecipientNames& stated, const RecipientNames& caller) {
    if (stated.issuer && !vqxml::sameDistinguishedName(vqxml::XMLT(stated.issuer.get()).c_str(),
                                                       vqxml::XMLT(caller.issuer.get()).c_str()))
        return 10308;
    if (differs(stated.subject, caller.subject))
        return 10309;
    if (differs(stated.serial, caller.serial))
        return 10310;
    return 0;
}

struct Candidate {
    XENCEncryptedKey* key;
    int transport;
};

// The EncryptedKey read last, then the other EncryptedKeys of its ds:KeyInfo
// whose transport the library knows.
std::vector<Candidate> unwrapCandidates(XENCCipher& cipher, XENCEncryptedKey* primary, int primaryTransport) {
    std::vector<Candidate> candidates{{primary, primaryTransport}};
    XENCEncryptedData* data = cipher.getEncryptedData();
    DSIGKeyInfoList* list = data != nullptr ? data->getKeyInfoList() : nullptr;
    std::vector<XENCEncryptedKey*> keys;
    for (DSIGKeyInfoList::size_type i = 0; list != nullptr && i < list->getSize(); ++i)
        if (list->item(i)->getKeyInfoType() == DSIGKeyInfo::KEYINFO_ENCRYPTEDKEY)
            keys.push_back(static_cast<XENCEncryptedKey*>(list->item(i)));
    if (std::find(keys.begin(), keys.end(), primary) == keys.end())
        return candidates;
    for (XENCEncryptedKey* key : keys) {
        const vqxml::KeyTransport* transport = vqxml::transportByURI(transportOf(key));
        if (key != primary && transport != nullptr)
            candidates.push_back({key, transport->methodCode});
    }
    return candidates;
}

// The caller's key in the form a transport needs, made once when first needed.
class CallerKey {
public:
    CallerKey(VQXML_XMLSecurity& ctx, unsigned char* cert, int certLen, unsigned char* priKey, int priKeyLen)
        : m_ctx(ctx), m_cert(cert), m_certLen(certLen), m_priKey(priKey), m_priKeyLen(priKeyLen) {}

    // Throws what making it raised, every time it is asked for.
    const VQTKCryptoKeyRSA& rsa() {
        if (!m_rsa && !m_rsaFailure) {
            try {
                m_rsa.reset(m_ctx.createRSAKey(m_cert, m_certLen, m_priKey, m_priKeyLen, nullptr, nullptr, nullptr,
                                               nullptr));
            } catch (...) {
                m_rsaFailure = std::current_exception();
            }
        }
        if (m_rsaFailure)
            std::rethrow_exception(m_rsaFailure);
        return *m_rsa;
    }

    // Key wrap takes the key bytes as they are: there must be some.
    void requireSecret() const {
        if (m_priKey == nullptr || m_priKeyLen <= 0)
            throw VQXML_XSECException(10306);
    }

    // A new key-encryption key for the transport, for the cipher to own.
    XSECCryptoKey* kekFor(int transport) {
        if (transport != kTripleDesKeyWrap)
            return rsa().clone();
        requireSecret();
        std::unique_ptr<XSECCryptoSymmetricKey> kek(vqxml::newSymmetricKey(vqxml::kKeyTripleDes));
        if (!kek)
            throw VQXML_XSECException(11102);
        kek->setKey(m_priKey, unsigned(m_priKeyLen));
        return kek.release();
    }

private:
    VQXML_XMLSecurity& m_ctx;
    unsigned char* m_cert;
    int m_certLen;
    unsigned char* m_priKey;
    int m_priKeyLen;
    std::unique_ptr<VQTKCryptoKeyRSA> m_rsa;
    std::exception_ptr m_rsaFailure;
};

}  // namespace

int VQXML_XMLSecurity::XMLENC_getEncKeyInfo() {
    return vqxml::guarded(*this, "XMLENC_getEncKeyInfo > ", [&] {
        auto& cipher = static_cast<VQXML_XENCCipher&>(requireCipher(kNoDocument));
        DOMElement* element = findXENCElement(u"EncryptedData");
        if (element == nullptr)
            throw VQXML_XSECException(10312);
        forgetNestedEncryptedKey();
        XENCEncryptedData* data = cipher.loadEncryptedData(element);
        const XENCEncryptionMethod* method = data->getEncryptionMethod();
        const vqxml::SymmetricAlgorithm* algorithm =
            vqxml::symmetricByURI(method != nullptr ? method->getAlgorithm() : nullptr);
        resizeSessionKey(algorithm != nullptr ? algorithm->keyBytes : 16);
        if (algorithm == nullptr)
            throw VQXML_XSECException(10301);
        m_symmAlg = algorithm->methodCode;

        DSIGKeyInfoList* list = data->getKeyInfoList();
        if (!list->isEmpty()) {
            getKeyInfoListData(list);
            if (holdsEncryptedKey(list))
                return;
        }
        CText dataKeyName(std::exchange(m_keyName, nullptr));
        try {
            readDocumentLevelKey(cipher, element->getAttributeNS(nullptr, vqxml::xenc::kIdAttribute));
        } catch (...) {
            if (m_keyName == nullptr)
                m_keyName = dataKeyName.release();
            throw;
        }
        if (m_keyName == nullptr)
            m_keyName = dataKeyName.release();
    });
}

void VQXML_XMLSecurity::readDocumentLevelKey(XENCCipher& cipher, const XMLCh* dataId) {
    const std::vector<XENCEncryptedKey*>& keys = static_cast<VQXML_XENCCipher&>(cipher).documentKeys();
    if (keys.empty())
        return;
    if (m_encKeyIndex < 0 || static_cast<size_t>(m_encKeyIndex) >= keys.size())
        throw VQXML_XSECException(10313);
    XENCEncryptedKey* key = keys[static_cast<size_t>(m_encKeyIndex)];
    if (vqxml::xenc::refersTo(*key, dataId))
        getEncryptedKeyInfo(key);
    m_encKeyIndex += 1;
}

int VQXML_XMLSecurity::XMLENC_decryptKeyWrapKey(unsigned char* cert, int certLen, unsigned char* priKey,
                                                int priKeyLen) {
    return vqxml::guarded(*this, "XMLENC_decryptKeyWrapKey > ", [&] {
        XENCCipher& cipher = requireCipher(kNoDocument);
        if (m_encryptedKey == nullptr ||
            (m_keyWrapAlg != kTripleDesKeyWrap && m_keyWrapAlg != kRsa15 && m_keyWrapAlg != kRsaOaep))
            throw VQXML_XSECException(10304);
        CallerKey caller(*this, cert, certLen, priKey, priKeyLen);
        const std::string encoding = subjectEncoding();
        // A caller who gives no certificate has no names to compare with the
        // certificate the document carries.
        const bool byCertificate = cert != nullptr && certLen > 0;

        // Which EncryptedKeys may be the caller's: for RSA, those whose recipient
        // names (the ones read for the first) match the caller's certificate.
        std::vector<Candidate> eligible;
        std::exception_ptr firstRefusal;
        for (const Candidate& c : unwrapCandidates(cipher, m_encryptedKey, m_keyWrapAlg)) {
            try {
                if (c.transport == kTripleDesKeyWrap) {
                    caller.requireSecret();
                } else {
                    const RecipientNames mine = namesOf(caller.rsa(), encoding.c_str());
                    const RecipientNames stated =
                        c.key == m_encryptedKey
                            ? namesRead(m_subjectName, m_issuer, m_serialNumber, byCertificate ? m_cert : nullptr,
                                        m_certLen, encoding.c_str())
                            : namesIn(c.key, encoding.c_str(), byCertificate);
                    if (const int mismatch = recipientMismatch(stated, mine))
                        throw VQXML_XSECException(mismatch);
                }
                eligible.push_back(c);
            } catch (...) {
                if (c.key == m_encryptedKey)
                    firstRefusal = std::current_exception();
            }
        }
        if (eligible.empty())
            std::rethrow_exception(firstRefusal ? firstRefusal : std::make_exception_ptr(VQXML_XSECException(10304)));

        replaceSessionKey(nullptr, 0);
        std::exception_ptr firstFailure;
        for (const Candidate& c : eligible) {
            try {
                cipher.setKEK(caller.kekFor(c.transport));
                vqxml::KeyBuffer unwrapped(kMaxUnwrappedKey);
                const int len = cipher.decryptKey(c.key, unwrapped.get(), unwrapped.size());
                replaceSessionKey(unwrapped.release(), len);
                m_encryptedKey = c.key;
                m_keyWrapAlg = c.transport;
                return;
            } catch (...) {
                if (!firstFailure)
                    firstFailure = std::current_exception();
            }
        }
        std::rethrow_exception(firstFailure);
    });
}

std::string VQXML_XMLSecurity::subjectEncoding() const {
    const std::string declared = vqxml::declaredEncoding(m_document);
    return declared.empty() ? "UTF-8" : declared;
}
