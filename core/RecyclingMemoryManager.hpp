// Memory for the documents the library parses.
//
// A document keeps its nodes in blocks of up to half a megabyte, and long texts
// in blocks of their own, all handed back together when the document is
// released. The C library gives such large, clean blocks back to the system at
// once and the next document takes them anew, page by page: decrypting a
// megabyte spent a fifth of its time in page faults, encrypting ten megabytes a
// quarter. Blocks of kSmallestKept or more freed here are kept for the next
// document of any thread, and taken again for a request they fit with at most a
// quarter to spare.
//
// How much is kept follows what the documents need: at most as much as was in
// use at once since the last moment none was (a document released, none
// loaded), never less than kLeastKeptBytes, never more than kMostKeptBytes. A
// process that goes from large documents to small ones gives the rest back
// when the first small one is done with; one that works on the same large
// documents over and over keeps their blocks. Blocks come from the memory
// manager the process gave Xerces.
#ifndef VQXML_CORE_RECYCLINGMEMORYMANAGER_HPP
#define VQXML_CORE_RECYCLINGMEMORYMANAGER_HPP

#include <cstddef>
#include <mutex>
#include <vector>

#include <xercesc/framework/MemoryManager.hpp>

namespace vqxml {

class RecyclingMemoryManager : public XERCES_CPP_NAMESPACE::MemoryManager {
public:
    static constexpr std::size_t kSmallestKept = 64 * 1024;
    static constexpr std::size_t kLeastKeptBytes = 32 * 1024 * 1024;
    static constexpr std::size_t kMostKeptBytes = 256 * 1024 * 1024;

    // The process's one instance; never destroyed, so that a document released
    // late in the process's exit still has it.
    static RecyclingMemoryManager& instance();

    XERCES_CPP_NAMESPACE::MemoryManager* getExceptionMemoryManager() override;
    void* allocate(XMLSize_t size) override;
    void deallocate(void* p) override;

    // Hands every kept block back.
    void clear();
    std::size_t keptBytes();

private:
    RecyclingMemoryManager() = default;

    struct alignas(16) Header {
        std::size_t capacity;
    };
    Header* takeKept(std::size_t size);
    std::size_t budget() const;

    std::mutex m_mutex;
    std::vector<Header*> m_kept;
    std::size_t m_keptBytes = 0;
    std::size_t m_inUse = 0;      // bytes of blocks of kSmallestKept or more handed out
    std::size_t m_mostInUse = 0;  // the most at once since m_inUse was last 0
};

}  // namespace vqxml

#endif
