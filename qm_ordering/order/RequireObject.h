#pragma once

#include <memory>
#include <string>

#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering {

// The reference itself; raises 91, naming zvWhat, when it is null.
template <typename T>
const std::shared_ptr<T>& RequireObject(const std::shared_ptr<T>& ovObject, const char* zvWhat) {
  if (ovObject == nullptr) {
    throw Failure(failure::kObjectNotSet, std::string("Object reference not set: ") + zvWhat + ".");
  }
  return ovObject;
}

}  // namespace qm_ordering
