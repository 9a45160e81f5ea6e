#pragma once

#include <string>
#include <utility>
#include <vector>

#include "qm_ordering/order/OrderDetails.h"

namespace test {

// Every stored value of an order and its lines, each under its column; a line's columns with the line's
// position before them: "zDICity", "line 3 zItemNumber".
using OrderValues = std::vector<std::pair<std::string, std::string>>;

// What the object holds.
OrderValues ValuesOf(const qm_ordering::OrderDetails& order);

// As a text that keeps every byte, and back. Throws std::runtime_error for a text of another form.
std::string ToText(const OrderValues& values);
OrderValues FromText(const std::string& zvText);

}  // namespace test
