#include "engine/TXFMKoreanDigest.hpp"

#include <cstring>

#include "engine/CryptoErrorTranslation.hpp"

TXFMKoreanDigest::TXFMKoreanDigest(XERCES_CPP_NAMESPACE::DOMDocument* doc,
                                   vqxml::korean::HashAlgorithm alg, std::vector<std::uint8_t> prefix)
    : TXFMBase(doc), m_alg(alg), m_prefix(std::move(prefix)) {}

void TXFMKoreanDigest::setInput(TXFMBase* newInput) {
    input = newInput;
    keepComments = input->getCommentsStatus();
    m_digest = vqxml::asCryptoException(XSECCryptoException::MDError, [this] {
        vqxml::korean::Digest digest(m_alg);
        digest.update(m_prefix.data(), m_prefix.size());
        XMLByte buffer[4096];
        unsigned int n;
        while ((n = input->readBytes(buffer, sizeof buffer)) != 0)
            digest.update(buffer, n);
        return digest.finish();
    });
    m_read = 0;
}

unsigned int TXFMKoreanDigest::readBytes(XMLByte* const toFill, const unsigned int maxToFill) {
    std::size_t left = m_digest.size() - m_read;
    std::size_t n = left < maxToFill ? left : maxToFill;
    if (n > 0)
        std::memcpy(toFill, m_digest.data() + m_read, n);
    m_read += n;
    return unsigned(n);
}
