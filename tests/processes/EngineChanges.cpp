#include "tests/processes/EngineChanges.h"

#include <signal.h>
#include <sqlite3.h>
#include <unistd.h>

#include <stdexcept>

namespace test {

namespace {

int g_lUntilDeath = 0;
double g_dShare = 0;

bool IsLast() {
  return --g_lUntilDeath == 0;
}

ssize_t Write(int lvFile, const void* pBytes, size_t lvSize, off_t lvOffset) {
  if (IsLast()) {
    const auto lPart = static_cast<size_t>(g_dShare * static_cast<double>(lvSize));
    if (pwrite(lvFile, pBytes, lPart, lvOffset) >= 0) {
      kill(getpid(), SIGKILL);
    }
  }
  return pwrite(lvFile, pBytes, lvSize, lvOffset);
}

int Truncate(int lvFile, off_t lvSize) {
  if (IsLast()) {
    kill(getpid(), SIGKILL);
  }
  return ftruncate(lvFile, lvSize);
}

int Remove(const char* zvPath) {
  if (IsLast()) {
    kill(getpid(), SIGKILL);
  }
  return unlink(zvPath);
}

void Replace(const char* zvName, sqlite3_syscall_ptr pFunction) {
  sqlite3_vfs* pSystem = sqlite3_vfs_find(nullptr);
  if (pSystem->xSetSystemCall(pSystem, zvName, pFunction) != SQLITE_OK) {
    throw std::runtime_error(std::string("the engine does not use ") + zvName);
  }
}

}  // namespace

void DieInChange(int lvNth, double dvShare) {
  g_lUntilDeath = lvNth;
  g_dShare = dvShare;
  Replace("pwrite64", reinterpret_cast<sqlite3_syscall_ptr>(Write));
  Replace("ftruncate", reinterpret_cast<sqlite3_syscall_ptr>(Truncate));
  Replace("unlink", reinterpret_cast<sqlite3_syscall_ptr>(Remove));
}

}  // namespace test
