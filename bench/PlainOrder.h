#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "bench/Line.h"

namespace bench {

// The order in the memory of a program without the library: the header's values and the lines, found by item
// number in any letter case.
class PlainOrder {
 public:
  std::vector<std::string> HeaderTexts;
  std::vector<std::int64_t> HeaderNumbers;

  void Clear();
  // Keeps the line and checks its quantity against the pack in which it sells.
  void Add(Line line);
  const std::vector<Line>& Lines() const { return m_oLines; }
  // Null when there is none.
  const Line* Find(const std::string& zvItemNumber) const;

  // The order's document with its lines alone and the library's attributes, built with pugixml.
  std::string Document() const;

 private:
  std::vector<Line> m_oLines;
  std::unordered_map<std::string, std::size_t> m_oPositions;
};

}  // namespace bench
