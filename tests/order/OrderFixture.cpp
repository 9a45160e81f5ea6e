#include "tests/order/OrderFixture.h"

namespace test {

using qm_ordering::OrderDetails;
using qm_ordering::OrderItem;

std::shared_ptr<OrderItem> OrderFixture::NewItem(const std::string& zvItemNumber, std::int32_t lvQuantity,
                                                 const char* zvPrice) {
  auto oItem = std::make_shared<OrderItem>();
  oItem->ItemNumber(zvItemNumber);
  oItem->Quantity(lvQuantity);
  oItem->Price(qm_ordering::Currency::Parse(zvPrice));
  oItem->SellQuantity(1);
  oItem->ShipQuantity(1);
  return oItem;
}

std::shared_ptr<OrderDetails> OrderFixture::LoadCurrent() {
  auto oOrder = std::make_shared<OrderDetails>();
  oOrder->LoadSummary(true);
  EXPECT_EQ(oOrder->Error(), qm_ordering::ErrorInfo()) << oOrder->Error().Description;
  return oOrder;
}

std::shared_ptr<OrderDetails> OrderFixture::CurrentWith(
    const std::vector<std::shared_ptr<OrderItem>>& oItems) {
  auto oOrder = LoadCurrent();
  for (const auto& oItem : oItems) {
    oOrder->AddItem(oItem);
    EXPECT_EQ(oOrder->Error().Number, 0) << oOrder->Error().Description;
  }
  return oOrder;
}

std::vector<std::string> OrderFixture::NumbersOf(const OrderDetails& order) {
  std::vector<std::string> numbers;
  for (const auto& oItem : *order.OrderItems()) {
    numbers.push_back(oItem->ItemNumber());
  }
  return numbers;
}

std::vector<std::string> OrderFixture::StoredLines() const {
  std::vector<std::string> lines;
  for (const Row& row :
       Store.Query("select lOrderID || ' ' || zItemNumber || ' ' || lQuantity || ' x ' || cPrice || ' = ' || "
                   "cExtendedPrice from tblOrderItem order by lOrderEntered")) {
    lines.push_back(row.front());
  }
  return lines;
}

std::string OrderFixture::StoredTotal(std::int32_t lvOrderID) const {
  return StoredHeader("cTotalPrice", lvOrderID);
}

std::string OrderFixture::StoredHeader(const std::string& zvColumn, std::int32_t lvOrderID) const {
  return Store.Value("select " + zvColumn + " from tblOrder where lOrderID = " + std::to_string(lvOrderID));
}

void OrderFixture::AddSubmittedOrder(std::int32_t lvOrderID) const {
  Store.Run("insert into tblOrder (lOrderID, datSubmitDate) values (" + std::to_string(lvOrderID) +
            ", '2001-03-03 10:00:00')");
}

}  // namespace test
