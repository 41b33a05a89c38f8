// What the commands `make` and `new` do alike around the writing of a project.
#pragma once

#include <string>
#include <vector>

#include "host/EncodingArguments.h"
#include "host/make/MovieRequest.h"

namespace vrx::host {

/// Size, rate and bitrate.
void AddEncoding(const EncodingArguments& encoding, MovieRequest& request);

/// Why the movie cannot be written there: a file of the request lies there. Empty when it can.
std::string CauseAgainstOutput(const XpString& output, const MovieRequest& request);

/// Why the project cannot be written there: one is there and `replaces` is false, or it is a folder.
/// Empty when it can.
std::string CauseAgainstProject(const XpString& project, bool replaces);

void PrintChoices(const std::vector<std::string>& choices);

}  // namespace vrx::host
