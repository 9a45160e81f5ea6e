#include "qm_ordering/order/CreditCardDetails.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <string>

#include "tests/support/MemorySettings.h"

namespace {

using qm_ordering::CreditCardDetails;

using TextField = void (CreditCardDetails::*)(const std::string&);

// What a card needs besides the state and the month.
constexpr std::array<TextField, 9> kRequiredFields = {
    &CreditCardDetails::FirstName, &CreditCardDetails::LastName,    &CreditCardDetails::CompanyName,
    &CreditCardDetails::Address1,  &CreditCardDetails::City,        &CreditCardDetails::ZipOrPostCode,
    &CreditCardDetails::Country,   &CreditCardDetails::PhoneNumber, &CreditCardDetails::CardNumber};

class CreditCardDetailsTest : public testing::Test {
 protected:
  // A card that lacks nothing but optional fields.
  void Fill() {
    for (const TextField pField : kRequiredFields) {
      (m_oCard.*pField)("x");
    }
    m_oCard.State("NY");
    m_oCard.ExpiryMonth(6);
  }

  test::SettingsScope m_oSettings;
  CreditCardDetails m_oCard;
};

TEST_F(CreditCardDetailsTest, IsEmptyAndIncompleteWhenNew) {
  EXPECT_STREQ(m_oCard.ClassName(), "CreditCardDetails");
  EXPECT_EQ(m_oCard.CardType(), "");
  EXPECT_EQ(m_oCard.AccountNumber(), "");
  EXPECT_EQ(m_oCard.FirstName(), "");
  EXPECT_EQ(m_oCard.LastName(), "");
  EXPECT_EQ(m_oCard.CompanyName(), "");
  EXPECT_EQ(m_oCard.Address1(), "");
  EXPECT_EQ(m_oCard.Address2(), "");
  EXPECT_EQ(m_oCard.City(), "");
  EXPECT_EQ(m_oCard.State(), "");
  EXPECT_EQ(m_oCard.StateOr(), "");
  EXPECT_EQ(m_oCard.ZipOrPostCode(), "");
  EXPECT_EQ(m_oCard.Country(), "");
  EXPECT_EQ(m_oCard.PhoneNumber(), "");
  EXPECT_EQ(m_oCard.PhoneExt(), "");
  EXPECT_EQ(m_oCard.Fax(), "");
  EXPECT_EQ(m_oCard.CardNumber(), "");
  EXPECT_EQ(m_oCard.ExpiryMonth(), 0);
  EXPECT_EQ(m_oCard.ExpiryYear(), 0);
  EXPECT_EQ(m_oCard.CardHoldersRef(), "");
  EXPECT_EQ(m_oCard.Comment1(), "");
  EXPECT_EQ(m_oCard.Comment2(), "");
  EXPECT_EQ(m_oCard.Comment3(), "");
  EXPECT_EQ(m_oCard.Comment4(), "");
  EXPECT_FALSE(m_oCard.Validate());
}

TEST_F(CreditCardDetailsTest, KeepsWhatItIsGivenInEachField) {
  m_oCard.CardType("type");
  m_oCard.AccountNumber("account");
  m_oCard.FirstName("first");
  m_oCard.LastName("last");
  m_oCard.CompanyName("company");
  m_oCard.Address1("line 1");
  m_oCard.Address2("line 2");
  m_oCard.City("city");
  m_oCard.State("state");
  m_oCard.StateOr("province");
  m_oCard.ZipOrPostCode("zip");
  m_oCard.Country("country");
  m_oCard.PhoneNumber("phone");
  m_oCard.PhoneExt("ext");
  m_oCard.Fax("fax");
  m_oCard.CardNumber(" 4111 1111 ");
  m_oCard.ExpiryMonth(13);
  m_oCard.ExpiryYear(-5);
  m_oCard.CardHoldersRef("reference");
  m_oCard.Comment1("1");
  m_oCard.Comment2("2");
  m_oCard.Comment3("3");
  m_oCard.Comment4("4");
  EXPECT_EQ(m_oCard.CardType(), "type");
  EXPECT_EQ(m_oCard.AccountNumber(), "account");
  EXPECT_EQ(m_oCard.FirstName(), "first");
  EXPECT_EQ(m_oCard.LastName(), "last");
  EXPECT_EQ(m_oCard.CompanyName(), "company");
  EXPECT_EQ(m_oCard.Address1(), "line 1");
  EXPECT_EQ(m_oCard.Address2(), "line 2");
  EXPECT_EQ(m_oCard.City(), "city");
  EXPECT_EQ(m_oCard.State(), "state");
  EXPECT_EQ(m_oCard.StateOr(), "province");
  EXPECT_EQ(m_oCard.ZipOrPostCode(), "zip");
  EXPECT_EQ(m_oCard.Country(), "country");
  EXPECT_EQ(m_oCard.PhoneNumber(), "phone");
  EXPECT_EQ(m_oCard.PhoneExt(), "ext");
  EXPECT_EQ(m_oCard.Fax(), "fax");
  EXPECT_EQ(m_oCard.CardNumber(), " 4111 1111 ");
  EXPECT_EQ(m_oCard.ExpiryMonth(), 13);
  EXPECT_EQ(m_oCard.ExpiryYear(), -5);
  EXPECT_EQ(m_oCard.CardHoldersRef(), "reference");
  EXPECT_EQ(m_oCard.Comment1(), "1");
  EXPECT_EQ(m_oCard.Comment2(), "2");
  EXPECT_EQ(m_oCard.Comment3(), "3");
  EXPECT_EQ(m_oCard.Comment4(), "4");
}

TEST_F(CreditCardDetailsTest, IsCompleteWithEachRequiredField) {
  Fill();
  EXPECT_TRUE(m_oCard.Validate());
  for (const TextField& pField : kRequiredFields) {
    for (const char* zBlank : {"", " ", "   "}) {
      (m_oCard.*pField)(zBlank);
      EXPECT_FALSE(m_oCard.Validate()) << "field " << (&pField - kRequiredFields.data());
    }
    (m_oCard.*pField)(" x ");
    EXPECT_TRUE(m_oCard.Validate());
  }
}

TEST_F(CreditCardDetailsTest, NeedsAStateOrAProvince) {
  Fill();
  m_oCard.State("");
  EXPECT_FALSE(m_oCard.Validate());
  m_oCard.StateOr("Ontario");
  EXPECT_TRUE(m_oCard.Validate());
  m_oCard.StateOr(" ");
  EXPECT_TRUE(m_oCard.Validate());
  m_oCard.StateOr("");
  m_oCard.State(" ");
  EXPECT_TRUE(m_oCard.Validate());
}

TEST_F(CreditCardDetailsTest, NeedsAMonthOfTheYear) {
  Fill();
  for (std::int32_t lMonth = 1; lMonth <= 12; ++lMonth) {
    m_oCard.ExpiryMonth(lMonth);
    EXPECT_TRUE(m_oCard.Validate()) << lMonth;
  }
  for (const std::int32_t lMonth : {0, 13, -1, std::numeric_limits<std::int32_t>::min()}) {
    m_oCard.ExpiryMonth(lMonth);
    EXPECT_FALSE(m_oCard.Validate()) << lMonth;
  }
}

TEST_F(CreditCardDetailsTest, DoesNotLookAtTheYear) {
  Fill();
  for (const std::int32_t lYear : {0, 1999, -5, 2099}) {
    m_oCard.ExpiryYear(lYear);
    EXPECT_TRUE(m_oCard.Validate()) << lYear;
  }
}

}  // namespace
