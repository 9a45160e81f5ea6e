#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "qm_ordering/order/OrderDetails.h"
#include "qm_ordering/store/OrderStore.h"
#include "tests/order/OrderFixture.h"
#include "tests/support/RaisedNumber.h"

namespace {

using qm_ordering::Currency;
using qm_ordering::ErrorInfo;
using qm_ordering::OrderItem;
using qm_ordering::OrderItems;

using Texts = std::vector<std::string>;

// The items, each in the spellings under which it is one and the same.
const std::vector<Texts> kItems = {{"A1", "a1"},       {"b-2", "B-2"},   {"Käse", "KÄSE", "kÄsE"},
                                   {"ΣΙΓΜΑ", "σιγμα"}, {"10 %", "10 %"}, {"x_y", "X_Y"},
                                   {"\"Q\"", "\"q\""}, {"ж", "Ж"},       {"DUPlo", "duplO"}};

struct ModelLine {
  std::size_t Item = 0;
  std::string Number;
  std::int32_t Quantity = 0;
  std::int64_t Price = 0;
  std::int64_t Extended = 0;
  int Entered = 0;
};

struct ModelOrder {
  std::vector<ModelLine> Lines;
  std::int64_t Total = 0;
  std::string PurchaseOrderNumber;
  std::string City;

  std::vector<ModelLine>::iterator Find(std::size_t lvItem) {
    return std::find_if(Lines.begin(), Lines.end(),
                        [=](const ModelLine& line) { return line.Item == lvItem; });
  }
  void UpdateTotal() {
    Total = 0;
    for (const ModelLine& line : Lines) {
      Total += line.Extended;
    }
  }
};

// A host that works on the current order in a random but repeatable way, beside a model that says what store
// and object must hold after each step.
class OrderModel : public test::OrderFixture {
 protected:
  void Work(unsigned lvSeed, int lvSteps) {
    m_oRandom.seed(lvSeed);
    m_oOrder = LoadCurrent();
    m_oStored[1];
    for (int lStep = 0; lStep < lvSteps; ++lStep) {
      const std::string zStep = Step();
      SCOPED_TRACE("seed " + std::to_string(lvSeed) + ", step " + std::to_string(lStep) + ": " + zStep);
      Compare();
      if (HasFailure()) {
        return;
      }
    }
    for (const char* zWanted :
         {"add new", "add merged", "add removed", "update", "remove", "clear", "save summary", "save number",
          "submit", "submit again", "load summary", "load items"}) {
      EXPECT_TRUE(m_oSeen.contains(zWanted)) << zWanted << " did not occur";
    }
  }

 private:
  std::size_t Pick(std::size_t lvCount) { return m_oRandom() % lvCount; }

  std::shared_ptr<OrderItem> RandomItem(std::size_t lvItem) {
    auto oItem = NewItem(kItems[lvItem][Pick(kItems[lvItem].size())]);
    oItem->Quantity(static_cast<std::int32_t>(Pick(40)) - 8);
    oItem->Price(Currency::FromScaled(static_cast<std::int64_t>(Pick(2000000)) - 100000));
    return oItem;
  }

  ModelOrder& Named() { return m_oStored[m_lOrderID]; }

  std::string Step() {
    std::string zStep;
    switch (Pick(20)) {
      case 0:
      case 1:
        zStep = Update();
        break;
      case 2:
      case 3:
        zStep = Remove();
        break;
      case 4:
        zStep = Pick(3) == 0 ? Clear() : LoadLines();
        break;
      case 5:
      case 6:
        zStep = SaveSummary();
        break;
      case 7:
        zStep = SaveNumber();
        break;
      case 8:
        zStep = Submit();
        break;
      case 9:
        zStep = LoadSummary();
        break;
      case 10:
      case 11:
        zStep = LoadLines();
        break;
      default:
        zStep = Add();
        break;
    }
    m_oSeen.insert(zStep);
    return zStep;
  }

  std::string Add() {
    const std::size_t lItem = Pick(kItems.size());
    const auto oItem = RandomItem(lItem);
    const auto line = Named().Find(lItem);
    const bool bStored = line != Named().Lines.end();
    const std::int64_t lExtended = oItem->Price().Scaled() * oItem->Quantity();
    if (bStored) {
      line->Quantity += oItem->Quantity();
      line->Price = oItem->Price().Scaled();
      line->Extended = line->Price * line->Quantity;
    } else {
      Named().Lines.push_back(
          {lItem, oItem->ItemNumber(), oItem->Quantity(), oItem->Price().Scaled(), lExtended, ++m_lEntered});
    }
    Named().UpdateTotal();
    const bool bKeyTaken = std::find(m_lShown.begin(), m_lShown.end(), lItem) != m_lShown.end();
    EXPECT_EQ(test::RaisedNumber([&] { m_oOrder->AddItem(oItem); }), bStored || !bKeyTaken ? 0 : 457);
    EXPECT_EQ(oItem->ExtendedPrice().Scaled(), lExtended);
    if (bStored) {
      m_lTotal = Named().Total;
      return "add merged";
    }
    if (bKeyTaken) {
      // A host goes on with what the store holds.
      m_oOrder->LoadSummary();
      m_oOrder->LoadItems();
      TakeSummary();
      TakeLines();
      return "add removed";
    }
    m_lShown.push_back(lItem);
    m_lTotal += lExtended;
    return "add new";
  }

  std::string Update() {
    const auto oItems = std::make_shared<OrderItems>();
    for (std::size_t lItem = 0; lItem < kItems.size(); ++lItem) {
      if (Pick(3) == 0) {
        const auto oItem = RandomItem(lItem);
        if (Pick(4) == 0) {
          oItem->Quantity(0);
        }
        oItem->ExtendedPrice(oItem->Price() * oItem->Quantity());
        oItems->Add(oItem, oItem->ItemNumber());
        const auto line = Named().Find(lItem);
        if (line == Named().Lines.end()) {
          continue;
        }
        if (oItem->Quantity() == 0) {
          Named().Lines.erase(line);
        } else {
          line->Quantity = oItem->Quantity();
          line->Price = oItem->Price().Scaled();
          line->Extended = oItem->ExtendedPrice().Scaled();
        }
      }
    }
    m_oOrder->UpdateItems(oItems);
    Named().UpdateTotal();
    m_lTotal = Named().Total;
    return "update";
  }

  std::string Remove() {
    const std::size_t lItem = Pick(kItems.size());
    m_oOrder->RemoveItem(kItems[lItem].back());
    const auto line = Named().Find(lItem);
    if (line != Named().Lines.end()) {
      Named().Lines.erase(line);
    }
    Named().UpdateTotal();
    m_lTotal = Named().Total;
    return "remove";
  }

  std::string Clear() {
    m_oOrder->ClearItems();
    Named().Lines.clear();
    Named().Total = 0;
    m_lTotal = 0;
    return "clear";
  }

  void ChangeHeader() {
    m_zNumber = "PO '" + std::to_string(Pick(1000)) + "'";
    m_zCity = "Città " + std::to_string(Pick(1000));
    m_oOrder->PurchaseOrderNumber(m_zNumber);
    m_oOrder->DeliveryInformation()->City(m_zCity);
  }

  std::string SaveSummary() {
    ChangeHeader();
    m_oOrder->SaveSummary();
    Named().Total = m_lTotal;
    Named().PurchaseOrderNumber = m_zDefaultNumber = m_zNumber;
    Named().City = m_zDefaultCity = m_zCity;
    return "save summary";
  }

  std::string SaveNumber() {
    ChangeHeader();
    m_oOrder->SavePONumber();
    Named().PurchaseOrderNumber = m_zNumber;
    return "save number";
  }

  std::string Submit() {
    const bool bCurrent = m_lOrderID == m_lCurrent;
    m_oOrder->SaveToHistory();
    EXPECT_EQ(m_oOrder->Error().Number, bCurrent ? 0 : 2);
    if (!bCurrent) {
      m_oOrder->LoadSummary();
      TakeSummary();
      return "submit again";
    }
    m_oStored[++m_lCurrent] = {{}, 0, m_zDefaultNumber, m_zDefaultCity};
    return "submit";
  }

  // The current order's summary and lines, as after a submission; or the own order's summary.
  std::string LoadSummary() {
    if (Pick(2) == 0) {
      m_oOrder->LoadSummary();
      TakeSummary();
    } else {
      m_oOrder->LoadSummary(true);
      m_lOrderID = m_lCurrent;
      TakeSummary();
      m_oOrder->LoadItems(0, true, true);
      TakeLines();
    }
    return "load summary";
  }

  void TakeSummary() {
    m_lTotal = Named().Total;
    m_zNumber = Named().PurchaseOrderNumber;
    m_zCity = Named().City;
  }

  std::string LoadLines() {
    m_oOrder->LoadItems();
    TakeLines();
    return "load items";
  }

  // After a load the collection holds the order's lines.
  void TakeLines() {
    m_lShown.clear();
    ASSERT_EQ(m_oOrder->OrderItems()->Count(), static_cast<std::int32_t>(Named().Lines.size()));
    std::int32_t lPosition = 0;
    for (const ModelLine& line : Named().Lines) {
      const auto oItem = m_oOrder->OrderItems()->Item(++lPosition);
      EXPECT_EQ(oItem, m_oOrder->OrderItems()->Item(line.Number));
      EXPECT_EQ(oItem->ItemNumber(), line.Number.starts_with("DUP") ? "" : line.Number);
      EXPECT_EQ(oItem->OrderID(), m_lOrderID);
      EXPECT_EQ(oItem->Quantity(), line.Quantity);
      EXPECT_EQ(oItem->Price().Scaled(), line.Price);
      EXPECT_EQ(oItem->ExtendedPrice().Scaled(), line.Extended);
      m_lShown.push_back(line.Item);
    }
  }

  void Compare() {
    EXPECT_EQ(m_oOrder->Error(), ErrorInfo());
    EXPECT_EQ(m_oOrder->OrderID(), m_lOrderID);
    EXPECT_EQ(m_oOrder->TotalPrice().Scaled(), m_lTotal);
    EXPECT_EQ(m_oOrder->PurchaseOrderNumber(), m_zNumber);
    EXPECT_EQ(m_oOrder->DeliveryInformation()->City(), m_zCity);
    EXPECT_EQ(m_oOrder->OrderItems()->Count(), static_cast<std::int32_t>(m_lShown.size()));
    EXPECT_EQ(m_oOrder->ItemCount(), static_cast<std::int32_t>(Named().Lines.size()));
    std::map<int, std::string> lines;
    test::Rows orders;
    for (const auto& [lOrderID, order] : m_oStored) {
      orders.push_back({std::to_string(lOrderID), lOrderID == m_lCurrent ? "-1" : "0",
                        std::to_string(order.Total), order.PurchaseOrderNumber, order.City});
      for (const ModelLine& line : order.Lines) {
        lines[line.Entered] = std::to_string(lOrderID) + " " + line.Number + " " +
                              std::to_string(line.Quantity) + " x " + std::to_string(line.Price) + " = " +
                              std::to_string(line.Extended);
      }
    }
    Texts expected;
    for (const auto& [lEntered, zLine] : lines) {
      expected.push_back(zLine);
    }
    EXPECT_EQ(StoredLines(), expected);
    EXPECT_EQ(
        Store.Query("select lOrderID, bIsCurrent, cTotalPrice, zPurchaseOrderNumber, zDICity from tblOrder "
                    "order by lOrderID"),
        orders);
    EXPECT_EQ(qm_ordering::CheckOrderStore(), Texts());
  }

  std::mt19937 m_oRandom;
  std::set<std::string> m_oSeen;
  std::shared_ptr<qm_ordering::OrderDetails> m_oOrder;

  // What the store must hold.
  std::map<std::int32_t, ModelOrder> m_oStored;
  std::int32_t m_lCurrent = 1;
  int m_lEntered = 0;
  std::string m_zDefaultNumber;
  std::string m_zDefaultCity;

  // What the object must hold.
  std::int32_t m_lOrderID = 1;
  std::int64_t m_lTotal = 0;
  std::string m_zNumber;
  std::string m_zCity;
  std::vector<std::size_t> m_lShown;  // the items in the collection
};

TEST_F(OrderModel, AgreesWithTheStoreAfterEveryStepOfOneHost) {
  Work(20030704, 250);
}

TEST_F(OrderModel, AgreesWithTheStoreAfterEveryStepOfAnotherHost) {
  Work(20041225, 250);
}

TEST_F(OrderModel, AgreesWithTheStoreAfterEveryStepOfAThirdHost) {
  Work(7, 250);
}

}  // namespace
