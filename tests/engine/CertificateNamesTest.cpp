// Names in the form the library hands out (those of real certificates: the
// KeyInfoReading and KcdsaKeyObject tests).

#include <gtest/gtest.h>
#include <openssl/x509.h>

#include "engine/CertificateNames.hpp"
#include "engine/korean/OpenSSLPtr.hpp"

namespace {

using Name = vqxml::korean::OpenSSLPtr<X509_NAME, X509_NAME_free>;

// Adds an attribute; sameRdn joins it to the previous relative name.
void add(X509_NAME* name, const char* field, const std::string& value, bool sameRdn = false,
         int type = MBSTRING_UTF8) {
    ASSERT_EQ(X509_NAME_add_entry_by_txt(name, field, type, reinterpret_cast<const unsigned char*>(value.data()),
                                         int(value.size()), -1, sameRdn ? -1 : 0),
              1)
        << field;
}

}  // namespace

// Special characters escaped as RFC 4514 says, multi-valued, unknown and
// non-string attributes, other string types.
TEST(CertificateNames, FormattedAsRfc4514Says) {
    Name name(X509_NAME_new());
    add(name.get(), "C", "KR");
    add(name.get(), "O", "A, B + C");
    add(name.get(), "OU", "#lead");
    add(name.get(), "OU", " spaced ");
    add(name.get(), "CN", "quote\" back\\ <less> semi;");
    EXPECT_EQ(vqxml::formatName(name.get()),
              "cn=quote\\\" back\\\\ \\<less\\> semi\\;,ou=\\ spaced\\ ,ou=\\#lead,o=A\\, B \\+ C,c=KR");
    name.reset(X509_NAME_new());
    add(name.get(), "C", "KR");
    add(name.get(), "CN", "이름");
    add(name.get(), "serialNumber", "1234", true);
    add(name.get(), "1.2.3.4.5", "custom");
    X509_NAME_ENTRY* binary = X509_NAME_ENTRY_create_by_txt(nullptr, "1.2.3.4.6", V_ASN1_BIT_STRING,
                                                           reinterpret_cast<const unsigned char*>("\x01\xff"), 2);
    ASSERT_NE(binary, nullptr);
    ASSERT_EQ(X509_NAME_add_entry(name.get(), binary, -1, 0), 1);
    X509_NAME_ENTRY_free(binary);
    EXPECT_EQ(vqxml::formatName(name.get()), "1.2.3.4.6=#03030001ff,1.2.3.4.5=custom,cn=이름+serialnumber=1234,c=KR");
    // Other string types become UTF-8; NUL is escaped.
    name.reset(X509_NAME_new());
    const std::string bmp = {'\xd5', '\x5c', '\xae', '\x00'};  // "한글" in UCS-2
    add(name.get(), "O", bmp, false, MBSTRING_BMP);
    add(name.get(), "CN", std::string("a\0b", 3));
    EXPECT_EQ(vqxml::formatName(name.get()), "cn=a\\00b,o=한글");
    Name empty(X509_NAME_new());
    EXPECT_EQ(vqxml::formatName(empty.get()), "");
    EXPECT_EQ(vqxml::certificateSubject(nullptr), "");
}
