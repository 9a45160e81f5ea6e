#include "tests/processes/StoreModel.h"

#include <algorithm>
#include <stdexcept>

#include "qm_ordering/foundation/UserSettingConstants.h"

namespace test {

namespace {

namespace keys = qm_ordering::UserSettingConstants;
using qm_ordering::Currency;

constexpr std::size_t kItems = 12;
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

std::shared_ptr<qm_ordering::OrderItem> ToItem(const Call::Item& item) {
  return NewItem(item.Number, item.Quantity, item.Price, item.Notes);
}

}  // namespace

std::string Call::Describe() const {
  static constexpr const char* kNames[] = {"load",  "add",          "update",         "remove",
                                           "clear", "save summary", "save PO number", "submit"};
  std::string zText = kNames[static_cast<int>(What)];
  for (const Item& item : Items) {
    zText += " " + item.Number + " " + std::to_string(item.Quantity) + " x " + std::to_string(item.Price);
  }
  return zText + (Text.empty() ? "" : " \"" + Text + "\"");
}

Call::Item CallSequence::RandomItem() {
  Call::Item item;
  item.Number = "A" + std::to_string(Pick(kItems));
  item.Quantity = static_cast<std::int32_t>(Pick(60)) - 10;
  item.Price = static_cast<std::int64_t>(Pick(3000000)) - 100000;
  item.Notes = m_bLongNotes ? kLongNotes + Pick(kLongNotes) : Pick(200);
  return item;
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
  const std::size_t lPick = Pick(24);
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
  }
  Require(order.Error());
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
  Order& order = m_oOrders[m_oOrders.empty() ? 1 : m_oOrders.rbegin()->first + 1];
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
  }
  return false;
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
  return zTexts;
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
  return zTexts;
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
