#include "tests/real_data/ListedOrders.h"

#include <gtest/gtest.h>
#include <locale.h>
#include <wctype.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <set>
#include <stdexcept>
#include <tuple>

namespace test {

namespace {

// What an order of the history goes by. Entries that are equal in it may come in any order among themselves.
using Key = std::tuple<std::wstring, std::string, std::int64_t>;

Key KeyOf(const ListedOrder& order, std::int32_t lvSortOrder) {
  switch (lvSortOrder) {
    case 0:
      return {InLowerCase(order.PONumber), order.Moment, 0};
    case 1:
      return {InLowerCase(order.PONumber), "", 0};
    case 2:
      return {L"", order.Moment, 0};
    default:
      return {L"", "", order.Total};
  }
}

}  // namespace

std::wstring InLowerCase(const std::string& zvText) {
  static const locale_t locale = newlocale(LC_ALL_MASK, "C.UTF-8", nullptr);
  const locale_t before = uselocale(locale);
  std::wstring zWide(zvText.size() + 1, L'\0');
  const std::size_t lLetters = mbstowcs(zWide.data(), zvText.c_str(), zWide.size());
  uselocale(before);
  if (lLetters == static_cast<std::size_t>(-1)) {
    throw std::runtime_error("no text: " + zvText);
  }
  zWide.resize(lLetters);
  for (wchar_t& cLetter : zWide) {
    cLetter = static_cast<wchar_t>(towlower_l(static_cast<wint_t>(cLetter), locale));
  }
  return zWide;
}

void ExpectListed(const qm_ordering::OrderHistory& history, const std::vector<ListedOrder>& orders,
                  std::int32_t lvSortOrder) {
  std::vector<Key> expected;
  std::map<std::int32_t, const ListedOrder*> byID;
  for (const ListedOrder& order : orders) {
    expected.push_back(KeyOf(order, lvSortOrder));
    byID[order.OrderID] = &order;
  }
  std::sort(expected.begin(), expected.end());
  std::vector<Key> listed;
  std::set<std::int32_t> ids;
  for (const auto& oEntry : history) {
    const auto found = byID.find(oEntry->OrderID());
    ASSERT_NE(byID.end(), found) << "no order is expected to have the id " << oEntry->OrderID();
    const ListedOrder& order = *found->second;
    listed.push_back(KeyOf(order, lvSortOrder));
    ids.insert(oEntry->OrderID());
    EXPECT_EQ(order.PONumber, oEntry->PurchaseOrderNumber());
    EXPECT_EQ(order.Moment, oEntry->SubmitDate().ToStoreText());
    EXPECT_EQ(order.Total, oEntry->OrderTotal().Scaled());
    EXPECT_EQ(oEntry, history.Item(oEntry->OrderID()));
  }
  EXPECT_EQ(orders.size(), ids.size());
  EXPECT_EQ(orders.size(), static_cast<std::size_t>(history.Count()));
  ASSERT_EQ(expected.size(), listed.size());
  for (std::size_t l = 0; l < expected.size(); ++l) {
    ASSERT_EQ(expected[l], listed[l]) << "entry " << l + 1;
  }
}

}  // namespace test
