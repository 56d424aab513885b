#include "engine/wssec/TokenKeys.hpp"

#include <memory>
#include <string>

#include <openssl/x509.h>
#include <xercesc/dom/DOM.hpp>

#include "core/Transcode.hpp"
#include "core/VQXMLException.hpp"
#include "engine/CertificateEncoding.hpp"
#include "engine/CertificateNames.hpp"
#include "engine/NameComparison.hpp"
#include "engine/VQTKCryptoKeyKCDSA.hpp"
#include "engine/VQTKCryptoKeyRSA.hpp"
#include "engine/VQTKCryptoX509.hpp"
#include "engine/korean/KcdsaEncoding.hpp"
#include "engine/wssec/VQXML_WSSecSecurityTokenReference.hpp"
#include "engine/wssec/WssNames.hpp"
#include "vqxml/vqxml.h"

XERCES_CPP_NAMESPACE_USE

namespace vqxml::wss {

namespace {

const X509* opensslCertificate(const XSECCryptoX509& cert) {
    const X509* x509 = vqxml::opensslCertificate(&cert);
    if (x509 == nullptr)
        throw VQXML_XSECException(VQXML_ERR_SOAP_BAD_HEADER, "The security token holds no readable certificate");
    return x509;
}

bool sameText(const XMLCh* stated, const std::string& actual) {
    return stated != nullptr && vqxml::XMLT("UTF-8", actual.c_str()) == stated;
}

}  // namespace

XSECCryptoKey* publicKeyOf(const XSECCryptoX509& cert) {
    const X509* x509 = opensslCertificate(cert);
    if (VQTKCryptoKeyRSA::hasRsaKey(x509))
        return VQTKCryptoKeyRSA::publicKeyOf(x509);
    if (!vqxml::korean::isKcdsaPublicKey(X509_get_X509_PUBKEY(x509)))
        return cert.clonePublicKey();
    const std::vector<unsigned char> der = vqxml::encodeCertificate(x509);
    if (der.empty())
        throw VQXML_XSECException(VQXML_ERR_SOAP_BAD_HEADER, "The certificate could not be encoded");
    return vqxml::createKCDSAKey(der.data(), static_cast<int>(der.size()), nullptr, 0);
}

XSECCryptoKey* keyOfTokenIn(const DOMElement* security, const XMLCh* issuer, const XMLCh* serial) {
    for (DOMNode* entry = security != nullptr ? security->getFirstChild() : nullptr; entry != nullptr;
         entry = entry->getNextSibling()) {
        const XMLCh* id = isElement(entry, kWsse, u"BinarySecurityToken")
                              ? static_cast<DOMElement*>(entry)->getAttributeNS(kWsu, u"Id")
                              : nullptr;
        if (id == nullptr || *id == 0)
            continue;
        // Read through a reference, so that the token passes the same checks.
        DOMElement* holder = entry->getOwnerDocument()->createElementNS(kWsse, u"wsse:SecurityTokenReference");
        VQXML_WSSecSecurityTokenReference reference(nullptr, holder);
        reference.setTokenReference(id);
        reference.load();
        const X509* x509 = opensslCertificate(*reference.getXSECCrytpoCert());
        if (vqxml::sameDistinguishedName(issuer, vqxml::XMLT("UTF-8", vqxml::certificateIssuer(x509).c_str()).c_str()) &&
            sameText(serial, vqxml::certificateSerialDecimal(x509)))
            return publicKeyOf(*reference.getXSECCrytpoCert());
    }
    throw VQXML_XSECException(VQXML_ERR_NOT_VERIFIED, "The signer's certificate named by issuer and serial is not in the message");
}

}  // namespace vqxml::wss
