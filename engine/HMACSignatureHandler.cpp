#include "engine/HMACSignatureHandler.hpp"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <xsec/enc/XSECCryptoKeyHMAC.hpp>
#include <xsec/framework/XSECException.hpp>
#include <xsec/utils/XSECPlatformUtils.hpp>
#include <xsec/utils/XSECSafeBuffer.hpp>

#include "core/adapter/Upstream.hpp"
#include "engine/Algorithms.hpp"
#include "engine/Base64.hpp"
#include "engine/ChainBytes.hpp"
#include "engine/korean/SecureBytes.hpp"

XERCES_CPP_NAMESPACE_USE

namespace {

constexpr int kHmac = 2;  // the table's signature method code

// The digest of an HMAC signature method of the table; null for any other URI.
const EVP_MD* digestFor(const XMLCh* uri) {
    const vqxml::Algorithm* a = vqxml::algorithmByURI(vqxml::AlgorithmKind::SIGNATURE, uri);
    return a != nullptr && a->methodCode == kHmac ? vqxml::shaDigest(a->hash) : nullptr;
}

}  // namespace

namespace vqxml {

bool acceptableHmacLength(unsigned int outputBits, unsigned int macBits) {
    return outputBits == 0 || (outputBits <= macBits && outputBits >= 80 && outputBits >= macBits / 2);
}

void registerHmacHandler() {
    HMACSignatureHandler handler;
    for (int hash = 1; hash <= 6; ++hash)
        if (const Algorithm* a = algorithmByCode(AlgorithmKind::SIGNATURE, kHmac, hash); a != nullptr && shaDigest(hash))
            XSECPlatformUtils::registerAlgorithmHandler(a->uri, handler);
}

}  // namespace vqxml

XSECAlgorithmHandler* HMACSignatureHandler::clone() const {
    return new HMACSignatureHandler(*this);
}

bool HMACSignatureHandler::verifyBase64Signature(TXFMChain* inputBytes, const XMLCh* uri, const char* sig,
                                                 unsigned int outputLength, const XSECCryptoKey* key) const {
    const EVP_MD* md = digestFor(uri);
    if (key == nullptr || key->getKeyType() != XSECCryptoKey::KEY_HMAC || md == nullptr)
        return DSIGAlgorithmHandlerDefault::verifyBase64Signature(inputBytes, uri, sig, outputLength, key);

    const unsigned int macBits = static_cast<unsigned int>(EVP_MD_get_size(md)) * 8;
    if (!vqxml::acceptableHmacLength(outputLength, macBits))
        throw XSECException(XSECException::AlgorithmMapperError,
                            "HMACOutputLength keeps fewer than 80 bits or half of the MAC, or more than it");
    safeBuffer secret;
    const unsigned int secretLen = static_cast<const XSECCryptoKeyHMAC*>(key)->getKey(secret);
    const vqxml::korean::SecureBytes data = vqxml::readAllBytes(inputBytes);
    unsigned char mac[EVP_MAX_MD_SIZE];
    unsigned int macLen = 0;
    if (HMAC(md, secret.rawBuffer(), static_cast<int>(secretLen), data.data(), data.size(), mac, &macLen) == nullptr)
        throw XSECException(XSECException::AlgorithmMapperError, "The HMAC could not be computed");

    const unsigned int bits = outputLength == 0 ? macLen * 8 : outputLength;
    std::vector<std::uint8_t> given;
    const bool readable = vqxml::base64Decode(sig, given);
    const size_t wholeBytes = bits / 8;
    const unsigned int restBits = bits % 8;
    bool valid = readable && given.size() == (bits + 7) / 8 && CRYPTO_memcmp(given.data(), mac, wholeBytes) == 0;
    if (valid && restBits != 0) {
        const unsigned char mask = static_cast<unsigned char>(0xFF << (8 - restBits));
        valid = ((given[wholeBytes] ^ mac[wholeBytes]) & mask) == 0;
    }
    OPENSSL_cleanse(mac, sizeof mac);
    return valid;
}
