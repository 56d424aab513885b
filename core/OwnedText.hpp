// The context's text fields are malloc'ed copies it frees itself.
#ifndef VQXML_CORE_OWNEDTEXT_HPP
#define VQXML_CORE_OWNEDTEXT_HPP

#include <cstdlib>
#include <cstring>
#include <new>

namespace vqxml {

// field becomes a copy of text; the old value is freed. text is not null.
inline void replaceOwnedText(char*& field, const char* text) {
    char* copy = strdup(text);
    if (copy == nullptr)
        throw std::bad_alloc();
    std::free(field);
    field = copy;
}

}  // namespace vqxml

#endif
