#include "engine/KCDSASignatureHandler.hpp"

#include <xercesc/util/XMLString.hpp>
#include <xsec/framework/XSECException.hpp>
#include <xsec/transformers/TXFMChain.hpp>
#include <xsec/utils/XSECSafeBuffer.hpp>

#include "engine/AlgorithmURIs.hpp"
#include "engine/Base64.hpp"
#include "engine/ChainBytes.hpp"
#include "engine/CryptoErrorTranslation.hpp"
#include "engine/TXFMKoreanDigest.hpp"
#include "engine/VQTKCryptoKeyKCDSA.hpp"

using vqxml::korean::HashAlgorithm;
using vqxml::korean::KcdsaKey;

namespace {

HashAlgorithm hashFor(const XMLCh* uri) {
    using XERCES_CPP_NAMESPACE::XMLString;
    if (XMLString::equals(uri, vqxml::uri::kKcdsaSha1))
        return HashAlgorithm::Sha1;
    if (XMLString::equals(uri, vqxml::uri::kKcdsaSha256))
        return HashAlgorithm::Sha256;
    if (XMLString::equals(uri, vqxml::uri::kKcdsaHas160))
        return HashAlgorithm::Has160;
    throw XSECException(XSECException::AlgorithmMapperError, "not a KCDSA signature method");
}

const VQTKCryptoKeyKCDSA& kcdsaKey(const XSECCryptoKey* key) {
    auto* k = dynamic_cast<const VQTKCryptoKeyKCDSA*>(key);
    if (k == nullptr)
        throw XSECException(XSECException::AlgorithmMapperError,
                            "a KCDSA signature method needs a KCDSA key");
    return *k;
}

// Appends the transform computing h(Z || input) under the key's Z.
void appendDigest(TXFMChain* chain, HashAlgorithm alg, const KcdsaKey& key) {
    chain->appendTxfm(new TXFMKoreanDigest(chain->getLastTxfm()->getDocument(), alg, key.hashPrefix()));
}

vqxml::korean::SecureBytes hashInput(TXFMChain* chain, HashAlgorithm alg, const KcdsaKey& key) {
    appendDigest(chain, alg, key);
    return vqxml::readAllBytes(chain);
}

template <class Work>
decltype(auto) dsa(Work&& work) {
    return vqxml::asCryptoException(XSECCryptoException::DSAError, std::forward<Work>(work));
}

}  // namespace

bool KCDSASignatureHandler::appendSignatureHashTxfm(TXFMChain* inputBytes, const XMLCh* uri,
                                                    const XSECCryptoKey* key) const {
    appendDigest(inputBytes, hashFor(uri), kcdsaKey(key).verificationKey());
    return true;
}

unsigned int KCDSASignatureHandler::signToSafeBuffer(TXFMChain* inputBytes, const XMLCh* uri,
                                                     const XSECCryptoKey* key, unsigned int,
                                                     safeBuffer& result) const {
    HashAlgorithm alg = hashFor(uri);
    const KcdsaKey& k = kcdsaKey(key).signingKey();
    vqxml::korean::SecureBytes digest = hashInput(inputBytes, alg, k);
    std::vector<std::uint8_t> sig = dsa([&] { return k.signDigest(alg, digest.data(), digest.size()); });
    std::string text = vqxml::base64Text(sig);
    result.sbStrcpyIn(text.c_str());
    return unsigned(text.size());
}

bool KCDSASignatureHandler::verifyBase64Signature(TXFMChain* inputBytes, const XMLCh* uri, const char* sig,
                                                  unsigned int, const XSECCryptoKey* key) const {
    HashAlgorithm alg = hashFor(uri);
    const KcdsaKey& k = kcdsaKey(key).verificationKey();
    vqxml::korean::SecureBytes digest = hashInput(inputBytes, alg, k);
    std::vector<std::uint8_t> value;
    if (!vqxml::base64Decode(sig, value))
        return false;
    return dsa([&] { return k.verifyDigest(alg, digest.data(), digest.size(), value.data(), value.size()); });
}

XSECAlgorithmHandler* KCDSASignatureHandler::clone() const {
    return new KCDSASignatureHandler();
}
