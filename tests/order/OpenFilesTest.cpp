#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <iterator>
#include <memory>
#include <vector>

#include "qm_ordering/order/OrderDetails.h"
#include "tests/support/StoreFixture.h"

namespace {

std::ptrdiff_t CountOpenFiles() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                       std::filesystem::directory_iterator());
}

class OpenFiles : public test::StoreFixture {};

// A host that shows a history holds an object for each order.
TEST_F(OpenFiles, DoNotGrowWithTheOrdersThatAreHeldWithTheirLines) {
  std::vector<std::shared_ptr<qm_ordering::OrderDetails>> orders;
  const auto load = [&] {
    orders.push_back(std::make_shared<qm_ordering::OrderDetails>());
    orders.back()->LoadSummary(true);
    orders.back()->LoadItems(0, true);
  };
  load();
  const std::ptrdiff_t lAfterOne = CountOpenFiles();
  for (int i = 0; i < 100; ++i) {
    load();
  }
  EXPECT_EQ(CountOpenFiles(), lAfterOne);
}

}  // namespace
