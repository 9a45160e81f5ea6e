#include "tests/conditions/TroubledStore.h"

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>

#include "qm_ordering/platform/ado/embedded/EmbeddedSession.h"
#include "tests/support/OrderFields.h"
#include "tests/support/OrderValues.h"
#include "tests/support/TempFolder.h"

namespace test {

namespace {

using namespace qm_ordering;

constexpr int kLines = 3;

std::shared_ptr<OrderItem> NewItem(const std::string& zvItemNumber, std::int32_t lvQuantity) {
  auto oItem = std::make_shared<OrderItem>();
  oItem->ItemNumber(zvItemNumber);
  oItem->Quantity(lvQuantity);
  oItem->SellQuantity(1);
  oItem->ShipQuantity(1);
  oItem->Price(Currency::Parse("2.5"));
  oItem->Description("the description of " + zvItemNumber);
  oItem->CustomerNotes(std::string(200, 'n'));
  return oItem;
}

void RequireClear(const ErrorInfo& record) {
  if (record.Number != 0) {
    throw std::runtime_error("the store of the test was not made: " + record.Description);
  }
}

void FillOrder(CurrentOrder& order, const std::string& zvMark, int lvLines) {
  const Currency cTotal = order.OrderDetails()->TotalPrice();
  FillHeader(*order.OrderDetails());
  order.OrderDetails()->TotalPrice(cTotal);
  order.OrderDetails()->PurchaseOrderNumber("PO " + zvMark);
  for (int i = 1; i <= lvLines; ++i) {
    order.AddItem(NewItem(zvMark + "-" + std::to_string(i), 10 * i));
    RequireClear(order.Error());
  }
  order.SaveSummary();
  RequireClear(order.Error());
}

// Two submitted orders and a current one in the thread's store.
void FillStore(const std::string& zvMark, int lvLines) {
  CurrentOrder order;
  RequireClear(order.OrderDetails()->Error());
  for (const char* zOrder : {"first", "second"}) {
    FillOrder(order, zvMark + zOrder, lvLines);
    order.SaveToHistory();
    RequireClear(order.Error());
    order.LoadSummary();
    RequireClear(order.Error());
    order.LoadItems(0);
  }
  FillOrder(order, zvMark + "now", lvLines);
}

}  // namespace

const std::vector<WritingMember>& WritingMembers() {
  static const auto first = [](CurrentOrder& order) { return order.OrderDetails()->OrderItems()->Item(1); };
  static const std::vector<WritingMember> members = {
      {"AddItem of a new line", [](CurrentOrder& order) { order.AddItem(NewItem("NEW", 3)); }},
      {"AddItem of a line that is there",
       [](CurrentOrder& order) { order.AddItem(NewItem(first(order)->ItemNumber(), 3)); }},
      {"UpdateItems",
       [](CurrentOrder& order) {
         auto oItems = std::make_shared<OrderItems>();
         auto oItem = NewItem(first(order)->ItemNumber(), 7);
         oItem->ExtendedPrice(Currency::Parse("17.5"));
         oItems->Add(oItem, oItem->ItemNumber());
         order.UpdateItems(oItems);
       }},
      {"RemoveItem", [](CurrentOrder& order) { order.RemoveItem(first(order)->ItemNumber()); }},
      {"SaveSummary",
       [](CurrentOrder& order) {
         order.OrderDetails()->DeliveryInformation()->City("another city");
         order.SaveSummary();
       }},
      {"SavePONumber",
       [](CurrentOrder& order) {
         order.OrderDetails()->PurchaseOrderNumber("PO changed");
         order.SavePONumber();
       }},
      {"ApplyRegistrationSettings",
       [](CurrentOrder& order) { order.OrderDetails()->ApplyRegistrationSettings(); }},
      {"ClearItems", [](CurrentOrder& order) { order.ClearItems(); }},
      {"SaveToHistory", [](CurrentOrder& order) { order.SaveToHistory(); }},
  };
  return members;
}

std::string FailureOfMember(const WritingMember& member, CurrentOrder& order) {
  const ErrorInfo before = order.OrderDetails()->Error();
  ClearLastFailure();
  try {
    member.Call(order);
  } catch (const Failure& raised) {
    return std::to_string(raised.Number()) + " : " + raised.Description();
  }
  const ErrorInfo record = order.OrderDetails()->Error();
  if (LastFailure().Number != 0) {
    return record.Number == 0   ? "a failure that is not recorded: " + LastFailure().Description
           : record.Number == 5 ? record.Description
                                : std::to_string(LastFailure().Number) + " : " + LastFailure().Description;
  }
  return record == before ? "" : record.Description;
}

std::vector<std::string> ReadOrders(const std::vector<std::int32_t>& lvSubmitted) {
  std::vector<std::string> lines;
  const auto read = [&](const std::string& zvName, OrderDetails& order, bool bvCurrent) {
    try {
      order.LoadSummary(bvCurrent);
      if (order.Error().Number != 0) {
        lines.push_back(zvName + " failed: " + order.Error().Description);
        return;
      }
      order.LoadItems(0, false, false);
      for (const auto& [zColumn, zValue] : ValuesOf(order)) {
        lines.push_back(zvName + " " + zColumn + " = " + zValue);
      }
    } catch (const Failure& raised) {
      lines.push_back(zvName + " failed: " + std::to_string(raised.Number()) + " : " + raised.Description());
    }
  };
  for (const std::int32_t lOrderID : lvSubmitted) {
    OrderDetails order;
    order.OrderID(lOrderID);
    read("order " + std::to_string(lOrderID), order, false);
  }
  OrderDetails current;
  read("current order", current, true);
  return lines;
}

void FromOutside(const std::function<void()>& run) {
  const std::string zOutcome = ChildProcess([&] {
                                 run();
                                 return std::string("done");
                               }).Outcome();
  ASSERT_EQ("done", zOutcome);
}

void Overwrite(const std::string& zvPath, std::size_t lvOffset, const std::string& zvBytes) {
  const int lFile = open(zvPath.c_str(), O_WRONLY | O_CLOEXEC);
  const ssize_t lWritten = pwrite(lFile, zvBytes.data(), zvBytes.size(), static_cast<off_t>(lvOffset));
  close(lFile);
  if (lWritten != static_cast<ssize_t>(zvBytes.size())) {
    throw std::runtime_error(zvPath + " cannot be overwritten");
  }
}

TroubledStore::TroubledStore() {
  FillStore("", kLines);
  Known = Orders();
  Rest();
  Bytes = ReadFile(Store.Path());
}

std::vector<std::string> TroubledStore::CurrentItems() {
  OrderDetails order;
  order.LoadSummary(true);
  order.LoadItems();
  std::vector<std::string> items;
  for (const auto& oItem : *order.OrderItems()) {
    items.push_back(oItem->ItemNumber());
  }
  return items;
}

std::string TroubledStore::ExpectWritesRefused(CurrentOrder& order, const std::vector<std::string>& zvWords) {
  std::string zWrong;
  for (const WritingMember& member : WritingMembers()) {
    const std::string zFailure = FailureOfMember(member, order);
    bool bGood = zFailure.starts_with(std::to_string(failure::kStoreUnavailable) + " : ");
    for (const std::string& zWord : zvWords) {
      bGood = bGood && zFailure.find(zWord) != std::string::npos;
    }
    if (!bGood) {
      zWrong += std::string(member.Name) + ": " + (zFailure.empty() ? "succeeded" : zFailure) + "\n";
    }
  }
  return zWrong;
}

std::string TroubledStore::ExpectWorks(const std::string& zvItemNumber) {
  CurrentOrder order;
  order.AddItem(NewItem(zvItemNumber, 4));
  if (order.Error().Number != 0) {
    return order.Error().Description;
  }
  order.LoadItems(0);
  if (!order.ItemExists(zvItemNumber)) {
    return "the item " + zvItemNumber + " was added and is not there";
  }
  std::string zWrong;
  for (const std::string& zFinding : CheckOrderStore()) {
    zWrong += zFinding + "\n";
  }
  return zWrong;
}

std::string TroubledStore::BytesOfOther() const {
  // Filled in the place of the store, since a thread has one.
  std::filesystem::remove(Store.Path());
  CreateOrderStore(Folder.Path());
  FillStore("other ", kLines + 2);
  Rest();
  std::string zBytes = ReadFile(Store.Path());
  Restore();
  return zBytes;
}

void TroubledStore::Restore() const {
  Rest();
  for (const char* zSuffix : {"", "-wal", "-shm"}) {
    std::filesystem::remove_all(Store.Path() + zSuffix);
  }
  WriteFile(Store.Path(), Bytes);
}

void TroubledStore::Rest() {
  ado::embedded::CloseIdleSessions();
}

}  // namespace test
