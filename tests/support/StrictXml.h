#pragma once

#include <map>
#include <string>
#include <vector>

namespace test {

struct XmlElement {
  std::string Name;
  std::map<std::string, std::string> Attributes;
  std::vector<XmlElement> Children;
};

// Reads a document by a parser that is not the library's (xmllint, in a process of its own) and that accepts
// nothing but what the rules of XML allow. Throws std::runtime_error with the parser's message for a text
// that it refuses.
XmlElement ReadStrictly(const std::string& zvXML);

}  // namespace test
