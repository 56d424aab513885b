// Base64 of RFC 4648 with padding; written as one line, read with whitespace skipped.
#include <array>

#include "toolkit/ToolkitInternal.hpp"

namespace {

const char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr signed char kSkip = -2;
constexpr signed char kInvalid = -1;

std::array<signed char, 256> decodingTable() {
    std::array<signed char, 256> table;
    table.fill(kInvalid);
    for (int i = 0; i < 64; ++i)
        table[static_cast<unsigned char>(kAlphabet[i])] = static_cast<signed char>(i);
    for (unsigned char c : {' ', '\t', '\r', '\n'})
        table[c] = kSkip;
    return table;
}

vqtk::SecretBytes decode(vqtk::Bytes in) {
    static const std::array<signed char, 256> table = decodingTable();
    vqtk::SecretBytes out;
    out.reserve(in.size / 4 * 3 + 3);
    unsigned quad[4];
    int filled = 0;
    int padding = 0;
    for (std::size_t i = 0; i < in.size; ++i) {
        const unsigned char c = in.data[i];
        if (table[c] == kSkip)
            continue;
        if (c == '=') {
            if (filled < 2 || ++padding > 2)
                vqtk::raise(VQTK_ERR_FORMAT, "Base64 text has a misplaced '='");
            quad[filled++] = 0;
        } else if (table[c] == kInvalid || padding > 0) {
            vqtk::raise(VQTK_ERR_FORMAT, "Base64 text has a character outside the alphabet, or "
                                         "text after its padding, at offset " + std::to_string(i));
        } else {
            quad[filled++] = static_cast<unsigned>(table[c]);
        }
        if (filled == 4) {
            const unsigned v = quad[0] << 18 | quad[1] << 12 | quad[2] << 6 | quad[3];
            const unsigned char bytes[3] = {static_cast<unsigned char>(v >> 16),
                                            static_cast<unsigned char>(v >> 8),
                                            static_cast<unsigned char>(v)};
            out.insert(out.end(), bytes, bytes + 3 - padding);
            filled = 0;
        }
    }
    if (filled != 0)
        vqtk::raise(VQTK_ERR_FORMAT, "Base64 text does not end on a whole group of four characters");
    OPENSSL_cleanse(quad, sizeof quad);
    return out;
}

vqtk::SecretBytes encode(vqtk::Bytes in) {
    vqtk::SecretBytes out;
    out.reserve((in.size + 2) / 3 * 4);
    for (std::size_t i = 0; i < in.size; i += 3) {
        const std::size_t n = std::min<std::size_t>(3, in.size - i);
        unsigned v = static_cast<unsigned>(in.data[i]) << 16;
        if (n > 1)
            v |= static_cast<unsigned>(in.data[i + 1]) << 8;
        if (n > 2)
            v |= in.data[i + 2];
        for (std::size_t k = 0; k < 4; ++k)
            out.push_back(k <= n ? kAlphabet[(v >> (18 - 6 * k)) & 63] : '=');
    }
    return out;
}

// Runs one coding direction from in to out (which may be the same string).
int code(VQTK_Toolkit* handle, const VQTK_BINSTR* in, VQTK_BINSTR* out,
         vqtk::SecretBytes (*direction)(vqtk::Bytes)) {
    return vqtk::guarded(handle, [&] {
        vqtk::require(handle, "The toolkit handle");
        vqtk::require(in, "The input string");
        vqtk::require(out, "The output string");
        const vqtk::SecretBytes result = direction(vqtk::bytesOf(in));
        vqtk::store(out, result.data(), result.size());
        return VQTK_OK;
    });
}

}  // namespace

extern "C" {

int VQTK_BASE64_Decode(VQTK_Toolkit* handle, const VQTK_BINSTR* in, VQTK_BINSTR* out) {
    return code(handle, in, out, decode);
}

int VQTK_BASE64_Encode(VQTK_Toolkit* handle, const VQTK_BINSTR* in, VQTK_BINSTR* out) {
    return code(handle, in, out, encode);
}

}  // extern "C"
