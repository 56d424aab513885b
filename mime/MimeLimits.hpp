// Saturating arithmetic for output bounds: a bound is an int, but the sums that
// make it are taken in 64 bits so that huge inputs clamp instead of overflowing.
#ifndef VQXML_MIME_MIMELIMITS_HPP
#define VQXML_MIME_MIMELIMITS_HPP

#include <climits>

namespace vqmime {

inline int ClampToInt(long long v) {
    if (v > INT_MAX)
        return INT_MAX;
    return v < 0 ? 0 : static_cast<int>(v);
}

}  // namespace vqmime

#endif
