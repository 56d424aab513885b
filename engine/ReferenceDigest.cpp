#include "engine/ReferenceDigest.hpp"

#include <vector>

#include <openssl/crypto.h>
#include <xsec/dsig/DSIGReference.hpp>
#include <xsec/enc/XSECCryptoProvider.hpp>
#include <xsec/utils/XSECPlatformUtils.hpp>

namespace vqxml {

bool referenceDigestMatches(const DSIGReference* reference) {
    const unsigned int room = XSECPlatformUtils::g_cryptoProvider->getMaxHashSize();
    std::vector<XMLByte> computed(room);
    std::vector<XMLByte> stated(room);
    const unsigned int computedLen = reference->calculateHash(computed.data(), room);
    if (computedLen == 0)
        return false;
    const unsigned int statedLen = reference->readHash(stated.data(), room);
    return statedLen == computedLen && CRYPTO_memcmp(computed.data(), stated.data(), computedLen) == 0;
}

}  // namespace vqxml
