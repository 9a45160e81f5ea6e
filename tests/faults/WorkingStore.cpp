#include "tests/faults/WorkingStore.h"

#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <memory>

#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/foundation/LastFailure.h"
#include "qm_ordering/history/OrderHistory.h"
#include "qm_ordering/history/OrderHistoryImporter.h"
#include "qm_ordering/lists/PersonalLists.h"
#include "qm_ordering/order/CurrentOrder.h"
#include "qm_ordering/order/LibraryAccess.h"
#include "qm_ordering/platform/ado/Connection.h"
#include "qm_ordering/platform/ado/embedded/EmbeddedSession.h"
#include "qm_ordering/platform/settings/FileSettings.h"
#include "qm_ordering/platform/settings/Settings.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/store/Database.h"
#include "qm_ordering/store/OrderStore.h"
#include "tests/support/LegacyTables.h"
#include "tests/support/OrderValues.h"
#include "tests/support/StoreFixture.h"

namespace test {

namespace {

using qm_ordering::Currency;
using qm_ordering::CurrentOrder;
using qm_ordering::Database;
using qm_ordering::ErrorInfo;
using qm_ordering::LibraryAccess;
using qm_ordering::OrderItem;
using qm_ordering::OrderItems;
using qm_ordering::PersonalList;
using qm_ordering::PersonalLists;
using Prepared = std::function<std::function<Outcome()>()>;

// In memory where the system has a folder there: the tests make and remove thousands of stores.
const bool g_bInMemory = std::filesystem::is_directory("/dev/shm") && setenv("TMPDIR", "/dev/shm", 1) == 0;

Outcome Recorded(const ErrorInfo& error, std::string zvValues = {}) {
  if (error.Number == 0) {
    return {{}, std::move(zvValues)};
  }
  return {std::to_string(error.Number) + " " + error.Description, {}};
}

// Of a call whose failure shows in LastFailure alone.
Outcome Swallowed(std::string zvValues) {
  const auto failure = qm_ordering::LastFailure();
  return Recorded({failure.Number, failure.Description}, std::move(zvValues));
}

std::shared_ptr<OrderItem> NewItem(const std::string& zvItemNumber, std::int32_t lvQuantity,
                                   const char* zvPrice) {
  auto oItem = std::make_shared<OrderItem>();
  oItem->ItemNumber(zvItemNumber);
  oItem->Description("What " + zvItemNumber + " is");
  oItem->Quantity(lvQuantity);
  oItem->SellQuantity(1);
  oItem->ShipQuantity(1);
  oItem->Price(Currency::Parse(zvPrice));
  return oItem;
}

std::string ValuesText(CurrentOrder& order) {
  return ToText(ValuesOf(*order.OrderDetails()));
}

std::shared_ptr<CurrentOrder> LoadedOrder() {
  auto oOrder = std::make_shared<CurrentOrder>();
  oOrder->LoadItems(0);
  return oOrder;
}

// A call on the current order, its summary and lines loaded.
Prepared OnOrder(std::function<Outcome(CurrentOrder&)> call) {
  return [call] { return [call, oOrder = LoadedOrder()] { return call(*oOrder); }; };
}

// A call that makes its own objects. It begins with a session at rest, as every other one.
Prepared Alone(std::function<Outcome()> call) {
  return [call] {
    qm_ordering::OrderDetails().ItemCount();
    return call;
  };
}

std::string LinesText(const PersonalList& list) {
  std::string zText = list.Name();
  for (const auto& oItem : *list.OrderItems()) {
    zText += "|" + oItem->GetXML();
  }
  return zText;
}

// A call on a list that is not loaded.
Prepared OnList(std::function<void(PersonalList&)> call) {
  return Alone([call] {
    PersonalList list;
    call(list);
    return Recorded(list.Error(), LinesText(list));
  });
}

// A call whose failure shows in LastFailure, and in an answer that is empty, 0 or false.
template <typename Answer>
Prepared OnLists(std::function<Answer(PersonalLists&)> call) {
  return Alone([call] {
    qm_ordering::ClearLastFailure();
    PersonalLists lists;
    const Answer answer = call(lists);
    const bool bAnswered = answer != Answer();
    const bool bFailed = qm_ordering::LastFailure().Number != 0;
    return bAnswered == bFailed ? Outcome{"the answer does not say whether it failed", {}}
                                : Swallowed(qm_ordering::Variant(answer).ToString());
  });
}

void FillHeader(CurrentOrder& order, const std::string& zvMark) {
  order.OrderDetails()->PurchaseOrderNumber("PO " + zvMark);
  order.OrderDetails()->DeliveryInformation()->Notes("Notes " + zvMark);
  order.OrderDetails()->DeliveryInformation()->City("City " + zvMark);
  order.OrderDetails()->OrderInformation()->Email(zvMark + "@example.org");
}

// zvBackup is made when there is one order.
void MakeOrders(const std::string& zvBackup) {
  for (const char* zMark : {"first", "second"}) {
    CurrentOrder order;
    order.AddItem(NewItem("A-1", 2, "1.25"));
    order.AddItem(NewItem("B-2", 3, "10"));
    order.AddItem(NewItem("C-3", 1, "0.0001"));
    FillHeader(order, zMark);
    order.SaveSummary();
    if (zMark == std::string("first")) {
      order.SaveToHistory();
      qm_ordering::BackupOrderStore(zvBackup);
    }
  }
}

// The file of the lists holds what there was when there was one list with one line.
void MakeLists() {
  PersonalLists lists;
  const std::int32_t lTools = lists.CreateList("Tools");
  PersonalList list;
  list.AddItem(NewItem("A-1", 2, "1.25"), lTools);
  PersonalLists exported;
  exported.LoadLists();
  exported.SaveAsXML();
  list.AddItem(NewItem("B-2", 3, "10"), lTools);
  list.AddItem(NewItem("C-3", 4, "2"), lists.CreateList("Paint"));
}

// A failure of the log, which is written when the orders are there, is none of the import.
Outcome Imported(const std::string& zvFolder, bool bvWriteLog) {
  qm_ordering::ClearLastFailure();
  qm_ordering::OrderHistoryImporter importer;
  const std::int32_t lOrders = importer.ApplyImports(zvFolder, bvWriteLog);
  const auto failure = qm_ordering::LastFailure();
  if (lOrders == 0) {
    return failure.Number != 0 && importer.LogHeader() == "Failed: Could not find Order History database"
               ? Swallowed({})
               : Outcome{"the import does not say that it failed", {}};
  }
  if (lOrders != kSmallOrders || !importer.LogHeader().ends_with("Success:\t3 purchase orders imported.") ||
      (failure.Number != 0 &&
       failure.Description.find("Order_History_Import_Log.txt") == std::string::npos)) {
    return {"the import is not said to be whole: " + importer.LogHeader() + " " + failure.Description, {}};
  }
  return {{}, importer.LogHeader() + importer.LogBody()};
}

// As the library made it at first.
void MakeFirstSchema(const std::string& zvStore) {
  qm_ordering::ado::embedded::CloseIdleSessions();
  StoreFile(zvStore).Run(
      "drop index idxOrderItemTotal; drop trigger trgPersonalListQuantity; pragma user_version = 1");
}

}  // namespace

Outcome OutcomeOf(const std::function<Outcome()>& call) {
  try {
    return call();
  } catch (const qm_ordering::Failure& failure) {
    return {std::to_string(failure.Number()) + " " + failure.Description(), {}};
  }
}

WorkingStore::WorkingStore() {
  std::filesystem::create_directory(Folder());
  const std::string zSettings = Folder() + "/settings.ini";
  WriteFile(zSettings, "OrderingDatabasePath=" + Folder() + "\nLogPath=" + Folder() +
                           "\nReg_City=Registered\nReg_FullCompanyName=Company\n");
  qm_ordering::ForgetStartUp();
  qm_ordering::InstallSettings(qm_ordering::CreateFileSettings(zSettings));
  qm_ordering::CreateOrderStore(Folder());
  MakeOrders(Backup());
  MakeLists();
  std::filesystem::copy(SmallLegacyTables(), LegacyFolder());
  qm_ordering::ado::embedded::CloseIdleSessions();
  std::filesystem::rename(Folder(), Made());
  SetBack();
}

WorkingStore::~WorkingStore() {
  qm_ordering::ado::embedded::CloseIdleSessions();
  qm_ordering::ForgetStartUp();
  qm_ordering::InstallSettings(nullptr);
}

void WorkingStore::SetBack() const {
  qm_ordering::ado::embedded::CloseIdleSessions();
  std::filesystem::remove_all(Folder());
  std::filesystem::copy(Made(), Folder(), std::filesystem::copy_options::recursive);
}

std::string WorkingStore::State() const {
  std::string zState;
  const auto add = [&](const std::string& zvStore) {
    for (const Row& row : StoreFile(zvStore).Everything()) {
      for (const std::string& zValue : row) {
        zState += zValue + "|";
      }
      zState += "\n";
    }
  };
  add(KeptFile().empty() ? File() : KeptFile());
  zState +=
      "schema " + StoreFile(KeptFile().empty() ? File() : KeptFile()).Value("pragma user_version") + "\n";
  zState += ReadFile(Folder() + "/settings.ini");
  zState += "and a backup:\n";
  add(Backup());
  if (const std::string zNew = NewFolder() + "/Orders.mdb"; std::filesystem::exists(zNew)) {
    zState += "and a new store:\n";
    add(zNew);
  }
  zState += "and the file of the lists:\n" + ReadFile(Folder() + "/PersonalLists.xml");
  return zState;
}

std::string WorkingStore::KeptFile() const {
  if (!std::filesystem::exists(File())) {
    for (const std::string& zFile : Files()) {
      if (zFile.starts_with("Orders.mdb.replaced-") && !zFile.ends_with("-wal")) {
        return Folder() + "/" + zFile;
      }
    }
  }
  return {};
}

std::vector<std::string> WorkingStore::Files() const {
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(Folder())) {
    files.push_back(std::filesystem::relative(entry.path(), Folder()).string());
  }
  std::ranges::sort(files);
  return files;
}

std::vector<StoreCall> WorkingStore::Calls() const {
  const auto endCurrentOrder = [] {
    qm_ordering::ado::Connection connection;
    connection.Open(qm_ordering::ConnectionString());
    connection.Execute("update tblOrder set bIsCurrent = False");
  };
  return {
      {"loading the current order",
       Alone([] {
         CurrentOrder order;
         return Recorded(order.OrderDetails()->Error(), ValuesText(order));
       }),
       {}},
      {"loading the current order where there is none",
       [endCurrentOrder] {
         endCurrentOrder();
         return [] {
           CurrentOrder order;
           return Recorded(order.OrderDetails()->Error(), ValuesText(order));
         };
       },
       {}},
      {"LoadSummary",
       OnOrder([](CurrentOrder& order) {
         order.LoadSummary();
         return Recorded(order.Error(), ValuesText(order));
       }),
       {}},
      {"LoadItems",
       OnOrder([](CurrentOrder& order) {
         order.LoadItems(2);
         return Outcome{{}, ValuesText(order)};
       }),
       {}},
      {"ItemCount",
       OnOrder([](CurrentOrder& order) {
         qm_ordering::ClearLastFailure();
         const std::int32_t lCount = order.ItemCount();
         return Swallowed(std::to_string(lCount));
       }),
       {}},
      {"AddItem of a new line",
       OnOrder([](CurrentOrder& order) {
         order.AddItem(NewItem("D-4", 7, "3.5"));
         return Recorded(order.Error(), ValuesText(order));
       }),
       {"the line is stored, the total not"}},
      {"AddItem of more of a line",
       OnOrder([](CurrentOrder& order) {
         order.AddItem(NewItem("b-2", 7, "3.5"));
         return Recorded(order.Error(), ValuesText(order));
       }),
       {"the line is changed, the total not"}},
      {"UpdateItems",
       OnOrder([](CurrentOrder& order) {
         const auto oItems = order.OrderDetails()->OrderItems();
         std::int32_t lQuantity = 0;
         for (const auto& oItem : *oItems) {
           oItem->Quantity(lQuantity);
           oItem->ExtendedPrice(oItem->Price() * lQuantity);
           lQuantity = 9;
         }
         order.UpdateItems(oItems);
         return Outcome{};
       }),
       {"the lines of quantity 0 are gone", "the others are written, the total not"}},
      {"RemoveItem",
       OnOrder([](CurrentOrder& order) {
         order.RemoveItem("B-2");
         return Outcome{};
       }),
       {"the line is gone, the total is the old one"}},
      {"ClearItems",
       OnOrder([](CurrentOrder& order) {
         order.ClearItems();
         return Outcome{};
       }),
       {"the lines are gone, the total is the old one"}},
      {"SaveSummary",
       OnOrder([](CurrentOrder& order) {
         FillHeader(order, "changed");
         order.SaveSummary();
         return Recorded(order.Error());
       }),
       {"the order is saved, the defaults are not"}},
      {"SavePONumber",
       OnOrder([](CurrentOrder& order) {
         order.OrderDetails()->PurchaseOrderNumber("PO-77");
         order.SavePONumber();
         return Recorded(order.Error());
       }),
       {}},
      {"SaveToHistory",
       OnOrder([](CurrentOrder& order) {
         order.SaveToHistory();
         return Recorded(order.Error());
       }),
       {"the order is submitted, there is no next one"}},
      {"ApplyRegistrationSettings",
       OnOrder([](CurrentOrder& order) {
         qm_ordering::ClearLastFailure();
         order.ApplyRegistrationSettings();
         return Swallowed({});
       }),
       {}},
      {"part number and notes of a line",
       Alone([] {
         LibraryAccess::UpdateCustPartInfo(2, "A-1", "P-1", "Notes of a part");
         return Outcome{};
       }),
       {}},
      {"the end of a part number",
       Alone([] {
         LibraryAccess::DeleteCustPartInfo("P-0", 2);
         return Outcome{};
       }),
       {}},
      {"OrderItem_Save",
       Alone([] {
         Database database;
         database.OrderItem_Save(2, "A-1", 4, "d", "m", "o", 1, 1, "u", true, Currency(), Currency(), true,
                                 "p", "n");
         return Recorded(database.Error());
       }),
       {}},
      {"OrderDetails_UpdateItem",
       Alone([] {
         Database().OrderDetails_UpdateItem("A-1", 4, Currency(), Currency(), true, true);
         return Outcome{};
       }),
       {}},
      {"CreateList", OnLists<std::int32_t>([](PersonalLists& lists) { return lists.CreateList("New"); }), {}},
      {"CreateList in the place of another list",
       OnLists<std::int32_t>([](PersonalLists& lists) { return lists.CreateList("tools"); }),
       {}},
      {"RenameList", OnLists<bool>([](PersonalLists& lists) { return lists.RenameList(1, "Saws"); }), {}},
      {"RemoveList",
       Alone([] {
         qm_ordering::ClearLastFailure();
         PersonalLists().RemoveList(1);
         return Swallowed({});
       }),
       {}},
      {"RemoveListByName",
       OnLists<bool>([](PersonalLists& lists) { return lists.RemoveListByName("TOOLS"); }),
       {}},
      {"AddItem of a new line to a list",
       OnList([](PersonalList& list) { list.AddItem(NewItem("D-4", 7, "3.5"), 1); }),
       {}},
      {"AddItem of more of a line to a list",
       OnList([](PersonalList& list) { list.AddItem(NewItem("b-2", 7, "3.5"), 1); }),
       {}},
      {"reading a list",
       OnList([](PersonalList& list) {
         list.LoadSummary(1);
         list.LoadItems();
       }),
       {}},
      {"reading the lists",
       OnLists<std::string>([](PersonalLists& lists) {
         lists.LoadLists();
         const std::string zName = lists.GetName(2);
         const bool bThere = lists.ListExists("paint");
         return bThere && !zName.empty() ? zName + lists.GetXML() : std::string();
       }),
       {}},
      {"SaveAsXML",
       [] {
         const auto oLists = std::make_shared<PersonalLists>();
         oLists->LoadLists();
         return [oLists] {
           qm_ordering::ClearLastFailure();
           oLists->SaveAsXML();
           return Swallowed({});
         };
       },
       {}},
      {"reading the history",
       Alone([] {
         qm_ordering::ClearLastFailure();
         qm_ordering::OrderHistory history;
         history.LoadOrders();
         const std::string zExists = history.ItemExists("PO first").ToString();
         std::string zOrders;
         for (const auto& oOrder : history) {
           oOrder->LoadSummary();
           zOrders += oOrder->GetXML();
         }
         return Swallowed(zExists + history.GetXML() + zOrders);
       }),
       {}},
      {"DeleteOrder",
       Alone([] {
         qm_ordering::OrderHistory().DeleteOrder(1);
         return Outcome{};
       }),
       {}},
      {"ApplyImports", Alone([zFolder = LegacyFolder()] { return Imported(zFolder, false); }), {}},
      {"ApplyImports with a log", Alone([zFolder = LegacyFolder()] { return Imported(zFolder, true); }), {}},
      {"CheckOrderStore",
       Alone([] {
         std::string zFindings;
         for (const std::string& zFinding : qm_ordering::CheckOrderStore()) {
           zFindings += zFinding + "\n";
         }
         // What could not be checked is a finding, and the failure.
         return Outcome{zFindings, {}};
       }),
       {}},
      {"CreateOrderStore",
       Alone([zFolder = NewFolder()] {
         qm_ordering::CreateOrderStore(zFolder);
         return Outcome{};
       }),
       {}},
      {"BackupOrderStore",
       Alone([zFile = Backup()] {
         qm_ordering::BackupOrderStore(zFile);
         return Outcome{};
       }),
       {}},
      {"RestoreOrderStore",
       Alone([zFile = Backup()] {
         qm_ordering::RestoreOrderStore(zFile);
         return Outcome{};
       }),
       {},
       false},
      {"RepairOrderStore",
       [] {
         qm_ordering::ado::Connection connection;
         connection.Open(qm_ordering::ConnectionString());
         connection.Execute("update tblOrder set cTotalPrice = 1 where lOrderID = 2");
         connection.Close();
         return [] {
           std::string zChanges;
           for (const std::string& zChange : qm_ordering::RepairOrderStore()) {
             zChanges += zChange + "\n";
           }
           return Outcome{{}, zChanges};
         };
       },
       {}},
      {"the first call on a store of the first schema",
       [zFile = File()] {
         MakeFirstSchema(zFile);
         return [] {
           CurrentOrder order;
           return Recorded(order.OrderDetails()->Error(), ValuesText(order));
         };
       },
       {},
       false},
      {"Save of the order defaults",
       Alone([zFile = Folder() + "/settings.ini"] {
         const auto oDefaults = qm_ordering::CreateFileSettings(zFile)->CreateOrderDefaults();
         oDefaults->Set("DEFAULT_DI_CITY", "Another");
         oDefaults->Save();
         return Outcome{};
       }),
       {}},
  };
}

}  // namespace test
