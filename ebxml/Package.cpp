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
    int fields = 0;
    for (const CMimeField& field : part.GetFieldList())
        fields += vqmime::stricmp(field.GetName(), "Content-ID") == 0 ? 1 : 0;
    if (fields > 1)
        throw PackageError{"A part has more than one Content-ID field"};
    const char* value = part.GetContentId();
    if (value == nullptr)
        return std::string();
    std::string id(value);
    const auto isSpace = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    while (!id.empty() && isSpace(id.back()))
        id.pop_back();
    size_t start = 0;
    while (start < id.size() && isSpace(id[start]))
        ++start;
    id.erase(0, start);
    if (!id.empty() && (id.front() == '<' || id.back() == '>')) {
        if (id.size() < 3 || id.front() != '<' || id.back() != '>')
            throw PackageError{"A Content-ID opens an angle bracket it does not close"};
        id = id.substr(1, id.size() - 2);
    }
    for (unsigned char c : id)
        if (c <= ' ' || c == 0x7f || c == '<' || c == '>')
            throw PackageError{"A Content-ID holds white space, a control character or a bracket"};
    return id;
}

std::string cidURI(const std::string& identifier) {
    static const char kHex[] = "0123456789ABCDEF";
    std::string uri = "cid:";
    for (unsigned char c : identifier) {
        if (std::isalnum(c) != 0 || std::strchr("-._~!$&'()*+,;=:@/?", c) != nullptr) {
            uri += static_cast<char>(c);
        } else {
            uri += '%';
            uri += kHex[c >> 4];
            uri += kHex[c & 15];
        }
    }
    return uri;
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
    identifierOf(*leaves.front());
    leaves.pop_front();
    std::vector<Attachment> attachments;
    std::set<std::string> seen;
    for (const CMimeBody* part : leaves) {
        Attachment a{identifierOf(*part), part, countsAsXml(*part)};
        if (a.identifier.size() > kMaxIdentifierBytes)
            throw PackageError{"An attachment's Content-ID is longer than 255 bytes"};
        std::string folded = a.identifier;
        for (char& c : folded)
            c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        if (!seen.insert(folded).second)
            throw PackageError{"Two attachments have the Content-ID <" + a.identifier + "> (ASCII case aside)"};
        attachments.push_back(a);
    }
    return attachments;
}

}  // namespace vqxml::ebxml
