// Unwrapping the session key of a received document: one way for XML Encryption
// and for SOAP processing, which differ only in their status codes.
//
// The EncryptedKey read last (by the key information reader) is unwrapped with
// the caller's certificate and private key, or key-encryption key. Rules of ours:
//  - The key read last must still be one the family holds: a document-level key,
//    or one in the ds:KeyInfo of the EncryptedData loaded now. Otherwise (none
//    read, or one of an EncryptedData let go since) nothing is unwrapped.
//  - Recipient check (xenc/RecipientNames.hpp): the names the document states
//    for the key (subject, issuer and serial, one of several where an X509Data
//    names several certificates; when it names its recipient by certificate
//    alone, the names in that certificate), provided the caller gives its own
//    certificate, must be that certificate's. A mismatch is refused by its own
//    status.
//  - Candidates: when the key read last is not the caller's (its names differ, or
//    it does not unwrap), the other EncryptedKeys of the same ds:KeyInfo are tried
//    in document order, so that every recipient of a document with several can
//    open it. With no name matching, the status is the first key's mismatch; with
//    none unwrapping, its first failure.
//  - RSA PKCS #1 v1.5 keys never fail to unwrap (engine/Pkcs1ImplicitRejection.hpp):
//    a bad padding or a key of the wrong length for the EncryptedData's algorithm
//    gives a derived key, and the data then fails to decrypt like data under any
//    wrong key. Such a key therefore ends the trial of candidates: trying the
//    next one only when the padding is bad would answer the very question the
//    implicit rejection hides.
#ifndef VQXML_XENC_KEYUNWRAPPER_HPP
#define VQXML_XENC_KEYUNWRAPPER_HPP

#include "vqxml/vqxml.h"

namespace vqxml::xenc {

struct UnwrapCodes {
    int noEncryptedKey;  // none read (or let go of), or an unknown transport
    int issuerDiffers;
    int subjectDiffers;
    int serialDiffers;
    int noSecret;        // key wrap without key-encryption key bytes
    int unknownCipher;   // the EncryptedData's algorithm is not one of ours
};

inline constexpr UnwrapCodes kXmlEncUnwrapCodes{VQXML_ERR_ENC_TRANSPORT_SELECTOR, VQXML_ERR_ENC_RECIPIENT_ISSUER,
                                               VQXML_ERR_ENC_RECIPIENT_SUBJECT,  VQXML_ERR_ENC_RECIPIENT_SERIAL,
                                               VQXML_ERR_ENC_NO_KEY,             VQXML_ERR_ENC_CIPHER_SELECTOR};
inline constexpr UnwrapCodes kSoapUnwrapCodes{VQXML_ERR_SOAP_TRANSPORT_SELECTOR, VQXML_ERR_SOAP_RECIPIENT_ISSUER,
                                             VQXML_ERR_SOAP_RECIPIENT_SUBJECT,  VQXML_ERR_SOAP_RECIPIENT_SERIAL,
                                             VQXML_ERR_SOAP_NO_KEY_DATA,        VQXML_ERR_SOAP_CIPHER_SELECTOR};

}  // namespace vqxml::xenc

#endif
