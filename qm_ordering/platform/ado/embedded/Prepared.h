#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "qm_ordering/platform/ado/ColumnNames.h"
#include "qm_ordering/platform/ado/embedded/Engine.h"
#include "qm_ordering/platform/ado/embedded/Translator.h"
#include "qm_ordering/platform/value/Variant.h"

namespace qm_ordering::ado::embedded {

// A prepared statement with what is known of its results.
struct Prepared {
  std::string Text;  // the key under which it is kept; empty for one that is not kept
  StatementHandle Handle;
  std::shared_ptr<const ColumnNames> Columns;  // without any for what is not a query
  std::vector<std::optional<ColumnKind>> Kinds;
};

// Fills in the columns of a statement whose handle is set. A column without a declared type is of the kind
// that resultKinds has for it, where that has as many as the statement.
void DescribeResults(Prepared& statement, const std::vector<std::optional<ColumnKind>>& resultKinds = {});

// A column's value in the row on which the statement stands, in the column's kind; a fraction, in a column
// without a kind, is a double. Raises kTypeMismatch for a value of another kind.
Variant ReadColumn(const Prepared& statement, std::size_t lvColumn);

}  // namespace qm_ordering::ado::embedded
