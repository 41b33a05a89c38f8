#include "src/check/CaptionLookCheck.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <string>

#include "foundation/text/NearestName.h"
#include "foundation/text/XpFormat.h"
#include "foundation/text/XpPath.h"
#include "overlay/caption/CaptionLayout.h"
#include "overlay/document/PainterKeys.h"
#include "overlay/painter/PainterFontName.h"
#include "vrx/XpTextCodec.h"

namespace vrx::check {
namespace {

using drawing::FontFinding;
using drawing::FontPresence;

// What takes long is done for no more than a movie of people needs.
constexpr std::size_t kMostProblems = 50;      // of each kind
constexpr std::size_t kMostFaces = 100;        // whose fonts are looked for
constexpr std::size_t kMostMeasured = 50'000;  // characters of captions that are laid out

/// Calls `take` for the characters of a text that fonts may lack.
template <class Function>
void ForUnusualCharacters(const XpString& text, Function take) {
  constexpr char32_t kFirst = 0x80;
  const std::u16string_view units = text.AsView();
  for (std::size_t i = 0; i < units.size(); ++i) {
    char32_t c = units[i];
    const bool isPair =
        textcodec::IsHighSurrogate(c) && i + 1 < units.size() && textcodec::IsLowSurrogate(units[i + 1]);
    if (isPair) c = 0x10000 + ((c - 0xD800) << 10) + (units[++i] - 0xDC00u);
    if (c >= kFirst) take(c);
  }
}

void AppendCharacter(std::u16string& text, char32_t c) {
  if (c < 0x10000) {
    text.push_back(static_cast<char16_t>(c));
  } else {
    text.push_back(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)));
    text.push_back(static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF)));
  }
}

/// The faces that documents name wherever they come from.
bool IsPainterFace(const XpString& face) {
  constexpr std::array kLocales{u"", u"ja-JP", u"ko-KR", u"zh-CN", u"zh-TW"};
  return std::ranges::any_of(kLocales, [&](const char16_t* locale) {
    return XpCompareNoCase(face, PainterFontNameFor(locale)) == 0;
  });
}

class LookChecker {
 public:
  LookChecker(const CaptionShow& show, drawing::FontCheck& fonts, drawing::TextRenderer& renderer,
              ProjectReport& report)
      : m_show(show), m_fonts(fonts), m_renderer(renderer), m_report(report) {}

  void Run() {
    for (std::size_t i = 0; i < m_show.plan.captions.size(); ++i) {
      if (!m_report.captions[i].hiddenBecause.IsEmpty()) continue;
      const CaptionItem& caption = m_show.plan.captions[i];
      Face& face = m_faces.try_emplace(caption.fontName, Face{i, {}}).first->second;
      ForUnusualCharacters(caption.text, [&](char32_t c) { face.characters.try_emplace(c, i); });
      CheckRoom(caption, i);
    }
    std::size_t faces = 0;
    for (const auto& [name, face] : m_faces) {
      if (++faces > kMostFaces) break;
      if (!name.IsEmpty()) CheckFace(name, face.caption);
      if (!face.characters.empty()) CheckCharacters(name, face);
    }
  }

 private:
  /// A font name, the first caption that has it, and the characters to draw with the first caption of each.
  struct Face {
    std::size_t caption;
    std::map<char32_t, std::size_t> characters;
  };

  void Add(Severity severity, std::size_t caption, const XpString& message) {
    XpString line;
    XpFormat(line, u"caption %u: %s", static_cast<std::uint32_t>(caption + 1), message);
    m_report.problems.push_back({.severity = severity,
                                 .file = m_report.painterPath,
                                 .key = overlay::kCaptionString.name,
                                 .message = line,
                                 .line = m_show.places.LineOf(caption + 1)});
  }

  void CheckFace(const XpString& name, std::size_t caption) {
    const FontFinding found = m_fonts.FindFont(name);
    if (found.presence == FontPresence::Installed || m_faceProblems++ >= kMostProblems) return;
    XpString message = u"the font " + name + u" is not installed: ";
    message.Append(found.taken.IsEmpty() ? XpString(u"there is none at all") : found.taken + u" is taken");
    if (found.presence == FontPresence::Alias || IsPainterFace(name)) {
      return Add(Severity::Note, caption, message);
    }
    const std::vector<XpString> families = m_fonts.ListFamilies();
    std::vector<std::u16string_view> names;
    for (const XpString& family : families) names.push_back(family.AsView());
    if (const auto nearest = NearestName(name.AsView(), names)) {
      message = message + u"; did you mean " + XpString(*nearest) + u"?";
    }
    Add(Severity::Warning, caption, message);
  }

  void CheckCharacters(const XpString& name, const Face& face) {
    std::u16string text;
    for (const auto& [character, caption] : face.characters) {
      AppendCharacter(text, character);
      text.push_back(u' ');  // so that none joins the one before
    }
    std::map<std::size_t, std::u32string> missing;  // by the caption that has them first
    for (const char32_t c : m_fonts.MissingCharacters(text, name)) {
      const auto known = face.characters.find(c);
      if (known != face.characters.end() && !m_missing.contains(c)) missing[known->second].push_back(c);
    }
    for (const auto& [caption, characters] : missing) {
      for (const char32_t c : characters) m_missing.insert(c);
      if (m_characterProblems++ < kMostProblems) Add(Severity::Warning, caption, MissingText(characters));
    }
  }

  static XpString MissingText(const std::u32string& characters) {
    constexpr std::size_t kMostNamed = 8;
    XpString text = u"no font has ";
    for (std::size_t i = 0; i < std::min(characters.size(), kMostNamed); ++i) {
      XpAppendFormat(text, i == 0 ? u"U+%04X" : u", U+%04X", static_cast<std::uint32_t>(characters[i]));
    }
    if (characters.size() > kMostNamed) {
      XpAppendFormat(text, u" and %u more", static_cast<std::uint32_t>(characters.size() - kMostNamed));
    }
    return text + u": a box is drawn";
  }

  void CheckRoom(const CaptionItem& caption, std::size_t index) {
    const VRXVideoOutputSetting& video = *m_report.videoSettings;
    const overlay::CaptionCanvas canvas =
        overlay::MakeCaptionCanvas({video.width, video.height}, m_show.info.captionInfo.keepShape);
    if (m_roomProblems >= kMostProblems || FitsSurely(caption, canvas.size)) return;
    if (m_measured > kMostMeasured) return;
    m_measured += std::min(caption.text.AsView().size(), drawing::kMaxTextUnits);
    KVSCaptionPainterLayoutBase fonts(m_show.info.captionInfo.layoutKind, video.width, video.height);
    const overlay::CaptionLayout layout = overlay::LayOutCaption(caption, canvas.size, m_renderer, fonts);
    if (layout.hasAllLines) return;
    ++m_roomProblems;
    XpString message;
    XpFormat(message, u"is %d pixels high in a picture of %d: its last lines are left out",
             static_cast<std::int32_t>(layout.text.height), static_cast<std::int32_t>(canvas.size.height));
    Add(Severity::Warning, index, message);
  }

  /// By sizes that no font exceeds, so that few captions have to be laid out.
  static bool FitsSurely(const CaptionItem& caption, const drawing::Size& canvas) {
    constexpr double kWidest = 1.5;  // em
    constexpr double kHighest = 2.5;
    const double size = std::max<double>(std::abs(caption.fontSize), drawing::kDefaultLineHeight);
    const double width = canvas.width - 2 * std::clamp(caption.margin, 20.0, overlay::kWidestCaptionMargin);
    double lines = 0;
    std::u16string_view rest = caption.text.AsView();
    while (true) {
      const std::size_t end = std::min(rest.find(u'\n'), rest.size());
      // Words that do not fit leave room at the end of a line: at most half of it is counted on.
      lines += 1 + std::floor(static_cast<double>(end) * size * kWidest / (width / 2));
      if (end == rest.size()) break;
      rest.remove_prefix(end + 1);
    }
    return lines * size * kHighest < canvas.height - 2 * std::max(caption.margin, 20.0);
  }

  const CaptionShow& m_show;
  drawing::FontCheck& m_fonts;
  drawing::TextRenderer& m_renderer;
  ProjectReport& m_report;
  std::map<XpString, Face> m_faces;
  std::set<char32_t> m_missing;  // named already
  std::size_t m_measured = 0;    // characters
  std::size_t m_faceProblems = 0;
  std::size_t m_characterProblems = 0;
  std::size_t m_roomProblems = 0;
};

}  // namespace

void CheckCaptionsLook(const CaptionShow& show, drawing::FontCheck& fonts, drawing::TextRenderer& renderer,
                       ProjectReport& report) {
  LookChecker(show, fonts, renderer, report).Run();
}

}  // namespace vrx::check
