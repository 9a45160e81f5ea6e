#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "qm_ordering/foundation/LibraryObject.h"
#include "qm_ordering/platform/Export.h"

namespace qm_ordering {

// How far an import is.
struct QM_ORDERING_API ImportProgress {
  std::int64_t Orders = 0;      // purchase orders begun
  std::int64_t Lines = 0;       // lines done
  std::int64_t LinesInAll = 0;  // lines that there are
};

// What an import would do.
struct QM_ORDERING_API ImportPreview {
  std::int64_t Orders = 0;           // purchase orders that would be imported
  std::int64_t Lines = 0;            // their lines
  std::int64_t MarkedLines = 0;      // lines that would be marked as duplicates
  std::int64_t AlreadyImported = 0;  // purchase orders that the history has with the same number, date, total
  std::int64_t FailingRows = 0;      // rows that would fail, the first of which fails the whole import
  std::vector<std::string> Failures;  // why, in words, of the first 100 of them
};

// Copies the purchase orders of an older ordering program into the history, once: an import that is run twice
// imports twice. The old orders are two dBase tables in one folder, POHDRHIS.DBF (a row for each purchase
// order) and PODTLHIS.DBF (a row for each line), joined by their column DATETIME; the names are found in any
// letter case. dBase III, dBase IV and FoxPro tables can be read.
//
// Blank quantities, prices and totals are 0; numbers may have "$" and groups of thousands ("1,234.50"); a
// quantity with a fraction and a price with more than four decimals round half to even. A date may be a date
// field or a text of the forms 2003-07-04, 2003-07-04 15:04:05, 20030704, 7/4/2003 and 7/4/03 (30 to 99 are
// of the last century); a blank one is no date.
class QM_ORDERING_API OrderHistoryImporter : public LibraryObject {
 public:
  // The class's name for who makes or uses objects by name.
  static constexpr const char* kClassName = "OrderHistoryImporter";
  const char* ClassName() const noexcept override { return kClassName; }
  // What Members answers, without an object.
  static const ClassInfo& ClassMembers();
  const ClassInfo& Members() const override { return ClassMembers(); }

  // Imports all purchase orders of the folder and answers how many; 0 when there are none, and on a failure,
  // for which LastFailure has the reason. A failed or cancelled import changes nothing in the store, and
  // holds the store's lock while it runs. An item number that the store has already, in any order and letter
  // case, is stored with a marker behind it: " DUP ", and for the next ones in a row " DUP (2)", " DUP (3)".
  // With bvWriteLog a file Order_History_Import_Log.txt with both texts is written into the folder of the
  // setting "LogPath", in the place of an older one; a file .lock beside it keeps two writers apart and
  // stays. When that fails the import stands, and LastFailure has the reason. Raises 7 where memory ends, and
  // what the callback raises.
  std::int32_t ApplyImports(const std::string& zvUserDataPath, bool bvWriteLog = false);

  // The outcome of the last run; empty before the first.
  const std::string& LogHeader() const { return m_zLogHeader; }
  // The purchase orders and lines of the last run; empty before the first.
  const std::string& LogBody() const { return m_zLogBody; }

  // Walks over the same rows and says what ApplyImports would do with them; changes nothing. The two texts
  // stay. Raises the failure that would end the import before its first row, and 7 where memory ends.
  ImportPreview PreviewImports(const std::string& zvUserDataPath);

  // Is called by ApplyImports at the beginning and after each line, on its thread; answers whether to go on.
  // False cancels the import: nothing is imported, LogHeader and LastFailure (5) say so. The callback may not
  // use the order store, which is in the middle of the import: every object that tries fails with 5. What it
  // raises ends the import as a failure does, and then leaves ApplyImports. What is set while an import runs
  // is called from the next one on. Empty for none.
  void OnProgress(std::function<bool(const ImportProgress&)> fvProgress) {
    m_fProgress = std::move(fvProgress);
  }

 private:
  std::int32_t Import(const std::string& zvUserDataPath);
  void WriteLog() const;

  bool m_bRunning = false;  // within ApplyImports
  std::string m_zLogHeader;
  std::string m_zLogBody;
  std::function<bool(const ImportProgress&)> m_fProgress;
};

}  // namespace qm_ordering
