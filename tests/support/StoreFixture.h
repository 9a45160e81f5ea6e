#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/FixedClock.h"
#include "tests/support/MemorySettings.h"
#include "tests/support/TempFolder.h"

namespace test {

// What a query on the store's file answers, each value as a text: numbers and flags as the engine holds them
// (money times 10,000, True as -1), null as "NULL".
using Row = std::vector<std::string>;
using Rows = std::vector<Row>;

// Collects this thread's statements, in their order, while it lives.
class TraceRecorder {
 public:
  TraceRecorder();
  ~TraceRecorder();
  TraceRecorder(const TraceRecorder&) = delete;
  TraceRecorder& operator=(const TraceRecorder&) = delete;

  const std::vector<std::string>& Statements() const { return m_zStatements; }
  // The statements up to now, which are then forgotten.
  std::vector<std::string> Take();

  // Called with each statement when it has been collected and before it runs; may throw.
  std::function<void(const std::string&)> Before;

 private:
  std::vector<std::string> m_zStatements;
};

// A second way to the file of an order store, past everything that the library does with it: one engine
// session for each call. What the engine refuses is thrown as std::runtime_error.
class StoreFile {
 public:
  explicit StoreFile(std::string zvPath) : m_zPath(std::move(zvPath)) {}

  const std::string& Path() const { return m_zPath; }
  Rows Query(const std::string& zvSQL) const;
  // The one value of the one row.
  std::string Value(const std::string& zvSQL) const;
  // Runs one or more statements.
  void Run(const std::string& zvSQL) const;
  // Every row of every table with all its columns, to see that nothing changed.
  Rows Everything() const;

 private:
  std::string m_zPath;
};

// A new order store in a folder of its own, the settings that name it, and a clock that stands still at 4
// July 2003, 15:04:05. The thread's start-up has run.
class StoreFixture : public testing::Test {
 public:
  StoreFixture();
  ~StoreFixture() override;

 protected:
  TempFolder Folder;
  SettingsScope Settings;
  FixedClock Clock;
  StoreFile Store;
};

// How many files whose names begin with this path the process has open when no session rests.
std::size_t OpenFiles(const std::string& zvPath);

// A value as it is written into a statement of the tests: in quotes, each quote doubled.
std::string Quoted(const std::string& zvText);

}  // namespace test
