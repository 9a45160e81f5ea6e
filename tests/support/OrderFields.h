#pragma once

#include <functional>
#include <string>
#include <vector>

#include "qm_ordering/order/OrderDetails.h"
#include "qm_ordering/order/OrderItem.h"

namespace test {

// A stored value of an object, by its column. Values are texts in the form of the store's file: money times
// 10,000, True as -1, "NULL" for a date that is not set.
template <typename Object>
struct StoredField {
  std::string Column;
  std::function<std::string(const Object&)> Get;
  // Empty for what a host cannot set.
  std::function<void(Object&, const std::string&)> Set;
};

// What an order keeps in its row of tblOrder, in the order in which LoadSummary takes it over. The order must
// have its header objects.
const std::vector<StoredField<qm_ordering::OrderDetails>>& HeaderFields();

// What a line keeps in its row of tblOrderItem.
const std::vector<StoredField<qm_ordering::OrderItem>>& LineFields();

// A value for the column, other than its default and another one for each column (flags aside) and mark.
std::string SampleValue(const std::string& zvColumn, int lvMark = 1);

// Sets every field that a host can set, OrderID aside, to SampleValue.
void FillHeader(qm_ordering::OrderDetails& orOrder, int lvMark = 1);

}  // namespace test
