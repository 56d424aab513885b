// How an ebXML package is read: its first leaf part is the SOAP envelope, every
// further leaf part (depth first, as the MIME model lists them) an attachment.
//
// Choices of ours where packages leave room:
// - The identifier is the Content-ID value without surrounding white space and,
//   when it is enclosed in angle brackets, without them; a value that is not so
//   enclosed is taken as it stands, and a part without Content-ID has the empty
//   identifier.
// - An identifier is at most 255 bytes, the most a "cid:" reference of this
//   interface carries; a longer one makes the package unusable (PackageError), as
//   does an identifier that two attachments share, since a "cid:" reference to it
//   would not say which part it means.
// - A package without any leaf part, or whose envelope part is empty, is unusable.
#ifndef VQXML_EBXML_PACKAGE_HPP
#define VQXML_EBXML_PACKAGE_HPP

#include <string>
#include <vector>

#include "vqxml/VQXML_Mime.h"

namespace vqxml::ebxml {

constexpr size_t kMaxIdentifierBytes = 255;

struct Attachment {
    std::string identifier;
    const CMimeBody* part;
    // Canonicalization applies: the Content-Type mentions "xml" (any case) and
    // the content begins with "<".
    bool xml;
};

// A package that cannot be signed or verified as an ebXML message: the reason.
struct PackageError {
    std::string reason;
};

// The envelope part; throws PackageError for a package without leaf parts.
CMimeBody& envelopeOf(const CMimeMessage& package);

// The attachments in order; throws PackageError as described above.
std::vector<Attachment> attachmentsOf(const CMimeMessage& package);

// The identifier a part's Content-ID gives.
std::string identifierOf(const CMimeBody& part);

}  // namespace vqxml::ebxml

#endif
