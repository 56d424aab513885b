#include "dsig/AlgorithmCodes.hpp"

#include <xercesc/util/XMLString.hpp>

#include "engine/AlgorithmURIs.hpp"


XERCES_CPP_NAMESPACE_USE

namespace vqxml {

namespace {

// The engine's own URI constants live only while it runs; these tables must
// outlive every start-up and teardown, so they hold their own literals.
struct SignatureEntry {
    SignatureCodes codes;
    const XMLCh* uri;
};

constexpr SignatureEntry kSignatures[] = {
    {{2, 1}, u"http://www.w3.org/2000/09/xmldsig#hmac-sha1"},
    {{2, 3}, u"http://www.w3.org/2001/04/xmldsig-more#hmac-sha224"},
    {{2, 4}, u"http://www.w3.org/2001/04/xmldsig-more#hmac-sha256"},
    {{2, 5}, u"http://www.w3.org/2001/04/xmldsig-more#hmac-sha384"},
    {{2, 6}, u"http://www.w3.org/2001/04/xmldsig-more#hmac-sha512"},
    {{3, 1}, u"http://www.w3.org/2000/09/xmldsig#rsa-sha1"},
    {{3, 2}, u"http://www.w3.org/2001/04/xmldsig-more#rsa-md5"},
    {{3, 3}, u"http://www.w3.org/2001/04/xmldsig-more#rsa-sha224"},
    {{3, 4}, u"http://www.w3.org/2001/04/xmldsig-more#rsa-sha256"},
    {{3, 5}, u"http://www.w3.org/2001/04/xmldsig-more#rsa-sha384"},
    {{3, 6}, u"http://www.w3.org/2001/04/xmldsig-more#rsa-sha512"},
    {{1, 1}, u"http://www.w3.org/2000/09/xmldsig#dsa-sha1"},
    {{1, 4}, u"http://www.w3.org/2009/xmldsig11#dsa-sha256"},
    {{4, 1}, u"http://www.w3.org/2001/04/xmldsig-more#ecdsa-sha1"},
    {{4, 3}, u"http://www.w3.org/2001/04/xmldsig-more#ecdsa-sha224"},
    {{4, 4}, u"http://www.w3.org/2001/04/xmldsig-more#ecdsa-sha256"},
    {{4, 5}, u"http://www.w3.org/2001/04/xmldsig-more#ecdsa-sha384"},
    {{4, 6}, u"http://www.w3.org/2001/04/xmldsig-more#ecdsa-sha512"},
    {{5, 1}, uri::kKcdsaSha1},
    {{5, 7}, uri::kKcdsaHas160},
    {{5, 4}, uri::kKcdsaSha256},
};

struct DigestEntry {
    int hashMethod;
    const XMLCh* uri;
};

constexpr DigestEntry kDigests[] = {
    {1, u"http://www.w3.org/2000/09/xmldsig#sha1"},
    {2, u"http://www.w3.org/2001/04/xmldsig-more#md5"},
    {3, u"http://www.w3.org/2001/04/xmldsig-more#sha224"},
    {4, u"http://www.w3.org/2001/04/xmlenc#sha256"},
    {5, u"http://www.w3.org/2001/04/xmldsig-more#sha384"},
    {6, u"http://www.w3.org/2001/04/xmlenc#sha512"},
    {7, uri::kHas160},
};

constexpr const XMLCh* kCanonicalizations[] = {
    nullptr,
    u"http://www.w3.org/TR/2001/REC-xml-c14n-20010315",
    u"http://www.w3.org/TR/2001/REC-xml-c14n-20010315#WithComments",
    u"http://www.w3.org/2001/10/xml-exc-c14n#",
    u"http://www.w3.org/2001/10/xml-exc-c14n#WithComments",
};

}  // namespace

const XMLCh* signatureMethodURI(SignatureCodes codes) {
    for (const SignatureEntry& e : kSignatures)
        if (e.codes.signatureMethod == codes.signatureMethod && e.codes.hashMethod == codes.hashMethod)
            return e.uri;
    return nullptr;
}

SignatureCodes signatureCodesOf(const XMLCh* uri) {
    for (const SignatureEntry& e : kSignatures)
        if (XMLString::equals(e.uri, uri))
            return e.codes;
    return {0, 0};
}

const XMLCh* digestMethodURI(int hashMethod) {
    for (const DigestEntry& e : kDigests)
        if (e.hashMethod == hashMethod)
            return e.uri;
    return nullptr;
}

const XMLCh* canonicalizationURI(int canonicalizationMethod) {
    if (canonicalizationMethod < 1 || canonicalizationMethod > 4)
        return nullptr;
    return kCanonicalizations[canonicalizationMethod];
}

bool signatureSelector(int selector, SignatureCodes& out) {
    static constexpr SignatureCodes kSelectors[] = {{2, 1}, {3, 1}, {5, 1}, {5, 7}, {3, 4}};
    if (selector < 1 || selector > 5)
        return false;
    out = kSelectors[selector - 1];
    return true;
}

bool canonicalizationSelector(int selector, int& out) {
    if (selector < 0 || selector > 4)
        return false;
    out = selector;
    return true;
}

bool digestSelector(int selector, int& out) {
    static constexpr int kSelectors[] = {1, 7, 4};
    if (selector < 1 || selector > 3)
        return false;
    out = kSelectors[selector - 1];
    return true;
}

}  // namespace vqxml
