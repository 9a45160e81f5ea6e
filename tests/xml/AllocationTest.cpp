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

int lAllocationsLeft = 0;

void* AllocateWhileAnyIsLeft(std::size_t lSize) {
  return lAllocationsLeft-- > 0 ? std::malloc(lSize) : nullptr;
}

// While it lives the XML parser gets no more than that many allocations.
class AllocationLimit {
 public:
  explicit AllocationLimit(int lvLimit) : m_allocate(pugi::get_memory_allocation_function()) {
    lAllocationsLeft = lvLimit;
    pugi::set_memory_management_functions(AllocateWhileAnyIsLeft, pugi::get_memory_deallocation_function());
  }
  ~AllocationLimit() {
    pugi::set_memory_management_functions(m_allocate, pugi::get_memory_deallocation_function());
  }
  AllocationLimit(const AllocationLimit&) = delete;
  AllocationLimit& operator=(const AllocationLimit&) = delete;

 private:
  pugi::allocation_function m_allocate;
};

// Runs the operation with ever more allocations until it succeeds; each run before must raise std::bad_alloc.
// Answers how many did.
int FailuresUntilSuccess(const std::function<void()>& operation) {
  for (int lLimit = 0;; ++lLimit) {
    const AllocationLimit limit(lLimit);
    try {
      operation();
      return lLimit;
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
  EXPECT_GT(FailuresUntilSuccess([] { EXPECT_EQ(Document().CreateElement("a").XML(), "<a/>"); }), 0);
}

TEST(XmlAllocation, FailureToSetAnAttributeLeavesTheElementAsItWas) {
  Document document;
  Element element = document.CreateElement("a");
  element.SetAttribute("old", "1");
  const std::string zLongName(50000, 'n');
  const auto SetOrCheck = [&](const std::string& zvName) {
    const std::string zBefore = element.XML();
    try {
      element.SetAttribute(zvName, Long());
    } catch (const std::bad_alloc&) {
      EXPECT_TRUE(element.XML() == zBefore);
      throw;
    }
    EXPECT_TRUE(element.Attribute(zvName) == Long());
  };
  EXPECT_EQ(FailuresUntilSuccess([&] { SetOrCheck("old"); }), 1);
  EXPECT_EQ(FailuresUntilSuccess([&] { SetOrCheck("new"); }), 1);
  EXPECT_EQ(FailuresUntilSuccess([&] { SetOrCheck(zLongName); }), 2);
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
  const std::string zText = "<a b=\"" + Long() + "\"><c d=\"" + Long() + "\"/>" + Long() + "</a>";
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
  EXPECT_GE(lFailures, 3);
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
