#include "host/make/PlanProject.h"

#include <cmath>
#include <span>
#include <string_view>

#include "content/plist/PlistWriter.h"
#include "content/subtitles/Subtitles.h"
#include "foundation/text/XpPath.h"
#include "host/Console.h"
#include "host/WholeFile.h"
#include "host/make/MovieDocuments.h"

namespace vrx::host {
namespace {

constexpr std::size_t kMostNotes = 5;  // of a subtitle file

std::string Counted(std::size_t count, const char* noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

/// Why the documents cannot name all files; empty when they can.
std::string CauseAgainstNames(const MovieRequest& request, const XpString& project, const XpString& output) {
  std::vector<XpString> paths{project, output, request.music};
  for (const ClipRequest& clip : request.clips) paths.push_back(clip.path);
  if (request.sound) {
    for (const SoundRequest& sound : *request.sound) paths.push_back(sound.path);
  }
  for (const XpString& path : paths) {
    constexpr std::string_view kReplaced = "\uFFFD";
    std::string written;
    plist::AppendEscaped(written, path.AsView());
    if (written.find(kReplaced) != written.npos)
      return Utf8(path) + ": a document cannot hold this name, which is no UTF-8 or has control characters";
  }
  return {};
}

bool ReadCaptions(const XpString& path, MoviePlan& plan, std::vector<MovieCaption>& captions,
                  std::string& cause) {
  constexpr std::int64_t kMostMiB = subtitles::kMostBytes >> 20;
  std::string bytes;
  if (!ReadWholeFile(path, kMostMiB, "file of captions", bytes, cause)) return false;
  const std::string name = FileName(path);
  subtitles::Subtitles read;
  if (subtitles::ReadSubtitles(std::span(bytes.data(), bytes.size()), read, cause) != XpOk) {
    cause = name + ": " + cause;
    return false;
  }
  const auto movieMs = static_cast<std::int64_t>(std::llround(plan.SecondsOf(plan.frames) * 1000.0));
  captions = ArrangeCaptions(read.cues, movieMs);
  // Where captions overlap by less than a frame there is nothing to show together.
  const auto firstFrame = [&](std::int64_t ms) {
    constexpr double kRounding = 1e-6;
    return std::ceil(static_cast<double>(ms) / (plan.SecondsOf(1) * 1000.0) - kRounding);
  };
  std::erase_if(captions, [&](const MovieCaption& caption) {
    return firstFrame(caption.startMs) >= firstFrame(caption.endMs);
  });
  std::size_t late = 0;
  for (const subtitles::Cue& cue : read.cues) late += cue.startMs >= movieMs ? 1 : 0;
  plan.choices.push_back("Captions: " + Counted(read.cues.size() - late, "caption") + " of " + name);
  if (late != 0)
    plan.choices.push_back("warning: " + name + ": " + Counted(late, "caption") + " after the movie's end");
  const std::size_t shown = std::min(read.notes.size(), kMostNotes);
  for (std::size_t i = 0; i < shown; ++i)
    plan.choices.push_back("note: " + name + ":" + std::to_string(read.notes[i].line) + ": " +
                           read.notes[i].text);
  if (const std::uint64_t more = read.notes.size() - shown + read.furtherNotes; more != 0)
    plan.choices.push_back("note: " + name + ": " + std::to_string(more) + " more of the kind");
  return true;
}

}  // namespace

bool WriteProject(const MovieRequest& request, const XpString& project, const XpString& output,
                  std::vector<std::string>& choices, std::string& cause) {
  if (cause = CauseAgainstNames(request, project, output); !cause.empty()) return false;
  EngineModule engine;
  if (!engine.Load(cause)) return false;
  engine.Listen({});
  ClipSources sources(engine);
  MoviePlan plan;
  MovieOverlays overlays;
  if (!PlanMovie(request, sources, plan, cause)) return false;
  if (!request.captions.IsEmpty() && !ReadCaptions(request.captions, plan, overlays.captions, cause))
    return false;
  if (!request.gps.log.IsEmpty() &&
      !PlanGps(request.gps, XpPathDirectory(project), XpPathStem(project), plan, overlays.gps, cause))
    return false;
  choices = plan.choices;
  return WriteDocuments(plan, overlays, project, output, cause);
}

}  // namespace vrx::host
