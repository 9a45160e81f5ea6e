#include "tests/host/HostRun.h"

#include <utility>

namespace test {

HostRun HostFixture::Run(std::vector<std::string> zvArguments, const HostStreams& streams) const {
  zvArguments.insert(zvArguments.begin(), {"--settings", SettingsFile()});
  return RunHost(zvArguments, streams);
}

HostRun HostFixture::RunJson(std::vector<std::string> zvArguments) const {
  zvArguments.insert(zvArguments.begin(), "--json");
  return Run(std::move(zvArguments));
}

void HostFixture::CreateStore() const {
  const HostRun run = Run({"store", "create", Folder.Path()});
  ASSERT_EQ(0, run.ExitCode) << run.Err;
}

std::string HostFixture::Write(const std::string& zvName, const std::string& zvContent) const {
  WriteFile(Folder.File(zvName), zvContent);
  return Folder.File(zvName);
}

nlohmann::json HostFixture::Order() const {
  const HostRun run = RunJson({"order", "show"});
  EXPECT_EQ(0, run.ExitCode) << run.Err;
  return run.Data();
}

}  // namespace test
