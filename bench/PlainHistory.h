#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace bench {

// The submitted orders in the memory of a program without the library, found by their ids.
class PlainHistory {
 public:
  // An amount is scaled by 10,000; the date has the store's form.
  void Add(std::int64_t lvID, std::string zvNumber, const std::string& zvSubmitDate, std::int64_t lvTotal);
  std::size_t Count() const { return m_oOrders.size(); }

  // The history's document, with the library's attributes, built with pugixml.
  std::string Document() const;

 private:
  struct Order {
    std::int64_t ID = 0;
    std::string Number;
    int Year = 0, Month = 0, Day = 0, Hour = 0, Minute = 0, Second = 0;
    std::int64_t Total = 0;
  };

  std::vector<Order> m_oOrders;
  std::unordered_map<std::int64_t, std::size_t> m_oPositions;
};

}  // namespace bench
