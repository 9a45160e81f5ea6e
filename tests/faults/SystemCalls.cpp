#include "tests/faults/SystemCalls.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstring>
#include <string_view>
#include <utility>

// The program's own open, write and so on, which all of its code and the shared libraries call in place of
// the C library's: a name that the program defines comes before that of a library.

namespace test {

namespace {

constinit thread_local SystemObserver* t_pObserver = nullptr;
constinit thread_local const char* t_zFolder = nullptr;

// The C library's function behind one of ours.
template <typename Function>
Function* Next(const char* zvName) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, zvName));
}

bool IsBelow(std::string_view zvPath) {
  const std::string_view zFolder = t_zFolder;
  return zvPath.starts_with(zFolder) && (zvPath.size() == zFolder.size() || zvPath[zFolder.size()] == '/');
}

bool IsWatched(const SystemRequest& request) {
  return t_zFolder != nullptr && (IsBelow(request.Path) || IsBelow(request.NewPath));
}

// Nobody is told of what an observer itself does.
class Unobserved {
 public:
  Unobserved() : m_pObserver(std::exchange(t_pObserver, nullptr)) {}
  ~Unobserved() { t_pObserver = m_pObserver; }
  Unobserved(const Unobserved&) = delete;
  Unobserved& operator=(const Unobserved&) = delete;
  SystemObserver& Observer() const { return *m_pObserver; }

 private:
  SystemObserver* m_pObserver;
};

std::string PathOf(int lvDescriptor) {
  const std::string zLink = "/proc/self/fd/" + std::to_string(lvDescriptor);
  char buffer[PATH_MAX];
  const ssize_t lSize = readlink(zLink.c_str(), buffer, sizeof buffer);
  return lSize < 0 ? std::string() : std::string(buffer, static_cast<std::size_t>(lSize));
}

std::string FullPath(const char* zvPath) {
  return zvPath == nullptr || *zvPath == '/' ? std::string(zvPath == nullptr ? "" : zvPath)
                                             : PathOf(AT_FDCWD) + "/" + zvPath;
}

// Makes a request unless its observer fails it, and tells the observer of its success. The answer of a failed
// call is -1 for all of them but mmap.
template <typename Make>
auto Request(SystemRequest request, Make make) -> decltype(make(request)) {
  using Result = decltype(make(request));
  const auto failed = [] {
    if constexpr (std::is_pointer_v<Result>) {
      return MAP_FAILED;
    } else {
      return Result{-1};
    }
  }();
  if (t_pObserver == nullptr || !IsWatched(request)) {
    return make(request);
  }
  const Unobserved unobserved;
  if (request.Creates || request.Kind == SystemCall::Rename) {
    struct stat status {};
    const std::string& zTarget = request.NewPath.empty() ? request.Path : request.NewPath;
    request.WasThere = lstat(zTarget.c_str(), &status) == 0;
  }
  if (const int lError = unobserved.Observer().Before(request)) {
    if (request.Kind == SystemCall::Close) {
      // The system closes the descriptor also where it answers an error.
      make(request);
    }
    errno = lError;
    return failed;
  }
  const Result result = make(request);
  if (result != failed) {
    const int lKept = errno;
    if (request.Kind == SystemCall::Open) {
      if constexpr (!std::is_pointer_v<Result>) {
        request.Descriptor = static_cast<int>(result);
      }
    } else if (request.Kind == SystemCall::Write) {
      if constexpr (!std::is_pointer_v<Result>) {
        request.Size = static_cast<std::size_t>(result);
      }
    }
    unobserved.Observer().After(request);
    errno = lKept;
  }
  return result;
}

SystemRequest On(SystemCall kind, int lvDescriptor) {
  SystemRequest request{};
  request.Kind = kind;
  request.Descriptor = lvDescriptor;
  if (t_pObserver != nullptr) {
    const Unobserved unobserved;
    const int lKept = errno;
    request.Path = PathOf(lvDescriptor);
    errno = lKept;
  }
  return request;
}

SystemRequest At(SystemCall kind, const char* zvPath) {
  SystemRequest request{};
  request.Kind = kind;
  if (t_pObserver != nullptr) {
    const Unobserved unobserved;
    request.Path = FullPath(zvPath);
  }
  return request;
}

std::size_t Portion(const SystemRequest& request) {
  return t_pObserver != nullptr && IsBelow(request.Path)
             ? std::clamp<std::size_t>(t_pObserver->Shortened(request), request.Size > 0 ? 1 : 0,
                                       request.Size)
             : request.Size;
}

int Open(const char* zvPath, int lvFlags, mode_t lvMode, const char* zvName) {
  using Function = int(const char*, int, ...);
  SystemRequest request = At(SystemCall::Open, zvPath);
  request.Creates = (lvFlags & O_CREAT) != 0;
  return Request(std::move(request),
                 [&](SystemRequest&) { return Next<Function>(zvName)(zvPath, lvFlags, lvMode); });
}

ssize_t ReadAt(int lvDescriptor, void* pvData, std::size_t lvSize, std::int64_t lvOffset) {
  SystemRequest request = On(SystemCall::Read, lvDescriptor);
  request.Size = lvSize;
  request.Offset = lvOffset;
  const std::size_t lPortion = Portion(request);
  return Request(std::move(request), [&](SystemRequest&) {
    static auto* const pNext = Next<ssize_t(int, void*, std::size_t, off_t)>("pread64");
    return pNext(lvDescriptor, pvData, lPortion, lvOffset);
  });
}

ssize_t WriteAt(int lvDescriptor, const void* pvData, std::size_t lvSize, std::int64_t lvOffset) {
  SystemRequest request = On(SystemCall::Write, lvDescriptor);
  request.Data = pvData;
  request.Size = lvSize;
  request.Offset = lvOffset;
  const std::size_t lPortion = Portion(request);
  return Request(std::move(request), [&](SystemRequest&) {
    static auto* const pNext = Next<ssize_t(int, const void*, std::size_t, off_t)>("pwrite64");
    return pNext(lvDescriptor, pvData, lPortion, lvOffset);
  });
}

int Truncate(int lvDescriptor, std::int64_t lvSize) {
  SystemRequest request = On(SystemCall::Truncate, lvDescriptor);
  request.Size = static_cast<std::size_t>(lvSize);
  return Request(std::move(request), [&](SystemRequest&) {
    static auto* const pNext = Next<int(int, off_t)>("ftruncate64");
    return pNext(lvDescriptor, lvSize);
  });
}

int Status(const char* zvPath, struct stat* prStatus, const char* zvName) {
  return Request(At(SystemCall::Status, zvPath), [&](SystemRequest&) {
    return Next<int(const char*, struct stat*)>(zvName)(zvPath, prStatus);
  });
}

int StatusOf(int lvDescriptor, struct stat* prStatus) {
  return Request(On(SystemCall::Status, lvDescriptor), [&](SystemRequest&) {
    static auto* const pNext = Next<int(int, struct stat*)>("fstat");
    return pNext(lvDescriptor, prStatus);
  });
}

int Control(int lvDescriptor, int lvCommand, void* pvArgument) {
  static auto* const pNext = Next<int(int, int, ...)>("fcntl64");
  if (lvCommand != F_SETLK && lvCommand != F_SETLKW && lvCommand != F_GETLK) {
    return pNext(lvDescriptor, lvCommand, pvArgument);
  }
  SystemRequest request = On(SystemCall::Lock, lvDescriptor);
  request.Unlocks = static_cast<const struct flock*>(pvArgument)->l_type == F_UNLCK;
  return Request(std::move(request),
                 [&](SystemRequest&) { return pNext(lvDescriptor, lvCommand, pvArgument); });
}

void* Map(void* pvAddress, std::size_t lvSize, int lvProtection, int lvFlags, int lvDescriptor,
          std::int64_t lvOffset) {
  SystemRequest request{};
  request.Kind = SystemCall::Map;
  if (lvDescriptor >= 0) {
    request = On(SystemCall::Map, lvDescriptor);
  }
  return Request(std::move(request), [&](SystemRequest&) {
    static auto* const pNext = Next<void*(void*, std::size_t, int, int, int, off_t)>("mmap64");
    return pNext(pvAddress, lvSize, lvProtection, lvFlags, lvDescriptor, lvOffset);
  });
}

SystemRequest Between(const char* zvOld, const char* zvNew, bool bvKeepsOld) {
  SystemRequest request = At(SystemCall::Rename, zvOld);
  if (t_pObserver != nullptr) {
    const Unobserved unobserved;
    request.NewPath = FullPath(zvNew);
  }
  request.KeepsOld = bvKeepsOld;
  return request;
}

}  // namespace

const char* NameOf(SystemCall kind) {
  switch (kind) {
    case SystemCall::Open:
      return "open";
    case SystemCall::Close:
      return "close";
    case SystemCall::Read:
      return "read";
    case SystemCall::Write:
      return "write";
    case SystemCall::Sync:
      return "sync";
    case SystemCall::Truncate:
      return "truncate";
    case SystemCall::Lock:
      return "lock";
    case SystemCall::Delete:
      return "delete";
    case SystemCall::Rename:
      return "rename";
    case SystemCall::MakeFolder:
      return "make folder";
    case SystemCall::Status:
      return "status";
    case SystemCall::Permissions:
      return "permissions";
    case SystemCall::Map:
      return "map";
  }
  return "";
}

SystemWatch::SystemWatch(SystemObserver& observer, std::string zvFolder) {
  t_zFolder = strdup(zvFolder.c_str());
  t_pObserver = &observer;
}

SystemWatch::~SystemWatch() {
  t_pObserver = nullptr;
  free(const_cast<char*>(t_zFolder));
  t_zFolder = nullptr;
}

}  // namespace test

#define QM_SYSTEM extern "C" __attribute__((visibility("default")))

using test::SystemCall;
using test::SystemRequest;

namespace {

mode_t ModeOf(int lvFlags, va_list arguments) {
  return (lvFlags & (O_CREAT | __O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
}

}  // namespace

QM_SYSTEM int open(const char* zvPath, int lvFlags, ...) {
  va_list arguments;
  va_start(arguments, lvFlags);
  const mode_t lMode = ModeOf(lvFlags, arguments);
  va_end(arguments);
  return test::Open(zvPath, lvFlags, lMode, "open");
}

QM_SYSTEM int open64(const char* zvPath, int lvFlags, ...) {
  va_list arguments;
  va_start(arguments, lvFlags);
  const mode_t lMode = ModeOf(lvFlags, arguments);
  va_end(arguments);
  return test::Open(zvPath, lvFlags, lMode, "open64");
}

QM_SYSTEM int mkostemp(char* zvTemplate, int lvFlags) {
  // The name is known only afterwards: the request is for the folder's, and told again with the file's.
  SystemRequest request = test::At(SystemCall::Open, zvTemplate);
  request.Creates = true;
  return test::Request(std::move(request), [&](SystemRequest& made) {
    static auto* const pNext = test::Next<int(char*, int)>("mkostemp");
    const int lFile = pNext(zvTemplate, lvFlags);
    made.Path = zvTemplate;
    return lFile;
  });
}

QM_SYSTEM int close(int lvDescriptor) {
  return test::Request(test::On(SystemCall::Close, lvDescriptor), [&](SystemRequest&) {
    static auto* const pNext = test::Next<int(int)>("close");
    return pNext(lvDescriptor);
  });
}

QM_SYSTEM ssize_t read(int lvDescriptor, void* pvData, std::size_t lvSize) {
  SystemRequest request = test::On(SystemCall::Read, lvDescriptor);
  request.Size = lvSize;
  const std::size_t lPortion = test::Portion(request);
  return test::Request(std::move(request), [&](SystemRequest&) {
    static auto* const pNext = test::Next<ssize_t(int, void*, std::size_t)>("read");
    return pNext(lvDescriptor, pvData, lPortion);
  });
}

QM_SYSTEM ssize_t pread64(int lvDescriptor, void* pvData, std::size_t lvSize, off64_t lvOffset) {
  return test::ReadAt(lvDescriptor, pvData, lvSize, lvOffset);
}

QM_SYSTEM ssize_t pread(int lvDescriptor, void* pvData, std::size_t lvSize, off_t lvOffset) {
  return test::ReadAt(lvDescriptor, pvData, lvSize, lvOffset);
}

QM_SYSTEM ssize_t write(int lvDescriptor, const void* pvData, std::size_t lvSize) {
  SystemRequest request = test::On(SystemCall::Write, lvDescriptor);
  request.Data = pvData;
  request.Size = lvSize;
  // From where it stands, which an observer that looks wants to know.
  request.Offset = request.Path.empty() ? 0 : std::max<off_t>(0, lseek(lvDescriptor, 0, SEEK_CUR));
  const std::size_t lPortion = test::Portion(request);
  return test::Request(std::move(request), [&](SystemRequest&) {
    static auto* const pNext = test::Next<ssize_t(int, const void*, std::size_t)>("write");
    return pNext(lvDescriptor, pvData, lPortion);
  });
}

QM_SYSTEM ssize_t pwrite64(int lvDescriptor, const void* pvData, std::size_t lvSize, off64_t lvOffset) {
  return test::WriteAt(lvDescriptor, pvData, lvSize, lvOffset);
}

// Nothing that these tests write must outlive the machine, so nothing is flushed in truth.
QM_SYSTEM int fsync(int lvDescriptor) {
  return test::Request(test::On(SystemCall::Sync, lvDescriptor), [](SystemRequest&) { return 0; });
}

QM_SYSTEM int fdatasync(int lvDescriptor) {
  return test::Request(test::On(SystemCall::Sync, lvDescriptor), [](SystemRequest&) { return 0; });
}

QM_SYSTEM int ftruncate64(int lvDescriptor, off64_t lvSize) noexcept {
  return test::Truncate(lvDescriptor, lvSize);
}

QM_SYSTEM int ftruncate(int lvDescriptor, off_t lvSize) noexcept {
  return test::Truncate(lvDescriptor, lvSize);
}

QM_SYSTEM int fcntl64(int lvDescriptor, int lvCommand, ...) {
  va_list arguments;
  va_start(arguments, lvCommand);
  void* pArgument = va_arg(arguments, void*);
  va_end(arguments);
  return test::Control(lvDescriptor, lvCommand, pArgument);
}

QM_SYSTEM int flock(int lvDescriptor, int lvOperation) noexcept {
  return test::Request(test::On(SystemCall::Lock, lvDescriptor), [&](SystemRequest&) {
    static auto* const pNext = test::Next<int(int, int)>("flock");
    return pNext(lvDescriptor, lvOperation);
  });
}

QM_SYSTEM int unlink(const char* zvPath) noexcept {
  return test::Request(test::At(SystemCall::Delete, zvPath), [&](SystemRequest&) {
    static auto* const pNext = test::Next<int(const char*)>("unlink");
    return pNext(zvPath);
  });
}

QM_SYSTEM int unlinkat(int lvFolder, const char* zvName, int lvFlags) noexcept {
  SystemRequest request = test::On(SystemCall::Delete, lvFolder);
  request.Path += std::string("/") + zvName;
  return test::Request(std::move(request), [&](SystemRequest&) {
    static auto* const pNext = test::Next<int(int, const char*, int)>("unlinkat");
    return pNext(lvFolder, zvName, lvFlags);
  });
}

QM_SYSTEM int rmdir(const char* zvPath) noexcept {
  return test::Request(test::At(SystemCall::Delete, zvPath), [&](SystemRequest&) {
    static auto* const pNext = test::Next<int(const char*)>("rmdir");
    return pNext(zvPath);
  });
}

QM_SYSTEM int rename(const char* zvOld, const char* zvNew) noexcept {
  return test::Request(test::Between(zvOld, zvNew, false), [&](SystemRequest&) {
    static auto* const pNext = test::Next<int(const char*, const char*)>("rename");
    return pNext(zvOld, zvNew);
  });
}

QM_SYSTEM int renameat2(int lvOldFolder, const char* zvOld, int lvNewFolder, const char* zvNew,
                        unsigned lvFlags) noexcept {
  return test::Request(test::Between(zvOld, zvNew, false), [&](SystemRequest&) {
    static auto* const pNext = test::Next<int(int, const char*, int, const char*, unsigned)>("renameat2");
    return pNext(lvOldFolder, zvOld, lvNewFolder, zvNew, lvFlags);
  });
}

QM_SYSTEM int link(const char* zvOld, const char* zvNew) noexcept {
  return test::Request(test::Between(zvOld, zvNew, true), [&](SystemRequest&) {
    static auto* const pNext = test::Next<int(const char*, const char*)>("link");
    return pNext(zvOld, zvNew);
  });
}

QM_SYSTEM int mkdir(const char* zvPath, mode_t lvMode) noexcept {
  return test::Request(test::At(SystemCall::MakeFolder, zvPath), [&](SystemRequest&) {
    static auto* const pNext = test::Next<int(const char*, mode_t)>("mkdir");
    return pNext(zvPath, lvMode);
  });
}

QM_SYSTEM DIR* opendir(const char* zvPath) {
  DIR* pFolder = nullptr;
  test::Request(test::At(SystemCall::Open, zvPath), [&](SystemRequest&) {
    static auto* const pNext = test::Next<DIR*(const char*)>("opendir");
    pFolder = pNext(zvPath);
    return pFolder == nullptr ? -1 : dirfd(pFolder);
  });
  return pFolder;
}

QM_SYSTEM int stat(const char* zvPath, struct stat* prStatus) noexcept {
  return test::Status(zvPath, prStatus, "stat");
}
QM_SYSTEM int stat64(const char* zvPath, struct stat64* prStatus) noexcept {
  return test::Status(zvPath, reinterpret_cast<struct stat*>(prStatus), "stat64");
}
QM_SYSTEM int lstat(const char* zvPath, struct stat* prStatus) noexcept {
  return test::Status(zvPath, prStatus, "lstat");
}
QM_SYSTEM int lstat64(const char* zvPath, struct stat64* prStatus) noexcept {
  return test::Status(zvPath, reinterpret_cast<struct stat*>(prStatus), "lstat64");
}
QM_SYSTEM int fstat(int lvDescriptor, struct stat* prStatus) noexcept {
  return test::StatusOf(lvDescriptor, prStatus);
}
QM_SYSTEM int fstat64(int lvDescriptor, struct stat64* prStatus) noexcept {
  return test::StatusOf(lvDescriptor, reinterpret_cast<struct stat*>(prStatus));
}

QM_SYSTEM int access(const char* zvPath, int lvKind) noexcept {
  return test::Request(test::At(SystemCall::Status, zvPath), [&](SystemRequest&) {
    static auto* const pNext = test::Next<int(const char*, int)>("access");
    return pNext(zvPath, lvKind);
  });
}

QM_SYSTEM int chmod(const char* zvPath, mode_t lvMode) noexcept {
  return test::Request(test::At(SystemCall::Permissions, zvPath), [&](SystemRequest&) {
    static auto* const pNext = test::Next<int(const char*, mode_t)>("chmod");
    return pNext(zvPath, lvMode);
  });
}

QM_SYSTEM int fchmod(int lvDescriptor, mode_t lvMode) noexcept {
  return test::Request(test::On(SystemCall::Permissions, lvDescriptor), [&](SystemRequest&) {
    static auto* const pNext = test::Next<int(int, mode_t)>("fchmod");
    return pNext(lvDescriptor, lvMode);
  });
}

QM_SYSTEM int fchown(int lvDescriptor, uid_t lvUser, gid_t lvGroup) noexcept {
  return test::Request(test::On(SystemCall::Permissions, lvDescriptor), [&](SystemRequest&) {
    static auto* const pNext = test::Next<int(int, uid_t, gid_t)>("fchown");
    return pNext(lvDescriptor, lvUser, lvGroup);
  });
}

QM_SYSTEM void* mmap64(void* pvAddress, std::size_t lvSize, int lvProtection, int lvFlags, int lvDescriptor,
                       off64_t lvOffset) noexcept {
  return test::Map(pvAddress, lvSize, lvProtection, lvFlags, lvDescriptor, lvOffset);
}

QM_SYSTEM int usleep(useconds_t lvMicroseconds) {
  if (test::t_pObserver != nullptr && !test::t_pObserver->Sleeps()) {
    return 0;
  }
  static auto* const pNext = test::Next<int(useconds_t)>("usleep");
  return pNext(lvMicroseconds);
}
