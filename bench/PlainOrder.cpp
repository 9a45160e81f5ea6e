#include "bench/PlainOrder.h"

#include <cctype>
#include <utility>

#include "bench/PlainXml.h"

namespace bench {

namespace {

std::string Lower(std::string zvText) {
  for (char& c : zvText) {
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return zvText;
}

}  // namespace

void PlainOrder::Clear() {
  HeaderTexts.clear();
  HeaderNumbers.clear();
  m_oLines.clear();
  m_oPositions.clear();
}

void PlainOrder::Add(Line line) {
  line.ValidQuantity = line.Quantity % line.SellQuantity == 0;
  m_oPositions.emplace(Lower(line.ItemNumber), m_oLines.size());
  m_oLines.push_back(std::move(line));
}

const Line* PlainOrder::Find(const std::string& zvItemNumber) const {
  const auto found = m_oPositions.find(Lower(zvItemNumber));
  return found == m_oPositions.end() ? nullptr : &m_oLines[found->second];
}

std::string PlainOrder::Document() const {
  pugi::xml_document document;
  pugi::xml_node items = document.append_child("orderitems");
  for (const Line& line : m_oLines) {
    AppendItem(items, line);
  }
  return TextOf(document);
}

}  // namespace bench
