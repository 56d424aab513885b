#include "xenc/KeyUnwrapper.hpp"

#include <algorithm>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include <xsec/dsig/DSIGKeyInfoList.hpp>
#include <xsec/framework/XSECException.hpp>
#include <xsec/xenc/XENCCipherData.hpp>
#include <xsec/xenc/XENCCipherValue.hpp>
#include <xsec/xenc/XENCEncryptedData.hpp>
#include <xsec/xenc/XENCEncryptedKey.hpp>
#include <xsec/xenc/XENCEncryptionMethod.hpp>

#include "core/Transcode.hpp"
#include "core/VQXMLException.hpp"
#include "engine/Base64.hpp"
#include "engine/VQTKCryptoKeyRSA.hpp"
#include "engine/VQXMLXENCCipher.hpp"
#include "xenc/KeyBuffer.hpp"
#include "xenc/RecipientNames.hpp"
#include "xenc/XencAlgorithms.hpp"
#include "vqxml/VQXML_XMLSecurity.h"

XERCES_CPP_NAMESPACE_USE

namespace {

using vqxml::xenc::UnwrapCodes;

constexpr int kRsa15 = 9;
constexpr int kMaxUnwrappedKey = 32;

const XMLCh* algorithmOf(const XENCEncryptionMethod* method) {
    return method != nullptr ? method->getAlgorithm() : nullptr;
}

struct Candidate {
    XENCEncryptedKey* key;
    const vqxml::KeyTransport* transport;
};

std::vector<XENCEncryptedKey*> keysNestedIn(XENCEncryptedData* data) {
    DSIGKeyInfoList* list = data != nullptr ? data->getKeyInfoList() : nullptr;
    std::vector<XENCEncryptedKey*> keys;
    for (DSIGKeyInfoList::size_type i = 0; list != nullptr && i < list->getSize(); ++i)
        if (list->item(i)->getKeyInfoType() == DSIGKeyInfo::KEYINFO_ENCRYPTEDKEY)
            keys.push_back(static_cast<XENCEncryptedKey*>(list->item(i)));
    return keys;
}

// The EncryptedKey read last, then, when it stands in the EncryptedData's
// ds:KeyInfo, the others there whose transport the library knows.
std::vector<Candidate> unwrapCandidates(const std::vector<XENCEncryptedKey*>& nested, XENCEncryptedKey* primary,
                                        const vqxml::KeyTransport* primaryTransport) {
    std::vector<Candidate> candidates{{primary, primaryTransport}};
    if (std::find(nested.begin(), nested.end(), primary) == nested.end())
        return candidates;
    for (XENCEncryptedKey* key : nested) {
        const vqxml::KeyTransport* transport = vqxml::transportByURI(algorithmOf(key->getEncryptionMethod()));
        if (key != primary && transport != nullptr)
            candidates.push_back({key, transport});
    }
    return candidates;
}

// The caller's key in the form a transport needs, made once when first needed.
class CallerKey {
public:
    CallerKey(VQXML_XMLSecurity& ctx, unsigned char* cert, int certLen, unsigned char* priKey, int priKeyLen,
              int noSecretCode)
        : m_ctx(ctx), m_cert(cert), m_certLen(certLen), m_priKey(priKey), m_priKeyLen(priKeyLen),
          m_noSecretCode(noSecretCode) {}

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
            throw VQXML_XSECException(m_noSecretCode);
    }

    // A new key-encryption key for the transport, for the cipher to own.
    XSECCryptoKey* kekFor(const vqxml::KeyTransport& transport) {
        if (!vqxml::wrapsWithSharedKey(transport))
            return rsa().clone();
        requireSecret();
        return vqxml::newKeyEncryptionKey(transport, m_priKey, m_priKeyLen, m_noSecretCode);
    }

private:
    VQXML_XMLSecurity& m_ctx;
    unsigned char* m_cert;
    int m_certLen;
    unsigned char* m_priKey;
    int m_priKeyLen;
    int m_noSecretCode;
    std::unique_ptr<VQTKCryptoKeyRSA> m_rsa;
    std::exception_ptr m_rsaFailure;
};

// The octets an RSA-1_5 key carries; text that is not base64 carries none, and
// unwraps (to a derived key) like any other ciphertext.
vqxml::korean::SecureBytes wrappedOctets(XENCEncryptedKey& key) {
    XENCCipherData* data = key.getCipherData();
    if (data == nullptr || data->getCipherDataType() != XENCCipherData::VALUE_TYPE || data->getCipherValue() == nullptr)
        throw XSECException(XSECException::CipherDataError, "An RSA-1_5 EncryptedKey must carry its CipherValue");
    vqxml::korean::SecureBytes octets;
    if (!vqxml::base64Decode(data->getCipherValue()->getCipherString(), octets))
        octets.clear();
    return octets;
}

// A key wrapped by RSA is as long as the recipient's modulus: one that is not
// was wrapped for another key, which its length alone shows.
void requireModulusLength(XENCEncryptedKey& key, const VQTKCryptoKeyRSA& rsa, const UnwrapCodes& codes) {
    XENCCipherData* data = key.getCipherData();
    vqxml::korean::SecureBytes octets;
    if (data != nullptr && data->getCipherDataType() == XENCCipherData::VALUE_TYPE &&
        data->getCipherValue() != nullptr && vqxml::base64Decode(data->getCipherValue()->getCipherString(), octets) &&
        octets.size() != rsa.getLength())
        throw VQXML_XSECException(codes.noEncryptedKey, "The encrypted key was wrapped for a key of another length");
}

// The key's length.
int unwrap(VQXML_XENCCipher& cipher, CallerKey& caller, const Candidate& c, int keyBytes, vqxml::KeyBuffer& out) {
    if (c.transport->methodCode == kRsa15) {
        const vqxml::korean::SecureBytes wrapped = wrappedOctets(*c.key);
        caller.rsa().unwrapKeyImplicitly(wrapped.data(), wrapped.size(), out.get(), static_cast<size_t>(keyBytes));
        return keyBytes;
    }
    cipher.setKEK(caller.kekFor(*c.transport));
    return cipher.decryptKey(c.key, out.get(), out.size());
}

}  // namespace

void VQXML_XMLSecurity::unwrapSessionKey(VQXML_XENCCipher& cipher, bool readKeyIsDocumentKey,
                                         const UnwrapCodes& codes, unsigned char* cert, int certLen,
                                         unsigned char* priKey, int priKeyLen) {
    XENCEncryptedData* data = cipher.getEncryptedData();
    const std::vector<XENCEncryptedKey*> nested = keysNestedIn(data);
    const bool held = m_encryptedKey != nullptr &&
                      (readKeyIsDocumentKey || std::find(nested.begin(), nested.end(), m_encryptedKey) != nested.end());
    if (!held)
        throw VQXML_XSECException(codes.noEncryptedKey, "No encrypted key has been read: call GetEncKeyInfo first");
    const vqxml::KeyTransport* readTransport = vqxml::transportByMethodCode(m_keyWrapAlg);
    if (readTransport == nullptr)
        throw VQXML_XSECException(codes.noEncryptedKey);
    const vqxml::SymmetricAlgorithm* algorithm =
        data != nullptr ? vqxml::symmetricByURI(algorithmOf(data->getEncryptionMethod())) : nullptr;
    if (algorithm == nullptr)
        throw VQXML_XSECException(codes.unknownCipher);

    CallerKey caller(*this, cert, certLen, priKey, priKeyLen, codes.noSecret);
    const std::string encoding = subjectEncoding();
    // A caller who gives no certificate has no names to compare.
    const bool byCertificate = cert != nullptr && certLen > 0;

    // Which EncryptedKeys may be the caller's: for RSA, those whose recipient
    // names (the ones read for the first) match the caller's certificate.
    std::vector<Candidate> eligible;
    std::exception_ptr firstRefusal;
    for (const Candidate& c : unwrapCandidates(nested, m_encryptedKey, readTransport)) {
        try {
            if (vqxml::wrapsWithSharedKey(*c.transport)) {
                caller.requireSecret();
            } else {
                requireModulusLength(*c.key, caller.rsa(), codes);
                if (byCertificate) {
                    const vqxml::xenc::ReadRecipient read{m_subjectName, m_issuer, m_serialNumber, m_cert, m_certLen};
                    if (const int mismatch =
                            vqxml::xenc::recipientMismatch(*c.key, c.key == m_encryptedKey ? &read : nullptr,
                                                           caller.rsa(), encoding.c_str(), codes))
                        throw VQXML_XSECException(mismatch);
                }
            }
            eligible.push_back(c);
        } catch (...) {
            if (c.key == m_encryptedKey)
                firstRefusal = std::current_exception();
        }
    }
    if (eligible.empty())
        std::rethrow_exception(firstRefusal ? firstRefusal
                                            : std::make_exception_ptr(VQXML_XSECException(codes.noEncryptedKey)));

    replaceSessionKey(nullptr, 0);
    std::exception_ptr firstFailure;
    for (const Candidate& c : eligible) {
        try {
            vqxml::KeyBuffer unwrapped(kMaxUnwrappedKey);
            const int len = unwrap(cipher, caller, c, algorithm->keyBytes, unwrapped);
            replaceSessionKey(unwrapped.release(), len);
            m_encryptedKey = c.key;
            m_keyWrapAlg = c.transport->methodCode;
            return;
        } catch (...) {
            if (!firstFailure)
                firstFailure = std::current_exception();
        }
    }
    std::rethrow_exception(firstFailure);
}

std::string VQXML_XMLSecurity::subjectEncoding() const {
    const std::string declared = vqxml::declaredEncoding(m_document);
    return declared.empty() ? "UTF-8" : declared;
}
