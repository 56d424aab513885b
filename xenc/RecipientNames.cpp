#include "xenc/RecipientNames.hpp"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <xercesc/dom/DOM.hpp>
#include <xsec/dsig/DSIGConstants.hpp>
#include <xsec/dsig/DSIGKeyInfoList.hpp>
#include <xsec/dsig/DSIGKeyInfoX509.hpp>
#include <xsec/enc/XSECCryptoException.hpp>
#include <xsec/xenc/XENCEncryptedKey.hpp>

#include "core/Transcode.hpp"
#include "engine/CertificateNames.hpp"
#include "engine/NameComparison.hpp"
#include "engine/VQTKCryptoKeyRSA.hpp"
#include "engine/VQTKCryptoX509.hpp"
#include "xenc/KeyUnwrapper.hpp"

XERCES_CPP_NAMESPACE_USE

namespace vqxml::xenc {
namespace {

using Name = std::optional<XString>;

Name nameOf(const char* encoding, const char* text) {
    return text != nullptr ? Name(XMLT(encoding, text)) : std::nullopt;
}

struct IssuerSerial {
    Name issuer, serial;
};

// A certificate's names, or every name a document states.
struct Names {
    std::vector<XString> subjects;
    std::vector<IssuerSerial> issuerSerials;

    bool empty() const { return subjects.empty() && issuerSerials.empty(); }
    void add(Name subject, Name issuer, Name serial) {
        if (subject)
            subjects.push_back(std::move(*subject));
        if (issuer || serial)
            issuerSerials.push_back({std::move(issuer), std::move(serial)});
    }
};

Names namesOf(const X509* cert) {
    Names names;
    names.add(XMLT("UTF-8", certificateSubject(cert).c_str()), XMLT("UTF-8", certificateIssuer(cert).c_str()),
              XMLT("UTF-8", certificateSerialDecimal(cert).c_str()));
    return names;
}

bool isDsigElement(const DOMElement* e, const XMLCh* localName) {
    return XMLString::equals(e->getLocalName(), localName) &&
           XMLString::equals(e->getNamespaceURI(), DSIGConstants::s_unicodeStrURIDSIG);
}

template <class Visit>
void forEachChild(const DOMElement* parent, const XMLCh* localName, Visit visit) {
    for (const DOMElement* c = parent->getFirstElementChild(); c != nullptr; c = c->getNextElementSibling())
        if (isDsigElement(c, localName))
            visit(c);
}

Name textOfChild(const DOMElement* parent, const XMLCh* localName) {
    Name text;
    forEachChild(parent, localName, [&](const DOMElement* e) {
        if (!text)
            text = XString(e->getTextContent());
    });
    return text;
}

// Every name the key's X509Data state, as the document writes them.
Names namesStatedIn(XENCEncryptedKey& key) {
    Names names;
    DSIGKeyInfoList* list = key.getKeyInfoList();
    for (DSIGKeyInfoList::size_type i = 0; i < list->getSize(); ++i) {
        const DOMNode* node = list->item(i)->getKeyInfoDOMNode();
        if (list->item(i)->getKeyInfoType() != DSIGKeyInfo::KEYINFO_X509 || node == nullptr ||
            node->getNodeType() != DOMNode::ELEMENT_NODE)
            continue;
        const auto* data = static_cast<const DOMElement*>(node);
        forEachChild(data, u"X509SubjectName",
                     [&](const DOMElement* e) { names.add(XString(e->getTextContent()), {}, {}); });
        forEachChild(data, u"X509IssuerSerial", [&](const DOMElement* e) {
            names.add({}, textOfChild(e, u"X509IssuerName"), textOfChild(e, u"X509SerialNumber"));
        });
    }
    return names;
}

// The names read for the key read last, else those of its certificate.
Names namesRead(const ReadRecipient& read, const char* subjectEncoding) {
    Names names;
    names.add(nameOf(subjectEncoding, read.subject), nameOf(nullptr, read.issuer), nameOf(nullptr, read.serial));
    if (!names.empty() || read.cert == nullptr || read.certLen <= 0)
        return names;
    try {
        // Decoded once for every decryption that reads the same certificate.
        return namesOf(sharedCertificate(read.cert, static_cast<std::size_t>(read.certLen)).get());
    } catch (const XSECCryptoException&) {
        return names;  // not a certificate: no names
    }
}

// The names of the first certificate the key's X509Data carry.
Names certificateNamesIn(XENCEncryptedKey& key) {
    DSIGKeyInfoList* list = key.getKeyInfoList();
    for (DSIGKeyInfoList::size_type i = 0; i < list->getSize(); ++i) {
        if (list->item(i)->getKeyInfoType() != DSIGKeyInfo::KEYINFO_X509)
            continue;
        const auto* x509 = static_cast<const DSIGKeyInfoX509*>(list->item(i));
        if (x509->getCertificateListSize() > 0)
            if (const X509* cert = opensslCertificate(x509->getCertificateCryptoItem(0)))
                return namesOf(cert);
    }
    return {};
}

int pairMismatch(const IssuerSerial& stated, const IssuerSerial& caller, const UnwrapCodes& codes) {
    if (stated.issuer && !sameDistinguishedName(stated.issuer->c_str(), caller.issuer->c_str()))
        return codes.issuerDiffers;
    return stated.serial && *stated.serial != *caller.serial ? codes.serialDiffers : 0;
}

// 0 when a stated pair is the caller's (or none is stated); else the serial
// when one names the caller's issuer, else the issuer.
int closestPair(const std::vector<IssuerSerial>& stated, const IssuerSerial& caller, const UnwrapCodes& codes) {
    int closest = 0;
    for (const IssuerSerial& pair : stated) {
        const int code = pairMismatch(pair, caller, codes);
        if (code == 0)
            return 0;
        if (closest == 0 || code == codes.serialDiffers)
            closest = code;
    }
    return closest;
}

}  // namespace

int recipientMismatch(XENCEncryptedKey& key, const ReadRecipient* read, const VQTKCryptoKeyRSA& caller,
                      const char* subjectEncoding, const UnwrapCodes& codes) {
    Names stated = namesStatedIn(key);
    if (stated.empty())
        stated = read != nullptr ? namesRead(*read, subjectEncoding) : certificateNamesIn(key);
    const XString subject = XMLT("UTF-8", caller.subjectName().c_str());
    const IssuerSerial mine{XMLT("UTF-8", caller.issuerName().c_str()), XMLT("UTF-8", caller.serialNumber().c_str())};
    const int pair = closestPair(stated.issuerSerials, mine, codes);
    const std::vector<XString>& subjects = stated.subjects;
    const bool subjectStated =
        subjects.empty() || std::find(subjects.begin(), subjects.end(), subject) != subjects.end();
    // The order of one name of each kind: issuer, subject, serial.
    return pair == codes.issuerDiffers || subjectStated ? pair : codes.subjectDiffers;
}

}  // namespace vqxml::xenc
