#include "qm_ordering/order/OrderDetails.h"

#include <optional>
#include <utility>

#include "qm_ordering/foundation/Errors.h"
#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/order/ItemFields.h"
#include "qm_ordering/order/LibraryAccess.h"
#include "qm_ordering/order/OrderDocument.h"
#include "qm_ordering/order/RequireObject.h"
#include "qm_ordering/platform/ado/Recordset.h"
#include "qm_ordering/platform/settings/InstalledSettings.h"
#include "qm_ordering/platform/text/Unicode.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/platform/value/OutOfMemory.h"
#include "qm_ordering/store/Database.h"
#include "qm_ordering/store/OrderHeader.h"

namespace qm_ordering {

namespace {

// How often the current order is created before a store that shows none is taken to be damaged.
constexpr int kCreations = 10;

// The columns of the current row of a result set, with nulls of texts and dates made empty.
class Row {
 public:
  explicit Row(const ado::Recordset& rows) : m_oRows(rows) {}

  std::string Text(const char* zvColumn) const { return TextOf(m_oRows.Fields(zvColumn)); }
  Date DateOf(const char* zvColumn) const { return NullTo(Value(zvColumn), Date()).ToDate(); }
  std::int32_t Integer(const char* zvColumn) const { return Value(zvColumn).ToInteger(); }
  Currency Amount(const char* zvColumn) const { return Value(zvColumn).ToCurrency(); }
  bool Flag(const char* zvColumn) const { return Value(zvColumn).ToBoolean(); }

 private:
  Variant Value(const char* zvColumn) const { return m_oRows.Fields(zvColumn).Value(); }

  const ado::Recordset& m_oRows;
};

bool IsEmpty(const ado::Recordset& rows) {
  return rows.AtBeginning() && rows.AtEnd();
}

void Fill(OrderInformation& info, const Row& row) {
  info.IsTaxExempt(row.Flag("bOIIsTaxExempt"));
  info.Attention(row.Text("zOIAttention"));
  info.Department(row.Text("zOIDepartment"));
  info.PhoneNumber(row.Text("zOIPhoneNumber"));
  info.ProjectOrJobNumber(row.Text("zOIProjectOrJobNumber"));
  info.PORelease(row.Text("zPOReleaseNumber"));
  info.RequisitionOrApprovalName(row.Text("zOIRequisitionOrApprovalName"));
  info.Email(row.Text("zOIEmail"));
  info.TaxIDNumber(row.Text("zOITaxIDNumber"));
  info.PORelease(row.Text("zPOReleaseNumber"));
}

void Fill(PaymentInformation& payment, const Row& row) {
  payment.Method(row.Integer("lPIPaymentMethod"));
  payment.MorvaneAccountNumber(row.Text("zPIMorvaneAccountNumber"));
  CreditCardDetails& card = *payment.CreditCardDetails();
  card.Address1(row.Text("zCCAddress1"));
  card.Address2(row.Text("zCCAddress2"));
  card.City(row.Text("zCCCity"));
  card.Comment1(row.Text("zCCComment1"));
  card.Comment2(row.Text("zCCComment2"));
  card.Comment3(row.Text("zCCComment3"));
  card.Comment4(row.Text("zCCComment4"));
  card.CompanyName(row.Text("zCCCompanyName"));
  card.Country(row.Text("zCCCountry"));
  card.Fax(row.Text("zCCFax"));
  card.AccountNumber(row.Text("zCCAccountNumber"));
  card.FirstName(row.Text("zCCFirstName"));
  card.LastName(row.Text("zCCLastName"));
  card.PhoneExt(row.Text("zCCPhoneExt"));
  card.PhoneNumber(row.Text("zCCPhoneNumber"));
  card.State(row.Text("zCCState"));
  card.StateOr(row.Text("zCCStateOr"));
  card.ZipOrPostCode(row.Text("zCCZipOrPostcode"));
}

void Fill(DeliveryInformation& delivery, const Row& row) {
  delivery.DeliveryMethod(row.Integer("lDIDeliveryMethod"));
  delivery.ShippingMethod(row.Integer("lDIShippingMethod"));
  delivery.Address1(row.Text("zDIAddress1"));
  delivery.Address2(row.Text("zDIAddress2"));
  delivery.City(row.Text("zDICity"));
  delivery.CompanyName(row.Text("zDICompanyName"));
  delivery.Country(row.Text("zDICountry"));
  delivery.Fax(row.Text("zDIFax"));
  delivery.FirstName(row.Text("zDIFirstName"));
  delivery.LastName(row.Text("zDILastName"));
  delivery.PhoneExt(row.Text("zDIPhoneExt"));
  delivery.PhoneNumber(row.Text("zDIPhoneNumber"));
  delivery.State(row.Text("zDIState"));
  delivery.StateOr(row.Text("zDIStateOr"));
  delivery.ZipOrPostCode(row.Text("zDIZipOrPostcode"));
  delivery.Notes(row.Text("zDINotes"));
  delivery.CallAttention(row.Text("zDICallAttention"));
  delivery.CallBranchNumber(row.Text("zDICallBranchNumber"));
  delivery.CallPhoneExt(row.Text("zDICallPhoneExt"));
  delivery.CallPhoneNumber(row.Text("zDICallPhoneNumber"));
}

OrderHeader HeaderOf(const OrderDetails& order) {
  OrderHeader header;
  header.OrderID = order.OrderID();
  header.PurchaseOrderNumber = order.PurchaseOrderNumber();
  header.TotalPrice = order.TotalPrice();

  const OrderInformation& info = *RequireObject(order.OrderInformation(), "the order's information");
  header.POReleaseNumber = info.PORelease();
  header.OIProjectOrJobNumber = info.ProjectOrJobNumber();
  header.OIRequisitionOrApprovalName = info.RequisitionOrApprovalName();
  header.OIDepartment = info.Department();
  header.OIAttention = info.Attention();
  header.OIPhoneNumber = info.PhoneNumber();
  header.OIEmail = info.Email();
  header.OIIsTaxExempt = info.IsTaxExempt();
  header.OITaxIDNumber = info.TaxIDNumber();

  const DeliveryInformation& delivery =
      *RequireObject(order.DeliveryInformation(), "the delivery information");
  header.DIDeliveryMethod = delivery.DeliveryMethod();
  header.DIFirstName = delivery.FirstName();
  header.DILastName = delivery.LastName();
  header.DICompanyName = delivery.CompanyName();
  header.DIAddress1 = delivery.Address1();
  header.DIAddress2 = delivery.Address2();
  header.DICity = delivery.City();
  header.DIState = delivery.State();
  header.DIStateOr = delivery.StateOr();
  header.DIZipOrPostCode = delivery.ZipOrPostCode();
  header.DICountry = delivery.Country();
  header.DIPhoneNumber = delivery.PhoneNumber();
  header.DIPhoneExt = delivery.PhoneExt();
  header.DIFax = delivery.Fax();
  header.DICallBranchNumber = delivery.CallBranchNumber();
  header.DICallAttention = delivery.CallAttention();
  header.DICallPhoneNumber = delivery.CallPhoneNumber();
  header.DICallPhoneExt = delivery.CallPhoneExt();
  header.DIShippingMethod = delivery.ShippingMethod();
  header.DINotes = delivery.Notes();

  const PaymentInformation& payment = *RequireObject(order.PaymentInformation(), "the payment information");
  header.PIPaymentMethod = payment.Method();
  header.PIMorvaneAccountNumber = payment.MorvaneAccountNumber();
  const CreditCardDetails& card = *payment.CreditCardDetails();
  header.CCFirstName = card.FirstName();
  header.CCLastName = card.LastName();
  header.CCCompanyName = card.CompanyName();
  header.CCAddress1 = card.Address1();
  header.CCAddress2 = card.Address2();
  header.CCCity = card.City();
  header.CCState = card.State();
  header.CCStateOr = card.StateOr();
  header.CCZipOrPostCode = card.ZipOrPostCode();
  header.CCCountry = card.Country();
  header.CCPhoneNumber = card.PhoneNumber();
  header.CCPhoneExt = card.PhoneExt();
  header.CCFax = card.Fax();
  header.CCAccountNumber = card.AccountNumber();
  header.CCComment1 = card.Comment1();
  header.CCComment2 = card.Comment2();
  header.CCComment3 = card.Comment3();
  header.CCComment4 = card.Comment4();
  return header;
}

// An item number is shown up to the marker of a line that the import found twice.
std::string ShownItemNumber(const std::string& zvStored) {
  const std::size_t lMarker = zvStored.find("DUP");
  return lMarker == std::string::npos
             ? zvStored
             : std::string(text::TrimSpaces(std::string_view(zvStored).substr(0, lMarker)));
}

// The columns of the lines, found once for all rows.
struct LineFields {
  explicit LineFields(const ado::Recordset& rows)
      : Item(rows, "lOrderID"),
        ExtendedPrice(rows.Fields("cExtendedPrice")),
        IsPriceModified(rows.Fields("bIsPriceModified")),
        Price(rows.Fields("cPrice")),
        HasContractItem(rows.Fields("bHasContractItem")),
        HasNotes(rows.Fields("bHasNotes")),
        Imported(rows.Fields("bImported")) {}

  ItemFields Item;
  ado::Field ExtendedPrice, IsPriceModified, Price, HasContractItem, HasNotes, Imported;
};

std::shared_ptr<OrderItem> MakeLine(const LineFields& fields, const std::string& zvStoredNumber) {
  auto oItem = fields.Item.MakeItem(ShownItemNumber(zvStoredNumber));
  oItem->ExtendedPrice(fields.ExtendedPrice.Value().ToCurrency());
  oItem->IsPriceModified(fields.IsPriceModified.Value().ToBoolean());
  oItem->Price(fields.Price.Value().ToCurrency());
  oItem->HasContractItem(fields.HasContractItem.Value().ToBoolean());
  oItem->HasNotes(fields.HasNotes.Value().ToBoolean());
  LibraryAccess::Imported(*oItem, fields.Imported.Value().ToBoolean());
  return oItem;
}

std::int32_t AddQuantities(std::int32_t lvStored, std::int32_t lvAdded, const std::string& zvItemNumber) {
  std::int32_t lSum = 0;
  if (__builtin_add_overflow(lvStored, lvAdded, &lSum)) {
    throw Failure(failure::kOverflow, "Overflow: the order holds " + std::to_string(lvStored) + " of item " +
                                          zvItemNumber + "; " + std::to_string(lvAdded) +
                                          " more are beyond the range of quantities.");
  }
  return lSum;
}

}  // namespace

OrderDetails::OrderDetails()
    : m_oOrderItems(OrOutOfMemory([] { return std::make_shared<qm_ordering::OrderItems>(); })) {}

OrderDetails::~OrderDetails() = default;

Database& OrderDetails::Store() {
  if (m_oStore == nullptr) {
    m_oStore = std::make_unique<Database>();
  }
  return *m_oStore;
}

void OrderDetails::LoadSummary(bool bvIsLoadCurrent) {
  try {
    if (m_oOrderInformation == nullptr) {
      m_oOrderInformation = std::make_shared<qm_ordering::OrderInformation>();
    }
    if (m_oPaymentInformation == nullptr) {
      m_oPaymentInformation = std::make_shared<qm_ordering::PaymentInformation>();
    }
    if (m_oDeliveryInformation == nullptr) {
      m_oDeliveryInformation = std::make_shared<qm_ordering::DeliveryInformation>();
    }
    auto rows = Store().OrderDetails_GetSummary(m_lOrderID, bvIsLoadCurrent);
    const ErrorInfo storeError = Store().Error();
    if (storeError.Number != 0) {
      m_oError = storeError;
      return;
    }
    // More than once when another program has submitted at once what was just created.
    for (int i = 0; i < kCreations && IsEmpty(*rows); ++i) {
      if (!bvIsLoadCurrent) {
        SetError(m_oError, OrderingError::errOrderNotFound, "");
        return;
      }
      Store().CreateCurrentOrder();
      rows = Store().OrderDetails_GetSummary(m_lOrderID, true);
    }
    const Row row(*rows);
    m_lOrderID = row.Integer("lOrderID");
    m_cTotalPrice = row.Amount("cTotalPrice");
    m_zPurchaseOrderNumber = row.Text("zPurchaseOrderNumber");
    m_datSubmitDate = row.DateOf("datSubmitDate");
    m_bIsCurrentOrder = row.Flag("bIsCurrent");
    Fill(*m_oOrderInformation, row);
    Fill(*m_oPaymentInformation, row);
    Fill(*m_oDeliveryInformation, row);
    ClearError(m_oError);
  } catch (...) {
    const Failure failure = CatchFailure("OrderDetails.LoadSummary");
    SetUnexpected(m_oError, failure);
  }
}

void OrderDetails::LoadItems(std::int32_t lvSortType, bool bvIsLoadCurrent, bool bvValidate) {
  OrOutOfMemory([&] {
    m_oOrderItems = std::make_shared<qm_ordering::OrderItems>();
    const Database::Reading reading(Store());
    const auto rows = Store().OrderDetails_GetItems(m_lOrderID, lvSortType, bvIsLoadCurrent);
    m_bHasInvalidQuantities = false;
    const LineFields fields(*rows);
    for (; !rows->AtEnd(); rows->MoveNext()) {
      const std::string zStoredNumber = fields.Item.ItemNumber().Value().ToString();
      const std::shared_ptr<OrderItem> oItem = MakeLine(fields, zStoredNumber);
      if (bvValidate) {
        const auto oDelivery = RequireObject(m_oDeliveryInformation, "the delivery information");
        if (!oItem->Validate(oDelivery->DeliveryMethod())) {
          m_bHasInvalidQuantities = true;
        }
      }
      m_oOrderItems->Add(oItem, zStoredNumber);
    }
  });
}

void OrderDetails::SaveSummary(bool) {
  OrOutOfMemory([&] {
    if (m_lOrderID == -1) {
      // Hosts tell this number 1 from "Item already exists in order" by the text.
      m_oError = {1, "Order not loaded yet"};
      return;
    }
    Store().OrderDetails_SaveSummary(HeaderOf(*this));
    m_oError = Store().Error();
  });
}

void OrderDetails::SavePONumber() {
  OrOutOfMemory([&] {
    Store().SavePONumber(m_lOrderID, m_zPurchaseOrderNumber);
    m_oError = Store().Error();
  });
}

void OrderDetails::AddItem(const std::shared_ptr<OrderItem>& ovOrderItem) {
  OrOutOfMemory([&] {
    if (m_lOrderID == -1) {
      SetError(m_oError, OrderingError::errOrderNotLoaded, "");
      return;
    }
    OrderItem& item = *RequireObject(ovOrderItem, "the item to be added");
    const Currency cExtendedPrice = item.Price() * item.Quantity();
    item.OrderID(m_lOrderID);
    item.ExtendedPrice(cExtendedPrice);
    if (Store().OrderDetails_ItemExists(m_lOrderID, item.ItemNumber()) && MergeIntoStoredLine(item)) {
      Store().Order_UpdateTotalPrice(m_lOrderID);
      if (m_oError.Number == 0) {
        m_cTotalPrice = Store().Order_GetTotalPrice(m_lOrderID);
      }
      return;
    }
    Store().OrderDetails_AddItem(
        item.OrderID(), item.ItemNumber(), item.Quantity(), item.Description(), item.ShortDescription(),
        item.Manufacturer(), item.Model(), item.SellQuantity(), item.ShipQuantity(), item.UsuallyShips(),
        item.IsTaxable(), item.Price(), item.ExtendedPrice(), item.IsPriceModified(),
        item.CustomerPartNumber(), item.CustomerNotes(), item.HasNotes(), item.HasPartsInfo());
    m_oError = Store().Error();
    if (m_oError.Number == 0) {
      m_oOrderItems->Add(ovOrderItem, item.ItemNumber());
      m_cTotalPrice += item.ExtendedPrice();
    }
  });
}

bool OrderDetails::MergeIntoStoredLine(const OrderItem& item) {
  // One unit, so that two programs that add to the same line at once both count.
  Database::WriteUnit unit(Store());
  const auto lStored = Store().OrderDetails_GetQuantity(m_lOrderID, item.ItemNumber());
  if (!lStored) {
    return false;
  }
  const std::int32_t lQuantity = AddQuantities(*lStored, item.Quantity(), item.ItemNumber());
  Store().OrderDetails_IncrementQuantity(m_lOrderID, item.ItemNumber(), lQuantity, item.Price(),
                                         item.Price() * lQuantity);
  unit.Commit();
  return true;
}

void OrderDetails::UpdateItems(const std::shared_ptr<qm_ordering::OrderItems>& ovOrderIems) {
  OrOutOfMemory([&] {
    Store().OrderDetails_UpdateItems(m_lOrderID, *RequireObject(ovOrderIems, "the collection of items"));
    Store().Order_UpdateTotalPrice(m_lOrderID);
    m_cTotalPrice = Store().Order_GetTotalPrice(m_lOrderID);
  });
}

void OrderDetails::RemoveItem(const std::string& zvItemNumber) {
  OrOutOfMemory([&] {
    Store().OrderItem_RemoveItem(m_lOrderID, zvItemNumber);
    m_cTotalPrice = Store().Order_GetTotalPrice(m_lOrderID);
  });
}

void OrderDetails::ClearItems() {
  OrOutOfMemory([&] {
    Store().OrderDetails_ClearItems(m_lOrderID);
    m_cTotalPrice = Currency();
  });
}

void OrderDetails::SaveToHistory() {
  OrOutOfMemory([&] {
    Store().OrderDetails_SaveToHistory(m_lOrderID);
    m_oError = Store().Error();
  });
}

std::int32_t OrderDetails::ItemCount() {
  try {
    return Store().OrderDetails_ItemCount(m_lOrderID);
  } catch (...) {
    CatchFailure("OrderDetails.ItemCount");
    return 0;
  }
}

bool OrderDetails::ItemExists(const std::string& zvItemNumber) const {
  try {
    const auto oItem = m_oOrderItems->Item(zvItemNumber);
    return oItem != nullptr && oItem->ItemNumber() == zvItemNumber;
  } catch (...) {
    CatchFailure("OrderDetails.ItemExists");
    return false;
  }
}

void OrderDetails::ApplyRegistrationSettings() {
  OrOutOfMemory([&] {
    const RegistrationDetails registration = settings::ReadRegistration();
    // The last argument is the store operation's sixteenth, which it does not use.
    Store().ApplyDefaultsToCurrentOrder(registration.City, registration.CompanyName, registration.Address1,
                                        registration.Address2, registration.Fax, registration.Telephone,
                                        registration.TelephoneExt, registration.Country, registration.Email,
                                        registration.FirstName, registration.LastName, registration.State,
                                        registration.StateOr, registration.ZipOrPostCode,
                                        registration.AccountNumber, registration.AccountNumber);
    m_oError = Store().Error();
  });
}

std::string OrderDetails::GetXML() const {
  return OrOutOfMemory([&] { return OrderDocument(*this); });
}

}  // namespace qm_ordering
