#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "qm_ordering/platform/ado/Session.h"
#include "qm_ordering/platform/ado/embedded/PooledSession.h"
#include "qm_ordering/platform/ado/embedded/Translator.h"

namespace qm_ordering::ado::embedded {

// The value as a parameter, in the kind of its column. Raises what the conversion raises.
Parameter ToParameter(const Variant& vvValue, std::optional<ColumnKind> kind);

// Writes the changed rows of a keyset, one after the other, within a transaction of the caller. The keyset
// and the session outlive it.
class KeysetWriter {
 public:
  KeysetWriter(PooledSession& session, const Keyset& oKeyset);
  ~KeysetWriter();
  KeysetWriter(const KeysetWriter&) = delete;
  KeysetWriter& operator=(const KeysetWriter&) = delete;

  // Writes the changed columns of the row; nothing when none is changed. Raises kStoreRowChanged when the
  // row no longer is as it was read, and what the store answers.
  void Write(const Keyset::Row& row);

 private:
  // Makes the statement ready that writes the changed columns of this row.
  void PrepareFor(const Keyset::Row& row);
  void GiveBack() noexcept;

  PooledSession& m_oSession;
  const Keyset& m_oKeyset;
  std::vector<std::optional<ColumnKind>> m_oKinds;
  std::string m_zCondition;
  // The columns that the statement writes. Rows whose changes are in the same ones mostly follow each other.
  std::vector<bool> m_oChanged;
  std::unique_ptr<Prepared> m_oStatement;
};

}  // namespace qm_ordering::ado::embedded
