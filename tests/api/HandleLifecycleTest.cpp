// Handles through the C interface: creation, finishing, version, result document,
// and the error text as the handle hands it out.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "ScopedHandle.hpp"
#include "vqxml/VQXML_XMLSecurity.h"

namespace {

// Every front checks its handle before anything else: one call of each family.
TEST(HandleLifecycle, NullHandleNeverReachesAContext) {
    void* none = nullptr;
    char text[16];
    char* doc = nullptr;
    unsigned char* bytes = nullptr;
    unsigned char der = 0x30;
    int len = 0;
    const int statuses[] = {
        VQTK_XMLAPI_Finish(&none),
        VQTK_XMLAPI_Finish(nullptr),
        VQTK_XMLAPI_GetVersion(nullptr, 16, text),
        VQTK_XMLAPI_GetXMLDocument(nullptr, &doc, &len),
        VQTK_XMLAPI_VerifyCert(nullptr, &der, 1),
        VQTK_XMLAPI_DecryptPriKey(nullptr, text, &der, 1, &bytes, &len),
        VQTK_XMLAPI_GetRandomFromPriKey(nullptr, nullptr, &der, 1, nullptr, 0, &bytes),
        VQTK_XMLDSIG_SetXMLDocument(nullptr, nullptr, 0),
        VQTK_XMLDSIG_SignatureMethod(nullptr, 5, 3),
        VQTK_XMLDSIG_sign(nullptr),
        VQTK_XMLDSIG_Verify(nullptr),
        VQTK_XMLDSIG_GetKeyName(nullptr, nullptr),
        VQTK_XMLENC_SetXMLDocument(nullptr, text, 1),
        VQTK_XMLENC_Decrypt(nullptr),
        VQTK_SOAPSEC_SetVerifyCert(nullptr, &der, 1),
        VQTK_EBXML_SetSOAPDocument(nullptr, text, 1),
        VQTK_EBXML_SetSOAPSecXMLDocument(nullptr, text, 1),
        VQTK_EBXML_Sign(nullptr),
        VQTK_EBXML_SetKeyValue(nullptr),
    };
    for (size_t i = 0; i < sizeof statuses / sizeof statuses[0]; ++i)
        EXPECT_EQ(statuses[i], VQXML_ERR_NULL_HANDLE) << "call " << i;
    EXPECT_EQ(VQTK_XMLAPI_init(nullptr), VQXML_ERR_NULL_ARGUMENT);
}

// Any locale is accepted; init refuses a variable that holds a handle.
TEST(HandleLifecycle, InitTakesAnyLocaleAndRefusesAVariableThatHoldsAHandle) {
    for (const char* locale : {static_cast<const char*>(nullptr), "", "C", "ko_KR.EUC-KR", "no-such-locale"}) {
        void* h = nullptr;
        ASSERT_EQ(VQTK_XMLAPI_initSetlocale(&h, const_cast<char*>(locale)), VQXML_OK);
        char version[16] = {};
        EXPECT_EQ(VQTK_XMLAPI_GetVersion(h, sizeof version, version), VQXML_OK);
        EXPECT_STREQ(version, "V1.0.0.7");
        EXPECT_EQ(VQTK_XMLAPI_Finish(&h), VQXML_OK);
    }
    void* h = nullptr;
    ASSERT_EQ(VQTK_XMLAPI_init(&h), VQXML_OK);
    void* const kept = h;
    EXPECT_EQ(VQTK_XMLAPI_init(&h), VQXML_ERR_HANDLE_IN_USE);
    EXPECT_EQ(VQTK_XMLAPI_initSetlocale(&h, const_cast<char*>("ko_KR.EUC-KR")), VQXML_ERR_HANDLE_IN_USE);
    EXPECT_EQ(h, kept);
    EXPECT_EQ(VQTK_XMLAPI_Finish(&h), VQXML_OK);
}

TEST(HandleLifecycle, VersionCopiesWithoutNulWhenTheBufferIsExactlyTheText) {
    ScopedHandle h;
    char out[16];
    std::memset(out, 'x', sizeof out);
    EXPECT_EQ(VQTK_XMLAPI_GetVersion(h, 8, out), VQXML_OK);
    EXPECT_EQ(std::memcmp(out, "V1.0.0.7x", 9), 0);
    std::memset(out, 'x', sizeof out);
    EXPECT_EQ(VQTK_XMLAPI_GetVersion(h, 3, out), VQXML_OK);
    EXPECT_EQ(std::memcmp(out, "V1.x", 4), 0);
    std::memset(out, 'x', sizeof out);
    EXPECT_EQ(VQTK_XMLAPI_GetVersion(h, 9, out), VQXML_OK);
    EXPECT_EQ(std::memcmp(out, "V1.0.0.7\0x", 10), 0);
    std::memset(out, 'x', sizeof out);
    EXPECT_EQ(VQTK_XMLAPI_GetVersion(h, 0, out), VQXML_OK);
    EXPECT_EQ(out[0], 'x');
}

TEST(HandleLifecycle, NoResultDocumentLeavesTheCallersVariablesAlone) {
    ScopedHandle h;
    char sentinel = 0;
    char* doc = &sentinel;
    int len = -7;
    EXPECT_EQ(VQTK_XMLAPI_GetXMLDocument(h, &doc, &len), VQXML_OK);
    EXPECT_EQ(doc, &sentinel);
    EXPECT_EQ(len, -7);
}

TEST(HandleLifecycle, FreeReleasesCallerBuffersAndIgnoresNull) {
    void* buffer = std::malloc(32);
    VQTK_XMLAPI_Free(&buffer);
    EXPECT_EQ(buffer, nullptr);
    VQTK_XMLAPI_Free(&buffer);
    VQTK_XMLAPI_Free(nullptr);
}

// Every function that writes through pointers refuses a null one with 10102
// (after 10100 for a null handle) and writes nothing through the others.
TEST(HandleLifecycle, EveryNullOutPointerIsRefused) {
    using Call = std::function<int(void*, bool)>;  // second: pass the null pointer
    static char* text;
    static unsigned char* der;
    static int number;
    std::vector<Call> calls = {
        [](void* h, bool n) { return VQTK_XMLAPI_GetVersion(h, 9, n ? nullptr : text); },
        [](void* h, bool n) { return VQTK_XMLAPI_GetErrInfo(h, 9, n ? nullptr : text); },
        [](void* h, bool n) { return VQTK_XMLAPI_GetXMLDocument(h, n ? nullptr : &text, &number); },
        [](void* h, bool n) { return VQTK_XMLAPI_GetXMLDocument(h, &text, n ? nullptr : &number); },
        [](void* h, bool n) { return VQTK_XMLAPI_DecryptPriKey(h, nullptr, nullptr, 0, n ? nullptr : &der, &number); },
        [](void* h, bool n) { return VQTK_XMLAPI_DecryptPriKey(h, nullptr, nullptr, 0, &der, n ? nullptr : &number); },
        [](void* h, bool n) {
            return VQTK_XMLAPI_GetRandomFromPriKey(h, nullptr, nullptr, 0, nullptr, 0, n ? nullptr : &der);
        },
    };
    for (auto get : {VQTK_XMLDSIG_GetSubjectName, VQTK_XMLDSIG_GetKeyName, VQTK_XMLENC_GetSubjectName,
                     VQTK_XMLENC_GetKeyName, VQTK_EBXML_GetSubjectName, VQTK_EBXML_GetKeyName,
                     VQTK_SOAPSEC_GetSubjectName, VQTK_SOAPSEC_GetKeyName})
        calls.push_back([get](void* h, bool n) { return get(h, n ? nullptr : &text); });
    for (auto get : {VQTK_XMLDSIG_GetIssuerSerialNum, VQTK_XMLENC_GetIssuerSerialNum, VQTK_EBXML_GetIssuerSerialNum,
                     VQTK_SOAPSEC_GetIssuerSerialNum}) {
        calls.push_back([get](void* h, bool n) { return get(h, n ? nullptr : &text, &text); });
        calls.push_back([get](void* h, bool n) { return get(h, &text, n ? nullptr : &text); });
    }
    for (auto get : {VQTK_XMLDSIG_GetSignCert, VQTK_XMLENC_GetEncCert, VQTK_EBXML_GetSignCert,
                     VQTK_SOAPSEC_GetSignCert}) {
        calls.push_back([get](void* h, bool n) { return get(h, n ? nullptr : &der, &number); });
        calls.push_back([get](void* h, bool n) { return get(h, &der, n ? nullptr : &number); });
    }
    for (auto get : {VQTK_XMLDSIG_GetCanonicalReading, VQTK_SOAPSEC_GetSignKeyInfo, VQTK_SOAPSEC_GetEncKeyInfo})
        calls.push_back([get](void* h, bool n) { return get(h, n ? nullptr : &number); });
    char buffer[1024];  // a null handle's GetErrInfo writes its text
    ScopedHandle h;
    for (size_t i = 0; i < calls.size(); ++i) {
        text = buffer;
        der = reinterpret_cast<unsigned char*>(buffer);
        number = -7;
        EXPECT_EQ(calls[i](h, true), VQXML_ERR_NULL_ARGUMENT) << "call " << i;
        EXPECT_EQ(calls[i](nullptr, false), VQXML_ERR_NULL_HANDLE) << "call " << i;
        EXPECT_EQ(text, buffer) << "call " << i;
        EXPECT_EQ(number, -7) << "call " << i;
    }
}

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
