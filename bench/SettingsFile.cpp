#include "bench/SettingsFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <unordered_map>

#include "qm_ordering/foundation/UserSettingConstants.h"

namespace bench {

namespace {

using namespace qm_ordering::UserSettingConstants;

void Require(bool bvDone, const char* zvWhat) {
  if (!bvDone) {
    throw std::runtime_error(std::string("The settings file: ") + zvWhat);
  }
}

std::unordered_map<std::string, std::string> Defaults(const std::string& zvText) {
  std::unordered_map<std::string, std::string> defaults;
  for (const std::string_view zKey : ALL_KEYS) {
    if (zKey.starts_with("DEFAULT_OI_") || zKey.starts_with("DEFAULT_DI_") ||
        zKey.starts_with("DEFAULT_PI_") || zKey.starts_with("DEFAULT_CC_")) {
      defaults[std::string(zKey)] = zvText;
    }
  }
  for (const char* zKey :
       {DEFAULT_DI_DELIVERYMETHOD, DEFAULT_DI_SHIPPING_METHOD, DEFAULT_PI_PAYMENT_METHOD}) {
    defaults[zKey] = "0";
  }
  defaults[DEFAULT_OI_ISTAXEXEMPT] = "False";
  return defaults;
}

std::string Merged(const std::string& zvFile, std::unordered_map<std::string, std::string> defaults) {
  std::ifstream file(zvFile);
  std::string zText;
  std::string zLine;
  while (std::getline(file, zLine)) {
    const std::string zKey = zLine.substr(0, zLine.find(" = "));
    const auto found = defaults.find(zKey);
    if (found == defaults.end()) {
      zText += zLine + "\n";
    } else {
      zText += zKey + " = " + found->second + "\n";
      defaults.erase(found);
    }
  }
  for (const auto& [zKey, zValue] : defaults) {
    zText += zKey + " = " + zValue + "\n";
  }
  return zText;
}

}  // namespace

void KeepDefaults(const std::string& zvFile, const std::string& zvText) {
  const int lLock = open((zvFile + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  Require(lLock >= 0 && flock(lLock, LOCK_EX) == 0, "no lock");
  const std::string zContent = Merged(zvFile, Defaults(zvText));
  const std::string zTemporary = zvFile + ".new";
  const int lFile = open(zTemporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  Require(lFile >= 0, "cannot be opened");
  Require(write(lFile, zContent.data(), zContent.size()) == static_cast<ssize_t>(zContent.size()) &&
              fsync(lFile) == 0 && close(lFile) == 0 && std::rename(zTemporary.c_str(), zvFile.c_str()) == 0,
          "cannot be written");
  const int lFolder = open(zvFile.substr(0, zvFile.rfind('/')).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  Require(lFolder >= 0 && fsync(lFolder) == 0 && close(lFolder) == 0 && close(lLock) == 0,
          "its folder cannot be flushed");
}

}  // namespace bench
