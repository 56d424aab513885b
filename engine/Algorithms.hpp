// The one table of algorithms (Algorithms.def): each row joins a caller's
// selector, the tool's name, the URI and the engine's codes. Callers' selectors
// become rows at the C-facing methods; everything below works with rows or URIs.
#ifndef VQXML_ENGINE_ALGORITHMS_HPP
#define VQXML_ENGINE_ALGORITHMS_HPP

#include <openssl/evp.h>
#include <xercesc/util/XercesDefs.hpp>

namespace vqxml {

enum class AlgorithmKind {
    SIGNATURE,      // SignatureMethod
    DIGEST,         // DigestMethod
    C14N,           // canonicalization transforms of a Reference, and SignedInfo's
    SOAP_C14N,      // SignedInfo canonicalization of a SOAP signature (selectors of its own)
    CIPHER,         // EncryptionMethod of EncryptedData
    KEY_TRANSPORT,  // EncryptionMethod of EncryptedKey
};

struct Algorithm {
    AlgorithmKind kind;
    int selector;    // -1: never a caller's choice
    const char* toolName;
    const XMLCh* uri;
    int methodCode;  // the engine's code: signature, hash, canonicalization or encryption method
    int hash;        // signatures: their hash code
    int keyType;     // ciphers: the crypto provider's key type
    int keyBytes;    // ciphers: the key length
    const char* description;
};

// Null when no row matches.
const Algorithm* algorithmBySelector(AlgorithmKind kind, int selector);
const Algorithm* algorithmByURI(AlgorithmKind kind, const XMLCh* uri);
// For signatures, code and hash together name the row.
const Algorithm* algorithmByCode(AlgorithmKind kind, int code, int hash = 0);

// A canonicalization URI of the table as its choices; false for any other URI.
struct CanonicalizationChoice {
    bool exclusive;
    bool comments;
    bool version11;  // Canonical XML 1.1 (inclusive)
};
bool canonicalizationChoice(const XMLCh* uri, CanonicalizationChoice& out);

// OpenSSL's digest for a hash code of the table (a signature's hash, a digest's
// code): SHA-1 and the SHA-2 family only; null for MD5, which nothing here
// reads, HAS-160, which is the library's own, and any other code.
const EVP_MD* shaDigest(int hashCode);

}  // namespace vqxml

#endif
