// `vrx raw`, run as a user does on files like those of the cameras.
#include <gmock/gmock.h>

#include <array>

#include "imaging/codecs/XpImageIoRAW.h"
#include "tests/imaging/RawFile.h"
#include "tests/render/VrxProcess.h"
#include "tests/support/TempFolder.h"

namespace {

using namespace rawfiles;
using testing::HasSubstr;

class RawCommandTest : public testing::Test {
 protected:
  std::string Path(const std::string& name) const { return (m_folder.Path() / name).string(); }
  VrxResult Run(const char* action, const std::string& name, std::vector<std::string> more) {
    std::vector<std::string> arguments{"raw", action, Path(name)};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return RunVrx({arguments});
  }
  XpGPSRecord Record(const std::string& name) {
    const XpString path = XpNarrowString(Path(name).c_str()).ToWide();
    return vrx::imaging::ReadGpsTags(*XpImageIoRAW().LoadTags(path)->GetGpsIfd());
  }

  TempFolder m_folder;
};

TEST_F(RawCommandTest, PreviewIsCopiedAndNeverOverTheInput) {
  m_folder.Write("a.krw", RawFile());
  EXPECT_EQ(Run("preview", "a.krw", {"-o", Path("a.jpg")}).status, 0);
  EXPECT_EQ(m_folder.Read("a.jpg"), Preview());

  std::filesystem::create_symlink(Path("a.krw"), Path("link.jpg"));
  EXPECT_THAT(Run("preview", "a.krw", {"-o", Path("link.jpg")}).errors, HasSubstr("would be overwritten"));
  EXPECT_EQ(m_folder.Read("a.krw"), RawFile());
  m_folder.Write("none.krw", RawFile({.change = [](auto& tags) { tags.GetIfd(0)->SetLong(0x0201, 0); }}));
  m_folder.Write("text.krw", "no picture");
  m_folder.Write("cut.krw", RawFile().substr(0, RawFile().size() - 1));
  for (const auto& [name, words] : {std::pair{"none.krw", "it has no preview (0x8601)"},
                                    {"text.krw", "it is damaged, or no RAW file (0x8602)"},
                                    {"cut.krw", "it ends too early (0x8103)"},
                                    {"missing.krw", "it does not exist (0x8105)"}}) {
    const VrxResult result = Run("preview", name, {"-o", Path("a.jpg")});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr(Path(name) + ": " + words));
  }
  EXPECT_THAT(Run("preview", "a.krw", {"-o", Path("no/a.jpg")}).errors,
              HasSubstr("cannot be made there (0x8111)"));
  EXPECT_EQ(m_folder.Read("a.jpg"), Preview());
}

/// Three parts, the last of which may be any fraction.
double Seconds(const XpGPSTriple& triple) {
  double seconds = 0;
  for (const XpTiffFraction& part : triple.values) {
    seconds = seconds * 60 + static_cast<double>(part.numerator) / part.denominator;
  }
  return seconds;
}

TEST_F(RawCommandTest, PositionKeepsTheFormThatTheFileHasForIt) {
  struct Case {
    std::array<std::uint32_t, 3> denominators, expected;
  };
  for (const Case& c : {Case{{1, 1, 100}, {1, 1, 100}}, Case{{1, 1, 1}, {1, 1, 1000000}},
                        Case{{1, 10000, 1}, {1, 10000, 1}}, Case{{1000000, 1, 0}, {1000000, 1, 1}},
                        Case{{0, 0, 0}, {1, 1, 1000000}}, Case{{7, ~0u, ~0u}, {7, 1, 1000000}}}) {
    SCOPED_TRACE(testing::PrintToString(c.denominators));
    const auto change = [&](XpTiffTagManager& tags) {
      auto* values = static_cast<XpTiffFraction*>(tags.GetGpsIfd()->FindTag(4, false)->GetData());
      for (std::size_t i = 0; i < 3; ++i) values[i].denominator = c.denominators[i];
      tags.GetGpsIfd()->RemoveTagAt(4);  // whether above the sea, which is not needed for a position
    };
    m_folder.Write("a.krw", RawFile({.change = change}));
    ASSERT_EQ(Run("position", "a.krw", {"--at", "-33.99999999,-151.215296"}).status, 0);
    const XpGPSRecord record = Record("a.krw");
    EXPECT_EQ(record.latitudeRef.text + record.longitudeRef.text, "SW");
    EXPECT_EQ(record.latitude.values, (std::array<XpTiffFraction, 3>{{{34, 1}, {0, 1}, {0, 100}}}));
    EXPECT_NEAR(Seconds(record.longitude), 151.215296 * 3600, 0.005);
    for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(record.longitude.values[i].denominator, c.expected[i]);
    EXPECT_EQ(record.altitude.value, (XpTiffFraction{5190, 10}));
    EXPECT_EQ(Seconds(record.timeStamp), 3 * 3600 + 4 * 60 + 5);
  }
}

TEST_F(RawCommandTest, AltitudeAndTimeAreSetWhereTheFileHasThem) {
  m_folder.Write("a.krw", RawFile());
  const std::vector<std::string> at{"--at", "1,2"};
  const auto with = [&](std::vector<std::string> more) {
    more.insert(more.begin(), at.begin(), at.end());
    return more;
  };
  const auto moment = with({"--altitude", "-12.34", "--time", "2024-05-01T10:11:12Z"});
  ASSERT_EQ(Run("position", "a.krw", moment).status, 0);
  EXPECT_EQ(Record("a.krw").altitude.value, (XpTiffFraction{12340, 1000}));
  EXPECT_EQ(Record("a.krw").altitudeRef.value, 1);
  EXPECT_EQ(Seconds(Record("a.krw").timeStamp), 10 * 3600 + 11 * 60 + 12);
  EXPECT_EQ(Record("a.krw").dateStamp.text, "2024:05:01");
  ASSERT_EQ(Run("position", "a.krw", with({"--altitude", "8848.5"})).status, 0);
  EXPECT_EQ(Record("a.krw").altitude.value, (XpTiffFraction{8848500, 1000}));
  EXPECT_EQ(Record("a.krw").altitudeRef.value, 0);

  struct Case {
    const char* words;
    std::uint32_t version;
    std::uint16_t tag;  // becomes another type
    std::vector<std::string> options;
  };
  for (const Case& c :
       {Case{"version, 0x0301, have no place", 0x301, 30, {}}, Case{"no latitude", 0x302, 1, {}},
        Case{"no longitude", 0x302, 4, {}}, Case{"no altitude,", 0x302, 6, {"--altitude", "1"}},
        Case{"no altitude below", 0x302, 5, {"--altitude", "-1"}},
        Case{"unknown kind (0x8601)", 0x302, 99, {}}}) {
    const auto change = [&](XpTiffTagManager& tags) { tags.GetGpsIfd()->SetLong(c.tag, 9); };
    const Bytes file = RawFile({.version = c.version, .change = change});
    m_folder.Write("b.krw", file);
    const VrxResult result = Run("position", "b.krw", with(c.options));
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr(c.words));
    EXPECT_EQ(m_folder.Read("b.krw"), file);
  }
  for (const char* wrong : {"1", "91,2", "1,-181", "1,2x", "nan,2", ""}) {
    EXPECT_EQ(Run("position", "a.krw", {std::string("--at=") + wrong}).status, 2) << wrong;
  }
  EXPECT_EQ(Run("position", "a.krw", with({"--time", "2024-02-30T10:11:12Z"})).status, 2);
}

}  // namespace
