// `vrx` answers some commands by itself and loads a module for the others: both must look like one program.
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <memory>
#include <set>
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

/// The help of a command and of those below it.
std::vector<std::string> HelpsOf(const std::string& name) {
  std::vector<std::string> helps{RunVrx({{name, "--help"}}).output};
  for (const std::string& below : CommandsOf(helps.front())) {
    helps.push_back(RunVrx({{name, below, "--help"}}).output);
  }
  return helps;
}

/// The long names of options, `--help` left out.
std::set<std::string> OptionsOf(const std::string& help) {
  constexpr char kLetters[] = "abcdefghijklmnopqrstuvwxyz-";
  std::set<std::string> names;
  for (std::size_t at = 0; (at = help.find("--", at)) != help.npos;) {
    const std::size_t end = std::min(help.find_first_not_of(kLetters, at), help.size());
    if (end > at + 2) names.insert(help.substr(at, end - at));
    at = end;
  }
  names.erase("--help");
  return names;
}

/// The man page as it was written, with plain hyphens.
std::string ReadManPage() {
  std::ifstream file(VRX_MAN_PAGE);
  std::string page;
  for (char c; file.get(c);) {
    if (c != '\\' || file.peek() != '-') page += c;
  }
  return page;
}

/// The uses of a command in the synopsis, with those of the commands below it.
std::string SynopsisOf(const std::string& page, const std::string& name) {
  const std::string begin = "\n.B vrx " + name;
  const std::string synopsis = page.substr(0, page.find("\n.SH DESCRIPTION"));
  std::string uses;
  for (std::size_t at = 0; (at = synopsis.find(begin, at)) != synopsis.npos; at += begin.size()) {
    const char next = at + begin.size() < synopsis.size() ? synopsis[at + begin.size()] : '\n';
    if (next == ' ' || next == '\n') uses += synopsis.substr(at, synopsis.find("\n.br", at) - at);
  }
  return uses;
}

TEST(CommandModuleTest, ManPageHasEveryCommandWithItsOptions) {
  const std::string page = ReadManPage();
  ASSERT_FALSE(page.empty());
  for (const std::string& name : CommandsOf(RunVrx({{"--help"}}).output)) {
    const std::size_t section = page.find("\n.SS " + name + "\n");
    ASSERT_NE(section, page.npos) << name << " has no section";
    const std::string text = page.substr(section, page.find("\n.S", section + 1) - section);
    const std::string use = SynopsisOf(page, name);
    EXPECT_NE(use, "") << name << " is not in the synopsis";
    for (const std::string& help : HelpsOf(name)) {
      for (const std::string& option : OptionsOf(help)) {
        EXPECT_THAT(use + text, HasSubstr(option)) << "of " << name;
      }
    }
  }
}

TEST(CommandModuleTest, BashCompletesCommandsAndOptions) {
  const TempFolder folder;
  const std::string script = (folder.Path() / "vrx").string();
  std::ofstream(script) << RunVrx({{"completion", "bash"}}).output;
  const auto complete = [&](const std::string& words) {
    const std::string command = "bash -c 'source " + script + "; COMP_WORDS=(" + words +
                                "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _vrx; echo ${COMPREPLY[*]}'";
    std::string line(4096, 0);
    const std::unique_ptr<FILE, int (*)(FILE*)> bash(popen(command.c_str(), "r"), &pclose);
    if (bash == nullptr || std::fgets(line.data(), static_cast<int>(line.size()), bash.get()) == nullptr)
      return std::string();
    return line.substr(0, line.find('\n'));
  };
  EXPECT_EQ(complete("vrx re"), "render resources");
  EXPECT_EQ(complete("vrx gps \"\""), "import show");
  EXPECT_EQ(complete("vrx gps import --fix"), "--fix-week-rollover");
  EXPECT_EQ(complete("vrx render movie.v"), "");  // left to the shell, which completes files
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
