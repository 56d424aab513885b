// Allocators that fail on request, for the failure-injection tests. The binary
// that links FailingAllocators.cpp replaces the global operator new and installs
// OpenSSL's memory functions before anything else runs; both count allocations
// while armed and fail exactly the n-th one.
#ifndef VQXML_TESTS_STRESS_FAILINGALLOCATORS_HPP
#define VQXML_TESTS_STRESS_FAILINGALLOCATORS_HPP

namespace failing {

// Cxx: any operator new in the process; CxxFromLibrary: only those called
// directly from libvqxml's own code; OpenSSL: OpenSSL's allocations.
enum class Allocator { Cxx, CxxFromLibrary, OpenSSL };

// From now on, the n-th allocation of that kind fails (n >= 1); others succeed.
void arm(Allocator which, long n);

// Stops failing and counting; returns how many allocations of the armed kind
// were made while armed.
long disarm();

// Whether OpenSSL took our memory functions (false if it had allocated before).
bool openSSLHooked();

}  // namespace failing

#endif
