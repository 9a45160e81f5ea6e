#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include "qm_ordering/qm_ordering.h"

namespace host {

// How the program ends.
enum ExitCode : int {
  kGood = 0,
  kNotGood = 1,  // an error record was set, a failure was swallowed by contract, a check found something, or
                 // the state of the order does not allow what was asked for
  kUsage = 2,    // the command line, or a file that it names, cannot be used as it is
  kRaised = 3,   // the library raised a failure, or the output could not be written
};

// The user asked for something that cannot be done; the text says what would be right.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// What the user asked for is not done, since the order is not in the state for it.
class Refusal : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// An error record of the library, carried to the end of the program.
class RecordError : public std::runtime_error {
 public:
  explicit RecordError(const qm_ordering::ErrorInfo& record)
      : std::runtime_error(record.Description), m_lNumber(record.Number) {}

  std::int32_t Number() const noexcept { return m_lNumber; }

 private:
  std::int32_t m_lNumber;
};

// To be asked after every call that sets a record.
inline void CheckRecord(const qm_ordering::ErrorInfo& record) {
  if (record.Number != 0) {
    throw RecordError(record);
  }
}

}  // namespace host
