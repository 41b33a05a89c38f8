#include "host/Commands.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include <CLI/CLI.hpp>

#include "foundation/file/XpFile.h"
#include "foundation/file/XpFileOperations.h"
#include "foundation/log/LogChannel.h"
#include "foundation/platform/Signals.h"
#include "host/ArgumentChecks.h"
#include "host/Console.h"

namespace vrx::host {
namespace {

constexpr std::int64_t kMostLogLines = 1'000'000'000;

struct LogsOptions {
  std::uint32_t channel = SfLogOutput;
  std::int64_t lines = 1000;  // the last ones
  bool follow = false;        // until interrupted
  bool path = false;          // print the path of the log instead
};

constexpr std::int64_t kBlock = 64 << 10;
constexpr std::int64_t kMostBytes = std::int64_t{64} << 20;  // searched for the last lines
constexpr std::int32_t kPollMs = 200;

/// Path of the current run's log; empty when nothing was logged yet.
XpString CurrentLog(const log::Channel& channel) {
  const XpString folder = log::StoredRunFolder(channel);
  if (folder.IsEmpty()) return {};
  const XpString path = log::LogFilePath(folder);
  return XpPathIsFile(path) ? path : XpString();
}

/// Bytes from `start` on, at most `count`; fewer when the file ends or fails there.
std::string ReadAt(XpFile& file, std::int64_t start, std::int64_t count) {
  std::string bytes(static_cast<std::size_t>(count), '\0');
  std::uint64_t read = 0;
  if (count != 0 && file.Seek(start, XpSeekStart) == XpOk) file.Read(bytes.data(), bytes.size(), &read);
  bytes.resize(static_cast<std::size_t>(read));
  return bytes;
}

/// A damaged log must not take over the terminal.
void Print(std::string bytes) {
  std::erase(bytes, '\r');
  const std::string text = Masked(bytes, true);
  std::fwrite(text.data(), 1, text.size(), stdout);
}

/// How many bytes at the end begin a character whose other bytes are still to come.
std::size_t OpenCharacter(std::string_view bytes) {
  constexpr std::size_t kLongest = 4;
  for (std::size_t back = 1; back < kLongest && back <= bytes.size(); ++back) {
    const auto byte = static_cast<unsigned char>(bytes[bytes.size() - back]);
    if (byte < 0x80) return 0;
    if (byte < 0xC0) continue;
    const std::size_t length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : 2;
    return back < length ? back : 0;
  }
  return 0;
}

/// Where the last `lines` lines begin, searched from the end.
std::int64_t StartOfLastLines(XpFile& file, std::int64_t size, std::int64_t lines) {
  const std::int64_t floor = std::max<std::int64_t>(0, size - kMostBytes);
  std::int64_t found = 0;
  for (std::int64_t end = size; end > floor;) {
    const std::int64_t start = std::max(floor, end - kBlock);
    const std::string bytes = ReadAt(file, start, end - start);
    for (std::size_t i = bytes.size(); i-- > 0;) {
      const std::int64_t position = start + static_cast<std::int64_t>(i);
      // A line feed at the very end belongs to the last line.
      if (bytes[i] == '\n' && position != size - 1 && ++found == lines) return position + 1;
    }
    end = start;
  }
  return floor;
}

/// Prints one log file, as far as it has grown.
class LogView {
 public:
  bool IsAt(const XpString& path) const { return m_path == path; }

  /// Goes on with the file at `path`: from the start of its last lines, or from its own when `lines` is below
  /// 0.
  void Open(const XpString& path, std::int64_t lines) {
    m_path = path;
    m_position = 0;
    XpFile file;
    if (lines < 0 || file.OpenPath(path, XpOpenRead, XpShareRead | XpShareWrite) != XpOk) return;
    m_position = StartOfLastLines(file, std::max<std::int64_t>(file.GetSize(), 0), lines);
  }

  /// Prints what was added since the last call, or the whole file when it was started again.
  void PrintNew() {
    XpFile file;
    if (file.OpenPath(m_path, XpOpenRead, XpShareRead | XpShareWrite) != XpOk) return;
    const std::int64_t size = file.GetSize();
    if (size < m_position) m_position = 0;
    while (m_position < size) {
      std::string bytes = ReadAt(file, m_position, std::min(kBlock, size - m_position));
      if (bytes.empty()) break;
      m_position += static_cast<std::int64_t>(bytes.size());
      if (m_position < size) {
        const std::size_t open = OpenCharacter(bytes);
        bytes.resize(bytes.size() - open);
        m_position -= static_cast<std::int64_t>(open);
      }
      Print(std::move(bytes));
    }
    std::fflush(stdout);
  }

 private:
  XpString m_path;
  std::int64_t m_position = 0;
};

void SayNothingLogged(const log::Channel& channel) {
  Say("nothing was logged yet; a log will be in a folder below " + Utf8(log::ChannelFolder(channel)));
}

int Follow(const log::Channel& channel, std::int64_t lines) {
  constexpr std::int64_t kWhole = -1;
  platform::InterruptWaiter interrupts;
  LogView view;
  XpString path = CurrentLog(channel);
  if (path.IsEmpty()) SayNothingLogged(channel);
  for (bool isFirst = true;; isFirst = false) {
    if (!path.IsEmpty()) {
      if (!view.IsAt(path)) view.Open(path, isFirst ? lines : kWhole);
      view.PrintNew();
      if (std::ferror(stdout) != 0) return kFailed;
    }
    if (interrupts.Wait(kPollMs) == platform::InterruptWaiter::Event::Interrupt) return kDone;
    path = CurrentLog(channel);
  }
}

int RunLogs(const LogsOptions& options) {
  const log::Channel* channel = log::FindChannel(options.channel);
  if (channel == nullptr) return kWrongUse;
  if (options.follow) return Follow(*channel, options.lines);
  const XpString path = CurrentLog(*channel);
  if (path.IsEmpty()) {
    SayNothingLogged(*channel);
    return kFailed;
  }
  if (options.path) {
    std::puts(Masked(Utf8(path)).c_str());
    return kDone;
  }
  LogView view;
  view.Open(path, options.lines);
  view.PrintNew();
  return std::ferror(stdout) != 0 ? kFailed : kDone;
}

}  // namespace

CommandRun AddLogs(CLI::App& command) {
  const auto options = std::make_shared<LogsOptions>();
  CLI::Option* follow =
      command.add_flag("--follow", options->follow, "Show new entries as they arrive, until interrupted");
  command.add_option("--lines", options->lines, "How many of the last lines; 1000 if not given")
      ->check(CLI::Range(std::int64_t{1}, kMostLogLines));
  command.add_flag("--path", options->path, "Print the path of the log instead")->excludes(follow);
  const std::map<std::string, std::uint32_t> channels{{"importer", SfLogImporter},
                                                      {"start", SfLogAppStart},
                                                      {"output", SfLogOutput},
                                                      {"database", SfLogDatabase}};
  command.add_option("--channel", options->channel, "Whose log")
      ->transform(NamedValues(channels))
      ->type_name("CHANNEL")
      ->option_text("CHANNEL  output (renders; the default), importer, start, database");
  command.footer("Exit status: 0 done, 1 nothing was logged yet, 2 wrong use.");
  return [options] { return RunLogs(*options); };
}

}  // namespace vrx::host
