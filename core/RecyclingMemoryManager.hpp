// Memory for the documents the library parses.
//
// A document keeps its nodes in blocks of up to half a megabyte, and very long
// texts in blocks of their own, all handed back together when the document is
// released. For a document of a megabyte or more the C library gives such
// blocks back to the system at once and the next document takes them anew,
// page by page: decrypting a megabyte spent a fifth of its time in page
// faults. Blocks of the sizes of a document's node blocks freed here are kept,
// up to kMaxKeptBytes in all, for the next document of any thread; smaller and
// larger ones (a long text's own block, the parser's buffers) go straight back,
// as they seldom fit the next document and would lie idle beside it. Blocks come
// from the memory manager the process gave Xerces.
#ifndef VQXML_CORE_RECYCLINGMEMORYMANAGER_HPP
#define VQXML_CORE_RECYCLINGMEMORYMANAGER_HPP

#include <cstddef>
#include <mutex>
#include <vector>

#include <xercesc/framework/MemoryManager.hpp>

namespace vqxml {

class RecyclingMemoryManager : public XERCES_CPP_NAMESPACE::MemoryManager {
public:
    // Blocks at least this large and at most kLargestKept are kept when freed.
    static constexpr std::size_t kSmallestKept = 64 * 1024;
    static constexpr std::size_t kLargestKept = 1024 * 1024;
    // The most kept at any time, in all.
    static constexpr std::size_t kMaxKeptBytes = 32 * 1024 * 1024;

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

    std::mutex m_mutex;
    std::vector<Header*> m_kept;
    std::size_t m_keptBytes = 0;
};

}  // namespace vqxml

#endif
