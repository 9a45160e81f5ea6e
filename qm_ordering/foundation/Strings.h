#pragma once

#include <string>
#include <string_view>

#include "qm_ordering/platform/xml/Document.h"

namespace qm_ordering {

// Parses the text and answers its first element that matches the path: an empty element when the text does
// not parse or nothing matches. The document lives as long as the element.
xml::Element SelectElement(std::string_view zvXML, const std::string& zvPath);

// Parses the text and appends its first element of that name to orParent; whatever else the text holds stays
// out. Raises failure::kXmlFragment, and appends nothing, when the text does not parse or has no such
// element.
void GraftElement(xml::Element& orParent, std::string_view zvXML, const std::string& zvElement);

}  // namespace qm_ordering
