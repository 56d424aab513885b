#include "dsig/KeyBinding.hpp"

#include <cstdint>
#include <memory>

#include <openssl/bn.h>
#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/x509v3.h>
#include <xsec/dsig/DSIGKeyInfoDEREncoded.hpp>
#include <xsec/dsig/DSIGKeyInfoList.hpp>
#include <xsec/dsig/DSIGKeyInfoValue.hpp>
#include <xsec/dsig/DSIGKeyInfoX509.hpp>
#include <xsec/enc/XSECKeyInfoResolverDefault.hpp>

#include "core/VQXMLException.hpp"
#include "dsig/ReferenceDigesting.hpp"
#include "engine/Base64.hpp"
#include "engine/CertificateNames.hpp"
#include "engine/NameComparison.hpp"
#include "engine/VQTKCryptoX509.hpp"
#include "engine/wssec/TokenKeys.hpp"
#include "engine/wssec/VQXML_WSSecSecurityTokenReference.hpp"
#include "engine/wssec/WssNames.hpp"
#include "vqxml/vqxml.h"

XERCES_CPP_NAMESPACE_USE

namespace vqxml {

namespace {


using Bytes = std::vector<std::uint8_t>;

[[noreturn]] void refuse(const char* why) {
    throw VQXML_XSECException(VQXML_ERR_NOT_VERIFIED, why);
}

bool present(const XMLCh* text) {
    return text != nullptr && *text != 0;
}

// Base64 text of a document as bytes; a text that is not base64 gives nothing.
Bytes decoded(const XMLCh* text) {
    std::string ascii;
    for (const XMLCh* c = text; c != nullptr && *c != 0; ++c) {
        if (*c > 0x7f)
            return {};
        ascii += static_cast<char>(*c);
    }
    Bytes out;
    return base64Decode(ascii.c_str(), out) ? out : Bytes();
}

// A big-endian unsigned integer without its leading zero bytes.
Bytes trimmed(Bytes number) {
    size_t zeros = 0;
    while (zeros + 1 < number.size() && number[zeros] == 0)
        ++zeros;
    number.erase(number.begin(), number.begin() + static_cast<std::ptrdiff_t>(zeros));
    return number;
}

// A public key as the parts a KeyValue writes, to compare keys written
// differently: kind, then the numbers (or octets) in the KeyValue's order.
struct KeyParts {
    int kind = 0;
    std::vector<Bytes> parts;
    bool operator==(const KeyParts& o) const { return kind == o.kind && parts == o.parts; }
};

KeyParts partsOf(const DSIGKeyInfo* item) {
    KeyParts key;
    key.kind = static_cast<int>(item->getKeyInfoType());
    std::vector<const XMLCh*> texts;
    if (key.kind == DSIGKeyInfo::KEYINFO_DERENCODED) {
        texts = {static_cast<const DSIGKeyInfoDEREncoded*>(item)->getData()};
    } else {
        const auto* value = static_cast<const DSIGKeyInfoValue*>(item);
        if (key.kind == DSIGKeyInfo::KEYINFO_VALUE_RSA)
            texts = {value->getRSAModulus(), value->getRSAExponent()};
        else if (key.kind == DSIGKeyInfo::KEYINFO_VALUE_DSA)
            texts = {value->getDSAP(), value->getDSAQ(), value->getDSAG(), value->getDSAY()};
        else
            texts = {value->getECPublicKey()};
    }
    for (const XMLCh* text : texts)
        key.parts.push_back(key.kind == DSIGKeyInfo::KEYINFO_VALUE_RSA || key.kind == DSIGKeyInfo::KEYINFO_VALUE_DSA
                                ? trimmed(decoded(text))
                                : decoded(text));
    return key;
}

Bytes number(const EVP_PKEY* pkey, const char* name) {
    BIGNUM* raw = nullptr;
    if (EVP_PKEY_get_bn_param(pkey, name, &raw) != 1)
        return {};
    const std::unique_ptr<BIGNUM, void (*)(BIGNUM*)> bn(raw, &BN_free);  // the vector below may throw
    Bytes out(static_cast<size_t>(BN_num_bytes(bn.get())));
    BN_bn2bin(bn.get(), out.data());
    return trimmed(out);
}

// The certificate's key in the parts of a KeyValue of that kind; nothing
// matches an empty one (a KCDSA key OpenSSL cannot read, a kind it is not).
KeyParts partsOf(const X509* cert, int kind) {
    KeyParts key;
    key.kind = kind;
    if (kind == DSIGKeyInfo::KEYINFO_DERENCODED) {
        unsigned char* der = nullptr;
        const int len = i2d_X509_PUBKEY(X509_get_X509_PUBKEY(const_cast<X509*>(cert)), &der);
        if (len > 0)
            key.parts.push_back(Bytes(der, der + len));
        OPENSSL_free(der);
        return key;
    }
    const EVP_PKEY* pkey = X509_get0_pubkey(cert);
    if (pkey == nullptr)
        return key;
    if (kind == DSIGKeyInfo::KEYINFO_VALUE_RSA && EVP_PKEY_is_a(pkey, "RSA")) {
        key.parts = {number(pkey, OSSL_PKEY_PARAM_RSA_N), number(pkey, OSSL_PKEY_PARAM_RSA_E)};
    } else if (kind == DSIGKeyInfo::KEYINFO_VALUE_DSA && EVP_PKEY_is_a(pkey, "DSA")) {
        key.parts = {number(pkey, OSSL_PKEY_PARAM_FFC_P), number(pkey, OSSL_PKEY_PARAM_FFC_Q),
                     number(pkey, OSSL_PKEY_PARAM_FFC_G), number(pkey, OSSL_PKEY_PARAM_PUB_KEY)};
    } else if (kind == DSIGKeyInfo::KEYINFO_VALUE_EC && EVP_PKEY_is_a(pkey, "EC")) {
        Bytes point(256);
        size_t len = 0;
        if (EVP_PKEY_get_octet_string_param(pkey, OSSL_PKEY_PARAM_ENCODED_PUBLIC_KEY, point.data(), point.size(),
                                            &len) == 1) {
            point.resize(len);
            key.parts.push_back(point);
        }
    }
    return key;
}

bool carriesKeyOf(const DSIGKeyInfo* keyValue, const X509* cert) {
    const KeyParts stated = partsOf(keyValue);
    const KeyParts actual = partsOf(cert, stated.kind);
    return !actual.parts.empty() && stated == actual;
}

bool sameSerial(const XMLCh* stated, const X509* cert) {
    std::string text;
    for (const XMLCh* c = stated; c != nullptr && *c != 0; ++c)
        if (*c != u' ' && *c != u'\t' && *c != u'\r' && *c != u'\n')
            text += *c < 0x80 ? static_cast<char>(*c) : '?';
    BIGNUM* named = nullptr;
    if (text.empty() || BN_dec2bn(&named, text.c_str()) != static_cast<int>(text.size())) {
        BN_free(named);
        return false;
    }
    BIGNUM* actual = ASN1_INTEGER_to_BN(X509_get0_serialNumber(cert), nullptr);
    const bool same = actual != nullptr && BN_cmp(named, actual) == 0;
    BN_free(named);
    BN_free(actual);
    return same;
}

bool sameName(const XString& stated, const std::string& actual) {
    return sameDistinguishedName(stated.c_str(), XMLT("UTF-8", actual.c_str()).c_str());
}

}  // namespace

int signerCertificateIndex(const DSIGKeyInfoX509* x509) {
    const int count = x509->getCertificateListSize();
    int leaf = -1;
    for (int i = 0; i < count; ++i) {
        const X509* candidate = opensslCertificate(x509->getCertificateCryptoItem(i));
        bool issuesAnother = candidate == nullptr;
        for (int j = 0; j < count && !issuesAnother; ++j) {
            const X509* other = opensslCertificate(x509->getCertificateCryptoItem(j));
            issuesAnother = j != i && other != nullptr &&
                            X509_NAME_cmp(X509_get_subject_name(candidate), X509_get_issuer_name(other)) == 0;
        }
        if (!issuesAnother) {
            if (leaf >= 0)
                return 0;
            leaf = i;
        }
    }
    return leaf >= 0 ? leaf : 0;
}

KeyBinding::KeyBinding(DSIGKeyInfoList* list, const DOMElement* security) : m_list(list), m_security(security) {
    for (DSIGKeyInfoList::size_type i = 0; list != nullptr && i < list->getSize(); ++i) {
        DSIGKeyInfo* item = list->item(i);
        switch (static_cast<int>(item->getKeyInfoType())) {
        case DSIGKeyInfo::KEYINFO_X509:
            readX509(static_cast<DSIGKeyInfoX509*>(item));
            break;
        case DSIGKeyInfo::KEYINFO_VALUE_RSA:
        case DSIGKeyInfo::KEYINFO_VALUE_DSA:
        case DSIGKeyInfo::KEYINFO_VALUE_EC:
        case DSIGKeyInfo::KEYINFO_DERENCODED:
            m_keyValues.push_back(item);
            break;
        case DSIGKeyInfo::KEYINFO_EXTENSION:
        case VQXML_WSSecSecurityTokenReference::kKeyInfoType:
            if (wss::isElement(item->getKeyInfoDOMNode(), wss::kWsse, u"SecurityTokenReference"))
                readTokenReference(static_cast<DOMElement*>(item->getKeyInfoDOMNode()));
            break;
        default:
            break;
        }
    }
    if (m_certificate != nullptr) {
        const X509* cert = opensslCertificate(m_certificate);
        for (const DSIGKeyInfo* value : m_keyValues)
            if (!carriesKeyOf(value, cert))
                refuse("A KeyValue of the key information is not the key of the certificate it carries");
        requireNamed(cert);
        return;
    }
    for (const DSIGKeyInfo* value : m_keyValues)
        if (!(partsOf(value) == partsOf(m_keyValues.front())))
            refuse("The key information carries two different keys");
    if (!m_keyValues.empty() && namesAnything())
        refuse("The key information names a certificate but carries only a KeyValue");
    for (const IssuerSerial& named : m_issuerSerials)
        if (!sameDistinguishedName(named.issuer.c_str(), m_issuerSerials.front().issuer.c_str()) ||
            named.serial != m_issuerSerials.front().serial)
            refuse("The key information names two different certificates");
}

KeyBinding::~KeyBinding() = default;

void KeyBinding::readX509(DSIGKeyInfoX509* x509) {
    if (present(x509->getX509SubjectName()))
        m_subjects.emplace_back(x509->getX509SubjectName());
    if (present(x509->getX509IssuerName()) || present(x509->getX509IssuerSerialNumber()))
        m_issuerSerials.push_back({x509->getX509IssuerName() != nullptr ? x509->getX509IssuerName() : u"",
                                   x509->getX509IssuerSerialNumber() != nullptr ? x509->getX509IssuerSerialNumber()
                                                                                : u""});
    if (present(x509->getX509SKI()))
        m_skis.emplace_back(x509->getX509SKI());
    if (present(x509->getX509DigestValue()))
        m_digests.emplace_back(x509->getX509DigestAlgorithm() != nullptr ? x509->getX509DigestAlgorithm() : u"",
                               x509->getX509DigestValue());
    if (x509->getCertificateListSize() > 0)
        addCertificate(x509->getCertificateCryptoItem(signerCertificateIndex(x509)));
}

void KeyBinding::readTokenReference(DOMElement* element) {
    auto reference = std::make_unique<VQXML_WSSecSecurityTokenReference>(nullptr, element);
    reference->load();
    if (reference->getXSECCrytpoCert() != nullptr)
        addCertificate(reference->getXSECCrytpoCert());
    else if (reference->getSecurityTokenReferenceKeyType() == VQXML_WSSecSecurityTokenReference::ISSUER_SERIAL)
        m_issuerSerials.push_back({reference->getX509Issuer() != nullptr ? reference->getX509Issuer() : u"",
                                   reference->getX509Serial() != nullptr ? reference->getX509Serial() : u""});
    m_references.push_back(std::move(reference));
}

void KeyBinding::addCertificate(const XSECCryptoX509* cert) {
    const X509* x509 = opensslCertificate(cert);
    if (x509 == nullptr)
        throw VQXML_XSECException(VQXML_ERR_CRYPTO_PROVIDER, "The certificate could not be read");
    if (m_certificate == nullptr)
        m_certificate = cert;
    else if (X509_cmp(x509, opensslCertificate(m_certificate)) != 0)
        refuse("The key information carries two different certificates");
}

bool KeyBinding::namesAnything() const {
    return !m_subjects.empty() || !m_issuerSerials.empty() || !m_skis.empty() || !m_digests.empty();
}

void KeyBinding::requireNamed(const X509* cert) const {
    for (const XString& subject : m_subjects)
        if (!sameName(subject, certificateSubject(cert)))
            refuse("The X509SubjectName of the key information names another certificate than the key's");
    for (const IssuerSerial& named : m_issuerSerials)
        if (!sameName(named.issuer, certificateIssuer(cert)) || !sameSerial(named.serial.c_str(), cert))
            refuse("The issuer and serial number of the key information name another certificate than the key's");
    for (const XString& ski : m_skis) {
        const ASN1_OCTET_STRING* actual = X509_get0_subject_key_id(const_cast<X509*>(cert));
        const Bytes stated = decoded(ski.c_str());
        if (actual == nullptr || stated != Bytes(actual->data, actual->data + actual->length))
            refuse("The X509SKI of the key information names another certificate than the key's");
    }
    for (const auto& [algorithm, value] : m_digests) {
        const EVP_MD* md = openSslDigest(algorithm.c_str());
        unsigned char digest[EVP_MAX_MD_SIZE];
        unsigned int len = 0;
        if (md == nullptr || X509_digest(cert, md, digest, &len) != 1 || decoded(value.c_str()) != Bytes(digest, digest + len))
            refuse("The X509Digest of the key information names another certificate than the key's");
    }
}

XSECCryptoKey* KeyBinding::newKey() const {
    if (m_certificate != nullptr)
        return wss::publicKeyOf(*m_certificate);
    if (!m_keyValues.empty())
        return XSECKeyInfoResolverDefault().resolveKey(m_list);
    if (!m_issuerSerials.empty() && m_security != nullptr)
        return wss::keyOfTokenIn(m_security, m_issuerSerials.front().issuer.c_str(),
                                 m_issuerSerials.front().serial.c_str());
    return nullptr;
}

void KeyBinding::requireCertificate(const X509* cert) const {
    if (m_certificate != nullptr) {
        if (X509_cmp(cert, opensslCertificate(m_certificate)) != 0)
            refuse("The certificate given to verify with is not the one the key information carries");
        return;
    }
    for (const DSIGKeyInfo* value : m_keyValues)
        if (!carriesKeyOf(value, cert))
            refuse("The certificate given to verify with is not the key the key information carries");
    requireNamed(cert);
}

void KeyBinding::requireNoPublicKey() const {
    if (m_certificate != nullptr || !m_keyValues.empty() || namesAnything())
        refuse("A secret key verifies this signature: its key information may not name a certificate or carry a "
               "public key");
}

}  // namespace vqxml
