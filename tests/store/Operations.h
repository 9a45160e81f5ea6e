#pragma once

#include <functional>
#include <string>
#include <vector>

#include "qm_ordering/store/Database.h"

namespace test {

// An operation of Database, called for order 12 and its line A-1, or for list 12.
struct Operation {
  const char* Name;
  std::function<void(qm_ordering::Database&)> Run;
};

// Those that put a failure into the record, and those that raise it: together all of them.
const std::vector<Operation>& GuardedOperations();
const std::vector<Operation>& UnguardedOperations();

}  // namespace test
