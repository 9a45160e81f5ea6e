#include "qm_ordering/platform/ado/embedded/ExclusiveUse.h"

#include <chrono>
#include <thread>

#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering::ado::embedded {

namespace {

// Goes up the engine's locks one by one, and begins where it stopped at the next try: from its second step on
// no other program gets in.
int Lock(sqlite3_file* pFile) {
  for (const int lLevel : {SQLITE_LOCK_SHARED, SQLITE_LOCK_RESERVED, SQLITE_LOCK_EXCLUSIVE}) {
    const int lResult = pFile->pMethods->xLock(pFile, lLevel);
    if (lResult != SQLITE_OK) {
      return lResult;
    }
  }
  return SQLITE_OK;
}

}  // namespace

ExclusiveUse::ExclusiveUse(const std::string& zvPath)
    : m_oDatabase(OpenEngine(zvPath, zvPath, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX)),
      m_pFile(EngineFile(Database(), zvPath)) {
  if (sqlite3_db_readonly(Database(), "main") != 0) {
    throw EngineFailure(nullptr, SQLITE_READONLY, zvPath);
  }
  constexpr std::chrono::milliseconds kPause(20);
  int lResult = SQLITE_BUSY;
  for (auto waited = std::chrono::milliseconds(0); waited.count() <= kBusyTimeoutMilliseconds;
       waited += kPause) {
    lResult = Lock(m_pFile);
    if (lResult != SQLITE_BUSY) {
      break;
    }
    std::this_thread::sleep_for(kPause);
  }
  int lMoved = 0;
  if (lResult == SQLITE_OK) {
    sqlite3_file_control(Database(), "main", SQLITE_FCNTL_HAS_MOVED, &lMoved);
    if (lMoved == 0) {
      return;
    }
  }
  m_pFile->pMethods->xUnlock(m_pFile, SQLITE_LOCK_NONE);
  if (lMoved != 0) {
    throw Failure(failure::kStoreUnavailable,
                  "Another program has just replaced the order store " + zvPath + ".");
  }
  if (lResult != SQLITE_BUSY) {
    throw EngineFailure(nullptr, lResult, zvPath);
  }
  throw Failure(failure::kStoreUnavailable,
                "Another program, or an object of this one, has the order store " + zvPath +
                    " open; end it and try again.");
}

ExclusiveUse::~ExclusiveUse() {
  m_pFile->pMethods->xUnlock(m_pFile, SQLITE_LOCK_NONE);
}

}  // namespace qm_ordering::ado::embedded
