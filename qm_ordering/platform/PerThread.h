#pragma once

namespace qm_ordering {

// One T for each thread, made at its first use. Objects of a host may end with their thread and still call
// the library from their destructors, after the thread's T is gone: Get then answers null instead of what is
// no longer there. T is a type of the module that keeps it and is made without failing.
template <typename T>
class PerThread {
 public:
  static T* Get() noexcept {
    if (!t_bEnded) {
      static thread_local Owner owner;
    }
    return t_pValue;
  }

 private:
  struct Owner {
    Owner() noexcept { t_pValue = &Value; }
    ~Owner() {
      t_pValue = nullptr;
      t_bEnded = true;
    }
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;
    T Value;
  };

  // Neither has a destructor, so both can be read as long as the thread runs.
  static inline constinit thread_local T* t_pValue = nullptr;
  static inline constinit thread_local bool t_bEnded = false;
};

}  // namespace qm_ordering
