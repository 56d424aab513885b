#include "engine/CertificateNames.hpp"

#include <cctype>
#include <memory>

#include <openssl/bn.h>
#include <openssl/err.h>
#include <openssl/objects.h>
#include <xsec/enc/XSECCryptoException.hpp>

#include "engine/korean/OpenSSLPtr.hpp"

namespace vqxml {
namespace {

std::string attributeName(const ASN1_OBJECT* obj) {
    int nid = OBJ_obj2nid(obj);
    const char* sn = nid == NID_undef ? nullptr : OBJ_nid2sn(nid);
    char dotted[128] = "";
    if (sn == nullptr)
        OBJ_obj2txt(dotted, sizeof dotted, obj, 1);
    std::string name = sn != nullptr ? sn : dotted;
    for (char& c : name)
        c = char(std::tolower(static_cast<unsigned char>(c)));
    return name;
}

bool isStringType(int type) {
    switch (type) {
    case V_ASN1_UTF8STRING:
    case V_ASN1_PRINTABLESTRING:
    case V_ASN1_IA5STRING:
    case V_ASN1_T61STRING:
    case V_ASN1_BMPSTRING:
    case V_ASN1_UNIVERSALSTRING:
    case V_ASN1_VISIBLESTRING:
    case V_ASN1_NUMERICSTRING:
        return true;
    default:
        return false;
    }
}

std::string escapeValue(const std::string& value) {
    std::string out;
    for (std::size_t i = 0; i < value.size(); ++i) {
        char c = value[i];
        bool special = c == ',' || c == '+' || c == '"' || c == '\\' || c == '<' || c == '>' || c == ';';
        bool edge = (i == 0 && (c == '#' || c == ' ')) || (i + 1 == value.size() && c == ' ');
        if (c == '\0') {
            out += "\\00";
            continue;
        }
        if (special || edge)
            out += '\\';
        out += c;
    }
    return out;
}

std::string hexOfDer(const ASN1_STRING* value) {
    ASN1_TYPE t{};
    t.type = ASN1_STRING_type(value);
    t.value.asn1_string = const_cast<ASN1_STRING*>(value);
    unsigned char* der = nullptr;
    int len = i2d_ASN1_TYPE(&t, &der);
    if (len <= 0)
        throw XSECCryptoException(XSECCryptoException::GeneralError, "OpenSSL: cannot encode a name attribute");
    static const char digits[] = "0123456789abcdef";
    std::string out = "#";
    for (int i = 0; i < len; ++i) {
        out += digits[der[i] >> 4];
        out += digits[der[i] & 15];
    }
    OPENSSL_free(der);
    return out;
}

std::string attributeValue(const ASN1_STRING* value) {
    if (!isStringType(ASN1_STRING_type(value)))
        return hexOfDer(value);
    unsigned char* utf8 = nullptr;
    ERR_set_mark();
    int len = ASN1_STRING_to_UTF8(&utf8, value);
    if (len < 0) {
        // Out of memory is a failure, not a name: written in hex it would no
        // longer match the same name read elsewhere.
        if (ERR_GET_REASON(ERR_peek_last_error()) == ERR_R_MALLOC_FAILURE)
            throw XSECCryptoException(XSECCryptoException::GeneralError, "OpenSSL: out of memory reading a name");
        // A string that does not decode (a BMPString of odd length) is shown
        // as its DER.
        ERR_pop_to_mark();
        return hexOfDer(value);
    }
    ERR_clear_last_mark();
    std::string text(reinterpret_cast<char*>(utf8), std::size_t(len));
    OPENSSL_free(utf8);
    return escapeValue(text);
}

}  // namespace

std::string formatName(const X509_NAME* name) {
    std::string out;
    if (name == nullptr)
        return out;
    // Relative names from the last to the first; the attributes of one in their
    // stored order.
    int end = X509_NAME_entry_count(name);
    while (end > 0) {
        int set = X509_NAME_ENTRY_set(X509_NAME_get_entry(name, end - 1));
        int begin = end - 1;
        while (begin > 0 && X509_NAME_ENTRY_set(X509_NAME_get_entry(name, begin - 1)) == set)
            --begin;
        if (!out.empty())
            out += ',';
        for (int i = begin; i < end; ++i) {
            const X509_NAME_ENTRY* entry = X509_NAME_get_entry(name, i);
            if (i > begin)
                out += '+';
            out += attributeName(X509_NAME_ENTRY_get_object(entry));
            out += '=';
            out += attributeValue(X509_NAME_ENTRY_get_data(entry));
        }
        end = begin;
    }
    return out;
}

std::string certificateSubject(const X509* cert) {
    return formatName(cert == nullptr ? nullptr : X509_get_subject_name(cert));
}

std::string certificateIssuer(const X509* cert) {
    return formatName(cert == nullptr ? nullptr : X509_get_issuer_name(cert));
}

std::string certificateSerialDecimal(const X509* cert) {
    if (cert == nullptr)
        return std::string();
    korean::OpenSSLPtr<BIGNUM, BN_free> bn(ASN1_INTEGER_to_BN(X509_get0_serialNumber(cert), nullptr));
    if (!bn)
        throw XSECCryptoException(XSECCryptoException::GeneralError, "OpenSSL: cannot read the certificate serial number");
    char* text = BN_bn2dec(bn.get());
    if (text == nullptr)
        throw XSECCryptoException(XSECCryptoException::GeneralError, "OpenSSL: cannot write the certificate serial number");
    std::string out(text);
    OPENSSL_free(text);
    return out;
}

}  // namespace vqxml
