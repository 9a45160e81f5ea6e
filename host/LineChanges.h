#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/Context.h"
#include "host/Requests.h"
#include "qm_ordering/qm_ordering.h"

namespace host {

// What a command did to a line.
struct LineChange {
  std::string ItemNumber;  // the key of the line
  std::string Description;
  std::string Done;     // "added", "merged", "changed", "removed" or "refused"
  std::string Details;  // for a person
  std::optional<qm_ordering::Currency> PriceBefore = {};  // of a line whose price may be another now
};

// Shows the changes beside what the order's freshly loaded lines hold.
void ReportChanges(Context& context, const std::vector<LineChange>& changes,
                   const qm_ordering::OrderDetails& order);

// "PL-1, PL-2 and 12 more".
std::string ShortList(const std::vector<std::string>& zvNames);

// Adds to the current order what is asked for, one line after the other, and reports each. zvSource, like
// "The catalogue", is what gave the pack sizes. The first line that cannot be stored ends it, with what was
// added before it said. Answers kNotGood when a request was refused.
int AddToCurrentOrder(Context& context, const Requests& requests, const std::string& zvSource);

}  // namespace host
