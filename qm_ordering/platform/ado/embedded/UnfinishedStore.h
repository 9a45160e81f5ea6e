#pragma once

#include <string>

namespace qm_ordering::ado::embedded {

// What the engine appends to a store's name for the logs beside it.
inline constexpr const char* kLogSuffixes[] = {"-wal", "-journal"};

// Between a store's name and the time at which a restore replaced it.
inline constexpr const char* kKeptMark = ".replaced-";

// Whether the name is one of an unfinished store, which the next maker of that store removes.
bool IsUnfinished(const std::string& zvPath);

// The log with something in it that lies beside a store of that name; empty when none does. The engine reads
// it into whatever file has the name.
std::string LogBeside(const std::string& zvPath);

// The name, or the first of NAME-2, NAME-3, ... under which there is neither a file nor a log.
std::string FreeName(const std::string& zvName);

// Gives a file another name in its folder unless that name is taken. Answers 0 or the system's error.
int RenameToNew(const std::string& zvPath, const std::string& zvNewPath);

// So that names that were given or taken away in the folder of the path stay so after a power failure.
void FlushFolderOf(const std::string& zvPath);

// Held by everyone who makes a store in a folder. Who has the folder to himself for a moment removes what
// processes that were killed have left of a store of that name: nobody's is being made then. Where the file
// system cannot lock a folder, and where another program holds it, nothing is removed.
class MakersLock {
 public:
  explicit MakersLock(const std::string& zvPath);
  ~MakersLock();
  MakersLock(const MakersLock&) = delete;
  MakersLock& operator=(const MakersLock&) = delete;

 private:
  int m_lFolder;
};

// The file of a store that is being made, readable by its user alone, under a name that no other thread,
// process or machine takes for its own. Unless it was published it goes at the end of the scope, with all
// that the engine made beside it.
class UnfinishedStore {
 public:
  // Makes the empty file beside the one that it is to become. zvRefusal begins every message: "The order
  // store X was not created". Raises 75.
  UnfinishedStore(const std::string& zvFinalPath, std::string zvRefusal);
  ~UnfinishedStore();
  UnfinishedStore(const UnfinishedStore&) = delete;
  UnfinishedStore& operator=(const UnfinishedStore&) = delete;

  const std::string& Path() const { return m_zPath; }

  // Gives it its name, which then outlives a power failure; false when the name is taken. Raises 75.
  bool PublishAs(const std::string& zvPath);
  // The same in the place of a file of that name.
  void PublishInPlaceOf(const std::string& zvPath);

 private:
  MakersLock m_oLock;
  std::string m_zPath;
  std::string m_zRefusal;
  std::string m_zBeside;
};

}  // namespace qm_ordering::ado::embedded
