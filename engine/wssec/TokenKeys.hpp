// Verification keys out of X.509 security tokens.
#ifndef VQXML_ENGINE_WSSEC_TOKENKEYS_HPP
#define VQXML_ENGINE_WSSEC_TOKENKEYS_HPP

#include <xercesc/util/XercesDefs.hpp>

XERCES_CPP_NAMESPACE_BEGIN
class DOMElement;
XERCES_CPP_NAMESPACE_END

class XSECCryptoKey;
class XSECCryptoX509;

namespace vqxml::wss {

// A new public key of the certificate; KCDSA certificates, which OpenSSL cannot
// decode, get the library's KCDSA key object.
XSECCryptoKey* publicKeyOf(const XSECCryptoX509& cert);

// The public key of the X509v3 BinarySecurityToken of security whose certificate
// has that issuer (as the library writes names) and decimal serial; throws
// XSECException when none has.
XSECCryptoKey* keyOfTokenIn(const XERCES_CPP_NAMESPACE::DOMElement* security, const XMLCh* issuer,
                            const XMLCh* serial);

}  // namespace vqxml::wss

#endif
