#include "host/ListSession.h"

#include <vector>

#include "host/Errors.h"
#include "host/NearestNames.h"
#include "host/Text.h"

namespace host {

using namespace qm_ordering;

bool SameInStore(const std::string& zvLeft, const std::string& zvRight) {
  // Its keys are compared as the store compares its texts.
  OrderItems one;
  one.Add(std::make_shared<OrderItem>(), zvLeft);
  return one.Item(zvRight) != nullptr;
}

void CheckSwallowed() {
  const LastFailureInfo swallowed = LastFailure();
  CheckRecord({swallowed.Number, swallowed.Description});
}

std::unique_ptr<PersonalLists> OpenLists(Context& context) {
  NoteWhenNoStoreIsSet(context);
  auto lists = std::make_unique<PersonalLists>();
  lists->LoadLists();
  return lists;
}

std::shared_ptr<PersonalList> FindListByName(const PersonalLists& lists, const std::string& zvName) {
  for (const auto& oList : lists) {
    if (SameInStore(oList->Name(), zvName)) {
      return oList;
    }
  }
  return nullptr;
}

std::shared_ptr<PersonalList> FindList(const PersonalLists& lists, const std::string& zvList) {
  auto oNamed = FindListByName(lists, zvList);
  const auto lListID = ParseInteger(zvList);
  if (!lListID && oNamed != nullptr) {
    return oNamed;
  }
  std::vector<std::string> names;
  for (const auto& oList : lists) {
    if (lListID && oList->ListID() == *lListID) {
      return oList;
    }
    names.push_back(oList->Name());
  }
  if (lListID) {
    throw UsageError("There is no list with the id " + zvList + "." +
                     (oNamed == nullptr
                          ? " `qm-ordering lists show` shows the lists."
                          : " The list of that name has the id " + std::to_string(oNamed->ListID()) + "."));
  }
  throw UsageError("There is no list \"" + zvList + "\"." + DidYouMean(zvList, names) +
                   " `qm-ordering lists show` shows the lists.");
}

std::shared_ptr<PersonalList> OpenList(Context& context, const std::string& zvList) {
  const auto lists = OpenLists(context);
  auto oList = FindList(*lists, zvList);
  oList->LoadItems();
  return oList;
}

void AddToList(std::int32_t lvListID, const std::shared_ptr<OrderItem>& oItem) {
  // One of its own for each item: a list does not take an item that it holds.
  PersonalList list;
  list.AddItem(oItem, lvListID);
  CheckRecord(list.Error());
}

}  // namespace host
