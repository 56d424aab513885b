/*
 * ASCII helpers of the MIME library. They live in namespace vqmime so that they
 * never clash with a C library function of the same name.
 */
#ifndef VQXML_MIME_MIMETEXT_H
#define VQXML_MIME_MIMETEXT_H

#include <vqxml/vqxml.h>

namespace vqmime {

/* 0 when a and b are equal ignoring ASCII case. Texts of different lengths give
 * the difference of the lengths (the characters are not looked at); otherwise
 * the result of memicmp over the length. */
VQXML_EXPORT int stricmp(const char* a, const char* b);

/* Compares n bytes after tolower: 0, or the difference of the first differing
 * lower-cased bytes. n of 0 or less gives 0. */
VQXML_EXPORT int memicmp(const char* a, const char* b, int n);

/* The first position in [start, end) at which the whole pattern lies inside the
 * range, or null. Linear in the range (no quadratic worst case). */
VQXML_EXPORT const char* FindString(const char* start, const char* pattern, const char* end);

}  // namespace vqmime

#endif
