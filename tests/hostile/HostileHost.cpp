#include "tests/hostile/HostileHost.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <new>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include "qm_ordering/platform/ado/embedded/EmbeddedSession.h"
#include "tests/support/OrderFields.h"

namespace test {

namespace {

using namespace qm_ordering;
namespace failure = qm_ordering::failure;

const std::set<std::int32_t> kFailureNumbers = {
    failure::kInvalidCall,      failure::kOverflow,           failure::kOutOfMemory,
    failure::kIndexOutOfBounds, failure::kDivisionByZero,     failure::kTypeMismatch,
    failure::kFileAccess,       failure::kPathNotFound,       failure::kObjectNotSet,
    failure::kInvalidNull,      failure::kCannotCreateObject, failure::kDuplicateKey,
    failure::kBadCriterion,     failure::kNoCurrentRow,       failure::kUnknownField,
    failure::kClosedObject,     failure::kStoreCommand,       failure::kStoreNoTable,
    failure::kStoreRowChanged,  failure::kStoreUnavailable,   failure::kXmlCharacter,
    failure::kXmlFragment};

// Columns that ApplyRegistrationSettings writes into every order.
const std::set<std::string> kContactColumns = {
    "zoiphonenumber",   "zoiemail",    "zdifirstname",     "zdilastname",      "zdicompanyname",
    "zdiaddress1",      "zdiaddress2", "zdicity",          "zdistate",         "zdistateor",
    "zdiziporpostcode", "zdicountry",  "zdiphonenumber",   "zdiphoneext",      "zdifax",
    "zccfirstname",     "zcclastname", "zcccompanyname",   "zccaddress1",      "zccaddress2",
    "zcccity",          "zccstate",    "zccstateor",       "zccziporpostcode", "zcccountry",
    "zccphonenumber",   "zccphoneext", "zccaccountnumber", "zccfax",           "zpimorvaneaccountnumber"};

// A property of a class: sets it and says whether it then holds just that value.
template <typename Object>
struct Property {
  const char* Name;
  std::function<bool(Object&, HostileValues&, std::string&)> Set;
};

template <typename Object, typename Result, typename Argument>
Property<Object> Member(const char* zvName, Result (Object::*pGet)() const, void (Object::*pSet)(Argument)) {
  using Value = std::remove_cvref_t<Argument>;
  return {zvName, [=](Object& object, HostileValues& values, std::string& zrShown) {
            const auto value = values.Next<Value>();
            zrShown = Shown(value);
            (object.*pSet)(value);
            return (object.*pGet)() == value;
          }};
}

#define QM_PROPERTY(CLASS, NAME) Member(#CLASS "." #NAME, &CLASS::NAME, &CLASS::NAME)

const std::vector<Property<OrderItem>>& ItemProperties() {
  static const std::vector<Property<OrderItem>> properties = {QM_PROPERTY(OrderItem, OrderID),
                                                              QM_PROPERTY(OrderItem, ItemNumber),
                                                              QM_PROPERTY(OrderItem, Quantity),
                                                              QM_PROPERTY(OrderItem, Description),
                                                              QM_PROPERTY(OrderItem, ShortDescription),
                                                              QM_PROPERTY(OrderItem, Manufacturer),
                                                              QM_PROPERTY(OrderItem, Model),
                                                              QM_PROPERTY(OrderItem, ShipQuantity),
                                                              QM_PROPERTY(OrderItem, SellQuantity),
                                                              QM_PROPERTY(OrderItem, UsuallyShips),
                                                              QM_PROPERTY(OrderItem, IsTaxable),
                                                              QM_PROPERTY(OrderItem, Price),
                                                              QM_PROPERTY(OrderItem, ExtendedPrice),
                                                              QM_PROPERTY(OrderItem, IsPriceModified),
                                                              QM_PROPERTY(OrderItem, CustomerPartNumber),
                                                              QM_PROPERTY(OrderItem, CustomerNotes),
                                                              QM_PROPERTY(OrderItem, HasContractItem),
                                                              QM_PROPERTY(OrderItem, HasNotes),
                                                              QM_PROPERTY(OrderItem, HasPartsInfo)};
  return properties;
}

const std::vector<Property<OrderDetails>>& OrderProperties() {
  static const std::vector<Property<OrderDetails>> properties = {
      QM_PROPERTY(OrderDetails, TotalPrice), QM_PROPERTY(OrderDetails, SubmitDate),
      QM_PROPERTY(OrderDetails, PurchaseOrderNumber)};
  return properties;
}

const std::vector<Property<OrderInformation>>& InformationProperties() {
  static const std::vector<Property<OrderInformation>> properties = {
      QM_PROPERTY(OrderInformation, PORelease),
      QM_PROPERTY(OrderInformation, ProjectOrJobNumber),
      QM_PROPERTY(OrderInformation, RequisitionOrApprovalName),
      QM_PROPERTY(OrderInformation, Department),
      QM_PROPERTY(OrderInformation, Attention),
      QM_PROPERTY(OrderInformation, PhoneNumber),
      QM_PROPERTY(OrderInformation, Email),
      QM_PROPERTY(OrderInformation, IsTaxExempt),
      QM_PROPERTY(OrderInformation, TaxIDNumber)};
  return properties;
}

const std::vector<Property<DeliveryInformation>>& DeliveryProperties() {
  static const std::vector<Property<DeliveryInformation>> properties = {
      QM_PROPERTY(DeliveryInformation, DeliveryMethod),
      QM_PROPERTY(DeliveryInformation, FirstName),
      QM_PROPERTY(DeliveryInformation, LastName),
      QM_PROPERTY(DeliveryInformation, CompanyName),
      QM_PROPERTY(DeliveryInformation, Address1),
      QM_PROPERTY(DeliveryInformation, Address2),
      QM_PROPERTY(DeliveryInformation, City),
      QM_PROPERTY(DeliveryInformation, State),
      QM_PROPERTY(DeliveryInformation, StateOr),
      QM_PROPERTY(DeliveryInformation, ZipOrPostCode),
      QM_PROPERTY(DeliveryInformation, Country),
      QM_PROPERTY(DeliveryInformation, PhoneNumber),
      QM_PROPERTY(DeliveryInformation, PhoneExt),
      QM_PROPERTY(DeliveryInformation, Fax),
      QM_PROPERTY(DeliveryInformation, Notes),
      QM_PROPERTY(DeliveryInformation, ShippingMethod),
      QM_PROPERTY(DeliveryInformation, CallBranchNumber),
      QM_PROPERTY(DeliveryInformation, CallAttention),
      QM_PROPERTY(DeliveryInformation, CallPhoneNumber),
      QM_PROPERTY(DeliveryInformation, CallPhoneExt)};
  return properties;
}

const std::vector<Property<PaymentInformation>>& PaymentProperties() {
  static const std::vector<Property<PaymentInformation>> properties = {
      QM_PROPERTY(PaymentInformation, Method), QM_PROPERTY(PaymentInformation, MorvaneAccountNumber)};
  return properties;
}

const std::vector<Property<CreditCardDetails>>& CardProperties() {
  static const std::vector<Property<CreditCardDetails>> properties = {
      QM_PROPERTY(CreditCardDetails, CardType),
      QM_PROPERTY(CreditCardDetails, AccountNumber),
      QM_PROPERTY(CreditCardDetails, FirstName),
      QM_PROPERTY(CreditCardDetails, LastName),
      QM_PROPERTY(CreditCardDetails, CompanyName),
      QM_PROPERTY(CreditCardDetails, Address1),
      QM_PROPERTY(CreditCardDetails, Address2),
      QM_PROPERTY(CreditCardDetails, City),
      QM_PROPERTY(CreditCardDetails, State),
      QM_PROPERTY(CreditCardDetails, StateOr),
      QM_PROPERTY(CreditCardDetails, ZipOrPostCode),
      QM_PROPERTY(CreditCardDetails, Country),
      QM_PROPERTY(CreditCardDetails, PhoneNumber),
      QM_PROPERTY(CreditCardDetails, PhoneExt),
      QM_PROPERTY(CreditCardDetails, Fax),
      QM_PROPERTY(CreditCardDetails, CardNumber),
      QM_PROPERTY(CreditCardDetails, ExpiryMonth),
      QM_PROPERTY(CreditCardDetails, ExpiryYear),
      QM_PROPERTY(CreditCardDetails, CardHoldersRef),
      QM_PROPERTY(CreditCardDetails, Comment1),
      QM_PROPERTY(CreditCardDetails, Comment2),
      QM_PROPERTY(CreditCardDetails, Comment3),
      QM_PROPERTY(CreditCardDetails, Comment4)};
  return properties;
}

#undef QM_PROPERTY

bool IsPartOf(const std::set<std::string>& zvColumns, const std::set<std::string>& zvAll) {
  return std::ranges::includes(zvAll, zvColumns);
}

std::string ShownNumber(const std::string& zvStored) {
  const std::size_t lMarker = zvStored.find("DUP");
  if (lMarker == std::string::npos) {
    return zvStored;
  }
  const std::string zShown = zvStored.substr(0, lMarker);
  const std::size_t lFirst = zShown.find_first_not_of(' ');
  return lFirst == std::string::npos ? "" : zShown.substr(lFirst, zShown.find_last_not_of(' ') - lFirst + 1);
}

bool TellsEachCall() {
  // For a crash, which no list of calls survives.
  static const bool bTells = std::getenv("QM_ORDERING_HOSTILE_TELL") != nullptr;
  return bTells;
}

}  // namespace

HostileHost::HostileHost(std::string zvFolder, MemorySettings& settings)
    : m_zFolder(std::move(zvFolder)), m_oSettings(settings), m_oValues(0) {
  StoreFile(StorePath())
      .Run(
          "insert into tblOrder (lOrderID, datSubmitDate, zPurchaseOrderNumber, zDINotes, cTotalPrice) "
          "values "
          "(1, '2001-02-03 04:05:06', 'canary', 'sings', 50000); "
          "insert into tblOrderItem (lOrderID, zItemNumber, lQuantity, zCustomerNotes, cPrice, "
          "cExtendedPrice) "
          "values (1, 'A1', 5, 'sings too', 10000, 50000); "
          "insert into tblPersonalList (zName) values ('canary''s list'); "
          "insert into tblPersonalListItem (lListID, zItemNumber, lQuantity) values (1, 'A1', 7)");
  ado::embedded::CloseIdleSessions();
  m_zPristine = ReadFile(StorePath());
  OpenObserver();
  LookAnew();
  m_oBefore = m_oAfter;
  m_oSettings.Before = [this](const std::string&) {
    if (m_lUntilSettingsThrow >= 0 && m_lUntilSettingsThrow-- == 0) {
      m_bThrown = true;
      switch (m_lThrownNumber) {
        case failure::kInvalidCall:
          throw std::runtime_error("the component's own");
        case failure::kOutOfMemory:
          throw std::bad_alloc();
        case 0:
          throw 5;
        default:
          throw Failure(m_lThrownNumber, "the component's failure");
      }
    }
  };
  SetStatementTrace([this](const std::string&) {
    if (m_lUntilTraceThrows >= 0 && m_lUntilTraceThrows-- == 0) {
      m_bThrown = true;
      switch (m_lThrownNumber) {
        case failure::kInvalidCall:
          throw std::runtime_error("the trace's own");
        case failure::kOutOfMemory:
          throw std::bad_alloc();
        case 0:
          throw "a word";
        default:
          throw Failure(m_lThrownNumber, "the trace's failure");
      }
    }
  });
}

HostileHost::~HostileHost() {
  SetStatementTrace(nullptr);
  m_oSettings.Before = nullptr;
}

std::string HostileHost::Work(std::uint64_t lvSeed, int lvCalls) {
  try {
    Begin(lvSeed);
    for (int i = 0; i < lvCalls && m_zWrong.empty(); ++i) {
      Step();
    }
    End();
  } catch (const std::exception& error) {
    Expect(false, std::string("the host itself failed: ") + error.what());
  }
  return m_zWrong;
}

std::string HostileHost::Calls() const {
  std::string zAll;
  for (const std::string& zCall : m_zCalls) {
    zAll += zCall + "\n";
  }
  return zAll;
}

void HostileHost::Begin(std::uint64_t lvSeed) {
  m_oValues = HostileValues(lvSeed);
  m_zCalls.clear();
  m_zWrong.clear();
  m_lUntilTraceThrows = m_lUntilSettingsThrow = -1;
  // Each sequence is one that a seed repeats: it begins with the canary alone, and with no order default.
  m_oSettings.Defaults.clear();
  m_oSettings.Registration = {};
  if (m_oAfter->Orders.size() > 1) {
    m_oObserver->Run("delete from tblOrder where lOrderID <> 1");
  }
  if (m_oAfter->Lists.size() > 1) {
    m_oObserver->Run("delete from tblPersonalList where lListID <> 1");
  }
  m_oObserver->Run("update sqlite_sequence set seq = 1");
  std::filesystem::remove(ListsPath());
  m_zListsFile.clear();
  LookAnew();
  m_oBefore = m_oAfter;
  if (m_oValues.Once(10)) {
    ado::embedded::CloseIdleSessions();
  }
  MakeOrder();
}

void HostileHost::End() {
  m_lUntilTraceThrows = m_lUntilSettingsThrow = -1;
  if (m_zWrong.empty()) {
    const auto findings = CheckOrderStore();
    std::vector<std::string> expected;
    for (const auto& [lOrderID, order] : m_oAfter->Orders) {
      const WideInteger lSum = order.Sum();
      const std::string zOrder = "order " + std::to_string(lOrderID) + ": ";
      if (lSum > INT64_MAX || lSum < INT64_MIN) {
        expected.push_back(zOrder + "the sum of its lines is beyond the range of money");
      } else if (lSum != order.Total()) {
        expected.push_back(zOrder + "its total is " + Currency::FromScaled(order.Total()).ToString() +
                           ", its lines add up to " +
                           Currency::FromScaled(static_cast<std::int64_t>(lSum)).ToString());
      }
    }
    std::string zFindings;
    for (const std::string& zFinding : findings) {
      zFindings += zFinding + "; ";
    }
    Expect(findings == expected, "the store's check says: " + zFindings);
  }
  m_oOrders.clear();
  m_oItems.clear();
  m_oCollections.clear();
  m_oCatalogues.clear();
  m_oLists.clear();
  m_oHistories.clear();
  m_oPreviousOrders.clear();
  m_oSettings.Calls.clear();
}

void HostileHost::Step() {
  using Action = void (HostileHost::*)();
  // A call and its share.
  static constexpr std::array<std::pair<Action, unsigned>, 48> kActions = {{
      {&HostileHost::MakeOrder, 3},         {&HostileHost::ChooseOrder, 2},
      {&HostileHost::SetHeader, 9},         {&HostileHost::SetItem, 9},
      {&HostileHost::MakeItem, 8},          {&HostileHost::CollectItem, 6},
      {&HostileHost::FindItem, 2},          {&HostileHost::WalkCollection, 2},
      {&HostileHost::LoadSummary, 5},       {&HostileHost::LoadItems, 6},
      {&HostileHost::AddItem, 16},          {&HostileHost::UpdateItems, 6},
      {&HostileHost::RemoveItem, 4},        {&HostileHost::ClearItems, 1},
      {&HostileHost::CountItems, 1},        {&HostileHost::AskForItem, 2},
      {&HostileHost::SaveSummary, 5},       {&HostileHost::SavePONumber, 3},
      {&HostileHost::SaveToHistory, 3},     {&HostileHost::ApplyRegistration, 2},
      {&HostileHost::Document, 3},          {&HostileHost::ValidateItem, 2},
      {&HostileHost::ValidateHeader, 2},    {&HostileHost::MakeObject, 1},
      {&HostileHost::Calculate, 3},         {&HostileHost::Convert, 3},
      {&HostileHost::MakeDate, 1},          {&HostileHost::StoreFunctions, 1},
      {&HostileHost::SettingsFunctions, 1}, {&HostileHost::ThrowFromTrace, 2},
      {&HostileHost::ThrowFromSettings, 2}, {&HostileHost::FillSettings, 2},
      {&HostileHost::DeleteStore, 1},       {&HostileHost::ReplaceStore, 1},
      {&HostileHost::CreateList, 6},        {&HostileHost::RenameList, 3},
      {&HostileHost::RemoveList, 3},        {&HostileHost::AskForList, 2},
      {&HostileHost::LoadLists, 3},         {&HostileHost::ListsDocument, 1},
      {&HostileHost::SaveListsFile, 3},     {&HostileHost::ChooseList, 4},
      {&HostileHost::AddToList, 8},         {&HostileHost::LoadListSummary, 3},
      {&HostileHost::LoadListItems, 3},     {&HostileHost::LoadHistory, 2},
      {&HostileHost::DeleteFromHistory, 2}, {&HostileHost::UsePreviousOrder, 3},
  }};
  static const unsigned lShares = [] {
    unsigned lSum = 0;
    for (const auto& [action, lShare] : kActions) {
      lSum += lShare;
    }
    return lSum;
  }();
  auto lPick = static_cast<unsigned>(m_oValues.Pick(lShares));
  for (const auto& [action, lShare] : kActions) {
    if (lPick < lShare) {
      (this->*action)();
      return;
    }
    lPick -= lShare;
  }
}

void HostileHost::Expect(bool bvHolds, const std::string& zvWhat) {
  if (!bvHolds) {
    m_zWrong += (m_zCalls.empty() ? "" : m_zCalls.back()) + ": " + zvWhat + "\n";
  }
}

void HostileHost::ExpectSame(const std::string& zvColumn, const std::string& zvHeld,
                             const std::string& zvStored) {
  if (zvHeld != zvStored) {
    Expect(false, zvColumn + " is " + Shown(zvHeld) + " but stored is " + Shown(zvStored));
  }
}

HostileHost::Outcome HostileHost::Call(const std::string& zvName, const std::string& zvArguments,
                                       Numbers allowed, const std::function<void()>& call,
                                       const Order* order) {
  m_zCalls.push_back(zvName + "(" + zvArguments + ")");
  if (TellsEachCall()) {
    std::cerr << m_zCalls.back() << std::endl;
  }
  ++m_lCallCounts[zvName];
  m_bThrown = false;
  ClearLastFailure();
  Outcome outcome;
  std::string zRaised;
  try {
    call();
  } catch (const Failure& raised) {
    outcome.Raised = raised.Number();
    zRaised = raised.Description();
    Expect(!zRaised.empty(), "a failure without a description");
  } catch (const std::exception& other) {
    Expect(false, std::string("left by another exception: ") + other.what());
  } catch (...) {
    Expect(false, "left by something that is no exception");
  }
  if (outcome.Raised != 0) {
    m_zCalls.back() += " raised " + std::to_string(outcome.Raised);
    ++m_lRaisedCounts[outcome.Raised];
    const bool bAllowed = std::ranges::find(allowed, outcome.Raised) != allowed.end();
    const bool bStoreGone = !StoreThere() && outcome.Raised == failure::kStoreUnavailable;
    const bool bThrown =
        m_bThrown && outcome.Raised == (m_lThrownNumber == 0 ? failure::kInvalidCall : m_lThrownNumber);
    Expect(kFailureNumbers.contains(outcome.Raised) && (bAllowed || bStoreGone || bThrown),
           "raised " + std::to_string(outcome.Raised) + ": " + zRaised);
  }
  const LastFailureInfo last = LastFailure();
  Expect(last.Number == 0 || kFailureNumbers.contains(last.Number),
         "the last failure has the number " + std::to_string(last.Number));
  if (order != nullptr) {
    outcome.Record = order->Facade ? order->Facade->Error() : order->Details->Error();
    for (const ErrorInfo& record : {outcome.Record, order->Details->Error()}) {
      Expect(record.Number >= 0 && record.Number <= 5 && (record.Number == 0) == record.Description.empty(),
             "the record is " + std::to_string(record.Number) + " " + record.Description);
    }
    ++m_lRecordedCounts[outcome.Record.Number];
    if (outcome.Record.Number != 0) {
      m_zCalls.back() += " recorded " + std::to_string(outcome.Record.Number) + " " +
                         outcome.Record.Description.substr(0, 100);
    }
  }
  Look();
  return outcome;
}

HostileHost::Outcome HostileHost::Read(const std::string& zvName, const std::string& zvArguments,
                                       Numbers allowed, const std::function<void()>& call,
                                       const Order* order) {
  const Outcome outcome = Call(zvName, zvArguments, allowed, call, order);
  ExpectUnchanged();
  return outcome;
}

void HostileHost::Look() {
  m_oBefore = m_oAfter;
  if (!StoreThere()) {
    Expect(!std::filesystem::exists(StorePath()), "a store came into being where none was");
    return;
  }
  if (m_oObserver->HasChanged()) {
    LookAnew();
    int lCurrent = 0;
    for (const auto& [lOrderID, order] : m_oAfter->Orders) {
      lCurrent += order.IsCurrent() ? 1 : 0;
    }
    Expect(lCurrent <= 1, std::to_string(lCurrent) + " current orders");
    Expect(m_bOnLists || m_oAfter->Lists == m_oBefore->Lists, "a list has changed");
    Expect(m_oAfter->Lists.at(kCanary) == m_oBefore->Lists.at(kCanary), "the canary's list has changed");
  }
}

void HostileHost::LookAnew() {
  m_oAfter = std::make_shared<const StoredState>(m_oObserver->Read());
}

bool HostileHost::IsUnchanged() const {
  return m_oAfter == m_oBefore || *m_oAfter == *m_oBefore;
}

void HostileHost::ExpectUnchanged() {
  Expect(IsUnchanged(), "changed the store");
}

void HostileHost::ExpectOthersUnchanged(std::int32_t lvOrderID) {
  if (m_oAfter == m_oBefore) {
    return;
  }
  for (const auto& [lOrderID, order] : m_oBefore->Orders) {
    const StoredOrder* pAfter = m_oAfter->Find(lOrderID);
    if (pAfter == nullptr) {
      Expect(false, "the order " + std::to_string(lOrderID) + " has gone");
    } else if (lOrderID != lvOrderID && *pAfter != order) {
      Expect(false, "the order " + std::to_string(lOrderID) + " has changed");
    }
  }
  Expect(m_oAfter->Orders.size() == m_oBefore->Orders.size(), "an order has come");
}

void HostileHost::ExpectHeaderChanges(std::int32_t lvOrderID, const std::set<std::string>& zvColumns) {
  const StoredOrder* pBefore = m_oBefore->Find(lvOrderID);
  const StoredOrder* pAfter = m_oAfter->Find(lvOrderID);
  if (pBefore != nullptr && pAfter != nullptr) {
    Expect(IsPartOf(pBefore->Header.Changes(pAfter->Header), zvColumns),
           "other values of the header changed");
    Expect(pBefore->Lines == pAfter->Lines, "lines changed");
  }
}

void HostileHost::ExpectAtMostANewCurrentOrder() {
  if (IsUnchanged()) {
    return;
  }
  StoredState after = *m_oAfter;
  if (m_oAfter->Orders.size() > m_oBefore->Orders.size()) {
    const auto last = std::prev(after.Orders.end());
    Expect(!m_oBefore->Current() && last->second.IsCurrent() && last->second.Lines.empty(),
           "an order has come which is not the one new current one");
    after.Orders.erase(last);
  }
  Expect(after == *m_oBefore, "changed more than a new current order");
}

void HostileHost::ExpectHeaderAsStored(const Order& order) {
  const StoredOrder* pStored = m_oAfter->Find(order.Details->OrderID());
  if (pStored == nullptr) {
    Expect(false, "the order is not stored");
    return;
  }
  for (const auto& field : HeaderFields()) {
    ExpectSame(field.Column, field.Get(*order.Details), TextOf(pStored->Header, field.Column));
  }
}

void HostileHost::ExpectTotalUpToDate(std::int32_t lvOrderID) {
  if (const StoredOrder* pStored = m_oAfter->Find(lvOrderID)) {
    Expect(pStored->Sum() == pStored->Total(), "the stored total is not the sum of the lines");
  }
}

void HostileHost::ExpectLine(const StoredRow& line, const OrderItem& item) {
  for (const auto& field : LineFields()) {
    ExpectSame(field.Column, field.Get(item), TextOf(line, field.Column));
  }
}

void HostileHost::ExpectLinesAsStored(const Order& order) {
  const StoredOrder* pStored = m_oAfter->Find(order.Details->OrderID());
  const std::size_t lStored = pStored == nullptr ? 0 : pStored->Lines.size();
  const auto oItems = order.Details->OrderItems();
  Expect(static_cast<std::size_t>(oItems->Count()) == lStored, "not as many lines as are stored");
  if (pStored == nullptr) {
    return;
  }
  for (const auto& [lEntered, line] : pStored->Lines) {
    const std::string zNumber = TextOf(line, "zItemNumber");
    const auto oItem = oItems->Item(zNumber);
    Expect(oItem != nullptr, "the line " + Shown(zNumber) + " is missing");
    if (oItem != nullptr) {
      StoredRow shown = line;
      shown.Set("zitemnumber", ShownNumber(zNumber));
      ExpectLine(shown, *oItem);
    }
  }
}

HostileHost::Order& HostileHost::AnyOrder() {
  return m_oOrders[m_oValues.Pick(m_oOrders.size())];
}

std::shared_ptr<OrderItem> HostileHost::NewItem() {
  auto oItem = std::make_shared<OrderItem>();
  oItem->ItemNumber(m_oValues.ItemNumber());
  oItem->Quantity(m_oValues.Quantity());
  oItem->Price(m_oValues.Amount());
  oItem->SellQuantity(m_oValues.Quantity());
  oItem->ShipQuantity(m_oValues.Quantity());
  if (m_oValues.Once(2)) {
    oItem->UsuallyShips(m_oValues.Text());
    oItem->Description(m_oValues.Text());
    oItem->CustomerNotes(m_oValues.Text());
    oItem->IsTaxable(m_oValues.Flag());
    oItem->HasNotes(m_oValues.Flag());
  }
  return oItem;
}

std::shared_ptr<OrderItem> HostileHost::AnyItem() {
  if (m_oValues.Once(30)) {
    return nullptr;
  }
  if (m_oItems.empty() || m_oValues.Once(3)) {
    m_oItems.push_back(NewItem());
    return m_oItems.back();
  }
  return m_oItems[m_oValues.Pick(m_oItems.size())];
}

std::shared_ptr<OrderItems> HostileHost::AnyCollection() {
  if (m_oValues.Once(30)) {
    return nullptr;
  }
  if (m_oValues.Once(3)) {
    return AnyOrder().Details->OrderItems();
  }
  if (m_oCollections.empty() || m_oValues.Once(4)) {
    m_oCollections.push_back(std::make_shared<OrderItems>());
  }
  return m_oCollections[m_oValues.Pick(m_oCollections.size())];
}

void HostileHost::MakeOrder() {
  Order order;
  if (m_oOrders.empty() || m_oValues.Once(2)) {
    Call("CurrentOrder", "", {}, [&] { order.Facade = std::make_shared<CurrentOrder>(); });
    ExpectAtMostANewCurrentOrder();
    if (order.Facade == nullptr) {
      return;
    }
    Expect(order.Facade->Error() == ErrorInfo(), "a new facade's record is not clear");
    order.Details = order.Facade->OrderDetails();
    if (order.Details->Error().Number == 0) {
      ExpectHeaderAsStored(order);
    } else {
      Expect(m_bThrown || !StoreThere() || !m_oSettings.Defaults.empty(),
             "not loaded: " + order.Details->Error().Description);
    }
  } else {
    Read("OrderDetails", "", {}, [&] { order.Details = std::make_shared<OrderDetails>(); });
    if (order.Details == nullptr) {
      return;
    }
  }
  if (m_oOrders.size() == 4) {
    m_oOrders.erase(m_oOrders.begin());
  }
  m_oOrders.push_back(std::move(order));
}

// Another order for an object, or one that there is not: whatever the object is asked to do it then does to
// that one.
void HostileHost::ChooseOrder() {
  std::int32_t lOrderID = m_oValues.Integer();
  if (m_oValues.Once(2) && !m_oAfter->Orders.empty()) {
    lOrderID = std::next(m_oAfter->Orders.begin(),
                         static_cast<std::ptrdiff_t>(m_oValues.Pick(m_oAfter->Orders.size())))
                   ->first;
  }
  if (lOrderID == kCanary) {
    return;
  }
  Order& order = AnyOrder();
  Read("OrderDetails.OrderID", Shown(lOrderID), {}, [&] { order.Details->OrderID(lOrderID); });
  Expect(order.Details->OrderID() == lOrderID, "is another id");
}

void HostileHost::SetHeader() {
  const Order& order = AnyOrder();
  const auto set = [&](auto& object, const auto& properties) {
    const auto& property = properties[m_oValues.Pick(properties.size())];
    std::string zShown;
    bool bKept = false;
    // The value is part of what the list of calls shows, so the call comes first.
    Read(property.Name, "...", {}, [&] { bKept = property.Set(object, m_oValues, zShown); });
    m_zCalls.back() += " " + zShown;
    Expect(bKept, "the value is not kept");
  };
  if (!order.Loaded() || m_oValues.Once(4)) {
    set(*order.Details, OrderProperties());
    return;
  }
  switch (m_oValues.Pick(4)) {
    case 0:
      set(*order.Details->OrderInformation(), InformationProperties());
      break;
    case 1:
      set(*order.Details->DeliveryInformation(), DeliveryProperties());
      break;
    case 2:
      set(*order.Details->PaymentInformation(), PaymentProperties());
      break;
    default:
      set(*order.Details->PaymentInformation()->CreditCardDetails(), CardProperties());
      break;
  }
}

void HostileHost::SetItem() {
  const auto oItem = AnyItem();
  if (oItem == nullptr) {
    return;
  }
  const auto& property = ItemProperties()[m_oValues.Pick(ItemProperties().size())];
  std::string zShown;
  bool bKept = false;
  Read(property.Name, "...", {}, [&] { bKept = property.Set(*oItem, m_oValues, zShown); });
  m_zCalls.back() += " " + zShown;
  Expect(bKept, "the value is not kept");
}

void HostileHost::MakeItem() {
  std::shared_ptr<OrderItem> oItem;
  Read("OrderItem", "", {}, [&] { oItem = NewItem(); });
  if (oItem != nullptr) {
    m_zCalls.back() +=
        " " + Shown(oItem->ItemNumber()) + " " + Shown(oItem->Quantity()) + " x " + Shown(oItem->Price());
    m_oItems.push_back(oItem);
  }
}

void HostileHost::CollectItem() {
  const auto oCollection = AnyCollection();
  const auto oItem = AnyItem();
  if (oCollection == nullptr) {
    return;
  }
  const std::string zKey =
      oItem == nullptr || m_oValues.Once(4) ? m_oValues.ItemNumber() : oItem->ItemNumber();
  const std::int32_t lCount = oCollection->Count();
  const Outcome outcome =
      Read("OrderItems.Add", (oItem == nullptr ? "null, " : "") + Shown(zKey),
           {failure::kObjectNotSet, failure::kDuplicateKey}, [&] { oCollection->Add(oItem, zKey); });
  Expect(oCollection->Count() == lCount + (outcome.Good() ? 1 : 0), "the count is wrong");
  Expect((oItem == nullptr) == (outcome.Raised == failure::kObjectNotSet), "a null reference");
  if (outcome.Good()) {
    Expect(oCollection->Item(zKey) == oItem && oCollection->Item(lCount + 1) == oItem,
           "the item is not found");
  }
}

void HostileHost::FindItem() {
  const auto oCollection = AnyCollection();
  if (oCollection == nullptr) {
    return;
  }
  const Variant vKey = m_oValues.Value();
  std::shared_ptr<OrderItem> oFound;
  Read("OrderItems.Item", "", {}, [&] { oFound = oCollection->Item(vKey); });
  const VariantKind kind = vKey.Kind();
  Expect(oFound == nullptr || kind == VariantKind::String || kind == VariantKind::Integer ||
             kind == VariantKind::Double || kind == VariantKind::Currency,
         "found by no key and no position");
}

void HostileHost::WalkCollection() {
  const auto oCollection = AnyCollection();
  if (oCollection == nullptr) {
    return;
  }
  std::int32_t lMet = 0;
  const std::int32_t lBefore = oCollection->Count();
  std::int32_t lAdded = 0;
  Read("OrderItems.NewEnum", "", {}, [&] {
    for (const auto& oItem : oCollection->NewEnum()) {
      ++lMet;
      if (lAdded < 3) {
        const std::string zKey = "walk " + std::to_string(m_zCalls.size()) + "." + std::to_string(lAdded);
        oCollection->Add(oItem, zKey);
        ++lAdded;
      }
    }
  });
  Expect(lMet == lBefore + lAdded, "a member was not met, or met twice");
}

void HostileHost::LoadSummary() {
  const Order& order = AnyOrder();
  const bool bFacade = order.Facade != nullptr && m_oValues.Once(2);
  const bool bCurrent = bFacade || m_oValues.Once(2);
  const std::int32_t lOrderID = order.Details->OrderID();
  const Outcome outcome = Call(
      bFacade ? "CurrentOrder.LoadSummary" : "OrderDetails.LoadSummary", Shown(bCurrent), {},
      [&] { bFacade ? order.Facade->LoadSummary() : order.Details->LoadSummary(bCurrent); }, &order);
  if (!bCurrent) {
    ExpectUnchanged();
  } else {
    ExpectAtMostANewCurrentOrder();
  }
  const ErrorInfo record = order.Details->Error();
  if (record.Number == 0) {
    ExpectHeaderAsStored(order);
    Expect(order.Details->OrderID() == (bCurrent ? m_oAfter->Current().value_or(-1) : lOrderID),
           "loaded another order");
  } else if (StoreThere() && !m_bThrown) {
    const bool bStored = m_oAfter->Find(lOrderID) != nullptr;
    // A default that is not UTF-8 keeps a current order from being made.
    Expect(bCurrent ? record.Number == 5 && !m_oAfter->Current() && !m_oSettings.Defaults.empty()
                    : record.Number == 3 && !bStored,
           "not loaded: " + record.Description);
  }
  static_cast<void>(outcome);
}

void HostileHost::LoadItems() {
  const Order& order = AnyOrder();
  const bool bFacade = order.Facade != nullptr && m_oValues.Once(2);
  const std::int32_t lSort =
      m_oValues.Once(4) ? m_oValues.Integer() : static_cast<std::int32_t>(m_oValues.Pick(7));
  const bool bCurrent = bFacade || m_oValues.Once(2);
  const bool bValidate = bFacade || m_oValues.Once(3);
  const auto oOld = order.Details->OrderItems();
  const Outcome outcome = Read(
      bFacade ? "CurrentOrder.LoadItems" : "OrderDetails.LoadItems",
      Shown(lSort) + ", " + Shown(bCurrent) + ", " + Shown(bValidate),
      {failure::kIndexOutOfBounds, failure::kObjectNotSet, failure::kDivisionByZero},
      [&] {
        bFacade ? order.Facade->LoadItems(lSort) : order.Details->LoadItems(lSort, bCurrent, bValidate);
      },
      &order);
  Expect(order.Details->OrderItems() != oOld, "the collection was not replaced");
  Expect((outcome.Raised == failure::kIndexOutOfBounds) == (lSort < 0 || lSort > 6),
         "the order of the lines");
  if (outcome.Raised == 0) {
    const bool bOfThis = !bCurrent || m_oAfter->Current() == order.Details->OrderID();
    if (bOfThis) {
      ExpectLinesAsStored(order);
    }
  }
}

void HostileHost::AddItem() {
  const Order& order = AnyOrder();
  const bool bFacade = order.Facade != nullptr && m_oValues.Once(2);
  const auto oItem = AnyItem();
  const std::int32_t lOrderID = order.Details->OrderID();
  const ErrorInfo recordBefore = order.Details->Error();
  const Outcome outcome = Call(
      bFacade ? "CurrentOrder.AddItem" : "OrderDetails.AddItem",
      oItem == nullptr ? "null"
                       : Shown(oItem->ItemNumber()) + " " + Shown(oItem->Quantity()) + " x " +
                             Shown(oItem->Price()) + " to " + Shown(lOrderID),
      {failure::kObjectNotSet, failure::kOverflow, failure::kDuplicateKey, failure::kStoreCommand},
      [&] { bFacade ? order.Facade->AddItem(oItem) : order.Details->AddItem(oItem); }, &order);
  ExpectOthersUnchanged(lOrderID);
  const StoredOrder* pBefore = m_oBefore->Find(lOrderID);
  const StoredOrder* pAfter = m_oAfter->Find(lOrderID);
  if (oItem == nullptr || pBefore == nullptr || pAfter == nullptr) {
    ExpectUnchanged();
    return;
  }
  Expect(IsPartOf(pBefore->Header.Changes(pAfter->Header), {"ctotalprice"}), "the header changed");
  std::size_t lNew = 0;
  std::size_t lMerged = 0;
  for (const auto& [lEntered, line] : pAfter->Lines) {
    const auto before = pBefore->Lines.find(lEntered);
    if (before == pBefore->Lines.end()) {
      ++lNew;
      StoredRow given = line;
      given.Set("bhascontractitem", oItem->HasContractItem() ? "-1" : "0");
      ExpectLine(given, *oItem);
    } else if (before->second != line) {
      ++lMerged;
      Expect(IsPartOf(before->second.Changes(line), {"lquantity", "cprice", "cextendedprice"}),
             "a line's other values changed");
      Expect(NumberOf(line, "lquantity") == NumberOf(before->second, "lquantity") + oItem->Quantity() &&
                 NumberOf(line, "cprice") == oItem->Price().Scaled() &&
                 static_cast<WideInteger>(NumberOf(line, "cextendedprice")) ==
                     static_cast<WideInteger>(NumberOf(line, "cprice")) * NumberOf(line, "lquantity"),
             "the merged line is wrong");
    }
  }
  Expect(pAfter->Lines.size() == pBefore->Lines.size() + lNew, "a line has gone");
  Expect(lNew + lMerged <= 1, "more than one line changed");
  const bool bRecorded =
      outcome.Raised == 0 && order.Details->Error() != recordBefore && order.Details->Error().Number != 0;
  if (outcome.Raised == 0 && !bRecorded && order.Details->Error().Number == 0) {
    ExpectTotalUpToDate(lOrderID);
  }
  if (outcome.Raised == failure::kObjectNotSet || outcome.Raised == failure::kStoreCommand) {
    Expect(m_bThrown || lNew + lMerged == 0, "stored though it was refused");
  }
  if (lNew == 1 && outcome.Raised == 0) {
    Expect(
        order.Details->OrderItems()->Item(oItem->ItemNumber()) == oItem || order.Details->Error().Number == 5,
        "the line is stored but not in the collection");
  }
}

void HostileHost::UpdateItems() {
  const Order& order = AnyOrder();
  const bool bFacade = order.Facade != nullptr && m_oValues.Once(2);
  const auto oItems = AnyCollection();
  const std::int32_t lOrderID = order.Details->OrderID();
  const Outcome outcome = Call(
      bFacade ? "CurrentOrder.UpdateItems" : "OrderDetails.UpdateItems",
      oItems == nullptr ? "null" : Shown(oItems->Count()) + " items of " + Shown(lOrderID),
      {failure::kObjectNotSet, failure::kOverflow, failure::kStoreCommand},
      [&] { bFacade ? order.Facade->UpdateItems(oItems) : order.Details->UpdateItems(oItems); }, &order);
  ExpectOthersUnchanged(lOrderID);
  const StoredOrder* pBefore = m_oBefore->Find(lOrderID);
  const StoredOrder* pAfter = m_oAfter->Find(lOrderID);
  if (oItems == nullptr || pBefore == nullptr || pAfter == nullptr) {
    ExpectUnchanged();
    return;
  }
  Expect(IsPartOf(pBefore->Header.Changes(pAfter->Header), {"ctotalprice"}), "the header changed");
  for (const auto& [lEntered, line] : pAfter->Lines) {
    const auto before = pBefore->Lines.find(lEntered);
    if (before == pBefore->Lines.end()) {
      Expect(false, "a line has come");
    } else if (before->second != line) {
      Expect(IsPartOf(before->second.Changes(line),
                      {"lquantity", "cprice", "cextendedprice", "bispricemodified", "bistaxable"}),
             "a line's other values changed");
      const auto oItem = oItems->Item(TextOf(line, "zItemNumber"));
      Expect(oItem != nullptr && NumberOf(line, "lquantity") == oItem->Quantity() &&
                 NumberOf(line, "cprice") == oItem->Price().Scaled() &&
                 NumberOf(line, "cextendedprice") == oItem->ExtendedPrice().Scaled(),
             "the line is not as given");
    }
  }
  for (const auto& [lEntered, line] : pBefore->Lines) {
    if (!pAfter->Lines.contains(lEntered)) {
      const OrderItems numbers;
      bool bAsked = false;
      for (const auto& oItem : *oItems) {
        OrderItems alike;
        alike.Add(oItem, oItem->ItemNumber());
        bAsked = bAsked || (oItem->Quantity() == 0 && alike.Item(TextOf(line, "zItemNumber")) != nullptr);
      }
      Expect(bAsked, "a line has gone that no item of quantity 0 names");
    }
  }
  if (outcome.Raised == 0) {
    ExpectTotalUpToDate(lOrderID);
    Expect(order.Details->TotalPrice().Scaled() == pAfter->Total(),
           "the object's total is not the stored one");
  }
}

void HostileHost::RemoveItem() {
  const Order& order = AnyOrder();
  const bool bFacade = order.Facade != nullptr && m_oValues.Once(2);
  const std::string zNumber = m_oValues.ItemNumber();
  const std::int32_t lOrderID = order.Details->OrderID();
  const Outcome outcome = Call(
      bFacade ? "CurrentOrder.RemoveItem" : "OrderDetails.RemoveItem", Shown(zNumber),
      {failure::kOverflow, failure::kStoreCommand},
      [&] { bFacade ? order.Facade->RemoveItem(zNumber) : order.Details->RemoveItem(zNumber); }, &order);
  ExpectOthersUnchanged(lOrderID);
  const StoredOrder* pBefore = m_oBefore->Find(lOrderID);
  const StoredOrder* pAfter = m_oAfter->Find(lOrderID);
  if (pBefore == nullptr || pAfter == nullptr) {
    ExpectUnchanged();
    return;
  }
  Expect(IsPartOf(pBefore->Header.Changes(pAfter->Header), {"ctotalprice"}), "the header changed");
  std::size_t lGone = 0;
  for (const auto& [lEntered, line] : pBefore->Lines) {
    const auto after = pAfter->Lines.find(lEntered);
    if (after != pAfter->Lines.end()) {
      Expect(after->second == line, "a line changed");
      continue;
    }
    ++lGone;
    OrderItems alike;
    alike.Add(std::make_shared<OrderItem>(), TextOf(line, "zItemNumber"));
    Expect(alike.Item(zNumber) != nullptr, "another line has gone");
  }
  Expect(lGone <= 1 && pAfter->Lines.size() + lGone == pBefore->Lines.size(), "more than the line has gone");
  if (outcome.Raised == 0) {
    ExpectTotalUpToDate(lOrderID);
  } else if (outcome.Raised == failure::kStoreCommand && !m_bThrown) {
    ExpectUnchanged();
  }
}

void HostileHost::ClearItems() {
  const Order& order = AnyOrder();
  const bool bFacade = order.Facade != nullptr && m_oValues.Once(2);
  const std::int32_t lOrderID = order.Details->OrderID();
  const Outcome outcome = Call(
      bFacade ? "CurrentOrder.ClearItems" : "OrderDetails.ClearItems", Shown(lOrderID), {},
      [&] { bFacade ? order.Facade->ClearItems() : order.Details->ClearItems(); }, &order);
  ExpectOthersUnchanged(lOrderID);
  const StoredOrder* pBefore = m_oBefore->Find(lOrderID);
  const StoredOrder* pAfter = m_oAfter->Find(lOrderID);
  if (pBefore != nullptr && pAfter != nullptr) {
    Expect(IsPartOf(pBefore->Header.Changes(pAfter->Header), {"ctotalprice"}), "the header changed");
    if (outcome.Raised == 0) {
      Expect(pAfter->Lines.empty() && pAfter->Total() == 0, "not cleared");
    } else {
      Expect(pAfter->Lines.empty() || *pAfter == *pBefore, "some lines have gone");
    }
  }
}

void HostileHost::CountItems() {
  const Order& order = AnyOrder();
  std::int32_t lCount = -1;
  Read(
      "OrderDetails.ItemCount", "", {}, [&] { lCount = order.Details->ItemCount(); }, &order);
  const StoredOrder* pStored = m_oAfter->Find(order.Details->OrderID());
  const auto lStored = pStored == nullptr ? 0 : static_cast<std::int32_t>(pStored->Lines.size());
  Expect(lCount == (StoreThere() && !m_bThrown ? lStored : 0), "counts " + std::to_string(lCount));
}

void HostileHost::AskForItem() {
  const Order& order = AnyOrder();
  const std::string zNumber = m_oValues.ItemNumber();
  bool bThere = false;
  Read(
      "OrderDetails.ItemExists", Shown(zNumber), {}, [&] { bThere = order.Details->ItemExists(zNumber); },
      &order);
  const auto oItem = order.Details->OrderItems()->Item(zNumber);
  Expect(bThere == (oItem != nullptr && oItem->ItemNumber() == zNumber), "is wrong");
}

void HostileHost::SaveSummary() {
  const Order& order = AnyOrder();
  const bool bFacade = order.Facade != nullptr && m_oValues.Once(2);
  const std::int32_t lOrderID = order.Details->OrderID();
  const Outcome outcome = Call(
      bFacade ? "CurrentOrder.SaveSummary" : "OrderDetails.SaveSummary", Shown(lOrderID),
      {failure::kObjectNotSet},
      [&] { bFacade ? order.Facade->SaveSummary() : order.Details->SaveSummary(m_oValues.Flag()); }, &order);
  ExpectOthersUnchanged(lOrderID);
  Expect((outcome.Raised == failure::kObjectNotSet) == (lOrderID != -1 && !order.Loaded()) || m_bThrown,
         "an order without header objects");
  const StoredOrder* pBefore = m_oBefore->Find(lOrderID);
  const StoredOrder* pAfter = m_oAfter->Find(lOrderID);
  if (pBefore == nullptr || pAfter == nullptr) {
    return;
  }
  Expect(pBefore->Lines == pAfter->Lines, "lines changed");
  const auto zChanged = pBefore->Header.Changes(pAfter->Header);
  Expect(!zChanged.contains("biscurrent") && !zChanged.contains("datsubmitdate"), "moved the order");
  const ErrorInfo record = order.Details->Error();
  const bool bSaved =
      record.Number == 0 || record.Description.find("The order itself is saved") != std::string::npos;
  if (outcome.Raised != 0 || !bSaved) {
    ExpectUnchanged();
    return;
  }
  for (const auto& field : HeaderFields()) {
    if (field.Column != "bIsCurrent" && field.Column != "datSubmitDate") {
      ExpectSame(field.Column, field.Get(*order.Details), TextOf(pAfter->Header, field.Column));
    }
  }
}

void HostileHost::SavePONumber() {
  const Order& order = AnyOrder();
  const bool bFacade = order.Facade != nullptr && m_oValues.Once(2);
  const std::int32_t lOrderID = order.Details->OrderID();
  Call(
      bFacade ? "CurrentOrder.SavePONumber" : "OrderDetails.SavePONumber", Shown(lOrderID), {},
      [&] { bFacade ? order.Facade->SavePONumber() : order.Details->SavePONumber(); }, &order);
  ExpectOthersUnchanged(lOrderID);
  ExpectHeaderChanges(lOrderID, {"zpurchaseordernumber"});
  const StoredOrder* pAfter = m_oAfter->Find(lOrderID);
  if (order.Details->Error().Number != 0) {
    ExpectUnchanged();
  } else if (pAfter != nullptr) {
    Expect(TextOf(pAfter->Header, "zPurchaseOrderNumber") == order.Details->PurchaseOrderNumber(),
           "stored is another number");
  }
}

void HostileHost::SaveToHistory() {
  const Order& order = AnyOrder();
  const bool bFacade = order.Facade != nullptr && m_oValues.Once(2);
  const std::int32_t lOrderID = order.Details->OrderID();
  Call(
      bFacade ? "CurrentOrder.SaveToHistory" : "OrderDetails.SaveToHistory", Shown(lOrderID), {},
      [&] { bFacade ? order.Facade->SaveToHistory() : order.Details->SaveToHistory(); }, &order);
  const ErrorInfo record = order.Details->Error();
  const bool bCurrent = m_oBefore->Current() == lOrderID;
  if (record.Number == 2 || (record.Number != 0 && IsUnchanged())) {
    ExpectUnchanged();
    Expect(!bCurrent || record.Number == 5, "the current order is refused");
    return;
  }
  if (!StoreThere()) {
    return;
  }
  Expect(bCurrent, "submitted an order that was not the current one");
  const auto after = m_oAfter;
  StoredState rest = *m_oAfter;
  if (record.Number == 0) {
    Expect(rest.Orders.size() == m_oBefore->Orders.size() + 1 && rest.Current().has_value(), "no new order");
    const auto last = std::prev(rest.Orders.end());
    Expect(last->second.IsCurrent() && last->second.Lines.empty(), "the new order is not current and empty");
    rest.Orders.erase(last);
  }
  m_oAfter = std::make_shared<const StoredState>(std::move(rest));
  ExpectOthersUnchanged(lOrderID);
  ExpectHeaderChanges(lOrderID, {"biscurrent", "datsubmitdate"});
  if (const StoredOrder* pAfter = m_oAfter->Find(lOrderID)) {
    Expect(!pAfter->IsCurrent() && TextOf(pAfter->Header, "datSubmitDate") == "2003-07-04 15:04:05",
           "not submitted");
  }
  m_oAfter = after;
}

void HostileHost::ApplyRegistration() {
  const Order& order = AnyOrder();
  const bool bFacade = order.Facade != nullptr && m_oValues.Once(2);
  Call(
      bFacade ? "CurrentOrder.ApplyRegistrationSettings" : "OrderDetails.ApplyRegistrationSettings", "", {},
      [&] {
        bFacade ? order.Facade->ApplyRegistrationSettings() : order.Details->ApplyRegistrationSettings();
      },
      &order);
  // The one call that touches every order: of each nothing but how to reach the user.
  for (const auto& [lOrderID, before] : m_oBefore->Orders) {
    const StoredOrder* pAfter = m_oAfter->Find(lOrderID);
    Expect(pAfter != nullptr, "an order has gone");
    if (pAfter != nullptr) {
      Expect(
          pAfter->Lines == before.Lines && IsPartOf(before.Header.Changes(pAfter->Header), kContactColumns),
          "more than the contacts of the order " + std::to_string(lOrderID) + " changed");
    }
  }
  Expect(m_oAfter->Orders.size() == m_oBefore->Orders.size() ||
             (bFacade && !m_oBefore->Current() && m_oAfter->Orders.size() == m_oBefore->Orders.size() + 1),
         "an order has come");
}

void HostileHost::Document() {
  const Order& order = AnyOrder();
  std::string zXML;
  const Outcome outcome = Read(
      "OrderDetails.GetXML", "", {failure::kObjectNotSet, failure::kXmlCharacter},
      [&] { zXML = order.Details->GetXML(); }, &order);
  Expect((outcome.Raised == failure::kObjectNotSet) == !order.Loaded(), "the header objects");
  Expect((outcome.Raised == 0) == zXML.starts_with("<order "), "is no document");
}

void HostileHost::ValidateItem() {
  const auto oItem = AnyItem();
  if (oItem == nullptr) {
    return;
  }
  const std::int32_t lMethod = m_oValues.Integer();
  const bool bValid = oItem->ValidQuantity();
  bool bAnswer = false;
  const Outcome outcome = Read("OrderItem.Validate", Shown(lMethod), {failure::kDivisionByZero},
                               [&] { bAnswer = oItem->Validate(lMethod); });
  const std::int64_t lPack = lMethod == 0 ? oItem->SellQuantity() : oItem->ShipQuantity();
  Expect((outcome.Raised == failure::kDivisionByZero) == (lPack == 0), "a pack of none");
  Expect(oItem->ValidQuantity() == (lPack == 0 ? bValid : oItem->Quantity() % lPack == 0), "is wrong");
  if (lPack != 0) {
    Expect(bAnswer == oItem->ValidQuantity(), "answers another value than it keeps");
  }
  Read("OrderItem.GetXML", "", {failure::kXmlCharacter}, [&] { oItem->GetXML(); });
}

void HostileHost::ValidateHeader() {
  const Order& order = AnyOrder();
  if (!order.Loaded()) {
    return;
  }
  const auto oDelivery = order.Details->DeliveryInformation();
  Read("DeliveryInformation", "", {failure::kXmlCharacter}, [&] {
    oDelivery->Validate();
    const std::string zName = oDelivery->ShippingMethodName();
    const std::int32_t lMethod = oDelivery->ShippingMethod();
    Expect(zName.empty() == (lMethod < 0 || lMethod > 9), "the name of a shipping method");
    oDelivery->GetXML();
  });
  Read("PaymentInformation", "", {failure::kXmlCharacter}, [&] {
    order.Details->PaymentInformation()->Validate();
    order.Details->PaymentInformation()->CreditCardDetails()->Validate();
    order.Details->PaymentInformation()->GetXML();
  });
  Read("OrderInformation", "", {failure::kXmlCharacter},
       [&] { order.Details->OrderInformation()->GetXML(); });
}

void HostileHost::MakeObject() {
  static constexpr std::array kNames = {"OrderItem",
                                        "QM_Ordering.orderitems",
                                        "CREDITCARDDETAILS",
                                        "QM_ORDERING.",
                                        "QM_Ordering.Database",
                                        "OrderItem ",
                                        "QM_Ordering.QM_Ordering.OrderItem"};
  const std::string zName =
      m_oValues.Once(2) ? m_oValues.Text() : std::string(kNames[m_oValues.Pick(kNames.size())]);
  std::shared_ptr<Object> oObject;
  const Outcome outcome = Read("CreateObject", Shown(zName), {failure::kCannotCreateObject},
                               [&] { oObject = CreateObject(zName); });
  Expect((oObject == nullptr) == (outcome.Raised != 0), "neither object nor failure");
}

void HostileHost::Calculate() {
  const Currency cLeft = m_oValues.Amount();
  const Currency cRight = m_oValues.Amount();
  const std::int32_t lFactor = m_oValues.Integer();
  const auto calculate = [&](const char* zvName, WideInteger lvExact, const std::function<Currency()>& run) {
    Currency cResult;
    const Outcome outcome = Read(zvName, Shown(cLeft) + ", " + Shown(cRight) + ", " + Shown(lFactor),
                                 {failure::kOverflow}, [&] { cResult = run(); });
    const bool bFits = lvExact <= INT64_MAX && lvExact >= INT64_MIN;
    Expect(bFits == (outcome.Raised == 0) && (!bFits || cResult.Scaled() == lvExact), "is wrong");
  };
  const WideInteger lLeft = cLeft.Scaled();
  calculate("Currency +", lLeft + cRight.Scaled(), [&] { return cLeft + cRight; });
  calculate("Currency -", lLeft - cRight.Scaled(), [&] { return cLeft - cRight; });
  calculate("Currency x", lLeft * lFactor, [&] { return cLeft * lFactor; });
  Expect(Currency::Parse(cLeft.ToString()) == cLeft, "an amount's text reads back as another amount");
  const std::string zText = m_oValues.Text();
  Read("Currency.Parse", Shown(zText), {failure::kOverflow, failure::kTypeMismatch},
       [&] { static_cast<void>(Currency::Parse(zText)); });
}

void HostileHost::Convert() {
  const Variant vValue = m_oValues.Value();
  const auto convert = [&](const char* zvName, const std::function<bool()>& isKept) {
    bool bKept = true;
    Read(zvName, std::to_string(static_cast<int>(vValue.Kind())),
         {failure::kOverflow, failure::kTypeMismatch, failure::kInvalidNull}, [&] { bKept = isKept(); });
    Expect(bKept, "a value does not survive its own conversion");
  };
  const VariantKind kind = vValue.Kind();
  convert("Variant.ToInteger", [&] {
    return kind != VariantKind::Integer || Variant(vValue.ToInteger()) == vValue || vValue.ToInteger() == 0;
  });
  convert("Variant.ToInteger of any", [&] { return vValue.ToInteger() >= INT32_MIN; });
  convert("Variant.ToBoolean", [&] { return vValue.ToBoolean() || kind != VariantKind::Object; });
  convert("Variant.ToDouble", [&] {
    const double dValue = vValue.ToDouble();
    return kind != VariantKind::Integer || dValue == vValue.ToInteger();
  });
  convert("Variant.ToCurrency", [&] {
    const Currency cValue = vValue.ToCurrency();
    return kind != VariantKind::Currency || Variant(cValue) == vValue;
  });
  convert("Variant.ToDate", [&] {
    const Date datValue = vValue.ToDate();
    return kind != VariantKind::Date || Variant(datValue) == vValue;
  });
  convert("Variant.ToString", [&] {
    const std::string zValue = vValue.ToString();
    return kind != VariantKind::String || Variant(zValue) == vValue;
  });
  convert("Variant.ToObject", [&] { return vValue.ToObject() == nullptr; });
}

void HostileHost::MakeDate() {
  const auto lPart = [&](int lvUpTo) {
    return m_oValues.Once(4) ? m_oValues.Integer()
                             : static_cast<int>(m_oValues.Pick(static_cast<std::size_t>(lvUpTo)));
  };
  const int lYear = lPart(10000), lMonth = lPart(14), lDay = lPart(33), lHour = lPart(25),
            lMinute = lPart(61), lSecond = lPart(61);
  Read("Date", std::to_string(lYear) + "-" + std::to_string(lMonth) + "-" + std::to_string(lDay),
       {failure::kInvalidCall}, [&] {
         const Date datValue(lYear, lMonth, lDay, lHour, lMinute, lSecond);
         Expect(datValue.Year() == lYear && datValue.Month() == lMonth && datValue.Day() == lDay &&
                    datValue.Hour() == lHour && datValue.Minute() == lMinute && datValue.Second() == lSecond,
                "another date");
         Expect(Date::ParseStoreText(datValue.ToStoreText()) == datValue,
                "its text reads back as another date");
         Expect(!datValue.ToGeneralText().empty(), "no text");
       });
  const std::string zText = m_oValues.Text();
  Read("Date.ParseStoreText", Shown(zText), {}, [&] { Date::ParseStoreText(zText); });
}

void HostileHost::StoreFunctions() {
  Read("OrderStorePath", "", {}, [&] { Expect(OrderStorePath() == StorePath(), "another path"); });
  if (StoreThere() || m_oValues.Once(2)) {
    Read("CheckOrderStore", "", {}, [&] {
      for (const std::string& zFinding : CheckOrderStore()) {
        Expect(zFinding.starts_with("order ") || m_bThrown, zFinding);
      }
    });
  }
  // Over the store itself, where something is, and where nothing can be.
  if (StoreThere()) {
    const Outcome outcome =
        Read("CreateOrderStore", "its folder", {failure::kFileAccess}, [&] { CreateOrderStore(m_zFolder); });
    Expect(outcome.Raised == failure::kFileAccess, "made a store over a store");
  }
  static constexpr std::array kRefused = {"", "\\", "\\server\\x", "{a", "{}", ";", "a;b", "{;}"};
  std::string zFolder = kRefused[m_oValues.Pick(kRefused.size())];
  if (m_oValues.Once(3)) {
    zFolder = m_zFolder + std::string("/a\0b", 4);
  }
  const Outcome refused =
      Read("CreateOrderStore", Shown(zFolder), {failure::kPathNotFound, failure::kFileAccess},
           [&] { CreateOrderStore(zFolder); });
  Expect(refused.Raised != 0, "made a store in a folder without a name");
  if (!m_oValues.Once(4)) {
    return;
  }
  // A folder of any name, within the own one.
  std::string zName = m_oValues.Text();
  while (zName.find("..") != std::string::npos) {
    zName.replace(zName.find(".."), 2, "__");
  }
  const std::string zAny = m_zFolder + "/made/x" + zName;
  Read("CreateOrderStore", Shown(zName), {failure::kPathNotFound, failure::kFileAccess},
       [&] { CreateOrderStore(zAny); });
  std::filesystem::remove_all(m_zFolder + "/made");
}

void HostileHost::SettingsFunctions() {
  const Outcome outcome =
      Read("InstallSettings", "null", {failure::kInvalidCall}, [] { InstallSettings(nullptr); });
  Expect(outcome.Raised == failure::kInvalidCall, "took another component after the start-up");
  Read("ClearLastFailure", "", {}, [] { ClearLastFailure(); });
  Expect(LastFailure().Number == 0 && LastFailure().Description.empty(), "not cleared");
}

void HostileHost::ThrowFromTrace() {
  static constexpr std::array<std::int32_t, 4> kNumbers = {failure::kInvalidCall, failure::kOutOfMemory, 0,
                                                           failure::kStoreUnavailable};
  m_lThrownNumber = kNumbers[m_oValues.Pick(kNumbers.size())];
  m_lUntilSettingsThrow = -1;
  m_lUntilTraceThrows = static_cast<int>(m_oValues.Pick(6));
  m_zCalls.push_back("the trace will throw " + std::to_string(m_lThrownNumber) + " after " +
                     std::to_string(m_lUntilTraceThrows) + " statements");
}

void HostileHost::ThrowFromSettings() {
  static constexpr std::array<std::int32_t, 4> kNumbers = {failure::kInvalidCall, failure::kOutOfMemory, 0,
                                                           failure::kFileAccess};
  m_lThrownNumber = kNumbers[m_oValues.Pick(kNumbers.size())];
  m_lUntilTraceThrows = -1;
  m_lUntilSettingsThrow = static_cast<int>(m_oValues.Pick(50));
  m_zCalls.push_back("the settings will throw " + std::to_string(m_lThrownNumber) + " after " +
                     std::to_string(m_lUntilSettingsThrow) + " calls");
}

void HostileHost::FillSettings() {
  static const std::array<std::string RegistrationDetails::*, 15> kDetails = {
      &RegistrationDetails::City,         &RegistrationDetails::CompanyName,
      &RegistrationDetails::Address1,     &RegistrationDetails::Address2,
      &RegistrationDetails::Fax,          &RegistrationDetails::Telephone,
      &RegistrationDetails::TelephoneExt, &RegistrationDetails::Country,
      &RegistrationDetails::Email,        &RegistrationDetails::FirstName,
      &RegistrationDetails::LastName,     &RegistrationDetails::State,
      &RegistrationDetails::StateOr,      &RegistrationDetails::ZipOrPostCode,
      &RegistrationDetails::AccountNumber};
  using namespace UserSettingConstants;
  static const std::array<std::string, 8> kKeys = {DEFAULT_OI_PO_NUM,         DEFAULT_OI_ISTAXEXEMPT,
                                                   DEFAULT_DI_DELIVERYMETHOD, DEFAULT_DI_SHIPPING_METHOD,
                                                   DEFAULT_PI_PAYMENT_METHOD, DEFAULT_CC_ACCOUNT_NUMBER,
                                                   DEFAULT_DI_CITY,           DEFAULT_OI_EMAIL};
  std::string& zValue = m_oValues.Once(2)
                            ? m_oSettings.Registration.*kDetails[m_oValues.Pick(kDetails.size())]
                            : m_oSettings.Defaults[kKeys[m_oValues.Pick(kKeys.size())]];
  zValue = m_oValues.Text();
  m_zCalls.push_back("a setting becomes " + Shown(zValue));
}

void HostileHost::CloseObserver() {
  m_oObserver.reset();
}

void HostileHost::OpenObserver() {
  m_oObserver.emplace(StorePath());
}

// The store is away for some calls, and then there again.
void HostileHost::DeleteStore() {
  if (!m_oValues.Once(3)) {
    return;
  }
  const std::string zAway = m_zFolder + "/Away.mdb";
  const auto kept = m_oAfter;
  CloseObserver();
  std::filesystem::rename(StorePath(), zAway);
  m_eStore = Store::Gone;
  m_zCalls.emplace_back("the store is moved away");
  const std::size_t lCalls = 1 + m_oValues.Pick(6);
  for (std::size_t i = 0; i < lCalls && m_zWrong.empty(); ++i) {
    static constexpr std::array<void (HostileHost::*)(), 8> kCalls = {
        &HostileHost::LoadSummary, &HostileHost::AddItem,          &HostileHost::CreateList,
        &HostileHost::AddToList,   &HostileHost::RemoveList,       &HostileHost::LoadListItems,
        &HostileHost::LoadHistory, &HostileHost::DeleteFromHistory};
    (this->*kCalls[m_oValues.Pick(kCalls.size())])();
  }
  std::filesystem::rename(zAway, StorePath());
  m_eStore = Store::There;
  m_zCalls.emplace_back("the store is put back");
  OpenObserver();
  Look();
  Expect(*m_oAfter == *kept, "what was stored is not there any more");
}

// Another store takes the place of the one in use.
void HostileHost::ReplaceStore() {
  if (!m_oValues.Once(6)) {
    return;
  }
  const std::string zAway = m_zFolder + "/Away.mdb";
  const auto kept = m_oAfter;
  CloseObserver();
  std::filesystem::rename(StorePath(), zAway);
  WriteFile(m_zFolder + "/Next.mdb", m_zPristine);
  std::filesystem::rename(m_zFolder + "/Next.mdb", StorePath());
  m_zCalls.emplace_back("another store is put in the place of the store");
  // The library notices at its next call, before anyone else opens the new file.
  m_lUntilTraceThrows = -1;
  CheckOrderStore();
  OpenObserver();
  LookAnew();
  Expect(m_oAfter->Orders.size() == 1 && m_oAfter->Find(kCanary) != nullptr,
         "the new store is not as it was");
  {
    StoreObserver old(zAway);
    Expect(old.Read() == *kept, "what was stored is not in the old store");
  }
  for (const char* zSuffix : {"", "-wal", "-shm"}) {
    std::filesystem::remove(zAway + zSuffix);
  }
  m_oObserver->HasChanged();
}

}  // namespace test
