#include <gtest/gtest.h>

#include "engine/VQTKCryptoProvider.hpp"
#include "engine/korean/OpenSSLProviders.hpp"

namespace {

// SEED lives in OpenSSL's legacy provider, which the library loads at start-up;
// tests of the primitives alone need it too.
struct OpenSSLProviders : ::testing::Environment {
    void SetUp() override { vqxml::loadOpenSSLProviders(); }
};
const ::testing::Environment* const kProviders = ::testing::AddGlobalTestEnvironment(new OpenSSLProviders);

}  // namespace
