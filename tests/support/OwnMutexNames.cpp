// Linked into every test program: its named mutexes, and those of the programs that it starts, are apart from
// those of all other programs of the user, and are removed after the tests.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

class OwnMutexNames : public testing::Environment {
 public:
  OwnMutexNames() : m_prefix("test_" + std::to_string(getpid()) + "_") {
    setenv("VRX_NAMED_OBJECT_PREFIX", m_prefix.c_str(), 1);
  }
  void TearDown() override {
    const std::string names = "vrx-mutex-" + std::to_string(getuid()) + "-" + m_prefix;
    for (const auto& entry : std::filesystem::directory_iterator("/dev/shm")) {
      if (entry.path().filename().native().starts_with(names)) std::filesystem::remove(entry.path());
    }
  }

 private:
  std::string m_prefix;
};

const testing::Environment* const kOwnMutexNames = testing::AddGlobalTestEnvironment(new OwnMutexNames);

}  // namespace
