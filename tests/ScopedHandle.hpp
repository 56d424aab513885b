// A handle of the C interface that is finished when the test leaves its scope.
#ifndef VQXML_TESTS_SCOPEDHANDLE_HPP
#define VQXML_TESTS_SCOPEDHANDLE_HPP

#include <gtest/gtest.h>

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

#endif
