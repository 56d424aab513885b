#include "core/RecyclingMemoryManager.hpp"

#include <algorithm>
#include <new>

#include <xercesc/util/PlatformUtils.hpp>

XERCES_CPP_NAMESPACE_USE

vqxml::RecyclingMemoryManager& vqxml::RecyclingMemoryManager::instance() {
    static RecyclingMemoryManager* const manager = new RecyclingMemoryManager();
    return *manager;
}

MemoryManager* vqxml::RecyclingMemoryManager::getExceptionMemoryManager() {
    return XMLPlatformUtils::fgMemoryManager;
}

void* vqxml::RecyclingMemoryManager::allocate(XMLSize_t size) {
    Header* block = nullptr;
    if (size >= kSmallestKept) {
        std::lock_guard<std::mutex> lock(m_mutex);
        block = takeKept(size);
        m_inUse += block != nullptr ? block->capacity : size;
        m_mostInUse = std::max(m_mostInUse, m_inUse);
    }
    if (block == nullptr) {
        // From the manager the process gave Xerces: it throws what the parser
        // and the DOM expect when memory runs out.
        try {
            block = static_cast<Header*>(XMLPlatformUtils::fgMemoryManager->allocate(sizeof(Header) + size));
        } catch (...) {
            if (size >= kSmallestKept) {
                std::lock_guard<std::mutex> lock(m_mutex);
                m_inUse -= size;
            }
            throw;
        }
        block->capacity = size;
    }
    return block + 1;
}

void vqxml::RecyclingMemoryManager::deallocate(void* p) {
    if (p == nullptr)
        return;
    Header* block = static_cast<Header*>(p) - 1;
    std::vector<Header*> surplus;
    if (block->capacity >= kSmallestKept) {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_inUse -= std::min(m_inUse, block->capacity);
        const std::size_t allowed = budget();
        if (m_inUse == 0)
            m_mostInUse = 0;
        if (m_keptBytes + block->capacity <= allowed) {
            try {
                m_kept.push_back(block);
                m_keptBytes += block->capacity;
                block = nullptr;
            } catch (const std::bad_alloc&) {
                // No room to note it: it goes back instead.
            }
        }
        // Kept for larger documents than the ones now in use: back to the system.
        while (m_keptBytes > allowed) {
            surplus.push_back(m_kept.back());
            m_keptBytes -= m_kept.back()->capacity;
            m_kept.pop_back();
        }
    }
    for (Header* kept : surplus)
        XMLPlatformUtils::fgMemoryManager->deallocate(kept);
    if (block != nullptr)
        XMLPlatformUtils::fgMemoryManager->deallocate(block);
}

std::size_t vqxml::RecyclingMemoryManager::budget() const {
    return std::clamp(m_mostInUse, kLeastKeptBytes, kMostKeptBytes);
}

// The smallest kept block that holds size and wastes at most a quarter of it.
vqxml::RecyclingMemoryManager::Header* vqxml::RecyclingMemoryManager::takeKept(std::size_t size) {
    auto best = m_kept.end();
    for (auto it = m_kept.begin(); it != m_kept.end(); ++it)
        if ((*it)->capacity >= size && (*it)->capacity - size <= size / 4 &&
            (best == m_kept.end() || (*it)->capacity < (*best)->capacity))
            best = it;
    if (best == m_kept.end())
        return nullptr;
    Header* block = *best;
    *best = m_kept.back();
    m_kept.pop_back();
    m_keptBytes -= block->capacity;
    return block;
}

void vqxml::RecyclingMemoryManager::clear() {
    std::vector<Header*> kept;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        kept.swap(m_kept);
        m_keptBytes = 0;
    }
    for (Header* block : kept)
        XMLPlatformUtils::fgMemoryManager->deallocate(block);
}

std::size_t vqxml::RecyclingMemoryManager::keptBytes() {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_keptBytes;
}
