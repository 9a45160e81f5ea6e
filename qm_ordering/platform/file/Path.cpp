#include "qm_ordering/platform/file/Path.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "qm_ordering/platform/file/SystemError.h"
#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering::file {

std::string AbsolutePath(std::string_view zvName) {
  if (zvName.find('\0') != std::string_view::npos) {
    throw Failure(failure::kPathNotFound, "The file name \"" + std::string(zvName.data(), zvName.find('\0')) +
                                              "\" goes on behind a zero byte, which no file name can hold.");
  }
  if (zvName.starts_with('/')) {
    return std::string(zvName);
  }
  std::error_code error;
  const std::filesystem::path current = std::filesystem::current_path(error);
  if (error) {
    throw Failure(failure::kPathNotFound, "The file name \"" + std::string(zvName) +
                                              "\" is relative, and the current folder cannot be found (" +
                                              SystemErrorText(error.value()) +
                                              "). Give the name with its full path.");
  }
  return (current / zvName).string();
}

std::string RealPath(std::string_view zvName) {
  const std::filesystem::path path = AbsolutePath(zvName);
  std::error_code error;
  const std::filesystem::path real = std::filesystem::canonical(path, error);
  if (!error) {
    return real.string();
  }
  std::error_code ignored;
  if (std::filesystem::is_symlink(std::filesystem::symlink_status(path, ignored))) {
    throw Failure(failure::kPathNotFound, "The symbolic link " + path.string() + " leads nowhere (" +
                                              SystemErrorText(error.value()) + "). Choose another name.");
  }
  const std::filesystem::path folder = std::filesystem::canonical(path.parent_path(), error);
  if (error) {
    throw Failure(failure::kPathNotFound, "The folder " + path.parent_path().string() + " cannot be found (" +
                                              SystemErrorText(error.value()) +
                                              "). Make it, or choose another.");
  }
  return (folder / path.filename()).string();
}

bool IsSameName(const std::string& zvLeft, const std::string& zvRight) {
  return std::filesystem::path(zvLeft).filename() == std::filesystem::path(zvRight).filename();
}

bool IsSameFile(const std::string& zvLeft, const std::string& zvRight) {
  struct stat left {};
  struct stat right {};
  return zvLeft == zvRight || (stat(zvLeft.c_str(), &left) == 0 && stat(zvRight.c_str(), &right) == 0 &&
                               left.st_dev == right.st_dev && left.st_ino == right.st_ino);
}

std::string SystemPath(std::string_view zvBuiltName, std::string_view zvSetting) {
  if (zvBuiltName.empty() || zvBuiltName.starts_with('\\')) {
    throw Failure(failure::kPathNotFound, "No folder stands before \"" + std::string(zvBuiltName) +
                                              "\". Set \"" + std::string(zvSetting) + "\" to a folder.");
  }
  std::string zPath(zvBuiltName);
  std::replace(zPath.begin(), zPath.end(), '\\', '/');
  return AbsolutePath(zPath);
}

}  // namespace qm_ordering::file
