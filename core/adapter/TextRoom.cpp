#include "core/adapter/TextRoom.hpp"

#include <cstring>

#include <xercesc/util/XMLString.hpp>
#include <xercesc/dom/impl/DOMStringPool.hpp>
#include <xercesc/dom/impl/DOMTextImpl.hpp>

#include "core/adapter/Upstream.hpp"

XERCES_CPP_NAMESPACE_USE

namespace vqxml {

XMLCh* textRoom(DOMText* text, std::size_t length) {
    auto* impl = text != nullptr && text->getNodeType() == DOMNode::TEXT_NODE ? dynamic_cast<DOMTextImpl*>(text)
                                                                              : nullptr;
    DOMBuffer* buffer = impl != nullptr ? impl->fCharacterData.fDataBuf : nullptr;
    if (buffer == nullptr)
        return nullptr;
    buffer->reset();
    if (length >= buffer->getCapacity())
        buffer->expandCapacity(length);
    // The buffer is the document's memory, writable; the interface hands it out const.
    auto* room = const_cast<XMLCh*>(buffer->getRawBuffer());
    buffer->chop(length);
    return room;
}

}  // namespace vqxml
