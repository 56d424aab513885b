// Reading a plain PKCS #8 PrivateKeyInfo.
#ifndef VQXML_TOOLKIT_PRIVATEKEYINFO_HPP
#define VQXML_TOOLKIT_PRIVATEKEYINFO_HPP

#include "toolkit/ToolkitInternal.hpp"

namespace vqtk {

using PrivateKeyInfoPtr = Owned<PKCS8_PRIV_KEY_INFO, PKCS8_PRIV_KEY_INFO_free>;

// The PrivateKeyInfo in der, which must fill it exactly; null if it is none.
// (OpenSSL wipes the key octets when the object is freed.)
PrivateKeyInfoPtr parsePrivateKeyInfo(Bytes der);

}  // namespace vqtk

#endif
