#include "foundation/log/SfLog.h"

#include <array>
#include <mutex>
#include <string>
#include <vector>

#include "foundation/file/XpFile.h"
#include "foundation/file/XpFileOperations.h"
#include "foundation/log/SfLogMutex.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/text/XpPath.h"
#include "foundation/time/XpDateTime.h"
#include "vrx/XpTextCodec.h"

namespace vrx::log {
namespace {

constexpr std::int32_t kLongestText = 1023;
constexpr char16_t kSeparator[] =
    u"==========================================================================================\n";

/// The state of one channel in this process.
struct ChannelState {
  std::mutex guard;  // of everything below, between the threads of this process
  XpFile file;
  XpString openFolder;      // of the open file; empty until the folder was found safe to write to
  XpString unstoredFolder;  // the run folder, when it could not be saved in the settings
  bool isStuck = false;     // the last wait for another process timed out
};

ChannelState& StateOf(std::uint32_t channel) {
  // Never destroyed: entries are written until the very end.
  static auto* states = new std::array<ChannelState, SfLogChannelCount>;
  return (*states)[channel];
}

/// Holds a channel's mutex between the processes. When another process is stuck with it, only the first entry
/// waits the full time: a render of many clips must not wait with every line.
class ChannelLock {
 public:
  ChannelLock(const XpString& name, bool& isStuck) : m_mutex(name) {
    m_isHeld = m_mutex.Lock(isStuck ? kStuckPatienceMs : SfLogMutex::kPatienceMs) == XpOk;
    isStuck = !m_isHeld;
  }
  ChannelLock(const ChannelLock&) = delete;
  ChannelLock& operator=(const ChannelLock&) = delete;
  ~ChannelLock() {
    if (m_isHeld) m_mutex.Unlock();
  }
  bool IsHeld() const { return m_isHeld; }

 private:
  static constexpr std::int64_t kStuckPatienceMs = 1;  // an entry of another process takes less

  SfLogMutex m_mutex;
  bool m_isHeld;
};

XpString MutexName(std::uint32_t channel) {
  XpString name;
  XpFormat(name, u"SfLoggerMutex_%d_%s", channel, XpPathStem(LogFilePath(u"/")));
  return name;
}

XpString EntryText(const Origin& origin, const char16_t* format,
                   std::span<const text::FormatArgument> values) {
  const std::array<text::FormatArgument, 3> where{
      text::PackArgument(origin.file), text::PackArgument(origin.function), text::PackArgument(origin.line)};
  XpString text;
  text::AppendFormatted(text, u"%s->%s:%d__", where);
  text::AppendFormatted(text, format, values);
  if (text.Length() > kLongestText) {
    // The cut must not split a character.
    const bool splits = textcodec::IsHighSurrogate(text[kLongestText - 1]);
    text = text.Left(splits ? kLongestText - 1 : kLongestText);
  }
  return text + u"\n";
}

std::string AsFileBytes(const XpString& text) {
  std::u16string units;
  units.reserve(static_cast<std::size_t>(text.Length()) + 16);
  for (const char16_t c : text.AsView()) {
    if (c == u'\n') units += u'\r';
    units += c;
  }
  return textcodec::ToUtf8(units);
}

/// The folder of the current run; empty when there is none yet.
XpString CurrentFolder(const Channel& channel, const ChannelState& state) {
  const XpString stored = StoredRunFolder(channel);
  return stored.IsEmpty() ? state.unstoredFolder : stored;
}

XpString NewFolder(const Channel& channel, ChannelState& state) {
  const XpString made = MakeRunFolder(channel);
  // Without settings each entry would start a new folder and delete an older one.
  if (!made.IsEmpty()) state.unstoredFolder = StoreRunFolder(channel, made) ? XpString() : made;
  return made;
}

/// A log is never written through a link that another program has put in its place.
bool IsLink(const XpString& path) {
  platform::FileStatus status;
  return !platform::StatPath(path, platform::Links::Keep, status) && status.isLink;
}

/// Opens the log of the current run, in a new folder when there is none or when it was deleted. For an open
/// log only its existence is checked, since a project of many clips writes thousands of entries.
bool EnsureOpen(const Channel& channel, bool newFolder, ChannelState& state) {
  XpString folder = newFolder ? XpString() : CurrentFolder(channel, state);
  if (!folder.IsEmpty() && folder == state.openFolder && XpPathExists(LogFilePath(folder), nullptr))
    return true;
  state.openFolder = XpString();
  if (folder.IsEmpty() || !IsRunFolderUsable(folder)) folder = NewFolder(channel, state);
  const XpString path = LogFilePath(folder);
  if (folder.IsEmpty() || IsLink(path)) return false;
  if (state.file.OpenPath(path, XpOpenReadWrite | XpOpenText, XpShareRead | XpShareWrite) != XpOk)
    return false;
  state.openFolder = folder;
  return true;
}

/// One write for the whole entry. A partial write is undone, so that no entry is torn.
void Append(XpFile& file, const std::string& bytes) {
  if (file.Seek(0, XpSeekEnd) != XpOk) return;
  const std::int64_t end = file.Tell();
  if (file.Write(bytes.data(), bytes.size(), nullptr) != XpOk && end >= 0) file.SetSize(end);
}

void WriteUnguarded(std::uint32_t number, const Channel& channel, bool newFolder, const XpString& text) {
  ChannelState& state = StateOf(number);
  const std::scoped_lock guard(state.guard);
  const ChannelLock lock(MutexName(number), state.isStuck);
  if (!lock.IsHeld()) return;
  if (!EnsureOpen(channel, newFolder, state)) return;
  const XpString time = XpDateTime::GetCurrentTime().FormatDateTime(XpDateShort, XpTimeSecond, true);
  Append(state.file, AsFileBytes(XpString(u"Time:") + time + u"\n" + text + kSeparator));
}

}  // namespace

void WriteEntry(std::uint32_t channel, bool newFolder, const Origin& origin, const char16_t* format,
                std::span<const text::FormatArgument> values) noexcept try {
  const Channel* found = FindChannel(channel);
  if (found != nullptr) WriteUnguarded(channel, *found, newFolder, EntryText(origin, format, values));
} catch (...) {
  // Only a lack of memory comes here. The entry is lost; logging must not stop the work.
}

}  // namespace vrx::log
