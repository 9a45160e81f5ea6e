#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "qm_ordering/order/OrderDetails.h"
#include "qm_ordering/order/OrderItem.h"
#include "tests/support/StoreFixture.h"

namespace test {

// A store, the orders that a test makes in it, and what lies in its file.
class OrderFixture : public StoreFixture {
 protected:
  // An item with packs of one. zvPrice is its plain text form.
  static std::shared_ptr<qm_ordering::OrderItem> NewItem(const std::string& zvItemNumber,
                                                         std::int32_t lvQuantity = 1,
                                                         const char* zvPrice = "1");

  // The current order with its summary loaded; a new object at each call.
  static std::shared_ptr<qm_ordering::OrderDetails> LoadCurrent();

  // The current order with these items added, one after the other.
  static std::shared_ptr<qm_ordering::OrderDetails> CurrentWith(
      const std::vector<std::shared_ptr<qm_ordering::OrderItem>>& oItems);

  // The keys-to-be of a collection: its items' numbers in its order.
  static std::vector<std::string> NumbersOf(const qm_ordering::OrderDetails& order);

  // The lines in the file, in the order of entry: "ORDER NUMBER QUANTITY x PRICE = EXTENDED", money times
  // 10,000.
  std::vector<std::string> StoredLines() const;
  // The total of an order in the file, times 10,000.
  std::string StoredTotal(std::int32_t lvOrderID) const;
  // A column of an order's row in the file.
  std::string StoredHeader(const std::string& zvColumn, std::int32_t lvOrderID = 1) const;

  // An order without lines that was submitted on 3 March 2001.
  void AddSubmittedOrder(std::int32_t lvOrderID) const;
};

}  // namespace test
