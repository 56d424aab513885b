#include "toolkit/Certificates.hpp"

#include <climits>
#include <cstring>

#include <openssl/bio.h>
#include <openssl/objects.h>

#include "toolkit/EucKrText.hpp"

namespace {

// KCDSA's own arc and the ISO 14888-3 one.
const char* const kKcdsaKeyOids[] = {"1.2.410.200004.1.1", "1.0.14888.3.0.2"};

bool startsWith(vqtk::Bytes data, const char* prefix) {
    const std::size_t n = std::strlen(prefix);
    return data.size >= n && std::memcmp(data.data, prefix, n) == 0;
}

// Zero or more DER items one after the other onto a new stack (Stack owns a
// STACK_OF of the items' type); decode reads one item at *cursor, moving the
// cursor past it, into an owning pointer, empty when none parses there.
template <class Stack, class Decode>
Stack parseDerList(vqtk::Bytes der, const std::string& what, const char* kind, Decode&& decode) {
    Stack list(reinterpret_cast<typename Stack::pointer>(OPENSSL_sk_new_null()));
    if (!list)
        throw std::bad_alloc();
    auto* stack = reinterpret_cast<OPENSSL_STACK*>(list.get());
    const unsigned char* cursor = der.data;
    const unsigned char* end = der.data + der.size;
    for (int index = 1; cursor != end; ++index) {
        const std::string item = what + " (" + kind + " " + std::to_string(index) + ")";
        const auto available = static_cast<std::size_t>(end - cursor);
        vqtk::requireDerLooking({cursor, available}, item.c_str());
        auto decoded = available <= static_cast<std::size_t>(LONG_MAX)
                           ? decode(&cursor, static_cast<long>(available))
                           : decltype(decode(&cursor, 0L))();
        if (!decoded)
            vqtk::raise(VQTK_ERR_FORMAT, item + " is not a well-formed DER X.509 " + kind + " (" +
                                             vqtk::opensslReason() + ")");
        if (OPENSSL_sk_push(stack, decoded.get()) <= 0)
            throw std::bad_alloc();
        decoded.release();
    }
    return list;
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
    X509Ptr cert(der.size <= static_cast<std::size_t>(LONG_MAX)
                     ? d2i_X509(nullptr, &cursor, static_cast<long>(der.size))
                     : nullptr);
    if (!cert)
        raise(VQTK_ERR_FORMAT, what + " is not a well-formed DER X.509 certificate (" +
                                   opensslReason() + ")");
    if (cursor != der.data + der.size)
        raise(VQTK_ERR_FORMAT, what + " has " + std::to_string(der.data + der.size - cursor) +
                                   " bytes after the certificate");
    return cert;
}

X509StackPtr parseCertificateList(Bytes der, const std::string& what) {
    return parseDerList<X509StackPtr>(der, what, "certificate", [](const unsigned char** cursor, long n) {
        return X509Ptr(d2i_X509(nullptr, cursor, n));
    });
}

X509CrlStackPtr parseCrlList(Bytes der, const std::string& what) {
    return parseDerList<X509CrlStackPtr>(der, what, "CRL", [](const unsigned char** cursor, long n) {
        return Owned<X509_CRL, X509_CRL_free>(d2i_X509_CRL(nullptr, cursor, n));
    });
}

std::string subjectOf(const X509* cert) {
    // RFC 2253 escaping, but the characters themselves in UTF-8 rather than escaped.
    const unsigned long flags = XN_FLAG_RFC2253 & ~ASN1_STRFLGS_ESC_MSB;
    Owned<BIO, BIO_free_all> bio(BIO_new(BIO_s_mem()));
    if (!bio || X509_NAME_print_ex(bio.get(), X509_get_subject_name(cert), 0, flags) < 0)
        return "?";
    char* text = nullptr;
    const long n = BIO_get_mem_data(bio.get(), &text);
    return eucKrFromUtf8(std::string(text, static_cast<std::size_t>(n > 0 ? n : 0)));
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
