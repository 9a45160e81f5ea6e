#include "host/OrderLineCommands.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/CommandLine.h"
#include "host/Errors.h"
#include "host/LineChanges.h"
#include "host/OrderSession.h"
#include "host/Requests.h"
#include "host/Text.h"

namespace host {

namespace {

using namespace qm_ordering;

struct QuantityOptions {
  std::vector<std::string> Items;
};

struct RemoveOptions {
  std::string Item;
};

int Add(Context& context, const CatalogueOptions& options) {
  // All of it is checked before anything is added.
  return AddToCurrentOrder(context, ReadRequests(options, context.Out), "The catalogue");
}

int ChangeQuantities(Context& context, const QuantityOptions& options) {
  const auto pairs = ItemQuantities(options.Items, 0);
  const auto oOrder = OpenCurrentOrder(context);
  LoadUncheckedLines(*oOrder);
  const auto oChanged = std::make_shared<OrderItems>();
  std::vector<LineChange> changes;
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
                          ? LineChange{zNumber, oItem->Description(), "removed", "removed " + zBefore}
                          : LineChange{zNumber, oItem->Description(), "changed", "changed from " + zBefore});
  }
  oOrder->UpdateItems(oChanged);
  LoadUncheckedLines(*oOrder);
  ReportChanges(context, changes, *oOrder->OrderDetails());
  return kGood;
}

int Remove(Context& context, const RemoveOptions& options) {
  const auto oOrder = OpenCurrentOrder(context);
  LoadUncheckedLines(*oOrder);
  const auto oItem = FindLine(*oOrder, options.Item);
  oOrder->RemoveItem(options.Item);
  LoadUncheckedLines(*oOrder);
  ReportChanges(
      context,
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
  auto addOptions = std::make_shared<CatalogueOptions>();
  CLI::App& add = AddCommand(group, chosen, "add", "Add items of a catalogue", addOptions, Add);
  AddCatalogueOptions(add, *addOptions);
  add.footer(std::string(kCatalogueHelp) + R"(
The whole catalogue is checked, and every item looked up, before anything is added. An item that is in the
order already gets the sum of both quantities, and the catalogue's price. The first item that cannot be stored ends the command; what
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
