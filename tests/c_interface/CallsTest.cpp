#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <limits>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "qm_ordering/qm_ordering.h"
#include "tests/c_interface/CHost.h"
#include "tests/support/StoreFixture.h"

namespace {

using namespace test;

class CInterfaceFailures : public StoreFixture {};
class CInterfaceValues : public StoreFixture {};
class CInterfaceOwnership : public StoreFixture {};
class CInterfaceWalks : public StoreFixture {};

const qm_ordering_date kDay = {2003, 7, 4, 15, 4, 5};

void AddTo(qm_ordering_object items, const char* zvNumber) {
  const CObject item("OrderItem");
  Put(item, "ItemNumber", TextValue(zvNumber));
  Call(items, "Add", {ObjectValue(item), TextValue(zvNumber)});
}

std::string NextNumber(qm_ordering_object walk) {
  CValue member;
  EXPECT_EQ(0, qm_ordering_next(walk, &member));
  return member->kind == QM_ORDERING_MISSING ? "none" : Get(member.Object(), "ItemNumber").Text();
}

}  // namespace

TEST_F(CInterfaceFailures, ANullPointerIsRefusedWhereAPointerIsNeeded) {
  const CObject item("OrderItem");
  const CObject items("OrderItems");
  qm_ordering_object object = 7;
  const qm_ordering_class* const* classes = nullptr;
  const qm_ordering_class* description = nullptr;
  std::size_t lCount = 0;
  const std::string zFile = Folder.File("backup");
  CObject walk;
  ASSERT_EQ(0, qm_ordering_enumerate(items, &object));
  walk = CObject(object);

  EXPECT_EQ(5, qm_ordering_version(nullptr));
  EXPECT_EQ(5, qm_ordering_get_failure(nullptr));
  EXPECT_EQ(5, qm_ordering_last_failure(nullptr));
  EXPECT_EQ(5, qm_ordering_create(nullptr, &object));
  EXPECT_EQ(0u, object);
  EXPECT_EQ(5, qm_ordering_create("OrderItem", nullptr));
  EXPECT_EQ(5, qm_ordering_clear(nullptr));
  EXPECT_EQ(5, qm_ordering_get(item, "Quantity", nullptr, 1, nullptr));
  EXPECT_EQ(5, qm_ordering_call(item, "GetXML", nullptr, 1, nullptr));
  EXPECT_EQ(5, qm_ordering_put(item, "Quantity", nullptr));
  EXPECT_EQ(5, qm_ordering_enumerate(items, nullptr));
  EXPECT_EQ(5, qm_ordering_next(walk, nullptr));
  EXPECT_EQ(5, qm_ordering_class_name(item, nullptr));
  EXPECT_EQ(5, qm_ordering_classes(nullptr, &lCount));
  EXPECT_EQ(5, qm_ordering_classes(&classes, nullptr));
  EXPECT_EQ(5, qm_ordering_describe(nullptr, &description));
  EXPECT_EQ(5, qm_ordering_describe("OrderItem", nullptr));
  EXPECT_EQ(5, qm_ordering_answer(nullptr, "", 0));
  EXPECT_EQ(5, qm_ordering_create_order_store(nullptr));
  EXPECT_EQ(5, qm_ordering_order_store_path(nullptr));
  EXPECT_EQ(5, qm_ordering_check_order_store(nullptr));
  EXPECT_EQ(5, qm_ordering_repair_order_store(nullptr));
  EXPECT_EQ(5, qm_ordering_backup_order_store(nullptr, &object, nullptr, nullptr));
  EXPECT_EQ(5, qm_ordering_backup_order_store(zFile.c_str(), nullptr, nullptr, nullptr));
  EXPECT_FALSE(std::filesystem::exists(zFile));
  CValue kept;
  EXPECT_EQ(5, qm_ordering_restore_order_store(nullptr, &kept, nullptr, nullptr));
  EXPECT_EQ(5, qm_ordering_restore_order_store(zFile.c_str(), nullptr, nullptr, nullptr));
  EXPECT_NE("", FailureText());
}

TEST_F(CInterfaceFailures, EachHasItsNumberAndSaysWhatFailed) {
  const CObject item("OrderItem");
  const CObject items("OrderItems");
  const CObject details("OrderDetails");
  const CObject previous("PreviousOrder");
  qm_ordering_object object = 0;
  qm_ordering_value wrongKind = ValueOf(10);
  qm_ordering_value negativeKind = ValueOf(-1);
  qm_ordering_value nowhere = ValueOf(QM_ORDERING_TEXT);
  nowhere.as.text.length = 1;

  // The object
  EXPECT_EQ(91, NumberOfCall(0, "GetXML"));
  EXPECT_EQ(91, NumberOfCall(4711, "GetXML"));
  EXPECT_EQ(91, NumberOfCall(std::numeric_limits<std::uint64_t>::max(), "GetXML"));
  EXPECT_EQ("There is no object 18446744073709551615.", FailureText());
  EXPECT_EQ(91, NumberOfPut(0, "Quantity", IntegerValue(1)));
  EXPECT_EQ(429, qm_ordering_create("Nothing", &object));
  EXPECT_EQ("The library has no class \"Nothing\".", FailureText());
  EXPECT_EQ(429, qm_ordering_create("ErrorInfo", &object));
  // The member
  EXPECT_EQ(438, NumberOfCall(item, "Nothing"));
  EXPECT_EQ("The class OrderItem has no member \"Nothing\".", FailureText());
  EXPECT_EQ(438, NumberOfCall(item, ""));
  EXPECT_EQ(438, NumberOfCall(item, nullptr));
  EXPECT_EQ(438, NumberOfPut(item, "GetXML", IntegerValue(1)));
  EXPECT_EQ(438, qm_ordering_get(details, "ClearItems", nullptr, 0, nullptr));
  EXPECT_EQ(383, NumberOfPut(item, "ValidQuantity", BooleanValue(1)));
  // The arguments
  EXPECT_EQ(450, NumberOfCall(item, "GetXML", {IntegerValue(1)}));
  EXPECT_EQ(450, NumberOfCall(item, "Quantity", {IntegerValue(1)}));
  EXPECT_EQ(450,
            qm_ordering_call(item, "GetXML", &wrongKind, std::numeric_limits<std::size_t>::max(), nullptr));
  EXPECT_EQ(449, NumberOfCall(item, "Validate"));
  EXPECT_EQ(449, NumberOfCall(item, "Validate", {ValueOf(QM_ORDERING_MISSING)}));
  EXPECT_EQ("OrderItem.Validate needs its argument 1, lvDeliveryMethod.", FailureText());
  EXPECT_EQ(449, NumberOfPut(item, "Quantity", ValueOf(QM_ORDERING_MISSING)));
  EXPECT_EQ(13, NumberOfPut(item, "Quantity", TextValue("many")));
  EXPECT_EQ(0u, FailureText().find("OrderItem.Quantity, argument 1: ")) << FailureText();
  EXPECT_EQ(6, NumberOfPut(item, "Quantity", TextValue("3000000000")));
  EXPECT_EQ(6, NumberOfPut(item, "Price", DoubleValue(std::numeric_limits<double>::infinity())));
  EXPECT_EQ(94, NumberOfPut(item, "Quantity", ValueOf(QM_ORDERING_NULL)));
  EXPECT_EQ(13, NumberOfPut(previous, "OrderDetails", ObjectValue(item)));
  EXPECT_EQ(91, NumberOfPut(previous, "OrderDetails", ObjectValue(4711)));
  EXPECT_EQ(5, NumberOfPut(item, "Quantity", wrongKind));
  EXPECT_EQ("There is no kind of value 10.", FailureText());
  EXPECT_EQ(5, NumberOfPut(item, "Quantity", negativeKind));
  EXPECT_EQ(5, NumberOfPut(item, "ItemNumber", nowhere));
  for (const qm_ordering_date& date :
       {qm_ordering_date{}, qm_ordering_date{2003, 2, 29, 0, 0, 0}, qm_ordering_date{99, 1, 1, 0, 0, 0},
        qm_ordering_date{10000, 1, 1, 0, 0, 0}, qm_ordering_date{2003, 13, 1, 0, 0, 0},
        qm_ordering_date{2003, 1, 1, 24, 0, 0}, qm_ordering_date{2003, 1, 1, 0, -1, 0},
        qm_ordering_date{2003, 1, 1, 0, 0, 60}}) {
    EXPECT_EQ(5, NumberOfPut(details, "SubmitDate", DateValue(date))) << date.year << "-" << date.month;
  }
  // What members raise
  EXPECT_EQ(11, NumberOfCall(item, "Validate", {IntegerValue(0)}));
  EXPECT_EQ(5, NumberOfCall(CObject("PersonalLists"), "", {IntegerValue(4711)}));
  AddTo(items, "4QX17");
  EXPECT_EQ(457, NumberOfCall(items, "Add", {ObjectValue(item), TextValue("4qx17")}));
  Put(item, "ItemNumber", TextValue("\x01"));
  EXPECT_EQ(-1072896760, NumberOfCall(item, "GetXML"));
  // The store
  EXPECT_EQ(75, qm_ordering_create_order_store(Folder.Path().c_str()));
  EXPECT_EQ(76, qm_ordering_create_order_store(""));
  CValue kept;
  EXPECT_EQ(75, qm_ordering_restore_order_store(Folder.File("nothing").c_str(), &kept, nullptr, nullptr));
  EXPECT_EQ(QM_ORDERING_MISSING, kept->kind);
  EXPECT_EQ(5, qm_ordering_install_settings(nullptr, nullptr));
  EXPECT_EQ(5, qm_ordering_install_settings_file(nullptr));
  EXPECT_EQ(13, qm_ordering_on_import_progress(item, nullptr, nullptr));
  std::filesystem::remove(Store.Path());
  EXPECT_EQ(-2147467259, qm_ordering_check_order_store(&object));
  EXPECT_EQ(0u, object);
  EXPECT_NE(std::string::npos, FailureText().find(Store.Path())) << FailureText();
}

TEST_F(CInterfaceFailures, ATextStaysUntilItIsAskedForAgain) {
  qm_ordering_object object = 0;
  qm_ordering_failure first{};
  qm_ordering_failure second{};
  ASSERT_EQ(429, qm_ordering_create("First", &object));
  ASSERT_EQ(0, qm_ordering_get_failure(&first));
  EXPECT_EQ(429, first.number);
  EXPECT_EQ(0u, first.operation.length);
  ASSERT_EQ(429, qm_ordering_create("Second", &object));
  EXPECT_STREQ("The library has no class \"First\".", first.description.data);
  EXPECT_EQ(std::strlen(first.description.data), first.description.length);
  ASSERT_EQ(0, qm_ordering_get_failure(&second));
  EXPECT_STREQ("The library has no class \"Second\".", second.description.data);
  // A call that succeeds leaves it.
  const CObject item("OrderItem");
  EXPECT_EQ("The library has no class \"Second\".", FailureText());
}

TEST_F(CInterfaceFailures, AThreadHasNoneBeforeItsFirst) {
  qm_ordering_object object = 0;
  ASSERT_EQ(429, qm_ordering_create("Nothing", &object));
  std::thread([] {
    qm_ordering_failure failure{1, {"x", 1}, {"x", 1}};
    EXPECT_EQ(0, qm_ordering_get_failure(&failure));
    EXPECT_EQ(0, failure.number);
    EXPECT_EQ(0u, failure.description.length);
  }).join();
}

TEST_F(CInterfaceFailures, WhatAMemberSwallowedIsTheLastFailureUntilItIsForgotten) {
  const CObject order("CurrentOrder");
  std::filesystem::remove(Store.Path());
  qm_ordering_failure last{};
  ASSERT_EQ(0, qm_ordering_clear_last_failure());
  ASSERT_EQ(0, qm_ordering_last_failure(&last));
  EXPECT_EQ(0, last.number);
  EXPECT_EQ(0, NumberOfCall(order, "SaveSummary"));
  EXPECT_EQ(5, RecordOf(order));
  ASSERT_EQ(0, qm_ordering_last_failure(&last));
  EXPECT_EQ(-2147467259, last.number);
  EXPECT_NE(nullptr, std::strstr(last.description.data, Store.Path().c_str()));
  EXPECT_NE(0u, last.operation.length);
  ASSERT_EQ(0, qm_ordering_clear_last_failure());
  ASSERT_EQ(0, qm_ordering_last_failure(&last));
  EXPECT_EQ(0, last.number);
  EXPECT_EQ(0u, last.description.length);
}

TEST_F(CInterfaceValues, EveryKindGoesInAndComesOut) {
  const CObject item("OrderItem");
  const CObject details("OrderDetails");
  const CObject previous("PreviousOrder");

  for (const std::int32_t lTrue : {1, -1, 256}) {
    Put(item, "IsTaxable", BooleanValue(lTrue));
    EXPECT_EQ(QM_ORDERING_BOOLEAN, Get(item, "IsTaxable")->kind);
    EXPECT_EQ(1, Get(item, "IsTaxable")->as.boolean);
  }
  Put(item, "IsTaxable", BooleanValue(0));
  EXPECT_EQ(0, Get(item, "IsTaxable")->as.boolean);

  for (const std::int32_t lValue : {0, -1, 2147483647, -2147483647 - 1}) {
    Put(item, "Quantity", IntegerValue(lValue));
    EXPECT_EQ(QM_ORDERING_INTEGER, Get(item, "Quantity")->kind);
    EXPECT_EQ(lValue, Get(item, "Quantity")->as.integer);
  }
  Put(item, "Quantity", DoubleValue(2.5));
  EXPECT_EQ(2, Get(item, "Quantity")->as.integer);
  Put(item, "Quantity", ValueOf(QM_ORDERING_EMPTY));
  EXPECT_EQ(0, Get(item, "Quantity")->as.integer);

  for (const std::int64_t lValue : {std::int64_t{1}, std::numeric_limits<std::int64_t>::max(),
                                    std::numeric_limits<std::int64_t>::min()}) {
    Put(item, "Price", CurrencyValue(lValue));
    EXPECT_EQ(QM_ORDERING_CURRENCY, Get(item, "Price")->kind);
    EXPECT_EQ(lValue, Get(item, "Price")->as.currency);
  }

  Put(details, "SubmitDate", DateValue(kDay));
  const CValue date = Get(details, "SubmitDate");
  EXPECT_EQ(QM_ORDERING_DATE, date->kind);
  EXPECT_EQ(2003, date->as.date.year);
  EXPECT_EQ(7, date->as.date.month);
  EXPECT_EQ(4, date->as.date.day);
  EXPECT_EQ(15, date->as.date.hour);
  EXPECT_EQ(4, date->as.date.minute);
  EXPECT_EQ(5, date->as.date.second);

  using namespace std::string_view_literals;
  for (const std::string_view zText : {""sv, "4QX17"sv, "zero\0within\0"sv, "M\xC3\xBCller"sv, "\xFF"sv}) {
    Put(item, "Description", TextValue(zText));
    const CValue text = Get(item, "Description");
    EXPECT_EQ(zText, text.Text());
    EXPECT_EQ('\0', text->as.text.data[text->as.text.length]);
  }
  // A text ends with its length: what stands behind it is not the library's to read.
  const std::vector<char> letters(40, 'x');
  Put(item, "Description", TextValue({letters.data(), letters.size()}));
  EXPECT_EQ(std::string(40, 'x'), Get(item, "Description").Text());
  Put(item, "Description", ValueOf(QM_ORDERING_TEXT));
  EXPECT_EQ("", Get(item, "Description").Text());

  Put(previous, "OrderDetails", ObjectValue(details));
  EXPECT_EQ(static_cast<qm_ordering_object>(details), Get(previous, "OrderDetails").Object());
  Put(previous, "OrderDetails", ObjectValue(0));
  const CValue none = Get(previous, "OrderDetails");
  EXPECT_EQ(QM_ORDERING_OBJECT, none->kind);

  EXPECT_EQ(QM_ORDERING_EMPTY, Call(details, "LoadSummary", {BooleanValue(1)})->kind);
  EXPECT_EQ(0, RecordOf(details));
}

TEST_F(CInterfaceValues, ArgumentsAreLeftOutAtTheEndOrAsMissing) {
  const CObject order("CurrentOrder");
  const CObject details = Get(order, "OrderDetails").Object();
  const std::vector<std::string> expected = [&] {
    const TraceRecorder trace;
    Call(details, "LoadItems", {IntegerValue(0), BooleanValue(0), BooleanValue(0)});
    return trace.Statements();
  }();
  EXPECT_FALSE(expected.empty());
  const TraceRecorder trace;
  Call(details, "LoadItems");
  Call(details, "LoadItems", {ValueOf(QM_ORDERING_MISSING), BooleanValue(0)});
  std::vector<std::string> twice = expected;
  twice.insert(twice.end(), expected.begin(), expected.end());
  EXPECT_EQ(twice, trace.Statements());
}

TEST_F(CInterfaceValues, TheAnswerMayGoWhereAnArgumentStands) {
  const CObject items("OrderItems");
  AddTo(items, "4QX17");
  qm_ordering_value value = TextValue("4qx17");
  ASSERT_EQ(0, qm_ordering_call(items, "Item", &value, 1, &value));
  ASSERT_EQ(QM_ORDERING_OBJECT, value.kind);
  EXPECT_EQ("4QX17", Get(value.as.object, "ItemNumber").Text());
  EXPECT_EQ(0, qm_ordering_clear(&value));
  value = ValueOf(QM_ORDERING_MISSING);
  value.kind = 10;
  ASSERT_EQ(5, qm_ordering_call(items, "Item", &value, 1, &value));
  EXPECT_EQ(QM_ORDERING_MISSING, value.kind);
}

TEST_F(CInterfaceValues, AnAnswerThatNobodyWantsIsNotKept) {
  const CObject order("CurrentOrder");
  EXPECT_EQ(0, qm_ordering_get(order, "OrderDetails", nullptr, 0, nullptr));
  EXPECT_EQ(0, qm_ordering_call(order, "GetXML", nullptr, 0, nullptr));
  // Its number would be the next one.
  const qm_ordering_object number = order;
  EXPECT_EQ(91, qm_ordering_retain(number + 1));
}

TEST_F(CInterfaceOwnership, OneObjectHasOneNumberHoweverItWasReached) {
  const CObject order("CurrentOrder");
  const CObject first = Get(order, "OrderDetails").Object();
  const CObject second = Get(order, "orderdetails").Object();
  const qm_ordering_object number = first;
  EXPECT_EQ(number, static_cast<qm_ordering_object>(second));
  EXPECT_NE(number, static_cast<qm_ordering_object>(order));
}

TEST_F(CInterfaceOwnership, AnObjectEndsWithItsLastReferenceAndItsNumberIsNotUsedAgain) {
  qm_ordering_object object = 0;
  ASSERT_EQ(0, qm_ordering_create("OrderItem", &object));
  ASSERT_EQ(0, qm_ordering_retain(object));
  ASSERT_EQ(0, qm_ordering_release(object));
  EXPECT_EQ(0, NumberOfCall(object, "GetXML"));
  ASSERT_EQ(0, qm_ordering_release(object));
  EXPECT_EQ(91, NumberOfCall(object, "GetXML"));
  EXPECT_NE(std::string::npos, FailureText().find("was released")) << FailureText();
  EXPECT_EQ(91, NumberOfPut(object, "Quantity", IntegerValue(1)));
  EXPECT_EQ(91, qm_ordering_retain(object));
  EXPECT_EQ(91, qm_ordering_release(object));
  qm_ordering_object walk = 1;
  EXPECT_EQ(91, qm_ordering_enumerate(object, &walk));
  EXPECT_EQ(0u, walk);
  const char* zName = "";
  EXPECT_EQ(91, qm_ordering_class_name(object, &zName));
  EXPECT_EQ(nullptr, zName);
  const CObject items("OrderItems");
  EXPECT_EQ(91, NumberOfCall(items, "Add", {ObjectValue(object), TextValue("4QX17")}));
  for (int i = 0; i < 100; ++i) {
    EXPECT_NE(object, static_cast<qm_ordering_object>(CObject("OrderItem")));
  }
  EXPECT_EQ(0, qm_ordering_release(0));
  EXPECT_EQ(91, qm_ordering_retain(0));
}

TEST_F(CInterfaceOwnership, AnObjectThatAnotherHoldsLivesOn) {
  const CObject items("OrderItems");
  AddTo(items, "4QX17");
  const CObject item = Call(items, "", {TextValue("4QX17")}).Object();
  EXPECT_EQ("4QX17", Get(item, "ItemNumber").Text());
  CObject order("CurrentOrder");
  const CObject details = Get(order, "OrderDetails").Object();
  order.Release();
  EXPECT_EQ(0, NumberOfCall(details, "LoadItems"));
  EXPECT_EQ(0, RecordOf(details));
}

TEST_F(CInterfaceOwnership, ClearEndsEveryKindAndLeavesItMissing) {
  const CObject order("CurrentOrder");
  for (const char* zMember : {"GetXML", "OrderDetails", "Error", "ItemCount", "LoadSummary"}) {
    qm_ordering_value value{};
    ASSERT_EQ(0, qm_ordering_call(order, zMember, nullptr, 0, &value));
    EXPECT_NE(QM_ORDERING_MISSING, value.kind);
    EXPECT_EQ(0, qm_ordering_clear(&value));
    EXPECT_EQ(QM_ORDERING_MISSING, value.kind);
    EXPECT_EQ(0, qm_ordering_clear(&value));
  }
  qm_ordering_value value{};
  ASSERT_EQ(0, qm_ordering_call(order, "OrderDetails", nullptr, 0, &value));
  const qm_ordering_object details = value.as.object;
  ASSERT_EQ(0, qm_ordering_clear(&value));
  EXPECT_EQ(91, qm_ordering_retain(details));
  // One that was released already is told, and the value is missing all the same.
  value = ObjectValue(details);
  EXPECT_EQ(91, qm_ordering_clear(&value));
  EXPECT_EQ(QM_ORDERING_MISSING, value.kind);
}

TEST_F(CInterfaceWalks, MembersThatAreAddedMeanwhileAreMetAtTheEnd) {
  const CObject items("OrderItems");
  qm_ordering_object number = 0;
  ASSERT_EQ(0, qm_ordering_enumerate(items, &number));
  const CObject walk(number);
  EXPECT_EQ("none", NextNumber(walk));
  AddTo(items, "first");
  AddTo(items, "second");
  EXPECT_EQ("first", NextNumber(walk));
  AddTo(items, "third");
  EXPECT_EQ("second", NextNumber(walk));
  EXPECT_EQ("third", NextNumber(walk));
  EXPECT_EQ("none", NextNumber(walk));
  EXPECT_EQ("none", NextNumber(walk));
  // Another walk begins at the beginning.
  const CObject other = Call(items, "NewEnum").Object();
  EXPECT_EQ("first", NextNumber(other));
}

TEST_F(CInterfaceWalks, AWalkKeepsItsCollectionAlive) {
  CObject items("OrderItems");
  AddTo(items, "first");
  qm_ordering_object number = 0;
  ASSERT_EQ(0, qm_ordering_enumerate(items, &number));
  const CObject walk(number);
  items.Release();
  EXPECT_EQ("first", NextNumber(walk));
  EXPECT_EQ("none", NextNumber(walk));
}

TEST_F(CInterfaceWalks, OnlyCollectionsAreWalkedOverAndOnlyWalksGoOn) {
  const CObject item("OrderItem");
  qm_ordering_object walk = 1;
  EXPECT_EQ(438, qm_ordering_enumerate(item, &walk));
  EXPECT_EQ("The class OrderItem is no collection and cannot be enumerated.", FailureText());
  EXPECT_EQ(0u, walk);
  CValue member;
  EXPECT_EQ(438, qm_ordering_next(item, &member));
  EXPECT_EQ(QM_ORDERING_MISSING, member->kind);
  EXPECT_EQ(91, qm_ordering_next(0, &member));
}

TEST_F(CInterfaceWalks, FindingsAreTextsFromTheFirstOn) {
  const CObject order("CurrentOrder");
  Store.Run("update tblOrder set cTotalPrice = 12345");
  qm_ordering_object number = 0;
  ASSERT_EQ(0, qm_ordering_repair_order_store(&number));
  const CObject changes(number);
  ASSERT_EQ(1, Get(changes, "Count")->as.integer);
  const std::string zChange = Call(changes, "Item", {IntegerValue(1)}).Text();
  EXPECT_NE(std::string::npos, zChange.find("1.2345")) << zChange;
  EXPECT_EQ(9, NumberOfCall(changes, "", {IntegerValue(0)}));
  EXPECT_EQ(9, NumberOfCall(changes, "", {IntegerValue(2)}));
  ASSERT_EQ(0, qm_ordering_enumerate(changes, &number));
  const CObject walk(number);
  CValue text;
  EXPECT_EQ(0, qm_ordering_next(walk, &text));
  EXPECT_EQ(zChange, text.Text());
  CValue end;
  EXPECT_EQ(0, qm_ordering_next(walk, &end));
  EXPECT_EQ(QM_ORDERING_MISSING, end->kind);
}

TEST(CInterfaceDescription, EveryClassIsThereOnceAndStaysWhereItIs) {
  const qm_ordering_class* const* classes = nullptr;
  std::size_t lCount = 0;
  ASSERT_EQ(0, qm_ordering_classes(&classes, &lCount));
  std::vector<std::string> names = qm_ordering::ClassNames();
  const std::size_t lCreatable = names.size();
  for (const std::string& zName : qm_ordering::AnsweredClassNames()) {
    names.push_back(zName);
  }
  ASSERT_EQ(names.size(), lCount);
  for (std::size_t i = 0; i < lCount; ++i) {
    EXPECT_EQ(names[i], classes[i]->name);
    EXPECT_EQ(i < lCreatable ? 1 : 0, classes[i]->is_creatable) << names[i];
    const qm_ordering_class* found = nullptr;
    EXPECT_EQ(0, qm_ordering_describe(("qm_ordering." + names[i]).c_str(), &found));
    EXPECT_EQ(classes[i], found);
  }
  const qm_ordering_class* none = classes[0];
  EXPECT_EQ(429, qm_ordering_describe("Nothing", &none));
  EXPECT_EQ(nullptr, none);
}

TEST(CInterfaceDescription, AClassIsDescribedAsItIs) {
  const qm_ordering_class* pClass = nullptr;
  ASSERT_EQ(0, qm_ordering_describe("OrderItems", &pClass));
  EXPECT_STREQ("OrderItem", pClass->element_type);
  std::string zMembers;
  for (std::size_t i = 0; i < pClass->member_count; ++i) {
    const qm_ordering_member& member = pClass->members[i];
    zMembers += std::to_string(member.kind) + " " + member.name + "(";
    for (std::size_t j = 0; j < member.parameter_count; ++j) {
      zMembers +=
          std::string(j == 0 ? "" : ", ") + member.parameters[j].type + " " + member.parameters[j].name;
    }
    zMembers += std::string(") ") + member.type + (member.is_default != 0 ? ", default" : "") + "\n";
  }
  EXPECT_EQ(
      "3 Add(OrderItem ovOrderItem, String zvItemNumber) \n"
      "3 Item(Variant vvKey) OrderItem, default\n"
      "0 Count() Integer\n"
      "3 NewEnum() Enumeration\n",
      zMembers);

  ASSERT_EQ(0, qm_ordering_describe("OrderDetails", &pClass));
  EXPECT_STREQ("", pClass->element_type);
  bool bFound = false;
  for (std::size_t i = 0; i < pClass->member_count; ++i) {
    if (std::string(pClass->members[i].name) == "LoadItems") {
      bFound = true;
      ASSERT_EQ(3u, pClass->members[i].parameter_count);
      const qm_ordering_parameter& sort = pClass->members[i].parameters[0];
      EXPECT_EQ(1, sort.is_optional);
      EXPECT_EQ(QM_ORDERING_INTEGER, sort.default_value.kind);
      EXPECT_EQ(0, sort.default_value.as.integer);
    }
  }
  EXPECT_TRUE(bFound);
}

TEST(CInterfaceDescription, TheVersionIsThatOfTheProject) {
  const char* zVersion = nullptr;
  ASSERT_EQ(0, qm_ordering_version(&zVersion));
  EXPECT_STREQ(QM_ORDERING_PROJECT_VERSION, zVersion);
}

TEST_F(CInterfaceOwnership, AnObjectTellsItsClass) {
  const CObject order("qm_ordering.currentorder");
  const char* zName = nullptr;
  ASSERT_EQ(0, qm_ordering_class_name(order, &zName));
  EXPECT_STREQ("CurrentOrder", zName);
  const CObject error = Get(order, "Error").Object();
  ASSERT_EQ(0, qm_ordering_class_name(error, &zName));
  EXPECT_STREQ("ErrorInfo", zName);
}
