// The files that a render reads, each with the place in the documents that names it, and the rule that its
// output is none of them. The library and `vrx` both ask it before anything is written.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "src/project/TKLXOutputXml.h"
#include "vrx/XpString.h"

namespace vrx::project {

struct InputFile {
  XpString path;           // native
  XpString track;          // "VideoTrack", "AudioTrack", or empty
  std::uint32_t clip = 0;  // counted from 1; 0 for none
  XpString key;  // that names the file: SourceFile, PainterEffect, ImagePath, GPSLogFilePath; empty for the
                 // project
  std::uint64_t line = 0;  // of the clip's baseband document, for a still picture; 0 for none

  /// "the source of VideoTrack clip 2", "a still picture of VideoTrack clip 2 (line 14 of its document)",
  /// "the painter document", "a GPS log", "the project document".
  XpString Role() const;
};

/// The project at `projectPath`, the sources of both tracks, the painter document and its logs, and the
/// still pictures that baseband documents name. Whether the files exist does not matter.
std::vector<InputFile> ListInputFiles(const XpString& projectPath, const TKLXOutputXml& project);

/// The first input that is the file at `outputPath`, also when one of them is a link to the other; null when
/// there is none, as for an output that does not exist yet.
const InputFile* FindOutputAmongInputs(const XpString& outputPath, std::span<const InputFile> inputs);

}  // namespace vrx::project
