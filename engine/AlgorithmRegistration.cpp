#include "engine/VQTKCryptoProvider.hpp"

#include <xsec/utils/XSECPlatformUtils.hpp>

#include "engine/AlgorithmURIs.hpp"
#include "engine/EvpSignatureHandler.hpp"
#include "engine/HMACSignatureHandler.hpp"
#include "engine/Has160DigestHandler.hpp"
#include "engine/KCDSASignatureHandler.hpp"
#include "engine/KoreanCipherHandler.hpp"
#include "engine/TripleDesCipherHandler.hpp"

namespace vqxml {

void registerAlgorithmHandlers() {
    // registerAlgorithmHandler keeps a clone of the handler.
    KoreanCipherHandler cipher;
    for (const XMLCh* uri : {uri::kSeedCbc, uri::kAria128Cbc, uri::kNeatCbc})
        XSECPlatformUtils::registerAlgorithmHandler(uri, cipher);
    // Replaces the engine's own, which is slow on large elements (see its header).
    XSECPlatformUtils::registerAlgorithmHandler(u"http://www.w3.org/2001/04/xmlenc#tripledes-cbc",
                                                TripleDesCipherHandler());
    XSECPlatformUtils::registerAlgorithmHandler(uri::kHas160, Has160DigestHandler());
    KCDSASignatureHandler kcdsa;
    for (const XMLCh* uri : {uri::kKcdsaSha1, uri::kKcdsaSha256, uri::kKcdsaHas160})
        XSECPlatformUtils::registerAlgorithmHandler(uri, kcdsa);
    registerHmacHandler();
    registerEvpSignatureHandler();
}

}  // namespace vqxml
