#include "xenc/XmlsecCipher.hpp"

#include <stdexcept>

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <xmlsec/crypto.h>
#include <xmlsec/keyinfo.h>
#include <xmlsec/keysmngr.h>
#include <xmlsec/templates.h>
#include <xmlsec/xmlenc.h>
#include <xmlsec/xmlsec.h>
#include <xmlsec/xmltree.h>

#include "dsig/XmlsecSigner.hpp"

namespace xmlsecbench {

namespace {

xmlNodePtr firstElementNamed(xmlNodePtr node, const char* name) {
    for (; node != nullptr; node = node->next) {
        if (node->type != XML_ELEMENT_NODE)
            continue;
        if (xmlStrEqual(node->name, BAD_CAST name))
            return node;
        if (xmlNodePtr found = firstElementNamed(node->children, name))
            return found;
    }
    return nullptr;
}

struct CipherIds {
    xmlSecTransformId transform;
    xmlSecKeyDataId keyData;
    xmlSecSize bits;
};

CipherIds idsOf(SessionCipher cipher) {
    switch (cipher) {
    case SessionCipher::Aes128Cbc:
        return {xmlSecTransformAes128CbcId, xmlSecKeyDataAesId, 128};
    case SessionCipher::Aes128Gcm:
        return {xmlSecTransformAes128GcmId, xmlSecKeyDataAesId, 128};
    default:
        return {xmlSecTransformDes3CbcId, xmlSecKeyDataDesId, 192};
    }
}

}  // namespace

Keys::Keys(const std::string& der, bool isCertificate) {
    start();
    xmlSecKeysMngrPtr manager = xmlSecKeysMngrCreate();
    m_manager = manager;
    xmlSecKeyPtr key = xmlSecCryptoAppKeyLoadMemory(bytes(der), der.size(),
                                                    isCertificate ? xmlSecKeyDataFormatCertDer
                                                                  : xmlSecKeyDataFormatDer,
                                                    nullptr, nullptr, nullptr);
    if (manager == nullptr || xmlSecCryptoAppDefaultKeysMngrInit(manager) < 0 || key == nullptr ||
        xmlSecCryptoAppDefaultKeysMngrAdoptKey(manager, key) < 0)
        throw std::runtime_error("xmlsec could not load the key");
}

Keys::~Keys() {
    xmlSecKeysMngrDestroy(static_cast<xmlSecKeysMngrPtr>(m_manager));
}

std::string encryptElement(const std::string& text, const char* target, const Keys& recipient,
                           SessionCipher cipher) {
    const CipherIds ids = idsOf(cipher);
    xmlDocPtr doc = parse(text);
    xmlNodePtr node = firstElementNamed(xmlDocGetRootElement(doc), target);
    xmlNodePtr data = xmlSecTmplEncDataCreate(doc, ids.transform, nullptr, xmlSecTypeEncElement, nullptr, nullptr);
    xmlSecTmplEncDataEnsureCipherValue(data);
    xmlNodePtr key = xmlSecTmplKeyInfoAddEncryptedKey(xmlSecTmplEncDataEnsureKeyInfo(data, nullptr),
                                                      xmlSecTransformRsaOaepId, nullptr, nullptr, nullptr);
    xmlSecTmplEncDataEnsureCipherValue(key);
    xmlSecTmplX509DataAddCertificate(xmlSecTmplKeyInfoAddX509Data(xmlSecTmplEncDataEnsureKeyInfo(key, nullptr)));

    xmlSecEncCtxPtr ctx = xmlSecEncCtxCreate(static_cast<xmlSecKeysMngrPtr>(recipient.manager()));
    ctx->encKey = xmlSecKeyGenerate(ids.keyData, ids.bits, xmlSecKeyDataTypeSession);
    const bool ok = node != nullptr && ctx->encKey != nullptr && xmlSecEncCtxXmlEncrypt(ctx, data, node) >= 0;
    xmlSecEncCtxDestroy(ctx);
    if (!ok) {
        xmlFreeNode(data);
        xmlFreeDoc(doc);
        throw std::runtime_error("xmlsec could not encrypt");
    }
    std::string out = dump(doc);
    xmlFreeDoc(doc);
    return out;
}

std::string decrypt(const std::string& text, const Keys& recipient) {
    xmlDocPtr doc = parse(text);
    xmlNodePtr data = xmlSecFindNode(xmlDocGetRootElement(doc), xmlSecNodeEncryptedData, xmlSecEncNs);
    xmlSecEncCtxPtr ctx = xmlSecEncCtxCreate(static_cast<xmlSecKeysMngrPtr>(recipient.manager()));
    // The key comes from the keys manager, as vqxml's comes from the caller: no
    // certificate path is built for the X509Data on either side.
    ctx->keyInfoReadCtx.flags |= XMLSEC_KEYINFO_FLAGS_X509DATA_DONT_VERIFY_CERTS;
    const bool ok = data != nullptr && xmlSecEncCtxDecrypt(ctx, data) >= 0;
    xmlSecEncCtxDestroy(ctx);
    std::string out = ok ? dump(doc) : std::string();
    xmlFreeDoc(doc);
    if (!ok)
        throw std::runtime_error("xmlsec could not decrypt");
    return out;
}

}  // namespace xmlsecbench
