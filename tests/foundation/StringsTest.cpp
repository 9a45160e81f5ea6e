#include "qm_ordering/foundation/Strings.h"

#include <gtest/gtest.h>

#include "qm_ordering/platform/value/Failure.h"
#include "tests/support/RaisedNumber.h"

namespace {

using qm_ordering::GraftElement;
using qm_ordering::SelectElement;

TEST(SelectElement, FindsTheFirstElementOnThePath) {
  const auto oElement = SelectElement("<order><item id=\"1\"/><item id=\"2\"/></order>", "//item");
  ASSERT_TRUE(oElement);
  EXPECT_EQ(oElement.Name(), "item");
  EXPECT_EQ(oElement.Attribute("id"), "1");
}

TEST(SelectElement, FindsTheRoot) {
  const auto oElement = SelectElement("<orderinformation department=\"R &amp; D\"/>", "orderinformation");
  ASSERT_TRUE(oElement);
  EXPECT_EQ(oElement.Attribute("department"), "R & D");
}

TEST(SelectElement, FindsNothingInATextThatDoesNotParse) {
  EXPECT_FALSE(SelectElement("", "order"));
  EXPECT_FALSE(SelectElement("order", "order"));
  EXPECT_FALSE(SelectElement("<order><item/>", "order"));
  EXPECT_FALSE(SelectElement("<order/><order/>", "order"));
}

TEST(SelectElement, FindsNothingOnAPathThatDoesNotMatch) {
  EXPECT_FALSE(SelectElement("<order/>", "item"));
  EXPECT_FALSE(SelectElement("<order/>", "//item"));
  EXPECT_FALSE(SelectElement("<order/>", "["));
}

TEST(SelectElement, GivesAnElementThatOutlivesTheTextAndCanBeTakenIntoAnotherDocument) {
  qm_ordering::xml::Document oDocument;
  {
    const std::string zXML = "<item><note text=\"a\"/></item>";
    oDocument.AppendChild(SelectElement(zXML, "item"));
  }
  EXPECT_EQ(SelectElement(oDocument.XML(), "item/note").Attribute("text"), "a");
}

TEST(GraftElement, RaisesAndAppendsNothingWhenTheFragmentLacksTheElement) {
  qm_ordering::xml::Document oDocument;
  auto oParent = oDocument.CreateElement("orderitems");
  for (const char* zFragment : {"", "orderitem", "<orderitem", "<other/>", "<orderitem/><orderitem/>"}) {
    EXPECT_EQ(test::RaisedNumber([&] { GraftElement(oParent, zFragment, "orderitem"); }),
              qm_ordering::failure::kXmlFragment)
        << zFragment;
  }
  EXPECT_EQ(oParent.XML(), "<orderitems/>");
}

TEST(GraftElement, DropsWhatElseTheFragmentHolds) {
  qm_ordering::xml::Document oDocument;
  auto oParent = oDocument.CreateElement("orderitems");
  GraftElement(oParent, "<?xml version=\"1.0\"?><!-- a --><orderitem quantity=\"1\"/> ", "orderitem");
  GraftElement(oParent, "<orderitem quantity=\"2\"/>", "orderitem");
  EXPECT_EQ(oParent.XML(), "<orderitems><orderitem quantity=\"1\"/><orderitem quantity=\"2\"/></orderitems>");
}

}  // namespace
