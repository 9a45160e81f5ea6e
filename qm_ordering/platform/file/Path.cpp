#include "qm_ordering/platform/file/Path.h"

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
