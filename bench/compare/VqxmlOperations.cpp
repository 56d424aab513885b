// The operations through vqxml's C interface. Each run starts from the input's
// bytes with a fresh handle and ends with the result's bytes, as an application
// would; one extra handle keeps the engines started across runs. The key and the
// certificate go in as bytes on every operation, as the interface has it; the
// library keeps them parsed from the first time, which the setup does.
#include <functional>
#include <stdexcept>
#include <utility>

#include "support/BenchDocuments.hpp"
#include "compare/Implementations.hpp"
#include "vqxml/vqxml.h"

namespace compare {

namespace {

using benchdata::bytes;
using benchdata::chars;
using benchdata::size;

void check(int status, const char* what) {
    if (status != VQXML_OK)
        throw std::runtime_error(std::string("vqxml could not ") + what + ": status " + std::to_string(status));
}

class Handle {
public:
    Handle() { check(VQTK_XMLAPI_init(&h_), "start"); }
    ~Handle() { VQTK_XMLAPI_Finish(&h_); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    void* get() const { return h_; }
    std::string result() const {
        char* out = nullptr;
        int len = 0;
        check(VQTK_XMLAPI_GetXMLDocument(h_, &out, &len), "hand out the result");
        return std::string(out, static_cast<size_t>(len));
    }

private:
    void* h_ = nullptr;
};

std::string sign(const Recipe& recipe, const std::string& doc) {
    Handle h;
    check(VQTK_XMLDSIG_SetXMLDocument(h.get(), chars(doc), size(doc)), "load");
    check(VQTK_XMLDSIG_SignatureMethod(h.get(), 5, recipe.signedInfoC14n), "choose RSA-SHA256");
    check(VQTK_XMLDSIG_createReference(h.get(), const_cast<char*>(""), 3, recipe.referenceC14n,
                                       const_cast<char*>(recipe.xpath)),
          "add the reference");
    const Keys& k = keys();
    check(VQTK_XMLDSIG_SetSigner(h.get(), bytes(k.certDer), size(k.certDer), bytes(k.keyDer), size(k.keyDer)),
          "set the signer");
    check(VQTK_XMLDSIG_sign(h.get()), "sign");
    return h.result();
}

std::string verify(const std::string& signedDoc) {
    Handle h;
    check(VQTK_XMLDSIG_SetSignXMLDocument(h.get(), chars(signedDoc), size(signedDoc)), "load");
    check(VQTK_XMLDSIG_Verify(h.get()), "verify");
    return h.result();
}

// The document element encrypted with the cipher of selector, its key wrapped by
// RSA-OAEP.
std::string encrypt(int selector, const std::string& doc) {
    Handle h;
    const Keys& k = keys();
    check(VQTK_XMLENC_SetXMLDocument(h.get(), chars(doc), size(doc)), "load");
    check(VQTK_XMLENC_SetSymmAlg(h.get(), selector), "make a session key of the cipher");
    check(VQTK_XMLENC_EncryptElement(h.get(), nullptr, 2), "encrypt the document element");
    check(VQTK_XMLENC_EncryptKeyWrapKey(h.get(), bytes(k.certDer), size(k.certDer), 3), "wrap the key");
    check(VQTK_XMLENC_Encrypt(h.get()), "encrypt");
    return h.result();
}

std::string decrypt(const std::string& encryptedDoc) {
    Handle h;
    const Keys& k = keys();
    check(VQTK_XMLENC_SetEncXMLDocument(h.get(), chars(encryptedDoc), size(encryptedDoc)), "load");
    check(VQTK_XMLENC_GetEncKeyInfo(h.get()), "read the encrypted key");
    check(VQTK_XMLENC_DecryptKeyWrapKey(h.get(), bytes(k.certDer), size(k.certDer), bytes(k.keyDer), size(k.keyDer)),
          "unwrap the key");
    check(VQTK_XMLENC_Decrypt(h.get()), "decrypt");
    return h.result();
}

using Work = std::function<std::string(const std::string&)>;

// The key and the certificate handed to the library once, which decodes and
// keeps them, as libxmlsec1's side loads them into its keys manager before it
// is measured.
void loadKeysOnce() {
    Handle h;
    const Keys& k = keys();
    char document[] = "<a/>";
    check(VQTK_XMLDSIG_SetXMLDocument(h.get(), document, sizeof document - 1), "load a document");
    check(VQTK_XMLDSIG_SignatureMethod(h.get(), 5, 0), "choose RSA-SHA256");
    check(VQTK_XMLDSIG_SetSigner(h.get(), bytes(k.certDer), size(k.certDer), bytes(k.keyDer), size(k.keyDer)),
          "take the key");
}

class VqxmlOperation : public Operation {
public:
    VqxmlOperation(Work work, const std::string& input) : work_(std::move(work)), input_(input) { loadKeysOnce(); }
    void run() override { work_(input_); }

private:
    Handle engines_;
    Work work_;
    const std::string& input_;
};

}  // namespace

std::string vqxmlSigned(const Recipe& recipe, const std::string& document) {
    return sign(recipe, document);
}

std::string vqxmlEncrypted(int selector, const std::string& document) {
    return encrypt(selector, document);
}

std::unique_ptr<Operation> makeVqxmlOperation(const std::string& kind, const std::string& input) {
    Work work;
    if (const Recipe* recipe = recipeOfKind(kind))
        work = isSigning(kind) ? Work([recipe](const std::string& doc) { return sign(*recipe, doc); }) : Work(verify);
    else if (const Cipher* cipher = cipherOfKind(kind))
        work = isEncrypting(kind) ? Work([cipher](const std::string& doc) { return encrypt(cipher->selector, doc); })
                                  : Work(decrypt);
    else
        return nullptr;
    return std::make_unique<VqxmlOperation>(std::move(work), input);
}

}  // namespace compare
