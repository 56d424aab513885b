// Documents encrypted by other software: every xenc row of the shared interop
// manifest.
//
// Triple DES and AES content, with the session key given (SetSymmKey after
// GetEncKeyInfo) or carried in an EncryptedKey (RSA 1.5, RSA-OAEP with its
// parameters, Triple DES and AES key wrap, AES-CBC), in the EncryptedData's
// KeyInfo, at document level or reached by a RetrievalMethod. A sample the row
// calls invalid (a changed wrapped key) must fail.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "InteropManifest.hpp"
#include "XencFixture.hpp"

using namespace xenctest;

namespace {

using interop::file;
using interop::Row;

// The selector of the row's content algorithm (its first).
int contentSelector(const Row& r) {
    const std::string first = r.algorithms.substr(0, r.algorithms.find(','));
    const std::pair<const char*, int> kSelectors[] = {{"tripledes-cbc", 1}, {"aes128-cbc", 5}, {"aes192-cbc", 6},
                                                      {"aes256-cbc", 7}};
    for (const auto& [name, selector] : kSelectors)
        if (first == name)
            return selector;
    return 0;
}

// Opens a sample with the row's key: the status and the result (or error text).
int open(const Row& r, std::string* out) {
    const std::string text = file(r.path);
    const std::string key = file(r.keySource.substr(r.keySource.find(':') + 1));
    const bool wrapped = text.find("EncryptedKey") != std::string::npos;
    ScopedHandle h;
    int rc = VQTK_XMLENC_SetEncXMLDocument(h, chars(text), size(text));
    if (rc == 0)
        rc = VQTK_XMLENC_GetEncKeyInfo(h);
    if (rc == 0 && !wrapped)
        rc = VQTK_XMLENC_SetSymmKey(h, bytes(key), size(key), contentSelector(r));
    else if (rc == 0)
        rc = VQTK_XMLENC_DecryptKeyWrapKey(h, nullptr, 0, bytes(key), size(key));
    if (rc == 0)
        rc = VQTK_XMLENC_Decrypt(h);
    *out = rc == 0 ? resultDocument(h) : errorText(h);
    return rc;
}

class XencSample : public testing::TestWithParam<Row> {};

TEST_P(XencSample, OpensToTheExpectedData) {
    const Row& r = GetParam();
    std::string result;
    const int rc = open(r, &result);
    if (!r.valid) {
        EXPECT_NE(rc, 0) << result;
        return;
    }
    ASSERT_EQ(rc, 0) << result;
    const std::string expected = file(r.path.substr(0, r.path.size() - 4) + ".data");
    EXPECT_EQ(comparable(result), comparable(expected));
}

INSTANTIATE_TEST_SUITE_P(Manifest, XencSample, testing::ValuesIn(interop::rows("xenc-decrypt")),
                         [](const testing::TestParamInfo<Row>& info) {
                             std::string name = info.param.path.substr(info.param.path.rfind('/') + 1) + "_" +
                                                std::to_string(info.index);
                             for (char& c : name)
                                 if (!isalnum(static_cast<unsigned char>(c)))
                                     c = '_';
                             return name;
                         });

}  // namespace
