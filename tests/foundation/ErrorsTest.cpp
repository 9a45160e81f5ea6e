#include "qm_ordering/foundation/Errors.h"

#include <gtest/gtest.h>

#include <exception>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>

#include "qm_ordering/foundation/LastFailure.h"
#include "tests/foundation/ExhaustedMemory.h"
#include "tests/support/RaisedNumber.h"

namespace {

using qm_ordering::ErrorInfo;
using qm_ordering::Failure;
using qm_ordering::OrderingError;
using test::RaisedNumber;

class Errors : public testing::Test {
 protected:
  Errors() { qm_ordering::InitErrorTable(); }
};

// What CatchFailure makes of the exception.
template <typename Exception>
Failure Caught(const Exception& exception) {
  try {
    throw exception;
  } catch (...) {
    return qm_ordering::CatchFailure("Test.Throw");
  }
}

// Its text is longer than a string keeps without an allocation.
class LongText : public std::exception {
 public:
  const char* what() const noexcept override {
    return "a text that is long enough to need memory of its own when it is copied";
  }
};

TEST_F(Errors, AFreshRecordIsClear) {
  const ErrorInfo record;
  EXPECT_EQ(record.Number, 0);
  EXPECT_EQ(record.Description, "");
}

TEST_F(Errors, SetErrorTakesTheNumberAndTextOfTheTable) {
  ErrorInfo record;
  qm_ordering::SetError(record, OrderingError::errOrderNotFound, "");
  EXPECT_EQ(record.Number, 3);
  EXPECT_EQ(record.Description, "Order not found");
}

TEST_F(Errors, SetErrorPrefersAGivenText) {
  ErrorInfo record;
  qm_ordering::SetError(record, OrderingError::errOrderNotFound, "No such order here");
  EXPECT_EQ(record.Number, 3);
  EXPECT_EQ(record.Description, "No such order here");
}

TEST_F(Errors, SetErrorReplacesAnEarlierError) {
  ErrorInfo record{3, "Order not found"};
  qm_ordering::SetError(record, OrderingError::errListNotFound, "");
  EXPECT_EQ(record, (ErrorInfo{11, "List not found"}));
}

TEST_F(Errors, SetErrorRaisesOutsideTheTableAndLeavesTheRecord) {
  ErrorInfo record{3, "Order not found"};
  for (const std::int32_t lCode : {11, -1, std::numeric_limits<std::int32_t>::max()}) {
    EXPECT_EQ(RaisedNumber([&] { qm_ordering::SetError(record, static_cast<OrderingError>(lCode), "text"); }),
              9);
  }
  EXPECT_EQ(record, (ErrorInfo{3, "Order not found"}));
}

TEST_F(Errors, ClearErrorMakesARecordFreshAgain) {
  ErrorInfo record{3, "Order not found"};
  qm_ordering::ClearError(record);
  EXPECT_EQ(record, ErrorInfo());
}

TEST_F(Errors, ErrorDetailJoinsNumberAndDescription) {
  EXPECT_EQ(qm_ordering::ErrorDetail(-2147217900, "Syntax error"), "-2147217900 : Syntax error");
  EXPECT_EQ(qm_ordering::ErrorDetail(13, ""), "13 : ");
  EXPECT_EQ(qm_ordering::ErrorDetail(std::numeric_limits<std::int32_t>::min(), "x"), "-2147483648 : x");
}

TEST_F(Errors, CatchFailureKeepsAFailureAsItIs) {
  const Failure caught = Caught(Failure(-2147217900, "Syntax error"));
  EXPECT_EQ(caught.Number(), -2147217900);
  EXPECT_EQ(caught.Description(), "Syntax error");
}

TEST_F(Errors, CatchFailureKeepsTheTextOfOtherExceptions) {
  const Failure caught = Caught(std::runtime_error("the disk is gone"));
  EXPECT_EQ(caught.Number(), 5);
  EXPECT_EQ(caught.Description(), "the disk is gone");
}

TEST_F(Errors, CatchFailureTakesWhatIsNoException) {
  const Failure caught = Caught(42);
  EXPECT_EQ(caught.Number(), 5);
  EXPECT_NE(caught.Description(), "");
}

TEST_F(Errors, SetUnexpectedTakesTheFailuresDetail) {
  ErrorInfo record;
  qm_ordering::SetUnexpected(record, Failure(-2147467259, "The disk is full"));
  EXPECT_EQ(record, (ErrorInfo{5, "-2147467259 : The disk is full"}));
}

TEST_F(Errors, ARecordIsSetWithoutMemory) {
  const Failure failure(-2147467259, "A failure whose detail does not fit into a string itself");
  const std::string zLong(100, 'x');
  ErrorInfo unexpected;
  ErrorInfo given;
  ErrorInfo ofTable;
  {
    const test::ExhaustedMemory exhausted;
    qm_ordering::SetUnexpected(unexpected, failure);
    qm_ordering::SetError(given, OrderingError::errListNotFound, zLong);
    qm_ordering::SetError(ofTable, OrderingError::errItemExists, "");
  }
  EXPECT_EQ(unexpected, (ErrorInfo{5, "Out of memory"}));
  EXPECT_EQ(given, (ErrorInfo{11, "Out of memory"}));
  EXPECT_EQ(ofTable, (ErrorInfo{1, "Out of memory"}));
}

TEST_F(Errors, CatchFailureKnowsExhaustedMemory) {
  const Failure caught = Caught(std::bad_alloc());
  EXPECT_EQ(caught.Number(), 7);
  EXPECT_EQ(caught.Description(), "Out of memory");
}

TEST_F(Errors, CatchFailureWorksWithoutMemory) {
  qm_ordering::ClearLastFailure();
  std::int32_t lNumber = 0;
  try {
    throw std::bad_alloc();
  } catch (...) {
    const test::ExhaustedMemory exhausted;
    lNumber = qm_ordering::CatchFailure("Test.Exhausted").Number();
  }
  EXPECT_EQ(lNumber, 7);
  EXPECT_EQ(qm_ordering::LastFailure().Number, 7);
  EXPECT_EQ(qm_ordering::LastFailure().Operation, "Test.Exhausted");
}

TEST_F(Errors, CatchFailureReportsExhaustedMemoryWhenATextDoesNotFit) {
  std::int32_t lNumber = 0;
  try {
    throw LongText();
  } catch (...) {
    const test::ExhaustedMemory exhausted;
    lNumber = qm_ordering::CatchFailure("Test.LongText").Number();
  }
  EXPECT_EQ(lNumber, 7);
  EXPECT_EQ(qm_ordering::LastFailure().Number, 7);
  EXPECT_EQ(qm_ordering::LastFailure().Operation, "Test.LongText");
}

}  // namespace
