// The overlays that a document asks for reach the painters, and a damaged document does no harm.
#include <limits>

#include <gmock/gmock.h>

#include "overlay/document/CaptionItem.h"
#include "overlay/document/SlowInfoRecord.h"
#include "overlay/document/TKLXPainterInfoXml.h"
#include "tests/support/TempFolder.h"

namespace {

std::vector<SlowInfoRecord> Segments(const XpString& text) {
  std::vector<SlowInfoRecord> list;
  ParseSlowInfoData(text, list);
  return list;
}

std::vector<CaptionItem> Captions(const XpString& text) {
  std::vector<CaptionItem> items;
  ParseCaptionString(text, items);
  return items;
}

TEST(SlowInfoDataTest, DamagedRecordsKeepWhatWentBefore) {
  struct Case {
    const char16_t* text;
    std::vector<std::vector<float>> records;
  };
  for (const Case& c : std::vector<Case>{
           {u"1,0.5,0.000000,2.000000,0.000000,0.000000|", {{1, 0.5f, 0, 2, 0, 0}}},
           {u"1,1.0,0,1,0,0", {}},
           {u"", {}},
           {u"1,2,3,4,5,6|7,8,x|9,|", {{1, 2, 3, 4, 5, 6}, {7, 8, 3, 4, 5, 6}, {9, 8, 3, 4, 5, 6}}},
           {u"|", {{0, 0, 0, 0, 0, 0}}},
           {u"1,nan,2|3,inf,2|4,1e99,2|", {{1, 0, 0, 0, 0, 0}, {3, 0, 0, 0, 0, 0}, {4, 0, 0, 0, 0, 0}}},
           {u"1,2,1e-60,4,5,6|", {{1, 2, 0, 4, 5, 6}}},
           {u"-1,-2,+3,.5,1e1,-0|", {{-1, -2, 3, 0.5f, 10, 0}}},
           {u"+-1,2|\x4e00,2|", {{0, 0, 0, 0, 0, 0}, {0, 0, 0, 0, 0, 0}}},
           {u" 1, 2|", {{1, 2, 0, 0, 0, 0}}}}) {
    const auto list = Segments(c.text);
    ASSERT_EQ(list.size(), c.records.size()) << XpString(c.text).ToNarrow().c_str();
    for (std::size_t i = 0; i < list.size(); ++i) {
      const SlowInfoRecord& r = list[i];
      EXPECT_THAT((std::vector<float>{static_cast<float>(r.videoId), r.speed, r.startTime, r.endTime,
                                      r.sourceTime, r.sourceTimeWithTrim}),
                  testing::ElementsAreArray(c.records[i]))
          << XpString(c.text).ToNarrow().c_str() << " record " << i;
    }
  }
  EXPECT_EQ(Segments(u"99999999999,1|")[0].videoId, std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(Segments(u"-99999999999,1|")[0].videoId, std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(Segments(XpString(std::u16string(1'000'000, u'|'))).size(), vrx::overlay::kMaxSpeedSections);
}

TEST(CaptionStringTest, TagsAreReadMissingOnesInheritedAndDamageStaysInside) {
  const auto items = Captions(
      u"</Caption><Caption></Text>a<Text></Caption><Caption><Text>b</Caption></Text>"
      u"<Caption><LeftPos>1e30</LeftPos><RightPos>-1e30</RightPos><FontColor>-1</FontColor></Caption>"
      u"x<Caption><Text>a &\n b</Text><FontName>F</FontName><FontSize>12.5</FontSize><LayoutType>9"
      u"</LayoutType><FontColor>16711680</FontColor><LeftPos>10.9</LeftPos><RightPos>-5</RightPos>"
      u"<VideoID>7</VideoID><Outline>2.5</Outline><OutlineColor>65280</OutlineColor><Box>40</Box>"
      u"<Italic>\t TRUE\n</Italic><Margin>30</Margin><Balance>1</Balance></Caption>"
      u"<Caption><LayoutType>12</LayoutType><Text>c</Text><Bold>1</Bold><Italic>yes</Italic></Caption>"
      u"<Caption><Text>lost</Text>");
  ASSERT_EQ(items.size(), 5u);
  EXPECT_TRUE(items[0].text.IsEmpty() && items[1].text.IsEmpty());
  EXPECT_EQ(items[2].startMs, std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(items[2].endMs, std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(items[2].fontColor, 0xFFFFFFu);
  EXPECT_EQ(items[3].text, u"a &\n b");
  EXPECT_EQ(items[3].fontName, u"F");
  EXPECT_EQ(items[3].fontSize, 12.5);
  EXPECT_EQ(items[3].layoutType, 9);
  EXPECT_EQ(items[3].fontColor, 0xFF0000u);  // blue lies in the third byte
  EXPECT_EQ(items[3].startMs, 10);
  EXPECT_EQ(items[3].endMs, -5);
  EXPECT_EQ(items[4].text, u"c");
  EXPECT_EQ(items[4].layoutType, 0);
  EXPECT_EQ(items[4].videoId, 7);
  EXPECT_EQ(items[4].outline, 2.5);
  EXPECT_EQ(items[4].outlineColor, 0x00FF00u);
  EXPECT_EQ(items[4].boxOpacity, 40);
  EXPECT_EQ(items[4].margin, 30);
  EXPECT_TRUE(items[3].isItalic && items[4].isBold && items[4].isBalanced);
  EXPECT_FALSE(items[2].isBalanced || items[3].isBold || items[4].isItalic);
}

TEST(CaptionStringTest, HugeTextsAreReadOnce) {
  std::u16string many;
  for (int i = 0; i < 100'000; ++i) many += u"<Caption><Text>x</Text><LeftPos>1</LeftPos></Caption>";
  EXPECT_EQ(Captions(XpString(many)).size(), 100'000u);
  const std::u16string big = u"<Caption><Text>" + std::u16string(1 << 20, u'<') + u"</Text></Caption>";
  EXPECT_EQ(Captions(XpString(big))[0].text.Length(), 1 << 20);
  // Openings without an end must not be searched over and over.
  std::u16string open;
  for (int i = 0; i < 100'000; ++i) open += u"<Caption><Text>";
  EXPECT_TRUE(Captions(XpString(open)).empty());
}

class PainterDocumentTest : public testing::Test {
 protected:
  XpResult Load(const std::string& info, const std::string& key = "PainterInfo") {
    const std::string path = m_folder.Write("p.vrx", "<plist><dict>" + Dict(key, info) + "</dict></plist>");
    return document.Load(XpPath(XpNarrowString(path).ToWide()));
  }
  static std::string Dict(const std::string& key, const std::string& content) {
    return "<key>" + key + "</key><dict>" + content + "</dict>";
  }

  TKLXPainterInfoXml document;
  TempFolder m_folder;
};

TEST_F(PainterDocumentTest, LastReadKeyDecidesWhetherTheDocumentCounts) {
  struct Case {
    std::string info;
    XpResult result;
  };
  const std::string width = Dict("GeneralInfo", "<key>VideoWidth</key><integer>1</integer>");
  const std::string noWidth = Dict("GeneralInfo", "<key>VideoWidth</key><real>1</real>");
  const std::string end = Dict("TemplateInfo", "<key>DrawEndTime</key><real>2</real>");
  const std::string log =
      "<key>LogDataArray</key><array><string/><dict><key>VideoID</key><integer>3</integer>";
  for (const Case& c :
       {Case{Dict("CaptionInfo", ""), XpOk}, Case{width, XpOk}, Case{noWidth, XpErrElementNotFound},
        Case{noWidth + end, XpOk}, Case{width + Dict("TemplateInfo", ""), XpErrElementNotFound},
        Case{end + Dict("TennisMetaInfo", ""), XpErrElementNotFound},
        Case{Dict("TennisMetaInfo", "<key>TrimedShift</key><real>1</real>"), XpOk},
        Case{Dict("TemplateInfo", "<key>DrawEndTime</key><real>2</real>" + log + "</dict></array>"),
             XpErrElementNotFound},
        Case{Dict("TemplateInfo", log + "<key>Duration</key><real>1</real></dict></array>"), XpOk}}) {
    EXPECT_EQ(Load(c.info), c.result) << c.info;
  }
  EXPECT_EQ(Load("", "Other"), XpErrFileNotFound);
  EXPECT_EQ(document.Load(XpPath(u"")), XpErrFileNotFound);
  EXPECT_EQ(document.Load(XpPath(u"/")), XpErrFileNotFound);
}

TEST_F(PainterDocumentTest, MissingKeysHaveOtherDefaultsThanMissingDicts) {
  Load("");
  EXPECT_EQ(document.GetPainterInfo().extendSpeed, 1.0f);
  EXPECT_EQ(document.GetPainterInfo().templateInfo.scenarioType, 5);
  EXPECT_TRUE(document.GetPainterInfo().templateInfo.drawTrimmedOutArea);
  Load(Dict("GeneralInfo",
            "<key>StringManager</key><array><string>a</string><integer>1</integer>"
            "<string>c</string></array>") +
       Dict("TemplateInfo", "<key>DrawStartTime</key><real>1.5</real><key>DrawEndTime</key><real>9</real>"));
  const PainterInfo& info = document.GetPainterInfo();
  EXPECT_EQ(info.extendSpeed, 0.0f);
  EXPECT_EQ(info.templateInfo.scenarioType, -1);
  EXPECT_FALSE(info.templateInfo.drawTrimmedOutArea);
  EXPECT_EQ(info.templateInfo.drawStartTime, 1.5);
  EXPECT_EQ(info.templateInfo.drawEndTime, 9.0);
  EXPECT_EQ(info.subVideoSize, -1);
  EXPECT_EQ(info.stringTable.at(2), u"c");
  EXPECT_FALSE(info.captionInfo.keepShape);
  Load(Dict("CaptionInfo", "<key>KeepShape</key><true/>"));
  PainterInfo adopted;
  AdoptPainterInfo(document.GetPainterInfo(), adopted);
  EXPECT_TRUE(adopted.captionInfo.keepShape);
}

TEST_F(PainterDocumentTest, AdoptionTurnsOffOverlaysWithoutContent) {
  PainterInfo read;
  read.captionInfo.valid = read.templateInfo.valid = read.tennisMetaInfo.valid = true;
  read.stringTable[3] = u"three";
  read.stringTable[25] = u"too many";
  PainterInfo adopted;
  AdoptPainterInfo(read, adopted);
  EXPECT_FALSE(adopted.captionInfo.valid || adopted.templateInfo.valid || adopted.tennisMetaInfo.valid);
  EXPECT_EQ(adopted.stringTable.size(), 25u);
  EXPECT_EQ(adopted.stringTable.at(3), u"three");

  read.captionInfo.captionString = u"x";
  read.tennisMetaInfo.metaData = u"x";
  read.templateInfo.logData.emplace_back();
  for (const std::int32_t scenario : {0, 1, 5}) {
    read.templateInfo.scenarioType = scenario;
    AdoptPainterInfo(read, adopted);
    EXPECT_EQ(adopted.templateInfo.valid, scenario == 1);
  }
  EXPECT_TRUE(adopted.captionInfo.valid && adopted.tennisMetaInfo.valid);
}

}  // namespace
