// The engine is looked for beside the host and must be complete.
#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>
#include <sys/wait.h>

#include "tests/support/TempFolder.h"

namespace {

int RunIn(const std::filesystem::path& folder) {
  const int status = std::system((folder / "host").c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(EngineBindingTest, FactoryFailsUnlessACompleteEngineLiesBesideTheHost) {
  const TempFolder folder;
  std::filesystem::copy_file(FACTORY_PROBE_PATH, folder.Path() / "host");
  EXPECT_EQ(RunIn(folder.Path()), 1) << "no engine";
  folder.Write("VRXEngine.so", "not a library");
  EXPECT_EQ(RunIn(folder.Path()), 1) << "not a library";
  const auto overwrite = std::filesystem::copy_options::overwrite_existing;
  std::filesystem::copy_file(INCOMPLETE_ENGINE_PATH, folder.Path() / "VRXEngine.so", overwrite);
  EXPECT_EQ(RunIn(folder.Path()), 1) << "a function is missing";
  std::filesystem::copy_file(SCRIPTED_ENGINE_PATH, folder.Path() / "VRXEngine.so", overwrite);
  EXPECT_EQ(RunIn(folder.Path()), 0) << "complete";
}

}  // namespace
