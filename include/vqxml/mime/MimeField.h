/*
 * One header field: a name, a value and the charset of the value.
 *
 * The value is held decoded: encoded words are decoded when the field is
 * loaded and written again (in the field's charset, else the default charset of
 * CMimeEnvironment) when it is stored. With automatic folding off, a folded
 * value keeps its line breaks and the white space after them.
 */
#ifndef VQXML_MIME_MIMEFIELD_H
#define VQXML_MIME_MIMEFIELD_H

#include <vqxml/vqxml.h>

#include <string>

class VQXML_EXPORT CMimeField {
public:
    void SetName(const char* name) { m_strName = name ? name : ""; }
    const char* GetName() const { return m_strName.c_str(); }
    /* The whole value, parameters included. */
    void SetValue(const char* value) { m_strValue = value ? value : ""; }
    const char* GetValue() const { return m_strValue.c_str(); }
    /* The value up to its first ";" without trailing white space. */
    void GetValue(std::string& out) const;
    void SetCharset(const char* charset) { m_strCharset = charset ? charset : ""; }
    const char* GetCharset() const { return m_strCharset.c_str(); }

    /* Locates the value of parameter name (case ignored): pos is its offset in
     * the value and len its length, quotes included. */
    bool FindParameter(const char* name, int& pos, int& len) const;
    /* The parameter's value without its double quotes; false and an empty out
     * when the value has no such parameter. */
    bool GetParameter(const char* name, std::string& out) const;
    /* Sets or appends the parameter, always in double quotes. */
    void SetParameter(const char* name, const char* value);

    /* lineBreak is "\r\n" or "\n"; lineStart its first character. Returns the
     * bytes of the field's lines with their line breaks, or 0 when no complete
     * field (one ending with a line break) starts the data. */
    int Load(const char* data, int len, const char* lineBreak, char lineStart);
    /* Returns the bytes written, or 0 when the name and the fixed parts do not
     * fit. A value that does not fit is cut short. */
    int Store(char* out, int maxLen, const char* lineBreak) const;
    /* An upper bound of what Store writes. */
    int GetLength(const char* lineBreak) const;
    void Clear();

private:
    std::string m_strName;
    std::string m_strValue;
    std::string m_strCharset;
};

#endif
