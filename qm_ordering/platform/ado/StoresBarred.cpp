#include "qm_ordering/platform/ado/StoresBarred.h"

#include <string>

#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering::ado {

namespace {

constinit thread_local const char* t_zBarred = nullptr;

}  // namespace

StoresBarred::StoresBarred(const char* zvWhy) noexcept {
  t_zBarred = zvWhy;
}

StoresBarred::~StoresBarred() {
  t_zBarred = nullptr;
}

void StoresBarred::RequireNone() {
  if (t_zBarred != nullptr) {
    throw Failure(failure::kInvalidCall, std::string("The order store cannot be used ") + t_zBarred + ".");
  }
}

}  // namespace qm_ordering::ado
