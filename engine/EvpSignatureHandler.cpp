#include "engine/EvpSignatureHandler.hpp"

#include <memory>
#include <string>
#include <vector>

#include <openssl/core_names.h>
#include <openssl/dsa.h>
#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <xsec/enc/OpenSSL/OpenSSLCryptoKeyDSA.hpp>
#include <xsec/enc/OpenSSL/OpenSSLCryptoKeyEC.hpp>
#include <xsec/enc/OpenSSL/OpenSSLCryptoKeyRSA.hpp>
#include <xsec/framework/XSECException.hpp>
#include <xsec/utils/XSECPlatformUtils.hpp>
#include <xsec/utils/XSECSafeBuffer.hpp>

#include "core/adapter/Upstream.hpp"
#include "engine/Algorithms.hpp"
#include "engine/Base64.hpp"
#include "engine/ChainBytes.hpp"

XERCES_CPP_NAMESPACE_USE

namespace {

// Engine codes (engine/Algorithms.def).
constexpr int kDsa = 1;
constexpr int kEcdsa = 4;
constexpr int kRsaPss = 6;

bool served(const vqxml::Algorithm& a) {
    return a.methodCode == kRsaPss || a.methodCode == kEcdsa || a.methodCode == kDsa;
}

const vqxml::Algorithm& rowFor(const XMLCh* uri) {
    const vqxml::Algorithm* a = vqxml::algorithmByURI(vqxml::AlgorithmKind::SIGNATURE, uri);
    if (a == nullptr || !served(*a))
        throw XSECException(XSECException::AlgorithmMapperError, "not a signature method of the EVP handler");
    return *a;
}

const EVP_MD* digestOf(const vqxml::Algorithm& a) {
    if (const EVP_MD* md = vqxml::shaDigest(a.hash))
        return md;
    throw XSECException(XSECException::AlgorithmMapperError, "The signature's hash is not offered");
}

using PKey = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;

[[noreturn]] void fail(const char* why) {
    throw XSECException(XSECException::AlgorithmMapperError, why);
}

// The engine keeps its keys as legacy OpenSSL objects, which only the
// deprecated calls reach; each is wrapped into an EVP key for one operation.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
PKey evpKeyOf(const XSECCryptoKey* key, int methodCode) {
    PKey pkey(EVP_PKEY_new(), &EVP_PKEY_free);
    if (!pkey)
        fail("The key could not be prepared");
    bool set = false;
    if (methodCode == kRsaPss) {
        const auto* rsa = dynamic_cast<const OpenSSLCryptoKeyRSA*>(key);
        if (rsa == nullptr || rsa->getOpenSSLRSA() == nullptr)
            fail("An RSA-PSS signature method needs an RSA key");
        set = EVP_PKEY_set1_RSA(pkey.get(), const_cast<RSA*>(rsa->getOpenSSLRSA())) == 1;
    } else if (methodCode == kEcdsa) {
        const auto* ec = dynamic_cast<const OpenSSLCryptoKeyEC*>(key);
        if (ec == nullptr || ec->getOpenSSLEC() == nullptr)
            fail("An ECDSA signature method needs an EC key");
        set = EVP_PKEY_set1_EC_KEY(pkey.get(), const_cast<EC_KEY*>(ec->getOpenSSLEC())) == 1;
    } else {
        const auto* dsa = dynamic_cast<const OpenSSLCryptoKeyDSA*>(key);
        if (dsa == nullptr || dsa->getOpenSSLDSA() == nullptr)
            fail("A DSA signature method needs a DSA key");
        set = EVP_PKEY_set1_DSA(pkey.get(), const_cast<DSA*>(dsa->getOpenSSLDSA())) == 1;
    }
    if (!set)
        fail("The key could not be prepared");
    return pkey;
}
#pragma GCC diagnostic pop

// The length of r and of s: the group order's (q for DSA).
size_t halfLength(EVP_PKEY* pkey, int methodCode) {
    if (methodCode == kEcdsa)
        return static_cast<size_t>((EVP_PKEY_get_bits(pkey) + 7) / 8);
    BIGNUM* q = nullptr;
    if (EVP_PKEY_get_bn_param(pkey, OSSL_PKEY_PARAM_FFC_Q, &q) != 1)
        fail("The DSA key has no q");
    const size_t n = static_cast<size_t>(BN_num_bytes(q));
    BN_free(q);
    return n;
}

using Sig = std::unique_ptr<ECDSA_SIG, decltype(&ECDSA_SIG_free)>;

// DER SEQUENCE { r, s } (ECDSA and DSA alike) to r||s of n bytes each.
std::vector<unsigned char> fixedLength(const std::vector<unsigned char>& der, size_t n) {
    const unsigned char* p = der.data();
    Sig sig(d2i_ECDSA_SIG(nullptr, &p, static_cast<long>(der.size())), &ECDSA_SIG_free);
    std::vector<unsigned char> out(2 * n);
    if (!sig || BN_bn2binpad(ECDSA_SIG_get0_r(sig.get()), out.data(), static_cast<int>(n)) < 0 ||
        BN_bn2binpad(ECDSA_SIG_get0_s(sig.get()), out.data() + n, static_cast<int>(n)) < 0)
        fail("The signature could not be encoded");
    return out;
}

std::vector<unsigned char> derOf(const std::vector<unsigned char>& fixed) {
    const int n = static_cast<int>(fixed.size() / 2);
    Sig sig(ECDSA_SIG_new(), &ECDSA_SIG_free);
    BIGNUM* r = BN_bin2bn(fixed.data(), n, nullptr);
    BIGNUM* s = BN_bin2bn(fixed.data() + n, n, nullptr);
    if (!sig || r == nullptr || s == nullptr || ECDSA_SIG_set0(sig.get(), r, s) != 1) {
        BN_free(r);
        BN_free(s);
        fail("The signature could not be decoded");
    }
    unsigned char* der = nullptr;
    const int len = i2d_ECDSA_SIG(sig.get(), &der);
    if (len <= 0)
        fail("The signature could not be decoded");
    std::vector<unsigned char> out(der, der + len);
    OPENSSL_free(der);
    return out;
}

using Context = std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)>;

// A context ready to sign or verify; salt is the PSS salt length to require.
Context start(bool signing, EVP_PKEY* pkey, const vqxml::Algorithm& a, int salt) {
    Context ctx(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    EVP_PKEY_CTX* pctx = nullptr;
    const EVP_MD* md = digestOf(a);
    const int started = !ctx ? 0
                        : signing ? EVP_DigestSignInit(ctx.get(), &pctx, md, nullptr, pkey)
                                  : EVP_DigestVerifyInit(ctx.get(), &pctx, md, nullptr, pkey);
    if (started != 1)
        fail("The signature could not be started");
    if (a.methodCode == kRsaPss &&
        (EVP_PKEY_CTX_set_rsa_padding(pctx, RSA_PKCS1_PSS_PADDING) != 1 ||
         EVP_PKEY_CTX_set_rsa_mgf1_md(pctx, md) != 1 || EVP_PKEY_CTX_set_rsa_pss_saltlen(pctx, salt) != 1))
        fail("RSA-PSS could not be set up");
    return ctx;
}

bool verifies(EVP_PKEY* pkey, const vqxml::Algorithm& a, int salt, const vqxml::korean::SecureBytes& data,
              const std::vector<unsigned char>& sig) {
    Context ctx = start(false, pkey, a, salt);
    return EVP_DigestVerify(ctx.get(), sig.data(), sig.size(), data.data(), data.size()) == 1;
}

}  // namespace

unsigned int EvpSignatureHandler::signToSafeBuffer(TXFMChain* inputBytes, const XMLCh* uri, const XSECCryptoKey* key,
                                                   unsigned int, safeBuffer& result) const {
    const vqxml::Algorithm& a = rowFor(uri);
    PKey pkey = evpKeyOf(key, a.methodCode);
    const vqxml::korean::SecureBytes data = vqxml::readAllBytes(inputBytes);
    Context ctx = start(true, pkey.get(), a, EVP_MD_get_size(digestOf(a)));
    size_t len = 0;
    if (EVP_DigestSign(ctx.get(), nullptr, &len, data.data(), data.size()) != 1)
        fail("The signature could not be made");
    std::vector<unsigned char> sig(len);
    if (EVP_DigestSign(ctx.get(), sig.data(), &len, data.data(), data.size()) != 1)
        fail("The signature could not be made (is it a private key?)");
    sig.resize(len);
    if (a.methodCode != kRsaPss)
        sig = fixedLength(sig, halfLength(pkey.get(), a.methodCode));
    const std::string text = vqxml::base64Text(sig);
    result.sbStrcpyIn(text.c_str());
    return static_cast<unsigned int>(text.size());
}

bool EvpSignatureHandler::verifyBase64Signature(TXFMChain* inputBytes, const XMLCh* uri, const char* sig,
                                                unsigned int, const XSECCryptoKey* key) const {
    const vqxml::Algorithm& a = rowFor(uri);
    PKey pkey = evpKeyOf(key, a.methodCode);
    const vqxml::korean::SecureBytes data = vqxml::readAllBytes(inputBytes);
    std::vector<unsigned char> value;
    if (!vqxml::base64Decode(sig, value))
        return false;
    if (a.methodCode != kRsaPss) {
        // r||s is written with halves as long as the group order, but Santuario
        // 2.1.7 writes P-521 values of 2 x 65 bytes when both numbers fit; like
        // libxmlsec1, any even length up to that is split in the middle (the same
        // numbers, so no other signature verifies).
        if (value.empty() || value.size() % 2 != 0 || value.size() > 2 * halfLength(pkey.get(), a.methodCode))
            throw XSECException(XSECException::SigVfyError,
                                "The SignatureValue is not r||s, each at most as long as the key's group order");
        return verifies(pkey.get(), a, 0, data, derOf(value));
    }
    if (verifies(pkey.get(), a, EVP_MD_get_size(digestOf(a)), data, value))
        return true;
    if (verifies(pkey.get(), a, RSA_PSS_SALTLEN_AUTO, data, value))
        throw XSECException(XSECException::SigVfyError, "The RSA-PSS salt is not as long as the hash");
    return false;
}

XSECAlgorithmHandler* EvpSignatureHandler::clone() const {
    return new EvpSignatureHandler();
}

namespace vqxml {

void registerEvpSignatureHandler() {
    EvpSignatureHandler handler;
    for (int code : {kRsaPss, kEcdsa, kDsa})
        for (int hash = 1; hash <= 6; ++hash)
            if (const Algorithm* a = algorithmByCode(AlgorithmKind::SIGNATURE, code, hash); a != nullptr && served(*a))
                XSECPlatformUtils::registerAlgorithmHandler(a->uri, handler);
}

}  // namespace vqxml
