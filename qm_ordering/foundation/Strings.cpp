#include "qm_ordering/foundation/Strings.h"

#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering {

xml::Element SelectElement(std::string_view zvXML, const std::string& zvPath) {
  xml::Document oDocument;
  // A text that does not parse leaves the document empty, and nothing is found in it.
  oDocument.LoadXML(zvXML);
  return oDocument.SelectSingleNode(zvPath);
}

void GraftElement(xml::Element& orParent, std::string_view zvXML, const std::string& zvElement) {
  const xml::Element element = SelectElement(zvXML, zvElement);
  if (!element) {
    throw Failure(failure::kXmlFragment, "The XML text has no element \"" + zvElement + "\".");
  }
  orParent.AppendChild(element);
}

}  // namespace qm_ordering
