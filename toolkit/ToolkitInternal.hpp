// What the toolkit's operations share: the handle's layout, failures, owned
// OpenSSL objects and wiped byte buffers.
#ifndef VQXML_TOOLKIT_TOOLKITINTERNAL_HPP
#define VQXML_TOOLKIT_TOOLKITINTERNAL_HPP

#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/x509.h>

#include "engine/korean/SecureBytes.hpp"
#include "toolkit/vqtk_toolkit.h"

struct VQTK_Toolkit {
    STACK_OF(X509)* anchors = nullptr;
    STACK_OF(X509_CRL)* crls = nullptr;
    int pathMode = 1;
    int timeMode = 2;
    int revocation = 0;
    int refusal = VQTK_CHECK_NONE;  // the check behind the last failure
    char error[VQTK_ERROR_TEXT_SIZE] = {};
};

namespace vqtk {

// A failure deep inside an operation: the status, the text for the handle and,
// for a refused certificate, the check that refused it.
struct Failure {
    int status;
    std::string text;
    int check = VQTK_CHECK_NONE;
};

[[noreturn]] inline void raise(int status, std::string text, int check = VQTK_CHECK_NONE) {
    throw Failure{status, std::move(text), check};
}

// Records text as the handle's last failure (if there is a handle) and returns status.
int fail(VQTK_Toolkit* tk, int status, const std::string& text);

// The reason OpenSSL queued last, or "" if none; the queue is emptied either way.
std::string opensslReason();

// Runs body, which returns a status or raises; turns whatever it raises into a
// status and a text on the handle. OpenSSL's error queue is left empty, so no
// stale reason leaks into later callers.
template <class Body>
int guarded(VQTK_Toolkit* tk, Body&& body) noexcept {
    int status;
    try {
        status = body();
    } catch (const Failure& f) {
        status = fail(tk, f.status, f.text);
        if (tk != nullptr)
            tk->refusal = f.check;
    } catch (const std::bad_alloc&) {
        status = fail(tk, VQTK_ERR_MEMORY, "Memory is exhausted");
    } catch (...) {
        status = fail(tk, VQTK_ERR_CRYPTO, "Unexpected internal failure");
    }
    ERR_clear_error();
    return status;
}

// Wiped before it is freed, also when a vector grows.
using SecretBytes = std::vector<unsigned char, vqxml::korean::CleansingAllocator<unsigned char>>;

// Read-only view of a string's bytes; a NULL string, NULL data or a negative
// length read as empty.
struct Bytes {
    const unsigned char* data;
    std::size_t size;
};
Bytes bytesOf(const VQTK_BINSTR* str);

// Replaces the bytes of str by a copy of data[0..n), wiping the old ones.
// Raises VQTK_ERR_MEMORY or VQTK_ERR_LIMIT (over 2^31 - 1 bytes).
void store(VQTK_BINSTR* str, const unsigned char* data, std::size_t n);

// Raises VQTK_ERR_ARGUMENT naming what when pointer is null.
void require(const void* pointer, const char* what);

// Owned OpenSSL objects.
template <class T, void (*Free)(T*)>
struct FreeWith {
    void operator()(T* p) const { Free(p); }
};
template <class T, void (*Free)(T*)>
using Owned = std::unique_ptr<T, FreeWith<T, Free>>;

using X509Ptr = Owned<X509, X509_free>;
using ASN1ObjectPtr = Owned<ASN1_OBJECT, ASN1_OBJECT_free>;

struct X509StackFree {
    void operator()(STACK_OF(X509) * s) const { sk_X509_pop_free(s, X509_free); }
};
using X509StackPtr = std::unique_ptr<STACK_OF(X509), X509StackFree>;

struct X509CrlStackFree {
    void operator()(STACK_OF(X509_CRL) * s) const { sk_X509_CRL_pop_free(s, X509_CRL_free); }
};
using X509CrlStackPtr = std::unique_ptr<STACK_OF(X509_CRL), X509CrlStackFree>;

// An object identifier from its dotted text; raises VQTK_ERR_CRYPTO if OpenSSL cannot make it.
ASN1ObjectPtr objectId(const char* dotted);

// Raises VQTK_ERR_FORMAT, with what ("The certificate", "The encrypted key"...)
// as subject, when data cannot be DER: empty, PEM armour, or no outer SEQUENCE.
void requireDerLooking(Bytes data, const char* what);

}  // namespace vqtk

#endif
