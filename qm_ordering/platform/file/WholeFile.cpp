#include "qm_ordering/platform/file/WholeFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "qm_ordering/platform/file/SystemError.h"
#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering::file {

namespace {

[[noreturn]] void RaiseNotWritten(const std::string& zvFile, int lvError) {
  throw Failure(lvError == ENOENT || lvError == ENOTDIR ? failure::kPathNotFound : failure::kFileAccess,
                "The file " + zvFile + " was not written: " + SystemErrorText(lvError) + ".");
}

// A descriptor that is closed at the end of its scope.
class Descriptor {
 public:
  explicit Descriptor(int lvNumber) : m_lNumber(lvNumber) {}
  ~Descriptor() {
    if (m_lNumber >= 0) {
      close(m_lNumber);
    }
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int Number() const { return m_lNumber; }

 private:
  int m_lNumber;
};

// Waits for the file; false when it was renamed meanwhile by who had it.
bool LockAsNamed(int lvDescriptor, const std::string& zvTemporary, const std::string& zvFile) {
  while (flock(lvDescriptor, LOCK_EX) != 0) {
    if (errno != EINTR) {
      RaiseNotWritten(zvFile, errno);
    }
  }
  struct stat open {};
  struct stat named {};
  if (fstat(lvDescriptor, &open) != 0 || (stat(zvTemporary.c_str(), &named) != 0 && errno != ENOENT)) {
    RaiseNotWritten(zvFile, errno);
  }
  return open.st_dev == named.st_dev && open.st_ino == named.st_ino;
}

void WriteAll(int lvDescriptor, std::string_view zvContent, const std::string& zvFile) {
  while (!zvContent.empty()) {
    const ssize_t lWritten = write(lvDescriptor, zvContent.data(), zvContent.size());
    if (lWritten >= 0) {
      zvContent.remove_prefix(static_cast<std::size_t>(lWritten));
    } else if (errno != EINTR) {
      RaiseNotWritten(zvFile, errno);
    }
  }
}

// Gathers small parts, since each write is a call of the system.
class GatheringWriter {
 public:
  GatheringWriter(int lvDescriptor, const std::string& zvFile)
      : m_lDescriptor(lvDescriptor), m_zFile(zvFile) {}

  void Take(std::string_view zvPart) {
    m_zGathered += zvPart;
    if (m_zGathered.size() >= kEnough) {
      Flush();
    }
  }

  void Flush() {
    WriteAll(m_lDescriptor, m_zGathered, m_zFile);
    m_zGathered.clear();
  }

 private:
  static constexpr std::size_t kEnough = 65'536;

  int m_lDescriptor;
  const std::string& m_zFile;
  std::string m_zGathered;
};

// True when the content is in place; false when another one got the temporary file first.
bool TryToReplace(const std::string& zvFile, const std::string& zvTemporary,
                  const std::function<void(const TakePart&)>& content) {
  const Descriptor file(
      open(zvTemporary.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, S_IRUSR | S_IWUSR));
  if (file.Number() < 0) {
    RaiseNotWritten(zvFile, errno);
  }
  try {
    if (!LockAsNamed(file.Number(), zvTemporary, zvFile)) {
      return false;
    }
    // It may be what a killed program has left.
    if (ftruncate(file.Number(), 0) != 0) {
      RaiseNotWritten(zvFile, errno);
    }
    GatheringWriter writer(file.Number(), zvFile);
    content([&](std::string_view zvPart) { writer.Take(zvPart); });
    writer.Flush();
    if (fsync(file.Number()) != 0 || std::rename(zvTemporary.c_str(), zvFile.c_str()) != 0) {
      RaiseNotWritten(zvFile, errno);
    }
  } catch (...) {
    unlink(zvTemporary.c_str());
    throw;
  }
  return true;
}

}  // namespace

void ReplaceFile(const std::string& zvFile, const std::function<void(const TakePart&)>& content) {
  // One name for all who write it, so that nothing gathers beside the file when they are killed.
  const std::string zTemporary = zvFile + ".tmp";
  while (!TryToReplace(zvFile, zTemporary, content)) {
  }
  const Descriptor folder(
      open(zvFile.substr(0, zvFile.rfind('/') + 1).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  // A file system that cannot flush a folder has nothing to flush.
  if (folder.Number() < 0 || (fsync(folder.Number()) != 0 && errno != EINVAL)) {
    RaiseNotWritten(zvFile, errno);
  }
}

}  // namespace qm_ordering::file
