#include "engine/UnsupportedAlgorithmHandler.hpp"

#include <string>

#include <xsec/framework/XSECException.hpp>

void UnsupportedAlgorithmHandler::refuse(const char* operation) const {
    std::string text = std::string(handlerName()) + ": " + operation + " is not supported";
    throw XSECException(XSECException::AlgorithmMapperError, text.c_str());
}

bool UnsupportedAlgorithmHandler::encryptToSafeBuffer(TXFMChain*, XENCEncryptionMethod*,
                                                      const XSECCryptoKey*,
                                                      XERCES_CPP_NAMESPACE::DOMDocument*,
                                                      safeBuffer&) const {
    refuse("encryption");
}

unsigned int UnsupportedAlgorithmHandler::decryptToSafeBuffer(TXFMChain*, XENCEncryptionMethod*,
                                                              const XSECCryptoKey*,
                                                              XERCES_CPP_NAMESPACE::DOMDocument*,
                                                              safeBuffer&) const {
    refuse("decryption");
}

bool UnsupportedAlgorithmHandler::appendDecryptCipherTXFM(TXFMChain*, XENCEncryptionMethod*,
                                                          const XSECCryptoKey*,
                                                          XERCES_CPP_NAMESPACE::DOMDocument*) const {
    refuse("decryption");
}

unsigned int UnsupportedAlgorithmHandler::signToSafeBuffer(TXFMChain*, const XMLCh*, const XSECCryptoKey*,
                                                           unsigned int, safeBuffer&) const {
    refuse("signing");
}

bool UnsupportedAlgorithmHandler::verifyBase64Signature(TXFMChain*, const XMLCh*, const char*,
                                                        unsigned int, const XSECCryptoKey*) const {
    refuse("signature verification");
}

bool UnsupportedAlgorithmHandler::appendSignatureHashTxfm(TXFMChain*, const XMLCh*,
                                                          const XSECCryptoKey*) const {
    refuse("signature hashing");
}

bool UnsupportedAlgorithmHandler::appendHashTxfm(TXFMChain*, const XMLCh*) const {
    refuse("digesting");
}

XSECCryptoKey* UnsupportedAlgorithmHandler::createKeyForURI(const XMLCh*, const unsigned char*,
                                                            unsigned int) const {
    refuse("key creation");
}
