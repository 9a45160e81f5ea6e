#include "host/LineChanges.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "host/Errors.h"
#include "host/OrderSession.h"
#include "host/Packs.h"
#include "host/Progress.h"
#include "host/Table.h"
#include "host/Text.h"

namespace host {

using namespace qm_ordering;

namespace {

constexpr std::size_t kMostNamed = 10;

// The price of a line in the order, where a change gave it another one.
std::string NewPriceText(const LineChange& change, const OrderItem& item) {
  if (!change.PriceBefore || *change.PriceBefore == item.Price()) {
    return {};
  }
  return MoneyText(item.Price()) + ", was " + MoneyText(*change.PriceBefore);
}

Json ChangeJson(const LineChange& change) {
  Json line = {{"ItemNumber", change.ItemNumber}, {"Done", change.Done}};
  if (change.Done == "refused") {
    line["Reason"] = change.Details;
  }
  line["Quantity"] = 0;
  return line;
}

std::string DetailsText(const LineChange& change) {
  return change.Done == "refused" ? "refused: " + change.Details : change.Details;
}

// "2 lines added, 1 merged, 1 refused." Nothing where there is one kind only.
std::string SummaryText(const std::vector<LineChange>& changes) {
  std::vector<std::string> counts;
  for (const char* zDone : {"added", "merged", "refused"}) {
    const auto lCount = static_cast<std::size_t>(std::ranges::count(changes, zDone, &LineChange::Done));
    if (lCount > 0) {
      counts.push_back((counts.empty() ? Counted(lCount, "line") : std::to_string(lCount)) + " " + zDone);
    }
  }
  return counts.size() < 2 ? "" : Listed(counts) + ".\n";
}

// Says what a user may not expect of the items that are about to be added. A line that is in the order
// already keeps the pack sizes that it has.
void Announce(Context& context, const Requests& requests, const std::string& zvSource,
              const OrderItems& stored) {
  std::vector<std::string> withoutPack;
  std::vector<std::string> withMark;
  for (const Request& request : requests) {
    if (!request.Refusal.empty()) {
      continue;
    }
    if (request.HadNoPack && stored.Item(request.Item->ItemNumber()) == nullptr) {
      withoutPack.push_back(request.Item->ItemNumber());
    }
    if (request.Item->ItemNumber().find("DUP") != std::string::npos) {
      withMark.push_back(request.Item->ItemNumber());
    }
  }
  if (!withoutPack.empty()) {
    context.Out.Note(zvSource + " gives no pack size for " + ShortList(withoutPack) +
                     "; it counts as pack 1.");
  }
  if (!withMark.empty()) {
    context.Out.Warning(
        "An order shows item numbers only up to the letters DUP, which mark a line that an "
        "import found twice. It concerns " +
        ShortList(withMark) + ".");
  }
}

LineChange AddOne(CurrentOrder& order, const Request& request, const OrderItems& before) {
  const std::string zQuantity = std::to_string(request.Quantity);
  LineChange change = {request.Item->ItemNumber(), request.Item->Description(), "added",
                       "added " + zQuantity};
  if (!request.Refusal.empty()) {
    change.Done = "refused";
    change.Details = request.Refusal;
    return change;
  }
  if (const auto oStored = before.Item(request.Item->ItemNumber())) {
    change.Done = "merged";
    change.Details = "added " + zQuantity + " to " + std::to_string(oStored->Quantity());
    change.PriceBefore = oStored->Price();
  }
  request.Item->Quantity(request.Quantity);
  order.AddItem(request.Item);
  CheckRecord(order.Error());
  return change;
}

// Adds one item after the other, and a change for each. The first failure ends it.
void AddAll(Context& context, CurrentOrder& order, const Requests& requests,
            std::vector<LineChange>& orChanges) {
  const auto oBefore = order.OrderDetails()->OrderItems();
  Progress progress(context.Out, "Adding", requests.size());
  for (const Request& request : requests) {
    orChanges.push_back(AddOne(order, request, *oBefore));
    progress.Done(orChanges.size());
  }
}

// Says how far the command came before a failure that is still to be told.
void ReportUnfinished(Context& context, CurrentOrder& order, const Requests& requests,
                      const std::vector<LineChange>& changes) {
  const auto lRefused = static_cast<std::size_t>(std::ranges::count(changes, "refused", &LineChange::Done));
  context.Out.Warning("Adding item " + requests[changes.size()].Item->ItemNumber() +
                      " failed. Added before it: " + std::to_string(changes.size() - lRefused) + " of " +
                      std::to_string(requests.size()) + ".");
  if (changes.empty()) {
    return;
  }
  try {
    LoadUncheckedLines(order);
    ReportChanges(context, changes, *order.OrderDetails());
  } catch (const Failure&) {
    // A store that cannot be read now has failed before, and that failure is the one to be told.
  }
}

}  // namespace

void ReportChanges(Context& context, const std::vector<LineChange>& changes, const OrderDetails& order) {
  const std::int32_t lMethod = order.DeliveryInformation()->DeliveryMethod();
  constexpr auto kRight = Table::Align::Right;
  Table table({{"item"},
               {"description", Table::Align::Left, true},
               {"done", Table::Align::Left, true},
               {"new price"},
               {"in order", kRight},
               {"pack", kRight},
               {"fits"}});
  std::string zMisfits;
  Json lines = Json::array();
  for (const LineChange& change : changes) {
    const auto oItem = order.OrderItems()->Item(change.ItemNumber);
    Json line = ChangeJson(change);
    if (oItem == nullptr) {
      table.Add({change.ItemNumber, change.Description, DetailsText(change), "", "0", "", ""});
      lines.push_back(line);
      continue;
    }
    const std::int32_t lPack = PackOf(*oItem, lMethod);
    const bool bFits = Fits(oItem->Quantity(), lPack);
    const std::string zNewPrice = NewPriceText(change, *oItem);
    table.Add({change.ItemNumber, change.Description, DetailsText(change), zNewPrice,
               std::to_string(oItem->Quantity()), std::to_string(lPack), bFits ? "yes" : "no *"});
    line["Quantity"] = oItem->Quantity();
    line["Pack"] = lPack;
    line["ValidQuantity"] = lPack == 0 ? Json() : Json(bFits);
    if (!bFits) {
      zMisfits += "* " + Shown(change.ItemNumber) + ": " + MisfitText(oItem->Quantity(), lPack) + ".\n";
    }
    if (!bFits && lPack != 0) {
      line["NearestQuantities"] = NearestJson(oItem->Quantity(), lPack);
    }
    if (!zNewPrice.empty()) {
      line["Price"] = oItem->Price().ToString();
      line["PriceBefore"] = change.PriceBefore->ToString();
    }
    lines.push_back(line);
  }
  context.Out.MarkChange();
  context.Out.Text(table.Text(Output::Width()) + "\nTotal " + MoneyText(order.TotalPrice()) + "\n" +
                   SummaryText(changes) + zMisfits);
  context.Out.Data({{"lines", lines}, {"TotalPrice", order.TotalPrice().ToString()}});
}

std::string ShortList(const std::vector<std::string>& zvNames) {
  if (zvNames.size() <= kMostNamed) {
    return Listed(zvNames);
  }
  std::vector<std::string> first(zvNames.begin(), zvNames.begin() + kMostNamed);
  first.push_back(std::to_string(zvNames.size() - kMostNamed) + " more");
  return Listed(first);
}

int AddToCurrentOrder(Context& context, const Requests& requests, const std::string& zvSource) {
  const auto oOrder = OpenCurrentOrder(context);
  LoadUncheckedLines(*oOrder);
  Announce(context, requests, zvSource, *oOrder->OrderDetails()->OrderItems());
  std::vector<LineChange> changes;
  try {
    AddAll(context, *oOrder, requests, changes);
  } catch (...) {
    ReportUnfinished(context, *oOrder, requests, changes);
    throw;
  }
  // The collection does not show the new quantities of lines that were there before.
  LoadUncheckedLines(*oOrder);
  ReportChanges(context, changes, *oOrder->OrderDetails());
  const bool bRefused = std::ranges::find(changes, "refused", &LineChange::Done) != changes.end();
  return bRefused ? kNotGood : kGood;
}

}  // namespace host
