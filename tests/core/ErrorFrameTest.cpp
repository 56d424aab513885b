// How the frame of every method turns failures into codes and texts. The
// library's own codes and texts, the engine's (IDNotFoundInDOMDoc), and the last
// failure outliving a success are checked through the C interface
// (ArgumentCodes, HostileSignatures, ErrorInfo).
#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>

#include <xsec/enc/XSECCryptoException.hpp>

#include "ContextFixture.hpp"

namespace {

const std::string kUnknownEucKr = "\xBE\xCB\xBC\xF6 \xBE\xF8\xB4\xC2 \xBF\xC0\xB7\xF9\xC0\xD4\xB4\xCF\xB4\xD9.";

TEST(ErrorFrame, CryptoMemoryAndUnknownFailures) {
    InspectableContext ctx;
    EXPECT_EQ(vqxml::guarded(ctx, "a > ",
                             [] { throw XSECCryptoException(XSECCryptoException::GeneralError, "bad key"); }),
              VQXML_ERR_CRYPTO_PROVIDER);
    EXPECT_EQ(std::string(ctx.getLastErrorMsg()), "a > bad key");
    EXPECT_EQ(vqxml::guarded(ctx, "b > ", [] { throw std::bad_alloc(); }), VQXML_ERR_MEMORY);
    EXPECT_EQ(vqxml::guarded(ctx, "XMLDSIG_sign > ", [] { throw std::runtime_error("x"); }), VQXML_ERR_UNKNOWN);
    EXPECT_EQ(std::string(ctx.getLastErrorMsg()), "XMLDSIG_sign > " + kUnknownEucKr);
    EXPECT_EQ(vqxml::guarded(ctx, "c > ", [] { throw 42; }), VQXML_ERR_UNKNOWN);
}

}  // namespace
