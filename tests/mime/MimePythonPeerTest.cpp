// Interop with Python's standard library (base64, quopri, email): both sides
// encode the same inputs and decode each other's output. Runs where
// /usr/bin/python3 exists; the peer script is mime_peer.py beside this file.
#include "MimeTestSupport.hpp"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <random>

using mimetest::Repeat;
using mimetest::Text;

namespace {

const char kPython[] = "/usr/bin/python3";

class PythonPeer : public ::testing::Test {
protected:
    void SetUp() override {
        if (::access(kPython, X_OK) != 0)
            GTEST_SKIP() << "no " << kPython;
    }

    void Write(const std::string& name, const std::string& data) const { testfiles::write(m_dir(name), data); }
    std::string Read(const std::string& name) const { return testfiles::read(m_dir(name)); }

    void RunPeer(const char* command) const {
        std::string line = std::string(kPython) + " " + VQXML_MIME_PEER_SCRIPT + " " + command + " '" + m_dir("") + "'";
        ASSERT_EQ(std::system(line.c_str()), 0) << line;
    }

    testfiles::ScratchDir m_dir;
};

std::vector<std::string> CodecInputs() {
    std::vector<std::string> inputs = {
        "",
        "a",
        "Hello, world!",
        "tab\tand trailing space \r\nnext line\t\r\n",
        "equals = signs == and =3D literal\r\n",
        std::string(200, 'x') + "\r\n" + Repeat("word ", 60) + "\r\n",
        "\xED\x95\x9C\xEA\xB8\x80 UTF-8 \xC3\xA9t\xC3\xA9\r\n",
        "From the start\r\n.\r\nline with dot\r\n",
    };
    std::mt19937 rng(99);
    for (size_t n : {1, 2, 3, 56, 57, 58, 1000, 4099}) {
        std::string bytes(n, '\0');
        for (char& c : bytes)
            c = static_cast<char>(rng());
        inputs.push_back(bytes);
    }
    return inputs;
}

bool IsBinary(const std::string& s) {
    for (size_t i = 0; i < s.size(); ++i) {
        unsigned char c = static_cast<unsigned char>(s[i]);
        bool lineBreak = c == '\r' && i + 1 < s.size() && s[i + 1] == '\n';
        bool afterCr = c == '\n' && i > 0 && s[i - 1] == '\r';
        if ((c < 32 && c != '\t' && !lineBreak && !afterCr) || c == 127)
            return true;
    }
    return false;
}

std::string CrLfToLf(std::string s) {
    std::string out;
    for (size_t i = 0; i < s.size(); ++i)
        if (!(s[i] == '\r' && i + 1 < s.size() && s[i + 1] == '\n'))
            out += s[i];
    return out;
}

}  // namespace

TEST_F(PythonPeer, Base64AndQuotedPrintableDecodeEachOther) {
    std::vector<std::string> inputs = CodecInputs();
    for (size_t i = 0; i < inputs.size(); ++i) {
        Write(std::to_string(i) + ".in", inputs[i]);
        Write(std::to_string(i) + ".our.b64", mimetest::Encode<CMimeCodeBase64>(inputs[i], true));
        Write(std::to_string(i) + ".our.qp", mimetest::Encode<CMimeCodeQP>(inputs[i], IsBinary(inputs[i])));
    }
    RunPeer("codecs");
    for (size_t i = 0; i < inputs.size(); ++i) {
        SCOPED_TRACE(i);
        const std::string n = std::to_string(i);
        EXPECT_EQ(Read(n + ".our.b64.dec"), inputs[i]);
        EXPECT_EQ(Read(n + ".our.qp.dec"), inputs[i]);
        EXPECT_EQ(mimetest::Decode<CMimeCodeBase64>(Read(n + ".py.b64")), inputs[i]);
        EXPECT_EQ(mimetest::Decode<CMimeCodeQP>(Read(n + ".py.qp")), inputs[i]);
        EXPECT_EQ(CrLfToLf(Read(n + ".our.b64")), Read(n + ".py.b64")) << "same 76-character lines";
    }
}

TEST_F(PythonPeer, EncodedWordsDecodeEachOther) {
    const std::vector<std::string> texts = {
        "\xED\x95\x9C\xEA\xB8\x80",
        "Invoice \xEC\xA0\x84\xEC\x9E\x90\xEC\x84\xB8\xEA\xB8\x88\xEA\xB3\x84\xEC\x82\xB0\xEC\x84\x9C for March",
        Repeat("\xED\x95\x9C\xEA\xB8\x80 ", 40),
        "caf\xC3\xA9 under_score? a=b",
        "plain ascii only",
    };
    for (size_t i = 0; i < texts.size(); ++i) {
        CMimeField field;
        field.SetName("Subject");
        field.SetValue(texts[i].c_str());
        field.SetCharset("utf-8");
        std::vector<char> out(field.GetLength("\r\n"));
        std::string line(out.data(), field.Store(out.data(), static_cast<int>(out.size()), "\r\n"));
        Write(std::to_string(i) + ".txt", texts[i]);
        Write(std::to_string(i) + ".our.hdr", line.substr(9, line.size() - 11));
    }
    RunPeer("words");
    for (size_t i = 0; i < texts.size(); ++i) {
        SCOPED_TRACE(i);
        const std::string n = std::to_string(i);
        EXPECT_EQ(Read(n + ".our.hdr.dec"), texts[i]);
        CMimeEncodedWord words;
        EXPECT_EQ(mimetest::Run(words, Read(n + ".py.hdr"), false), texts[i]);
    }
}

TEST_F(PythonPeer, MessagesParseOnBothSides) {
    CMimeMessage ours;
    ours.SetVersion();
    ours.SetFieldValue("Subject", "\xED\x95\x9C\xEA\xB8\x80 package", "utf-8");
    ours.SetContentType("multipart/related; type=\"text/xml\"");
    ours.SetBoundary();
    CMimeBody* soap = ours.CreatePart();
    soap->SetContentType("text/xml; charset=UTF-8");
    soap->SetContentId("<soap@our.example>");
    soap->SetText("<Envelope><Body>\xED\x95\x9C</Body></Envelope>");
    CMimeBody* alternative = ours.CreatePart("multipart");
    alternative->SetContentType("multipart/alternative");
    alternative->SetBoundary();
    CMimeBody* plain = alternative->CreatePart();
    plain->SetContentType("text/plain; charset=UTF-8");
    plain->SetTransferEncoding("quoted-printable");
    plain->SetText((Repeat("long line = ", 20) + "\xED\x95\x9C").c_str());
    CMimeBody* binary = ours.CreatePart();
    binary->SetName("blob.zip");
    binary->SetTransferEncoding("base64");
    binary->SetContentId("<blob@our.example>");
    std::string blob;
    for (int i = 0; i < 3000; ++i)
        blob += static_cast<char>(i * 7);
    binary->SetText(blob.data(), static_cast<int>(blob.size()));
    Write("our.eml", mimetest::Stored(ours));

    RunPeer("message");

    EXPECT_EQ(Read("our.subject"), "\xED\x95\x9C\xEA\xB8\x80 package");
    CMimeBody::CBodyList leaves;
    ours.GetBodyPartList(leaves);
    int i = 0;
    for (const CMimeBody* leaf : leaves) {
        SCOPED_TRACE(i);
        const std::string n = "our/" + std::to_string(i++);
        EXPECT_EQ(Read(n + ".type"), leaf->GetMainType() + "/" + leaf->GetSubType().substr(0, leaf->GetSubType().find(';')));
        EXPECT_EQ(Read(n + ".cid"), leaf->GetContentId() ? leaf->GetContentId() : "");
        EXPECT_EQ(Read(n + ".bin"), Text(*leaf));
    }
    EXPECT_FALSE(std::filesystem::exists(m_dir("our/" + std::to_string(i) + ".bin")));

    CMimeMessage theirs;
    const std::string py = Read("py.eml");
    EXPECT_EQ(mimetest::LoadExact(theirs, py), static_cast<int>(py.size()));
    ASSERT_NE(theirs.GetFieldValue("Subject"), nullptr);
    EXPECT_EQ(std::string(theirs.GetFieldValue("Subject")),
              "\xED\x95\x9C\xEA\xB8\x80 report for the month");
    leaves.clear();
    ASSERT_EQ(theirs.GetBodyPartList(leaves), 3);
    i = 0;
    for (const CMimeBody* leaf : leaves) {
        SCOPED_TRACE(i);
        const std::string n = "py/" + std::to_string(i++);
        EXPECT_EQ(Text(*leaf), Read(n + ".bin"));
        EXPECT_EQ(leaf->GetContentId() ? leaf->GetContentId() : "", Read(n + ".cid"));
    }
    EXPECT_EQ(leaves.back()->GetName(), "data.bin");
}
