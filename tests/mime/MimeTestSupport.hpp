// Helpers shared by the MIME tests: run coders over strings, store entities
// into strings, load from exact-size heap copies (so that AddressSanitizer sees
// any read past the end).
#ifndef VQXML_TESTS_MIME_SUPPORT_HPP
#define VQXML_TESTS_MIME_SUPPORT_HPP

#include <vqxml/VQXML_Mime.h>

#include "TestFiles.hpp"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace mimetest {

const std::string kKorean = "\xED\x95\x9C\xEA\xB8\x80";  // two Hangul syllables in UTF-8

inline std::string Run(CMimeCodeBase& coder, const std::string& in, bool encode) {
    coder.SetInput(in.data(), static_cast<int>(in.size()), encode);
    std::vector<unsigned char> out(static_cast<size_t>(coder.GetOutputLength()) + 1);
    int n = coder.GetOutput(out.data(), static_cast<int>(out.size()) - 1);
    return std::string(reinterpret_cast<const char*>(out.data()), n);
}

template <typename Coder>
std::string Encode(const std::string& in, bool breakLines) {
    Coder coder;
    coder.SetBreakLines(breakLines);
    return Run(coder, in, true);
}

template <typename Coder>
std::string Decode(const std::string& in) {
    Coder coder;
    return Run(coder, in, false);
}

// Stores into a buffer of exactly GetLength() bytes.
template <typename Entity>
std::string Stored(const Entity& entity) {
    std::vector<char> out(static_cast<size_t>(entity.GetLength()));
    int n = entity.Store(out.data(), static_cast<int>(out.size()));
    return n < 0 ? std::string() : std::string(out.data(), n);
}

// Loads from a heap copy of exactly the data's size.
template <typename Entity>
int LoadExact(Entity& entity, const std::string& data) {
    std::unique_ptr<char[]> copy(new char[data.size() ? data.size() : 1]);
    std::copy(data.begin(), data.end(), copy.get());
    return entity.Load(copy.get(), static_cast<int>(data.size()));
}

inline std::string Text(const CMimeBody& body) {
    std::string text;
    body.GetText(text);
    return text;
}

inline std::string DataPath(const std::string& name) {
    return testfiles::dataPath("mime/" + name);
}

inline std::string Repeat(const std::string& s, size_t n) {
    std::string out;
    out.reserve(s.size() * n);
    for (size_t i = 0; i < n; ++i)
        out += s;
    return out;
}

}  // namespace mimetest

#endif
