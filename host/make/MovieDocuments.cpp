#include "host/make/MovieDocuments.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <span>

#include "content/plist/PlistWriter.h"
#include "foundation/file/XpReplaceFile.h"
#include "foundation/text/XpPath.h"
#include "host/Console.h"
#include "host/FileCauses.h"
#include "host/GpsSidecar.h"
#include "host/PngFile.h"

namespace vrx::host {
namespace {

constexpr double kMillisecondsPerSecond = 1000.0;
constexpr std::string_view kHead =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<plist version=\"1.0\">\n<dict>\n";
constexpr std::string_view kTail = "</dict>\n</plist>\n";
// Texts of the instruments, by their places in the document.
constexpr std::array kLabels{"mph",  "mi",      "km/h",  "km",   "kn",      "NM",       "Speed",
                             "Date", "Elapsed", "Total", "Time", "Average", "Distance", "Track"};

std::string Escaped(const XpString& text) {
  std::string escaped;
  plist::AppendEscaped(escaped, text.AsView());
  return escaped;
}

std::string Attribute(const XpString& text) {
  std::string escaped = Escaped(text);
  for (std::size_t at = 0; (at = escaped.find('"', at)) != escaped.npos;) escaped.replace(at, 1, "&quot;");
  return escaped;
}

XpString Wide(const std::string& text) { return XpNarrowString(text).ToWide(); }

/// Three decimals, rounded up: times are rounded down to a frame when they are read. 0 for what is below.
std::string Number(double number) {
  constexpr double kDecimals = 1000.0, kRounding = 1e-7;
  const double scaled = std::ceil(number * kDecimals - kRounding);
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%.3f", scaled > 0.0 ? scaled / kDecimals : 0.0);
  return text.data();
}

std::string Line(int depth, const std::string& text) {
  return std::string(static_cast<std::size_t>(depth) * 2, ' ') + text + "\n";
}
std::string Comment(int depth, const std::string& text) {
  std::string safe = text;  // two hyphens would end it
  for (std::size_t at = 0; (at = safe.find("--", at)) != safe.npos;) safe.replace(at, 2, "- -");
  return Line(depth, "<!-- " + Escaped(Wide(safe)) + " -->");
}
std::string Key(int depth, const char* key, const char* type, const std::string& value) {
  return Line(depth, "<key>" + std::string(key) + "</key><" + type + ">" + value + "</" + type + ">");
}
std::string Integer(int depth, const char* key, std::int64_t number) {
  return Key(depth, key, "integer", std::to_string(number));
}
std::string Flag(int depth, const char* key) {
  return Line(depth, "<key>" + std::string(key) + "</key><true/>");
}
std::string Open(int depth, const char* key, const char* type) {
  return Line(depth, "<key>" + std::string(key) + "</key>") + Line(depth, "<" + std::string(type) + ">");
}
std::string Close(int depth, const char* type) { return Line(depth, "</" + std::string(type) + ">"); }

/// Silence of at least this length: PCM of 8 bits in a WAV file, whose middle is 128.
std::string SilentSound(double seconds) {
  constexpr std::uint32_t kRate = 8'000;
  constexpr char kSilence = '\x80';
  const auto bytes = static_cast<std::uint32_t>(std::ceil(seconds * kRate / 2.0)) * 2;  // chunks are even
  std::string file = "RIFF";
  const auto add = [&](std::uint32_t number, int size) {
    for (int i = 0; i < size; ++i) file.push_back(static_cast<char>(number >> (8 * i)));
  };
  add(36 + bytes, 4);
  file += "WAVEfmt ";
  for (const auto& [number, size] :
       {std::pair{16U, 4}, {1U, 2}, {1U, 2}, {kRate, 4}, {kRate, 4}, {1U, 2}, {8U, 2}})
    add(number, size);
  file += "data";
  add(bytes, 4);
  return file.append(bytes, kSilence);
}

class DocumentWriter {
 public:
  DocumentWriter(const MoviePlan& plan, const MovieOverlays& overlays, const XpString& project,
                 const XpString& output)
      : m_plan(plan),
        m_overlays(overlays),
        m_project(project),
        m_output(output),
        m_folder(XpPathDirectory(project)),
        m_stem(XpPathStem(project)) {}

  bool Write(std::string& cause) {
    return WriteMedia(cause) && WritePictures(cause) &&
           (m_overlays.IsEmpty() || WriteText(PathOf(u"-overlays.vrx"), PainterText(), cause)) &&
           WriteText(m_project, ProjectText(), cause);
  }

 private:
  XpString PathOf(const XpString& ending) const { return XpPathJoin(m_folder, m_stem + ending); }
  XpString PicturesPath(std::size_t clip) const {
    return PathOf(u"-pictures-" + Wide(std::to_string(clip + 1)) + u".xml");
  }
  XpString SilencePath() const { return PathOf(u"-silence.wav"); }
  XpString BlackPath() const { return PathOf(u"-black.png"); }

  /// Relative where it lies in the project's folder or below.
  XpString Reference(const XpString& path) const {
    const std::u16string_view whole = path.AsView(), folder = m_folder.AsView();
    return whole.starts_with(folder) ? XpString(whole.substr(folder.size())) : path;
  }

  static bool WriteText(const XpString& path, const std::string& text, std::string& cause) {
    const XpResult result = XpReplaceFile(path, std::as_bytes(std::span(text)));
    if (result != XpOk) cause = Utf8(path) + " cannot be written: " + WriteCause(result);
    return result == XpOk;
  }

  /// Silence and black, where the movie has any.
  bool WriteMedia(std::string& cause) const {
    bool hasBlack = false;
    std::int64_t silence = 0;  // frames of the longest
    for (const PlannedSound& sound : m_plan.sound) {
      if (sound.source.IsEmpty()) silence = std::max(silence, sound.frames);
    }
    for (const PlannedClip& clip : m_plan.clips) {
      for (const PlannedPicture& picture : clip.pictures) hasBlack = hasBlack || picture.path.IsEmpty();
    }
    const double seconds = m_plan.SecondsOf(std::min(silence, SilencePart()));
    if (silence != 0 && !WriteText(SilencePath(), SilentSound(seconds), cause)) return false;
    if (!hasBlack) return true;
    constexpr std::uint32_t kSide = 16;
    const std::vector<std::uint32_t> pixels(kSide * kSide, 0);
    if (WritePng(BlackPath(), {kSide, kSide, pixels}, false, cause)) return true;
    cause = Utf8(BlackPath()) + " cannot be written: " + cause;
    return false;
  }

  bool WritePictures(std::string& cause) const {
    for (std::size_t i = 0; i < m_plan.clips.size(); ++i) {
      const PlannedClip& clip = m_plan.clips[i];
      if (!clip.IsMovie() && !WriteText(PicturesPath(i), PicturesText(clip), cause)) return false;
    }
    return true;
  }

  std::string PicturesText(const PlannedClip& clip) const {
    std::string text =
        "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<VRXBaseband>\n  <Properties>\n"
        "    <BasebandType SystemType=\"Video\" SourceType=\"ImageFile\"/>\n  </Properties>\n"
        "  <!-- Each picture with its first and last frame, counted at the movie's rate -->\n  <Timeline>\n";
    std::int64_t frame = 0;
    int id = 0;
    for (const PlannedPicture& picture : clip.pictures) {
      const XpString path = picture.path.IsEmpty() ? BlackPath() : picture.path;
      text += "    <DecImage ImageId=\"" + std::to_string(++id) + "\" ImagePath=\"" +
              Attribute(Reference(path)) + "\" InFrame=\"" + std::to_string(frame) + "\" OutFrame=\"" +
              std::to_string(frame + picture.frames - 1) + "\"\n              Mirror=\"" +
              (picture.isMirrored ? "1" : "0") + "\" Rotation=\"" + std::to_string(picture.rotation) +
              "\" RectTop=\"0\" RectBottom=\"0\" RectLeft=\"0\" RectRight=\"0\"/>\n";
      frame += picture.frames;
    }
    return text + "  </Timeline>\n</VRXBaseband>\n";
  }

  double Milliseconds(std::int64_t frames) const { return m_plan.SecondsOf(frames) * kMillisecondsPerSecond; }

  std::string ClipText(const XpString& source, std::int64_t first, std::int64_t frames) const {
    return Key(4, "SourceFile", "string", Escaped(Reference(source))) +
           Key(4, "StartTime", "real", Number(Milliseconds(first))) +
           Key(4, "EndTime", "real", Number(Milliseconds(first + frames)));
  }

  std::string SoundText(const XpString& source, std::int64_t first, std::int64_t frames) const {
    return Line(3, "<dict>") + ClipText(source, first, frames) + Close(3, "dict");
  }

  /// The longest part of a silence, in frames, so that its file stays small: a minute.
  std::int64_t SilencePart() const {
    return std::max<std::int64_t>(static_cast<std::int64_t>(60.0 / m_plan.SecondsOf(1)), 1);
  }

  /// Clips of pictures have whole milliseconds.
  std::string PictureClipText(std::size_t index) const {
    const double end = std::ceil(Milliseconds(m_plan.clips[index].frames) - 1e-7);
    return Key(4, "SourceFile", "string", Escaped(Reference(PicturesPath(index)))) +
           Line(4, "<!-- Still pictures -->") + Integer(4, "SourceType", 4) +
           Key(4, "StartTime", "real", "0.0") + Key(4, "EndTime", "real", Number(end));
  }

  std::string TracksText() const {
    std::string text =
        Comment(2, "The clips in the order of play, with their parts in milliseconds of their own time");
    text += Open(2, "VideoTrack", "array");
    for (std::size_t i = 0; i < m_plan.clips.size(); ++i) {
      const PlannedClip& clip = m_plan.clips[i];
      text += Line(3, "<dict>");
      text += clip.IsMovie() ? ClipText(clip.source, clip.sourceFrame, clip.frames) : PictureClipText(i);
      text += Close(3, "dict");
    }
    text += Close(2, "array");
    if (m_plan.sound.empty()) return text;
    text += Comment(2, "The sound: these clips follow each other, whatever the pictures do");
    text += Open(2, "AudioTrack", "array");
    for (const PlannedSound& sound : m_plan.sound) {
      if (sound.source.IsEmpty()) {
        for (std::int64_t left = sound.frames; left > 0; left -= SilencePart())
          text += SoundText(SilencePath(), 0, std::min(left, SilencePart()));
      } else {
        text += SoundText(sound.source, sound.sourceFrame, sound.frames);
      }
    }
    return text + Close(2, "array");
  }

  std::string VideoSettingsText() const {
    std::string text = Open(3, "VideoOutputSettings", "dict");
    text += Integer(4, "Width", m_plan.size.width) + Integer(4, "Height", m_plan.size.height);
    text += Comment(4, "A frame lasts TimeValue / TimeScale seconds");
    text += Integer(4, "TimeValue", static_cast<std::int64_t>(m_plan.frameDuration.value)) +
            Integer(4, "TimeScale", static_cast<std::int64_t>(m_plan.frameDuration.scale));
    text += m_plan.bitrate ? Integer(4, "AverageBitrate", *m_plan.bitrate)
                           : Comment(4, "Constant quality; AverageBitrate would give bits a second instead");
    return text + Close(3, "dict");
  }

  std::string AudioSettingsText() const {
    return Open(3, "AudioOutputSettings", "dict") + Integer(4, "Channel", 2) +
           Integer(4, "SamplingRate", m_plan.sampleRate) + Close(3, "dict");
  }

  std::string ProjectText() const {
    std::string text(kHead);
    for (const std::string& choice : m_plan.choices) text += Comment(1, choice);
    text += Open(1, "VRXWrapper", "dict") + TracksText() + Open(2, "OutputSettings", "dict");
    text += Key(3, "OutputFilePath", "string", Escaped(Reference(m_output)));
    if (!m_overlays.IsEmpty())
      text += Key(3, "PainterEffect", "string", Escaped(Reference(PathOf(u"-overlays.vrx"))));
    text += VideoSettingsText();
    if (!m_plan.sound.empty()) text += AudioSettingsText();
    return text + Close(2, "dict") + Close(1, "dict") + std::string(kTail);
  }

  /// When the instruments begin. Pictures do not count as time for overlays, so a movie that has some before
  /// its last clip, or captions over those at its end, states the whole span itself, which only counts when
  /// it does not begin at 0. Captions are only drawn while the instruments are.
  double DrawStart() const {
    if (m_overlays.gps.clips.empty()) return 0.0;
    if (!m_plan.clips.front().IsMovie() && m_overlays.captions.empty())
      return m_overlays.gps.clips.front().movieStart;
    bool hasPictures = false;
    for (const PlannedClip& clip : m_plan.clips) {
      if (clip.IsMovie() && hasPictures) return m_plan.SecondsOf(1) / 2.0;
      hasPictures = hasPictures || !clip.IsMovie();
    }
    return hasPictures && !m_overlays.captions.empty() ? m_plan.SecondsOf(1) / 2.0 : 0.0;
  }

  std::string GeneralText() const {
    std::string text = Open(2, "GeneralInfo", "dict") + Flag(3, "SaveMovieMode") +
                       Integer(3, "VideoWidth", m_plan.size.width) +
                       Integer(3, "VideoHeight", m_plan.size.height);
    const GpsOverlay& gps = m_overlays.gps;
    if (gps.clips.empty()) return text + Close(2, "dict");
    text += Comment(3, "The instruments: 1 along the lower edge, 7 at both sides") +
            Integer(3, "VideoLayoutType", 1);
    text += Comment(3, "0 kilometres, 1 miles, 2 knots and nautical miles") +
            Integer(3, "GpsUnitFromUser", static_cast<int>(gps.unit));
    std::string records;
    for (const ClipLog& clip : gps.clips) {
      records += std::to_string(clip.videoId) + ",1.0," + Number(clip.movieStart - DrawStart()) + "," +
                 Number(clip.movieEnd - DrawStart()) + ",0.0," + Number(clip.start) + "|";
    }
    text += Comment(3, "When each clip shows: number, speed, start and end in the movie, place in the clip");
    text += Key(3, "SlowInfoData", "string", records) + Open(3, "StringManager", "array");
    for (const char* label : kLabels) text += Line(4, "<string>" + std::string(label) + "</string>");
    return text + Close(3, "array") + Close(2, "dict");
  }

  std::string TemplateText() const {
    const GpsOverlay& gps = m_overlays.gps;
    std::string text = Open(2, "TemplateInfo", "dict") + Flag(3, "Valid");
    text += Comment(3, "1 drive, 2 sports, 3 walk, 4 speed graph") +
            Integer(3, "ScenarioType", static_cast<int>(gps.look));
    text += Integer(3, "Width", m_plan.size.width) + Integer(3, "Height", m_plan.size.height);
    text += Comment(3, "One journey of all clips") + Flag(3, "LinkGPSLog");
    text += Line(3, "<key>DrawTrimmedOutArea</key><false/>");
    text += Key(3, "DrawStartTime", "real", Number(DrawStart())) +
            Key(3, "DrawEndTime", "real", Number(m_plan.SecondsOf(m_plan.frames)));
    text += Open(3, "LogDataArray", "array");
    for (const ClipLog& clip : gps.clips) {
      text += Line(4, "<dict>") + Integer(5, "VideoID", clip.videoId) +
              Key(5, "StartTime", "real", Number(clip.start)) + Key(5, "EndTime", "real", Number(clip.end)) +
              Key(5, "GPSLogFilePath", "string", Escaped(Reference(clip.movie))) +
              Key(5, "OriginalDateTime", "date", DateText(clip)) +
              Key(5, "Duration", "real", Number(clip.clipSeconds)) + Close(4, "dict");
    }
    return text + Close(3, "array") + Close(2, "dict");
  }

  static std::string DateText(const ClipLog& clip) {
    std::string text = LocalDateText(clip.date);
    constexpr std::size_t kAfterYear = 4, kAfterMonth = 7;
    text[kAfterYear] = text[kAfterMonth] = ':';
    return text;
  }

  std::string CaptionsText() const {
    std::string text = Open(2, "CaptionInfo", "dict") + Flag(3, "Valid");
    text += Comment(3, "Letters keep their shape in movies that are not 16:9") + Flag(3, "KeepShape");
    text += Comment(3, "A caption that leaves a tag out has the value of the one before it");
    const std::string captions = CaptionString(m_overlays.captions, DrawStart() * kMillisecondsPerSecond,
                                               !m_overlays.gps.clips.empty());
    return text + Key(3, "CaptionString", "string", Escaped(Wide(captions))) + Close(2, "dict");
  }

  std::string PainterText() const {
    std::string text = std::string(kHead) + Open(1, "PainterInfo", "dict") + GeneralText();
    if (!m_overlays.gps.clips.empty()) text += TemplateText();
    if (!m_overlays.captions.empty()) text += CaptionsText();
    return text + Close(1, "dict") + std::string(kTail);
  }

  const MoviePlan& m_plan;
  const MovieOverlays& m_overlays;
  const XpString& m_project;
  const XpString& m_output;
  const XpString m_folder;
  const XpString m_stem;
};

}  // namespace

bool WriteDocuments(const MoviePlan& plan, const MovieOverlays& overlays, const XpString& project,
                    const XpString& output, std::string& cause) {
  return DocumentWriter(plan, overlays, project, output).Write(cause);
}

}  // namespace vrx::host
