#include "engine/KeyTransportHandlers.hpp"

#include <xercesc/util/XMLString.hpp>
#include <xsec/dsig/DSIGConstants.hpp>
#include <xercesc/dom/DOMElement.hpp>
#include <xsec/enc/XSECCryptoException.hpp>
#include <xsec/enc/XSECCryptoKeyRSA.hpp>
#include <xsec/framework/XSECException.hpp>
#include <xsec/utils/XSECSafeBuffer.hpp>
#include <xsec/xenc/XENCEncryptionMethod.hpp>

#include "engine/KeyWithBytes.hpp"
#include "engine/Algorithms.hpp"
#include "engine/Base64.hpp"
#include "engine/ChainBytes.hpp"
#include "engine/EvpCipher.hpp"

XERCES_CPP_NAMESPACE_USE

using vqxml::korean::SecureBytes;

namespace {

constexpr std::size_t kWrapBlock = 8;

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

// in encrypted (public key) or decrypted (private key) by RSA-OAEP as method says.
SecureBytes runOaep(const XSECCryptoKeyRSA& rsa, bool encrypt, const XENCEncryptionMethod* method,
                    const SecureBytes& in) {
    OaepParameters p = parametersOf(method);
    const auto run = encrypt ? &XSECCryptoKeyRSA::publicEncrypt : &XSECCryptoKeyRSA::privateDecrypt;
    SecureBytes out(rsa.getLength());
    out.resize((rsa.*run)(in.data(), out.data(), static_cast<unsigned int>(in.size()),
                          static_cast<unsigned int>(out.size()), XSECCryptoKeyRSA::PAD_OAEP, p.digest, p.mgf,
                          p.label.empty() ? nullptr : p.label.data(), static_cast<unsigned int>(p.label.size())));
    return out;
}

}  // namespace

bool KeyTransportHandler::encryptToSafeBuffer(TXFMChain* plainText, XENCEncryptionMethod* method,
                                              const XSECCryptoKey* key, DOMDocument*, safeBuffer& result) const {
    const SecureBytes wrapped = wrap(method, key, vqxml::readAllBytes(plainText));
    result.sbStrcpyIn(vqxml::base64Text(std::vector<unsigned char>(wrapped.begin(), wrapped.end())).c_str());
    return true;
}

unsigned int KeyTransportHandler::decryptToSafeBuffer(TXFMChain* cipherText, XENCEncryptionMethod* method,
                                                      const XSECCryptoKey* key, DOMDocument*,
                                                      safeBuffer& result) const {
    const SecureBytes plain = unwrap(method, key, vqxml::readAllBytes(cipherText));
    result.isSensitive();
    result.sbMemcpyIn(plain.data(), plain.size());
    return static_cast<unsigned int>(plain.size());
}

SecureBytes AesKeyWrapHandler::wrap(XENCEncryptionMethod* method, const XSECCryptoKey* key,
                                    const SecureBytes& plain) const {
    const SecureBytes& kek = KeyWithBytes::forMethod(method, key).bytes();
    if (plain.size() < 2 * kWrapBlock || plain.size() % kWrapBlock != 0)
        throw XSECException(XSECException::CipherError, "AES key wrap: the key is not whole 8-byte blocks");
    return vqxml::runCipher(vqxml::aesCipher(kek.size(), vqxml::AesMode::KeyWrap), true, kek, nullptr, plain.data(),
                            plain.size());
}

SecureBytes AesKeyWrapHandler::unwrap(const XENCEncryptionMethod* method, const XSECCryptoKey* key,
                                      const SecureBytes& wrapped) const {
    const SecureBytes& kek = KeyWithBytes::forMethod(method, key).bytes();
    if (wrapped.size() < 3 * kWrapBlock || wrapped.size() % kWrapBlock != 0)
        vqxml::cipherFailure("AES key wrap: the wrapped key is not whole 8-byte blocks");
    return vqxml::runCipher(vqxml::aesCipher(kek.size(), vqxml::AesMode::KeyWrap), false, kek, nullptr,
                            wrapped.data(), wrapped.size());
}

const XMLCh* RsaOaepHandler::mgfFor(int hash) {
    for (const MgfRow& row : kMgfs)
        if (row.hash == hash)
            return row.mgf;
    return nullptr;
}

SecureBytes RsaOaepHandler::wrap(XENCEncryptionMethod* method, const XSECCryptoKey* key,
                                 const SecureBytes& plain) const {
    const XSECCryptoKeyRSA& rsa = rsaKey(key, XSECCryptoKey::KEY_RSA_PRIVATE);
    if (method->getDigestMethod() == nullptr || *method->getDigestMethod() == 0)
        method->setDigestMethod(digestForMgf(
            XMLString::equals(method->getAlgorithm(), DSIGConstants::s_unicodeStrURIRSA_OAEP) ? method->getMGF()
                                                                                              : nullptr));
    return runOaep(rsa, true, method, plain);
}

SecureBytes RsaOaepHandler::unwrap(const XENCEncryptionMethod* method, const XSECCryptoKey* key,
                                   const SecureBytes& wrapped) const {
    return runOaep(rsaKey(key, XSECCryptoKey::KEY_RSA_PUBLIC), false, method, wrapped);
}
