#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/support/FixedClock.h"
#include "tests/support/TempFolder.h"

namespace test {

// What a call on the library came to.
struct Outcome {
  std::string Failure;  // "NUMBER TEXT" of the error record or of what was raised; empty for none
  std::string Values;   // what it read, as a text
};

// A call on the library that uses the store. Prepare makes the objects and loads them; what it answers is the
// call itself.
struct StoreCall {
  const char* Name;
  std::function<std::function<Outcome()>()> Prepare;
  // The states that a failure may leave between the one before and the one after, as the call's contract
  // names them.
  std::vector<const char*> HalfWay;
  // Whether it may run at any place in a series of calls.
  bool InSeries = true;
};

// Runs it; a raised failure is the outcome. Another exception passes.
Outcome OutcomeOf(const std::function<Outcome()>& call);

// A folder with a store and a settings file that names it, which can be set back to how it was made: one
// submitted order and the current one, with three lines each, and two personal lists, of which the file of
// the lists holds the first with one line of two. Beside them lie the tables of an older program.
class WorkingStore {
 public:
  WorkingStore();
  ~WorkingStore();
  WorkingStore(const WorkingStore&) = delete;
  WorkingStore& operator=(const WorkingStore&) = delete;

  // Everything as it was made; no session rests open.
  void SetBack() const;

  std::string Folder() const { return m_oFolder.File("live"); }
  std::string File() const { return Folder() + "/Orders.mdb"; }
  // A backup of the store from a time when it had the first order only.
  std::string Backup() const { return Folder() + "/backup.mdb"; }
  // Where the store is found when it was replaced and its successor is not there; empty otherwise.
  std::string KeptFile() const;
  // The tables of an older program: see SmallLegacyTables.
  std::string LegacyFolder() const { return Folder() + "/legacy"; }
  // The folder of a store that is not there yet.
  std::string NewFolder() const { return Folder() + "/new/store"; }

  // All that the store, the settings, the backup, the store in the new folder and the file of the lists hold,
  // as a text.
  std::string State() const;
  // The names of the files in the folder and those below it.
  std::vector<std::string> Files() const;

  // Every call that reads or writes the store, makes, copies or replaces one, writes the file of the lists,
  // imports orders, or saves the settings.
  std::vector<StoreCall> Calls() const;

 private:
  std::string Made() const { return m_oFolder.File("made"); }

  TempFolder m_oFolder;
  FixedClock m_oClock;
};

}  // namespace test
