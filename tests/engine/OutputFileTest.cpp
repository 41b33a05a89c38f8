// A killed render costs disk space only until the next one, and no render touches another's file.
#include "engine/OutputFile.h"

#include <gtest/gtest.h>

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

TEST(OutputFile, LeftoversOfTheSameMovieGoAndEverythingElseStays) {
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

}  // namespace
}  // namespace vrx::engine
