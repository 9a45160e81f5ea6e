#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "qm_ordering/platform/file/Descriptor.h"

namespace qm_ordering::file {

// What takes the next part of a file's content.
using TakePart = std::function<void(std::string_view)>;

// A file that is written as a whole, by one at a time, so that who reads it meets the old content or the new
// one. Its members raise failure::kPathNotFound when its folder is not there and failure::kFileAccess for
// everything else, naming the file and what to do; the old file then stays, but where Replace says otherwise.
class WholeFile {
 public:
  // zvName is absolute; a symbolic link is followed, also one whose target is not there yet. zvKind is what
  // messages call it: "settings file". Touches nothing.
  WholeFile(const std::string& zvName, std::string zvKind);

  // The file itself, behind all links.
  const std::string& Path() const { return m_zPath; }

  // Makes the folders above it that are not there, for their user alone.
  void MakeFolders() const;

  // Keeps other writers of the file away while it lives. It waits for one that is there, at most some five
  // seconds. Its lock is a file PATH.lock beside it, which stays: a writer that removed it would let two
  // others lock two different files.
  class Writing {
   public:
    explicit Writing(const WholeFile& file);

    // Puts a file with that content, readable by its user alone, in the place of the old one or of none: a
    // temporary file PATH.tmp.PROCESS, flushed and renamed. Removes what writers that were killed have left.
    // When only the last step fails, the flush of the folder, the new file is there, and the message says
    // that it may be lost again with the power. content is called once, to hand over all parts; what it
    // raises rises.
    void Replace(const std::function<void(const TakePart&)>& content) const;

   private:
    void RemoveLeftovers() const;

    const WholeFile& m_oFile;
    Descriptor m_oFolder;
    Descriptor m_oLock;
  };

 private:
  [[noreturn]] void Raise(const std::string& zvCause) const;
  void MakeFolder(const std::string& zvFolder) const;
  void WriteAll(int lvDescriptor, std::string_view zvContent) const;
  void WriteParts(int lvDescriptor, const std::function<void(const TakePart&)>& content) const;

  std::string m_zKind;
  std::string m_zPath;
};

}  // namespace qm_ordering::file
