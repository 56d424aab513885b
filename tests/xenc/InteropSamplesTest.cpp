// Documents encrypted by other software: every xenc row of the shared interop
// manifest.
//
// What opens: Triple DES in CBC mode with the session key given (SetSymmKey after
// GetEncKeyInfo) or carried in an EncryptedKey by RSA 1.5, RSA-OAEP or Triple DES
// key wrap. What does not, by design: AES content (10301: only Triple DES, SEED,
// NEAT and ARIA are offered) and keys wrapped with AES or carried by a block
// cipher (11304 while reading, then 10304).
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "InteropManifest.hpp"
#include "XencFixture.hpp"

using namespace xenctest;

namespace {

using interop::file;
using interop::Row;

bool has(const std::string& list, const std::string& algorithm) {
    return ("," + list + ",").find("," + algorithm + ",") != std::string::npos;
}

bool contentIsTripleDes(const Row& r) {
    return has(r.algorithms, "tripledes-cbc") && r.algorithms.find("aes") == std::string::npos;
}

// The document from its root element on: the XML declaration and DOCTYPE are
// written differently by every serialiser.
std::string fromRoot(const std::string& text) {
    size_t at = 0;
    while ((at = text.find('<', at)) != std::string::npos && (text[at + 1] == '?' || text[at + 1] == '!'))
        ++at;
    std::string body = at == std::string::npos ? text : text.substr(at);
    while (!body.empty() && (body.back() == '\n' || body.back() == ' '))
        body.pop_back();
    return body;
}

// Opens a sample with the row's key: the status and the result (or error text).
int open(const Row& r, std::string* out) {
    const std::string text = file(r.path);
    const std::string kind = r.keySource.substr(0, r.keySource.find(':'));
    const std::string key = file(r.keySource.substr(r.keySource.find(':') + 1));
    ScopedHandle h;
    int rc = VQTK_XMLENC_SetEncXMLDocument(h, chars(text), size(text));
    if (rc == 0)
        rc = VQTK_XMLENC_GetEncKeyInfo(h);
    if (rc == 0 && kind == "des3")
        rc = VQTK_XMLENC_SetSymmKey(h, bytes(key), size(key), 1);
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
    if (!contentIsTripleDes(r)) {
        EXPECT_NE(rc, 0) << "AES content is not offered";
        return;
    }
    const bool transportKnown = r.keySource.rfind("des3:", 0) == 0 || has(r.algorithms, "rsa-1_5") ||
                                has(r.algorithms, "rsa-oaep-mgf1p") || has(r.algorithms, "kw-tripledes");
    if (!transportKnown) {
        EXPECT_EQ(rc, 10304) << result;
        return;
    }
    ASSERT_EQ(rc, 0) << result;
    const std::string expected = file(r.path.substr(0, r.path.size() - 4) + ".data");
    EXPECT_EQ(fromRoot(result), fromRoot(expected));
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
