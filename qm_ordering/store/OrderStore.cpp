#include "qm_ordering/store/OrderStore.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <iterator>
#include <map>
#include <optional>
#include <thread>
#include <utility>

#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/platform/ado/Connection.h"
#include "qm_ordering/platform/ado/embedded/BackupFile.h"
#include "qm_ordering/platform/ado/embedded/EmbeddedSession.h"
#include "qm_ordering/platform/ado/embedded/StoreCopy.h"
#include "qm_ordering/platform/ado/embedded/StoreFile.h"
#include "qm_ordering/platform/ado/embedded/StoreReplacement.h"
#include "qm_ordering/platform/file/Path.h"
#include "qm_ordering/platform/value/Currency.h"
#include "qm_ordering/platform/value/CurrencySum.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/platform/value/OutOfMemory.h"

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

// What the unique indexes keep out as long as they are there. With min() the engine takes the name from the
// row that was entered first.
void CheckNames(ado::Connection& connection, std::vector<std::string>& findings) {
  const auto orders = connection.Execute(
      "select lOrderID, zItemNumber, count(*), min(lOrderEntered) from tblOrderItem "
      "group by lOrderID, zItemNumber having count(*) > 1 order by lOrderID");
  for (; !orders->AtEnd(); orders->MoveNext()) {
    findings.push_back("order " + orders->Fields(0).Value().ToString() + ": the item " +
                       orders->Fields(1).Value().ToString() + " is in it " +
                       orders->Fields(2).Value().ToString() + " times");
  }
  const auto names = connection.Execute(
      "select zName, count(*), min(lListID) from tblPersonalList group by zName having count(*) > 1");
  for (; !names->AtEnd(); names->MoveNext()) {
    findings.push_back("the lists: " + names->Fields(1).Value().ToString() + " of them have the name " +
                       names->Fields(0).Value().ToString());
  }
  const auto lists = connection.Execute(
      "select lListID, zItemNumber, count(*), min(lListEntered) from tblPersonalListItem "
      "group by lListID, zItemNumber having count(*) > 1 order by lListID");
  for (; !lists->AtEnd(); lists->MoveNext()) {
    findings.push_back("list " + lists->Fields(0).Value().ToString() + ": the item " +
                       lists->Fields(1).Value().ToString() + " is in it " +
                       lists->Fields(2).Value().ToString() + " times");
  }
}

// An order whose total is not the sum of its lines; without a sum where that is beyond the range of money.
struct WrongTotal {
  std::int32_t OrderID = 0;
  Currency Total;
  std::optional<Currency> Sum;
};

// Each order's lines are summed here and not by the store, so that a sum out of range is a finding and not
// the end of the check. The total of an imported order is what the older program had, with what that added to
// its lines.
std::vector<WrongTotal> WrongTotals(ado::Connection& connection) {
  struct Lines {
    CurrencySum Sum;
    bool Imported = false;
  };
  std::map<std::int32_t, Lines> lines;
  const auto rows = connection.Execute("select lOrderID, cExtendedPrice, bImported from tblOrderItem");
  const ado::Field rowOrder = rows->Fields("lOrderID");
  const ado::Field extendedPrice = rows->Fields("cExtendedPrice");
  const ado::Field imported = rows->Fields("bImported");
  for (; !rows->AtEnd(); rows->MoveNext()) {
    Lines& ofOrder = lines[rowOrder.Value().ToInteger()];
    ofOrder.Sum.Add(extendedPrice.Value().ToCurrency());
    ofOrder.Imported = ofOrder.Imported || imported.Value().ToBoolean();
  }
  std::vector<WrongTotal> wrong;
  const auto orders = connection.Execute("select lOrderID, cTotalPrice from tblOrder order by lOrderID");
  const ado::Field order = orders->Fields("lOrderID");
  const ado::Field total = orders->Fields("cTotalPrice");
  for (; !orders->AtEnd(); orders->MoveNext()) {
    const std::int32_t lOrderID = order.Value().ToInteger();
    const Lines& ofOrder = lines[lOrderID];
    const Currency cTotal = total.Value().ToCurrency();
    const std::optional<Currency> cSum = ofOrder.Sum.Total();
    if (!ofOrder.Imported && cSum != cTotal) {
      wrong.push_back({lOrderID, cTotal, cSum});
    }
  }
  return wrong;
}

std::vector<std::string> FindingsOf(const std::vector<WrongTotal>& wrong) {
  std::vector<std::string> findings;
  for (const WrongTotal& order : wrong) {
    const std::string zOrder = "order " + std::to_string(order.OrderID) + ": ";
    findings.push_back(order.Sum ? zOrder + "its total is " + order.Total.ToString() +
                                       ", its lines add up to " + order.Sum->ToString()
                                 : zOrder + "the sum of its lines is beyond the range of money");
  }
  return findings;
}

// What a check found. A total that does not fit is no damage: every operation that changes lines passes
// through such a state, and the lines tell what it should be.
struct Findings {
  std::vector<std::string> Damage;
  std::vector<std::string> Totals;

  std::vector<std::string> All() const {
    std::vector<std::string> all = Damage;
    all.insert(all.end(), Totals.begin(), Totals.end());
    return all;
  }
};

// Of the state that the open transaction sees.
Findings Examine(ado::Connection& connection) {
  Findings findings;
  std::vector<std::string>& damage = findings.Damage;
  damage = connection.CheckIntegrity();
  ado::RunCheck("the current order", damage, [&] { CheckCurrentOrder(connection, damage); });
  ado::RunCheck("item numbers and list names", damage, [&] { CheckNames(connection, damage); });
  ado::RunCheck("the totals", damage, [&] { findings.Totals = FindingsOf(WrongTotals(connection)); });
  return findings;
}

// Begins to read a state of the store in which the totals fit the lines, if one comes up. The library changes
// the lines of an order and then its total, so between the two there are states that look wrong and are
// another program's work under way. What stays wrong is wrong.
void BeginSettledState(ado::Connection& connection) {
  constexpr std::chrono::milliseconds kPause(20);
  constexpr int kLooks = 100;
  constexpr int kLooksAlike = 10;
  std::vector<std::string> before;
  int lAlike = 0;
  for (int lLook = 1;; ++lLook) {
    connection.BeginTransaction(ado::TransactionKind::Read);
    std::vector<std::string> now;
    try {
      now = FindingsOf(WrongTotals(connection));
    } catch (const Failure&) {
      // The check itself meets it, and says what it is.
      return;
    }
    lAlike = now == before ? lAlike + 1 : 0;
    if (now.empty() || lAlike == kLooksAlike || lLook == kLooks) {
      return;
    }
    before = std::move(now);
    connection.RollbackTransaction();
    std::this_thread::sleep_for(kPause);
  }
}

// The findings in one sentence, which may stop after some.
std::string Listed(const std::vector<std::string>& findings, std::size_t lvMost) {
  std::string zList;
  for (std::size_t i = 0; i < findings.size() && i < lvMost; ++i) {
    zList += (i == 0 ? "" : "; ") + findings[i];
  }
  if (findings.size() > lvMost) {
    zList += " (and " + std::to_string(findings.size() - lvMost) + " more)";
  }
  return zList.ends_with('.') ? zList : zList + ".";
}

// Of a copy that is in nobody else's hands; zvName is what messages call it.
Findings ExamineCopy(const std::string& zvPath, const std::string& zvName) {
  ado::Connection connection(ado::embedded::OpenCopy(zvPath, zvName));
  const ado::Transaction oneState(connection, ado::TransactionKind::Read);
  return Examine(connection);
}

}  // namespace

void CreateOrderStore(const std::string& zvFolder) {
  OrOutOfMemory([&] {
    if (zvFolder.empty()) {
      throw Failure(failure::kPathNotFound, "An order store needs a folder; the name given is empty.");
    }
    if (zvFolder.find(';') != std::string::npos || zvFolder.starts_with('{')) {
      throw Failure(failure::kPathNotFound,
                    "The folder \"" + zvFolder +
                        "\" cannot hold an order store: its name holds a semicolon or begins "
                        "with a brace, and no connection string could name it.");
    }
    ado::embedded::CreateStoreFile(file::SystemPath(zvFolder + "\\Orders.mdb", "OrderingDatabasePath"));
  });
}

std::string OrderStorePath() {
  return OrOutOfMemory([&] {
    StartUp();
    return ado::StoreFileOf(ConnectionString());
  });
}

std::vector<std::string> CheckOrderStore() {
  return OrOutOfMemory([&] {
    ado::Connection connection(ado::embedded::OpenAsItIs(OrderStorePath()));
    BeginSettledState(connection);
    return Examine(connection).All();
  });
}

std::vector<std::string> BackupOrderStore(const std::string& zvFile, const StoreProgress& progress) {
  return OrOutOfMemory([&] {
    const std::string zStore = OrderStorePath();
    ado::Connection connection(ado::embedded::OpenAsItIs(zStore));
    ado::embedded::BackupFile backup(zvFile, zStore);
    const std::string zNotMade = " The backup " + backup.Name() + " was not made.";
    Findings findings;
    try {
      BeginSettledState(connection);
      connection.CopyTo(backup.CopyPath(), backup.Name(), progress);
      connection.Close();
      findings = ExamineCopy(backup.CopyPath(), zStore);
    } catch (const Failure& failure) {
      throw Failure(failure.Number(), failure.Description() + zNotMade);
    }
    if (!findings.Damage.empty()) {
      throw Failure(failure::kStoreUnavailable,
                    "The order store " + zStore + " is not whole: " + Listed(findings.Damage, 1) +
                        " `qm-ordering store check` names all findings. Restore an earlier backup with "
                        "`qm-ordering store restore`." +
                        zNotMade);
    }
    backup.Publish();
    return findings.Totals;
  });
}

std::string RestoreOrderStore(const std::string& zvFile, const StoreProgress& progress) {
  return OrOutOfMemory([&] {
    const std::string zStore = OrderStorePath();
    if (zvFile.empty()) {
      throw Failure(failure::kPathNotFound, "Restoring needs a backup; the name given is empty.");
    }
    const std::string zFile = file::AbsolutePath(zvFile);
    const std::string zRefusal = "The backup " + zFile + " was not restored";
    if (file::IsSameFile(zFile, zStore)) {
      throw Failure(failure::kFileAccess, zRefusal + ": it is the order store itself.");
    }
    if (ado::embedded::IsUnfinished(zFile)) {
      throw Failure(failure::kFileAccess,
                    zRefusal + ": its name is one of those that are removed as left behind. Rename it.");
    }
    ado::embedded::StoreReplacement replacement(zStore, zRefusal);
    Findings findings;
    try {
      ado::embedded::CopyStoreFile(zFile, replacement.CopyPath(), zStore, zRefusal, progress);
      findings = ExamineCopy(replacement.CopyPath(), zFile);
    } catch (const Failure& failure) {
      throw Failure(failure.Number(), (failure.Description().starts_with(zRefusal) ? "" : zRefusal + ". ") +
                                          failure.Description() + " The order store " + zStore +
                                          " is as it was.");
    }
    if (!findings.Damage.empty()) {
      throw Failure(failure::kFileAccess,
                    zRefusal + ", since it is not whole: " + Listed(findings.Damage, 20) +
                        " Restore another one. The order store " + zStore + " is as it was.");
    }
    return replacement.Publish();
  });
}

std::vector<std::string> RepairOrderStore() {
  return OrOutOfMemory([&] {
    StartUp();
    ado::Connection connection;
    connection.Open(ConnectionString());
    std::vector<std::string> damage = connection.CheckIntegrity();
    ado::Transaction unit(connection);
    std::vector<WrongTotal> wrong;
    ado::RunCheck("the totals", damage, [&] { wrong = WrongTotals(connection); });
    if (!damage.empty()) {
      throw Failure(failure::kStoreUnavailable, "The order store " + OrderStorePath() +
                                                    " is damaged and was not repaired: " + Listed(damage, 1) +
                                                    " Restore a backup with `qm-ordering store restore`.");
    }
    std::vector<std::string> changes;
    for (const WrongTotal& order : wrong) {
      const std::string zOrderID = std::to_string(order.OrderID);
      if (order.Sum) {
        connection.Execute("update tblOrder set cTotalPrice = " + order.Sum->ToString() +
                           " where lOrderID = " + zOrderID);
        changes.push_back("order " + zOrderID + ": its total was " + order.Total.ToString() +
                          ", its lines add up to " + order.Sum->ToString() + "; set to " +
                          order.Sum->ToString());
      } else {
        changes.push_back("order " + zOrderID +
                          ": the sum of its lines is beyond the range of money; its total, " +
                          order.Total.ToString() + ", was left. Change its lines");
      }
    }
    unit.Commit();
    return changes;
  });
}

}  // namespace qm_ordering
