// OpenSSL's algorithm providers, loaded once for the process by whichever of the
// library's halves starts first (the XML engines or the toolkit).
#ifndef VQXML_ENGINE_KOREAN_OPENSSLPROVIDERS_HPP
#define VQXML_ENGINE_KOREAN_OPENSSLPROVIDERS_HPP

namespace vqxml {

// Loads OpenSSL's "legacy" provider (SEED lives there) beside "default" into the
// default library context; done once per process and never undone, since the
// host may hold objects made with them.
void loadOpenSSLProviders();

}  // namespace vqxml

#endif
