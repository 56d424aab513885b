# Xerces-C, Xalan-C and OpenSSL come from the system; xml-security-c comes from the
# private prefix that scripts/setup.sh builds (Debian's own build lacks Xalan).
find_package(PkgConfig REQUIRED)
pkg_check_modules(XERCES REQUIRED IMPORTED_TARGET xerces-c)
find_package(OpenSSL 3 REQUIRED)
find_package(Threads REQUIRED)

find_path(XALAN_INCLUDE_DIR xalanc/XalanTransformer/XalanTransformer.hpp REQUIRED)
find_library(XALAN_LIBRARY xalan-c REQUIRED)
find_library(XALAN_MSG_LIBRARY xalanMsg REQUIRED)

if(DEFINED ENV{VQXML_XSEC_PREFIX})
  set(_xsec_default "$ENV{VQXML_XSEC_PREFIX}")
else()
  set(_xsec_default "$ENV{HOME}/.cache/vqxml/xmlsec-c")
endif()
set(VQXML_XSEC_PREFIX "${_xsec_default}" CACHE PATH "Prefix of the Xalan-enabled xml-security-c")
find_library(XSEC_LIBRARY xml-security-c PATHS "${VQXML_XSEC_PREFIX}/lib" NO_DEFAULT_PATH)
if(NOT XSEC_LIBRARY OR NOT EXISTS "${VQXML_XSEC_PREFIX}/include/xsec/framework/XSECConfig.hpp")
  message(FATAL_ERROR "xml-security-c not found in ${VQXML_XSEC_PREFIX}: run scripts/setup.sh")
endif()
file(STRINGS "${VQXML_XSEC_PREFIX}/include/xsec/framework/XSECConfig.hpp" _xsec_xalan
     REGEX "^#define XSEC_HAVE_XALAN")
if(NOT _xsec_xalan)
  message(FATAL_ERROR "xml-security-c in ${VQXML_XSEC_PREFIX} was built without Xalan: run scripts/setup.sh")
endif()
set(VQXML_XSEC_LIBDIR "${VQXML_XSEC_PREFIX}/lib")

add_library(vqxml_deps INTERFACE)
add_library(vqxml::deps ALIAS vqxml_deps)
target_include_directories(vqxml_deps SYSTEM INTERFACE
  "$<BUILD_INTERFACE:${VQXML_XSEC_PREFIX}/include>" "$<BUILD_INTERFACE:${XALAN_INCLUDE_DIR}>")
target_link_libraries(vqxml_deps INTERFACE
  "$<BUILD_INTERFACE:${XSEC_LIBRARY}>" "$<BUILD_INTERFACE:${XALAN_LIBRARY}>"
  "$<BUILD_INTERFACE:${XALAN_MSG_LIBRARY}>" "$<BUILD_INTERFACE:PkgConfig::XERCES>"
  "$<BUILD_INTERFACE:OpenSSL::Crypto>" "$<BUILD_INTERFACE:Threads::Threads>")
