#include "pki/ToolkitSession.hpp"

#include "core/Transcode.hpp"
#include "core/VQXMLException.hpp"
#include "vqxml/vqxml.h"

namespace vqxml {

namespace {

// What the library tells the toolkit when it opens a handle: the defaults.
const char kToolkitConfig[] = ".";
constexpr int kErrorTextSize = 1024;

}  // namespace

ToolkitSession::ToolkitSession() {
    if (VQTK_API_Init(&m_toolkit, kToolkitConfig) != VQTK_OK)
        raise(VQXML_ERR_UNKNOWN);
}

ToolkitSession::~ToolkitSession() {
    for (VQTK_BINSTR& str : m_strings)
        VQTK_BINSTR_Delete(&str);
    VQTK_API_Finish(&m_toolkit);
}

VQTK_BINSTR* ToolkitSession::newString() {
    m_strings.emplace_back();
    VQTK_BINSTR_Create(&m_strings.back());
    return &m_strings.back();
}

void ToolkitSession::trust(const TrustAnchor* anchors, int count) {
    VQTK_BINSTR* anchor = newString();
    for (int i = 0; i < count; ++i) {
        VQTK_BINSTR_SetData(reinterpret_cast<const unsigned char*>(anchors[i].base64),
                            anchors[i].base64Length, anchor);
        check(VQTK_BASE64_Decode(m_toolkit, anchor, anchor));
        check(VQTK_CERT_AddTrustedCert(m_toolkit, anchor));
    }
}

void ToolkitSession::check(int status) const {
    if (status != VQTK_OK)
        raise(VQXML_ERR_UNKNOWN);
}

void ToolkitSession::raise(int code, const std::string& prefix) const {
    char text[kErrorTextSize] = {};
    VQTK_API_GetErrInfo(m_toolkit, sizeof text, text);
    // Byte strings have no handle to leave a text on. Names in the toolkit's
    // texts are EUC-KR.
    const std::string message = prefix + (text[0] != '\0' ? text : "The toolkit gave no reason");
    throw VQXML_XSECException(code, XMLT("EUC-KR", message.c_str()).c_str());
}

}  // namespace vqxml
