#pragma once

#include <string>

#include "host/Output.h"
#include "qm_ordering/qm_ordering.h"

namespace host {

// An order for a person to read: summary, the header details that are filled, lines, total. With bvChecked
// the quantities that do not fit their pack are marked.
std::string OrderText(const qm_ordering::OrderDetails& order, bool bvChecked);
// Its lines alone, as a table.
std::string LinesText(const qm_ordering::OrderDetails& order, bool bvChecked);
// Its header details that are filled.
std::string HeaderText(const qm_ordering::OrderDetails& order);

// Every stored field of an order, under the names of the properties; money as text.
Json OrderJson(const qm_ordering::OrderDetails& order, bool bvChecked);
// The header alone.
Json HeaderJson(const qm_ordering::OrderDetails& order);

// A value under its property's name.
Json ValueJson(const qm_ordering::Variant& vvValue);

}  // namespace host
