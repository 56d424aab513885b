// The coder registry: lookups ignoring case, replacing and removing registrations.
#include "MimeTestSupport.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <typeinfo>

namespace {

template <typename Want, typename Have>
bool Is(Have* object) {
    std::unique_ptr<Have> owned(object);
    return dynamic_cast<Want*>(owned.get()) != nullptr;
}

class XmlBody : public CMimeBody {
public:
    static CMimeBody* CreateObject() { return new XmlBody; }
};

CFieldCodeBase* MakeAddressCoder() {
    return new CFieldCodeAddress;
}

}  // namespace

// Registering replaces (names ignore case) and a null factory removes.
TEST(MimeEnvironment, RegistrationsReplaceAndNullRemoves) {
    CMimeEnvironment::RegisterFieldCoder("SUBJECT", MakeAddressCoder);
    EXPECT_TRUE(Is<CFieldCodeAddress>(CMimeEnvironment::CreateFieldCoder("Subject")));
    CMimeEnvironment::RegisterFieldCoder("Subject", nullptr);
    std::unique_ptr<CFieldCodeBase> plain(CMimeEnvironment::CreateFieldCoder("Subject"));
    EXPECT_TRUE(typeid(*plain) == typeid(CFieldCodeBase));
    CMimeEnvironment::RegisterFieldCoder("Subject", CFieldCodeText::CreateObject);
    EXPECT_TRUE(Is<CFieldCodeText>(CMimeEnvironment::CreateFieldCoder("Subject")));

    EXPECT_FALSE(Is<XmlBody>(CMimeEnvironment::CreateBodyPart("multipart")));
    CMimeEnvironment::RegisterMediaType("application", XmlBody::CreateObject);
    const std::string data =
        "Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n"
        "Content-Type: Application/xml\r\n\r\n<a/>\r\n--b--\r\n";
    CMimeBody body;
    EXPECT_EQ(mimetest::LoadExact(body, data), static_cast<int>(data.size()));
    ASSERT_EQ(body.GetPartCount(), 1);
    EXPECT_TRUE(dynamic_cast<XmlBody*>(body.GetPartList().front()) != nullptr);
    CMimeEnvironment::RegisterMediaType("application", nullptr);
    EXPECT_FALSE(Is<XmlBody>(CMimeEnvironment::CreateBodyPart("application")));
}
