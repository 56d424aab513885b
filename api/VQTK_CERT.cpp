// C fronts of the certificate checks through intermediates, with CRLs.
#include "api/Front.hpp"
#include "core/ErrorFrame.hpp"
#include "pki/ChainVerification.hpp"

extern "C" {

int VQTK_XMLAPI_VerifyCertChain(void* handle, unsigned char* cert, int certLen, unsigned char* chain,
                                int chainLen, unsigned char* crls, int crlsLen) {
    if (handle == nullptr)
        return VQXML_ERR_NULL_HANDLE;
    if (cert == nullptr)
        return VQXML_ERR_NULL_ARGUMENT;
    return vqxml::guarded(*vqxml::context(handle), "verifyCertChain > ", [&] {
        const vqxml::ChainInput input{vqxml::derItems(cert, certLen, vqxml::kCertificateInput),
                                      vqxml::derItems(chain, chainLen, vqxml::kChainInput),
                                      vqxml::derItems(crls, crlsLen, vqxml::kCrlInput)};
        vqxml::verifyChain(input, vqxml::kTrustAnchors, vqxml::kTrustAnchorCount);
    });
}

int VQTK_XMLDSIG_VerifySignerCert(void* handle, unsigned char* chain, int chainLen, unsigned char* crls,
                                  int crlsLen) {
    return vqxml::forward(handle, [&](VQXML_XMLSecurity& ctx) {
        return ctx.verifySignerCert(chain, chainLen, crls, crlsLen);
    });
}

}  // extern "C"
