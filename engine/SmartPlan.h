// Which frames of a movie are copied as their source holds them and which are encoded, and why. Made once for
// a sequence, before anything is rendered.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "engine/AvPointers.h"
#include "engine/CopyPlan.h"
#include "engine/OutputPlan.h"
#include "engine/TimelinePlan.h"

namespace vrx::engine {

/// A stretch of a source of which pictures are copied.
struct CopiedSource {
  std::string path;
  AVRational timeBase;
  ParameterSets sets;  // of H.264 and HEVC
  NalLength nalLength = kStartCodes;
  std::shared_ptr<const AVCodecParameters> parameters;
  bool setsChange = false;  // the key frames bring sets of their own, which contradict each other
};

/// Frames that are made in one way. Frames are counted from the first that is written.
struct PictureSpan {
  std::int64_t firstFrame = 0;
  std::int64_t frameCount = 0;
  std::size_t clip = 0;        // on the video track
  std::string reason;          // of encoding; empty for a copied span
  bool sourceIsCause = false;  // of encoding
  std::size_t source = 0;      // of a copied span
  CopyRun run;                 // of a copied span; its frames are those of the clip

  bool IsCopied() const { return reason.empty(); }
  std::int64_t EndFrame() const { return firstFrame + frameCount; }
};

struct SmartPlan {
  std::vector<PictureSpan> spans;  // one after the other, over all frames
  std::vector<CopiedSource> sources;
  // Of a piece in H.264: the sets of all sources that pieces of its movie may copy. What the pieces encode
  // goes with these, so that it goes together.
  std::vector<ParameterSets> movieSets;

  std::int64_t CountCopied() const;
  /// The most places by which a copied picture comes after its frame's place.
  std::int64_t GetDelay() const;
};

/// Null when there is no memory.
std::shared_ptr<AVCodecParameters> CopyParameters(const AVCodecParameters& stream);

/// `timeline` is cut to the frames that are written, of which the first is `first` of the movie, and
/// `overlays` are in frames of the movie. Without smart rendering every span is encoded. kNotCapable, with a
/// logged line, where smart rendering is required and a source does not allow it.
Result MakeSmartPlan(const OutputPlan& output, const TimelinePlan& timeline,
                     const std::vector<OverlaySpan>& overlays, std::int64_t first, const StopSignal& stop,
                     SmartPlan& plan);

/// Finds the sets of the movie whose clips, before they are cut to a piece, are `clips`.
void AddMovieSets(const OutputPlan& output, const std::vector<VideoClip>& clips, const StopSignal& stop,
                  SmartPlan& plan);

/// Tells the host of the spans, in frames of the movie.
void ReportSpans(const SmartPlan& plan, std::int64_t first);

/// The parts of the clips whose frames are encoded, in their order.
std::vector<VideoClip> EncodedClips(const SmartPlan& plan, const std::vector<VideoClip>& clips);

}  // namespace vrx::engine
