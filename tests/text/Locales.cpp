#include "tests/text/Locales.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "tests/support/TempFolder.h"

namespace test {

namespace {

struct LocaleSource {
  const char* zName;
  const char* zDefinition;
  const char* zCharset;
};

constexpr std::array<LocaleSource, 6> kSources = {{{"de_DE.UTF-8", "de_DE", "UTF-8"},
                                                   {"fr_FR.UTF-8", "fr_FR", "UTF-8"},
                                                   {"en_IN.UTF-8", "en_IN", "UTF-8"},
                                                   {"el_GR.UTF-8", "el_GR", "UTF-8"},
                                                   {"rw_RW.UTF-8", "rw_RW", "UTF-8"},
                                                   {"de_CH.CP1252", "de_CH", "CP1252"}}};

// A grouping that ends after two groups; no country writes so.
constexpr const char* kEndingName = "ending.UTF-8";
constexpr const char* kEndingDefinition =
    "LC_NUMERIC\ndecimal_point \".\"\nthousands_sep \"'\"\ngrouping 3;2;-1\nEND LC_NUMERIC\n"
    "LC_CTYPE\ncopy \"POSIX\"\nEND LC_CTYPE\n";

void Make(const std::filesystem::path& folder, const LocaleSource& source) {
  const std::filesystem::path target = folder / source.zName;
  if (std::filesystem::exists(target)) {
    return;
  }
  // Tests run side by side: each makes its own, and the first to finish puts it in place.
  std::string zTemporary = (folder / "making.XXXXXX").string();
  if (mkdtemp(zTemporary.data()) == nullptr) {
    throw std::runtime_error("no folder for locales in " + folder.string());
  }
  const std::string zMade = zTemporary + "/" + source.zName;
  const std::string zCommand = std::string("localedef -c -i '") + source.zDefinition + "' -f " +
                               source.zCharset + " '" + zMade + "' > '" + zTemporary + "/log' 2>&1";
  // It answers 1 for mere warnings, so what counts is the file.
  const int lStatus = std::system(zCommand.c_str());  // NOLINT(cert-env33-c)
  if (!std::filesystem::exists(zMade + "/LC_NUMERIC") || !std::filesystem::exists(zMade + "/LC_CTYPE")) {
    throw std::runtime_error("localedef (status " + std::to_string(lStatus) + ") cannot make " +
                             source.zName + ": " + ReadFile(zTemporary + "/log"));
  }
  std::error_code alreadyThere;
  std::filesystem::rename(zMade, target, alreadyThere);
  std::filesystem::remove_all(zTemporary);
}

}  // namespace

std::string LocaleFolder() {
  static const std::string zFolder = [] {
    const std::filesystem::path folder = std::filesystem::path(QM_ORDERING_BINARY_DIR) / "test-locales";
    std::filesystem::create_directories(folder);
    for (const LocaleSource& source : kSources) {
      Make(folder, source);
    }
    const TempFolder temporary;
    WriteFile(temporary.File("ending"), kEndingDefinition);
    const std::string zDefinition = temporary.File("ending");
    Make(folder, {kEndingName, zDefinition.c_str(), "UTF-8"});
    return folder.string();
  }();
  return zFolder;
}

}  // namespace test
