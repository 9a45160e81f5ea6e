#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include <array>
#include <optional>
#include <string>

#include "qm_ordering/platform/value/Failure.h"
#include "tests/ado/OpenStore.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/FailureOf.h"

namespace {

namespace failure = qm_ordering::failure;

// Another program that is in the middle of writing the store.
class LockedStoreFull : public test::StoreFixture {
 protected:
  LockedStoreFull() {
    EXPECT_EQ(0, pipe(m_lEnds.data()));
    m_oOther.emplace([this] {
      sqlite3* pDatabase = nullptr;
      sqlite3_open(Store.Path().c_str(), &pDatabase);
      const bool bLocked = sqlite3_exec(pDatabase, "begin immediate", nullptr, nullptr, nullptr) == SQLITE_OK;
      const char cAnswer = bLocked ? 'y' : 'n';
      if (write(m_lEnds[1], &cAnswer, 1) == 1) {
        pause();
      }
      return std::string();
    });
    char cAnswer = 0;
    EXPECT_EQ(1, read(m_lEnds[0], &cAnswer, 1));
    EXPECT_EQ('y', cAnswer);
  }
  ~LockedStoreFull() override {
    close(m_lEnds[0]);
    close(m_lEnds[1]);
  }

  static constexpr const char* kInsert = "insert into tblOrder (zPurchaseOrderNumber) values ('a')";
  std::array<int, 2> m_lEnds{};
  std::optional<test::ChildProcess> m_oOther;
};

}  // namespace

TEST_F(LockedStoreFull, FailsClearlyAfterSomeTimeAndWorksAgainAfterTheOther) {
  for (const bool bTransaction : {false, true}) {
    test::OpenConnection connection;
    const auto refused = test::FailureOf([&] {
      if (bTransaction) {
        connection.BeginTransaction();
      } else {
        connection.Execute(kInsert);
      }
    });
    EXPECT_EQ(failure::kStoreUnavailable, refused.Number());
    for (const std::string& zWords :
         {Store.Path(), std::string("another program holds the store"), std::string("try again")}) {
      EXPECT_NE(std::string::npos, refused.Description().find(zWords)) << refused.Description();
    }
    // Reading goes on meanwhile, also on the same connection.
    EXPECT_EQ(0, connection.Execute("select count(*) from tblOrder")->Fields(0).Value().ToInteger());
  }
  m_oOther.reset();
  test::Run(kInsert);
  EXPECT_EQ("1", test::Value("select count(*) from tblOrder"));
}
