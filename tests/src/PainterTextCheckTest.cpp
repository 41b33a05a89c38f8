// Every kind of damage in captions and speed sections is named with its place, and sound texts with nothing.
#include "src/check/PainterTextCheck.h"

#include <gmock/gmock.h>

#include "overlay/document/CaptionItem.h"
#include "src/check/CaptionTextCheck.h"

namespace vrx::check {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::vector<Problem> ProblemsOfCaptions(const std::string& text) {
  std::vector<Problem> problems;
  CheckCaptionText({XpNarrowString(text).ToWide(), u"/p.vrx", u"CaptionString", 10}, problems);
  return problems;
}
std::vector<Problem> ProblemsOfSections(const std::string& text) {
  std::vector<Problem> problems;
  CheckSlowInfoText({XpNarrowString(text).ToWide(), u"/p.vrx", u"SlowInfoData", 10}, problems);
  return problems;
}

std::vector<std::string> Messages(const std::vector<Problem>& problems) {
  std::vector<std::string> messages;
  for (const Problem& problem : problems) {
    EXPECT_EQ(problem.severity, Severity::Warning);
    EXPECT_EQ(problem.file, u"/p.vrx");
    messages.push_back((problem.key + u" " + problem.message).ToNarrow().c_str());
  }
  return messages;
}

std::vector<std::string> Captions(const std::string& text) { return Messages(ProblemsOfCaptions(text)); }
std::vector<std::string> Sections(const std::string& text) { return Messages(ProblemsOfSections(text)); }

constexpr char kGood[] =
    "<Caption><Text>a < b</Text><FontName>Sans</FontName><FontSize>60,5</FontSize><LayoutType>8</LayoutType>"
    "<FontColor>16777215</FontColor><LeftPos>10.5</LeftPos><RightPos> 1e3 </RightPos><VideoID>0</VideoID>"
    "</Caption>";

/// The good caption with one tag's text replaced, or the tag taken out of it.
std::string With(const std::string& tag, const std::string& value) {
  std::string text = kGood;
  const std::size_t start = text.find("<" + tag + ">") + tag.size() + 2;
  return text.replace(start, text.find("</" + tag + ">") - start, value);
}
/// The good caption with more in it.
std::string Having(const std::string& part) {
  std::string text = kGood;
  return text.insert(text.find("<FontName>"), part);
}
std::string Without(const std::string& part) {
  std::string text = kGood;
  return text.erase(text.find(part), part.size());
}

TEST(PainterTextCheckTest, DamagedCaptionsAreNamed) {
  EXPECT_THAT(Captions(std::string(kGood) + "\n" + Without("<FontSize>60,5</FontSize>")), IsEmpty());
  EXPECT_THAT(Captions(Having("<Outline>100</Outline><Margin>480</Margin><Box>1</Box><Bold>FALSE</Bold>")),
              IsEmpty());
  struct Case {
    std::string text;
    std::string message;
  };
  const std::string good = kGood;
  for (const Case& c :
       {Case{good + Without("</FontName>"), "CaptionString caption 2: </FontName> is missing"},
        Case{Without("<LeftPos>10.5</LeftPos>"), "caption 1: LeftPos is missing, and no caption before it"},
        Case{good + Without("</Caption>"), "caption 2: </Caption> is missing"},
        Case{With("Text", std::string(1'000'000, 'w')), "caption 1: its text has 1000000 characters"},
        Case{With("FontSize", "12px"),
             "caption 1: FontSize is \"12px\", which is no number: it counts as 12"},
        Case{With("FontSize", "nan"), "it counts as 0"},
        Case{With("FontSize", "0.9"), "FontSize is 0"},
        Case{With("FontSize", "-5"), "FontSize is -5: below 0"},
        Case{With("FontSize", "10000"), "FontSize is 10000: the letters are larger than the picture"},
        Case{With("LayoutType", ""), "LayoutType is \"\", which is no number"},
        Case{With("FontColor", "16777216"), "FontColor lies outside"},
        Case{With("FontColor", "-1"), "FontColor lies outside"},
        Case{With("RightPos", "1e20"), "RightPos is 1e+20: it counts as 2147483647"},
        Case{With("VideoID", "-3e9"), "VideoID is -3e+09: it counts as -2147483648"},
        Case{Having("< b> c<Shadow>1</Shadow>"), "caption 1: <Shadow> is an unknown tag"},
        Case{Having("<Outline>-1</Outline>"), "caption 1: Outline is -1: it counts as 0"},
        Case{Having("<Outline>101</Outline>"), "caption 1: Outline is 101: it counts as 100"},
        Case{Having("<Margin>481</Margin>"), "caption 1: Margin is 481: it counts as 480"},
        Case{Having("<Box>101</Box>"), "caption 1: Box is 101: it counts as 100"},
        Case{Having("<Box>0.6</Box>"), "caption 1: Box is 0.6 percent, which is hardly seen; was 60 meant?"},
        Case{Having("<Bold>yes</Bold>"), "caption 1: Bold is \"yes\", which is neither"},
        Case{Having("<Text>b</Text>"), "caption 1: <Text> stands here once more: the first one counts"},
        Case{Having("<Box >60</Box>"), "caption 1: <Box > should be <Box>"},
        Case{"two\n" + good, "CaptionString \"two\" lies in no <Caption> and is not read"},
        Case{With("LeftPos", std::string(500, 'x')), "\"" + std::string(24, 'x') + "...\""}}) {
    EXPECT_THAT(Captions(c.text), ElementsAre(HasSubstr(c.message))) << c.text.substr(0, 400);
  }
}

TEST(PainterTextCheckTest, ProblemsKnowTheirLinesAndCaptionsTheirDamage) {
  const std::string inherits = "\n<Caption><Text>x</Text></Caption>";
  std::vector<Problem> problems;
  const CaptionPlaces places =
      CheckCaptionText({XpNarrowString("\n" + With("Text", "a\nb") + "\n" + With("LayoutType", "12") +
                                       inherits + "\n" + kGood + inherits)
                            .ToWide(),
                        u"/p.vrx", u"CaptionString", 10},
                       problems);
  EXPECT_THAT(places.lines, ElementsAre(11u, 13u, 14u, 15u, 16u));
  EXPECT_THAT(places.damaged, ElementsAre(2u, 3u));
  ASSERT_EQ(problems.size(), 1u);
  EXPECT_EQ(problems[0].line, 13u);
  const auto sections = ProblemsOfSections("1,1,0,1,0,0|\n\n1,0,1,2,3,3|\n2,");
  ASSERT_EQ(sections.size(), 2u);
  EXPECT_EQ(sections[0].line, 12u);
  EXPECT_EQ(sections[1].line, 13u);
}

TEST(PainterTextCheckTest, EscapesAreNamedOnceForEachKind) {
  EXPECT_THAT(Captions(With("Text", "Fish & chips; a\\b C:\\new <3 {x} <bold> 5 > 4")), IsEmpty());
  const auto problems = Captions(With("Text", "{\\an8}<i>a</i>") + With("Text", "&lt;b&gt;\\n") +
                                 With("Text", "a<br/>b &#38; c"));
  EXPECT_THAT(
      problems,
      ElementsAre(HasSubstr("caption 2: \"\\n\" is shown as it stands: a line break in the text begins "
                            "a new line (more captions with such: 1)"),
                  HasSubstr("caption 2: \"&lt;\" is shown as it stands: write the character itself (more"),
                  HasSubstr("caption 1: \"{\\an8}\" is shown as it stands: text has no styles")));
}

TEST(PainterTextCheckTest, DamagedSpeedSectionsAreNamed) {
  const std::string good = "1,0.5,1.0,2.0,3.0,3.0|";
  EXPECT_THAT(Sections(""), IsEmpty());
  EXPECT_THAT(Sections(good + "1,-1,2.0,3.0,3.0,3.0|"), IsEmpty());
  struct Case {
    std::string text;
    std::string message;
  };
  for (const Case& c : {Case{good + "garbage|", "SlowInfoData record 2: the VideoID cannot be read"},
                        Case{"1,0.5,1.0|", "record 1: the end cannot be read"},
                        Case{"1,fast,1,2,3,3|", "record 1: the speed cannot be read"},
                        Case{"1,0.5,1,2,3,nan|", "record 1: the time with trimmed parts cannot be read"},
                        Case{"1,0.5,1,2,3,3,4|", "record 1: more than six fields"},
                        Case{"1,0.5,3,2,3,3|", "record 1: it ends before it starts"},
                        Case{"1,0,1,2,3,3|", "record 1: at a speed of 0"},
                        Case{"|" + good, "record 1: the VideoID cannot be read"},
                        Case{good + "1,0.5,1", "record 2: does not end with a bar"}}) {
    EXPECT_THAT(Sections(c.text), ElementsAre(HasSubstr(c.message))) << c.text;
  }
}

TEST(PainterTextCheckTest, ManyProblemsAreCountedAndLimitsAreNamed) {
  const auto repeated = [](const std::string& text, std::size_t times) {
    std::string all;
    for (std::size_t i = 0; i < times; ++i) all += text;
    return all;
  };
  const auto captions = Captions(repeated(With("FontSize", "x"), 1000));
  EXPECT_EQ(captions.size(), 51u);
  EXPECT_THAT(captions.back(), HasSubstr("has 950 more problems"));
  EXPECT_THAT(Captions(kGood + repeated("<Caption></Caption>", overlay::kMaxCaptions)),
              ElementsAre(HasSubstr("holds more than 200000 captions")));
  EXPECT_THAT(Sections(repeated("1,1,0,1,0,0|", 5000)),
              ElementsAre(HasSubstr("holds more than 2048 records")));
}

}  // namespace
}  // namespace vrx::check
