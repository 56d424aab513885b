// Process-wide start-up and teardown of the engines shared by every context.
#ifndef VQXML_ENGINE_ENGINELIFECYCLE_HPP
#define VQXML_ENGINE_ENGINELIFECYCLE_HPP

#include <atomic>

#include <xercesc/util/Mutexes.hpp>

#include "engine/VQXML_XSECProvider.hpp"

extern std::atomic<int> g_Init;       // 1 from the start of a start-up to the end of its teardown
extern std::atomic<int> g_Finish;     // 1 while the last context tears the engines down
extern std::atomic<int> g_InitCount;  // live contexts
extern XERCES_CPP_NAMESPACE::XMLMutex* g_initMutex;
extern VQXML_XSECProvider* g_provider;

namespace vqxml {

// Called by every constructor: starts the engines if none are running, waits while
// another thread starts or stops them, then counts the new context in.
void joinEngines();

// Called by every destructor: counts the context out; the last one tears down.
// False when that teardown failed (the engines are given up all the same).
bool leaveEngines() noexcept;

// Whether the last leaveEngines() on this thread failed to tear down (a destructor
// cannot return it, so the C interface asks here).
bool lastTeardownFailed() noexcept;

}  // namespace vqxml

#endif
