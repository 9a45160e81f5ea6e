#include "host/Requests.h"

#include "host/CommandLine.h"
#include "host/Errors.h"
#include "host/Text.h"

namespace host {

using namespace qm_ordering;

namespace {

std::int32_t Quantity(const std::string& zvText, std::int32_t lvLeast) {
  const auto lQuantity = ParseInteger(zvText);
  if (!lQuantity || *lQuantity < lvLeast) {
    throw UsageError("\"" + zvText + "\" is not a quantity, which is a whole number from " +
                     std::to_string(lvLeast) + " to 2147483647.");
  }
  return *lQuantity;
}

}  // namespace

const char* const kCatalogueHelp =
    R"(The catalogue is UTF-8 text with fields separated by commas, quoted as RFC 4180 says. Its first row names
the columns, in any order and letter case:
  ItemNumber        required; unique in any letter case
  Price             required; of one unit, with a point and at most four decimals
  Description, ShortDescription, Manufacturer, Model, UsuallyShips    texts
  SellQuantity      pack size in which the item sells; counts when the order is collected at a branch
  ShipQuantity      pack size in which it ships; counts when the order is delivered
                    (blank or 0 counts as pack 1, and that is said)
  Taxable           true, false, 1 or 0
)";

void Requests::Add(Request request) {
  if (!request.Refusal.empty()) {
    m_oRequests.push_back(std::move(request));
    return;
  }
  const std::string zNumber = request.Item->ItemNumber();
  if (const auto oItem = m_oItems->Item(zNumber)) {
    Request& earlier = m_oRequests[m_oPositions.at(oItem.get())];
    if (__builtin_add_overflow(earlier.Quantity, request.Quantity, &earlier.Quantity)) {
      throw UsageError("The quantities of item " + zNumber + " add up to more than 2147483647.");
    }
    return;
  }
  m_oItems->Add(request.Item, zNumber);
  m_oPositions.emplace(request.Item.get(), m_oRequests.size());
  m_oRequests.push_back(std::move(request));
}

const Request* Requests::Find(const std::string& zvItemNumber) const {
  const auto oItem = m_oItems->Item(zvItemNumber);
  return oItem == nullptr ? nullptr : &m_oRequests[m_oPositions.at(oItem.get())];
}

std::vector<ItemQuantity> ItemQuantities(const std::vector<std::string>& zvArguments, std::int32_t lvLeast) {
  if (zvArguments.size() % 2 != 0) {
    throw UsageError("Items and quantities come in pairs, ITEM QTY; after \"" + zvArguments.back() +
                     "\" there is nothing.");
  }
  std::vector<ItemQuantity> pairs;
  for (std::size_t i = 0; i < zvArguments.size(); i += 2) {
    pairs.emplace_back(zvArguments[i], Quantity(zvArguments[i + 1], lvLeast));
  }
  return pairs;
}

CLI::Option* AddCatalogueOption(CLI::App& command, std::string& orFile) {
  return AddText(command, "--catalogue", orFile, "The catalogue, a CSV file, see below")->type_name("FILE");
}

void AddCatalogueOptions(CLI::App& command, CatalogueOptions& orOptions) {
  AddCatalogueOption(command, orOptions.CatalogueFile)->required();
  AddText(command, "--all", orOptions.All, "Add every item of the catalogue, this many of each")
      ->type_name("QTY");
  AddTexts(command, "ITEM", orOptions.Items, "Item number and quantity, as often as needed")
      ->option_text("QTY ...");
}

Requests ReadRequests(const CatalogueOptions& options, Output& out) {
  if (options.Items.empty() == options.All.empty()) {
    throw UsageError("Say either which items to add, ITEM QTY, or --all QTY for the whole catalogue.");
  }
  const Catalogue catalogue(options.CatalogueFile, out);
  Requests requests;
  if (!options.All.empty()) {
    const std::int32_t lQuantity = Quantity(options.All, 1);
    for (const auto& oItem : catalogue.Items()) {
      requests.Add({oItem, lQuantity, catalogue.HadNoPack(*oItem), {}});
    }
    return requests;
  }
  for (const auto& [zNumber, lQuantity] : ItemQuantities(options.Items, 1)) {
    const auto oItem = catalogue.Find(zNumber);
    requests.Add({oItem, lQuantity, catalogue.HadNoPack(*oItem), {}});
  }
  return requests;
}

}  // namespace host
