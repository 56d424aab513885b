// The XML Encryption family's view of the algorithm table (engine/Algorithms.def):
// the data ciphers of EncryptedData and the key transports of EncryptedKey.
#ifndef VQXML_XENC_XENCALGORITHMS_HPP
#define VQXML_XENC_XENCALGORITHMS_HPP

#include "engine/Algorithms.hpp"

class XSECCryptoSymmetricKey;

namespace vqxml {

using SymmetricAlgorithm = Algorithm;
using KeyTransport = Algorithm;

// Null for a selector, URI or code the table has no cipher for.
inline const SymmetricAlgorithm* symmetricBySelector(int selector) {
    return algorithmBySelector(AlgorithmKind::CIPHER, selector);
}
inline const SymmetricAlgorithm* symmetricByURI(const XMLCh* uri) {
    return algorithmByURI(AlgorithmKind::CIPHER, uri);
}
inline const SymmetricAlgorithm* symmetricByMethodCode(int methodCode) {
    return algorithmByCode(AlgorithmKind::CIPHER, methodCode);
}

// Null for a selector or URI the table has no key transport for.
inline const KeyTransport* transportBySelector(int selector) {
    return algorithmBySelector(AlgorithmKind::KEY_TRANSPORT, selector);
}
inline const KeyTransport* transportByURI(const XMLCh* uri) {
    return algorithmByURI(AlgorithmKind::KEY_TRANSPORT, uri);
}
inline const KeyTransport* transportByMethodCode(int methodCode) {
    return algorithmByCode(AlgorithmKind::KEY_TRANSPORT, methodCode);
}

// Whether a transport wraps with a key both sides share (key wrap, or a block
// cipher) rather than the recipient's RSA key.
inline bool wrapsWithSharedKey(const KeyTransport& transport) {
    return transport.keyType != 0;
}

// The xenc11:MGF a transport writes (null: none, as rsa-oaep-mgf1p).
const XMLCh* writtenMgf(const KeyTransport& transport);

// The shared key-encryption key of a transport, owned by the caller: exactly the
// transport's key length, else VQXML_XSECException(wrongLengthCode).
XSECCryptoSymmetricKey* newKeyEncryptionKey(const KeyTransport& transport, const unsigned char* key, int len,
                                            int wrongLengthCode);

// An empty key of a crypto provider key type, owned by the caller; null when the
// installed provider cannot make one.
XSECCryptoSymmetricKey* newSymmetricKey(int keyType);

}  // namespace vqxml

#endif
