#include "qm_ordering/order/OrderInformation.h"

#include <gtest/gtest.h>

#include <string>

#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/platform/xml/Document.h"
#include "tests/support/MemorySettings.h"

namespace {

using qm_ordering::OrderInformation;

class OrderInformationTest : public testing::Test {
 protected:
  static void Fill(OrderInformation& orInformation) {
    orInformation.PORelease("release");
    orInformation.ProjectOrJobNumber("project");
    orInformation.RequisitionOrApprovalName("approver");
    orInformation.Department("department");
    orInformation.Attention("attention");
    orInformation.PhoneNumber("555-1234");
    orInformation.Email("a@b.example");
    orInformation.IsTaxExempt(true);
    orInformation.TaxIDNumber("tax");
  }

  test::SettingsScope m_oSettings;
};

TEST_F(OrderInformationTest, IsEmptyWhenNew) {
  const OrderInformation information;
  EXPECT_STREQ(information.ClassName(), "OrderInformation");
  EXPECT_EQ(information.PORelease(), "");
  EXPECT_EQ(information.ProjectOrJobNumber(), "");
  EXPECT_EQ(information.RequisitionOrApprovalName(), "");
  EXPECT_EQ(information.Department(), "");
  EXPECT_EQ(information.Attention(), "");
  EXPECT_EQ(information.PhoneNumber(), "");
  EXPECT_EQ(information.Email(), "");
  EXPECT_FALSE(information.IsTaxExempt());
  EXPECT_EQ(information.TaxIDNumber(), "");
}

TEST_F(OrderInformationTest, KeepsWhatItIsGivenInEachField) {
  OrderInformation information;
  Fill(information);
  EXPECT_EQ(information.PORelease(), "release");
  EXPECT_EQ(information.ProjectOrJobNumber(), "project");
  EXPECT_EQ(information.RequisitionOrApprovalName(), "approver");
  EXPECT_EQ(information.Department(), "department");
  EXPECT_EQ(information.Attention(), "attention");
  EXPECT_EQ(information.PhoneNumber(), "555-1234");
  EXPECT_EQ(information.Email(), "a@b.example");
  EXPECT_TRUE(information.IsTaxExempt());
  EXPECT_EQ(information.TaxIDNumber(), "tax");
}

TEST_F(OrderInformationTest, WritesEveryAttributeWhenNew) {
  EXPECT_EQ(OrderInformation().GetXML(),
            "<orderinformation ponumber=\"\" poreleasenumber=\"\" projectorjobnumber=\"\""
            " requisitionorapprovalname=\"\" department=\"\" attention=\"\" phonenumber=\"\" email=\"\""
            " istaxexempt=\"0\" taxidnumber=\"\"/>");
}

TEST_F(OrderInformationTest, WritesEveryAttributeInItsOrderAndNoOrderNumberWhenFilled) {
  OrderInformation information;
  Fill(information);
  EXPECT_EQ(information.GetXML(),
            "<orderinformation ponumber=\"\" poreleasenumber=\"release\" projectorjobnumber=\"project\""
            " requisitionorapprovalname=\"approver\" department=\"department\" attention=\"attention\""
            " phonenumber=\"555-1234\" email=\"a@b.example\" istaxexempt=\"1\" taxidnumber=\"tax\"/>");
}

TEST_F(OrderInformationTest, WritesTaxExemptionAsADigit) {
  OrderInformation information;
  information.IsTaxExempt(true);
  EXPECT_NE(information.GetXML().find(" istaxexempt=\"1\" "), std::string::npos) << information.GetXML();
  information.IsTaxExempt(false);
  EXPECT_NE(information.GetXML().find(" istaxexempt=\"0\" "), std::string::npos) << information.GetXML();
}

TEST_F(OrderInformationTest, WritesLeadingAndTrailingBlanks) {
  OrderInformation information;
  information.Attention("  Ann \t");
  EXPECT_EQ(information.Attention(), "  Ann \t");
  qm_ordering::xml::Document document;
  ASSERT_TRUE(document.LoadXML(information.GetXML()));
  EXPECT_EQ(document.SelectSingleNode("orderinformation").Attribute("attention"), "  Ann \t");
}

TEST_F(OrderInformationTest, RaisesATextThatXMLCannotHold) {
  OrderInformation information;
  information.Email("a\x01@b");
  try {
    FAIL() << information.GetXML();
  } catch (const qm_ordering::Failure& raised) {
    EXPECT_EQ(raised.Number(), qm_ordering::failure::kXmlCharacter);
    EXPECT_NE(raised.Description().find("\"email\""), std::string::npos) << raised.Description();
  }
}

}  // namespace
