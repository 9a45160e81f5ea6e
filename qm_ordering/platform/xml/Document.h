#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace qm_ordering::xml {

class Element;

// An XML document object model, as narrow as the library needs it. Texts are UTF-8. Every text is checked
// against the characters of XML 1.0 before it enters a tree (raises failure::kXmlCharacter, naming the
// place), so whatever a document serialises to is well-formed. Output is compact: no declaration, no
// indentation.
class Document {
 public:
  // An empty document.
  Document();

  // A new element that belongs to this document but stands nowhere in it yet. zvName is a literal of ours.
  Element CreateElement(std::string_view zvName);

  // Makes oElement (of this or another document) the root. Raises kXmlFragment when there is a root already,
  // kObjectNotSet for an empty element.
  void AppendChild(const Element& oElement);

  // Replaces the content by the one element that zvText holds. False, and an empty document, when the text is
  // not one well-formed element, has a document type, has names beyond ASCII or has a blank or line end as a
  // reference (&#32; and the like) between its tags, as no document of ours does.
  // An XML declaration, comments, processing instructions and blanks around the element or between its tags
  // are accepted and dropped. Elements taken from this document before belong to what was replaced: they stay
  // valid, and appending one to this document now copies it.
  bool LoadXML(std::string_view zvText);

  // The first node, in document order, that matches the XPath. An empty element when there is none, when it
  // is no element, and when the path cannot be read.
  Element SelectSingleNode(const std::string& zvPath) const;

  // The document's text; empty for an empty document.
  std::string XML() const;

  // Hands the same text over in parts, of some kilobytes each, so that a long one is never in memory as a
  // whole.
  void Write(const std::function<void(std::string_view)>& write) const;

 private:
  friend class Element;
  struct Tree;
  std::shared_ptr<Tree> m_oTree;
};

// A handle on one element; copies are the same element. It keeps its document alive.
class Element {
 public:
  // The empty element. Every other member raises kObjectNotSet on it.
  Element() = default;

  explicit operator bool() const { return m_oTree != nullptr; }

  // Sets an attribute, at the end when it is new. zvName is a literal of ours. Raises kXmlCharacter when
  // zvValue holds what XML cannot: broken UTF-8, control characters other than tab, line feed and carriage
  // return, surrogates, U+FFFE, U+FFFF; the element is then unchanged. The message names element, attribute
  // and byte, counted from 1.
  void SetAttribute(const char* zvName, std::string_view zvValue);

  // Likewise, for an attribute that the element does not have: it is not looked for, since looking for each
  // of many costs more than setting them.
  void AddAttribute(const char* zvName, std::string_view zvValue);

  // The attribute's value; empty when it is not there.
  std::string Attribute(std::string_view zvName) const;

  std::string Name() const;

  // Appends oChild, with all below it, as the last child. An element of the same document is moved, one of
  // another document is copied. Raises kObjectNotSet for an empty child, kXmlFragment when this element is
  // oChild or stands below it.
  void AppendChild(const Element& oChild);

  // The element's own text, with its children.
  std::string XML() const;

 private:
  friend class Document;
  Element(std::shared_ptr<Document::Tree> oTree, void* pNode);
  std::shared_ptr<Document::Tree> m_oTree;
  void* m_pNode = nullptr;
};

}  // namespace qm_ordering::xml
