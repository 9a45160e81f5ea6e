#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/faults/SystemCalls.h"

namespace test {

// Keeps account of what a folder's files would hold after a power failure: what was written and not flushed,
// and names that were made, changed or removed in a folder that was not flushed, may be there or not. After a
// given number of requests the power fails: nothing is done any more.
class UnreliableDisk : public SystemObserver {
 public:
  // What the folder holds at this moment is on the disk.
  UnreliableDisk(std::string zvFolder, std::size_t lvRequestsUntilPowerFails);

  int Before(const SystemRequest& request) override;
  void After(const SystemRequest& request) override;
  bool Sleeps() override { return false; }

  std::size_t Requests() const { return m_lRequests; }
  bool IsOff() const { return m_lRequests >= m_lLimit; }
  // How many writes and changes of names were not flushed when the power failed.
  std::size_t Unflushed() const;

  // Puts what is left into the folder: without anything that was not flushed, or with parts of it that chance
  // picks: some of the writes, whole or some of their sectors, and the first of the changes of names.
  void PutLeft(const std::string& zvFolder) const;
  void PutLeft(const std::string& zvFolder, std::mt19937_64& orChance) const;

 private:
  struct Change {
    bool Truncates;
    std::uint64_t Offset;  // of a truncation the new size
    std::string Data;
  };
  struct File {
    std::string Flushed;
    std::vector<Change> Pending;
  };
  // A name that came to stand for a file, or for none (-1); a folder is kNewFolder.
  struct Naming {
    std::string Path;
    int File;
  };
  using Names = std::map<std::string, int>;

  static constexpr int kNone = -1;
  static constexpr int kNewFolder = -2;

  std::string Relative(const std::string& zvPath) const;
  static std::string FolderOf(const std::string& zvPath);
  void Name(const std::string& zvPath, int lvFile);
  void FlushFolder(const std::string& zvFolder);
  File& FileAt(const std::string& zvPath);

  static void Apply(std::string& orContent, const Change& change);
  static void ApplyPart(std::string& orContent, const Change& change, std::mt19937_64& orChance);
  static void Write(const std::string& zvFolder, const Names& names,
                    const std::vector<std::string>& contents);

  std::string m_zFolder;
  std::size_t m_lLimit;
  std::size_t m_lRequests = 0;
  std::vector<File> m_oFiles;
  Names m_oNow;      // as the program sees them
  Names m_oFlushed;  // as they are on the disk
  std::vector<Naming> m_oPendingNames;
};

}  // namespace test
