// Asks both questions about each file of the command line, on several threads that begin at once, and prints
// the answers of one. Fails when a thread was answered differently.
#include <barrier>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "content/probe/Mp4Probe.h"

namespace {

constexpr int kThreads = 8;

std::string Ask(const XpString& path) {
  char text[100];
  std::snprintf(text, sizeof text, "%08x ", GetMp4Type(path));
  std::string answer = text;
  const XpDateTime before(12345.0);
  XpDateTime date = before;
  std::int32_t offset = -7;
  if (!GetOriginalDateTimeFromMP4(path, date, offset)) {
    answer += date.GetValue() != before.GetValue() || offset != -7 ? "no date, but written" : "no date";
  } else if (!date.IsValid()) {
    answer += "invalid " + std::to_string(offset);
  } else {
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d %d", date.GetYear(), date.GetMonth(),
                  date.GetDay(), date.GetHour(), date.GetMinute(), date.GetSecond(), offset);
    answer += text;
  }
  return answer + "\n";
}

}  // namespace

int main(int count, char** arguments) {
  std::vector<std::string> answers(kThreads);
  std::barrier begin(kThreads);
  std::vector<std::thread> threads;
  for (std::string& answer : answers) {
    threads.emplace_back([&] {
      begin.arrive_and_wait();
      for (int i = 1; i < count; ++i) answer += Ask(XpNarrowString(arguments[i]).ToWide());
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const std::string& answer : answers) {
    if (answer != answers.front()) return 1;
  }
  std::fputs(answers.front().c_str(), stdout);
  return 0;
}
