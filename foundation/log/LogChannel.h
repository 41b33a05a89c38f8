// The channels of the log: which folder each writes to and where all processes of one run find it. Used by
// the logger, and by the command line to show a log.
#pragma once

#include <cstdint>

#include "vrx/XpString.h"

enum : std::uint32_t {
  SfLogImporter = 0,
  SfLogAppStart = 1,
  SfLogOutput = 3,  // this library's own
  SfLogDatabase = 4,
  SfLogChannelCount = 5,
};

namespace vrx::log {

struct Channel {
  const char16_t* registryValue;  // names the folder of the current run
  const char16_t* folderName;
  std::int32_t foldersKept;  // run folders that stay, the new one included
};

/// Null for a number that no channel has.
const Channel* FindChannel(std::uint32_t number);

/// Where the channel's run folders lie: below "LDKAppLog" in the temporary folder, or below a folder of this
/// user's own name when that one is another user's.
XpString ChannelFolder(const Channel& channel);

/// Path of the run folder that the settings name; empty when they name none.
XpString StoredRunFolder(const Channel& channel);
/// False when the settings cannot be written.
bool StoreRunFolder(const Channel& channel, const XpString& folder);

/// True when the folder exists and neither it nor the two folders above it is a link or another user's, so
/// that nothing is written elsewhere.
bool IsRunFolderUsable(const XpString& folder);

/// Deletes the oldest run folders until there is room for one more, and makes that, named by the time now.
/// Only folders named by a time are counted and deleted. Empty when it cannot be made.
XpString MakeRunFolder(const Channel& channel);

XpString LogFilePath(const XpString& runFolder);

}  // namespace vrx::log
