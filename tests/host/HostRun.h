#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/HostProgram.h"
#include "tests/support/StoreFixture.h"
#include "tests/support/TempFolder.h"

namespace test {

// A folder with a settings file in it, and, once CreateStore was called, a store.
class HostFixture : public testing::Test {
 protected:
  // Runs a command with these settings.
  HostRun Run(std::vector<std::string> zvArguments, const HostStreams& streams = {}) const;
  // The same, with --json.
  HostRun RunJson(std::vector<std::string> zvArguments) const;

  void CreateStore() const;
  // Writes a file into the folder and answers its path.
  std::string Write(const std::string& zvName, const std::string& zvContent) const;
  // The order as `order show --json` gives it.
  nlohmann::json Order() const;

  std::string SettingsFile() const { return Folder.File("settings.ini"); }
  StoreFile Store() const { return StoreFile(Folder.File("Orders.mdb")); }

  TempFolder Folder;
};

// A small catalogue: A1 sells in tens and ships in twenties, B2 in ones, C3 in fives.
inline constexpr const char* kCatalogue =
    "ItemNumber,Description,Manufacturer,SellQuantity,ShipQuantity,UsuallyShips,Taxable,Price\r\n"
    "A1,\"Bolt, \"\"M8\"\"\",O'Brannock,10,20,TODAY,true,0.0845\r\n"
    "B2,Zange f\xC3\xBCr L\xC3\xB6"
    "cher,,1,1,1-3 DAYS,,18.75\r\n"
    "C3,Cable,,5,5,SPECIAL ORDER,0,2\r\n";

}  // namespace test
