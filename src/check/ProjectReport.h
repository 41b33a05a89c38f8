// What an inspection of a project found: its timeline, its output and every problem, each with the place in
// the document that it comes from. The command line prints it.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "src/project/InputFiles.h"
#include "src/project/TKLXOutputXml.h"
#include "vrx/VRXEngineExtras.h"
#include "vrx/XpString.h"

namespace vrx::check {

/// Error: the render fails, or its movie lacks a picture. Warning: the movie is not what the document seems
/// to want. Note: worth knowing.
enum class Severity { Note, Warning, Error };

struct Problem {
  Severity severity;
  XpString file;           // the document, or the source that it names
  XpString track;          // "VideoTrack", "AudioTrack" or empty
  std::uint32_t clip = 0;  // counted from 1 within the track; 0 for none
  XpString key;            // may be empty
  XpString message;
  std::uint64_t line = 0;         // of `file`, counted from 1; 0 for none
  bool isMissingPicture = false;  // an error that does not stop the render: frames of its movie are black

  // What the mistake makes wrong as well; DropFollowUps takes such problems out.
  XpString meant;              // the key that is missing because of it; may be empty
  std::uint64_t dictLine = 0;  // of a dict whose rest is not read because of it; 0 for none
  XpString because;            // a key whose absence would cause this problem; may be empty
};

/// What the engine knows of a source after a look into it.
struct SourceFacts {
  bool usable = false;  // it can be opened and holds picture or sound
  std::string cause;    // why not, in the engine's words
  bool hasVideo = false;
  bool hasAudio = false;
  double videoSeconds = 0.0;  // 0 when unknown
  double audioSeconds = 0.0;
  VRXDynamicRange dynamicRange = VRXDynamicRangeStandard;
  std::int32_t width = 0;  // pixels of the picture as it is shown; 0 when unknown
  std::int32_t height = 0;
  VRXTimeInfo frameDuration;    // that most frames have; 0 when unknown
  std::int32_t sampleRate = 0;  // Hz; 0 when unknown
};

/// Looks into the file at a native path.
using SourceProbe = std::function<SourceFacts(const XpString& path)>;

/// One clip on the movie's time axis. Lengths are 0 when the source's own length is needed and unknown.
struct ClipRow {
  XpString track;
  std::uint32_t clip = 0;  // counted from 1
  XpString source;         // native path
  bool wholeSource = false;
  std::uint64_t line = 0;       // of the project document, on which it names its source
  double sourceStart = 0.0;     // s on the source's clock
  double movieStart = 0.0;      // s on the movie's clock
  double seconds = 0.0;         // length in the movie
  std::int64_t firstFrame = 0;  // of the movie; video clips only
  std::int64_t frames = 0;
};

/// A still image and the frames that show it, both ends included, on its clip's own clock.
struct StillImageRow {
  std::uint32_t clip = 0;  // on the video track, counted from 1
  std::uint64_t line = 0;  // of the baseband document
  std::int64_t imageId = 0;
  XpString picture;        // native path
  std::int32_t width = 0;  // pixels in the file; 0 when it can't be read
  std::int32_t height = 0;
  std::int64_t inFrame = 0;
  std::int64_t outFrame = 0;
  std::int32_t rotation = 0;
  bool mirror = false;
};

/// A stretch of the movie whose frames get overlays, both ends included.
struct OverlayRow {
  std::int64_t firstFrame = 0;
  std::int64_t lastFrame = 0;
  double startSeconds = 0.0;
  double endSeconds = 0.0;
};

/// A caption in the movie's time.
struct CaptionRow {
  std::uint32_t number = 0;  // counted from 1
  XpString text;
  double startSeconds = 0.0;
  double endSeconds = 0.0;
  std::int32_t layoutType = 0;
  XpString hiddenBecause;  // empty when it shows
};

/// A clip with a GPS log, on its own clock.
struct GpsClipRow {
  std::int32_t videoId = 0;
  XpString log;              // native path of the log's movie or sidecar
  double clipSeconds = 0.0;  // that the overlay counts
  std::uint64_t fixes = 0;   // seconds with a position of the log
  double firstFixSeconds = 0.0;
  double lastFixSeconds = 0.0;
  std::vector<std::pair<double, double>> shown;  // when in the drawn span the clip is current, s
};

struct ProjectReport {
  std::vector<Problem> problems;  // errors first, then warnings, then notes
  std::vector<project::InputFile> inputs;
  std::vector<ClipRow> clips;
  std::vector<StillImageRow> stillImages;
  XpString painterPath;  // native; empty when the project names no painter document
  std::vector<OverlayRow> overlays;
  std::vector<CaptionRow> captions;
  std::vector<GpsClipRow> gpsClips;
  XpString outputPath;                                   // native; empty when the document names none
  std::unique_ptr<VRXVideoOutputSetting> videoSettings;  // null when absent
  std::unique_ptr<VRXAudioOutputSetting> audioSettings;
  std::int64_t totalFrames = 0;
  double totalSeconds = 0.0;

  bool HasErrors() const { return FindError(true) != nullptr; }
  /// The first error, or the first one that stops the render; null when there is none.
  const Problem* FindError(bool withMissingPictures) const;
  /// Makes warnings of the errors that only leave frames black.
  void AllowMissingPictures();
  bool HasWarnings() const;
  /// By severity, document and line.
  void SortProblems();
};

/// How far still pictures are looked into: their size alone, or decoded as a render would.
enum class StillLook { Size, Whole };

/// A document to inspect: the file at `path`, or bytes in memory as if they lay there.
struct ProjectInput {
  XpString path;
  const std::vector<char>* bytes = nullptr;  // null for the file

  ProjectInput(const XpString& documentPath, const std::vector<char>* documentBytes = nullptr)
      : path(documentPath), bytes(documentBytes) {}
};

/// Reads the document and inspects it with everything that it names. Each source is probed once; an empty
/// `probe` only asks the file system.
ProjectReport CheckProject(const ProjectInput& input, const SourceProbe& probe,
                           StillLook stills = StillLook::Size);

}  // namespace vrx::check
