// The error text of a context handle, for the pki tests.
#ifndef VQXML_TESTS_PKI_PKITESTSUPPORT_HPP
#define VQXML_TESTS_PKI_PKITESTSUPPORT_HPP

#include <string>

#include "ScopedHandle.hpp"

namespace pkitest {

inline std::string errorText(void* handle) {
    char text[1024] = {};
    VQTK_XMLAPI_GetErrInfo(handle, sizeof text, text);
    return text;
}

}  // namespace pkitest

#endif
