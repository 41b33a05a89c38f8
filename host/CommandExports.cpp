#include <exception>
#include <vector>

#include "host/CommandLine.h"
#include "host/CommandModule.h"
#include "host/Commands.h"
#include "host/Console.h"
#include "host/LightCommands.h"

namespace {

using namespace vrx::host;

/// In the order of the help.
std::vector<CommandRow> AllCommands() {
  std::vector<CommandRow> rows = {
      {"make", "Make a movie of clips, pictures and sound", AddMake},
      {"new", "Write a project document of clips or of an editor's timeline", AddNew},
      {"render", "Render a project document to its movie", AddRender},
      {"check", "Show a project's timeline and everything wrong with it", AddCheck},
      {"plan", "Print commands that render a movie in pieces", AddPlan},
      {"join", "Join rendered pieces to their movie", AddJoin},
      {"frame", "Write one frame of the movie as a picture", AddFrame},
  };
  rows.insert(rows.end(), LightCommands().begin(), LightCommands().end());
  rows.insert(rows.end(),
              {
                  {"modd", "Show or change the metadata beside a media file", AddModd},
                  {"gps", "Bring GPS logs to movies, and show them", AddGps},
                  {"resources", "Show which pictures of the overlays are there", AddResources},
                  {"tennis", "Bring the shots of a tennis match to an overlay", AddTennis},
                  {"completion", "Print a script that completes commands in a shell", AddCompletion},
                  {"help", "Show this help, or the help of a command", AddHelp},
              });
  return rows;
}

}  // namespace

// No exception may leave the module.
int RunVrxCommand(int argc, char** argv) try {
  return RunCommandLine(AllCommands(), argc, argv);
} catch (const std::exception& error) {
  return FailForResources(error);
}
