#include <CLI/CLI.hpp>

#include "host/GpsCommands.h"
#include "host/Moment.h"
#include "host/MovieTime.h"

namespace vrx::host {

void AddAlignmentOptions(CLI::App& command, const AlignmentArguments& arguments) {
  constexpr double kMostOffset = 2e9;
  constexpr int kMostZone = 14 * 60;
  command
      .add_option("--offset", arguments.offsetSeconds,
                  "Time to add to the movie's place in the log, in whole seconds: 90, -1:30 or 1:00:00")
      ->transform(
          CLI::Validator([](std::string& text) { return ReadSeconds(text, -kMostOffset, kMostOffset); }, ""))
      ->option_text("TIME");
  command
      .add_option("--zone", arguments.zoneMinutes,
                  "Time zone of the movie's clock in minutes east of UTC, in place of what the movie states")
      ->check(CLI::Range(-kMostZone, kMostZone));
  command
      .add_option("--start", arguments.start,
                  "Moment of the log at which the movie begins, as 2024-05-01T10:11:12Z or with +02:00")
      ->check(CheckMoment);
  command.add_flag("--fix-week-rollover", arguments.correctWeekRollover, kRolloverHelp);
}

}  // namespace vrx::host
