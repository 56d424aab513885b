/*
 * The process-wide registry of the MIME library: transfer-encoding coders by
 * Content-Transfer-Encoding value, field coders by field name and body classes by
 * media type, plus the default charset and the automatic-folding switch.
 *
 * Names are compared ignoring ASCII case and are not copied: a name must outlive
 * its registration (string literals in practice). No lock guards the registry:
 * change it (Register*, SetAutoFolding, SetDefaultCharset) only while no other
 * thread creates MIME objects. Objects already created are not affected by later
 * changes.
 *
 * The defaults are registered when the library is loaded; MIME objects should
 * not be used from static constructors of other libraries that may run first.
 */
#ifndef VQXML_MIME_MIMEENVIRONMENT_H
#define VQXML_MIME_MIMEENVIRONMENT_H

#include <vqxml/vqxml.h>

#include <list>
#include <string>
#include <utility>

class CMimeCodeBase;
class CFieldCodeBase;
class CMimeBody;

class VQXML_EXPORT CMimeEnvironment {
public:
    typedef CMimeCodeBase* (*CoderFactory)();
    typedef CFieldCodeBase* (*FieldCoderFactory)();
    typedef CMimeBody* (*BodyFactory)();

    CMimeEnvironment();

    /* Remove every registration of the name, then, if factory is not null,
     * register it in front. A null factory thus unregisters. */
    static void RegisterCoder(const char* name, CoderFactory factory);
    static void RegisterFieldCoder(const char* name, FieldCoderFactory factory);
    static void RegisterMediaType(const char* name, BodyFactory factory);

    /* New objects the caller owns and deletes. A null or empty coder name is
     * "7bit", a null or empty media type "text". Unregistered names give the
     * plain copying coder, the plain field coder or a plain CMimeBody. */
    static CMimeCodeBase* CreateCoder(const char* name);
    static CFieldCodeBase* CreateFieldCoder(const char* name);
    static CMimeBody* CreateBodyPart(const char* name);

    /* On: "7bit" and "8bit" get the folding 7bit coder, field values are folded
     * when stored and unfolded when loaded. Off (the default): both copy. */
    static void SetAutoFolding(bool on);
    static bool AutoFolding() { return m_bAutoFolding; }

    /* The charset in which non-ASCII header text is written as encoded words
     * when a field names none. Empty by default (values are written as they
     * are). A null charset empties it. */
    static void SetDefaultCharset(const char* charset) { m_strCharset = charset ? charset : ""; }
    static const std::string& GetDefaultCharset() { return m_strCharset; }

private:
    template <typename F>
    using Table = std::list<std::pair<const char*, F>>;

    static Table<CoderFactory> m_listCoders;
    static Table<FieldCoderFactory> m_listFieldCoders;
    static Table<BodyFactory> m_listMediaTypes;
    static std::string m_strCharset;
    static bool m_bAutoFolding;
    static CMimeEnvironment m_globalMgr;
};

#endif
