// `vrx config` keeps settings, and `vrx logs` shows what happened.
#include <csignal>
#include <cstdlib>

#include <gmock/gmock.h>

#include "tests/render/VrxProcess.h"
#include "tests/support/TempFolder.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

class SettingsAndLogsTest : public testing::Test {
 protected:
  SettingsAndLogsTest() {
    for (const char* name : {"TMPDIR", "VRX_REGISTRY_DIR"}) setenv(name, m_home.Path().c_str(), 1);
  }
  ~SettingsAndLogsTest() override {
    for (const char* name : {"TMPDIR", "VRX_REGISTRY_DIR"}) unsetenv(name);
  }
  static VrxResult Vrx(std::vector<std::string> arguments) { return RunVrx({std::move(arguments)}); }
  /// Makes `name` the current run and writes its log.
  fs::path PutLog(const std::string& name, const std::string& text) const {
    const fs::path folder = m_home.Path() / "LDKAppLog/KRVOOutput" / name;
    fs::create_directories(folder);
    std::ofstream(folder / "OutputLogFile.log", std::ios::binary) << text;
    EXPECT_EQ(Vrx({"config", "set", "", "KRVOOutputLogFilePath", folder.string(), "--text"}).status, 0);
    return folder / "OutputLogFile.log";
  }

  TempFolder m_home;
};

TEST_F(SettingsAndLogsTest, SettingsAreKeptWithTheirTypeUntilTheyAreRemoved) {
  EXPECT_EQ(Vrx({"config", "set", "Common/Settings", "UILanguageId", "0x411"}).status, 0);
  EXPECT_EQ(Vrx({"config", "set", "Common/Settings", "Name", "12", "--text"}).status, 0);
  EXPECT_EQ(Vrx({"config", "set", "--machine", "Drives", "C", "/media/ä b"}).status, 0);
  EXPECT_EQ(Vrx({"config", "get", "common\\settings", "uilanguageid"}).output, "1041\n");
  EXPECT_EQ(Vrx({"config", "get", "--machine", "Drives", "C"}).output, "/media/ä b\n");
  EXPECT_EQ(Vrx({"config", "list"}).output,
            "[Software\\Kelo Corporation\\LBR\\Common\\Settings]\n  Name = \"12\"\n  UILanguageId = 1041\n");
  EXPECT_EQ(Vrx({"config", "list", "Other"}).output, "");
  EXPECT_EQ(Vrx({"config", "unset", "Common/Settings", "Name"}).status, 0);
  for (const auto& missing : {std::vector<std::string>{"config", "get", "Common/Settings", "Name"},
                              {"config", "unset", "Common/Settings", "Name"},
                              {"config", "get", "Drives", "C"}}) {
    const VrxResult result = Vrx(missing);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("there is no setting"));
  }
  // Slashes become backslashes in names as in keys, and only the whole word Software is the top.
  EXPECT_EQ(Vrx({"config", "set", "Software2", "a/b", "7"}).status, 0);
  EXPECT_EQ(Vrx({"config", "list", "Software2"}).output,
            "[Software\\Kelo Corporation\\LBR\\Software2]\n  a\\b = 7\n");
  EXPECT_EQ(Vrx({"config", "unset", "Software2"}).status, 0);
  EXPECT_EQ(Vrx({"config", "unset", "Common"}).status, 0);
  EXPECT_EQ(Vrx({"config", "list"}).output, "");
  EXPECT_EQ(Vrx({"config"}).status, 2);
}

// `moff` is a command of the program itself and `check` one of its module; each has drive letters of its own.
TEST_F(SettingsAndLogsTest, DriveLettersReachTheProgramAndItsModule) {
  m_home.Write("clip.mp4.moff", "no container");
  m_home.Write("p.vrx", "no project");
  const auto complaints = [] {
    return Vrx({"moff", "list", "Q:\\clip.mp4"}).errors + Vrx({"check", "Q:\\p.vrx"}).output;
  };
  EXPECT_THAT(complaints(),
              testing::AllOf(HasSubstr("folder does not exist"), HasSubstr("p.vrx: does not exist")));
  ASSERT_EQ(Vrx({"config", "set", "Drives", "Q", m_home.Path().string()}).status, 0);
  EXPECT_THAT(complaints(), testing::AllOf(HasSubstr("clip.mp4.moff"), HasSubstr("p.vrx"),
                                           testing::Not(HasSubstr("does not exist"))));
}

TEST_F(SettingsAndLogsTest, WithoutALogItsFutureFolderIsNamed) {
  for (const auto& call : {std::vector<std::string>{"logs"}, {"logs", "--path"}}) {
    const VrxResult result = Vrx(call);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, HasSubstr("nothing was logged yet"));
    EXPECT_THAT(result.errors, HasSubstr((m_home.Path() / "LDKAppLog/KRVOOutput").string()));
  }
  for (const auto& wrong : {std::vector<std::string>{"logs", "--lines", "0"},
                            {"logs", "--channel", "2"},
                            {"logs", "--follow", "--path"}}) {
    EXPECT_EQ(Vrx(wrong).status, 2);
  }
}

TEST_F(SettingsAndLogsTest, LastLinesOfAnyLogAreShownWithoutControlCharacters) {
  std::string huge(3 << 20, 'x');
  for (std::size_t i = 99; i < huge.size(); i += 100) huge[i] = '\n';
  struct Case {
    std::string log;
    std::string lines;
    std::string shown;
  };
  for (const Case& c :
       {Case{"", "5", ""}, Case{"a\r\nb\r\nc\r\n", "2", "b\nc\n"}, Case{"a\nb\nc", "2", "b\nc"},
        Case{"a\nb\n", "9", "a\nb\n"}, Case{"\x1b[2J\x01\tx\xff\xc2\x9b\n", "1", "?[2J?\tx\xff?\n"},
        Case{std::string((64 << 10) - 1, 'x') + "\xc2\x9bä\n", "1",
             std::string((64 << 10) - 1, 'x') + "?ä\n"},
        Case{huge + "end\n", "1", huge.substr(huge.rfind('\n') + 1) + "end\n"}}) {
    const fs::path path = PutLog("20260101000000", c.log);
    const VrxResult result = Vrx({"logs", "--lines", c.lines});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, c.shown);
    EXPECT_EQ(Vrx({"logs", "--path"}).output, path.string() + "\n");
  }
}

TEST_F(SettingsAndLogsTest, FollowShowsNewEntriesAlsoOfANewRun) {
  const fs::path first = PutLog("20260101000000", "one\ntwo\n");
  std::vector<std::string> seen;
  VrxCall call;
  call.arguments = {"logs", "--follow", "--lines", "1"};
  call.onLine = [&](const std::string& line, pid_t process) {
    seen.push_back(line);
    if (line == "two") std::ofstream(first, std::ios::app) << "three\n";
    if (line == "three") PutLog("20260101000001", "first\nof the next run\n");
    if (line == "of the next run") kill(process, SIGINT);
  };
  EXPECT_EQ(RunVrx(call).status, 0);
  EXPECT_THAT(seen, testing::ElementsAre("two", "three", "first", "of the next run"));
}

TEST_F(SettingsAndLogsTest, UnreadableDocumentIsNamedAndLogged) {
  for (const char* document : {"", "no project", "<?xml version=\"1.0\"?><movie/>"}) {
    const std::string path = m_home.Write("broken.vrx", document);
    const VrxResult render = Vrx({"render", path});
    EXPECT_EQ(render.status, 1);
    EXPECT_THAT(render.errors, HasSubstr("render failed (0x8003): " + path));
    EXPECT_THAT(Vrx({"logs"}).output, HasSubstr("Load VRXWrapper.xml Error("));
    EXPECT_EQ(Vrx({"check", path}).status, 1);
  }
}

}  // namespace
