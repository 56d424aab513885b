#include "dsig/AlgorithmCodes.hpp"

#include "engine/Algorithms.hpp"


XERCES_CPP_NAMESPACE_USE

namespace vqxml {

namespace {

bool selectedCode(AlgorithmKind kind, int selector, int& out) {
    const Algorithm* a = algorithmBySelector(kind, selector);
    if (a != nullptr)
        out = a->methodCode;
    return a != nullptr;
}

}  // namespace

const XMLCh* signatureMethodURI(SignatureCodes codes) {
    const Algorithm* a = algorithmByCode(AlgorithmKind::SIGNATURE, codes.signatureMethod, codes.hashMethod);
    return a != nullptr ? a->uri : nullptr;
}

SignatureCodes signatureCodesOf(const XMLCh* uri) {
    const Algorithm* a = algorithmByURI(AlgorithmKind::SIGNATURE, uri);
    return a != nullptr ? SignatureCodes{a->methodCode, a->hash} : SignatureCodes{0, 0};
}

const XMLCh* digestMethodURI(int hashMethod) {
    const Algorithm* a = algorithmByCode(AlgorithmKind::DIGEST, hashMethod);
    return a != nullptr ? a->uri : nullptr;
}

const XMLCh* canonicalizationURI(int canonicalizationMethod) {
    const Algorithm* a = algorithmByCode(AlgorithmKind::C14N, canonicalizationMethod);
    return a != nullptr ? a->uri : nullptr;
}

bool signatureSelector(int selector, SignatureCodes& out) {
    const Algorithm* a = algorithmBySelector(AlgorithmKind::SIGNATURE, selector);
    if (a != nullptr)
        out = {a->methodCode, a->hash};
    return a != nullptr;
}

bool canonicalizationSelector(int selector, int& out) {
    return selectedCode(AlgorithmKind::C14N, selector, out);
}

bool soapCanonicalizationSelector(int selector, int& out) {
    return selectedCode(AlgorithmKind::SOAP_C14N, selector, out);
}

bool digestSelector(int selector, int& out) {
    return selectedCode(AlgorithmKind::DIGEST, selector, out);
}

}  // namespace vqxml
