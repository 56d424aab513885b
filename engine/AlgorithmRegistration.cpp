#include "engine/VQTKCryptoProvider.hpp"

#include <xsec/dsig/DSIGConstants.hpp>
#include <xsec/utils/XSECPlatformUtils.hpp>

#include "engine/AesCipherHandlers.hpp"
#include "engine/AlgorithmURIs.hpp"
#include "engine/EvpSignatureHandler.hpp"
#include "engine/HMACSignatureHandler.hpp"
#include "engine/Has160DigestHandler.hpp"
#include "engine/KCDSASignatureHandler.hpp"
#include "engine/KeyTransportHandlers.hpp"
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
    using C = DSIGConstants;
    AesCbcCipherHandler cbc;
    for (const XMLCh* uri : {C::s_unicodeStrURIAES128_CBC, C::s_unicodeStrURIAES192_CBC, C::s_unicodeStrURIAES256_CBC})
        XSECPlatformUtils::registerAlgorithmHandler(uri, cbc);
    AesGcmCipherHandler gcm;
    for (const XMLCh* uri : {C::s_unicodeStrURIAES128_GCM, C::s_unicodeStrURIAES192_GCM, C::s_unicodeStrURIAES256_GCM})
        XSECPlatformUtils::registerAlgorithmHandler(uri, gcm);
    AesKeyWrapHandler wrap;
    for (const XMLCh* uri : {C::s_unicodeStrURIKW_AES128, C::s_unicodeStrURIKW_AES192, C::s_unicodeStrURIKW_AES256})
        XSECPlatformUtils::registerAlgorithmHandler(uri, wrap);
    RsaOaepHandler oaep;
    for (const XMLCh* uri : {C::s_unicodeStrURIRSA_OAEP_MGFP1, C::s_unicodeStrURIRSA_OAEP})
        XSECPlatformUtils::registerAlgorithmHandler(uri, oaep);
    XSECPlatformUtils::registerAlgorithmHandler(uri::kHas160, Has160DigestHandler());
    KCDSASignatureHandler kcdsa;
    for (const XMLCh* uri : {uri::kKcdsaSha1, uri::kKcdsaSha256, uri::kKcdsaHas160})
        XSECPlatformUtils::registerAlgorithmHandler(uri, kcdsa);
    registerHmacHandler();
    registerEvpSignatureHandler();
}

}  // namespace vqxml
