#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>
#include <vector>

#include "qm_ordering/platform/ado/embedded/Engine.h"
#include "qm_ordering/platform/text/Unicode.h"
#include "qm_ordering/store/OrderStore.h"
#include "tests/ado/OpenStore.h"

namespace {

namespace engine = qm_ordering::ado::embedded;

// Orders that were stored by a program whose letters sort the other way round.
class FoldingVersion : public test::StoreFixture {
 protected:
  FoldingVersion() {
    sqlite3* pDatabase = nullptr;
    EXPECT_EQ(SQLITE_OK, sqlite3_open(Store.Path().c_str(), &pDatabase));
    const engine::DatabaseHandle db(pDatabase);
    const auto compare = [](void*, int lvLeft, const void* pLeft, int lvRight, const void* pRight) {
      return -std::string(static_cast<const char*>(pLeft), static_cast<std::size_t>(lvLeft))
                  .compare(std::string(static_cast<const char*>(pRight), static_cast<std::size_t>(lvRight)));
    };
    EXPECT_EQ(SQLITE_OK,
              sqlite3_create_collation(pDatabase, engine::kTextCollation, SQLITE_UTF8, nullptr, compare));
    for (const char* zNumber : {"a", "B", "c", "D", "\xC3\xA9"}) {
      engine::RunScript(pDatabase,
                        std::string("insert into tblOrder (zPurchaseOrderNumber) values ('") + zNumber + "')",
                        Store.Path());
    }
  }

  std::string StoredVersion() const {
    return Store.Value("select zValue from sysFormat where zName = 'folding'");
  }
};

}  // namespace

TEST_F(FoldingVersion, OfANewStoreIsTheLibrarys) {
  EXPECT_EQ(qm_ordering::text::FoldingVersion(), StoredVersion());
}

TEST_F(FoldingVersion, OfTheLibraryLeavesTheTextIndexesAsTheyAre) {
  // The damage that the next test sees repaired.
  EXPECT_NE(std::vector<std::string>{}, qm_ordering::CheckOrderStore());
}

TEST_F(FoldingVersion, OfAnotherLibraryHasTheTextIndexesRebuilt) {
  Store.Run("update sysFormat set zValue = '1.1'");
  EXPECT_EQ("2", test::Value("select lOrderID from tblOrder where zPurchaseOrderNumber = 'b'"));
  EXPECT_EQ("5", test::Value("select lOrderID from tblOrder where zPurchaseOrderNumber = '\xC3\x89'"));
  EXPECT_EQ("a", test::Value("select zPurchaseOrderNumber from tblOrder order by zPurchaseOrderNumber"));
  EXPECT_EQ(std::vector<std::string>{}, qm_ordering::CheckOrderStore());
  EXPECT_EQ(qm_ordering::text::FoldingVersion(), StoredVersion());
}
