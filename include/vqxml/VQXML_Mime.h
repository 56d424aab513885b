/*
 * The MIME library of vqxml: coders (7bit, quoted-printable, base64, RFC 2047
 * encoded words), header fields, and headers, bodies and messages with multipart
 * load and store. It depends on nothing but the C++ standard library and POSIX.
 *
 * Building a package:
 *     CMimeMessage msg;
 *     msg.SetContentType("multipart/related; type=\"text/xml\"");
 *     msg.SetBoundary();
 *     CMimeBody* soap = msg.CreatePart();
 *     soap->SetContentType("text/xml; charset=UTF-8");
 *     soap->SetContentId("<soap-part@example>");
 *     soap->SetText(xml, xmlLen);
 *     std::vector<char> out(msg.GetLength());
 *     out.resize(msg.Store(out.data(), (int)out.size()));
 */
#ifndef VQXML_VQXML_MIME_H
#define VQXML_VQXML_MIME_H

#include <vqxml/mime/MimeText.h>
#include <vqxml/mime/MimeCode.h>
#include <vqxml/mime/MimeFieldCode.h>
#include <vqxml/mime/MimeField.h>
#include <vqxml/mime/MimeEnvironment.h>
#include <vqxml/mime/MimeEntity.h>

#endif
