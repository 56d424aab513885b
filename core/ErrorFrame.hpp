// The frame of every family method: the body raises, the frame records.
#ifndef VQXML_CORE_ERRORFRAME_HPP
#define VQXML_CORE_ERRORFRAME_HPP

#include <new>

#include <xercesc/util/OutOfMemoryException.hpp>
#include <xsec/enc/XSECCryptoException.hpp>

#include "core/VQXMLException.hpp"
#include "vqxml/VQXML_XMLSecurity.h"

namespace vqxml {

// Runs body and turns whatever it raises into a status code and a text in ctx
// (prefix is the method's own name followed by " > "). Returns 0 on success.
// A crypto-provider failure anywhere becomes 33 with the provider's text, since
// that text says more than the unknown-error one would.
template <class Body>
int guarded(VQXML_XMLSecurity& ctx, const char* prefix, Body&& body) noexcept {
    try {
        body();
        return 0;
    } catch (const VQXML_XSECException& e) {
        return ctx.ProcessExceptionMessage(e.getCode(), prefix, e.getMsg());
    } catch (const XSECException& e) {
        return ctx.ProcessExceptionMessage(e.getType(), prefix, e.getMsg());
    } catch (const XSECCryptoException& e) {
        return ctx.ProcessExceptionMessage(VQXML_ERR_CRYPTO_PROVIDER, prefix, e.getMsg());
    } catch (const std::bad_alloc&) {
        return ctx.ProcessExceptionMessage(VQXML_ERR_MEMORY, prefix, standardErrorText(VQXML_ERR_MEMORY));
    } catch (const XERCES_CPP_NAMESPACE::OutOfMemoryException&) {
        // The parser's memory manager turns every failed allocation into this.
        return ctx.ProcessExceptionMessage(VQXML_ERR_MEMORY, prefix, standardErrorText(VQXML_ERR_MEMORY));
    } catch (...) {
        return ctx.ProcessExceptionMessage(VQXML_ERR_UNKNOWN, prefix, kUnknownErrorText);
    }
}

}  // namespace vqxml

#endif
