#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <string>

#include "qm_ordering/platform/Export.h"

namespace qm_ordering {

// The numbers that a raised Failure carries. A host may compare Failure::Number() with them.
namespace failure {
inline constexpr std::int32_t kInvalidCall = 5;            // a call at a moment that does not allow it
inline constexpr std::int32_t kAbsentKey = 5;              // no member with that key in a collection
inline constexpr std::int32_t kOverflow = 6;               // money, integer conversion, sum
inline constexpr std::int32_t kOutOfMemory = 7;            // an allocation failed
inline constexpr std::int32_t kIndexOutOfBounds = 9;       // sort codes, the error table, arrays
inline constexpr std::int32_t kDivisionByZero = 11;        // a pack size of zero
inline constexpr std::int32_t kTypeMismatch = 13;          // a conversion that cannot be made
inline constexpr std::int32_t kFileAccess = 75;            // a file that cannot be read or written
inline constexpr std::int32_t kPathNotFound = 76;          // a folder that does not exist
inline constexpr std::int32_t kObjectNotSet = 91;          // an empty reference
inline constexpr std::int32_t kInvalidNull = 94;           // null converted to a number, boolean or currency
inline constexpr std::int32_t kReadOnlyProperty = 383;     // a property that is written by name and cannot be
inline constexpr std::int32_t kCannotCreateObject = 429;   // no class of that name
inline constexpr std::int32_t kUnknownMember = 438;        // a member that the class does not have
inline constexpr std::int32_t kArgumentNotOptional = 449;  // a call by name that lacks an argument
inline constexpr std::int32_t kWrongArgumentCount = 450;   // a call by name with too many arguments
inline constexpr std::int32_t kDuplicateKey = 457;         // a key that a collection already holds
inline constexpr std::int32_t kBadCriterion = 3001;        // a search criterion that cannot be read
inline constexpr std::int32_t kNoCurrentRow = 3021;  // a result set before its first or after its last row
inline constexpr std::int32_t kUnknownField = 3265;  // no column of that name in a result set
inline constexpr std::int32_t kClosedObject = 3704;  // a result set or connection that is closed
inline constexpr std::int32_t kStoreCommand = -2147217900;     // syntax, key, uniqueness or other constraint
inline constexpr std::int32_t kStoreNoTable = -2147217865;     // no such table or stored query
inline constexpr std::int32_t kStoreRowChanged = -2147217864;  // a row changed since a batch read it
inline constexpr std::int32_t kStoreUnavailable =
    -2147467259;                                            // locked, missing, unreadable, full, I/O error
inline constexpr std::int32_t kWrongThread = -2147417842;   // an object of another thread or process
inline constexpr std::int32_t kXmlCharacter = -1072896760;  // text that cannot stand in an XML document
inline constexpr std::int32_t kXmlFragment = -1072896682;   // text that does not parse, or lacks the element
}  // namespace failure

// The one exception that leaves the library: "a failure raised to the caller".
// It copies without failing, so that it can be caught by value or kept.
class QM_ORDERING_API Failure : public std::exception {
 public:
  // With one of the numbers above and a text in UTF-8. A component of the host makes its failures so.
  Failure(std::int32_t lvNumber, std::string zvDescription);
  // The copy shares the description.
  Failure(const Failure&) noexcept = default;
  // The copy shares the description.
  Failure& operator=(const Failure&) noexcept = default;
  ~Failure() override;

  // One of the numbers above.
  std::int32_t Number() const noexcept { return m_lNumber; }
  // What failed, on which file, why, and what to do about it. UTF-8.
  const std::string& Description() const noexcept { return *m_zDescription; }
  // The description; never a null pointer.
  const char* what() const noexcept override;

 private:
  std::int32_t m_lNumber;
  std::shared_ptr<const std::string> m_zDescription;
};

}  // namespace qm_ordering
