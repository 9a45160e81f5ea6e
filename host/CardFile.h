#pragma once

#include <string>

#include "host/Output.h"
#include "qm_ordering/qm_ordering.h"

namespace host {

// The card data that is never stored, from a file of lines NAME=VALUE with the names CardType, CardNumber,
// ExpiryMonth, ExpiryYear and CardHoldersRef, in any order and letter case; lines that are blank or begin
// with # do not count. "-" is standard input. The values go into the card and nowhere else: no message shows
// them. Raises UsageError, which names file and line, for anything else; warns when others may read the file.
void ReadCardFile(const std::string& zvFile, qm_ordering::CreditCardDetails& card, Output& out);

}  // namespace host
