// Programs that are started, read, interrupted and waited for.
#include <csignal>

#include <gtest/gtest.h>

#include "foundation/platform/ChildProcess.h"
#include "foundation/platform/Signals.h"

namespace {

using namespace vrx;
using vrx::platform::ChildProcess;

struct Printed {
  std::string output, errors;
};

Printed ReadAll(ChildProcess& child) {
  Printed printed;
  while (child.Read(printed.output, printed.errors)) {
  }
  return printed;
}

TEST(ChildProcessTest, WordsGoInAsTheyAreAndOutputAndStatusComeBack) {
  ChildProcess child;
  const std::string script = "cat; printf '%s|' \"$@\"; printf '%s' \"$1\" >&2; exit 7";
  ASSERT_FALSE(child.Start(u"/bin/sh", {"-c", script, "sh", "a 'b'", "", "$c\n\"d\""}));
  const Printed printed = ReadAll(child);
  EXPECT_EQ(printed.output, "a 'b'||$c\n\"d\"|");
  EXPECT_EQ(printed.errors, "a 'b'");
  EXPECT_EQ(child.Wait(), 7);
  child.Interrupt();  // of nothing
}

TEST(ChildProcessTest, LongOutputOfBothKindsIsReadWhole) {
  ChildProcess child;
  ASSERT_FALSE(child.Start(u"/bin/sh", {"-c", "head -c 300000 /dev/zero >&2; head -c 500000 /dev/zero"}));
  const Printed printed = ReadAll(child);
  EXPECT_EQ(printed.output.size(), 500000u);
  EXPECT_EQ(printed.errors.size(), 300000u);
  EXPECT_EQ(child.Wait(), 0);
}

TEST(ChildProcessTest, ProgramsThatAreNotThereAreAnError) {
  ChildProcess child;
  EXPECT_EQ(child.Start(u"/no/such/program", {}), std::errc::no_such_file_or_directory);
  Printed printed;
  EXPECT_EQ(ReadAll(child).output, "");
}

TEST(ChildProcessTest, InterruptsReachItAlsoWhereThisProgramTakesThemOver) {
  const platform::InterruptWaiter waiter;
  ChildProcess child;
  const std::string script = "trap 'echo stopped; exit 3' INT; echo ready; while :; do sleep 0.01; done";
  ASSERT_FALSE(child.Start(u"/bin/sh", {"-c", script}));
  Printed printed;
  while (printed.output != "ready\n" && child.Read(printed.output, printed.errors)) {
  }
  child.Interrupt();
  while (child.Read(printed.output, printed.errors)) {
  }
  EXPECT_EQ(printed.output, "ready\nstopped\n");
  EXPECT_EQ(child.Wait(), 3);
  ChildProcess killed;
  ASSERT_FALSE(killed.Start(u"/bin/sh", {"-c", "trap '' INT; exec sleep 600"}));
  killed.Kill();
  EXPECT_EQ(killed.Wait(), -SIGKILL);
}

TEST(ChildProcessTest, OneThatIsForgottenIsEnded) {
  std::string output, errors;
  {
    ChildProcess child;
    ASSERT_FALSE(child.Start(u"/bin/sh", {"-c", "echo $$; exec sleep 600"}));
    while (!output.ends_with('\n')) ASSERT_TRUE(child.Read(output, errors));
  }
  EXPECT_NE(kill(std::stoi(output), 0), 0);
}

}  // namespace
