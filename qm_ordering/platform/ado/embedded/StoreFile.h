#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <string>

namespace qm_ordering::ado::embedded {

// What marks a file as an order store: the engine's application id, and the version of its schema.
inline constexpr std::int32_t kApplicationId = 0x514D4F52;
inline constexpr std::int32_t kSchemaVersion = 1;

// Makes a new store at zvPath from a schema script, readable by its user alone, with the folders that are
// missing. It appears under its name whole or not at all, and never replaces a file. Raises 75: the file
// exists, or the cause that the system named; nothing is left behind.
void CreateStoreFile(const std::string& zvPath, const std::string& zvSchemaScript);

// Raises kStoreUnavailable unless zvPath is an ordinary file that is not empty. Looks at its status alone:
// opening and closing the file would drop the engine's locks on it.
void RequireOrdinaryFile(const std::string& zvPath);

// Raises kStoreUnavailable unless the open file begins as an order store of a version that this library
// knows. Reads through the engine's own handle, for the same reason.
void RequireOrderStore(sqlite3* db, const std::string& zvPath);

// The definitions of all tables, indexes and views, one text each, in the order of their names.
std::string DescribeSchema(sqlite3* db, const std::string& zvPath);
// The same of a store that this script makes.
std::string DescribeSchemaOfScript(const std::string& zvSchemaScript);

// Whether the file lies on a network file system, where the write-ahead log's shared memory does not work.
bool IsOnNetwork(const std::string& zvPath);

}  // namespace qm_ordering::ado::embedded
