// What keeps a caption from looking as it was meant to: fonts, characters and room, with fonts and a text
// renderer that are the same on every machine.
#include "src/check/CaptionLookCheck.h"

#include <gmock/gmock.h>

#include "drawing/BoxTextRenderer.h"

namespace vrx::check {
namespace {

using drawing::FontFinding;
using drawing::FontPresence;
using testing::ElementsAre;
using testing::IsEmpty;

class FewFonts : public drawing::FontCheck {
 public:
  FontFinding FindFont(const XpString& face) override {
    if (face == u"Plain") return {FontPresence::Installed, face};
    return {face == u"Twin" ? FontPresence::Alias : FontPresence::Missing, u"Plain"};
  }
  std::u32string MissingCharacters(std::u16string_view text, const XpString&) override {
    std::u32string missing;
    if (text.find(u'\u00E4') != text.npos) missing.push_back(U'\u00E4');
    if (text.find(u"\U0001F697") != text.npos) missing.push_back(U'\U0001F697');
    return missing;
  }
  std::vector<XpString> ListFamilies() override { return {u"Other", u"Plain"}; }
};

class CaptionLookCheckTest : public testing::Test {
 protected:
  std::vector<std::string> Lines() {
    ProjectReport report;
    report.videoSettings = std::make_unique<VRXVideoOutputSetting>();
    report.videoSettings->width = 1280;
    report.videoSettings->height = 720;
    report.captions.resize(plan.captions.size());
    if (!report.captions.empty()) report.captions.back().hiddenBecause = hiddenBecause;
    FewFonts fonts;
    drawing::BoxTextRenderer renderer;
    const CaptionPlaces places{{11, 12, 13}, {}};
    CheckCaptionsLook({info, plan, {1, 25}, places}, fonts, renderer, report);
    std::vector<std::string> lines;
    for (const Problem& problem : report.problems) {
      lines.push_back((problem.severity == Severity::Note ? "N " : "W ") + std::to_string(problem.line) +
                      " " + problem.message.ToNarrow().c_str());
    }
    return lines;
  }
  void Add(const XpString& text, const XpString& face = u"Plain") {
    CaptionItem caption{.text = text, .fontName = face, .fontSize = 100};
    caption.layoutType = 5;
    plan.captions.push_back(caption);
  }

  PainterInfo info;
  overlayplan::OverlayPlan plan;
  XpString hiddenBecause;
};

TEST_F(CaptionLookCheckTest, FontsThatAreMissingAreNamedOnce) {
  Add(u"a", u"Twin");
  Add(u"b", u"Palin");
  Add(u"c", u"Palin");
  EXPECT_THAT(Lines(),
              ElementsAre("W 12 caption 2: the font Palin is not installed: Plain is taken; did you mean "
                          "Plain?",
                          "N 11 caption 1: the font Twin is not installed: Plain is taken"));
  plan.captions.clear();
  Add(u"a");
  Add(u"b", u"");
  Add(u"c", u"segoe ui");
  EXPECT_THAT(Lines(), ElementsAre("N 13 caption 3: the font segoe ui is not installed: Plain is taken"));
  hiddenBecause = u"it never shows";
  EXPECT_THAT(Lines(), IsEmpty());
}

TEST_F(CaptionLookCheckTest, CharactersThatNoFontHasAreNamedWithTheFirstCaption) {
  Add(u"a\u00F6");
  Add(u"a\u00E4\U0001F697\U0001F698");
  Add(u"a\u00E4");
  EXPECT_THAT(Lines(), ElementsAre("W 12 caption 2: no font has U+00E4, U+1F697: a box is drawn"));
}

TEST_F(CaptionLookCheckTest, LinesWithoutRoomAreNamed) {
  std::string lines;
  for (int i = 0; i < 9; ++i) lines += "line\n";
  Add(XpNarrowString(lines).ToWide());
  EXPECT_THAT(Lines(), IsEmpty());
  Add(XpNarrowString(lines + lines).ToWide());
  Add(XpNarrowString(std::string(2000, 'w')).ToWide());
  const auto problems = Lines();
  ASSERT_EQ(problems.size(), 2u);
  EXPECT_THAT(problems[0],
              testing::MatchesRegex(
                  "W 12 caption 2: is [0-9]+ pixels high in a picture of 1080: its last lines are left out"));
  EXPECT_THAT(problems[1], testing::HasSubstr("caption 3: is"));
}

}  // namespace
}  // namespace vrx::check
