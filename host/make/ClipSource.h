// What there is to know of a clip before it gets its place in a movie.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "host/EngineModule.h"

namespace vrx::host {

struct ClipSource {
  enum class Kind { Movie, Picture, Sound };

  Kind kind = Kind::Movie;
  check::SourceFacts facts;      // of a movie or of sound
  std::int32_t width = 0;        // pixels as it is shown, upright
  std::int32_t height = 0;       // the same
  std::int32_t orientation = 0;  // the tag of a picture, 1 to 8; 0 without one
};

/// Looks into each file once.
class ClipSources {
 public:
  explicit ClipSources(const EngineModule& engine) : m_engine(engine) {}

  /// Null, with the cause, which does not name the file, for one that is neither picture nor movie nor sound.
  const ClipSource* Find(const XpString& path, std::string& cause);

 private:
  const EngineModule& m_engine;
  std::map<XpString, ClipSource> m_sources;
};

}  // namespace vrx::host
