#include "toolkit/Certificates.hpp"

#include <climits>
#include <cstring>

#include <openssl/bio.h>
#include <openssl/objects.h>

namespace {

// KCDSA's own arc and the ISO 14888-3 one.
const char* const kKcdsaKeyOids[] = {"1.2.410.200004.1.1", "1.0.14888.3.0.2"};

bool startsWith(vqtk::Bytes data, const char* prefix) {
    const std::size_t n = std::strlen(prefix);
    return data.size >= n && std::memcmp(data.data, prefix, n) == 0;
}

// One certificate from *cursor, which moves past it; null if none parses.
vqtk::X509Ptr parseOne(const unsigned char** cursor, std::size_t available) {
    if (available > static_cast<std::size_t>(LONG_MAX))
        return nullptr;
    return vqtk::X509Ptr(d2i_X509(nullptr, cursor, static_cast<long>(available)));
}

}  // namespace

namespace vqtk {

void requireDerLooking(Bytes data, const char* what) {
    if (data.size == 0)
        raise(VQTK_ERR_FORMAT, std::string(what) + " is empty");
    if (startsWith(data, "-----BEGIN"))
        raise(VQTK_ERR_FORMAT, std::string(what) + " is PEM text; DER bytes are expected");
    if (data.data[0] != 0x30)
        raise(VQTK_ERR_FORMAT, std::string(what) + " is not DER (no outer SEQUENCE; base64 text?)");
}

X509Ptr parseCertificate(Bytes der, const std::string& what) {
    requireDerLooking(der, what.c_str());
    const unsigned char* cursor = der.data;
    X509Ptr cert = parseOne(&cursor, der.size);
    if (!cert)
        raise(VQTK_ERR_FORMAT, what + " is not a well-formed DER X.509 certificate (" +
                                   opensslReason() + ")");
    if (cursor != der.data + der.size)
        raise(VQTK_ERR_FORMAT, what + " has " + std::to_string(der.data + der.size - cursor) +
                                   " bytes after the certificate");
    return cert;
}

X509StackPtr parseCertificateList(Bytes der, const std::string& what) {
    X509StackPtr list(sk_X509_new_null());
    if (!list)
        throw std::bad_alloc();
    const unsigned char* cursor = der.data;
    const unsigned char* end = der.data + der.size;
    for (int index = 1; cursor != end; ++index) {
        const std::string item = what + " (certificate " + std::to_string(index) + ")";
        requireDerLooking({cursor, static_cast<std::size_t>(end - cursor)}, item.c_str());
        X509Ptr cert = parseOne(&cursor, static_cast<std::size_t>(end - cursor));
        if (!cert)
            raise(VQTK_ERR_FORMAT, item + " is not a well-formed DER X.509 certificate (" +
                                       opensslReason() + ")");
        if (sk_X509_push(list.get(), cert.get()) <= 0)
            throw std::bad_alloc();
        cert.release();
    }
    return list;
}

std::string subjectOf(const X509* cert) {
    Owned<BIO, BIO_free_all> bio(BIO_new(BIO_s_mem()));
    if (!bio || X509_NAME_print_ex(bio.get(), X509_get_subject_name(cert), 0, XN_FLAG_RFC2253) < 0)
        return "?";
    char* text = nullptr;
    const long n = BIO_get_mem_data(bio.get(), &text);
    return std::string(text, static_cast<std::size_t>(n > 0 ? n : 0));
}

bool hasKcdsaKey(const X509* cert) {
    ASN1_OBJECT* algorithm = nullptr;
    const X509_PUBKEY* key = X509_get_X509_PUBKEY(cert);
    if (key == nullptr || !X509_PUBKEY_get0_param(&algorithm, nullptr, nullptr, nullptr, key))
        return false;
    for (const char* oid : kKcdsaKeyOids)
        if (OBJ_cmp(algorithm, objectId(oid).get()) == 0)
            return true;
    return false;
}

}  // namespace vqtk
