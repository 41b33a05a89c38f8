// Where a movie will be put: links followed to their target, and whatever must not be replaced refused. Used
// by the sequence and by the output file.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include "engine/EngineResult.h"
#include "engine/TimelinePlan.h"

namespace vrx::engine {

/// What is taken over from the file that the movie replaces.
struct FileRights {
  mode_t mode;
  uid_t owner;
  gid_t group;
};

struct OutputTarget {
  std::string path;                  // not a symbolic link
  std::optional<FileRights> rights;  // of the older file, if there is one
};

/// kOutputFailed, with a logged line, for a folder, device, pipe or socket, for a write-protected file, and
/// for links that lead in a circle.
Result FindOutputTarget(const std::string& path, OutputTarget& target);

/// Whether both paths lead to one file, which is there.
bool IsSameFile(const std::string& one, const std::string& other);

/// kUnusableSettings, with a logged line that names the clip, when a clip of `plan` reads the very file that
/// `output` leads to.
Result RefuseSourceAsOutput(const TimelinePlan& plan, const std::string& output);

}  // namespace vrx::engine
