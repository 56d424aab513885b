// A handle of the C interface that is finished when the test leaves its scope,
// and what every caller of the C interface needs around it.
#ifndef VQXML_TESTS_SCOPEDHANDLE_HPP
#define VQXML_TESTS_SCOPEDHANDLE_HPP

#include <gtest/gtest.h>

#include <string>

#include "CBuffers.hpp"
#include "vqxml/vqxml.h"

struct ScopedHandle {
    void* h = nullptr;
    ScopedHandle() { EXPECT_EQ(VQTK_XMLAPI_init(&h), VQXML_OK); }
    ~ScopedHandle() {
        if (h != nullptr)
            VQTK_XMLAPI_Finish(&h);
    }
    ScopedHandle(const ScopedHandle&) = delete;
    ScopedHandle& operator=(const ScopedHandle&) = delete;
    operator void*() const { return h; }
};

namespace apitest {

using cbuffers::bytes;
using cbuffers::chars;
using cbuffers::size;

inline std::string errorText(void* h) {
    char text[1024] = {};
    VQTK_XMLAPI_GetErrInfo(h, sizeof text, text);
    return text;
}

// The handle's result document ("" when there is none).
inline std::string resultDocument(void* h) {
    char* doc = nullptr;
    int len = 0;
    VQTK_XMLAPI_GetXMLDocument(h, &doc, &len);
    return doc != nullptr ? std::string(doc, len) : std::string();
}

}  // namespace apitest

#endif
