// Whether an EncryptedKey was made for the caller's certificate, by the names
// the document states for its recipient (xenc/KeyUnwrapper.hpp).
//
// The names are every X509SubjectName and X509IssuerSerial of the X509Data in
// the key's ds:KeyInfo, read from the document: one X509Data may name the
// recipient's certificate beside others (the CAs above it, as libxmlsec1
// writes), and the engine keeps only the first of each. The caller is the
// recipient when one of the issuer-and-serial pairs stated and one of the
// subjects stated (of each kind stated) are its certificate's. With no such names, the names read
// otherwise for the key read last (a token reference's issuer and serial), else
// those of the certificate the key information carries, are compared.
#ifndef VQXML_XENC_RECIPIENTNAMES_HPP
#define VQXML_XENC_RECIPIENTNAMES_HPP

class VQTKCryptoKeyRSA;
class XENCEncryptedKey;

namespace vqxml::xenc {

struct UnwrapCodes;

// What the key information reader kept for the EncryptedKey read last: subject
// in the subject encoding, issuer and serial in the local code page (any null),
// and the DER certificate.
struct ReadRecipient {
    const char* subject;
    const char* issuer;
    const char* serial;
    const unsigned char* cert;
    int certLen;
};

// 0, or the code of the name that differs from the caller's certificate, in the
// order issuer, subject, serial; among several pairs, none of them the
// caller's, the serial when one names the caller's issuer. read is null for a
// key other than the one read last.
int recipientMismatch(XENCEncryptedKey& key, const ReadRecipient* read, const VQTKCryptoKeyRSA& caller,
                      const char* subjectEncoding, const UnwrapCodes& codes);

}  // namespace vqxml::xenc

#endif
