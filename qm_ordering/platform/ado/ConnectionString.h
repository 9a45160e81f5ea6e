#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

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

constexpr char LowerLetter(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// Whether two texts are the same but for the case of the letters A to Z: the rule for keys and column names.
bool SameName(std::string_view zvLeft, std::string_view zvRight) noexcept;

}  // namespace qm_ordering::ado
