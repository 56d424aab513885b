// Engine objects that a failed call left unsafe to destroy (see
// CertificateAppending.hpp and IdResolution.hpp) are parked here for the life of
// the process: never destroyed, yet still reachable, so that leak checkers report
// only real leaks.
#ifndef VQXML_ENGINE_PARKEDOBJECTS_HPP
#define VQXML_ENGINE_PARKEDOBJECTS_HPP

namespace vqxml {

// Keeps object; if even that fails for want of memory, it is simply left allocated.
void park(const void* object) noexcept;

}  // namespace vqxml

#endif
