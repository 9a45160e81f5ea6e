#pragma once

#include "qm_ordering/platform/value/ClassInfo.h"

namespace test {

// What a class offers that has nothing to be used by name.
inline const qm_ordering::ClassInfo& NoMembers() {
  static const qm_ordering::ClassInfo info;
  return info;
}

}  // namespace test
