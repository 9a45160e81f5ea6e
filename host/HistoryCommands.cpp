#include "host/HistoryCommands.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/Document.h"
#include "host/Errors.h"
#include "host/ListSession.h"
#include "host/OrderReport.h"
#include "host/Reorder.h"
#include "host/Requests.h"
#include "host/Table.h"
#include "host/Text.h"

namespace host {

namespace {

using namespace qm_ordering;

// The number of the error record "Order not found".
constexpr std::int32_t kOrderNotFound = 3;

constexpr const char* kSortHelp = "The order of the list: 0 PO number and date, 1 PO number, 2 date, 3 total";

struct ShowOptions {
  std::int32_t Sort = 0;
};

struct FindOptions {
  std::string Number;
};

struct OrderOptions {
  std::string OrderID;
};

struct OpenOptions {
  std::string OrderID;
  std::int32_t Sort = 0;
};

struct XmlOptions {
  std::string OrderID;  // empty: the whole history
  std::int32_t Sort = 0;
  std::string Output;
};

struct ReorderOptions {
  std::string OrderID;
  std::string CatalogueFile;
  bool OldPrices = false;
};

using Entries = std::vector<std::shared_ptr<PreviousOrder>>;

std::unique_ptr<OrderHistory> OpenHistory(Context& context, std::int32_t lvSort) {
  NoteWhenNoStoreIsSet(context);
  auto history = std::make_unique<OrderHistory>();
  history->LoadOrders(lvSort);
  return history;
}

// A submitted order with its header; its lines are still to be loaded.
std::shared_ptr<PreviousOrder> OpenOrder(Context& context, const std::string& zvOrderID) {
  const auto lOrderID = ParseInteger(zvOrderID);
  if (!lOrderID) {
    throw UsageError("\"" + zvOrderID + "\" is not the id of an order, which is a whole number.");
  }
  NoteWhenNoStoreIsSet(context);
  auto oOrder = std::make_shared<PreviousOrder>();
  oOrder->LoadSummary(*lOrderID);
  const ErrorInfo record = oOrder->OrderDetails()->Error();
  if (record.Number == kOrderNotFound || (record.Number == 0 && oOrder->OrderDetails()->IsCurrentOrder())) {
    throw UsageError("There is no submitted order " + zvOrderID +
                     ". `qm-ordering history show` shows those that there are.");
  }
  CheckRecord(record);
  return oOrder;
}

// Loads the lines and has their quantities checked. False, with a warning, where a pack size of 0 makes the
// check impossible, as in an order that was imported.
bool LoadLines(Context& context, OrderDetails& order, std::int32_t lvSort = 0) {
  try {
    order.LoadItems(lvSort, false, true);
    return true;
  } catch (const Failure& failure) {
    if (failure.Number() != failure::kDivisionByZero) {
      throw;
    }
  }
  order.LoadItems(lvSort);
  context.Out.Warning("Order " + std::to_string(order.OrderID()) +
                      " has a line with a pack size of 0, so none of its quantities is checked.");
  return false;
}

// The decimals that show every total.
int DecimalsOfTotals(const Entries& entries) {
  int lDecimals = 2;
  for (const auto& oEntry : entries) {
    lDecimals = std::max(lDecimals, DecimalsOf(oEntry->OrderTotal()));
  }
  return lDecimals;
}

std::string EntriesText(const Entries& entries) {
  const int lDecimals = DecimalsOfTotals(entries);
  Table table({{"order", Table::Align::Right},
               {"PO number", Table::Align::Left, true},
               {"submitted"},
               {"total", Table::Align::Right}});
  for (const auto& oEntry : entries) {
    table.Add({std::to_string(oEntry->OrderID()), oEntry->PurchaseOrderNumber(),
               oEntry->SubmitDate().IsZero() ? "" : oEntry->SubmitDate().ToGeneralText(),
               MoneyText(oEntry->OrderTotal(), lDecimals)});
  }
  return table.Text(Output::Width());
}

Json EntriesJson(const Entries& entries) {
  Json orders = Json::array();
  for (const auto& oEntry : entries) {
    orders.push_back(
        {{"OrderID", oEntry->OrderID()},
         {"PurchaseOrderNumber", oEntry->PurchaseOrderNumber()},
         {"SubmitDate", oEntry->SubmitDate().IsZero() ? Json() : Json(oEntry->SubmitDate().ToStoreText())},
         {"OrderTotal", oEntry->OrderTotal().ToString()}});
  }
  return {{"orders", orders}};
}

Entries EntriesOf(const OrderHistory& history) {
  Entries entries;
  for (const auto& oEntry : history) {
    entries.push_back(oEntry);
  }
  return entries;
}

int Show(Context& context, const ShowOptions& options) {
  const auto history = OpenHistory(context, options.Sort);
  context.Out.Text(HistoryText(*history));
  context.Out.Data(EntriesJson(EntriesOf(*history)));
  return kGood;
}

int Find(Context& context, const FindOptions& options) {
  const auto history = OpenHistory(context, 0);
  const Variant vExists = history->ItemExists(options.Number);
  CheckSwallowed();
  Entries entries;
  if (vExists.ToBoolean()) {
    for (const auto& oEntry : *history) {
      if (SameInStore(oEntry->PurchaseOrderNumber(), options.Number)) {
        entries.push_back(oEntry);
      }
    }
  }
  context.Out.Text(entries.empty() ? "No submitted order has the PO number " + Shown(options.Number) + ".\n"
                                   : EntriesText(entries));
  context.Out.Data(EntriesJson(entries));
  return entries.empty() ? kNotGood : kGood;
}

int Remove(Context& context, const OrderOptions& options) {
  const auto oOrder = OpenOrder(context, options.OrderID);
  OrderDetails& details = *oOrder->OrderDetails();
  details.LoadItems();
  const auto lLines = static_cast<std::size_t>(details.OrderItems()->Count());
  OrderHistory().DeleteOrder(oOrder->OrderID());
  const std::string zNumber = oOrder->PurchaseOrderNumber();
  context.Out.MarkChange();
  context.Out.Text("Removed order " + std::to_string(oOrder->OrderID()) + ", PO number " +
                   (zNumber.empty() ? "none" : Shown(zNumber)) + ", with " + Counted(lLines, "line") + ".\n");
  context.Out.Data(
      {{"OrderID", oOrder->OrderID()}, {"PurchaseOrderNumber", zNumber}, {"RemovedLines", lLines}});
  return kGood;
}

int Open(Context& context, const OpenOptions& options) {
  const auto oOrder = OpenOrder(context, options.OrderID);
  const bool bChecked = LoadLines(context, *oOrder->OrderDetails(), options.Sort);
  context.Out.Text(OrderText(*oOrder->OrderDetails(), bChecked));
  context.Out.Data(OrderJson(*oOrder->OrderDetails(), bChecked));
  return kGood;
}

int Xml(Context& context, const XmlOptions& options) {
  if (options.OrderID.empty()) {
    GiveDocument(context, OpenHistory(context, options.Sort)->GetXML(), options.Output);
    return kGood;
  }
  const auto oOrder = OpenOrder(context, options.OrderID);
  LoadLines(context, *oOrder->OrderDetails());
  GiveDocument(context, oOrder->GetXML(), options.Output);
  return kGood;
}

int Reorder(Context& context, const ReorderOptions& options) {
  if (options.CatalogueFile.empty() != options.OldPrices) {
    throw UsageError(
        "Say either --catalogue FILE, for the prices of today, or --old-prices, for those of then.");
  }
  const auto oOrder = OpenOrder(context, options.OrderID);
  OrderDetails& details = *oOrder->OrderDetails();
  details.LoadItems();
  if (details.OrderItems()->Count() == 0) {
    throw Refusal("Order " + options.OrderID + " has no lines, so there is nothing to order.");
  }
  return options.OldPrices ? ReorderAtOldPrices(context, details)
                           : ReorderOrder(context, details, options.CatalogueFile);
}

void AddOrderID(CLI::App& command, std::string& orOrderID) {
  AddText(command, "ID", orOrderID, "The id of a submitted order")->required()->type_name("");
}

}  // namespace

std::string HistoryText(const OrderHistory& history) {
  return history.Count() == 0 ? "No order was submitted yet.\n" : EntriesText(EntriesOf(history));
}

void AddHistoryCommands(CLI::App& app, Command& chosen) {
  CLI::App& group = *app.add_subcommand("history", "The orders that were submitted");
  group.require_subcommand(1);

  auto showOptions = std::make_shared<ShowOptions>();
  CLI::App& show = AddCommand(group, chosen, "show", "Show all submitted orders", showOptions, Show);
  show.add_option("--sort", showOptions->Sort, kSortHelp)->type_name("N")->check(CLI::Range(0, 3));

  auto findOptions = std::make_shared<FindOptions>();
  CLI::App& find =
      AddCommand(group, chosen, "find", "Find the submitted orders of a PO number", findOptions, Find);
  AddText(find, "PO", findOptions->Number, "The PO number, in any letter case")->required()->type_name("");
  find.footer("Exit code 1 when there is none, so that a script can ask whether a number was used before.");

  auto removeOptions = std::make_shared<OrderOptions>();
  CLI::App& remove =
      AddCommand(group, chosen, "remove", "Remove a submitted order with its lines", removeOptions, Remove);
  AddOrderID(remove, removeOptions->OrderID);
  remove.footer(
      "It is gone for good; `store backup` and `history xml` keep copies. The current order is never "
      "removed.");

  auto openOptions = std::make_shared<OpenOptions>();
  CLI::App& open = AddCommand(group, chosen, "open", "Show a submitted order", openOptions, Open);
  AddOrderID(open, openOptions->OrderID);
  open.add_option("--sort", openOptions->Sort, "The order of the lines, as in `order show`")
      ->type_name("N")
      ->check(CLI::Range(0, 6));

  auto xmlOptions = std::make_shared<XmlOptions>();
  CLI::App& xml = AddCommand(group, chosen, "xml", "The history, or one order of it, as an XML document",
                             xmlOptions, Xml);
  AddText(xml, "ID", xmlOptions->OrderID, "The id of a submitted order; without it the whole history")
      ->type_name("");
  xml.add_option("--sort", xmlOptions->Sort, kSortHelp)->type_name("N")->check(CLI::Range(0, 3));
  AddText(xml, "--output", xmlOptions->Output, "Write a file instead of standard output")->type_name("FILE");
  xml.footer("The file appears whole or not at all, and replaces one of that name; only you may read it.");

  auto reorderOptions = std::make_shared<ReorderOptions>();
  CLI::App& reorder =
      AddCommand(group, chosen, "reorder", "Put the lines of a submitted order into the current one",
                 reorderOptions, Reorder);
  AddOrderID(reorder, reorderOptions->OrderID);
  AddCatalogueOption(reorder, reorderOptions->CatalogueFile);
  reorder.add_flag("--old-prices", reorderOptions->OldPrices,
                   "Take prices and packs as they were in that order,\ninstead of from a catalogue");
  reorder.footer(std::string(kReorderHelp) + "\n" + kCatalogueHelp);
}

}  // namespace host
