#include "engine/CertificateNames.hpp"

#include <cctype>
#include <memory>

#include <openssl/bn.h>
#include <openssl/crypto.h>

namespace vqxml {

namespace {

std::string attributeType(const ASN1_OBJECT* object) {
    int nid = OBJ_obj2nid(object);
    std::string type;
    if (nid != NID_undef) {
        type = OBJ_nid2sn(nid);
    } else {
        char dotted[128];
        OBJ_obj2txt(dotted, sizeof dotted, object, 1);
        type = dotted;
    }
    for (char& c : type)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return type;
}

std::string escapedValue(const ASN1_STRING* value) {
    unsigned char* utf8 = nullptr;
    int len = ASN1_STRING_to_UTF8(&utf8, value);
    if (len < 0)
        return std::string();
    std::string out;
    for (int i = 0; i < len; ++i) {
        char c = static_cast<char>(utf8[i]);
        bool edge = (i == 0 && (c == ' ' || c == '#')) || (i == len - 1 && c == ' ');
        if (edge || c == ',' || c == '+' || c == '"' || c == '\\' || c == '<' || c == '>' || c == ';' || c == '=')
            out.push_back('\\');
        out.push_back(c);
    }
    OPENSSL_free(utf8);
    return out;
}

std::string nameText(const X509_NAME* name) {
    std::string out;
    if (name == nullptr)
        return out;
    int previousSet = -1;
    for (int i = X509_NAME_entry_count(name) - 1; i >= 0; --i) {
        const X509_NAME_ENTRY* entry = X509_NAME_get_entry(name, i);
        int set = X509_NAME_ENTRY_set(entry);
        if (!out.empty())
            out += set == previousSet ? "+" : ",";
        previousSet = set;
        out += attributeType(X509_NAME_ENTRY_get_object(entry));
        out += '=';
        out += escapedValue(X509_NAME_ENTRY_get_data(entry));
    }
    return out;
}

}  // namespace

std::string certificateSubject(const X509* cert) {
    return nameText(X509_get_subject_name(cert));
}

std::string certificateIssuer(const X509* cert) {
    return nameText(X509_get_issuer_name(cert));
}

std::string certificateSerialDecimal(const X509* cert) {
    std::unique_ptr<BIGNUM, decltype(&BN_free)> serial(ASN1_INTEGER_to_BN(X509_get0_serialNumber(cert), nullptr),
                                                      &BN_free);
    if (!serial)
        return std::string();
    char* text = BN_bn2dec(serial.get());
    std::string out = text != nullptr ? text : "";
    OPENSSL_free(text);
    return out;
}

}  // namespace vqxml
