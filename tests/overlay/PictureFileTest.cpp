// Pictures of overlays come from files that users may replace: good ones give exactly their pixels, all
// others a transparent pixel, whatever their bytes say.
#include <cstring>

#include <gmock/gmock.h>
#include <png.h>

#include "drawing/PictureScaler.h"
#include "foundation/file/XpMemoryFile.h"
#include "foundation/platform/Paths.h"
#include "foundation/registry/XpRegistry.h"
#include "overlay/resources/LoadResources.h"
#include "overlay/resources/PictureFile.h"
#include "overlay/resources/PictureRenditions.h"
#include "overlay/resources/PictureTable.h"
#include "overlay/resources/ResourceFolder.h"
#include "tests/foundation/ScopedVariable.h"
#include "tests/support/TempFolder.h"

namespace {

using namespace vrx::overlay;
using vrx::platform::PathFromNative;

/// A bitmap whose pixel bytes count up from 1 through the file, padding included.
struct Bitmap {
  int bits = 32;
  std::int32_t width = 3;
  std::int32_t height = 2;
  std::uint32_t compression = 0;
  std::uint32_t headerBytes = 40;
  bool hasFileHeader = true;

  std::size_t RowBytes() const { return static_cast<std::size_t>((bits * width + 31) / 32 * 4); }
  std::string Bytes() const {
    std::string bytes;
    const auto put = [&bytes](std::uint32_t value, int count) {
      for (int i = 0; i < count; ++i) bytes += static_cast<char>(value >> (8 * i));
    };
    if (hasFileHeader) bytes = "BM" + std::string(12, '\xEE');
    put(headerBytes, 4);
    put(static_cast<std::uint32_t>(width), 4);
    put(static_cast<std::uint32_t>(height), 4);
    put(1, 2);
    put(static_cast<std::uint32_t>(bits), 2);
    put(compression, 4);
    bytes.append(20, '\xEE');
    if (compression == 3) bytes.append(12, '\xEE');
    for (std::size_t i = 0; i < RowBytes() * static_cast<std::size_t>(std::max(height, 0)); ++i) {
      bytes += static_cast<char>(i + 1);
    }
    return bytes;
  }
};

/// From memory of exactly that size, so that reading past it is found.
OwnedPicture Read(const std::string& bytes, XpString* problem = nullptr) {
  const std::vector<char> exact(bytes.begin(), bytes.end());
  return ReadBitmapFromMemory(exact.data(), exact.size(), problem);
}

std::string Patched(std::string bytes, std::size_t offset, std::uint32_t value, int count = 4) {
  for (int i = 0; i < count; ++i)
    bytes[offset + static_cast<std::size_t>(i)] = static_cast<char>(value >> (8 * i));
  return bytes;
}

TEST(PictureFileTest, BitmapsOf24And32BitsGiveTheirRowsTopDown) {
  for (const Bitmap& bitmap :
       {Bitmap{}, Bitmap{.hasFileHeader = false}, Bitmap{.bits = 24},
        Bitmap{.bits = 24, .hasFileHeader = false}, Bitmap{.compression = 3}, Bitmap{.compression = 4},
        Bitmap{.bits = 24, .width = 1, .height = 1}, Bitmap{.headerBytes = 124}}) {
    SCOPED_TRACE(testing::Message() << bitmap.bits << " " << bitmap.width << " " << bitmap.compression << " "
                                    << bitmap.hasFileHeader);
    const OwnedPicture picture = Read(bitmap.Bytes());
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(picture->width, bitmap.width);
    EXPECT_EQ(picture->height, bitmap.height);
    EXPECT_EQ(dynamic_cast<XpPixmap32*>(picture.get()) != nullptr, bitmap.bits == 32);
    EXPECT_EQ(dynamic_cast<XpPixmap24*>(picture.get()) != nullptr, bitmap.bits == 24);
    for (std::int32_t y = 0; y < bitmap.height; ++y) {
      const unsigned char* row = picture->data + y * picture->GetPlane(0)->rowBytes;
      const auto fileRow = static_cast<std::size_t>(bitmap.height - 1 - y);
      for (std::int32_t i = 0; i < bitmap.width * bitmap.bits / 8; ++i) {
        EXPECT_EQ(row[i],
                  static_cast<unsigned char>(fileRow * bitmap.RowBytes() + static_cast<std::size_t>(i) + 1));
      }
    }
  }
}

TEST(PictureFileTest, BitmapsThatEndEarlyOrStateWhatTheyLackGiveNothing) {
  for (const Bitmap& bitmap :
       {Bitmap{}, Bitmap{.bits = 24}, Bitmap{.hasFileHeader = false}, Bitmap{.compression = 3}}) {
    const std::string whole = bitmap.Bytes();
    for (std::size_t size = 0; size < whole.size(); ++size) {
      EXPECT_EQ(Read(whole.substr(0, size)), nullptr) << size;
    }
  }
  EXPECT_EQ(ReadBitmapFromMemory(nullptr, 0), nullptr);
  const std::string whole = Bitmap{}.Bytes();
  constexpr std::size_t kHeaderSize = 14, kWidth = 18, kHeight = 22, kBits = 28;
  const std::pair<const char*, std::string> wrong[] = {
      {"header of 39 bytes", Patched(whole, kHeaderSize, 39)},
      {"no width", Patched(whole, kWidth, 0)},
      {"negative width", Patched(whole, kWidth, 0xFFFFFFFF)},
      {"no height", Patched(whole, kHeight, 0)},
      {"negative height", Patched(whole, kHeight, 0xFFFFFFFE)},
      {"one row more", Patched(whole, kHeight, 3)},
      {"one column more", Patched(whole, kWidth, 4)},
      {"greatest width", Patched(whole, kWidth, 0x7FFFFFFF)},
      {"greatest height", Patched(whole, kHeight, 0x7FFFFFFF)},
      {"rows whose bytes are 0 in 32 bits", Patched(Patched(whole, kWidth, 0x40000000), kHeight, 4)},
      {"no bits", Patched(whole, kBits, 0, 2)},
      {"8 bits", Bitmap{.bits = 8}.Bytes()},
      {"16 bits", Bitmap{.bits = 16}.Bytes()},
      {"65535 bits", Patched(whole, kBits, 0xFFFF, 2)}};
  for (const auto& [name, bytes] : wrong) {
    XpString problem;
    EXPECT_EQ(Read(bytes, &problem), nullptr) << name;
    EXPECT_FALSE(problem.IsEmpty()) << name;
  }
}

TEST(PictureFileTest, SizesBeyondTheLimitsAreRefused) {
  const auto limit = static_cast<std::int32_t>(kMaxPictureSide);
  EXPECT_NE(Read(Bitmap{.width = limit, .height = 1}.Bytes()), nullptr);
  EXPECT_NE(Read(Bitmap{.width = 1, .height = limit}.Bytes()), nullptr);
  EXPECT_EQ(Read(Bitmap{.width = limit + 1, .height = 1}.Bytes()), nullptr);
  EXPECT_EQ(Read(Bitmap{.width = 1, .height = limit + 1}.Bytes()), nullptr);
  // Reported before the missing bytes are.
  const std::string whole = Bitmap{.width = limit, .height = 1}.Bytes();
  constexpr std::size_t kHeight = 22;
  const auto rows = static_cast<std::uint32_t>(kMaxPicturePixels / kMaxPictureSide);
  XpString problem;
  EXPECT_EQ(Read(Patched(whole, kHeight, rows), &problem), nullptr);
  EXPECT_EQ(problem, u"the file ends within the picture");
  EXPECT_EQ(Read(Patched(whole, kHeight, rows + 1), &problem), nullptr);
  EXPECT_EQ(problem, u"the picture is too large");
}

/// Pixels of 0, 1, 2 ... in the order of the file.
std::string Png(png_uint_32 width, png_uint_32 height, png_uint_32 format) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = width;
  image.height = height;
  image.format = format;
  std::vector<unsigned char> pixels(PNG_IMAGE_SIZE(image)), palette(PNG_IMAGE_COLORMAP_SIZE(image) + 768);
  for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<unsigned char>(i);
  image.colormap_entries = 256;
  png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
  std::string bytes(size, '\0');
  EXPECT_NE(png_image_write_to_memory(&image, bytes.data(), &size, 0, pixels.data(), 0, palette.data()), 0);
  bytes.resize(size);
  return bytes;
}

OwnedPicture ReadPng(std::string bytes, XpString* problem = nullptr) {
  XpMemoryFile file;
  file.Attach(bytes.data(), static_cast<std::int64_t>(bytes.size()), false);
  return ReadPngFromStream(file, problem);
}

TEST(PictureFileTest, PngKeepsStraightAlphaAndRefusesOtherDepths) {
  const OwnedPicture clear = ReadPng(Png(3, 2, PNG_FORMAT_RGBA));
  ASSERT_NE(dynamic_cast<XpPixmap32*>(clear.get()), nullptr);
  const unsigned char lastPixel[] = {22, 21, 20, 23};
  EXPECT_EQ(std::memcmp(clear->data + 20, lastPixel, 4), 0);
  const OwnedPicture opaque = ReadPng(Png(3, 2, PNG_FORMAT_RGB));
  ASSERT_NE(dynamic_cast<XpPixmap24*>(opaque.get()), nullptr);
  EXPECT_EQ(std::memcmp(opaque->data + opaque->GetPlane(0)->rowBytes, "\x0B\x0A\x09", 3), 0);
  for (const png_uint_32 format :
       std::initializer_list<png_uint_32>{PNG_FORMAT_GRAY, PNG_FORMAT_GA, PNG_FORMAT_LINEAR_RGB,
                                          PNG_FORMAT_LINEAR_RGB_ALPHA, PNG_FORMAT_RGB_COLORMAP}) {
    EXPECT_EQ(ReadPng(Png(3, 2, format)), nullptr) << format;
  }
  EXPECT_EQ(ReadPng(Png(static_cast<png_uint_32>(kMaxPictureSide) + 1, 1, PNG_FORMAT_RGB)), nullptr);
  // A few bytes cannot hold a picture that large; the size is stated in the head alone.
  std::string liar = Png(3, 2, PNG_FORMAT_RGBA);
  liar.replace(16, 17,
               std::string("\0\0\x20\0\0\0\x10\0\x08\x06\0\0\0\xDA\xC9\x6F\x0B", 17));  // with its checksum
  XpString problem;
  EXPECT_EQ(ReadPng(liar, &problem), nullptr);
  EXPECT_EQ(problem, u"the file ends within the picture");
  const std::string whole = Png(3, 2, PNG_FORMAT_RGBA);
  const std::size_t firstChunkAfterPixels = whole.find("IEND") - 8;
  for (std::size_t size = 0; size < firstChunkAfterPixels - 4; ++size) {
    EXPECT_EQ(ReadPng(whole.substr(0, size)), nullptr) << size;
  }
}

class ResourceFolderTest : public testing::Test {
 protected:
  void SetMachine(const char16_t* key, const char16_t* name, const XpString& value) {
    const XpString path = XpString(u"Software\\Kelo Corporation\\LBR\\Browser") + key;
    auto open = XpRegistryOpen(path, XpRegistryLocalMachine, XpRegistryRead | XpRegistryWrite);
    ASSERT_EQ(open->SetString(name, value), XpOk);
  }
  std::string Put(const std::string& name, const std::string& bytes) {
    std::filesystem::create_directories((m_home.Path() / "app/KRVOResources" / name).parent_path());
    return m_home.Write("app/KRVOResources/" + name, bytes);
  }
  void UseOwnFolder() {
    SetMachine(u"\\1.0", u"InstalledLocation", PathFromNative((m_home.Path() / "app").string()));
  }

  TempFolder m_home;
  ScopedVariable m_settings{"VRX_REGISTRY_DIR", m_home.Path().string()};
};

TEST_F(ResourceFolderTest, SettingsNameTheFolderElseTheProgramDoes) {
  const std::string program = std::filesystem::read_symlink("/proc/self/exe").parent_path().string();
  EXPECT_EQ(FindResourceFolder(), PathFromNative(program + "/KRVOResources/"));
  SetMachine(u"\\1.0", u"ExeName", u"other.exe");
  EXPECT_EQ(FindResourceFolder(), PathFromNative(program + "/KRVOResources/"));
  SetMachine(u"\\1.0", u"InstalledLocation", u"/opt/app/");
  EXPECT_EQ(FindResourceFolder(), u"/opt/app/KRVOResources/");
  SetMachine(u"\\1.0", u"ExeName", u"bin\\other.exe");
  EXPECT_EQ(FindResourceFolder(), u"/opt/app/bin/KRVOResources/");
  SetMachine(u"", u"CurrentVersion", u"2.0");
  EXPECT_EQ(FindResourceFolder(), PathFromNative(program + "/KRVOResources/"));
  SetMachine(u"\\2.0", u"InstalledLocation", u"C:\\App");
  EXPECT_EQ(FindResourceFolder(), u"C:\\App\\KRVOResources\\");
  EXPECT_EQ(ResourcePath(FindResourceFolder(), u"GPS\\a.bmp"), u"C:\\App\\KRVOResources\\GPS\\a.bmp");
}

TEST_F(ResourceFolderTest, WhatCannotBeReadGivesOneTransparentPixel) {
  UseOwnFolder();
  const Bitmap good{.width = 5, .height = 4};
  Put("good.bmp", good.Bytes());
  Put("holds-bitmap.PNG", good.Bytes());
  Put("holds-png.bmp", Png(3, 2, PNG_FORMAT_RGBA));
  Put("good.Png", Png(3, 2, PNG_FORMAT_RGBA));
  Put("empty.bmp", "");
  Put("8bit.bmp", Bitmap{.bits = 8}.Bytes());
  Put("folder.bmp/x", "");
  EXPECT_EQ(LoadResourcePicture(u"good.bmp")->width, 5);
  EXPECT_EQ(LoadResourcePicture(u"good.Png")->width, 3);
  for (const char16_t* name : {u"missing.bmp", u"nowhere\\missing.bmp", u"holds-bitmap.PNG", u"holds-png.bmp",
                               u"empty.bmp", u"8bit.bmp", u"folder.bmp", u""}) {
    const PainterPicture picture = LoadResourcePicture(name);
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->GetPlaneBitsPerPixel(0), 32u);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(picture->data), picture->size), std::string(4, '\0'));
  }
}

/// Each picture of a set has a width that tells which file it came from: its place in the list.
TEST_F(ResourceFolderTest, EachSetHoldsItsOwnPicturesInOrder) {
  UseOwnFolder();
  std::map<std::string, std::int32_t> widths;
  for (const PictureFile& file : ListPictureFiles()) {
    std::string name(file.name.ToNarrow().AsView());
    std::replace(name.begin(), name.end(), '\\', '/');
    widths[name] = static_cast<std::int32_t>(widths.size()) + 2;
    Put(name, Bitmap{.width = widths[name], .height = 1}.Bytes());
  }
  ASSERT_EQ(widths.size(), 152u);
  PainterInfo info;
  LoadPainterResources(info);
  EXPECT_EQ(info.templateInfo.resources, nullptr);
  EXPECT_EQ(info.tennisMetaInfo.resources, nullptr);

  info.templateInfo.valid = info.tennisMetaInfo.valid = true;
  const char* const themes[] = {"A", "B", "C"};
  const std::size_t frames[] = {61, 31, 7};
  for (std::size_t i = 0; i < 3; ++i) {
    info.templateInfo.scenarioType = static_cast<std::int32_t>(i) + 1;
    LoadPainterResources(info);
    const TemplateResource& set = *info.templateInfo.resources;
    const std::string theme = std::string("GPS/Theme_Small_") + themes[i] + "/ldk_ak_meter_";
    EXPECT_EQ(set.gpsIcon->width, widths.at("GPS/ldk_ak_gps.bmp"));
    EXPECT_EQ(set.goalText->width, widths.at("GPS/Theme_Small_D/ldk_ak_gps_goal_text.bmp"));
    EXPECT_EQ(set.meterBase->width, widths.at(theme + "base_" + themes[i] + ".bmp"));
    EXPECT_EQ(set.meterBaseVertical->width, widths.at(theme + "base_" + themes[i] + "_2st_vertical.bmp"));
    ASSERT_EQ(set.meterFrames.size(), frames[i]);
    const std::int32_t first = widths.at(theme + "anime_" + themes[i] + "_small_000.bmp");
    for (std::size_t n = 0; n < frames[i]; ++n) {
      EXPECT_EQ(set.meterFrames[n]->width, first + static_cast<std::int32_t>(n));
    }
    EXPECT_FALSE(set.speedLogScale1);
  }
  info.templateInfo.scenarioType = 4;
  LoadPainterResources(info);
  EXPECT_EQ(info.templateInfo.resources->meterBase->width,
            widths.at("GPS/Theme_Small_D/ldk_ak_speedlog_base.bmp"));
  EXPECT_FALSE(info.templateInfo.resources->meterBaseVertical);
  EXPECT_TRUE(info.templateInfo.resources->meterFrames.empty());
  EXPECT_EQ(info.templateInfo.resources->speedLogScale2->width,
            widths.at("GPS/Theme_Small_D/ldk_ak_speedlog_scale_2.bmp"));
  for (const std::int32_t scenario : {-1, 0, 5}) EXPECT_EQ(LoadTemplateResource(scenario), nullptr);

  const TennisMetaResource& tennis = *info.tennisMetaInfo.resources;
  EXPECT_EQ(tennis.backFrames.at(7)->width, widths.at("TennisMeta/back_07.bmp"));
  EXPECT_EQ(tennis.foreFrames.at(0)->width, widths.at("TennisMeta/fore_00.bmp"));
  EXPECT_EQ(tennis.forehandSlice->width, widths.at("TennisMeta/MOv_Forehand_Slice.bmp"));
  EXPECT_EQ(tennis.timeTop->width, widths.at("TennisMeta/Mov_TimeTop.bmp"));
  EXPECT_EQ(std::string(reinterpret_cast<char*>(tennis.shade->data), 4), std::string("\0\0\0\xB2", 4));
}

TEST_F(ResourceFolderTest, LargeFramesTakeTheDoubledPicturesOfTheRightSize) {
  UseOwnFolder();
  Put("TennisMeta/Mov_TimeTop.bmp", Bitmap{.width = 3, .height = 1}.Bytes());
  Put("TennisMeta/Mov_TimeLine.bmp", Bitmap{.width = 5, .height = 1}.Bytes());
  Put("2x/TennisMeta/Mov_TimeTop.png", Png(6, 2, PNG_FORMAT_RGBA));
  Put("2x/TennisMeta/Mov_TimeLine.png", Png(10, 1, PNG_FORMAT_RGBA));
  PainterInfo info;
  info.tennisMetaInfo.valid = true;
  for (const auto& [width, height] : {std::pair{1920, 1080}, {1921, 1080}, {1080, 1920}}) {
    LoadPainterResources(info, width, height);
    const auto& set = info.tennisMetaInfo.resources;
    ASSERT_EQ(set->doubled.size(), width == 1920 ? 0u : 1u);
    PictureRenditions renditions;
    renditions.Reset(set);
    const PainterPicture& top = set->timeTop;
    const XpPixmap32* nominal = renditions.Get(top, 3, 1);
    EXPECT_EQ(nominal->width, 3);
    EXPECT_EQ(renditions.Get(top, 3, 1), nominal);
    const XpPixmap32* twice = renditions.Get(top, 6, 2);
    ASSERT_EQ(twice->width, 6);
    EXPECT_EQ(set->doubled.contains(top.Get()) && set->doubled.at(top.Get()).Get() == twice, width != 1920);
    // One that is too small in one direction only takes the doubled one too.
    const auto& source = width == 1920 ? top : set->doubled.at(top.Get());
    const auto tall = vrx::drawing::ScalePicture(*source, 3, 2);
    EXPECT_EQ(std::memcmp(renditions.Get(top, 3, 2)->data, tall->data, tall->size), 0);
    EXPECT_EQ(renditions.Get(top, 0, 5), nullptr);
    EXPECT_EQ(renditions.Get(PainterPicture(), 5, 5), nullptr);
  }
}

}  // namespace
