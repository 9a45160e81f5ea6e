#include "qm_ordering/platform/settings/FileSettings.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "qm_ordering/platform/file/Path.h"
#include "qm_ordering/platform/file/SystemError.h"
#include "qm_ordering/platform/settings/SettingsText.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/platform/value/OutOfMemory.h"

namespace qm_ordering {

namespace {

// Far more than settings need; a file beyond it is something else.
constexpr std::size_t kMaximumSize = std::size_t{16} << 20;

constexpr mode_t kFileMode = 0600;
constexpr mode_t kFolderMode = 0700;

constexpr int kLockAttempts = 1000;
constexpr useconds_t kLockPause = 5'000;  // microseconds; five seconds in all

[[noreturn]] void RaiseFileAccess(const char* zvWhat, const std::string& zvFile, const std::string& zvCause) {
  throw Failure(failure::kFileAccess,
                std::string("Cannot ") + zvWhat + " the settings file \"" + zvFile + "\": " + zvCause + ".");
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

  bool IsOpen() const { return m_lNumber >= 0; }
  int Number() const { return m_lNumber; }

 private:
  int m_lNumber;
};

// Never waits, whatever the file turns out to be.
constexpr int kOpenFlags = O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

std::string ReadWhole(const std::string& zvFile) {
  const Descriptor file(open(zvFile.c_str(), O_RDONLY | kOpenFlags));
  if (!file.IsOpen()) {
    if (errno == ENOENT) {
      return {};
    }
    RaiseFileAccess("read", zvFile, file::SystemErrorText(errno));
  }
  struct stat status {};
  if (fstat(file.Number(), &status) != 0) {
    RaiseFileAccess("read", zvFile, file::SystemErrorText(errno));
  }
  if (!S_ISREG(status.st_mode)) {
    RaiseFileAccess("read", zvFile,
                    S_ISDIR(status.st_mode) ? "it is a folder. Name a file within it"
                                            : "it is not a regular file. Name one that is");
  }
  std::string zContent;
  std::array<char, 4096> zPiece;
  while (true) {
    const ssize_t lRead = read(file.Number(), zPiece.data(), zPiece.size());
    if (lRead < 0 && errno == EINTR) {
      continue;
    }
    if (lRead < 0) {
      RaiseFileAccess("read", zvFile, file::SystemErrorText(errno));
    }
    if (lRead == 0) {
      return zContent;
    }
    zContent.append(zPiece.data(), static_cast<std::size_t>(lRead));
    if (zContent.size() > kMaximumSize) {
      RaiseFileAccess("read", zvFile, "it is larger than 16 MiB, which no settings file is");
    }
  }
}

settings::SettingsText ReadSettings(const std::string& zvFile) {
  return {ReadWhole(zvFile), zvFile};
}

std::string FolderOf(const std::string& zvFile) {
  const std::size_t lSlash = zvFile.rfind('/');
  return lSlash == 0 ? "/" : zvFile.substr(0, lSlash);
}

// Where the file is in truth: a link is followed by hand, since its target need not exist yet.
std::string FollowLinks(const std::string& zvFile) {
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
  RaiseFileAccess("write", zvFile, file::SystemErrorText(ELOOP));
}

// A file system that cannot flush a folder has nothing to flush.
void FlushFolder(const std::string& zvFolder, const std::string& zvFile) {
  const Descriptor folder(open(zvFolder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder.IsOpen() || (fsync(folder.Number()) != 0 && errno != EINVAL)) {
    RaiseFileAccess("write", zvFile, "its folder cannot be flushed, " + file::SystemErrorText(errno));
  }
}

void MakeFolders(const std::string& zvFolder, const std::string& zvFile) {
  struct stat status {};
  if (zvFolder == "/" || stat(zvFolder.c_str(), &status) == 0) {
    return;
  }
  const std::string zParent = FolderOf(zvFolder);
  MakeFolders(zParent, zvFile);
  // Another process may be making the same folder.
  if (mkdir(zvFolder.c_str(), kFolderMode) != 0 && errno != EEXIST) {
    RaiseFileAccess("write", zvFile,
                    "the folder \"" + zvFolder + "\" cannot be made, " + file::SystemErrorText(errno));
  }
  FlushFolder(zParent, zvFile);
}

// Keeps other writers of the file away for the length of a scope. The lock file stays for good: a writer that
// removed it would let two others lock two different files.
class WriteLock {
 public:
  explicit WriteLock(const std::string& zvFile)
      : m_oLock(open((zvFile + ".lock").c_str(), O_RDWR | O_CREAT | kOpenFlags, kFileMode)) {
    if (!m_oLock.IsOpen()) {
      RaiseFileAccess("write", zvFile,
                      "\"" + zvFile + ".lock\" cannot be opened, " + file::SystemErrorText(errno));
    }
    for (int i = 0; flock(m_oLock.Number(), LOCK_EX | LOCK_NB) != 0; ++i) {
      if (errno != EWOULDBLOCK && errno != EINTR) {
        RaiseFileAccess("write", zvFile,
                        "\"" + zvFile + ".lock\" cannot be locked, " + file::SystemErrorText(errno));
      }
      if (i == kLockAttempts) {
        RaiseFileAccess("write", zvFile,
                        "it is locked by another process. Try again when that one has finished");
      }
      usleep(kLockPause);
    }
  }

 private:
  Descriptor m_oLock;
};

constexpr std::string_view kTemporaryMark = ".tmp.";

// Removes what writers that were killed have left: while the lock is held, no temporary file is in use.
void RemoveLeftovers(const std::string& zvFile) {
  const std::string zStart = zvFile.substr(zvFile.rfind('/') + 1) + std::string(kTemporaryMark);
  DIR* folder = opendir(FolderOf(zvFile).c_str());
  if (folder == nullptr) {
    RaiseFileAccess("write", zvFile, "its folder cannot be read, " + file::SystemErrorText(errno));
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

void WriteAll(int lvDescriptor, std::string_view zvContent, const std::string& zvFile) {
  while (!zvContent.empty()) {
    const ssize_t lWritten = write(lvDescriptor, zvContent.data(), zvContent.size());
    if (lWritten < 0 && errno == EINTR) {
      continue;
    }
    if (lWritten < 0) {
      RaiseFileAccess("write", zvFile, file::SystemErrorText(errno));
    }
    zvContent.remove_prefix(static_cast<std::size_t>(lWritten));
  }
  if (fsync(lvDescriptor) != 0) {
    RaiseFileAccess("write", zvFile, file::SystemErrorText(errno));
  }
}

void Replace(const std::string& zvFile, const std::string& zvContent) {
  RemoveLeftovers(zvFile);
  const std::string zTemporary = zvFile + std::string(kTemporaryMark) + std::to_string(getpid());
  const Descriptor file(open(zTemporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kFileMode));
  if (!file.IsOpen()) {
    RaiseFileAccess("write", zvFile,
                    "\"" + zTemporary + "\" cannot be made, " + file::SystemErrorText(errno));
  }
  try {
    WriteAll(file.Number(), zvContent, zvFile);
    if (std::rename(zTemporary.c_str(), zvFile.c_str()) != 0) {
      RaiseFileAccess("write", zvFile, file::SystemErrorText(errno));
    }
  } catch (...) {
    unlink(zTemporary.c_str());
    throw;
  }
  FlushFolder(FolderOf(zvFile), zvFile);
}

class FileUserSettings : public UserSettings {
 public:
  explicit FileUserSettings(const std::string& zvFile) : m_oText(ReadSettings(zvFile)) {}

  std::string Get(const std::string& zvKey) override { return m_oText.Get(zvKey); }

 private:
  settings::SettingsText m_oText;
};

class FileOrderDefaults : public OrderDefaults {
 public:
  explicit FileOrderDefaults(std::string zvFile)
      : m_zFile(std::move(zvFile)), m_oText(ReadSettings(m_zFile)) {}

  std::string Get(const std::string& zvKey) override { return m_oText.Get(zvKey); }

  void Set(const std::string& zvKey, const std::string& zvValue) override {
    m_oText.Set(zvKey, zvValue);
    m_oChanges.emplace_back(zvKey, zvValue);
  }

  void Save() override {
    const std::string zTarget = FollowLinks(m_zFile);
    const std::string zOld = ReadWhole(zTarget);
    const std::string zNew = WithChanges(zOld, zTarget);
    // A file that holds all of it already may stand where nothing can be written.
    if (zNew != zOld) {
      MakeFolders(FolderOf(zTarget), zTarget);
      const WriteLock lock(zTarget);
      // Another process may have written since: what counts is what the file holds now.
      const std::string zNow = ReadWhole(zTarget);
      Replace(zTarget, zNow == zOld ? zNew : WithChanges(zNow, zTarget));
    }
    m_oChanges.clear();
  }

 private:
  std::string WithChanges(const std::string& zvOld, const std::string& zvTarget) {
    settings::SettingsText text(zvOld, zvTarget);
    for (const auto& [zKey, zValue] : m_oChanges) {
      text.Set(zKey, zValue);
    }
    std::string zNew = text.Text();
    if (zNew.size() > kMaximumSize) {
      RaiseFileAccess("write", zvTarget, "it would become larger than 16 MiB");
    }
    return zNew;
  }

  std::string m_zFile;
  settings::SettingsText m_oText;
  std::vector<std::pair<std::string, std::string>> m_oChanges;  // since the last Save
};

class FileSettings : public SettingsComponent {
 public:
  explicit FileSettings(std::string zvFile) : m_zFile(std::move(zvFile)) {}

  std::unique_ptr<UserSettings> CreateUserSettings() override {
    return std::make_unique<FileUserSettings>(m_zFile);
  }

  std::unique_ptr<OrderDefaults> CreateOrderDefaults() override {
    return std::make_unique<FileOrderDefaults>(m_zFile);
  }

  RegistrationDetails ReadRegistration() override {
    const settings::SettingsText text = ReadSettings(m_zFile);
    RegistrationDetails details;
    details.City = text.Get("Reg_City");
    details.CompanyName = text.Get("Reg_FullCompanyName");
    details.Address1 = text.Get("Reg_CompanyAddress1");
    details.Address2 = text.Get("Reg_CompanyAddress2");
    details.Fax = text.Get("Reg_CompanyFax");
    details.Telephone = text.Get("Reg_CompanyPhone");
    details.TelephoneExt = text.Get("Reg_CompanyPhoneExt");
    details.Country = text.Get("Reg_Country");
    details.Email = text.Get("Reg_Email");
    details.FirstName = text.Get("Reg_FirstName");
    details.LastName = text.Get("Reg_LastName");
    details.State = text.Get("Reg_State");
    details.StateOr = text.Get("Reg_StateOr");
    details.ZipOrPostCode = text.Get("Reg_ZipOrPostCode");
    details.AccountNumber = text.Get("Reg_AccounNumber");
    return details;
  }

 private:
  std::string m_zFile;
};

// The value of an environment variable; empty when it is unset.
std::string Environment(const char* zvName) {
  const char* zValue = std::getenv(zvName);
  return zValue == nullptr ? std::string() : std::string(zValue);
}

std::string FullName(const std::string& zvFile) {
  return zvFile.empty() ? DefaultSettingsFile() : file::AbsolutePath(zvFile);
}

}  // namespace

std::string DefaultSettingsFile() {
  return OrOutOfMemory([&] {
    const std::string zFile = Environment("QK_COMMON_SETTINGS");
    if (!zFile.empty()) {
      return file::AbsolutePath(zFile);
    }
    const std::string zConfig = Environment("XDG_CONFIG_HOME");
    if (!zConfig.empty()) {
      return file::AbsolutePath(zConfig + "/qk_common/settings.ini");
    }
    const std::string zHome = Environment("HOME");
    if (!zHome.empty()) {
      return file::AbsolutePath(zHome + "/.config/qk_common/settings.ini");
    }
    throw Failure(
        failure::kPathNotFound,
        "There is no settings file: none of QK_COMMON_SETTINGS, XDG_CONFIG_HOME and HOME is set. Set "
        "QK_COMMON_SETTINGS to the full path of one.");
  });
}

std::shared_ptr<SettingsComponent> CreateFileSettings(const std::string& zvFile) {
  return OrOutOfMemory([&] { return std::make_shared<FileSettings>(FullName(zvFile)); });
}

std::vector<std::string> FileSettingsKeys(const std::string& zvFile) {
  return OrOutOfMemory([&] { return ReadSettings(FullName(zvFile)).Keys(); });
}

}  // namespace qm_ordering
