// The standard text of every code the library raises without a text of its own.
#include <algorithm>
#include <iterator>

#include "core/VQXMLException.hpp"

namespace {

struct CodeText {
    int code;
    const char* text;
};

// Sorted by code.
constexpr CodeText kTexts[] = {
    {1, "Memory could not be allocated"},
    {33, "The crypto provider failed while building an object"},
    {10100, "Null handle"},
    {10101, "The handle variable already holds a handle"},
    {10102, "A required argument is null, or the handle could not be created"},
    {10103, "The previous document or engine objects could not be released"},
    {10104, "No package bytes were given"},
    {10105, "The document is not well-formed XML or has no root element"},
    {10106, "No document was given"},
    {10107, "The document's declared encoding is not UTF-8"},
    {10200, "No signature object: load a document first"},
    {10201, "Unknown signature algorithm selector"},
    {10202, "Unknown canonicalization selector"},
    {10203, "Unknown digest selector"},
    {10204, "Neither a certificate nor a private key was given"},
    {10205, "The chosen signature method is neither RSA nor KCDSA"},
    {10206, "Empty HMAC secret, or the chosen signature method is not HMAC"},
    {10207, "No prefix was given"},
    {10208, "No key name was given"},
    {10209, "No Object content was given"},
    {10210, "No Object Id was given"},
    {10211, "An Object Id must not begin with '#'"},
    {10212, "No signed document was given"},
    {10300, "No prefix was given"},
    {10301, "Unknown or unsupported symmetric algorithm"},
    {10302, "No element with the given name"},
    {10303, "Encryption mode must be 1 (content) or 2 (element)"},
    {10304, "Unknown key transport algorithm"},
    {10305, "No key name was given"},
    {10306, "The key or certificate is empty"},
    {10307, "No session key is set"},
    {10308, "The certificate's issuer differs from the encrypted key's recipient"},
    {10309, "The certificate's subject differs from the encrypted key's recipient"},
    {10310, "The certificate's serial number differs from the encrypted key's recipient"},
    {10311, "No encrypted document was given"},
    {10312, "The document has no EncryptedData"},
    {10313, "Every EncryptedKey of the document has been visited"},
    {10314, "No session key is set"},
    {10400, "No SOAP document"},
    {10401, "The SOAP document does not parse or has no SOAP Header"},
    {10402, "Unknown signature algorithm selector"},
    {10403, "Unknown canonicalization selector"},
    {10404, "Unknown digest selector"},
    {10405, "Neither a certificate nor a private key was given"},
    {10406, "The chosen signature method is neither RSA nor KCDSA"},
    {10407, "No key name was given"},
    {10408, "Empty HMAC key, or the chosen signature method is not HMAC"},
    {10500, "Unknown or unsupported symmetric algorithm"},
    {10501, "Encryption type must be 1 (content) or 2 (element)"},
    {10502, "Unknown key transport algorithm"},
    {10503, "The key or certificate is empty"},
    {10504, "No session key is set"},
    {10505, "The certificate's issuer differs from the encrypted key's recipient"},
    {10506, "The certificate's subject differs from the encrypted key's recipient"},
    {10507, "The certificate's serial number differs from the encrypted key's recipient"},
    {10509, "The message is neither signed nor encrypted"},
    {10510, "No key name was given"},
    {10511, "The message is encrypted and no session key is set"},
    {11102, "The crypto provider cannot make a key of that type"},
    {11213, "The signature does not verify"},
    {11304, "Unknown key transport algorithm in the EncryptedKey"},
    {12011, "Unknown error"},
};

}  // namespace

namespace vqxml {

const char* standardErrorText(int code) {
    auto it = std::lower_bound(std::begin(kTexts), std::end(kTexts), code,
                               [](const CodeText& entry, int c) { return entry.code < c; });
    return it != std::end(kTexts) && it->code == code ? it->text : "Error";
}

}  // namespace vqxml

namespace vqxml {

const char kUnknownErrorText[] = "\xBE\xCB\xBC\xF6" " " "\xBE\xF8\xB4\xC2" " "
                                 "\xBF\xC0\xB7\xF9\xC0\xD4\xB4\xCF\xB4\xD9" ".";
const char kInitFailedText[] = "VQTKXML API " "\xC3\xCA\xB1\xE2\xC8\xAD" " " "\xBD\xC7\xC6\xD0";

}  // namespace vqxml
