// Every hostile piece of tests/HostileMessages.hpp, put wherever it can stand,
// gets the same status from every entry point, without a crash, and nothing
// opens the local file or connects to the address a piece names.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <arpa/inet.h>
#include <poll.h>
#include <netinet/in.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <unistd.h>

#include "HostileMessages.hpp"
#include "ScopedHandle.hpp"
#include "ebxml/EbXmlFixture.hpp"

namespace {

using apitest::chars;
using apitest::errorText;
using apitest::size;
using hostile::Piece;
using hostile::Spot;

// A port on the loopback address that counts connections and closes them at
// once, so that a client that got through fails rather than waits.
class Listener {
public:
    Listener() : m_fd(socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        EXPECT_EQ(bind(m_fd, reinterpret_cast<sockaddr*>(&address), length), 0);
        EXPECT_EQ(listen(m_fd, 64), 0);
        getsockname(m_fd, reinterpret_cast<sockaddr*>(&address), &length);
        m_url = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/";
        m_server = std::thread([this] {
            while (!m_stop) {
                pollfd waiting{m_fd, POLLIN, 0};
                if (poll(&waiting, 1, 20) > 0 && (waiting.revents & POLLIN) != 0) {
                    ++m_connections;
                    close(accept(m_fd, nullptr, nullptr));
                }
            }
        });
    }
    ~Listener() {
        m_stop = true;
        m_server.join();
        close(m_fd);
    }
    const std::string& url() const { return m_url; }
    int connections() const { return m_connections; }

private:
    int m_fd;
    std::string m_url;
    std::atomic<bool> m_stop{false};
    std::atomic<int> m_connections{0};
    std::thread m_server;
};

// A file that reports whether anything opened it.
class WatchedFile {
public:
    WatchedFile() : m_path(testfiles::scratch("watched.xml")) {
        testfiles::write(m_path, "<ds:KeyName xmlns:ds=\"http://www.w3.org/2000/09/xmldsig#\">file</ds:KeyName>");
        m_fd = inotify_init1(IN_NONBLOCK);
        EXPECT_GE(inotify_add_watch(m_fd, m_path.c_str(), IN_OPEN | IN_ACCESS), 0);
    }
    ~WatchedFile() {
        close(m_fd);
        std::remove(m_path.c_str());
    }
    const std::string& path() const { return m_path; }
    bool opened() const {
        char events[4096];
        return read(m_fd, events, sizeof events) > 0;
    }

private:
    std::string m_path;
    int m_fd;
};

const char kNamespaces[] =
    " xmlns:ds=\"http://www.w3.org/2000/09/xmldsig#\" xmlns:xenc=\"http://www.w3.org/2001/04/xmlenc#\""
    " xmlns:wsu=\"http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-wssecurity-utility-1.0.xsd\"";

const char kCipherData[] =
    "<xenc:CipherData><xenc:CipherValue>AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA</xenc:CipherValue></xenc:CipherData>";

std::string at(const Piece& p, Spot spot, const std::string& otherwise) {
    return p.spot == spot ? p.text : otherwise;
}

std::string keyInfo(const Piece& p) {
    return "<ds:KeyInfo>" + at(p, Spot::KeyInfo, at(p, Spot::SignerKeyInfo, "<ds:KeyName>k</ds:KeyName>")) +
           "</ds:KeyInfo>";
}

// The KeyInfo and CipherData of an encrypted element under test.
std::string keyAndCipherData(const Piece& p) {
    return keyInfo(p) +
           (p.spot == Spot::CipherData ? "<xenc:CipherData>" + p.text + "</xenc:CipherData>" : kCipherData);
}

std::string signature(const Piece& p, const std::string& uri) {
    return "<ds:Signature><ds:SignedInfo>"
           "<ds:CanonicalizationMethod Algorithm=\"http://www.w3.org/2001/10/xml-exc-c14n#\"/>"
           "<ds:SignatureMethod Algorithm=\"http://www.w3.org/2001/04/xmldsig-more#rsa-sha256\"/>"
           "<ds:Reference URI=\"" + uri + "\"><ds:Transforms>" +
           at(p, Spot::ReferenceTransforms, hostile::transform("http://www.w3.org/2001/10/xml-exc-c14n#")) +
           "</ds:Transforms><ds:DigestMethod Algorithm=\"http://www.w3.org/2001/04/xmlenc#sha256\"/>"
           "<ds:DigestValue>AA==</ds:DigestValue></ds:Reference>" + at(p, Spot::References, "") + "</ds:SignedInfo>"
           "<ds:SignatureValue>AA==</ds:SignatureValue>" + keyInfo(p) + "</ds:Signature>";
}

std::string encryptedData(const std::string& inside) {
    return "<xenc:EncryptedData Id=\"d\" Type=\"http://www.w3.org/2001/04/xmlenc#Element\">"
           "<xenc:EncryptionMethod Algorithm=\"http://www.w3.org/2001/04/xmlenc#tripledes-cbc\"/>" + inside +
           "</xenc:EncryptedData>";
}

// A key for the EncryptedData "d", which follows it.
std::string encryptedKey(const Piece& p) {
    return "<xenc:EncryptedKey Id=\"ek\">"
           "<xenc:EncryptionMethod Algorithm=\"http://www.w3.org/2001/04/xmlenc#rsa-1_5\"/>" +
           keyAndCipherData(p) +
           "<xenc:ReferenceList><xenc:DataReference URI=\"#d\"/></xenc:ReferenceList></xenc:EncryptedKey>";
}

std::string plain(const Piece& p, const std::string& content) {
    return p.prolog + "<r" + kNamespaces + ">" + p.beside + content + "</r>";
}

std::string soap(const Piece& p, const std::string& header, const std::string& body) {
    return p.prolog + "<soap:Envelope xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\"" + kNamespaces +
           "><soap:Header><wsse:Security xmlns:wsse=\"http://docs.oasis-open.org/wss/2004/01/"
           "oasis-200401-wss-wssecurity-secext-1.0.xsd\">" + header + "</wsse:Security></soap:Header>"
           "<soap:Body wsu:Id=\"body\">" + p.beside + body + "</soap:Body></soap:Envelope>";
}

int firstFailure(const std::vector<std::function<int()>>& steps) {
    for (const auto& step : steps)
        if (const int rc = step())
            return rc;
    return 0;
}

int readSignature(void* h, std::string& d) {
    return firstFailure({[&] { return VQTK_XMLDSIG_SetSignXMLDocument(h, chars(d), size(d)); },
                         [&] { return VQTK_XMLDSIG_Verify(h); }});
}

int readPackage(void* h, std::string& d) {
    return firstFailure({[&] { return VQTK_EBXML_SetSOAPSecXMLDocument(h, chars(d), size(d)); },
                         [&] { return VQTK_EBXML_Verify(h); }});
}

int readSoap(void* h, std::string& d) {
    int flag = 0;
    return firstFailure({[&] { return VQTK_SOAPSEC_SetSOAPSecXMLDocument(h, chars(d), size(d)); },
                         [&] { return VQTK_SOAPSEC_GetSignKeyInfo(h, &flag); },
                         [&] { return VQTK_SOAPSEC_GetEncKeyInfo(h, &flag); },
                         [&] { return VQTK_SOAPSEC_ProcessSOAP(h); }});
}

int readEncrypted(void* h, std::string& d) {
    return firstFailure({[&] { return VQTK_XMLENC_SetEncXMLDocument(h, chars(d), size(d)); },
                         [&] { return VQTK_XMLENC_GetEncKeyInfo(h); }, [&] { return VQTK_XMLENC_Decrypt(h); }});
}

struct EntryPoint {
    const char* name;
    bool signature;     // takes pieces for References, else pieces for CipherData
    bool encryptedKey;  // the element under test is an EncryptedKey
    std::string (*document)(const Piece&);
    int (*read)(void*, std::string&);
};

bool stands(const Piece& p, const EntryPoint& e) {
    switch (p.spot) {
    case Spot::KeyInfo:
        return true;
    case Spot::SignerKeyInfo:
        return !e.encryptedKey;
    case Spot::CipherData:
        return !e.signature;
    default:
        return e.signature;
    }
}

const EntryPoint kEntryPoints[] = {
    {"XMLDSIG", true, false, [](const Piece& p) { return plain(p, signature(p, "")); }, readSignature},
    {"EBXML", true, false,
     [](const Piece& p) {
         return ebxmltest::makePackage(
             {{"text/xml; charset=UTF-8", "<soap-part@example.kr>", plain(p, signature(p, "")), ""}});
     },
     readPackage},
    {"SOAPSEC signature", true, false,
     [](const Piece& p) { return soap(p, signature(p, "#body"), "<m xmlns=\"urn:m\"/>"); }, readSoap},
    {"SOAPSEC EncryptedKey", false, true,
     [](const Piece& p) { return soap(p, encryptedKey(p), encryptedData(kCipherData)); }, readSoap},
    {"SOAPSEC EncryptedData", false, false,
     [](const Piece& p) {
         return soap(p, "<xenc:ReferenceList><xenc:DataReference URI=\"#d\"/></xenc:ReferenceList>",
                     encryptedData(keyAndCipherData(p)));
     },
     readSoap},
    {"XMLENC EncryptedData", false, false,
     [](const Piece& p) { return plain(p, encryptedData(keyAndCipherData(p))); }, readEncrypted},
    {"XMLENC EncryptedKey", false, true,
     [](const Piece& p) { return plain(p, encryptedKey(p) + encryptedData(kCipherData)); },
     readEncrypted},
};

TEST(HostileMessages, EveryEntryPointRefusesEachPieceAlikeWithoutReachingOut) {
    const Listener listener;
    const WatchedFile file;
    for (const Piece& p : hostile::pieces({file.path(), listener.url()}))
        for (const EntryPoint& e : kEntryPoints) {
            if (!stands(p, e))
                continue;
            std::string document = e.document(p);
            ScopedHandle h;
            EXPECT_EQ(e.read(h, document), p.status) << e.name << ", " << p.name << ": " << errorText(h);
            EXPECT_NE(errorText(h).find(p.says), std::string::npos) << e.name << ", " << p.name << ": " << errorText(h);
        }
    EXPECT_EQ(listener.connections(), 0);
    EXPECT_FALSE(file.opened());
}

}  // namespace
