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

// An empty key of a crypto provider key type, owned by the caller; null when the
// installed provider cannot make one.
XSECCryptoSymmetricKey* newSymmetricKey(int keyType);

}  // namespace vqxml

#endif
