// One render of a project through the library, as any other host would do it, with progress and messages on
// the terminal. The commands `render` and `make` use it.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/ProjectSource.h"
#include "host/RenderProgress.h"
#include "host/TimeRange.h"
#include "host/pieces/PieceName.h"
#include "vrx/VRXEngineExtras.h"

namespace CLI {
class App;
}

namespace vrx::host {

struct RenderOptions {
  bool strict = false;  // warnings are a refusal
  ProgressStyle progress = ProgressStyle::Auto;
  bool quiet = false;
  bool allowMissing = false;              // still pictures that are missing do not fail the render
  TimeRange range;                        // of the movie
  VRXRenderOverrides overrides;           // without range and piece: those are in here
  std::optional<PieceName> piece;         // that the movie is, of a plan
  std::vector<std::string> pieceOptions;  // of the command line, as the plan has them
  std::function<void()> beforeExit;       // called when an interrupt ends the program at once; may be empty
};

/// --progress alone.
void AddProgressStyle(CLI::App& command, ProgressStyle& style);
/// --progress, --quiet, --allow-missing and --strict. `options` must live as long as the command.
void AddProgressOptions(CLI::App& command, RenderOptions& options);

/// Gives the exit status. The movie is written, or nothing under its name.
int RenderProject(const RenderOptions& options, const ProjectSource& project);

}  // namespace vrx::host
