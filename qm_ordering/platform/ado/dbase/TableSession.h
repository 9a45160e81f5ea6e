#pragma once

#include <memory>
#include <string>

#include "qm_ordering/platform/ado/Session.h"

namespace qm_ordering::ado::dbase {

// A session on the folder with dBase III, dBase IV and FoxPro tables. Its Execute takes a SELECT: a table is
// a file of the folder, NAME.DBF in any letter case, and what the statement needs of it is read anew for each
// statement. The result's columns are of the kinds String, Date, Boolean, Integer, Currency and Double.
// Everything else raises kStoreCommand, since the tables can only be read.
//
// Raises kPathNotFound when there is no such folder, kStoreUnavailable when it is none.
std::unique_ptr<Session> OpenSession(const std::string& zvFolder);

}  // namespace qm_ordering::ado::dbase
