// A few recently used values, shared by every handle in the process.
//
// Parsing a key or a certificate with OpenSSL 3 costs more than using it, and
// applications sign and verify thousands of documents with the same few. A short
// list, most recent first, under one mutex: it is looked up once per operation,
// and a value is made outside the lock (two threads may both make it; the later
// simply replaces nothing and is kept as well).
#ifndef VQXML_ENGINE_RECENTLYUSED_HPP
#define VQXML_ENGINE_RECENTLYUSED_HPP

#include <cstddef>
#include <list>
#include <mutex>
#include <utility>

namespace vqxml {

template <class Key, class Value, std::size_t Capacity>
class RecentlyUsed {
public:
    // The value kept for this key, or make() run and its result kept. A make()
    // that throws keeps nothing.
    template <class Make>
    Value findOrMake(const Key& key, Make make) {
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            for (auto it = m_entries.begin(); it != m_entries.end(); ++it) {
                if (it->first == key) {
                    m_entries.splice(m_entries.begin(), m_entries, it);
                    return it->second;
                }
            }
        }
        Value value = make();
        std::lock_guard<std::mutex> lock(m_mutex);
        m_entries.emplace_front(key, value);
        if (m_entries.size() > Capacity)
            m_entries.pop_back();
        return value;
    }

    void clear() {
        std::list<std::pair<Key, Value>> released;
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            released.swap(m_entries);
        }
    }

private:
    std::mutex m_mutex;
    std::list<std::pair<Key, Value>> m_entries;
};

}  // namespace vqxml

#endif
