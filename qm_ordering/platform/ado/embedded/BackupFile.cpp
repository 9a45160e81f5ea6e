#include "qm_ordering/platform/ado/embedded/BackupFile.h"

#include <sys/stat.h>

#include "qm_ordering/platform/ado/embedded/StoreFile.h"
#include "qm_ordering/platform/file/Path.h"
#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering::ado::embedded {

BackupFile::BackupFile(const std::string& zvFile, const std::string& zvStore) {
  if (zvFile.empty()) {
    throw Failure(failure::kPathNotFound, "A backup needs a file; the name given is empty.");
  }
  m_zFile = file::RealPath(zvFile);
  if (IsUnfinished(m_zFile)) {
    Refuse("its name is one of those that are removed as left behind. Choose another name");
  }
  m_zStore = file::RealPath(zvStore);
  HoldReplaceable();
  m_oCopy.emplace(m_zFile, "The backup " + m_zFile + " was not made");
}

void BackupFile::Publish() {
  const std::unique_ptr<ExclusiveUse> replaced = HoldReplaceable();
  if (replaced != nullptr) {
    m_oCopy->PublishInPlaceOf(m_zFile);
  } else if (!m_oCopy->PublishAs(m_zFile)) {
    Refuse("a file of that name has come into being");
  }
}

void BackupFile::Refuse(const std::string& zvWhy) const {
  throw Failure(failure::kFileAccess, "The backup " + m_zFile + " was not made: " + zvWhy + ".");
}

std::unique_ptr<ExclusiveUse> BackupFile::HoldReplaceable() const {
  for (const char* zSuffix : {"", "-wal", "-journal", "-shm"}) {
    if (file::IsSameFile(m_zFile, m_zStore + zSuffix)) {
      Refuse(zSuffix[0] == '\0' ? "it is the order store itself. Choose another file"
                                : "the order store keeps its log under that name. Choose another file");
    }
  }
  const std::string zLog = LogBeside(m_zFile);
  if (!zLog.empty()) {
    Refuse(zLog + ", the log of a store of that name, is there. Choose another file");
  }
  struct stat status {};
  if (stat(m_zFile.c_str(), &status) != 0) {
    return nullptr;
  }
  if (!S_ISREG(status.st_mode)) {
    Refuse(S_ISDIR(status.st_mode) ? "it is a folder. Name a file in it" : "it is not an ordinary file");
  }
  try {
    auto held = std::make_unique<ExclusiveUse>(m_zFile);
    if (status.st_size == 0) {
      return held;
    }
    if (!IsOrderStore(held->Database(), m_zFile)) {
      Refuse("it is a file of another kind, and is not replaced. Choose another file, or remove it");
    }
    // A store that programs use has a log. On a network file system it has none; there its name tells.
    if (HasLogMode(held->Database(), m_zFile) || file::IsSameName(m_zFile, m_zStore)) {
      Refuse(
          "it is an order store that is in use or was kept, not a backup. Choose another file, or move it "
          "away");
    }
    return held;
  } catch (const Failure& failure) {
    if (failure.Number() != failure::kStoreUnavailable) {
      throw;
    }
    throw Failure(failure.Number(), failure.Description() + " The backup " + m_zFile + " was not made.");
  }
}

}  // namespace qm_ordering::ado::embedded
