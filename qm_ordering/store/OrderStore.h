#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "qm_ordering/platform/Export.h"

namespace qm_ordering {

// Makes a new, empty order store: the file Orders.mdb in zvFolder, with the folders that are missing,
// readable by its user alone. It appears whole or not at all, and never replaces a file. Raises 75 when the
// file exists, cannot be made, or the log of an earlier store lies where it would; 76 when zvFolder is empty,
// begins with a backslash or a brace, or holds a semicolon or a zero byte, since no connection string could
// name it; 7 when memory ends, and nothing is left then. The message names file and cause. A program that was
// killed meanwhile leaves a file Orders.mdb.unfinished-qm_ordering.XXXXXX, which the next creation in the
// folder removes.
QM_ORDERING_API void CreateOrderStore(const std::string& zvFolder);

// The full path of this thread's store, as the setting "OrderingDatabasePath" gives it; the file need not
// exist. Runs the thread's start-up, and raises what that raises. Raises 76 when the setting is empty or
// begins with a backslash, -2147467259 when it holds a semicolon that the connection string breaks at, or a
// brace at its beginning that is not closed.
QM_ORDERING_API std::string OrderStorePath();

// Examines this thread's store and changes nothing: the file by the engine's own check, the schema, at most
// one current order, no item twice in an order or list, no two lists of one name, and each order's total
// against the sum of its lines (an imported order's total is the older program's). Answers a finding each, in
// words, empty when all is well. Reads one state of the store, so other programs may go on working. What
// cannot be checked is a finding too. Runs the thread's start-up. Raises what OrderStorePath raises,
// -2147467259 for a store that is missing, locked or unreadable, and 7 when memory ends.
QM_ORDERING_API std::vector<std::string> CheckOrderStore();

// Called on the caller's thread after each step of a copy: how many pages of the store are copied, and how
// many there are. What it throws ends the work, which then has changed nothing, and rises.
using StoreProgress = std::function<void(std::int64_t lvDone, std::int64_t lvAll)>;

// Copies this thread's store as it is at one moment, with all that was saved up to then, into zvFile: one
// whole file, readable by its user alone, on disk when the call returns. Any number of programs may go on
// working meanwhile (on a network file system those that write wait). The copy passes the store check before
// it gets its name, so zvFile holds what it held before or the whole new backup, whatever happens. Answers,
// in words, the orders whose total does not fit their lines: that is no damage, RepairOrderStore puts it
// right.
//
// A relative zvFile counts from the current folder. A backup that is there is replaced; no other file is, but
// an empty one. A store of an older version is copied as it is. What a killed backup leaves is a file
// FILE.unfinished-qm_ordering.XXXXXX, which the next one to that name removes.
//
// Runs the thread's start-up. Raises what OrderStorePath raises; 76 when zvFile is empty, its folder does not
// exist or it is a symbolic link that leads nowhere; 75 when it is the store itself or one of its logs, a
// folder, a file of another kind, a store that is in use or was kept by a restore, or has a log beside it,
// and when it cannot be made; 7 when memory ends; -2147467259 for a store that is missing, locked or
// unreadable, for a damaged one (the message holds the first finding and the remedy), for a zvFile that a
// program has open, and for a full disk.
QM_ORDERING_API std::vector<std::string> BackupOrderStore(const std::string& zvFile,
                                                          const StoreProgress& progress = {});

// Puts the backup zvFile, or any other order store that passes the store check, in the place of this thread's
// store, and answers the path under which the replaced one is kept: Orders.mdb.replaced-YYYYMMDD-HHMMSS
// beside it, its log with it. Where there was no store the answer is empty, or names the log that was left of
// one. Nothing is removed: the kept files are the caller's to delete. zvFile stays as it is, what is
// still in a log beside it counts, and only a change that a killed program left half-way in it is taken back.
// A store that is damaged, truncated or no store at all can be replaced, too. Behind a symbolic link the file
// that it leads to is replaced.
//
// No program may have the store open, since it would go on with orders that are others now: an open object of
// another thread or program, or what it keeps open in between, makes this fail. On a network file system only
// what is under way does; a program between two calls finds the new store at its next one. Objects that this
// thread made before hold what the old store held: make new ones.
//
// A backup in which only totals do not fit their lines is restored as it is; RepairOrderStore puts them
// right. The new file has the owner and the permissions of the replaced one.
//
// Raises 75 and leaves the store as it is when zvFile is missing, no order store, of a newer version, not
// whole (the message holds the findings), or the store itself, and when something else than a file is in the
// store's place or its folder cannot be written; 76 when zvFile is empty or the store's folder does not
// exist; 7 when memory ends; -2147467259 when a program has the store open, the user may not write it, zvFile
// cannot be read or is cut short, or the disk is full. Runs the thread's start-up, and raises what
// OrderStorePath raises.
QM_ORDERING_API std::string RestoreOrderStore(const std::string& zvFile, const StoreProgress& progress = {});

// Sets the total of each order of this thread's store that was not imported to the sum of its lines where it
// is not, all of them or none, and answers what it changed, in words; empty when there was nothing to do. A
// total whose sum is beyond the range of money is left, and said. Waits for other programs that write. Runs
// the thread's start-up. Raises what OrderStorePath raises, -2147467259 for a store that is damaged, missing,
// locked or unreadable, or read-only where there is something to set, and 7 when memory ends; it is then
// unchanged.
QM_ORDERING_API std::vector<std::string> RepairOrderStore();

}  // namespace qm_ordering
