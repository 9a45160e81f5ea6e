#include "host/OrderLineCommands.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/Catalogue.h"
#include "host/CommandLine.h"
#include "host/Errors.h"
#include "host/OrderSession.h"
#include "host/Packs.h"
#include "host/Progress.h"
#include "host/Table.h"
#include "host/Text.h"

namespace host {

namespace {

using namespace qm_ordering;

constexpr std::size_t kMostNamed = 10;

struct AddOptions {
  std::string CatalogueFile;
  std::vector<std::string> Items;  // item number, quantity, item number, quantity, ...
  std::string All;                 // the quantity; empty: not the whole catalogue
};

struct QuantityOptions {
  std::vector<std::string> Items;
};

struct RemoveOptions {
  std::string Item;
};

std::int32_t Quantity(const std::string& zvText, std::int32_t lvLeast) {
  const auto lQuantity = ParseInteger(zvText);
  if (!lQuantity || *lQuantity < lvLeast) {
    throw UsageError("\"" + zvText + "\" is not a quantity, which is a whole number from " +
                     std::to_string(lvLeast) + " to 2147483647.");
  }
  return *lQuantity;
}

// The arguments ITEM QTY ITEM QTY ... as pairs.
std::vector<std::pair<std::string, std::int32_t>> Pairs(const std::vector<std::string>& zvItems,
                                                        std::int32_t lvLeast) {
  if (zvItems.size() % 2 != 0) {
    throw UsageError("Items and quantities come in pairs, ITEM QTY; after \"" + zvItems.back() +
                     "\" there is nothing.");
  }
  std::vector<std::pair<std::string, std::int32_t>> pairs;
  for (std::size_t i = 0; i < zvItems.size(); i += 2) {
    pairs.emplace_back(zvItems[i], Quantity(zvItems[i + 1], lvLeast));
  }
  return pairs;
}

// What a command did to a line.
struct Change {
  std::string ItemNumber;  // the key of the line
  std::string Description;
  std::string Done;     // "added", "merged", "changed" or "removed"
  std::string Details;  // for a person
};

// Shows the changes beside what the order's freshly loaded lines hold.
void Report(Context& context, const std::vector<Change>& changes, const OrderDetails& order) {
  const std::int32_t lMethod = order.DeliveryInformation()->DeliveryMethod();
  constexpr auto kRight = Table::Align::Right;
  Table table({{"item"},
               {"description", Table::Align::Left, true},
               {"done"},
               {"in order", kRight},
               {""},
               {"pack", kRight}});
  std::string zMisfits;
  Json lines = Json::array();
  for (const Change& change : changes) {
    const auto oItem = order.OrderItems()->Item(change.ItemNumber);
    Json line = {{"ItemNumber", change.ItemNumber}, {"Done", change.Done}, {"Quantity", 0}};
    if (oItem == nullptr) {
      table.Add({change.ItemNumber, change.Description, change.Details, "0", "", ""});
      lines.push_back(line);
      continue;
    }
    const std::int32_t lPack = PackOf(*oItem, lMethod);
    const bool bFits = Fits(oItem->Quantity(), lPack);
    table.Add({change.ItemNumber, change.Description, change.Details, std::to_string(oItem->Quantity()),
               bFits ? "" : "*", std::to_string(lPack)});
    line["Quantity"] = oItem->Quantity();
    line["Pack"] = lPack;
    line["ValidQuantity"] = lPack == 0 ? Json() : Json(bFits);
    if (!bFits) {
      zMisfits += "* " + Shown(change.ItemNumber) + ": " + MisfitText(oItem->Quantity(), lPack) + ".\n";
    }
    if (!bFits && lPack != 0) {
      line["NearestQuantities"] = NearestJson(oItem->Quantity(), lPack);
    }
    lines.push_back(line);
  }
  context.Out.MarkChange();
  context.Out.Text(table.Text(Output::Width()) + "\nTotal " + MoneyText(order.TotalPrice()) + "\n" +
                   zMisfits);
  context.Out.Data({{"lines", lines}, {"TotalPrice", order.TotalPrice().ToString()}});
}

// An item of the catalogue with the quantity to add.
struct Request {
  std::shared_ptr<OrderItem> Item;
  std::int32_t Quantity;
};

// The requests of the command line; an item that is named twice becomes one.
std::vector<Request> Requests(const AddOptions& options, const Catalogue& catalogue) {
  std::vector<Request> requests;
  if (!options.All.empty()) {
    const std::int32_t lQuantity = Quantity(options.All, 1);
    for (const auto& oItem : catalogue.Items()) {
      requests.push_back({oItem, lQuantity});
    }
    return requests;
  }
  for (const auto& [zNumber, lQuantity] : Pairs(options.Items, 1)) {
    const auto oItem = catalogue.Find(zNumber);
    const auto found = std::ranges::find(requests, oItem, &Request::Item);
    if (found == requests.end()) {
      requests.push_back({oItem, lQuantity});
    } else if (__builtin_add_overflow(found->Quantity, lQuantity, &found->Quantity)) {
      throw UsageError("The quantities of item " + zNumber + " add up to more than 2147483647.");
    }
  }
  return requests;
}

std::string ShortList(const std::vector<std::string>& zvNames) {
  if (zvNames.size() <= kMostNamed) {
    return Listed(zvNames);
  }
  std::vector<std::string> first(zvNames.begin(), zvNames.begin() + kMostNamed);
  first.push_back(std::to_string(zvNames.size() - kMostNamed) + " more");
  return Listed(first);
}

// Says what a user may not expect of the items that are about to be added. A line that is in the order
// already keeps the pack sizes that it has.
void Announce(Context& context, const std::vector<Request>& requests, const Catalogue& catalogue,
              const OrderItems& stored) {
  std::vector<std::string> withoutPack;
  std::vector<std::string> withMark;
  for (const Request& request : requests) {
    if (catalogue.HadNoPack(*request.Item) && stored.Item(request.Item->ItemNumber()) == nullptr) {
      withoutPack.push_back(request.Item->ItemNumber());
    }
    if (request.Item->ItemNumber().find("DUP") != std::string::npos) {
      withMark.push_back(request.Item->ItemNumber());
    }
  }
  if (!withoutPack.empty()) {
    context.Out.Note("The catalogue gives no pack size for " + ShortList(withoutPack) +
                     "; it counts as pack 1.");
  }
  if (!withMark.empty()) {
    context.Out.Warning(
        "An order shows item numbers only up to the letters DUP, which mark a line that an "
        "import found twice. It concerns " +
        ShortList(withMark) + ".");
  }
}

// Adds one item after the other, and a change for each. The first failure ends it.
void AddAll(Context& context, CurrentOrder& order, const std::vector<Request>& requests,
            std::vector<Change>& orChanges) {
  // Adding makes this collection longer, so what it held before is asked first.
  const auto oBefore = order.OrderDetails()->OrderItems();
  Progress progress(context.Out, "Adding", requests.size());
  for (const Request& request : requests) {
    const auto oStored = oBefore->Item(request.Item->ItemNumber());
    const std::string zQuantity = std::to_string(request.Quantity);
    Change change = {request.Item->ItemNumber(), request.Item->Description(), "added", "added " + zQuantity};
    if (oStored != nullptr) {
      change.Done = "merged";
      change.Details = "added " + zQuantity + " to " + std::to_string(oStored->Quantity());
    }
    request.Item->Quantity(request.Quantity);
    order.AddItem(request.Item);
    CheckRecord(order.Error());
    orChanges.push_back(std::move(change));
    progress.Done(orChanges.size());
  }
}

// Says how far the command came before a failure that is still to be told.
void ReportUnfinished(Context& context, CurrentOrder& order, const std::vector<Request>& requests,
                      const std::vector<Change>& changes) {
  context.Out.Warning("Adding item " + requests[changes.size()].Item->ItemNumber() +
                      " failed. Added before it: " + std::to_string(changes.size()) + " of " +
                      std::to_string(requests.size()) + ".");
  if (changes.empty()) {
    return;
  }
  try {
    LoadUncheckedLines(order);
    Report(context, changes, *order.OrderDetails());
  } catch (const Failure&) {
    // A store that cannot be read now has failed before, and that failure is the one to be told.
  }
}

int Add(Context& context, const AddOptions& options) {
  if (options.Items.empty() == options.All.empty()) {
    throw UsageError("Say either which items to add, ITEM QTY, or --all QTY for the whole catalogue.");
  }
  // All of it is checked before anything is added.
  const Catalogue catalogue(options.CatalogueFile, context.Out);
  const std::vector<Request> requests = Requests(options, catalogue);
  const auto oOrder = OpenCurrentOrder(context);
  LoadUncheckedLines(*oOrder);
  Announce(context, requests, catalogue, *oOrder->OrderDetails()->OrderItems());
  std::vector<Change> changes;
  try {
    AddAll(context, *oOrder, requests, changes);
  } catch (...) {
    ReportUnfinished(context, *oOrder, requests, changes);
    throw;
  }
  // The collection does not show the new quantities of lines that were there before.
  LoadUncheckedLines(*oOrder);
  Report(context, changes, *oOrder->OrderDetails());
  return kGood;
}

int ChangeQuantities(Context& context, const QuantityOptions& options) {
  const auto pairs = Pairs(options.Items, 0);
  const auto oOrder = OpenCurrentOrder(context);
  LoadUncheckedLines(*oOrder);
  const auto oChanged = std::make_shared<OrderItems>();
  std::vector<Change> changes;
  for (const auto& [zNumber, lQuantity] : pairs) {
    const auto oItem = FindLine(*oOrder, zNumber);
    if (oChanged->Item(zNumber) != nullptr) {
      throw UsageError("The item " + zNumber + " is named twice.");
    }
    const std::string zBefore = std::to_string(oItem->Quantity());
    // The number that found the line is its key in the store; the item may show a shorter one.
    oItem->ItemNumber(zNumber);
    oItem->Quantity(lQuantity);
    oItem->ExtendedPrice(oItem->Price() * lQuantity);
    oChanged->Add(oItem, zNumber);
    changes.push_back(lQuantity == 0
                          ? Change{zNumber, oItem->Description(), "removed", "removed " + zBefore}
                          : Change{zNumber, oItem->Description(), "changed", "changed from " + zBefore});
  }
  oOrder->UpdateItems(oChanged);
  LoadUncheckedLines(*oOrder);
  Report(context, changes, *oOrder->OrderDetails());
  return kGood;
}

int Remove(Context& context, const RemoveOptions& options) {
  const auto oOrder = OpenCurrentOrder(context);
  LoadUncheckedLines(*oOrder);
  const auto oItem = FindLine(*oOrder, options.Item);
  oOrder->RemoveItem(options.Item);
  LoadUncheckedLines(*oOrder);
  Report(context,
         {{options.Item, oItem->Description(), "removed", "removed " + std::to_string(oItem->Quantity())}},
         *oOrder->OrderDetails());
  return kGood;
}

int Clear(Context& context) {
  const auto oOrder = OpenCurrentOrder(context);
  const auto lLines = static_cast<std::size_t>(oOrder->ItemCount());
  oOrder->ClearItems();
  const Currency cTotal = oOrder->OrderDetails()->TotalPrice();
  context.Out.MarkChange();
  context.Out.Text("Removed " + Counted(lLines, "line") + ".\nTotal " + MoneyText(cTotal) + "\n");
  context.Out.Data({{"RemovedLines", lLines}, {"TotalPrice", cTotal.ToString()}});
  return kGood;
}

}  // namespace

void AddOrderLineCommands(CLI::App& group, Command& chosen) {
  auto addOptions = std::make_shared<AddOptions>();
  CLI::App& add = AddCommand(group, chosen, "add", "Add items of a catalogue", addOptions, Add);
  AddText(add, "--catalogue", addOptions->CatalogueFile, "The catalogue, a CSV file, see below")
      ->required()
      ->type_name("FILE");
  AddText(add, "--all", addOptions->All, "Add every item of the catalogue, this many of each")
      ->type_name("QTY");
  AddTexts(add, "ITEM", addOptions->Items, "Item number and quantity, as often as needed")
      ->option_text("QTY ...");
  add.footer(
      R"(The catalogue is UTF-8 text with fields separated by commas, quoted as RFC 4180 says. Its first row names
the columns, in any order and letter case:
  ItemNumber        required; unique in any letter case
  Price             required; of one unit, with a point and at most four decimals
  Description, ShortDescription, Manufacturer, Model, UsuallyShips    texts
  SellQuantity      pack size in which the item sells; counts when the order is collected at a branch
  ShipQuantity      pack size in which it ships; counts when the order is delivered
                    (blank or 0 counts as pack 1, and that is said)
  Taxable           true, false, 1 or 0

The whole catalogue is checked, and every item looked up, before anything is added. An item that is in the
order already gets the sum of both quantities. The first item that cannot be stored ends the command; what
was added before it stays. Where an item number begins with a dash, put --
before the first item.)");

  auto quantityOptions = std::make_shared<QuantityOptions>();
  CLI::App& quantity =
      AddCommand(group, chosen, "quantity", "Change quantities of lines", quantityOptions, ChangeQuantities);
  AddTexts(quantity, "ITEM", quantityOptions->Items, "Item number and its new quantity; 0 removes the line")
      ->required()
      ->option_text("QTY ...");
  quantity.footer(
      "The extended price follows: price times quantity. An item number that holds a quote (') cannot be\n"
      "changed in the store; the library raises that as a failure.");

  auto removeOptions = std::make_shared<RemoveOptions>();
  CLI::App& remove = AddCommand(group, chosen, "remove", "Remove a line", removeOptions, Remove);
  AddText(remove, "ITEM", removeOptions->Item, "Item number of the line, in any letter case")
      ->required()
      ->type_name("");

  AddCommand(group, chosen, "clear", "Remove all lines", Clear);
}

}  // namespace host
