// What renders leave in the folder of their output, and which outputs they refuse.
#include "engine/OutputFile.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <optional>
#include <set>

#include "tests/support/TempFolder.h"

namespace vrx::engine {
namespace {

std::set<std::string> NamesIn(const std::filesystem::path& folder) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) names.insert(entry.path().filename());
  return names;
}

TEST(OutputFileTest, LeftoversOfTheSameMovieAreRemovedAndNothingElse) {
  TempFolder folder;
  const std::filesystem::path root = std::filesystem::path(folder.Write("movie.mp4", "older")).parent_path();
  const std::set<std::string> kept{"movie.mp4",
                                   ".movie.mp4.part-abcde",
                                   ".movie.mp4.part-abcdefg",
                                   ".movie.mp4.part-ABCDEF",
                                   ".other.mp4.part-abcdef",
                                   "movie.mp4.part-abcdef"};
  for (const auto& name : kept) folder.Write(name, "kept");
  for (const auto* name : {".movie.mp4.part-abcdef", ".movie.mp4.part-000000"}) folder.Write(name, "killed");
  std::filesystem::create_directory(root / ".movie.mp4.part-folder");

  std::optional<OutputFile> first(std::in_place), second(std::in_place);
  ASSERT_EQ(first->Create(root / "movie.mp4"), kOk);
  ASSERT_EQ(second->Create(root / "movie.mp4"), kOk);
  const auto during = NamesIn(root);
  EXPECT_EQ(during.size(), kept.size() + 1 + 2);  // the folder, and both renders' own files
  EXPECT_FALSE(during.contains(".movie.mp4.part-abcdef"));
  EXPECT_FALSE(during.contains(".movie.mp4.part-000000"));

  const std::uint8_t byte = 'x';
  ASSERT_TRUE(first->Write(&byte, 1));
  EXPECT_EQ(first->Commit(), kOk);
  second.reset();
  auto after = NamesIn(root);
  EXPECT_EQ(after.erase(".movie.mp4.part-folder"), 1u);
  EXPECT_EQ(after, kept);
  EXPECT_EQ(std::filesystem::file_size(root / "movie.mp4"), 1u);
}

TEST(OutputFileTest, FilesOfASeriesShareTheirTemporaryName) {
  TempFolder folder;
  const std::filesystem::path root = folder.Path();
  const std::string series = "p-%d.png";
  const std::uint8_t byte = 'x';
  folder.Write(".p-%d.png.part-abcdef", "killed");
  folder.Write(".p-1.png.part-abcdef", "kept");
  OutputFile file;
  for (const char* name : {"p-0.png", "p-1.png"}) {
    ASSERT_EQ(file.Create(root / name, series), kOk);
    EXPECT_FALSE(NamesIn(root).contains(".p-%d.png.part-abcdef"));
    OutputFile other;  // renders the rest of the series at the same time
    ASSERT_EQ(other.Create(root / "p-9.png", series), kOk);
    ASSERT_TRUE(file.Write(&byte, 1));
    EXPECT_EQ(file.Commit(), kOk);
  }
  EXPECT_EQ(NamesIn(root), (std::set<std::string>{".p-1.png.part-abcdef", "p-0.png", "p-1.png"}));
}

Result WriteMovie(const std::filesystem::path& path) {
  OutputFile file;
  if (const Result result = file.Create(path); result != kOk) return result;
  const std::uint8_t byte = 'x';
  EXPECT_TRUE(file.Write(&byte, 1));
  return file.Commit();
}

TEST(OutputFileTest, LinkIsFollowedAndTheOlderFilesRightsAreKept) {
  TempFolder folder;
  const std::filesystem::path root = folder.Path();
  std::filesystem::create_directory(root / "movies");
  folder.Write("movies/old.mp4", "older");
  std::filesystem::permissions(root / "movies/old.mp4", std::filesystem::perms(0640));
  std::filesystem::create_symlink("movies/old.mp4", root / "first.mp4");
  std::filesystem::create_symlink(root / "first.mp4", root / "second.mp4");
  std::filesystem::create_symlink("movies/new.mp4", root / "dangling.mp4");
  const auto before = NamesIn(root);
  EXPECT_EQ(WriteMovie(root / "second.mp4"), kOk);
  EXPECT_EQ(WriteMovie(root / "dangling.mp4"), kOk);
  EXPECT_EQ(folder.Read("movies/old.mp4"), "x");
  EXPECT_EQ(std::filesystem::status(root / "movies/old.mp4").permissions(), std::filesystem::perms(0640));
  EXPECT_EQ(folder.Read("movies/new.mp4"), "x");
  EXPECT_EQ(NamesIn(root), before);
  for (const char* link : {"first.mp4", "second.mp4", "dangling.mp4"}) {
    EXPECT_TRUE(std::filesystem::is_symlink(root / link)) << link;
  }
}

TEST(OutputFileTest, OutputThatIsNoOrdinaryWritableFileIsRefused) {
  TempFolder folder;
  const std::filesystem::path root = folder.Path();
  std::filesystem::create_directory(root / "folder.mp4");
  ASSERT_EQ(mkfifo((root / "pipe.mp4").c_str(), 0600), 0);
  std::filesystem::create_symlink("pipe.mp4", root / "to-pipe.mp4");
  std::filesystem::create_symlink("circle.mp4", root / "circle.mp4");
  folder.Write("locked.mp4", "kept");
  std::filesystem::permissions(root / "locked.mp4", std::filesystem::perms(0444));
  const auto before = NamesIn(root);
  for (const char* name :
       {"folder.mp4", "pipe.mp4", "to-pipe.mp4", "circle.mp4", "locked.mp4", "none/a.mp4", ""}) {
    if (geteuid() == 0 && std::string_view(name) == "locked.mp4") continue;  // root may write everywhere
    EXPECT_EQ(WriteMovie(root / name), kOutputFailed) << name;
    EXPECT_EQ(NamesIn(root), before) << name;
  }
}

}  // namespace
}  // namespace vrx::engine
