#include "bench/PlainLists.h"

#include "bench/PlainFile.h"
#include "bench/PlainXml.h"

namespace bench {

void PlainLists::AddList(std::int64_t lvID, const std::string& zvName) {
  m_oList = m_oRoot.append_child("personallist");
  Set(m_oList, "id", lvID);
  Set(m_oList, "name", zvName);
}

void PlainLists::AddLine(const Line& line) {
  AppendItem(m_oList, line);
}

void PlainLists::Save(const std::string& zvFolder) const {
  ReplaceFile(zvFolder + "/PersonalLists.xml", TextOf(m_oDocument));
}

}  // namespace bench
