#include "bench/PlainHistory.h"

#include <charconv>
#include <stdexcept>
#include <utility>

#include "bench/PlainXml.h"

namespace bench {

namespace {

int NumberAt(const std::string& zvText, std::size_t lvPosition, std::size_t lvDigits) {
  int lNumber = 0;
  const char* pStart = zvText.data() + lvPosition;
  if (lvPosition + lvDigits > zvText.size() ||
      std::from_chars(pStart, pStart + lvDigits, lNumber).ptr != pStart + lvDigits) {
    throw std::runtime_error("There is no such date: " + zvText);
  }
  return lNumber;
}

}  // namespace

void PlainHistory::Add(std::int64_t lvID, std::string zvNumber, const std::string& zvSubmitDate,
                       std::int64_t lvTotal) {
  Order order;
  order.ID = lvID;
  order.Number = std::move(zvNumber);
  order.Year = NumberAt(zvSubmitDate, 0, 4);
  order.Month = NumberAt(zvSubmitDate, 5, 2);
  order.Day = NumberAt(zvSubmitDate, 8, 2);
  order.Hour = NumberAt(zvSubmitDate, 11, 2);
  order.Minute = NumberAt(zvSubmitDate, 14, 2);
  order.Second = NumberAt(zvSubmitDate, 17, 2);
  order.Total = lvTotal;
  m_oPositions.emplace(lvID, m_oOrders.size());
  m_oOrders.push_back(std::move(order));
}

std::string PlainHistory::Document() const {
  pugi::xml_document document;
  pugi::xml_node orders = document.append_child("orderhistory").append_child("previousorders");
  for (const Order& order : m_oOrders) {
    pugi::xml_node element = orders.append_child("previousorder");
    Set(element, "orderid", order.ID);
    Set(element, "purchaseordernumber", order.Number);
    Set(element, "submitdate",
        std::to_string(order.Month) + "/" + std::to_string(order.Day) + "/" + std::to_string(order.Year));
    Set(element, "ordertotal", Amount(order.Total));
  }
  return TextOf(document);
}

}  // namespace bench
