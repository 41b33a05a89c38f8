// Damaged, cut off and hostile pictures: what can be decoded is shown, and the cause is given.
#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <atomic>

#include "tests/imaging/ImageFiles.h"

namespace {

using namespace imagefiles;

TEST(DamagedImageTest, EveryCutAndFlippedByteGivesACause) {
  struct Case {
    const char* name;
    Bytes file;
    std::size_t spare;  // bytes at the end that are no picture data
  };
  const Samples rgb = Noise(9, 7, 3), grey = Noise(9, 7, 1);
  const Case cases[] = {
      {"PNG", Png(rgb), 0},
      {"PNG, interlaced", Png(rgb, {.isInterlaced = true}), 0},
      {"JPEG", Jpeg(rgb), 0},
      {"JPEG, progressive", Jpeg(rgb, {.isProgressive = true}), 0},
      {"GIF", Gif(grey, {9, 7, 0, 0, -1, false}), 2},
      {"GIF, interlaced", Gif(grey, {9, 7, 0, 0, 1, true}), 2},
      {"TIFF", Tiff(rgb), 4},
      {"TIFF, tiled and packed", Tiff(rgb, {.compression = 8, .tile = 16}), 4},
      {"TIFF, grey and packed", Tiff(grey, {.photometric = 1, .compression = 5}), 4},
  };
  testing::internal::CaptureStderr();
  for (const Case& c : cases) {
    ASSERT_EQ(Load(c.file).result, XpOk) << c.name;
    for (std::size_t at = 0; at < c.file.size(); ++at) {
      const Loaded cut = Load(c.file.substr(0, at));
      if (at + c.spare < c.file.size()) {
        SCOPED_TRACE(testing::Message() << c.name << " cut to " << at << " of " << c.file.size());
        ExpectErrorOrPart(cut);
      }
      Load(c.file.substr(0, at), {}, false);
      for (const int flip : {0xFF, 0x01, 0x80}) {
        Bytes bent = c.file;
        bent[at] = static_cast<char>(bent[at] ^ flip);
        const Loaded loaded = Load(bent, {.limits = {.pixels = 1'000'000}});
        EXPECT_EQ(loaded.result == XpOk, loaded.image.pixmap != nullptr);
      }
    }
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(DamagedImageTest, FileCutInTheMiddleShowsItsUpperPart) {
  const Samples rgb = Noise(60, 80, 3), grey = Noise(60, 80, 1);
  Bytes rows;
  for (int i = 0; i < 60 * 80 * 3; ++i) rows += static_cast<char>(i * 7 + i / 251);
  struct Case {
    const char* name;
    Bytes file;
    bool isFromBottom = false;
    int tolerance = 0;      // where the decoder smoothes what is not complete
    bool endsBlack = true;  // instead of made up
  };
  const Case cases[] = {
      {"PNG", Png(rgb)},
      {"PNG, interlaced", Png(rgb, {.isInterlaced = true}), false, 255, false},
      {"JPEG", Jpeg(rgb), false, 0, false},
      {"JPEG, progressive", Jpeg(Smooth(60, 80, 3), {.isProgressive = true}), false, 40, false},
      {"GIF", Gif(grey, {60, 80, 0, 0, -1, false})},
      {"TIFF, strips", TiffInOrder(grey, 1, 3, false)},
      {"TIFF, one strip", TiffInOrder(grey, 1, 80, false)},
      {"TIFF, packed strips", TiffInOrder(grey, 1, 3, true)},
      {"TIFF, one packed strip", TiffInOrder(grey, 1, 80, true)},
      {"TIFF, white is zero", TiffInOrder(grey, 0, 3, false)},
      {"BMP from the top", Bmp(60, -80, {24, 0, {}, rows})},
      {"BMP from the bottom", Bmp(60, 80, {24, 0, {}, rows}), true},
  };
  const auto isBlack = [](const unsigned char* row) {
    return std::all_of(row, row + 60 * 3, [](unsigned char byte) { return byte == 0; });
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const Loaded whole = Load(c.file), cut = Load(c.file.substr(0, c.file.size() * 6 / 10));
    ASSERT_EQ(whole.result, XpOk) << whole.problem;
    EXPECT_FALSE(whole.image.isPartial);
    ASSERT_EQ(cut.result, XpOk) << cut.problem;
    EXPECT_TRUE(cut.image.isPartial);
    EXPECT_FALSE(cut.problem.empty());
    EXPECT_EQ(cut.image.fullHeight, 80);
    for (int y = 0; y < 30; ++y) {
      const int shown = c.isFromBottom ? 79 - y : y;
      const unsigned char* row = cut.image.pixmap->GetPlane(0)->Row(shown);
      ASSERT_FALSE(isBlack(row)) << shown;
      for (int i = 0; i < 60 * 3; ++i) {
        ASSERT_NEAR(row[i], whole.image.pixmap->GetPlane(0)->Row(shown)[i], c.tolerance) << shown;
      }
    }
    const bool endsBlack = isBlack(cut.image.pixmap->GetPlane(0)->Row(c.isFromBottom ? 0 : 79));
    EXPECT_EQ(endsBlack, c.endsBlack);
  }
}

TEST(DamagedImageTest, FileWithoutAWholeRowIsAnError) {
  const Samples rgb = Noise(60, 80, 3), grey = Noise(60, 80, 1);
  for (const auto& [file, head] : {std::pair{Png(rgb), std::size_t{60}},
                                   {Gif(grey, {60, 80, 0, 0, -1, false}), 820},
                                   {TiffInOrder(grey, 0, 80, false), 122},
                                   {Bmp(60, -80, {24, 0, {}, Bytes(60 * 80 * 3, 'x')}), 100}}) {
    ExpectErrorOrPart(Load(file.substr(0, head)));
    EXPECT_EQ(Load(file.substr(0, head)).result, XpErrInvalidFile);
  }
  Bytes jpeg = Jpeg(rgb);
  const Loaded loaded = Load(jpeg.substr(0, jpeg.find("\xFF\xDA") + 40));
  EXPECT_EQ(loaded.result, XpErrInvalidFile);
  EXPECT_EQ(loaded.problem, "the file ends within the picture");
}

TEST(DamagedImageTest, JpegThatEndsInItsMiddleIsPartialWithTheDecodersMessage) {
  Bytes jpeg = Jpeg(Noise(60, 80, 3));
  jpeg.replace(jpeg.size() / 2, 2, "\xFF\xD9");  // an end marker
  const Loaded loaded = Load(jpeg);
  ASSERT_EQ(loaded.result, XpOk) << loaded.problem;
  EXPECT_TRUE(loaded.image.isPartial);
  EXPECT_NE(loaded.problem.find("Corrupt"), std::string::npos) << loaded.problem;
}

/// A file on a disk that fails beyond some position.
struct FailingFile : XpMemoryFile {
  XpResult Read(void* buffer, std::uint64_t size, std::uint64_t* read) override {
    if (Tell() >= kReadable) return XpErrDeviceNotReady;
    return XpMemoryFile::Read(buffer, size, read);
  }
  static constexpr std::int64_t kReadable = 32 * 1024;
};

TEST(DamagedImageTest, FileWithAReadErrorShowsTheRowsBeforeIt) {
  Bytes bytes = Png(Noise(200, 200, 3));
  ASSERT_GT(bytes.size(), 2u * FailingFile::kReadable);
  FailingFile file;
  file.Attach(bytes.data(), static_cast<std::int64_t>(bytes.size()), false);
  vrx::imaging::StillImage image;
  std::int32_t width = 0, height = 0;
  XpString problem;
  EXPECT_EQ(vrx::imaging::ReadStillImage(file, {}, &image, width, height, &problem), XpOk);
  EXPECT_TRUE(image.isPartial);
  EXPECT_EQ(problem, u"the file cannot be read");
}

TEST(DamagedImageTest, SizesBeyondTheLimitsAreRefusedFromTheHead) {
  Bytes png = Png(Noise(1, 1, 3)), jpeg = Jpeg(Noise(8, 8, 3)),
        gif = Gif(Noise(1, 1, 1), {65535, 65535, 0, 0, -1, false});
  // The first chunk of a PNG has its type and fields in 17 bytes from byte 12, then its checksum.
  png.replace(16, 8, Big(65535, 4) + Big(65535, 4));
  const auto* chunk = reinterpret_cast<const unsigned char*>(png.data()) + 12;
  png.replace(29, 4, Big(static_cast<std::uint32_t>(crc32(0, chunk, 17)), 4));
  const std::size_t frame = jpeg.find("\xFF\xC0");
  jpeg.replace(frame + 5, 4, "\xFF\xDC\xFF\xDC");
  const Bytes bmp = Bmp(65535, 65535, {24, 0, {}, "1234"});
  for (const Bytes& file : {png, jpeg, gif, bmp}) {
    for (const bool wantsPixels : {true, false}) {
      const Loaded loaded = Load(file, {}, wantsPixels);
      EXPECT_EQ(loaded.result, XpErrOutOfMemory) << loaded.problem;
      EXPECT_NE(loaded.problem.find("too large"), std::string::npos) << loaded.problem;
    }
  }
  EXPECT_EQ(Load(Png(Noise(21, 2, 3)), {.limits = {.side = 20}}).result, XpErrOutOfMemory);
  EXPECT_EQ(Load(Tiff(Noise(21, 2, 3)), {.limits = {.side = 20}}).result, XpErrOutOfMemory);
  EXPECT_EQ(Load(Png(Noise(10, 10, 3)), {.limits = {.pixels = 99}}).result, XpErrOutOfMemory);
  EXPECT_EQ(Load(Png(Noise(10, 10, 3)), {.limits = {.fileBytes = 50}}).result, XpErrOutOfMemory);
  // Within the limits, but more than so small a file can hold.
  for (const Bytes& file :
       {Bmp(12000, 12000, {24, 0, {}, "1234"}), jpeg.replace(frame + 5, 4, "\x2E\xE0\x2E\xE0")}) {
    EXPECT_EQ(Load(file, {}).result, XpErrInvalidFile);
  }
}

TEST(DamagedImageTest, JpegWithThousandsOfScansIsRefused) {
  Bytes jpeg = Jpeg(Noise(8, 8, 1), {.isProgressive = true});
  const std::size_t first = jpeg.find("\xFF\xDA");
  const std::size_t next = jpeg.find("\xFF\xC4", first);
  const Bytes scan = jpeg.substr(first, next - first);
  ASSERT_NE(next, Bytes::npos);
  Bytes many = jpeg.substr(0, first);
  for (int i = 0; i < 5000; ++i) many += scan;
  const Loaded loaded = Load(many + "\xFF\xD9");
  EXPECT_EQ(loaded.result, XpErrInvalidFile);
  EXPECT_NE(loaded.problem.find("scans"), std::string::npos) << loaded.problem;
}

/// A file during whose second read the user cancels.
class CancelledFile final : public XpMemoryFile {
 public:
  explicit CancelledFile(Bytes& bytes) {
    Attach(bytes.data(), static_cast<std::int64_t>(bytes.size()), false);
  }
  XpResult Read(void* buffer, std::uint64_t count, std::uint64_t* read) override {
    cancel = ++m_reads > 1;
    return XpMemoryFile::Read(buffer, count, read);
  }
  std::atomic<bool> cancel = false;
  int GetReads() const { return m_reads; }

 private:
  int m_reads = 0;
};

TEST(DamagedImageTest, CancelEndsTheReadingWithoutAPicture) {
  const Samples rgb = Noise(400, 300, 3), grey = Noise(400, 300, 1);
  Bytes rows(400 * 300 * 3, 'x');
  for (Bytes file : {Png(rgb), Jpeg(rgb), Gif(grey, {400, 300, 0, 0, -1, false}),
                     TiffInOrder(grey, 1, 3, false), Bmp(400, -300, {24, 0, {}, rows})}) {
    SCOPED_TRACE(file.substr(0, 4));
    CancelledFile source(file);
    Loaded loaded;
    loaded.result = vrx::imaging::ReadStillImage(source, {.cancel = &source.cancel}, &loaded.image,
                                                 loaded.width, loaded.height, nullptr);
    EXPECT_EQ(loaded.result, XpErrFailed);
    EXPECT_EQ(loaded.image.pixmap, nullptr);
    EXPECT_EQ(source.GetReads(), 2);
  }
}

}  // namespace
