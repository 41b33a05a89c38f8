// What the command line changes in a project's documents before a render, without touching their files.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/platform/MemoryFile.h"
#include "host/MovieFormat.h"
#include "vrx/XpString.h"

namespace vrx::host {

struct ProjectChanges {
  XpString output;  // native path; empty: as the document says
  std::optional<PictureSize> size;
  std::optional<VRXTimeInfo> frameDuration;
  std::optional<std::int32_t> bitrate;  // bits a second; 0: constant quality

  bool IsEmpty() const { return output.IsEmpty() && !size && !frameDuration && !bitrate; }
};

/// Documents in memory, with absolute paths.
struct ChangedProject {
  std::string project;
  XpString painterPath;  // of the painter document's file; empty when it is as it was
  std::unique_ptr<platform::MemoryFile> painter;  // that the project then names
};

/// The project document `bytes`, which lies at `path`, with the changes. What cannot be read stays as it is,
/// so that its own reader says why.
ChangedProject ChangeProject(const std::vector<char>& bytes, const XpString& path,
                             const ProjectChanges& changes);

}  // namespace vrx::host
