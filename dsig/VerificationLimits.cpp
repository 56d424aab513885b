#include "dsig/VerificationLimits.hpp"

#include <cctype>
#include <cstring>
#include <string>

#include <xsec/dsig/DSIGReference.hpp>
#include <xsec/dsig/DSIGReferenceList.hpp>
#include <xsec/dsig/DSIGSignature.hpp>
#include <xsec/dsig/DSIGTransformList.hpp>
#include <xsec/dsig/DSIGTransformXPath.hpp>
#include <xsec/framework/XSECException.hpp>

namespace vqxml {

namespace {

[[noreturn]] void refuse(XSECException::XSECExceptionType type, const std::string& why) {
    throw XSECException(type, why.c_str());
}

void checkTransforms(const DSIGTransformList* transforms) {
    if (transforms == nullptr)
        return;
    if (transforms->getSize() > kMaxTransforms)
        refuse(XSECException::TransformError,
               "A Reference has more than " + std::to_string(kMaxTransforms) + " transforms");
    for (DSIGTransformList::size_type i = 0; i < transforms->getSize(); ++i) {
        const DSIGTransform* transform = transforms->item(i);
        if (const auto* xpath = dynamic_cast<const DSIGTransformXPath*>(transform)) {
            const char* why = xpathRefusal(xpath->getExpression());
            if (*why != 0)
                refuse(XSECException::UnsupportedFunction, why);
        }
    }
}

bool nameChar(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_' || c == '.';
}

// What follows the name that starts at text, past any white space.
const char* afterName(const char* text, std::size_t length) {
    const char* after = text + length;
    while (std::isspace(static_cast<unsigned char>(*after)))
        ++after;
    return after;
}

// Whether the name at text is an axis that walks the document, or the id() function.
bool walksTheDocument(const char* text, std::size_t length, bool prefixed) {
    const std::string name(text, length);
    const char* after = afterName(text, length);
    if (name == "id")
        return !prefixed && *after == '(';
    for (const char* axis : {"descendant", "descendant-or-self", "following", "following-sibling", "preceding",
                             "preceding-sibling"})
        if (name == axis)
            return std::strncmp(after, "::", 2) == 0;
    return false;
}

}  // namespace

const char* xpathRefusal(const char* expression) {
    static const char kTooLong[] = "An XPath transform longer than 1024 characters is not run when verifying";
    static const char kWalks[] =
        "An XPath transform that walks the document (//, descendant, following or preceding axes, id()) "
        "is not run when verifying: it would be evaluated for every node";
    if (expression == nullptr)
        return "";
    if (std::strlen(expression) > kMaxXPathLength)
        return kTooLong;
    for (const char* at = expression; *at != 0; ++at) {
        if (*at == '"' || *at == '\'') {  // literals may say anything
            const char* end = std::strchr(at + 1, *at);
            if (end == nullptr)
                return "";  // not an expression; the engine reports it
            at = end;
            continue;
        }
        if (at[0] == '/' && at[1] == '/')
            return kWalks;
        if (!nameChar(*at) || (at > expression && nameChar(at[-1])))
            continue;
        std::size_t length = 0;
        while (nameChar(at[length]))
            ++length;
        // prefix:name is a name, not an axis or a function of the core library
        const bool prefixed = at > expression && at[-1] == ':' && (at - 1 == expression || at[-2] != ':');
        if (walksTheDocument(at, length, prefixed))
            return kWalks;
        at += length - 1;
    }
    return "";
}

void checkVerificationLimits(const DSIGSignature* signature) {
    const DSIGReferenceList* references = signature->getReferenceList();
    if (references == nullptr)
        return;
    if (references->getSize() > kMaxReferences)
        refuse(XSECException::UnsupportedFunction,
               "The signature has more than " + std::to_string(kMaxReferences) + " references");
    for (DSIGReferenceList::size_type i = 0; i < references->getSize(); ++i)
        checkTransforms(references->item(i)->getTransforms());
}

}  // namespace vqxml
