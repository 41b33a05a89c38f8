// The command line program `vrx`: renders projects through the library and inspects them.
#include <cmath>
#include <cstdio>
#include <exception>
#include <map>
#include <string>

#include <CLI/CLI.hpp>

#include "foundation/platform/Signals.h"
#include "foundation/platform/Terminal.h"
#include "foundation/registry/SystemSettings.h"
#include "gps/receiver/UtcTime.h"
#include "host/Commands.h"
#include "host/Console.h"

namespace {

using namespace vrx::host;

constexpr std::int64_t kMostLogLines = 1'000'000'000;

struct Commands {
  RenderOptions render;
  CheckOptions check;
  FrameOptions frame;
  ConfigOptions config;
  LogsOptions logs;
  MoffOptions moff;
  ModdOptions modd;
  GpsImportOptions gpsImport;
  GpsShowOptions gpsShow;
  ResourcesOptions resources;
  TennisImportOptions tennisImport;
  std::string helpTopic;
  CLI::App* renderCommand = nullptr;
  CLI::App* checkCommand = nullptr;
  CLI::App* frameCommand = nullptr;
  CLI::App* configCommand = nullptr;
  CLI::App* logsCommand = nullptr;
  CLI::App* moffCommand = nullptr;
  CLI::App* moddCommand = nullptr;
  CLI::App* gpsCommand = nullptr;
  CLI::App* resourcesCommand = nullptr;
  CLI::App* tennisCommand = nullptr;
  CLI::App* helpCommand = nullptr;
};

void AddRender(CLI::App& app, Commands& commands) {
  CLI::App* command = app.add_subcommand("render", "Render a project document to its movie");
  command->add_option("PROJECT", commands.render.project, "The project document")->required();
  const std::map<std::string, ProgressStyle> styles{{"auto", ProgressStyle::Auto},
                                                    {"bar", ProgressStyle::Bar},
                                                    {"json", ProgressStyle::Json},
                                                    {"none", ProgressStyle::None}};
  command
      ->add_option("--progress", commands.render.progress,
                   "auto (a bar on a terminal), bar, json (one object a line) or none")
      ->transform(CLI::CheckedTransformer(styles))
      ->type_name("STYLE")
      ->option_text("STYLE");
  command->add_flag("--quiet", commands.render.quiet, "Print errors only");
  command->add_flag("--allow-missing", commands.render.allowMissing,
                    "Succeed although still pictures are missing: their frames are black");
  command->footer(
      "Exit status: 0 done, 1 the render failed or a still picture is missing, 2 wrong use, 130 cancelled.");
  commands.renderCommand = command;
}

void AddCheck(CLI::App& app, Commands& commands) {
  CLI::App* command = app.add_subcommand("check", "Show a project's timeline and everything wrong with it");
  command->add_option("PROJECT", commands.check.project, "The project document")->required();
  command->add_flag("--json", commands.check.json, "Print one JSON document");
  command->add_flag("--allow-missing", commands.check.allowMissing,
                    "Make warnings of still pictures that are missing");
  command->footer("Exit status: 0 the project can be rendered, 1 it cannot, 2 wrong use.");
  commands.checkCommand = command;
}

/// Empty when the text is a time that a movie can have.
std::string CheckSeconds(const std::string& text) {
  double seconds = 0.0;
  const bool isTime = CLI::detail::lexical_cast(text, seconds) && std::isfinite(seconds) && seconds >= 0.0;
  return isTime ? "" : text + " is no number of seconds from 0 on";
}

void AddFrame(CLI::App& app, Commands& commands) {
  CLI::App* command = app.add_subcommand("frame", "Write one frame of the movie as a picture");
  command->add_option("PROJECT", commands.frame.project, "The project document")->required();
  CLI::Option* frame = command->add_option("--frame", commands.frame.frame, "Number of the frame, from 0")
                           ->check(CLI::NonNegativeNumber);
  command->add_option("--time", commands.frame.seconds, "Seconds on the movie's clock, instead of --frame")
      ->check(CheckSeconds)
      ->excludes(frame);
  command->add_option("-o,--output", commands.frame.picture, "The PNG file to write")->required();
  command->add_flag("--overlay-only", commands.frame.overlayOnly,
                    "The overlays alone, on a transparent ground");
  command->footer("Exit status: 0 done, 1 there is no such frame, 2 wrong use.");
  commands.frameCommand = command;
}

CLI::App* AddConfigAction(CLI::App& config, ConfigOptions& options, const char* name, const char* help,
                          ConfigAction action) {
  CLI::App* command = config.add_subcommand(name, help);
  command->callback([&options, action] { options.action = action; });
  command->add_flag("--machine", options.machine, "The settings of all users");
  return command;
}

void AddConfig(CLI::App& app, Commands& commands) {
  CLI::App* config = app.add_subcommand("config", "Show or change settings");
  config->require_subcommand(1);
  ConfigOptions& options = commands.config;
  const char* keyHelp = "The key, like Common/Settings, below the product's own or from Software on";
  CLI::App* get = AddConfigAction(*config, options, "get", "Print a setting", ConfigAction::Get);
  get->add_option("KEY", options.key, keyHelp)->required();
  get->add_option("NAME", options.name, "The setting")->required();
  CLI::App* set = AddConfigAction(*config, options, "set", "Store a setting", ConfigAction::Set);
  set->add_option("KEY", options.key, keyHelp)->required();
  set->add_option("NAME", options.name, "The setting")->required();
  set->add_option("VALUE", options.value, "A number of 32 bits (decimal, or 0x and hexadecimal) or a text")
      ->required();
  set->add_flag("--text", options.isText, "Store a number as a text");
  CLI::App* list = AddConfigAction(*config, options, "list", "Print all settings", ConfigAction::List);
  list->add_option("KEY", options.key, "Only this key and those below it");
  CLI::App* unset =
      AddConfigAction(*config, options, "unset", "Remove a setting or a key", ConfigAction::Unset);
  unset->add_option("KEY", options.key, keyHelp)->required();
  unset->add_option("NAME", options.name, "The setting; without it the key and all below it are removed");
  config->footer("Exit status: 0 done, 1 there is no such setting or it cannot be written, 2 wrong use.");
  commands.configCommand = config;
}

void AddLogs(CLI::App& app, Commands& commands) {
  CLI::App* command = app.add_subcommand("logs", "Show the log of the current run");
  CLI::Option* follow = command->add_flag("--follow", commands.logs.follow,
                                          "Show new entries as they arrive, until interrupted");
  command->add_option("--lines", commands.logs.lines, "How many of the last lines; 1000 if not given")
      ->check(CLI::Range(std::int64_t{1}, kMostLogLines));
  command->add_flag("--path", commands.logs.path, "Print the path of the log instead")->excludes(follow);
  const std::map<std::string, std::uint32_t> channels{{"importer", SfLogImporter},
                                                      {"start", SfLogAppStart},
                                                      {"output", SfLogOutput},
                                                      {"database", SfLogDatabase}};
  command->add_option("--channel", commands.logs.channel, "Whose log")
      ->transform(CLI::CheckedTransformer(channels))
      ->type_name("CHANNEL")
      ->option_text("CHANNEL  output (renders; the default), importer, start, database");
  command->footer("Exit status: 0 done, 1 nothing was logged yet, 2 wrong use.");
  commands.logsCommand = command;
}

CLI::App* AddMoffAction(CLI::App& moff, MoffOptions& options, const char* name, const char* help,
                        MoffAction action) {
  CLI::App* command = moff.add_subcommand(name, help);
  command->callback([&options, action] { options.action = action; });
  command->add_option("FILE", options.file, "The media file or its container")->required();
  return command;
}

void AddMoff(CLI::App& app, Commands& commands) {
  CLI::App* moff = app.add_subcommand("moff", "Show, check or extract the binary data beside a media file");
  moff->require_subcommand(1);
  MoffOptions& options = commands.moff;
  CLI::App* list =
      AddMoffAction(*moff, options, "list", "Print the groups and entries of a container", MoffAction::List);
  list->add_flag("--json", options.json, "Print one JSON document");
  CLI::App* extract =
      AddMoffAction(*moff, options, "extract", "Write the data of an entry to a file", MoffAction::Extract);
  extract->add_option("--group", options.group, "The group's id")->required();
  extract
      ->add_option("--entry", options.entry,
                   "Number of the entry in the group, from 1; the first if not given")
      ->check(CLI::PositiveNumber);
  extract->add_option("-o,--output", options.output, "The file to write")->required();
  AddMoffAction(*moff, options, "validate", "Print everything that is wrong with a container",
                MoffAction::Validate);
  moff->footer("Exit status: 0 done, 1 it cannot be read or written or is damaged, 2 wrong use.");
  commands.moffCommand = moff;
}

void AddModd(CLI::App& app, Commands& commands) {
  CLI::App* modd = app.add_subcommand("modd", "Show the metadata beside a media file");
  modd->require_subcommand(1);
  CLI::App* show = modd->add_subcommand("show", "Print the metadata and where it was found");
  show->add_option("FILE", commands.modd.file, "The media file, or its .modd or .rodd file")->required();
  show->add_flag("--json", commands.modd.json, "Print one JSON document");
  modd->footer("Exit status: 0 done, 1 there is none or it cannot be read, 2 wrong use.");
  commands.moddCommand = modd;
}

/// Empty when the text is a moment.
std::string CheckMoment(const std::string& text) {
  if (vrx::receiver::ParseIsoTime(text)) return "";
  return text + " is no date and time such as 2024-05-01T10:11:12Z";
}

constexpr const char* kRolloverHelp = "Move dates that a receiver's overflowed count of weeks made too early";

void AddGpsImport(CLI::App& gps, GpsImportOptions& options) {
  constexpr std::int64_t kMostOffset = 2'000'000'000;
  constexpr int kMostZone = 14 * 60;
  CLI::App* command = gps.add_subcommand("import", "Write the log of a receiver into a movie's sidecar");
  command->add_option("MOVIE", options.movie, "The movie")->required();
  command->add_option("LOG", options.log, "An NMEA 0183 log or a GPX document")->required();
  command->add_option("--offset", options.offsetSeconds, "Seconds to add to the movie's place in the log")
      ->check(CLI::Range(-kMostOffset, kMostOffset));
  command
      ->add_option("--zone", options.zoneMinutes,
                   "Time zone of the movie's clock in minutes east of UTC, in place of what the movie states")
      ->check(CLI::Range(-kMostZone, kMostZone));
  command
      ->add_option("--start", options.start,
                   "Moment of the log at which the movie begins, as 2024-05-01T10:11:12Z or with +02:00")
      ->check(CheckMoment);
  command->add_flag("--fix-week-rollover", options.correctWeekRollover, kRolloverHelp);
}

void AddGpsShow(CLI::App& gps, GpsShowOptions& options) {
  CLI::App* command = gps.add_subcommand("show", "Print what a log holds, and draw it");
  command->add_option("FILE", options.file, "A movie, its sidecar, or a receiver's log")->required();
  const auto addForm = [&](const char* name, GpsForm form, const char* help) {
    return command->add_flag_callback(
        name, [&options, form] { options.form = form; }, help);
  };
  CLI::Option* json = addForm("--json", GpsForm::Json, "Print one JSON document");
  CLI::Option* csv = addForm("--csv", GpsForm::Csv, "Print a table with a row for each second");
  CLI::Option* gpx = addForm("--gpx", GpsForm::Gpx, "Print a GPX document");
  json->excludes(csv)->excludes(gpx);
  csv->excludes(gpx);
  command->add_flag("--points", options.points, "Each second in the JSON document")->needs(json);
  command->add_option("--plot", options.plot, "PNG file to draw the track and its speed into");
  command->add_flag("--fix-week-rollover", options.correctWeekRollover, kRolloverHelp);
}

void AddGps(CLI::App& app, Commands& commands) {
  CLI::App* gps = app.add_subcommand("gps", "Bring GPS logs to movies, and show them");
  gps->require_subcommand(1);
  AddGpsImport(*gps, commands.gpsImport);
  AddGpsShow(*gps, commands.gpsShow);
  gps->footer(
      "Exit status: 0 done, 1 there is no position or a file cannot be read or written, 2 wrong use.");
  commands.gpsCommand = gps;
}

void AddResources(CLI::App& app, Commands& commands) {
  CLI::App* command = app.add_subcommand("resources", "Show which pictures of the overlays are there");
  command->add_flag("--json", commands.resources.json, "Print one JSON document");
  command->footer("Exit status: 0 all pictures can be used, 1 some cannot and draw nothing, 2 wrong use.");
  commands.resourcesCommand = command;
}

int RunGps(const Commands& commands) {
  return commands.gpsCommand->got_subcommand("import") ? RunGpsImport(commands.gpsImport)
                                                       : RunGpsShow(commands.gpsShow);
}

void AddTennis(CLI::App& app, Commands& commands) {
  CLI::App* tennis = app.add_subcommand("tennis", "Bring the shots of a tennis match to an overlay");
  tennis->require_subcommand(1);
  TennisImportOptions& options = commands.tennisImport;
  CLI::App* command =
      tennis->add_subcommand("import", "Turn a table of shots into the tennis part of a painter document");
  command->add_option("SHOTS", options.table, "The table, comma-separated values with a header line")
      ->required();
  command->add_option("-o,--output", options.output, "The painter document to write or to add to")
      ->required();
  const std::map<std::string, std::int32_t> layouts{{"1", 1}, {"2", 2}};
  command->add_option("--layout", options.layout, "1 the full panel (the default), 2 the short one")
      ->transform(CLI::CheckedTransformer(layouts))
      ->type_name("LAYOUT")
      ->option_text("LAYOUT");
  const std::map<std::string, std::int32_t> units{{"km/h", 0}, {"mph", 1}, {"knots", 2}};
  command
      ->add_option("--unit", options.unit,
                   "The unit in which speeds are shown: km/h (the default), mph or knots")
      ->transform(CLI::CheckedTransformer(units))
      ->type_name("UNIT")
      ->option_text("UNIT");
  command
      ->add_option("--start", options.start,
                   "When the match began on the local clock, as 2024-05-01T10:11:12")
      ->check(CheckMoment);
  command->add_flag("--skip-bad-rows", options.skipBadRows, "Leave out rows that are wrong, with a warning");
  tennis->footer("Exit status: 0 done, 1 a row is wrong or a file cannot be read or written, 2 wrong use.");
  commands.tennisCommand = tennis;
}

int Run(const CLI::App& app, const Commands& commands) {
  if (commands.renderCommand->parsed()) return RunRender(commands.render);
  if (commands.checkCommand->parsed()) return RunCheck(commands.check);
  if (commands.frameCommand->parsed()) return RunFrame(commands.frame);
  if (commands.configCommand->parsed()) return RunConfig(commands.config);
  if (commands.logsCommand->parsed()) return RunLogs(commands.logs);
  if (commands.moffCommand->parsed()) return RunMoff(commands.moff);
  if (commands.moddCommand->parsed()) return RunModd(commands.modd);
  if (commands.gpsCommand->parsed()) return RunGps(commands);
  if (commands.resourcesCommand->parsed()) return RunResources(commands.resources);
  if (commands.tennisCommand->parsed()) return RunTennisImport(commands.tennisImport);
  if (!commands.helpTopic.empty()) {
    for (const CLI::App* topic : app.get_subcommands(nullptr)) {
      if (topic->get_name() != commands.helpTopic) continue;
      std::fputs(topic->help("vrx").c_str(), stdout);
      return kDone;
    }
    Say("there is no command " + commands.helpTopic);
    return kWrongUse;
  }
  // The program's own help; App::help would give that of the command `help`.
  std::fputs(app.get_formatter()->make_help(&app, "vrx", CLI::AppFormatMode::Normal).c_str(), stdout);
  return kDone;
}

}  // namespace

int main(int argc, char** argv) try {
  vrx::platform::ReserveStandardStreams();
  vrx::platform::SurviveFileSizeLimit();
  CLI::App app("Renders project documents to movies.", "vrx");
  app.set_version_flag("--version", std::string("vrx ") + VRX_VERSION);
  app.require_subcommand(1);
  Commands commands;
  AddRender(app, commands);
  AddCheck(app, commands);
  AddFrame(app, commands);
  AddConfig(app, commands);
  AddLogs(app, commands);
  AddMoff(app, commands);
  AddModd(app, commands);
  AddGps(app, commands);
  AddResources(app, commands);
  AddTennis(app, commands);
  commands.helpCommand = app.add_subcommand("help", "Show this help, or the help of a command");
  commands.helpCommand->add_option("COMMAND", commands.helpTopic, "The command");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (app.exit(error) != 0) return kWrongUse;
    return FlushOutput() ? kDone : kFailed;
  }
  vrx::registry::ApplySystemSettings();
  const int status = Run(app, commands);
  if (FlushOutput()) return status;
  Say("the output cannot be written");
  return status == kDone ? kFailed : status;
} catch (const std::exception& error) {
  Say(std::string("out of resources: ") + error.what());
  return kFailed;
}
