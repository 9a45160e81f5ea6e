#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <limits>
#include <map>
#include <memory>
#include <string>

#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/platform/ado/embedded/EmbeddedSession.h"
#include "qm_ordering/qm_ordering.h"
#include "tests/support/FixedClock.h"
#include "tests/support/HostProgram.h"
#include "tests/support/LegacyTables.h"
#include "tests/support/MemorySettings.h"
#include "tests/support/StoreFixture.h"
#include "tests/support/TempFolder.h"

// The road of programs/Road.c in C++, step by step, and the comparison of what comes of both.

namespace {

using namespace qm_ordering;

// What a road has left: its files by their names, and the rows of its store.
struct Outcome {
  std::map<std::string, std::string> Files;
  test::Rows Rows;
};

class Road {
 public:
  Road(std::string zvFolder, std::string zvTold)
      : m_zFolder(std::move(zvFolder)), m_zTold(std::move(zvTold)) {}

  void Walk(const std::string& zvTables) {
    CreateOrderStore(m_zFolder);
    InstallMemorySettings();
    SetStatementTrace([this](const std::string& zvSQL) { TellLine("statements", zvSQL); });
    Order();
    Lists();
    Import(zvTables);
    History();
    SetStatementTrace({});
    Maintain();
  }

 private:
  void Tell(const std::string& zvFile, const std::string& zvText) const {
    std::ofstream(m_zTold + "/" + zvFile, std::ios::app | std::ios::binary) << zvText;
  }
  void TellLine(const std::string& zvFile, const std::string& zvText) const { Tell(zvFile, zvText + "\n"); }

  static std::string Number(std::int64_t lvNumber) { return std::to_string(lvNumber); }

  void InstallMemorySettings() {
    Settings->User["OrderingDatabasePath"] = m_zFolder;
    Settings->User["LogPath"] = m_zFolder;
    RegistrationDetails& user = Settings->Registration;
    user = {.City = "City of the user",
            .CompanyName = "CompanyName of the user",
            .Address1 = "Address1 of the user",
            .Address2 = "Address2 of the user",
            .Fax = "Fax of the user",
            .Telephone = "Telephone of the user",
            .TelephoneExt = "TelephoneExt of the user",
            .Country = "Country of the user",
            .Email = "Email of the user",
            .FirstName = "FirstName of the user",
            .LastName = "LastName of the user",
            .State = "State of the user",
            .StateOr = "StateOr of the user",
            .ZipOrPostCode = "ZipOrPostCode of the user",
            .AccountNumber = "AccountNumber of the user"};
    // In the order in which they were first set, as the program in C keeps them.
    Settings->Before = [this](const std::string& zvCall) {
      const std::string kSet = "default set ";
      if (zvCall.starts_with(kSet)) {
        const std::string zKey = zvCall.substr(kSet.size(), zvCall.find('=') - kSet.size());
        if (std::ranges::find(m_zKeys, zKey) == m_zKeys.end()) {
          m_zKeys.push_back(zKey);
        }
      } else if (zvCall == "save") {
        for (const std::string& zKey : m_zKeys) {
          TellLine("defaults", zKey + "=" + Settings->Defaults[zKey]);
        }
      }
    };
  }

  static std::shared_ptr<OrderItem> NewItem(const std::string& zvNumber, std::int32_t lvQuantity,
                                            std::int32_t lvPack, std::int64_t lvPrice) {
    auto oItem = std::make_shared<OrderItem>();
    oItem->ItemNumber(zvNumber);
    oItem->Quantity(lvQuantity);
    oItem->Description("What \"" + zvNumber + "\" is: <a & b>, it's M\xC3\xBCller");
    oItem->Manufacturer("Maker");
    oItem->Model("M-1");
    oItem->SellQuantity(lvPack);
    oItem->ShipQuantity(lvPack);
    oItem->UsuallyShips("TODAY");
    oItem->IsTaxable(true);
    oItem->Price(Currency::FromScaled(lvPrice));
    oItem->CustomerPartNumber("P-1");
    oItem->CustomerNotes("Notes");
    return oItem;
  }

  template <typename T>
  static void ExpectNoError(const T& object) {
    EXPECT_EQ(0, object.Error().Number) << object.Error().Description;
  }

  static void AddLine(CurrentOrder& order, const std::string& zvNumber, std::int32_t lvQuantity,
                      std::int32_t lvPack, std::int64_t lvPrice) {
    order.AddItem(NewItem(zvNumber, lvQuantity, lvPack, lvPrice));
    ExpectNoError(order);
  }

  void FillOrder(CurrentOrder& order) {
    AddLine(order, "4QX17", 18, 6, 114725);
    AddLine(order, "2AB03", 4, 2, 25);
    AddLine(order, "9ZZ99", 5, 2, 12345678);
    AddLine(order, "1AA01", 1, 1, 0);
    AddLine(order, "4qx17", 6, 6, 114725);
    TellLine("answers", Number(order.ItemCount()) + " lines");
    for (std::int32_t lSort = 0; lSort <= 6; ++lSort) {
      order.LoadItems(lSort);
      ExpectNoError(order);
      TellLine("lines", "sorted " + Number(lSort));
      for (const auto& oItem : *order.OrderDetails()->OrderItems()) {
        TellLine("lines", oItem->GetXML());
      }
    }
    TellLine("answers", "total " + Number(order.OrderDetails()->TotalPrice().Scaled()));
    TellLine("answers", "invalid quantities " + Number(order.OrderDetails()->HasInvalidQuantities() ? 1 : 0));
  }

  void ChangeOrder(CurrentOrder& order) {
    const auto oItems = order.OrderDetails()->OrderItems();
    oItems->Item("9zz99")->Quantity(6);
    order.UpdateItems(oItems);
    ExpectNoError(order);
    order.RemoveItem("1AA01");
    ExpectNoError(order);
    order.LoadItems(2);
    TellLine("answers", "removed line " + Number(order.ItemExists("1AA01") ? 1 : 0));
  }

  void FillHeader(CurrentOrder& order) {
    order.ApplyRegistrationSettings();
    ExpectNoError(order);
    OrderDetails& details = *order.OrderDetails();
    details.PurchaseOrderNumber("PO-4711");
    OrderInformation& information = *details.OrderInformation();
    information.PORelease("R-1");
    information.Department("Tools & more");
    information.IsTaxExempt(true);
    information.TaxIDNumber("T-9");
    DeliveryInformation& delivery = *details.DeliveryInformation();
    delivery.DeliveryMethod(1);
    delivery.ShippingMethod(3);
    delivery.Notes("At the gate");
    TellLine("answers", "delivery valid " + Number(delivery.Validate() ? 1 : 0));
    Tell("delivery.xml", delivery.GetXML());
    PaymentInformation& payment = *details.PaymentInformation();
    payment.Method(1);
    payment.MorvaneAccountNumber("A-77");
    CreditCardDetails& card = *payment.CreditCardDetails();
    card.CardNumber("4111111111111111");
    card.ExpiryMonth(7);
    card.FirstName("Ann");
    TellLine("answers", "card valid " + Number(card.Validate() ? 1 : 0));
    Tell("payment.xml", payment.GetXML());
    order.SaveSummary();
    ExpectNoError(order);
    order.SavePONumber();
    ExpectNoError(order);
  }

  void Order() {
    CurrentOrder order;
    FillOrder(order);
    ChangeOrder(order);
    FillHeader(order);
    Tell("order.xml", order.GetXML());
    order.SaveToHistory();
    ExpectNoError(order);
    order.LoadSummary();
    order.LoadItems(0);
    Tell("next.xml", order.GetXML());
    AddLine(order, "4QX17", 6, 6, 114725);
  }

  static void AddToList(std::int32_t lvListID, const std::string& zvNumber) {
    PersonalList list;
    list.AddItem(NewItem(zvNumber, 2, 1, 0), lvListID);
    ExpectNoError(list);
  }

  void Lists() {
    PersonalLists lists;
    const std::int32_t lTools = lists.CreateList("Tools");
    const std::int32_t lPaint = lists.CreateList("Paint");
    TellLine("answers", "lists " + Number(lTools) + " " + Number(lPaint));
    AddToList(lTools, "4QX17");
    AddToList(lTools, "2AB03");
    AddToList(lPaint, "9ZZ99");
    TellLine("answers", "renamed " + Number(lists.RenameList(lPaint, "O'Paint") ? 1 : 0));
    lists.LoadLists();
    for (const auto& oList : lists) {
      TellLine("lists", oList->Name());
    }
    Tell("lists.xml", lists.GetXML());
    lists.SaveAsXML();
    PersonalList list;
    list.ListID(lTools);
    list.LoadSummary();
    list.LoadItems();
    ExpectNoError(list);
    Tell("lists", list.Name());
    for (const auto& oItem : *list.OrderItems()) {
      TellLine("lists", oItem->GetXML());
    }
    lists.RemoveList(lPaint);
    TellLine("answers", "list there " + Number(lists.ListExists("O'Paint") ? 1 : 0));
  }

  void TellTexts(const std::vector<std::string>& zvTexts) const {
    for (const std::string& zText : zvTexts) {
      TellLine("answers", zText);
    }
    TellLine("answers", "texts: " + Number(static_cast<std::int64_t>(zvTexts.size())));
  }

  void Import(const std::string& zvTables) {
    OrderHistoryImporter importer;
    const ImportPreview preview = importer.PreviewImports(zvTables);
    TellLine("answers", "import " + Number(preview.Orders) + " orders, " + Number(preview.Lines) +
                            " lines, " + Number(preview.MarkedLines) + " marked");
    TellTexts(preview.Failures);
    std::int64_t lLastLine = 2;
    importer.OnProgress([&](const ImportProgress& done) {
      TellLine("progress", Number(done.Orders) + " " + Number(done.Lines) + " of " + Number(done.LinesInAll));
      return done.Lines < lLastLine;
    });
    for (int i = 1; i <= 2; ++i) {
      TellLine("answers", "imported " + Number(importer.ApplyImports(zvTables, true)));
      Tell("import-header", importer.LogHeader());
      Tell("import-body", importer.LogBody());
      lLastLine = std::numeric_limits<std::int64_t>::max();
    }
  }

  void History() {
    OrderHistory history;
    history.LoadOrders(0);
    TellLine("answers", "history " + Number(history.Count()));
    std::int32_t lLast = 0;
    for (const auto& oPrevious : history) {
      lLast = oPrevious->OrderID();
      const Date date = oPrevious->SubmitDate();
      TellLine("history", Number(lLast) + " " + oPrevious->PurchaseOrderNumber() + " " + Number(date.Year()) +
                              "-" + Number(date.Month()) + "-" + Number(date.Day()) + " " +
                              Number(oPrevious->OrderTotal().Scaled()));
      oPrevious->LoadSummary();
      oPrevious->OrderDetails()->LoadItems(0);
      ExpectNoError(*oPrevious->OrderDetails());
      Tell("previous.xml", oPrevious->OrderDetails()->GetXML());
      Tell("previous.xml", oPrevious->GetXML());
    }
    Tell("history.xml", history.GetXML());
    history.DeleteOrder(lLast);
    OrderHistory rest;
    rest.LoadOrders(1);
    TellLine("answers", "history " + Number(rest.Count()));
  }

  void Maintain() {
    TellTexts(CheckOrderStore());
    TellTexts(RepairOrderStore());
    bool bDone = false;
    const StoreProgress progress = [&](std::int64_t lvDone, std::int64_t lvAll) { bDone = lvDone == lvAll; };
    TellTexts(BackupOrderStore(m_zFolder + "/backup", progress));
    TellLine("answers", "copied " + Number(bDone ? 1 : 0));
    bDone = false;
    const std::string zKept = RestoreOrderStore(m_zFolder + "/backup", progress);
    TellLine("answers", "kept " + zKept + ", copied " + Number(bDone ? 1 : 0));
  }

  std::string m_zFolder;
  std::string m_zTold;
  test::SettingsScope Settings;
  test::FixedClock Clock;
  std::vector<std::string> m_zKeys;
};

// Both roads have the same folder, one after the other, so that the paths in the texts are the same.
class WholeRoad : public testing::Test {
 protected:
  void Begin() const { std::filesystem::create_directories(Told()); }

  // What the road has left, which then makes room for the next one.
  Outcome Take() const {
    ado::embedded::CloseIdleSessions();
    Outcome outcome;
    const test::StoreFile store(Work() + "/Orders.mdb");
    outcome.Rows = store.Everything();
    for (const std::string& zFolder : {Told(), Work()}) {
      for (const auto& entry : std::filesystem::directory_iterator(zFolder)) {
        const std::string zName = entry.path().filename().string();
        // Stores are compared by their rows.
        const bool bStore = zName.starts_with("Orders.mdb") || zName == "backup";
        outcome.Files[zName] = bStore ? "a store" : test::ReadFile(entry.path().string());
      }
    }
    std::filesystem::remove_all(Work());
    std::filesystem::remove_all(Told());
    return outcome;
  }

  std::string Work() const { return m_oFolder.File("work"); }
  std::string Told() const { return m_oFolder.File("told"); }

 private:
  test::TempFolder m_oFolder;
};

}  // namespace

TEST_F(WholeRoad, LeavesTheSameStoreDocumentsAndStatementsInCAsInCPlusPlus) {
  const std::string zTables = test::SmallLegacyTables();
  Begin();
  const test::HostRun run = test::RunHost({Work(), zTables, Told()}, {.Program = QM_ORDERING_C_ROAD});
  ASSERT_EQ(0, run.ExitCode) << run.Err;
  EXPECT_EQ("", run.Err);
  Outcome inC = Take();
  // The component ended with its thread. There is no such thing in C++.
  EXPECT_EQ("once\n", inC.Files["disposed"]);
  inC.Files.erase("disposed");

  Begin();
  Road(Work(), Told()).Walk(zTables);
  const Outcome inCPlusPlus = Take();

  EXPECT_EQ(inCPlusPlus.Files, inC.Files);
  EXPECT_EQ(inCPlusPlus.Rows, inC.Rows);
  // What was compared is what there should be.
  for (const char* zFile :
       {"answers", "defaults", "delivery.xml", "history", "history.xml", "import-body", "import-header",
        "lines", "lists", "lists.xml", "next.xml", "order.xml", "payment.xml", "previous.xml", "progress",
        "statements", "PersonalLists.xml", "Order_History_Import_Log.txt", "backup"}) {
    EXPECT_NE("", inC.Files[zFile]) << zFile;
  }
  EXPECT_NE(std::string::npos, inC.Files["order.xml"].find("4QX17"));
  // The submitted order, three imported ones without the one that was deleted, and the next one; their lines.
  EXPECT_EQ("history 4\nhistory 3\n", [&] {
    std::string zHistory;
    for (std::size_t i = 0; (i = inC.Files["answers"].find("history ", i)) != std::string::npos; ++i) {
      zHistory += inC.Files["answers"].substr(i, 10);
    }
    return zHistory;
  }());
}
