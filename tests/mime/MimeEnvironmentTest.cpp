// The coder registry: defaults, lookups ignoring case, replacing and removing
// registrations, and the automatic-folding switch.
#include "MimeTestSupport.hpp"

#include <gtest/gtest.h>

#include <memory>

namespace {

template <typename Want, typename Have>
bool Is(Have* object) {
    std::unique_ptr<Have> owned(object);
    return dynamic_cast<Want*>(owned.get()) != nullptr;
}

template <typename Want>
bool IsExactly(CMimeCodeBase* object) {
    std::unique_ptr<CMimeCodeBase> owned(object);
    return typeid(*owned) == typeid(Want);
}

class XmlBody : public CMimeBody {
public:
    static CMimeBody* CreateObject() { return new XmlBody; }
};

CFieldCodeBase* MakeAddressCoder() {
    return new CFieldCodeAddress;
}

}  // namespace

TEST(MimeEnvironment, SevenBitIsACopyUntilAutoFoldingIsOn) {
    for (const char* name : {static_cast<const char*>(nullptr), "", "7bit", "8bit"})
        EXPECT_TRUE(IsExactly<CMimeCodeBase>(CMimeEnvironment::CreateCoder(name)));
    CMimeEnvironment::SetAutoFolding(true);
    for (const char* name : {static_cast<const char*>(nullptr), "", "7BIT", "8bit"})
        EXPECT_TRUE(IsExactly<CMimeCode7bit>(CMimeEnvironment::CreateCoder(name)));
    CMimeEnvironment::SetAutoFolding(false);
    EXPECT_TRUE(IsExactly<CMimeCodeBase>(CMimeEnvironment::CreateCoder("7bit")));
    EXPECT_TRUE(IsExactly<CMimeCodeBase>(CMimeEnvironment::CreateCoder("8bit")));
}

TEST(MimeEnvironment, TransferEncodingsAreFoundIgnoringCase) {
    EXPECT_TRUE(IsExactly<CMimeCodeBase64>(CMimeEnvironment::CreateCoder("BASE64")));
    EXPECT_TRUE(IsExactly<CMimeCodeQP>(CMimeEnvironment::CreateCoder("Quoted-Printable")));
    EXPECT_TRUE(IsExactly<CMimeCodeBase>(CMimeEnvironment::CreateCoder("x-unknown")));
    EXPECT_TRUE(IsExactly<CMimeCodeBase>(CMimeEnvironment::CreateCoder("binary")));
}

TEST(MimeEnvironment, FieldCodersByName) {
    EXPECT_TRUE(Is<CFieldCodeText>(CMimeEnvironment::CreateFieldCoder("subject")));
    EXPECT_TRUE(Is<CFieldCodeAddress>(CMimeEnvironment::CreateFieldCoder("resent-reply-to")));
    EXPECT_TRUE(Is<CFieldCodeParameter>(CMimeEnvironment::CreateFieldCoder("content-disposition")));
    std::unique_ptr<CFieldCodeBase> plain(CMimeEnvironment::CreateFieldCoder("X-Mailer"));
    EXPECT_TRUE(typeid(*plain) == typeid(CFieldCodeBase));
}

TEST(MimeEnvironment, RegisteringReplacesAndANullFactoryRemoves) {
    CMimeEnvironment::RegisterFieldCoder("SUBJECT", MakeAddressCoder);
    EXPECT_TRUE(Is<CFieldCodeAddress>(CMimeEnvironment::CreateFieldCoder("Subject")));
    CMimeEnvironment::RegisterFieldCoder("Subject", nullptr);
    std::unique_ptr<CFieldCodeBase> plain(CMimeEnvironment::CreateFieldCoder("Subject"));
    EXPECT_TRUE(typeid(*plain) == typeid(CFieldCodeBase));
    CMimeEnvironment::RegisterFieldCoder("Subject", CFieldCodeText::CreateObject);
    EXPECT_TRUE(Is<CFieldCodeText>(CMimeEnvironment::CreateFieldCoder("Subject")));
}

TEST(MimeEnvironment, MediaTypesChooseTheBodyClass) {
    std::unique_ptr<CMimeBody> plain(CMimeEnvironment::CreateBodyPart(nullptr));
    EXPECT_TRUE(typeid(*plain) == typeid(CMimeBody));
    plain.reset(CMimeEnvironment::CreateBodyPart("multipart"));
    EXPECT_TRUE(typeid(*plain) == typeid(CMimeBody));

    CMimeEnvironment::RegisterMediaType("application", XmlBody::CreateObject);
    const std::string data =
        "Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n"
        "Content-Type: Application/xml\r\n\r\n<a/>\r\n--b--\r\n";
    CMimeBody body;
    EXPECT_EQ(mimetest::LoadExact(body, data), static_cast<int>(data.size()));
    ASSERT_EQ(body.GetPartCount(), 1);
    EXPECT_TRUE(dynamic_cast<XmlBody*>(body.GetPartList().front()) != nullptr);
    CMimeEnvironment::RegisterMediaType("application", nullptr);
    plain.reset(CMimeEnvironment::CreateBodyPart("application"));
    EXPECT_TRUE(typeid(*plain) == typeid(CMimeBody));
}
