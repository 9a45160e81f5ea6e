#pragma once

namespace qm_ordering {

// The script that makes the tables, indexes and stored queries of Orders.mdb.
//
// A column's declared type tells the provider what it holds: INTEGER (32 bits), YESNO INTEGER (-1 and 0),
// CURRENCY INTEGER (the amount times 10,000), TEXT and MEMO TEXT, DATETIME TEXT (YYYY-MM-DD HH:MM:SS). Texts
// compare and sort without regard to letter case (LETTERS). Keys count up and are never given twice
// (AUTOINCREMENT). Numbers and flags that an insert does not name are 0 and False.
extern const char* const kSchemaScript;

}  // namespace qm_ordering
