// The chain check with the toolkit tests' root as its anchor, so that every check
// can fail for real: each failure's status and the start of its text.
#include <gtest/gtest.h>

#include "ScopedHandle.hpp"
#include "core/Transcode.hpp"
#include "core/VQXMLException.hpp"
#include "pki/ChainVerification.hpp"
#include "toolkit/ToolkitTestSupport.hpp"

using namespace vqtktest;

namespace {

struct Outcome {
    int status;
    std::string text;
};

Outcome check(const ByteVector& cert, const ByteVector& chain, const ByteVector& crls) {
    const std::string base64 = toBase64(fixture("root.der"));
    const vqxml::TrustAnchor anchor{"vqxml Test Root", base64.c_str(), static_cast<int>(base64.size())};
    try {
        vqxml::verifyChain({cert, chain, crls}, &anchor, 1);
        return {0, ""};
    } catch (const VQXML_XSECException& e) {
        return {e.getCode(), vqxml::toEucKr(e.getMsg())};
    }
}

}  // namespace

TEST(ChainStatuses, EachCheckThatFailsHasItsOwnStatus) {
    ScopedHandle engines;  // the texts go through the engines' transcoder
    const ByteVector leaf = fixture("leaf.der"), intermediate = fixture("intermediate.der");
    const ByteVector crls = fixture("intermediate.crl.der");
    ByteVector forged = leaf;
    forged[forged.size() - 10] ^= 0x01;
    const struct {
        ByteVector cert, chain, crls;
        int status;
        const char* text;
    } cases[] = {
        {leaf, intermediate, crls, VQXML_OK, ""},
        {leaf, {}, {}, VQXML_ERR_CERT_PATH, "path check failed: Certificate refused at depth 0"},
        {forged, intermediate, {}, VQXML_ERR_CERT_SIGNATURE, "signature check failed: "},
        {fixture("kcdsa_under_kcdsa.der"), fixture("kcdsa_ca.der") + intermediate, {}, VQXML_ERR_CERT_SIGNATURE,
         "signature check failed: The certificate (CN=vqxml KCDSA Under KCDSA"},
        {fixture("leaf_expired.der"), intermediate, {}, VQXML_ERR_CERT_VALIDITY, "validity check failed: "},
        {fixture("leaf_revoked.der"), intermediate, crls, VQXML_ERR_CERT_REVOKED, "revocation check failed: "},
        {leaf, intermediate, crls + fixture("root.crl.der"), VQXML_ERR_CERT_REVOKED,
         "revocation check failed: Certificate refused at depth 1"},
        {fixture("under_not_ca.der"), fixture("not_ca.der") + intermediate, {}, VQXML_ERR_CERT_CONSTRAINTS,
         "constraints check failed: "},
        {leaf, intermediate, leaf, VQXML_ERR_CERT_INPUT, "The CRLs (CRL 1) is not"},
    };
    for (const auto& c : cases) {
        const Outcome outcome = check(c.cert, c.chain, c.crls);
        EXPECT_EQ(outcome.status, c.status) << outcome.text;
        EXPECT_EQ(outcome.text.rfind(c.text, 0), 0u) << outcome.text;
    }
}
