// `vrx moff`, `vrx modd` and `vrx contents`: what lies beside a media file is shown, checked, changed and
// taken out.
#include <sys/stat.h>

#include <cstdlib>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "tests/content/MoffBytes.h"
#include "tests/render/VrxProcess.h"
#include "tests/support/TempFolder.h"

namespace {

using namespace vrx::test_support;
using Json = nlohmann::json;
using testing::HasSubstr;
namespace fs = std::filesystem;

class SidecarCommandsTest : public testing::Test {
 protected:
  SidecarCommandsTest() {
    setenv("TZ", "UTC", 1);
    m_folder.Write("clip.mts", "film");
  }
  ~SidecarCommandsTest() override { unsetenv("TZ"); }
  std::string Path(const std::string& name) const { return (m_folder.Path() / name).string(); }
  /// Runs the program; in its output the folder is FOLDER.
  VrxResult Vrx(const std::vector<std::string>& arguments) const {
    VrxResult result = RunVrx({arguments});
    const std::string path = m_folder.Path().string();
    for (std::string* text : {&result.output, &result.errors}) {
      for (std::size_t at; (at = text->find(path)) != text->npos;) text->replace(at, path.size(), "FOLDER");
    }
    return result;
  }

  const std::vector<MoffGroup> m_groups{{3, {{"JPEG", "picture"}, {"STPD", ""}}}, {7, {{"BINA", "GPS log"}}}};
  const MoffSource m_source{"clip.mts", 4, 1'500'000'000, INT64_MAX};
  TempFolder m_folder;
};

TEST_F(SidecarCommandsTest, ListShowsGroupsEntriesAndWhetherTheMediaFileFits) {
  m_folder.Write("clip.mts.moff", MoffBytes(m_source, m_groups));
  const std::string text = R"(Container   FOLDER/clip.mts.moff, format 0x00020000
Made for    clip.mts, 4 bytes, made 2017-07-14 02:40:00, written at no valid time
Media file  FOLDER/clip.mts, unchanged

Group 3, values 1 2 3 4
  Entry  Kind             Size     Position
      1  JPEG               15          976
      2  STPD                8          991

Group 7, values 1 2 3 4
  Entry  Kind             Size     Position
      1  BINA               15          999
)";
  for (const char* name : {"clip.mts", "clip.mts.moff"}) {
    const VrxResult result = Vrx({"moff", "list", Path(name)});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.output, text);
  }
  const Json json = Json::parse(Vrx({"moff", "list", "--json", Path("clip.mts")}).output);
  EXPECT_EQ(json["madeFor"], Json::parse(R"({"name": "clip.mts", "size": 4, "created": 1500000000,
                                             "written": 9223372036854775807})"));
  EXPECT_EQ(json["mediaFile"]["fit"], "same");
  EXPECT_EQ(json["groups"][1]["id"], 7);
  EXPECT_EQ(json["groups"][1]["values"], Json({1, 2, 3, 4}));
  EXPECT_EQ(json["groups"][1]["entries"],
            Json::parse(R"([{"kind": "BINA", "size": 15, "position": 999, "problem": null}])"));
}

TEST_F(SidecarCommandsTest, AMediaFileThatDoesNotFitIsShownAndFailsValidation) {
  const auto fit = [&](const char* name) {
    return Json::parse(Vrx({"moff", "list", "--json", Path(name)}).output)["mediaFile"]["fit"]
        .get<std::string>();
  };
  const auto put = [&](const std::string& name) { m_folder.Write(name, MoffBytes({.size = 5}, {})); };
  put("clip.mts.moff");
  EXPECT_EQ(fit("clip.mts.moff"), "changed");
  const VrxResult changed = Vrx({"moff", "validate", Path("clip.mts")});
  EXPECT_EQ(changed.status, 1);
  EXPECT_EQ(
      changed.output,
      "error: FOLDER/clip.mts.moff: its media file FOLDER/clip.mts has 4 bytes instead of 5 (0x8105)\n");
  put("lost.mts.moff");
  EXPECT_EQ(fit("lost.mts.moff"), "missing");
  EXPECT_THAT(Vrx({"moff", "validate", Path("lost.mts")}).output,
              HasSubstr("there is no media file beside it"));
  m_folder.Write("a.mp4", "film");
  put("a.mp4.moff");
  EXPECT_EQ(fit("a.mp4"), "changed-accepted");
  EXPECT_EQ(Vrx({"moff", "validate", Path("a.mp4")}).output,
            "FOLDER/a.mp4.moff: no problems found in 0 groups with 0 entries\n");
}

TEST_F(SidecarCommandsTest, ValidationNamesEachProblem) {
  const std::string whole = MoffBytes({}, m_groups);
  const std::size_t firstBody = 976;
  const auto with = [&](std::size_t offset, const std::string& bytes) {
    return std::string(whole).replace(offset, bytes.size(), bytes);
  };
  struct Case {
    std::string bytes;
    std::vector<const char*> problems;
  };
  const Case cases[] = {
      {whole, {}},
      {"", {"the header is cut off at byte 0 (0x8103)"}},
      {with(0, "X"), {"the header is damaged before or at byte 8 (0x8110)"}},
      {with(824, "X"), {"the table of groups is damaged before or at byte 832 (0x8110)"}},
      {with(896, "X"), {"the table of group 1 (id 3) is damaged before or at byte 904 (0x8110)"}},
      {whole.substr(0, 970), {"the table of group 2 (id 7) is damaged before or at byte 960 (0x8110)"}},
      {with(848, U32(0xFFFFFFFF)), {"group 1 (id 3): its bodies begin past the end of the file (0x8110)"}},
      {with(firstBody, "X\x1b"),
       {"group 1 (id 3), entry 1: its body at byte 976 is of the unknown kind 0x47451b58 (0x8000)"}},
      {with(firstBody + 4, U32(7)),
       {"group 1 (id 3), entry 1: its body at byte 976 has a size of 7, less than its own head (0x8110)"}},
      {with(firstBody + 4, U32(16)),
       {"group 1 (id 3), entry 2: its body overlaps that of group 1 (id 3), entry 1 (0x8110)"}},
      {with(912, U32(0)) + "tail",
       {"group 1 (id 3), entry 1: its body at byte 896 lies in the tables (0x8110)"}},
      {with(912, U32(0xFFFFFFFF)).replace(1003, 4, U32(16)),
       {"group 1 (id 3), entry 1: its body at byte 4294968191 lies past the end of the file (0x8000)",
        "group 2 (id 7), entry 1: its body at byte 999 reaches past the end of the file (0x8000)"}},
  };
  for (const Case& c : cases) {
    m_folder.Write("clip.mts.moff", c.bytes);
    std::string expected;
    for (const char* problem : c.problems)
      expected += std::string("error: FOLDER/clip.mts.moff: ") + problem + "\n";
    if (c.problems.empty()) expected = "FOLDER/clip.mts.moff: no problems found in 2 groups with 3 entries\n";
    const VrxResult result = Vrx({"moff", "validate", Path("clip.mts")});
    EXPECT_EQ(result.output, expected);
    EXPECT_EQ(result.status, c.problems.empty() ? 0 : 1);
    EXPECT_EQ(result.errors, "");
  }
}

TEST_F(SidecarCommandsTest, ExtractWritesTheDataOfOneEntry) {
  m_folder.Write("clip.mts.moff", MoffBytes(m_source, m_groups));
  m_folder.Write("out", "something older and longer");
  const auto extract = [&](std::vector<std::string> options) {
    options.insert(options.begin(), {"moff", "extract", Path("clip.mts")});
    return Vrx(options);
  };
  EXPECT_EQ(extract({"--group", "7", "-o", Path("out")}).status, 0);
  EXPECT_EQ(m_folder.Read("out"), "GPS log");
  EXPECT_EQ(extract({"--group", "0x3", "--entry", "2", "-o", Path("empty")}).status, 0);
  EXPECT_EQ(m_folder.Read("empty"), "");
  EXPECT_TRUE(fs::exists(Path("empty")));
  fs::create_hard_link(Path("clip.mts.moff"), Path("same"));
  const std::string before = m_folder.Read("same");
  struct Case {
    std::vector<std::string> options;
    const char* cause;
  };
  for (const Case& c :
       {Case{{"--group", "4", "-o", Path("out")}, "FOLDER/clip.mts.moff: there is no group 4"},
        Case{{"--group", "7", "--entry", "2", "-o", Path("out")},
             "group 7 has 1 entries: there is no entry 2"},
        Case{{"--group", "7", "-o", Path("clip.mts")}, "and would be overwritten"},
        Case{{"--group", "7", "-o", Path("same")}, "and would be overwritten"},
        Case{{"--group", "7", "-o", m_folder.Path().string()}, "cannot be written"},
        Case{{"--group", "7", "-o", Path("none/out")}, "it cannot be made there"}}) {
    const VrxResult result = extract(c.options);
    EXPECT_EQ(result.status, 1) << c.cause;
    EXPECT_THAT(result.errors, HasSubstr(c.cause));
  }
  EXPECT_EQ(m_folder.Read("same"), before);
  EXPECT_EQ(m_folder.Read("clip.mts"), "film");
  EXPECT_EQ(m_folder.Read("out"), "GPS log");
  EXPECT_EQ(extract({"--group", "7", "--entry", "0", "-o", Path("out")}).status, 2);
  m_folder.Write("clip.mts.moff", MoffBytes(m_source, m_groups).substr(0, 1005));
  EXPECT_THAT(extract({"--group", "7", "-o", Path("out")}).errors,
              HasSubstr("entry 1 of group 7 cannot be read"));
  EXPECT_EQ(Vrx({"moff", "list", Path("none.mts")}).errors,
            "vrx: error: FOLDER/none.mts.moff: it does not exist (0x8105)\n");
}

TEST_F(SidecarCommandsTest, ModdShowPrintsWhichSidecarIsUsedAndAllThatIsInIt) {
  const std::string document =
      "<plist "
      "version=\"1.0\"><dict><key>XMLFileType</key><string>ModdXML</string><key>MetaDataList</key><array>"
      "<dict><key>FileTimeZoneOffset</key><integer>-210</integer><key>UserTitle</key><string>a&#x9b;b</"
      "string>"
      "<key>Hash</key><dict><key>ContentHash</key><data>ab01</data></dict><key>LabelList</key><array/>"
      "<key>VTList</key><array><real>0.5</real><true/></array>"
      "<key>DateTimeOriginal</key><date>2018:01:02T03:04:05Z</date></dict></array></dict></plist>";
  m_folder.Write("clip.modd", document);
  EXPECT_EQ(Vrx({"modd", "show", Path("clip.mts")}).output,
            R"(Sidecar    FOLDER/clip.modd, of all files of its stem
Time zone  -210 minutes from UTC
Metadata
  DateTimeOriginal = "2018-01-02T03:04:05"
  FileTimeZoneOffset = -210
  Hash
    ContentHash = "ab01"
  LabelList = []
  UserTitle = "a?b"
  VTList
    0 = 0.5
    1 = true
)");
  m_folder.Write("clip.mts.modd", document);
  const Json json = Json::parse(Vrx({"modd", "show", "--json", Path("clip.mts")}).output);
  EXPECT_EQ(json["sidecar"], "FOLDER/clip.mts.modd");
  EXPECT_EQ(json["shared"], false);
  EXPECT_EQ(json["timeZoneMinutes"], -210);
  EXPECT_EQ(json["metadata"]["Hash"]["ContentHash"], "ab01");
  EXPECT_EQ(json["metadata"]["UserTitle"],
            "a\xc2\x9b"
            "b");
  EXPECT_THAT(Vrx({"modd", "show", Path("clip.modd")}).output, HasSubstr("FOLDER/clip.modd, of all files"));
  EXPECT_THAT(Vrx({"modd", "show", Path("clip.mts.modd")}).output, HasSubstr("of this file alone"));
  m_folder.Write("b.rodd", "<plist><dict/></plist>");
  m_folder.Write("c.mp4.modd", "");
  for (const auto& [name, cause] :
       {std::pair{"none.mts", "FOLDER/none.mts: it has no sidecar of metadata (0x8105)"},
        std::pair{"none.modd", "FOLDER/none.modd: it does not exist (0x8105)"},
        std::pair{"b.krw", "FOLDER/b.rodd: it is no sidecar of metadata (0x8000)"},
        std::pair{"c.mp4", "FOLDER/c.mp4.modd: it is no XML document (0x8500)"}}) {
    const VrxResult result = Vrx({"modd", "show", Path(name)});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, std::string("vrx: error: ") + cause + "\n");
  }
}

TEST_F(SidecarCommandsTest, ModdSetWritesOneValueAndKeepsItsType) {
  const auto set = [&](const std::string& key, const std::string& value, const std::string& type = "") {
    std::vector<std::string> arguments{"modd", "set", Path("clip.mts"), key, value};
    if (!type.empty()) arguments.insert(arguments.end(), {"--type", type});
    return Vrx(arguments);
  };
  const auto get = [&](const std::string& key) { return Vrx({"modd", "get", Path("clip.mts"), key}).output; };
  EXPECT_EQ(set("Rating", "4").output, "FOLDER/clip.mts.modd: Rating = 4\n");
  EXPECT_EQ(set("UserTitle", "4 days", "").status, 0);
  EXPECT_EQ(set("Seen", "2024-05-01T10:11:12", "date").status, 0);
  EXPECT_EQ(set("Part", "0.5", "real").status, 0);
  EXPECT_EQ(set("FileTimeZoneOffset", "-120").status, 0);
  EXPECT_EQ(get("Rating") + get("UserTitle") + get("Seen") + get("Part"),
            "4\n4 days\n2024-05-01T10:11:12\n0.5\n");
  EXPECT_THAT(Vrx({"modd", "show", Path("clip.mts")}).output, HasSubstr("Time zone  -120 minutes from UTC"));
  const std::string before = m_folder.Read("clip.mts.modd");
  struct Case {
    std::string key, value, type, words;
  };
  for (const Case& c : {Case{"Rating", "four", "", "Rating: four is no value of the type integer"},
                        Case{"FileTimeZoneOffset", "2h", "", "2h is no number of minutes from UTC"},
                        Case{"FileTimeZoneOffset", "2", "text", "2 is no number of minutes from UTC"},
                        Case{"No/Such", "1", "", "there is nothing that could hold this value"}}) {
    const VrxResult result = set(c.key, c.value, c.type);
    EXPECT_EQ(result.status, 1) << c.key;
    EXPECT_THAT(result.errors, HasSubstr(c.words));
  }
  EXPECT_EQ(m_folder.Read("clip.mts.modd"), before);
  EXPECT_EQ(Vrx({"modd", "set", Path("none.mts"), "Rating", "1"}).errors,
            "vrx: error: FOLDER/none.mts: it does not exist (0x8105)\n");
  EXPECT_EQ(Vrx({"modd", "set", Path("clip.mts.modd"), "Rating", "1"}).status, 1);
  EXPECT_EQ(Vrx({"modd", "get", Path("clip.mts"), "Nothing"}).errors,
            "vrx: error: FOLDER/clip.mts.modd: Nothing: it is not set\n");
}

TEST_F(SidecarCommandsTest, ContentsShowsWhichFilesBelongTogether) {
  for (const char* name : {"a.mov", "a.thm", "a.mov.modd", "b.png", "notes.txt"}) m_folder.Write(name, "");
  const VrxResult result = Vrx({"contents", m_folder.Path().string()});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, R"(a.mov                             QuickTime movie
  + a.thm                         thumbnail (THM)
  + a.mov.modd                    metadata of a content
b.png                             PNG picture

No content:
  clip.mts
  notes.txt
)");
  const Json json = Json::parse(Vrx({"contents", m_folder.Path().string(), "--json"}).output);
  EXPECT_EQ(json["contents"][0]["companions"][1]["code"], "0x80000002");
  EXPECT_EQ(json["rest"], Json({"clip.mts", "notes.txt"}));
  EXPECT_EQ(Vrx({"contents", Path("none")}).status, 1);
  EXPECT_EQ(Vrx({"contents", Path("a.mov")}).errors, "vrx: error: FOLDER/a.mov: it is no folder\n");
}

}  // namespace
