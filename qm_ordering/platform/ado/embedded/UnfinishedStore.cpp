#include "qm_ordering/platform/ado/embedded/UnfinishedStore.h"

#include <dirent.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <new>
#include <string_view>
#include <utility>

#include "qm_ordering/platform/file/SystemError.h"
#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering::ado::embedded {

namespace {

bool IsTaken(const std::string& zvPath) {
  struct stat status {};
  return lstat(zvPath.c_str(), &status) == 0;
}

std::string FolderOf(const std::string& zvPath) {
  return std::filesystem::path(zvPath).parent_path().string();
}

void FlushFolder(const std::string& zvFolder) noexcept {
  const int lFolder = open(zvFolder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (lFolder >= 0) {
    fsync(lFolder);
    close(lFolder);
  }
}

// A mark that nobody gives a file of his own: what bears it is removed.
constexpr std::string_view kUnfinishedMark = ".unfinished-qm_ordering.";
constexpr std::string_view kUnfinishedPlaces = "XXXXXX";
constexpr std::array<std::string_view, 4> kEngineSuffixes = {"", "-shm", "-wal", "-journal"};

constexpr int kLockAttempts = 1000;
constexpr useconds_t kLockPause = 5'000;  // microseconds; five seconds in all

void RemoveLeftovers(const std::string& zvPath) {
  const std::string zStart = std::filesystem::path(zvPath).filename().string().append(kUnfinishedMark);
  const std::size_t lNameSize = zStart.size() + kUnfinishedPlaces.size();
  DIR* folder = opendir(FolderOf(zvPath).c_str());
  if (folder == nullptr) {
    return;
  }
  while (const dirent* entry = readdir(folder)) {
    const std::string_view zName = entry->d_name;
    if (zName.starts_with(zStart) && zName.size() >= lNameSize &&
        std::ranges::find(kEngineSuffixes, zName.substr(lNameSize)) != kEngineSuffixes.end()) {
      unlinkat(dirfd(folder), entry->d_name, 0);
    }
  }
  closedir(folder);
}

}  // namespace

bool IsUnfinished(const std::string& zvPath) {
  return std::filesystem::path(zvPath).filename().string().find(kUnfinishedMark) != std::string::npos;
}

std::string LogBeside(const std::string& zvPath) {
  for (const char* zSuffix : kLogSuffixes) {
    std::string zLog = zvPath + zSuffix;
    struct stat status {};
    if (stat(zLog.c_str(), &status) == 0 && status.st_size > 0) {
      return zLog;
    }
  }
  return {};
}

std::string FreeName(const std::string& zvName) {
  std::string zName = zvName;
  for (int i = 2;
       IsTaken(zName) ||
       std::ranges::any_of(kLogSuffixes, [&](const char* zSuffix) { return IsTaken(zName + zSuffix); });
       ++i) {
    zName = zvName + "-" + std::to_string(i);
  }
  return zName;
}

int RenameToNew(const std::string& zvPath, const std::string& zvNewPath) {
  int lResult = renameat2(AT_FDCWD, zvPath.c_str(), AT_FDCWD, zvNewPath.c_str(), RENAME_NOREPLACE);
  if (lResult != 0 && (errno == EINVAL || errno == ENOSYS)) {
    // A file system without that call.
    lResult = link(zvPath.c_str(), zvNewPath.c_str());
    if (lResult == 0) {
      lResult = unlink(zvPath.c_str());
    }
  }
  return lResult == 0 ? 0 : errno;
}

void FlushFolderOf(const std::string& zvPath) {
  FlushFolder(FolderOf(zvPath));
}

MakersLock::MakersLock(const std::string& zvPath)
    : m_lFolder(open(FolderOf(zvPath).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  if (flock(m_lFolder, LOCK_EX | LOCK_NB) == 0) {
    try {
      RemoveLeftovers(zvPath);
    } catch (const std::bad_alloc&) {
      // They stay for the next one.
    }
  }
  // Those who remove need it for a moment only; who holds it for longer makes no store.
  for (int i = 0; i < kLockAttempts && flock(m_lFolder, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
       ++i) {
    usleep(kLockPause);
  }
}

MakersLock::~MakersLock() {
  if (m_lFolder >= 0) {
    close(m_lFolder);
  }
}

UnfinishedStore::UnfinishedStore(const std::string& zvFinalPath, std::string zvRefusal)
    : m_oLock(zvFinalPath), m_zPath(zvFinalPath), m_zRefusal(std::move(zvRefusal)) {
  m_zPath.append(kUnfinishedMark).append(kUnfinishedPlaces);
  // Here, since the end of the scope must do without memory.
  m_zBeside.reserve(m_zPath.size() + kEngineSuffixes.back().size());
  const int lFile = mkostemp(m_zPath.data(), O_CLOEXEC);
  if (lFile < 0) {
    const int lError = errno;
    throw Failure(failure::kFileAccess, m_zRefusal + ": no file can be made in the folder " +
                                            FolderOf(zvFinalPath) + " (" + file::SystemErrorText(lError) +
                                            ").");
  }
  close(lFile);
}

UnfinishedStore::~UnfinishedStore() {
  for (const std::string_view zSuffix : kEngineSuffixes) {
    m_zBeside.assign(m_zPath).append(zSuffix);
    unlink(m_zBeside.c_str());
  }
}

bool UnfinishedStore::PublishAs(const std::string& zvPath) {
  // From the new name on nothing fails any more.
  const std::string zFolder = FolderOf(zvPath);
  const int lError = RenameToNew(m_zPath, zvPath);
  if (lError == EEXIST) {
    return false;
  }
  if (lError != 0) {
    throw Failure(failure::kFileAccess, m_zRefusal + ": " + file::SystemErrorText(lError) + ".");
  }
  FlushFolder(zFolder);
  return true;
}

void UnfinishedStore::PublishInPlaceOf(const std::string& zvPath) {
  const std::string zFolder = FolderOf(zvPath);
  if (rename(m_zPath.c_str(), zvPath.c_str()) != 0) {
    throw Failure(failure::kFileAccess, m_zRefusal + ": " + file::SystemErrorText(errno) + ".");
  }
  FlushFolder(zFolder);
}

}  // namespace qm_ordering::ado::embedded
