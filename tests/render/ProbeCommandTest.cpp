// `vrx probe`: one line a file, whatever it is called, and the same as JSON.
#include <gmock/gmock.h>

#include <algorithm>

#include <nlohmann/json.hpp>

#include "tests/content/Mp4Boxes.h"
#include "tests/content/StreamFiles.h"
#include "tests/render/VrxProcess.h"
#include "tests/support/TempFolder.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using Json = nlohmann::json;

TEST(ProbeCommandTest, CodeKindAndReasonOfEachFileAreGiven) {
  const TempFolder folder;
  const std::string jpeg = imagefiles::Jpeg(imagefiles::Smooth(8, 8, 3));
  const std::string right = folder.Write("a.jpg", jpeg), wrong = folder.Write("a.png", jpeg);
  const std::string movie = folder.Write("a.mp4", mp4boxes::FileType("mp42", "isom"));
  const std::string stream =
      folder.Write("a.m2ts", streamfiles::Transport({streamfiles::Map(streamfiles::kHdmv)}, "time"));
  const std::string hostile = folder.Write("b\x1B[2J.mp4", mp4boxes::FileType("\x1B[2J", ""));
  const std::string missing = (folder.Path() / "missing.jpg").string();
  const std::vector<std::string> files{right, wrong, missing, movie, stream, folder.Path().string(), hostile};
  const auto run = [&](std::vector<std::string> more) {
    more.insert(more.begin(), "probe");
    more.insert(more.end(), files.begin(), files.end());
    return RunVrx({more});
  };
  const VrxResult json = run({"--json"});
  EXPECT_EQ(json.status, 1);
  EXPECT_THAT(json.errors, AllOf(HasSubstr("missing.jpg: it does not exist"), Not(HasSubstr("a.jpg"))));
  const auto row = [](const std::string& file, const char* code, const char* name, const char* kind,
                      const char* why) {
    return Json{{"file", file}, {"code", code}, {"name", name}, {"kind", kind}, {"why", why}};
  };
  Json rows = Json::parse(json.output);
  ASSERT_EQ(rows.size(), 6u);
  rows.erase(5);
  EXPECT_EQ(rows, (Json{row(right, "0x10000101", "JPEG picture", "JPEG picture", "begins with FF D8 FF"),
                        row(wrong, "0x10000501", "PNG picture", "JPEG picture", "begins with FF D8 FF"),
                        row(movie, "0x20031106", "MP4 movie, version 2", "MP4 movie",
                            "ftyp box with brand mp42 at byte 4"),
                        row(stream, "0x20021104", "AVCHD transport stream",
                            "MPEG transport stream with arrival times", "0x47 every 192 bytes from byte 4"),
                        row(folder.Path().string(), "0x80000001", "folder", "folder", "is a folder")}));

  const VrxResult text = run({});
  EXPECT_EQ(text.status, 1);
  EXPECT_EQ(std::ranges::count(text.output, '\n'), 6);
  EXPECT_THAT(text.output, AllOf(HasSubstr("FF D8 FF; the ending says PNG picture\n"), Not(HasSubstr("\x1B")),
                                 HasSubstr("0x01000000  unknown"), Not(HasSubstr("ending says JPEG"))));
  EXPECT_EQ(RunVrx({{"probe", right}}).status, 0);
  EXPECT_EQ(RunVrx({{"probe"}}).status, 2);
}

}  // namespace
