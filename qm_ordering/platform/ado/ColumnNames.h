#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace qm_ordering::ado {

// The names of a query's columns, in its order.
class ColumnNames {
 public:
  explicit ColumnNames(std::vector<std::string> zvNames);
  ColumnNames(const ColumnNames&) = delete;
  ColumnNames& operator=(const ColumnNames&) = delete;

  std::size_t Count() const { return m_zNames.size(); }
  const std::string& operator[](std::size_t lvColumn) const { return m_zNames[lvColumn]; }

  // The position of the column of that name, in the very letters or else in any letter case, the first one of
  // them. Raises kUnknownField.
  std::size_t Find(std::string_view zvName) const;

 private:
  std::vector<std::string> m_zNames;
  std::unordered_map<std::string_view, std::size_t> m_oPositions;
};

}  // namespace qm_ordering::ado
