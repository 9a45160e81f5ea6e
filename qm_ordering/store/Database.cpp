#include "qm_ordering/store/Database.h"

#include <array>
#include <initializer_list>
#include <utility>

#include "qm_ordering/foundation/Errors.h"
#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/foundation/UserSettingConstants.h"
#include "qm_ordering/platform/clock/Clock.h"
#include "qm_ordering/platform/settings/InstalledSettings.h"
#include "qm_ordering/platform/text/Unicode.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/platform/value/OutOfMemory.h"

namespace qm_ordering {

namespace {

using namespace UserSettingConstants;

// The orders of the lines, by lvSortType.
constexpr std::array<const char*, 7> kItemSortOrders = {
    "lOrderEntered, zItemNumber", "zItemNumber",         "zDescription,  zItemNumber",
    "zManufacturer, zItemNumber", "zModel, zItemNumber", "lUsuallyShipsSortOrder, zItemNumber",
    "cPrice, zItemNumber",
};

// The orders of the history, by lvSortOrder.
constexpr std::array<const char*, 4> kHistorySortOrders = {
    "zPurchaseOrderNumber, datSubmitDate",
    "zPurchaseOrderNumber",
    "datSubmitDate",
    "cTotalPrice",
};

// The entry of a table of sort orders. Raises 9 for a code that has none.
template <std::size_t lSize>
const char* SortOrder(const std::array<const char*, lSize>& zvOrders, std::int32_t lvCode, const char* zvOf) {
  if (lvCode < 0 || static_cast<std::size_t>(lvCode) >= lSize) {
    throw Failure(failure::kIndexOutOfBounds, "There is no sort order " + std::to_string(lvCode) + " of " +
                                                  zvOf + "; the orders are 0 to " +
                                                  std::to_string(lSize - 1) + ".");
  }
  return zvOrders[static_cast<std::size_t>(lvCode)];
}

std::string Number(std::int32_t lvNumber) {
  return std::to_string(lvNumber);
}

std::string Flag(bool bvFlag) {
  return bvFlag ? "True" : "False";
}

std::string Escaped(std::string_view zvText) {
  return "'" + SQLText(zvText) + "'";
}

std::string Raw(std::string_view zvText) {
  return "'" + std::string(zvText) + "'";
}

// A number from an order default: 0 when the text is blank, not a number or out of range.
std::string NumberOfDefault(const std::string& zvValue) {
  try {
    return Number(Variant(zvValue).ToInteger());
  } catch (const Failure&) {
    return "0";
  }
}

bool IsTrueText(std::string_view zvValue) {
  return text::CompareFolded(zvValue, "TRUE") == 0;
}

std::int32_t UsuallyShipsSortOrder(std::string_view zvUsuallyShips) {
  static constexpr std::array<const char*, 3> kKnown = {"TODAY", "1-3 DAYS", "SPECIAL ORDER"};
  for (std::size_t i = 0; i < kKnown.size(); ++i) {
    if (text::CompareFolded(zvUsuallyShips, kKnown[i]) == 0) {
      return static_cast<std::int32_t>(i);
    }
  }
  return 999;
}

// "COLUMN = VALUE, COLUMN = VALUE": the assignments of an update.
std::string Assignments(std::initializer_list<std::pair<const char*, std::string>> assignments) {
  std::string zText;
  for (const auto& [zColumn, zValue] : assignments) {
    zText.append(zText.empty() ? "" : ", ").append(zColumn).append(" = ").append(zValue);
  }
  return zText;
}

std::string Joined(const std::vector<std::string>& zvTexts, const char* zvSeparator) {
  std::string zAll;
  for (const std::string& zText : zvTexts) {
    zAll.append(zAll.empty() ? "" : zvSeparator).append(zText);
  }
  return zAll;
}

std::string RawList(const std::vector<std::string_view>& zvItemNumbers) {
  std::string zList;
  for (const std::string_view zItemNumber : zvItemNumbers) {
    zList += Raw(zItemNumber) + ", ";
  }
  zList.resize(zList.size() - 2);
  return zList + ")";
}

// Runs the last step of an operation whose others stand whatever becomes of it: its failure begins by saying
// so.
template <typename Step>
void AfterAll(const char* zvWhatStands, Step step) {
  try {
    OrOutOfMemory(step);
  } catch (const Failure& failure) {
    throw Failure(failure.Number(), zvWhatStands + failure.Description());
  }
}

}  // namespace

// Counts an operation in and out. The outermost one begins on a connection of its own: lines still being read
// on the last one would hold it in a state of the store that is old by now, in which nothing can be written.
class Database::Frame {
 public:
  explicit Frame(Database& database) : m_oDatabase(database) { m_oDatabase.Enter(); }
  ~Frame() { m_oDatabase.Leave(m_bKeepOpen); }
  Frame(const Frame&) = delete;
  Frame& operator=(const Frame&) = delete;

  // For an operation that hands back a live result set.
  void KeepOpen() { m_bKeepOpen = true; }

 private:
  Database& m_oDatabase;
  bool m_bKeepOpen = false;
};

Database::WriteUnit::WriteUnit(Database& database) : m_oDatabase(database) {
  m_oDatabase.Enter();
  try {
    m_oTransaction.emplace(database.Connection());
  } catch (...) {
    m_oDatabase.Leave(false);
    throw;
  }
}

Database::WriteUnit::~WriteUnit() {
  m_oTransaction.reset();
  m_oDatabase.Leave(false);
}

void Database::WriteUnit::Commit() {
  m_oTransaction->Commit();
}

ado::Connection& Database::Connection() {
  if (!m_oConnection.IsOpen()) {
    m_oConnection.Open(ConnectionString());
  }
  return m_oConnection;
}

void Database::Enter() noexcept {
  if (m_lFrames++ == 0) {
    CloseConnection();
  }
}

void Database::Leave(bool bvKeepOpen) noexcept {
  if (--m_lFrames == 0 && !bvKeepOpen) {
    CloseConnection();
  }
}

void Database::CloseConnection() noexcept {
  m_oConnection.Close();
}

void Database::RefuseQuotes(const std::string& zvSQL, const std::vector<std::string_view>& zvRawTexts) {
  for (const std::string_view zText : zvRawTexts) {
    if (zText.find('\'') != std::string_view::npos) {
      Connection().Refuse(zvSQL, "The text \"" + std::string(zText) +
                                     "\" holds a quote, which this statement cannot take; it was not run.");
    }
  }
}

void Database::ExecuteRaw(const std::string& zvSQL, const std::vector<std::string_view>& zvRawTexts) {
  RefuseQuotes(zvSQL, zvRawTexts);
  Connection().Execute(zvSQL);
}

template <typename Result, typename Body>
Result Database::Guarded(const char* zvOperation, std::optional<OrderingError> lvOnStoreCommand, Body body) {
  ClearError(m_oError);
  const Frame frame(*this);
  try {
    return body();
  } catch (...) {
    const Failure failure = CatchFailure(zvOperation);
    if (lvOnStoreCommand && failure.Number() == failure::kStoreCommand) {
      SetError(m_oError, *lvOnStoreCommand, "");
    } else {
      SetUnexpected(m_oError, failure);
    }
    return Result();
  }
}

std::unique_ptr<ado::Recordset> Database::OrderDetails_GetSummary(std::int32_t lvOrderID,
                                                                  bool bvIsLoadCurrent) {
  ClearError(m_oError);
  const Frame frame(*this);
  return Connection().OpenDetached(
      "Select * from qryGetOrderSummary " +
      (bvIsLoadCurrent ? "where bIsCurrent = True" : "where lOrderID = " + Number(lvOrderID)));
}

std::unique_ptr<ado::Recordset> Database::OrderDetails_GetItems(std::int32_t lvOrderID,
                                                                std::int32_t lvSortType,
                                                                bool bvIsLoadCurrent) {
  ClearError(m_oError);
  const std::string zSortOrder = SortOrder(kItemSortOrders, lvSortType, "order lines");
  Frame frame(*this);
  auto rows = Connection().Execute(
      "select * from qryGetOrderItems " +
      (bvIsLoadCurrent ? "where bIsCurrent = True" : "where lOrderID = " + Number(lvOrderID)) + " order by " +
      zSortOrder);
  frame.KeepOpen();
  return rows;
}

void Database::OrderItem_Save(std::int32_t, const std::string&, std::int32_t lvQuantity,
                              const std::string& zvDescription, const std::string& zvManufacturer,
                              const std::string& zvModel, std::int32_t lvSellQuantity,
                              std::int32_t lvShipQuantity, const std::string& zvUsuallyShips,
                              bool bvIsTaxable, Currency cvPrice, Currency cvExtendedPrice,
                              bool bvIsPriceModified, const std::string& zvCustomerPartNumber,
                              const std::string& zvCustomerNotes) {
  Guarded<void>("Database.OrderItem_Save", std::nullopt, [&] {
    ExecuteRaw(
        "update tblOrderItem set " + Assignments({{"lQuantity", Number(lvQuantity)},
                                                  {"zDescription", Escaped(zvDescription)},
                                                  {"zManufacturer", Escaped(zvManufacturer)},
                                                  {"zModel", Escaped(zvModel)},
                                                  {"lSellQuantity", Number(lvSellQuantity)},
                                                  {"lShipQuantity", Number(lvShipQuantity)},
                                                  {"zUsuallyShips", Raw(zvUsuallyShips)},
                                                  {"bIsTaxable", Flag(bvIsTaxable)},
                                                  {"cPrice", cvPrice.ToString()},
                                                  {"cExtendedPrice", cvExtendedPrice.ToString()},
                                                  {"bIsPriceModified", Flag(bvIsPriceModified)},
                                                  {"zCustomerPartNumber", Escaped(zvCustomerPartNumber)},
                                                  {"zCustomerNotes", Escaped(zvCustomerNotes)}}),
        {zvUsuallyShips});
  });
}

void Database::OrderDetails_SaveSummary(const OrderHeader& oHeader) {
  Guarded<void>("Database.OrderDetails_SaveSummary", std::nullopt, [&] {
    Connection().Execute("update tblOrder set " +
                         Assignments({
                             {"zPurchaseOrderNumber", Escaped(oHeader.PurchaseOrderNumber)},
                             {"zPOReleaseNumber", Escaped(oHeader.POReleaseNumber)},
                             {"cTotalPrice", oHeader.TotalPrice.ToString()},
                             {"zOIProjectOrJobNumber", Escaped(oHeader.OIProjectOrJobNumber)},
                             {"zOIRequisitionOrApprovalName", Escaped(oHeader.OIRequisitionOrApprovalName)},
                             {"zOIDepartment", Escaped(oHeader.OIDepartment)},
                             {"zOIAttention", Escaped(oHeader.OIAttention)},
                             {"zOIPhoneNumber", Escaped(oHeader.OIPhoneNumber)},
                             {"zOIEmail", Escaped(oHeader.OIEmail)},
                             {"bOIIsTaxExempt", Flag(oHeader.OIIsTaxExempt)},
                             {"zOITaxIDNumber", Escaped(oHeader.OITaxIDNumber)},
                             {"lDIDeliveryMethod", Number(oHeader.DIDeliveryMethod)},
                             {"zDIFirstName", Escaped(oHeader.DIFirstName)},
                             {"zDILastName", Escaped(oHeader.DILastName)},
                             {"zDICompanyName", Escaped(oHeader.DICompanyName)},
                             {"zDIAddress1", Escaped(oHeader.DIAddress1)},
                             {"zDIAddress2", Escaped(oHeader.DIAddress2)},
                             {"zDICity", Escaped(oHeader.DICity)},
                             {"zDIState", Escaped(oHeader.DIState)},
                             {"zDIStateOr", Escaped(oHeader.DIStateOr)},
                             {"zDIZipOrPostCode", Escaped(oHeader.DIZipOrPostCode)},
                             {"zDICountry", Escaped(oHeader.DICountry)},
                             {"zDIPhoneNumber", Escaped(oHeader.DIPhoneNumber)},
                             {"zDIPhoneExt", Escaped(oHeader.DIPhoneExt)},
                             {"zDIFax", Escaped(oHeader.DIFax)},
                             {"zDICallBranchNumber", Escaped(oHeader.DICallBranchNumber)},
                             {"zDICallAttention", Escaped(oHeader.DICallAttention)},
                             {"zDICallPhoneNumber", Escaped(oHeader.DICallPhoneNumber)},
                             {"zDICallPhoneExt", Escaped(oHeader.DICallPhoneExt)},
                             {"lDIShippingMethod", Number(oHeader.DIShippingMethod)},
                             {"zDINotes", Escaped(oHeader.DINotes)},
                             {"lPIPaymentMethod", Number(oHeader.PIPaymentMethod)},
                             {"zPIMorvaneAccountNumber", Escaped(oHeader.PIMorvaneAccountNumber)},
                             {"zCCFirstName", Escaped(oHeader.CCFirstName)},
                             {"zCCLastName", Escaped(oHeader.CCLastName)},
                             {"zCCCompanyName", Escaped(oHeader.CCCompanyName)},
                             {"zCCAddress1", Escaped(oHeader.CCAddress1)},
                             {"zCCAddress2", Escaped(oHeader.CCAddress2)},
                             {"zCCCity", Escaped(oHeader.CCCity)},
                             {"zCCState", Escaped(oHeader.CCState)},
                             {"zCCStateor", Escaped(oHeader.CCStateOr)},
                             {"zCCZipOrPostcode", Escaped(oHeader.CCZipOrPostCode)},
                             {"zCCCountry", Escaped(oHeader.CCCountry)},
                             {"zCCPhoneNumber", Escaped(oHeader.CCPhoneNumber)},
                             {"zCCPhoneExt", Escaped(oHeader.CCPhoneExt)},
                             {"zCCFax", Escaped(oHeader.CCFax)},
                             {"zCCAccountNumber", Escaped(oHeader.CCAccountNumber)},
                             {"zCCComment1", Escaped(oHeader.CCComment1)},
                             {"zCCComment2", Escaped(oHeader.CCComment2)},
                             {"zCCComment3", Escaped(oHeader.CCComment3)},
                             {"zCCComment4", Escaped(oHeader.CCComment4)},
                         }) +
                         " where lOrderID = " + Number(oHeader.OrderID));
    AfterAll(
        "The order itself is saved, but its details could not be kept as the defaults of the next order: ",
        [&] { SaveDefaults(oHeader); });
  });
}

void Database::SaveDefaults(const OrderHeader& oHeader) {
  const std::unique_ptr<OrderDefaults> oDefaults = settings::CreateOrderDefaults();
  oDefaults->Set(DEFAULT_OI_PO_NUM, oHeader.PurchaseOrderNumber);
  oDefaults->Set(DEFAULT_OI_PHONE_NUMBER, oHeader.OIPhoneNumber);
  oDefaults->Set(DEFAULT_OI_EMAIL, oHeader.OIEmail);
  oDefaults->Set(DEFAULT_OI_ISTAXEXEMPT, Flag(oHeader.OIIsTaxExempt));
  oDefaults->Set(DEFAULT_OI_TAXIDNUMBER, oHeader.OITaxIDNumber);
  oDefaults->Set(DEFAULT_OI_PORELEASE, oHeader.POReleaseNumber);
  oDefaults->Set(DEFAULT_OI_PROJECTNUMBER, oHeader.OIProjectOrJobNumber);
  oDefaults->Set(DEFAULT_OI_REQNAME, oHeader.OIRequisitionOrApprovalName);
  oDefaults->Set(DEFAULT_OI_DEPARTMENT, oHeader.OIDepartment);
  oDefaults->Set(DEFAULT_DI_DELIVERYMETHOD, Number(oHeader.DIDeliveryMethod));
  oDefaults->Set(DEFAULT_DI_FIRSTNAME, oHeader.DIFirstName);
  oDefaults->Set(DEFAULT_DI_LASTNAME, oHeader.DILastName);
  oDefaults->Set(DEFAULT_DI_COMPANYNAME, oHeader.DICompanyName);
  oDefaults->Set(DEFAULT_DI_ADDRESS1, oHeader.DIAddress1);
  oDefaults->Set(DEFAULT_DI_ADDRESS2, oHeader.DIAddress2);
  oDefaults->Set(DEFAULT_DI_CITY, oHeader.DICity);
  oDefaults->Set(DEFAULT_DI_STATE, oHeader.DIState);
  oDefaults->Set(DEFAULT_DI_STATEOR, oHeader.DIStateOr);
  oDefaults->Set(DEFAULT_DI_ZIP_OR_POSTCODE, oHeader.DIZipOrPostCode);
  oDefaults->Set(DEFAULT_DI_COUNTRY, oHeader.DICountry);
  oDefaults->Set(DEFAULT_DI_PH0NE_NUMBER, oHeader.DIPhoneNumber);
  oDefaults->Set(DEFAULT_DI_PHONE_EXT, oHeader.DIPhoneExt);
  oDefaults->Set(DEFAULT_DI_FAX, oHeader.DIFax);
  oDefaults->Set(DEFAULT_DI_SHIPPING_METHOD, Number(oHeader.DIShippingMethod));
  oDefaults->Set(DEFAULT_DI_NOTES, oHeader.DINotes);
  oDefaults->Set(DEFAULT_DI_CALL_BRANCH_NUMBER, oHeader.DICallBranchNumber);
  oDefaults->Set(DEFAULT_DI_CALL_ATTENTION, oHeader.DICallAttention);
  oDefaults->Set(DEFAULT_DI_CALL_PHONE_NUMBER, oHeader.DICallPhoneNumber);
  oDefaults->Set(DEFAULT_DI_CALL_PHONE_EXT, oHeader.DICallPhoneExt);
  oDefaults->Set(DEFAULT_PI_PAYMENT_METHOD, Number(oHeader.PIPaymentMethod));
  oDefaults->Set(DEFAULT_PI_MORVANE_ACCOUNT_NUMBER, oHeader.PIMorvaneAccountNumber);
  oDefaults->Set(DEFAULT_CC_FIRST_NAME, oHeader.CCFirstName);
  oDefaults->Set(DEFAULT_CC_LAST_NAME, oHeader.CCLastName);
  oDefaults->Set(DEFAULT_CC_COMPANY_NAME, oHeader.CCCompanyName);
  oDefaults->Set(DEFAULT_CC_ADDRESS1, oHeader.CCAddress1);
  oDefaults->Set(DEFAULT_CC_ADDRESS2, oHeader.CCAddress2);
  oDefaults->Set(DEFAULT_CC_CITY, oHeader.CCCity);
  oDefaults->Set(DEFAULT_CC_STATE, oHeader.CCState);
  oDefaults->Set(DEFAULT_CC_STATE_OR, oHeader.CCStateOr);
  oDefaults->Set(DEFAULT_CC_ZIP_OR_POSTCODE, oHeader.CCZipOrPostCode);
  oDefaults->Set(DEFAULT_CC_COUNTRY, oHeader.CCCountry);
  oDefaults->Set(DEFAULT_CC_PHONE_NUMBER, oHeader.CCPhoneNumber);
  oDefaults->Set(DEFAULT_CC_PHONE_EXT, oHeader.CCPhoneExt);
  oDefaults->Set(DEFAULT_CC_FAX, oHeader.CCFax);
  oDefaults->Set(DEFAULT_CC_ACCOUNT_NUMBER, oHeader.CCAccountNumber);
  oDefaults->Save();
}

void Database::SavePONumber(std::int32_t lvOrderID, const std::string& zvPurchaseOrderNumber) {
  Guarded<void>("Database.SavePONumber", std::nullopt, [&] {
    Connection().Execute("update tblOrder set zPurchaseOrderNumber = " + Escaped(zvPurchaseOrderNumber) +
                         " where lOrderID = " + Number(lvOrderID));
  });
}

void Database::OrderDetails_AddItem(std::int32_t lvOrderID, const std::string& zvItemNumber,
                                    std::int32_t lvQuantity, const std::string& zvDescription,
                                    const std::string& zvShortDescription, const std::string& zvManufacturer,
                                    const std::string& zvModel, std::int32_t lvSellQuantity,
                                    std::int32_t lvShipQuantity, const std::string& zvUsuallyShips,
                                    bool bvIsTaxable, Currency cvPrice, Currency cvExtendedPrice,
                                    bool bvIsPriceModified, const std::string& zvCustomerPartNumber,
                                    const std::string& zvCustomerNotes, bool bvHasNotes,
                                    bool bvHasPartsInfo) {
  Guarded<void>("Database.OrderDetails_AddItem", OrderingError::errOrderNotLoaded, [&] {
    ExecuteRaw(
        "insert into tblOrderItem (lOrderID, zItemNumber, lQuantity, zDescription, zShortDescription, "
        "zManufacturer, zModel, lSellQuantity, lShipQuantity, zUsuallyShips, lUsuallyShipsSortOrder, "
        "bIsTaxable, "
        "cPrice, cExtendedPrice, bIsPriceModified, zCustomerPartNumber, zCustomerNotes, bHasNotes, "
        "bHasPartsInfo) "
        "values (" +
            Joined({Number(lvOrderID), Escaped(zvItemNumber), Number(lvQuantity), Escaped(zvDescription),
                    Escaped(zvShortDescription), Escaped(zvManufacturer), Escaped(zvModel),
                    Number(lvSellQuantity), Number(lvShipQuantity), Raw(zvUsuallyShips),
                    Number(UsuallyShipsSortOrder(zvUsuallyShips)), Flag(bvIsTaxable), cvPrice.ToString(),
                    cvExtendedPrice.ToString(), Flag(bvIsPriceModified), Escaped(zvCustomerPartNumber),
                    Escaped(zvCustomerNotes), Flag(bvHasNotes), Flag(bvHasPartsInfo)},
                   ", ") +
            ")",
        {zvUsuallyShips});
    AfterAll("The line is stored, but the order's total could not be brought up to date: ",
             [&] { Order_UpdateTotalPrice(lvOrderID); });
  });
}

void Database::Order_UpdateTotalPrice(std::int32_t lvOrderID) {
  ClearError(m_oError);
  WriteUnit unit(*this);
  const Variant vSum =
      Connection()
          .Execute("select sum(cExtendedPrice) from tblOrderItem where lOrderID = " + Number(lvOrderID))
          ->Fields(0)
          .Value();
  const Currency cTotal = NullTo(vSum, Currency()).ToCurrency();
  Connection().Execute("update tblOrder set cTotalPrice = " + cTotal.ToString() +
                       " where lOrderID = " + Number(lvOrderID));
  unit.Commit();
}

void Database::OrderDetails_IncrementQuantity(std::int32_t lvOrderID, const std::string& zvItemNumber,
                                              std::int32_t lvIncrement, Currency cvPrice,
                                              Currency cvExtendedPrice) {
  ClearError(m_oError);
  const Frame frame(*this);
  ExecuteRaw("update tblOrderItem set " +
                 Assignments({{"lQuantity", Number(lvIncrement)},
                              {"cPrice", cvPrice.ToString()},
                              {"cExtendedPrice", cvExtendedPrice.ToString()}}) +
                 " where lOrderID = " + Number(lvOrderID) + " and zItemNumber = " + Raw(zvItemNumber),
             {zvItemNumber});
}

bool Database::OrderDetails_ItemExists(std::int32_t lvOrderID, const std::string& zvItemNumber) {
  ClearError(m_oError);
  ado::Connection connection;
  connection.Open(ConnectionString());
  return connection
             .Execute("select count(*) from tblOrderItem where zItemNumber = " + Escaped(zvItemNumber) +
                      " and lOrderID = " + Number(lvOrderID))
             ->Fields(0)
             .Value()
             .ToInteger() != 0;
}

std::optional<std::int32_t> Database::OrderDetails_GetQuantity(std::int32_t lvOrderID,
                                                               const std::string& zvItemNumber) {
  ClearError(m_oError);
  const Frame frame(*this);
  const auto rows =
      Connection().Execute("select lQuantity from tblOrderItem where zItemNumber = " + Escaped(zvItemNumber) +
                           " and lOrderID = " + Number(lvOrderID));
  if (rows->AtEnd()) {
    return std::nullopt;
  }
  return rows->Fields(0).Value().ToInteger();
}

void Database::OrderDetails_ClearItems(std::int32_t lvOrderID) {
  ClearError(m_oError);
  const Frame frame(*this);
  Connection().Execute("delete from tblOrderItem where lOrderID = " + Number(lvOrderID));
  Connection().Execute("update tblOrder set cTotalPrice = 0 where lOrderID = " + Number(lvOrderID));
}

void Database::OrderDetails_UpdateItem(const std::string& zvItemNumber, std::int32_t lvQuantity,
                                       Currency cvPrice, Currency cvExtendedPrice, bool bvIsUserPrice,
                                       bool bvIsTaxable) {
  ClearError(m_oError);
  const Frame frame(*this);
  ExecuteRaw("update tblOrderItem set " +
                 Assignments({{"lQuantity", Number(lvQuantity)},
                              {"cPrice", cvPrice.ToString()},
                              {"cExtendedPrice", cvExtendedPrice.ToString()},
                              {"bIsPriceModified", Flag(bvIsUserPrice)},
                              {"bIsTaxable", Flag(bvIsTaxable)}}) +
                 " where zItemNumber = " + Raw(zvItemNumber),
             {zvItemNumber});
}

void Database::OrderDetails_UpdateItems(std::int32_t lvOrderID, const OrderItems& ovOrderItems) {
  ClearError(m_oError);
  std::vector<std::string_view> zDeleted;
  std::vector<std::string_view> zUpdated;
  for (const auto& oItem : ovOrderItems) {
    (oItem->Quantity() == 0 ? zDeleted : zUpdated).push_back(oItem->ItemNumber());
  }
  const Frame frame(*this);
  const std::string zCondition = " where lOrderID = " + Number(lvOrderID) + " and zItemNumber in (";
  if (!zDeleted.empty()) {
    ExecuteRaw("delete from tblOrderItem" + zCondition + RawList(zDeleted), zDeleted);
  }
  if (!zUpdated.empty()) {
    WriteChangedLines(
        "select zItemNumber, lQuantity, cPrice, cExtendedPrice, bIsPriceModified, bIsTaxable from "
        "tblOrderItem" +
            zCondition + RawList(zUpdated),
        zUpdated, ovOrderItems);
  }
}

void Database::WriteChangedLines(const std::string& zvSQL, const std::vector<std::string_view>& zvItemNumbers,
                                 const OrderItems& ovOrderItems) {
  RefuseQuotes(zvSQL, zvItemNumbers);
  ado::BatchRecordset rows = Connection().OpenBatch(zvSQL);
  const std::size_t lItemNumber = rows.Column("zItemNumber");
  const std::size_t lQuantity = rows.Column("lQuantity");
  const std::size_t lPrice = rows.Column("cPrice");
  const std::size_t lExtendedPrice = rows.Column("cExtendedPrice");
  const std::size_t lIsPriceModified = rows.Column("bIsPriceModified");
  const std::size_t lIsTaxable = rows.Column("bIsTaxable");
  for (; !rows.AtEnd(); rows.MoveNext()) {
    const std::string zItemNumber = rows.Value(lItemNumber).ToString();
    const std::shared_ptr<OrderItem> oItem = ovOrderItems.Item(zItemNumber);
    if (oItem == nullptr) {
      throw Failure(failure::kObjectNotSet, "The given lines hold the item " + zItemNumber +
                                                " under another key than its item number.");
    }
    rows.Value(lQuantity, oItem->Quantity());
    rows.Value(lPrice, oItem->Price());
    rows.Value(lExtendedPrice, oItem->ExtendedPrice());
    rows.Value(lIsPriceModified, oItem->IsPriceModified());
    rows.Value(lIsTaxable, oItem->IsTaxable());
  }
  rows.UpdateBatch();
}

void Database::OrderItem_RemoveItem(std::int32_t lvOrderID, const std::string& zvItemNumber) {
  ClearError(m_oError);
  const Frame frame(*this);
  ExecuteRaw("delete from tblOrderItem where lOrderID = " + Number(lvOrderID) +
                 "and zItemNumber = " + Raw(zvItemNumber),
             {zvItemNumber});
  Order_UpdateTotalPrice(lvOrderID);
}

void Database::OrderDetails_SaveToHistory(std::int32_t lvOrderID) {
  Guarded<void>("Database.OrderDetails_SaveToHistory", std::nullopt, [&] {
    {
      WriteUnit unit(*this);
      if (Count("select count(*) from tblOrder where lOrderID = " + Number(lvOrderID) +
                "and bIsCurrent = True") == 0) {
        SetError(m_oError, OrderingError::errNotCurrentOrder, "");
        return;
      }
      Connection().Execute("update tblOrder set bIsCurrent = False, datSubmitDate = " +
                           Raw(clock::Current().Now().ToStoreText()) +
                           " where lOrderID = " + Number(lvOrderID));
      unit.Commit();
    }
    AfterAll(
        "The order is submitted, but the next one could not be created; loading the current order tries "
        "again: ",
        [&] { CreateCurrentOrder(); });
    ClearError(m_oError);
  });
}

void Database::CreateCurrentOrder() {
  ClearError(m_oError);
  const Frame frame(*this);
  const std::unique_ptr<OrderDefaults> oDefaults = settings::CreateOrderDefaults();
  const auto zText = [&](const char* zKey) { return Escaped(oDefaults->Get(zKey)); };
  const auto zNumber = [&](const char* zKey) { return NumberOfDefault(oDefaults->Get(zKey)); };
  const std::string zSQL =
      "insert into tblOrder (bIsCurrent,zPurchaseOrderNumber, zOIPhoneNumber, zOIEmail, "
      "zDIFirstName, zDILastName, zDICompanyName, zDIAddress1, zDIAddress2, "
      "zDICity, zDIState, zDIStateOr, zDIZipOrPostCode, zDICountry, zDIPhoneNumber, "
      "zDIPhoneExt, zDIFax, zDINotes,zCCFirstName, zCCLastName, zCCCompanyName, "
      "zCCAddress1, zCCAddress2, zCCCity, zCCState, zCCStateOr, zCCZipOrPostCode, "
      "zCCCountry, zCCPhoneNumber, zCCPhoneExt, zCCAccountNumber, zCCFax, "
      "zPIMorvaneAccountNumber,zDICallBranchNumber,zDICallAttention,zDICallPhoneNumber,zDICallPhoneExt, "
      "lDIShippingMethod,lDIDeliveryMethod,lPIPaymentMethod,zOITaxIDNumber,bOIIsTaxExempt,"
      "zPOReleaseNumber, zOIProjectOrJobNumber, zOIRequisitionOrApprovalName, zOIDepartment) "
      "values(" +
      Joined({"True",
              zText(DEFAULT_OI_PO_NUM),
              zText(DEFAULT_OI_PHONE_NUMBER),
              zText(DEFAULT_OI_EMAIL),
              zText(DEFAULT_DI_FIRSTNAME),
              zText(DEFAULT_DI_LASTNAME),
              zText(DEFAULT_DI_COMPANYNAME),
              zText(DEFAULT_DI_ADDRESS1),
              zText(DEFAULT_DI_ADDRESS2),
              zText(DEFAULT_DI_CITY),
              zText(DEFAULT_DI_STATE),
              zText(DEFAULT_DI_STATEOR),
              zText(DEFAULT_DI_ZIP_OR_POSTCODE),
              zText(DEFAULT_DI_COUNTRY),
              zText(DEFAULT_DI_PH0NE_NUMBER),
              zText(DEFAULT_DI_PHONE_EXT),
              zText(DEFAULT_DI_FAX),
              zText(DEFAULT_DI_NOTES),
              zText(DEFAULT_CC_FIRST_NAME),
              zText(DEFAULT_CC_LAST_NAME),
              zText(DEFAULT_CC_COMPANY_NAME),
              zText(DEFAULT_CC_ADDRESS1),
              zText(DEFAULT_CC_ADDRESS2),
              zText(DEFAULT_CC_CITY),
              zText(DEFAULT_CC_STATE),
              zText(DEFAULT_CC_STATE_OR),
              zText(DEFAULT_CC_ZIP_OR_POSTCODE),
              zText(DEFAULT_CC_COUNTRY),
              zText(DEFAULT_CC_PHONE_NUMBER),
              zText(DEFAULT_CC_PHONE_EXT),
              zText(DEFAULT_CC_ACCOUNT_NUMBER),
              zText(DEFAULT_CC_FAX),
              zText(DEFAULT_PI_MORVANE_ACCOUNT_NUMBER),
              zText(DEFAULT_DI_CALL_BRANCH_NUMBER),
              zText(DEFAULT_DI_CALL_ATTENTION),
              zText(DEFAULT_DI_CALL_PHONE_NUMBER),
              zText(DEFAULT_DI_CALL_PHONE_EXT),
              zNumber(DEFAULT_DI_SHIPPING_METHOD),
              zNumber(DEFAULT_DI_DELIVERYMETHOD),
              zNumber(DEFAULT_PI_PAYMENT_METHOD),
              zText(DEFAULT_OI_TAXIDNUMBER),
              Flag(IsTrueText(oDefaults->Get(DEFAULT_OI_ISTAXEXEMPT))),
              zText(DEFAULT_OI_PORELEASE),
              zText(DEFAULT_OI_PROJECTNUMBER),
              zText(DEFAULT_OI_REQNAME),
              zText(DEFAULT_OI_DEPARTMENT)},
             ", ") +
      ")";
  // One unit, so that what the insert met is still there when it is looked for: another program may submit it
  // at once.
  WriteUnit unit(*this);
  try {
    Connection().Execute(zSQL);
  } catch (const Failure& failure) {
    // Two programs that miss the current order at once both come here; the store takes the first one's.
    if (failure.Number() != failure::kStoreCommand || !CurrentOrderExists()) {
      throw;
    }
  }
  unit.Commit();
}

std::int32_t Database::Count(const std::string& zvSQL) {
  return Connection().Execute(zvSQL)->Fields(0).Value().ToInteger();
}

bool Database::CurrentOrderExists() {
  return Count("select count(*) from tblOrder where bIsCurrent = True") != 0;
}

void Database::ApplyDefaultsToCurrentOrder(const std::string& zvCity, const std::string& zvCompanyName,
                                           const std::string& zvAddress1, const std::string& zvAddress2,
                                           const std::string& zvFax, const std::string& zvTelephone,
                                           const std::string& zvTelephoneExt, const std::string& zvCountry,
                                           const std::string& zvEmail, const std::string& zvFirstName,
                                           const std::string& zvLastName, const std::string& zvState,
                                           const std::string& zvStateOr, const std::string& zvZipOrPostCode,
                                           const std::string& zvAccountNumber, const std::string&) {
  Guarded<void>("Database.ApplyDefaultsToCurrentOrder", std::nullopt, [&] {
    const std::unique_ptr<OrderDefaults> oDefaults = settings::CreateOrderDefaults();
    const auto zEither = [&](const char* zKey, const std::string& zRegistered) {
      const std::string zDefault = oDefaults->Get(zKey);
      return Escaped(zDefault.empty() ? zRegistered : zDefault);
    };
    Connection().Execute(
        "update tblOrder set " +
        Assignments({
            {"zOIPhoneNumber", zEither(DEFAULT_OI_PHONE_NUMBER, zvTelephone)},
            {"zOIEmail", zEither(DEFAULT_OI_EMAIL, zvEmail)},
            {"zDIFirstName", zEither(DEFAULT_DI_FIRSTNAME, zvFirstName)},
            {"zDILastName", zEither(DEFAULT_DI_LASTNAME, zvLastName)},
            {"zDICompanyName", zEither(DEFAULT_DI_COMPANYNAME, zvCompanyName)},
            {"zDIAddress1", zEither(DEFAULT_DI_ADDRESS1, zvAddress1)},
            {"zDIAddress2", zEither(DEFAULT_DI_ADDRESS2, zvAddress2)},
            {"zDICity", zEither(DEFAULT_DI_CITY, zvCity)},
            {"zDIState", zEither(DEFAULT_DI_STATE, zvState)},
            {"zDIStateOr", zEither(DEFAULT_DI_STATEOR, zvStateOr)},
            {"zDIZipOrPostCode", zEither(DEFAULT_DI_ZIP_OR_POSTCODE, zvZipOrPostCode)},
            {"zDICountry", zEither(DEFAULT_DI_COUNTRY, zvCountry)},
            {"zDIPhoneNumber", zEither(DEFAULT_DI_PH0NE_NUMBER, zvTelephone)},
            {"zDIPhoneExt", zEither(DEFAULT_DI_PHONE_EXT, zvTelephoneExt)},
            {"zDIFax", zEither(DEFAULT_DI_FAX, zvFax)},
            {"zCCFirstName", zEither(DEFAULT_CC_FIRST_NAME, zvFirstName)},
            {"zCCLastName", zEither(DEFAULT_CC_LAST_NAME, zvLastName)},
            {"zCCCompanyName", zEither(DEFAULT_CC_COMPANY_NAME, zvCompanyName)},
            {"zCCAddress1", zEither(DEFAULT_CC_ADDRESS1, zvAddress1)},
            {"zCCAddress2", zEither(DEFAULT_CC_ADDRESS2, zvAddress2)},
            {"zCCCity", zEither(DEFAULT_CC_CITY, zvCity)},
            {"zCCState", zEither(DEFAULT_CC_STATE, zvState)},
            {"zCCStateOr", zEither(DEFAULT_CC_STATE_OR, zvStateOr)},
            {"zCCZipOrPostCode", zEither(DEFAULT_CC_ZIP_OR_POSTCODE, zvZipOrPostCode)},
            {"zCCCountry", zEither(DEFAULT_CC_COUNTRY, zvCountry)},
            {"zCCPhoneNumber", zEither(DEFAULT_CC_PHONE_NUMBER, zvTelephone)},
            {"zCCPhoneExt", zEither(DEFAULT_CC_PHONE_EXT, zvTelephoneExt)},
            {"zCCAccountNumber", zEither(DEFAULT_CC_ACCOUNT_NUMBER, zvAccountNumber)},
            {"zCCFax", zEither(DEFAULT_CC_FAX, zvFax)},
            {"zPIMorvaneAccountNumber", zEither(DEFAULT_PI_MORVANE_ACCOUNT_NUMBER, zvAccountNumber)},
        }));
  });
}

Currency Database::Order_GetTotalPrice(std::int32_t lvOrderID) {
  ClearError(m_oError);
  const Frame frame(*this);
  const auto rows =
      Connection().Execute("select cTotalPrice from tblOrder where lOrderID = " + Number(lvOrderID));
  if (rows->AtBeginning() && rows->AtEnd()) {
    return {};
  }
  return rows->Fields(0).Value().ToCurrency();
}

std::int32_t Database::OrderDetails_ItemCount(std::int32_t lvOrderID) {
  return Guarded<std::int32_t>("Database.OrderDetails_ItemCount", std::nullopt, [&] {
    return Count("select count(*) from tblOrderItem where lOrderID = " + Number(lvOrderID));
  });
}

std::unique_ptr<ado::Recordset> Database::PersonalLists_GetLists() {
  ClearError(m_oError);
  const Frame frame(*this);
  return Connection().OpenDetached("select lListID, zName from tblPersonalList order by zName");
}

std::int32_t Database::PersonalLists_CreateList(const std::string& zvName) {
  return Guarded<std::int32_t>("Database.PersonalLists_CreateList", OrderingError::errDuplicateList, [&] {
    // One unit, so that the old list stays when the new one cannot be added.
    WriteUnit unit(*this);
    if (ListExists(zvName)) {
      Connection().Execute("delete from tblPersonalList where zName = " + Escaped(zvName));
    }
    const char* const zColumns[] = {"zName"};
    const Variant vValues[] = {zvName};
    const Variant vAdded = Connection().OpenTable("tblPersonalList").AddRow(zColumns, vValues);
    // In a store that lets others write meanwhile the highest id may be another's list.
    Connection().Execute("select max(lListID) from tblPersonalList");
    unit.Commit();
    return vAdded.ToInteger();
  });
}

bool Database::PersonalLists_RenameList(const Variant& lvListID, const Variant& zvNewListName) {
  return Guarded<bool>("Database.PersonalLists_RenameList", OrderingError::errDuplicateList, [&] {
    Connection().Execute("update tblPersonalList set zName = " + Escaped(zvNewListName.ToString()) +
                         " where lListID = " + Number(lvListID.ToInteger()));
    return true;
  });
}

void Database::PersonalLists_RemoveList(std::int32_t lvListID) {
  Guarded<void>("Database.PersonalLists_RemoveList", std::nullopt, [&] {
    Connection().Execute("delete from tblPersonalList where lListID = " + Number(lvListID));
  });
}

bool Database::PersonalLists_RemoveListByName(const Variant& zvListName) {
  return Guarded<bool>("Database.PersonalLists_RemoveListByName", std::nullopt, [&] {
    Connection().Execute("Delete from tblPersonalList WHERE zName = " + Escaped(zvListName.ToString()) + " ");
    return true;
  });
}

bool Database::PersonalLists_ListExists(const Variant& zvName) {
  return Guarded<bool>("Database.PersonalLists_ListExists", std::nullopt,
                       [&] { return ListExists(zvName.ToString()); });
}

bool Database::ListExists(const std::string& zvName) {
  return Count("select count(*) from tblPersonalList where zName = " + Escaped(zvName)) > 0;
}

std::string Database::PersonalLists_GetName(std::int32_t lvListID) {
  return Guarded<std::string>("Database.PersonalLists_GetName", std::nullopt, [&] {
    const auto rows =
        Connection().Execute("select zName from tblPersonalList where lListID = " + Number(lvListID));
    return rows->AtEnd() ? std::string() : rows->Fields("zName").Value().ToString();
  });
}

std::unique_ptr<ado::Recordset> Database::PersonalList_GetSummary(std::int32_t lvListID) {
  ClearError(m_oError);
  Frame frame(*this);
  auto rows =
      Connection().Execute("select zName, lListID from tblPersonalList where lListID = " + Number(lvListID));
  frame.KeepOpen();
  return rows;
}

std::unique_ptr<ado::Recordset> Database::PersonalList_GetItems(std::int32_t lvListID) {
  ClearError(m_oError);
  Frame frame(*this);
  auto rows = Connection().Execute("select * from tblPersonalListItem where lListID = " + Number(lvListID));
  frame.KeepOpen();
  return rows;
}

bool Database::PersonalList_ItemExists(std::int32_t lvListID, const std::string& zvItemNumber) {
  ClearError(m_oError);
  const Frame frame(*this);
  return Count("select count(*) from tblPersonalListItem where zItemNumber = " + Escaped(zvItemNumber) +
               " and lListID = " + Number(lvListID)) != 0;
}

void Database::PersonalList_IncrementQuantity(std::int32_t lvListID, const std::string& zvItemNumber,
                                              std::int32_t lvIncrement) {
  ClearError(m_oError);
  const Frame frame(*this);
  ExecuteRaw("update tblPersonalListItem set lQuantity = lQuantity + " + Number(lvIncrement) +
                 " where lListID = " + Number(lvListID) + " and zItemNumber = " + Raw(zvItemNumber),
             {zvItemNumber});
}

void Database::PersonalList_AddItem(std::int32_t lvListID, const std::string& zvItemNumber,
                                    std::int32_t lvQuantity, const std::string& zvDescription,
                                    const std::string& zvShortDescription, const std::string& zvManufacturer,
                                    const std::string& zvModel, std::int32_t lvSellQuantity,
                                    std::int32_t lvShipQuantity, const std::string& zvUsuallyShips,
                                    bool bvIsTaxable, const std::string& zvCustomerPartNumber,
                                    const std::string& zvCustomerNotes, bool bvHasPartsInfo) {
  Guarded<void>("Database.PersonalList_AddItem", OrderingError::errOrderNotLoaded, [&] {
    ExecuteRaw(
        "insert into tblPersonalListItem (lListID, zItemNumber, lQuantity, zDescription, zShortDescription, "
        "zManufacturer, zModel, lSellQuantity, lShipQuantity, zUsuallyShips, bIsTaxable, "
        "zCustomerPartNumber, zCustomerNotes, bHasPartsInfo) "
        "values (" +
            Joined({Number(lvListID), Escaped(zvItemNumber), Number(lvQuantity), Escaped(zvDescription),
                    Escaped(zvShortDescription), Escaped(zvManufacturer), Escaped(zvModel),
                    Number(lvSellQuantity), Number(lvShipQuantity), Raw(zvUsuallyShips), Flag(bvIsTaxable),
                    Escaped(zvCustomerPartNumber), Escaped(zvCustomerNotes), Flag(bvHasPartsInfo)},
                   ", ") +
            ")",
        {zvUsuallyShips});
  });
}

std::unique_ptr<ado::Recordset> Database::OrderHistory_GetOrders(std::int32_t lvSortOrder) {
  ClearError(m_oError);
  const std::string zSortOrder = SortOrder(kHistorySortOrders, lvSortOrder, "the history");
  const Frame frame(*this);
  return Connection().OpenDetached(
      "select datSubmitDate, zPurchaseOrderNumber, cTotalPrice, lOrderID from tblOrder where bIsCurrent = "
      "False "
      "order by " +
      zSortOrder);
}

void Database::OrderHistory_DeleteOrder(std::int32_t lvOrderID) {
  ClearError(m_oError);
  const Frame frame(*this);
  Connection().Execute("delete from tblOrder where lOrderID = " + Number(lvOrderID) +
                       " and bIsCurrent = False");
}

Variant Database::OrderHistory_ItemExists(const std::string& zvPONumber) {
  return Guarded<Variant>("Database.OrderHistory_ItemExists", std::nullopt, [&] {
    return Variant(Count("select count(*) from tblOrder where zPurchaseOrderNumber = " + Escaped(zvPONumber) +
                         " and bIsCurrent = False") != 0);
  });
}

void Database::UpdateCustPartInfo(const std::vector<std::string>& zvItemNumbers,
                                  const std::vector<std::string>& zvCustomerPartNumbers,
                                  const std::vector<std::string>& zvCustomerNotes, std::int32_t lvOrderID) {
  ClearError(m_oError);
  if (zvItemNumbers.size() != zvCustomerPartNumbers.size() ||
      zvItemNumbers.size() != zvCustomerNotes.size()) {
    throw Failure(failure::kIndexOutOfBounds, "Item numbers, part numbers and notes differ in number.");
  }
  WriteUnit unit(*this);
  for (std::size_t i = 0; i < zvItemNumbers.size(); ++i) {
    ExecuteRaw("UPDATE tblOrderItem SET zCustomerPartNumber=" + Escaped(zvCustomerPartNumbers[i]) +
                   ",zCustomerNotes=" + Escaped(zvCustomerNotes[i]) + " WHERE (lOrderID=" +
                   Number(lvOrderID) + "  AND  zItemNumber=" + Raw(zvItemNumbers[i]) + ");",
               {zvItemNumbers[i]});
  }
  unit.Commit();
}

void Database::deleteCustPartInfo(const std::vector<std::string>& zvCustomerPartNumbers,
                                  std::int32_t lvOrderID) {
  ClearError(m_oError);
  WriteUnit unit(*this);
  for (const std::string& zPartNumber : zvCustomerPartNumbers) {
    Connection().Execute(
        "UPDATE tblOrderItem SET zCustomerPartNumber='',zCustomerNotes='' WHERE zCustomerPartNumber=" +
        Escaped(zPartNumber) + " AND lOrderID=" + Number(lvOrderID));
  }
  unit.Commit();
}

}  // namespace qm_ordering
