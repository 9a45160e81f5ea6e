// Any bytes as the file of a dBase table: it is read, or refused with a failure that names it. What is read
// does not depend on what stands behind the records.

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "qm_ordering/platform/ado/dbase/TableSession.h"
#include "qm_ordering/platform/text/Unicode.h"
#include "qm_ordering/platform/value/Failure.h"
#include "tests/fuzz/Require.h"
#include "tests/support/TempFolder.h"

namespace {

using fuzz::Require;
using qm_ordering::Failure;
using qm_ordering::Variant;
using qm_ordering::VariantKind;
namespace ado = qm_ordering::ado;
namespace failure = qm_ordering::failure;

using Rows = std::vector<std::vector<Variant>>;

// A folder whose one table lies in memory.
class TableInMemory {
 public:
  TableInMemory() : m_lFile(memfd_create("table", MFD_CLOEXEC)) {
    Require(m_lFile >= 0, "there is a file in memory");
    std::filesystem::create_symlink("/proc/self/fd/" + std::to_string(m_lFile), Path());
    m_oSession = ado::dbase::OpenSession(m_oFolder.Path());
  }

  std::string Path() const { return m_oFolder.File("T.DBF"); }
  ado::Session& Session() const { return *m_oSession; }

  void Write(const std::string& zvBytes) const {
    Require(ftruncate(m_lFile, 0) == 0 &&
                pwrite(m_lFile, zvBytes.data(), zvBytes.size(), 0) == static_cast<ssize_t>(zvBytes.size()),
            "the file can be written");
  }

 private:
  test::TempFolder m_oFolder;
  int m_lFile;
  std::unique_ptr<ado::Session> m_oSession;
};

void RequireValue(const Variant& vvValue) {
  if (vvValue.Kind() == VariantKind::String) {
    const std::string zText = vvValue.ToString();
    Require(!zText.empty() && zText.back() != ' ' && zText.back() != '\0', "a text ends with no blank");
    Require(!qm_ordering::text::FindBrokenUTF8(zText), "a text is UTF-8");
  }
}

// The first rows that a statement answers; nothing when the table is refused.
std::optional<Rows> RowsOf(const TableInMemory& table, const char* zvSQL) {
  constexpr std::size_t kMostRows = 1000;
  try {
    Rows rows;
    const auto cursor = table.Session().Execute(zvSQL);
    while (rows.size() < kMostRows && cursor->Next()) {
      std::vector<Variant> row;
      for (std::size_t i = 0; i < cursor->Columns()->Count(); ++i) {
        row.push_back(cursor->Value(i));
        RequireValue(row.back());
      }
      rows.push_back(row);
    }
    return rows;
  } catch (const Failure& failure) {
    const std::string& zText = failure.Description();
    const bool bNoColumn =
        failure.Number() == failure::kStoreCommand && zText.find("no such column") < zText.size();
    Require(bNoColumn || failure.Number() == failure::kStoreUnavailable,
            "a table is refused as such: " + zText);
    Require(bNoColumn || zText.find(table.Path()) < zText.size(), "a failure names the table: " + zText);
    Require(!qm_ordering::text::FindBrokenUTF8(zText), "a failure is UTF-8");
    return std::nullopt;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t lSize) {
  static const TableInMemory table;
  const std::string zBytes(reinterpret_cast<const char*>(pData), lSize);
  table.Write(zBytes);
  const std::optional<Rows> rows = RowsOf(table, "SELECT * FROM T");
  if (rows) {
    RowsOf(table, "SELECT A.K FROM T AS A, T AS B WHERE A.K = B.K ORDER BY A.K");
    table.Write(zBytes + "\x1A and what follows");
    Require(RowsOf(table, "SELECT * FROM T") == rows, "what stands behind the records does not count");
  }
  return 0;
}
