// Process-wide start-up and teardown under sequential and concurrent use.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

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

// Many threads create and finish handles at once, so that the engines are
// started and torn down again and again under contention.
TEST(EngineLifecycle, ConcurrentCreationAndFinishing) {
    constexpr int kThreads = 8;
    constexpr int kRounds = 300;
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < kRounds; ++i) {
                void* h = nullptr;
                if (VQTK_XMLAPI_init(&h) != VQXML_OK) {
                    ++failures;
                    continue;
                }
                if ((i + t) % 3 == 0) {
                    if (loadText(*static_cast<VQXML_XMLSecurity*>(h), "<a><b/></a>") != 0)
                        ++failures;
                }
                if (VQTK_XMLAPI_Finish(&h) != VQXML_OK)
                    ++failures;
            }
        });
    }
    for (auto& th : threads)
        th.join();
    EXPECT_EQ(failures.load(), 0);
    EXPECT_EQ(g_InitCount.load(), 0);
    EXPECT_EQ(g_Init.load(), 0);
    EXPECT_EQ(g_provider, nullptr);
}

}  // namespace
