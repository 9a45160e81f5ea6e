#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/platform/value/Variant.h"

namespace test {

using Lines = std::vector<std::string>;

// A folder of the tables that other programs made; without a name, that of all tables that are not to be
// joined.
std::string MadeTables(const std::string& zvFolder = {});
// The pair of tables that a spreadsheet program made.
std::string SpreadsheetTables();

// The connection string of the tables in a folder.
std::string TableConnection(const std::string& zvFolder);

// A value with its kind: "String:A100", "Null:".
std::string Shown(const qm_ordering::Variant& vvValue);

// What a statement answers, a line for each row, its values separated by "|".
Lines RowsOf(const std::string& zvFolder, const std::string& zvSQL);

// The failure of a statement; number 0 when it runs. What it writes to stderr fails the test.
qm_ordering::Failure FailureOfStatement(const std::string& zvFolder, const std::string& zvSQL);

Lines LinesOf(const std::string& zvFile);

// Writes a number into a text, the least significant byte first.
void Put(std::string& zvBytes, std::size_t lvOffset, std::size_t lvSize, unsigned long lvNumber);

}  // namespace test
