#include "core/VQXMLException.hpp"

#include "core/adapter/Upstream.hpp"

namespace {

// XSECException reads its default text table past its end for some types, so a
// message is always passed; the type itself is only what the engine can hold.
XSECException::XSECExceptionType engineType(int code) {
    return code >= 0 && code <= XSECException::StatusError
               ? static_cast<XSECException::XSECExceptionType>(code)
               : XSECException::UnknownError;
}

}  // namespace

VQXML_XSECException::VQXML_XSECException(int code)
    : XSECException(engineType(code), vqxml::standardErrorText(code)), m_code(code) {}

VQXML_XSECException::VQXML_XSECException(int code, const char* message)
    : XSECException(engineType(code), message), m_code(code) {}

VQXML_XSECException::VQXML_XSECException(int code, const XMLCh* message)
    : XSECException(engineType(code), message), m_code(code) {}
