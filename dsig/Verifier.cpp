#include "dsig/Verifier.hpp"

#include <algorithm>
#include <vector>

#include <xercesc/dom/DOM.hpp>
#include <xsec/dsig/DSIGReference.hpp>
#include <xsec/dsig/DSIGReferenceList.hpp>
#include <xsec/dsig/DSIGSignature.hpp>

#include "core/Transcode.hpp"
#include "core/VQXMLException.hpp"
#include "dsig/IdResolution.hpp"
#include "dsig/ReferenceDigesting.hpp"
#include "dsig/VerificationLimits.hpp"
#include "dsig/SignedInfoCanonicalization.hpp"
#include "vqxml/vqxml.h"

XERCES_CPP_NAMESPACE_USE

namespace vqxml {

int verifySignature(DSIGSignature& signature, DOMElement* signatureElement,
                    const std::function<XSECCryptoKey*()>& verificationKey) {
    checkVerificationLimits(&signature);
    checkReferencedIds(&signature);
    const DSIGReferenceList* references = signature.getReferenceList();
    const std::vector<DOMElement*> elements = referenceElements(signatureElement);
    const DSIGReferenceList::size_type count = references != nullptr ? references->getSize() : 0;
    if (elements.size() != count)
        throw XSECException(XSECException::SigVfyError, "The References of SignedInfo are not all loaded");
    int reading = VQXML_READING_PLAIN;
    for (DSIGReferenceList::size_type i = 0; i < count; ++i) {
        const DSIGReference* reference = references->item(i);
        const ReferenceMatch match = matchReferenceDigest(*reference, elements[i], signatureElement);
        if (match == ReferenceMatch::None) {
            XString text = u"Reference URI=\"";
            text += reference->getURI() != nullptr ? reference->getURI() : u"";
            text += u"\" failed to verify";
            throw VQXML_XSECException(VQXML_ERR_NOT_VERIFIED, text.c_str());
        }
        reading = std::max(reading, static_cast<int>(match) - 1);
    }
    XSECCryptoKey* key = verificationKey();
    if (key == nullptr)
        throw VQXML_XSECException(VQXML_ERR_NOT_VERIFIED, "No key to check the signature with");
    // Our own SignedInfo check: the engine's ignores an exclusive PrefixList.
    if (!signedInfoVerifies(signature, signatureElement, key))
        throw VQXML_XSECException(VQXML_ERR_NOT_VERIFIED, "Validation of <SignedInfo> failed");
    return reading;
}

}  // namespace vqxml
