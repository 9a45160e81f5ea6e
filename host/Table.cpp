#include "host/Table.h"

#include <algorithm>
#include <utility>

#include "host/Text.h"

namespace host {

namespace {

constexpr std::size_t kGap = 2;
constexpr std::size_t kNarrowest = 16;

std::string Padding(std::size_t lvWidth, const std::string& zvText) {
  const std::size_t lText = DisplayWidth(zvText);
  return std::string(lText < lvWidth ? lvWidth - lText : 0, ' ');
}

std::string RightTrimmed(std::string zvText) {
  zvText.erase(zvText.find_last_not_of(' ') + 1);
  return zvText;
}

}  // namespace

void Table::Add(std::vector<std::string> zvCells) {
  for (std::string& zCell : zvCells) {
    zCell = Shown(zCell);
  }
  m_oRows.push_back(std::move(zvCells));
}

std::vector<std::size_t> Table::Widths(std::size_t lvWidth) const {
  std::vector<std::size_t> widths;
  std::size_t lTotal = 0;
  for (std::size_t i = 0; i < m_oColumns.size(); ++i) {
    std::size_t lWidest = 0;
    for (const auto& row : m_oRows) {
      lWidest = std::max(lWidest, DisplayWidth(row[i]));
    }
    widths.push_back(lWidest == 0 ? 0 : std::max(lWidest, DisplayWidth(m_oColumns[i].Title)));
    lTotal += widths.back() == 0 ? 0 : widths.back() + kGap;
  }
  lTotal -= std::min(lTotal, kGap);
  for (std::size_t i = 0; i < m_oColumns.size(); ++i) {
    if (m_oColumns[i].Wraps && lTotal > lvWidth && widths[i] > kNarrowest) {
      const std::size_t lTaken = std::min(lTotal - lvWidth, widths[i] - kNarrowest);
      widths[i] -= lTaken;
      lTotal -= lTaken;
    }
  }
  return widths;
}

std::string Table::Line(const std::vector<std::string>& zvCells,
                        const std::vector<std::size_t>& lvWidths) const {
  std::string zLine;
  for (std::size_t i = 0; i < zvCells.size(); ++i) {
    if (lvWidths[i] == 0) {
      continue;
    }
    if (!zLine.empty()) {
      zLine.append(kGap, ' ');
    }
    const std::string zPadding = Padding(lvWidths[i], zvCells[i]);
    zLine += m_oColumns[i].Alignment == Align::Right ? zPadding + zvCells[i] : zvCells[i] + zPadding;
  }
  return RightTrimmed(zLine) + "\n";
}

std::string Table::Text(std::size_t lvWidth) const {
  const std::vector<std::size_t> widths = Widths(lvWidth);
  std::vector<std::string> titles;
  std::vector<std::string> rules;
  for (std::size_t i = 0; i < m_oColumns.size(); ++i) {
    titles.push_back(m_oColumns[i].Title);
    rules.push_back(Repeated("\u2500", widths[i]));
  }
  std::string zTable = Line(titles, widths) + Line(rules, widths);
  for (const auto& row : m_oRows) {
    std::vector<std::vector<std::string>> cells;
    std::size_t lLines = 1;
    for (std::size_t i = 0; i < row.size(); ++i) {
      cells.push_back(m_oColumns[i].Wraps && widths[i] > 0 ? Wrapped(row[i], widths[i])
                                                           : std::vector<std::string>{row[i]});
      lLines = std::max(lLines, cells.back().size());
    }
    for (std::size_t lLine = 0; lLine < lLines; ++lLine) {
      std::vector<std::string> line;
      line.reserve(cells.size());
      for (const auto& cell : cells) {
        line.push_back(lLine < cell.size() ? cell[lLine] : std::string());
      }
      zTable += Line(line, widths);
    }
  }
  return zTable;
}

}  // namespace host
