// Hostile pieces of signed and encrypted messages, each to be refused with the
// same status wherever it can stand: tests/api/HostileMessagesTest.cpp puts every
// piece into an XML signature, an ebXML package, the signature, EncryptedKey and
// EncryptedData of a SOAP message, and XML Encryption's EncryptedData and
// EncryptedKey. A new attack is one more row.
#ifndef VQXML_TESTS_HOSTILEMESSAGES_HPP
#define VQXML_TESTS_HOSTILEMESSAGES_HPP

#include <string>
#include <vector>

#include <xsec/framework/XSECException.hpp>

namespace hostile {

// Where a piece goes: the ds:KeyInfo of the element under test (a signature,
// EncryptedData or EncryptedKey), that of a signature or EncryptedData only
// (an EncryptedKey's may name several certificates, to choose its recipient
// among), the Transforms of a signature's Reference, References added to its
// SignedInfo, or the CipherData of an EncryptedData or EncryptedKey. The
// prefixes ds, xenc and wsu are declared on every document element.
enum class Spot { KeyInfo, SignerKeyInfo, ReferenceTransforms, References, CipherData };

constexpr int kRefused = XSECException::UnsupportedFunction;

struct Piece {
    const char* name;
    Spot spot;
    std::string text;
    std::string beside;  // elements put beside the element under test
    std::string prolog;  // before the document element
    int status;
    const char* says = "";    // part of the error text
};

// What a piece might reach outside the document: a local file and an address
// nothing may connect to.
struct Outside {
    std::string file;  // absolute path
    std::string url;   // http://127.0.0.1:<port>/
};

inline std::string retrievalMethod(const std::string& uri, const std::string& transforms = "") {
    return "<ds:RetrievalMethod URI=\"" + uri + "\" Type=\"http://www.w3.org/2001/04/xmlenc#EncryptedKey\">" +
           transforms + "</ds:RetrievalMethod>";
}

// An EncryptedKey with that identifying attribute whose key information retrieves each of uris.
inline std::string encryptedKey(const std::string& idAttribute, const std::vector<std::string>& uris) {
    std::string methods;
    for (const std::string& uri : uris)
        methods += retrievalMethod(uri);
    return "<xenc:EncryptedKey " + idAttribute +
           "><xenc:EncryptionMethod Algorithm=\"http://www.w3.org/2001/04/xmlenc#rsa-1_5\"/><ds:KeyInfo>" + methods +
           "</ds:KeyInfo><xenc:CipherData><xenc:CipherValue>AA==</xenc:CipherValue></xenc:CipherData>"
           "</xenc:EncryptedKey>";
}

// count EncryptedKeys k1..k<count>, each retrieving the next one fanOut times.
inline std::string chain(int count, int fanOut) {
    std::string keys;
    for (int i = 1; i <= count; ++i)
        keys += encryptedKey("Id=\"k" + std::to_string(i) + "\"",
                             std::vector<std::string>(i < count ? fanOut : 0, "#k" + std::to_string(i + 1)));
    return keys;
}

inline std::string reference(const std::string& uri, const std::string& type = "",
                             const std::string& transforms = "") {
    return "<ds:Reference URI=\"" + uri + "\"" + (type.empty() ? "" : " Type=\"" + type + "\"") + ">" +
           (transforms.empty() ? "" : "<ds:Transforms>" + transforms + "</ds:Transforms>") +
           "<ds:DigestMethod Algorithm=\"http://www.w3.org/2001/04/xmlenc#sha256\"/>"
           "<ds:DigestValue>AA==</ds:DigestValue></ds:Reference>";
}

inline std::string transform(const std::string& algorithm, const std::string& content = "") {
    return "<ds:Transform Algorithm=\"" + algorithm + "\">" + content + "</ds:Transform>";
}

inline std::string xslt(const std::string& templateBody, const std::string& output = "") {
    return transform("http://www.w3.org/TR/1999/REC-xslt-19991116",
                     "<xsl:stylesheet xmlns:xsl=\"http://www.w3.org/1999/XSL/Transform\" version=\"1.0\">" + output +
                         "<xsl:template match=\"/\">" + templateBody + "</xsl:template></xsl:stylesheet>");
}

inline std::string readingXslt(const std::string& url) {
    return xslt("<ds:KeyName><xsl:value-of select=\"document('" + url + "')\"/></ds:KeyName>");
}

inline std::vector<Piece> pieces(const Outside& outside) {
    const std::string file = "file://" + outside.file;
    const std::string textOutput = "<xsl:output method=\"text\"/>";
    const std::string afterBase64 = transform("http://www.w3.org/2000/09/xmldsig#base64") +
                                    transform("http://www.w3.org/TR/2001/REC-xml-c14n-20010315");
    const std::string externalEntity = "&lt;!DOCTYPE x [&lt;!ENTITY e SYSTEM \"" + outside.url +
                                       "entity\"&gt;]&gt;&lt;ds:KeyName&gt;&amp;e;&lt;/ds:KeyName&gt;";
    const std::string manifest = "http://www.w3.org/2000/09/xmldsig#Manifest";
    std::string manyReferences;
    for (int i = 0; i < 64; ++i)
        manyReferences += reference("");
    std::string manyTransforms;
    for (int i = 0; i < 17; ++i)
        manyTransforms += transform("http://www.w3.org/TR/2001/REC-xml-c14n-20010315");
    const std::string issuerSerial =
        "<ds:X509IssuerSerial><ds:X509IssuerName>CN=a</ds:X509IssuerName>"
        "<ds:X509SerialNumber>1</ds:X509SerialNumber></ds:X509IssuerSerial>";
    const auto retrieving = [](const std::string& transforms) {
        return retrievalMethod("#k", "<ds:Transforms>" + transforms + "</ds:Transforms>");
    };
    const auto cipherReference = [](const std::string& uri, const std::string& transforms = "") {
        return "<xenc:CipherReference URI=\"" + uri + "\">" +
               (transforms.empty() ? "" : "<xenc:Transforms>" + transforms + "</xenc:Transforms>") +
               "</xenc:CipherReference>";
    };
    const std::string looping = encryptedKey("Id=\"k\"", {"#k"});
    const std::string target = encryptedKey("Id=\"k\"", {});
    const char* const kLoop = "leads back to itself";
    const char* const kOutside = "outside the document is not followed";
    const char* const kTransforms = "with Transforms is not followed";
    const char* const kRepeated = "is read only in an EncryptedKey";
    return {
        {"RetrievalMethod loop through an Id attribute", Spot::KeyInfo, retrievalMethod("#k"), looping, "", kRefused,
         kLoop},
        {"RetrievalMethod loop through a declared ID", Spot::KeyInfo, retrievalMethod("#k"), looping,
         "<!DOCTYPE r [<!ATTLIST xenc:EncryptedKey Id ID #IMPLIED>]>", kRefused, kLoop},
        {"RetrievalMethod loop through wsu:Id", Spot::KeyInfo, retrievalMethod("#k"),
         encryptedKey("wsu:Id=\"k\"", {"#k"}), "", kRefused, kLoop},
        {"RetrievalMethod loop through xpointer(id())", Spot::KeyInfo, retrievalMethod("#xpointer(id('k'))"),
         encryptedKey("Id=\"k\"", {"#xpointer(id('k'))"}), "", kRefused, kLoop},
        {"RetrievalMethod loop over two keys", Spot::KeyInfo, retrievalMethod("#a"),
         encryptedKey("Id=\"a\"", {"#b"}) + encryptedKey("ID=\"b\"", {"#a"}), "", kRefused, kLoop},
        {"RetrievalMethod chain", Spot::KeyInfo, retrievalMethod("#k1"), chain(12, 1), "", kRefused, "lead too far"},
        {"RetrievalMethods fanning out", Spot::KeyInfo, retrievalMethod("#k1"), chain(5, 3), "", kRefused,
         "lead too far"},
        {"RetrievalMethod to an Id two elements carry", Spot::KeyInfo, retrievalMethod("#k"),
         encryptedKey("Id=\"k\"", {}) + encryptedKey("id=\"k\"", {}), "", kRefused, "more than one element"},
        {"RetrievalMethod to a file", Spot::KeyInfo, retrievalMethod(file), "", "", kRefused, kOutside},
        {"RetrievalMethod to an address", Spot::KeyInfo, retrievalMethod(outside.url), "", "", kRefused, kOutside},
        {"RetrievalMethod without a URI", Spot::KeyInfo, "<ds:RetrievalMethod Type=\"urn:x\"/>", "", "", kRefused,
         kOutside},
        {"RetrievalMethod to another XPointer", Spot::KeyInfo, retrievalMethod("#xpointer(//*)"), "", "", kRefused,
         kOutside},
        {"RetrievalMethod with XSLT reading a file", Spot::KeyInfo, retrieving(readingXslt(file)), target, "", kRefused,
         kTransforms},
        {"RetrievalMethod with XSLT fetching an address", Spot::KeyInfo, retrieving(readingXslt(outside.url)),
         target, "", kRefused, kTransforms},
        {"RetrievalMethod with XSLT declaring an external entity", Spot::KeyInfo,
         retrieving(xslt(externalEntity, textOutput)), target, "", kRefused, kTransforms},
        {"RetrievalMethod with XSLT whose output is not XML", Spot::KeyInfo,
         retrieving(xslt("not xml", textOutput)), target, "", kRefused, kTransforms},
        {"RetrievalMethod with an XPath that walks the document", Spot::KeyInfo,
         retrieving(transform("http://www.w3.org/TR/1999/REC-xpath-19991116", "<ds:XPath>count(//*)</ds:XPath>")),
         target, "", kRefused, kTransforms},
        {"RetrievalMethod with a transform after base64", Spot::KeyInfo, retrieving(afterBase64), target, "", kRefused,
         kTransforms},
        {"X509Data with repeated issuer serials", Spot::SignerKeyInfo,
         "<ds:X509Data>" + issuerSerial + issuerSerial + "</ds:X509Data>", "", "", kRefused, kRepeated},
        {"X509Data with repeated subject names", Spot::SignerKeyInfo,
         "<ds:X509Data><ds:X509SubjectName>CN=a</ds:X509SubjectName><ds:X509SubjectName>CN=b</ds:X509SubjectName>"
         "</ds:X509Data>", "", "", kRefused, kRepeated},
        {"X509Data with repeated SKIs", Spot::SignerKeyInfo,
         "<ds:X509Data><ds:X509SKI>AA==</ds:X509SKI><ds:X509SKI>AQ==</ds:X509SKI></ds:X509Data>", "", "", kRefused,
         kRepeated},

        {"Reference with XSLT reading a file", Spot::ReferenceTransforms, readingXslt(file), "", "", kRefused,
         "XSLT transforms are not run"},
        {"Reference with XSLT whose output is not XML", Spot::ReferenceTransforms, xslt("not xml", textOutput), "",
         "", kRefused, "XSLT transforms are not run"},
        {"Reference with a transform after base64", Spot::ReferenceTransforms, afterBase64, "", "", kRefused,
         "after a base64 transform"},
        {"Reference with 17 transforms", Spot::ReferenceTransforms, manyTransforms, "", "",
         XSECException::TransformError, "more than 16 transforms"},

        {"Manifest that references itself", Spot::References, reference("#m", manifest),
         "<ds:Manifest Id=\"m\">" + reference("#m", manifest) + "</ds:Manifest>", "", kRefused, kLoop},
        {"Manifest with XSLT", Spot::References, reference("#m", manifest),
         "<ds:Manifest Id=\"m\">" + reference("", "", xslt("not xml", textOutput)) + "</ds:Manifest>", "", kRefused,
         "XSLT transforms are not run"},
        {"65 References", Spot::References, manyReferences, "", "", kRefused, "more than 64 references"},

        {"CipherReference to a file", Spot::CipherData, cipherReference(file), "", "", kRefused, kOutside},
        {"CipherReference to an address", Spot::CipherData, cipherReference(outside.url), "", "", kRefused, kOutside},
        {"CipherReference with XSLT", Spot::CipherData, cipherReference("#k", readingXslt(outside.url)), target, "",
         kRefused, kTransforms},
        {"CipherReference with a transform after base64", Spot::CipherData, cipherReference("", afterBase64), "", "",
         kRefused, kTransforms},
    };
}

}  // namespace hostile

#endif
