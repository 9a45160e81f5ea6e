#include "qm_ordering/store/OrderStore.h"

#include <cstdint>
#include <map>
#include <optional>

#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/platform/ado/Connection.h"
#include "qm_ordering/platform/ado/embedded/StoreFile.h"
#include "qm_ordering/platform/file/Path.h"
#include "qm_ordering/platform/value/Currency.h"
#include "qm_ordering/platform/value/CurrencySum.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/store/Schema.h"

namespace qm_ordering {

namespace {

void CheckCurrentOrder(ado::Connection& connection, std::vector<std::string>& findings) {
  const std::int32_t lCurrent = connection.Execute("select count(*) from tblOrder where bIsCurrent = True")
                                    ->Fields(0)
                                    .Value()
                                    .ToInteger();
  if (lCurrent > 1) {
    findings.push_back("the orders: " + std::to_string(lCurrent) + " of them are the current order");
  }
}

// What the unique indexes keep out as long as they are there.
void CheckNames(ado::Connection& connection, std::vector<std::string>& findings) {
  const auto orders = connection.Execute(
      "select lOrderID, zItemNumber, count(*) from tblOrderItem group by lOrderID, zItemNumber "
      "having count(*) > 1 order by lOrderID");
  for (; !orders->AtEnd(); orders->MoveNext()) {
    findings.push_back("order " + orders->Fields(0).Value().ToString() + ": the item " +
                       orders->Fields(1).Value().ToString() + " is in it " +
                       orders->Fields(2).Value().ToString() + " times");
  }
  const auto names =
      connection.Execute("select zName, count(*) from tblPersonalList group by zName having count(*) > 1");
  for (; !names->AtEnd(); names->MoveNext()) {
    findings.push_back("the lists: " + names->Fields(1).Value().ToString() + " of them have the name " +
                       names->Fields(0).Value().ToString());
  }
  const auto lists = connection.Execute(
      "select lListID, zItemNumber, count(*) from tblPersonalListItem group by lListID, zItemNumber "
      "having count(*) > 1 order by lListID");
  for (; !lists->AtEnd(); lists->MoveNext()) {
    findings.push_back("list " + lists->Fields(0).Value().ToString() + ": the item " +
                       lists->Fields(1).Value().ToString() + " is in it " +
                       lists->Fields(2).Value().ToString() + " times");
  }
}

// Each order's lines are summed here and not by the store, so that a sum out of range is a finding and not
// the end of the check.
void CheckTotals(ado::Connection& connection, std::vector<std::string>& findings) {
  std::map<std::int32_t, CurrencySum> sums;
  const auto lines = connection.Execute("select lOrderID, cExtendedPrice from tblOrderItem");
  const ado::Field lineOrder = lines->Fields("lOrderID");
  const ado::Field extendedPrice = lines->Fields("cExtendedPrice");
  for (; !lines->AtEnd(); lines->MoveNext()) {
    sums[lineOrder.Value().ToInteger()].Add(extendedPrice.Value().ToCurrency());
  }
  const auto orders = connection.Execute("select lOrderID, cTotalPrice from tblOrder order by lOrderID");
  const ado::Field order = orders->Fields("lOrderID");
  const ado::Field total = orders->Fields("cTotalPrice");
  for (; !orders->AtEnd(); orders->MoveNext()) {
    const std::int32_t lOrderID = order.Value().ToInteger();
    const Currency cTotal = total.Value().ToCurrency();
    const std::optional<Currency> cSum = sums[lOrderID].Total();
    if (!cSum) {
      findings.push_back("order " + std::to_string(lOrderID) +
                         ": the sum of its lines is beyond the range of money");
    } else if (*cSum != cTotal) {
      findings.push_back("order " + std::to_string(lOrderID) + ": its total is " + cTotal.ToString() +
                         ", its lines add up to " + cSum->ToString());
    }
  }
}

}  // namespace

void CreateOrderStore(const std::string& zvFolder) {
  if (zvFolder.empty()) {
    throw Failure(failure::kPathNotFound, "An order store needs a folder; the name given is empty.");
  }
  if (zvFolder.find(';') != std::string::npos || zvFolder.starts_with('{')) {
    throw Failure(failure::kPathNotFound,
                  "The folder \"" + zvFolder +
                      "\" cannot hold an order store: its name holds a semicolon or begins "
                      "with a brace, and no connection string could name it.");
  }
  ado::embedded::CreateStoreFile(file::SystemPath(zvFolder + "\\Orders.mdb", "OrderingDatabasePath"),
                                 kSchemaScript);
}

std::string OrderStorePath() {
  StartUp();
  return ado::StoreFileOf(ConnectionString());
}

std::vector<std::string> CheckOrderStore() {
  StartUp();
  ado::Connection connection;
  connection.Open(ConnectionString());
  const ado::Transaction oneState(connection, ado::TransactionKind::Read);
  std::vector<std::string> findings = connection.CheckIntegrity(kSchemaScript);
  ado::RunCheck("the current order", findings, [&] { CheckCurrentOrder(connection, findings); });
  ado::RunCheck("item numbers and list names", findings, [&] { CheckNames(connection, findings); });
  ado::RunCheck("the totals", findings, [&] { CheckTotals(connection, findings); });
  return findings;
}

}  // namespace qm_ordering
