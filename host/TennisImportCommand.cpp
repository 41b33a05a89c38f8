#include <cmath>
#include <cstdio>
#include <map>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "content/plist/PlistReader.h"
#include "content/plist/PlistWriter.h"
#include "foundation/file/XpFileOperations.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/platform/Paths.h"
#include "gps/receiver/UtcTime.h"
#include "host/ArgumentChecks.h"
#include "host/Commands.h"
#include "host/Console.h"
#include "host/FileCauses.h"
#include "host/Moment.h"
#include "host/WholeFile.h"
#include "overlay/document/PainterKeys.h"
#include "overlay/tennis/ShotTable.h"
#include "overlay/tennis/TennisDocument.h"

namespace vrx::host {
namespace {

struct TennisImportOptions {
  std::string table;         // comma-separated values, see ShotTable.h
  std::string output;        // the painter document; other overlays of one that is there stay
  std::int32_t layout = 1;   // 1 full, 2 short
  std::int32_t unit = 0;     // of the speeds that are shown: 0 km/h, 1 mph, 2 knots
  std::string start;         // ISO 8601, local time: when the match began; empty: no date is shown
  bool skipBadRows = false;  // warn of them only
};

constexpr std::int64_t kMostTableMiB = 64;
constexpr double kSecondsAfterLastShot = 10;  // the length of the time line

/// A document that is there keeps its other overlays; one that cannot be read is not replaced.
bool OpenDocument(const XpString& path, XpIniDict& document, std::string& cause) {
  if (!XpPathExists(path, nullptr)) return true;
  const XpResult result = plist::ReadFile(path, document, nullptr);
  if (result == XpOk && plist::Find(&document, overlay::kPainterInfo) != nullptr) return true;
  cause = Utf8(path) + " is there and is no painter document; it is left as it is";
  return false;
}

overlay::TennisDocumentSettings SettingsOf(const TennisImportOptions& options,
                                           const overlay::ShotTable& table) {
  overlay::TennisDocumentSettings settings{.layoutType = options.layout, .unit = options.unit};
  settings.durationSeconds = std::ceil(table.shots.back().time + kSecondsAfterLastShot);
  if (const auto start = receiver::ParseIsoTime(options.start)) {
    const receiver::CivilTime time = receiver::CivilUtc(*start);
    settings.start.SetDateTime(time.year, time.month, time.day, time.hour, time.minute, time.second);
  }
  return settings;
}

int RunTennisImport(const TennisImportOptions& options) {
  const XpString path = platform::AbsolutePath(platform::PathFromNative(options.table));
  const XpString output = platform::AbsolutePath(platform::PathFromNative(options.output));
  std::string text;
  std::string cause;
  if (!ReadWholeFile(path, kMostTableMiB, "table of shots", text, cause)) return Fail(cause);
  if (platform::IsSameFile(path, output)) {
    return Fail(options.output + " is the table of shots and would be overwritten");
  }
  const overlay::ShotTable table = overlay::ReadShotTable(text);
  const char* severity = options.skipBadRows && table.hasHeader ? "warning: " : "error: ";
  for (const overlay::ShotTableProblem& problem : table.problems) {
    Say(severity + Utf8(path) + ":" + std::to_string(problem.line) + ": " + problem.message);
  }
  if (!table.hasHeader || (!table.problems.empty() && !options.skipBadRows)) return kFailed;
  if (table.shots.empty()) return Fail(Utf8(path) + " holds no shot");

  XpIniDict document;
  if (!OpenDocument(output, document, cause)) return Fail(cause);
  XpResult result = overlay::PutTennisShots(table.shots, SettingsOf(options, table), document);
  if (result == XpOk) result = plist::WriteFile(document, output);
  if (result != XpOk) return Fail(options.output + " cannot be written: " + WriteCause(result));
  std::printf("%s: %zu %s from %s to %s\n", Plain(output).c_str(), table.shots.size(),
              table.shots.size() == 1 ? "shot" : "shots", ClockText(table.shots.front().time).c_str(),
              ClockText(table.shots.back().time).c_str());
  return kDone;
}

}  // namespace

CommandRun AddTennis(CLI::App& tennis) {
  const auto options = std::make_shared<TennisImportOptions>();
  tennis.require_subcommand(1);
  CLI::App* command =
      tennis.add_subcommand("import", "Turn a table of shots into the tennis part of a painter document");
  command->add_option("SHOTS", options->table, "The table, comma-separated values with a header line")
      ->required();
  command->add_option("-o,--output", options->output, "The painter document to write or to add to")
      ->required();
  const std::map<std::string, std::int32_t> layouts{{"1", 1}, {"2", 2}};
  command->add_option("--layout", options->layout, "1 the full panel (the default), 2 the short one")
      ->transform(NamedValues(layouts))
      ->type_name("LAYOUT")
      ->option_text("LAYOUT");
  const std::map<std::string, std::int32_t> units{{"km/h", 0}, {"mph", 1}, {"knots", 2}};
  command
      ->add_option("--unit", options->unit,
                   "The unit in which speeds are shown: km/h (the default), mph or knots")
      ->transform(NamedValues(units))
      ->type_name("UNIT")
      ->option_text("UNIT");
  command
      ->add_option("--start", options->start,
                   "When the match began on the local clock, as 2024-05-01T10:11:12")
      ->check(CheckMoment);
  command->add_flag("--skip-bad-rows", options->skipBadRows, "Leave out rows that are wrong, with a warning");
  tennis.footer("Exit status: 0 done, 1 a row is wrong or a file cannot be read or written, 2 wrong use.");
  return [options] { return RunTennisImport(*options); };
}

}  // namespace vrx::host
