#include "qm_ordering/platform/settings/FileSettings.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "qm_ordering/platform/file/Descriptor.h"
#include "qm_ordering/platform/file/Path.h"
#include "qm_ordering/platform/file/SystemError.h"
#include "qm_ordering/platform/file/WholeFile.h"
#include "qm_ordering/platform/settings/SettingsText.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/platform/value/OutOfMemory.h"

namespace qm_ordering {

namespace {

// Far more than settings need; a file beyond it is something else.
constexpr std::size_t kMaximumSize = std::size_t{16} << 20;

[[noreturn]] void RaiseFileAccess(const char* zvWhat, const std::string& zvFile, const std::string& zvCause) {
  throw Failure(failure::kFileAccess,
                std::string("Cannot ") + zvWhat + " the settings file \"" + zvFile + "\": " + zvCause + ".");
}

// Never waits, whatever the file turns out to be.
constexpr int kOpenFlags = O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

std::string ReadWhole(const std::string& zvFile) {
  const file::Descriptor file(open(zvFile.c_str(), O_RDONLY | kOpenFlags));
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
    const file::WholeFile file(m_zFile, "settings file");
    const std::string zOld = ReadWhole(file.Path());
    const std::string zNew = WithChanges(zOld, file.Path());
    // A file that holds all of it already may stand where nothing can be written.
    if (zNew != zOld) {
      file.MakeFolders();
      const file::WholeFile::Writing writing(file);
      // Another process may have written since: what counts is what the file holds now.
      const std::string zNow = ReadWhole(file.Path());
      const std::string zContent = zNow == zOld ? zNew : WithChanges(zNow, file.Path());
      writing.Replace([&](const file::TakePart& take) { take(zContent); });
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
