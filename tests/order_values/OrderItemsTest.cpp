#include "qm_ordering/order/OrderItems.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "qm_ordering/platform/value/Failure.h"
#include "tests/support/FailureOf.h"
#include "tests/support/MemorySettings.h"

namespace {

// Allocations that still succeed; negative: all do.
thread_local int lAllocationsLeft = -1;

}  // namespace

void* operator new(std::size_t lSize) {
  if (lAllocationsLeft == 0) {
    throw std::bad_alloc();
  }
  if (lAllocationsLeft > 0) {
    --lAllocationsLeft;
  }
  void* pMemory = std::malloc(lSize == 0 ? 1 : lSize);
  if (pMemory == nullptr) {
    throw std::bad_alloc();
  }
  return pMemory;
}

void operator delete(void* pMemory) noexcept {
  std::free(pMemory);
}

void operator delete(void* pMemory, std::size_t) noexcept {
  std::free(pMemory);
}

namespace {

using qm_ordering::Currency;
using qm_ordering::Failure;
using qm_ordering::OrderItem;
using qm_ordering::OrderItems;
using qm_ordering::Variant;
using test::FailureOf;

std::shared_ptr<OrderItem> NewItem(const std::string& zvItemNumber) {
  auto oItem = std::make_shared<OrderItem>();
  oItem->ItemNumber(zvItemNumber);
  return oItem;
}

class OrderItemsTest : public testing::Test {
 protected:
  // Adds an item under its own number and answers it.
  std::shared_ptr<OrderItem> Add(const std::string& zvItemNumber) {
    auto oItem = NewItem(zvItemNumber);
    m_oItems.Add(oItem, zvItemNumber);
    return oItem;
  }

  std::vector<std::string> Numbers() const {
    std::vector<std::string> numbers;
    for (const std::shared_ptr<OrderItem>& oItem : m_oItems) {
      numbers.push_back(oItem->ItemNumber());
    }
    return numbers;
  }

  test::SettingsScope m_oSettings;
  OrderItems m_oItems;
};

TEST_F(OrderItemsTest, IsEmptyWhenNew) {
  EXPECT_STREQ(m_oItems.ClassName(), "OrderItems");
  EXPECT_EQ(m_oItems.Count(), 0);
  EXPECT_TRUE(Numbers().empty());
  EXPECT_EQ(m_oItems.Item(1), nullptr);
  EXPECT_EQ(m_oItems.Item(""), nullptr);
}

TEST_F(OrderItemsTest, FindsAKeyInAnyLetterCase) {
  const auto oItem = Add("1A234-B");
  const auto oOther = Add("\xC3\x89T\xC3\x89");
  EXPECT_EQ(m_oItems.Item("1A234-B"), oItem);
  EXPECT_EQ(m_oItems.Item("1a234-b"), oItem);
  EXPECT_EQ(m_oItems.Item("\xC3\xA9t\xC3\xA9"), oOther);
}

TEST_F(OrderItemsTest, FindsAKeyByAllItsCharacters) {
  const auto oItem = Add("A1");
  EXPECT_EQ(m_oItems.Item("A"), nullptr);
  EXPECT_EQ(m_oItems.Item("A1 "), nullptr);
  EXPECT_EQ(m_oItems.Item(" A1"), nullptr);
  const auto oLonger = Add(std::string("A1\0B", 4));
  EXPECT_EQ(m_oItems.Item("A1"), oItem);
  EXPECT_EQ(m_oItems.Item(std::string("a1\0b", 4)), oLonger);
}

TEST_F(OrderItemsTest, TakesAKeyThatIsNotTheItemsOwnNumber) {
  const auto oItem = NewItem("A1");
  m_oItems.Add(oItem, "A1 DUP2");
  EXPECT_EQ(m_oItems.Item("A1 DUP2"), oItem);
  EXPECT_EQ(m_oItems.Item("A1"), nullptr);
}

TEST_F(OrderItemsTest, TakesTheEmptyKeyOnce) {
  const auto oItem = Add("");
  EXPECT_EQ(m_oItems.Item(""), oItem);
  EXPECT_EQ(FailureOf([&] { Add(""); }).Number(), qm_ordering::failure::kDuplicateKey);
}

TEST_F(OrderItemsTest, TakesOneItemUnderTwoKeys) {
  const auto oItem = Add("A1");
  m_oItems.Add(oItem, "A2");
  EXPECT_EQ(m_oItems.Count(), 2);
  EXPECT_EQ(m_oItems.Item(1), m_oItems.Item(2));
}

TEST_F(OrderItemsTest, CountsPositionsFromOne) {
  const auto oFirst = Add("X");
  const auto oSecond = Add("A");
  EXPECT_EQ(m_oItems.Item(1), oFirst);
  EXPECT_EQ(m_oItems.Item(2), oSecond);
}

TEST_F(OrderItemsTest, AnswersNothingForAPositionOutOfRange) {
  Add("A");
  Add("B");
  EXPECT_EQ(m_oItems.Item(0), nullptr);
  EXPECT_EQ(m_oItems.Item(m_oItems.Count() + 1), nullptr);
  EXPECT_EQ(m_oItems.Item(-1), nullptr);
  EXPECT_EQ(m_oItems.Item(std::numeric_limits<std::int32_t>::max()), nullptr);
  EXPECT_EQ(m_oItems.Item(std::numeric_limits<std::int32_t>::min()), nullptr);
  EXPECT_EQ(m_oItems.Item(1e300), nullptr);
  EXPECT_EQ(m_oItems.Item(std::numeric_limits<double>::quiet_NaN()), nullptr);
  EXPECT_EQ(m_oItems.Item(4294967297.0), nullptr);
  EXPECT_EQ(m_oItems.Item(Currency::FromScaled(std::numeric_limits<std::int64_t>::max())), nullptr);
}

TEST_F(OrderItemsTest, RoundsAPositionHalfToEven) {
  const auto oFirst = Add("A");
  const auto oSecond = Add("B");
  Add("C");
  EXPECT_EQ(m_oItems.Item(0.5), nullptr);
  EXPECT_EQ(m_oItems.Item(0.6), oFirst);
  EXPECT_EQ(m_oItems.Item(1.5), oSecond);
  EXPECT_EQ(m_oItems.Item(2.5), oSecond);
  EXPECT_EQ(m_oItems.Item(Currency::Parse("1.5")), oSecond);
  EXPECT_EQ(m_oItems.Item(Currency::Parse("1.4999")), oFirst);
}

TEST_F(OrderItemsTest, TakesANumericTextForAKey) {
  const auto oFirst = Add("2");
  const auto oSecond = Add("B");
  EXPECT_EQ(m_oItems.Item("2"), oFirst);
  EXPECT_EQ(m_oItems.Item(2), oSecond);
  EXPECT_EQ(m_oItems.Item("1"), nullptr);
}

TEST_F(OrderItemsTest, AnswersNothingForWhatIsNeitherKeyNorPosition) {
  const auto oItem = Add("A");
  Add("True");
  Add("12/30/1899");
  EXPECT_EQ(m_oItems.Item(Variant::Missing()), nullptr);
  EXPECT_EQ(m_oItems.Item(Variant()), nullptr);
  EXPECT_EQ(m_oItems.Item(Variant::Null()), nullptr);
  EXPECT_EQ(m_oItems.Item(true), nullptr);
  EXPECT_EQ(m_oItems.Item(false), nullptr);
  EXPECT_EQ(m_oItems.Item(qm_ordering::Date()), nullptr);
  EXPECT_EQ(m_oItems.Item(oItem), nullptr);
}

TEST_F(OrderItemsTest, RefusesAKeyThatItHasAndStaysAsItWas) {
  const auto oFirst = Add("A1");
  Add("B1");
  for (const char* zKey : {"A1", "a1"}) {
    const Failure raised = FailureOf([&] { m_oItems.Add(NewItem("other"), zKey); });
    EXPECT_EQ(raised.Number(), qm_ordering::failure::kDuplicateKey);
    EXPECT_NE(raised.Description().find(std::string("\"") + zKey + "\""), std::string::npos)
        << raised.Description();
  }
  EXPECT_EQ(m_oItems.Count(), 2);
  EXPECT_EQ(m_oItems.Item("A1"), oFirst);
  EXPECT_EQ(Numbers(), (std::vector<std::string>{"A1", "B1"}));
}

TEST_F(OrderItemsTest, RefusesANullItem) {
  EXPECT_EQ(FailureOf([&] { m_oItems.Add(nullptr, "A1"); }).Number(), qm_ordering::failure::kObjectNotSet);
  EXPECT_EQ(m_oItems.Count(), 0);
  Add("A1");
  EXPECT_EQ(m_oItems.Count(), 1);
}

TEST_F(OrderItemsTest, KeepsTheOrderOfAdding) {
  for (const char* zNumber : {"Z", "A", "m", "10", "9"}) {
    Add(zNumber);
  }
  EXPECT_EQ(Numbers(), (std::vector<std::string>{"Z", "A", "m", "10", "9"}));
  std::vector<std::string> enumerated;
  for (const auto& oItem : m_oItems.NewEnum()) {
    enumerated.push_back(oItem->ItemNumber());
  }
  EXPECT_EQ(enumerated, Numbers());
}

TEST_F(OrderItemsTest, EnumeratesFromTheStartEachTime) {
  Add("A");
  Add("B");
  const OrderItems::Enumerator enumerator = m_oItems.NewEnum();
  for (int lPass = 0; lPass < 2; ++lPass) {
    OrderItems::Iterator at = enumerator.begin();
    EXPECT_EQ((*at++)->ItemNumber(), "A");
    EXPECT_EQ((*at)->ItemNumber(), "B");
    EXPECT_FALSE(at == enumerator.end());
    EXPECT_TRUE(++at == enumerator.end());
  }
}

TEST_F(OrderItemsTest, MeetsMembersThatAreAddedDuringAWalk) {
  Add("0");
  std::vector<std::string> met;
  for (const auto& oItem : m_oItems) {
    met.push_back(oItem->ItemNumber());
    if (met.size() < 100) {
      Add(std::to_string(met.size()));
    }
  }
  EXPECT_EQ(met.size(), 100U);
  EXPECT_EQ(met, Numbers());
}

TEST_F(OrderItemsTest, SharesItsMembers) {
  std::shared_ptr<OrderItem> oItem = Add("A1");
  m_oItems.Item("A1")->Quantity(5);
  EXPECT_EQ(oItem->Quantity(), 5);
  for (const auto& oMember : m_oItems) {
    oMember->Quantity(6);
  }
  EXPECT_EQ(oItem->Quantity(), 6);
  oItem.reset();
  EXPECT_EQ(m_oItems.Item(1)->Quantity(), 6);
}

TEST_F(OrderItemsTest, ReleasesItsMembersWithItself) {
  const auto oItem = NewItem("A1");
  {
    OrderItems items;
    items.Add(oItem, "A1");
    EXPECT_EQ(oItem.use_count(), 2);
  }
  EXPECT_EQ(oItem.use_count(), 1);
}

TEST_F(OrderItemsTest, KeepsItsKeysWhenAnItemsNumberChanges) {
  const auto oItem = Add("A1");
  oItem->ItemNumber("B1");
  EXPECT_EQ(m_oItems.Item("A1"), oItem);
  EXPECT_EQ(m_oItems.Item("B1"), nullptr);
}

TEST_F(OrderItemsTest, StaysAsItWasWhenMemoryEndsDuringAdd) {
  const std::string zKey = "A key that is longer than what a string holds without an allocation";
  const auto oItem = NewItem("item");
  // Each round adds one member, so that growth of every part is met.
  int lFailures = 0;
  for (int lRound = 0; lRound < 40; ++lRound) {
    const std::string zRoundKey = zKey + std::to_string(lRound);
    for (int lLimit = 0; m_oItems.Count() == lRound; ++lLimit) {
      try {
        lAllocationsLeft = lLimit;
        m_oItems.Add(oItem, zRoundKey);
        lAllocationsLeft = -1;
      } catch (const Failure& failure) {
        lAllocationsLeft = -1;
        ++lFailures;
        ASSERT_EQ(failure.Number(), qm_ordering::failure::kOutOfMemory);
        ASSERT_EQ(m_oItems.Count(), lRound);
        ASSERT_EQ(m_oItems.Item(zRoundKey), nullptr);
        ASSERT_EQ(oItem.use_count(), lRound + 1);
      }
    }
    ASSERT_EQ(m_oItems.Count(), lRound + 1);
    ASSERT_EQ(m_oItems.Item(zRoundKey), oItem);
  }
  // At least the folded key and its place in the table fail once for each member.
  EXPECT_GE(lFailures, 80);
}

TEST_F(OrderItemsTest, FindsEachOfManyMembers) {
  for (int l = 0; l < 10000; ++l) {
    Add("item " + std::to_string(l));
  }
  EXPECT_EQ(m_oItems.Count(), 10000);
  for (int l = 0; l < 10000; ++l) {
    const std::string zNumber = "item " + std::to_string(l);
    ASSERT_EQ(m_oItems.Item("ITEM " + std::to_string(l))->ItemNumber(), zNumber);
    ASSERT_EQ(m_oItems.Item(l + 1)->ItemNumber(), zNumber);
  }
}

}  // namespace
