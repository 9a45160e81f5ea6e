#pragma once

#include <string>
#include <string_view>

#include "qm_ordering/platform/xml/Document.h"

namespace qm_ordering {

// Parses the text and answers its first element that matches the path: an empty element when the text does
// not parse or nothing matches. The document lives as long as the element.
xml::Element SelectElement(std::string_view zvXML, const std::string& zvPath);

}  // namespace qm_ordering
