// How the frame of every method turns failures into codes and texts.
#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>

#include <xsec/enc/XSECCryptoException.hpp>

#include "ContextFixture.hpp"

namespace {

const std::string kUnknownEucKr = "\xBE\xCB\xBC\xF6 \xBE\xF8\xB4\xC2 \xBF\xC0\xB7\xF9\xC0\xD4\xB4\xCF\xB4\xD9.";

TEST(ErrorFrame, LibraryCodesAboveTheEnginesRangeSurvive) {
    InspectableContext ctx;
    int rc = vqxml::guarded(ctx, "XMLDSIG_setKeyName > ", [] { throw VQXML_XSECException(10208); });
    EXPECT_EQ(rc, 10208);
    EXPECT_EQ(ctx.getLaseErrorCode(), 10208);
    EXPECT_EQ(std::string(ctx.getLastErrorMsg()), "XMLDSIG_setKeyName > No key name was given");
}

TEST(ErrorFrame, EngineExceptionsKeepTheirTypeAndText) {
    InspectableContext ctx;
    int rc = vqxml::guarded(ctx, "XMLDSIG_verify > ",
                            [] { throw XSECException(XSECException::IDNotFoundInDOMDoc, "no such Id"); });
    EXPECT_EQ(rc, 7);
    EXPECT_EQ(std::string(ctx.getLastErrorMsg()), "XMLDSIG_verify > no such Id");
}

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

TEST(ErrorFrame, SuccessLeavesTheLastFailureInPlace) {
    InspectableContext ctx;
    vqxml::guarded(ctx, "a > ", [] { throw VQXML_XSECException(10105); });
    EXPECT_EQ(vqxml::guarded(ctx, "b > ", [] {}), 0);
    EXPECT_EQ(ctx.getLaseErrorCode(), 10105);
    EXPECT_EQ(std::string(ctx.getLastErrorMsg()).rfind("a > ", 0), 0u);
}

}  // namespace
