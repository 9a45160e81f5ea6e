#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "qm_ordering/foundation/ErrorInfo.h"
#include "qm_ordering/lists/PersonalList.h"
#include "qm_ordering/order/CurrentOrder.h"
#include "qm_ordering/order/OrderItem.h"
#include "qm_ordering/platform/value/Failure.h"
#include "tests/memory/FailingAllocation.h"
#include "tests/support/StoreFixture.h"

namespace test {

// A state that an operation may leave half-way: the one before or after it, with one difference.
struct HalfWay {
  enum class From { Before, After };
  From Rows;
  std::string Difference;  // in SQL
  From Settings = From::After;
};

// What is done while allocations fail.
struct Operation {
  using Call = std::function<void()>;
  // Prepares the arguments, which are the host's, and gives the call, which is the library's alone. The call
  // leaves its answer, if it has one, in the text.
  std::function<Call(std::optional<qm_ordering::CurrentOrder>& order, std::string& zrAnswer)> Prepare;
  std::vector<HalfWay> HalfWays = {};
  // By contract LastFailure alone tells of a failure.
  bool Swallows = false;
  // It makes the order object, which is there before every other operation.
  bool Creates = false;
  // The answer that says that it failed, where there is one and nothing is raised; otherwise empty.
  std::string AnswerOfFailure = {};
};

// Makes the allocations of an operation fail, one after the other, and looks at what becomes of it. The
// settings are the library's own component over a file.
class OperationFixture : public StoreFixture {
 protected:
  OperationFixture();

  static std::shared_ptr<qm_ordering::OrderItem> NewItem(const std::string& zvItemNumber,
                                                         std::int32_t lvQuantity);
  // The current order with a full header and two lines, 4QX17 and 4QX18, eight of each.
  static void FillStore();
  // That, and the lists 1, with the lines 4QX17 and 4QX18, and 2, with 4QX18. The file of the lists holds the
  // first of these lines.
  static void FillLists();
  // Puts the stored total of the current order back to what it is now.
  std::string OldTotal() const;

  // Fails one allocation in that many, with a session at rest in the pool and without one, alone and with all
  // that follow, and prints how many were made to fail. After each: the failure is told, as number 7 and
  // nothing else, or the operation is done all the same; the store is in the state before, the state after or
  // one of those half-way, and nothing lies beside it; repeated with the same objects, what changed nothing
  // does what it should, and from any other state the order goes on.
  void FailEach(const Operation& operation, std::int64_t lvWarmStride, std::int64_t lvColdStride);

  // Of an operation on a list, which makes it when it is not there; its record is the operation's.
  std::optional<qm_ordering::PersonalList> List;

 private:
  enum class Pool { Warm, Cold };

  // All that the files hold.
  struct State {
    std::string Rows;
    std::string Settings;
    std::string Lists;  // the exported ones
    bool operator==(const State&) const = default;
    friend void PrintTo(const State& state, std::ostream* pOut) {
      *pOut << state.Rows << state.Settings << state.Lists;
    }
  };

  std::string SettingsFile() const { return Folder.File("settings.ini"); }
  std::string ListsFile() const { return Folder.File("PersonalLists.xml"); }
  std::string AllColumns(const std::string& zvTable) const;
  std::string Rows() const;
  State Now() const;
  qm_ordering::ErrorInfo RecordOf(const Operation& operation, const qm_ordering::CurrentOrder& order) const;
  std::string Values(const qm_ordering::CurrentOrder& order) const;
  void Restore() const;
  void LearnWhatIsRight(const Operation& operation);
  bool FailOne(const Operation& operation, Pool pool, Extent extent, std::int64_t lvPosition);
  void Judge(const Operation& operation, std::optional<qm_ordering::CurrentOrder>& order,
             const std::optional<qm_ordering::Failure>& raised, const std::string& zvAnswer);
  void GoOn(const Operation& operation, std::optional<qm_ordering::CurrentOrder>& order, bool bvRepeat);
  std::string Leftovers() const;

  std::string m_zAllRows;  // the query of all orders, lists and lines
  std::string m_zStoreBefore;
  std::string m_zAnswer;
  State m_before;
  State m_after;
  std::vector<State> m_allowed;
  bool m_bMustRestore = false;
};

}  // namespace test
