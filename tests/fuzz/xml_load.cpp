// Any bytes as an XML text, and any path into it: nothing is raised, and what loads is written as a text that
// loads again and is then the same, as a whole, an element of it, and an element that was grafted.

#include <cstddef>
#include <cstdint>
#include <string>

#include "qm_ordering/foundation/Strings.h"
#include "qm_ordering/platform/xml/Document.h"
#include "tests/fuzz/Input.h"
#include "tests/fuzz/Require.h"

namespace {

using fuzz::Require;
using qm_ordering::xml::Document;
using qm_ordering::xml::Element;

void RequireLoadsAgain(const std::string& zvText) {
  Document again;
  Require(again.LoadXML(zvText), "a text that was written loads again: " + zvText);
  Require(again.XML() == zvText, "it is the same then: " + zvText + " became " + again.XML());
}

void RequireElementIsWhole(Element element, const std::string& zvText) {
  const std::string zElement = element.XML();
  Require(!element.Name().empty(), "an element has a name");
  Require(zvText.find(zElement) != std::string::npos,
          "an element stands in its document as it stands alone: " + zElement);
  RequireLoadsAgain(zElement);

  Document target;
  Element root = target.CreateElement("root");
  target.AppendChild(root);
  qm_ordering::GraftElement(root, zElement, "/*");
  Require(target.XML() == "<root>" + zElement + "</root>",
          "an element that is grafted is the same: " + target.XML());

  const std::string zValue = element.Attribute("text");
  root.SetAttribute("text", zValue);
  Document read;
  Require(read.LoadXML(target.XML()) && read.SelectSingleNode("root").Attribute("text") == zValue,
          "an attribute's value comes back: " + target.XML());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t lSize) {
  const auto [zPath, zXML] = fuzz::TwoTexts(pData, lSize);
  Document document;
  if (!document.LoadXML(zXML)) {
    Require(document.XML().empty(), "a text that does not load leaves an empty document");
    Require(!document.SelectSingleNode("//*"), "nothing is found in an empty document");
    return 0;
  }
  const std::string zText = document.XML();
  RequireLoadsAgain(zText);
  const Element root = document.SelectSingleNode("/*");
  Require(bool(root) && root.XML() == zText, "the document is its root");
  RequireElementIsWhole(root, zText);
  // A path may multiply what it finds with each step; those of the library are short.
  constexpr std::size_t kLongestPath = 24;
  if (zPath.size() <= kLongestPath) {
    if (const Element found = document.SelectSingleNode(zPath)) {
      RequireElementIsWhole(found, zText);
    }
  }
  return 0;
}
