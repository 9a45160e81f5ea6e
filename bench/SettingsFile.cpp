#include "bench/SettingsFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <fstream>
#include <stdexcept>
#include <string_view>
#include <unordered_map>

#include "bench/PlainFile.h"
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
  ReplaceFile(zvFile, Merged(zvFile, Defaults(zvText)));
  Require(close(lLock) == 0, "the lock");
}

}  // namespace bench
