// The coder registry: defaults, lookups ignoring case, replacing and removing
// registrations, and the automatic-folding switch.
#include "MimeTestSupport.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <typeinfo>
#include <utility>

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

// 7bit and 8bit are a plain copy until automatic folding is on; names ignore case.
TEST(MimeEnvironment, CodersByName) {
    const struct {
        const char* name;
        bool autoFolding;
        const std::type_info& type;
    } coders[] = {
        {nullptr, false, typeid(CMimeCodeBase)},   {"", false, typeid(CMimeCodeBase)},
        {"7bit", false, typeid(CMimeCodeBase)},    {"8bit", false, typeid(CMimeCodeBase)},
        {nullptr, true, typeid(CMimeCode7bit)},    {"", true, typeid(CMimeCode7bit)},
        {"7BIT", true, typeid(CMimeCode7bit)},     {"8bit", true, typeid(CMimeCode7bit)},
        {"BASE64", false, typeid(CMimeCodeBase64)}, {"Quoted-Printable", false, typeid(CMimeCodeQP)},
        {"x-unknown", false, typeid(CMimeCodeBase)}, {"binary", false, typeid(CMimeCodeBase)},
    };
    for (const auto& c : coders) {
        CMimeEnvironment::SetAutoFolding(c.autoFolding);
        std::unique_ptr<CMimeCodeBase> coder(CMimeEnvironment::CreateCoder(c.name));
        EXPECT_TRUE(typeid(*coder) == c.type) << (c.name ? c.name : "(null)") << " " << c.autoFolding;
    }
    CMimeEnvironment::SetAutoFolding(false);
    const std::pair<const char*, const std::type_info&> fieldCoders[] = {
        {"subject", typeid(CFieldCodeText)},
        {"resent-reply-to", typeid(CFieldCodeAddress)},
        {"content-disposition", typeid(CFieldCodeParameter)},
        {"X-Mailer", typeid(CFieldCodeBase)},
    };
    for (const auto& [name, type] : fieldCoders) {
        std::unique_ptr<CFieldCodeBase> coder(CMimeEnvironment::CreateFieldCoder(name));
        EXPECT_TRUE(typeid(*coder) == type) << name;
    }
}

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
