// VQXML_XMLSecurity::verifySignerCert: the loaded signature's signer, with the
// chain its KeyInfo carries, against the built-in roots.
#include <xsec/dsig/DSIGKeyInfoList.hpp>
#include <xsec/dsig/DSIGKeyInfoX509.hpp>
#include <xsec/dsig/DSIGSignature.hpp>

#include "core/ErrorFrame.hpp"
#include "engine/CertificateEncoding.hpp"
#include "engine/VQTKCryptoX509.hpp"
#include "pki/ChainVerification.hpp"

namespace {

// Every X509Certificate of the signature's KeyInfo but the signer's, as DER one
// after the other, after what out holds already.
void appendKeyInfoCertificates(DSIGSignature& signature, const vqxml::Der& signer, vqxml::Der& out) {
    DSIGKeyInfoList* list = signature.getKeyInfoList();
    for (DSIGKeyInfoList::size_type i = 0; list != nullptr && i < list->getSize(); ++i) {
        if (list->item(i)->getKeyInfoType() != DSIGKeyInfo::KEYINFO_X509)
            continue;
        const auto* x509 = static_cast<const DSIGKeyInfoX509*>(list->item(i));
        for (int j = 0; j < x509->getCertificateListSize(); ++j) {
            const X509* cert = vqxml::opensslCertificate(x509->getCertificateCryptoItem(j));
            const vqxml::Der der = cert != nullptr ? vqxml::encodeCertificate(cert) : vqxml::Der();
            if (der != signer)
                out.insert(out.end(), der.begin(), der.end());
        }
    }
}

}  // namespace

int VQXML_XMLSecurity::verifySignerCert(unsigned char* chain, int chainLen, unsigned char* crls, int crlsLen) {
    return vqxml::guarded(*this, "verifySignerCert > ", [&] {
        requireSignature();
        if (m_cert == nullptr)
            throw VQXML_XSECException(VQXML_ERR_CERT_NONE,
                                      "The signature's KeyInfo carries no X509Certificate to verify");
        vqxml::ChainInput input{vqxml::Der(m_cert, m_cert + m_certLen),
                                vqxml::derItems(chain, chainLen, vqxml::kChainInput),
                                vqxml::derItems(crls, crlsLen, vqxml::kCrlInput)};
        appendKeyInfoCertificates(*m_signature, input.certificate, input.intermediates);
        vqxml::verifyChain(input, vqxml::kTrustAnchors, vqxml::kTrustAnchorCount);
    });
}
