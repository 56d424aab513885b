#include "pki/ToolkitSession.hpp"

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
        raiseToolkitError();
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

void ToolkitSession::check(int status) const {
    if (status != VQTK_OK)
        raiseToolkitError();
}

void ToolkitSession::raiseToolkitError() const {
    char text[kErrorTextSize] = {};
    VQTK_API_GetErrInfo(m_toolkit, sizeof text, text);
    // Byte strings have no handle to leave a text on.
    throw VQXML_XSECException(VQXML_ERR_UNKNOWN,
                              text[0] != '\0' ? text : "The toolkit gave no reason");
}

}  // namespace vqxml
