#include "engine/VQXML_XSECProvider.hpp"

#include "soapsec/wssec/VQXML_WSSecSecurity.hpp"

VQXML_WSSecSecurity* VQXML_XSECProvider::newWSSecSecurity() {
    return new VQXML_WSSecSecurity(*this);
}

VQXML_WSSecSecurity* VQXML_XSECProvider::newWSSecSecurityFromDOM(XERCES_CPP_NAMESPACE::DOMDocument* doc,
                                                                 XSECEnv* /*env: each object keeps its own*/) {
    return new VQXML_WSSecSecurity(*this, doc);
}

void VQXML_XSECProvider::releaseWSSecSecurity(VQXML_WSSecSecurity* security) {
    delete security;
}
