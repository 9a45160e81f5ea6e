#include "qm_ordering/lists/PersonalLists.h"

#include <vector>

#include "qm_ordering/foundation/Errors.h"
#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/foundation/UserSettingConstants.h"
#include "qm_ordering/order/ItemElement.h"
#include "qm_ordering/order/RequireObject.h"
#include "qm_ordering/platform/file/Path.h"
#include "qm_ordering/platform/file/WholeFile.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/platform/value/OutOfMemory.h"
#include "qm_ordering/platform/xml/Document.h"
#include "qm_ordering/store/Database.h"

namespace qm_ordering {

namespace {

// Runs the body; its failure begins with the list that it is about.
template <typename Body>
auto ForList(const PersonalList& list, Body body) {
  try {
    return body();
  } catch (const Failure& failure) {
    throw Failure(failure.Number(), "List " + std::to_string(list.ListID()) + ", " + list.Name() + ": " +
                                        failure.Description());
  }
}

xml::Element ListElement(xml::Document& oDocument, const PersonalList& list) {
  return ForList(list, [&] {
    xml::Element element = oDocument.CreateElement("personallist");
    element.AddAttribute("id", std::to_string(list.ListID()));
    element.AddAttribute("name", list.Name());
    return element;
  });
}

// Fills an empty document; answers the elements of the lists, in their order.
std::vector<xml::Element> MakeCatalogue(xml::Document& orDocument, const PersonalLists& lists) {
  std::vector<xml::Element> elements;
  xml::Element root = orDocument.CreateElement("personallists");
  for (const auto& oList : lists) {
    elements.push_back(ListElement(orDocument, *oList));
    root.AppendChild(elements.back());
  }
  orDocument.AppendChild(root);
  return elements;
}

}  // namespace

PersonalLists::PersonalLists() = default;

PersonalLists::~PersonalLists() = default;

Database& PersonalLists::Store() {
  if (m_oStore == nullptr) {
    m_oStore = std::make_unique<Database>();
  }
  return *m_oStore;
}

std::string PersonalLists::GetName(std::int32_t lvListID) {
  return OrOutOfMemory([&] {
    std::string zName = Store().PersonalLists_GetName(lvListID);
    m_oStoreError = Store().Error();
    return zName;
  });
}

bool PersonalLists::ListExists(const std::string& zvName) {
  return OrOutOfMemory([&] {
    const bool bExists = Store().PersonalLists_ListExists(zvName);
    m_oStoreError = Store().Error();
    return bExists;
  });
}

std::int32_t PersonalLists::CreateList(const std::string& zvName) {
  return OrOutOfMemory([&] {
    const std::int32_t lListID = Store().PersonalLists_CreateList(zvName);
    m_oStoreError = Store().Error();
    return lListID;
  });
}

bool PersonalLists::RenameList(std::int32_t lvListID, const std::string& zvNewListName) {
  return OrOutOfMemory([&] {
    const bool bRenamed = Store().PersonalLists_RenameList(lvListID, zvNewListName);
    m_oStoreError = Store().Error();
    return bRenamed;
  });
}

void PersonalLists::RemoveList(std::int32_t lvListID) {
  OrOutOfMemory([&] {
    Store().PersonalLists_RemoveList(lvListID);
    m_oStoreError = Store().Error();
  });
}

bool PersonalLists::RemoveListByName(const std::string& zvListName) {
  return OrOutOfMemory([&] {
    const bool bRemoved = Store().PersonalLists_RemoveListByName(zvListName);
    m_oStoreError = Store().Error();
    return bRemoved;
  });
}

void PersonalLists::LoadLists() {
  OrOutOfMemory([&] {
    const auto rows = Store().PersonalLists_GetLists();
    m_oStoreError = Store().Error();
    for (; !rows->AtEnd(); rows->MoveNext()) {
      const auto oList = std::make_shared<PersonalList>();
      oList->Name(rows->Fields("zName").Value().ToString());
      oList->ListID(rows->Fields("lListID").Value().ToInteger());
      m_oLists.Add(oList->ListID(), oList, "PersonalLists.LoadLists");
    }
  });
}

std::shared_ptr<PersonalList> PersonalLists::Item(std::int32_t lvListID) const {
  return OrOutOfMemory([&] { return m_oLists.Item(lvListID, "PersonalLists.Item"); });
}

std::string PersonalLists::GetXML() const {
  return OrOutOfMemory([&] {
    xml::Document document;
    MakeCatalogue(document, *this);
    return document.XML();
  });
}

void PersonalLists::SaveAsXML() {
  try {
    const text::AmountFormat amounts;
    xml::Document document;
    // All names before any list takes its items, which it takes once: after a name that XML cannot hold was
    // put right, the call can be repeated.
    std::vector<xml::Element> elements = MakeCatalogue(document, *this);
    auto element = elements.begin();
    for (const auto& oList : *this) {
      // By the id that it has now, which a host may have changed.
      const std::shared_ptr<PersonalList> oHeld = m_oLists.Item(oList->ListID(), "PersonalLists.SaveAsXML");
      oHeld->LoadItems();
      const auto oItems = RequireObject(oHeld->OrderItems(), "the collection of items");
      ForList(*oHeld, [&] { AppendItemElements(document, *element, *oItems, amounts); });
      ++element;
    }
    const file::WholeFile file(
        file::SystemPath(DatabasePath() + "\\PersonalLists.xml", UserSettingConstants::ORDERINGDATABASEPATH),
        "file of the personal lists");
    file::WholeFile::Writing(file).Replace([&](const file::TakePart& take) { document.Write(take); });
  } catch (...) {
    CatchFailure("PersonalLists.SaveAsXML");
  }
}

}  // namespace qm_ordering
