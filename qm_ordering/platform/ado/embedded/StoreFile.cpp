#include "qm_ordering/platform/ado/embedded/StoreFile.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <vector>

#include "qm_ordering/platform/ado/embedded/Engine.h"
#include "qm_ordering/platform/file/SystemError.h"
#include "qm_ordering/platform/text/Unicode.h"
#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering::ado::embedded {

namespace {

constexpr const char* kMoveAway =
    "Move it away and create a store with `qm-ordering store create`, or set OrderingDatabasePath to the "
    "folder that "
    "holds one";
constexpr const char* kHowToCreate =
    "Create one with `qm-ordering store create`, or set OrderingDatabasePath to the folder that holds it";

// The provider's own table: the folding that the text indexes were built with.
constexpr const char* kFormatScript =
    "create table sysFormat (zName TEXT PRIMARY KEY NOT NULL, zValue TEXT NOT NULL) WITHOUT ROWID;\n";

[[noreturn]] void RaiseUnusable(const std::string& zvPath, const std::string& zvWhy) {
  throw Failure(failure::kStoreUnavailable, "The order store " + zvPath + " cannot be used: " + zvWhy + ".");
}

[[noreturn]] void RaiseNotCreated(const std::string& zvPath, const std::string& zvWhy) {
  throw Failure(failure::kFileAccess, "The order store " + zvPath + " was not created: " + zvWhy + ".");
}

std::int32_t BigEndian(const unsigned char* pBytes) {
  return static_cast<std::int32_t>((static_cast<std::uint32_t>(pBytes[0]) << 24) |
                                   (static_cast<std::uint32_t>(pBytes[1]) << 16) |
                                   (static_cast<std::uint32_t>(pBytes[2]) << 8) | pBytes[3]);
}

// So that a name that was made in the folder outlives a power failure.
void FlushFolder(const std::filesystem::path& zvFolder) {
  const int lFolder = open(zvFolder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (lFolder >= 0) {
    fsync(lFolder);
    close(lFolder);
  }
}

// The files of a store that is being made; they go at the end of the scope.
class UnfinishedStore {
 public:
  // A name that no other thread, process or machine takes for its own.
  explicit UnfinishedStore(const std::string& zvFinalPath)
      : m_zFinalPath(zvFinalPath), m_zPath(zvFinalPath + ".new.XXXXXX") {
    const int lFile = mkostemp(m_zPath.data(), O_CLOEXEC);
    if (lFile < 0) {
      RaiseNotCreated(zvFinalPath, file::SystemErrorText(errno));
    }
    close(lFile);
  }
  ~UnfinishedStore() { Remove(); }
  UnfinishedStore(const UnfinishedStore&) = delete;
  UnfinishedStore& operator=(const UnfinishedStore&) = delete;

  const std::string& Path() const { return m_zPath; }

  // Gives the store its final name, unless a file of that name has come into being.
  void Publish() {
    int lResult = renameat2(AT_FDCWD, m_zPath.c_str(), AT_FDCWD, m_zFinalPath.c_str(), RENAME_NOREPLACE);
    if (lResult != 0 && (errno == EINVAL || errno == ENOSYS)) {
      // A file system without that call.
      lResult = link(m_zPath.c_str(), m_zFinalPath.c_str());
    }
    if (lResult != 0) {
      RaiseNotCreated(
          m_zFinalPath,
          errno == EEXIST
              ? "a file of that name exists; it was not touched. If it is no order store, move it away"
              : file::SystemErrorText(errno));
    }
    FlushFolder(std::filesystem::path(m_zFinalPath).parent_path());
  }

 private:
  void Remove() {
    for (const char* zSuffix : {"", "-journal", "-wal", "-shm"}) {
      unlink((m_zPath + zSuffix).c_str());
    }
  }

  std::string m_zFinalPath;
  std::string m_zPath;
};

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
      if (mkdir(folder.c_str(), S_IRWXU) == 0) {
        m_zMade.push_back(folder.string());
        FlushFolder(folder.parent_path());
      } else if (errno != EEXIST) {
        struct stat status {};
        const int lError = errno;
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

// The log with something in it that lies beside the store; empty when none does.
std::string LogBeside(const std::string& zvPath) {
  for (const char* zSuffix : {"-wal", "-journal"}) {
    std::string zLog = zvPath + zSuffix;
    struct stat status {};
    if (stat(zLog.c_str(), &status) == 0 && status.st_size > 0) {
      return zLog;
    }
  }
  return {};
}

// zvName is what messages call the file.
DatabaseHandle OpenEngine(const std::string& zvPath, const std::string& zvName, int lvFlags) {
  sqlite3* pDatabase = nullptr;
  const int lResult = sqlite3_open_v2(zvPath.c_str(), &pDatabase, lvFlags, nullptr);
  DatabaseHandle db(pDatabase);
  if (lResult != SQLITE_OK) {
    throw EngineFailure(pDatabase, lResult, zvName);
  }
  return db;
}

void FillStore(const std::string& zvPath, const std::string& zvName, const std::string& zvSchemaScript) {
  DatabaseHandle db = OpenEngine(zvPath, zvName, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX);
  AddTextCollation(db.get(), zvName);
  RunScript(db.get(),
            "pragma journal_mode = delete;\npragma synchronous = full;\npragma application_id = " +
                std::to_string(kApplicationId) +
                ";\npragma user_version = " + std::to_string(kSchemaVersion) + ";\nbegin exclusive;\n" +
                kFormatScript + "insert into sysFormat values ('folding', '" + text::FoldingVersion() +
                "');\n" + zvSchemaScript + "\ncommit;",
            zvName);
  if (!IsOnNetwork(zvPath)) {
    RunScript(db.get(), "pragma journal_mode = wal;", zvName);
  }
  const int lClosed = sqlite3_close(db.get());
  if (lClosed != SQLITE_OK) {
    throw EngineFailure(db.get(), lClosed, zvName);
  }
  static_cast<void>(db.release());
}

// Whether the file ends with a page. While there is a log the engine may be in the middle of adding one.
bool HasWholePages(sqlite3_file& file, std::string_view zvHeader) {
  const int lCoded = static_cast<unsigned char>(zvHeader[16]) << 8 | static_cast<unsigned char>(zvHeader[17]);
  // 65,536 does not fit into the two bytes.
  const int lPageSize = lCoded == 1 ? 65536 : lCoded;
  sqlite3_int64 lSize = 0;
  return lPageSize > 1 && file.pMethods->xFileSize(&file, &lSize) == SQLITE_OK && lSize % lPageSize == 0;
}

}  // namespace

void CreateStoreFile(const std::string& zvPath, const std::string& zvSchemaScript) {
  MadeFolders folders;
  folders.MakeFor(zvPath);
  struct stat status {};
  if (lstat(zvPath.c_str(), &status) == 0) {
    RaiseNotCreated(zvPath,
                    "a file of that name exists; it was not touched. If it is no order store, move it away");
  }
  const std::string zLog = LogBeside(zvPath);
  if (!zLog.empty()) {
    // The engine would read it into the new store.
    RaiseNotCreated(zvPath, zLog + ", the log of an earlier store, is there. Move it away");
  }
  UnfinishedStore store(zvPath);
  try {
    FillStore(store.Path(), zvPath, zvSchemaScript);
  } catch (const Failure& failure) {
    throw Failure(failure::kFileAccess, failure.Description() + " It was not created.");
  }
  store.Publish();
  folders.Keep();
}

void RequireOrdinaryFile(const std::string& zvPath) {
  struct stat status {};
  if (stat(zvPath.c_str(), &status) != 0) {
    const int lError = errno;
    const std::string zFolder = std::filesystem::path(zvPath).parent_path().string();
    if (lError != ENOENT && lError != ENOTDIR) {
      RaiseUnusable(zvPath,
                    file::SystemErrorText(lError) + ". Check the folder " + zFolder + " and its permissions");
    }
    const bool bFolder = stat(zFolder.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
    RaiseUnusable(zvPath, (bFolder ? "there is no such file. " : "there is no folder " + zFolder + ". ") +
                              kHowToCreate);
  }
  if (S_ISDIR(status.st_mode)) {
    RaiseUnusable(zvPath, std::string("it is a folder. ") + kMoveAway);
  }
  if (!S_ISREG(status.st_mode)) {
    RaiseUnusable(zvPath, std::string("it is not an ordinary file. ") + kMoveAway);
  }
  if (status.st_size == 0) {
    RaiseUnusable(zvPath, "it is empty (0 bytes). Restore a backup, or move it away and create a store");
  }
}

void RequireOrderStore(sqlite3* db, const std::string& zvPath) {
  sqlite3_file* pFile = nullptr;
  if (sqlite3_file_control(db, "main", SQLITE_FCNTL_FILE_POINTER, &pFile) != SQLITE_OK || pFile == nullptr ||
      pFile->pMethods == nullptr) {
    RaiseUnusable(zvPath, "the engine gives no handle on it");
  }
  std::array<unsigned char, 100> bytes{};
  const int lRead = pFile->pMethods->xRead(pFile, bytes.data(), static_cast<int>(bytes.size()), 0);
  if (lRead != SQLITE_OK && lRead != SQLITE_IOERR_SHORT_READ) {
    throw EngineFailure(nullptr, lRead, zvPath);
  }
  const std::string_view zHeader(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  const std::string_view zMaker = zHeader.substr(4, 15);
  if (zMaker == "Standard Jet DB" || zMaker == "Standard ACE DB") {
    RaiseUnusable(
        zvPath,
        std::string(
            "it is a database of the Access engine itself, which this library neither reads nor writes. ") +
            kMoveAway);
  }
  if (!zHeader.starts_with(std::string_view("SQLite format 3\0", 16))) {
    RaiseUnusable(zvPath, std::string("it is a file of another kind, not an order store. ") + kMoveAway);
  }
  if (lRead == SQLITE_IOERR_SHORT_READ) {
    RaiseUnusable(zvPath, "it is truncated. Restore a backup");
  }
  if (BigEndian(bytes.data() + 68) != kApplicationId) {
    RaiseUnusable(zvPath,
                  std::string("it is a database of another program, not an order store. ") + kMoveAway);
  }
  const std::int32_t lVersion = BigEndian(bytes.data() + 60);
  if (lVersion > kSchemaVersion) {
    RaiseUnusable(zvPath, "it was written by a newer version of this library (schema " +
                              std::to_string(lVersion) + ", this one knows " +
                              std::to_string(kSchemaVersion) + "). Update the program");
  }
  if (lVersion < 1) {
    RaiseUnusable(zvPath, "it has no valid schema version. Restore a backup");
  }
  const auto bIsCut = [&] {
    return !HasWholePages(*pFile, zHeader) && LogBeside(sqlite3_db_filename(db, "main")).empty();
  };
  // Looked at twice: another program may have ended its commit between the two looks at file and log.
  if (bIsCut() && bIsCut()) {
    RaiseUnusable(zvPath, "it is truncated. Restore a backup");
  }
}

std::string DescribeSchema(sqlite3* db, const std::string& zvPath) {
  return ReadText(
      db,
      "select group_concat(sql, char(10)) from (select sql from sqlite_schema where sql is not null and "
      "name not like 'sqlite_%' order by type, name)",
      zvPath);
}

std::string DescribeSchemaOfScript(const std::string& zvSchemaScript) {
  const std::string zName = ":memory:";
  const DatabaseHandle db =
      OpenEngine(zName, zName, SQLITE_OPEN_READWRITE | SQLITE_OPEN_MEMORY | SQLITE_OPEN_NOMUTEX);
  AddTextCollation(db.get(), zName);
  RunScript(db.get(), kFormatScript + zvSchemaScript, zName);
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
