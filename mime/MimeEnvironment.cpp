#include <vqxml/mime/MimeEnvironment.h>

#include <vqxml/mime/MimeCode.h>
#include <vqxml/mime/MimeEntity.h>
#include <vqxml/mime/MimeFieldCode.h>
#include <vqxml/mime/MimeText.h>

namespace {

template <typename F>
void Register(std::list<std::pair<const char*, F>>& table, const char* name, F factory) {
    if (!name)
        return;
    table.remove_if([name](const std::pair<const char*, F>& entry) {
        return vqmime::stricmp(entry.first, name) == 0;
    });
    if (factory)
        table.emplace_front(name, factory);
}

template <typename F>
F Lookup(const std::list<std::pair<const char*, F>>& table, const char* name) {
    for (const auto& entry : table)
        if (vqmime::stricmp(entry.first, name) == 0)
            return entry.second;
    return nullptr;
}

// The registered factory's object, or a new Fallback when none is registered
// (or the factory gives nothing).
template <typename Fallback, typename F>
auto Create(const std::list<std::pair<const char*, F>>& table, const char* name) -> decltype(F()()) {
    F factory = name ? Lookup(table, name) : nullptr;
    auto* made = factory ? factory() : nullptr;
    return made ? made : new Fallback;
}

}  // namespace

// Defined in this order so that the tables exist before m_globalMgr fills them.
CMimeEnvironment::Table<CMimeEnvironment::CoderFactory> CMimeEnvironment::m_listCoders;
CMimeEnvironment::Table<CMimeEnvironment::FieldCoderFactory> CMimeEnvironment::m_listFieldCoders;
CMimeEnvironment::Table<CMimeEnvironment::BodyFactory> CMimeEnvironment::m_listMediaTypes;
std::string CMimeEnvironment::m_strCharset;
bool CMimeEnvironment::m_bAutoFolding = false;
CMimeEnvironment CMimeEnvironment::m_globalMgr;

CMimeEnvironment::CMimeEnvironment() {
    if (this != &m_globalMgr)
        return;
    RegisterCoder("quoted-printable", CMimeCodeQP::CreateObject);
    RegisterCoder("base64", CMimeCodeBase64::CreateObject);
    for (const char* name : {"Subject", "Comments", "Content-Description"})
        RegisterFieldCoder(name, CFieldCodeText::CreateObject);
    for (const char* name : {"From", "To", "Resent-To", "Cc", "Resent-Cc", "Bcc", "Resent-Bcc",
                             "Reply-To", "Resent-Reply-To"})
        RegisterFieldCoder(name, CFieldCodeAddress::CreateObject);
    for (const char* name : {"Content-Type", "Content-Disposition"})
        RegisterFieldCoder(name, CFieldCodeParameter::CreateObject);
}

void CMimeEnvironment::RegisterCoder(const char* name, CoderFactory factory) {
    Register(m_listCoders, name, factory);
}

void CMimeEnvironment::RegisterFieldCoder(const char* name, FieldCoderFactory factory) {
    Register(m_listFieldCoders, name, factory);
}

void CMimeEnvironment::RegisterMediaType(const char* name, BodyFactory factory) {
    Register(m_listMediaTypes, name, factory);
}

CMimeCodeBase* CMimeEnvironment::CreateCoder(const char* name) {
    if (!name || !*name)
        name = "7bit";
    return Create<CMimeCodeBase>(m_listCoders, name);
}

CFieldCodeBase* CMimeEnvironment::CreateFieldCoder(const char* name) {
    return Create<CFieldCodeBase>(m_listFieldCoders, name);
}

CMimeBody* CMimeEnvironment::CreateBodyPart(const char* name) {
    if (!name || !*name)
        name = "text";
    return Create<CMimeBody>(m_listMediaTypes, name);
}

void CMimeEnvironment::SetAutoFolding(bool on) {
    m_bAutoFolding = on;
    CoderFactory factory = on ? CMimeCode7bit::CreateObject : nullptr;
    RegisterCoder("7bit", factory);
    RegisterCoder("8bit", factory);
}
