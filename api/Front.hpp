// What every C front does before it reaches the context.
#ifndef VQXML_API_FRONT_HPP
#define VQXML_API_FRONT_HPP

#include "vqxml/VQXML_XMLSecurity.h"

namespace vqxml {

inline VQXML_XMLSecurity* context(void* handle) {
    return static_cast<VQXML_XMLSecurity*>(handle);
}

// 10100 for a null handle; otherwise the method's own status.
template <class Call>
int forward(void* handle, Call&& call) {
    if (handle == nullptr)
        return VQXML_ERR_NULL_HANDLE;
    return call(*context(handle));
}

}  // namespace vqxml

#endif
