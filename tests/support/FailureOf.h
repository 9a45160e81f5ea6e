#pragma once

#include "qm_ordering/platform/value/Failure.h"

namespace test {

// The failure that the call raises; number 0 when it raises none. Anything else that it throws fails the
// test.
template <typename Call>
qm_ordering::Failure FailureOf(Call call) {
  try {
    call();
  } catch (const qm_ordering::Failure& failure) {
    return failure;
  }
  return qm_ordering::Failure(0, "nothing was raised");
}

}  // namespace test
