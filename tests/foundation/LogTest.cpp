// What a user looks for in the log after something went wrong: that it is there, whole, and nowhere else.
#include "foundation/log/SfLog.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <map>
#include <set>
#include <sstream>
#include <thread>

#include "foundation/log/SfLogMutex.h"
#include "foundation/log/VRXWrapperLog.h"
#include "foundation/registry/SfRegistry.h"
#include "tests/foundation/FolderTest.h"
#include "tests/foundation/ScopedVariable.h"

namespace {

namespace fs = std::filesystem;

class LogTest : public FolderTest {
 protected:
  LogTest() {
    for (const char* folder : {"tmp", "registry"}) fs::create_directories(Native(folder));
  }

  static void Log(const char16_t* text, std::uint32_t channel = SfLogOutput, bool newFolder = false) {
    SfWriteLog(channel, newFolder, u"%s", u"src\\a.cpp", u"work", 7, text);
  }
  std::vector<std::string> Names(const std::string& folder) const {
    std::vector<std::string> names;
    if (!fs::is_directory(Native(folder))) return names;
    for (const auto& entry : fs::directory_iterator(Native(folder))) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
  }
  static XpString Stored() { return vrx::log::StoredRunFolder(*vrx::log::FindChannel(SfLogOutput)); }
  static std::string StoredLog() {
    std::ifstream file(fs::path(Stored().ToNarrow().c_str()) / "OutputLogFile.log", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  const std::string m_output = "tmp/LDKAppLog/KRVOOutput";

 private:
  ScopedVariable m_temporary{"TMPDIR", Native("tmp")};
  ScopedVariable m_registry{"VRX_REGISTRY_DIR", Native("registry")};
};

/// The messages of a log; fails the test at the first entry that is not whole.
std::vector<std::string> Messages(const std::string& log) {
  std::vector<std::string> messages;
  const std::string separator(90, '=');
  std::istringstream lines(log);
  std::string time, text, end;
  while (std::getline(lines, time)) {
    std::getline(lines, text);
    std::getline(lines, end);
    const std::size_t message = text.find("__");
    if (!time.starts_with("Time:") || end != separator + "\r" || message == text.npos) {
      ADD_FAILURE() << "torn entry " << messages.size() << ": " << time << " | " << text << " | " << end;
      return messages;
    }
    messages.push_back(text.substr(message + 2, text.size() - message - 3));
  }
  return messages;
}

TEST_F(LogTest, EntryHasTimePlaceAndMessageAndALongOneIsCut) {
  SfWriteLog(SfLogOutput, false, u"OutputFilePath: %s (%d)", u"src\\a.cpp", u"work", 7, u"/100%s/ä%n.mp4", 5);
  Log(u"again");
  EXPECT_THAT(StoredLog(),
              testing::MatchesRegex("Time:[^\r\n]+ [0-9]+:[0-9]+:[0-9]+\r\n"
                                    "src\\\\a.cpp->work:7__OutputFilePath: /100%s/ä%n.mp4 \\(5\\)\r\n"
                                    "=+\r\nTime:[^\r\n]+\r\nsrc\\\\a.cpp->work:7__again\r\n=+\r\n"));
  Log(XpString(std::u16string(5000, u'x')).c_str());
  const std::vector<std::string> messages = Messages(StoredLog());
  ASSERT_EQ(messages.size(), 3u);
  EXPECT_EQ(messages[2].size(), 1023 - std::string("src\\a.cpp->work:7__").size());
}

TEST_F(LogTest, EntryOnAChannelThatDoesNotExistWritesNothing) {
  for (const std::uint32_t channel : {2u, 5u, 0xFFFFFFFFu}) Log(u"lost", channel);
  EXPECT_TRUE(Names("tmp").empty());
  EXPECT_TRUE(Names("registry").empty());
}

TEST_F(LogTest, OldestRunFoldersAreDeletedAndOtherFoldersStay) {
  struct Case {
    std::uint32_t channel;
    const char* folder;
    int before;
    std::size_t after;
  };
  for (const Case& c : {Case{SfLogOutput, "KRVOOutput", 9, 10}, Case{SfLogImporter, "ImporterLog", 14, 10},
                        Case{SfLogAppStart, "LDK", 30, 30}, Case{SfLogDatabase, "DatabaseAction", 29, 30}}) {
    const std::string folder = std::string("tmp/LDKAppLog/") + c.folder;
    SCOPED_TRACE(folder + " with " + std::to_string(c.before));
    fs::remove_all(Native("tmp/LDKAppLog"));
    const std::set<std::string> foreign{"20010230000000", "2001010100000", "200101010000001",
                                        "2001-01-010000", "notes"};
    for (const std::string& name : foreign) Put(folder + "/" + name + "/kept.txt");
    Put(folder + "/20000101000000", "a file of that name");
    for (int i = 0; i < c.before; ++i)
      Put(folder + "/200101010000" + std::to_string(10 + i) + "/OutputLogFile.log");
    Log(u"new run", c.channel, true);
    std::vector<std::string> runs;
    for (const std::string& name : Names(folder)) {
      if (!foreign.contains(name) && name != "20000101000000") runs.push_back(name);
    }
    EXPECT_EQ(runs.size(), c.after);
    EXPECT_EQ(Names(folder).size(), runs.size() + foreign.size() + 1);
    // The oldest was deleted, the newest of the old ones was not.
    EXPECT_EQ(Exists(folder + "/20010101000010"), c.before < static_cast<int>(c.after));
    EXPECT_TRUE(Exists(folder + "/200101010000" + std::to_string(9 + c.before)));
  }
}

TEST_F(LogTest, FolderFromTheSettingsIsUsedAndADeletedOneIsReplaced) {
  fs::create_directories(Native("chosen/run"));
  const auto key = SfRegistryOpenWrite(XpString(), XpString());
  key->SetString(u"KRVOOutputLogFilePath", Path("chosen/run"));
  Log(u"one");
  EXPECT_EQ(Messages(Get("chosen/run/OutputLogFile.log")), std::vector<std::string>{"one"});
  // The file or its folder is deleted while the log is open.
  fs::remove(Native("chosen/run/OutputLogFile.log"));
  Log(u"two");
  EXPECT_EQ(Messages(Get("chosen/run/OutputLogFile.log")), std::vector<std::string>{"two"});
  fs::remove_all(Native("chosen"));
  Log(u"three");
  EXPECT_EQ(Messages(StoredLog()), std::vector<std::string>{"three"});
  EXPECT_EQ(Names(m_output).size(), 1u);
}

TEST_F(LogTest, LinksInTheTemporaryFolderAreNotFollowed) {
  fs::create_directories(Native("precious/20260101000000"));
  for (const std::string link : {"tmp/LDKAppLog", "tmp/LDKAppLog/KRVOOutput"}) {
    fs::remove_all(Native("tmp"));
    fs::create_directories(Native(link).parent_path());
    fs::create_directory_symlink(Native("precious"), Native(link));
    Log(u"new", SfLogOutput, true);
    EXPECT_EQ(Names("precious"), std::vector<std::string>{"20260101000000"}) << link;
  }
  fs::create_directories(Native("chosen/run"));
  Put("precious/file", "mine");
  fs::create_symlink(Native("precious/file"), Native("chosen/run/OutputLogFile.log"));
  SfRegistryOpenWrite(XpString(), XpString())->SetString(u"KRVOOutputLogFilePath", Path("chosen/run"));
  Log(u"elsewhere");
  EXPECT_EQ(Get("precious/file"), "mine");
}

TEST_F(LogTest, LogFolderOfAnotherUserIsNotTouchedAndAnOwnOneIsMade) {
  if (geteuid() != 0) GTEST_SKIP() << "only the system's user can give a folder away";
  constexpr uid_t kAnother = 4711;
  fs::create_directories(Native(m_output));
  ASSERT_EQ(chown(Native("tmp/LDKAppLog").c_str(), kAnother, kAnother), 0);
  Log(u"mine");
  EXPECT_TRUE(Names(m_output).empty());
  EXPECT_EQ(Messages(StoredLog()), std::vector<std::string>{"mine"});
  EXPECT_TRUE(Exists("tmp/LDKAppLog-0/KRVOOutput"));
}

TEST_F(LogTest, RunWithoutWritableSettingsHasOneFolder) {
  setenv("VRX_REGISTRY_DIR", Put("blocked").ToNarrow().c_str(), 1);  // a file where the folder should be
  Put(m_output + "/20010101000000/OutputLogFile.log");
  for (int i = 0; i < 30; ++i) Log(u"line");
  ASSERT_EQ(Names(m_output).size(), 2u);
  EXPECT_EQ(Messages(Get(m_output + "/" + Names(m_output)[1] + "/OutputLogFile.log")).size(), 30u);
}

TEST_F(LogTest, LogThatCouldNotBeWrittenIsWrittenAgainLater) {
  setenv("TMPDIR", Put("nofolder").ToNarrow().c_str(), 1);
  for (int i = 0; i < 100; ++i) Log(u"lost");
  setenv("TMPDIR", Native("tmp").c_str(), 1);
  Log(u"back");
  EXPECT_EQ(Messages(StoredLog()), std::vector<std::string>{"back"});
}

/// Runs `body` in a new process.
template <class Body>
pid_t StartProcess(Body body) {
  const pid_t process = fork();
  if (process == 0) {
    body();
    _exit(testing::Test::HasFailure() ? 1 : 0);
  }
  return process;
}

TEST_F(LogTest, NoEntryOfSeveralProcessesAndThreadsIsLostOrTorn) {
  constexpr int kProcesses = 2, kThreads = 8, kEntries = 1250;
  std::vector<pid_t> processes;
  for (int process = 0; process < kProcesses; ++process) {
    processes.push_back(StartProcess([process] {
      std::vector<std::thread> threads;
      for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([=] {
          for (int i = 0; i < kEntries; ++i)
            SfWriteLog(SfLogOutput, false, u"%d.%d.%d", u"a", u"b", 1, process, thread, i);
        });
      }
      for (std::thread& thread : threads) thread.join();
    }));
  }
  for (const pid_t process : processes) {
    int status = -1;
    waitpid(process, &status, 0);
    EXPECT_EQ(status, 0);
  }
  const std::vector<std::string> messages = Messages(StoredLog());
  EXPECT_EQ(messages.size(), std::size_t{kProcesses * kThreads * kEntries});
  EXPECT_EQ(Names(m_output).size(), 1u);
  std::map<std::string, int> next;  // each thread's entries stay in their order
  for (const std::string& message : messages) {
    const std::size_t dot = message.rfind('.');
    ASSERT_EQ(std::stoi(message.substr(dot + 1)), next[message.substr(0, dot)]++) << message;
  }
}

TEST_F(LogTest, StuckProcessIsWaitedForOnlyOnceAndNotAfterItsEnd) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const pid_t stuck = StartProcess([&] {
    SfLogMutex mutex(u"SfLoggerMutex_3_OutputLogFile");
    const char taken = mutex.Lock() == XpOk ? 'y' : 'n';
    [[maybe_unused]] const auto written = write(ends[1], &taken, 1);
    pause();
  });
  char taken = 0;
  EXPECT_EQ(read(ends[0], &taken, 1), 1);
  EXPECT_EQ(taken, 'y');
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < 40; ++i) Log(u"lost");
  // One wait of a second and some milliseconds for the others; a wait for each would take 40 seconds.
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
  kill(stuck, SIGKILL);
  waitpid(stuck, nullptr, 0);
  Log(u"found");
  EXPECT_EQ(Messages(StoredLog()), std::vector<std::string>{"found"});
}

TEST_F(LogTest, WrapperLogIsWrittenOnlyWhenTheSettingAsksForIt) {
  const std::string path = "tmp/LBR/KRVOOutput/TKLX/VRXWrapperLog.txt";
  const auto open = [] { VRXWrapperLog().Open(); };
  const auto key = XpRegistryOpen(u"Software\\Kelo Corporation\\LBR\\VRXWrapper", XpRegistryCurrentUser, 3);
  key->SetDword(u"Debug", 1);
  open();
  EXPECT_FALSE(Exists("tmp/LBR"));  // its folder is not made
  Put(path, "old");
  key->SetDword(u"Debug", 0);
  open();
  EXPECT_EQ(Get(path), "old");
  key->SetDword(u"Debug", 1);
  open();
  EXPECT_THAT(Get(path), testing::MatchesRegex("={57}\r\n- VRXWrapper: Start at [^\r\n]+\r\n={57}\r\n"));
}

}  // namespace
