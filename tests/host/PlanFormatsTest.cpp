// The printed plans do what they say: real shells and a real make read them. A script stands for the program.
#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include <gmock/gmock.h>

#include "foundation/platform/Module.h"
#include "foundation/platform/Paths.h"
#include "host/pieces/PlanFormats.h"
#include "tests/support/TempFolder.h"

namespace {

using namespace vrx;
using namespace vrx::host;
using testing::HasSubstr;
namespace fs = std::filesystem;

class PlanFormatsTest : public testing::Test {
 protected:
  PlanFormatsTest() {
    // Writes its words, one a line, into the file that the last of them names.
    WriteScript("vrx", "for word; do last=$word; done\nprintf '%s\\n' \"$@\" > \"$last\"\n");
    // Runs what is submitted at once, each task of an array for itself, and gives the job a number.
    WriteScript("sbatch",
                "for word; do\n"
                "  case $word in\n"
                "  --array=*) tasks=$(seq \"$(echo \"${word#*=}\" | cut -d- -f1)\" \"${word##*-}\") ;;\n"
                "  --dependency=afterok:7) ;;\n"
                "  --dependency=*) exit 1 ;;\n"
                "  esac\n"
                "done\n"
                "if [ -z \"${tasks:-}\" ]; then exec sh \"$2\" \"$3\"; fi\n"
                "for task in $tasks; do SLURM_ARRAY_TASK_ID=$task sh \"$3\"; done\n"
                "echo '7;cluster'\n");
    plan.id = "abc";
    plan.options = {"--crf", "20"};
    plan.ranges = {{0, 10}, {10, 25}};
    plan.hasSound = true;
  }
  void WriteScript(const std::string& name, const std::string& text) const {
    folder.Write(name, "#!/bin/sh\nset -eu\n" + text);
    fs::permissions(folder.Path() / name, fs::perms::owner_all);
  }
  /// The project and the movie lie in a folder of this name.
  void PlaceIn(const std::string& name) {
    fs::create_directory(folder.Path() / name);
    plan.project = folder.Write(name + "/p" + name + ".vrx", "");
    plan.movie = (folder.Path() / name / ("m" + name + ".mov")).string();
  }
  /// The plan with the script in place of this program.
  std::string Document(PlanFormat format) const {
    std::string cause;
    std::string text = PlanDocument(plan, format, cause);
    EXPECT_EQ(cause, "");
    const std::string program = platform::NativePath(platform::ExecutablePath());
    for (std::size_t at = 0; (at = text.find(program, at)) != text.npos;)
      text.replace(at, program.size(), (folder.Path() / "vrx").string());
    return text;
  }
  /// Runs it from another folder.
  int Run(const std::string& program, const std::string& text) const {
    folder.Write("plan", text);
    return std::system(("cd / && PATH=" + folder.Path().string() + ":$PATH " + program + " " +
                        (folder.Path() / "plan").string() + " >/dev/null")
                           .c_str());
  }
  /// What the program was asked for when it wrote this file, which is removed.
  std::string TakeWords(const std::string& path) const {
    const std::string words = folder.Read(fs::relative(path, folder.Path()));
    fs::remove(path);
    return words;
  }
  void ExpectMade() const {
    const std::string stem = plan.movie.substr(0, plan.movie.size() - 4);
    const std::string sound = stem + ".piece-0.mp4", one = stem + ".piece-1.mp4", two = stem + ".piece-2.mp4";
    const std::string render = "render\n" + plan.project + "\n";
    EXPECT_EQ(TakeWords(sound), render + "--piece\n0/2:abc\n--crf\n20\n-o\n" + sound + "\n");
    EXPECT_EQ(TakeWords(one), render + "--range\n0f-10f\n--piece\n1/2:abc\n--crf\n20\n-o\n" + one + "\n");
    EXPECT_EQ(TakeWords(two), render + "--range\n10f-\n--piece\n2/2:abc\n--crf\n20\n-o\n" + two + "\n");
    EXPECT_EQ(TakeWords(plan.movie),
              "join\n" + sound + "\n" + one + "\n" + two + "\n-o\n" + plan.movie + "\n");
  }

  TempFolder folder;
  PiecePlan plan;
};

TEST_F(PlanFormatsTest, AnyNamesReachTheProgramThroughEveryFormat) {
  for (const std::string name :
       {"plain", "a b",   "-a",    "it's", "\"q\"", "$HOME", "$(x)`y`", "#a",      "a#b",      "a:b", "a=b",
        "a\\b",  "a\\ b", "a\\#b", "*",    "a?[b]", "~",     "a&b",     "(a){b}!", "\xc3\xbc", "@+a"}) {
    SCOPED_TRACE(name);
    PlaceIn(name);
    EXPECT_EQ(Run("sh -eu", Document(PlanFormat::Shell)), 0);
    ExpectMade();
    EXPECT_EQ(Run("make -j4 -f", Document(PlanFormat::Make)), 0);
    ExpectMade();
    EXPECT_EQ(Run("sh", Document(PlanFormat::Sbatch)), 0);
    ExpectMade();
    fs::remove_all(folder.Path() / name);
  }
}

TEST_F(PlanFormatsTest, MakeMakesOnlyWhatIsMissingAndKeepsNothingThatFailed) {
  PlaceIn("m");
  const std::string text = Document(PlanFormat::Make);
  EXPECT_EQ(Run("make -f", text), 0);
  const std::string two = plan.movie.substr(0, plan.movie.size() - 4) + ".piece-2.mp4";
  fs::remove(two);
  fs::remove(plan.movie);
  const std::string failing = folder.Read("vrx") + "exit 1\n";
  const std::string working = folder.Read("vrx");
  folder.Write("vrx", failing);
  EXPECT_NE(Run("make -f", text), 0);
  EXPECT_FALSE(fs::exists(two) || fs::exists(plan.movie));
  folder.Write("vrx", working);
  EXPECT_EQ(Run("make -f", text), 0);
  ExpectMade();
}

TEST_F(PlanFormatsTest, SoundHasItsPlaceInThePlanOrNone) {
  PlaceIn("m");
  plan.isSoundPcm = true;
  EXPECT_THAT(Document(PlanFormat::Shell), HasSubstr(".piece-0.mov\n"));
  plan.hasSound = false;
  const std::string text = Document(PlanFormat::Shell);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 3);
  EXPECT_THAT(Document(PlanFormat::Sbatch), HasSubstr("--array=1-2 "));
  const Json json = Json::parse(Document(PlanFormat::JsonText));
  ASSERT_EQ(json["pieces"].size(), 2u);
  EXPECT_EQ(json["pieces"][1]["firstFrame"], 10);
  EXPECT_EQ(json["pieces"][1]["frames"], 15);
  EXPECT_EQ(json["pieces"][1]["command"].back(), json["pieces"][1]["output"]);
  EXPECT_EQ(json["join"]["command"].back(), plan.movie);
}

TEST_F(PlanFormatsTest, NamesThatCannotBeWrittenAreRefused) {
  const auto causeOf = [&](const std::string& movie, PlanFormat format) {
    plan.project = "/p.vrx";
    plan.movie = movie;
    std::string cause;
    EXPECT_EQ(PlanDocument(plan, format, cause), "");
    return cause;
  };
  for (const PlanFormat format :
       {PlanFormat::Shell, PlanFormat::Make, PlanFormat::Sbatch, PlanFormat::JsonText})
    EXPECT_THAT(causeOf("/a\nb.mp4", format), HasSubstr("has a line end in its name"));
  for (const char* movie : {"/a%b.mp4", "/a;b.mp4", "/a|b.mp4", "/a\tb.mp4"})
    EXPECT_THAT(causeOf(movie, PlanFormat::Make), HasSubstr("make cannot have names with"));
}

}  // namespace
