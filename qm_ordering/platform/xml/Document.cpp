#include "qm_ordering/platform/xml/Document.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <new>
#include <optional>
#include <pugixml.hpp>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "qm_ordering/platform/text/Unicode.h"
#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering::xml {

// A node can only move within its document, and every node needs a parent. So elements that stand nowhere yet
// hang below a nameless element, which is made when it is first needed and is always the last node of the
// document.
struct Document::Tree {
  pugi::xml_document oDocument;
  pugi::xml_node oLoose;

  // Empty when there is no memory for it; so is then what is appended to it.
  pugi::xml_node Loose() {
    if (!oLoose) {
      oLoose = oDocument.append_child(pugi::node_element);
    }
    return oLoose;
  }

  pugi::xml_node Root() const {
    const pugi::xml_node first = oDocument.first_child();
    return first == oLoose ? pugi::xml_node() : first;
  }

  bool IsLoose(pugi::xml_node node) const {
    while (node.parent() && node.parent() != oDocument) {
      node = node.parent();
    }
    return node == oLoose;
  }
};

namespace {

// Entities stay as they are, so that they can be checked. Top-level text is kept, so that it can be refused.
constexpr unsigned int kParseRaw = pugi::parse_cdata | pugi::parse_eol | pugi::parse_wconv_attribute |
                                   pugi::parse_doctype | pugi::parse_declaration | pugi::parse_fragment;

pugi::xml_node NodeOf(const Element& oElement, void* pNode, const char* zvOperation) {
  if (!oElement) {
    throw Failure(failure::kObjectNotSet, std::string(zvOperation) + ": the XML element is not set");
  }
  return pugi::xml_node(static_cast<pugi::xml_node_struct*>(pNode));
}

// pugixml tells of exhausted memory by answering false or an empty handle, which in turn answers false.
void RequireMemory(bool bvDone) {
  if (!bvDone) {
    throw std::bad_alloc();
  }
}

void RequireXML(pugi::xml_node node, const char* zvName, std::string_view zvValue) {
  if (const std::optional<std::size_t> lAt = text::FindNonXML(zvValue)) {
    throw Failure(failure::kXmlCharacter,
                  std::string("The text for the attribute \"") + zvName + "\" of the XML element \"" +
                      node.name() + "\" has at byte " + std::to_string(*lAt + 1) + " of " +
                      std::to_string(zvValue.size()) +
                      " what XML cannot hold, a control character or broken UTF-8; take it out of the text");
  }
}

// pugixml's own copying passes over what it has no memory for.
pugi::xml_node CopyOne(pugi::xml_node source, pugi::xml_node parent) {
  pugi::xml_node copy = parent.append_child(source.type());
  if (source.type() != pugi::node_element) {
    RequireMemory(copy.set_value(source.value()));
    return copy;
  }
  RequireMemory(copy.set_name(source.name()));
  for (const pugi::xml_attribute from : source.attributes()) {
    pugi::xml_attribute to = copy.append_attribute("");
    RequireMemory(to.set_name(from.name()) && to.set_value(from.value()));
  }
  return copy;
}

pugi::xml_node CopyBelow(pugi::xml_node source, pugi::xml_node parent) {
  const pugi::xml_node top = CopyOne(source, parent);
  pugi::xml_node from = source;
  pugi::xml_node to = top;
  while (true) {
    if (from.first_child()) {
      from = from.first_child();
      to = CopyOne(from, to);
      continue;
    }
    while (from != source && !from.next_sibling()) {
      from = from.parent();
      to = to.parent();
    }
    if (from == source) {
      return top;
    }
    from = from.next_sibling();
    to = CopyOne(from, to.parent());
  }
}

class PartWriter : public pugi::xml_writer {
 public:
  explicit PartWriter(const std::function<void(std::string_view)>& write) : m_write(write) {}
  void write(const void* pData, std::size_t lSize) override {
    m_write({static_cast<const char*>(pData), lSize});
  }

 private:
  const std::function<void(std::string_view)>& m_write;
};

void Serialise(pugi::xml_node node, const std::function<void(std::string_view)>& write) {
  PartWriter writer(write);
  node.print(writer, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
}

std::string Serialise(pugi::xml_node node) {
  std::string zText;
  Serialise(node, [&](std::string_view zvPart) { zText += zvPart; });
  return zText;
}

enum class Blanks { Allowed, Refused };

bool IsBlank(std::uint32_t lvCode) {
  return lvCode == ' ' || lvCode == '\t' || lvCode == '\n' || lvCode == '\r';
}

// Whether zvName, what stands between "&" and ";", names one of XML's five entities or a character of XML.
bool IsReference(std::string_view zvName, Blanks blanks) {
  static constexpr std::array<std::string_view, 5> kEntities = {"lt", "gt", "amp", "quot", "apos"};
  if (!zvName.starts_with('#')) {
    return std::find(kEntities.begin(), kEntities.end(), zvName) != kEntities.end();
  }
  zvName.remove_prefix(1);
  int lBase = 10;
  if (zvName.starts_with('x')) {
    zvName.remove_prefix(1);
    lBase = 16;
  }
  std::uint32_t lCode = 0;
  const char* pEnd = zvName.data() + zvName.size();
  const std::from_chars_result result = std::from_chars(zvName.data(), pEnd, lCode, lBase);
  if (result.ec != std::errc() || result.ptr != pEnd) {
    return false;
  }
  if (IsBlank(lCode)) {
    return blanks == Blanks::Allowed;
  }
  return (lCode > 0x20 && lCode <= 0xD7FF) || (lCode >= 0xE000 && lCode <= 0xFFFD) ||
         (lCode >= 0x10000 && lCode <= 0x10FFFF);
}

bool AreReferencesKnown(std::string_view zvText, Blanks blanks) {
  for (std::size_t lAt = zvText.find('&'); lAt != std::string_view::npos; lAt = zvText.find('&', lAt + 1)) {
    const std::size_t lEnd = zvText.find(';', lAt);
    if (lEnd == std::string_view::npos || !IsReference(zvText.substr(lAt + 1, lEnd - lAt - 1), blanks)) {
      return false;
    }
  }
  return true;
}

bool IsAscii(std::string_view zvText) {
  return std::all_of(zvText.begin(), zvText.end(),
                     [](char zvByte) { return static_cast<unsigned char>(zvByte) < 0x80; });
}

// Stops at the first node that pugixml's parser lets through although XML forbids it. Works on a tree whose
// references are not resolved.
class StrictCheck : public pugi::xml_tree_walker {
 public:
  bool for_each(pugi::xml_node& node) override {
    switch (node.type()) {
      case pugi::node_element:
        return IsAscii(node.name()) && AreAttributesGood(node);
      case pugi::node_pcdata:
        // Resolved, a blank would be written as it stands, and read as layout or as another line end.
        return AreReferencesKnown(node.value(), Blanks::Refused) &&
               std::string_view(node.value()).find("]]>") == std::string_view::npos;
      default:
        return true;
    }
  }

 private:
  bool AreAttributesGood(pugi::xml_node node) {
    m_oNames.clear();
    for (const pugi::xml_attribute attribute : node.attributes()) {
      const std::string_view zValue = attribute.value();
      if (!IsAscii(attribute.name()) || zValue.find('<') != std::string_view::npos ||
          !AreReferencesKnown(zValue, Blanks::Allowed)) {
        return false;
      }
      m_oNames.emplace_back(attribute.name());
    }
    std::sort(m_oNames.begin(), m_oNames.end());
    return std::adjacent_find(m_oNames.begin(), m_oNames.end()) == m_oNames.end();
  }

  std::vector<std::string_view> m_oNames;  // of one element; a member to be allocated once
};

// Fills the document with the one element of the text; false when there is not exactly that.
bool ParseOneElement(std::string_view zvText, unsigned int lvFlags, pugi::xml_document& orDocument) {
  const pugi::xml_parse_result result =
      orDocument.load_buffer(zvText.data(), zvText.size(), lvFlags, pugi::encoding_utf8);
  RequireMemory(result.status != pugi::status_out_of_memory);
  if (!result) {
    return false;
  }
  if (orDocument.first_child().type() == pugi::node_declaration && zvText.starts_with("<?xml")) {
    orDocument.remove_child(orDocument.first_child());
  }
  const pugi::xml_node first = orDocument.first_child();
  return first.type() == pugi::node_element && !first.next_sibling();
}

bool Parse(std::string_view zvText, pugi::xml_document& orDocument) {
  static constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (zvText.starts_with(kByteOrderMark)) {
    zvText.remove_prefix(kByteOrderMark.size());
  }
  StrictCheck check;
  if (text::FindNonXML(zvText) || !ParseOneElement(zvText, kParseRaw, orDocument) ||
      !orDocument.traverse(check)) {
    return false;
  }
  // The references are known to be good now, and only a text that has any is read again to resolve them.
  return zvText.find('&') == std::string_view::npos ||
         ParseOneElement(zvText, kParseRaw | pugi::parse_escapes, orDocument);
}

}  // namespace

Document::Document() : m_oTree(std::make_shared<Tree>()) {}

Element Document::CreateElement(std::string_view zvName) {
  pugi::xml_node node = m_oTree->Loose().append_child(pugi::node_element);
  RequireMemory(node.set_name(std::string(zvName).c_str()));
  return Element(m_oTree, node.internal_object());
}

void Document::AppendChild(const Element& oElement) {
  pugi::xml_node node = NodeOf(oElement, oElement.m_pNode, "Document.AppendChild");
  if (const pugi::xml_node root = m_oTree->Root()) {
    throw Failure(failure::kXmlFragment, std::string("The XML document cannot take the element \"") +
                                             node.name() + "\" as its root: it has the root \"" +
                                             root.name() + "\"");
  }
  if (oElement.m_oTree != m_oTree) {
    node = CopyBelow(node, m_oTree->Loose());
  }
  m_oTree->oDocument.prepend_move(node);
}

bool Document::LoadXML(std::string_view zvText) {
  auto oTree = std::make_shared<Tree>();
  const bool bLoaded = Parse(zvText, oTree->oDocument);
  m_oTree = bLoaded ? std::move(oTree) : std::make_shared<Tree>();
  return bLoaded;
}

Element Document::SelectSingleNode(const std::string& zvPath) const {
  pugi::xml_node node;
  try {
    node = m_oTree->oDocument.select_node(zvPath.c_str()).node();
  } catch (const pugi::xpath_exception&) {
    return {};
  }
  if (node.type() != pugi::node_element || m_oTree->IsLoose(node)) {
    return {};
  }
  return Element(m_oTree, node.internal_object());
}

std::string Document::XML() const {
  return Serialise(m_oTree->Root());
}

void Document::Write(const std::function<void(std::string_view)>& write) const {
  Serialise(m_oTree->Root(), write);
}

Element::Element(std::shared_ptr<Document::Tree> oTree, void* pNode)
    : m_oTree(std::move(oTree)), m_pNode(pNode) {}

void Element::SetAttribute(const char* zvName, std::string_view zvValue) {
  const pugi::xml_node node = NodeOf(*this, m_pNode, "Element.SetAttribute");
  pugi::xml_attribute attribute = node.attribute(zvName);
  if (!attribute) {
    AddAttribute(zvName, zvValue);
    return;
  }
  RequireXML(node, zvName, zvValue);
  RequireMemory(attribute.set_value(zvValue.data(), zvValue.size()));
}

void Element::AddAttribute(const char* zvName, std::string_view zvValue) {
  pugi::xml_node node = NodeOf(*this, m_pNode, "Element.AddAttribute");
  RequireXML(node, zvName, zvValue);
  pugi::xml_attribute attribute = node.append_attribute(zvName);
  // Without memory for the name there is an attribute without one.
  if (*attribute.name() == '\0' || !attribute.set_value(zvValue.data(), zvValue.size())) {
    node.remove_attribute(attribute);
    throw std::bad_alloc();
  }
}

std::string Element::Attribute(std::string_view zvName) const {
  return NodeOf(*this, m_pNode, "Element.Attribute").attribute(std::string(zvName).c_str()).value();
}

std::string Element::Name() const {
  return NodeOf(*this, m_pNode, "Element.Name").name();
}

void Element::AppendChild(const Element& oChild) {
  pugi::xml_node node = NodeOf(*this, m_pNode, "Element.AppendChild");
  pugi::xml_node child = NodeOf(oChild, oChild.m_pNode, "Element.AppendChild");
  if (oChild.m_oTree != m_oTree) {
    child = CopyBelow(child, m_oTree->Loose());
  }
  if (!node.append_move(child)) {
    throw Failure(failure::kXmlFragment,
                  std::string("The XML element \"") + child.name() + "\" cannot stand below itself");
  }
}

std::string Element::XML() const {
  return Serialise(NodeOf(*this, m_pNode, "Element.XML"));
}

}  // namespace qm_ordering::xml
