#include "DravelKit/Foundation/Hash.h"

#include <gtest/gtest.h>

using namespace dravel;

TEST(Hash, knowsThePublishedVectors) {
    // FIPS 180-4 "abc", and the verifier and challenge of RFC 7636, appendix B.
    EXPECT_EQ(base64Url(sha256("abc")), "ungWv48Bz-pBQUDeXa4iI7ADYaOWF3qctBD_YfIAFa0");
    EXPECT_EQ(base64Url(sha256("dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk")),
              "E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM");
}

TEST(Hash, makesRandomTextOfTheRightLengthForAUrl) {
    EXPECT_EQ(randomUrlSafe(48).size(), 64U);
    EXPECT_EQ(randomUrlSafe(16).size(), 22U);
    EXPECT_NE(randomUrlSafe(16), randomUrlSafe(16));
    EXPECT_EQ(randomUrlSafe(1000).find_first_of("+/="), std::string::npos);
    EXPECT_TRUE(constantTimeEqual("abc", "abc"));
    EXPECT_FALSE(constantTimeEqual("abc", "abd"));
    EXPECT_FALSE(constantTimeEqual("abc", "ab"));
}
