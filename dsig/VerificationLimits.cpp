#include "dsig/VerificationLimits.hpp"

#include <string>

#include <xsec/dsig/DSIGReference.hpp>
#include <xsec/dsig/DSIGReferenceList.hpp>
#include <xsec/dsig/DSIGSignature.hpp>
#include <xsec/dsig/DSIGTransformBase64.hpp>
#include <xsec/dsig/DSIGTransformList.hpp>
#include <xsec/dsig/DSIGTransformXSL.hpp>
#include <xsec/framework/XSECException.hpp>

namespace vqxml {

namespace {

[[noreturn]] void refuse(XSECException::XSECExceptionType type, const std::string& why) {
    throw XSECException(type, why.c_str());
}

void checkTransforms(const DSIGTransformList* transforms) {
    if (transforms == nullptr)
        return;
    if (transforms->getSize() > kMaxTransforms)
        refuse(XSECException::TransformError,
               "A Reference has more than " + std::to_string(kMaxTransforms) + " transforms");
    for (DSIGTransformList::size_type i = 0; i < transforms->getSize(); ++i) {
        const DSIGTransform* transform = transforms->item(i);
        if (dynamic_cast<const DSIGTransformXSL*>(transform) != nullptr)
            refuse(XSECException::UnsupportedFunction, "XSLT transforms are not run when verifying");
        if (dynamic_cast<const DSIGTransformBase64*>(transform) != nullptr && i + 1 < transforms->getSize())
            refuse(XSECException::UnsupportedFunction,
                   "A transform after a base64 transform is not run when verifying");
    }
}

}  // namespace

void checkVerificationLimits(const DSIGSignature* signature) {
    const DSIGReferenceList* references = signature->getReferenceList();
    if (references == nullptr)
        return;
    if (references->getSize() > kMaxReferences)
        refuse(XSECException::UnsupportedFunction,
               "The signature has more than " + std::to_string(kMaxReferences) + " references");
    for (DSIGReferenceList::size_type i = 0; i < references->getSize(); ++i)
        checkTransforms(references->item(i)->getTransforms());
}

}  // namespace vqxml
