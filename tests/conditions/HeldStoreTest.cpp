#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "qm_ordering/platform/value/Failure.h"
#include "tests/conditions/TroubledStore.h"

// Another program is in the middle of writing the store.

namespace {

using namespace qm_ordering;

class HeldStore : public test::TroubledStore {
 protected:
  // Another program begins to write, and ends with a change of its own when it is told so, or after some
  // time by itself.
  void Hold(int lvMilliseconds) {
    Rest();
    ClosePipes();
    ASSERT_EQ(0, pipe(m_lHeld.data()));
    ASSERT_EQ(0, pipe(m_lRelease.data()));
    m_oOther = std::make_unique<test::ChildProcess>([this, lvMilliseconds] {
      sqlite3* pDatabase = nullptr;
      sqlite3_open(Store.Path().c_str(), &pDatabase);
      const bool bHeld =
          sqlite3_exec(pDatabase, "begin immediate; update tblOrder set zDIFax = 'of the other'", nullptr,
                       nullptr, nullptr) == SQLITE_OK;
      char cMark = bHeld ? 'y' : 'n';
      if (write(m_lHeld[1], &cMark, 1) == 1) {
        if (lvMilliseconds > 0) {
          usleep(static_cast<useconds_t>(lvMilliseconds) * 1000);
        } else if (read(m_lRelease[0], &cMark, 1) != 1) {
          return std::string("not told to end");
        }
      }
      const int lResult = sqlite3_exec(pDatabase, "commit", nullptr, nullptr, nullptr);
      sqlite3_close(pDatabase);
      return std::string(lResult == SQLITE_OK ? "written" : "not written");
    });
    char cMark = 0;
    ASSERT_EQ(1, read(m_lHeld[0], &cMark, 1));
    ASSERT_EQ('y', cMark);
  }
  void Release() {
    ASSERT_EQ(1, write(m_lRelease[1], "e", 1));
    EXPECT_EQ("written", m_oOther->Outcome());
  }
  ~HeldStore() override { ClosePipes(); }

  void ClosePipes() const {
    for (const int lEnd : {m_lHeld[0], m_lHeld[1], m_lRelease[0], m_lRelease[1]}) {
      if (lEnd >= 0) {
        close(lEnd);
      }
    }
  }

  std::string Fax() const { return Store.Value("select zDIFax from tblOrder where bIsCurrent = -1"); }

  std::array<int, 2> m_lHeld{-1, -1};
  std::array<int, 2> m_lRelease{-1, -1};
  std::unique_ptr<test::ChildProcess> m_oOther;
};

using HeldStoreFull = HeldStore;

TEST_F(HeldStore, ThatIsFreedInTimeTakesTheWriteAndLosesNeither) {
  for (const auto& member : test::WritingMembers()) {
    SCOPED_TRACE(member.Name);
    if (std::string(member.Name) == "SaveSummary" ||
        std::string(member.Name) == "ApplyRegistrationSettings") {
      continue;  // they write what the other one writes
    }
    Restore();
    Hold(100);
    CurrentOrder order;
    order.LoadItems(0);
    EXPECT_EQ("", test::FailureOfMember(member, order));
    EXPECT_EQ("written", m_oOther->Outcome());
    EXPECT_EQ("of the other", Store.Value("select zDIFax from tblOrder where lOrderID = 3"));
    EXPECT_NE(Known, Orders());
  }
}

TEST_F(HeldStoreFull, ThatIsNotFreedFailsClearlyAndNothingIsLost) {
  Hold(0);
  CurrentOrder order;
  order.LoadItems(0);
  for (const std::size_t lMember : {std::size_t{0}, std::size_t{3}, std::size_t{8}}) {
    const auto& member = test::WritingMembers()[lMember];
    const std::string zFailure = test::FailureOfMember(member, order);
    for (const std::string& zWord :
         {std::string("-2147467259 : "), Store.Path(), std::string("another program holds the store"),
          std::string("try again")}) {
      EXPECT_NE(std::string::npos, zFailure.find(zWord)) << member.Name << ": " << zFailure;
    }
    // Reading goes on meanwhile.
    EXPECT_EQ(Known, Orders());
  }
  Release();
  EXPECT_EQ("of the other", Fax());
  for (const auto& member : {test::WritingMembers()[0], test::WritingMembers()[3]}) {
    EXPECT_EQ("", test::FailureOfMember(member, order)) << member.Name;
  }
  EXPECT_EQ("", ExpectWorks("LATER"));
  EXPECT_EQ("of the other", Fax());
}

}  // namespace
