// A context whose protected state tests may look at.
#ifndef VQXML_TESTS_CONTEXTFIXTURE_HPP
#define VQXML_TESTS_CONTEXTFIXTURE_HPP

#include <string>

#include "core/ErrorFrame.hpp"
#include "vqxml/VQXML_XMLSecurity.h"

// Loads text the way every family loader does; returns the status code.
inline int loadText(VQXML_XMLSecurity& ctx, const std::string& text) {
    return vqxml::guarded(ctx, "load > ", [&] {
        ctx.loadDocument(const_cast<char*>(text.data()), static_cast<int>(text.size()));
    });
}

class InspectableContext : public VQXML_XMLSecurity {
public:
    using VQXML_XMLSecurity::m_document;

    int load(const std::string& text) { return loadText(*this, text); }
};

#endif
