#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace test {

enum class SystemCall {
  Open,
  Close,
  Read,
  Write,
  Sync,
  Truncate,
  Lock,
  Delete,
  Rename,
  MakeFolder,
  Status,
  Permissions,
  Map,  // the log's shared memory
};

const char* NameOf(SystemCall kind);

// What the program is about to ask of the system, or has asked.
struct SystemRequest {
  SystemCall Kind;
  std::string Path;     // of the file or folder, with symbolic links followed for one that is open
  int Descriptor = -1;  // where it is open; after a successful opening the new one
  const void* Data = nullptr;
  std::size_t Size = 0;     // of a write what was written in fact; of a truncation the new size
  std::int64_t Offset = 0;  // of a read or write
  bool Creates = false;     // an opening that may make the file
  bool WasThere = false;    // what stood under the name before
  std::string NewPath;      // of a renaming or a link
  bool KeepsOld = false;    // a link: the old name stays
  bool Unlocks = false;     // a lock that is given back
};

// Sees every request of this program, the engine's included, that touches a file or a folder, from the thread
// that installed it.
class SystemObserver {
 public:
  virtual ~SystemObserver() = default;
  // Answers the error (errno) that the request is to fail with in place of being made; 0 to let it pass.
  virtual int Before(const SystemRequest& request) = 0;
  // After a request that succeeded.
  virtual void After(const SystemRequest&) {}
  // Answers how much of a read or write of that size is done at once.
  virtual std::size_t Shortened(const SystemRequest& request) { return request.Size; }
  // The program waits for a lock; answers whether it really sleeps.
  virtual bool Sleeps() { return true; }
};

// Watches what happens below a folder for the length of a scope.
class SystemWatch {
 public:
  SystemWatch(SystemObserver& observer, std::string zvFolder);
  ~SystemWatch();
  SystemWatch(const SystemWatch&) = delete;
  SystemWatch& operator=(const SystemWatch&) = delete;
};

}  // namespace test
