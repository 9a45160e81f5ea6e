#pragma once

#include <shapefil.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "qm_ordering/platform/ado/dbase/CodePage.h"
#include "qm_ordering/platform/file/Descriptor.h"
#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering::ado::dbase {

// The number in up to eight bytes, the least significant first.
std::uint64_t LittleEndian(std::string_view zvBytes) noexcept;

struct TableField {
  std::string Name;                    // in UTF-8
  char Type = ' ';                     // its letter: C, N, D ...
  std::size_t Offset = 0;              // in a record, whose first byte tells whether it is deleted
  std::size_t Length = 0;              // in bytes
  bool IsSystem = false;               // FoxPro's own, no column of the table
  bool IsBinary = false;               // holds bytes where others of its type hold text
  std::optional<std::size_t> NullBit;  // where the record's null flags tell whether it is null
};

// The open file of a dBase III, dBase IV or FoxPro table. Its header has been checked against the file's
// size, so that nothing in it can lead beyond the file, or to more work than the file is worth.
class TableFile {
 public:
  // Raises kStoreUnavailable for what is no such table, or a damaged one.
  explicit TableFile(std::string zvPath);
  TableFile(const TableFile&) = delete;
  TableFile& operator=(const TableFile&) = delete;
  ~TableFile();

  const std::string& Path() const { return m_zPath; }
  bool IsFoxPro() const { return m_bFoxPro; }
  const std::vector<TableField>& Fields() const { return m_oFields; }
  const CodePage& Characters() const { return *m_oCodePage; }
  std::int32_t RecordCount() const { return m_lRecords; }

  // The bytes of the record, from 0, or null when it is deleted. Valid until the next call. Raises
  // kStoreUnavailable when it cannot be read.
  const char* Record(std::int32_t lvRecord);

  // Whether the null flags of a record say that the field is null.
  bool IsNull(const TableField& field, const char* pvRecord) const;

  // kStoreUnavailable: the file, then what is wrong with it.
  Failure Damage(const std::string& zvWhat) const;
  // Likewise, with the record, from 0.
  Failure Damage(std::int32_t lvRecord, const std::string& zvWhat) const;

 private:
  // The file as the reader of the tables sees it, read in large blocks.
  class Bytes {
   public:
    explicit Bytes(int lvDescriptor, std::size_t lvSize);
    // False when there are not that many bytes, or reading fails.
    bool ReadAt(std::uint64_t lvOffset, void* pvTo, std::size_t lvSize) noexcept;
    // Why reading failed: an errno, or 0 where the file ended.
    int Error() const { return m_lError; }

    std::uint64_t Position = 0;

   private:
    bool Fill(std::uint64_t lvOffset) noexcept;

    int m_lDescriptor;
    std::vector<char> m_oBlock;
    std::uint64_t m_lBlockStart = 0;
    std::size_t m_lBlockSize = 0;
    int m_lError = 0;
  };
  struct Hooks;
  struct CloseTable {
    void operator()(DBFInfo* pTable) const noexcept { DBFClose(pTable); }
  };

  // Why bytes could not be read: what the system answered, or zvEnded where the file ended.
  std::string WhyUnread(const char* zvEnded) const;
  std::size_t SizeOfRegularFile() const;
  void CheckHeader(std::size_t lvFileSize);
  void OpenTable();
  void ListFields();

  std::string m_zPath;
  file::Descriptor m_oFile;
  std::unique_ptr<Bytes> m_oBytes;
  bool m_bFoxPro = false;
  bool m_bFieldFlags = false;
  std::int32_t m_lRecords = 0;
  std::vector<char> m_oDescriptions;  // the header's 32 bytes for each field
  std::optional<CodePage> m_oCodePage;
  std::unique_ptr<DBFInfo, CloseTable> m_oTable;
  std::vector<TableField> m_oFields;
  std::size_t m_lNullFlags = 0;  // the offset of the null flags in a record
};

}  // namespace qm_ordering::ado::dbase
