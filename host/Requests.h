#pragma once

#include <CLI/CLI.hpp>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/Catalogue.h"
#include "qm_ordering/qm_ordering.h"

namespace host {

// An item with the quantity to add.
struct Request {
  std::shared_ptr<qm_ordering::OrderItem> Item;
  std::int32_t Quantity = 0;
  bool HadNoPack = false;  // a missing pack size was counted as 1
  std::string Refusal;     // why it is not to be added; empty when it is
};

// What is to be added, one request for each item number, and what is refused.
class Requests {
 public:
  // Adds a request. One for an item number that is there, in any letter case, makes that one larger: of the
  // item given here only the quantity counts then. Raises UsageError when the sum is no quantity. Refused
  // ones stand for themselves.
  void Add(Request request);

  // The request for that item number, in any letter case, that is not refused; null when there is none.
  const Request* Find(const std::string& zvItemNumber) const;

  std::size_t size() const { return m_oRequests.size(); }
  const Request& operator[](std::size_t i) const { return m_oRequests[i]; }
  auto begin() const { return m_oRequests.begin(); }
  auto end() const { return m_oRequests.end(); }

 private:
  std::vector<Request> m_oRequests;
  // Item numbers are compared by OrderItems.
  std::shared_ptr<qm_ordering::OrderItems> m_oItems = std::make_shared<qm_ordering::OrderItems>();
  std::unordered_map<const qm_ordering::OrderItem*, std::size_t> m_oPositions;
};

// The item number and the quantity that a user typed.
using ItemQuantity = std::pair<std::string, std::int32_t>;

// The arguments ITEM QTY ITEM QTY ... as pairs. Raises UsageError for an item without a quantity and for a
// quantity below lvLeast.
std::vector<ItemQuantity> ItemQuantities(const std::vector<std::string>& zvArguments, std::int32_t lvLeast);

// Which items of a catalogue a user wants.
struct CatalogueOptions {
  std::string CatalogueFile;
  std::vector<std::string> Items;  // item number, quantity, item number, quantity, ...
  std::string All;                 // the quantity; empty: not the whole catalogue
};

// What a catalogue looks like, for the help of a command.
extern const char* const kCatalogueHelp;

// The option that names a catalogue.
CLI::Option* AddCatalogueOption(CLI::App& command, std::string& orFile);

// The options and arguments of a command that adds items of a catalogue.
void AddCatalogueOptions(CLI::App& command, CatalogueOptions& orOptions);

// What is asked for; the whole catalogue is read and checked for it. Raises UsageError when no items are
// named, or one that the catalogue does not have.
Requests ReadRequests(const CatalogueOptions& options, Output& out);

}  // namespace host
