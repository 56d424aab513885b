#include "xenc/XencAlgorithms.hpp"

#include <xercesc/util/XMLString.hpp>
#include <xsec/enc/XSECCryptoSymmetricKey.hpp>
#include <xsec/utils/XSECPlatformUtils.hpp>

#include "engine/AlgorithmURIs.hpp"
#include "engine/VQTKCryptoProvider.hpp"
#include "engine/VQTKCryptoSymmetricKey.hpp"

XERCES_CPP_NAMESPACE_USE

namespace vqxml {

namespace {

// The engine's URI constants live only while it runs; these tables hold literals.
constexpr SymmetricAlgorithm kSymmetric[] = {
    {1, u"http://www.w3.org/2001/04/xmlenc#tripledes-cbc", kKeyTripleDes, 1, 24},
    {2, uri::kSeedCbc, kKeySeed, 18, 16},
    {3, uri::kNeatCbc, kKeyNeat, 19, 16},
    {4, uri::kAria128Cbc, kKeyAria, 20, 16},
};

constexpr KeyTransport kTransports[] = {
    {1, u"http://www.w3.org/2001/04/xmlenc#kw-tripledes", 8},
    {2, u"http://www.w3.org/2001/04/xmlenc#rsa-1_5", 9},
    {3, u"http://www.w3.org/2001/04/xmlenc#rsa-oaep-mgf1p", 10},
};

template <class Entry, size_t N, class Match>
const Entry* find(const Entry (&table)[N], Match&& match) {
    for (const Entry& e : table)
        if (match(e))
            return &e;
    return nullptr;
}

}  // namespace

const SymmetricAlgorithm* symmetricBySelector(int selector) {
    return find(kSymmetric, [selector](const SymmetricAlgorithm& a) { return a.selector == selector; });
}

const SymmetricAlgorithm* symmetricByURI(const XMLCh* uri) {
    if (uri == nullptr)
        return nullptr;
    return find(kSymmetric, [uri](const SymmetricAlgorithm& a) { return XMLString::equals(a.uri, uri); });
}

const SymmetricAlgorithm* symmetricByMethodCode(int methodCode) {
    return find(kSymmetric, [methodCode](const SymmetricAlgorithm& a) { return a.methodCode == methodCode; });
}

const KeyTransport* transportBySelector(int selector) {
    return find(kTransports, [selector](const KeyTransport& t) { return t.selector == selector; });
}

const KeyTransport* transportByURI(const XMLCh* uri) {
    if (uri == nullptr)
        return nullptr;
    return find(kTransports, [uri](const KeyTransport& t) { return XMLString::equals(t.uri, uri); });
}

XSECCryptoSymmetricKey* newSymmetricKey(int keyType) {
    if (const auto* ours = dynamic_cast<const VQTKCryptoProvider*>(XSECPlatformUtils::g_cryptoProvider))
        return ours->keySymmetric(keyType);
    // A provider the host installed before us knows only the engine's own keys.
    if (keyType == kKeyTripleDes)
        return XSECPlatformUtils::g_cryptoProvider->keySymmetric(XSECCryptoSymmetricKey::KEY_3DES_192);
    return nullptr;
}

}  // namespace vqxml
