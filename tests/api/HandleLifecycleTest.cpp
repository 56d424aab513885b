// Handles through the C interface: creation, finishing, version, result document.
#include <gtest/gtest.h>

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

}  // namespace
