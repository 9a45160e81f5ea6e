#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "qm_ordering/foundation/members/MemberTable.h"
#include "qm_ordering/foundation/members/Texts.h"
#include "qm_ordering/order/OrderItem.h"
#include "qm_ordering/order/OrderItems.h"
#include "qm_ordering/registry/CreateObject.h"
#include "qm_ordering/registry/LateBinding.h"
#include "tests/memory/FailingAllocation.h"
#include "tests/support/MemorySettings.h"
#include "tests/support/RaisedNumber.h"

// Objects are used by name while memory ends.

namespace {

using namespace qm_ordering;
using test::Extent;
using test::FailingAllocation;
using test::RaisedNumber;

const std::string kLong = "a text that is longer than what a string holds in itself";

class LateBindingMemory : public testing::Test {
 protected:
  // Fails each allocation of the call, alone and with all that follow. The call raises 7 then, and otherwise
  // what it raises with memory. After each the look is taken.
  template <typename Call, typename Look>
  static void FailEach(Call call, std::int32_t lvOtherwise, Look look) {
    ASSERT_EQ(RaisedNumber(call), lvOtherwise);
    look();
    int lFailures = 0;
    for (const Extent extent : {Extent::Once, Extent::FromThenOn}) {
      bool bFailed = true;
      for (std::int64_t lPosition = 1; bFailed; ++lPosition) {
        std::int32_t lNumber = 0;
        {
          const FailingAllocation failing(lPosition, extent);
          lNumber = RaisedNumber(call);
          bFailed = failing.HasFailed();
        }
        ASSERT_EQ(lNumber, bFailed ? failure::kOutOfMemory : lvOtherwise) << "allocation " << lPosition;
        look();
        lFailures += bFailed ? 1 : 0;
      }
    }
    EXPECT_GT(lFailures, 0);
  }
  template <typename Call>
  static void FailEach(Call call, std::int32_t lvOtherwise = 0) {
    FailEach(std::move(call), lvOtherwise, [] {});
  }

  test::SettingsScope Settings;
};

// One class for each extent, since a table is made once.
template <Extent>
class Sample : public Object {
 public:
  static constexpr const char* kClassName = "Sample";
  const char* ClassName() const noexcept override { return kClassName; }
  static const ClassInfo& ClassMembers() {
    using Class = Sample;
    static const ClassTable<Class> table(kClassName, [](auto& members) {
      members.ReadWrite(QM_PROPERTY(Quantity))
          .Method(QM_MEMBER(Item), "lvTheFirstOfBothParameters", ParameterName("zvTheSecond", kLong))
          .Default("Item");
    });
    return table.Info();
  }
  const ClassInfo& Members() const override { return ClassMembers(); }

  std::int32_t Quantity() const { return m_lQuantity; }
  void Quantity(std::int32_t lvQuantity) { m_lQuantity = lvQuantity; }
  std::string Item(std::int32_t lvFirst, const std::string& zvSecond) const {
    return std::to_string(lvFirst) + zvSecond;
  }

 private:
  std::int32_t m_lQuantity = 0;
};

template <Extent extent>
void FailMakingOfATable() {
  const auto oObject = std::make_shared<Sample<extent>>();
  std::int64_t lPosition = 0;
  for (bool bFailed = true; bFailed;) {
    ++lPosition;
    std::int32_t lNumber = 0;
    {
      const FailingAllocation failing(lPosition, extent);
      lNumber = RaisedNumber([&] { return oObject->Members().Members.size(); });
      bFailed = failing.HasFailed();
    }
    ASSERT_EQ(lNumber, bFailed ? failure::kOutOfMemory : 0) << lPosition;
  }
  EXPECT_GT(lPosition, 10);
  ASSERT_EQ(oObject->Members().Members.size(), 3U);
  EXPECT_TRUE(oObject->Members().Members[2].IsDefault);
  PutProperty(oObject, "quantity", 3);
  EXPECT_EQ(GetProperty(oObject, "Quantity"), Variant(3));
  const Variant vArgument(7);
  EXPECT_EQ(CallMethod(oObject, "", std::span(&vArgument, 1)), Variant("7" + kLong));
}

TEST_F(LateBindingMemory, LacksNoMemberOfATableThatWasMadeAtALaterTry) {
  FailMakingOfATable<Extent::Once>();
  FailMakingOfATable<Extent::FromThenOn>();
}

TEST_F(LateBindingMemory, IsTheOneFailureOfAPropertyThatIsRead) {
  const auto oItem = std::make_shared<OrderItem>();
  oItem->Description(kLong);
  FailEach([&] { return GetProperty(oItem, "Description"); });
  FailEach([&] { return GetProperty(oItem, "Error"); });
  FailEach([&] { return GetProperty(oItem, "GetXML"); });
  FailEach([&] { return GetProperty(oItem, kLong); }, failure::kUnknownMember);
}

TEST_F(LateBindingMemory, LeavesAPropertyThatCouldNotBeWrittenAsItWas) {
  const auto oItem = std::make_shared<OrderItem>();
  const Variant vValue(kLong);
  bool bWritten = false;
  FailEach(
      [&] {
        bWritten = false;
        PutProperty(oItem, "Description", vValue);
        return bWritten = true;
      },
      0,
      [&] {
        EXPECT_EQ(oItem->Description(), bWritten ? kLong : "");
        oItem->Description("");
      });
  const auto put = [&](const char* zMember) {
    PutProperty(oItem, zMember, vValue);
    return true;
  };
  FailEach([&] { return put("Quantity"); }, failure::kTypeMismatch);
  FailEach([&] { return put("Imported"); }, failure::kReadOnlyProperty);
  FailEach([&] { return put("GetXML"); }, failure::kUnknownMember);
}

TEST_F(LateBindingMemory, IsTheOneFailureOfAMethod) {
  const auto oItems = std::make_shared<OrderItems>();
  const auto oItem = std::make_shared<OrderItem>();
  const std::vector<Variant> vArguments{oItem, kLong, 3};
  const std::span<const Variant> vAll(vArguments);
  const auto call = [&](const char* zMember, std::span<const Variant> vGiven) {
    return CallMethod(oItems, zMember, vGiven);
  };
  FailEach([&] { return call("Add", vAll); }, failure::kWrongArgumentCount);
  FailEach([&] { return call("Add", vAll.first(1)); }, failure::kArgumentNotOptional);
  FailEach([&] { return call("Add", vAll.subspan(1)); }, failure::kTypeMismatch);
  EXPECT_EQ(oItems->Count(), 0);
  call("Add", vAll.first(2));
  FailEach([&] { return call("Add", vAll.first(2)); }, failure::kDuplicateKey);
  FailEach([&] { return call("Item", vAll.subspan(1, 1)); });
  EXPECT_EQ(oItems->Count(), 1);
}

TEST_F(LateBindingMemory, IsTheOneFailureOfAWalk) {
  const auto oTexts = std::make_shared<Texts>(std::vector<std::string>{kLong, kLong + "2"});
  FailEach([&] { return Enumerate(oTexts); });
  EXPECT_EQ(oTexts.use_count(), 1);
  const auto oItem = std::make_shared<OrderItem>();
  FailEach([&] { return Enumerate(oItem); }, failure::kUnknownMember);
  // A text that there was no memory for is not passed over.
  const auto oWalk = Enumerate(oTexts);
  for (int lPosition = 1; lPosition <= 2; ++lPosition) {
    {
      const FailingAllocation failing(1, Extent::FromThenOn);
      EXPECT_EQ(RaisedNumber([&] { return CallMethod(oWalk, "Next"); }), failure::kOutOfMemory);
    }
    EXPECT_EQ(CallMethod(oWalk, "Next"), Variant(oTexts->Item(lPosition)));
  }
  EXPECT_TRUE(CallMethod(oWalk, "Next").IsMissing());
}

TEST_F(LateBindingMemory, IsTheOneFailureOfWhatTellsOfClasses) {
  FailEach([] { return ClassNames().size(); });
  FailEach([] { return AnsweredClassNames().size(); });
  FailEach([] { return DescribeClass(kLong).Members.size(); }, failure::kCannotCreateObject);
  FailEach([] { return CreateObject(kLong); }, failure::kCannotCreateObject);
  FailEach([] { return CreateObject("OrderItems"); });
}

}  // namespace
