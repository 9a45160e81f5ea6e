#include <gtest/gtest.h>

#include <cstdint>
#include <new>
#include <string>

#include "qm_ordering/platform/ado/Session.h"
#include "qm_ordering/platform/value/Failure.h"
#include "tests/memory/FailingAllocation.h"

// A join of dBase tables while memory ends. What the library or the engine allocates fails; the reader of the
// tables allocates by itself.

namespace {

using namespace qm_ordering;

const std::string kFolder = QM_ORDERING_SOURCE_DIR "/tests/dbase/data";
constexpr const char* kJoin =
    "SELECT PONUM, ITEMNUM, QUANTITY, ORDDATE, MSDS FROM PODTLHIS INNER JOIN POHDRHIS "
    "ON PODTLHIS.DATETIME = POHDRHIS.DATETIME ORDER BY POHDRHIS.DATETIME, PODTLHIS.ITEMNUM";

std::string ReadJoin() {
  const auto session =
      ado::OpenSession("Driver=Microsoft dBase Driver (*.dbf);DBQ=" + kFolder + ";DefaultDir=" + kFolder);
  std::string zItems;
  for (const auto cursor = session->Execute(kJoin); cursor->Next();) {
    for (std::size_t i = 0; i < cursor->Columns()->Count(); ++i) {
      const Variant vValue = cursor->Value(i);
      zItems += vValue.IsNull() ? "-" : vValue.ToString();
    }
    zItems += '\n';
  }
  return zItems;
}

// What the join answers while allocations fail; empty when memory ended. Anything else that is raised rises.
std::string ReadJoinWithout(std::int64_t lvAllocation, test::Extent extent, bool& bvFailed) {
  const test::FailingAllocation failing(lvAllocation, extent);
  std::string zItems;
  try {
    zItems = ReadJoin();
  } catch (const std::bad_alloc&) {
    zItems.clear();
  } catch (const Failure& failure) {
    if (failure.Number() != failure::kOutOfMemory) {
      throw;
    }
    zItems.clear();
  }
  bvFailed = failing.HasFailed();
  return zItems;
}

}  // namespace

TEST(TableMemoryFull, EndsAtEachAllocationAsExhaustedMemoryOrNotAtAll) {
  const std::string zItems = ReadJoin();
  ASSERT_NE(std::string::npos, zItems.find("1A233"));
  for (const test::Extent extent : {test::Extent::Once, test::Extent::FromThenOn}) {
    std::int64_t lAllocation = 1;
    for (bool bFailed = true; bFailed; ++lAllocation) {
      const std::string zRead = ReadJoinWithout(lAllocation, extent, bFailed);
      EXPECT_TRUE(zRead == zItems || (bFailed && zRead.empty())) << lAllocation << ": " << zRead;
    }
    EXPECT_GT(lAllocation, 100);
    EXPECT_EQ(zItems, ReadJoin());
  }
}
