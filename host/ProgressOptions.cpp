#include <map>
#include <string>

#include <CLI/CLI.hpp>

#include "host/ArgumentChecks.h"
#include "host/RenderRun.h"

namespace vrx::host {

void AddProgressStyle(CLI::App& command, ProgressStyle& style) {
  const std::map<std::string, ProgressStyle> styles{{"auto", ProgressStyle::Auto},
                                                    {"bar", ProgressStyle::Bar},
                                                    {"json", ProgressStyle::JsonLines},
                                                    {"none", ProgressStyle::None}};
  command
      .add_option("--progress", style, "auto (a bar on a terminal), bar, json (one object a line) or none")
      ->transform(NamedValues(styles))
      ->type_name("STYLE")
      ->option_text("STYLE");
}

void AddProgressOptions(CLI::App& command, RenderOptions& options) {
  AddProgressStyle(command, options.progress);
  command.add_flag("--quiet", options.quiet, "Print errors only");
  command.add_flag("--allow-missing", options.allowMissing,
                   "Succeed although still pictures are missing: their frames are black");
  command.add_flag("--strict", options.strict, "Write nothing when there are warnings");
}

}  // namespace vrx::host
