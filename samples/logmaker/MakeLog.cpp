// vrx-make-log: writes the log that a receiver of some kind would have made of a drive, a run or a walk.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <fstream>

#include "samples/logmaker/ReceiverKinds.h"
#include "samples/route/DriveRoute.h"
#include "samples/route/PlannedRoute.h"

namespace {

using vrx::test_support::DriveOptions;
using vrx::test_support::DriveRoute;
using vrx::test_support::PlannedRoute;
using vrx::test_support::ReceiverKind;
using vrx::test_support::ReceiverKinds;
using vrx::test_support::RouteNames;

constexpr int kMostSeconds = 86'400;

std::string KindsHelp() {
  std::string text = "Kinds of receivers:\n";
  for (const ReceiverKind& kind : ReceiverKinds()) {
    std::string name = kind.name;
    name.resize(14, ' ');
    text += "  " + name + kind.what + "\n";
  }
  return text;
}

/// Clips of the road style show all of them but the drive through town.
std::string WriteLog(const ReceiverKind& kind, const std::string& route, const DriveOptions& drive) {
  const auto filmed = RouteNames().find(route);
  if (filmed == RouteNames().end()) return kind.write(DriveRoute(drive));
  return kind.write(PlannedRoute({.kind = filmed->second,
                                  .times = {drive.startUtcMilliseconds, drive.seconds},
                                  .latitude = drive.latitude,
                                  .longitude = drive.longitude,
                                  .firstFixSecond = drive.firstFixSecond}));
}

std::vector<std::string> KindNames() {
  std::vector<std::string> names;
  for (const ReceiverKind& kind : ReceiverKinds()) names.emplace_back(kind.name);
  return names;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Writes the log that a receiver would have made of a drive, a run or a walk.", "vrx-make-log");
  app.footer(KindsHelp());
  std::string path;
  std::string kindName = "classic";
  std::string route = "town";
  DriveOptions drive;
  std::int64_t startSeconds = drive.startUtcMilliseconds / 1000;
  app.add_option("out", path, "File to write")->required();
  app.add_option("--kind", kindName, "Which receiver")
      ->check(CLI::IsMember(KindNames()))
      ->capture_default_str();
  app.add_option("--route", route, "town, or what clips of the road style show: drive, run or walk")
      ->check(CLI::IsMember({"town", "drive", "run", "walk"}))
      ->capture_default_str();
  app.add_option("--start", startSeconds, "First moment, in seconds since 1970")
      ->check(CLI::Range(0LL, 4'000'000'000LL))
      ->capture_default_str();
  app.add_option("--seconds", drive.seconds, "How long the route is")
      ->check(CLI::Range(1, kMostSeconds))
      ->capture_default_str();
  app.add_option("--latitude", drive.latitude, "Where it begins")->check(CLI::Range(-80.0, 80.0));
  app.add_option("--longitude", drive.longitude, "Where it begins")->check(CLI::Range(-180.0, 180.0));
  app.add_option("--first-fix", drive.firstFixSecond, "Seconds until the first fix")->capture_default_str();
  app.add_option("--tunnel", drive.tunnelSecond, "Second at which the tunnel through town begins")
      ->capture_default_str();
  app.add_option("--tunnel-seconds", drive.tunnelSeconds, "Its length; 0 for none")->capture_default_str();
  CLI11_PARSE(app, argc, argv);

  drive.startUtcMilliseconds = startSeconds * 1000;
  const auto kind = std::ranges::find_if(ReceiverKinds(), [&](const auto& k) { return kindName == k.name; });
  const std::string text = WriteLog(*kind, route, drive);
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  if (file) return 0;
  std::fprintf(stderr, "vrx-make-log: %s cannot be written\n", path.c_str());
  return 1;
}
