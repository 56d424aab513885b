#include "engine/WholeBufferCipherHandler.hpp"

#include <memory>

#include <xsec/framework/XSECException.hpp>
#include <xsec/transformers/TXFMChain.hpp>
#include <xsec/transformers/TXFMSB.hpp>
#include <xsec/utils/XSECSafeBuffer.hpp>

#include "engine/Base64.hpp"
#include "engine/ChainBytes.hpp"

bool WholeBufferCipherHandler::encryptToSafeBuffer(TXFMChain* plainText, XENCEncryptionMethod* encryptionMethod,
                                                   const XSECCryptoKey* key, XERCES_CPP_NAMESPACE::DOMDocument*,
                                                   safeBuffer& result) const {
    const vqxml::korean::SecureBytes plain = vqxml::readAllBytes(plainText);
    result.sbStrcpyIn(vqxml::base64Text(encryptOctets(encryptionMethod, key, plain.data(), plain.size())).c_str());
    return true;
}

unsigned int WholeBufferCipherHandler::decryptToSafeBuffer(TXFMChain* cipherText,
                                                           XENCEncryptionMethod* encryptionMethod,
                                                           const XSECCryptoKey* key,
                                                           XERCES_CPP_NAMESPACE::DOMDocument*,
                                                           safeBuffer& result) const {
    const vqxml::korean::SecureBytes plain = decryptOctets(encryptionMethod, key, vqxml::readAllBytes(cipherText));
    result.isSensitive();
    result.sbMemcpyIn(plain.data(), plain.size());
    return unsigned(plain.size());
}

bool WholeBufferCipherHandler::appendDecryptCipherTXFM(TXFMChain* cipherText,
                                                       XENCEncryptionMethod* encryptionMethod,
                                                       const XSECCryptoKey* key,
                                                       XERCES_CPP_NAMESPACE::DOMDocument* doc) const {
    const vqxml::korean::SecureBytes plain = decryptOctets(encryptionMethod, key, vqxml::readAllBytes(cipherText));
    safeBuffer sb;
    sb.isSensitive();
    sb.sbMemcpyIn(plain.data(), plain.size());
    // The plaintext replaces the chain's output from here on.
    std::unique_ptr<TXFMSB> source(new TXFMSB(doc));
    source->setInput(sb, unsigned(plain.size()));
    cipherText->appendTxfm(source.release());
    return true;
}

vqxml::korean::SecureBytes WholeBufferCipherHandler::decryptCipherValue(const XENCEncryptionMethod* method,
                                                                        const XSECCryptoKey* key,
                                                                        const XMLCh* base64) const {
    vqxml::korean::SecureBytes framed;
    if (!vqxml::base64Decode(base64, framed))
        throw XSECException(XSECException::CipherError, "The CipherValue is not base64 text");
    return decryptOctets(method, key, framed);
}
