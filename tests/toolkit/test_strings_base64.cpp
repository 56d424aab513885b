// Toolkit handles, byte strings and base64.
#include <gtest/gtest.h>

#include <cstring>

#include "toolkit/ToolkitInternal.hpp"
#include "toolkit/ToolkitTestSupport.hpp"

using namespace vqtktest;

// Opens only with the default configuration; the error text of a closed handle says so.
TEST(ToolkitHandle, OpensOnlyWithTheDefaultConfiguration) {
    int staleValue = 0;  // a stale value the refused call must clear
    for (const char* config : {static_cast<const char*>(nullptr), "", "."}) {
        VQTK_Toolkit* handle = nullptr;
        EXPECT_EQ(VQTK_API_Init(&handle, config), VQTK_OK);
        EXPECT_NE(handle, nullptr);
        EXPECT_EQ(VQTK_API_Finish(&handle), VQTK_OK);
        EXPECT_EQ(handle, nullptr);
    }
    VQTK_Toolkit* handle = reinterpret_cast<VQTK_Toolkit*>(&staleValue);
    EXPECT_EQ(VQTK_API_Init(&handle, "/etc/toolkit.conf"), VQTK_ERR_ARGUMENT);
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(VQTK_API_Init(nullptr, "."), VQTK_ERR_ARGUMENT);
    EXPECT_EQ(VQTK_API_Finish(&handle), VQTK_OK);  // closing nothing is fine
    char buffer[64];
    EXPECT_EQ(VQTK_API_GetErrInfo(nullptr, sizeof buffer, buffer), VQTK_ERR_ARGUMENT);
    EXPECT_STREQ(buffer, "The toolkit handle is not open");
    EXPECT_EQ(VQTK_API_GetErrInfo(nullptr, 0, buffer), VQTK_ERR_ARGUMENT);
}

TEST(ToolkitHandle, ErrorTextIsEmptyUntilAFailureAndTruncatedToTheBuffer) {
    Toolkit tk;
    EXPECT_EQ(tk.error(), "");
    String in(ByteVector{'!'}), out;
    EXPECT_EQ(VQTK_BASE64_Decode(tk.get(), in.get(), out.get()), VQTK_ERR_FORMAT);
    const std::string full = tk.error();
    ASSERT_GT(full.size(), 10u);
    char small[8];
    std::memset(small, 'x', sizeof small);
    EXPECT_EQ(VQTK_API_GetErrInfo(tk.get(), sizeof small, small), VQTK_OK);
    EXPECT_EQ(std::string(small), full.substr(0, 7));
}

TEST(ToolkitHandle, ErrorTextIsNeverCutInsideAKoreanCharacter) {
    Toolkit tk;
    vqtk::fail(tk.get(), VQTK_ERR_FORMAT, "A\xb0\xa1\xb3\xaa");  // "A" and two EUC-KR syllables
    char buffer[5];
    ASSERT_EQ(VQTK_API_GetErrInfo(tk.get(), 5, buffer), VQTK_OK);
    EXPECT_STREQ(buffer, "A\xb0\xa1");
    ASSERT_EQ(VQTK_API_GetErrInfo(tk.get(), 3, buffer), VQTK_OK);
    EXPECT_STREQ(buffer, "A");
}

TEST(BinaryString, SetDataCopiesAndTreatsNullOrNegativeAsEmpty) {
    VQTK_BINSTR str;
    ASSERT_EQ(VQTK_BINSTR_Create(&str), VQTK_OK);
    unsigned char bytes[] = {1, 2, 3};
    ASSERT_EQ(VQTK_BINSTR_SetData(bytes, 3, &str), VQTK_OK);
    bytes[0] = 9;
    EXPECT_EQ(str.length, 3);
    EXPECT_EQ(str.data[0], 1);
    EXPECT_EQ(VQTK_BINSTR_SetData(bytes, -5, &str), VQTK_OK);
    EXPECT_EQ(str.length, 0);
    EXPECT_EQ(VQTK_BINSTR_SetData(nullptr, 10, &str), VQTK_OK);
    EXPECT_EQ(str.length, 0);
    EXPECT_EQ(VQTK_BINSTR_SetData(bytes, 3, nullptr), VQTK_ERR_ARGUMENT);
    EXPECT_EQ(VQTK_BINSTR_Delete(&str), VQTK_OK);
    EXPECT_EQ(str.data, nullptr);
    EXPECT_EQ(VQTK_BINSTR_Delete(nullptr), VQTK_ERR_ARGUMENT);
}

// The RFC 4648 examples exactly; every length to 69 and every byte value back
// again, on one line, decoded in place.
TEST(Base64, Rfc4648ExamplesAndRoundTrips) {
    const char* const pairs[][2] = {{"", ""},         {"f", "Zg=="},         {"fo", "Zm8="},
                                    {"foo", "Zm9v"},  {"foob", "Zm9vYg=="},  {"fooba", "Zm9vYmE="},
                                    {"foobar", "Zm9vYmFy"}};
    Toolkit tk;
    for (const auto& pair : pairs) {
        String in(ByteVector(pair[0], pair[0] + std::strlen(pair[0]))), out;
        ASSERT_EQ(VQTK_BASE64_Encode(tk.get(), in.get(), out.get()), VQTK_OK);
        EXPECT_EQ(text(out.bytes()), pair[1]);
    }
    for (size_t n = 0; n < 70; ++n) {
        ByteVector data(n);
        for (size_t i = 0; i < n; ++i)
            data[i] = static_cast<unsigned char>(i * 37 + n);
        String s(data);
        ASSERT_EQ(VQTK_BASE64_Encode(tk.get(), s.get(), s.get()), VQTK_OK);
        EXPECT_EQ(text(s.bytes()).find_first_of("\r\n"), std::string::npos);
        ASSERT_EQ(VQTK_BASE64_Decode(tk.get(), s.get(), s.get()), VQTK_OK);
        EXPECT_EQ(s.bytes(), data);
    }
}

TEST(Base64, SkipsLineBreaksAndRefusesMalformedText) {
    Toolkit tk;
    String in(ByteVector{'Z', 'm', '9', '\r', '\n', 'v', ' ', 'Y', 'g', '=', '=', '\n'}), out;
    ASSERT_EQ(VQTK_BASE64_Decode(tk.get(), in.get(), out.get()), VQTK_OK);
    EXPECT_EQ(text(out.bytes()), "foob");
    for (const char* bad : {"Zm9", "Zg=", "Z===", "=Zg=", "Zg==Zg==", "Zm9v!", "Zg=a", "-----BEGIN"}) {
        in.set(ByteVector(bad, bad + std::strlen(bad)));
        EXPECT_EQ(VQTK_BASE64_Decode(tk.get(), in.get(), out.get()), VQTK_ERR_FORMAT) << bad;
        EXPECT_NE(tk.error().find("Base64"), std::string::npos) << bad;
    }
    EXPECT_EQ(VQTK_BASE64_Decode(nullptr, in.get(), out.get()), VQTK_ERR_ARGUMENT);
    EXPECT_EQ(VQTK_BASE64_Decode(tk.get(), nullptr, out.get()), VQTK_ERR_ARGUMENT);
    EXPECT_EQ(VQTK_BASE64_Encode(tk.get(), in.get(), nullptr), VQTK_ERR_ARGUMENT);
}
