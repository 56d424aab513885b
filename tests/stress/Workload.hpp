// The operations the stress tests run, through the C interface. The plain calls
// return the first failing status (0 for none) and are shared with the
// allocation-failure sweep; Workload checks each result and returns "" when the
// library did the right thing, else what went wrong, so that worker threads can
// count failures without asserting.
#ifndef VQXML_TESTS_STRESS_WORKLOAD_HPP
#define VQXML_TESTS_STRESS_WORKLOAD_HPP

#include <memory>
#include <string>

#include "ScopedHandle.hpp"

namespace stress {

// A certificate and its unencrypted private key from the test PKI.
struct KeyPair {
    std::string cert;
    std::string key;
};

// Read once, before any thread starts.
const KeyPair& rsaSigner();
const KeyPair& kcdsaSigner();
const KeyPair& rsaRecipient();
const std::string& taxInvoice();
const std::string& smallInvoice();

// Signs the tax invoice (selector 5 RSA-SHA256, 3 KCDSA-SHA1), enveloped.
int sign(void* h, int signatureSelector, const KeyPair& signer);
int verify(void* h, const std::string& signedText);
// Encrypts the small invoice's Amount for rsaRecipient (symmetric selector 1
// Triple DES, 2 SEED; transport 2 RSA 1.5, 3 RSA-OAEP).
int encrypt(void* h, int symmetricSelector, int transport);
int decrypt(void* h, const std::string& encrypted);
// Whether a decrypted document is the small invoice again.
bool isSmallInvoice(const std::string& document);

// A sender and a receiver handle, used for every operation of one thread.
class Workload {
public:
    Workload();

    // Signs, verifies, and checks that a changed amount no longer verifies.
    std::string signAndVerify(int signatureSelector, const KeyPair& signer);

    // Encrypts, opens it to the original bytes, and checks that a changed
    // wrapped key does not open it.
    std::string encryptAndDecrypt(int symmetricSelector, int transport);

    // Signs a SOAP envelope, encrypts its body, processes it back to the plain
    // envelope, and checks that a changed signed body is refused.
    std::string secureAndProcessSoap();

private:
    std::unique_ptr<ScopedHandle> sender_;
    std::unique_ptr<ScopedHandle> receiver_;
};

}  // namespace stress

#endif
