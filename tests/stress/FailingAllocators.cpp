#include "stress/FailingAllocators.hpp"

#include <dlfcn.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include <openssl/crypto.h>

#include "vqxml/vqxml.h"

namespace failing {
namespace {

std::atomic<int> g_armed{-1};  // -1 none, else the Allocator
std::atomic<long> g_count{0};
std::atomic<long> g_failAt{0};
bool g_hooked = false;

// True if this allocation of kind which is the one to fail.
bool shouldFail(Allocator which) {
    if (g_armed.load(std::memory_order_relaxed) != static_cast<int>(which))
        return false;
    return ++g_count == g_failAt.load(std::memory_order_relaxed);
}

void* sslMalloc(size_t size, const char*, int) {
    return shouldFail(Allocator::OpenSSL) ? nullptr : std::malloc(size);
}

void* sslRealloc(void* p, size_t size, const char*, int) {
    return shouldFail(Allocator::OpenSSL) ? nullptr : std::realloc(p, size);
}

void sslFree(void* p, const char*, int) {
    std::free(p);
}

// OpenSSL accepts memory functions only before its first allocation, which
// shared libraries' initialisers may already make: run before all of them.
void hookOpenSSL() {
    g_hooked = CRYPTO_set_mem_functions(sslMalloc, sslRealloc, sslFree) == 1;
}

__attribute__((section(".preinit_array"), used)) void (*const g_preinit)() = hookOpenSSL;

// The load address of the object file holding code, or null.
const void* objectOf(const void* code) {
    Dl_info info;
    return dladdr(code, &info) != 0 ? info.dli_fbase : nullptr;
}

bool calledFromLibrary(const void* caller) {
    static const void* const library = objectOf(reinterpret_cast<const void*>(&VQTK_XMLAPI_init));
    return objectOf(caller) == library;
}

void* cxxAllocate(std::size_t size, const void* caller) {
    if (shouldFail(Allocator::Cxx))
        return nullptr;
    if (g_armed.load(std::memory_order_relaxed) == static_cast<int>(Allocator::CxxFromLibrary) &&
        calledFromLibrary(caller) && shouldFail(Allocator::CxxFromLibrary))
        return nullptr;
    return std::malloc(size == 0 ? 1 : size);
}

}  // namespace

void arm(Allocator which, long n) {
    g_count.store(0);
    g_failAt.store(n);
    g_armed.store(static_cast<int>(which));
}

long disarm() {
    g_armed.store(-1);
    return g_count.load();
}

bool openSSLHooked() {
    return g_hooked;
}

}  // namespace failing

// Leaks that only failure injection reaches and that are the engines' own, not
// ours; LeakSanitizer reads this list in this binary only.
extern "C" const char* __lsan_default_suppressions() {
    // xml-security-c's DSIGKeyInfoX509::load makes a certificate object, then loses
    // it when copying the certificate's text or listing the object runs out of memory.
    return "leak:DSIGKeyInfoX509::load\n";
}

// Every non-aligned form is replaced, so that all of them pair with free().
void* operator new(std::size_t size) {
    if (void* p = failing::cxxAllocate(size, __builtin_return_address(0)))
        return p;
    throw std::bad_alloc();
}

void* operator new[](std::size_t size) {
    if (void* p = failing::cxxAllocate(size, __builtin_return_address(0)))
        return p;
    throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return failing::cxxAllocate(size, __builtin_return_address(0));
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return failing::cxxAllocate(size, __builtin_return_address(0));
}

void operator delete(void* p) noexcept {
    std::free(p);
}

void operator delete[](void* p) noexcept {
    std::free(p);
}

void operator delete(void* p, std::size_t) noexcept {
    std::free(p);
}

void operator delete[](void* p, std::size_t) noexcept {
    std::free(p);
}

void operator delete(void* p, const std::nothrow_t&) noexcept {
    std::free(p);
}

void operator delete[](void* p, const std::nothrow_t&) noexcept {
    std::free(p);
}
