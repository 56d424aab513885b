// A certificate's path through intermediates to trust anchors, with CRLs: the
// check behind VQTK_XMLAPI_VerifyCertChain and VQTK_XMLDSIG_VerifySignerCert.
#ifndef VQXML_PKI_CHAINVERIFICATION_HPP
#define VQXML_PKI_CHAINVERIFICATION_HPP

#include "pki/CertificateInput.hpp"
#include "pki/TrustAnchors.hpp"

namespace vqxml {

struct ChainInput {
    Der certificate;
    Der intermediates;  // DER certificates one after the other
    Der crls;           // DER CRLs one after the other; none: no revocation check
};

// Verifies the certificate against anchors now: the path through the
// intermediates, every signature, validity of every certificate (anchors too),
// the CAs' constraints and, with CRLs, revocation. Raises VQXML_XSECException:
// VQXML_ERR_CERT_PATH to _CONSTRAINTS with "<check> check failed: " and the
// reason, or VQXML_ERR_CERT_INPUT for an input that cannot be read.
void verifyChain(const ChainInput& input, const TrustAnchor* anchors, int anchorCount);

}  // namespace vqxml

#endif
