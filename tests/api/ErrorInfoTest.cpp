// The error text of a handle as the C interface hands it out.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "ScopedHandle.hpp"
#include "vqxml/VQXML_XMLSecurity.h"

namespace {

const char kInitFailedEucKr[] = "VQTKXML API \xC3\xCA\xB1\xE2\xC8\xAD \xBD\xC7\xC6\xD0";

TEST(ErrorInfo, NullHandleWritesTheFixedKoreanTextWhateverTheLength) {
    char out[64];
    std::memset(out, 'x', sizeof out);
    EXPECT_EQ(VQTK_XMLAPI_GetErrInfo(nullptr, 1, out), VQXML_ERR_NULL_HANDLE);
    EXPECT_EQ(std::strlen(kInitFailedEucKr), 23u);
    EXPECT_EQ(std::memcmp(out, kInitFailedEucKr, 24), 0);
    EXPECT_EQ(VQTK_XMLAPI_GetErrInfo(nullptr, 1, nullptr), VQXML_ERR_NULL_HANDLE);
}

TEST(ErrorInfo, EmptyUntilAFailureWhoseTextIsCopiedByTheLengthRuleAndSurvivesSuccess) {
    ScopedHandle h;
    auto* ctx = static_cast<VQXML_XMLSecurity*>(h.h);
    const std::string text = "XMLDSIG_sign > something failed";
    char out[64];
    std::memset(out, 'x', sizeof out);
    EXPECT_EQ(VQTK_XMLAPI_GetErrInfo(h, 64, out), VQXML_OK);
    EXPECT_EQ(out[0], '\0') << "a fresh handle has an empty text";
    ctx->ProcessExceptionMessage(10208, "XMLDSIG_sign > ", "something failed");
    EXPECT_EQ(ctx->getLaseErrorCode(), 10208);
    std::memset(out, 'x', sizeof out);
    EXPECT_EQ(VQTK_XMLAPI_GetErrInfo(h, static_cast<int>(text.size()), out), VQXML_OK);
    EXPECT_EQ(std::string(out, text.size()), text);
    EXPECT_EQ(out[text.size()], 'x');
    EXPECT_EQ(VQTK_XMLAPI_GetErrInfo(h, static_cast<int>(text.size()) + 1, out), VQXML_OK);
    EXPECT_STREQ(out, text.c_str());

    char version[16];
    EXPECT_EQ(VQTK_XMLAPI_GetVersion(h, sizeof version, version), VQXML_OK);
    EXPECT_EQ(VQTK_XMLAPI_GetErrInfo(h, sizeof out, out), VQXML_OK);
    EXPECT_STREQ(out, text.c_str());
}

// Engine texts arrive in EUC-KR, cut at 1023 bytes.
TEST(ErrorInfo, EngineTextsAreCutAt1023BytesAndArriveAsEucKr) {
    ScopedHandle h;
    auto* ctx = static_cast<VQXML_XMLSecurity*>(h.h);
    std::u16string longText(5000, u'a');
    ctx->ProcessExceptionMessage(11213, "XMLDSIG_verify > ", longText.c_str());
    std::string out(2048, 'x');
    EXPECT_EQ(VQTK_XMLAPI_GetErrInfo(h, 2048, &out[0]), VQXML_OK);
    EXPECT_EQ(std::strlen(out.c_str()), 1023u);
    EXPECT_EQ(out.compare(0, 17, "XMLDSIG_verify > "), 0);
    ctx->ProcessExceptionMessage(1, "p > ", u"\uC11C\uBA85");  // "서명"
    EXPECT_STREQ(ctx->getLastErrorMsg(), "p > \xBC\xAD\xB8\xED");
}

}  // namespace
