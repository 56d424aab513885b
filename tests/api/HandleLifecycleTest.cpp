// Handles through the C interface: creation, finishing, version, result document.
#include <gtest/gtest.h>

#include <functional>
#include <utility>

#include <cstdlib>
#include <cstring>

#include "ScopedHandle.hpp"
#include "vqxml/vqxml.h"

namespace {

TEST(HandleLifecycle, InitRefusesAVariableThatHoldsAHandle) {
    void* h = nullptr;
    ASSERT_EQ(VQTK_XMLAPI_init(&h), VQXML_OK);
    void* const kept = h;
    EXPECT_EQ(VQTK_XMLAPI_init(&h), VQXML_ERR_HANDLE_IN_USE);
    EXPECT_EQ(VQTK_XMLAPI_initSetlocale(&h, const_cast<char*>("ko_KR.EUC-KR")), VQXML_ERR_HANDLE_IN_USE);
    EXPECT_EQ(h, kept);
    EXPECT_EQ(VQTK_XMLAPI_Finish(&h), VQXML_OK);
}

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

TEST(HandleLifecycle, LocaleIsAcceptedWhateverItSays) {
    for (const char* locale : {static_cast<const char*>(nullptr), "", "C", "ko_KR.EUC-KR", "no-such-locale"}) {
        void* h = nullptr;
        ASSERT_EQ(VQTK_XMLAPI_initSetlocale(&h, const_cast<char*>(locale)), VQXML_OK);
        char version[16] = {};
        EXPECT_EQ(VQTK_XMLAPI_GetVersion(h, sizeof version, version), VQXML_OK);
        EXPECT_STREQ(version, "V1.0.0.7");
        EXPECT_EQ(VQTK_XMLAPI_Finish(&h), VQXML_OK);
    }
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
    EXPECT_EQ(VQTK_XMLAPI_GetVersion(h, 9, nullptr), VQXML_ERR_NULL_ARGUMENT);
}

TEST(HandleLifecycle, NoResultDocumentLeavesTheCallersVariablesAlone) {
    ScopedHandle h;
    char sentinel = 0;
    char* doc = &sentinel;
    int len = -7;
    EXPECT_EQ(VQTK_XMLAPI_GetXMLDocument(h, &doc, &len), VQXML_OK);
    EXPECT_EQ(doc, &sentinel);
    EXPECT_EQ(len, -7);
    EXPECT_EQ(VQTK_XMLAPI_GetXMLDocument(h, nullptr, &len), VQXML_ERR_NULL_ARGUMENT);
    EXPECT_EQ(VQTK_XMLAPI_GetXMLDocument(h, &doc, nullptr), VQXML_ERR_NULL_ARGUMENT);
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
    const std::pair<const char*, Call> calls[] = {
        {"XMLAPI_GetVersion", [](void* h, bool n) { return VQTK_XMLAPI_GetVersion(h, 9, n ? nullptr : text); }},
        {"XMLAPI_GetErrInfo", [](void* h, bool n) { return VQTK_XMLAPI_GetErrInfo(h, 9, n ? nullptr : text); }},
        {"XMLAPI_GetXMLDocument doc", [](void* h, bool n) { return VQTK_XMLAPI_GetXMLDocument(h, n ? nullptr : &text, &number); }},
        {"XMLAPI_GetXMLDocument len", [](void* h, bool n) { return VQTK_XMLAPI_GetXMLDocument(h, &text, n ? nullptr : &number); }},
        {"XMLAPI_DecryptPriKey key", [](void* h, bool n) { return VQTK_XMLAPI_DecryptPriKey(h, nullptr, nullptr, 0, n ? nullptr : &der, &number); }},
        {"XMLAPI_DecryptPriKey len", [](void* h, bool n) { return VQTK_XMLAPI_DecryptPriKey(h, nullptr, nullptr, 0, &der, n ? nullptr : &number); }},
        {"XMLAPI_GetRandomFromPriKey", [](void* h, bool n) { return VQTK_XMLAPI_GetRandomFromPriKey(h, nullptr, nullptr, 0, nullptr, 0, n ? nullptr : &der); }},
        {"XMLDSIG_GetSubjectName", [](void* h, bool n) { return VQTK_XMLDSIG_GetSubjectName(h, n ? nullptr : &text); }},
        {"XMLDSIG_GetIssuerSerialNum issuer", [](void* h, bool n) { return VQTK_XMLDSIG_GetIssuerSerialNum(h, n ? nullptr : &text, &text); }},
        {"XMLDSIG_GetIssuerSerialNum serial", [](void* h, bool n) { return VQTK_XMLDSIG_GetIssuerSerialNum(h, &text, n ? nullptr : &text); }},
        {"XMLDSIG_GetSignCert cert", [](void* h, bool n) { return VQTK_XMLDSIG_GetSignCert(h, n ? nullptr : &der, &number); }},
        {"XMLDSIG_GetSignCert len", [](void* h, bool n) { return VQTK_XMLDSIG_GetSignCert(h, &der, n ? nullptr : &number); }},
        {"XMLDSIG_GetKeyName", [](void* h, bool n) { return VQTK_XMLDSIG_GetKeyName(h, n ? nullptr : &text); }},
        {"XMLDSIG_GetCanonicalReading", [](void* h, bool n) { return VQTK_XMLDSIG_GetCanonicalReading(h, n ? nullptr : &number); }},
        {"XMLENC_GetSubjectName", [](void* h, bool n) { return VQTK_XMLENC_GetSubjectName(h, n ? nullptr : &text); }},
        {"XMLENC_GetIssuerSerialNum issuer", [](void* h, bool n) { return VQTK_XMLENC_GetIssuerSerialNum(h, n ? nullptr : &text, &text); }},
        {"XMLENC_GetIssuerSerialNum serial", [](void* h, bool n) { return VQTK_XMLENC_GetIssuerSerialNum(h, &text, n ? nullptr : &text); }},
        {"XMLENC_GetEncCert cert", [](void* h, bool n) { return VQTK_XMLENC_GetEncCert(h, n ? nullptr : &der, &number); }},
        {"XMLENC_GetEncCert len", [](void* h, bool n) { return VQTK_XMLENC_GetEncCert(h, &der, n ? nullptr : &number); }},
        {"XMLENC_GetKeyName", [](void* h, bool n) { return VQTK_XMLENC_GetKeyName(h, n ? nullptr : &text); }},
        {"EBXML_GetSubjectName", [](void* h, bool n) { return VQTK_EBXML_GetSubjectName(h, n ? nullptr : &text); }},
        {"EBXML_GetIssuerSerialNum issuer", [](void* h, bool n) { return VQTK_EBXML_GetIssuerSerialNum(h, n ? nullptr : &text, &text); }},
        {"EBXML_GetIssuerSerialNum serial", [](void* h, bool n) { return VQTK_EBXML_GetIssuerSerialNum(h, &text, n ? nullptr : &text); }},
        {"EBXML_GetKeyName", [](void* h, bool n) { return VQTK_EBXML_GetKeyName(h, n ? nullptr : &text); }},
        {"EBXML_GetSignCert cert", [](void* h, bool n) { return VQTK_EBXML_GetSignCert(h, n ? nullptr : &der, &number); }},
        {"EBXML_GetSignCert len", [](void* h, bool n) { return VQTK_EBXML_GetSignCert(h, &der, n ? nullptr : &number); }},
        {"SOAPSEC_GetSignKeyInfo", [](void* h, bool n) { return VQTK_SOAPSEC_GetSignKeyInfo(h, n ? nullptr : &number); }},
        {"SOAPSEC_GetEncKeyInfo", [](void* h, bool n) { return VQTK_SOAPSEC_GetEncKeyInfo(h, n ? nullptr : &number); }},
        {"SOAPSEC_GetSubjectName", [](void* h, bool n) { return VQTK_SOAPSEC_GetSubjectName(h, n ? nullptr : &text); }},
        {"SOAPSEC_GetIssuerSerialNum issuer", [](void* h, bool n) { return VQTK_SOAPSEC_GetIssuerSerialNum(h, n ? nullptr : &text, &text); }},
        {"SOAPSEC_GetIssuerSerialNum serial", [](void* h, bool n) { return VQTK_SOAPSEC_GetIssuerSerialNum(h, &text, n ? nullptr : &text); }},
        {"SOAPSEC_GetKeyName", [](void* h, bool n) { return VQTK_SOAPSEC_GetKeyName(h, n ? nullptr : &text); }},
        {"SOAPSEC_GetSignCert cert", [](void* h, bool n) { return VQTK_SOAPSEC_GetSignCert(h, n ? nullptr : &der, &number); }},
        {"SOAPSEC_GetSignCert len", [](void* h, bool n) { return VQTK_SOAPSEC_GetSignCert(h, &der, n ? nullptr : &number); }},
    };
    char buffer[16];
    ScopedHandle h;
    for (const auto& [name, call] : calls) {
        text = buffer;
        der = reinterpret_cast<unsigned char*>(buffer);
        number = -7;
        EXPECT_EQ(call(h, true), VQXML_ERR_NULL_ARGUMENT) << name;
        EXPECT_EQ(call(nullptr, false), VQXML_ERR_NULL_HANDLE) << name;
        EXPECT_EQ(text, buffer) << name;
        EXPECT_EQ(number, -7) << name;
    }
}

}  // namespace
