/*
 * The tree of a MIME entity: CMimeHeader (ordered header fields), CMimeBody (a
 * header, its decoded content and, for multipart entities, child bodies) and
 * CMimeMessage (a body that is a whole message, with a Date field).
 *
 * Results: loads return the bytes consumed, 0 for an incomplete header, and a
 * negative value for an error (a part that failed, nesting deeper than
 * MAX_NESTING_DEPTH); stores return the bytes written, 0 when the header does
 * not fit, -1 for a multipart body without a boundary. Nothing throws on bad
 * input.
 *
 * Line breaks: mode 0 (not yet known) and 1 write and expect CR LF, mode 2 LF
 * alone. Load detects the mode from the data (CR LF if the data holds it
 * anywhere) unless SetLineBreakMode pinned one. SetLineBreakMode acts on that
 * header or body only, not on its children.
 *
 * Load replaces whatever the object held (fields, content, parts), so the data
 * must not lie in this body's own content or in its parts. A body
 * nested more than MAX_NESTING_DEPTH (32) multipart levels below the body that
 * Load was called on fails the load (negative result), which bounds recursion.
 *
 * Threads: an object is used by one thread at a time. SetBoundary(null) draws
 * from the C library's rand() and a process-wide counter, unguarded.
 */
#ifndef VQXML_MIME_MIMEENTITY_H
#define VQXML_MIME_MIMEENTITY_H

#include <vqxml/mime/MimeField.h>

#include <list>
#include <string>

class CMimeMessage;

class VQXML_EXPORT CMimeHeader {
public:
    enum MediaType {
        MEDIA_TEXT,
        MEDIA_IMAGE,
        MEDIA_AUDIO,
        MEDIA_VIDEO,
        MEDIA_APPLICATION,
        MEDIA_MULTIPART,
        MEDIA_MESSAGE,
        MEDIA_UNKNOWN
    };
    struct MediaTypeCvt {
        int nMediaType;
        const char* pszSubType;
        const char* pszFileExt;
    };
    typedef std::list<CMimeField> CFieldList;

    /* Main-type names by media type number, null-terminated ("vedio" is the
     * historical spelling of this table). */
    static const char* const m_TypeTable[];
    /* (media type, subtype, file extension), ended by MEDIA_UNKNOWN. */
    static const MediaTypeCvt m_TypeCvtTable[];

    CMimeHeader() = default;
    CMimeHeader(const CMimeHeader&) = default;
    CMimeHeader& operator=(const CMimeHeader&) = default;
    virtual ~CMimeHeader();
    /* Removes all fields; the line-break mode stays. */
    virtual void Clear();
    /* An upper bound of what Store writes. */
    virtual int GetLength() const;
    /* The fields, then the empty line. */
    virtual int Store(char* out, int maxLen) const;
    /* Fields up to the empty line (or the end of the data or a NUL byte);
     * returns the offset after the empty line, or 0 when a field is incomplete. */
    virtual int Load(const char* data, int len);

    CFieldList::iterator FindField(const char* name);
    CFieldList::const_iterator FindField(const char* name) const;
    CFieldList& GetFieldList() { return m_listFields; }
    const CFieldList& GetFieldList() const { return m_listFields; }
    /* Replaces the first field of that name, or appends one. */
    void SetFieldValue(const char* name, const char* value, const char* charset = nullptr);
    /* The whole value of the first field of that name, or null. */
    const char* GetFieldValue(const char* name) const;
    const char* GetFieldCharset(const char* name) const;
    /* A parameter of a field; false when the field or the parameter is missing. */
    bool SetParameter(const char* fieldName, const char* attr, const char* value);
    bool GetParameter(const char* fieldName, const char* attr, std::string& out) const;

    void SetContentType(const char* value, const char* charset = nullptr) {
        SetFieldValue("Content-Type", value, charset);
    }
    const char* GetContentType() const { return GetFieldValue("Content-Type"); }
    void SetContentId(const char* value) { SetFieldValue("Content-ID", value); }
    const char* GetContentId() const { return GetFieldValue("Content-ID"); }
    void SetTransferEncoding(const char* value) {
        SetFieldValue("Content-Transfer-Encoding", value);
    }
    const char* GetTransferEncoding() const { return GetFieldValue("Content-Transfer-Encoding"); }
    void SetDescription(const char* value, const char* charset = nullptr) {
        SetFieldValue("Content-Description", value, charset);
    }
    const char* GetDescription() const { return GetFieldValue("Content-Description"); }
    void SetDisposition(const char* value) { SetFieldValue("Content-Disposition", value); }
    const char* GetDisposition() const { return GetFieldValue("Content-Disposition"); }

    /* A MediaType: the first main type that prefixes the Content-Type value
     * (case ignored); MEDIA_TEXT without Content-Type, MEDIA_UNKNOWN for others. */
    int GetMediaType() const;
    /* Content-Type up to its first "/" ("text" without Content-Type). */
    std::string GetMainType() const;
    /* Content-Type without parameters after its first "/" ("plain" without
     * Content-Type). */
    std::string GetSubType() const;
    /* Charset parameter of Content-Type; adds "text/plain" if there is none. */
    void SetCharset(const char* charset);
    std::string GetCharset() const;
    /* Name parameter of Content-Type; without Content-Type one is added with
     * the media type of the name's extension (application/octet-stream when
     * unknown). */
    void SetName(const char* name);
    std::string GetName() const;
    /* Boundary parameter of Content-Type (made multipart/mixed unless already
     * multipart). A null boundary generates "__=_Part_Boundary_%03d_%06d.%06d"
     * from a counter running 1 to 9 and two rand() values. */
    void SetBoundary(const char* boundary = nullptr);
    std::string GetBoundary() const;

    int GetLineBreakMode() const { return m_nLineBreakMode; }
    /* Pins the mode (0 unpins: Load detects again). */
    void SetLineBreakMode(int mode) {
        m_nLineBreakMode = mode;
        m_bModePinned = mode != 0;
    }
    /* "\r\n" for modes 0 and 1, "\n" otherwise. */
    const char* GetLineBreak() const { return m_nLineBreakMode <= 1 ? "\r\n" : "\n"; }

protected:
    /* The mode from the data (unless pinned): CR LF anywhere gives 1, else LF
     * anywhere 2, else it stays unknown. */
    void DetectLineBreakMode(const char* data, int len);

    CFieldList m_listFields;
    int m_nLineBreakMode = 0;

private:
    bool m_bModePinned = false;
};

class VQXML_EXPORT CMimeBody : public CMimeHeader {
public:
    typedef std::list<CMimeBody*> CBodyList;
    enum { MAX_NESTING_DEPTH = 32 };

    CMimeBody();
    CMimeBody(const CMimeBody&) = delete;
    CMimeBody& operator=(const CMimeBody&) = delete;
    ~CMimeBody() override;
    /* Deletes the children, frees the content, removes the fields. */
    void Clear() override;
    int GetLength() const override;
    /* Header, encoded content, then for each child its delimiter line and the
     * child, then the closing delimiter line. */
    int Store(char* out, int maxLen) const override;
    /* Header, content decoded by its Content-Transfer-Encoding, and for a
     * multipart body its parts. Data starting with "-" is a multipart/related
     * body whose header travels elsewhere: its first line names the boundary. */
    int Load(const char* data, int len) override;

    /* Copies len bytes (len 0: up to the NUL of text). Returns the length, or
     * -1 when memory runs out or len is negative. */
    int SetText(const char* text, int len = 0);
    int GetText(std::string& out) const;
    /* Copies at most maxLen bytes; returns the count. */
    int GetText(char* out, int maxLen) const;
    int GetText(unsigned char* out, int maxLen) const;
    int GetTextLen() const { return m_nTextLen; }
    /* The decoded content, NUL-terminated (null when empty). For a multipart
     * body it is the preamble. */
    const unsigned char* GetContent() const { return m_pText; }

    /* Content from a file; the name parameter becomes the file's name after its
     * last "/" or "\\". 1 on success, 0 on failure. */
    int ReadFromFile(const char* path);
    /* Content into a file created with permissions 0600 (an existing file is
     * truncated). An empty content writes nothing. 1 on success, 0 on failure. */
    int WriteToFile(const char* path) const;

    /* The content becomes the stored message; Content-Type becomes
     * message/rfc822 unless it is already message/... 1, or 0 without memory. */
    int SetMessage(const CMimeMessage* msg);
    /* Loads msg from the content; returns the load's result. */
    int GetMessage(CMimeMessage* msg) const;

    /* A new child (its class by media type from CMimeEnvironment), inserted
     * before where, or appended when where is null or not a child. Owned by
     * this body. */
    CMimeBody* CreatePart(const char* mediaType = nullptr, CMimeBody* where = nullptr);
    /* Removes and deletes the child (nothing if it is not a child). */
    void ErasePart(CMimeBody* part);
    void DeleteAll();
    /* The direct children in order. */
    const CBodyList& GetPartList() const { return m_listBodies; }
    int GetPartCount() const { return static_cast<int>(m_listBodies.size()); }
    /* The part cursor: the first child (or null), then each next one. */
    CMimeBody* FindFirstPart();
    CMimeBody* FindNextPart();

    /* Multipart: the leaf bodies below it, depth first; otherwise the body
     * itself. Appends to out; returns the count appended. */
    int GetBodyPartList(CBodyList& out) const;
    /* As GetBodyPartList, keeping leaves whose Content-Type has a name. */
    int GetAttachmentList(CBodyList& out) const;

protected:
    static unsigned char* NewContentBuffer(int len);
    /* Takes a buffer of NewContentBuffer holding len bytes as the content. */
    void AdoptContent(unsigned char* buffer, int len);
    void FreeContent();
    /* The parts from the delimiter at pos on; returns the bytes consumed. */
    int LoadParts(const char* data, int len, int pos, const std::string& delimiter);
    int StoreParts(char* out, int maxLen, int written) const;

    unsigned char* m_pText;
    int m_nTextLen;
    CBodyList m_listBodies;
    CBodyList::iterator m_itFind;
};

class VQXML_EXPORT CMimeMessage : public CMimeBody {
public:
    CMimeMessage() = default;
    ~CMimeMessage() override;

    /* Date field from the current local time. */
    void SetDate();
    /* Date field "Sun, 1 Mar 2009 00:00:00 +0900" from a local time (month 1 to
     * 12), normalised by mktime; an impossible time leaves the message as it is. */
    void SetDate(int year, int month, int day, int hour, int minute, int second);
    const char* GetDate() const { return GetFieldValue("Date"); }
    void SetVersion(const char* version = "1.0") { SetFieldValue("MIME-Version", version); }
};

#endif
