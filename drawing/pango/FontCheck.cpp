#include "drawing/FontCheck.h"

#include <algorithm>
#include <array>
#include <set>

#include <fontconfig/fontconfig.h>

#include "drawing/TextLines.h"
#include "drawing/TextRenderer.h"
#include "drawing/pango/PangoFonts.h"
#include "foundation/text/XpPath.h"
#include "vrx/XpTextCodec.h"

namespace vrx::drawing {
namespace {

struct FontConfigRelease {
  void operator()(FcPattern* p) const { FcPatternDestroy(p); }
  void operator()(FcFontSet* p) const { FcFontSetDestroy(p); }
  void operator()(FcObjectSet* p) const { FcObjectSetDestroy(p); }
};

template <class T>
using FontConfigOwned = std::unique_ptr<T, FontConfigRelease>;

/// Whatever the system takes for them is what was asked for.
constexpr std::array kGeneralNames{"Sans",      "Sans-serif", "Serif",   "Mono",     "Monospace",
                                   "System-ui", "Cursive",    "Fantasy", "Ui-serif", "Ui-sans-serif"};
/// No font has this name.
constexpr char kUnheardOf[] = "vrx unheard-of face";

std::string Utf8(const XpString& text) { return textcodec::ToUtf8(CutText(text.AsView(), kMaxFaceUnits)); }
XpString Wide(const char* text) { return XpString(textcodec::ToUtf16(text)); }

bool IsSameName(const XpString& a, const XpString& b) { return XpCompareNoCase(a, b) == 0; }

/// The families that a pattern names.
std::vector<XpString> FamiliesOf(const FcPattern* pattern) {
  std::vector<XpString> names;
  FcChar8* name = nullptr;
  for (int i = 0; FcPatternGetString(pattern, FC_FAMILY, i, &name) == FcResultMatch; ++i) {
    names.push_back(Wide(reinterpret_cast<const char*>(name)));
  }
  return names;
}

/// The families of the font that the system takes for a face: one font may have several names.
std::vector<XpString> Match(const std::string& face) {
  FontConfigOwned<FcPattern> pattern(FcPatternCreate());
  FcPatternAddString(pattern.get(), FC_FAMILY, reinterpret_cast<const FcChar8*>(face.c_str()));
  FcConfigSubstitute(nullptr, pattern.get(), FcMatchPattern);
  FcDefaultSubstitute(pattern.get());
  FcResult result = FcResultNoMatch;
  const FontConfigOwned<FcPattern> found(FcFontMatch(nullptr, pattern.get(), &result));
  return found == nullptr ? std::vector<XpString>() : FamiliesOf(found.get());
}

class SystemFontCheck final : public FontCheck {
 public:
  FontFinding FindFont(const XpString& face) override {
    // The font system takes a list of faces, the first of which that is there counts.
    const std::u16string_view all = face.AsView();
    const XpString first(all.substr(0, all.find(u',')));
    const std::vector<XpString> taken = Match(Utf8(first));
    FontFinding finding;
    if (!taken.empty()) finding.taken = taken.front();
    const auto isFace = [&](const XpString& name) { return IsSameName(name, first); };
    const auto isGeneral = [&](const char* name) { return IsSameName(Wide(name), first); };
    if (first.IsEmpty() || std::ranges::any_of(taken, isFace) ||
        std::ranges::any_of(kGeneralNames, isGeneral)) {
      finding.presence = FontPresence::Installed;
    } else if (!taken.empty() && taken != Match(kUnheardOf)) {
      finding.presence = FontPresence::Alias;
    }
    return finding;
  }

  std::u32string MissingCharacters(std::u16string_view text, const XpString& face) override {
    const PangoFonts::Entry& font = m_fonts.Resolve({.face = face, .height = kProbeHeight});
    const std::string utf8 = textcodec::ToUtf8(CleanText(CutText(text, kMaxTextUnits), DT_NOPREFIX));
    const PangoOwned<PangoLayout> layout(pango_layout_new(m_fonts.GetContext(true)));
    pango_layout_set_font_description(layout.get(), font.description.get());
    pango_layout_set_text(layout.get(), utf8.data(), static_cast<int>(utf8.size()));
    std::u32string missing;
    if (pango_layout_get_unknown_glyphs_count(layout.get()) == 0) return missing;
    const PangoOwned<PangoLayoutIter> at(pango_layout_get_iter(layout.get()));
    do {
      const PangoLayoutRun* run = pango_layout_iter_get_run_readonly(at.get());
      for (int i = 0; run != nullptr && i < run->glyphs->num_glyphs; ++i) {
        const PangoGlyph glyph = run->glyphs->glyphs[i].glyph;
        const auto character = static_cast<char32_t>(glyph & ~PangoGlyph{PANGO_GLYPH_UNKNOWN_FLAG});
        const bool isUnknown = glyph != PANGO_GLYPH_EMPTY && (glyph & PANGO_GLYPH_UNKNOWN_FLAG) != 0;
        if (isUnknown && missing.find(character) == missing.npos) missing.push_back(character);
      }
    } while (pango_layout_iter_next_run(at.get()) != 0);
    return missing;
  }

  std::vector<XpString> ListFamilies() override {
    const FontConfigOwned<FcPattern> all(FcPatternCreate());
    const FontConfigOwned<FcObjectSet> wanted(FcObjectSetBuild(FC_FAMILY, nullptr));
    const FontConfigOwned<FcFontSet> fonts(FcFontList(nullptr, all.get(), wanted.get()));
    std::set<XpString> names;
    for (int i = 0; fonts != nullptr && i < fonts->nfont; ++i) {
      for (const XpString& name : FamiliesOf(fonts->fonts[i])) names.insert(name);
    }
    return {names.begin(), names.end()};
  }

 private:
  static constexpr std::int32_t kProbeHeight = -20;  // pixels; any will do

  PangoFonts m_fonts;
};

}  // namespace

std::unique_ptr<FontCheck> FontCheck::OfSystem() { return std::make_unique<SystemFontCheck>(); }

}  // namespace vrx::drawing
