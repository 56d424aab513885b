#include "engine/Algorithms.hpp"

#include <xercesc/util/XMLString.hpp>

#include "engine/AlgorithmURIs.hpp"
#include "engine/VQTKCryptoSymmetricKey.hpp"

XERCES_CPP_NAMESPACE_USE

namespace vqxml {

namespace {

// The engine's URI constants live only while it runs; the table must outlive every
// start-up and teardown, so it holds literals of its own.
constexpr Algorithm kAlgorithms[] = {
#define VQXML_ALGORITHM(kind, selector, tool, uri, code, hash, keyType, keyBytes, description) \
    {AlgorithmKind::kind, selector, tool, uri, code, hash, keyType, keyBytes, description},
#include "engine/Algorithms.def"
#undef VQXML_ALGORITHM
};

template <class Match>
const Algorithm* find(AlgorithmKind kind, Match&& match) {
    for (const Algorithm& a : kAlgorithms)
        if (a.kind == kind && match(a))
            return &a;
    return nullptr;
}

}  // namespace

const Algorithm* algorithmBySelector(AlgorithmKind kind, int selector) {
    if (selector < 0)
        return nullptr;
    return find(kind, [selector](const Algorithm& a) { return a.selector == selector; });
}

const Algorithm* algorithmByURI(AlgorithmKind kind, const XMLCh* uri) {
    if (uri == nullptr)
        return nullptr;
    return find(kind, [uri](const Algorithm& a) { return a.uri != nullptr && XMLString::equals(a.uri, uri); });
}

const Algorithm* algorithmByCode(AlgorithmKind kind, int code, int hash) {
    const bool byHash = kind == AlgorithmKind::SIGNATURE;
    return find(kind, [=](const Algorithm& a) { return a.methodCode == code && (!byHash || a.hash == hash); });
}

bool canonicalizationChoice(const XMLCh* uri, CanonicalizationChoice& out) {
    // Codes 1 C14N, 2 with comments, 3 exclusive, 4 exclusive with comments,
    // 5 C14N 1.1, 6 C14N 1.1 with comments.
    const Algorithm* a = algorithmByURI(AlgorithmKind::C14N, uri);
    if (a == nullptr)
        return false;
    out = {a->methodCode == 3 || a->methodCode == 4, a->methodCode % 2 == 0, a->methodCode >= 5};
    return true;
}

const EVP_MD* shaDigest(int hashCode) {
    switch (hashCode) {
    case 1:
        return EVP_sha1();
    case 3:
        return EVP_sha224();
    case 4:
        return EVP_sha256();
    case 5:
        return EVP_sha384();
    case 6:
        return EVP_sha512();
    default:
        return nullptr;
    }
}

}  // namespace vqxml
