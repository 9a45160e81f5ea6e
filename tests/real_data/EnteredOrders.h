#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "qm_ordering/order/CurrentOrder.h"
#include "tests/real_data/CsvTable.h"
#include "tests/support/OrderValues.h"
#include "tests/support/StoreFixture.h"

namespace test {

// The values of an order's header or of one of its lines by column, in the form of StoredField.
using Values = std::map<std::string, std::string>;

// Orders that are made from the rows of tables, entered by the public classes, and read back.
class EnteredOrders : public StoreFixture {
 protected:
  // Where the made tables are.
  static constexpr const char* kMadeFolder = QM_ORDERING_SOURCE_DIR "/tests/real_data/made";
  // Where the real ones are; empty when QM_ORDERING_REAL_DATA does not say it.
  static std::string RealFolder();

  // A header with the customer in every field that a host sets; lvMix varies what is no text.
  static Values HeaderOf(const CsvRow& customer, std::size_t lvMix);
  // A line of the product for the customer; lvMix varies what is no text.
  static Values LineOf(const CsvRow& product, const CsvRow& customer, std::size_t lvMix);

  // Makes the store's current order this one, and answers what the store must hold then.
  static OrderValues Enter(qm_ordering::CurrentOrder& orOrder, Values header, std::vector<Values> lines);
  // Submits it, and answers what the store must hold of it then: the clock's moment is the submit date.
  OrderValues Submit(qm_ordering::CurrentOrder& orOrder, OrderValues entered) const;

  // All values of these orders ("1 2 3"), one order after the other, as another process reads them.
  OrderValues ReadInANewProcess(const std::string& zvNumbers) const;
  static void ExpectSame(const OrderValues& values, const OrderValues& expected);
};

}  // namespace test
