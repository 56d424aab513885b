#include "core/adapter/TextRoom.hpp"

#include <cstring>

#include <xercesc/dom/impl/DOMDocumentImpl.hpp>
#include <xercesc/dom/impl/DOMStringPool.hpp>
#include <xercesc/dom/impl/DOMTextImpl.hpp>

#include "core/adapter/Upstream.hpp"

XERCES_CPP_NAMESPACE_USE

namespace {

// Keeps the first kept units of text's value and makes room for length in all.
XMLCh* roomAfter(DOMText* text, std::size_t kept, std::size_t length) {
    auto* impl = text != nullptr && text->getNodeType() == DOMNode::TEXT_NODE ? dynamic_cast<DOMTextImpl*>(text)
                                                                              : nullptr;
    DOMBuffer* buffer = impl != nullptr ? impl->fCharacterData.fDataBuf : nullptr;
    if (buffer == nullptr)
        return nullptr;
    if (length > buffer->getCapacity()) {
        DOMDocumentImpl* document = impl->fCharacterData.fDoc;
        auto* larger = new (document) DOMBuffer(document, length);
        larger->set(buffer->getRawBuffer(), kept);
        // A value's own block (any but the shortest) goes back to the document's
        // memory manager; the small DOMBuffer object stays with the document.
        document->release(const_cast<XMLCh*>(buffer->getRawBuffer()));
        impl->fCharacterData.fDataBuf = buffer = larger;
    }
    // The buffer is the document's memory, writable; the interface hands it out const.
    auto* room = const_cast<XMLCh*>(buffer->getRawBuffer()) + kept;
    buffer->chop(length);
    return room;
}

}  // namespace

DOMText* vqxml::exactText(DOMDocument* doc, const XMLCh* chars, std::size_t length) {
    auto* impl = static_cast<DOMDocumentImpl*>(doc);
    // A new text takes a buffer the document was handed back when one is large
    // enough, looking at the last one first: so it takes this one. (The buffer
    // must be longer than the value; the DOMBuffer adds the terminator's unit.)
    impl->releaseBuffer(new (impl) DOMBuffer(impl, length + 1));
    return new (impl, DOMMemoryManager::TEXT_OBJECT) DOMTextImpl(impl, chars, length);
}

XMLCh* vqxml::textRoom(DOMText* text, std::size_t length) {
    return roomAfter(text, 0, length);
}

XMLCh* vqxml::textRoomAfter(DOMText* text, std::size_t extra) {
    const std::size_t kept = text != nullptr ? text->getLength() : 0;
    return roomAfter(text, kept, kept + extra);
}
