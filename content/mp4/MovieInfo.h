// What an MP4 file says about itself: its brands, its length, and when it was recorded. The MP4 probe answers
// from it, and so do readers that need a movie's length.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "content/mp4/BoxFile.h"
#include "content/mp4/RecordingDate.h"

namespace vrx::mp4 {

/// The specifications that the file follows.
struct FileType {
  FourCc majorBrand = 0;
  std::uint32_t minorVersion = 0;
  std::vector<FourCc> compatibleBrands;  // in the order of the file, no more than 256
};

/// `ticks` / `timescale` seconds.
struct MovieDuration {
  std::uint64_t ticks = 0;
  std::uint32_t timescale = 1;  // never 0
};

struct MovieInfo {
  std::optional<FileType> fileType;
  std::uint64_t creationTime = 0;         // seconds since 1 January 1904, UTC; 0 when it is not stated
  std::optional<MovieDuration> duration;  // none when the file does not know it
  RecordingDate recording;
};

/// Reads the brands alone. XpErrInvalidFile when there are none before the movie or its data; such a file is
/// older than brands, or no MP4. XpErrMalformedRecord when a box before them is damaged, and results of
/// reading.
XpResult ReadFileType(XpAbstractFile& file, FileType& type, const BoxLimits& limits = {});

/// Reads the file, which is open for reading; its position does not matter and moves. XpErrInvalidFile when
/// it holds no movie, XpErrMalformedRecord when something in it is damaged or a limit was reached, and
/// results of reading. Whatever was found is in `info` all the same.
XpResult ReadMovieInfo(XpAbstractFile& file, MovieInfo& info, const BoxLimits& limits = {});

}  // namespace vrx::mp4
