#include "qm_ordering/store/OrderStore.h"

#include <cstdint>
#include <map>
#include <optional>

#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/platform/ado/Connection.h"
#include "qm_ordering/platform/ado/embedded/StoreFile.h"
#include "qm_ordering/platform/file/Path.h"
#include "qm_ordering/platform/value/Currency.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/store/Schema.h"

namespace qm_ordering {

namespace {

constexpr const char* kFileName = "\\Orders.mdb";

void CheckCurrentOrder(ado::Connection& connection, std::vector<std::string>& findings) {
  const std::int32_t lCurrent = connection.Execute("select count(*) from tblOrder where bIsCurrent = True")
                                    ->Fields(0)
                                    .Value()
                                    .ToInteger();
  if (lCurrent > 1) {
    findings.push_back("the orders: " + std::to_string(lCurrent) + " of them are the current order");
  }
}

// Each order's lines are summed here and not by the store, so that a sum out of range is a finding and not
// the end of the check.
void CheckTotals(ado::Connection& connection, std::vector<std::string>& findings) {
  struct Sum {
    Currency Amount;
    bool Overflows = false;
  };
  std::map<std::int32_t, Sum> sums;
  const auto lines = connection.Execute("select lOrderID, cExtendedPrice from tblOrderItem");
  const ado::Field lineOrder = lines->Fields("lOrderID");
  const ado::Field extendedPrice = lines->Fields("cExtendedPrice");
  for (; !lines->AtEnd(); lines->MoveNext()) {
    Sum& sum = sums[lineOrder.Value().ToInteger()];
    try {
      sum.Amount += extendedPrice.Value().ToCurrency();
    } catch (const Failure& failure) {
      if (failure.Number() != failure::kOverflow) {
        throw;
      }
      sum.Overflows = true;
    }
  }
  const auto orders = connection.Execute("select lOrderID, cTotalPrice from tblOrder order by lOrderID");
  const ado::Field order = orders->Fields("lOrderID");
  const ado::Field total = orders->Fields("cTotalPrice");
  for (; !orders->AtEnd(); orders->MoveNext()) {
    const std::int32_t lOrderID = order.Value().ToInteger();
    const Currency cTotal = total.Value().ToCurrency();
    const auto found = sums.find(lOrderID);
    const Sum sum = found == sums.end() ? Sum() : found->second;
    if (sum.Overflows) {
      findings.push_back("order " + std::to_string(lOrderID) +
                         ": the sum of its lines is beyond the range of money");
    } else if (sum.Amount != cTotal) {
      findings.push_back("order " + std::to_string(lOrderID) + ": its total is " + cTotal.ToString() +
                         ", its lines add up to " + sum.Amount.ToString());
    }
  }
}

}  // namespace

void CreateOrderStore(const std::string& zvFolder) {
  ado::embedded::CreateStoreFile(file::SystemPath(zvFolder + kFileName, "OrderingDatabasePath"),
                                 kSchemaScript);
}

std::string OrderStorePath() {
  StartUp();
  return file::SystemPath(DatabasePath() + kFileName, "OrderingDatabasePath");
}

std::vector<std::string> CheckOrderStore() {
  StartUp();
  ado::Connection connection;
  connection.Open(ConnectionString());
  const ado::Transaction oneState(connection, ado::TransactionKind::Read);
  std::vector<std::string> findings = connection.CheckIntegrity(kSchemaScript);
  if (findings.empty()) {
    CheckCurrentOrder(connection, findings);
    CheckTotals(connection, findings);
  }
  return findings;
}

}  // namespace qm_ordering
