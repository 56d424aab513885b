// Key material for the fuzz targets, read once from the project's test data.
#ifndef VQXML_FUZZ_FUZZDATA_HPP
#define VQXML_FUZZ_FUZZDATA_HPP

#include <climits>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <vqxml/vqxml.h>

namespace fuzzdata {

// One handle for the whole run, as in a server, so the engines stay up.
inline void* sharedHandle() {
    static void* handle = [] {
        void* h = nullptr;
        VQTK_XMLAPI_init(&h);
        return h;
    }();
    return handle;
}

// A family's getters of the key information it read.
struct KeyInfoGetters {
    int (*subject)(void*, char**);
    int (*issuerSerial)(void*, char**, char**);
    int (*keyName)(void*, char**);
    int (*certificate)(void*, unsigned char**, int*);
};

inline void readKeyInfo(void* handle, const KeyInfoGetters& getters) {
    char* issuer = nullptr;
    char* serial = nullptr;
    char* text = nullptr;
    unsigned char* cert = nullptr;
    int certLen = 0;
    getters.subject(handle, &text);
    getters.issuerSerial(handle, &issuer, &serial);
    getters.keyName(handle, &text);
    getters.certificate(handle, &cert, &certLen);
}

// Asks for the result document, as a caller would after a success.
inline void readResult(void* handle) {
    char* doc = nullptr;
    int len = 0;
    VQTK_XMLAPI_GetXMLDocument(handle, &doc, &len);
}

// The bytes of a test data file (VQXML_TEST_DATA_DIR-relative); empty if missing.
inline std::string testFile(const std::string& relative) {
    std::ifstream in(std::string(VQXML_TEST_DATA_DIR) + "/" + relative, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline unsigned char* bytes(std::string& s) {
    return reinterpret_cast<unsigned char*>(s.empty() ? nullptr : &s[0]);
}

inline int length(const std::string& s) {
    return static_cast<int>(s.size());
}

// An exactly sized, writable copy of the input: the C interface takes char*, and
// ASan then sees any read past the caller's bytes.
inline bool copyInput(const uint8_t* data, std::size_t size, std::vector<char>* out) {
    if (size == 0 || size > static_cast<std::size_t>(INT_MAX))
        return false;
    out->assign(data, data + size);
    return true;
}

}  // namespace fuzzdata

#endif
