#include "qm_ordering/registry/LateBinding.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "qm_ordering/order/CurrentOrder.h"
#include "qm_ordering/order/OrderItem.h"
#include "qm_ordering/order/OrderItems.h"
#include "qm_ordering/registry/CreateObject.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/FailureOf.h"
#include "tests/support/LegacyTables.h"
#include "tests/support/OrderFields.h"
#include "tests/support/RaisedNumber.h"
#include "tests/support/StoreFixture.h"

namespace {

using namespace qm_ordering;
using test::FailureOf;
using test::RaisedNumber;
using AnyObject = std::shared_ptr<Object>;
using Values = std::vector<Variant>;

class LateBinding : public test::StoreFixture {};

Variant Get(const AnyObject& oObject, std::string_view zMember, const Values& vArguments = {}) {
  return GetProperty(oObject, zMember, vArguments);
}

Variant Call(const AnyObject& oObject, std::string_view zMember, const Values& vArguments = {}) {
  return CallMethod(oObject, zMember, vArguments);
}

std::string InCase(std::string zName, int (*toCase)(int)) {
  std::transform(zName.begin(), zName.end(), zName.begin(),
                 [&](char c) { return static_cast<char>(toCase(static_cast<unsigned char>(c))); });
  return zName;
}

std::vector<std::string> SpellingsOf(const std::string& zName) {
  return {zName, InCase(zName, std::toupper), InCase(zName, std::tolower)};
}

void ExpectFailure(const Failure& failure, std::int32_t lNumber, std::string_view zNamed) {
  EXPECT_EQ(failure.Number(), lNumber) << failure.Description();
  EXPECT_NE(failure.Description().find(zNamed), std::string::npos) << zNamed << ": " << failure.Description();
}

bool IsClass(std::string_view zType) {
  const std::vector<std::string> zMade = ClassNames();
  const std::vector<std::string> zAnswered = AnsweredClassNames();
  return std::find(zMade.begin(), zMade.end(), zType) != zMade.end() ||
         std::find(zAnswered.begin(), zAnswered.end(), zType) != zAnswered.end();
}

// The type of what a member answered, as a description names it. An object that there is not is of any class.
void ExpectOfType(const Variant& vValue, std::string_view zType, const std::string& zMember) {
  if (zType == "Variant") {
    return;
  }
  if (IsClass(zType)) {
    ASSERT_EQ(vValue.Kind(), VariantKind::Object) << zMember;
    if (vValue.ToObject()) {
      EXPECT_EQ(vValue.ToObject()->ClassName(), zType) << zMember;
    }
    return;
  }
  const VariantKind kind = zType == "Boolean"    ? VariantKind::Boolean
                           : zType == "Integer"  ? VariantKind::Integer
                           : zType == "Currency" ? VariantKind::Currency
                           : zType == "Date"     ? VariantKind::Date
                           : zType == "String"   ? VariantKind::String
                                                 : VariantKind::Empty;
  EXPECT_EQ(kind == VariantKind::Empty, zType.empty()) << zMember << " is of an unknown type, " << zType;
  EXPECT_EQ(vValue.Kind(), kind) << zMember;
}

// A value of that type, another one for each number; but for flags.
Variant SampleOf(std::string_view zType, std::int32_t lNumber) {
  if (zType == "Boolean") {
    return lNumber % 2 == 0;
  }
  if (zType == "Integer") {
    return lNumber;
  }
  if (zType == "Currency") {
    return Currency::FromScaled(12345 + lNumber);
  }
  if (zType == "Date") {
    return Date(2003, 7, 1 + lNumber % 28);
  }
  if (zType == "String") {
    return "text " + std::to_string(lNumber);
  }
  return zType == "Variant" ? Variant(lNumber) : Variant(CreateObject(std::string(zType)));
}

// Every class that can be made with every member of one of these kinds.
template <typename Visit>
void ForEachMember(std::initializer_list<MemberKind> kinds, Visit visit) {
  int lMembers = 0;
  for (const std::string& zName : ClassNames()) {
    const AnyObject oObject = CreateObject(zName);
    for (const MemberInfo& member : oObject->Members().Members) {
      if (std::find(kinds.begin(), kinds.end(), member.Kind) != kinds.end()) {
        visit(oObject, member, zName + "." + member.Name);
        ++lMembers;
      }
    }
  }
  EXPECT_GT(lMembers, 0);
}

TEST_F(LateBinding, DescribesEachClassByEitherFormOfItsNameInAnyLetterCase) {
  const std::vector<std::string> zNames = ClassNames();
  EXPECT_TRUE(std::is_sorted(zNames.begin(), zNames.end()));
  EXPECT_EQ(zNames.size(), 13U);
  for (const std::string& zName : zNames) {
    const AnyObject oObject = CreateObject(zName);
    EXPECT_EQ(oObject->ClassName(), zName);
    EXPECT_EQ(oObject->Members().Name, zName);
    EXPECT_FALSE(oObject->Members().Members.empty()) << zName;
    for (const std::string& zForm : {zName, "QM_Ordering." + zName}) {
      for (const std::string& zSpelling : SpellingsOf(zForm)) {
        EXPECT_EQ(CreateObject(zSpelling)->ClassName(), zName) << zSpelling;
        EXPECT_EQ(&DescribeClass(zSpelling), &oObject->Members()) << zSpelling;
      }
    }
  }
}

TEST_F(LateBinding, DescribesTheClassesThatMembersAnswerButMakesNoneOfThem) {
  EXPECT_EQ(AnsweredClassNames(),
            (std::vector<std::string>{"Enumeration", "ErrorInfo", "ImportPreview", "Texts"}));
  for (const std::string& zName : AnsweredClassNames()) {
    for (const std::string& zSpelling : SpellingsOf(zName)) {
      EXPECT_EQ(DescribeClass(zSpelling).Name, zName);
      EXPECT_EQ(&DescribeClass("QM_Ordering." + zSpelling), &DescribeClass(zName));
      EXPECT_EQ(RaisedNumber([&] { return CreateObject(zSpelling); }), 429) << zSpelling;
    }
  }
}

TEST_F(LateBinding, FindsNoClassByANameWithOtherLetters) {
  // The long s is a small s in Unicode's view.
  for (const char* zName : {"Database", "", "QM_Ordering.", "QM_Ordering.QM_Ordering.OrderItem", "OrderItem ",
                            "OrderItem\u017f", "QM_Ordering.Per\u017fonalList", "Text\u017f"}) {
    ExpectFailure(FailureOf([&] { DescribeClass(zName); }), 429, "\"" + std::string(zName) + "\"");
    ExpectFailure(FailureOf([&] { CreateObject(zName); }), 429, "\"" + std::string(zName) + "\"");
  }
}

TEST_F(LateBinding, ReadsEachPropertyInItsTypeAndCallsItAsWell) {
  ForEachMember({MemberKind::PropertyGet},
                [](const AnyObject& oObject, const MemberInfo& member, const std::string& zMember) {
                  for (const std::string& zSpelling : SpellingsOf(member.Name)) {
                    ExpectOfType(Get(oObject, zSpelling), member.Type, zMember);
                    ExpectOfType(Call(oObject, zSpelling), member.Type, zMember);
                  }
                  ExpectFailure(FailureOf([&] { Get(oObject, member.Name, {1}); }), 450,
                                zMember + " takes 0 arguments, not 1");
                });
}

TEST_F(LateBinding, WritesEachPropertyThatCanBeWrittenAndRefusesTheOthers) {
  std::int32_t lNumber = 0;
  for (const std::string& zName : ClassNames()) {
    const AnyObject oObject = CreateObject(zName);
    std::vector<std::pair<std::string, Variant>> written;
    std::vector<std::string> zReadable;
    for (const MemberInfo& member : oObject->Members().Members) {
      if (member.Kind == MemberKind::PropertyGet) {
        zReadable.emplace_back(member.Name);
      }
      if (member.Kind == MemberKind::PropertyLet || member.Kind == MemberKind::PropertySet) {
        ASSERT_EQ(member.Parameters.size(), 1U);
        const std::string_view zType = member.Parameters[0].Type;
        EXPECT_EQ(member.Kind == MemberKind::PropertySet, IsClass(zType)) << member.Name;
        for (const std::string& zSpelling : SpellingsOf(member.Name)) {
          const Variant vValue = SampleOf(zType, ++lNumber);
          PutProperty(oObject, zSpelling, vValue);
          EXPECT_EQ(Get(oObject, member.Name), vValue) << zName << "." << member.Name;
        }
        written.emplace_back(member.Name, Get(oObject, member.Name));
        std::erase(zReadable, member.Name);
      }
    }
    // None has changed another one.
    for (const auto& [zMember, vValue] : written) {
      EXPECT_EQ(Get(oObject, zMember), vValue) << zName << "." << zMember;
    }
    for (const std::string& zMember : zReadable) {
      ExpectFailure(FailureOf([&] { PutProperty(oObject, zMember, 1); }), 383, zName + "." + zMember);
    }
  }
  EXPECT_GT(lNumber, 0);
}

TEST_F(LateBinding, WritesWhatTheClassItselfReads) {
  const auto oItem = std::make_shared<OrderItem>();
  int lFields = 0;
  for (const auto& field : test::LineFields()) {
    if (!field.Set) {
      continue;
    }
    ++lFields;
    const std::string zMember = field.Column.substr(1);
    const std::string zSample = test::SampleValue(field.Column);
    const Variant vValue = field.Column[0] == 'c'   ? Variant(Currency::FromScaled(std::stoll(zSample)))
                           : field.Column[0] == 'b' ? Variant(zSample == "-1")
                           : field.Column[0] == 'l' ? Variant(std::stoi(zSample))
                                                    : Variant(zSample);
    PutProperty(oItem, zMember, vValue);
    EXPECT_EQ(field.Get(*oItem), zSample) << zMember;
    field.Set(*oItem, test::SampleValue(field.Column, 2));
    EXPECT_NE(Get(oItem, zMember), vValue) << zMember;
  }
  EXPECT_EQ(lFields, 19);
  EXPECT_EQ(oItem->Members().Members.size(), 19U * 2 + 5);
}

TEST_F(LateBinding, CallsEachMethodWithSuchArguments) {
  ForEachMember({MemberKind::Method},
                [](const AnyObject& oObject, const MemberInfo& member, const std::string& zMember) {
                  Values vArguments;
                  for (const ParameterInfo& parameter : member.Parameters) {
                    vArguments.push_back(SampleOf(parameter.Type, 1));
                  }
                  try {
                    ExpectOfType(Call(oObject, member.Name, vArguments), member.Type, zMember);
                  } catch (const Failure& failure) {
                    // The member's own: no such key, a pack size of zero, no such folder, no order loaded.
                    const std::array own{5, 11, 76, 91};
                    EXPECT_NE(std::find(own.begin(), own.end(), failure.Number()), own.end())
                        << zMember << ": " << failure.Number() << " " << failure.Description();
                    EXPECT_EQ(failure.Description().find(", argument "), std::string::npos);
                  }
                  vArguments.emplace_back(1);
                  const std::string zTakes =
                      zMember + " takes " + std::to_string(member.Parameters.size()) + " arguments, not ";
                  ExpectFailure(FailureOf([&] { Call(oObject, member.Name, vArguments); }), 450, zTakes);
                });
}

TEST_F(LateBinding, NamesTheArgumentThatIsNeededOrCannotBeConverted) {
  struct Wrong {
    std::string_view Type;
    Variant Value;
    std::int32_t Number;
  };
  const AnyObject oOther = CreateObject("OrderInformation");
  const std::vector<Wrong> wrongs = {{"Boolean", "perhaps", 13},
                                     {"Boolean", Variant::Null(), 94},
                                     {"Boolean", oOther, 13},
                                     {"Integer", "1x", 13},
                                     {"Integer", "2147483648", 6},
                                     {"Integer", Variant::Null(), 94},
                                     {"Integer", Date(), 13},
                                     {"Currency", "1x", 13},
                                     {"Currency", 1e15, 6},
                                     {"Currency", Variant::Null(), 94},
                                     {"Date", 1, 13},
                                     {"Date", "soon", 13},
                                     {"Date", Variant::Null(), 94},
                                     {"String", Variant::Null(), 94},
                                     {"String", oOther, 13}};
  int lRefused = 0;
  ForEachMember({MemberKind::PropertyLet, MemberKind::PropertySet, MemberKind::Method},
                [&](const AnyObject& oObject, const MemberInfo& member, const std::string& zMember) {
                  const bool bMethod = member.Kind == MemberKind::Method;
                  for (std::size_t i = 0; i < member.Parameters.size(); ++i) {
                    Values vArguments;
                    for (const ParameterInfo& parameter : member.Parameters) {
                      vArguments.push_back(SampleOf(parameter.Type, 1));
                    }
                    const auto use = [&](const Variant& vValue) {
                      vArguments[i] = vValue;
                      return FailureOf([&] {
                        bMethod ? static_cast<void>(Call(oObject, member.Name, vArguments))
                                : PutProperty(oObject, member.Name, vValue);
                      });
                    };
                    const std::string zPosition = std::to_string(i + 1);
                    const std::string zArgument = zMember + ", argument " + zPosition + ": ";
                    const ParameterInfo& parameter = member.Parameters[i];
                    if (!parameter.IsOptional) {
                      ExpectFailure(use(Variant::Missing()), 449,
                                    zMember + " needs its argument " + zPosition + ", " + parameter.Name);
                    }
                    for (const Wrong& wrong : wrongs) {
                      if (wrong.Type == parameter.Type) {
                        ExpectFailure(use(wrong.Value), wrong.Number, zArgument);
                        ++lRefused;
                      }
                    }
                    if (IsClass(parameter.Type)) {
                      ExpectFailure(use(oOther), 13, zArgument);
                      ExpectFailure(use("text"), 13, zArgument);
                      ExpectFailure(use(Variant::Null()), 13, zArgument);
                      ++lRefused;
                    }
                  }
                });
  EXPECT_GT(lRefused, 0);
}

TEST_F(LateBinding, ConvertsArgumentsAsVariantDoes) {
  const AnyObject oItem = CreateObject("OrderItem");
  PutProperty(oItem, "Quantity", " 12 ");
  EXPECT_EQ(Get(oItem, "Quantity"), Variant(12));
  PutProperty(oItem, "Price", 2.5);
  EXPECT_EQ(Get(oItem, "Price"), Variant(Currency::Parse("2.5")));
  PutProperty(oItem, "IsTaxable", 1);
  EXPECT_EQ(Get(oItem, "IsTaxable"), Variant(true));
  PutProperty(oItem, "ItemNumber", 17);
  EXPECT_EQ(Get(oItem, "ItemNumber"), Variant("17"));
  PutProperty(oItem, "ItemNumber", Variant());
  EXPECT_EQ(Get(oItem, "ItemNumber"), Variant(""));
}

TEST_F(LateBinding, NamesTheMemberThatThereIsNot) {
  const AnyObject oItem = CreateObject("OrderItem");
  // Of the class's C++ alone, of another class, with other letters (a long s).
  for (const char* zName : {"ClassName", "Members", "SaveSummary", "Quantit", "Quantity ", "I\u017fTaxable",
                            "Quant\xc3\xadty", "\xff"}) {
    const std::string zNamed = "OrderItem has no member \"" + std::string(zName) + "\"";
    ExpectFailure(FailureOf([&] { Get(oItem, zName); }), 438, zNamed);
    ExpectFailure(FailureOf([&] { PutProperty(oItem, zName, 1); }), 438, zNamed);
    ExpectFailure(FailureOf([&] { Call(oItem, zName); }), 438, zNamed);
  }
  EXPECT_EQ(RaisedNumber([&] { return Get(oItem, std::string_view("Quantity\0", 9)); }), 438);
  ExpectFailure(FailureOf([&] { Enumerate(oItem); }), 438, "OrderItem is no collection");
}

TEST_F(LateBinding, NeedsAnObject) {
  EXPECT_EQ(RaisedNumber([] { return Get(nullptr, "Quantity"); }), 91);
  EXPECT_EQ(RaisedNumber([] { return Call(nullptr, "GetXML"); }), 91);
  EXPECT_EQ(RaisedNumber([] { return Enumerate(nullptr); }), 91);
  EXPECT_EQ(FailureOf([] { PutProperty(nullptr, "Quantity", 1); }).Number(), 91);
}

TEST_F(LateBinding, GivesNoMembersOfAHostsOwnObject) {
  class HostsOwn : public Object {
   public:
    const char* ClassName() const noexcept override { return "HostsOwn"; }
    const ClassInfo& Members() const override { return m_oInfo; }

   private:
    ClassInfo m_oInfo;
  };
  const auto oObject = std::make_shared<HostsOwn>();
  ExpectFailure(FailureOf([&] { Get(oObject, "Quantity"); }), 438, "HostsOwn");
  ExpectFailure(FailureOf([&] { Call(CreateObject("CurrentOrder"), "AddItem", {oObject}); }), 13, "HostsOwn");
}

TEST_F(LateBinding, TakesTheDefaultsOfArgumentsThatAreLeftOut) {
  CurrentOrder order;
  const auto oNew = std::make_shared<OrderItem>();
  oNew->ItemNumber("4QX17");
  oNew->Quantity(1);
  order.AddItem(oNew);
  const AnyObject oDetails = CreateObject("OrderDetails");
  // Of LoadItems(lvSortType = 0, bvIsLoadCurrent = false, bvValidate = false).
  const auto lLoaded = [&](const Values& vArguments) {
    Call(oDetails, "LoadItems", vArguments);
    return Get(Get(oDetails, "OrderItems").ToObject(), "Count").ToInteger();
  };
  EXPECT_EQ(lLoaded({}), 0);
  EXPECT_EQ(lLoaded({0, true}), 1);
  EXPECT_EQ(lLoaded({Variant::Missing(), true}), 1);
  EXPECT_EQ(lLoaded({Variant::Missing(), true, Variant::Missing()}), 1);
  EXPECT_EQ(lLoaded({Variant::Missing(), Variant::Missing(), Variant::Missing()}), 0);
  EXPECT_EQ(RaisedNumber([&] { return lLoaded({7, true}); }), 9);
  EXPECT_EQ(RaisedNumber([&] { return lLoaded({0, true, true}); }), 91);
}

TEST_F(LateBinding, MeansTheDefaultMemberByAnEmptyName) {
  const AnyObject oItems = CreateObject("OrderItems");
  const AnyObject oItem = CreateObject("OrderItem");
  Call(oItems, "Add", {oItem, "4QX17"});
  EXPECT_EQ(Get(oItems, "", {"4qx17"}).ToObject(), oItem);
  EXPECT_EQ(Call(oItems, "", {1}).ToObject(), oItem);
  EXPECT_EQ(RaisedNumber([&] { return Get(oItems, ""); }), 449);
  EXPECT_EQ(RaisedNumber([&] { return Get(CreateObject("OrderHistory"), "", {1}); }), 5);
  EXPECT_EQ(RaisedNumber([&] { return Get(CreateObject("PersonalLists"), "", {1}); }), 5);
  EXPECT_EQ(FailureOf([&] { PutProperty(oItems, "", oItem); }).Number(), 438);
  EXPECT_EQ(RaisedNumber([&] { return Get(oItem, ""); }), 438);
}

TEST_F(LateBinding, ReadsWhatAMethodAnswersButRunsNoneThatAnswersNothing) {
  const AnyObject oOrder = CreateObject("CurrentOrder");
  const AnyObject oItem = CreateObject("OrderItem");
  PutProperty(oItem, "ItemNumber", "4QX17");
  Call(oOrder, "AddItem", {oItem});
  EXPECT_EQ(Get(oOrder, "ItemCount"), Variant(1));
  EXPECT_EQ(Get(oOrder, "ItemExists", {"4QX17"}), Variant(true));
  ExpectFailure(FailureOf([&] { Get(oOrder, "ClearItems"); }), 438, "\"ClearItems\"");
  EXPECT_EQ(Get(oOrder, "ItemCount"), Variant(1));
  ExpectFailure(FailureOf([&] { PutProperty(oOrder, "ItemCount", 2); }), 438, "\"ItemCount\"");
  EXPECT_TRUE(Call(oOrder, "ClearItems").IsEmpty());
  EXPECT_EQ(Get(oOrder, "ItemCount"), Variant(0));
}

TEST_F(LateBinding, HandsOnTheObjectsThemselves) {
  const auto oOrder = std::dynamic_pointer_cast<CurrentOrder>(CreateObject("CurrentOrder"));
  ASSERT_NE(oOrder, nullptr);
  EXPECT_EQ(Get(oOrder, "OrderDetails").ToObject(), oOrder->OrderDetails());
  const auto oItem = std::make_shared<OrderItem>();
  const AnyObject oItems = CreateObject("OrderItems");
  Call(oItems, "Add", {oItem, "a"});
  EXPECT_EQ(Get(oItems, "Item", {"A"}).ToObject(), oItem);
  EXPECT_EQ(oItem.use_count(), 2);

  const AnyObject oList = CreateObject("PersonalList");
  PutProperty(oList, "OrderItems", oItems);
  EXPECT_EQ(Get(oList, "OrderItems").ToObject(), oItems);
  // An empty value is an empty reference, which is what the member then says.
  PutProperty(oList, "OrderItems", Variant());
  const Variant vNone = Get(oList, "OrderItems");
  EXPECT_EQ(vNone.Kind(), VariantKind::Object);
  EXPECT_EQ(vNone.ToObject(), nullptr);
  EXPECT_EQ(RaisedNumber([&] { return Call(oOrder, "AddItem", {vNone}); }), 91);
  EXPECT_EQ(RaisedNumber([&] { return Call(oOrder, "AddItem", {Variant()}); }), 91);
}

TEST_F(LateBinding, WalksOverWhatACollectionHoldsWhenTheWalkGetsThere) {
  AnyObject oItems = CreateObject("OrderItems");
  std::vector<AnyObject> oAdded;
  const auto add = [&] {
    oAdded.push_back(CreateObject("OrderItem"));
    Call(oItems, "Add", {oAdded.back(), std::to_string(oAdded.size())});
  };
  add();
  add();
  const AnyObject oWalk = Enumerate(oItems);
  EXPECT_STREQ(oWalk->ClassName(), "Enumeration");
  EXPECT_EQ(&oWalk->Members(), &DescribeClass("Enumeration"));
  EXPECT_EQ(Call(oWalk, "Next").ToObject(), oAdded[0]);
  add();
  EXPECT_EQ(Call(oWalk, "Next").ToObject(), oAdded[1]);
  EXPECT_EQ(Call(oWalk, "Next").ToObject(), oAdded[2]);
  EXPECT_TRUE(Call(oWalk, "Next").IsMissing());
  EXPECT_TRUE(Call(oWalk, "Next").IsMissing());
  add();
  EXPECT_EQ(Call(oWalk, "Next").ToObject(), oAdded[3]);

  // Another walk begins at the first, and keeps the collection.
  const AnyObject oOther = Call(oItems, "NewEnum").ToObject();
  const std::weak_ptr<Object> kept = oItems;
  oItems.reset();
  for (const AnyObject& oItem : oAdded) {
    EXPECT_EQ(Call(oOther, "Next").ToObject(), oItem);
  }
  EXPECT_FALSE(kept.expired());
}

TEST_F(LateBinding, LetsACollectionGoWithItsLastWalk) {
  AnyObject oItems = CreateObject("OrderItems");
  const std::weak_ptr<Object> kept = oItems;
  AnyObject oWalk = Enumerate(oItems);
  oItems.reset();
  EXPECT_TRUE(Call(oWalk, "Next").IsMissing());
  EXPECT_FALSE(kept.expired());
  oWalk.reset();
  EXPECT_TRUE(kept.expired());
}

TEST_F(LateBinding, WalksOverEachCollection) {
  const AnyObject oLists = CreateObject("PersonalLists");
  Call(oLists, "CreateList", {"Tools"});
  Call(oLists, "CreateList", {"Paint"});
  Call(oLists, "LoadLists");
  AnyObject oWalk = Enumerate(oLists);
  for (const char* zName : {"Paint", "Tools"}) {
    EXPECT_EQ(Get(Call(oWalk, "Next").ToObject(), "Name"), Variant(zName));
  }
  EXPECT_TRUE(Call(oWalk, "Next").IsMissing());

  const AnyObject oOrder = CreateObject("CurrentOrder");
  Call(oOrder, "SaveToHistory");
  const AnyObject oHistory = CreateObject("OrderHistory");
  Call(oHistory, "LoadOrders");
  oWalk = Enumerate(oHistory);
  const Variant vPrevious = Call(oWalk, "Next");
  EXPECT_EQ(vPrevious.ToObject(), Get(oHistory, "", {1}).ToObject());
  EXPECT_TRUE(Call(oWalk, "Next").IsMissing());
  for (const std::string& zName : ClassNames()) {
    const std::string zElement = DescribeClass(zName).ElementType;
    EXPECT_EQ(RaisedNumber([&] { return Enumerate(CreateObject(zName)); }), zElement.empty() ? 438 : 0)
        << zName;
  }
}

TEST_F(LateBinding, AnswersTheErrorRecordAsAnObject) {
  const AnyObject oOrder = CreateObject("CurrentOrder");
  const AnyObject oClear = Get(oOrder, "Error").ToObject();
  PutProperty(Get(oOrder, "OrderDetails").ToObject(), "OrderID", -1);
  Call(oOrder, "SaveSummary");
  const AnyObject oError = Get(oOrder, "Error").ToObject();
  EXPECT_EQ(Get(oError, "Number"), Variant(1));
  EXPECT_EQ(Get(oError, "Description"), Variant("Order not loaded yet"));
  EXPECT_EQ(RaisedNumber([&] {
              PutProperty(oError, "Number", 0);
              return true;
            }),
            383);
  // A copy, as in C++.
  EXPECT_EQ(Get(oClear, "Number"), Variant(0));
}

TEST_F(LateBinding, AnswersAnImportsPreviewAndItsTextsAsObjects) {
  test::LegacyTables tables;
  tables.AddOrder("20030704150405", {{"PONUM", "PO-1"}});
  tables.AddLine("20030704150405", "4QX17", {{"QUANTITY", "many"}});
  tables.AddLine("20030704150405", "4QX18", {{"QUANTITY", "some"}});
  const AnyObject oPreview =
      Call(CreateObject("OrderHistoryImporter"), "PreviewImports", {tables.Make()}).ToObject();
  EXPECT_EQ(Get(oPreview, "Orders"), Variant(1));
  EXPECT_EQ(Get(oPreview, "Lines"), Variant(2));
  EXPECT_EQ(Get(oPreview, "MarkedLines"), Variant(0));
  EXPECT_EQ(Get(oPreview, "AlreadyImported"), Variant(0));
  EXPECT_EQ(Get(oPreview, "FailingRows"), Variant(2));

  AnyObject oTexts = Get(oPreview, "Failures").ToObject();
  EXPECT_STREQ(oTexts->ClassName(), "Texts");
  EXPECT_EQ(Get(oTexts, "Count"), Variant(2));
  const Variant vFirst = Get(oTexts, "", {1});
  EXPECT_NE(vFirst.ToString().find("many"), std::string::npos) << vFirst.ToString();
  const Variant vSecond = Call(oTexts, "Item", {"2"});
  EXPECT_NE(vSecond.ToString().find("some"), std::string::npos) << vSecond.ToString();
  for (const int lPosition : {-1, 0, 3}) {
    EXPECT_EQ(RaisedNumber([&] { return Call(oTexts, "Item", {lPosition}); }), 9) << lPosition;
  }
  const AnyObject oWalk = Enumerate(oTexts);
  oTexts.reset();
  EXPECT_EQ(Call(oWalk, "Next"), vFirst);
  EXPECT_EQ(Call(oWalk, "Next"), vSecond);
  EXPECT_TRUE(Call(oWalk, "Next").IsMissing());
}

// Each use of objects that are not this thread's, and what the objects are there.
std::vector<Failure> UsesOf(const AnyObject& oItems, const AnyObject& oItem, const AnyObject& oWalk) {
  const AnyObject oOwn = CreateObject("OrderItems");
  const AnyObject oOwnList = CreateObject("PersonalList");
  return {FailureOf([&] { Get(oItem, "Quantity"); }),
          FailureOf([&] { PutProperty(oItem, "Quantity", 2); }),
          FailureOf([&] { Call(oItem, "GetXML"); }),
          FailureOf([&] { Enumerate(oItems); }),
          FailureOf([&] { Call(oWalk, "Next"); }),
          FailureOf([&] {
            Call(oOwn, "Add", {oItem, "a"});
          }),
          FailureOf([&] { Call(oOwn, "Item", {oItem}); }),
          FailureOf([&] { PutProperty(oOwnList, "OrderItems", oItems); })};
}

TEST_F(LateBinding, RefusesObjectsOfAnotherThread) {
  const AnyObject oItems = CreateObject("OrderItems");
  const AnyObject oItem = CreateObject("OrderItem");
  const AnyObject oWalk = Enumerate(oItems);
  PutProperty(oItem, "Quantity", 1);
  bool bOwn = true;
  std::vector<Failure> failures;
  std::thread([&] {
    const test::SettingsScope settings;
    bOwn = oItem->BelongsToThisThread();
    failures = UsesOf(oItems, oItem, oWalk);
  }).join();
  EXPECT_FALSE(bOwn);
  EXPECT_EQ(failures.size(), 8U);
  for (const Failure& failure : failures) {
    ExpectFailure(failure, -2147417842, "belongs to another thread");
  }
  EXPECT_TRUE(oItem->BelongsToThisThread());
  EXPECT_EQ(Get(oItem, "Quantity"), Variant(1));
}

TEST_F(LateBinding, RefusesTheParentsObjectsInAChild) {
  const AnyObject oItems = CreateObject("OrderItems");
  const AnyObject oItem = CreateObject("OrderItem");
  const AnyObject oWalk = Enumerate(oItems);
  test::ChildProcess child([&] {
    std::string zOutcome;
    for (const Failure& failure : UsesOf(oItems, oItem, oWalk)) {
      const bool bForked = failure.Description().find("before this process was forked") != std::string::npos;
      zOutcome += std::to_string(failure.Number()) + (bForked ? " forked\n" : " " + failure.Description());
    }
    // Its own it may use.
    const AnyObject oOwn = CreateObject("OrderItem");
    PutProperty(oOwn, "Quantity", 3);
    return zOutcome + Get(oOwn, "Quantity").ToString();
  });
  std::string zExpected;
  for (int i = 0; i < 8; ++i) {
    zExpected += "-2147417842 forked\n";
  }
  EXPECT_EQ(child.Outcome(), zExpected + "3");
  PutProperty(oItem, "Quantity", 1);
  EXPECT_EQ(Get(oItem, "Quantity"), Variant(1));
}

}  // namespace
