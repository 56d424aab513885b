// Messages the library secures, processed by Apache WSS4J's own receiver
// (tests/soapsec/wss4j/Wss4jConsumer.java). One test, so that the table costs
// one JVM start (about 3 s) also when ctest runs every test on its own.
#include <functional>
#include <map>
#include <vector>

#include "soapsec/SoapSender.hpp"

using namespace soaptest;

namespace {

// Report lines: the signature or key transport algorithm and the parts of the
// envelope WSS4J found covered.
const std::string kBody = " parts=Body trust-validated=true";
const std::string kBodyContent3des = " parts=Body(content) cipher=http://www.w3.org/2001/04/xmlenc#tripledes-cbc";
const std::string kRsaSha1 = "SIGNATURE verified alg=http://www.w3.org/2000/09/xmldsig#rsa-sha1" + kBody;
const std::string kRsaSha256 = "SIGNATURE verified alg=http://www.w3.org/2001/04/xmldsig-more#rsa-sha256" + kBody;
const std::string kVerified = "SIGNATURE verified alg=";
const std::string kRsa15 = "DECRYPTED transport=http://www.w3.org/2001/04/xmlenc#rsa-1_5" + kBodyContent3des;
const std::string kOaep = "DECRYPTED transport=http://www.w3.org/2001/04/xmlenc#rsa-oaep-mgf1p" + kBodyContent3des;
const std::string kContentCipher = " parts=Body(content) cipher=";
const std::string kXenc = "http://www.w3.org/2001/04/xmlenc#", kXenc11 = "http://www.w3.org/2009/xmlenc11#";

std::string pkiPath(const std::string& name) {
    return testfiles::dataPath("testpki/" + name);
}

// The consumer's keys: the test CA (or ca) as trust anchor, and the certificate
// and key of each recipient named.
std::string consumerKeys(const std::vector<std::string>& recipients, bool knowsSigner,
                         const std::string& ca = pkiPath("ca-rsa.crt.der")) {
    std::string args = "\t--ca\t" + ca;
    for (const std::string& name : recipients)
        args += "\t--pair\t" + pkiPath(name + ".crt.der") + "\t" + pkiPath(name + ".key.der");
    if (knowsSigner)
        args += "\t--cert\t" + pkiPath("ee-rsa.crt.der");
    return args;
}

// The message without its index-th xenc:EncryptedKey (in header order, where the
// last recipient added comes first).
std::string withoutEncryptedKey(std::string message, int index) {
    size_t start = 0;
    for (int i = 0; i <= index && start != std::string::npos; ++i)
        start = message.find(":EncryptedKey ", start + 1);
    const std::string close = ":EncryptedKey>";
    const size_t end = start != std::string::npos ? message.find(close, start) : start;
    if (end == std::string::npos)
        return message;
    start = message.rfind('<', start);
    return message.erase(start, end + close.size() - start);
}

struct Case {
    const char* name;
    std::function<std::string(const Pki&)> make;
    std::string keys;
    std::vector<std::string> report;  // the lines WSS4J must print, in processing order
};

const std::vector<Case>& cases() {
    static const std::vector<Case> all = {
        {"soap11-sign-bst-rsa-sha1", [](const Pki& p) { return sign(kEnvelope, 2, false, p.cert, p.key); },
         consumerKeys({}, false), {kRsaSha1}},
        // Without the test CA as trust anchor WSS4J must not take the token's word.
        {"soap11-sign-bst-untrusted", [](const Pki& p) { return sign(kEnvelope, 2, false, p.cert, p.key); }, "",
         {"REFUSED ", "The security token could not be authenticated or authorized"}},
        {"soap11-sign-bst-rsa-sha256", [](const Pki& p) { return sign(kEnvelope, 5, false, p.cert, p.key); },
         consumerKeys({}, false), {kRsaSha256}},
        // The XML Signature 1.1 algorithms; the EC and DSA signers are under the dsig test CA.
        {"soap11-sign-bst-rsa-sha512", [](const Pki& p) { return sign(kEnvelope, 8, false, p.cert, p.key); },
         consumerKeys({}, false), {kVerified + "http://www.w3.org/2001/04/xmldsig-more#rsa-sha512" + kBody}},
        // WSS4J 1.6 takes only exclusive C14N for SignedInfo (the Basic Security Profile).
        {"soap11-sign-c14n11-signedinfo", [](const Pki& p) { return sign(kEnvelope, 5, false, p.cert, p.key, 3); },
         consumerKeys({}, false), {"REFUSED ", "A bad canonicalization algorithm was specified"}},
        {"soap11-sign-bst-rsa-pss-sha256", [](const Pki& p) { return sign(kEnvelope, 9, false, p.cert, p.key); },
         consumerKeys({}, false), {kVerified + "http://www.w3.org/2007/05/xmldsig-more#sha256-rsa-MGF1" + kBody}},
        {"soap11-sign-bst-ecdsa-sha256", [](const Pki& p) { return sign(kEnvelope, 12, false, p.ecCert, p.ecKey); },
         consumerKeys({}, false, testfiles::dataPath("dsig/ca.der")),
         {kVerified + "http://www.w3.org/2001/04/xmldsig-more#ecdsa-sha256" + kBody}},
        {"soap11-sign-bst-dsa-sha256", [](const Pki& p) { return sign(kEnvelope, 15, false, p.dsaCert, p.dsaKey); },
         consumerKeys({}, false, testfiles::dataPath("dsig/ca.der")),
         {kVerified + "http://www.w3.org/2009/xmldsig11#dsa-sha256" + kBody}},
        {"soap11-sign-issuer-serial", [](const Pki& p) { return sign(kEnvelope, 2, true, p.cert, p.key); },
         consumerKeys({}, true), {kRsaSha1}},
        {"soap12-sign-bst-rsa-sha1", [](const Pki& p) { return sign(kEnvelope12, 2, false, p.cert, p.key); },
         consumerKeys({}, false), {kRsaSha1}},
        {"soap11-encrypt-3des-rsa15", [](const Pki& p) { return encrypt(kEnvelope, 1, 2, p.otherCert, ""); },
         consumerKeys({"ee-rsa-b"}, false), {kRsa15}},
        {"soap11-encrypt-3des-oaep", [](const Pki& p) { return encrypt(kEnvelope, 1, 3, p.otherCert, ""); },
         consumerKeys({"ee-rsa-b"}, false), {kOaep}},
        {"soap11-encrypt-element-3des-oaep",
         [](const Pki& p) { return encrypt(kEnvelope, 1, 3, p.otherCert, "", "m:order", 2); },
         consumerKeys({"ee-rsa-b"}, false),
         {"DECRYPTED transport=http://www.w3.org/2001/04/xmlenc#rsa-oaep-mgf1p parts=order "
          "cipher=http://www.w3.org/2001/04/xmlenc#tripledes-cbc"}},
        {"soap11-encrypt-aes128cbc-oaep", [](const Pki& p) { return encrypt(kEnvelope, 5, 3, p.otherCert, ""); },
         consumerKeys({"ee-rsa-b"}, false),
         {"DECRYPTED transport=" + kXenc + "rsa-oaep-mgf1p" + kContentCipher + kXenc + "aes128-cbc"}},
        {"soap11-encrypt-aes256gcm-rsa15", [](const Pki& p) { return encrypt(kEnvelope, 10, 2, p.otherCert, ""); },
         consumerKeys({"ee-rsa-b"}, false),
         {"DECRYPTED transport=" + kXenc + "rsa-1_5" + kContentCipher + kXenc11 + "aes256-gcm"}},
        // WSS4J 1.6 knows RSA-OAEP of XML Encryption 1.0 only.
        {"soap11-encrypt-aes128gcm-oaep11", [](const Pki& p) { return encrypt(kEnvelope, 8, 4, p.otherCert, ""); },
         consumerKeys({"ee-rsa-b"}, false),
         {"REFUSED ", "xenc:EncryptionMethod/@Algorithm is not supported: " + kXenc11 + "rsa-oaep"}},
        {"soap12-encrypt-3des-oaep", [](const Pki& p) { return encrypt(kEnvelope12, 1, 3, p.otherCert, ""); },
         consumerKeys({"ee-rsa-b"}, false), {kOaep}},
        // WSS4J 1.6 reads every EncryptedKey of the header as its own: after the
        // first has decrypted the Body, the second's DataReference finds nothing.
        {"soap11-encrypt-two-recipients-rsa15",
         [](const Pki& p) { return encrypt(kEnvelope, 1, 2, p.cert, p.otherCert); },
         consumerKeys({"ee-rsa", "ee-rsa-b"}, false), {"REFUSED ", "DataReference - referenced data not found"}},
        // Each recipient's key alone, as a receiver that skips the others' keys sees it.
        {"soap11-encrypt-two-recipients-oaep-first",
         [](const Pki& p) { return withoutEncryptedKey(encrypt(kEnvelope, 1, 3, p.cert, p.otherCert), 0); },
         consumerKeys({"ee-rsa"}, false), {kOaep + " cert=CN=홍길동"}},
        {"soap11-encrypt-two-recipients-oaep-second",
         [](const Pki& p) { return withoutEncryptedKey(encrypt(kEnvelope, 1, 3, p.cert, p.otherCert), 1); },
         consumerKeys({"ee-rsa-b"}, false), {kOaep + " cert=CN=server.vqxml.test"}},
        {"soap11-encrypt-two-recipients-rsa15-second",
         [](const Pki& p) { return withoutEncryptedKey(encrypt(kEnvelope, 1, 2, p.cert, p.otherCert), 1); },
         consumerKeys({"ee-rsa-b"}, false), {kRsa15 + " cert=CN=server.vqxml.test"}},
        {"soap11-sign-then-encrypt",
         [](const Pki& p) { return encrypt(sign(kEnvelope, 2, false, p.cert, p.key), 1, 3, p.otherCert, ""); },
         consumerKeys({"ee-rsa-b"}, false), {kOaep, kRsaSha1}},
        {"soap11-encrypt-then-sign",
         [](const Pki& p) { return sign(encrypt(kEnvelope, 1, 2, p.otherCert, ""), 5, false, p.cert, p.key); },
         consumerKeys({"ee-rsa-b"}, false), {kRsaSha256, kRsa15}},
        {"soap12-sign-then-encrypt",
         [](const Pki& p) { return encrypt(sign(kEnvelope12, 5, false, p.cert, p.key), 1, 2, p.otherCert, ""); },
         consumerKeys({"ee-rsa-b"}, false), {kRsa15, kRsaSha256}},
        {"soap11-sign-tampered",
         [](const Pki& p) { return tampered(sign(kEnvelope, 2, false, p.cert, p.key)); }, consumerKeys({}, false),
         {"REFUSED ", "The signature or decryption was invalid"}},
    };
    return all;
}

struct Outcome {
    std::string report;
    std::string envelope;  // empty when WSS4J refused the message
};

// The text between the Body's start and end tags of a serialised envelope.
std::string bodyContent(const std::string& envelope) {
    const size_t name = envelope.find(":Body");
    const size_t open = envelope.find('>', name);
    const size_t close = envelope.rfind("</");
    const size_t end = envelope.rfind("</", close - 1);
    if (name == std::string::npos || open == std::string::npos || end == std::string::npos || end < open)
        return std::string();
    return envelope.substr(open + 1, end - open - 1);
}

// Writes every case's message, has WSS4J process them all in one JVM; the
// outcomes by case name.
std::map<std::string, Outcome> processAll() {
    std::map<std::string, Outcome> outcomes;
#ifdef VQXML_WSS4J_JAVA
    const Pki pki;
    const testfiles::ScratchDir dir;
    std::string list;
    for (const Case& c : cases()) {
        const std::string in = dir(std::string(c.name) + ".xml");
        testfiles::write(in, c.make(pki));
        list += in + "\t" + in + ".out" + c.keys + "\n";
    }
    testfiles::write(dir("batch"), list);
    const std::string command = std::string(VQXML_WSS4J_JAVA) + " Wss4jConsumer --batch " + dir("batch");
    const int status = testfiles::run(command);
    EXPECT_TRUE(status == 0 || status == 1) << "the WSS4J consumer did not run (" << status << "): " << command;
    for (const Case& c : cases()) {
        const std::string out = dir(std::string(c.name) + ".xml.out");
        outcomes[c.name] = {testfiles::read(out + ".report"), testfiles::readIfAny(out)};
    }
#endif
    return outcomes;
}

TEST(Wss4jConsumer, ProcessesWhatTheLibrarySecures) {
#ifndef VQXML_WSS4J_JAVA
    GTEST_SKIP() << kWss4jMissing;
#endif
    std::map<std::string, Outcome> outcomes = processAll();
    for (const Case& c : cases()) {
        SCOPED_TRACE(c.name);
        const Outcome& outcome = outcomes[c.name];
        size_t at = 0;
        for (const std::string& line : c.report) {
            const size_t found = outcome.report.find(line, at);
            EXPECT_NE(found, std::string::npos) << "missing \"" << line << "\" in order; WSS4J said:\n"
                                                << outcome.report;
            at = found != std::string::npos ? found + line.size() : at;
        }
        if (c.report.front() != "REFUSED ") {
            EXPECT_EQ(bodyContent(outcome.envelope), kBodyContent) << outcome.envelope;
        }
    }
}

}  // namespace
