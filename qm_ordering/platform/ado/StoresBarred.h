#pragma once

namespace qm_ordering::ado {

// For as long as it lives, the stores refuse this thread every call with kInvalidCall: while a host is asked
// in the middle of a transaction of the library's, which its own call would wait for without end.
class StoresBarred {
 public:
  // zvWhy completes "The order store cannot be used ".
  explicit StoresBarred(const char* zvWhy) noexcept;
  ~StoresBarred();
  StoresBarred(const StoresBarred&) = delete;
  StoresBarred& operator=(const StoresBarred&) = delete;

  // Raises kInvalidCall while there is one.
  static void RequireNone();
};

}  // namespace qm_ordering::ado
