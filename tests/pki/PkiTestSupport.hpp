// A context handle of the C interface for the pki tests.
#ifndef VQXML_TESTS_PKI_PKITESTSUPPORT_HPP
#define VQXML_TESTS_PKI_PKITESTSUPPORT_HPP

#include <stdexcept>
#include <string>

#include "vqxml/vqxml.h"

namespace pkitest {

class Handle {
public:
    Handle() {
        if (VQTK_XMLAPI_init(&m_handle) != VQXML_OK)
            throw std::runtime_error("no handle");
    }
    ~Handle() { VQTK_XMLAPI_Finish(&m_handle); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    void* get() const { return m_handle; }
    std::string error() const {
        char text[1024] = {};
        VQTK_XMLAPI_GetErrInfo(m_handle, sizeof text, text);
        return text;
    }

private:
    void* m_handle = nullptr;
};

}  // namespace pkitest

#endif
