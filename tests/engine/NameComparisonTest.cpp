// Distinguished names written by different peers compare as names.
#include <gtest/gtest.h>

#include "engine/NameComparison.hpp"

using vqxml::sameDistinguishedName;

TEST(NameComparison, JavaAndLibraryFormsOfOneNameMatch) {
    EXPECT_TRUE(sameDistinguishedName("CN=WSS-A Test CA,O=Interop Test Data,C=XX",
                                      "cn=WSS-A Test CA,o=Interop Test Data,c=XX"));
    EXPECT_TRUE(sameDistinguishedName("CN=A, O=B,  C=XX", "commonName=a,organizationName=b,countryName=xx"));
    EXPECT_TRUE(sameDistinguishedName("EMAILADDRESS=a@b.example,CN=A", "emailaddress=a@b.example,cn=A"));
    EXPECT_TRUE(sameDistinguishedName("2.5.4.3=A,O=B", "cn=A,o=B"));
    EXPECT_TRUE(sameDistinguishedName("cn=#0c0141,o=B", "CN=A,O=B"));
    EXPECT_TRUE(sameDistinguishedName("cn=a\\,b+uid=7,c=KR", "UID=7+CN=a\\2Cb,C=KR"));
}

TEST(NameComparison, DifferentNamesDoNotMatch) {
    EXPECT_FALSE(sameDistinguishedName("CN=A,O=B,C=XX", "CN=A,O=C,C=XX"));
    EXPECT_FALSE(sameDistinguishedName("CN=A,O=B", "O=B,CN=A"));
    EXPECT_FALSE(sameDistinguishedName("CN=A,O=B", "CN=A"));
    EXPECT_FALSE(sameDistinguishedName("CN=A+O=B", "CN=A,O=B"));
}

TEST(NameComparison, TextsThatAreNoNamesMatchOnlyThemselves) {
    EXPECT_TRUE(sameDistinguishedName("not a name", "not a name"));
    EXPECT_FALSE(sameDistinguishedName("not a name", "NOT A NAME"));
    EXPECT_FALSE(sameDistinguishedName("nosuchattribute=A", "NOSUCHATTRIBUTE=A"));
    EXPECT_FALSE(sameDistinguishedName("CN=A,", "CN=A"));
    EXPECT_FALSE(sameDistinguishedName("cn=#0c01", "cn=#0c01 "));
    EXPECT_FALSE(sameDistinguishedName(static_cast<const XMLCh*>(nullptr), u"CN=A"));
}
