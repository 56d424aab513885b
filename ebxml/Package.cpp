#include "ebxml/Package.hpp"

#include <cctype>
#include <cstring>
#include <set>

namespace vqxml::ebxml {

namespace {

std::list<CMimeBody*> leafParts(const CMimeMessage& package) {
    std::list<CMimeBody*> leaves;
    package.GetBodyPartList(leaves);
    return leaves;
}

bool mentionsXml(const char* contentType) {
    if (contentType == nullptr)
        return false;
    for (const char* at = contentType; at[0] != '\0' && at[1] != '\0' && at[2] != '\0'; ++at)
        if (vqmime::memicmp(at, "xml", 3) == 0)
            return true;
    return false;
}

bool countsAsXml(const CMimeBody& part) {
    const unsigned char* content = part.GetContent();
    return mentionsXml(part.GetContentType()) && part.GetTextLen() > 0 && content[0] == '<';
}

}  // namespace

std::string identifierOf(const CMimeBody& part) {
    const char* value = part.GetContentId();
    if (value == nullptr)
        return std::string();
    std::string id(value);
    const auto isSpace = [](char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; };
    while (!id.empty() && isSpace(id.back()))
        id.pop_back();
    size_t start = 0;
    while (start < id.size() && isSpace(id[start]))
        ++start;
    id.erase(0, start);
    if (id.size() >= 2 && id.front() == '<' && id.back() == '>')
        return id.substr(1, id.size() - 2);
    return id;
}

CMimeBody& envelopeOf(const CMimeMessage& package) {
    std::list<CMimeBody*> leaves = leafParts(package);
    if (leaves.empty())
        throw PackageError{"The package has no part"};
    return *leaves.front();
}

std::vector<Attachment> attachmentsOf(const CMimeMessage& package) {
    std::list<CMimeBody*> leaves = leafParts(package);
    if (leaves.empty())
        throw PackageError{"The package has no part"};
    leaves.pop_front();
    std::vector<Attachment> attachments;
    std::set<std::string> seen;
    for (const CMimeBody* part : leaves) {
        Attachment a{identifierOf(*part), part, countsAsXml(*part)};
        if (a.identifier.size() > kMaxIdentifierBytes)
            throw PackageError{"An attachment's Content-ID is longer than 255 bytes"};
        if (!seen.insert(a.identifier).second)
            throw PackageError{"Two attachments have the Content-ID <" + a.identifier + ">"};
        attachments.push_back(a);
    }
    return attachments;
}

}  // namespace vqxml::ebxml
