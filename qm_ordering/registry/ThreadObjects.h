#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

#include "qm_ordering/platform/value/Object.h"

namespace qm_ordering {

// What a thread's host holds through the C interface: the objects by their numbers, with the references to
// each. A number holds the thread's own and a serial one, and is never given twice, so that one that was
// released, or belongs to another thread, is known for what it is.
class ThreadObjects {
 public:
  using Number = std::uint64_t;

  // Raises kInvalidCall while the thread ends.
  static ThreadObjects& OfThisThread();

  ThreadObjects() = default;
  // Ends what the host still holds.
  ~ThreadObjects();
  ThreadObjects(const ThreadObjects&) = delete;
  ThreadObjects& operator=(const ThreadObjects&) = delete;

  // One reference more to the object, under its number or a new one; 0 for null.
  Number Keep(const std::shared_ptr<Object>& ovObject);

  // These raise kObjectNotSet for 0 and what was released, kWrongThread for another thread's.
  std::shared_ptr<Object> Find(Number lvNumber);
  void Retain(Number lvNumber);

  // One reference less. Another thread's is taken away at its next call of this class, or when it ends.
  // Raises as Find for all other ones.
  static void Release(Number lvNumber);

 private:
  struct Kept {
    std::shared_ptr<Object> Held;
    std::uint64_t References = 0;
  };
  using ByNumber = std::unordered_map<Number, Kept>;

  ByNumber::iterator Require(Number lvNumber);
  void ReleaseHere(Number lvNumber);
  void ReleasePosted() noexcept;
  void Enlist();
  // Leaves it to its owner; nothing is left to do for one that has ended.
  static void Post(Number lvNumber);

  std::uint64_t m_lThread = 0;  // under which it is enlisted; 0: not yet
  std::uint64_t m_lSerial = 0;
  ByNumber m_oKept;
  std::unordered_map<const Object*, Number> m_oNumbers;
  std::vector<Number> m_lPosted;  // under the lock of the list of all threads
  std::atomic<bool> m_bPosted = false;
};

}  // namespace qm_ordering
