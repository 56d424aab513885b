// One toolkit handle for the length of one library call.
#ifndef VQXML_PKI_TOOLKITSESSION_HPP
#define VQXML_PKI_TOOLKITSESSION_HPP

#include <deque>
#include <string>

#include "pki/TrustAnchors.hpp"
#include "toolkit/vqtk_toolkit.h"

namespace vqxml {

// Opens a toolkit handle and makes byte strings for the call; every string is
// deleted (wiped) and the handle closed on every way out. A failing toolkit step
// becomes the library's exception 12011 with the toolkit's own text.
class ToolkitSession {
public:
    ToolkitSession();
    ~ToolkitSession();
    ToolkitSession(const ToolkitSession&) = delete;
    ToolkitSession& operator=(const ToolkitSession&) = delete;

    VQTK_Toolkit* handle() const { return m_toolkit; }
    // A new empty string owned by the session.
    VQTK_BINSTR* newString();
    // Adds the anchors (base64 DER) to the handle.
    void trust(const TrustAnchor* anchors, int count);
    // Raises 12011 with the toolkit's last text when status is not 0.
    void check(int status) const;
    // Raises code with prefix and the toolkit's last text (EUC-KR).
    [[noreturn]] void raise(int code, const std::string& prefix = std::string()) const;

private:
    VQTK_Toolkit* m_toolkit = nullptr;
    std::deque<VQTK_BINSTR> m_strings;  // a deque keeps the strings' addresses
};

}  // namespace vqxml

#endif
