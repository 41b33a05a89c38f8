// The options that say how a movie is encoded. The commands `render` and `make` share them.
#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "host/ProjectChanges.h"
#include "vrx/VRXEngineExtras.h"

namespace vrx::host {

struct EncodingArguments {
  std::string size;
  std::string rate;
  std::string bitrate;
  double quality = -1.0;
  std::string preset;
  VRXVideoCodec codec = VRXVideoCodecOfRecord;
  bool hardware = false;
  std::int32_t soundCodec = 0;  // as documents count codecs; 0: theirs
  VRXSmartRendering smart = VRXSmartByRecord;

  /// What of it the documents say.
  void AddTo(ProjectChanges& changes) const;
  /// What of it the engine has to be asked for; its preset refers to this object.
  VRXRenderOverrides GetOverrides() const;
  /// The options again as words of a command line, in a fixed order.
  std::vector<std::string> GetWords() const;
};

/// Size, rate and bitrate, which a project has as well. `arguments` must live as long as the command.
void AddFormatOptions(CLI::App& command, EncodingArguments& arguments);
/// Those and what a project has no place for.
void AddEncodingOptions(CLI::App& command, EncodingArguments& arguments);

/// The codec of the sound, for commands that have a project. `make` takes what suits the file.
void AddSoundCodecOption(CLI::App& command, EncodingArguments& arguments);

/// The words of the option for AC-3, which transport streams have by themselves.
std::vector<std::string> Ac3Words();

/// Throws CLI::ValidationError for options that do not go together.
void CheckEncoding(const EncodingArguments& arguments);

/// Whether the engine has to be asked for anything.
bool AsksForAnything(const VRXRenderOverrides& overrides);

}  // namespace vrx::host
