#include "qm_ordering/platform/file/WholeFile.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <utility>

#include "qm_ordering/platform/file/SystemError.h"
#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering::file {

namespace {

constexpr mode_t kFileMode = 0600;
constexpr mode_t kFolderMode = 0700;

constexpr int kLockAttempts = 1000;
constexpr useconds_t kLockPause = 5'000;  // microseconds; five seconds in all

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
// Never waits, whatever the file turns out to be, and follows no link that somebody has put there.
constexpr int kLockFlags = O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW;

constexpr std::string_view kTemporaryMark = ".tmp.";

std::string Quoted(const std::string& zvName) {
  return "\"" + zvName + "\"";
}

std::string NotWritten(const std::string& zvKind, const std::string& zvFile, const std::string& zvCause) {
  return "Cannot write the " + zvKind + " " + Quoted(zvFile) + ": " + zvCause + ".";
}

std::string FolderOf(const std::string& zvFile) {
  const std::size_t lSlash = zvFile.rfind('/');
  return lSlash == 0 ? "/" : zvFile.substr(0, lSlash);
}

// Where the file is in truth: a link is followed by hand, since its target need not exist yet.
std::string FollowLinks(const std::string& zvFile, const std::string& zvKind) {
  constexpr int kMaximumLinks = 40;
  std::string zTarget = zvFile;
  for (int i = 0; i < kMaximumLinks; ++i) {
    std::string zLink(PATH_MAX, '\0');
    const ssize_t lLength = readlink(zTarget.c_str(), zLink.data(), zLink.size());
    if (lLength < 0) {
      return zTarget;
    }
    zLink.resize(static_cast<std::size_t>(lLength));
    zTarget = zLink.starts_with('/') ? zLink : FolderOf(zTarget).append("/").append(zLink);
  }
  throw Failure(failure::kFileAccess, NotWritten(zvKind, zvFile, SystemErrorText(ELOOP)));
}

// What could not be opened for the writing, and what to do about it when something stands in its place.
std::string CannotBe(const char* zvDone, const std::string& zvName, int lvError) {
  struct stat status {};
  return Quoted(zvName) + " cannot be " + zvDone + ", " + SystemErrorText(lvError) +
         (lstat(zvName.c_str(), &status) == 0 ? ". Remove it" : "");
}

// A file system that cannot flush a folder has nothing to flush.
bool FlushFolder(const Descriptor& folder) {
  return folder.IsOpen() && (fsync(folder.Number()) == 0 || errno == EINVAL);
}

}  // namespace

WholeFile::WholeFile(const std::string& zvName, std::string zvKind)
    : m_zKind(std::move(zvKind)), m_zPath(FollowLinks(zvName, m_zKind)) {}

void WholeFile::Raise(const std::string& zvCause) const {
  throw Failure(failure::kFileAccess, NotWritten(m_zKind, m_zPath, zvCause));
}

void WholeFile::MakeFolders() const {
  MakeFolder(FolderOf(m_zPath));
}

void WholeFile::MakeFolder(const std::string& zvFolder) const {
  struct stat status {};
  if (zvFolder == "/" || stat(zvFolder.c_str(), &status) == 0) {
    return;
  }
  const std::string zParent = FolderOf(zvFolder);
  MakeFolder(zParent);
  // Another process may be making the same folder.
  if (mkdir(zvFolder.c_str(), kFolderMode) != 0 && errno != EEXIST) {
    Raise("the folder " + Quoted(zvFolder) + " cannot be made, " + SystemErrorText(errno));
  }
  if (!FlushFolder(Descriptor(open(zParent.c_str(), kFolderFlags)))) {
    Raise("the folder " + Quoted(zParent) + " cannot be flushed, " + SystemErrorText(errno));
  }
}

void WholeFile::WriteAll(int lvDescriptor, std::string_view zvContent) const {
  while (!zvContent.empty()) {
    const ssize_t lWritten = write(lvDescriptor, zvContent.data(), zvContent.size());
    if (lWritten < 0 && errno == EINTR) {
      continue;
    }
    if (lWritten < 0) {
      Raise(SystemErrorText(errno));
    }
    zvContent.remove_prefix(static_cast<std::size_t>(lWritten));
  }
}

// Gathers small parts, since each write is a call of the system.
void WholeFile::WriteParts(int lvDescriptor, const std::function<void(const TakePart&)>& content) const {
  constexpr std::size_t kEnough = 65'536;
  std::string zGathered;
  content([&](std::string_view zvPart) {
    zGathered += zvPart;
    if (zGathered.size() >= kEnough) {
      WriteAll(lvDescriptor, zGathered);
      zGathered.clear();
    }
  });
  WriteAll(lvDescriptor, zGathered);
}

// The folder is opened before anything is written, so that it can be flushed when the new file is there.
WholeFile::Writing::Writing(const WholeFile& file)
    : m_oFile(file),
      m_oFolder(open(FolderOf(file.m_zPath).c_str(), kFolderFlags)),
      m_oLock(m_oFolder.IsOpen() ? open((file.m_zPath + ".lock").c_str(), kLockFlags, kFileMode) : -1) {
  const int lError = errno;
  const std::string zLock = file.m_zPath + ".lock";
  if (!m_oFolder.IsOpen()) {
    throw Failure(
        lError == ENOENT || lError == ENOTDIR ? failure::kPathNotFound : failure::kFileAccess,
        NotWritten(file.m_zKind, file.m_zPath, "its folder cannot be opened, " + SystemErrorText(lError)));
  }
  if (!m_oLock.IsOpen()) {
    file.Raise(CannotBe("opened", zLock, lError));
  }
  for (int i = 0; flock(m_oLock.Number(), LOCK_EX | LOCK_NB) != 0; ++i) {
    if (errno != EWOULDBLOCK && errno != EINTR) {
      file.Raise(Quoted(zLock) + " cannot be locked, " + SystemErrorText(errno));
    }
    if (i == kLockAttempts) {
      file.Raise("it is locked by another process, the one that \"lslocks\" shows with " + Quoted(zLock) +
                 ". Try again when that one has finished, or end it");
    }
    usleep(kLockPause);
  }
}

// While the lock is held, no temporary file is in use.
void WholeFile::Writing::RemoveLeftovers() const {
  const std::string& zFile = m_oFile.m_zPath;
  const std::string zStart = zFile.substr(zFile.rfind('/') + 1) + std::string(kTemporaryMark);
  DIR* folder = opendir(FolderOf(zFile).c_str());
  if (folder == nullptr) {
    m_oFile.Raise("its folder cannot be read, " + SystemErrorText(errno));
  }
  while (const dirent* entry = readdir(folder)) {
    const std::string_view zName = entry->d_name;
    if (zName.starts_with(zStart) && zName.size() > zStart.size() &&
        zName.find_first_not_of("0123456789", zStart.size()) == std::string_view::npos) {
      unlinkat(dirfd(folder), entry->d_name, 0);
    }
  }
  closedir(folder);
}

void WholeFile::Writing::Replace(const std::function<void(const TakePart&)>& content) const {
  RemoveLeftovers();
  const std::string& zFile = m_oFile.m_zPath;
  const std::string zTemporary = zFile + std::string(kTemporaryMark) + std::to_string(getpid());
  const Descriptor file(open(zTemporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kFileMode));
  if (!file.IsOpen()) {
    m_oFile.Raise(CannotBe("made", zTemporary, errno));
  }
  try {
    m_oFile.WriteParts(file.Number(), content);
    if (fsync(file.Number()) != 0 || std::rename(zTemporary.c_str(), zFile.c_str()) != 0) {
      m_oFile.Raise(SystemErrorText(errno));
    }
  } catch (...) {
    unlink(zTemporary.c_str());
    throw;
  }
  if (!FlushFolder(m_oFolder)) {
    throw Failure(failure::kFileAccess, "The " + m_oFile.m_zKind + " " + Quoted(zFile) +
                                            " is written, but its folder cannot be flushed, " +
                                            SystemErrorText(errno) +
                                            ": should the power fail now, the old one may be back.");
  }
}

}  // namespace qm_ordering::file
