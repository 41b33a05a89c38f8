// `vrx` answers some commands by itself and loads a module for the others: both must look like one program.
#include <algorithm>
#include <sstream>

#include <gmock/gmock.h>

#include "tests/render/VrxProcess.h"
#include "tests/support/TempFolder.h"

namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::StartsWith;

/// The names below "Subcommands:".
std::vector<std::string> CommandsOf(const std::string& help) {
  std::vector<std::string> names;
  std::istringstream rest(help.substr(std::min(help.find("Subcommands:"), help.size())));
  std::string line;
  std::getline(rest, line);
  while (std::getline(rest, line)) {
    std::istringstream words(line);
    std::string name;
    if (words >> name) names.push_back(name);
  }
  return names;
}

TEST(CommandModuleTest, HelpOfACommandIsTheSameByEitherWay) {
  const std::vector<std::string> names = CommandsOf(RunVrx({{"--help"}}).output);
  EXPECT_THAT(names, Contains("render"));
  EXPECT_THAT(names, Contains("config"));
  for (const std::string& name : names) {
    const VrxResult byHelp = RunVrx({{"help", name}});
    const VrxResult byOption = RunVrx({{name, "--help"}});
    EXPECT_THAT(byHelp.output, HasSubstr("Usage: vrx " + name)) << name;
    EXPECT_EQ(byHelp.output, byOption.output) << name;
    EXPECT_EQ(byOption.status, 0) << name;
  }
}

TEST(CommandModuleTest, WithoutTheModuleLightCommandsWorkAndTheOthersNameIt) {
  const TempFolder folder;
  const std::string program = CopyVrx(folder.Path(), VrxParts::ProgramAlone);
  EXPECT_EQ(RunVrx({.arguments = {"--version"}, .program = program}).output, RunVrx({{"--version"}}).output);
  const VrxResult light = RunVrx({.arguments = {"moff", "list", "/no/such.mp4"}, .program = program});
  EXPECT_THAT(light.errors, HasSubstr("/no/such.mp4.moff"));

  const std::string module = (folder.Path() / "VRXCommands.so").string();
  const auto expectOneLine = [&](const std::string& line) {
    const VrxResult heavy = RunVrx({.arguments = {"modd", "show", "/no/such.mp4"}, .program = program});
    EXPECT_EQ(heavy.status, 1);
    EXPECT_EQ(heavy.output, "");
    EXPECT_THAT(heavy.errors, StartsWith(line));
    EXPECT_EQ(std::ranges::count(heavy.errors, '\n'), 1);
  };
  expectOneLine("vrx: error: " + module + " cannot be loaded: ");
  std::filesystem::copy_file(SHORT_ENGINE_PATH, module);
  expectOneLine("vrx: error: " + module + " lacks the function RunVrxCommand\n");
}

}  // namespace
