// Which truncated HMACs are accepted (CVE-2009-0217).
#include <gtest/gtest.h>

#include "engine/HMACSignatureHandler.hpp"

namespace {

TEST(HmacLength, AtLeastEightyBitsAndHalfTheMac) {
    using vqxml::acceptableHmacLength;
    EXPECT_TRUE(acceptableHmacLength(0, 160)) << "not truncated";
    EXPECT_TRUE(acceptableHmacLength(160, 160));
    EXPECT_TRUE(acceptableHmacLength(80, 160));
    EXPECT_TRUE(acceptableHmacLength(91, 160));
    EXPECT_FALSE(acceptableHmacLength(79, 160));
    EXPECT_FALSE(acceptableHmacLength(40, 160));
    EXPECT_FALSE(acceptableHmacLength(161, 160));
    EXPECT_FALSE(acceptableHmacLength(80, 256)) << "less than half of SHA-256";
    EXPECT_TRUE(acceptableHmacLength(128, 256));
    EXPECT_FALSE(acceptableHmacLength(1, 512));
}

}  // namespace
