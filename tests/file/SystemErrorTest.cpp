#include "qm_ordering/platform/file/SystemError.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <string>

namespace {

using qm_ordering::file::SystemErrorText;

TEST(SystemError, NamesTheCause) {
  EXPECT_EQ("No such file or directory", SystemErrorText(ENOENT));
  EXPECT_EQ("system error 99999", SystemErrorText(99999));
}

TEST(SystemError, SpeaksEnglishInAProcessThatDoesNot) {
  ASSERT_EQ(0, setenv("LOCPATH", QM_ORDERING_LOCALES, 1));
  ASSERT_NE(nullptr, std::setlocale(LC_ALL, "de_DE.UTF-8"));
  const std::string zText = SystemErrorText(EACCES);
  std::setlocale(LC_ALL, "C");
  unsetenv("LOCPATH");
  EXPECT_EQ("Permission denied", zText);
}

}  // namespace
