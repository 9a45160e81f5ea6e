#include "qm_ordering/platform/ado/embedded/StoreReplacement.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>
#include <vector>

#include "qm_ordering/platform/ado/embedded/EmbeddedSession.h"
#include "qm_ordering/platform/ado/embedded/Engine.h"
#include "qm_ordering/platform/ado/embedded/ExclusiveUse.h"
#include "qm_ordering/platform/ado/embedded/StoreFile.h"
#include "qm_ordering/platform/clock/Clock.h"
#include "qm_ordering/platform/file/Path.h"
#include "qm_ordering/platform/file/SystemError.h"
#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering::ado::embedded {

namespace {

// Files that got other names.
class RenamedFiles {
 public:
  // Answers 0 or the system's error.
  int Rename(const std::string& zvFrom, const std::string& zvTo) {
    m_zRenamed.emplace_back(zvFrom, zvTo);
    const int lError = RenameToNew(zvFrom, zvTo);
    if (lError != 0) {
      m_zRenamed.pop_back();
    }
    return lError;
  }

  // Gives them their old names back, the store first; false, and they keep their new ones together, when one
  // of them cannot have it.
  bool TakeBack() {
    for (std::size_t i = 0; i < m_zRenamed.size(); ++i) {
      if (RenameToNew(m_zRenamed[i].second, m_zRenamed[i].first) != 0) {
        for (; i > 0; --i) {
          RenameToNew(m_zRenamed[i - 1].first, m_zRenamed[i - 1].second);
        }
        return false;
      }
    }
    return true;
  }

 private:
  std::vector<std::pair<std::string, std::string>> m_zRenamed;
};

// Brings what a program that was killed left in its log into the store, so that one whole file is kept. Where
// that cannot be done the log is kept beside it.
void BringLogIn(const std::string& zvStore) {
  if (LogBeside(zvStore).empty()) {
    return;
  }
  try {
    const DatabaseHandle db = OpenEngine(zvStore, zvStore, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX);
    if (IsOrderStore(db.get(), zvStore)) {
      // The read finds the log; the last one to close the store brings it in.
      ReadText(db.get(), "select count(*) from sqlite_schema", zvStore);
    }
  } catch (const Failure&) {
    // A store that is too damaged for it.
  }
}

std::string KeptName(const std::string& zvStore) {
  const Date datNow = clock::Current().Now();
  char zStamp[64];
  std::snprintf(zStamp, sizeof zStamp, "%04d%02d%02d-%02d%02d%02d", datNow.Year(), datNow.Month(),
                datNow.Day(), datNow.Hour(), datNow.Minute(), datNow.Second());
  return FreeName(zvStore + kKeptMark + zStamp);
}

}  // namespace

StoreReplacement::StoreReplacement(const std::string& zvStore, std::string zvRefusal)
    : m_zStore(file::RealPath(zvStore)), m_zRefusal(std::move(zvRefusal)) {
  StoreExists();
  m_oCopy.emplace(m_zStore, m_zRefusal);
}

void StoreReplacement::Refuse(const std::string& zvWhy) const {
  throw Failure(failure::kFileAccess, m_zRefusal + ": " + zvWhy + ".");
}

bool StoreReplacement::StoreExists() const {
  struct stat status {};
  if (stat(m_zStore.c_str(), &status) != 0) {
    const int lError = errno;
    if (lError != ENOENT) {
      Refuse("the order store " + m_zStore + " cannot be looked at (" + file::SystemErrorText(lError) + ")");
    }
    return false;
  }
  if (!S_ISREG(status.st_mode)) {
    Refuse("in the place of the order store " + m_zStore +
           " is a folder, or something else that is no file. Move it away");
  }
  return true;
}

// Who kept the store open for its user goes on doing so.
void StoreReplacement::TakeOverPermissions() const {
  struct stat status {};
  if (stat(m_zStore.c_str(), &status) == 0 && chown(CopyPath().c_str(), status.st_uid, status.st_gid) == 0) {
    chmod(CopyPath().c_str(), status.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO));
  }
}

std::string StoreReplacement::Publish() {
  CloseIdleSessions();
  BringLogIn(m_zStore);
  std::optional<ExclusiveUse> held;
  if (StoreExists()) {
    held.emplace(m_zStore);
    TakeOverPermissions();
  }
  for (const char* zSuffix : kLogSuffixes) {
    const std::string zLog = m_zStore + zSuffix;
    struct stat status {};
    if (stat(zLog.c_str(), &status) == 0 && status.st_size == 0) {
      unlink(zLog.c_str());
    }
  }
  std::string zKept = KeptName(m_zStore);
  if (held && IsWithoutLog() && link(m_zStore.c_str(), zKept.c_str()) == 0) {
    // The old store gets its second name and loses its first one to the new store: there is always one.
    try {
      unlink((m_zStore + "-shm").c_str());
      m_oCopy->PublishInPlaceOf(m_zStore);
    } catch (...) {
      unlink(zKept.c_str());
      throw;
    }
    return zKept;
  }
  return PublishWithLog(zKept, held.has_value());
}

bool StoreReplacement::IsWithoutLog() const {
  return std::ranges::none_of(kLogSuffixes, [&](const char* zSuffix) {
    struct stat status {};
    return lstat((m_zStore + zSuffix).c_str(), &status) == 0 || errno != ENOENT;
  });
}

// Nothing is lost at whatever moment this ends, and a new store never stands beside an old log, which the
// engine would read into it: the old store goes first, so that nobody can open it without its log; then the
// log goes after it; the new store comes last, when that is on disk. Who ends in between leaves no store at
// all, which every program says clearly, and a log of that name keeps a new store from being made.
std::string StoreReplacement::PublishWithLog(const std::string& zvKept, bool bvStoreExists) {
  std::string zAnswer;
  RenamedFiles renamed;
  const auto rename = [&](const std::string& zvSuffix) {
    const int lError = renamed.Rename(m_zStore + zvSuffix, zvKept + zvSuffix);
    if (lError != 0) {
      Refuse(m_zStore + zvSuffix + " cannot be renamed (" + file::SystemErrorText(lError) + ")");
    }
    if (zAnswer.empty()) {
      zAnswer = zvKept + zvSuffix;
    }
  };
  try {
    if (bvStoreExists) {
      rename("");
    }
    for (const char* zSuffix : kLogSuffixes) {
      struct stat status {};
      if (lstat((m_zStore + zSuffix).c_str(), &status) == 0) {
        rename(zSuffix);
      }
    }
    unlink((m_zStore + "-shm").c_str());
    FlushFolderOf(m_zStore);
    if (!m_oCopy->PublishAs(m_zStore)) {
      Refuse("a file " + m_zStore + " has come into being");
    }
    return zAnswer;
  } catch (const Failure& failure) {
    if (renamed.TakeBack()) {
      throw;
    }
    throw Failure(failure.Number(), failure.Description() +
                                        " What it replaces could not get its name back: it is " + zvKept +
                                        ", its log beside it. Move away what stands at " + m_zStore +
                                        ", if anything does, and give both their old names.");
  } catch (...) {
    renamed.TakeBack();
    throw;
  }
}

}  // namespace qm_ordering::ado::embedded
