#pragma once

#include <sqlite3.h>

#include <string>

#include "qm_ordering/platform/ado/embedded/Engine.h"

namespace qm_ordering::ado::embedded {

// Holds a file that no program has open through the engine, this one included, and keeps them all out of it
// until the end of the scope. It may hold anything; it is neither read nor written for this. On a network
// file system a program that is between two operations holds nothing, so it is not noticed.
class ExclusiveUse {
 public:
  // Tries for as long as a session waits for another. Raises kStoreUnavailable: a program has it open or has
  // just replaced it, or this user may not write it.
  explicit ExclusiveUse(const std::string& zvPath);
  ~ExclusiveUse();
  ExclusiveUse(const ExclusiveUse&) = delete;
  ExclusiveUse& operator=(const ExclusiveUse&) = delete;

  sqlite3* Database() const { return m_oDatabase.get(); }

 private:
  DatabaseHandle m_oDatabase;
  sqlite3_file* m_pFile;
};

}  // namespace qm_ordering::ado::embedded
