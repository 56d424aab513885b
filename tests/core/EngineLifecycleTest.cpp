// Process-wide start-up and teardown (under concurrent use: ConcurrencyStress).
#include <gtest/gtest.h>

#include <xsec/utils/XSECPlatformUtils.hpp>

#include "ContextFixture.hpp"
#include "engine/EngineLifecycle.hpp"
#include "engine/VQTKCryptoProvider.hpp"

namespace {

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
