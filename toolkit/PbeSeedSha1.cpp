// pbeWithSHA1AndSEED-CBC (1.2.410.200004.1.15), the scheme of Korean NPKI key files.
#include <openssl/evp.h>
#include <openssl/x509.h>

#include "toolkit/PasswordBasedEncryption.hpp"

namespace {

constexpr std::size_t kSha1Size = 20;
constexpr std::size_t kSeedBlock = 16;

using DigestContext = vqtk::Owned<EVP_MD_CTX, EVP_MD_CTX_free>;

void sha1(EVP_MD_CTX* ctx, std::initializer_list<vqtk::Bytes> parts, unsigned char* out) {
    bool ok = EVP_DigestInit_ex2(ctx, EVP_sha1(), nullptr) == 1;
    for (const vqtk::Bytes& part : parts)
        ok = ok && EVP_DigestUpdate(ctx, part.data, part.size) == 1;
    if (!ok || EVP_DigestFinal_ex(ctx, out, nullptr) != 1)
        vqtk::raise(VQTK_ERR_CRYPTO, "SHA-1 failed: " + vqtk::opensslReason());
}

}  // namespace

namespace vqtk {

SecretBytes pbkdf1Sha1(Bytes password, Bytes salt, long iterations) {
    DigestContext ctx(EVP_MD_CTX_new());
    if (!ctx)
        throw std::bad_alloc();
    SecretBytes dk(kSha1Size);
    sha1(ctx.get(), {password, salt}, dk.data());
    for (long i = 1; i < iterations; ++i)
        sha1(ctx.get(), {{dk.data(), dk.size()}}, dk.data());
    return dk;
}

CipherSetup seedSha1Setup(Bytes password, Bytes salt, long iterations) {
    const SecretBytes dk = pbkdf1Sha1(password, salt, iterations);
    CipherSetup setup{"SEED-CBC", SecretBytes(dk.begin(), dk.begin() + kSeedBlock), {}};
    DigestContext ctx(EVP_MD_CTX_new());
    if (!ctx)
        throw std::bad_alloc();
    SecretBytes ivHash(kSha1Size);
    sha1(ctx.get(), {{dk.data() + kSeedBlock, kSha1Size - kSeedBlock}}, ivHash.data());
    setup.iv.assign(ivHash.begin(), ivHash.begin() + kSeedBlock);
    return setup;
}

CipherSetup seedSha1SetupFromParameters(const ASN1_TYPE* parameters, Bytes password) {
    Owned<PBEPARAM, PBEPARAM_free> pbe(static_cast<PBEPARAM*>(
        ASN1_TYPE_unpack_sequence(ASN1_ITEM_rptr(PBEPARAM), parameters)));
    if (!pbe)
        raise(VQTK_ERR_FORMAT, "The parameters of pbeWithSHA1AndSEED-CBC are not "
                               "SEQUENCE { salt OCTET STRING, iterations INTEGER }");
    return seedSha1Setup(password, checkedSalt(pbe->salt), checkedIterations(pbe->iter));
}

}  // namespace vqtk
