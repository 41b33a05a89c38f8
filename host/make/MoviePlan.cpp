#include "host/make/MoviePlan.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "host/Console.h"
#include "vrx/VRXLimits.h"

namespace vrx::host {
namespace {

constexpr PictureSize kFullHd{1920, 1080};
constexpr std::int32_t kSampleRate = 48'000;      // Hz
constexpr std::int32_t kDiscSampleRate = 44'100;  // Hz, and its fractions

std::string SizeText(const PictureSize& size) {
  return std::to_string(size.width) + "x" + std::to_string(size.height);
}

/// The source's size times `scale`, at most 1: both sides even and within the limits of a movie.
PictureSize UsableSize(std::int32_t width, std::int32_t height, double scale) {
  const double most = static_cast<double>(limits::kMaxSide) / static_cast<double>(std::max(width, height));
  const double shrink = std::min({1.0, scale, most});
  const auto side = [&](std::int32_t length) {
    const auto scaled = static_cast<std::int32_t>(std::lround(length * shrink / 2.0)) * 2;
    return std::clamp(scaled, limits::kMinSide, limits::kMaxSide);
  };
  return {side(width), side(height)};
}

/// The size of a movie of photographs, which are larger than any screen: theirs within full HD, or upright.
PictureSize SizeForPictures(const ClipSource& picture) {
  const auto [shorter, longer] = std::minmax(picture.width, picture.height);
  return UsableSize(
      picture.width, picture.height,
      std::min(static_cast<double>(kFullHd.width) / longer, static_cast<double>(kFullHd.height) / shorter));
}

/// What of the pictures' attributes stands for a value of the orientation tag (Exif).
void SetOrientation(std::int32_t tag, PlannedPicture& picture) {
  struct Turn {
    std::int32_t rotation;
    bool isMirrored;
  };
  constexpr std::array<Turn, 9> kTurns{{{0, false},
                                        {0, false},
                                        {0, true},
                                        {2, false},
                                        {2, true},
                                        {3, true},
                                        {3, false},
                                        {1, true},
                                        {1, false}}};
  if (tag < 0 || tag >= static_cast<std::int32_t>(kTurns.size())) return;
  const Turn& turn = kTurns[static_cast<std::size_t>(tag)];
  picture.rotation = turn.rotation;
  picture.isMirrored = turn.isMirrored;
}

class Planner {
 public:
  Planner(const MovieRequest& request, ClipSources& sources, MoviePlan& plan)
      : m_request(request), m_sources(sources), m_plan(plan) {}

  bool Plan(std::string& cause) {
    if (!FindSources(cause)) return false;
    ChooseSize();
    ChooseRate();
    for (std::size_t i = 0; i < m_request.clips.size(); ++i) {
      if (!AddClip(m_request.clips[i], m_found[i], cause)) return false;
    }
    if (m_plan.frames > limits::kMaxMovieFrames) {
      cause = "the movie would have more than " + std::to_string(limits::kMaxMovieFrames) + " frames";
      return false;
    }
    SayClips();
    return AddSound(cause);
  }

 private:
  bool FindSources(std::string& cause) {
    for (const ClipRequest& clip : m_request.clips) {
      const ClipSource* source = nullptr;
      if (!clip.path.IsEmpty()) {
        source = m_sources.Find(clip.path, cause);
        if (source != nullptr && source->kind == ClipSource::Kind::Sound)
          cause = "has no picture; --music takes sound";
        if (!cause.empty()) {
          const bool isFileName = clip.name == FileName(clip.path);
          cause = clip.name + (isFileName ? "" : " (" + Utf8(clip.path) + ")") + " " + cause;
          return false;
        }
      }
      m_found.push_back(source);
    }
    return true;
  }

  /// The first movie among the clips; their number when there is none.
  std::size_t FirstMovie() const {
    const auto isMovie = [](const ClipSource* source) {
      return source != nullptr && source->kind == ClipSource::Kind::Movie;
    };
    return static_cast<std::size_t>(std::ranges::find_if(m_found, isMovie) - m_found.begin());
  }

  /// The first picture, where there is no movie.
  std::size_t FirstPicture() const {
    const auto isThere = [](const ClipSource* source) { return source != nullptr; };
    return static_cast<std::size_t>(std::ranges::find_if(m_found, isThere) - m_found.begin());
  }

  void ChooseSize() {
    const std::size_t first = FirstMovie();
    if (m_request.size) {
      m_plan.size = *m_request.size;
      m_sizeReason = "as asked";
    } else if (first < m_found.size()) {
      m_plan.size = UsableSize(m_found[first]->width, m_found[first]->height, 1.0);
      m_sizeReason = "as " + m_request.clips[first].name;
    } else if (const std::size_t picture = FirstPicture(); picture < m_found.size()) {
      m_plan.size = SizeForPictures(*m_found[picture]);
      m_sizeReason = "the shape of " + m_request.clips[picture].name + " in full HD";
    } else {
      m_plan.size = kFullHd;
      m_sizeReason = "full HD";
    }
    m_plan.bitrate = m_request.bitrate;
  }

  void ChooseRate() {
    const std::size_t first = FirstMovie();
    std::string reason = "for pictures";
    if (m_request.frameDuration) {
      m_plan.frameDuration = *m_request.frameDuration;
      reason = "as asked";
    } else if (first < m_found.size()) {
      const VRXTimeInfo& own = m_found[first]->facts.frameDuration;
      m_plan.frameDuration = UsualFrameDuration(own);
      reason = "as " + m_request.clips[first].name;
      if (RateText(own) != RateText(m_plan.frameDuration))
        reason = "the usual rate for the " + RateText(own) + " of " + m_request.clips[first].name;
    } else {
      m_plan.frameDuration = {1, 30};
    }
    m_plan.choices.push_back("Picture: " + SizeText(m_plan.size) + " (" + m_sizeReason + "), " +
                             RateText(m_plan.frameDuration) + " frames a second (" + reason + ")");
  }

  double FrameSeconds() const { return m_plan.SecondsOf(1); }
  std::int64_t FramesOf(double seconds) const {
    return std::max<std::int64_t>(std::llround(seconds / FrameSeconds()), 1);
  }

  bool AddClip(const ClipRequest& clip, const ClipSource* source, std::string& cause) {
    const bool isMovie = source != nullptr && source->kind == ClipSource::Kind::Movie;
    return isMovie ? AddMovie(clip, *source, cause) : AddPicture(clip, source, cause);
  }

  /// Seconds on the clip's clock.
  static double SecondsAt(const MovieTime& time, const VRXTimeInfo& own) {
    if (!time.frame) return time.seconds;
    return own.scale == 0 ? 0.0
                          : static_cast<double>(*time.frame) * static_cast<double>(own.value) /
                                static_cast<double>(own.scale);
  }

  bool AddMovie(const ClipRequest& clip, const ClipSource& source, std::string& cause) {
    const double whole = source.facts.videoSeconds;
    double from = 0.0, to = whole;
    if (clip.range.from) from = SecondsAt(*clip.range.from, source.facts.frameDuration);
    if (clip.range.to) to = SecondsAt(*clip.range.to, source.facts.frameDuration);
    if (whole <= 0.0) {
      cause = clip.name + ": the length of the clip is not known";
      return false;
    }
    if (from >= whole) {
      cause = clip.name + ": the clip ends at " + ClockText(whole) + ", before the range begins";
      return false;
    }
    if (to <= from) {
      cause = clip.name + ": the range ends before it begins";
      return false;
    }
    const double slack = std::max(FrameSeconds(), 0.05);
    if (to > whole + slack)
      m_plan.choices.push_back("note: " + clip.name + " ends at " + ClockText(whole) +
                               ", and so does its part");
    PlannedClip planned{.source = clip.path, .sourceSeconds = whole};
    planned.sourceFrame = std::llround(from / FrameSeconds());
    planned.frames =
        std::max<std::int64_t>(std::llround(std::min(to, whole) / FrameSeconds()) - planned.sourceFrame, 1);
    m_plan.frames += planned.frames;
    m_plan.clips.push_back(planned);
    return true;
  }

  bool AddPicture(const ClipRequest& clip, const ClipSource* source, std::string& cause) {
    double seconds = m_request.photoSeconds;
    if (clip.range.to) {
      const VRXTimeInfo& frame = m_plan.frameDuration;
      seconds =
          SecondsAt(*clip.range.to, frame) - (clip.range.from ? SecondsAt(*clip.range.from, frame) : 0.0);
    }
    if (!(seconds > 0.0)) {
      cause = clip.name + ": the picture would last no time";
      return false;
    }
    PlannedPicture picture{.path = clip.path, .frames = FramesOf(seconds)};
    if (source != nullptr) SetOrientation(source->orientation, picture);
    if (m_plan.clips.empty() || m_plan.clips.back().IsMovie()) m_plan.clips.emplace_back();
    m_plan.clips.back().pictures.push_back(picture);
    m_plan.clips.back().frames += picture.frames;
    m_plan.frames += picture.frames;
    return true;
  }

  void SayClips() {
    std::size_t movies = 0, pictures = 0;
    for (const PlannedClip& clip : m_plan.clips) {
      movies += clip.IsMovie() ? 1 : 0;
      pictures += static_cast<std::size_t>(std::ranges::count_if(
          clip.pictures, [](const PlannedPicture& picture) { return !picture.path.IsEmpty(); }));
    }
    std::string line = "Movie: " + ClockText(m_plan.SecondsOf(m_plan.frames)) + " of";
    if (movies != 0) line += " " + std::to_string(movies) + (movies == 1 ? " clip" : " clips");
    if (movies != 0 && pictures != 0) line += " and";
    if (pictures != 0) line += " " + std::to_string(pictures) + (pictures == 1 ? " picture" : " pictures");
    if (movies == 0 && pictures == 0) line += " black";
    m_plan.choices.insert(m_plan.choices.begin(), line);
  }

  bool AddSound(std::string& cause) {
    if (!m_request.music.IsEmpty()) return AddMusic(cause);
    if (m_request.sound) return AddRequested(cause);
    AddOwnSound();
    return true;
  }

  /// The frames of the clip until its sound ends, which may be before its picture.
  std::int64_t SoundingFrames(const PlannedClip& clip, const ClipSource& source) {
    constexpr double kNoticeable = 0.5;  // seconds of silence
    const double seconds = source.facts.audioSeconds;
    if (seconds <= 0.0) return clip.frames;  // unknown
    const double end = m_plan.SecondsOf(clip.sourceFrame + clip.frames);
    if (end - seconds > kNoticeable)
      m_plan.choices.push_back("note: " + FileName(clip.source) + ": its sound ends at " +
                               ClockText(seconds) + ", before its picture");
    const auto sounding = static_cast<std::int64_t>(std::ceil(seconds / FrameSeconds())) - clip.sourceFrame;
    return std::clamp<std::int64_t>(sounding, 0, clip.frames);
  }

  void AddOwnSound() {
    std::size_t withSound = 0;
    for (const PlannedClip& clip : m_plan.clips) {
      std::string ignored;
      const ClipSource* source = clip.IsMovie() ? m_sources.Find(clip.source, ignored) : nullptr;
      const bool hasSound = source != nullptr && source->facts.hasAudio;
      if (hasSound && withSound++ == 0) ChooseSampleRate(source->facts.sampleRate);
      const std::int64_t sounding = hasSound ? SoundingFrames(clip, *source) : 0;
      if (sounding > 0) m_plan.sound.push_back({clip.source, clip.sourceFrame, sounding});
      if (sounding < clip.frames) m_plan.sound.push_back({{}, 0, clip.frames - sounding});
    }
    if (withSound == 0) m_plan.sound.clear();
    m_plan.choices.push_back(withSound == 0 ? "Sound: none, since no clip has any"
                             : withSound == m_plan.clips.size()
                                 ? "Sound: that of the clips"
                                 : "Sound: that of the clips, silent where there is none");
  }

  bool FindSound(const XpString& path, const std::string& name, const ClipSource*& source,
                 std::string& cause) {
    source = m_sources.Find(path, cause);
    if (source != nullptr && !source->facts.hasAudio) {
      source = nullptr;
      cause = "has no sound";
    }
    if (source == nullptr) cause = name + " " + cause;
    return source != nullptr;
  }

  /// The tune again and again until the movie ends, where it is cut.
  bool AddMusic(std::string& cause) {
    const ClipSource* source = nullptr;
    const std::string name = FileName(m_request.music);
    if (!FindSound(m_request.music, name, source, cause)) return false;
    const std::int64_t length = static_cast<std::int64_t>(source->facts.audioSeconds / FrameSeconds());
    constexpr std::int64_t kMostRepeats = 1000;
    if (length <= 0 || m_plan.frames / length > kMostRepeats) {
      cause = name + " is too short for music";
      return false;
    }
    ChooseSampleRate(source->facts.sampleRate);
    std::int64_t left = m_plan.frames;
    for (; left > 0; left -= length) m_plan.sound.push_back({m_request.music, 0, std::min(left, length)});
    const std::size_t times = m_plan.sound.size();
    m_plan.choices.push_back(
        "Sound: the music in place of that of the clips" +
        std::string(times == 1   ? left == 0 ? "" : ", cut at the end of the movie"
                    : times == 2 ? ", which begins again once"
                                 : ", which begins again " + std::to_string(times - 1) + " times"));
    return true;
  }

  bool AddRequested(std::string& cause) {
    for (const SoundRequest& sound : *m_request.sound) {
      const ClipSource* source = nullptr;
      if (!sound.path.IsEmpty() && !FindSound(sound.path, sound.name, source, cause)) return false;
      if (source != nullptr && m_plan.sampleRate == 0) ChooseSampleRate(source->facts.sampleRate);
      double seconds = sound.seconds;
      if (seconds <= 0.0 && source != nullptr) seconds = source->facts.audioSeconds - sound.startSeconds;
      if (seconds <= 0.0) continue;
      m_plan.sound.push_back(
          {sound.path, std::llround(sound.startSeconds / FrameSeconds()), FramesOf(seconds)});
    }
    if (m_plan.sampleRate == 0) m_plan.sound.clear();
    m_plan.choices.push_back(m_plan.sound.empty() ? "Sound: none" : "Sound: that of the timeline");
    return true;
  }

  void ChooseSampleRate(std::int32_t own) {
    const bool isOfDisc = own > 0 && kDiscSampleRate % own == 0;
    m_plan.sampleRate = isOfDisc ? kDiscSampleRate : kSampleRate;
  }

  const MovieRequest& m_request;
  ClipSources& m_sources;
  MoviePlan& m_plan;
  std::vector<const ClipSource*> m_found;  // of each clip; null for black
  std::string m_sizeReason;
};

}  // namespace

double MoviePlan::SecondsOf(std::int64_t count) const {
  return static_cast<double>(count) * static_cast<double>(frameDuration.value) /
         static_cast<double>(frameDuration.scale);
}

bool PlanMovie(const MovieRequest& request, ClipSources& sources, MoviePlan& plan, std::string& cause) {
  plan = {};
  cause.clear();
  return Planner(request, sources, plan).Plan(cause);
}

}  // namespace vrx::host
