#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <new>
#include <pugixml.hpp>
#include <string>

#include "qm_ordering/platform/xml/Document.h"

namespace {

using qm_ordering::xml::Document;
using qm_ordering::xml::Element;

int lAllocationsToFailure = 0;

void* FailOnce(std::size_t lSize) {
  return lAllocationsToFailure-- == 0 ? nullptr : std::malloc(lSize);
}

// While it lives one allocation of the XML parser fails: the one after that many others.
class FailingAllocation {
 public:
  explicit FailingAllocation(int lvAfter) : m_allocate(pugi::get_memory_allocation_function()) {
    lAllocationsToFailure = lvAfter;
    pugi::set_memory_management_functions(FailOnce, pugi::get_memory_deallocation_function());
  }
  ~FailingAllocation() {
    pugi::set_memory_management_functions(m_allocate, pugi::get_memory_deallocation_function());
  }
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;

 private:
  pugi::allocation_function m_allocate;
};

// Runs the operation with a failure of its first, second, ... allocation until none of its own fails any more
// and it succeeds; each run before must raise std::bad_alloc. Answers how many did.
int FailuresUntilSuccess(const std::function<void()>& operation) {
  for (int lAfter = 0;; ++lAfter) {
    const FailingAllocation failing(lAfter);
    try {
      operation();
      EXPECT_GE(lAllocationsToFailure, 0) << "the failure of allocation " << lAfter << " was passed over";
      return lAfter;
    } catch (const std::bad_alloc&) {
    }
  }
}

// Beyond one page of the parser's memory, so that each such text needs an allocation of its own.
const std::string& Long() {
  static const std::string zLong(50000, 'x');
  return zLong;
}

TEST(XmlAllocation, FailureToCreateAnElementIsRaised) {
  EXPECT_EQ(FailuresUntilSuccess([] { EXPECT_EQ(Document().CreateElement("a").XML(), "<a/>"); }), 1);
  EXPECT_EQ(FailuresUntilSuccess([] { EXPECT_TRUE(Document().CreateElement(Long()).Name() == Long()); }), 2);
}

TEST(XmlAllocation, FailureToSetAnAttributeLeavesTheElementAsItWas) {
  Document document;
  Element element = document.CreateElement("a");
  element.SetAttribute("old", "1");
  const auto SetOrCheck = [&](const std::string& zvName) {
    const std::string zBefore = element.XML();
    try {
      element.SetAttribute(zvName.c_str(), Long());
    } catch (const std::bad_alloc&) {
      EXPECT_TRUE(element.XML() == zBefore);
      throw;
    }
    EXPECT_TRUE(element.Attribute(zvName) == Long());
  };
  EXPECT_EQ(FailuresUntilSuccess([&] { SetOrCheck("old"); }), 1);
  EXPECT_EQ(FailuresUntilSuccess([&] { SetOrCheck("new"); }), 1);
  EXPECT_EQ(FailuresUntilSuccess([&] { SetOrCheck(Long()); }), 2);
}

TEST(XmlAllocation, FailureToReadATextLeavesTheDocumentAsItWas) {
  const std::string zText = "<a b=\"" + Long() + "&amp;\"><c/></a>";
  const int lFailures = FailuresUntilSuccess([&] {
    Document document;
    try {
      EXPECT_TRUE(document.LoadXML(zText));
      EXPECT_TRUE(document.XML() == zText);
    } catch (const std::bad_alloc&) {
      EXPECT_EQ(document.XML(), "");
      throw;
    }
  });
  EXPECT_GT(lFailures, 1);
}

TEST(XmlAllocation, FailureToCopyAnElementLeavesTheTargetAsItWas) {
  Document source;
  const std::string zText = "<a b=\"" + Long() + "\" " + Long() + "=\"\"><" + Long() + "/>" + Long() + "</a>";
  ASSERT_TRUE(source.LoadXML(zText));
  const Element a = source.SelectSingleNode("a");
  Document target;
  Element parent = target.CreateElement("parent");
  const int lFailures = FailuresUntilSuccess([&] {
    try {
      parent.AppendChild(a);
    } catch (const std::bad_alloc&) {
      EXPECT_EQ(parent.XML(), "<parent/>");
      throw;
    }
  });
  EXPECT_GE(lFailures, 4);
  EXPECT_TRUE(parent.XML() == "<parent>" + zText + "</parent>");
}

TEST(XmlAllocation, FailureToCopyTheRootLeavesTheDocumentEmpty) {
  Document source;
  const std::string zText = "<a b=\"" + Long() + "\"/>";
  ASSERT_TRUE(source.LoadXML(zText));
  const Element a = source.SelectSingleNode("a");
  Document target;
  const int lFailures = FailuresUntilSuccess([&] {
    try {
      target.AppendChild(a);
    } catch (const std::bad_alloc&) {
      EXPECT_EQ(target.XML(), "");
      throw;
    }
  });
  EXPECT_GE(lFailures, 1);
  EXPECT_TRUE(target.XML() == zText);
}

TEST(XmlAllocation, FailureToSelectIsRaised) {
  std::string zText = "<a>";
  for (int l = 0; l < 2000; ++l) {
    zText += "<b c='1'/>";
  }
  zText += "<b c='2'/></a>";
  Document document;
  ASSERT_TRUE(document.LoadXML(zText));
  const int lFailures = FailuresUntilSuccess(
      [&] { EXPECT_EQ(document.SelectSingleNode("//b[@c='2'] | //d").Attribute("c"), "2"); });
  EXPECT_GT(lFailures, 0);
}

}  // namespace
