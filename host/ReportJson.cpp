#include "host/ReportJson.h"

#include "host/SpanReport.h"

namespace vrx::host {
namespace {

/// A number that the document does not set is read as -1, cut to the width of its field.
template <class Number>
Json SetOrNull(Number number) {
  return number == static_cast<Number>(-1) ? Json() : Json(number);
}

Json TextOrNull(const XpString& text) { return text.IsEmpty() ? Json() : Json(Utf8(text)); }

Json VideoJson(const VRXVideoOutputSetting& video) {
  return {{"width", SetOrNull(video.width)},
          {"height", SetOrNull(video.height)},
          {"timeValue", SetOrNull(video.frameDuration.value)},
          {"timeScale", SetOrNull(video.frameDuration.scale)},
          {"averageBitrate", SetOrNull(video.averageBitrate)},
          {"codecType", video.codecType},
          {"specificationType", video.specificationType},
          {"interlace", video.interlace}};
}

Json AudioJson(const VRXAudioOutputSetting& audio) {
  return {{"codecType", audio.codecType},
          {"channels", SetOrNull(audio.channels)},
          {"bitsPerSample", SetOrNull(audio.bitsPerSample)},
          {"samplingRate", SetOrNull(audio.samplingRate)}};
}

Json OutputJson(const check::ProjectReport& report) {
  Json output{{"path", TextOrNull(report.outputPath)},
              {"frames", report.totalFrames},
              {"seconds", report.totalSeconds}};
  if (report.videoSettings) output["video"] = VideoJson(*report.videoSettings);
  if (report.audioSettings) output["audio"] = AudioJson(*report.audioSettings);
  return output;
}

Json OverlaysJson(const check::ProjectReport& report) {
  Json overlays{
      {"document", Utf8(report.painterPath)}, {"ranges", Json::array()}, {"captions", Json::array()}};
  for (const check::OverlayRow& row : report.overlays) {
    overlays["ranges"].push_back({{"firstFrame", row.firstFrame},
                                  {"lastFrame", row.lastFrame},
                                  {"start", row.startSeconds},
                                  {"end", row.endSeconds}});
  }
  for (const check::CaptionRow& row : report.captions) {
    Json caption{{"number", row.number},         {"text", Utf8(row.text)},
                 {"start", row.startSeconds},    {"end", row.endSeconds},
                 {"layoutType", row.layoutType}, {"shows", row.hiddenBecause.IsEmpty()}};
    if (!row.hiddenBecause.IsEmpty()) caption["cause"] = Utf8(row.hiddenBecause);
    overlays["captions"].push_back(caption);
  }
  for (const check::GpsClipRow& row : report.gpsClips) {
    Json clip{{"videoId", row.videoId},
              {"log", Utf8(row.log)},
              {"clipSeconds", row.clipSeconds},
              {"secondsWithPosition", row.fixes},
              {"firstPosition", row.fixes == 0 ? Json() : Json(row.firstFixSeconds)},
              {"lastPosition", row.fixes == 0 ? Json() : Json(row.lastFixSeconds)},
              {"current", Json::array()}};
    for (const auto& [start, end] : row.shown) clip["current"].push_back({{"start", start}, {"end", end}});
    overlays["gpsClips"].push_back(clip);
  }
  return overlays;
}

Json StillImagesJson(const check::ProjectReport& report) {
  Json images = Json::array();
  for (const check::StillImageRow& row : report.stillImages) {
    images.push_back({{"clip", row.clip},
                      {"line", row.line},
                      {"imageId", row.imageId},
                      {"picture", Utf8(row.picture)},
                      {"width", row.width == 0 ? Json() : Json(row.width)},
                      {"height", row.height == 0 ? Json() : Json(row.height)},
                      {"inFrame", row.inFrame},
                      {"outFrame", row.outFrame},
                      {"rotation", row.rotation},
                      {"mirror", row.mirror}});
  }
  return images;
}

}  // namespace

Json ReportJson(const std::string& project, const check::ProjectReport& report, const EngineSpans& spans) {
  Json document{{"project", project}, {"renderable", !report.HasErrors()}, {"output", OutputJson(report)}};
  document["timeline"] = Json::array();
  for (const check::ClipRow& clip : report.clips) {
    const bool hasLength = !clip.wholeSource || clip.seconds > 0.0;
    document["timeline"].push_back({{"track", Utf8(clip.track)},
                                    {"clip", clip.clip},
                                    {"source", TextOrNull(clip.source)},
                                    {"wholeSource", clip.wholeSource},
                                    {"firstFrame", clip.firstFrame},
                                    {"frames", hasLength ? Json(clip.frames) : Json()},
                                    {"movieStart", clip.movieStart},
                                    {"seconds", hasLength ? Json(clip.seconds) : Json()},
                                    {"sourceStart", clip.sourceStart}});
  }
  if (!spans.IsEmpty()) AddSpans(spans, document);
  if (!report.stillImages.empty()) document["stillImages"] = StillImagesJson(report);
  if (!report.painterPath.IsEmpty()) document["overlays"] = OverlaysJson(report);
  document["problems"] = Json::array();
  for (const check::Problem& problem : report.problems) document["problems"].push_back(ProblemJson(problem));
  return document;
}

}  // namespace vrx::host
