#include "pki/CertificateInput.hpp"

#include <cstring>
#include <memory>
#include <string>

#include <openssl/asn1.h>
#include <openssl/bio.h>
#include <openssl/crypto.h>
#include <openssl/pem.h>

#include "core/VQXMLException.hpp"
#include "vqxml/vqxml.h"

namespace vqxml {

const InputKind kCertificateInput{"The certificate", "CERTIFICATE", kMaxCertificateBytes};
const InputKind kChainInput{"The intermediates", "CERTIFICATE", kMaxChainBytes};
const InputKind kCrlInput{"The CRLs", "X509 CRL", kMaxCrlBytes};

namespace {

const char kPemBegin[] = "-----BEGIN ";

[[noreturn]] void refuse(const InputKind& kind, const std::string& why) {
    throw VQXML_XSECException(VQXML_ERR_CERT_INPUT, (std::string(kind.what) + ": " + why).c_str());
}

const unsigned char* findPem(const unsigned char* from, const unsigned char* end) {
    const std::size_t n = sizeof kPemBegin - 1;
    for (const unsigned char* p = from; end - p >= static_cast<std::ptrdiff_t>(n); ++p)
        if (std::memcmp(p, kPemBegin, n) == 0)
            return p;
    return nullptr;
}

// One DER item at *at (the start, or right after another item), appended to
// out; *at moves past it.
void takeDer(const unsigned char*& at, const unsigned char* end, const InputKind& kind, Der& out) {
    const unsigned char* content = at;
    long length = 0;
    int tag = 0, cls = 0;
    const int flags = ASN1_get_object(&content, &length, &tag, &cls, end - at);
    if ((flags & 0x80) != 0 || flags == 0x21 || length > end - content)
        refuse(kind, "DER that does not say its own length");
    const unsigned char* next = content + length;
    out.insert(out.end(), at, next);
    at = next;
}

// One PEM block at *at, its DER appended to out; *at moves past it.
void takePem(const unsigned char*& at, const unsigned char* end, const InputKind& kind, Der& out) {
    std::unique_ptr<BIO, decltype(&BIO_free)> bio(BIO_new_mem_buf(at, static_cast<int>(end - at)), BIO_free);
    if (!bio)
        throw std::bad_alloc();
    char* name = nullptr;
    char* header = nullptr;
    unsigned char* data = nullptr;
    long length = 0;
    const bool read = PEM_read_bio(bio.get(), &name, &header, &data, &length) == 1;
    const std::string label = read ? name : "";
    const bool plain = read && header[0] == '\0';
    if (read)
        out.insert(out.end(), data, data + length);
    OPENSSL_free(name);
    OPENSSL_free(header);
    OPENSSL_free(data);
    if (!read)
        refuse(kind, "a PEM block that does not decode");
    if (label != kind.pemLabel)
        refuse(kind, "a PEM block of type \"" + label + "\" where \"" + kind.pemLabel + "\" is expected");
    if (!plain)
        refuse(kind, "an encrypted PEM block");
    at = end - BIO_pending(bio.get());
}

}  // namespace

Der derItems(const unsigned char* bytes, int len, const InputKind& kind) {
    if (len < 0)
        refuse(kind, "a negative length");
    if (static_cast<std::size_t>(len) > kind.limit)
        refuse(kind, "more than " + std::to_string(kind.limit / 1024) + " KiB");
    if (bytes == nullptr || len == 0)
        return {};
    const unsigned char* at = bytes;
    const unsigned char* end = bytes + len;
    if (findPem(at, end) == nullptr)
        return Der(at, end);
    Der out;
    while (at != end) {
        if (*at == 0x30) {
            takeDer(at, end, kind, out);
            continue;
        }
        at = findPem(at, end);
        if (at == nullptr)
            break;
        takePem(at, end, kind, out);
    }
    return out;
}

}  // namespace vqxml
