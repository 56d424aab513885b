/*
 * Encoded words (RFC 2047) and the field coders that turn a header field value
 * into its transmitted form and back.
 *
 * Choices of this library:
 * - Reading Q-encoded words, "_" stands for a space as RFC 2047 says ("=5F" is
 *   an underscore). The Q writer never writes "_": it encodes it.
 * - A charset name longer than MAX_CHARSET_LEN (40, the longest name RFC 2978
 *   allows) cannot be carried in a word of at most 75 characters; such a charset
 *   is treated as none: the text is copied unchanged.
 * - Decoding is linear in the input, whatever "=?" and "?" sequences it holds.
 */
#ifndef VQXML_MIME_MIMEFIELDCODE_H
#define VQXML_MIME_MIMEFIELDCODE_H

#include <vqxml/mime/MimeCode.h>

#include <string>

/* One or more encoded words "=?charset?B?...?=" or "=?charset?Q?...?=", each at
 * most 75 characters, separated by one space. */
class VQXML_EXPORT CMimeEncodedWord : public CMimeCodeBase {
public:
    enum { MAX_CHARSET_LEN = 40 };

    int GetEncodeLength() const override;
    int Encode(unsigned char* out, int maxLen) const override;
    /* Decodes every encoded word of the input and copies the text between them
     * (white space between two words is dropped). The first word sets the
     * charset and the encoding letter. */
    int Decode(unsigned char* out, int maxLen) override;

    int BEncode(unsigned char* out, int maxLen) const;
    int QEncode(unsigned char* out, int maxLen) const;

    /* 'B' or 'b' selects base64; any other letter quoted-printable. */
    void SetEncoding(int letter, const char* charset) {
        m_nEncoding = letter;
        m_strCharset = charset ? charset : "";
    }
    int GetEncoding() const { return m_nEncoding; }
    const char* GetCharset() const { return m_strCharset.c_str(); }

protected:
    bool IsBase64() const { return m_nEncoding == 'B' || m_nEncoding == 'b'; }
    bool UsableCharset() const {
        return !m_strCharset.empty() && m_strCharset.size() <= MAX_CHARSET_LEN;
    }

    int m_nEncoding = 'Q';
    std::string m_strCharset;
};

/* The coder of fields without a registered one: encoded words for symbols with
 * bytes of 128 and above when a charset is known (its own, else the default of
 * CMimeEnvironment); with neither a charset nor automatic folding the value is
 * copied unchanged. */
class VQXML_EXPORT CFieldCodeBase : public CMimeCodeBase {
public:
    int GetEncodeLength() const override;
    int Encode(unsigned char* out, int maxLen) const override;
    /* Decodes encoded words; the charset becomes the one they name. With
     * automatic folding on, the value is unfolded as well. */
    int Decode(unsigned char* out, int maxLen) override;
    /* Characters after which encoding starts a new line (CR LF TAB). */
    virtual bool IsFoldingChar(char c) const;
    /* The character that ends the bracketed part a value starts in: 0 for none. */
    virtual int GetDelimeter() const;

    void SetCharset(const char* charset) { m_strCharset = charset ? charset : ""; }
    const char* GetCharset() const { return m_strCharset.c_str(); }

    /* Length of the next symbol of [p, p+len). closing carries from call to call
     * the character that ends the current comment, angle address or quoted
     * string (0 for none); nonAscii receives the count of bytes >= 128. */
    int FindSymbol(const char* p, int len, int& closing, int& nonAscii) const;
    /* Each CR LF and the space-class run after it become one space. */
    void UnfoldField(std::string& s) const;

protected:
    std::string m_strCharset;

private:
    const std::string& EffectiveCharset() const;
    bool CopiesOnly() const;
};

/* Unstructured text (Subject, Comments, Content-Description): the whole value is
 * one symbol. */
class VQXML_EXPORT CFieldCodeText : public CFieldCodeBase {
public:
    static CFieldCodeBase* CreateObject();
    int GetDelimeter() const override;
};

/* Address lists: each address after "," or ":" goes on a new line. */
class VQXML_EXPORT CFieldCodeAddress : public CFieldCodeBase {
public:
    static CFieldCodeBase* CreateObject();
    bool IsFoldingChar(char c) const override;
};

/* Values with parameters: each parameter after ";" goes on a new line. */
class VQXML_EXPORT CFieldCodeParameter : public CFieldCodeBase {
public:
    static CFieldCodeBase* CreateObject();
    bool IsFoldingChar(char c) const override;
};

#endif
