#include "qm_ordering/registry/ThreadObjects.h"

#include <pthread.h>

#include <mutex>
#include <string>
#include <utility>

#include "qm_ordering/platform/PerThread.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/platform/value/ThreadNumber.h"

namespace qm_ordering {

namespace {

// The serial part of a number; the rest is the thread's.
constexpr unsigned kSerialBits = 36;

std::uint64_t ThreadOf(ThreadObjects::Number lvNumber) {
  return lvNumber >> kSerialBits;
}

// The threads that hold objects. Never destroyed: threads may outlive main.
struct Threads {
  std::mutex Lock;
  std::unordered_map<std::uint64_t, ThreadObjects*> Enlisted;
};
Threads& g_oThreads = *new Threads;

// A process that is forked while another thread holds the lock must not wait for that thread, which it lacks.
[[maybe_unused]] const int g_lHandler =
    pthread_atfork([] { g_oThreads.Lock.lock(); }, [] { g_oThreads.Lock.unlock(); },
                   [] {
                     g_oThreads.Enlisted.clear();
                     g_oThreads.Lock.unlock();
                   });

}  // namespace

ThreadObjects& ThreadObjects::OfThisThread() {
  ThreadObjects* pObjects = PerThread<ThreadObjects>::Get();
  if (pObjects == nullptr) {
    throw Failure(failure::kInvalidCall, "The thread is ending; it has no objects any more.");
  }
  pObjects->ReleasePosted();
  return *pObjects;
}

ThreadObjects::~ThreadObjects() {
  const std::lock_guard lock(g_oThreads.Lock);
  const auto found = g_oThreads.Enlisted.find(m_lThread);
  if (found != g_oThreads.Enlisted.end() && found->second == this) {
    g_oThreads.Enlisted.erase(found);
  }
}

void ThreadObjects::Enlist() {
  const std::uint64_t lThread = ThisThread();
  if (m_lThread == lThread) {
    return;
  }
  // After a fork these are the parent's, which nobody here can reach.
  m_oNumbers.clear();
  m_oKept.clear();
  const std::lock_guard lock(g_oThreads.Lock);
  m_lPosted.clear();
  m_bPosted.store(false, std::memory_order_relaxed);
  g_oThreads.Enlisted[lThread] = this;
  m_lThread = lThread;
}

ThreadObjects::Number ThreadObjects::Keep(const std::shared_ptr<Object>& ovObject) {
  if (!ovObject) {
    return 0;
  }
  Enlist();
  const auto [position, bNew] = m_oNumbers.try_emplace(ovObject.get(), 0);
  if (bNew) {
    if (m_lThread >> (64 - kSerialBits) != 0 || (m_lSerial + 1) >> kSerialBits != 0) {
      m_oNumbers.erase(position);
      throw Failure(failure::kOverflow, "All numbers of objects are given. Start the program again.");
    }
    const Number lNumber = (m_lThread << kSerialBits) | (m_lSerial + 1);
    try {
      m_oKept.try_emplace(lNumber, Kept{ovObject, 0});
    } catch (...) {
      m_oNumbers.erase(position);
      throw;
    }
    ++m_lSerial;
    position->second = lNumber;
  }
  ++m_oKept.find(position->second)->second.References;
  return position->second;
}

ThreadObjects::ByNumber::iterator ThreadObjects::Require(Number lvNumber) {
  if (!IsThread(ThreadOf(lvNumber))) {
    throw Failure(failure::kObjectNotSet, "There is no object " + std::to_string(lvNumber) + ".");
  }
  RequireThisThread(ThreadOf(lvNumber));
  const auto found = m_oKept.find(lvNumber);
  if (found == m_oKept.end()) {
    throw Failure(failure::kObjectNotSet, "There is no object " + std::to_string(lvNumber) +
                                              " any more: its last reference was released.");
  }
  return found;
}

std::shared_ptr<Object> ThreadObjects::Find(Number lvNumber) {
  return Require(lvNumber)->second.Held;
}

void ThreadObjects::Retain(Number lvNumber) {
  ++Require(lvNumber)->second.References;
}

void ThreadObjects::ReleaseHere(Number lvNumber) {
  const auto found = Require(lvNumber);
  if (--found->second.References > 0) {
    return;
  }
  // What its end calls finds it gone.
  const std::shared_ptr<Object> oLast = std::move(found->second.Held);
  m_oNumbers.erase(oLast.get());
  m_oKept.erase(found);
}

void ThreadObjects::Post(Number lvNumber) {
  const std::lock_guard lock(g_oThreads.Lock);
  const auto owner = g_oThreads.Enlisted.find(ThreadOf(lvNumber));
  if (owner != g_oThreads.Enlisted.end()) {
    owner->second->m_lPosted.push_back(lvNumber);
    owner->second->m_bPosted.store(true, std::memory_order_release);
  }
}

void ThreadObjects::ReleasePosted() noexcept {
  // In a child of fork they are the parent's, to be released there.
  if (!m_bPosted.load(std::memory_order_acquire) || m_lThread != ThisThread()) {
    return;
  }
  std::vector<Number> lPosted;
  {
    const std::lock_guard lock(g_oThreads.Lock);
    lPosted.swap(m_lPosted);
    m_bPosted.store(false, std::memory_order_relaxed);
  }
  for (const Number lNumber : lPosted) {
    if (const auto found = m_oKept.find(lNumber); found != m_oKept.end()) {
      ReleaseHere(lNumber);
    }
  }
}

void ThreadObjects::Release(Number lvNumber) {
  if (lvNumber == 0) {
    return;
  }
  if (IsThreadOfThisProcess(ThreadOf(lvNumber)) && ThreadOf(lvNumber) != ThisThread()) {
    Post(lvNumber);
    return;
  }
  if (ThreadObjects* pObjects = PerThread<ThreadObjects>::Get()) {
    pObjects->ReleasePosted();
    pObjects->ReleaseHere(lvNumber);
  }
}

}  // namespace qm_ordering
