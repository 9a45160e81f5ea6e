#pragma once

#include <cstdint>
#include <utility>

#include "qm_ordering/platform/value/Failure.h"

namespace test {

// The number of the failure that the call raises; 0 when it raises none.
template <typename Call>
std::int32_t RaisedNumber(Call&& call) {
  try {
    static_cast<void>(std::forward<Call>(call)());
  } catch (const qm_ordering::Failure& caught) {
    return caught.Number();
  }
  return 0;
}

}  // namespace test
