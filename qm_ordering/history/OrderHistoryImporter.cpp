#include "qm_ordering/history/OrderHistoryImporter.h"

#include <exception>
#include <unordered_set>

#include "qm_ordering/foundation/Errors.h"
#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/foundation/UserSettingConstants.h"
#include "qm_ordering/history/LegacyOrders.h"
#include "qm_ordering/platform/ado/StoresBarred.h"
#include "qm_ordering/platform/clock/Clock.h"
#include "qm_ordering/platform/file/Path.h"
#include "qm_ordering/platform/file/WholeFile.h"
#include "qm_ordering/platform/settings/InstalledSettings.h"
#include "qm_ordering/platform/text/Unicode.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/platform/value/OutOfMemory.h"

namespace qm_ordering {

namespace {

constexpr const char* kLineBreak = "\r\n";
constexpr const char* kRule = "\r\n===============================================\r\n\r\n";
constexpr const char* kFailed = "Failed: Could not find Order History database";
constexpr const char* kCancelled = "The import was cancelled. No purchase orders were imported.";
constexpr std::size_t kMostFailures = 100;

// The item numbers under which lines are stored. One that the store has already gets a marker; the markers of
// lines that follow each other are counted.
class DuplicateMarker {
 public:
  std::string Mark(const std::string& zvItemNumber, bool bvStored) {
    if (!bvStored) {
      m_lCounter = 0;
      return zvItemNumber;
    }
    const std::string zNumber = m_lCounter == 0 ? "" : "(" + std::to_string(m_lCounter + 1) + ")";
    ++m_lCounter;
    return zvItemNumber + " DUP " + zNumber;
  }

 private:
  std::int64_t m_lCounter = 0;
};

std::string ItemCriterion(const std::string& zvItemNumber) {
  return "zItemNumber = '" + zvItemNumber + "'";
}

// Tells the lines that begin a purchase order from those that go on with it.
class OrderStarts {
 public:
  bool IsStart(const std::string& zvKey) {
    if (m_bBegun && zvKey == m_zKey) {
      return false;
    }
    m_bBegun = true;
    m_zKey = zvKey;
    return true;
  }

 private:
  std::string m_zKey;
  bool m_bBegun = false;
};

// Writes the rows of an import into the store, within the transaction of its caller.
class OrderWriter {
 public:
  explicit OrderWriter(ado::Connection& store)
      : m_oOrders(store.OpenTable("tblOrder")), m_oItems(store.OpenTable("tblOrderItem")) {
    m_zLineColumns = {"lOrderID", "zItemNumber", "bImported"};
    m_zLineColumns.insert(m_zLineColumns.end(), LegacyLineColumns().begin(), LegacyLineColumns().end());
  }

  void AddOrder(const LegacyOrders& legacy) {
    m_lOrderID = m_oOrders.AddRow(LegacyOrderColumns(), legacy.OrderValues());
  }

  // Answers the item number under which the line is stored.
  std::string AddLine(const LegacyOrders& legacy) {
    const std::string zItemNumber = legacy.ItemNumber();
    std::string zStored = m_oMarker.Mark(zItemNumber, m_oItems.Find(ItemCriterion(zItemNumber)));
    std::vector<Variant> values = {m_lOrderID, zStored, true};
    for (Variant& vValue : legacy.LineValues()) {
      values.push_back(std::move(vValue));
    }
    m_oItems.AddRow(m_zLineColumns, values);
    return zStored;
  }

 private:
  ado::TableRecordset m_oOrders;
  ado::TableRecordset m_oItems;
  std::vector<const char*> m_zLineColumns;
  std::int64_t m_lOrderID = 0;
  DuplicateMarker m_oMarker;
};

// Looks through the rows of an import as OrderWriter would write them.
class OrderPreviewer {
 public:
  explicit OrderPreviewer(ado::Connection& store) : m_oItems(store.OpenTable("tblOrderItem")) {
    // Read once: many orders may have the same number, or none.
    const auto rows = store.Execute(
        "select datSubmitDate, cTotalPrice, zPurchaseOrderNumber from tblOrder where bIsCurrent = False");
    const ado::Field date = rows->Fields("datSubmitDate");
    const ado::Field total = rows->Fields("cTotalPrice");
    const ado::Field number = rows->Fields("zPurchaseOrderNumber");
    for (; !rows->AtEnd(); rows->MoveNext()) {
      m_oHistory.insert(Identity(date.Value(), total.Value(), number.Value()));
    }
  }

  void LookAt(const LegacyOrders& legacy) {
    bool bFails = false;
    if (m_oStarts.IsStart(legacy.OrderKey())) {
      ++m_oPreview.Orders;
      bFails = !Converts([&] {
        const std::vector<Variant> values = legacy.OrderValues();
        m_oPreview.AlreadyImported += IsInHistory(values) ? 1 : 0;
      });
    }
    ++m_oPreview.Lines;
    bFails = !Converts([&] { legacy.LineValues(); }) || bFails;
    m_oPreview.FailingRows += bFails ? 1 : 0;
    const std::string zItemNumber = legacy.ItemNumber();
    const bool bStored =
        m_oAdded.contains(text::Fold(zItemNumber)) || m_oItems.Find(ItemCriterion(zItemNumber));
    m_oPreview.MarkedLines += bStored ? 1 : 0;
    m_oAdded.insert(text::Fold(m_oMarker.Mark(zItemNumber, bStored)));
  }

  ImportPreview Result() const { return m_oPreview; }

 private:
  template <typename Convert>
  bool Converts(Convert convert) {
    try {
      convert();
      return true;
    } catch (const Failure& failure) {
      if (failure.Number() != failure::kOverflow && failure.Number() != failure::kTypeMismatch) {
        throw;
      }
      if (m_oPreview.Failures.size() < kMostFailures) {
        m_oPreview.Failures.push_back(failure.Description());
      }
      return false;
    }
  }

  const Variant& ValueOf(const std::vector<Variant>& values, std::string_view zvColumn) const {
    std::size_t i = 0;
    while (LegacyOrderColumns()[i] != zvColumn) {
      ++i;
    }
    return values[i];
  }

  // What orders that are the same have in common, as the store compares.
  static std::string Identity(const Variant& date, const Variant& total, const Variant& number) {
    return (date.IsNull() ? "" : date.ToDate().ToStoreText()) + "|" + total.ToCurrency().ToString() +
           (number.IsNull() ? "" : "|" + text::Fold(number.ToString()));
  }

  bool IsInHistory(const std::vector<Variant>& values) const {
    return m_oHistory.contains(Identity(ValueOf(values, "datSubmitDate"), ValueOf(values, "cTotalPrice"),
                                        ValueOf(values, "zPurchaseOrderNumber")));
  }

  ado::TableRecordset m_oItems;
  std::unordered_set<std::string> m_oHistory;  // the Identity of each submitted order
  OrderStarts m_oStarts;
  DuplicateMarker m_oMarker;
  std::unordered_set<std::string> m_oAdded;  // item numbers, folded
  ImportPreview m_oPreview;
};

// The host wants no more.
class Cancelled {};

// What the host's callback raised.
struct HostRaised {
  std::exception_ptr Exception;
};

// Tells the host how far the import is. Raises Cancelled when it wants no more, and HostRaised.
class ProgressReport {
 public:
  ProgressReport(const std::function<bool(const ImportProgress&)>& fvProgress, LegacyOrders& legacy)
      : m_fProgress(fvProgress) {
    if (m_fProgress) {
      m_oProgress.LinesInAll = legacy.Count();
    }
  }

  void Tell(std::int64_t lvOrders, std::int64_t lvLines) {
    if (!m_fProgress) {
      return;
    }
    m_oProgress.Orders = lvOrders;
    m_oProgress.Lines = lvLines;
    if (!Ask()) {
      throw Cancelled();
    }
  }

 private:
  bool Ask() const {
    const ado::StoresBarred barred("by the callback that follows an import");
    try {
      return m_fProgress(m_oProgress);
    } catch (...) {
      throw HostRaised{std::current_exception()};
    }
  }

  // A copy: what is called may set the importer another one, which would end it while it runs.
  const std::function<bool(const ImportProgress&)> m_fProgress;
  ImportProgress m_oProgress;
};

// Notes that an importer imports, for as long as it lives.
class Running {
 public:
  explicit Running(bool& orRunning) : m_bRunning(orRunning) { m_bRunning = true; }
  ~Running() { m_bRunning = false; }
  Running(const Running&) = delete;
  Running& operator=(const Running&) = delete;

 private:
  bool& m_bRunning;
};

}  // namespace

std::int32_t OrderHistoryImporter::Import(const std::string& zvUserDataPath) {
  m_zLogHeader = "Order History import log started on " + clock::Current().Now().ToGeneralText() +
                 kLineBreak + kLineBreak;
  LegacyOrders legacy(zvUserDataPath);
  ado::Connection store;
  store.Open(ConnectionString());
  ado::Transaction batch(store);
  OrderWriter writer(store);
  ProgressReport report(m_fProgress, legacy);
  OrderStarts starts;
  std::int32_t lOrders = 0;
  std::int64_t lLines = 0;
  report.Tell(0, 0);
  if (legacy.AtEnd()) {
    m_zLogBody.append("Previous Order History database is empty.").append(kLineBreak).append(kLineBreak);
  }
  for (; !legacy.AtEnd(); legacy.MoveNext()) {
    if (starts.IsStart(legacy.OrderKey())) {
      writer.AddOrder(legacy);
      ++lOrders;
      m_zLogBody.append(kRule).append("PO Number: ").append(legacy.PurchaseOrderNumber());
      m_zLogBody.append("\r\n\r\nITEM #\t\tDESCRIPTION\r\n\r\n");
    }
    m_zLogBody.append(writer.AddLine(legacy)).append("\t\t").append(legacy.Description()).append(kLineBreak);
    report.Tell(lOrders, ++lLines);
  }
  // What can fail for want of memory comes before the orders are there.
  m_zLogBody.append(kRule);
  std::string zHeader = m_zLogHeader + "Success:\t" + std::to_string(lOrders) + " purchase orders imported.";
  batch.Commit();
  m_zLogHeader = std::move(zHeader);
  return lOrders;
}

void OrderHistoryImporter::WriteLog() const {
  const std::string zFolder = settings::CreateUserSettings()->Get(UserSettingConstants::LOGPATH);
  const file::WholeFile file(
      file::SystemPath(zFolder + "\\Order_History_Import_Log.txt", UserSettingConstants::LOGPATH), "log");
  file::WholeFile::Writing(file).Replace([&](const file::TakePart& take) {
    for (const std::string* pText : {&m_zLogHeader, &m_zLogBody}) {
      take(*pText);
      take(kLineBreak);
    }
  });
}

std::int32_t OrderHistoryImporter::ApplyImports(const std::string& zvUserDataPath, bool bvWriteLog) {
  constexpr const char* kOperation = "OrderHistoryImporter.ApplyImports";
  return OrOutOfMemory([&] {
    if (m_bRunning) {
      // By its callback; the two texts are those of the import that it follows.
      RememberFailure(Failure(failure::kInvalidCall, "This importer is importing already."), kOperation);
      return 0;
    }
    const Running running(m_bRunning);
    m_zLogBody.clear();
    std::int32_t lOrders = 0;
    try {
      lOrders = Import(zvUserDataPath);
    } catch (const HostRaised& raised) {
      m_zLogHeader = kFailed;
      std::rethrow_exception(raised.Exception);
    } catch (const Cancelled&) {
      RememberFailure(Failure(failure::kInvalidCall, kCancelled), kOperation);
      m_zLogHeader = kCancelled;
      return 0;
    } catch (...) {
      CatchFailure(kOperation);
      m_zLogHeader = kFailed;
      return 0;
    }
    try {
      if (bvWriteLog) {
        WriteLog();
      }
    } catch (...) {
      // The orders are in the store; the log is only an account of them.
      CatchFailure(kOperation);
    }
    return lOrders;
  });
}

ImportPreview OrderHistoryImporter::PreviewImports(const std::string& zvUserDataPath) {
  return OrOutOfMemory([&] {
    LegacyOrders legacy(zvUserDataPath);
    ado::Connection store;
    store.Open(ConnectionString());
    const ado::Transaction state(store, ado::TransactionKind::Read);
    OrderPreviewer previewer(store);
    for (; !legacy.AtEnd(); legacy.MoveNext()) {
      previewer.LookAt(legacy);
    }
    return previewer.Result();
  });
}

}  // namespace qm_ordering
