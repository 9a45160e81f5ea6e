#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace test {

TempFolder::TempFolder() {
  std::string zTemplate = (std::filesystem::temp_directory_path() / "qm_ordering_test.XXXXXX").string();
  if (mkdtemp(zTemplate.data()) == nullptr) {
    throw std::runtime_error("no temporary folder");
  }
  m_zPath = zTemplate;
}

TempFolder::~TempFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(m_zPath, ignored);
}

std::vector<std::string> PathsBeginningWith(const std::string& zvStart) {
  std::vector<std::string> paths;
  for (const auto& entry :
       std::filesystem::directory_iterator(std::filesystem::path(zvStart).parent_path())) {
    if (entry.path().string().starts_with(zvStart)) {
      paths.push_back(entry.path().string());
    }
  }
  std::ranges::sort(paths);
  return paths;
}

std::string ReadFile(const std::string& zvPath) {
  std::ifstream file(zvPath, std::ios::binary);
  EXPECT_TRUE(file.good()) << zvPath;
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

void WriteFile(const std::string& zvPath, const std::string& zvContent) {
  std::ofstream file(zvPath, std::ios::binary | std::ios::trunc);
  file.write(zvContent.data(), static_cast<std::streamsize>(zvContent.size()));
  ASSERT_TRUE(file.flush().good()) << zvPath;
}

}  // namespace test
