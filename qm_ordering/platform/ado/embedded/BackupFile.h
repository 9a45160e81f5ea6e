#pragma once

#include <memory>
#include <optional>
#include <string>

#include "qm_ordering/platform/ado/embedded/ExclusiveUse.h"
#include "qm_ordering/platform/ado/embedded/UnfinishedStore.h"

namespace qm_ordering::ado::embedded {

// The file that is to become a backup of a store. Until it is published, what is there stays.
class BackupFile {
 public:
  // Refuses a file that a backup must not take the place of: the store itself and its logs, a folder and
  // other things that are no ordinary file, a file that is neither empty nor an order store, a store that a
  // program has open or whose log lies beside it, since the engine would read that into the backup. Raises
  // 75; kStoreUnavailable for the open one; 76 when the folder does not exist or the name is empty.
  BackupFile(const std::string& zvFile, const std::string& zvStore);

  // The full name, without symbolic links.
  const std::string& Name() const { return m_zFile; }
  // The empty file beside it that takes the copy.
  const std::string& CopyPath() const { return m_oCopy->Path(); }

  // Puts the copy in its place; refuses as before, should something have come up there.
  void Publish();

 private:
  [[noreturn]] void Refuse(const std::string& zvWhy) const;
  // Holds the file that is there against everybody; null when there is none.
  std::unique_ptr<ExclusiveUse> HoldReplaceable() const;

  std::string m_zFile;
  std::string m_zStore;
  std::optional<UnfinishedStore> m_oCopy;
};

}  // namespace qm_ordering::ado::embedded
