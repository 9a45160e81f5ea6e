#include "qm_ordering/platform/ado/embedded/KeysetWriter.h"

#include <utility>

#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering::ado::embedded {

Parameter ToParameter(const Variant& vvValue, std::optional<ColumnKind> kind) {
  if (vvValue.IsNull()) {
    return std::monostate();
  }
  switch (kind.value_or(ColumnKind::Text)) {
    case ColumnKind::Integer:
      return std::int64_t{vvValue.ToInteger()};
    case ColumnKind::Boolean:
      return std::int64_t{vvValue.ToBoolean() ? -1 : 0};
    case ColumnKind::Currency:
      return vvValue.ToCurrency().Scaled();
    case ColumnKind::Date:
      return vvValue.ToDate().ToStoreText();
    default:
      return vvValue.ToString();
  }
}

KeysetWriter::KeysetWriter(PooledSession& session, const Keyset& oKeyset)
    : m_oSession(session),
      m_oKeyset(oKeyset),
      m_zCondition(" where rowid = ?"),
      m_oChanged(oKeyset.Columns->Count()) {
  for (std::size_t i = 0; i < m_oKeyset.Columns->Count(); ++i) {
    const std::string& zColumn = (*m_oKeyset.Columns)[i];
    m_oKinds.push_back(m_oSession.Kinds()(zColumn));
    // Byte for byte: a change of letter case is a change.
    m_zCondition += " and " + zColumn + " is ? collate binary";
  }
}

KeysetWriter::~KeysetWriter() {
  GiveBack();
}

void KeysetWriter::GiveBack() noexcept {
  if (m_oStatement != nullptr) {
    m_oSession.Keep(std::move(m_oStatement));
  }
}

void KeysetWriter::PrepareFor(const Keyset::Row& row) {
  if (m_oStatement != nullptr) {
    sqlite3_reset(m_oStatement->Handle.get());
  }
  bool bSame = m_oStatement != nullptr;
  for (std::size_t i = 0; i < m_oChanged.size(); ++i) {
    const bool bChanged = row.Read[i] != row.Changed[i];
    bSame = bSame && bChanged == m_oChanged[i];
    m_oChanged[i] = bChanged;
  }
  if (bSame) {
    return;
  }
  GiveBack();
  Translation translation;
  for (std::size_t i = 0; i < m_oChanged.size(); ++i) {
    if (m_oChanged[i]) {
      translation.Text += (translation.Text.empty() ? " set " : ", ") + (*m_oKeyset.Columns)[i] + " = ?";
    }
  }
  translation.Text = "update " + m_oKeyset.Table + translation.Text + m_zCondition;
  m_oStatement = m_oSession.Prepare(translation);
}

void KeysetWriter::Write(const Keyset::Row& row) {
  if (row.Read == row.Changed) {
    return;
  }
  PrepareFor(row);
  int lPosition = 0;
  for (std::size_t i = 0; i < m_oChanged.size(); ++i) {
    if (m_oChanged[i]) {
      m_oSession.Bind(*m_oStatement, ++lPosition, ToParameter(row.Changed[i], m_oKinds[i]));
    }
  }
  m_oSession.Bind(*m_oStatement, ++lPosition, row.Key);
  for (std::size_t i = 0; i < m_oKinds.size(); ++i) {
    m_oSession.Bind(*m_oStatement, ++lPosition, ToParameter(row.Read[i], m_oKinds[i]));
  }
  const int lResult = sqlite3_step(m_oStatement->Handle.get());
  if (lResult != SQLITE_DONE) {
    throw m_oSession.Answer(lResult);
  }
  if (sqlite3_changes64(m_oSession.Database()) != 1) {
    throw Failure(failure::kStoreRowChanged,
                  "A row of " + m_oKeyset.Table + " in the order store " + m_oSession.Name() +
                      " was changed or removed by another program since it was read. "
                      "Load the lines again and repeat the change.");
  }
}

}  // namespace qm_ordering::ado::embedded
