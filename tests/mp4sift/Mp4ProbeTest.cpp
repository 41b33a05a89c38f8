// How a program finds the module that answers about MP4 files, and what it makes of the answers.
#include <gtest/gtest.h>

#include <cstdio>

#include "foundation/registry/SfRegistry.h"
#include "tests/content/Mp4Boxes.h"
#include "tests/foundation/ScopedVariable.h"
#include "tests/support/TempFolder.h"

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

class Mp4ProbeTest : public testing::Test {
 protected:
  Mp4ProbeTest() : settings("VRX_REGISTRY_DIR", folder.Path() / "registry") {
    for (const char* name : {"program", "installed", "registry"}) fs::create_directory(folder.Path() / name);
    fs::copy_file(ASK_MP4_PATH, folder.Path() / "program/ask");
    movie = folder.Write("movie.mp4",
                         mp4boxes::FileType("MSNV", "") + mp4boxes::MovieOfDay("2024-05-01T10:11:12-0330"));
  }

  void Put(const char* module, const char* place) const {
    fs::copy_file(module, folder.Path() / place / "Mp4Sift.so", fs::copy_options::overwrite_existing);
  }
  static void Set(const char16_t* section, const char16_t* name, const std::string& path) {
    XpRegistryOpen(SfRegistryKeyPath(u"LBR", u"", section), XpRegistryLocalMachine, XpRegistryWrite)
        ->SetString(name, XpNarrowString(path).ToWide());
  }
  static void SetInstalledLocation(const std::string& path) { Set(u"", u"InstalledLocation", path); }
  std::string Ask(const std::string& arguments) const {
    const std::string command = (folder.Path() / "program/ask").string() + " " + arguments;
    FILE* answers = popen(command.c_str(), "r");
    if (answers == nullptr) return "cannot be run";
    std::string text;
    for (int c = std::fgetc(answers); c != EOF; c = std::fgetc(answers)) text.push_back(static_cast<char>(c));
    return pclose(answers) == 0 ? text : "failed: " + text;
  }

  TempFolder folder;
  ScopedVariable settings;
  std::string movie;
};

const char* const kNothing = "01000000 no date\n";
const char* const kReal = "20031101 2024-05-01 10:11:12 -210\n";

TEST_F(Mp4ProbeTest, ModuleIsTakenFromTheInstallationOrBesideTheProgram) {
  const std::string other = "'2 2000 1 2 3 4 5 6'";
  const std::string otherAnswer = "20031102 2000-01-02 03:04:05 6\n";
  EXPECT_EQ(Ask(movie), kNothing) << "no module";
  Put(ASK_MP4_PATH, "program");
  EXPECT_EQ(Ask(movie), kNothing) << "no such module";
  Put(MP4SIFT_PATH, "program");
  EXPECT_EQ(Ask(movie), kReal);
  // Another module takes the place of this one.
  Put(OTHER_MP4SIFT_PATH, "installed");
  SetInstalledLocation(folder.Path() / "installed");
  EXPECT_EQ(Ask(other), otherAnswer);
  fs::remove(folder.Path() / "installed/Mp4Sift.so");
  EXPECT_EQ(Ask(movie), kNothing) << "the installation lacks the module";
  SetInstalledLocation("");
  EXPECT_EQ(Ask(movie), kReal) << "the setting is empty";
  // The system's search comes last.
  fs::rename(folder.Path() / "program/Mp4Sift.so", folder.Path() / "installed/Mp4Sift.so");
  const ScopedVariable search("LD_LIBRARY_PATH", folder.Path() / "installed");
  EXPECT_EQ(Ask(movie), kReal);
}

TEST_F(Mp4ProbeTest, DriveLettersOfTheSettingsHoldInTheModule) {
  Put(MP4SIFT_PATH, "program");
  Set(u"Drives", u"Q", folder.Path());
  EXPECT_EQ(Ask("'Q:\\movie.mp4' 'R:\\movie.mp4'"), std::string(kReal) + kNothing);
}

TEST_F(Mp4ProbeTest, AnswersBecomeCodesAndDates) {
  Put(OTHER_MP4SIFT_PATH, "program");
  EXPECT_EQ(Ask("0 1 2 3 4 5 6 7 -1"),
            "01000000 no date\n20031101 no date\n20031102 no date\n20031104 no date\n20031103 no date\n"
            "20031105 no date\n20031106 no date\n01000000 no date\n01000000 no date\n");
  EXPECT_EQ(Ask("'1 100 1 1 0 0 0 -720'"), "20031101 0100-01-01 00:00:00 -720\n");
  for (const char* date : {"99 1 1", "0 0 0", "2023 2 29", "10000 1 1"}) {
    EXPECT_EQ(Ask("'1 "s + date + " 0 0 0 5'"), "20031101 invalid 5\n") << date;
  }
}

}  // namespace
