#include "engine/KeyTransportHandlers.hpp"

#include <xercesc/util/XMLString.hpp>
#include <xsec/dsig/DSIGConstants.hpp>
#include <xercesc/dom/DOMElement.hpp>
#include <xsec/enc/XSECCryptoException.hpp>
#include <xsec/enc/XSECCryptoKeyRSA.hpp>
#include <xsec/framework/XSECException.hpp>
#include <xsec/utils/XSECSafeBuffer.hpp>
#include <xsec/xenc/XENCEncryptionMethod.hpp>

#include "engine/AesKey.hpp"
#include "engine/Algorithms.hpp"
#include "engine/Base64.hpp"
#include "engine/ChainBytes.hpp"
#include "engine/EvpCipher.hpp"

XERCES_CPP_NAMESPACE_USE

using vqxml::korean::SecureBytes;

namespace {

constexpr std::size_t kWrapBlock = 8;

void putBase64(const SecureBytes& bytes, safeBuffer& result) {
    result.sbStrcpyIn(vqxml::base64Text(std::vector<unsigned char>(bytes.begin(), bytes.end())).c_str());
}

unsigned int putOctets(const SecureBytes& bytes, safeBuffer& result) {
    result.isSensitive();
    result.sbMemcpyIn(bytes.data(), bytes.size());
    return static_cast<unsigned int>(bytes.size());
}

struct MgfRow {
    int hash;
    const XMLCh* mgf;
};
constexpr MgfRow kMgfs[] = {{1, u"http://www.w3.org/2009/xmlenc11#mgf1sha1"},
                            {3, u"http://www.w3.org/2009/xmlenc11#mgf1sha224"},
                            {4, u"http://www.w3.org/2009/xmlenc11#mgf1sha256"},
                            {5, u"http://www.w3.org/2009/xmlenc11#mgf1sha384"},
                            {6, u"http://www.w3.org/2009/xmlenc11#mgf1sha512"}};

// What an RSA-OAEP EncryptedKey's method says, with the defaults filled in.
struct OaepParameters {
    const XMLCh* digest;
    const XMLCh* mgf;
    SecureBytes label;
};

OaepParameters parametersOf(const XENCEncryptionMethod* method) {
    OaepParameters p{method->getDigestMethod(), nullptr, {}};
    if (XMLString::equals(method->getAlgorithm(), DSIGConstants::s_unicodeStrURIRSA_OAEP))
        p.mgf = method->getMGF();
    if (p.mgf == nullptr || *p.mgf == 0)
        p.mgf = DSIGConstants::s_unicodeStrURIMGF1_SHA1;
    if (p.digest == nullptr || *p.digest == 0)
        p.digest = DSIGConstants::s_unicodeStrURISHA1;
    const XMLCh* label = method->getOAEPparams();
    if (label != nullptr && !vqxml::base64Decode(label, p.label))
        throw XSECException(XSECException::CipherError, "RSA-OAEP: the OAEPparams are not base64 text");
    return p;
}

// The digest a writer states when the method names none: its MGF's.
const XMLCh* digestForMgf(const XMLCh* mgf) {
    for (const MgfRow& row : kMgfs)
        if (XMLString::equals(row.mgf, mgf))
            if (const vqxml::Algorithm* digest = vqxml::algorithmByCode(vqxml::AlgorithmKind::DIGEST, row.hash))
                return digest->uri;
    return DSIGConstants::s_unicodeStrURISHA1;
}

const XSECCryptoKeyRSA& rsaKey(const XSECCryptoKey* key, XSECCryptoKey::KeyType unusable) {
    const auto* rsa = dynamic_cast<const XSECCryptoKeyRSA*>(key);
    if (rsa == nullptr || rsa->getKeyType() == unusable)
        throw XSECException(XSECException::CipherError, "RSA-OAEP: key inappropriate for the operation");
    return *rsa;
}

unsigned char* labelData(OaepParameters& p) {
    return p.label.empty() ? nullptr : p.label.data();
}

}  // namespace

bool AesKeyWrapHandler::encryptToSafeBuffer(TXFMChain* plainText, XENCEncryptionMethod* method,
                                            const XSECCryptoKey* key, DOMDocument*, safeBuffer& result) const {
    const SecureBytes& kek = AesKey::forMethod(method, key).bytes();
    const SecureBytes plain = vqxml::readAllBytes(plainText);
    if (plain.size() < 2 * kWrapBlock || plain.size() % kWrapBlock != 0)
        throw XSECException(XSECException::CipherError, "AES key wrap: the key is not whole 8-byte blocks");
    putBase64(vqxml::runCipher(vqxml::aesCipher(kek.size(), vqxml::AesMode::KeyWrap), true, kek, nullptr,
                               plain.data(), plain.size()),
              result);
    return true;
}

unsigned int AesKeyWrapHandler::decryptToSafeBuffer(TXFMChain* cipherText, XENCEncryptionMethod* method,
                                                    const XSECCryptoKey* key, DOMDocument*,
                                                    safeBuffer& result) const {
    const SecureBytes& kek = AesKey::forMethod(method, key).bytes();
    const SecureBytes wrapped = vqxml::readAllBytes(cipherText);
    if (wrapped.size() < 3 * kWrapBlock || wrapped.size() % kWrapBlock != 0)
        vqxml::cipherFailure("AES key wrap: the wrapped key is not whole 8-byte blocks");
    return putOctets(vqxml::runCipher(vqxml::aesCipher(kek.size(), vqxml::AesMode::KeyWrap), false, kek, nullptr,
                                      wrapped.data(), wrapped.size()),
                     result);
}

const XMLCh* RsaOaepHandler::mgfFor(int hash) {
    for (const MgfRow& row : kMgfs)
        if (row.hash == hash)
            return row.mgf;
    return nullptr;
}

bool RsaOaepHandler::encryptToSafeBuffer(TXFMChain* plainText, XENCEncryptionMethod* method,
                                         const XSECCryptoKey* key, DOMDocument*, safeBuffer& result) const {
    const XSECCryptoKeyRSA& rsa = rsaKey(key, XSECCryptoKey::KEY_RSA_PRIVATE);
    if (method->getDigestMethod() == nullptr || *method->getDigestMethod() == 0)
        method->setDigestMethod(digestForMgf(XMLString::equals(method->getAlgorithm(),
                                                               DSIGConstants::s_unicodeStrURIRSA_OAEP)
                                                 ? method->getMGF()
                                                 : nullptr));
    OaepParameters p = parametersOf(method);
    const SecureBytes plain = vqxml::readAllBytes(plainText);
    SecureBytes out(rsa.getLength());
    const unsigned int n = rsa.publicEncrypt(plain.data(), out.data(), static_cast<unsigned int>(plain.size()),
                                             static_cast<unsigned int>(out.size()), XSECCryptoKeyRSA::PAD_OAEP,
                                             p.digest, p.mgf, labelData(p), static_cast<unsigned int>(p.label.size()));
    out.resize(n);
    putBase64(out, result);
    return true;
}

unsigned int RsaOaepHandler::decryptToSafeBuffer(TXFMChain* cipherText, XENCEncryptionMethod* method,
                                                 const XSECCryptoKey* key, DOMDocument*, safeBuffer& result) const {
    const XSECCryptoKeyRSA& rsa = rsaKey(key, XSECCryptoKey::KEY_RSA_PUBLIC);
    OaepParameters p = parametersOf(method);
    const SecureBytes wrapped = vqxml::readAllBytes(cipherText);
    SecureBytes out(rsa.getLength());
    const unsigned int n = rsa.privateDecrypt(wrapped.data(), out.data(), static_cast<unsigned int>(wrapped.size()),
                                              static_cast<unsigned int>(out.size()), XSECCryptoKeyRSA::PAD_OAEP,
                                              p.digest, p.mgf, labelData(p), static_cast<unsigned int>(p.label.size()));
    out.resize(n);
    return putOctets(out, result);
}
