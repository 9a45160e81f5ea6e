#include <algorithm>
#include <filesystem>
#include <optional>
#include <utility>

#include "tests/hostile/HostileHost.h"
#include "tests/support/OrderFields.h"
#include "tests/support/StrictXml.h"

// The calls of the hostile host on personal lists, their file and the history.

namespace test {

namespace {

using namespace qm_ordering;
namespace failure = qm_ordering::failure;

// An object of so many at most, seldom a new one.
template <typename Object>
std::shared_ptr<Object> AnyOf(std::vector<std::shared_ptr<Object>>& orObjects, std::size_t lvMost,
                              HostileValues& values) {
  if (orObjects.empty() || values.Once(4)) {
    if (orObjects.size() == lvMost) {
      orObjects.erase(orObjects.begin());
    }
    orObjects.push_back(std::make_shared<Object>());
    return orObjects.back();
  }
  return orObjects[values.Pick(orObjects.size())];
}

// Whether the store takes the two texts for one.
bool Alike(const std::string& zvLeft, const std::string& zvRight) {
  OrderItems items;
  items.Add(std::make_shared<OrderItem>(), zvLeft);
  return items.Item(zvRight) != nullptr;
}

std::optional<std::int32_t> ToInteger(const Variant& vvValue) {
  try {
    return vvValue.ToInteger();
  } catch (const Failure&) {
    return std::nullopt;
  }
}

std::string ShownID(const Variant& vvID) {
  const std::optional<std::int32_t> lID = ToInteger(vvID);
  return lID ? Shown(*lID) : "a value of the kind " + std::to_string(static_cast<int>(vvID.Kind()));
}

void RemoveAlike(std::map<std::int32_t, StoredList>& orLists, const std::string& zvName) {
  std::erase_if(orLists,
                [&](const auto& list) { return Alike(TextOf(list.second.Header, "zName"), zvName); });
}

}  // namespace

HostileHost::Outcome HostileHost::CallOnLists(const std::string& zvName, const std::string& zvArguments,
                                              Numbers allowed, const std::function<void()>& call) {
  m_bOnLists = true;
  const Outcome outcome = Call(zvName, zvArguments, allowed, call);
  m_bOnLists = false;
  Expect(m_oAfter == m_oBefore || m_oAfter->Orders == m_oBefore->Orders, "an order has changed");
  return outcome;
}

void HostileHost::ExpectLists(const std::map<std::int32_t, StoredList>& lists) {
  Expect(m_oAfter->Lists == lists, "the lists are others than they should be");
}

void HostileHost::ExpectListLine(const StoredRow& line, const OrderItem& item) {
  for (const auto& field : LineFields()) {
    if (line.Has(Lower(field.Column))) {
      ExpectSame(field.Column, field.Get(item), TextOf(line, field.Column));
    }
  }
}

void HostileHost::ExpectListRecord(const PersonalList& list) {
  const ErrorInfo record = list.Error();
  ++m_lRecordedCounts[record.Number];
  static constexpr std::int32_t kNumbers[] = {0, 4, 5, 9, 10, 11};
  Expect(std::ranges::find(kNumbers, record.Number) != std::end(kNumbers) &&
             (record.Number == 0) == record.Description.empty(),
         "the record is " + std::to_string(record.Number) + " " + record.Description);
}

std::shared_ptr<PersonalLists> HostileHost::AnyCatalogue() {
  return AnyOf(m_oCatalogues, 3, m_oValues);
}

std::shared_ptr<PersonalList> HostileHost::AnyList() {
  return AnyOf(m_oLists, 4, m_oValues);
}

std::shared_ptr<OrderHistory> HostileHost::AnyHistory() {
  return AnyOf(m_oHistories, 2, m_oValues);
}

std::int32_t HostileHost::AnyListID() {
  if (m_oAfter->Lists.size() > 1 && !m_oValues.Once(4)) {
    return std::next(m_oAfter->Lists.begin(),
                     static_cast<std::ptrdiff_t>(1 + m_oValues.Pick(m_oAfter->Lists.size() - 1)))
        ->first;
  }
  const std::int32_t lListID = m_oValues.Integer();
  return lListID == kCanary ? 2 : lListID;
}

Variant HostileHost::AnyListIDAsAnyValue() {
  if (m_oValues.Once(3)) {
    Variant vListID = m_oValues.Value();
    return ToInteger(vListID) == kCanary ? Variant(2) : vListID;
  }
  const std::int32_t lListID = AnyListID();
  return m_oValues.Once(4) ? Variant(std::to_string(lListID)) : Variant(lListID);
}

void HostileHost::CreateList() {
  const std::string zName = m_oValues.ItemNumber();
  const auto oCatalogue = AnyCatalogue();
  std::int32_t lListID = 0;
  CallOnLists("PersonalLists.CreateList", Shown(zName), {}, [&] { lListID = oCatalogue->CreateList(zName); });
  if (lListID == 0) {
    Expect(LastFailure().Number != 0, "no list and no failure");
    ExpectUnchanged();
    return;
  }
  auto lists = m_oBefore->Lists;
  RemoveAlike(lists, zName);
  const auto made = m_oAfter->Lists.find(lListID);
  if (made == m_oAfter->Lists.end()) {
    Expect(false, "there is no list of the new id");
    return;
  }
  Expect(TextOf(made->second.Header, "zName") == zName && made->second.Lines.empty(),
         "the new list has another name, or a line");
  Expect(m_oBefore->Lists.rbegin()->first < lListID, "the id is not a new one");
  lists.insert(*made);
  ExpectLists(lists);
}

void HostileHost::RenameList() {
  const std::int32_t lListID = AnyListID();
  const std::string zName = m_oValues.ItemNumber();
  const auto oCatalogue = AnyCatalogue();
  bool bRenamed = false;
  CallOnLists("PersonalLists.RenameList", Shown(lListID) + ", " + Shown(zName), {},
              [&] { bRenamed = oCatalogue->RenameList(lListID, zName); });
  Expect(bRenamed == (LastFailure().Number == 0), "the answer does not say whether it failed");
  auto lists = m_oBefore->Lists;
  if (bRenamed && lists.contains(lListID)) {
    lists.at(lListID).Header.Set("zname", zName);
  }
  ExpectLists(lists);
}

void HostileHost::RemoveList() {
  auto lists = m_oBefore->Lists;
  const auto oCatalogue = AnyCatalogue();
  if (m_oValues.Once(2)) {
    const std::int32_t lListID = AnyListID();
    CallOnLists("PersonalLists.RemoveList", Shown(lListID), {}, [&] { oCatalogue->RemoveList(lListID); });
    lists = m_oBefore->Lists;
    if (LastFailure().Number == 0) {
      lists.erase(lListID);
    }
  } else {
    const std::string zName = m_oValues.ItemNumber();
    bool bRemoved = false;
    CallOnLists("PersonalLists.RemoveListByName", Shown(zName), {},
                [&] { bRemoved = oCatalogue->RemoveListByName(zName); });
    Expect(bRemoved == (LastFailure().Number == 0), "the answer does not say whether it failed");
    lists = m_oBefore->Lists;
    if (bRemoved) {
      RemoveAlike(lists, zName);
    }
  }
  ExpectLists(lists);
}

void HostileHost::AskForList() {
  const auto oCatalogue = AnyCatalogue();
  const std::string zName = m_oValues.ItemNumber();
  bool bThere = false;
  Read("PersonalLists.ListExists", Shown(zName), {}, [&] { bThere = oCatalogue->ListExists(zName); });
  const bool bStored = std::ranges::any_of(
      m_oAfter->Lists, [&](const auto& list) { return Alike(TextOf(list.second.Header, "zName"), zName); });
  Expect(bThere == (bStored && LastFailure().Number == 0), "is wrong");
  const std::int32_t lListID = AnyListID();
  std::string zStored;
  Read("PersonalLists.GetName", Shown(lListID), {}, [&] { zStored = oCatalogue->GetName(lListID); });
  const auto list = m_oAfter->Lists.find(lListID);
  const bool bRead = list != m_oAfter->Lists.end() && LastFailure().Number == 0;
  Expect(zStored == (bRead ? TextOf(list->second.Header, "zName") : ""), "is another name");
}

void HostileHost::LoadLists() {
  const auto oCatalogue = AnyCatalogue();
  const std::int32_t lBefore = oCatalogue->Count();
  const Outcome outcome =
      Read("PersonalLists.LoadLists", "", {failure::kDuplicateKey}, [&] { oCatalogue->LoadLists(); });
  Expect(outcome.Raised != failure::kDuplicateKey || lBefore > 0, "met a list that it does not hold");
  if (outcome.Raised != 0) {
    return;
  }
  Expect(static_cast<std::size_t>(oCatalogue->Count()) ==
             static_cast<std::size_t>(lBefore) + m_oAfter->Lists.size(),
         "holds not as many lists as are stored");
  for (const auto& [lListID, list] : m_oAfter->Lists) {
    const auto oHeld = oCatalogue->Item(lListID);
    Expect(oHeld->ListID() == lListID, "holds a list under another id");
    ExpectSame("zName", oHeld->Name(), TextOf(list.Header, "zName"));
  }
}

void HostileHost::ListsDocument() {
  const auto oCatalogue = AnyCatalogue();
  std::string zXML;
  const Outcome outcome =
      Read("PersonalLists.GetXML", "", {failure::kXmlCharacter}, [&] { zXML = oCatalogue->GetXML(); });
  Expect((outcome.Raised == 0) == zXML.starts_with("<personallists"), "is no document");
  const std::int32_t lListID = m_oValues.Integer();
  std::shared_ptr<PersonalList> oFound;
  Read("PersonalLists.Item", Shown(lListID), {failure::kInvalidCall},
       [&] { oFound = oCatalogue->Item(lListID); });
  std::int32_t lMet = 0;
  bool bMet = false;
  Read("PersonalLists.NewEnum", "", {}, [&] {
    for (const auto& oList : oCatalogue->NewEnum()) {
      ++lMet;
      bMet = bMet || oList == oFound;
    }
  });
  Expect(lMet == oCatalogue->Count() && (oFound == nullptr || bMet), "the enumeration is wrong");
}

void HostileHost::SaveListsFile() {
  const auto oCatalogue = AnyCatalogue();
  if (oCatalogue->Count() == 0) {
    LoadLists();
  }
  Read("PersonalLists.SaveAsXML", "", {}, [&] { oCatalogue->SaveAsXML(); });
  const LastFailureInfo swallowed = LastFailure();
  const std::string zFile = std::filesystem::exists(ListsPath()) ? ReadFile(ListsPath()) : std::string();
  Expect(PathsBeginningWith(ListsPath() + ".tmp.").empty(), "a temporary file is left");
  if (swallowed.Number != 0) {
    Expect(zFile == m_zListsFile, "the file has changed though it was not written: " + swallowed.Description);
    return;
  }
  m_zListsFile = zFile;
  Expect(zFile.starts_with("<personallists") && zFile.ends_with(">"), "the file is not whole");
  // Seldom, since the strict reader is another process.
  if (m_oValues.Once(20)) {
    const XmlElement root = ReadStrictly(zFile);
    Expect(root.Children.size() == static_cast<std::size_t>(oCatalogue->Count()), "a list is missing");
    std::size_t lList = 0;
    for (const auto& oList : *oCatalogue) {
      const XmlElement& element = root.Children.at(lList++);
      Expect(element.Attributes.at("id") == std::to_string(oList->ListID()) &&
                 element.Attributes.at("name") == oList->Name() &&
                 element.Children.size() == static_cast<std::size_t>(oList->OrderItems()->Count()),
             "a list of the file is another");
    }
  }
}

// Another list for an object: one that another object may have, too, or one that there is not.
void HostileHost::ChooseList() {
  const auto oList = AnyList();
  switch (m_oValues.Pick(4)) {
    case 0: {
      const std::string zName = m_oValues.Text();
      Read("PersonalList.Name", Shown(zName), {}, [&] { oList->Name(zName); });
      Expect(oList->Name() == zName, "is another name");
      break;
    }
    case 1: {
      const auto oItems = AnyCollection();
      Read("PersonalList.OrderItems", oItems == nullptr ? "null" : "", {},
           [&] { oList->OrderItems(oItems); });
      Expect(oList->OrderItems() == oItems, "is another collection");
      break;
    }
    default: {
      const std::int32_t lListID = AnyListID();
      Read("PersonalList.ListID", Shown(lListID), {}, [&] { oList->ListID(lListID); });
      Expect(oList->ListID() == lListID, "is another id");
      break;
    }
  }
}

void HostileHost::AddToList() {
  const auto oList = AnyList();
  const auto oItem = AnyItem();
  const Variant vListID = AnyListIDAsAnyValue();
  const std::optional<std::int32_t> lListID = ToInteger(vListID);
  const std::int32_t lBefore = oList->ListID();
  const auto oItems = oList->OrderItems();
  const std::int32_t lHeld = oItems == nullptr ? 0 : oItems->Count();
  const Outcome outcome =
      CallOnLists("PersonalList.AddItem",
                  (oItem == nullptr ? "null" : Shown(oItem->ItemNumber()) + " " + Shown(oItem->Quantity())) +
                      " to " + ShownID(vListID),
                  {failure::kObjectNotSet, failure::kOverflow, failure::kDuplicateKey, failure::kStoreCommand,
                   failure::kTypeMismatch},
                  [&] { oList->AddItem(oItem, vListID); });
  ExpectListRecord(*oList);
  if (!lListID && outcome.Raised == 0) {
    Expect(oList->Error().Number == (vListID.IsMissing() ? 9 : 10) && oList->ListID() == lBefore,
           "a list without an id");
  }
  const auto before = m_oBefore->Lists.find(lListID.value_or(kCanary));
  const bool bGoesOn = outcome.Raised == 0 || outcome.Raised == failure::kDuplicateKey ||
                       (outcome.Raised == failure::kObjectNotSet && oItems == nullptr);
  if (oItem == nullptr || !lListID || before == m_oBefore->Lists.end() || !bGoesOn ||
      LastFailure().Number != 0) {
    ExpectUnchanged();
    return;
  }
  // A line more, or one that has more: just one, and no other list.
  auto lists = m_oAfter->Lists;
  StoredList& list = lists.at(*lListID);
  std::size_t lNew = 0;
  std::size_t lMore = 0;
  for (auto line = list.Lines.begin(); line != list.Lines.end();) {
    Expect(
        NumberOf(line->second, "lquantity") <= INT32_MAX && NumberOf(line->second, "lquantity") >= INT32_MIN,
        "a quantity that nobody can read");
    const auto old = before->second.Lines.find(line->first);
    if (old == before->second.Lines.end()) {
      ++lNew;
      ExpectListLine(line->second, *oItem);
      line = list.Lines.erase(line);
      continue;
    }
    if (old->second != line->second) {
      ++lMore;
      Expect(NumberOf(line->second, "lquantity") == NumberOf(old->second, "lquantity") + oItem->Quantity() &&
                 Alike(TextOf(line->second, "zItemNumber"), oItem->ItemNumber()),
             "the line that has more is wrong");
      line->second.Set("lquantity", old->second.at("lquantity"));
    }
    ++line;
  }
  Expect(lists == m_oBefore->Lists, "another line or list has changed");
  Expect(lNew + lMore == 1 || (lNew + lMore == 0 && oItem->Quantity() == 0), "not stored just once");
  Expect(oItem->OrderID() == *lListID && oList->ListID() == *lListID, "another list is named");
  if (outcome.Raised == 0 && oList->Error().Number == 0) {
    Expect(oItems->Count() == lHeld + 1 && oItems->Item(lHeld + 1) == oItem,
           "the line is stored but not in the collection");
  }
}

void HostileHost::LoadListSummary() {
  const auto oList = AnyList();
  const Variant vListID = m_oValues.Once(4) ? Variant::Missing() : AnyListIDAsAnyValue();
  const std::int32_t lBefore = oList->ListID();
  const std::string zName = oList->Name();
  const Outcome outcome = Read("PersonalList.LoadSummary", ShownID(vListID), {failure::kOverflow},
                               [&] { oList->LoadSummary(vListID); });
  ExpectListRecord(*oList);
  const std::int32_t lNumber = oList->Error().Number;
  if (outcome.Raised != 0) {
    ExpectSame("the name", oList->Name(), zName);
    return;
  }
  const std::optional<std::int32_t> lListID = vListID.IsMissing() ? lBefore : ToInteger(vListID);
  const auto stored = m_oAfter->Lists.find(lListID.value_or(0));
  if (!lListID || (vListID.IsMissing() && lBefore == -1)) {
    Expect(lNumber == (lListID ? 9 : 10) && oList->ListID() == lBefore, "a list without an id");
  } else if (stored == m_oAfter->Lists.end()) {
    Expect(lNumber == 11, "found a list that is not there");
  } else {
    ExpectSame("zName", oList->Name(), TextOf(stored->second.Header, "zName"));
  }
}

void HostileHost::LoadListItems() {
  const auto oList = AnyList();
  const Variant vListID = m_oValues.Once(4) ? Variant::Missing() : AnyListIDAsAnyValue();
  const std::int32_t lBefore = oList->ListID();
  if (m_oValues.Once(2)) {
    oList->OrderItems(std::make_shared<OrderItems>());
  }
  const auto oItems = oList->OrderItems();
  const std::int32_t lHeld = oItems == nullptr ? 0 : oItems->Count();
  const Outcome outcome = Read("PersonalList.LoadItems", ShownID(vListID),
                               {failure::kOverflow, failure::kDuplicateKey, failure::kObjectNotSet},
                               [&] { oList->LoadItems(vListID); });
  ExpectListRecord(*oList);
  Expect(outcome.Raised != failure::kOverflow || !ToInteger(vListID), "the lines cannot be read");
  Expect(outcome.Raised != failure::kDuplicateKey || lHeld > 0, "met a line that it does not hold");
  Expect(outcome.Raised != failure::kObjectNotSet || oItems == nullptr, "there is a collection");
  const std::optional<std::int32_t> lListID = vListID.IsMissing() ? lBefore : ToInteger(vListID);
  if (outcome.Raised != 0 || !lListID || oItems == nullptr) {
    return;
  }
  const auto stored = m_oAfter->Lists.find(*lListID);
  const std::size_t lStored = stored == m_oAfter->Lists.end() ? 0 : stored->second.Lines.size();
  Expect(static_cast<std::size_t>(oItems->Count()) == static_cast<std::size_t>(lHeld) + lStored,
         "not as many lines as are stored");
  if (lStored > 0) {
    for (const auto& [lEntered, line] : stored->second.Lines) {
      const auto oItem = oItems->Item(TextOf(line, "zItemNumber"));
      Expect(oItem != nullptr && oItem->OrderID() == *lListID, "a line is missing");
      if (oItem != nullptr) {
        ExpectListLine(line, *oItem);
      }
    }
  }
}

void HostileHost::LoadHistory() {
  const auto oHistory = AnyHistory();
  const std::int32_t lSort =
      m_oValues.Once(4) ? m_oValues.Integer() : static_cast<std::int32_t>(m_oValues.Pick(4));
  const std::int32_t lHeld = oHistory->Count();
  const Outcome outcome =
      Read("OrderHistory.LoadOrders", Shown(lSort), {failure::kIndexOutOfBounds, failure::kDuplicateKey},
           [&] { oHistory->LoadOrders(lSort); });
  Expect((outcome.Raised == failure::kIndexOutOfBounds) == (lSort < 0 || lSort > 3),
         "the order of the history");
  Expect(outcome.Raised != failure::kDuplicateKey || lHeld > 0, "met an order that it does not hold");
  if (outcome.Raised == 0) {
    std::int32_t lSubmitted = 0;
    for (const auto& [lOrderID, order] : m_oAfter->Orders) {
      if (!order.IsCurrent()) {
        ++lSubmitted;
        const auto oOrder = oHistory->Item(lOrderID);
        ExpectSame("zPurchaseOrderNumber", oOrder->PurchaseOrderNumber(),
                   TextOf(order.Header, "zPurchaseOrderNumber"));
        Expect(oOrder->OrderTotal().Scaled() == order.Total(), "is another total");
      }
    }
    Expect(oHistory->Count() == lHeld + lSubmitted, "holds not as many orders as were submitted");
  }
  std::string zXML;
  const Outcome document =
      Read("OrderHistory.GetXML", "", {failure::kXmlCharacter}, [&] { zXML = oHistory->GetXML(); });
  Expect((document.Raised == 0) == zXML.starts_with("<orderhistory>"), "is no document");
  const std::string zNumber = m_oValues.Once(4) ? "Canary" : m_oValues.Text();
  Variant vExists;
  Read("OrderHistory.ItemExists", Shown(zNumber), {}, [&] { vExists = oHistory->ItemExists(zNumber); });
  const bool bStored = std::ranges::any_of(m_oAfter->Orders, [&](const auto& order) {
    const Cell& cell = order.second.Header.at("zpurchaseordernumber");
    return !order.second.IsCurrent() && cell && Alike(*cell, zNumber);
  });
  Expect(LastFailure().Number != 0 ? vExists.Kind() == VariantKind::Empty : vExists == Variant(bStored),
         "is wrong");
}

void HostileHost::DeleteFromHistory() {
  std::int32_t lOrderID = m_oValues.Integer();
  if (!m_oAfter->Orders.empty() && !m_oValues.Once(3)) {
    lOrderID = std::next(m_oAfter->Orders.begin(),
                         static_cast<std::ptrdiff_t>(m_oValues.Pick(m_oAfter->Orders.size())))
                   ->first;
  }
  if (lOrderID == kCanary) {
    return;
  }
  const auto oHistory = AnyHistory();
  const Outcome outcome =
      Call("OrderHistory.DeleteOrder", Shown(lOrderID), {}, [&] { oHistory->DeleteOrder(lOrderID); });
  auto orders = m_oBefore->Orders;
  const auto order = orders.find(lOrderID);
  if (outcome.Raised == 0 && order != orders.end() && !order->second.IsCurrent()) {
    orders.erase(order);
  }
  Expect(m_oAfter->Orders == orders, "not just that order has gone with its lines");
}

void HostileHost::UsePreviousOrder() {
  const auto oOrder = AnyOf(m_oPreviousOrders, 3, m_oValues);
  if (m_oValues.Once(6)) {
    // Never an order of the host's: loading this one would make that one another.
    const auto oDetails = m_oValues.Once(2) ? nullptr : std::make_shared<OrderDetails>();
    Read("PreviousOrder.OrderDetails", oDetails == nullptr ? "null" : "", {},
         [&] { oOrder->OrderDetails(oDetails); });
  }
  const bool bDetails = oOrder->OrderDetails() != nullptr;
  const std::int32_t lID = m_oValues.Once(2) ? kCanary : m_oValues.Integer();
  const Outcome named =
      Read("PreviousOrder.OrderID", Shown(lID), {failure::kObjectNotSet}, [&] { oOrder->OrderID(lID); });
  Expect((named.Raised == 0) == bDetails && (!bDetails || oOrder->OrderID() == lID), "is another id");
  const Variant vOrderID = m_oValues.Once(2) ? Variant::Missing() : m_oValues.Value();
  const Outcome outcome =
      Read("PreviousOrder.LoadSummary", ShownID(vOrderID),
           {failure::kObjectNotSet, failure::kOverflow, failure::kTypeMismatch, failure::kInvalidNull},
           [&] { oOrder->LoadSummary(vOrderID); });
  Expect(bDetails || outcome.Raised != 0 || oOrder->OrderID() == -1, "loaded into nothing");
  if (outcome.Raised == 0 && bDetails && oOrder->OrderDetails()->Error().Number == 0) {
    const StoredOrder* pStored = m_oAfter->Find(oOrder->OrderID());
    if (pStored != nullptr) {
      ExpectSame("zPurchaseOrderNumber", oOrder->PurchaseOrderNumber(),
                 TextOf(pStored->Header, "zPurchaseOrderNumber"));
      Expect(oOrder->OrderTotal().Scaled() == pStored->Total(), "is another total");
    }
  }
  Read("PreviousOrder.GetXML", "", {failure::kObjectNotSet, failure::kXmlCharacter},
       [&] { static_cast<void>(oOrder->GetXML()); });
}

}  // namespace test
