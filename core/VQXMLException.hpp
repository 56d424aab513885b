// The exception every method of the library raises for a failure of its own.
//
// It is an XSECException, so it travels through the engine like the engine's own,
// but it also keeps the library's numeric code: XSECException clamps any type
// above 58, which would lose codes such as 10208.
#ifndef VQXML_CORE_VQXMLEXCEPTION_HPP
#define VQXML_CORE_VQXMLEXCEPTION_HPP

#include <xsec/framework/XSECException.hpp>

class VQXML_XSECException : public XSECException {
public:
    // The code's standard text.
    explicit VQXML_XSECException(int code);
    // An ASCII text of the raiser's.
    VQXML_XSECException(int code, const char* message);
    VQXML_XSECException(int code, const XMLCh* message);

    int getCode() const { return m_code; }

private:
    int m_code;
};

namespace vqxml {

// "알수 없는 오류입니다." (unknown error) in EUC-KR.
extern const char kUnknownErrorText[];
// "VQTKXML API 초기화 실패" (API initialisation failed) in EUC-KR.
extern const char kInitFailedText[];

// The standard text for a code the library raises (ASCII, so valid EUC-KR).
const char* standardErrorText(int code);

}  // namespace vqxml

#endif
