#pragma once

#include <sqlite3.h>
#include <sys/types.h>

#include <cstdint>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "qm_ordering/platform/ado/embedded/Engine.h"
#include "qm_ordering/platform/ado/embedded/Prepared.h"
#include "qm_ordering/platform/ado/embedded/Translator.h"
#include "qm_ordering/platform/text/Names.h"

namespace qm_ordering::ado::embedded {

// One open session of the engine on a store file, with the statements that it keeps prepared. It is used by
// one connection at a time and rests in the thread's pool between them.
class PooledSession {
 public:
  enum class Use {
    Store,  // shared with other programs
    Copy,   // of this session alone, kept without a log and never in the pool
  };

  // zvName is what messages call the file. Raises kStoreUnavailable, naming file, cause and remedy.
  PooledSession(const std::string& zvPath, Use use, const std::string& zvName);
  ~PooledSession();
  PooledSession(const PooledSession&) = delete;
  PooledSession& operator=(const PooledSession&) = delete;

  const std::string& Path() const { return m_zPath; }
  const std::string& Name() const { return m_zName; }
  sqlite3* Database() const { return m_oDatabase.get(); }
  // When it was opened.
  std::int32_t SchemaVersion() const { return m_lSchemaVersion; }
  const ColumnKinds& Kinds() const { return m_oKinds; }

  // False when the session must not rest in the pool: it saw a fatal answer, its file was of an older version
  // or is no longer the one at the path that it has written to, or this process is a fork of the one that
  // opened it.
  bool MayRest() noexcept;
  // Whether a session that rested may be used: its file is still the one at the path, and could be written if
  // it may be written by now.
  bool IsUsable() const;

  // False in a fork of the process that opened the session. The session is that process's there: it is not
  // used, and nothing of it is ended.
  bool IsOfThisProcess() const noexcept;
  // Raises kStoreUnavailable in such a fork, and kInvalidCall while the thread's stores are barred.
  void RequireMayBeUsed() const;

  // A statement ready to be bound, from those kept or new. Raises what RequireMayBeUsed raises.
  std::unique_ptr<Prepared> Prepare(const Translation& translation);
  // Gives its parameter at that position, from 1, the value, of which the engine makes a copy.
  void Bind(const Prepared& statement, int lvPosition, const Parameter& parameter) {
    Bind(statement, lvPosition, parameter, SQLITE_TRANSIENT);
  }
  // Likewise, without a copy: the parameter stays as it is until the statement is kept or ended.
  void BindInPlace(const Prepared& statement, int lvPosition, const Parameter& parameter) {
    Bind(statement, lvPosition, parameter, SQLITE_STATIC);
  }
  // Takes a statement back.
  void Keep(std::unique_ptr<Prepared> statement) noexcept;

  // Runs a text of our own without values or rows: BEGIN, COMMIT, ROLLBACK.
  void Run(const char* zvText);

  // The failure for an answer of the engine; a fatal one is remembered.
  Failure Answer(int lvResult);
  // Brings the log into the file when it has grown; called when nothing runs.
  void Rest() noexcept;

 private:
  void Bind(const Prepared& statement, int lvPosition, const Parameter& parameter,
            sqlite3_destructor_type copy);

  using StatementList = std::list<std::unique_ptr<Prepared>>;

  // Among what this process has open for as long as it lives, also when the constructor fails.
  class Enlisted {
   public:
    explicit Enlisted(const PooledSession& session) : m_oSession(session) {}
    ~Enlisted();
    Enlisted(const Enlisted&) = delete;
    Enlisted& operator=(const Enlisted&) = delete;

    // Raises kStoreUnavailable while the process has another file of the session's name open.
    void Enter();

   private:
    static Enlisted* s_pFirst;
    const PooledSession& m_oSession;
    bool m_bEntered = false;
    Enlisted* m_pNext = nullptr;
  };

  static int AfterCommit(void* pSession, sqlite3*, const char*, int lvPages);
  // The names of the file and its log by which the engine opened them: without symbolic links.
  const char* EngineName() const noexcept;
  const char* LogName() const noexcept;
  bool IsFileAt(const char* zvPath) const noexcept;
  bool IsFileGoneFrom(const char* zvPath) const noexcept;
  void TakeLogAway() noexcept;
  void LetLogBeWritten() noexcept;
  bool KeepsLog() const;
  void Configure();
  void RequireSameFile();
  std::string FindReadOnlyFile();
  void LoadColumnKinds();
  void RebuildTextIndexesIfFoldingChanged();

  std::string m_zPath;
  std::string m_zName;
  Use m_lUse;
  std::string m_zLogIndexPath;
  pid_t m_lProcess;
  dev_t m_lDevice = 0;
  ino_t m_lInode = 0;
  ino_t m_lLogInode = 0;
  Enlisted m_oEnlisted{*this};  // ends when the file is closed
  DatabaseHandle m_oDatabase;
  std::int32_t m_lSchemaVersion = 0;
  std::string m_zReadOnlyFile;
  bool m_bBroken = false;
  sqlite3_int64 m_lChangesLooked = 0;  // what had been written when the file was last looked at
  int m_lLogPages = 0;
  int m_lCheckpointAt;
  std::unordered_map<std::string, ColumnKind, text::HashName, text::EqualName> m_oColumnKinds;
  ColumnKinds m_oKinds;
  StatementList m_oStatements;  // the most recently used first
  std::unordered_map<std::string_view, StatementList::iterator> m_oStatementsByText;
};

}  // namespace qm_ordering::ado::embedded
