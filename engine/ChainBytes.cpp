#include "engine/ChainBytes.hpp"

#include <xsec/transformers/TXFMBase.hpp>
#include <xsec/transformers/TXFMChain.hpp>

namespace vqxml {

korean::SecureBytes readAllBytes(TXFMChain* chain) {
    korean::SecureBytes out;
    XMLByte buffer[4096];
    unsigned int n;
    while ((n = chain->getLastTxfm()->readBytes(buffer, sizeof buffer)) != 0)
        out.insert(out.end(), buffer, buffer + n);
    OPENSSL_cleanse(buffer, sizeof buffer);
    return out;
}

}  // namespace vqxml
