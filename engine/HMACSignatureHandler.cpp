#include "engine/HMACSignatureHandler.hpp"

#include <memory>
#include <string>
#include <vector>

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <xsec/enc/XSECCryptoKeyHMAC.hpp>
#include <xsec/framework/XSECException.hpp>
#include <xsec/utils/XSECPlatformUtils.hpp>
#include <xsec/utils/XSECSafeBuffer.hpp>

#include "engine/ChainBytes.hpp"
#include "engine/korean/SecureBytes.hpp"

XERCES_CPP_NAMESPACE_USE

namespace {

struct HmacAlgorithm {
    const XMLCh* uri;
    const EVP_MD* (*md)();
};

const HmacAlgorithm kHmacs[] = {
    {u"http://www.w3.org/2000/09/xmldsig#hmac-sha1", &EVP_sha1},
    {u"http://www.w3.org/2001/04/xmldsig-more#hmac-sha224", &EVP_sha224},
    {u"http://www.w3.org/2001/04/xmldsig-more#hmac-sha256", &EVP_sha256},
    {u"http://www.w3.org/2001/04/xmldsig-more#hmac-sha384", &EVP_sha384},
    {u"http://www.w3.org/2001/04/xmldsig-more#hmac-sha512", &EVP_sha512},
};

const EVP_MD* digestFor(const XMLCh* uri) {
    for (const HmacAlgorithm& h : kHmacs)
        if (XMLString::equals(h.uri, uri))
            return h.md();
    return nullptr;
}

std::vector<unsigned char> base64Decode(const char* text) {
    std::string clean;
    for (const char* p = text; p != nullptr && *p != '\0'; ++p)
        if (*p != ' ' && *p != '\t' && *p != '\r' && *p != '\n')
            clean.push_back(*p);
    std::vector<unsigned char> out(clean.size() / 4 * 3 + 3);
    std::unique_ptr<EVP_ENCODE_CTX, decltype(&EVP_ENCODE_CTX_free)> ctx(EVP_ENCODE_CTX_new(), &EVP_ENCODE_CTX_free);
    int len = 0, tail = 0;
    EVP_DecodeInit(ctx.get());
    if (EVP_DecodeUpdate(ctx.get(), out.data(), &len, reinterpret_cast<const unsigned char*>(clean.data()),
                         static_cast<int>(clean.size())) < 0 ||
        EVP_DecodeFinal(ctx.get(), out.data() + len, &tail) < 0)
        return {};
    out.resize(static_cast<size_t>(len + tail));
    return out;
}

}  // namespace

namespace vqxml {

bool acceptableHmacLength(unsigned int outputBits, unsigned int macBits) {
    return outputBits == 0 || (outputBits <= macBits && outputBits >= 80 && outputBits >= macBits / 2);
}

void registerHmacHandler() {
    HMACSignatureHandler handler;
    for (const HmacAlgorithm& h : kHmacs)
        XSECPlatformUtils::registerAlgorithmHandler(h.uri, handler);
}

}  // namespace vqxml

XSECAlgorithmHandler* HMACSignatureHandler::clone() const {
    return new HMACSignatureHandler(*this);
}

bool HMACSignatureHandler::verifyBase64Signature(TXFMChain* inputBytes, const XMLCh* uri, const char* sig,
                                                 unsigned int outputLength, const XSECCryptoKey* key) const {
    const EVP_MD* md = digestFor(uri);
    if (key == nullptr || key->getKeyType() != XSECCryptoKey::KEY_HMAC || md == nullptr)
        return DSIGAlgorithmHandlerDefault::verifyBase64Signature(inputBytes, uri, sig, outputLength, key);

    const unsigned int macBits = static_cast<unsigned int>(EVP_MD_get_size(md)) * 8;
    if (!vqxml::acceptableHmacLength(outputLength, macBits))
        throw XSECException(XSECException::AlgorithmMapperError,
                            "HMACOutputLength keeps fewer than 80 bits or half of the MAC, or more than it");
    safeBuffer secret;
    const unsigned int secretLen = static_cast<const XSECCryptoKeyHMAC*>(key)->getKey(secret);
    const vqxml::korean::SecureBytes data = vqxml::readAllBytes(inputBytes);
    unsigned char mac[EVP_MAX_MD_SIZE];
    unsigned int macLen = 0;
    if (HMAC(md, secret.rawBuffer(), static_cast<int>(secretLen), data.data(), data.size(), mac, &macLen) == nullptr)
        throw XSECException(XSECException::AlgorithmMapperError, "The HMAC could not be computed");

    const unsigned int bits = outputLength == 0 ? macLen * 8 : outputLength;
    const std::vector<unsigned char> given = base64Decode(sig);
    const size_t wholeBytes = bits / 8;
    const unsigned int restBits = bits % 8;
    bool valid = given.size() == (bits + 7) / 8 && CRYPTO_memcmp(given.data(), mac, wholeBytes) == 0;
    if (valid && restBits != 0) {
        const unsigned char mask = static_cast<unsigned char>(0xFF << (8 - restBits));
        valid = ((given[wholeBytes] ^ mac[wholeBytes]) & mask) == 0;
    }
    OPENSSL_cleanse(mac, sizeof mac);
    return valid;
}
