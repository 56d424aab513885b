#include "engine/NameComparison.hpp"

#include <cctype>
#include <cstdlib>
#include <memory>
#include <strings.h>
#include <vector>

#include <openssl/asn1.h>
#include <openssl/err.h>
#include <openssl/objects.h>
#include <openssl/x509.h>

#include "core/Transcode.hpp"
#include "engine/korean/OpenSSLPtr.hpp"

namespace vqxml {
namespace {

using NamePtr = korean::OpenSSLPtr<X509_NAME, X509_NAME_free>;
using ObjectPtr = korean::OpenSSLPtr<ASN1_OBJECT, ASN1_OBJECT_free>;
using TypePtr = korean::OpenSSLPtr<ASN1_TYPE, ASN1_TYPE_free>;

struct Attribute {
    std::string type;
    std::string value;  // unescaped bytes, or "#" and hex
    bool hex = false;
};
using Rdn = std::vector<Attribute>;

int hexDigit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    c = char(std::tolower(static_cast<unsigned char>(c)));
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

std::string utf8Of(const XMLCh* text) {
    std::unique_ptr<char, void (*)(void*)> bytes(transcodeOut(text, "UTF-8"), std::free);
    return bytes ? std::string(bytes.get()) : std::string();
}

std::string trimmed(const std::string& s) {
    std::size_t from = s.find_first_not_of(' ');
    std::size_t to = s.find_last_not_of(' ');
    return from == std::string::npos ? std::string() : s.substr(from, to - from + 1);
}

// Splits text into RDNs of attributes; false on a malformed text.
bool split(const std::string& text, std::vector<Rdn>& rdns) {
    rdns.assign(1, Rdn(1));
    bool inValue = false;
    bool valueStarted = false;
    std::size_t trailingSpaces = 0;  // unescaped spaces at the end of the value so far
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        Attribute& current = rdns.back().back();
        if (!inValue) {
            if (c == '=') {
                current.type = trimmed(current.type);
                if (current.type.empty())
                    return false;
                inValue = true;
            } else if (c == ',' || c == '+' || c == ';') {
                return false;
            } else {
                current.type += c;
            }
            continue;
        }
        if (c == ',' || c == ';' || c == '+') {
            current.value.resize(current.value.size() - trailingSpaces);
            if (c == '+')
                rdns.back().emplace_back();
            else
                rdns.emplace_back(1);
            inValue = valueStarted = false;
            trailingSpaces = 0;
            continue;
        }
        if (c == ' ' && !valueStarted)
            continue;
        if (c == '#' && !valueStarted)
            current.hex = true;
        valueStarted = true;
        if (c == '\\') {
            if (i + 1 >= text.size())
                return false;
            const int hi = hexDigit(text[i + 1]);
            const int lo = i + 2 < text.size() ? hexDigit(text[i + 2]) : -1;
            if (hi >= 0 && lo >= 0) {
                current.value += char(hi * 16 + lo);
                i += 2;
            } else {
                current.value += text[++i];
            }
            trailingSpaces = 0;
            continue;
        }
        current.value += c;
        trailingSpaces = c == ' ' ? trailingSpaces + 1 : 0;
    }
    if (!inValue)
        return false;
    Attribute& last = rdns.back().back();
    last.value.resize(last.value.size() - trailingSpaces);
    return true;
}

// The attribute type by short or long name in any case, or by dotted OID.
ASN1_OBJECT* attributeType(std::string type) {
    if (type.size() > 4 && strncasecmp(type.c_str(), "oid.", 4) == 0)
        type.erase(0, 4);
    if (!type.empty() && std::isdigit(static_cast<unsigned char>(type[0])))
        return OBJ_txt2obj(type.c_str(), 1);
    const int nids = OBJ_new_nid(0);
    for (int nid = 1; nid < nids; ++nid) {
        const char* sn = OBJ_nid2sn(nid);
        const char* ln = OBJ_nid2ln(nid);
        if ((sn != nullptr && strcasecmp(sn, type.c_str()) == 0) || (ln != nullptr && strcasecmp(ln, type.c_str()) == 0))
            return OBJ_nid2obj(nid);
    }
    return nullptr;
}

bool addHexValue(X509_NAME* name, const ASN1_OBJECT* type, const std::string& hex, int set) {
    std::vector<unsigned char> der;
    for (std::size_t i = 1; i + 1 < hex.size(); i += 2) {
        const int hi = hexDigit(hex[i]);
        const int lo = hexDigit(hex[i + 1]);
        if (hi < 0 || lo < 0)
            return false;
        der.push_back(static_cast<unsigned char>(hi * 16 + lo));
    }
    if (hex.size() % 2 == 0)
        return false;
    const unsigned char* p = der.data();
    TypePtr value(d2i_ASN1_TYPE(nullptr, &p, static_cast<long>(der.size())));
    if (!value || p != der.data() + der.size() || value->type == V_ASN1_BOOLEAN || value->type == V_ASN1_NULL ||
        value->type == V_ASN1_OBJECT)
        return false;
    const ASN1_STRING* s = value->value.asn1_string;
    return X509_NAME_add_entry_by_OBJ(name, type, value->type, ASN1_STRING_get0_data(s), ASN1_STRING_length(s), -1,
                                      set) == 1;
}

// The X.509 name of text, or null if text is not a name.
NamePtr parsed(const std::string& text) {
    std::vector<Rdn> rdns;
    if (!split(text, rdns))
        return nullptr;
    NamePtr name(X509_NAME_new());
    if (!name)
        return nullptr;
    // The text names the most specific RDN first: the reverse of the DER order.
    for (auto rdn = rdns.rbegin(); rdn != rdns.rend(); ++rdn) {
        int set = 0;
        for (const Attribute& attribute : *rdn) {
            ObjectPtr type(attributeType(attribute.type));
            if (!type)
                return nullptr;
            const bool added =
                attribute.hex
                    ? addHexValue(name.get(), type.get(), attribute.value, set)
                    : X509_NAME_add_entry_by_OBJ(name.get(), type.get(), MBSTRING_UTF8,
                                                 reinterpret_cast<const unsigned char*>(attribute.value.data()),
                                                 static_cast<int>(attribute.value.size()), -1, set) == 1;
            if (!added)
                return nullptr;
            set = -1;
        }
    }
    return name;
}

}  // namespace

bool sameDistinguishedName(const std::string& a, const std::string& b) {
    if (a == b)
        return true;
    // A text that is no name is an answer here, not an error for later calls.
    ERR_set_mark();
    NamePtr first = parsed(a);
    NamePtr second = parsed(b);
    const bool same = first && second && X509_NAME_cmp(first.get(), second.get()) == 0;
    ERR_pop_to_mark();
    return same;
}

bool sameDistinguishedName(const XMLCh* a, const XMLCh* b) {
    return a != nullptr && b != nullptr && sameDistinguishedName(utf8Of(a), utf8Of(b));
}

}  // namespace vqxml
