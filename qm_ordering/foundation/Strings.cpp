#include "qm_ordering/foundation/Strings.h"

namespace qm_ordering {

xml::Element SelectElement(std::string_view zvXML, const std::string& zvPath) {
  xml::Document oDocument;
  // A text that does not parse leaves the document empty, and nothing is found in it.
  oDocument.LoadXML(zvXML);
  return oDocument.SelectSingleNode(zvPath);
}

}  // namespace qm_ordering
