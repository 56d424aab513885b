// Writing a certificate into an X509Data when memory may run out.
#ifndef VQXML_ENGINE_CERTIFICATEAPPENDING_HPP
#define VQXML_ENGINE_CERTIFICATEAPPENDING_HPP

#include <functional>
#include <vector>

class DSIGKeyInfoX509;

namespace vqxml {

// Appends an X509Certificate with these DER bytes to x509. The engine lists the
// certificate's holder before it makes the object inside it, so when that
// allocation fails the list keeps an indeterminate pointer that x509's destructor
// would delete. giveUpOwner is then called, so that the caller never destroys the
// object that owns x509 but parks it (ParkedObjects.hpp); every failure is rethrown.
void appendX509Certificate(DSIGKeyInfoX509& x509, const std::vector<unsigned char>& der, const std::function<void()>& giveUpOwner);

}  // namespace vqxml

#endif
