#include "qm_ordering/platform/ado/embedded/Integrity.h"

#include <cstdint>
#include <memory>

#include "qm_ordering/platform/ado/Session.h"
#include "qm_ordering/platform/ado/embedded/StoreFile.h"
#include "qm_ordering/platform/value/OutOfMemory.h"

namespace qm_ordering::ado::embedded {

namespace {

void AddFindings(PooledSession& session, const std::string& zvQuery, std::vector<std::string>& findings) {
  Translation translation;
  translation.Text = zvQuery;
  translation.VariableLength = true;
  const std::unique_ptr<Prepared> statement = session.Prepare(translation);
  int lResult = 0;
  while ((lResult = sqlite3_step(statement->Handle.get())) == SQLITE_ROW) {
    const auto* pText = reinterpret_cast<const char*>(sqlite3_column_text(statement->Handle.get(), 0));
    if (pText == nullptr) {
      throw OutOfMemory();
    }
    findings.emplace_back(pText);
  }
  if (lResult != SQLITE_DONE) {
    throw session.Answer(lResult);
  }
}

}  // namespace

std::vector<std::string> CheckIntegrity(PooledSession& session) {
  std::vector<std::string> findings;
  RunCheck("the file", findings, [&] {
    // The argument is the most findings it answers; by itself it would stop at a hundred.
    AddFindings(session,
                "select 'the file: ' || integrity_check from pragma_integrity_check(1000000000) "
                "where integrity_check <> 'ok'",
                findings);
  });
  RunCheck("the lines' headers", findings, [&] {
    AddFindings(
        session,
        "select 'the table ' || \"table\" || ': row ' || rowid || ' belongs to no row of ' || parent from "
        "pragma_foreign_key_check",
        findings);
  });
  RunCheck("the schema", findings, [&] {
    const std::int32_t lVersion = RequireKnownVersion(session.Database(), session.Name());
    if (DescribeSchema(session.Database(), session.Name()) != DescribeSchemaOfVersion(lVersion)) {
      findings.emplace_back(
          "the schema: its tables, indexes or stored queries are not those that the library makes");
    }
  });
  return findings;
}

}  // namespace qm_ordering::ado::embedded
