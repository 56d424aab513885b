#include "engine/ParkedObjects.hpp"

#include <mutex>
#include <vector>

namespace vqxml {
namespace {

std::mutex g_parkedMutex;

std::vector<const void*>& parked() {
    static auto* objects = new std::vector<const void*>();  // never destroyed, like its contents
    return *objects;
}

}  // namespace

void park(const void* object) noexcept {
    try {
        std::lock_guard<std::mutex> lock(g_parkedMutex);
        parked().push_back(object);
    } catch (...) {
    }
}

}  // namespace vqxml
