// What our conversion engine offers beyond the six functions that the library needs: a readable log, a look
// into a source, single frames, a summary, overrides of a render, the spans that it copies, and movies made
// of pieces. A host finds each by its name and does without those that an engine lacks.
#pragma once

#include "vrx/VRXEngine.h"

/// Where the engine's readable log goes. It goes to stderr until it is called, and again after a null `log`.
/// Calls come from any of the engine's threads, one at a time.
enum VRXLogSeverity : std::int32_t { VRXLogInfo = 0, VRXLogWarning = 1, VRXLogError = 2 };
/// Which track of the timeline an entry speaks of.
enum VRXTrackKind : std::int32_t { VRXNoTrack = 0, VRXVideoTrack = 1, VRXAudioTrack = 2 };
/// One entry of the engine's log. `text` is UTF-8 without a line end and lives until the callback returns.
struct VRXLogEntry {
  VRXLogSeverity severity;
  VRXTrackKind track;
  std::uint32_t clip;  // counted from 1; 0 for none
  const char* text;
};
using VRXLogFunction = void (*)(void* context, const VRXLogEntry& entry);
using VRX_SetLogCallbackFunction = void (*)(VRXLogFunction log, void* context);

/// How bright a source's picture may be: as the movie, or more, with the transfer PQ (SMPTE ST 2084) or HLG
/// (ARIB STD-B67), whose colours the engine brings to the movie's range.
enum VRXDynamicRange : std::int32_t {
  VRXDynamicRangeStandard = 0,
  VRXDynamicRangePq = 1,
  VRXDynamicRangeHlg = 2
};

/// What the engine finds in a source. Numbers are 0 when they are unknown. On failure `cause` says why, as
/// the end of a sentence that begins with the path.
struct VRXSourceProbe {
  bool hasVideo = false;
  bool hasAudio = false;
  double videoSeconds = 0.0;
  double audioSeconds = 0.0;
  char cause[128] = "";  // UTF-8
  VRXDynamicRange dynamicRange = VRXDynamicRangeStandard;
  std::int32_t width = 0;       // pixels of the picture as it is shown: upright, square
  std::int32_t height = 0;      // the same
  VRXTimeInfo frameDuration;    // that most frames have
  std::int32_t sampleRate = 0;  // Hz
};
using VRX_ProbeSourceFunction = std::int32_t (*)(const char16_t* path, VRXSourceProbe* probe);

/// Frame `frame` of the movie as packed bottom-up rows of 4-byte BGR, `size` bytes at most,
/// with the overlay callback's drawing on it and without rendering the frames before.
using VRX_RenderFrameFunction = std::int32_t (*)(VRXTimeline* timeline, VRXSystemOutputSetting* output,
                                                 std::uint64_t frame, void* buffer, std::uint32_t size);

/// What the last movie holds that got its name in this process. Not VRXEngineOk when there is
/// none.
struct VRXRenderSummary {
  std::uint64_t frames = 0;
  std::uint64_t soundSamples = 0;  // per channel
  std::uint64_t bytes = 0;
  std::uint64_t copiedFrames = 0;  // of `frames`
};
using VRX_GetRenderSummaryFunction = std::int32_t (*)(VRXRenderSummary* summary);

/// How the picture is encoded, in place of what the record's `codecType` says.
enum VRXVideoCodec : std::int32_t {
  VRXVideoCodecOfRecord = 0,
  VRXVideoCodecH264 = 1,
  VRXVideoCodecHevc = 2,
  VRXVideoCodecAv1 = 3,
};

/// Whether the movie is written, or its overlays alone with transparency, without sound.
enum VRXOverlayOutput : std::int32_t {
  VRXOverlayInMovie = 0,
  /// By the ending of the output path: `.mov` gives ProRes 4444, `.png` a picture a frame, whose name has the
  /// frame's number in the movie where the path has `%d` or `%05d`.
  VRXOverlayAlone = 1,
};

/// Whether pictures that the movie shows as a source holds them are copied as they are coded.
enum VRXSmartRendering : std::int32_t {
  VRXSmartByRecord = 0,  // as VRXSmartAuto, unless the record says forceRerendering
  VRXSmartOff = 1,
  VRXSmartAuto = 2,
  VRXSmartRequire = 3,  // as VRXSmartAuto, but no render where a span has to be encoded for its source
};

/// The tracks of the movie that are written.
enum VRXTrackChoice : std::int32_t { VRXAllTracks = 0, VRXPictureAlone = 1, VRXSoundAlone = 2 };

/// What a host asks of its renders beyond their records. A default object asks for nothing.
struct VRXRenderOverrides {
  std::uint32_t structSize = sizeof(VRXRenderOverrides);  // bytes, so that later fields are recognised
  VRXVideoCodec codec = VRXVideoCodecOfRecord;
  bool hardware = false;  // by an encoder in hardware where one works, else the log says why not
  const char* preset =
      nullptr;        // "ultrafast" to "veryslow" as x264 names them, for every codec; null: by the record
  double crf = -1.0;  // constant quality, 0 to 51 (AV1 to 63); below 0: by the record's bitrate
  std::uint64_t firstFrame = 0;  // of the movie: the first that is written, with the sound that belongs to it
  std::uint64_t frameCount = 0;  // 0: all that are left
  VRXOverlayOutput overlays = VRXOverlayInMovie;
  VRXSmartRendering smart = VRXSmartByRecord;
  VRXTrackChoice tracks = VRXAllTracks;
  // The movie is a piece of a larger one, and says so in its file: of which one, which of how many, and the
  // frames of the range. The sound of a movie in pieces is piece 0.
  const char* pieceOf = nullptr;  // up to 64 letters and digits; null: a movie of its own
  std::uint32_t piece = 0;
  std::uint32_t pieceCount = 0;
};

/// For every sequence that is made from now on in this process; null ends that. Copies what it is given. Not
/// VRXEngineOk, with a line in the log and no change, for values that are not usable.
using VRX_SetRenderOverridesFunction = std::int32_t (*)(const VRXRenderOverrides* overrides);

/// Frames of the movie that are made in one way. Spans of the picture follow each other without a gap over
/// all frames that are written. The sound, where there is one, is a single span.
struct VRXRenderSpan {
  VRXTrackKind track;
  bool copied;         // as the source's packets hold it; else encoded
  bool sourceIsCause;  // encoded since the source is not as the movie needs it; VRXSmartRequire refuses that
  std::uint64_t firstFrame;  // of the whole movie
  std::uint64_t frameCount;
  std::uint32_t clip;  // on its track, counted from 1; 0 for none
  const char* reason;  // UTF-8, why it is encoded, such as "overlay"; empty for a copied span
  // Frames of a copied span at which another copy could begin, rising, the span's first among them.
  const std::uint64_t* starts;
  std::uint32_t startCount;
};
using VRXSpanFunction = void (*)(void* context, const VRXRenderSpan& span);
/// Called for every span of a sequence, first picture and then sound, when the sequence is made and before
/// anything is rendered. The span lives until the callback returns. A null `spans` ends that.
using VRX_SetSpanCallbackFunction = void (*)(VRXSpanFunction spans, void* context);

/// The pieces of one movie, which are copied together.
struct VRXPieces {
  std::uint32_t structSize = sizeof(VRXPieces);  // bytes, so that later fields are recognised
  const char16_t* const* paths = nullptr;        // in any order, the sound among them
  std::uint32_t count = 0;
  const char16_t* output = nullptr;  // its ending decides what file it is
};
/// Makes a sequence that writes the movie. kUnusableSettings, with a line in the log, for a piece that is
/// missing, is there twice, belongs to another movie, or was made with other settings.
using VRX_CreateJoinFunction = std::int32_t (*)(VRXHandle engine, const VRXPieces* pieces,
                                                IVRXSequence** sequence);
