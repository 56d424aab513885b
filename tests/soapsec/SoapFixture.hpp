// Shared pieces of the SOAP message security tests.
#ifndef VQXML_TESTS_SOAPSEC_SOAPFIXTURE_HPP
#define VQXML_TESTS_SOAPSEC_SOAPFIXTURE_HPP

#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "ScopedHandle.hpp"
#include "TestFiles.hpp"
#include "vqxml/vqxml.h"

namespace soaptest {

inline const std::string kBodyContent =
    "<m:order xmlns:m=\"urn:test\"><m:item>tea</m:item><m:count>3</m:count></m:order>";

inline const std::string kEnvelope =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
    "<soap:Envelope xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\"><soap:Header/>"
    "<soap:Body>" + kBodyContent + "</soap:Body></soap:Envelope>";

inline const std::string kEnvelope12 =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
    "<env:Envelope xmlns:env=\"http://www.w3.org/2003/05/soap-envelope\"><env:Header/>"
    "<env:Body>" + kBodyContent + "</env:Body></env:Envelope>";

inline const char* const kWss4jMissing =
    "WSS4J test programs not built: needs a JDK and Debian's libwss4j-java, libxml-security-java and "
    "libbcprov-java (scripts/setup.sh installs them)";

// The issuer and serial number the last key information reading reported
// ("" for one not reported).
inline std::pair<std::string, std::string> issuerAndSerial(void* h) {
    char* issuer = nullptr;
    char* serial = nullptr;
    EXPECT_EQ(VQTK_SOAPSEC_GetIssuerSerialNum(h, &issuer, &serial), 0);
    return {issuer != nullptr ? issuer : "", serial != nullptr ? serial : ""};
}

using apitest::bytes;
using apitest::resultDocument;
using apitest::size;

}  // namespace soaptest

#endif
