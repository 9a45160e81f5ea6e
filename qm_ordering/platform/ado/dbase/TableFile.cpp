#include "qm_ordering/platform/ado/dbase/TableFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <utility>

#include "qm_ordering/platform/ado/ConnectionString.h"
#include "qm_ordering/platform/file/SystemError.h"
#include "qm_ordering/platform/value/OutOfMemory.h"

namespace qm_ordering::ado::dbase {

namespace {

constexpr std::size_t kBlockSize = 256UL * 1024;
constexpr std::size_t kPrefixSize = 32;       // what stands in the header before the fields
constexpr std::size_t kDescriptionSize = 32;  // of each field
constexpr char kEndOfFields = 0x0D;
// The most columns that the engine's tables have.
constexpr std::size_t kMostFields = 2000;

constexpr char kEncrypted = 1;
constexpr unsigned char kSystemFlag = 1;
constexpr unsigned char kNullableFlag = 2;
constexpr unsigned char kBinaryFlag = 4;
constexpr char kNullFlagsType = '0';

bool IsKnownVersion(unsigned char lvVersion) {
  static constexpr std::array<unsigned char, 13> kVersions = {
      0x03, 0x83,                          // dBase III
      0x43, 0x63, 0x7B, 0x8B, 0x8E, 0xCB,  // dBase IV
      0x30, 0x31, 0x32, 0xF5, 0xFB,        // FoxPro
  };
  return std::ranges::find(kVersions, lvVersion) != kVersions.end();
}

std::string Hexadecimal(unsigned char lvByte) {
  static constexpr std::string_view kDigits = "0123456789ABCDEF";
  return std::string("0x") + kDigits[lvByte / 16U] + kDigits[lvByte % 16U];
}

}  // namespace

std::uint64_t LittleEndian(std::string_view zvBytes) noexcept {
  std::uint64_t lNumber = 0;
  for (std::size_t i = zvBytes.size(); i > 0; --i) {
    lNumber = (lNumber << 8U) | static_cast<unsigned char>(zvBytes[i - 1]);
  }
  return lNumber;
}

TableFile::Bytes::Bytes(int lvDescriptor, std::size_t lvSize)
    : m_lDescriptor(lvDescriptor), m_oBlock(std::min(lvSize, kBlockSize)) {}

bool TableFile::Bytes::Fill(std::uint64_t lvOffset) noexcept {
  m_lBlockStart = lvOffset;
  m_lBlockSize = 0;
  ssize_t lRead = 0;
  do {
    lRead = pread(m_lDescriptor, m_oBlock.data(), m_oBlock.size(), static_cast<off_t>(lvOffset));
  } while (lRead < 0 && errno == EINTR);
  if (lRead <= 0) {
    m_lError = lRead < 0 ? errno : 0;
    return false;
  }
  m_lBlockSize = static_cast<std::size_t>(lRead);
  return true;
}

bool TableFile::Bytes::ReadAt(std::uint64_t lvOffset, void* pvTo, std::size_t lvSize) noexcept {
  char* pTo = static_cast<char*>(pvTo);
  while (lvSize > 0) {
    if ((lvOffset < m_lBlockStart || lvOffset - m_lBlockStart >= m_lBlockSize) && !Fill(lvOffset)) {
      return false;
    }
    const std::size_t lFrom = static_cast<std::size_t>(lvOffset - m_lBlockStart);
    const std::size_t lCopied = std::min(lvSize, m_lBlockSize - lFrom);
    std::memcpy(pTo, m_oBlock.data() + lFrom, lCopied);
    pTo += lCopied;
    lvOffset += lCopied;
    lvSize -= lCopied;
  }
  return true;
}

// What the reader of tables calls instead of the system, so that it reads the file that was checked, reads no
// other one, and writes nothing to stderr. Nothing here may throw through it.
struct TableFile::Hooks {
  static inline constinit thread_local Bytes* s_pOpening = nullptr;

  static Bytes& Of(SAFile file) { return *reinterpret_cast<Bytes*>(file); }

  // The table first; what it looks for beside it is not there.
  static SAFile Open(const char*, const char*) noexcept {
    return reinterpret_cast<SAFile>(std::exchange(s_pOpening, nullptr));
  }
  static SAOffset Read(void* pvTo, SAOffset lvSize, SAOffset lvCount, SAFile file) noexcept {
    Bytes& bytes = Of(file);
    if (!bytes.ReadAt(bytes.Position, pvTo, lvSize * lvCount)) {
      return 0;
    }
    bytes.Position += lvSize * lvCount;
    return lvCount;
  }
  static SAOffset Write(void*, SAOffset, SAOffset, SAFile) noexcept { return 0; }
  static SAOffset Seek(SAFile file, SAOffset lvOffset, int lvWhence) noexcept {
    if (lvWhence != SEEK_SET) {
      return 1;
    }
    Of(file).Position = lvOffset;
    return 0;
  }
  static SAOffset Tell(SAFile file) noexcept { return Of(file).Position; }
  static int Flush(SAFile) noexcept { return 0; }
  static int Close(SAFile) noexcept { return 0; }
  static int Remove(const char*) noexcept { return -1; }
  static void Error(const char*) noexcept {}
  static double ToNumber(const char* zvText) noexcept { return std::strtod(zvText, nullptr); }
};

TableFile::TableFile(std::string zvPath)
    : m_zPath(std::move(zvPath)),
      m_oFile(open(m_zPath.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)) {
  if (!m_oFile.IsOpen()) {
    throw Damage(file::SystemErrorText(errno));
  }
  const std::size_t lSize = SizeOfRegularFile();
  m_oBytes = std::make_unique<Bytes>(m_oFile.Number(), lSize);
  CheckHeader(lSize);
  OpenTable();
  ListFields();
}

TableFile::~TableFile() = default;

std::size_t TableFile::SizeOfRegularFile() const {
  struct stat status {};
  if (fstat(m_oFile.Number(), &status) != 0) {
    throw Damage(file::SystemErrorText(errno));
  }
  if (!S_ISREG(status.st_mode)) {
    throw Damage(S_ISDIR(status.st_mode) ? "it is a folder" : "it is no regular file");
  }
  return static_cast<std::size_t>(status.st_size);
}

void TableFile::CheckHeader(std::size_t lvFileSize) {
  if (lvFileSize == 0) {
    throw Damage("it is empty");
  }
  std::array<char, kPrefixSize> oPrefix{};
  if (!m_oBytes->ReadAt(0, oPrefix.data(), oPrefix.size())) {
    throw Damage(WhyUnread("it ends within its header"));
  }
  const auto lVersion = static_cast<unsigned char>(oPrefix[0]);
  if (!IsKnownVersion(lVersion)) {
    throw Damage("it begins with " + Hexadecimal(lVersion) +
                 ", which no table of dBase III, dBase IV or FoxPro does");
  }
  m_bFieldFlags = lVersion == 0x30 || lVersion == 0x31 || lVersion == 0x32;
  m_bFoxPro = m_bFieldFlags || lVersion == 0xF5 || lVersion == 0xFB;
  if (!m_bFoxPro && oPrefix[15] == kEncrypted) {
    throw Damage("it is encrypted");
  }
  const auto lLanguage = static_cast<unsigned char>(oPrefix[29]);
  const char* zCodePage = CodePageOf(lLanguage);
  if (zCodePage == nullptr) {
    throw Damage("its header names the language " + Hexadecimal(lLanguage) +
                 ", whose code page is none of 437, 850, 852, 1250, 1251, 1252");
  }

  const std::uint64_t lRecords = LittleEndian({&oPrefix[4], 4});
  const std::size_t lHeader = LittleEndian({&oPrefix[8], 2});
  const std::size_t lRecord = LittleEndian({&oPrefix[10], 2});
  if (lHeader > lvFileSize) {
    throw Damage("its header is to take " + std::to_string(lHeader) + " bytes, and it holds " +
                 std::to_string(lvFileSize));
  }
  if (lHeader <= kPrefixSize) {
    throw Damage("its header is to take " + std::to_string(lHeader) +
                 " bytes, which leaves none to the fields");
  }
  m_oDescriptions.resize(lHeader - kPrefixSize);
  if (!m_oBytes->ReadAt(kPrefixSize, m_oDescriptions.data(), m_oDescriptions.size())) {
    throw Damage(WhyUnread("it ends within its header"));
  }
  std::size_t lEnd = 0;
  std::size_t lLengths = 0;
  while (lEnd < m_oDescriptions.size() && m_oDescriptions[lEnd] != kEndOfFields) {
    if (m_oDescriptions.size() - lEnd <= kDescriptionSize) {
      throw Damage("the end of its list of fields is missing");
    }
    lLengths += static_cast<unsigned char>(m_oDescriptions[lEnd + 16]);
    lEnd += kDescriptionSize;
  }
  if (lEnd == 0) {
    throw Damage("it has no fields");
  }
  if (lEnd / kDescriptionSize > kMostFields) {
    throw Damage("it has " + std::to_string(lEnd / kDescriptionSize) + " fields, more than " +
                 std::to_string(kMostFields));
  }
  m_oDescriptions.resize(lEnd);
  if (lLengths + 1 != lRecord) {
    throw Damage("its records are to take " + std::to_string(lRecord) + " bytes each, and its fields take " +
                 std::to_string(lLengths + 1));
  }
  if (lRecords > (lvFileSize - lHeader) / lRecord) {
    throw Damage("its header claims " + std::to_string(lRecords) + " records, and it has room for " +
                 std::to_string((lvFileSize - lHeader) / lRecord));
  }
  if (lRecords > static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max())) {
    throw Damage("it has " + std::to_string(lRecords) + " records, more than can be read");
  }
  m_lRecords = static_cast<std::int32_t>(lRecords);
  try {
    m_oCodePage.emplace(zCodePage);
  } catch (const Failure& failure) {
    if (failure.Number() == failure::kOutOfMemory) {
      throw;
    }
    throw Damage(failure.Description());
  }
}

void TableFile::OpenTable() {
  SAHooks hooks{};
  hooks.FOpen = Hooks::Open;
  hooks.FRead = Hooks::Read;
  hooks.FWrite = Hooks::Write;
  hooks.FSeek = Hooks::Seek;
  hooks.FTell = Hooks::Tell;
  hooks.FFlush = Hooks::Flush;
  hooks.FClose = Hooks::Close;
  hooks.Remove = Hooks::Remove;
  hooks.Error = Hooks::Error;
  hooks.Atof = Hooks::ToNumber;
  Hooks::s_pOpening = m_oBytes.get();
  m_oTable.reset(DBFOpenLL("table", "rb", &hooks));
  Hooks::s_pOpening = nullptr;
  if (m_oTable == nullptr ||
      static_cast<std::size_t>(DBFGetFieldCount(m_oTable.get())) !=
          m_oDescriptions.size() / kDescriptionSize ||
      DBFGetRecordCount(m_oTable.get()) != m_lRecords) {
    throw Damage("its header cannot be read");
  }
}

void TableFile::ListFields() {
  std::size_t lOffset = 1;
  std::size_t lNullBits = 0;
  for (int i = 0; i < DBFGetFieldCount(m_oTable.get()); ++i) {
    TableField field;
    std::array<char, XBASE_FLDNAME_LEN_READ + 1> zName{};
    int lLength = 0;
    DBFGetFieldInfo(m_oTable.get(), i, zName.data(), &lLength, nullptr);
    m_oCodePage->Append(zName.data(), field.Name);
    field.Type = DBFGetNativeFieldType(m_oTable.get(), i);
    field.Offset = lOffset;
    field.Length = static_cast<std::size_t>(lLength);
    lOffset += field.Length;
    if (m_bFieldFlags) {
      const auto lFlags =
          static_cast<unsigned char>(m_oDescriptions[static_cast<std::size_t>(i) * kDescriptionSize + 18]);
      field.IsSystem = (lFlags & kSystemFlag) != 0 || field.Type == kNullFlagsType;
      field.IsBinary = (lFlags & kBinaryFlag) != 0;
      if (field.Type == kNullFlagsType) {
        m_lNullFlags = field.Offset;
      }
      // A field of varying length has a bit of its own before that for null.
      lNullBits += field.Type == 'V' || field.Type == 'Q' ? 1 : 0;
      if ((lFlags & kNullableFlag) != 0) {
        field.NullBit = lNullBits++;
      }
    }
    if (field.Name.empty()) {
      throw Damage("its field " + std::to_string(i + 1) + " has no name");
    }
    for (const TableField& other : m_oFields) {
      if (SameName(other.Name, field.Name)) {
        throw Damage("it has two fields of the name " + field.Name);
      }
    }
    m_oFields.push_back(std::move(field));
  }
  const auto nullFlags =
      std::ranges::find(m_oFields, kNullFlagsType, [](const TableField& field) { return field.Type; });
  const std::size_t lRoom = nullFlags == m_oFields.end() ? 0 : nullFlags->Length * 8;
  if (m_bFieldFlags && lNullBits > lRoom) {
    throw Damage("its records have no room to tell which fields are null");
  }
}

const char* TableFile::Record(std::int32_t lvRecord) {
  const char* pRecord = DBFReadTuple(m_oTable.get(), lvRecord);
  if (pRecord == nullptr) {
    throw Damage(lvRecord, WhyUnread("the file ends before it"));
  }
  if (*pRecord != ' ' && DBFIsRecordDeleted(m_oTable.get(), lvRecord) == 0) {
    throw Damage(lvRecord, "it begins with " + Hexadecimal(static_cast<unsigned char>(*pRecord)) +
                               ", which neither a valid nor a deleted one does");
  }
  return *pRecord == ' ' ? pRecord : nullptr;
}

bool TableFile::IsNull(const TableField& field, const char* pvRecord) const {
  if (!field.NullBit) {
    return false;
  }
  const auto lFlags = static_cast<unsigned char>(pvRecord[m_lNullFlags + *field.NullBit / 8]);
  return ((lFlags >> (*field.NullBit % 8)) & 1U) != 0;
}

std::string TableFile::WhyUnread(const char* zvEnded) const {
  return m_oBytes->Error() != 0 ? file::SystemErrorText(m_oBytes->Error()) : zvEnded;
}

Failure TableFile::Damage(const std::string& zvWhat) const {
  return {failure::kStoreUnavailable, "The dBase table " + m_zPath + " cannot be read: " + zvWhat + "."};
}

Failure TableFile::Damage(std::int32_t lvRecord, const std::string& zvWhat) const {
  return Damage("record " + std::to_string(std::int64_t{lvRecord} + 1) + ": " + zvWhat);
}

}  // namespace qm_ordering::ado::dbase
