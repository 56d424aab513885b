// The frame of every method, turning failures into codes and texts, and the
// engines' process-wide start-up and teardown (under concurrent use:
// ConcurrencyStress). The library's own codes and texts, the engine's
// (IDNotFoundInDOMDoc), and the last failure outliving a success are checked
// through the C interface (ArgumentCodes, HostileSignatures, ErrorInfo).
#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>

#include <xsec/enc/XSECCryptoException.hpp>
#include <xsec/utils/XSECPlatformUtils.hpp>

#include "ContextFixture.hpp"
#include "engine/EngineLifecycle.hpp"
#include "engine/VQTKCryptoProvider.hpp"

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

TEST(EngineLifecycle, EnginesLiveFromTheFirstContextToTheLast) {
    ASSERT_EQ(g_InitCount.load(), 0);
    auto* first = new VQXML_XMLSecurity();
    XSECProvider* provider = g_provider;
    ASSERT_NE(provider, nullptr);
    ASSERT_NE(dynamic_cast<VQTKCryptoProvider*>(XSECPlatformUtils::g_cryptoProvider), nullptr);
    auto* second = new VQXML_XMLSecurity();
    EXPECT_EQ(g_InitCount.load(), 2);
    EXPECT_EQ(g_provider, provider) << "the second context shares the engines";
    delete first;
    EXPECT_EQ(g_InitCount.load(), 1);
    EXPECT_NE(g_provider, nullptr);
    delete second;
    EXPECT_EQ(g_InitCount.load(), 0);
    EXPECT_EQ(g_provider, nullptr);
    EXPECT_EQ(g_Init.load(), 0);
    EXPECT_EQ(g_Finish.load(), 0);

    VQXML_XMLSecurity third;
    EXPECT_NE(g_provider, nullptr) << "a later context starts the engines afresh";
    EXPECT_NE(dynamic_cast<VQTKCryptoProvider*>(XSECPlatformUtils::g_cryptoProvider), nullptr)
        << "with the library's own crypto provider again";
    EXPECT_EQ(g_InitCount.load(), 1);
}

}  // namespace
