#pragma once

#include <cstdint>
#include <iterator>
#include <memory>
#include <string>

#include "qm_ordering/foundation/ErrorInfo.h"
#include "qm_ordering/foundation/LibraryObject.h"
#include "qm_ordering/foundation/MemberIterator.h"
#include "qm_ordering/foundation/MembersById.h"
#include "qm_ordering/lists/PersonalList.h"

namespace qm_ordering {

class Database;

// All personal lists. It is filled once, by LoadLists, and holds what was stored then: the members that
// change the store do not change it. Make a new one to see what has changed since, and to save the file of
// all lists again, since a list does not take its items twice.
//
// Members that ask the store answer an empty text, false or 0 where they fail, and LastFailure says why.
// Where memory ends, members raise 7.
class QM_ORDERING_API PersonalLists : public LibraryObject {
 public:
  // What walks over it.
  using Iterator = MemberIterator<PersonalList>;
  // What NewEnum answers.
  using Enumerator = MemberEnumerator<PersonalList>;

  // Empty.
  PersonalLists();
  ~PersonalLists() override;

  // The class's name for who makes or uses objects by name.
  static constexpr const char* kClassName = "PersonalLists";
  const char* ClassName() const noexcept override { return kClassName; }
  // What Members answers, without an object.
  static const ClassInfo& ClassMembers();
  const ClassInfo& Members() const override { return ClassMembers(); }

  // The stored name of a list; empty when there is none, and on a failure.
  std::string GetName(std::int32_t lvListID);
  // Whether the store has a list of that name, in any letter case; false on a failure.
  bool ListExists(const std::string& zvName);
  // Adds an empty list to the store and answers its id; 0 on a failure. A list of that name, in any letter
  // case, is replaced: it goes with its lines, and the new one has another id. A name that is not UTF-8 is a
  // failure.
  std::int32_t CreateList(const std::string& zvName);
  // Gives a stored list another name. False when another list has it, and on a failure (a name that is not
  // UTF-8 is one); true also when there is no list of that id.
  bool RenameList(std::int32_t lvListID, const std::string& zvNewListName);
  // Removes a list and its lines from the store; nothing when there is none. A failure shows in LastFailure
  // alone: call ClearLastFailure first, since it may hold an older one.
  void RemoveList(std::int32_t lvListID);
  // The same by name, in any letter case. True when the store was asked, also when there is no such list;
  // false on a failure.
  bool RemoveListByName(const std::string& zvListName);

  // Adds the stored lists by name, without their items. Raises 457 for the first list that is held already: a
  // second call on the same object; and the store's failure.
  void LoadLists();

  // The held list of that id. Raises 5 when there is none.
  std::shared_ptr<PersonalList> Item(std::int32_t lvListID) const;
  // The number of held lists.
  std::int32_t Count() const { return m_oLists.Count(); }
  // The held lists in the order in which they were loaded.
  Enumerator NewEnum() const { return Enumerator(begin()); }
  // At the first list, for a range-for over the collection itself: "const auto& oList", since it answers each
  // by value.
  Iterator begin() const { return m_oLists.begin(); }
  // Behind the last list.
  std::default_sentinel_t end() const { return {}; }

  // The "personallists" element: one "personallist" with id and name for each held list, without items.
  // Raises -1072896760 when a name holds what XML cannot.
  std::string GetXML() const;

  // Loads the items of every held list and writes all of it to PersonalLists.xml in the folder of the store,
  // or to the file that this name links to. The file is replaced as a whole and is on disk afterwards; a file
  // PersonalLists.xml.lock beside it keeps two writers apart and stays. A catalogue that was not loaded
  // writes a file without lists.
  //
  // A failure is silent and leaves the old file (after one of the very last step, the flush of the folder,
  // the new one is there). LastFailure says what it was: call ClearLastFailure first, since it may hold an
  // older one. Among the failures: 75 for a file that cannot be written or that another process keeps locked
  // for five seconds, 76 for a folder that is not there, 91 for a list whose OrderItems is null, -1072896760
  // for a name or item that XML cannot hold, 457 on a second call on the same object when a list has an item.
  void SaveAsXML();

 private:
  Database& Store();

  MembersById<PersonalList> m_oLists;
  ErrorInfo m_oStoreError;
  std::unique_ptr<Database> m_oStore;
};

}  // namespace qm_ordering
