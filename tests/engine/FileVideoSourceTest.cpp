// Jumps, skipped pictures and kept decoders give the same pictures as reading the file from its beginning.
#include "engine/FileVideoSource.h"

#include <gtest/gtest.h>

#include <fstream>
#include <random>
#include <vector>

#include "samples/clipmaker/PatternClip.h"
#include "tests/support/TempFolder.h"

extern "C" {
#include <libavutil/imgutils.h>
}

namespace vrx::engine {
namespace {

using test_support::PatternClip;

constexpr int kRate = 25;

std::string BytesOf(const AVFrame& frame) {
  const auto format = static_cast<AVPixelFormat>(frame.format);
  const int size = av_image_get_buffer_size(format, frame.width, frame.height, 1);
  std::string bytes(static_cast<std::size_t>(size), '\0');
  av_image_copy_to_buffer(reinterpret_cast<std::uint8_t*>(bytes.data()), size, frame.data, frame.linesize,
                          format, frame.width, frame.height, 1);
  return bytes;
}

class FileVideoSourceTest : public testing::Test {
 protected:
  std::unique_ptr<FileVideoSource> Open(const std::string& path) const {
    std::unique_ptr<FileVideoSource> source;
    EXPECT_EQ(FileVideoSource::Open(path, never, source).cause, "");
    return source;
  }
  /// In quarters of a frame, so that some moments are between two pictures.
  std::string At(FileVideoSource& source, int quarter) const {
    const AVFrame* frame = nullptr;
    EXPECT_EQ(source.FrameAt({quarter, 4 * kRate}, frame), kOk) << quarter;
    return frame == nullptr ? std::string() : BytesOf(*frame);
  }
  std::string Write(const std::string& name, PatternClip clip) const {
    clip.width = 64;
    clip.height = 48;
    WritePatternClip((folder.Path() / name).string(), clip);
    return (folder.Path() / name).string();
  }
  /// All pictures of the source, each from a walk in small steps.
  std::vector<std::string> ReadPlainly(const std::string& path, int quarters) const {
    const auto source = Open(path);
    std::vector<std::string> pictures;
    for (int quarter = 0; quarter < quarters; ++quarter) pictures.push_back(At(*source, quarter));
    return pictures;
  }

  const StopSignal never;
  const TempFolder folder;
};

TEST_F(FileVideoSourceTest, EveryJumpGivesThePictureOfAPlainRead) {
  std::vector<std::int64_t> uneven;
  for (int i = 0; i < 200; ++i) uneven.push_back(i * 40 + (i % 7) * 5 + i / 20 * 200);
  const std::pair<const char*, PatternClip> sources[] = {
      {"long.mp4", {.frames = 300, .gop = 250, .bFrames = 3}},
      {"usual.mp4", {.frames = 200, .gop = 48}},
      {"plain.mp4", {.frames = 200, .gop = 60, .bFrames = 0}},
      {"keys.mov", {.frames = 100, .codec = "mpeg4", .gop = 12}},
      {"long.mkv", {.frames = 200, .gop = 80, .bFrames = 3}},
      {"uneven.mkv", {.frames = 200, .timesMs = uneven, .gop = 50, .bFrames = 3}},
      {"reordered.ts", {.frames = 200, .gop = 40, .bFrames = 3}},
      {"open.ts", {.frames = 200, .codec = "mpeg2video", .gop = 15}},
      {"open.mkv", {.frames = 200, .codec = "mpeg2video", .gop = 15}},
      {"old.avi", {.frames = 200, .codec = "mpeg4", .gop = 30, .bFrames = 2}},
      {"raw.h264", {.frames = 120, .gop = 25, .bFrames = 0}},
  };
  for (const auto& [name, clip] : sources) {
    SCOPED_TRACE(name);
    const std::string path = Write(name, clip);
    const int quarters = clip.frames * 4;
    const std::vector<std::string> plain = ReadPlainly(path, quarters);
    const auto source = Open(path);
    std::mt19937 random(17);
    for (int clips = 0; clips < 60; ++clips) {
      // A clip of some frames; one in three goes on close after the last one, one in three goes back a
      // little.
      static int at = 0;
      const int draw = static_cast<int>(random() % 3);
      if (draw == 0) at = static_cast<int>(random() % static_cast<unsigned>(quarters));
      if (draw == 1) at += static_cast<int>(random() % 60);
      if (draw == 2) at -= static_cast<int>(random() % 60);
      if (random() % 8 == 0) source->ReleaseDecoder();
      source->BeginClip();
      const int step = random() % 4 == 0 ? 8 : 4;  // some clips leave out every other frame
      for (int i = 0; i < 5; ++i, at += step) {
        const int quarter = std::clamp(at, 0, quarters - 1);
        ASSERT_TRUE(At(*source, quarter) == plain[static_cast<std::size_t>(quarter)]) << quarter;
      }
    }
  }
}

TEST_F(FileVideoSourceTest, DamagedGroupShowsTheSamePicturesAfterAJump) {
  const std::string path = Write("damaged.mp4", {.frames = 200, .gop = 100, .bFrames = 3});
  std::string bytes = folder.Read("damaged.mp4");
  const std::size_t data = bytes.find("mdat"), index = bytes.find("moov");
  ASSERT_LT(data, index);
  for (std::size_t at = data + (index - data) / 8; at + 100 < index; at += (index - data) / 9) {
    std::fill_n(&bytes[at], 40, '\x55');
  }
  folder.Write("damaged.mp4", bytes);
  const std::vector<std::string> plain = ReadPlainly(path, 800);
  for (int quarter = 0; quarter < 800; quarter += 28) {
    const auto source = Open(path);
    EXPECT_TRUE(At(*source, quarter) == plain[static_cast<std::size_t>(quarter)]) << quarter;
  }
}

}  // namespace
}  // namespace vrx::engine
