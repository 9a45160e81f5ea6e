#pragma once

#include <string>
#include <vector>

#include "qm_ordering/platform/Export.h"

namespace qm_ordering {

// Makes a new, empty order store: the file Orders.mdb in zvFolder, with the folders that are missing,
// readable by its user alone. It appears whole or not at all, and never replaces a file. Raises 75 when the
// file exists, cannot be made, or the log of an earlier store lies where it would; 76 when zvFolder is empty,
// begins with a backslash or a brace, or holds a semicolon or a zero byte, since no connection string could
// name it. The message names file and cause.
QM_ORDERING_API void CreateOrderStore(const std::string& zvFolder);

// The full path of this thread's store, as the setting "OrderingDatabasePath" gives it; the file need not
// exist. Runs the thread's start-up, and raises what that raises. Raises 76 when the setting is empty or
// begins with a backslash, -2147467259 when it holds a semicolon that the connection string breaks at, or a
// brace at its beginning that is not closed.
QM_ORDERING_API std::string OrderStorePath();

// Examines this thread's store and changes nothing: the file by the engine's own check, the schema, at most
// one current order, no item twice in an order or list, no two lists of one name, and each order's total
// against the sum of its lines. Answers a finding each, in words, empty when all is well. Reads one state of
// the store, so other programs may go on working. What cannot be checked is a finding too. Runs the thread's
// start-up. Raises what OrderStorePath raises, and -2147467259 for a store that is missing, locked or
// unreadable.
QM_ORDERING_API std::vector<std::string> CheckOrderStore();

}  // namespace qm_ordering
