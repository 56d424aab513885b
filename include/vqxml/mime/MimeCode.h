/*
 * Character classes and transfer-encoding coders (RFC 2045): the plain copying
 * coder, 7bit with folding of long lines, quoted-printable and base64.
 *
 * A coder does not own its input and never allocates. Use it in four steps:
 *     coder.SetInput(data, len, encode);
 *     int bound = coder.GetOutputLength();        // an upper bound
 *     std::vector<unsigned char> out(bound);
 *     int written = coder.GetOutput(out.data(), bound);
 * A conversion stops without error when the input is used up or the next piece
 * of output does not fit in maxLen; the count written is returned.
 *
 * Output bounds are computed in 64 bits and saturate at INT_MAX, so inputs near
 * 2 GiB give a clamped bound rather than an overflowed one.
 */
#ifndef VQXML_MIME_MIMECODE_H
#define VQXML_MIME_MIMECODE_H

#include <vqxml/vqxml.h>

/* Class bits of the 128 ASCII codes. Bytes of 128 and above belong to no class:
 * the Is* helpers answer false for them. */
class VQXML_EXPORT CMimeChar {
public:
    enum {
        CONTROL = 1,
        SPACE = 2,
        ALNUM = 4,
        NONE = 8,
        PUNCT = 16,
        SPECIAL = 32,
        HEXDIGIT = 64
    };
    static const unsigned char m_aCharTbl[128];

    static bool Is(unsigned char c, unsigned char classBits) {
        return c < 128 && (m_aCharTbl[c] & classBits) != 0;
    }
    static bool IsControl(unsigned char c) { return Is(c, CONTROL); }
    static bool IsSpace(unsigned char c) { return Is(c, SPACE); }
    static bool IsAlnum(unsigned char c) { return Is(c, ALNUM); }
    static bool IsPunct(unsigned char c) { return Is(c, PUNCT); }
    static bool IsSpecial(unsigned char c) { return Is(c, SPECIAL); }
    static bool IsHexDigit(unsigned char c) { return Is(c, HEXDIGIT); }
    static bool IsNonAscii(unsigned char c) { return c >= 128; }
};

/* The plain coder: Encode and Decode copy the input unchanged. Base of every
 * coder, including the field coders; safe to delete through this type. */
class VQXML_EXPORT CMimeCodeBase {
public:
    CMimeCodeBase() = default;
    CMimeCodeBase(const CMimeCodeBase&) = default;
    CMimeCodeBase& operator=(const CMimeCodeBase&) = default;

    virtual int GetEncodeLength() const;
    virtual int GetDecodeLength() const;
    virtual int Encode(unsigned char* out, int maxLen) const;
    virtual int Decode(unsigned char* out, int maxLen);
    virtual ~CMimeCodeBase();

    /* The input is not copied: it must outlive the conversion. */
    void SetInput(const void* input, int len, bool encode) {
        m_pInput = static_cast<const unsigned char*>(input);
        m_nInputLen = input && len > 0 ? len : 0;
        m_bEncode = encode;
    }
    /* Base64: true (the default) writes CR LF after every 76 characters and at
     * the end. Quoted-printable: true encodes CR and LF as binary bytes. */
    void SetBreakLines(bool on) { m_bBreakLines = on; }
    bool GetBreakLines() const { return m_bBreakLines; }

    /* The bound and the conversion for the direction given to SetInput. */
    int GetOutputLength() const { return m_bEncode ? GetEncodeLength() : GetDecodeLength(); }
    int GetOutput(unsigned char* out, int maxLen) {
        return m_bEncode ? Encode(out, maxLen) : Decode(out, maxLen);
    }

protected:
    const unsigned char* m_pInput = nullptr;
    int m_nInputLen = 0;
    bool m_bEncode = true;
    bool m_bBreakLines = false;
};

/* 7bit: breaks lines longer than 76 characters before their last space-class
 * character (CR LF inserted); lines without such a character stay whole.
 * Decoding copies. */
class VQXML_EXPORT CMimeCode7bit : public CMimeCodeBase {
public:
    static CMimeCodeBase* CreateObject();
    int GetEncodeLength() const override;
    int Encode(unsigned char* out, int maxLen) const override;
};

/* Quoted-printable, lines of at most 76 characters with soft breaks "=" CR LF.
 * Decoding accepts "=XX" with an upper-case first digit, soft breaks, and drops
 * any other "=". */
class VQXML_EXPORT CMimeCodeQP : public CMimeCodeBase {
public:
    static CMimeCodeBase* CreateObject();
    int GetEncodeLength() const override;
    int Encode(unsigned char* out, int maxLen) const override;
    int Decode(unsigned char* out, int maxLen) override;
};

/* Base64. Decoding skips CR and LF and stops at the first byte outside the
 * alphabet ("=" padding, spaces, anything else). */
class VQXML_EXPORT CMimeCodeBase64 : public CMimeCodeBase {
public:
    CMimeCodeBase64() { m_bBreakLines = true; }
    static CMimeCodeBase* CreateObject();
    int GetEncodeLength() const override;
    int GetDecodeLength() const override;
    int Encode(unsigned char* out, int maxLen) const override;
    int Decode(unsigned char* out, int maxLen) override;
};

#endif
