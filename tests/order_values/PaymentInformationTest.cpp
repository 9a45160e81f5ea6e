#include "qm_ordering/order/PaymentInformation.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>

#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/platform/xml/Document.h"
#include "tests/support/MemorySettings.h"

namespace {

using qm_ordering::PaymentInformation;

class PaymentInformationTest : public testing::Test {
 protected:
  // Payment by a card that lacks nothing but optional fields.
  void FillCard() {
    m_oPayment.Method(1);
    const auto oCard = m_oPayment.CreditCardDetails();
    oCard->FirstName("first");
    oCard->LastName("last");
    oCard->CompanyName("company");
    oCard->Address1("line 1");
    oCard->City("city");
    oCard->State("state");
    oCard->ZipOrPostCode("zip");
    oCard->Country("country");
    oCard->PhoneNumber("phone");
    oCard->CardNumber("4111111111111111");
    oCard->ExpiryMonth(12);
  }

  std::string CardAttribute(const std::string& zvName) const {
    qm_ordering::xml::Document document;
    EXPECT_TRUE(document.LoadXML(m_oPayment.GetXML()));
    return document.SelectSingleNode("paymentinformation/creditcarddetails").Attribute(zvName);
  }

  test::SettingsScope m_oSettings;
  PaymentInformation m_oPayment;
};

TEST_F(PaymentInformationTest, IsOnAccountWithoutANumberWhenNew) {
  EXPECT_STREQ(m_oPayment.ClassName(), "PaymentInformation");
  EXPECT_EQ(m_oPayment.Method(), 0);
  EXPECT_EQ(m_oPayment.MorvaneAccountNumber(), "");
  ASSERT_NE(m_oPayment.CreditCardDetails(), nullptr);
  EXPECT_EQ(m_oPayment.CreditCardDetails()->CardNumber(), "");
}

TEST_F(PaymentInformationTest, NeedsAnAccountNumberOnAccount) {
  EXPECT_FALSE(m_oPayment.Validate());
  m_oPayment.MorvaneAccountNumber("  ");
  EXPECT_FALSE(m_oPayment.Validate());
  m_oPayment.MorvaneAccountNumber("12345");
  EXPECT_TRUE(m_oPayment.Validate());
}

TEST_F(PaymentInformationTest, NeedsACompleteCardForEveryOtherMethod) {
  FillCard();
  for (const std::int32_t lMethod : {1, 2, -1, -2147483647 - 1}) {
    m_oPayment.Method(lMethod);
    EXPECT_EQ(m_oPayment.Method(), lMethod);
    EXPECT_TRUE(m_oPayment.Validate()) << lMethod;
    m_oPayment.CreditCardDetails()->City(" ");
    EXPECT_FALSE(m_oPayment.Validate()) << lMethod;
    m_oPayment.CreditCardDetails()->City("city");
  }
}

TEST_F(PaymentInformationTest, NeedsACardWithAMonthOfTheYearWhateverTheYear) {
  FillCard();
  for (const std::int32_t lYear : {0, 1999, -5}) {
    m_oPayment.CreditCardDetails()->ExpiryYear(lYear);
    for (const std::int32_t lMonth : {1, 12}) {
      m_oPayment.CreditCardDetails()->ExpiryMonth(lMonth);
      EXPECT_TRUE(m_oPayment.Validate()) << lMonth << "/" << lYear;
    }
    for (const std::int32_t lMonth : {0, 13}) {
      m_oPayment.CreditCardDetails()->ExpiryMonth(lMonth);
      EXPECT_FALSE(m_oPayment.Validate()) << lMonth << "/" << lYear;
    }
  }
}

TEST_F(PaymentInformationTest, NeedsACardWithAStateOrAProvince) {
  FillCard();
  m_oPayment.CreditCardDetails()->State("");
  EXPECT_FALSE(m_oPayment.Validate());
  m_oPayment.CreditCardDetails()->StateOr("Ontario");
  EXPECT_TRUE(m_oPayment.Validate());
}

TEST_F(PaymentInformationTest, LooksAtTheFieldsOfItsMethodAlone) {
  m_oPayment.MorvaneAccountNumber("12345");
  EXPECT_TRUE(m_oPayment.Validate());
  m_oPayment.Method(1);
  EXPECT_FALSE(m_oPayment.Validate());
  FillCard();
  m_oPayment.MorvaneAccountNumber("");
  EXPECT_TRUE(m_oPayment.Validate());
  m_oPayment.Method(0);
  EXPECT_FALSE(m_oPayment.Validate());
}

TEST_F(PaymentInformationTest, OwnsOneCard) {
  const auto oCard = m_oPayment.CreditCardDetails();
  EXPECT_EQ(m_oPayment.CreditCardDetails(), oCard);
  oCard->CardNumber("4111");
  EXPECT_EQ(CardAttribute("cardnumber"), "4111");
  const PaymentInformation other;
  EXPECT_NE(other.CreditCardDetails(), oCard);
}

TEST_F(PaymentInformationTest, ReleasesItsCardWithItself) {
  std::weak_ptr<qm_ordering::CreditCardDetails> oCard;
  {
    const PaymentInformation payment;
    oCard = payment.CreditCardDetails();
    EXPECT_FALSE(oCard.expired());
  }
  EXPECT_TRUE(oCard.expired());
}

TEST_F(PaymentInformationTest, WritesEveryAttributeAndTheCardWhenNew) {
  EXPECT_EQ(
      m_oPayment.GetXML(),
      "<paymentinformation accountnumber=\"\" method=\"0\"><creditcarddetails firstname=\"\" lastname=\"\""
      " companyname=\"\" address1=\"\" address2=\"\" city=\"\" state=\"\" stateor=\"\" ziporpostcode=\"\""
      " country=\"\" phonenumber=\"\" phoneext=\"\" fax=\"\" accountnumber=\"\" cardtype=\"\""
      " cardnumber=\"\" expirymonth=\"00\" expiryyear=\"00\" cardholdersref=\"\" comment1=\"\""
      " comment2=\"\" comment3=\"\" comment4=\"\"/></paymentinformation>");
}

TEST_F(PaymentInformationTest, WritesEveryAttributeInItsOrderForEachMethod) {
  FillCard();
  m_oPayment.MorvaneAccountNumber("12345");
  const auto oCard = m_oPayment.CreditCardDetails();
  oCard->Address2("line 2");
  oCard->StateOr("province");
  oCard->PhoneExt("ext");
  oCard->Fax("fax");
  oCard->AccountNumber("account");
  oCard->CardType("type");
  oCard->ExpiryYear(2004);
  oCard->CardHoldersRef("reference");
  oCard->Comment1("one");
  oCard->Comment2("two");
  oCard->Comment3("three");
  oCard->Comment4("four");
  for (const std::int32_t lMethod : {0, 1, -3}) {
    m_oPayment.Method(lMethod);
    EXPECT_EQ(
        m_oPayment.GetXML(),
        "<paymentinformation accountnumber=\"12345\" method=\"" + std::to_string(lMethod) +
            "\"><creditcarddetails firstname=\"first\" lastname=\"last\" companyname=\"company\""
            " address1=\"line 1\" address2=\"line 2\" city=\"city\" state=\"state\" stateor=\"province\""
            " ziporpostcode=\"zip\" country=\"country\" phonenumber=\"phone\" phoneext=\"ext\" fax=\"fax\""
            " accountnumber=\"account\" cardtype=\"type\" cardnumber=\"4111111111111111\""
            " expirymonth=\"12\" expiryyear=\"2004\" cardholdersref=\"reference\" comment1=\"one\""
            " comment2=\"two\" comment3=\"three\" comment4=\"four\"/></paymentinformation>");
  }
}

TEST_F(PaymentInformationTest, WritesMonthAndYearWithAtLeastTwoDigits) {
  const auto oCard = m_oPayment.CreditCardDetails();
  oCard->ExpiryMonth(7);
  oCard->ExpiryYear(7);
  EXPECT_EQ(CardAttribute("expirymonth"), "07");
  EXPECT_EQ(CardAttribute("expiryyear"), "07");
  oCard->ExpiryMonth(-3);
  oCard->ExpiryYear(2004);
  EXPECT_EQ(CardAttribute("expirymonth"), "-03");
  EXPECT_EQ(CardAttribute("expiryyear"), "2004");
}

TEST_F(PaymentInformationTest, RaisesATextThatXMLCannotHoldWithoutShowingIt) {
  m_oPayment.CreditCardDetails()->CardNumber(std::string("4111\0secret", 11));
  try {
    FAIL() << m_oPayment.GetXML();
  } catch (const qm_ordering::Failure& raised) {
    EXPECT_EQ(raised.Number(), qm_ordering::failure::kXmlCharacter);
    EXPECT_NE(raised.Description().find("\"cardnumber\""), std::string::npos) << raised.Description();
    EXPECT_EQ(raised.Description().find("4111"), std::string::npos) << raised.Description();
    EXPECT_EQ(raised.Description().find("secret"), std::string::npos) << raised.Description();
  }
}

}  // namespace
