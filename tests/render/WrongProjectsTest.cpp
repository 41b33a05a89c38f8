// A table of wrong projects: each is a good one with one mistake, and gets exactly one line for it, from the
// check and, where it matters, from the render.
#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/render/RenderFixture.h"
#include "tests/src/BasebandText.h"

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr char kProject[] = R"(<plist version="1.0">
<dict>
<key>VRXWrapper</key>
<dict>
  <key>VideoTrack</key>
  <array>
    <dict>
      <key>SourceFile</key><string>a.mp4</string>
      <key>StartTime</key><real>0</real>
      <key>EndTime</key><real>4000</real>
    </dict>
    <dict>
      <key>SourceFile</key><string>photos.xml</string>
      <key>SourceType</key><integer>4</integer>
      <key>StartTime</key><real>0</real>
      <key>EndTime</key><real>2000</real>
    </dict>
  </array>
  <key>AudioTrack</key>
  <array>
    <dict>
      <key>SourceFile</key><string>a.mp4</string>
      <key>EndTime</key><real>4000</real>
    </dict>
  </array>
  <key>OutputSettings</key>
  <dict>
    <key>OutputFilePath</key><string>out.mp4</string>
    <key>PainterEffect</key><string>painter.vrx</string>
    <key>VideoOutputSettings</key>
    <dict>
      <key>Width</key><integer>320</integer>
      <key>Height</key><integer>192</integer>
      <key>TimeValue</key><integer>1</integer>
      <key>TimeScale</key><integer>25</integer>
      <key>AverageBitrate</key><integer>1000000</integer>
    </dict>
    <key>AudioOutputSettings</key>
    <dict>
      <key>Channel</key><integer>2</integer>
      <key>SamplingRate</key><integer>48000</integer>
    </dict>
  </dict>
</dict>
</dict>
</plist>
)";

constexpr char kPainter[] = R"(<plist version="1.0">
<dict>
<key>PainterInfo</key>
<dict>
  <key>GeneralInfo</key>
  <dict>
    <key>SaveMovieMode</key><true/>
    <key>VideoWidth</key><integer>320</integer>
  </dict>
  <key>CaptionInfo</key>
  <dict>
    <key>Valid</key><true/>
    <key>CaptionString</key><string><![CDATA[
<Caption><Text>One</Text><FontName>Sans</FontName><FontSize>60</FontSize>
<LayoutType>5</LayoutType><FontColor>255</FontColor>
<LeftPos>400</LeftPos><RightPos>2000</RightPos><VideoID>7</VideoID></Caption>
<Caption><Text>Two</Text><LeftPos>2500</LeftPos><RightPos>3900</RightPos></Caption>
]]></string>
  </dict>
</dict>
</dict>
</plist>
)";

struct Mistake {
  enum Document { Project, Painter, Photos };
  Document document;
  std::string right;
  std::string wrong;
  std::string line;  // the documents are called p.vrx, painter.vrx and photos.xml
};

const std::vector<Mistake>& Mistakes() {
  using enum Mistake::Document;
  static const std::vector<Mistake> kMistakes = {
      {Project, "Width<", "Widht<", "error: p.vrx:32: Widht is an unknown key; did you mean Width?"},
      {Project, "<key>OutputSettings", "<key>OutputSetings",
       "error: p.vrx:26: OutputSetings is an unknown key; did you mean OutputSettings?"},
      {Project, "VideoTrack", "VidoTrack",
       "error: p.vrx:5: VidoTrack is an unknown key; did you mean VideoTrack?"},
      {Project, "EndTime<", "EndTim<",
       "warning: p.vrx:10: VideoTrack clip 1: EndTim is an unknown key; did you mean EndTime?"},
      {Project, "<real>0</real>", "<integer>0</integer>",
       "warning: p.vrx:9: VideoTrack clip 1: StartTime is integer instead of real: it is not read"},
      {Project, "<integer>25</integer>", "<intger>25</intger>",
       "error: p.vrx:35: is no readable project document: <intger> is no value of a property list; did you "
       "mean <integer>?"},
      {Project, "<key>Height</key>", "<kye>Height</kye>",
       "error: p.vrx:33: <kye> stands where a key belongs; did you mean <key>? What follows in the dict is "
       "not read"},
      {Project, "<key>OutputFilePath", "<key>SamplingRate</key><integer>48000</integer><key>OutputFilePath",
       "warning: p.vrx:28: SamplingRate belongs into AudioOutputSettings: here it is not read"},
      {Project, "<key>SamplingRate</key><integer>48000</integer>\n    </dict>",
       "</dict>\n    <key>SamplingRate</key><integer>48000</integer>",
       "error: p.vrx:42: SamplingRate belongs into AudioOutputSettings: here it is not read"},
      {Project, "AudioOutputSettings", "AudioOutputSetting",
       "warning: p.vrx:38: AudioOutputSetting is an unknown key; did you mean AudioOutputSettings?"},
      {Project, ">1000000<", ">1000<",
       "warning: p.vrx:36: AverageBitrate 1000 bits a second are too few for the picture; were 1000000 "
       "meant?"},
      {Project, ">1000000<", ">1M<",
       "error: p.vrx:36: AverageBitrate is \"1M\", which is no whole number: it counts as 1"},
      {Project, "out.mp4", "out.avi",
       "warning: p.vrx:28: OutputFilePath an MP4 file is written under a name that ends in .avi (.mov, .ts, "
       ".m2ts and .mts are known as well)"},
      {Project, ">48000<", ">48<",
       "error: p.vrx:41: SamplingRate must lie between 8000 and 192000 Hz, and is 48; was 48000 meant?"},
      {Project, "<real>4000<", "<real>4.0<",
       "warning: p.vrx:10: VideoTrack clip 1: EndTime the clip is shorter than a frame: the whole source is "
       "used (times are milliseconds; were 0 and 4000 meant?)"},
      {Project, ">1000000<", ">1<",
       "error: p.vrx:36: AverageBitrate 1 bits a second are too few for the picture; were 1000000 meant?"},
      {Project, "<integer>1</integer>", "<integer>400</integer>",
       "error: p.vrx:34: TimeValue a frame must last from 1/1000 to 10 seconds"},
      {Project, "out.mp4", ".", "error: p.vrx:28: OutputFilePath . is a folder"},
      {Project, "<key>Channel<", "<key>AudioCodecType</key><integer>4</integer><key>Channel<",
       "warning: p.vrx:40: AudioCodecType is 4, not one of 0 to 3: it counts as 0"},
      {Project, "<real>2000<", "<real>2<",
       "error: p.vrx:16: VideoTrack clip 2: EndTime the clip is shorter than a frame (times are "
       "milliseconds; were 0 and 2000 meant?)"},
      {Project, "<key>Width</key><integer>320</integer>", "<key>Width</key><dict><real>320</real></dict>",
       "error: p.vrx:32: Width is dict instead of integer: it is not read"},
      {Project, "<real>2000<", "<real>2s<",
       "error: p.vrx:16: VideoTrack clip 2: EndTime is \"2s\", which is no number: it counts as 2"},
      {Project, "photos.xml", "b\xFCro.xml",
       "error: p.vrx:13: is no readable project document: the byte 0xFC is not UTF-8 (column 37)"},
      {Project, "VRXWrapper", "VRXWraper",
       "error: p.vrx:3: VRXWraper is an unknown key; did you mean VRXWrapper?"},
      {Painter, "SaveMovieMode", "SaveMoveMode",
       "warning: painter.vrx:7: GeneralInfo/SaveMoveMode is an unknown key; did you mean SaveMovieMode?"},
      {Painter,
       "<key>GeneralInfo</key>\n  <dict>\n    <key>SaveMovieMode</key><true/>\n    "
       "<key>VideoWidth</key><integer>320</integer>\n  </dict>",
       "<key>SaveMovieMode</key><true/>\n    <key>VideoWidth</key><integer>320</integer>",
       "warning: painter.vrx:5: SaveMovieMode belongs into GeneralInfo, which is missing"},
      {Painter, "<string><![CDATA[", "<string>captions <![CDATA[",
       "warning: painter.vrx:13: CaptionString has text before <![CDATA[: what follows it is not read"},
      {Painter, ">Two<", ">T\xFC<",
       "warning: painter.vrx:17: cannot be read as a painter document: the movie will have no overlays (the "
       "byte "
       "0xFC is not UTF-8)"},
      {Painter, "VideoWidth", "VideoWith",
       "warning: painter.vrx:8: GeneralInfo/VideoWith is an unknown key; did you mean VideoWidth?"},
      {Painter, "<Text>One</Text>", "<Txt>One</Txt>",
       "warning: painter.vrx:14: CaptionString caption 1: <Txt> is an unknown tag; did you mean <Text>?"},
      {Painter, "<Text>One</Text>", "<Text>One</Txt>",
       "warning: painter.vrx:14: CaptionString caption 1: </Txt> should be </Text>: it is not read"},
      {Painter, "</VideoID></Caption>", "</VideoID>",
       "warning: painter.vrx:14: CaptionString caption 1: </Caption> is missing: the caption after it is not "
       "read"},
      {Painter, "3900</RightPos></Caption>", "3900</RightPos>",
       "warning: painter.vrx:17: CaptionString caption 2: </Caption> is missing: the caption is not read, "
       "nor what follows"},
      {Painter, "<Caption><Text>Two", "<caption><Text>Two",
       "warning: painter.vrx:17: CaptionString <caption> is an unknown tag; did you mean <Caption>?"},
      {Painter, ">400<", ">0.4<",
       "warning: painter.vrx:16: CaptionString caption 1: LeftPos is 0.4: it counts as 0 (times are "
       "milliseconds)"},
      {Painter, ">One<", ">One\\NTwo<",
       "warning: painter.vrx:14: CaptionString caption 1: \"\\N\" is shown as it stands: a line break in the "
       "text begins a new line"},
      {Painter, ">One<", ">One\nTwo\\nThree<",
       "warning: painter.vrx:15: CaptionString caption 1: \"\\n\" is shown as it stands: a line break in the "
       "text begins a new line"},
      {Painter, ">One<", ">Fish &amp; chips<",
       "warning: painter.vrx:14: CaptionString caption 1: \"&amp;\" is shown as it stands: write the "
       "character itself"},
      {Painter, ">2500<", ">1500<",
       "warning: painter.vrx:17: CaptionString caption 2 shows only in part: from 1.500 s to 2.000 s an "
       "earlier one is shown in its place"},
      {Painter, ">60<", ">60pt<",
       "warning: painter.vrx:14: CaptionString caption 1: FontSize is \"60pt\", which is no number: it "
       "counts as 60"},
      {Painter, ">5<", ">10<",
       "warning: painter.vrx:15: CaptionString caption 1: LayoutType is \"10\", not one of 1 to 9: nothing "
       "is shown"},
      {Painter, ">One<", ">One \xF3\xB1\x88\xB4<",
       "warning: painter.vrx:14: CaptionString caption 1: no font has U+F1234: a box is drawn"},
      {Painter, ">2000<", ">2s<",
       "warning: painter.vrx:16: CaptionString caption 1: RightPos is \"2s\", which is no number: it counts "
       "as 2"},
      {Painter,
       "400</LeftPos><RightPos>2000</RightPos><VideoID>7</VideoID></Caption>\n<Caption><Text>Two</"
       "Text><LeftPos>2500</LeftPos><RightPos>3900<",
       "1</LeftPos><RightPos>2</RightPos><VideoID>7</VideoID></Caption>\n<Caption><Text>Two</"
       "Text><LeftPos>3</LeftPos><RightPos>4<",
       "warning: painter.vrx:14: CaptionString all captions end in the first 0.004 s: LeftPos and RightPos "
       "are milliseconds; were seconds meant?"},
      {Painter, "<true/>\n    <key>VideoW", "<ture/>\n    <key>VideoW",
       "warning: painter.vrx:7: cannot be read as a painter document: the movie will have no overlays "
       "(<ture> is no value of a property list; did you mean <true>?)"},
      {Photos, "Mirror=\"0\"", "Miror=\"0\"",
       "error: photos.xml:2: VideoTrack clip 2: Miror is an unknown attribute; did you mean Mirror? The "
       "document is not used, and the clip is black"},
      {Photos, "InFrame=\"0\"", "InFrame=\"30\"",
       "warning: photos.xml:2: VideoTrack clip 2: OutFrame lies before InFrame: the image is never shown"},
      {Photos, "OutFrame=\"49\"", "OutFrame=\"48\"",
       "warning: photos.xml:3: VideoTrack clip 2: the images end with frame 48, the clip with frame 49: the "
       "frames between are black"},
      {Photos, "<DecImage ", "<DecImag ",
       "warning: photos.xml:2: VideoTrack clip 2: DecImag is an unknown element; did you mean DecImage?"},
      {Photos, "Timeline", "Timline",
       "error: photos.xml:1: VideoTrack clip 2: Timline is an unknown element; did you mean Timeline? The "
       "document is not used, and the clip is black"},
  };
  return kMistakes;
}

class WrongProjectsTest : public RenderFixture {
 protected:
  WrongProjectsTest() : RenderFixture(320, 192) {
    WriteClip("a.mp4", {.frames = 100, .hasSound = true});
    folder.Write("pixel.bmp", PixelBmp());
  }
  /// Writes the good project with a mistake, all its documents with `number` in their names. Gives its path.
  std::string WriteWith(const Mistake& mistake, std::size_t number) {
    const std::string photos =
        BasebandText(ImageText(1, "pixel.bmp", 0, 24) + ImageText(2, "pixel.bmp", 25, 49));
    std::string documents[] = {kProject, kPainter, photos};
    Replace(documents[mistake.document], mistake.right, mistake.wrong);
    const std::string tail = "-" + std::to_string(number);
    Replace(documents[Mistake::Project], "photos.xml", "photos.xml" + tail);
    Replace(documents[Mistake::Project], "painter.vrx", "painter.vrx" + tail);
    folder.Write("painter.vrx" + tail, documents[Mistake::Painter]);
    folder.Write("photos.xml" + tail, documents[Mistake::Photos]);
    return folder.Write("p.vrx" + tail, documents[Mistake::Project]);
  }
  static void Replace(std::string& text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    if (at == text.npos) return;
    text.replace(at, from.size(), to);
    // An element is misspelt at both of its ends.
    const std::string close = "</" + from + ">";
    if (const std::size_t end = text.find(close); end != text.npos && to.find('<') == to.npos) {
      text.replace(end, close.size(), "</" + to + ">");
    }
  }
  /// Without the folder, and the numbers of the documents.
  std::string Short(const std::string& text) const {
    std::string shorter = text;
    const std::string path = folder.Path().string() + "/";
    for (std::size_t at; (at = shorter.find(path)) != shorter.npos;) shorter.erase(at, path.size());
    for (const std::string name : {"vrx-", "xml-"}) {
      for (std::size_t at = 0; (at = shorter.find(name, at)) != shorter.npos;) {
        at += name.size() - 1;
        const std::size_t end = std::min(shorter.find_first_not_of("0123456789", at + 1), shorter.size());
        if (end > at + 1) shorter.erase(at, end - at);
      }
    }
    return shorter;
  }
  /// What `vrx check` lists under "Problems", for each of its projects.
  std::vector<std::vector<std::string>> Check(const std::vector<std::string>& projects) {
    VrxCall call{.arguments = {"check"}};
    call.arguments.insert(call.arguments.end(), projects.begin(), projects.end());
    m_result = RunVrx(call);
    std::vector<std::vector<std::string>> all;
    bool isProblem = false;
    std::istringstream lines(Short(m_result.output));
    for (std::string line; std::getline(lines, line);) {
      if (line.starts_with("Project ")) all.emplace_back();
      if (isProblem && line.starts_with("  ")) all.back().push_back(line.substr(2));
      isProblem = line == "Problems" || (isProblem && line.starts_with("  "));
    }
    return all;
  }
};

TEST_F(WrongProjectsTest, EachMistakeGetsItsOneLine) {
  std::vector<std::string> projects{WriteWith({}, 0)};
  for (const Mistake& mistake : Mistakes()) projects.push_back(WriteWith(mistake, projects.size()));
  const auto problems = Check(projects);
  EXPECT_EQ(m_result.status, 1);
  ASSERT_EQ(problems.size(), projects.size());
  EXPECT_THAT(problems[0], testing::IsEmpty());
  for (std::size_t i = 0; i < Mistakes().size(); ++i) {
    const Mistake& mistake = Mistakes()[i];
    EXPECT_THAT(problems[i + 1], ElementsAre(mistake.line)) << mistake.right << " -> " << mistake.wrong;
  }
}

TEST_F(WrongProjectsTest, RenderPrintsTheSameLineAndStrictWritesNothing) {
  const Mistake painterKey{Mistake::Painter, "SaveMovieMode", "SaveMoveMode"};
  const std::string line =
      "vrx: warning: painter.vrx:7: GeneralInfo/SaveMoveMode is an unknown key; did you mean "
      "SaveMovieMode?\n";
  const std::string path = WriteWith(painterKey, 1);
  VrxResult result = RunVrx({{"render", path, "--strict"}});
  EXPECT_EQ(Short(result.errors),
            line + "vrx: render failed (0x8000): p.vrx: has warnings, which --strict refuses\n");
  EXPECT_EQ(result.status, 1);
  EXPECT_FALSE(std::filesystem::exists(Path("out.mp4")));
  EXPECT_EQ(RunVrx({{"check", path}}).status, 0);
  EXPECT_EQ(RunVrx({{"check", path, "--strict"}}).status, 1);

  result = RunVrx({{"render", path}});
  EXPECT_EQ(Short(result.errors), line);
  EXPECT_EQ(result.status, 0);

  // The others are rendered all the same.
  const std::string broken = WriteWith({Mistake::Project, "Width<", "Widht<"}, 2);
  const std::string good = WriteWith({Mistake::Project, "out.mp4", "good.mp4"}, 3);
  result = RunVrx({{"render", broken, good, "--strict"}});
  EXPECT_THAT(Short(result.errors), HasSubstr("p.vrx:32: Widht is an unknown key; did you mean Width?"));
  EXPECT_THAT(Short(result.output),
              AllOf(HasSubstr("Project p.vrx\nProject p.vrx\n"), HasSubstr("150 frames")));
  EXPECT_EQ(result.status, 1);
  EXPECT_TRUE(std::filesystem::exists(Path("good.mp4")));
}

TEST_F(WrongProjectsTest, StandardInputIsAProjectOfTheWorkingFolder) {
  WriteWith({}, 1);
  const std::string good = folder.Read("p.vrx-1");
  std::filesystem::current_path(folder.Path());
  ASSERT_EQ(RunVrx({{"render", "p.vrx-1"}}).status, 0);
  const std::string movie = folder.Read("out.mp4");  // with the captions
  std::filesystem::remove(Path("out.mp4"));
  VrxResult result = RunVrx({.arguments = {"render", "-", "--strict"}, .input = good});
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.status, 0);
  EXPECT_TRUE(folder.Read("out.mp4") == movie);
  std::string wrong = good;
  Replace(wrong, "Width<", "Widht<");
  for (const char* command : {"check", "render"}) {
    result = RunVrx({.arguments = {command, "-"}, .input = wrong});
    EXPECT_THAT(result.output + result.errors,
                HasSubstr("standard input:32: Widht is an unknown key; did you mean Width?\n"));
    EXPECT_EQ(result.status, 1);
  }
  // The lines of a document with changes are not those that were sent.
  EXPECT_THAT(RunVrx({.arguments = {"render", "-", "--rate", "25"}, .input = wrong}).errors,
              HasSubstr("standard input: Widht is an unknown key"));
}

}  // namespace
