// A cheap look at what comes before an XML document's first element.
#ifndef VQXML_EBXML_XMLPROLOG_HPP
#define VQXML_EBXML_XMLPROLOG_HPP

namespace vqxml::ebxml {

// True when the bytes are UTF-8 for any XML parser (at most a UTF-8 byte order
// mark, and an XML declaration naming no encoding or UTF-8 or US-ASCII) and only
// white space, comments and processing instructions precede the first element:
// such a document cannot declare a document type, hence no entities. False means
// "cannot tell", never "unsafe".
bool hasPlainProlog(const unsigned char* data, int len);

}  // namespace vqxml::ebxml

#endif
