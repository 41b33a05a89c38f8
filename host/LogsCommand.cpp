#include "host/LogsCommand.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <string_view>

#include "foundation/file/XpFile.h"
#include "foundation/file/XpFileOperations.h"
#include "foundation/platform/Signals.h"
#include "host/Console.h"

namespace vrx::host {
namespace {

constexpr std::int64_t kBlock = 64 << 10;
constexpr std::int64_t kMostBytes = std::int64_t{64} << 20;  // that the last lines are looked for in
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

/// A damaged log must not take over the terminal: of the control characters only line feed and tab get
/// through.
void Print(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  for (const char c : bytes) {
    constexpr unsigned char kDelete = 0x7F;
    const auto code = static_cast<unsigned char>(c);
    if (c == '\r') continue;
    const bool isControl = (code < ' ' && c != '\n' && c != '\t') || code == kDelete;
    text += isControl ? '?' : c;
  }
  std::fwrite(text.data(), 1, text.size(), stdout);
}

/// Where the last `lines` lines begin, looked for from the end.
std::int64_t StartOfLastLines(XpFile& file, std::int64_t size, std::int64_t lines) {
  const std::int64_t floor = std::max<std::int64_t>(0, size - kMostBytes);
  std::int64_t found = 0;
  for (std::int64_t end = size; end > floor;) {
    const std::int64_t start = std::max(floor, end - kBlock);
    const std::string bytes = ReadAt(file, start, end - start);
    for (std::size_t i = bytes.size(); i-- > 0;) {
      const std::int64_t position = start + static_cast<std::int64_t>(i);
      // The feed at the very end closes the last line.
      if (bytes[i] == '\n' && position != size - 1 && ++found == lines) return position + 1;
    }
    end = start;
  }
  return floor;
}

/// One log file on its way to the terminal.
class LogView {
 public:
  bool IsAt(const XpString& path) const { return m_path == path; }

  /// Takes up a file: from the start of its last lines, or of the whole when it came while following.
  void Open(const XpString& path, std::int64_t lines) {
    m_path = path;
    m_position = 0;
    XpFile file;
    if (lines < 0 || file.OpenPath(path, XpOpenRead, XpShareRead | XpShareWrite) != XpOk) return;
    m_position = StartOfLastLines(file, std::max<std::int64_t>(file.GetSize(), 0), lines);
  }

  /// Prints what has come since; from the start when the file was begun anew.
  void PrintNew() {
    XpFile file;
    if (file.OpenPath(m_path, XpOpenRead, XpShareRead | XpShareWrite) != XpOk) return;
    const std::int64_t size = file.GetSize();
    if (size < m_position) m_position = 0;
    while (m_position < size) {
      const std::string bytes = ReadAt(file, m_position, std::min(kBlock, size - m_position));
      if (bytes.empty()) break;
      Print(bytes);
      m_position += static_cast<std::int64_t>(bytes.size());
    }
    std::fflush(stdout);
  }

 private:
  XpString m_path;
  std::int64_t m_position = 0;
};

void SayNothingLogged(const log::Channel& channel) {
  Say("nothing was logged yet; a log will be in a folder of its own below " +
      Utf8(log::ChannelFolder(channel)));
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

}  // namespace

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
    std::puts(Utf8(path).c_str());
    return kDone;
  }
  LogView view;
  view.Open(path, options.lines);
  view.PrintNew();
  return std::ferror(stdout) != 0 ? kFailed : kDone;
}

}  // namespace vrx::host
