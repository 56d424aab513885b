// A transform that hashes its whole byte input with one of the primitives'
// hashes, after an optional prefix, and outputs the digest: HAS-160 reference
// digests, and h(Z || SignedInfo) for KCDSA signatures.
#ifndef VQXML_ENGINE_TXFMKOREANDIGEST_HPP
#define VQXML_ENGINE_TXFMKOREANDIGEST_HPP

#include <cstdint>
#include <vector>

#include <xsec/transformers/TXFMBase.hpp>

#include "engine/korean/Digest.hpp"

class TXFMKoreanDigest : public TXFMBase {
public:
    TXFMKoreanDigest(XERCES_CPP_NAMESPACE::DOMDocument* doc, vqxml::korean::HashAlgorithm alg,
                     std::vector<std::uint8_t> prefix = {});

    void setInput(TXFMBase* newInput) override;
    ioType getInputType() const override { return BYTE_STREAM; }
    ioType getOutputType() const override { return BYTE_STREAM; }
    nodeType getNodeType() const override { return DOM_NODE_NONE; }
    unsigned int readBytes(XMLByte* const toFill, const unsigned int maxToFill) override;

private:
    vqxml::korean::HashAlgorithm m_alg;
    std::vector<std::uint8_t> m_prefix;
    std::vector<std::uint8_t> m_digest;
    std::size_t m_read = 0;
};

#endif
