// How an ebXML package is read: its first leaf part is the SOAP envelope, every
// further leaf part (depth first, as the MIME model lists them) an attachment.
//
// Choices of ours where packages leave room:
// - The identifier is what a Content-ID field holds between its angle brackets
//   (RFC 2392: "cid:" plus the identifier, percent-decoded, names the part),
//   with white space allowed only outside the brackets; a value without brackets
//   is taken as it stands, and a part without Content-ID has the empty identifier.
// - A package another reader could take differently is unusable (PackageError):
//   a part with two Content-ID fields, a Content-ID with white space, a control
//   character or an unmatched bracket in its identifier, two attachments whose identifiers are equal
//   or differ only in ASCII case (readers that fold case would take one for the
//   other), and an identifier over 255 bytes, the most a "cid:" reference of
//   this interface carries.
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

// The identifier a part's Content-ID gives; throws PackageError as above.
std::string identifierOf(const CMimeBody& part);

// The "cid:" URI of an identifier, percent-encoding what a URI cannot carry.
std::string cidURI(const std::string& identifier);

}  // namespace vqxml::ebxml

#endif
