#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "qm_ordering/qm_ordering.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/StoreFixture.h"

namespace test {

// A member of the current order that writes the store.
struct WritingMember {
  const char* Name;
  std::function<void(qm_ordering::CurrentOrder&)> Call;
};

// Every one of them, each in a way that succeeds on the current order that TroubledStore makes. The item that
// they add is "NEW".
const std::vector<WritingMember>& WritingMembers();

// Makes the call. Answers what failed: the raised or recorded failure, "NUMBER : DESCRIPTION"; empty when the
// call succeeded.
std::string FailureOfMember(const WritingMember& member, qm_ordering::CurrentOrder& order);

// What an outsider sees of a store in all its orders, through the public classes: a line for each value. What
// cannot be read is a line as well: "failed: NUMBER : DESCRIPTION".
std::vector<std::string> ReadOrders(const std::vector<std::int32_t>& lvSubmitted);

// Runs while this process has the store open, and does nothing there but what a user does to files from
// outside: it must not touch the library. A process of its own, since here the end of any other use of the
// file would end the engine's locks.
void FromOutside(const std::function<void()>& run);

// Bytes of a file in the middle of it.
void Overwrite(const std::string& zvPath, std::size_t lvOffset, const std::string& zvBytes);

// A store with two submitted orders and a current one, each with lines, at rest; made by the public classes.
class TroubledStore : public StoreFixture {
 protected:
  TroubledStore();

  // What the store holds, as ReadOrders tells it.
  static std::vector<std::string> Orders() { return ReadOrders({1, 2}); }

  // The items of the current order, as a new object reads them.
  static std::vector<std::string> CurrentItems();

  // Every writing member fails as unavailable and says all of the words; the store's readable part stays.
  // Answers what was otherwise, for use in child processes too.
  static std::string ExpectWritesRefused(qm_ordering::CurrentOrder& order,
                                         const std::vector<std::string>& zvWords);

  // A fresh object adds an item and finds it again; the store's check finds nothing. Answers what was
  // otherwise.
  static std::string ExpectWorks(const std::string& zvItemNumber);

  // The file of another store like this one, whose texts and item numbers begin with "other " and which has
  // more lines. To be called while the store is as it was made.
  std::string BytesOfOther() const;

  // The store as it was made, at rest, with nothing beside it.
  void Restore() const;

  // Without this thread's sessions the store's file is whole by itself.
  static void Rest();

  std::vector<std::string> Known;  // Orders() at the beginning
  std::string Bytes;               // of the store's file at the beginning
};

}  // namespace test
