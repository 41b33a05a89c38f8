// Formats by name, and the metadata beside a content: which sidecar is used and what is read from it.
#include <set>

#include "content/formats/XpFormatChecker.h"
#include "content/modd/SfModdXML.h"
#include "tests/foundation/FolderTest.h"

namespace {

namespace formats = vrx::formats;

class FormatTest : public FolderTest {};

TEST_F(FormatTest, TheExtensionGivesTheFormat) {
  struct Case {
    const char16_t* name;
    std::uint32_t code;
    formats::Container container;
  };
  for (const Case& c : {Case{u"a.JPG", 0x10000100, formats::Container::Jpeg},
                        Case{u"/x.y/a.b.tIf", 0x10000201, formats::Container::Tiff},
                        Case{u"a.krw", 0x10030400, formats::Container::Raw},
                        Case{u"a.mpo", 0x10010100, formats::Container::Jpeg},
                        Case{u"a.png", 0x10000501, formats::Container::Png},
                        Case{u"C:\\v\\a.M2TS", 0x20021100, formats::Container::None},
                        Case{u"a.mp4", 0x20031100, formats::Container::None},
                        Case{u"a.rodd", 0x80000002, formats::Container::None},
                        Case{u"a.xmp", 0x80000005, formats::Container::None},
                        Case{u"a.vmlf", 0x80003102, formats::Container::None},
                        Case{u"jpg", 0x01000000, formats::Container::None},
                        Case{u"a.jpg/b", 0x01000000, formats::Container::None},
                        Case{u"", 0x01000000, formats::Container::None}}) {
    const formats::FormatCode code = XpFormatChecker::GetFormatFromName(c.name);
    EXPECT_EQ(code, c.code) << XpString(c.name);
    EXPECT_EQ(formats::ContainerOf(code), c.container) << XpString(c.name);
  }
  std::set<XpString> seen;
  for (const auto& row : formats::GetExtensionTable()) {
    EXPECT_EQ(XpFormatChecker::GetFormatFromName(XpString(u"a") + row.extension), row.code);
    EXPECT_TRUE(seen.insert(row.extension).second) << XpString(row.extension) << " is there twice";
  }
  EXPECT_EQ(seen.size(), 33u);
  EXPECT_EQ(formats::GetMediaExtensions().size(), 26u);
}

TEST_F(FormatTest, ADirectoryIsOneWhateverItsName) {
  std::filesystem::create_directory(Native("x.jpg"));
  EXPECT_EQ(XpFormatChecker::GetFormat(Path("x.jpg")), formats::kDirectory);
  EXPECT_EQ(XpFormatChecker::GetFormatFromName(Path("x.jpg")), formats::kJpeg);
  EXPECT_EQ(XpFormatChecker::GetFormat(Path("y.jpg")), formats::kJpeg);
}

std::string Document(const std::string& metadata, const std::string& type = "ModdXML") {
  return "<plist version=\"1.0\"><dict><key>XMLFileType</key><string>" + type +
         "</string><key>MetaDataList</key><array>" + metadata + "</array></dict></plist>";
}
std::string Zone(const std::string& value) {
  return Document("<dict><key>FileTimeZoneOffset</key>" + value + "</dict><dict/>");
}
const std::string kZone540 = Zone("<integer>540</integer>");

class ModdTest : public FolderTest {};

TEST_F(ModdTest, TheSidecarOfTheFileComesBeforeThatOfTheStem) {
  struct Case {
    const char* name;
    std::vector<const char*> sidecars;
    const char* content;
    const char* used;
    bool isShared;
  };
  const Case cases[] = {
      {"both", {"a.mp4.modd", "a.modd"}, "a.mp4", "a.mp4.modd", false},
      {"stem", {"a.modd"}, "a.mp4", "a.modd", true},
      {"stem of a picture", {"a.modd"}, "a.jpg", "a.modd", true},
      {"RAW of its own", {"a.krw.modd", "a.rodd"}, "a.krw", "a.krw.modd", false},
      {"RAW", {"a.rodd", "a.modd"}, "a.KR2", "a.rodd", true},
      {"RAW never uses that of other files", {"a.modd"}, "a.krw", nullptr, false},
      {"other files never use that of RAW", {"a.rodd"}, "a.jpg", nullptr, false},
  };
  for (const Case& c : cases) {
    const std::string folder = std::string(c.name) + "/";
    for (const char* sidecar : c.sidecars) Put(folder + sidecar, kZone540);
    SfModdXML modd(Path(folder + c.content));
    ASSERT_EQ(modd.Open(SfModdRead), c.used == nullptr ? XpErrFileNotFound : XpOk) << c.name;
    const std::string expected = c.used == nullptr ? std::string(c.content) + ".modd" : c.used;
    EXPECT_EQ(modd.GetModdPath(), Path(folder + expected)) << c.name;
    EXPECT_EQ(modd.IsSharedByStem(), c.isShared) << c.name;
    EXPECT_EQ(modd.FileExists(), c.used != nullptr) << c.name;
    EXPECT_EQ(modd.IsNew(), c.used == nullptr) << c.name;
    EXPECT_EQ(modd.GetMetaDict() != nullptr, c.used != nullptr) << c.name;
    EXPECT_EQ(modd.GetMode(), c.used != nullptr ? SfModdRead : SfModdClosed) << c.name;
  }
}

TEST_F(ModdTest, TheTimeZoneIsReadWithItsFailures) {
  struct Case {
    const char* name;
    std::string text;
    XpResult open;
    XpResult zone;
    std::int32_t minutes;
  };
  const Case cases[] = {
      {"set", kZone540, XpOk, XpOk, 540},
      {"west", Zone("<integer>-210</integer>"), XpOk, XpOk, -210},
      {"too large", Zone("<integer>4294967297</integer>"), XpOk, XpErrValueDoesNotFit, 1},
      {"text", Zone("<string>540</string>"), XpOk, XpErrWrongElementType, 77},
      {"not set", Document("<dict/>"), XpOk, XpErrElementNotFound, 77},
      {"only in the second dict",
       Document("<dict/><dict><key>FileTimeZoneOffset</key><integer>1</integer></dict>"), XpOk,
       XpErrElementNotFound, 77},
      {"no dict", Document("<integer>1</integer>"), XpOk, XpErrElementNotFound, 77},
      {"empty list", Document(""), XpErrFailed, XpErrFailed, 77},
      {"type in other case", Document("<dict/>", "MODDXML"), XpErrFailed, XpErrFailed, 77},
      {"no type", "<plist><dict><key>MetaDataList</key><array><dict/></array></dict></plist>", XpErrFailed,
       XpErrFailed, 77},
      {"no list", "<plist><dict><key>XMLFileType</key><string>ModdXML</string></dict></plist>", XpErrFailed,
       XpErrFailed, 77},
      {"list is no array",
       "<plist><dict><key>XMLFileType</key><string>ModdXML</string><key>MetaDataList</key><true/></dict></"
       "plist>",
       XpErrFailed, XpErrFailed, 77},
      {"no XML", "x", XpErrNoDocument, XpErrFailed, 77},
      {"empty file", "", XpErrNoDocument, XpErrFailed, 77},
      {"no property list", "<movie/>", XpErrWrongRoot, XpErrFailed, 77},
  };
  for (const Case& c : cases) {
    Put("a.mp4.modd", c.text);
    for (const std::uint32_t mode : {SfModdRead, SfModdReadWrite}) {
      SfModdXML modd(Path("a.mp4"));
      EXPECT_EQ(modd.Open(mode), c.open) << c.name;
      std::int32_t minutes = 77;
      EXPECT_EQ(modd.GetFileTimeZoneOffset(minutes), c.zone) << c.name;
      EXPECT_EQ(minutes, c.minutes) << c.name;
      EXPECT_EQ(modd.GetMode(), c.open == XpOk ? mode : SfModdClosed) << c.name;
      EXPECT_EQ(modd.GetCount() != 0, c.open == XpOk) << c.name;
    }
  }
}

TEST_F(ModdTest, ASecondOpenForgetsTheFirst) {
  SfModdXML modd(Path("a.mp4"));
  std::int32_t minutes = 0;
  EXPECT_EQ(modd.GetFileTimeZoneOffset(minutes), XpErrFailed);
  EXPECT_EQ(modd.GetMode(), SfModdClosed);
  Put("a.modd", kZone540);
  ASSERT_EQ(modd.Open(SfModdRead), XpOk);
  EXPECT_TRUE(modd.IsSharedByStem());
  Put("a.mp4.modd", kZone540);
  ASSERT_EQ(modd.Open(SfModdRead), XpOk);
  EXPECT_FALSE(modd.IsSharedByStem());
  EXPECT_EQ(modd.Open(2), XpErrInvalidFileOperation);
  EXPECT_EQ(modd.GetFileTimeZoneOffset(minutes), XpErrFailed);
  EXPECT_EQ(modd.GetCount(), 0u);
  EXPECT_EQ(SfModdXML(XpString()).Open(SfModdReadWrite), XpErrFileNotFound);
}

TEST_F(ModdTest, ANewDocumentIsMadeInMemory) {
  SfModdXML modd(Path("a.mp4"));
  ASSERT_EQ(modd.Open(SfModdReadWrite), XpOk);
  EXPECT_TRUE(modd.IsNew());
  EXPECT_EQ(modd.GetModdPath(), Path("a.mp4.modd"));
  EXPECT_FALSE(Exists("a.mp4.modd"));
  ASSERT_EQ(modd.GetMetaDict()->Add(u"FileTimeZoneOffset", XpIniType::Int, std::int64_t{-300}), XpOk);
  ASSERT_EQ(modd.Save(modd.GetModdPath()), XpOk);
  std::int32_t minutes = 0;
  ASSERT_EQ(modd.Open(SfModdRead), XpOk);
  EXPECT_EQ(modd.GetFileTimeZoneOffset(minutes), XpOk);
  EXPECT_EQ(minutes, -300);
}

TEST_F(ModdTest, ASidecarIsReadWithoutItsContent) {
  for (const auto& [name, isShared] :
       {std::pair{"a.mp4.modd", false}, std::pair{"a.modd", true}, std::pair{"a.rodd", true}}) {
    const XpString path = Put(name, kZone540);
    SfModdXML modd(path);
    std::int32_t minutes = 0;
    EXPECT_EQ(modd.OpenSidecar(path), XpOk);
    EXPECT_EQ(modd.GetFileTimeZoneOffset(minutes), XpOk);
    EXPECT_EQ(modd.IsSharedByStem(), isShared) << name;
  }
  SfModdXML modd(Path("b.modd"));
  EXPECT_EQ(modd.OpenSidecar(Path("b.modd")), XpErrFileNotFound);
}

}  // namespace
