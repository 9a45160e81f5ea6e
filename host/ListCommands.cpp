#include "host/ListCommands.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "host/Document.h"
#include "host/Errors.h"
#include "host/ListSession.h"
#include "host/OrderSession.h"
#include "host/Progress.h"
#include "host/Reorder.h"
#include "host/Requests.h"
#include "host/Table.h"
#include "host/Text.h"

namespace host {

namespace {

using namespace qm_ordering;

constexpr const char* kListHelp = "The list's id, or its name in any letter case";

struct ListOptions {
  std::string List;
};

struct CreateOptions {
  std::string Name;
  bool Replace = false;
};

struct RenameOptions {
  std::string List;
  std::string NewName;
};

struct AddOptions {
  std::string List;
  CatalogueOptions Items;
};

struct XmlOptions {
  std::string Output;
};

struct OrderOptions {
  std::string List;
  std::string CatalogueFile;
};

std::string Quoted(const std::string& zvName) {
  return "\"" + Shown(zvName) + "\"";
}

std::size_t ItemCount(const PersonalList& list) {
  return static_cast<std::size_t>(list.OrderItems()->Count());
}

void RefuseBlankName(const std::string& zvName) {
  if (Trimmed(zvName).empty()) {
    throw UsageError("A list needs a name that is not blank.");
  }
}

void RefuseExisting(const PersonalLists& lists, const std::string& zvName, bool bvReplace) {
  const auto oExisting = FindListByName(lists, zvName);
  if (oExisting != nullptr && !bvReplace) {
    throw Refusal("There is a list \"" + oExisting->Name() + "\" already, with the id " +
                  std::to_string(oExisting->ListID()) + ". Nothing was changed; --replace replaces it.");
  }
}

int Show(Context& context) {
  const auto lists = OpenLists(context);
  Table table(
      {{"id", Table::Align::Right}, {"name", Table::Align::Left, true}, {"items", Table::Align::Right}});
  Json data = Json::array();
  for (const auto& oList : *lists) {
    oList->LoadItems();
    table.Add({std::to_string(oList->ListID()), oList->Name(), std::to_string(ItemCount(*oList))});
    data.push_back({{"ListID", oList->ListID()}, {"Name", oList->Name()}, {"Items", ItemCount(*oList)}});
  }
  context.Out.Text(lists->Count() == 0 ? "There are no lists.\n" : table.Text(Output::Width()));
  context.Out.Data({{"lists", data}});
  return kGood;
}

int Create(Context& context, const CreateOptions& options) {
  RefuseBlankName(options.Name);
  const auto lists = OpenLists(context);
  RefuseExisting(*lists, options.Name, options.Replace);
  const std::int32_t lListID = lists->CreateList(options.Name);
  CheckSwallowed();
  context.Out.MarkChange();
  context.Out.Text("Created the list " + Quoted(options.Name) + " with the id " + std::to_string(lListID) +
                   ".\n");
  context.Out.Data({{"ListID", lListID}, {"Name", options.Name}});
  return kGood;
}

int Rename(Context& context, const RenameOptions& options) {
  RefuseBlankName(options.NewName);
  const auto lists = OpenLists(context);
  const auto oList = FindList(*lists, options.List);
  const auto oOther = FindListByName(*lists, options.NewName);
  if (oOther != nullptr && oOther != oList) {
    throw Refusal("There is a list \"" + oOther->Name() + "\" already, with the id " +
                  std::to_string(oOther->ListID()) + ". Nothing was changed.");
  }
  lists->RenameList(oList->ListID(), options.NewName);
  CheckSwallowed();
  context.Out.MarkChange();
  context.Out.Text("The list " + Quoted(oList->Name()) + " is now " + Quoted(options.NewName) + ".\n");
  context.Out.Data({{"ListID", oList->ListID()}, {"Name", options.NewName}, {"NameBefore", oList->Name()}});
  return kGood;
}

int Remove(Context& context, const ListOptions& options) {
  const auto lists = OpenLists(context);
  const auto oList = FindList(*lists, options.List);
  oList->LoadItems();
  lists->RemoveList(oList->ListID());
  CheckSwallowed();
  context.Out.MarkChange();
  context.Out.Text("Removed the list " + Quoted(oList->Name()) + " with " +
                   Counted(ItemCount(*oList), "item") + ".\n");
  context.Out.Data({{"ListID", oList->ListID()}, {"Name", oList->Name()}, {"Items", ItemCount(*oList)}});
  return kGood;
}

int Add(Context& context, const AddOptions& options) {
  const Requests requests = ReadRequests(options.Items, context.Out);
  const auto oBefore = OpenList(context, options.List);
  Progress progress(context.Out, "Adding", requests.size());
  std::size_t lDone = 0;
  try {
    for (const Request& request : requests) {
      request.Item->Quantity(request.Quantity);
      AddToList(oBefore->ListID(), request.Item);
      progress.Done(++lDone);
    }
  } catch (...) {
    context.Out.Warning("Adding item " + requests[lDone].Item->ItemNumber() + " failed. Added before it: " +
                        std::to_string(lDone) + " of " + std::to_string(requests.size()) + ".");
    throw;
  }
  PersonalList after;
  after.LoadItems(oBefore->ListID());
  Table table(
      {{"item"}, {"description", Table::Align::Left, true}, {"done"}, {"on list", Table::Align::Right}});
  Json items = Json::array();
  for (const Request& request : requests) {
    const std::string& zNumber = request.Item->ItemNumber();
    const auto oStored = oBefore->OrderItems()->Item(zNumber);
    const auto oItem = after.OrderItems()->Item(zNumber);
    const std::int32_t lQuantity = oItem == nullptr ? 0 : oItem->Quantity();
    table.Add({zNumber, request.Item->Description(),
               "added " + std::to_string(request.Quantity) +
                   (oStored == nullptr ? "" : " to " + std::to_string(oStored->Quantity())),
               std::to_string(lQuantity)});
    items.push_back({{"ItemNumber", zNumber},
                     {"Done", oStored == nullptr ? "added" : "merged"},
                     {"Quantity", lQuantity}});
  }
  context.Out.MarkChange();
  context.Out.Text(table.Text(Output::Width()) + "\nThe list " + Quoted(oBefore->Name()) + " has " +
                   Counted(ItemCount(after), "item") + ".\n");
  context.Out.Data({{"ListID", oBefore->ListID()}, {"Name", oBefore->Name()}, {"items", items}});
  return kGood;
}

Json ItemJson(const OrderItem& item) {
  return {{"ItemNumber", item.ItemNumber()},
          {"Quantity", item.Quantity()},
          {"Description", item.Description()},
          {"ShortDescription", item.ShortDescription()},
          {"Manufacturer", item.Manufacturer()},
          {"Model", item.Model()},
          {"SellQuantity", item.SellQuantity()},
          {"ShipQuantity", item.ShipQuantity()},
          {"UsuallyShips", item.UsuallyShips()},
          {"IsTaxable", item.IsTaxable()},
          {"CustomerPartNumber", item.CustomerPartNumber()},
          {"CustomerNotes", item.CustomerNotes()},
          {"HasPartsInfo", item.HasPartsInfo()}};
}

int Items(Context& context, const ListOptions& options) {
  const auto oList = OpenList(context, options.List);
  Json items = Json::array();
  for (const auto& oItem : *oList->OrderItems()) {
    items.push_back(ItemJson(*oItem));
  }
  context.Out.Text(ListText(*oList));
  context.Out.Data({{"ListID", oList->ListID()}, {"Name", oList->Name()}, {"OrderItems", items}});
  return kGood;
}

int Xml(Context& context, const XmlOptions& options) {
  GiveDocument(context, OpenLists(context)->GetXML(), options.Output);
  return kGood;
}

int Export(Context& context) {
  const auto lists = OpenLists(context);
  const std::string zFile = ExportLists(*lists);
  const auto lBytes = static_cast<std::size_t>(std::filesystem::file_size(zFile));
  const auto lLists = static_cast<std::size_t>(lists->Count());
  context.Out.MarkChange();
  context.Out.Text("Wrote " + Counted(lLists, "list") + " to " + Shown(zFile) + ", " +
                   Counted(lBytes, "byte") + "\n");
  context.Out.Data({{"file", zFile}, {"lists", lLists}, {"bytes", lBytes}});
  return kGood;
}

int OrderItemsOf(Context& context, const OrderOptions& options) {
  return ReorderList(context, *OpenList(context, options.List), options.CatalogueFile);
}

int FromOrder(Context& context, const CreateOptions& options) {
  const std::int32_t lListID = KeepOrderAsList(context, options.Name, options.Replace);
  PersonalList list;
  list.LoadItems(lListID);
  context.Out.MarkChange();
  context.Out.Text("The list " + Quoted(options.Name) + " has the id " + std::to_string(lListID) + " and " +
                   Counted(ItemCount(list), "item") + ".\n");
  context.Out.Data({{"ListID", lListID}, {"Name", options.Name}, {"Items", ItemCount(list)}});
  return kGood;
}

// Fills the list and gives it its name; what it replaces goes at the very end.
void FinishList(PersonalLists& lists, std::int32_t lvListID, const OrderItems& lines,
                const std::string& zvName, bool& orWhole) {
  for (const auto& oLine : lines) {
    AddToList(lvListID, oLine);
  }
  orWhole = true;
  if (const auto oReplaced = FindListByName(lists, zvName)) {
    lists.RemoveList(oReplaced->ListID());
    CheckSwallowed();
  }
  lists.RenameList(lvListID, zvName);
  CheckSwallowed();
}

}  // namespace

std::string ListText(const PersonalList& list) {
  constexpr auto kRight = Table::Align::Right;
  Table table({{"item"},
               {"description", Table::Align::Left, true},
               {"qty", kRight},
               {"sells in", kRight},
               {"ships in", kRight},
               {"ships"}});
  for (const auto& oItem : *list.OrderItems()) {
    table.Add({oItem->ItemNumber(), oItem->Description(), std::to_string(oItem->Quantity()),
               std::to_string(oItem->SellQuantity()), std::to_string(oItem->ShipQuantity()),
               oItem->UsuallyShips()});
  }
  const std::size_t lCount = ItemCount(list);
  return "List " + std::to_string(list.ListID()) + ", " + Quoted(list.Name()) + "    " +
         Counted(lCount, "item") + "\n" + (lCount == 0 ? "" : "\n" + table.Text(Output::Width()));
}

std::string ExportLists(PersonalLists& lists) {
  lists.SaveAsXML();
  CheckSwallowed();
  return std::filesystem::path(OrderStorePath()).replace_filename("PersonalLists.xml").string();
}

std::int32_t KeepOrderAsList(Context& context, const std::string& zvName, bool bvReplace) {
  RefuseBlankName(zvName);
  const auto lists = OpenLists(context);
  RefuseExisting(*lists, zvName, bvReplace);
  // Its name until it is whole: a list that is replaced stays until the new one can take its place.
  const std::string zUnfinished = zvName + " (unfinished)";
  RefuseExisting(*lists, zUnfinished, false);
  const auto oOrder = OpenCurrentOrder(context);
  LoadUncheckedLines(*oOrder);
  const auto oLines = oOrder->OrderDetails()->OrderItems();
  if (oLines->Count() == 0) {
    throw Refusal("The order has no lines, so there is nothing to keep as a list.");
  }
  const std::int32_t lListID = lists->CreateList(zUnfinished);
  CheckSwallowed();
  bool bWhole = false;
  try {
    FinishList(*lists, lListID, *oLines, zvName, bWhole);
  } catch (...) {
    if (bWhole) {
      context.Out.Warning("The list is whole, but still under the name " + zUnfinished + ".");
    } else {
      lists->RemoveList(lListID);
    }
    throw;
  }
  return lListID;
}

void AddListCommands(CLI::App& app, Command& chosen) {
  CLI::App& group = *app.add_subcommand("lists", "Personal lists of items, for ordering again");
  group.require_subcommand(1);

  AddCommand(group, chosen, "show", "Show all lists", Show);

  auto createOptions = std::make_shared<CreateOptions>();
  CLI::App& create = AddCommand(group, chosen, "create", "Make an empty list", createOptions, Create);
  AddText(create, "NAME", createOptions->Name, "Its name")->required()->type_name("");
  create.add_flag("--replace", createOptions->Replace, "Replace a list of that name, with its items");
  create.footer(
      "Names do not differ in letter case. Commands take a list by its id or its name; a name that is a "
      "whole\n"
      "number is taken for an id.");

  auto renameOptions = std::make_shared<RenameOptions>();
  CLI::App& rename = AddCommand(group, chosen, "rename", "Give a list another name", renameOptions, Rename);
  AddText(rename, "LIST", renameOptions->List, kListHelp)->required()->type_name("");
  AddText(rename, "NAME", renameOptions->NewName, "Its new name")->required()->type_name("");

  auto removeOptions = std::make_shared<ListOptions>();
  CLI::App& remove =
      AddCommand(group, chosen, "remove", "Remove a list with its items", removeOptions, Remove);
  AddText(remove, "LIST", removeOptions->List, kListHelp)->required()->type_name("");

  auto addOptions = std::make_shared<AddOptions>();
  CLI::App& add = AddCommand(group, chosen, "add", "Put items of a catalogue on a list", addOptions, Add);
  AddText(add, "LIST", addOptions->List, kListHelp)->required()->type_name("");
  AddCatalogueOptions(add, addOptions->Items);
  add.footer(std::string(kCatalogueHelp) + R"(
The whole catalogue is checked, and every item looked up, before anything is added. An item that is on the
list already gets the sum of both quantities and stays as it is otherwise. A list holds no prices.)");

  auto itemsOptions = std::make_shared<ListOptions>();
  CLI::App& items = AddCommand(group, chosen, "items", "Show the items of a list", itemsOptions, Items);
  AddText(items, "LIST", itemsOptions->List, kListHelp)->required()->type_name("");

  auto xmlOptions = std::make_shared<XmlOptions>();
  CLI::App& xml =
      AddCommand(group, chosen, "xml", "Ids and names of all lists as an XML document", xmlOptions, Xml);
  AddText(xml, "--output", xmlOptions->Output, "Write a file instead of standard output")->type_name("FILE");

  AddCommand(group, chosen, "export", "Write all lists with their items to PersonalLists.xml", Export)
      .footer(
          "The file is in the folder of the store, for other programs to read. It is replaced as a whole, "
          "or\n"
          "stays as it was.");

  auto orderOptions = std::make_shared<OrderOptions>();
  CLI::App& order = AddCommand(group, chosen, "order", "Put the items of a list into the current order",
                               orderOptions, OrderItemsOf);
  AddText(order, "LIST", orderOptions->List, kListHelp)->required()->type_name("");
  AddCatalogueOption(order, orderOptions->CatalogueFile)->required();
  order.footer(std::string(kReorderHelp) + "\n" + kCatalogueHelp);

  auto fromOptions = std::make_shared<CreateOptions>();
  CLI::App& from = AddCommand(group, chosen, "from-order", "Keep the lines of the current order as a list",
                              fromOptions, FromOrder);
  AddText(from, "NAME", fromOptions->Name, "Its name")->required()->type_name("");
  from.add_flag("--replace", fromOptions->Replace, "Replace a list of that name, with its items");
  from.footer(
      "The list appears whole or not at all: until it is, it is called NAME (unfinished). The order stays as "
      "it\n"
      "is; prices do not go with it.");
}

}  // namespace host
