// The text items of a movie that say when and in which time zone it was recorded. MovieInfo reads them.
#pragma once

#include <string>

#include "content/mp4/BoxFile.h"

namespace vrx::mp4 {

/// As they stand in the file; empty where there is none. Of repeated items the first one counts.
struct MetadataItems {
  std::string timeZone;      // key "com.vrx.time-zone": hexadecimal digits
  std::string creationDate;  // key "com.apple.quicktime.creationdate"
  std::string day;           // item or user data "©day"
};

/// Reads user data (moov/udta) with the metadata in it.
void ReadUserData(BoxFile& file, const Box& userData, MetadataItems& items);

/// Reads a "meta" box with a list of keys or of four-character items, in the form of ISO/IEC 14496-12 or in
/// that of QuickTime, which lacks version and flags.
void ReadMetadata(BoxFile& file, const Box& metadata, MetadataItems& items);

}  // namespace vrx::mp4
