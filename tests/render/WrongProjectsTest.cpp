// A table of wrong projects: each is a good one with one mistake, and gets exactly one line for it, from the check
// and, where it matters, from the render.
#include <regex>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/render/RenderFixture.h"
#include "tests/src/BasebandText.h"

namespace {

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
      // Keys and elements.
      {Project, "Width<", "Widht<", ""},
      {Project, "<key>OutputSettings", "<key>OutputSetings", ""},
      {Project, "VideoTrack", "VidoTrack", ""},
      {Project, "EndTime</key><real>4000</real>\n    </dict>\n    <dict>", "EndTim</key><real>4000</real>\n    </dict>\n    <dict>", ""},
      {Project, "<real>0<", "<integer>0<", ""},
      {Project, "<integer>25</integer>", "<intger>25</intger>", ""},
      {Project, "<key>Height</key>", "<kye>Height</kye>", ""},
      {Project, "<key>OutputFilePath", "<key>Width</key><integer>320</integer><key>OutputFilePath", ""},
      {Project, "<real>0</real>", "<string>0</string>", ""},
      {Project, "<integer>320<", "<string>320<", ""},
      {Project, "AudioOutputSettings", "AudioOutputSetting", ""},
  };
  return kMistakes;
}

}  // namespace
