#pragma once

#include <string>

#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/platform/ado/Connection.h"
#include "qm_ordering/platform/ado/embedded/EmbeddedSession.h"
#include "tests/support/StoreFixture.h"

namespace test {

// A connection to this thread's store.
class OpenConnection : public qm_ordering::ado::Connection {
 public:
  OpenConnection() { Open(qm_ordering::ConnectionString()); }
};

// The connection string of a store in that folder.
inline std::string ConnectionStringOf(const std::string& zvFolder) {
  return "Driver=Microsoft Access Driver (*.mdb);DBQ=" + zvFolder + "\\Orders.mdb";
}

// Runs one statement on a connection of its own.
inline void RunOn(const std::string& zvConnectionString, const std::string& zvSQL) {
  qm_ordering::ado::Connection connection;
  connection.Open(zvConnectionString);
  connection.Execute(zvSQL);
}

// The same on this thread's store.
inline void Run(const std::string& zvSQL) {
  RunOn(qm_ordering::ConnectionString(), zvSQL);
}

// The first value of the first row, as a text; "NULL" for null, "no row" where there is none.
inline std::string ValueOn(const std::string& zvConnectionString, const std::string& zvSQL) {
  qm_ordering::ado::Connection connection;
  connection.Open(zvConnectionString);
  const auto rows = connection.Execute(zvSQL);
  if (rows->AtEnd()) {
    return "no row";
  }
  const qm_ordering::Variant vValue = rows->Fields(0).Value();
  return vValue.IsNull() ? "NULL" : vValue.ToString();
}

inline std::string Value(const std::string& zvSQL) {
  return ValueOn(qm_ordering::ConnectionString(), zvSQL);
}

}  // namespace test
