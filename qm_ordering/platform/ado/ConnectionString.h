#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "qm_ordering/platform/text/Names.h"

namespace qm_ordering::ado {

// The parts KEY=VALUE of a connection string, in its order. A value may stand in braces, with "}}" for a
// brace in it. Raises failure::kStoreUnavailable for a text that has no such form.
class ConnectionString {
 public:
  explicit ConnectionString(std::string_view zvText);

  // The value of the first part with that key, in any letter case; empty when there is none.
  std::string Value(std::string_view zvKey) const;

  // Whether it has no part but those, in any letter case, and none of them twice.
  bool HoldsOnly(std::initializer_list<std::string_view> zvKeys) const;

 private:
  std::vector<std::pair<std::string, std::string>> m_oParts;
};

using text::LowerLetter;
using text::SameName;

}  // namespace qm_ordering::ado
