#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/store/DatabaseFixture.h"
#include "tests/support/RaisedNumber.h"

// A new current order with the defaults that it starts with, and the defaults and registered values brought
// into the orders that are there.

namespace {

using test::RaisedNumber;
using test::Row;
using test::Rows;
using Texts = std::vector<std::string>;

class OrderDefaults : public test::DatabaseFixture {};

const char* const kInsertColumns =
    "insert into tblOrder (bIsCurrent,zPurchaseOrderNumber, zOIPhoneNumber, zOIEmail, "
    "zDIFirstName, zDILastName, zDICompanyName, zDIAddress1, zDIAddress2, "
    "zDICity, zDIState, zDIStateOr, zDIZipOrPostCode, zDICountry, zDIPhoneNumber, "
    "zDIPhoneExt, zDIFax, zDINotes,zCCFirstName, zCCLastName, zCCCompanyName, "
    "zCCAddress1, zCCAddress2, zCCCity, zCCState, zCCStateOr, zCCZipOrPostCode, "
    "zCCCountry, zCCPhoneNumber, zCCPhoneExt, zCCAccountNumber, zCCFax, "
    "zPIMorvaneAccountNumber,zDICallBranchNumber,zDICallAttention,zDICallPhoneNumber,zDICallPhoneExt, "
    "lDIShippingMethod,lDIDeliveryMethod,lPIPaymentMethod,zOITaxIDNumber,bOIIsTaxExempt,"
    "zPOReleaseNumber, zOIProjectOrJobNumber, zOIRequisitionOrApprovalName, zOIDepartment) ";

// Each key with a value of its own, in the order of the columns of the insert, and the column that it fills.
struct Default {
  const char* Key;
  const char* Value;
  const char* Column;
};
const std::vector<Default> kDefaults = {
    {"DEFAULT_OI_PO_NUM", "po num", "zPurchaseOrderNumber"},
    {"DEFAULT_OI_PHONE_NUMBER", "oi phone", "zOIPhoneNumber"},
    {"DEFAULT_OI_EMAIL", "oi email", "zOIEmail"},
    {"DEFAULT_DI_FIRSTNAME", "di first", "zDIFirstName"},
    {"DEFAULT_DI_LASTNAME", "di last", "zDILastName"},
    {"DEFAULT_DI_COMPANYNAME", "di company", "zDICompanyName"},
    {"DEFAULT_DI_ADDRESS1", "di address 1", "zDIAddress1"},
    {"DEFAULT_DI_ADDRESS2", "di address 2", "zDIAddress2"},
    {"DEFAULT_DI_CITY", "di city", "zDICity"},
    {"DEFAULT_DI_STATE", "di state", "zDIState"},
    {"DEFAULT_DI_STATEOR", "di state or", "zDIStateOr"},
    {"DEFAULT_DI_ZIP_OR_POSTCODE", "di zip", "zDIZipOrPostCode"},
    {"DEFAULT_DI_COUNTRY", "di country", "zDICountry"},
    {"DEFAULT_DI_PH0NE_NUMBER", "di phone", "zDIPhoneNumber"},
    {"DEFAULT_DI_PHONE_EXT", "di ext", "zDIPhoneExt"},
    {"DEFAULT_DI_FAX", "di fax", "zDIFax"},
    {"DEFAULT_DI_NOTES", "di notes", "zDINotes"},
    {"DEFAULT_CC_FIRST_NAME", "cc first", "zCCFirstName"},
    {"DEFAULT_CC_LAST_NAME", "cc last", "zCCLastName"},
    {"DEFAULT_CC_COMPANY_NAME", "cc company", "zCCCompanyName"},
    {"DEFAULT_CC_ADDRESS1", "cc address 1", "zCCAddress1"},
    {"DEFAULT_CC_ADDRESS2", "cc address 2", "zCCAddress2"},
    {"DEFAULT_CC_CITY", "cc city", "zCCCity"},
    {"DEFAULT_CC_STATE", "cc state", "zCCState"},
    {"DEFAULT_CC_STATE_OR", "cc state or", "zCCStateOr"},
    {"DEFAULT_CC_ZIP_OR_POSTCODE", "cc zip", "zCCZipOrPostCode"},
    {"DEFAULT_CC_COUNTRY", "cc country", "zCCCountry"},
    {"DEFAULT_CC_PHONE_NUMBER", "cc phone", "zCCPhoneNumber"},
    {"DEFAULT_CC_PHONE_EXT", "cc ext", "zCCPhoneExt"},
    {"DEFAULT_CC_ACCOUNT_NUMBER", "cc account", "zCCAccountNumber"},
    {"DEFAULT_CC_FAX", "cc fax", "zCCFax"},
    {"DEFAULT_PI_MORVANE_ACCOUNT_NUMBER", "pi account", "zPIMorvaneAccountNumber"},
    {"DEFAULT_DI_CALL_BRANCH_NUMBER", "call branch", "zDICallBranchNumber"},
    {"DEFAULT_DI_CALL_ATTENTION", "call attention", "zDICallAttention"},
    {"DEFAULT_DI_CALL_PHONE_NUMBER", "call phone", "zDICallPhoneNumber"},
    {"DEFAULT_DI_CALL_PHONE_EXT", "call ext", "zDICallPhoneExt"},
    {"DEFAULT_DI_SHIPPING_METHOD", "9", "lDIShippingMethod"},
    {"DEFAULT_DI_DELIVERYMETHOD", "1", "lDIDeliveryMethod"},
    {"DEFAULT_PI_PAYMENT_METHOD", "2", "lPIPaymentMethod"},
    {"DEFAULT_OI_TAXIDNUMBER", "tax id", "zOITaxIDNumber"},
    {"DEFAULT_OI_ISTAXEXEMPT", "True", "bOIIsTaxExempt"},
    {"DEFAULT_OI_PORELEASE", "release", "zPOReleaseNumber"},
    {"DEFAULT_OI_PROJECTNUMBER", "project", "zOIProjectOrJobNumber"},
    {"DEFAULT_OI_REQNAME", "requisition", "zOIRequisitionOrApprovalName"},
    {"DEFAULT_OI_DEPARTMENT", "department", "zOIDepartment"},
};

void FillDefaults(test::MemorySettings& orSettings) {
  for (const Default& entry : kDefaults) {
    orSettings.Defaults[entry.Key] = entry.Value;
  }
}

// --- creating the current order

TEST_F(OrderDefaults, ANewCurrentOrderStartsWithTheDefaults) {
  FillDefaults(*Settings);
  Database.CreateCurrentOrder();

  EXPECT_EQ(std::string(kInsertColumns) +
                "values(True, 'po num', 'oi phone', 'oi email', 'di first', 'di last', 'di company', "
                "'di address 1', 'di address 2', 'di city', 'di state', 'di state or', 'di zip', "
                "'di country', 'di phone', 'di ext', 'di fax', 'di notes', 'cc first', 'cc last', "
                "'cc company', 'cc address 1', 'cc address 2', 'cc city', 'cc state', 'cc state or', "
                "'cc zip', 'cc country', 'cc phone', 'cc ext', 'cc account', 'cc fax', 'pi account', "
                "'call branch', 'call attention', 'call phone', 'call ext', 9, 1, 2, 'tax id', True, "
                "'release', 'project', 'requisition', 'department')",
            Trace.Statements().at(0));
  EXPECT_EQ(1u, Trace.Statements().size());
  for (const Default& entry : kDefaults) {
    const std::string zExpected = entry.Column == std::string("bOIIsTaxExempt") ? "-1" : entry.Value;
    EXPECT_EQ(zExpected, Store.Value(std::string("select ") + entry.Column + " from tblOrder")) << entry.Key;
  }
  EXPECT_EQ((Rows{{"1", "-1", "NULL", "0", "NULL", "NULL", "NULL", "NULL", "NULL"}}),
            Store.Query("select lOrderID, bIsCurrent, datSubmitDate, cTotalPrice, zOIAttention, zCCComment1, "
                        "zCCComment2, zCCComment3, zCCComment4 from tblOrder"));
}

TEST_F(OrderDefaults, ANewCurrentOrderWithoutDefaultsIsEmpty) {
  Database.CreateCurrentOrder();

  EXPECT_EQ(
      (Texts{
          std::string(kInsertColumns) +
          "values(True, '', '', '', '', '', '', '', '', '', '', '', '', '', '', '', '', '', '', '', '', '', "
          "'', '', '', '', '', '', '', '', '', '', '', '', '', '', '', 0, 0, 0, '', False, '', '', '', '')"}),
      Trace.Statements());
  EXPECT_EQ(
      (Rows{{"-1", "", "0", "0", "0", "0"}}),
      Store.Query("select bIsCurrent, zDINotes, lDIShippingMethod, lDIDeliveryMethod, lPIPaymentMethod, "
                  "bOIIsTaxExempt from tblOrder"));
}

TEST_F(OrderDefaults, TheQuotesOfDefaultsAreDoubled) {
  for (const Default& entry : kDefaults) {
    if (entry.Column[0] == 'z') {
      Settings->Defaults[entry.Key] = std::string("'") + entry.Value;
    }
  }
  Database.CreateCurrentOrder();

  EXPECT_EQ((Texts{std::string(kInsertColumns) +
                   "values(True, '''po num', '''oi phone', '''oi email', '''di first', '''di last', "
                   "'''di company', '''di address 1', '''di address 2', '''di city', '''di state', "
                   "'''di state or', '''di zip', '''di country', '''di phone', '''di ext', '''di fax', "
                   "'''di notes', '''cc first', '''cc last', '''cc company', '''cc address 1', "
                   "'''cc address 2', '''cc city', '''cc state', '''cc state or', '''cc zip', "
                   "'''cc country', '''cc phone', '''cc ext', '''cc account', '''cc fax', '''pi account', "
                   "'''call branch', '''call attention', '''call phone', '''call ext', 0, 0, 0, "
                   "'''tax id', False, '''release', '''project', '''requisition', '''department')"}),
            Trace.Statements());
  for (const Default& entry : kDefaults) {
    if (entry.Column[0] == 'z') {
      EXPECT_EQ(std::string("'") + entry.Value,
                Store.Value(std::string("select ") + entry.Column + " from tblOrder"));
    }
  }
}

TEST_F(OrderDefaults, TheDefaultsOfANewOrderAreReadOnceEachBeforeTheStatementAndNotWritten) {
  FillDefaults(*Settings);
  Settings->Calls.clear();
  Trace.Before = [&](const std::string&) { Settings->Calls.emplace_back("statement"); };
  Database.CreateCurrentOrder();

  Texts expected = {"create order defaults"};
  for (const Default& entry : kDefaults) {
    expected.push_back(std::string("default get ") + entry.Key);
  }
  expected.emplace_back("statement");
  expected.emplace_back("release order defaults");
  EXPECT_EQ(expected, Settings->Calls);
}

TEST_F(OrderDefaults, TheTaxFlagIsTrueExactlyForTheWordTrueInAnyLetterCase) {
  for (const auto& [zDefault, zStored] : std::vector<std::pair<std::string, std::string>>{{"TRUE", "-1"},
                                                                                          {"True", "-1"},
                                                                                          {"true", "-1"},
                                                                                          {"tRuE", "-1"},
                                                                                          {"", "0"},
                                                                                          {"False", "0"},
                                                                                          {"-1", "0"},
                                                                                          {"1", "0"},
                                                                                          {"Yes", "0"},
                                                                                          {" True", "0"},
                                                                                          {"True ", "0"},
                                                                                          {"Truely", "0"}}) {
    Store.Run("delete from tblOrder");
    Settings->Defaults["DEFAULT_OI_ISTAXEXEMPT"] = zDefault;
    Database.CreateCurrentOrder();
    EXPECT_EQ(zStored, Store.Value("select bOIIsTaxExempt from tblOrder")) << zDefault;
    EXPECT_NE(std::string::npos,
              Trace.Take().at(0).find(zStored == "0" ? ", '', False, '" : ", '', True, '"));
  }
}

TEST_F(OrderDefaults, ANumberAsDefaultThatIsBlankNoNumberOrOutOfRangeCountsAsZero) {
  const std::vector<std::pair<std::string, std::string>> expected = {
      {"", "0"},
      {" ", "0"},
      {"UPS", "0"},
      {"3x", "0"},
      {"1, 1", "0"},
      {"0); delete from tblOrder; --", "0"},
      {"2147483648", "0"},
      {"-2147483649", "0"},
      {"99999999999999999999999", "0"},
      {"True", "0"},
      {"7", "7"},
      {"-1", "-1"},
      {"2147483647", "2147483647"},
      {"-2147483648", "-2147483648"},
      {"007", "7"},
  };
  const std::vector<std::pair<std::string, std::string>> keys = {
      {"DEFAULT_DI_SHIPPING_METHOD", "lDIShippingMethod"},
      {"DEFAULT_DI_DELIVERYMETHOD", "lDIDeliveryMethod"},
      {"DEFAULT_PI_PAYMENT_METHOD", "lPIPaymentMethod"}};
  for (const auto& [zKey, zColumn] : keys) {
    Settings->Defaults.clear();
    for (const auto& [zDefault, zStored] : expected) {
      Store.Run("delete from tblOrder");
      Settings->Defaults[zKey] = zDefault;
      Database.CreateCurrentOrder();
      EXPECT_EQ(zStored, Store.Value("select " + zColumn + " from tblOrder")) << zKey << " " << zDefault;
    }
  }
  Trace.Take();
  Store.Run("delete from tblOrder");
  Settings->Defaults = {{"DEFAULT_DI_SHIPPING_METHOD", "ground"},
                        {"DEFAULT_DI_DELIVERYMETHOD", "2147483648"},
                        {"DEFAULT_PI_PAYMENT_METHOD", "-5"}};
  Database.CreateCurrentOrder();
  EXPECT_NE(std::string::npos, Trace.Take().at(0).find(", '', 0, 0, -5, '', False, '"));
}

TEST_F(OrderDefaults, TheStoreAssignsIncreasingOrderNumbers) {
  Database.CreateCurrentOrder();
  Store.Run("update tblOrder set bIsCurrent = 0");
  Database.CreateCurrentOrder();
  Store.Run("delete from tblOrder where bIsCurrent = -1");
  Database.CreateCurrentOrder();
  EXPECT_EQ((Rows{{"1", "0"}, {"3", "-1"}}),
            Store.Query("select lOrderID, bIsCurrent from tblOrder order by lOrderID"));
}

TEST_F(OrderDefaults, AnotherProgramsCurrentOrderCreatedInBetweenIsAccepted) {
  Settings->Before = [&](const std::string& zCall) {
    if (zCall == "create order defaults") {
      Store.Run("insert into tblOrder (bIsCurrent, zPurchaseOrderNumber) values (-1, 'the other one')");
    }
  };
  EXPECT_NO_THROW(Database.CreateCurrentOrder());
  EXPECT_EQ((Rows{{"-1", "the other one"}}),
            Store.Query("select bIsCurrent, zPurchaseOrderNumber from tblOrder"));
}

TEST_F(OrderDefaults, AFailingSettingsComponentKeepsTheCurrentOrderFromBeingCreated) {
  for (const char* zFailing :
       {"create order defaults", "default get DEFAULT_OI_PO_NUM", "default get DEFAULT_OI_DEPARTMENT"}) {
    Settings->Before = [&](const std::string& zCall) {
      if (zCall == zFailing) {
        throw qm_ordering::Failure(75, "The settings cannot be read.");
      }
    };
    EXPECT_EQ(75, RaisedNumber([&] { Database.CreateCurrentOrder(); })) << zFailing;
    EXPECT_EQ(Texts{}, Trace.Statements());
    EXPECT_EQ("0", Store.Value("select count(*) from tblOrder"));
  }
}

TEST_F(OrderDefaults, ADefaultThatIsNotUTF8KeepsTheCurrentOrderFromBeingCreated) {
  Settings->Defaults["DEFAULT_DI_NOTES"] = "broken \xC3";
  EXPECT_EQ(-2147217900, RaisedNumber([&] { Database.CreateCurrentOrder(); }));
  EXPECT_EQ("0", Store.Value("select count(*) from tblOrder"));
}

// --- bringing defaults and registered values into the orders

struct Contact {
  const char* Key;
  const char* Column;
  const char* Registered;
};
// In the order of the columns of the update.
const std::vector<Contact> kContacts = {
    {"DEFAULT_OI_PHONE_NUMBER", "zOIPhoneNumber", "reg phone"},
    {"DEFAULT_OI_EMAIL", "zOIEmail", "reg email"},
    {"DEFAULT_DI_FIRSTNAME", "zDIFirstName", "reg first"},
    {"DEFAULT_DI_LASTNAME", "zDILastName", "reg last"},
    {"DEFAULT_DI_COMPANYNAME", "zDICompanyName", "reg company"},
    {"DEFAULT_DI_ADDRESS1", "zDIAddress1", "reg address 1"},
    {"DEFAULT_DI_ADDRESS2", "zDIAddress2", "reg address 2"},
    {"DEFAULT_DI_CITY", "zDICity", "reg city"},
    {"DEFAULT_DI_STATE", "zDIState", "reg state"},
    {"DEFAULT_DI_STATEOR", "zDIStateOr", "reg state or"},
    {"DEFAULT_DI_ZIP_OR_POSTCODE", "zDIZipOrPostCode", "reg zip"},
    {"DEFAULT_DI_COUNTRY", "zDICountry", "reg country"},
    {"DEFAULT_DI_PH0NE_NUMBER", "zDIPhoneNumber", "reg phone"},
    {"DEFAULT_DI_PHONE_EXT", "zDIPhoneExt", "reg ext"},
    {"DEFAULT_DI_FAX", "zDIFax", "reg fax"},
    {"DEFAULT_CC_FIRST_NAME", "zCCFirstName", "reg first"},
    {"DEFAULT_CC_LAST_NAME", "zCCLastName", "reg last"},
    {"DEFAULT_CC_COMPANY_NAME", "zCCCompanyName", "reg company"},
    {"DEFAULT_CC_ADDRESS1", "zCCAddress1", "reg address 1"},
    {"DEFAULT_CC_ADDRESS2", "zCCAddress2", "reg address 2"},
    {"DEFAULT_CC_CITY", "zCCCity", "reg city"},
    {"DEFAULT_CC_STATE", "zCCState", "reg state"},
    {"DEFAULT_CC_STATE_OR", "zCCStateOr", "reg state or"},
    {"DEFAULT_CC_ZIP_OR_POSTCODE", "zCCZipOrPostCode", "reg zip"},
    {"DEFAULT_CC_COUNTRY", "zCCCountry", "reg country"},
    {"DEFAULT_CC_PHONE_NUMBER", "zCCPhoneNumber", "reg phone"},
    {"DEFAULT_CC_PHONE_EXT", "zCCPhoneExt", "reg ext"},
    {"DEFAULT_CC_ACCOUNT_NUMBER", "zCCAccountNumber", "reg account"},
    {"DEFAULT_CC_FAX", "zCCFax", "reg fax"},
    {"DEFAULT_PI_MORVANE_ACCOUNT_NUMBER", "zPIMorvaneAccountNumber", "reg account"},
};

void ApplyRegistered(qm_ordering::Database& orDatabase, const std::string& zvSixteenth = "not used") {
  orDatabase.ApplyDefaultsToCurrentOrder("reg city", "reg company", "reg address 1", "reg address 2",
                                         "reg fax", "reg phone", "reg ext", "reg country", "reg email",
                                         "reg first", "reg last", "reg state", "reg state or", "reg zip",
                                         "reg account", zvSixteenth);
}

TEST_F(OrderDefaults, RegisteredValuesFillWhatHasNoDefault) {
  AddOrder(12, true);
  ApplyRegistered(Database);

  EXPECT_EQ("0 ", Recorded());
  EXPECT_EQ(
      (Texts{"update tblOrder set zOIPhoneNumber = 'reg phone', zOIEmail = 'reg email', "
             "zDIFirstName = 'reg first', zDILastName = 'reg last', zDICompanyName = 'reg company', "
             "zDIAddress1 = 'reg address 1', zDIAddress2 = 'reg address 2', zDICity = 'reg city', "
             "zDIState = 'reg state', zDIStateOr = 'reg state or', zDIZipOrPostCode = 'reg zip', "
             "zDICountry = 'reg country', zDIPhoneNumber = 'reg phone', zDIPhoneExt = 'reg ext', "
             "zDIFax = 'reg fax', zCCFirstName = 'reg first', zCCLastName = 'reg last', "
             "zCCCompanyName = 'reg company', zCCAddress1 = 'reg address 1', zCCAddress2 = 'reg address 2', "
             "zCCCity = 'reg city', zCCState = 'reg state', zCCStateOr = 'reg state or', "
             "zCCZipOrPostCode = 'reg zip', zCCCountry = 'reg country', zCCPhoneNumber = 'reg phone', "
             "zCCPhoneExt = 'reg ext', zCCAccountNumber = 'reg account', zCCFax = 'reg fax', "
             "zPIMorvaneAccountNumber = 'reg account'"}),
      Trace.Statements());
  for (const Contact& contact : kContacts) {
    EXPECT_EQ(contact.Registered, OfOrder(12, contact.Column)) << contact.Column;
  }
}

TEST_F(OrderDefaults, AStoredDefaultWinsOverTheRegisteredValueInEveryColumn) {
  AddOrder(12, true);
  FillDefaults(*Settings);
  ApplyRegistered(Database);

  EXPECT_EQ(
      (Texts{"update tblOrder set zOIPhoneNumber = 'oi phone', zOIEmail = 'oi email', zDIFirstName = 'di "
             "first', "
             "zDILastName = 'di last', zDICompanyName = 'di company', zDIAddress1 = 'di address 1', "
             "zDIAddress2 = 'di address 2', zDICity = 'di city', zDIState = 'di state', "
             "zDIStateOr = 'di state or', zDIZipOrPostCode = 'di zip', zDICountry = 'di country', "
             "zDIPhoneNumber = 'di phone', zDIPhoneExt = 'di ext', zDIFax = 'di fax', "
             "zCCFirstName = 'cc first', zCCLastName = 'cc last', zCCCompanyName = 'cc company', "
             "zCCAddress1 = 'cc address 1', zCCAddress2 = 'cc address 2', zCCCity = 'cc city', "
             "zCCState = 'cc state', zCCStateOr = 'cc state or', zCCZipOrPostCode = 'cc zip', "
             "zCCCountry = 'cc country', zCCPhoneNumber = 'cc phone', zCCPhoneExt = 'cc ext', "
             "zCCAccountNumber = 'cc account', zCCFax = 'cc fax', zPIMorvaneAccountNumber = 'pi account'"}),
      Trace.Statements());
  for (const Contact& contact : kContacts) {
    EXPECT_EQ(Settings->Defaults.at(contact.Key), OfOrder(12, contact.Column)) << contact.Column;
  }
}

TEST_F(OrderDefaults, EachOfTheThirtyColumnsTakesItsOwnDefaultAlone) {
  AddOrder(12, true);
  for (const Contact& own : kContacts) {
    Settings->Defaults = {{own.Key, "the default"}};
    ApplyRegistered(Database);
    for (const Contact& contact : kContacts) {
      EXPECT_EQ(own.Column == contact.Column ? "the default" : contact.Registered,
                OfOrder(12, contact.Column))
          << own.Key << " in " << contact.Column;
    }
  }
}

TEST_F(OrderDefaults, ADefaultOfBlanksIsADefaultToo) {
  AddOrder(12, true);
  Settings->Defaults["DEFAULT_OI_EMAIL"] = " ";
  ApplyRegistered(Database);
  EXPECT_EQ(" ", OfOrder(12, "zOIEmail"));
}

TEST_F(OrderDefaults, WhereBothAreEmptyTheColumnIsEmptied) {
  AddOrder(12, true);
  Store.Run("update tblOrder set zOIEmail = 'old', zDICity = 'old'");
  Database.ApplyDefaultsToCurrentOrder("", "", "", "", "", "", "", "", "", "", "", "", "", "", "", "");

  EXPECT_EQ(
      (Texts{"update tblOrder set zOIPhoneNumber = '', zOIEmail = '', zDIFirstName = '', zDILastName = '', "
             "zDICompanyName = '', zDIAddress1 = '', zDIAddress2 = '', zDICity = '', zDIState = '', "
             "zDIStateOr = '', zDIZipOrPostCode = '', zDICountry = '', zDIPhoneNumber = '', "
             "zDIPhoneExt = '', zDIFax = '', zCCFirstName = '', zCCLastName = '', zCCCompanyName = '', "
             "zCCAddress1 = '', zCCAddress2 = '', zCCCity = '', zCCState = '', zCCStateOr = '', "
             "zCCZipOrPostCode = '', zCCCountry = '', zCCPhoneNumber = '', zCCPhoneExt = '', "
             "zCCAccountNumber = '', zCCFax = '', zPIMorvaneAccountNumber = ''"}),
      Trace.Statements());
  EXPECT_EQ((Rows{{"", ""}}), Store.Query("select zOIEmail, zDICity from tblOrder"));
}

TEST_F(OrderDefaults, QuotesAreDoubledInRegisteredValuesAndInDefaults) {
  AddOrder(12, true);
  Settings->Defaults["DEFAULT_DI_CITY"] = "L'Aquila";
  Database.ApplyDefaultsToCurrentOrder("''", "O'Neil's", "'1", "2'", "f'x", "p'", "e'x", "Cote d'Ivoire",
                                       "e'm", "f'n", "l'n", "s't", "s'o", "z'p", "a'n", "'");

  EXPECT_EQ((Texts{"update tblOrder set zOIPhoneNumber = 'p''', zOIEmail = 'e''m', zDIFirstName = 'f''n', "
                   "zDILastName = 'l''n', zDICompanyName = 'O''Neil''s', zDIAddress1 = '''1', "
                   "zDIAddress2 = '2''', zDICity = 'L''Aquila', zDIState = 's''t', zDIStateOr = 's''o', "
                   "zDIZipOrPostCode = 'z''p', zDICountry = 'Cote d''Ivoire', zDIPhoneNumber = 'p''', "
                   "zDIPhoneExt = 'e''x', zDIFax = 'f''x', zCCFirstName = 'f''n', zCCLastName = 'l''n', "
                   "zCCCompanyName = 'O''Neil''s', zCCAddress1 = '''1', zCCAddress2 = '2''', "
                   "zCCCity = '''''', zCCState = 's''t', zCCStateOr = 's''o', zCCZipOrPostCode = 'z''p', "
                   "zCCCountry = 'Cote d''Ivoire', zCCPhoneNumber = 'p''', zCCPhoneExt = 'e''x', "
                   "zCCAccountNumber = 'a''n', zCCFax = 'f''x', zPIMorvaneAccountNumber = 'a''n'"}),
            Trace.Statements());
  EXPECT_EQ((Rows{{"L'Aquila", "''", "Cote d'Ivoire"}}),
            Store.Query("select zDICity, zCCCity, zDICountry from tblOrder"));
}

TEST_F(OrderDefaults, TheSixteenthValueIsNotUsed) {
  AddOrder(12, true);
  ApplyRegistered(Database, "");
  ApplyRegistered(Database, "something else'");
  EXPECT_EQ("0 ", Recorded());
  EXPECT_EQ(Trace.Statements().at(0), Trace.Statements().at(1));
}

TEST_F(OrderDefaults, TheDefaultsAreReadOnceEachBeforeTheUpdateAndNotWritten) {
  AddOrder(12, true);
  Settings->Calls.clear();
  Trace.Before = [&](const std::string&) { Settings->Calls.emplace_back("statement"); };
  ApplyRegistered(Database);

  Texts expected = {"create order defaults"};
  for (const Contact& contact : kContacts) {
    expected.push_back(std::string("default get ") + contact.Key);
  }
  expected.emplace_back("statement");
  expected.emplace_back("release order defaults");
  EXPECT_EQ(expected, Settings->Calls);
}

TEST_F(OrderDefaults, EveryOrderReceivesTheValuesSubmittedOnesIncluded) {
  AddOrder(7);
  AddOrder(8);
  AddOrder(12, true);
  ApplyRegistered(Database);
  EXPECT_EQ((Rows{{"7", "reg phone", "reg account"},
                  {"8", "reg phone", "reg account"},
                  {"12", "reg phone", "reg account"}}),
            Store.Query("select lOrderID, zOIPhoneNumber, zPIMorvaneAccountNumber from tblOrder"));
}

TEST_F(OrderDefaults, MethodsNotesTaxAndPurchaseOrderAreNotTouched) {
  AddOrder(12, true);
  const std::string zOthers =
      "lOrderID, bIsCurrent, datSubmitDate, zPurchaseOrderNumber, cTotalPrice, zPOReleaseNumber, "
      "zOIProjectOrJobNumber, zOIRequisitionOrApprovalName, zOIDepartment, zOIAttention, bOIIsTaxExempt, "
      "zOITaxIDNumber, lDIDeliveryMethod, zDICallBranchNumber, zDICallAttention, zDICallPhoneNumber, "
      "zDICallPhoneExt, lDIShippingMethod, zDINotes, lPIPaymentMethod, zCCComment1, zCCComment2, "
      "zCCComment3, "
      "zCCComment4";
  Store.Run(
      "update tblOrder set zPurchaseOrderNumber = 'po', cTotalPrice = 5, bOIIsTaxExempt = -1, "
      "zOITaxIDNumber = 'tax', lDIDeliveryMethod = 3, lDIShippingMethod = 4, zDINotes = 'notes', "
      "lPIPaymentMethod = 6, zDICallAttention = 'call', zOIAttention = 'att', zCCComment1 = 'c1'");
  const Rows before = Store.Query("select " + zOthers + " from tblOrder");
  FillDefaults(*Settings);
  ApplyRegistered(Database);
  EXPECT_EQ(before, Store.Query("select " + zOthers + " from tblOrder"));
}

TEST_F(OrderDefaults, AFailingSettingsComponentIsRecordedAndNoOrderIsChanged) {
  AddOrder(12, true);
  const Rows before = Store.Everything();
  Settings->Before = [](const std::string& zCall) {
    if (zCall == "default get DEFAULT_CC_FAX") {
      throw std::runtime_error("no such luck");
    }
  };
  ApplyRegistered(Database);
  EXPECT_EQ(5, Database.Error().Number);
  EXPECT_NE(std::string::npos, Recorded().find("no such luck")) << Recorded();
  EXPECT_EQ(Texts{}, Trace.Statements());
  EXPECT_EQ(before, Store.Everything());
}

}  // namespace
