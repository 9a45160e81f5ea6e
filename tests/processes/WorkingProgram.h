#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/processes/SharedStore.h"

namespace test {

// What a program that worked on a store had acknowledged, and how its calls went.
struct WorkReport {
  std::map<std::string, std::int64_t> Merged;      // by shared item: the quantity added to it
  std::map<std::string, std::int64_t> Own;         // by an item that no other program touches: the quantity
  std::set<std::string> Unsure;                    // items of calls that failed after a part of them
  std::vector<std::pair<int, std::string>> Lines;  // order and item of the lines that it added to orders
  std::vector<int> Submitted;                      // orders
  std::string LastSummary;                         // the text that its last SaveSummary wrote
  int Calls = 0;
  int Held = 0;                  // calls refused since another program held the store
  int Refused = 0;               // lines refused since another program had just added them
  int NotCurrent = 0;            // orders that another program had submitted
  int LongWaits = 0;             // waits for the store of more than a second
  std::int64_t LongestWait = 0;  // in microseconds

  std::string ToText() const;
  // Throws std::runtime_error with the text when it is no report.
  static WorkReport FromText(const std::string& zvText);
};

// A program that works on a store beside others: a process, a number among them, an order object. A failure
// that does not say clearly what happened ends it with std::runtime_error.
class WorkingProgram {
 public:
  WorkingProgram(std::string zvStorePath, int lvNumber, unsigned lvSeed);
  WorkingProgram(const WorkingProgram&) = delete;
  WorkingProgram& operator=(const WorkingProgram&) = delete;

  // Adds to the shared lines; adds, changes and removes lines of its own.
  void WorkOnLines(int lvCalls);
  // Saves the summary with texts of its own, and adds to the shared lines meanwhile.
  void WorkOnHeader(int lvCalls);
  // Adds a line to the current order and submits it, or goes on with the next one when another was faster.
  void WorkOnHistory(int lvCalls);
  // Adds to the shared lines of the list 1; adds to a list of its own, replaces, renames and removes it;
  // replaces the list "Common", which every program does; writes the file of the lists.
  void WorkOnLists(int lvCalls);
  // Deletes the submitted orders, as every program does, as many times.
  void DeleteHistory(int lvTimes);

  WorkReport Report() const;

 private:
  enum class Outcome { Done, Held, Refused, NotCurrent };

  std::size_t Pick(std::size_t lvCount) { return m_oRandom() % lvCount; }
  std::string OwnItem(std::size_t lvItem) const;
  template <typename Call>
  Outcome Try(Call call);
  // The same of a call that leaves a record of its own, or a failure in LastFailure alone.
  template <typename Call>
  Outcome TryOnLists(Call call);
  Outcome Classify(std::int32_t lvNumber, const std::string& zvText);
  void Load();
  void AddShared();
  void AddOwn();
  void RemoveOwn();
  void UpdateOwn();
  void AddSharedToList();
  void AddOwnToList();
  void ReplaceOwnList();
  void RenameOwnList();
  void RemoveOwnList();
  void ReplaceCommonList();
  void ExportLists();
  void OwnListIsUnsure();

  std::string m_zStorePath;
  int m_lNumber;
  std::mt19937 m_oRandom;
  std::unique_ptr<qm_ordering::CurrentOrder> m_oOrder;
  std::int32_t m_lOwnList = 0;  // 0: there is none
  std::string m_zListsFile;
  WorkReport m_oReport;
};

}  // namespace test
