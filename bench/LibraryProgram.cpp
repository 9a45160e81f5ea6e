#include <stdexcept>
#include <utility>

#include "bench/OrderProgram.h"
#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/qm_ordering.h"

namespace bench {

namespace {

using namespace qm_ordering;

void Require(const ErrorInfo& error) {
  if (error.Number != 0) {
    throw std::runtime_error(error.Description + ": " + LastFailure().Description);
  }
}

std::shared_ptr<OrderItem> ItemOf(const Line& line) {
  auto oItem = std::make_shared<OrderItem>();
  oItem->ItemNumber(line.ItemNumber);
  oItem->Quantity(static_cast<std::int32_t>(line.Quantity));
  oItem->Description(line.Description);
  oItem->ShortDescription(line.ShortDescription);
  oItem->Manufacturer(line.Manufacturer);
  oItem->Model(line.Model);
  oItem->SellQuantity(static_cast<std::int32_t>(line.SellQuantity));
  oItem->ShipQuantity(static_cast<std::int32_t>(line.ShipQuantity));
  oItem->UsuallyShips(line.UsuallyShips);
  oItem->IsTaxable(line.IsTaxable);
  oItem->Price(Currency::FromScaled(line.Price));
  oItem->ExtendedPrice(Currency::FromScaled(line.ExtendedPrice));
  oItem->IsPriceModified(line.IsPriceModified);
  oItem->CustomerPartNumber(line.CustomerPartNumber);
  oItem->CustomerNotes(line.CustomerNotes);
  oItem->HasNotes(line.HasNotes);
  oItem->HasPartsInfo(line.HasPartsInfo);
  return oItem;
}

void Fill(CreditCardDetails& card, const std::string& zvText) {
  card.FirstName(zvText);
  card.LastName(zvText);
  card.CompanyName(zvText);
  card.Address1(zvText);
  card.Address2(zvText);
  card.City(zvText);
  card.State(zvText);
  card.StateOr(zvText);
  card.ZipOrPostCode(zvText);
  card.Country(zvText);
  card.PhoneNumber(zvText);
  card.PhoneExt(zvText);
  card.Fax(zvText);
  card.AccountNumber(zvText);
  card.Comment1(zvText);
  card.Comment2(zvText);
  card.Comment3(zvText);
  card.Comment4(zvText);
}

void Fill(DeliveryInformation& delivery, const std::string& zvText) {
  delivery.FirstName(zvText);
  delivery.LastName(zvText);
  delivery.CompanyName(zvText);
  delivery.Address1(zvText);
  delivery.Address2(zvText);
  delivery.City(zvText);
  delivery.State(zvText);
  delivery.StateOr(zvText);
  delivery.ZipOrPostCode(zvText);
  delivery.Country(zvText);
  delivery.PhoneNumber(zvText);
  delivery.PhoneExt(zvText);
  delivery.Fax(zvText);
  delivery.CallBranchNumber(zvText);
  delivery.CallAttention(zvText);
  delivery.CallPhoneNumber(zvText);
  delivery.CallPhoneExt(zvText);
  delivery.Notes(zvText);
}

void Fill(OrderInformation& information, const std::string& zvText) {
  information.PORelease(zvText);
  information.ProjectOrJobNumber(zvText);
  information.RequisitionOrApprovalName(zvText);
  information.Department(zvText);
  information.Attention(zvText);
  information.PhoneNumber(zvText);
  information.Email(zvText);
  information.TaxIDNumber(zvText);
}

class Library : public OrderProgram {
 public:
  explicit Library(std::string zvFolder) : m_zFolder(std::move(zvFolder)) {}

  void Enter(std::vector<Line> lines) override {
    UseSettings();
    m_oEntered = std::make_shared<OrderItems>();
    for (const Line& line : lines) {
      m_oEntered->Add(ItemOf(line), line.ItemNumber);
    }
  }

  void AddLine() override {
    Order().AddItem(m_oEntered->Item(1));
    Require(Order().Error());
  }

  void ChangeLines() override { Order().UpdateItems(m_oEntered); }

  void SaveSummary(const std::string& zvText) override {
    const auto oDetails = Order().OrderDetails();
    oDetails->PurchaseOrderNumber(zvText);
    Fill(*oDetails->OrderInformation(), zvText);
    Fill(*oDetails->DeliveryInformation(), zvText);
    oDetails->PaymentInformation()->MorvaneAccountNumber(zvText);
    Fill(*oDetails->PaymentInformation()->CreditCardDetails(), zvText);
    Order().SaveSummary();
    Require(Order().Error());
  }

  std::size_t LoadLines() override {
    Order().LoadItems(0);
    return static_cast<std::size_t>(Order().OrderDetails()->OrderItems()->Count());
  }

  void ShowOrder() override {
    UseSettings();
    CurrentOrder order;
    order.LoadItems(0);
  }

  std::string Document() override { return Order().GetXML(); }

  void SaveLists() override {
    UseSettings();
    PersonalLists lists;
    lists.LoadLists();
    lists.SaveAsXML();
    // The file is all that it leaves, and it says nothing of its own when it cannot be written.
    if (LastFailure().Number != 0) {
      throw std::runtime_error(LastFailure().Description);
    }
  }

  std::size_t LoadHistory() override {
    UseSettings();
    m_oHistory = std::make_unique<OrderHistory>();
    m_oHistory->LoadOrders();
    return static_cast<std::size_t>(m_oHistory->Count());
  }

  std::string ShowHistory() override {
    UseSettings();
    OrderHistory history;
    history.LoadOrders();
    return history.GetXML();
  }

  std::size_t ImportHistory() override {
    UseSettings();
    OrderHistoryImporter importer;
    const std::int32_t lOrders = importer.ApplyImports(m_zFolder + "/older");
    if (LastFailure().Number != 0) {
      throw std::runtime_error(LastFailure().Description);
    }
    return static_cast<std::size_t>(lOrders);
  }

  // By the engine: the library removes one order at a time.
  void EmptyHistory() override { EngineProgram(m_zFolder)->EmptyHistory(); }

  void RemoveLine(const std::string& zvItemNumber) override { Order().RemoveItem(zvItemNumber); }

 private:
  // A thread reads its settings once; the programs here have a store each.
  void UseSettings() {
    static const Library* pLast = nullptr;
    if (pLast != this) {
      ForgetStartUp();
      InstallSettings(CreateFileSettings(m_zFolder + "/settings.ini"));
      StartUp();
      pLast = this;
    }
  }

  CurrentOrder& Order() {
    UseSettings();
    if (m_oOrder == nullptr) {
      m_oOrder = std::make_unique<CurrentOrder>();
    }
    return *m_oOrder;
  }

  std::string m_zFolder;
  std::shared_ptr<OrderItems> m_oEntered;
  std::unique_ptr<CurrentOrder> m_oOrder;
  std::unique_ptr<OrderHistory> m_oHistory;
};

}  // namespace

std::unique_ptr<OrderProgram> LibraryProgram(const std::string& zvFolder) {
  return std::make_unique<Library>(zvFolder);
}

}  // namespace bench
