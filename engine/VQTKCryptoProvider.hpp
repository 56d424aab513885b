// The library's crypto provider: xml-security-c's OpenSSL provider, extended with
// the algorithms the engine does not know by itself.
#ifndef VQXML_ENGINE_VQTKCRYPTOPROVIDER_HPP
#define VQXML_ENGINE_VQTKCRYPTOPROVIDER_HPP

#include <xsec/enc/OpenSSL/OpenSSLCryptoProvider.hpp>

class VQTKCryptoProvider : public OpenSSLCryptoProvider {
public:
    const XMLCh* getProviderName() const override;
};

namespace vqxml {

// Loads OpenSSL's "legacy" provider (SEED lives there) beside "default" into the
// default library context; done once per process and never undone, since the
// host may hold objects made with them.
void loadOpenSSLProviders();

}  // namespace vqxml

#endif
