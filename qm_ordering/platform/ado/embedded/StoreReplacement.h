#pragma once

#include <optional>
#include <string>

#include "qm_ordering/platform/ado/embedded/UnfinishedStore.h"

namespace qm_ordering::ado::embedded {

// A store that is to take the place of another, or of whatever stands there.
class StoreReplacement {
 public:
  // zvRefusal begins every message. Raises 75 when something else than a file stands in the store's place or
  // the folder cannot be written, 76 when there is no folder.
  StoreReplacement(const std::string& zvStore, std::string zvRefusal);

  // The empty file beside the store that takes the new one.
  const std::string& CopyPath() const { return m_oCopy->Path(); }

  // Puts the new store in place and answers the path under which the old one is kept; empty when there was
  // none, or the path of the log that was left of one. Ends this thread's resting sessions. Raises
  // kStoreUnavailable while the old store is in use, 75 when a file cannot be renamed; everything is then as
  // it was. Should the old store not get its name back, the message says under which it is.
  std::string Publish();

 private:
  [[noreturn]] void Refuse(const std::string& zvWhy) const;
  // Whether a file stands in the store's place.
  bool StoreExists() const;
  bool IsWithoutLog() const;
  void TakeOverPermissions() const;
  std::string PublishWithLog(const std::string& zvKept, bool bvStoreExists);

  std::string m_zStore;
  std::string m_zRefusal;
  std::optional<UnfinishedStore> m_oCopy;
};

}  // namespace qm_ordering::ado::embedded
