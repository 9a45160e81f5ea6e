#include "host/WholeFile.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "host/Errors.h"

namespace host {

namespace {

std::string ErrorText(int lvError) {
  return std::generic_category().message(lvError);
}

// A descriptor that is closed at the end of its scope.
class Descriptor {
 public:
  explicit Descriptor(int lvNumber) : m_lNumber(lvNumber) {}
  ~Descriptor() {
    if (m_lNumber > STDIN_FILENO) {
      close(m_lNumber);
    }
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int Number() const { return m_lNumber; }

 private:
  int m_lNumber;
};

[[noreturn]] void RaiseNotRead(const std::string& zvFile, const std::string& zvWhy) {
  throw UsageError("The file " + zvFile + " cannot be read: " + zvWhy + ".");
}

[[noreturn]] void RaiseNotWritten(const std::string& zvFile, const std::string& zvWhy) {
  throw qm_ordering::Failure(qm_ordering::failure::kFileAccess,
                             "The file " + zvFile + " was not written: " + zvWhy + ".");
}

// Where the file is in truth; a file to be replaced must be an ordinary one.
std::string Target(const std::string& zvFile) {
  std::error_code error;
  const auto status = std::filesystem::status(zvFile, error);
  if (status.type() == std::filesystem::file_type::not_found) {
    return zvFile;
  }
  if (error) {
    RaiseNotWritten(zvFile, error.message());
  }
  if (status.type() != std::filesystem::file_type::regular) {
    RaiseNotWritten(zvFile, "it exists and is not an ordinary file");
  }
  return std::filesystem::canonical(zvFile).string();
}

void WriteAll(int lvDescriptor, const std::string& zvContent, const std::string& zvFile) {
  std::size_t lDone = 0;
  while (lDone < zvContent.size()) {
    const ssize_t lWritten = write(lvDescriptor, zvContent.data() + lDone, zvContent.size() - lDone);
    if (lWritten < 0 && errno != EINTR) {
      RaiseNotWritten(zvFile, ErrorText(errno));
    }
    lDone += lWritten > 0 ? static_cast<std::size_t>(lWritten) : 0;
  }
  if (fsync(lvDescriptor) != 0) {
    RaiseNotWritten(zvFile, ErrorText(errno));
  }
}

// A file system that cannot flush a folder has nothing to flush.
void FlushFolderOf(const std::string& zvFile) {
  const std::filesystem::path folder = std::filesystem::absolute(zvFile).parent_path();
  const Descriptor descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (descriptor.Number() >= 0) {
    fsync(descriptor.Number());
  }
}

}  // namespace

std::string ReadWholeFile(const std::string& zvFile) {
  const bool bStandardInput = zvFile == "-";
  const Descriptor file(bStandardInput ? STDIN_FILENO : open(zvFile.c_str(), O_RDONLY | O_CLOEXEC));
  const std::string zName = bStandardInput ? "of standard input" : zvFile;
  if (file.Number() < 0) {
    RaiseNotRead(zName, ErrorText(errno));
  }
  std::string zContent;
  char piece[64 * 1024];
  while (true) {
    const ssize_t lRead = read(file.Number(), piece, sizeof piece);
    if (lRead < 0 && errno == EINTR) {
      continue;
    }
    if (lRead < 0) {
      RaiseNotRead(zName, ErrorText(errno));
    }
    if (lRead == 0) {
      return zContent;
    }
    zContent.append(piece, static_cast<std::size_t>(lRead));
  }
}

void WriteWholeFile(const std::string& zvFile, const std::string& zvContent) {
  const std::string zTarget = Target(zvFile);
  std::string zTemporary = zTarget + ".XXXXXX";
  // It makes the file readable by its user alone.
  const Descriptor file(mkstemp(zTemporary.data()));
  if (file.Number() < 0) {
    RaiseNotWritten(zvFile, "no file can be made beside it, " + ErrorText(errno));
  }
  try {
    WriteAll(file.Number(), zvContent, zvFile);
    if (std::rename(zTemporary.c_str(), zTarget.c_str()) != 0) {
      RaiseNotWritten(zvFile, ErrorText(errno));
    }
  } catch (...) {
    unlink(zTemporary.c_str());
    throw;
  }
  FlushFolderOf(zTarget);
}

}  // namespace host
