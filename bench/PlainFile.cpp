#include "bench/PlainFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>

namespace bench {

namespace {

void Require(bool bvDone, const std::string& zvFile) {
  if (!bvDone) {
    throw std::runtime_error("The file " + zvFile + " cannot be written.");
  }
}

}  // namespace

void ReplaceFile(const std::string& zvFile, const std::string& zvContent) {
  const std::string zTemporary = zvFile + ".new";
  const int lFile = open(zTemporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  Require(lFile >= 0 &&
              write(lFile, zvContent.data(), zvContent.size()) == static_cast<ssize_t>(zvContent.size()) &&
              fsync(lFile) == 0 && close(lFile) == 0 && std::rename(zTemporary.c_str(), zvFile.c_str()) == 0,
          zvFile);
  const int lFolder = open(zvFile.substr(0, zvFile.rfind('/')).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  Require(lFolder >= 0 && fsync(lFolder) == 0 && close(lFolder) == 0, zvFile);
}

}  // namespace bench
