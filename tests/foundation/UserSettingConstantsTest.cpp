#include "qm_ordering/foundation/UserSettingConstants.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "tests/support/TempFolder.h"

namespace {

using namespace qm_ordering::UserSettingConstants;

std::ptrdiff_t KeysThatBegin(const std::string& zvStart) {
  return std::count_if(ALL_KEYS.begin(), ALL_KEYS.end(),
                       [&](const std::string& zvKey) { return zvKey.starts_with(zvStart); });
}

TEST(UserSettingConstants, KeepsTheOddSpellingsOfTheSharedKeys) {
  EXPECT_STREQ(REG_ACCOUNNUMBER, "Reg_AccounNumber");
  EXPECT_STREQ(DEFAULT_DI_PH0NE_NUMBER, "DEFAULT_DI_PH0NE_NUMBER");
  EXPECT_EQ(std::string(DEFAULT_DI_PH0NE_NUMBER).find('O'), std::string::npos);
  EXPECT_STREQ(DEFAULT_ORDER_PAYMENTINFOMATIONSET, "DEFAULT_ORDER_PAYMENTINFOMATIONSET");
  EXPECT_STREQ(DEFAULT_ORDER_DELIVERYINFOMATIONSET, "DEFAULT_ORDER_DELIVERYINFOMATIONSET");
}

TEST(UserSettingConstants, SpellsKeysOfOneMeaningAsTheHostDoes) {
  EXPECT_STREQ(ORDERINGDATABASEPATH, "OrderingDatabasePath");
  EXPECT_STREQ(OHIMPORTTEMPFILESPATH, "OHImportTempFilesPath");
  EXPECT_STREQ(LOGPATH, "LogPath");
  EXPECT_STREQ(DEFAULT_OI_PO_NUM, "DEFAULT_OI_PO_NUM");
  EXPECT_STREQ(DEFAULT_DI_STATEOR, "DEFAULT_DI_STATEOR");
  EXPECT_STREQ(DEFAULT_CC_STATE_OR, "DEFAULT_CC_STATE_OR");
  EXPECT_STREQ(DEFAULT_DI_FIRSTNAME, "DEFAULT_DI_FIRSTNAME");
  EXPECT_STREQ(DEFAULT_CC_FIRST_NAME, "DEFAULT_CC_FIRST_NAME");
  EXPECT_STREQ(REG_ZIPORPOSTCODE, "Reg_ZipOrPostCode");
  EXPECT_STREQ(DEFAULT_PI_MORVANE_ACCOUNT_NUMBER, "DEFAULT_PI_MORVANE_ACCOUNT_NUMBER");
}

TEST(UserSettingConstants, HoldsEveryKeyOnce) {
  const std::set<std::string> keys(ALL_KEYS.begin(), ALL_KEYS.end());
  EXPECT_EQ(keys.size(), 69U);
  EXPECT_EQ(KeysThatBegin("Reg_"), 19);
  EXPECT_EQ(KeysThatBegin("DEFAULT_"), 47);
}

TEST(UserSettingConstants, NamesEachConstantAsItsKeyAndListsAllInTheirOrder) {
  const std::string zHeader =
      test::ReadFile(std::string(QM_ORDERING_SOURCE_DIR) + "/qm_ordering/foundation/UserSettingConstants.h");
  const std::regex declaration("inline constexpr const char\\* (\\w+) = \"(\\w+)\";");
  std::vector<std::string> keys;
  for (std::sregex_iterator found(zHeader.begin(), zHeader.end(), declaration), end; found != end; ++found) {
    std::string zUpperCase = (*found)[2];
    std::transform(zUpperCase.begin(), zUpperCase.end(), zUpperCase.begin(),
                   [](unsigned char cvLetter) { return static_cast<char>(std::toupper(cvLetter)); });
    EXPECT_EQ((*found)[1], zUpperCase);
    keys.push_back((*found)[2]);
  }
  EXPECT_EQ(keys, std::vector<std::string>(ALL_KEYS.begin(), ALL_KEYS.end()));
}

}  // namespace
