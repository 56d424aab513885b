#include "engine/Has160DigestHandler.hpp"

#include <xsec/transformers/TXFMChain.hpp>

#include "engine/TXFMKoreanDigest.hpp"

bool Has160DigestHandler::appendHashTxfm(TXFMChain* inputBytes, const XMLCh*) const {
    inputBytes->appendTxfm(new TXFMKoreanDigest(inputBytes->getLastTxfm()->getDocument(),
                                                vqxml::korean::HashAlgorithm::Has160));
    return true;
}

XSECAlgorithmHandler* Has160DigestHandler::clone() const {
    return new Has160DigestHandler();
}
