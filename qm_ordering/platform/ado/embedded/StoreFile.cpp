#include "qm_ordering/platform/ado/embedded/StoreFile.h"

#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <string_view>
#include <utility>
#include <vector>

#include "qm_ordering/platform/ado/embedded/Engine.h"
#include "qm_ordering/platform/ado/embedded/SchemaSteps.h"
#include "qm_ordering/platform/ado/embedded/UnfinishedStore.h"
#include "qm_ordering/platform/file/SystemError.h"
#include "qm_ordering/platform/text/Unicode.h"
#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering::ado::embedded {

namespace {

constexpr const char* kMoveAway =
    "Move it away and create a store with `qm-ordering store create`, or set OrderingDatabasePath to the "
    "folder that holds one";
constexpr const char* kHowToCreate =
    "Create one with `qm-ordering store create`, or set OrderingDatabasePath to the folder that holds it";

constexpr const char* kRestore = "Restore a backup with `qm-ordering store restore`";
constexpr const char* kExists =
    "a file of that name exists; it was not touched. If it is no order store, move it away";

// The provider's own table: the folding that the text indexes were built with.
constexpr const char* kFormatScript =
    "create table sysFormat (zName TEXT PRIMARY KEY NOT NULL, zValue TEXT NOT NULL) WITHOUT ROWID;\n";

void RaiseIfAny(const std::string& zvPath, const std::optional<Objection>& objection) {
  if (objection) {
    throw Failure(failure::kStoreUnavailable, "The order store " + zvPath + " cannot be used: " +
                                                  objection->Why + ". " + objection->Remedy + ".");
  }
}

std::string NotCreated(const std::string& zvPath) {
  return "The order store " + zvPath + " was not created";
}

[[noreturn]] void RaiseNotCreated(const std::string& zvPath, const std::string& zvWhy) {
  throw Failure(failure::kFileAccess, NotCreated(zvPath) + ": " + zvWhy + ".");
}

std::int32_t BigEndian(const unsigned char* pBytes) {
  return static_cast<std::int32_t>((static_cast<std::uint32_t>(pBytes[0]) << 24) |
                                   (static_cast<std::uint32_t>(pBytes[1]) << 16) |
                                   (static_cast<std::uint32_t>(pBytes[2]) << 8) | pBytes[3]);
}

// The store that a restore kept last beside the path; empty when there is none.
std::string NewestKept(const std::string& zvPath) {
  const std::filesystem::path path(zvPath);
  const std::string zStart = path.filename().string() + kKeptMark;
  std::string zNewest;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(path.parent_path(), error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string zName = entry->path().filename().string();
    const bool bLog =
        std::ranges::any_of(kLogSuffixes, [&](const char* zSuffix) { return zName.ends_with(zSuffix); });
    if (zName.starts_with(zStart) && !bLog && entry->path().string() > zNewest) {
      zNewest = entry->path().string();
    }
  }
  return zNewest;
}

// The folders that had to be made for a store; they go at the end of the scope unless they are kept.
class MadeFolders {
 public:
  MadeFolders() = default;
  ~MadeFolders() {
    for (; !m_zMade.empty(); m_zMade.pop_back()) {
      rmdir(m_zMade.back().c_str());
    }
  }
  MadeFolders(const MadeFolders&) = delete;
  MadeFolders& operator=(const MadeFolders&) = delete;

  void MakeFor(const std::string& zvPath) {
    std::filesystem::path folder;
    for (const auto& part : std::filesystem::path(zvPath).parent_path()) {
      folder /= part;
      // Noted first, so that no folder is left for want of memory to note it.
      m_zMade.push_back(folder.string());
      if (mkdir(folder.c_str(), S_IRWXU) == 0) {
        FlushFolderOf(m_zMade.back());
        continue;
      }
      const int lError = errno;
      m_zMade.pop_back();
      if (lError != EEXIST) {
        struct stat status {};
        // Some systems refuse to make a folder that exists with another error than EEXIST.
        if (stat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
          RaiseNotCreated(
              zvPath, "the folder " + folder.string() + " cannot be made: " + file::SystemErrorText(lError));
        }
      }
    }
  }

  void Keep() { m_zMade.clear(); }

 private:
  std::vector<std::string> m_zMade;
};

// What makes a store of that version from nothing.
std::string SchemaScript(std::int32_t lvVersion) {
  std::string zScript;
  for (const char* zStep : kSchemaSteps.first(static_cast<std::size_t>(lvVersion))) {
    zScript += zStep;
  }
  return zScript;
}

void FillStore(const std::string& zvPath, const std::string& zvName) {
  DatabaseHandle db = OpenEngine(zvPath, zvName, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX);
  AddTextCollation(db.get(), zvName);
  RunScript(db.get(),
            "pragma journal_mode = delete;\npragma synchronous = full;\npragma application_id = " +
                std::to_string(kApplicationId) +
                ";\npragma user_version = " + std::to_string(SchemaVersion()) + ";\nbegin exclusive;\n" +
                kFormatScript + "insert into sysFormat values ('folding', '" + text::FoldingVersion() +
                "');\n" + SchemaScript(SchemaVersion()) + "\ncommit;",
            zvName);
  if (!IsOnNetwork(zvPath)) {
    RunScript(db.get(), "pragma journal_mode = wal;", zvName);
  }
  CloseEngine(std::move(db), zvName);
}

constexpr std::string_view kEngineMark("SQLite format 3\0", 16);

// The first bytes of a file; zero where it ends before them.
struct Header {
  std::array<unsigned char, 100> Bytes{};
  bool Whole = true;

  std::string_view Text() const { return {reinterpret_cast<const char*>(Bytes.data()), Bytes.size()}; }
  bool HasLogMode() const { return Bytes[18] == 2; }
  std::int32_t SchemaVersion() const { return BigEndian(Bytes.data() + 60); }
  std::int32_t ApplicationId() const { return BigEndian(Bytes.data() + 68); }
};

Header ReadHeader(sqlite3* db, const std::string& zvPath) {
  sqlite3_file* pFile = EngineFile(db, zvPath);
  Header header;
  const int lRead =
      pFile->pMethods->xRead(pFile, header.Bytes.data(), static_cast<int>(header.Bytes.size()), 0);
  if (lRead != SQLITE_OK && lRead != SQLITE_IOERR_SHORT_READ) {
    throw EngineFailure(nullptr, lRead, zvPath);
  }
  header.Whole = lRead == SQLITE_OK;
  return header;
}

// Whether the file ends with a page. While there is a log the engine may be in the middle of adding one.
bool HasWholePages(sqlite3_file& file, std::string_view zvHeader) {
  const int lCoded = static_cast<unsigned char>(zvHeader[16]) << 8 | static_cast<unsigned char>(zvHeader[17]);
  // 65,536 does not fit into the two bytes.
  const int lPageSize = lCoded == 1 ? 65536 : lCoded;
  sqlite3_int64 lSize = 0;
  return lPageSize > 1 && file.pMethods->xFileSize(&file, &lSize) == SQLITE_OK && lSize % lPageSize == 0;
}

std::optional<Objection> ObjectionToVersion(std::int32_t lvVersion) {
  if (lvVersion > SchemaVersion()) {
    return Objection{"it was written by a newer version of this library (schema " +
                         std::to_string(lvVersion) + ", this one knows " + std::to_string(SchemaVersion()) +
                         ")",
                     "Update the program"};
  }
  if (lvVersion < 1) {
    return Objection{"it has no valid schema version", kRestore};
  }
  return std::nullopt;
}

}  // namespace

void CreateStoreFile(const std::string& zvPath) {
  MadeFolders folders;
  folders.MakeFor(zvPath);
  struct stat status {};
  if (lstat(zvPath.c_str(), &status) == 0) {
    RaiseNotCreated(zvPath, kExists);
  }
  const std::string zLog = LogBeside(zvPath);
  if (!zLog.empty()) {
    // The engine would read it into the new store.
    RaiseNotCreated(zvPath, zLog + ", the log of an earlier store, is there. Move it away");
  }
  UnfinishedStore store(zvPath, NotCreated(zvPath));
  try {
    FillStore(store.Path(), zvPath);
  } catch (const Failure& failure) {
    if (failure.Number() == failure::kOutOfMemory) {
      throw;
    }
    throw Failure(failure::kFileAccess, failure.Description() + " It was not created.");
  }
  if (!store.PublishAs(zvPath)) {
    RaiseNotCreated(zvPath, kExists);
  }
  folders.Keep();
}

std::optional<Objection> ObjectionToKind(const std::string& zvPath) {
  struct stat status {};
  if (stat(zvPath.c_str(), &status) != 0) {
    const int lError = errno;
    const std::string zFolder = std::filesystem::path(zvPath).parent_path().string();
    if (lError != ENOENT && lError != ENOTDIR) {
      return Objection{file::SystemErrorText(lError), "Check the folder " + zFolder + " and its permissions"};
    }
    const bool bFolder = stat(zFolder.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
    if (const std::string zKept = bFolder ? NewestKept(zvPath) : std::string(); !zKept.empty()) {
      return Objection{"there is no such file, but " + zKept + ", which a restore replaced",
                       "To use that again run `qm-ordering store restore` with it"};
    }
    return Objection{bFolder ? "there is no such file" : "there is no folder " + zFolder, kHowToCreate};
  }
  if (S_ISDIR(status.st_mode)) {
    return Objection{"it is a folder", kMoveAway};
  }
  if (!S_ISREG(status.st_mode)) {
    return Objection{"it is not an ordinary file", kMoveAway};
  }
  if (status.st_size == 0) {
    return Objection{"it is empty (0 bytes)",
                     "Restore a backup with `qm-ordering store restore`, or move it away and create a store"};
  }
  for (const char* zSuffix : {"-wal", "-shm"}) {
    // The engine's own answer would not name it, or be one about permissions.
    const std::string zBeside = zvPath + zSuffix;
    if (stat(zBeside.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
      return Objection{zBeside + " beside it is not a file", "Move it away"};
    }
  }
  return std::nullopt;
}

std::optional<Objection> ObjectionToContent(sqlite3* db, const std::string& zvPath) {
  const Header header = ReadHeader(db, zvPath);
  const std::string_view zMaker = header.Text().substr(4, 15);
  if (zMaker == "Standard Jet DB" || zMaker == "Standard ACE DB") {
    return Objection{
        "it is a database of the Access engine itself, which this library neither reads nor writes",
        kMoveAway};
  }
  if (!header.Text().starts_with(kEngineMark)) {
    return Objection{"it is a file of another kind, not an order store", kMoveAway};
  }
  if (!header.Whole) {
    return Objection{"it is truncated", kRestore};
  }
  if (header.ApplicationId() != kApplicationId) {
    return Objection{"it is a database of another program, not an order store", kMoveAway};
  }
  if (auto objection = ObjectionToVersion(header.SchemaVersion())) {
    return objection;
  }
  const auto bIsCut = [&] {
    return !HasWholePages(*EngineFile(db, zvPath), header.Text()) &&
           LogBeside(sqlite3_db_filename(db, "main")).empty();
  };
  // Looked at twice: another program may have ended its commit between the two looks at file and log.
  if (bIsCut() && bIsCut()) {
    return Objection{"it is truncated", kRestore};
  }
  return std::nullopt;
}

bool IsOrderStore(sqlite3* db, const std::string& zvPath) {
  const Header header = ReadHeader(db, zvPath);
  return header.Text().starts_with(kEngineMark) && header.ApplicationId() == kApplicationId;
}

bool HasLogMode(sqlite3* db, const std::string& zvPath) {
  return ReadHeader(db, zvPath).HasLogMode();
}

struct stat RequireOrdinaryFile(const std::string& zvPath) {
  RaiseIfAny(zvPath, ObjectionToKind(zvPath));
  struct stat status {};
  if (stat(zvPath.c_str(), &status) != 0) {
    RaiseIfAny(zvPath, Objection{file::SystemErrorText(errno), "Try again"});
  }
  return status;
}

void RequireOrderStore(sqlite3* db, const std::string& zvPath) {
  RaiseIfAny(zvPath, ObjectionToContent(db, zvPath));
}

std::int32_t RequireKnownVersion(sqlite3* db, const std::string& zvPath) {
  const std::int32_t lVersion = std::stoi(ReadText(db, "pragma user_version", zvPath));
  RaiseIfAny(zvPath, ObjectionToVersion(lVersion));
  return lVersion;
}

std::string DescribeSchema(sqlite3* db, const std::string& zvPath) {
  return ReadText(
      db,
      "select group_concat(sql, char(10)) from (select sql from sqlite_schema where sql is not null and "
      "name not like 'sqlite_%' order by type, name)",
      zvPath);
}

std::string DescribeSchemaOfVersion(std::int32_t lvVersion) {
  const std::string zName = ":memory:";
  const DatabaseHandle db =
      OpenEngine(zName, zName, SQLITE_OPEN_READWRITE | SQLITE_OPEN_MEMORY | SQLITE_OPEN_NOMUTEX);
  AddTextCollation(db.get(), zName);
  RunScript(db.get(), kFormatScript + SchemaScript(lvVersion), zName);
  return DescribeSchema(db.get(), zName);
}

bool IsOnNetwork(const std::string& zvPath) {
  // NFS, SMB, CIFS, SMB2, AFS, CODA, NCP, FUSE (where sshfs and the like live), 9P, Ceph, Lustre.
  static constexpr std::array<std::uint32_t, 11> kKinds = {0x6969,     0x517B,     0xFF534D42, 0xFE534D42,
                                                           0x5346414F, 0x73757245, 0x564C,     0x65735546,
                                                           0x01021997, 0x00C36400, 0x0BD00BD0};
  struct statfs status {};
  if (statfs(zvPath.c_str(), &status) != 0) {
    return false;
  }
  return std::ranges::find(kKinds, static_cast<std::uint32_t>(status.f_type)) != kKinds.end();
}

}  // namespace qm_ordering::ado::embedded
