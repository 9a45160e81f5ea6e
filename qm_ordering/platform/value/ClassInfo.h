#pragma once

#include <string>
#include <vector>

#include "qm_ordering/platform/Export.h"
#include "qm_ordering/platform/value/Variant.h"

namespace qm_ordering {

class MemberTable;

// What a member of a class is to who uses it by name.
enum class MemberKind {
  PropertyGet,  // a value that is read
  PropertyLet,  // a value that is written
  PropertySet,  // a reference to an object that is written
  Method        // a call
};

// A parameter of a method, or the value that is written to a property.
struct QM_ORDERING_API ParameterInfo {
  std::string Name;         // as in the class's header: "lvSortType"
  const char* Type = "";    // as MemberInfo's; an argument of another kind is converted as Variant converts
  bool IsOptional = false;  // whether it may be left out, at the end or as a missing value
  Variant Default;          // what it is then; missing when the member itself looks at that. Otherwise empty
};

// A member of a class. A property that can be read and written is there twice.
struct QM_ORDERING_API MemberInfo {
  const char* Name = "";                    // as in the class's header
  MemberKind Kind = MemberKind::Method;     // what it is
  const char* Type = "";                    // of what is read or answered: "Boolean", "Integer", "Currency",
                                            // "Date", "String", "Variant" or a class; empty for nothing
  std::vector<ParameterInfo> Parameters{};  // in their order
  bool IsDefault = false;                   // whether it is meant where no member is named
};

// What a class offers to who uses it by name: exactly its public interface. It is there as long as the
// library is loaded, and any thread may read it.
struct QM_ORDERING_API ClassInfo {
  const char* Name = "";              // what ClassName answers
  const char* ElementType = "";       // what an enumeration of a collection answers; empty for other classes
  std::vector<MemberInfo> Members{};  // in the order of the class's header

 private:
  friend class MemberTable;
  const MemberTable* m_oTable = nullptr;
};

}  // namespace qm_ordering
