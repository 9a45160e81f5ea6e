#include "tests/processes/StoreModel.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include "qm_ordering/foundation/LastFailure.h"
#include "qm_ordering/foundation/UserSettingConstants.h"
#include "qm_ordering/history/OrderHistory.h"
#include "qm_ordering/lists/PersonalLists.h"
#include "qm_ordering/platform/value/Failure.h"
#include "tests/support/StrictXml.h"

namespace test {

namespace {

namespace keys = qm_ordering::UserSettingConstants;
using qm_ordering::Currency;

constexpr std::size_t kItems = 12;
constexpr std::size_t kLists = 4;
constexpr std::size_t kLongNotes = 40000;

void Require(const qm_ordering::ErrorInfo& error) {
  if (error.Number != 0) {
    throw std::runtime_error("error " + std::to_string(error.Number) + ": " + error.Description);
  }
}

std::string DescribeOrder(const std::string& zvOrder, bool bvCurrent, const std::string& zvSubmitted,
                          const std::string& zvNumber, const std::string& zvCity,
                          const std::string& zvAttention, const std::string& zvTotal) {
  return "order " + zvOrder + (bvCurrent ? ", current" : ", submitted " + zvSubmitted) + ", number \"" +
         zvNumber + "\", city \"" + zvCity + "\", attention \"" + zvAttention + "\", total " + zvTotal;
}

std::string DescribeLine(const std::string& zvOrder, const std::string& zvItem, const std::string& zvQuantity,
                         const std::string& zvPrice, const std::string& zvExtended,
                         const std::string& zvNotes) {
  return "order " + zvOrder + ": " + zvItem + ", " + zvQuantity + " x " + zvPrice + " = " + zvExtended +
         ", notes of " + zvNotes;
}

std::string DescribeDefaults(const std::string& zvNumber, const std::string& zvCity) {
  return "defaults: number \"" + zvNumber + "\", city \"" + zvCity + "\"";
}

// The list's id; 0, which is none's, when there is no such list.
std::int32_t ListIDOf(const std::string& zvName) {
  qm_ordering::PersonalLists lists;
  lists.LoadLists();
  for (const auto& oList : lists) {
    if (oList->Name() == zvName) {
      return oList->ListID();
    }
  }
  return 0;
}

std::shared_ptr<qm_ordering::OrderItem> ToItem(const Call::Item& item) {
  return NewItem(item.Number, item.Quantity, item.Price, item.Notes);
}

}  // namespace

std::string Call::Describe() const {
  static constexpr const char* kNames[] = {"load",
                                           "add",
                                           "update",
                                           "remove",
                                           "clear",
                                           "save summary",
                                           "save PO number",
                                           "submit",
                                           "delete order",
                                           "create list",
                                           "rename list",
                                           "remove list",
                                           "remove list by name",
                                           "add to list",
                                           "export lists"};
  std::string zText = kNames[static_cast<int>(What)];
  for (const Item& item : Items) {
    zText += " " + item.Number + " " + std::to_string(item.Quantity) + " x " + std::to_string(item.Price);
  }
  for (const std::string& zPart : {Text, NewName}) {
    zText += zPart.empty() ? "" : " \"" + zPart + "\"";
  }
  return zText + (OrderID == 0 ? "" : " " + std::to_string(OrderID));
}

Call::Item CallSequence::RandomItem() {
  Call::Item item;
  item.Number = "A" + std::to_string(Pick(kItems));
  item.Quantity = static_cast<std::int32_t>(Pick(60)) - 10;
  item.Price = static_cast<std::int64_t>(Pick(3000000)) - 100000;
  item.Notes = m_bLongNotes ? kLongNotes + Pick(kLongNotes) : Pick(200);
  return item;
}

std::string CallSequence::RandomList() {
  return "L" + std::to_string(Pick(kLists));
}

Call CallSequence::Make(Call::Kind kind) {
  Call call;
  call.What = kind;
  switch (kind) {
    case Call::Kind::Add:
    case Call::Kind::Remove:
      call.Items.push_back(RandomItem());
      break;
    case Call::Kind::Update:
      for (std::size_t i = 0; i < kItems; i += 1 + Pick(4)) {
        call.Items.push_back(RandomItem());
        call.Items.back().Number = "A" + std::to_string(i);
        if (Pick(4) == 0) {
          call.Items.back().Quantity = 0;
        }
      }
      break;
    case Call::Kind::SaveSummary:
    case Call::Kind::SavePONumber:
      call.Text = "call " + std::to_string(m_lCalls) + " of " + std::to_string(m_oRandom());
      break;
    case Call::Kind::DeleteOrder:
      call.OrderID = 1 + static_cast<int>(Pick(kItems));
      break;
    case Call::Kind::AddToList:
      call.Items.push_back(RandomItem());
      call.Items.back().Notes = Pick(2000);
      call.Text = RandomList();
      break;
    case Call::Kind::RenameList:
      call.NewName = RandomList();
      call.Text = RandomList();
      break;
    case Call::Kind::CreateList:
    case Call::Kind::RemoveList:
    case Call::Kind::RemoveListByName:
      call.Text = RandomList();
      break;
    default:
      break;
  }
  return call;
}

Call CallSequence::Next() {
  ++m_lCalls;
  if (m_bLoad) {
    m_bLoad = false;
    return Make(Call::Kind::Load);
  }
  static constexpr Call::Kind kOnLists[] = {
      Call::Kind::AddToList,   Call::Kind::AddToList,   Call::Kind::AddToList,
      Call::Kind::AddToList,   Call::Kind::CreateList,  Call::Kind::CreateList,
      Call::Kind::RenameList,  Call::Kind::RemoveList,  Call::Kind::RemoveListByName,
      Call::Kind::ExportLists, Call::Kind::ExportLists, Call::Kind::DeleteOrder};
  constexpr std::size_t lOnOrder = 24;
  const std::size_t lPick = Pick(lOnOrder + std::size(kOnLists));
  if (lPick >= lOnOrder) {
    return Make(kOnLists[lPick - lOnOrder]);
  }
  if (lPick == 0) {
    m_bLoad = true;
    return Make(Call::Kind::Submit);
  }
  if (lPick == 1) {
    return Make(Pick(2) == 0 ? Call::Kind::Clear : Call::Kind::SavePONumber);
  }
  if (lPick < 5) {
    return Make(Call::Kind::SaveSummary);
  }
  if (lPick < 8) {
    return Make(Call::Kind::Remove);
  }
  return Make(lPick < 12 ? Call::Kind::Update : Call::Kind::Add);
}

void Make(qm_ordering::CurrentOrder& order, const Call& call) {
  const auto oDetails = order.OrderDetails();
  qm_ordering::PersonalLists lists;
  qm_ordering::ClearLastFailure();
  switch (call.What) {
    case Call::Kind::Load:
      order.LoadSummary();
      break;
    case Call::Kind::Add:
      order.AddItem(ToItem(call.Items.front()));
      break;
    case Call::Kind::Update: {
      const auto oItems = std::make_shared<qm_ordering::OrderItems>();
      for (const Call::Item& item : call.Items) {
        oItems->Add(ToItem(item), item.Number);
      }
      order.UpdateItems(oItems);
      break;
    }
    case Call::Kind::Remove:
      order.RemoveItem(call.Items.front().Number);
      break;
    case Call::Kind::Clear:
      order.ClearItems();
      break;
    case Call::Kind::SaveSummary:
      oDetails->DeliveryInformation()->City(call.Text);
      oDetails->OrderInformation()->Attention(call.Text);
      order.SaveSummary();
      break;
    case Call::Kind::SavePONumber:
      oDetails->PurchaseOrderNumber(call.Text);
      order.SavePONumber();
      break;
    case Call::Kind::Submit:
      order.SaveToHistory();
      break;
    case Call::Kind::DeleteOrder:
      qm_ordering::OrderHistory().DeleteOrder(call.OrderID);
      break;
    case Call::Kind::CreateList:
      lists.CreateList(call.Text);
      break;
    case Call::Kind::RenameList:
      if (!lists.RenameList(ListIDOf(call.Text), call.NewName) &&
          qm_ordering::LastFailure().Number == qm_ordering::failure::kStoreCommand) {
        qm_ordering::ClearLastFailure();
      }
      break;
    case Call::Kind::RemoveList:
      lists.RemoveList(ListIDOf(call.Text));
      break;
    case Call::Kind::RemoveListByName:
      lists.RemoveListByName(call.Text);
      break;
    case Call::Kind::AddToList:
      if (const std::int32_t lListID = ListIDOf(call.Text)) {
        qm_ordering::PersonalList list;
        list.AddItem(ToItem(call.Items.front()), lListID);
        Require(list.Error());
      }
      break;
    case Call::Kind::ExportLists:
      lists.LoadLists();
      lists.SaveAsXML();
      break;
  }
  Require(order.Error());
  const qm_ordering::LastFailureInfo swallowed = qm_ordering::LastFailure();
  Require({swallowed.Number, swallowed.Description});
}

std::vector<StoreModel::Line>::iterator StoreModel::Order::Find(const std::string& zvItem) {
  return std::ranges::find(Lines, zvItem, &Line::Item);
}

void StoreModel::Order::Remove(const std::string& zvItem) {
  std::erase_if(Lines, [&](const Line& line) { return line.Item == zvItem; });
}

std::int64_t StoreModel::Order::Sum() const {
  std::int64_t lSum = 0;
  for (const Line& line : Lines) {
    lSum += line.Extended;
  }
  return lSum;
}

bool StoreModel::HasCurrent() const {
  return std::ranges::any_of(m_oOrders, [](const auto& entry) { return entry.second.Current; });
}

StoreModel::Order& StoreModel::Current() {
  return std::ranges::find_if(m_oOrders, [](const auto& entry) { return entry.second.Current; })->second;
}

void StoreModel::CreateCurrent() {
  Order& order = m_oOrders[++m_lLastOrder];
  order.Number = m_zDefaultNumber;
  order.City = m_zDefaultCity;
}

std::vector<StoreModel> StoreModel::Passes(const Call& call) const {
  std::vector<StoreModel> states = {*this};
  StoreModel state = *this;
  for (int lStep = 0; state.Write(call, lStep); ++lStep) {
    states.push_back(state);
  }
  return states;
}

bool StoreModel::Write(const Call& call, int lvStep) {
  switch (call.What) {
    case Call::Kind::Load:
      if (HasCurrent()) {
        return false;
      }
      CreateCurrent();
      return true;
    case Call::Kind::Add:
      return WriteAdd(call, lvStep);
    case Call::Kind::Update:
      return WriteUpdate(call, lvStep);
    case Call::Kind::Remove:
      if (lvStep == 0) {
        Current().Remove(call.Items.front().Number);
      } else {
        Current().Total = Current().Sum();
      }
      return lvStep < 2;
    case Call::Kind::Clear:
      if (lvStep == 0) {
        Current().Lines.clear();
      } else {
        Current().Total = 0;
      }
      return lvStep < 2;
    case Call::Kind::SaveSummary:
      if (lvStep == 0) {
        Current().City = call.Text;
        Current().Attention = call.Text;
      } else {
        m_zDefaultNumber = Current().Number;
        m_zDefaultCity = call.Text;
      }
      return lvStep < 2;
    case Call::Kind::SavePONumber:
      Current().Number = call.Text;
      return lvStep < 1;
    case Call::Kind::Submit:
      if (lvStep == 0) {
        Current().Current = false;
      } else if (lvStep == 1) {
        CreateCurrent();
      }
      return lvStep < 2;
    case Call::Kind::DeleteOrder:
      std::erase_if(m_oOrders,
                    [&](const auto& entry) { return entry.first == call.OrderID && !entry.second.Current; });
      return lvStep < 1;
    default:
      WriteList(call);
      return lvStep < 1;
  }
}

StoreModel::Lists::iterator StoreModel::FindList(const std::string& zvName) {
  return std::ranges::find_if(m_oLists, [&](const auto& entry) { return entry.second.Name == zvName; });
}

// Each of these writes by one statement, or as one unit.
void StoreModel::WriteList(const Call& call) {
  const auto list = FindList(call.Text);
  switch (call.What) {
    case Call::Kind::CreateList:
      if (list != m_oLists.end()) {
        m_oLists.erase(list);
      }
      m_oLists[++m_lLastList].Name = call.Text;
      break;
    case Call::Kind::RenameList:
      if (list != m_oLists.end() && FindList(call.NewName) == m_oLists.end()) {
        list->second.Name = call.NewName;
      }
      break;
    case Call::Kind::RemoveList:
    case Call::Kind::RemoveListByName:
      if (list != m_oLists.end()) {
        m_oLists.erase(list);
      }
      break;
    case Call::Kind::AddToList:
      if (list != m_oLists.end()) {
        const Call::Item& item = call.Items.front();
        const auto [line, bNew] = list->second.Lines.try_emplace(item.Number, ListLine{0, item.Notes});
        line->second.Quantity += item.Quantity;
      }
      break;
    default:
      m_oExported = m_oLists;
      break;
  }
}

bool StoreModel::WriteAdd(const Call& call, int lvStep) {
  if (lvStep > 0) {
    Current().Total = Current().Sum();
    return lvStep < 2;
  }
  const Call::Item& item = call.Items.front();
  auto line = Current().Find(item.Number);
  if (line == Current().Lines.end()) {
    line = Current().Lines.insert(line, {item.Number, 0, 0, 0, item.Notes});
  }
  line->Quantity += item.Quantity;
  line->Price = item.Price;
  line->Extended = line->Price * line->Quantity;
  return true;
}

bool StoreModel::WriteUpdate(const Call& call, int lvStep) {
  if (lvStep > 1) {
    Current().Total = Current().Sum();
    return lvStep < 3;
  }
  for (const Call::Item& item : call.Items) {
    const auto line = Current().Find(item.Number);
    if (item.Quantity == 0 && lvStep == 0) {
      Current().Remove(item.Number);
    } else if (item.Quantity != 0 && lvStep == 1 && line != Current().Lines.end()) {
      line->Quantity = item.Quantity;
      line->Price = item.Price;
      line->Extended = item.Price * item.Quantity;
    }
  }
  return true;
}

Texts StoreModel::Describe() const {
  Texts zTexts;
  for (const auto& [lOrderID, order] : m_oOrders) {
    const std::string zOrder = std::to_string(lOrderID);
    zTexts.push_back(DescribeOrder(zOrder, order.Current, "2003-07-04 15:04:05", order.Number, order.City,
                                   order.Attention, std::to_string(order.Total)));
    for (const Line& line : order.Lines) {
      zTexts.push_back(DescribeLine(zOrder, line.Item, std::to_string(line.Quantity),
                                    std::to_string(line.Price), std::to_string(line.Extended),
                                    std::to_string(line.Notes)));
    }
  }
  zTexts.push_back(DescribeDefaults(m_zDefaultNumber, m_zDefaultCity));
  std::ranges::copy(DescribeLists("stored", m_oLists), std::back_inserter(zTexts));
  if (m_oExported) {
    std::ranges::copy(DescribeLists("exported", *m_oExported), std::back_inserter(zTexts));
  }
  return zTexts;
}

Texts StoreModel::DescribeLists(const char* zvWhere, const Lists& lists) {
  Texts zTexts = {std::string(zvWhere) + " lists: " + std::to_string(lists.size())};
  for (const auto& [lListID, list] : lists) {
    zTexts.push_back("list " + std::to_string(lListID) + " \"" + list.Name + "\"");
    for (const auto& [zItem, line] : list.Lines) {
      zTexts.push_back("  " + zItem + ", " + std::to_string(line.Quantity) + ", notes of " +
                       std::to_string(line.Notes));
    }
  }
  return zTexts;
}

StoreModel::Lists StoreModel::StoredLists(const SharedStore& shared) {
  Lists lists;
  for (const Row& row : shared.Store().Query("select lListID, zName from tblPersonalList")) {
    lists[std::stoi(row[0])].Name = row[1];
  }
  for (const Row& row : shared.Store().Query(
           "select lListID, zItemNumber, lQuantity, length(zCustomerNotes) from tblPersonalListItem")) {
    // A line of no list makes one without a name.
    lists[std::stoi(row[0])].Lines[row[1]] = {std::stoll(row[2]), std::stoul(row[3])};
  }
  return lists;
}

StoreModel::Lists StoreModel::ExportedLists(const std::string& zvXML) {
  Lists lists;
  for (const XmlElement& element : ReadStrictly(zvXML).Children) {
    List& list = lists[std::stoi(element.Attributes.at("id"))];
    list.Name = element.Attributes.at("name");
    for (const XmlElement& item : element.Children) {
      list.Lines[item.Attributes.at("itemnumber")] = {std::stoll(item.Attributes.at("quantity")),
                                                      item.Attributes.at("customernotes").size()};
    }
  }
  return lists;
}

Texts StoreModel::DescribeStored(const SharedStore& shared) {
  Texts zTexts;
  const Rows lines = shared.Store().Query(
      "select lOrderID, zItemNumber, lQuantity, cPrice, cExtendedPrice, length(zCustomerNotes) from "
      "tblOrderItem order by lOrderID, lOrderEntered");
  auto line = lines.begin();
  for (const Row& row : shared.Store().Query(
           "select lOrderID, bIsCurrent, datSubmitDate, ifnull(zPurchaseOrderNumber, ''), ifnull(zDICity, "
           "''), ifnull(zOIAttention, ''), cTotalPrice from tblOrder order by lOrderID")) {
    zTexts.push_back(DescribeOrder(row[0], row[1] == "-1", row[2], row[3], row[4], row[5], row[6]));
    for (; line != lines.end() && line->front() == row[0]; ++line) {
      zTexts.push_back(
          DescribeLine(line->at(0), line->at(1), line->at(2), line->at(3), line->at(4), line->at(5)));
    }
  }
  for (; line != lines.end(); ++line) {
    zTexts.push_back("a line of no order: " + line->at(1));
  }
  zTexts.push_back(
      DescribeDefaults(shared.Default(keys::DEFAULT_OI_PO_NUM), shared.Default(keys::DEFAULT_DI_CITY)));
  std::ranges::copy(DescribeLists("stored", StoredLists(shared)), std::back_inserter(zTexts));
  if (std::filesystem::exists(shared.ListsPath())) {
    std::ranges::copy(DescribeLists("exported", ExportedLists(ReadFile(shared.ListsPath()))),
                      std::back_inserter(zTexts));
  }
  return zTexts;
}

int StoreModel::LastSubmitted() const {
  int lLast = 0;
  for (const auto& [lOrderID, order] : m_oOrders) {
    lLast = order.Current ? lLast : lOrderID;
  }
  return lLast;
}

Texts StoreModel::Findings() const {
  Texts zFindings;
  for (const auto& [lOrderID, order] : m_oOrders) {
    if (order.Total != order.Sum()) {
      zFindings.push_back("order " + std::to_string(lOrderID) + ": its total is " +
                          Currency::FromScaled(order.Total).ToString() + ", its lines add up to " +
                          Currency::FromScaled(order.Sum()).ToString());
    }
  }
  return zFindings;
}

}  // namespace test
