#pragma once

#include <memory>
#include <set>
#include <string>

#include "host/Output.h"
#include "qm_ordering/qm_ordering.h"

namespace host {

// A catalogue of items from a CSV file: UTF-8 (with or without a byte order mark), fields separated by commas
// and quoted as RFC 4180 says, lines that end in LF or CR LF. The first row names the columns, in any order
// and letter case:
//
//   ItemNumber        required; unique without regard to letter case
//   Price             required; of one unit, with a point and at most four decimals
//   Description, ShortDescription, Manufacturer, Model, UsuallyShips
//                     texts, taken as they stand
//   SellQuantity      pack size in which the item sells, ShipQuantity: in which it ships; blank or 0 counts
//   as 1 Taxable           true, false, 1 or 0; blank is false
//
// The whole file is read and checked at once.
class Catalogue {
 public:
  // Raises UsageError, which names file, line and cause, when the file is no such catalogue.
  Catalogue(const std::string& zvFile, Output& out);

  // The items in the order of the file, with quantity 0.
  const qm_ordering::OrderItems& Items() const { return *m_oItems; }

  // The item of that number, in any letter case. Raises UsageError, which names the nearest, when there is
  // none.
  std::shared_ptr<qm_ordering::OrderItem> Find(const std::string& zvItemNumber) const;

  // Whether a blank or zero pack size of the item was counted as 1.
  bool HadNoPack(const qm_ordering::OrderItem& item) const;

 private:
  std::string m_zFile;
  std::shared_ptr<qm_ordering::OrderItems> m_oItems;
  std::set<const qm_ordering::OrderItem*> m_oWithoutPack;
};

}  // namespace host
