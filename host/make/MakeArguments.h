// The options that say what a movie is made of. The commands `make` and `new` share them.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "host/make/MovieRequest.h"

namespace vrx::host {

struct MakeArguments {
  std::vector<std::string> clips;
  std::string captions;
  std::string music;
  std::string gps;
  GpsTemplate look = GpsTemplate::Drive;
  GpsUnit unit = GpsUnit::Kilometres;
  std::int64_t offsetSeconds = 0;
  std::optional<int> zoneMinutes;
  std::string start;
  bool correctWeekRollover = false;
  double photoSeconds = 5.0;

  /// What of it is wanted of the movie.
  MovieRequest GetRequest() const;
};

/// `arguments` must live as long as the command.
void AddMakeOptions(CLI::App& command, MakeArguments& arguments);

/// Throws CLI::ValidationError for options that do not go together.
void CheckMake(const CLI::App& command);

/// Empty when the name has one of the endings of a movie; else what is wrong.
std::string CheckMovieEnding(const std::string& text);
/// Empty when the name has the ending of a project; else what is wrong.
std::string CheckProjectEnding(const std::string& text);

}  // namespace vrx::host
