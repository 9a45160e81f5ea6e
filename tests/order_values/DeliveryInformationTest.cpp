#include "qm_ordering/order/DeliveryInformation.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "qm_ordering/platform/value/Failure.h"
#include "tests/support/MemorySettings.h"

namespace {

using qm_ordering::DeliveryInformation;

using TextField = void (DeliveryInformation::*)(const std::string&);

// What delivery to an address needs besides the state.
constexpr std::array<TextField, 8> kAddressFields = {
    &DeliveryInformation::FirstName, &DeliveryInformation::LastName,   &DeliveryInformation::CompanyName,
    &DeliveryInformation::Address1,  &DeliveryInformation::City,       &DeliveryInformation::ZipOrPostCode,
    &DeliveryInformation::Country,   &DeliveryInformation::PhoneNumber};

constexpr std::array<TextField, 3> kCallFields = {&DeliveryInformation::CallBranchNumber,
                                                  &DeliveryInformation::CallAttention,
                                                  &DeliveryInformation::CallPhoneNumber};

class DeliveryInformationTest : public testing::Test {
 protected:
  // A delivery that lacks nothing but optional fields.
  void FillAddress() {
    m_oDelivery.DeliveryMethod(1);
    for (const TextField pField : kAddressFields) {
      (m_oDelivery.*pField)("x");
    }
    m_oDelivery.State("NY");
  }

  // A collection that lacks nothing but optional fields.
  void FillCall() {
    m_oDelivery.DeliveryMethod(0);
    for (const TextField pField : kCallFields) {
      (m_oDelivery.*pField)("x");
    }
  }

  test::SettingsScope m_oSettings;
  DeliveryInformation m_oDelivery;
};

TEST_F(DeliveryInformationTest, IsEmptyWhenNew) {
  EXPECT_STREQ(m_oDelivery.ClassName(), "DeliveryInformation");
  EXPECT_EQ(m_oDelivery.DeliveryMethod(), 0);
  EXPECT_EQ(m_oDelivery.FirstName(), "");
  EXPECT_EQ(m_oDelivery.LastName(), "");
  EXPECT_EQ(m_oDelivery.CompanyName(), "");
  EXPECT_EQ(m_oDelivery.Address1(), "");
  EXPECT_EQ(m_oDelivery.Address2(), "");
  EXPECT_EQ(m_oDelivery.City(), "");
  EXPECT_EQ(m_oDelivery.State(), "");
  EXPECT_EQ(m_oDelivery.StateOr(), "");
  EXPECT_EQ(m_oDelivery.ZipOrPostCode(), "");
  EXPECT_EQ(m_oDelivery.Country(), "");
  EXPECT_EQ(m_oDelivery.PhoneNumber(), "");
  EXPECT_EQ(m_oDelivery.PhoneExt(), "");
  EXPECT_EQ(m_oDelivery.Fax(), "");
  EXPECT_EQ(m_oDelivery.Notes(), "");
  EXPECT_EQ(m_oDelivery.ShippingMethod(), 0);
  EXPECT_EQ(m_oDelivery.CallBranchNumber(), "");
  EXPECT_EQ(m_oDelivery.CallAttention(), "");
  EXPECT_EQ(m_oDelivery.CallPhoneNumber(), "");
  EXPECT_EQ(m_oDelivery.CallPhoneExt(), "");
  EXPECT_EQ(m_oDelivery.ShippingMethodName(), "Standard Shipping");
}

TEST_F(DeliveryInformationTest, LacksTheBranchWhenNew) {
  EXPECT_FALSE(m_oDelivery.Validate());
}

TEST_F(DeliveryInformationTest, IsCompleteForDeliveryWithEachRequiredField) {
  FillAddress();
  EXPECT_TRUE(m_oDelivery.Validate());
  for (const TextField& pField : kAddressFields) {
    for (const char* zBlank : {"", " ", "   "}) {
      (m_oDelivery.*pField)(zBlank);
      EXPECT_FALSE(m_oDelivery.Validate()) << "field " << (&pField - kAddressFields.data());
    }
    (m_oDelivery.*pField)(" x ");
    EXPECT_TRUE(m_oDelivery.Validate());
  }
}

TEST_F(DeliveryInformationTest, NeedsAStateOrAProvinceForDelivery) {
  FillAddress();
  m_oDelivery.State("");
  m_oDelivery.StateOr("");
  EXPECT_FALSE(m_oDelivery.Validate());
  m_oDelivery.StateOr("Ontario");
  EXPECT_TRUE(m_oDelivery.Validate());
  m_oDelivery.StateOr("");
  m_oDelivery.State(" ");
  EXPECT_TRUE(m_oDelivery.Validate());
  m_oDelivery.State("");
  m_oDelivery.StateOr(" ");
  EXPECT_TRUE(m_oDelivery.Validate());
}

TEST_F(DeliveryInformationTest, TreatsEveryMethodButZeroAsDelivery) {
  for (const std::int32_t lMethod : {1, 2, 7, -1, std::numeric_limits<std::int32_t>::min()}) {
    FillAddress();
    m_oDelivery.DeliveryMethod(lMethod);
    EXPECT_TRUE(m_oDelivery.Validate()) << lMethod;
    m_oDelivery.City("");
    EXPECT_FALSE(m_oDelivery.Validate()) << lMethod;
  }
}

TEST_F(DeliveryInformationTest, IsCompleteForCollectionWithEachRequiredField) {
  FillCall();
  EXPECT_TRUE(m_oDelivery.Validate());
  for (const TextField& pField : kCallFields) {
    for (const char* zBlank : {"", " ", "   "}) {
      (m_oDelivery.*pField)(zBlank);
      EXPECT_FALSE(m_oDelivery.Validate()) << "field " << (&pField - kCallFields.data());
    }
    (m_oDelivery.*pField)(" x ");
    EXPECT_TRUE(m_oDelivery.Validate());
  }
}

TEST_F(DeliveryInformationTest, LooksAtTheFieldsOfItsMethodAlone) {
  FillAddress();
  EXPECT_TRUE(m_oDelivery.Validate());
  m_oDelivery.DeliveryMethod(0);
  EXPECT_FALSE(m_oDelivery.Validate());
  FillCall();
  for (const TextField pField : kAddressFields) {
    (m_oDelivery.*pField)("");
  }
  EXPECT_TRUE(m_oDelivery.Validate());
}

TEST_F(DeliveryInformationTest, NamesEachShippingMethod) {
  const std::vector<std::pair<std::int32_t, const char*>> names = {
      {0, "Standard Shipping"},
      {1, "UPS Next Day Air"},
      {2, "UPS Second Day Air"},
      {3, "UPS Saturday Delivery Air"},
      {4, "Standard Shipping USPS"},
      {5, "Fed Ex Standard Overnight"},
      {6, "Fed Ex Early Overnight"},
      {7, "Fed Ex Collect"},
      {8, "Airborne Express"},
      {9, "Other"},
      {10, ""},
      {-1, ""},
      {std::numeric_limits<std::int32_t>::max(), ""},
      {std::numeric_limits<std::int32_t>::min(), ""},
  };
  for (const auto& [lMethod, zName] : names) {
    m_oDelivery.ShippingMethod(lMethod);
    EXPECT_EQ(m_oDelivery.ShippingMethodName(), zName) << lMethod;
  }
}

TEST_F(DeliveryInformationTest, WritesEveryAttributeWhenNew) {
  EXPECT_EQ(m_oDelivery.GetXML(),
            "<deliveryinformation deliverymethod=\"0\" firstname=\"\" lastname=\"\" companyname=\"\""
            " address1=\"\" address2=\"\" city=\"\" state=\"\" stateor=\"\" ziporpostcode=\"\" country=\"\""
            " phonenumber=\"\" phoneext=\"\" fax=\"\" shippingmethod=\"0\""
            " shippingmethodname=\"Standard Shipping\" notes=\"\" callbranchnumber=\"\" callattention=\"\""
            " callphonenumber=\"\" callphoneext=\"\"/>");
}

TEST_F(DeliveryInformationTest, KeepsAndWritesEveryFieldInItsOrderForEachMethod) {
  m_oDelivery.FirstName("first");
  m_oDelivery.LastName("last");
  m_oDelivery.CompanyName("company");
  m_oDelivery.Address1("line 1");
  m_oDelivery.Address2("line 2");
  m_oDelivery.City("city");
  m_oDelivery.State("state");
  m_oDelivery.StateOr("province");
  m_oDelivery.ZipOrPostCode("zip");
  m_oDelivery.Country("country");
  m_oDelivery.PhoneNumber("phone");
  m_oDelivery.PhoneExt("ext");
  m_oDelivery.Fax("fax");
  m_oDelivery.Notes("notes");
  m_oDelivery.ShippingMethod(8);
  m_oDelivery.CallBranchNumber("branch");
  m_oDelivery.CallAttention("attention");
  m_oDelivery.CallPhoneNumber("call phone");
  m_oDelivery.CallPhoneExt("call ext");
  EXPECT_EQ(m_oDelivery.FirstName(), "first");
  EXPECT_EQ(m_oDelivery.LastName(), "last");
  EXPECT_EQ(m_oDelivery.CompanyName(), "company");
  EXPECT_EQ(m_oDelivery.Address1(), "line 1");
  EXPECT_EQ(m_oDelivery.Address2(), "line 2");
  EXPECT_EQ(m_oDelivery.City(), "city");
  EXPECT_EQ(m_oDelivery.State(), "state");
  EXPECT_EQ(m_oDelivery.StateOr(), "province");
  EXPECT_EQ(m_oDelivery.ZipOrPostCode(), "zip");
  EXPECT_EQ(m_oDelivery.Country(), "country");
  EXPECT_EQ(m_oDelivery.PhoneNumber(), "phone");
  EXPECT_EQ(m_oDelivery.PhoneExt(), "ext");
  EXPECT_EQ(m_oDelivery.Fax(), "fax");
  EXPECT_EQ(m_oDelivery.Notes(), "notes");
  EXPECT_EQ(m_oDelivery.ShippingMethod(), 8);
  EXPECT_EQ(m_oDelivery.CallBranchNumber(), "branch");
  EXPECT_EQ(m_oDelivery.CallAttention(), "attention");
  EXPECT_EQ(m_oDelivery.CallPhoneNumber(), "call phone");
  EXPECT_EQ(m_oDelivery.CallPhoneExt(), "call ext");
  for (const std::int32_t lMethod : {0, 1, -2147483647 - 1}) {
    m_oDelivery.DeliveryMethod(lMethod);
    EXPECT_EQ(m_oDelivery.DeliveryMethod(), lMethod);
    EXPECT_EQ(
        m_oDelivery.GetXML(),
        "<deliveryinformation deliverymethod=\"" + std::to_string(lMethod) +
            "\" firstname=\"first\" lastname=\"last\" companyname=\"company\" address1=\"line 1\""
            " address2=\"line 2\" city=\"city\" state=\"state\" stateor=\"province\" ziporpostcode=\"zip\""
            " country=\"country\" phonenumber=\"phone\" phoneext=\"ext\" fax=\"fax\" shippingmethod=\"8\""
            " shippingmethodname=\"Airborne Express\" notes=\"notes\" callbranchnumber=\"branch\""
            " callattention=\"attention\" callphonenumber=\"call phone\" callphoneext=\"call ext\"/>");
  }
}

TEST_F(DeliveryInformationTest, WritesAnUnknownShippingMethodWithoutAName) {
  for (const std::int32_t lMethod : {10, -1}) {
    m_oDelivery.ShippingMethod(lMethod);
    EXPECT_NE(m_oDelivery.GetXML().find(" shippingmethod=\"" + std::to_string(lMethod) +
                                        "\" shippingmethodname=\"\" notes=\"\""),
              std::string::npos)
        << m_oDelivery.GetXML();
  }
}

TEST_F(DeliveryInformationTest, RaisesATextThatXMLCannotHold) {
  m_oDelivery.Notes("caf\xE9");
  try {
    FAIL() << m_oDelivery.GetXML();
  } catch (const qm_ordering::Failure& raised) {
    EXPECT_EQ(raised.Number(), qm_ordering::failure::kXmlCharacter);
    EXPECT_NE(raised.Description().find("\"notes\""), std::string::npos) << raised.Description();
  }
}

}  // namespace
