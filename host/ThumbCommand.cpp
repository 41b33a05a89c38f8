#include <cstdio>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "foundation/file/XpFileOperations.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/platform/Paths.h"
#include "foundation/text/XpPath.h"
#include "host/Commands.h"
#include "host/Console.h"
#include "host/FileCauses.h"
#include "host/PictureFile.h"
#include "host/PngFile.h"
#include "imaging/codecs/XpImageIoPNG.h"

namespace vrx::host {
namespace {

using Picture = XpImageIo::Picture;

constexpr std::int32_t kMostSide = 16384;  // pixels

struct ThumbOptions {
  std::vector<std::string> files;
  std::string output;            // a PNG file, or a folder
  std::string size = "320x240";  // to fit into, when decoded
  bool embedded = false;         // the one that the file carries
};

/// 0 by 0 for a text that is no size such as 320x240.
XpImageSize SizeOf(const std::string& text) {
  XpImageSize size;
  int end = 0;
  const int read = std::sscanf(text.c_str(), "%5dx%5d%n", &size.width, &size.height, &end);
  return read == 2 && static_cast<std::size_t>(end) == text.size() ? size : XpImageSize();
}

/// Empty when the text is a size.
std::string CheckSize(const std::string& text) {
  const XpImageSize size = SizeOf(text);
  const auto isSide = [](std::int32_t side) { return side >= 1 && side <= kMostSide; };
  return isSide(size.width) && isSide(size.height) ? "" : text + " is no size such as 320x240";
}

Picture ReadEmbedded(PictureFile& picture, std::string& cause) {
  Picture thumbnail = picture.Codec().LoadThumbnail(picture.Path(), {});
  if (thumbnail != nullptr) return thumbnail;
  const XpResult result = picture.Codec().status;
  const bool isMissing = result == XpOk || result == XpErrImageNotProvided || result == XpErrImageNoData;
  cause = isMissing ? "it carries no thumbnail" : picture.CodecCause();
  return thumbnail;
}

/// The still-image loader shows some pictures that their codec does not: those in print colours, and
/// animations without a screen.
Picture LoadFitted(PictureFile& picture, XpImageSize target, std::string& cause) {
  XpImageIoPNG loader;
  Picture fitted = loader.LoadFitted(picture.Path(), target, {});
  if (fitted != nullptr) return fitted;
  cause = loader.status == XpErrFailed
              ? "its shape leaves nothing at this size (" + CodeText(XpErrFailed) + ")"
              : Utf8(loader.problem);
  return nullptr;
}

Picture DecodeFitted(PictureFile& picture, XpImageSize target, std::string& cause) {
  XpImageIo& codec = picture.Codec();
  Picture fitted = codec.LoadFitted(picture.Path(), target, {.toSrgb = true, .applyOrientation = true});
  if (fitted != nullptr) return fitted;
  if (codec.status == XpErrImageInvalid || codec.status == XpErrFailed) {
    return LoadFitted(picture, target, cause);
  }
  cause = picture.CodecCause();
  return nullptr;
}

std::vector<std::uint32_t> PixelsOf(const XpPixmap24NoHandle& pixmap) {
  std::vector<std::uint32_t> pixels;
  pixels.reserve(static_cast<std::size_t>(pixmap.width) * static_cast<std::size_t>(pixmap.height));
  for (std::int32_t y = 0; y < pixmap.height; ++y) {
    const unsigned char* bgr = pixmap.GetPlane(0)->Row(y);
    for (std::int32_t x = 0; x < pixmap.width; ++x, bgr += 3) {
      pixels.push_back(0xFF000000u | std::uint32_t{bgr[2]} << 16 | std::uint32_t{bgr[1]} << 8 | bgr[0]);
    }
  }
  return pixels;
}

/// Where the thumbnails go: all into a folder, or the only one into a file.
class Destination {
 public:
  explicit Destination(const ThumbOptions& options)
      : m_options(options), m_path(platform::AbsolutePath(platform::PathFromNative(options.output))) {
    m_isFolder = options.files.size() > 1 || options.output.ends_with('/') || XpPathIsDirectory(m_path);
  }

  std::string Prepare() const {
    if (!m_isFolder) return {};
    if (const XpResult result = XpPathMake(m_path)) return WriteCause(result);
    return {};
  }

  /// Empty with the cause when another picture would be overwritten.
  XpString FileFor(const PictureFile& picture, std::string& cause) {
    const XpString file = m_isFolder ? XpPathJoin(m_path, XpPathStem(picture.Path()) + u".png") : m_path;
    if (!m_used.insert(file).second) {
      cause = "its thumbnail would overwrite that of another picture, " + Utf8(file);
      return {};
    }
    for (const std::string& input : m_options.files) {
      if (!platform::IsSameFile(file, platform::AbsolutePath(platform::PathFromNative(input)))) continue;
      cause = "the thumbnail would overwrite the picture " + input;
      return {};
    }
    return file;
  }

 private:
  const ThumbOptions& m_options;
  XpString m_path;
  bool m_isFolder;
  std::set<XpString> m_used;
};

std::string WriteThumb(const std::string& file, const ThumbOptions& options, Destination& destination) {
  PictureFile picture(file);
  std::string cause = picture.Cause();
  if (!cause.empty()) return cause;
  const XpString target = destination.FileFor(picture, cause);
  if (!cause.empty()) return cause;
  const Picture thumbnail =
      options.embedded ? ReadEmbedded(picture, cause) : DecodeFitted(picture, SizeOf(options.size), cause);
  if (thumbnail == nullptr) return cause;
  const std::vector<std::uint32_t> pixels = PixelsOf(*thumbnail);
  const BgraPicture png{static_cast<std::uint32_t>(thumbnail->width),
                        static_cast<std::uint32_t>(thumbnail->height), pixels};
  if (!WritePng(target, png, false, cause)) return Utf8(target) + ": " + cause;
  return {};
}

int RunThumb(const ThumbOptions& options) {
  Destination destination(options);
  if (const std::string cause = destination.Prepare(); !cause.empty())
    return Fail(options.output + ": " + cause);
  return ForEachPicture(options.files,
                        [&](const std::string& file) { return WriteThumb(file, options, destination); });
}

}  // namespace

CommandRun AddThumb(CLI::App& command) {
  const auto options = std::make_shared<ThumbOptions>();
  command.add_option("FILE", options->files, "The pictures: JPEG, MPO, RAW, TIFF, PNG, GIF or BMP")
      ->required();
  command
      .add_option("-o,--output", options->output,
                  "The PNG file to write, or a folder: of several pictures each gets a file there")
      ->required();
  CLI::Option* size =
      command.add_option("--size", options->size, "The size to fit into; 320x240 if not given")
          ->check(CheckSize)
          ->option_text("WxH");
  command.add_flag("--embedded", options->embedded, "The thumbnail that the file carries, at its own size")
      ->excludes(size);
  command.footer("Exit status: 0 done, 1 a thumbnail cannot be read or written, 2 wrong use.");
  return [options] { return RunThumb(*options); };
}

}  // namespace vrx::host
