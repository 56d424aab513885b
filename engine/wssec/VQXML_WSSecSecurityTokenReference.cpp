#include "engine/wssec/VQXML_WSSecSecurityTokenReference.hpp"

#include <string>

#include <xercesc/dom/DOM.hpp>
#include <xsec/enc/XSECCryptoX509.hpp>
#include <xsec/utils/XSECPlatformUtils.hpp>

#include "core/VQXMLException.hpp"
#include "engine/wssec/WssNames.hpp"
#include "vqxml/vqxml.h"

XERCES_CPP_NAMESPACE_USE
using namespace vqxml::wss;

namespace {


std::basic_string<XMLCh> textOf(const DOMElement* element) {
    const XMLCh* text = element != nullptr ? element->getTextContent() : nullptr;
    std::basic_string<XMLCh> out = text != nullptr ? text : u"";
    const auto first = out.find_first_not_of(u" \t\r\n");
    const auto last = out.find_last_not_of(u" \t\r\n");
    return first == std::basic_string<XMLCh>::npos ? std::basic_string<XMLCh>() : out.substr(first, last - first + 1);
}

// Base64 is ASCII; anything else is no certificate.
std::string asciiOf(const std::basic_string<XMLCh>& text) {
    std::string out;
    out.reserve(text.size());
    for (XMLCh c : text) {
        if (c > 0x7f)
            throw VQXML_XSECException(VQXML_ERR_SOAP_BAD_HEADER, "The security token is not base64 text");
        out.push_back(static_cast<char>(c));
    }
    return out;
}

bool absentOr(const XMLCh* value, const XMLCh* expected) {
    return value == nullptr || *value == 0 || XMLString::equals(value, expected);
}

}  // namespace

VQXML_WSSecSecurityTokenReference::VQXML_WSSecSecurityTokenReference(const XSECEnv* env, DOMElement* element)
    : DSIGKeyInfo(env), m_element(element) {
    mp_keyInfoDOMNode = element;
}

VQXML_WSSecSecurityTokenReference::~VQXML_WSSecSecurityTokenReference() = default;

std::unique_ptr<VQXML_WSSecSecurityTokenReference> VQXML_WSSecSecurityTokenReference::create(const XSECEnv* env,
                                                                                             DOMElement* parent) {
    DOMDocument* doc = parent->getOwnerDocument();
    DOMElement* element = doc->createElementNS(kWsse, u"wsse:SecurityTokenReference");
    element->setAttributeNS(kXmlns, u"xmlns:wsse", kWsse);
    parent->appendChild(element);
    return std::make_unique<VQXML_WSSecSecurityTokenReference>(env, element);
}

void VQXML_WSSecSecurityTokenReference::load() {
    m_keyType = NONE;
    m_cert.reset();
    m_target = nullptr;
    if (const DOMElement* reference = childElement(m_element, kWsse, u"Reference"))
        loadReference(reference);
    else if (const DOMElement* serial = descendant(childElement(m_element, kDsig, u"X509Data"), kDsig,
                                                   u"X509IssuerSerial"))
        loadIssuerSerial(serial);
}

void VQXML_WSSecSecurityTokenReference::loadReference(const DOMElement* reference) {
    const XMLCh* uri = reference->getAttributeNS(nullptr, u"URI");
    if (uri == nullptr || uri[0] != u'#' || uri[1] == 0)
        throw VQXML_XSECException(VQXML_ERR_SOAP_BAD_HEADER, "The security token reference has no same-message URI");
    const int found = elementsWithId(m_element->getOwnerDocument(), uri + 1, &m_target);
    if (found == 0)
        throw VQXML_XSECException(VQXML_ERR_SOAP_BAD_HEADER, "The security token reference points to no element of the message");
    if (found > 1)
        throw VQXML_XSECException(VQXML_ERR_SOAP_BAD_HEADER, "More than one element carries the Id a token reference names");
    if (isElement(m_target, kXenc, u"EncryptedKey")) {
        m_keyType = ENCRYPTED_KEY;
        return;
    }
    if (!isElement(m_target, kWsse, u"BinarySecurityToken"))
        throw VQXML_XSECException(VQXML_ERR_SOAP_BAD_HEADER, "The security token reference points to no security token");
    if (!XMLString::equals(m_target->getAttributeNS(nullptr, u"ValueType"), kX509v3) ||
        !absentOr(reference->getAttributeNS(nullptr, u"ValueType"), kX509v3))
        throw VQXML_XSECException(VQXML_ERR_SOAP_BAD_HEADER, "The security token has an unknown ValueType");
    if (!absentOr(m_target->getAttributeNS(nullptr, u"EncodingType"), kBase64Binary))
        throw VQXML_XSECException(VQXML_ERR_SOAP_BAD_HEADER, "The security token has an unknown EncodingType");
    const std::string base64 = asciiOf(textOf(m_target));
    m_cert.reset(XSECPlatformUtils::g_cryptoProvider->X509());
    m_cert->loadX509Base64Bin(base64.data(), static_cast<unsigned>(base64.size()));
    m_keyType = CERTIFICATE;
}

void VQXML_WSSecSecurityTokenReference::loadIssuerSerial(const DOMElement* serial) {
    m_issuer = textOf(childElement(serial, kDsig, u"X509IssuerName"));
    m_serial = textOf(childElement(serial, kDsig, u"X509SerialNumber"));
    m_keyType = ISSUER_SERIAL;
}

void VQXML_WSSecSecurityTokenReference::setX509IssuerSerial(const XMLCh* issuer, const XMLCh* serial) {
    DOMDocument* doc = m_element->getOwnerDocument();
    DOMElement* data = doc->createElementNS(kDsig, u"ds:X509Data");
    data->setAttributeNS(kXmlns, u"xmlns:ds", kDsig);
    DOMElement* issuerSerial = doc->createElementNS(kDsig, u"ds:X509IssuerSerial");
    DOMElement* name = doc->createElementNS(kDsig, u"ds:X509IssuerName");
    name->appendChild(doc->createTextNode(issuer));
    DOMElement* number = doc->createElementNS(kDsig, u"ds:X509SerialNumber");
    number->appendChild(doc->createTextNode(serial));
    issuerSerial->appendChild(name);
    issuerSerial->appendChild(number);
    data->appendChild(issuerSerial);
    m_element->appendChild(data);
    m_issuer = issuer;
    m_serial = serial;
    m_keyType = ISSUER_SERIAL;
}

void VQXML_WSSecSecurityTokenReference::setTokenReference(const XMLCh* tokenId) {
    DOMElement* reference = m_element->getOwnerDocument()->createElementNS(kWsse, u"wsse:Reference");
    reference->setAttributeNS(nullptr, u"URI", (u"#" + std::basic_string<XMLCh>(tokenId)).c_str());
    reference->setAttributeNS(nullptr, u"ValueType", kX509v3);
    m_element->appendChild(reference);
}
