// Processing a received envelope: key information, the session key, then
// decryption and verification in the sender's order.
#include <cstdlib>
#include <cstring>
#include <memory>
#include <type_traits>
#include <vector>

#include <xercesc/dom/DOM.hpp>
#include <xsec/dsig/DSIGKeyInfoList.hpp>
#include <xsec/enc/XSECCryptoSymmetricKey.hpp>
#include <xsec/xenc/XENCEncryptedData.hpp>
#include <xsec/xenc/XENCEncryptedKey.hpp>
#include <xsec/xenc/XENCEncryptionMethod.hpp>

#include "engine/EngineLifecycle.hpp"
#include "core/ErrorFrame.hpp"
#include "engine/SignerKeys.hpp"
#include "engine/VQTKCryptoSymmetricKey.hpp"
#include "engine/XencReferences.hpp"
#include "soapsec/wssec/VQXML_WSSecSecurity.hpp"
#include "xenc/KeyUnwrapper.hpp"
#include "xenc/XencAlgorithms.hpp"

XERCES_CPP_NAMESPACE_USE

namespace {

const vqxml::SymmetricAlgorithm* cipherOf(const XENCEncryptedData* data) {
    const XENCEncryptionMethod* method = data->getEncryptionMethod();
    const vqxml::SymmetricAlgorithm* algorithm =
        vqxml::symmetricByURI(method != nullptr ? method->getAlgorithm() : nullptr);
    if (algorithm == nullptr)
        throw VQXML_XSECException(VQXML_ERR_SOAP_CIPHER_SELECTOR);
    return algorithm;
}

}  // namespace

int VQXML_XMLSecurity::SOAPSEC_setSOAPSecDocument(char* xml, int len) {
    return vqxml::guarded(*this, "SOAPSEC_setSOAPSecDocument > ", [&] {
        loadAfresh([&] {
            if (xml == nullptr || xml[0] == '\0')
                throw VQXML_XSECException(VQXML_ERR_SOAP_NO_DOCUMENT);
            loadDocument(xml, len);
            m_wsSecurity = g_provider->newWSSecSecurityFromDOM(m_document, nullptr);
            m_wsSecurity->load();
        });
    });
}

int VQXML_XMLSecurity::SOAPSEC_getSOAPSignInfo(int* isSigned) {
    return vqxml::guarded(*this, "SOAPSEC_getSOAPSignInfo > ", [&] {
        VQXML_WSSecSecurity& engine = requireWSSecurity();
        *isSigned = engine.isWSSecSignature() ? 1 : 0;
        if (*isSigned == 0)
            return;
        getKeyInfoListData(engine.getKeyInfoList());
        m_signatureMethod = engine.getSignatureMethod();
        m_hashMethod = engine.getHashMethod();
    });
}

int VQXML_XMLSecurity::SOAPSEC_getSOAPEncInfo(int* isEncrypted) {
    return vqxml::guarded(*this, "SOAPSEC_getSOAPEncInfo > ", [&] {
        VQXML_WSSecSecurity& engine = requireWSSecurity();
        *isEncrypted = engine.isWSSEncryption() ? 1 : 0;
        if (*isEncrypted == 0)
            return;
        XENCEncryptedData* data = engine.findEncryptedData();
        if (data == nullptr)
            return;
        m_symmKeyLen = 16;
        const vqxml::SymmetricAlgorithm* algorithm = cipherOf(data);
        m_symmAlg = algorithm->methodCode;
        m_symmKeyLen = algorithm->keyBytes;
        if (!data->getKeyInfoList()->isEmpty()) {
            getKeyInfoListData(data->getKeyInfoList());
            return;
        }
        DSIGKeyInfoList* keys = engine.getEncryptedKeyList();
        if (keys == nullptr || keys->isEmpty() || m_encKeyIndex < 0 ||
            static_cast<DSIGKeyInfoList::size_type>(m_encKeyIndex) >= keys->getSize())
            return;
        auto* key = static_cast<XENCEncryptedKey*>(keys->item(static_cast<DSIGKeyInfoList::size_type>(m_encKeyIndex)));
        if (vqxml::xenc::refersTo(*key, data->getElement()->getAttributeNS(nullptr, u"Id")))
            getEncryptedKeyInfo(key);
        m_encKeyIndex += 1;
    });
}

int VQXML_XMLSecurity::SOAPSEC_decryptKeyWrapKey(unsigned char* cert, int certLen, unsigned char* key, int keyLen) {
    return vqxml::guarded(*this, "SOAPSEC_decryptKeyWrapKey > ", [&] {
        VQXML_WSSecSecurity& engine = requireWSSecurity();
        unwrapSessionKey(engine.receivingCipher(), engine.holdsEncryptedKey(m_encryptedKey),
                         vqxml::xenc::kSoapUnwrapCodes, cert, certLen, key, keyLen);
    });
}

// The key type follows the received signature's method, not the certificate, so
// that a certificate of the wrong kind is refused before anything is verified.
int VQXML_XMLSecurity::SOAPSEC_setVerifyCert(unsigned char* cert, int certLen) {
    return vqxml::guarded(*this, "SOAPSEC_setVerifyCert > ", [&] {
        if (cert == nullptr || certLen <= 0)
            throw VQXML_XSECException(VQXML_ERR_SOAP_NO_KEY);
        VQXML_WSSecSecurity& engine = requireWSSecurity();
        if (!engine.isWSSecSignature())
            throw VQXML_XSECException(VQXML_ERR_SOAP_NOT_ASYMMETRIC, "The message carries no signature");
        const auto take = [&](auto* key) {
            std::unique_ptr<std::remove_pointer_t<decltype(key)>> owned(key);
            const std::vector<unsigned char> der = owned->certificateDER();
            engine.setVerificationKey(owned.release(), der);
        };
        if (!vqxml::withSignerKey(engine.getSignatureMethod(), cert, certLen, nullptr, 0, take))
            throw VQXML_XSECException(VQXML_ERR_SOAP_NOT_ASYMMETRIC);
    });
}

void VQXML_XMLSecurity::decryptSOAPParts() {
    VQXML_WSSecSecurity& engine = *m_wsSecurity;
    while (XENCEncryptedData* data = engine.findEncryptedData()) {
        const vqxml::SymmetricAlgorithm* algorithm = cipherOf(data);
        if (m_symmKey == nullptr)
            throw VQXML_XSECException(VQXML_ERR_SOAP_ENCRYPTED_NO_KEY);
        std::unique_ptr<XSECCryptoSymmetricKey> key(vqxml::newSymmetricKey(algorithm->keyType));
        if (!key)
            throw VQXML_XSECException(VQXML_ERR_PROVIDER_KEY_TYPE);
        key->setKey(m_symmKey, unsigned(m_symmKeyLen));
        engine.setCipherKey(key.release());
        engine.decryptElement(data->getElement());
    }
    // Removed, not released: the engine's key objects still point at them.
    while (DOMNode* key = m_document->getElementsByTagNameNS(u"http://www.w3.org/2001/04/xmlenc#", u"EncryptedKey")
                              ->item(0))
        key->getParentNode()->removeChild(key);
}

int VQXML_XMLSecurity::SOAPSEC_processSOAP() {
    return vqxml::guarded(*this, "SOAPSEC_processSOAP > ", [&] {
        VQXML_WSSecSecurity& engine = requireWSSecurity();
        const bool first = engine.isfirstSignatureProcess();
        const bool hasSig = engine.isWSSecSignature();
        const bool hasEnc = engine.isWSSEncryption();
        if (!hasSig && !hasEnc)
            throw VQXML_XSECException(VQXML_ERR_SOAP_NOT_SECURED);
        bool sigDone = !hasSig;
        bool encDone = !hasEnc;
        while (!sigDone || !encDone) {
            if ((first || encDone) && !sigDone) {
                if (!engine.verify())
                    throw VQXML_XSECException(VQXML_ERR_NOT_VERIFIED, engine.getErrMsgs());
                sigDone = true;
            }
            if (!encDone) {
                decryptSOAPParts();
                encDone = true;
            }
        }
        if (m_removeSecurityHeader) {
            if (engine.isWSSecSignature())
                engine.removeWsuId();
            engine.removeSecurityHeader();
        }
        storeResultDocument();
    });
}

const char* VQXML_XMLSecurity::SOAPSEC_getSignedParts() const {
    return m_wsSecurity != nullptr ? m_wsSecurity->signedParts().c_str() : "";
}
