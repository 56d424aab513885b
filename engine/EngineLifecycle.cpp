#include "engine/EngineLifecycle.hpp"

#include <new>

#include <xalanc/Include/XalanMemoryManagement.hpp>
#include <xalanc/XalanTransformer/XalanTransformer.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xsec/utils/XSECPlatformUtils.hpp>

#include "core/RecyclingMemoryManager.hpp"
#include "core/VQXMLException.hpp"
#include "engine/KeyCache.hpp"
#include "engine/VQXML_XSECProvider.hpp"
#include "engine/VQTKCryptoX509.hpp"
#include "engine/VQTKCryptoProvider.hpp"
#include "engine/korean/OpenSSLProviders.hpp"
#include "vqxml/vqxml.h"

XERCES_CPP_NAMESPACE_USE

std::atomic<int> g_Init{0};
std::atomic<int> g_Finish{0};
std::atomic<int> g_InitCount{0};
XMLMutex* g_initMutex = nullptr;
VQXML_XSECProvider* g_provider = nullptr;

// Set once everything of a start-up is in place (the crypto provider alone is not
// enough: g_provider is made after it). Xerces 3.2 may run without a network
// accessor, so the accessor cannot serve as the readiness sign.
static std::atomic<int> g_enginesReady{0};

extern "C" VQXML_EXPORT void VQXML_Sleep(int) {}

namespace vqxml {
namespace {

void stopEngines() {
    if (g_initMutex != nullptr) {
        {
            XMLMutexLock lock(g_initMutex);
            delete g_provider;
            g_provider = nullptr;
        }
        delete g_initMutex;
        g_initMutex = nullptr;
    }
    clearKeyCache();
    clearCertificateCache();
    RecyclingMemoryManager::instance().clear();
    xalanc::XalanTransformer::terminate();
    XSECPlatformUtils::Terminate();
    // The last Terminate() deletes the crypto provider but leaves the pointer
    // behind; the next start-up must not take it for a host's provider.
    if (XSECPlatformUtils::initCount == 0)
        XSECPlatformUtils::g_cryptoProvider = nullptr;
    XMLPlatformUtils::Terminate();
}

void startEngines() {
    XMLPlatformUtils::Initialize(XMLUni::fgXercescDefaultLocale);
    xalanc::XalanTransformer::initialize(xalanc::XalanMemMgrs::getDefaultXercesMemMgr());
    try {
        g_initMutex = new (XMLPlatformUtils::fgMemoryManager) XMLMutex(XMLPlatformUtils::fgMemoryManager);
        XMLMutexLock lock(g_initMutex);
        loadOpenSSLProviders();
        // A host that started the engine itself keeps its crypto provider; the
        // call still counts us in so that our Terminate() is balanced.
        XSECPlatformUtils::Initialise(XSECPlatformUtils::g_cryptoProvider != nullptr
                                          ? nullptr
                                          : new VQTKCryptoProvider());
        registerAlgorithmHandlers();
        if (g_provider == nullptr)
            g_provider = new VQXML_XSECProvider();
    } catch (const std::bad_alloc&) {
        stopEngines();
        throw VQXML_XSECException(VQXML_ERR_MEMORY);
    } catch (...) {
        stopEngines();
        throw;
    }
}

}  // namespace

// g_InitCount is an atomic changed only by compare-and-swap from a live value, so a
// context can never join engines whose teardown has already been decided: the
// destructor that brings the count to 0 owns the teardown, and a constructor that
// finds the count at 0 waits for that teardown and starts the engines afresh.
void joinEngines() {
    for (;;) {
        while (g_Finish.load() != 0)
            VQXML_Sleep(1);
        int idle = 0;
        if (g_Init.compare_exchange_strong(idle, 1)) {
            try {
                startEngines();
            } catch (...) {
                g_Init.store(0);
                throw;
            }
            g_InitCount.store(1);
            g_enginesReady.store(1);
            return;
        }
        while (g_enginesReady.load() == 0 && g_Init.load() != 0)
            VQXML_Sleep(1);
        int live = g_InitCount.load();
        while (live > 0) {
            if (g_InitCount.compare_exchange_weak(live, live + 1))
                return;
        }
        VQXML_Sleep(1);
    }
}

namespace {
thread_local bool t_teardownFailed = false;
}

bool lastTeardownFailed() noexcept {
    return t_teardownFailed;
}

bool leaveEngines() noexcept {
    t_teardownFailed = false;
    if (g_InitCount.fetch_sub(1) != 1)
        return true;
    g_Finish.store(1);
    g_enginesReady.store(0);
    bool stopped = true;
    try {
        stopEngines();
    } catch (...) {
        stopped = false;
    }
    g_Init.store(0);
    g_Finish.store(0);
    t_teardownFailed = !stopped;
    return stopped;
}

}  // namespace vqxml
