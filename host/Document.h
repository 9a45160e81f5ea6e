#pragma once

#include <string>

#include "host/Context.h"

namespace host {

// Gives the user an XML document, with a line feed at its end: on standard output, or as the file zvFile when
// it names one, which appears whole or not at all. Raises failure 75 when the file cannot be written.
void GiveDocument(Context& context, const std::string& zvDocument, const std::string& zvFile);

}  // namespace host
