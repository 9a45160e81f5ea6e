#include "qm_ordering/foundation/LastFailure.h"

#include <gtest/gtest.h>

#include <thread>

#include "qm_ordering/foundation/Errors.h"

namespace {

using qm_ordering::Failure;
using qm_ordering::LastFailure;
using qm_ordering::LastFailureInfo;

void Catch(const Failure& failure, const char* zvOperation) {
  try {
    throw failure;
  } catch (...) {
    qm_ordering::CatchFailure(zvOperation);
  }
}

class LastFailureOfThread : public testing::Test {
 protected:
  LastFailureOfThread() { qm_ordering::ClearLastFailure(); }
};

TEST_F(LastFailureOfThread, IsNoneAtFirst) {
  EXPECT_EQ(LastFailure().Number, 0);
  EXPECT_EQ(LastFailure().Description, "");
  EXPECT_EQ(LastFailure().Operation, "");
}

TEST_F(LastFailureOfThread, TellsWhatWasCaughtAndWhere) {
  Catch(Failure(-2147217900, "Syntax error"), "Database.OrderDetails_AddItem");
  EXPECT_EQ(LastFailure().Number, -2147217900);
  EXPECT_EQ(LastFailure().Description, "Syntax error");
  EXPECT_EQ(LastFailure().Operation, "Database.OrderDetails_AddItem");
}

TEST_F(LastFailureOfThread, IsTheLatest) {
  Catch(Failure(6, "Overflow"), "First");
  Catch(Failure(13, "Type mismatch"), "Second");
  EXPECT_EQ(LastFailure().Number, 13);
  EXPECT_EQ(LastFailure().Operation, "Second");
}

TEST_F(LastFailureOfThread, IsNoneAgainOnceCleared) {
  Catch(Failure(6, "Overflow"), "First");
  qm_ordering::ClearLastFailure();
  EXPECT_EQ(LastFailure().Number, 0);
  EXPECT_EQ(LastFailure().Description, "");
  EXPECT_EQ(LastFailure().Operation, "");
}

TEST_F(LastFailureOfThread, BelongsToItsThread) {
  Catch(Failure(6, "Overflow"), "First");
  LastFailureInfo elsewhere;
  elsewhere.Number = -1;
  std::thread([&] {
    elsewhere = LastFailure();
    Catch(Failure(13, "Type mismatch"), "Elsewhere");
  }).join();
  EXPECT_EQ(elsewhere.Number, 0);
  EXPECT_EQ(LastFailure().Number, 6);
}

}  // namespace
