// The HAS-160 digest for references (DigestMethod uri::kHas160).
#ifndef VQXML_ENGINE_HAS160DIGESTHANDLER_HPP
#define VQXML_ENGINE_HAS160DIGESTHANDLER_HPP

#include "engine/UnsupportedAlgorithmHandler.hpp"

class Has160DigestHandler : public UnsupportedAlgorithmHandler {
public:
    bool appendHashTxfm(TXFMChain* inputBytes, const XMLCh* uri) const override;
    XSECAlgorithmHandler* clone() const override;

protected:
    const char* handlerName() const override { return "HAS-160 digest handler"; }
};

#endif
