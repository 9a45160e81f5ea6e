#pragma once

#include <sqlite3.h>
#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <string>

namespace qm_ordering::ado::embedded {

// What marks a file as an order store: the engine's application id.
inline constexpr std::int32_t kApplicationId = 0x514D4F52;

// Makes a new store of the library's schema at zvPath, readable by its user alone, with the folders that are
// missing. It appears under its name whole or not at all, and never replaces a file. Raises 75: the file
// exists, or the cause that the system named; 7 when memory ends. Nothing is left behind.
void CreateStoreFile(const std::string& zvPath);

// Why a file cannot be used as an order store, and what to do where it stands in the store's place.
struct Objection {
  std::string Why;
  std::string Remedy;
};

// The objection to anything but an ordinary file that is not empty, with none but ordinary files in the place
// of its log. Looks at their status alone: opening and closing the file would drop the engine's locks on it.
std::optional<Objection> ObjectionToKind(const std::string& zvPath);

// The objection to an open file that does not begin as an order store of a version that this library knows.
// Reads through the engine's own handle, for the same reason.
std::optional<Objection> ObjectionToContent(sqlite3* db, const std::string& zvPath);

// Whether the open file begins as an order store of any version.
bool IsOrderStore(sqlite3* db, const std::string& zvPath);

// Whether the open file is marked for a write-ahead log, as a store in use is and a backup is not.
bool HasLogMode(sqlite3* db, const std::string& zvPath);

// Raise kStoreUnavailable with the objection, if there is one. The first answers the file's status.
struct stat RequireOrdinaryFile(const std::string& zvPath);
void RequireOrderStore(sqlite3* db, const std::string& zvPath);

// The version of an open store's schema, log included. Raises kStoreUnavailable for one that this library
// does not know.
std::int32_t RequireKnownVersion(sqlite3* db, const std::string& zvPath);

// The definitions of all tables, indexes and views, one text each, in the order of their names.
std::string DescribeSchema(sqlite3* db, const std::string& zvPath);
// The same of a store that the library makes in that version.
std::string DescribeSchemaOfVersion(std::int32_t lvVersion);

// Whether the file lies on a network file system, where the write-ahead log's shared memory does not work.
bool IsOnNetwork(const std::string& zvPath);

}  // namespace qm_ordering::ado::embedded
