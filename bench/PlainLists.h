#pragma once

#include <cstdint>
#include <pugixml.hpp>
#include <string>

#include "bench/Line.h"

namespace bench {

// The document of the personal lists, built as they are read: a program that writes the file keeps no lines.
class PlainLists {
 public:
  void AddList(std::int64_t lvID, const std::string& zvName);
  // To the list that was added last.
  void AddLine(const Line& line);

  // Writes the document to PersonalLists.xml in that folder.
  void Save(const std::string& zvFolder) const;

 private:
  pugi::xml_document m_oDocument;
  pugi::xml_node m_oRoot = m_oDocument.append_child("personallists");
  pugi::xml_node m_oList;
};

}  // namespace bench
