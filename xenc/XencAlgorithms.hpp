// The XML Encryption family's algorithm selectors, the URIs they stand for and
// the engine's codes for them.
//
// Symmetric (EncryptionMethod of EncryptedData): selector 1 Triple DES, 2 SEED,
// 3 NEAT, 4 ARIA-128, all in CBC mode; method codes 1, 18, 19, 20; crypto
// provider key types 1, 5, 6, 7.
// Key transport (EncryptionMethod of EncryptedKey): selector 1 Triple DES key
// wrap, 2 RSA PKCS #1 v1.5, 3 RSA-OAEP with MGF1 and SHA-1; method codes 8, 9, 10.
#ifndef VQXML_XENC_XENCALGORITHMS_HPP
#define VQXML_XENC_XENCALGORITHMS_HPP

#include <xercesc/util/XercesDefs.hpp>

class XSECCryptoSymmetricKey;

namespace vqxml {

struct SymmetricAlgorithm {
    int selector;
    const XMLCh* uri;
    int keyType;
    int methodCode;
    int keyBytes;
};

struct KeyTransport {
    int selector;
    const XMLCh* uri;
    int methodCode;
};

// Null for a selector, URI or code that is none of the four.
const SymmetricAlgorithm* symmetricBySelector(int selector);
const SymmetricAlgorithm* symmetricByURI(const XMLCh* uri);
const SymmetricAlgorithm* symmetricByMethodCode(int methodCode);

// Null for a selector or URI that is none of the three.
const KeyTransport* transportBySelector(int selector);
const KeyTransport* transportByURI(const XMLCh* uri);

// An empty key of a crypto provider key type (1, 5, 6, 7), owned by the caller;
// null when the installed provider cannot make one.
XSECCryptoSymmetricKey* newSymmetricKey(int keyType);

}  // namespace vqxml

#endif
