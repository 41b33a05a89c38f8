#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "foundation/file/XpFileOperations.h"
#include "foundation/file/XpReplaceFile.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/platform/Paths.h"
#include "foundation/text/XpPath.h"
#include "host/ArgumentChecks.h"
#include "host/Commands.h"
#include "host/Console.h"
#include "host/FileCauses.h"
#include "host/PictureFile.h"
#include "imaging/codecs/MpSummary.h"
#include "imaging/jpeg/JpegCopy.h"

namespace vrx::host {
namespace {

using imaging::MpPictureSummary;
using imaging::MpType;

struct MpoOptions {
  bool extracts = false;
  std::vector<std::string> files;  // one for an extraction
  bool json = false;
  std::string output;                 // a JPEG file, or a folder
  std::optional<std::int64_t> frame;  // the only one to be written
  bool all = false;                   // pictures that are parts of others too
};

std::string TypeText(MpType type) {
  switch (type) {
    case MpType::Undefined:
      return "undefined";
    case MpType::LargeThumbnailVga:
      return "large thumbnail (VGA)";
    case MpType::LargeThumbnailFullHd:
      return "large thumbnail (full HD)";
    case MpType::Panorama:
      return "multi-frame panorama";
    case MpType::Disparity:
      return "disparity";
    case MpType::MultiAngle:
      return "multi-angle";
    case MpType::BaselinePrimary:
      return "baseline primary";
    case MpType::Original:
      return "preserved original";
    case MpType::GainMap:
      return "gain map";
  }
  return "unknown (" + CodeText(static_cast<std::uint32_t>(type)) + ")";
}

/// What is wrong with a picture; empty for nothing.
std::string ProblemOf(const MpPictureSummary& picture) {
  if (picture.result == XpErrPastEnd) return "damaged: it would begin past the end of the file";
  if (picture.result != XpOk) return "damaged: no JPEG picture begins where it should";
  if (!picture.IsCut()) return {};
  return "cut: the file ends after " + std::to_string(picture.size) + " of its " +
         std::to_string(picture.entry.size) + " bytes";
}

std::string IndexCause(XpResult result) {
  switch (result) {
    case XpErrImageNoData:
      return "it has no index of several pictures (" + CodeText(result) + ")";
    case XpErrImageInvalid:
      return "its index of pictures is damaged (" + CodeText(result) + ")";
    case XpErrImageUnusable:
      return "its index names no pictures (" + CodeText(result) + ")";
    default:
      return PictureCause(result);
  }
}

std::string ReadPictures(PictureFile& file, std::vector<MpPictureSummary>& pictures) {
  if (!file.Cause().empty()) return file.Cause();
  const XpResult result = imaging::SummarizeMpFile(file.File(), pictures);
  return result == XpOk ? "" : IndexCause(result);
}

Json PictureJson(const MpPictureSummary& picture) {
  const bool isThere = picture.result == XpOk;
  const bool hasSize = picture.storedSize.width > 0;
  const std::string problem = ProblemOf(picture);
  return {{"entry", picture.entry.number},
          {"frame", picture.frame < 0 ? Json() : Json(picture.frame)},
          {"representative", picture.entry.IsRepresentative()},
          {"type", TypeText(picture.entry.Type())},
          {"typeCode", static_cast<std::uint32_t>(picture.entry.Type())},
          {"position", isThere ? Json(picture.start) : Json()},
          {"bytes", isThere ? Json(picture.size) : Json()},
          {"statedBytes", picture.entry.size},
          {"width", hasSize ? Json(picture.storedSize.width) : Json()},
          {"height", hasSize ? Json(picture.storedSize.height) : Json()},
          {"problem", problem.empty() ? Json() : Json(problem)}};
}

std::string PixelsText(const MpPictureSummary& picture) {
  if (picture.storedSize.width == 0) return "unknown";
  return std::to_string(picture.storedSize.width) + " by " + std::to_string(picture.storedSize.height);
}

void PrintText(const std::string& file, const std::vector<MpPictureSummary>& pictures) {
  std::printf("%s\n  %5s  %5s  %-26s  %-14s  %12s  %10s\n", Masked(file).c_str(), "Entry", "Frame", "Type",
              "Pixels", "Begins at", "Bytes");
  for (const MpPictureSummary& picture : pictures) {
    const std::string frame = picture.frame < 0 ? "part" : std::to_string(picture.frame);
    const std::string problem = ProblemOf(picture);
    std::printf("  %5zu  %5s  %-26s  %-14s", picture.entry.number, frame.c_str(),
                TypeText(picture.entry.Type()).c_str(), PixelsText(picture).c_str());
    if (picture.result == XpOk) {
      std::printf("  %12lld  %10lld", static_cast<long long>(picture.start),
                  static_cast<long long>(picture.size));
    }
    std::printf("%s%s%s\n", picture.entry.IsRepresentative() ? "  representative" : "",
                problem.empty() ? "" : "  ", problem.c_str());
  }
}

int List(const MpoOptions& options) {
  Json documents = Json::array();
  const int status = ForEachPicture(options.files, [&](const std::string& name) {
    PictureFile file(name);
    std::vector<MpPictureSummary> pictures;
    std::string cause = ReadPictures(file, pictures);
    if (!cause.empty()) return cause;
    if (options.json) {
      Json array = Json::array();
      for (const MpPictureSummary& picture : pictures) array.push_back(PictureJson(picture));
      documents.push_back({{"file", name}, {"pictures", std::move(array)}});
    } else {
      PrintText(name, pictures);
    }
    return cause;
  });
  if (options.json) PrintJson(documents, 2);
  return status;
}

std::string NameOf(const MpPictureSummary& picture) {
  return picture.frame < 0 ? "entry " + std::to_string(picture.entry.number)
                           : "frame " + std::to_string(picture.frame);
}

/// Those that were asked for; none with the cause.
std::vector<MpPictureSummary> Choose(const std::vector<MpPictureSummary>& pictures, const MpoOptions& options,
                                     std::string& cause) {
  std::vector<MpPictureSummary> chosen;
  std::int64_t frames = 0;
  for (const MpPictureSummary& picture : pictures) {
    const bool isFrame = picture.frame >= 0;
    if (isFrame) ++frames;
    const bool isWanted = options.frame ? picture.frame == *options.frame : isFrame || options.all;
    if (isWanted) chosen.push_back(picture);
  }
  if (chosen.empty()) {
    cause = options.frame ? "there is no frame " + std::to_string(*options.frame) + ": the frames are " +
                                std::to_string(frames) + ", counted from 0"
                          : std::string("all its pictures are parts of others, which --all writes");
  }
  return chosen;
}

/// Each picture a file in a folder, or the only one a file.
class PictureWriter {
 public:
  PictureWriter(PictureFile& source, const std::string& output, bool isOnly)
      : m_source(source), m_path(platform::AbsolutePath(platform::PathFromNative(output))) {
    m_isFolder = !isOnly || output.ends_with('/') || XpPathIsDirectory(m_path);
  }

  std::string Prepare() const {
    const XpResult result = m_isFolder ? XpPathMake(m_path) : XpOk;
    return result == XpOk ? "" : WriteCause(result);
  }

  /// The cause of a failure; empty when the picture is written.
  std::string Write(const MpPictureSummary& picture) {
    if (picture.result != XpOk) return ProblemOf(picture);
    const XpString target = TargetOf(picture);
    if (platform::IsSameFile(target, m_source.Path())) return Utf8(target) + " is the file itself";
    const XpResult result = XpReplaceFile(target, [&](XpAbstractFile& file) {
      return imaging::CopyBytes(m_source.File(), picture.start, picture.size, file);
    });
    return result == XpOk ? "" : Utf8(target) + " cannot be written: " + WriteCause(result);
  }

 private:
  XpString TargetOf(const MpPictureSummary& picture) const {
    if (!m_isFolder) return m_path;
    const std::string number = picture.frame < 0 ? "-entry" + std::to_string(picture.entry.number)
                                                 : "-" + std::to_string(picture.frame);
    const XpString name = XpPathStem(m_source.Path()) + XpNarrowString((number + ".jpg").c_str()).ToWide();
    return XpPathJoin(m_path, name);
  }

  PictureFile& m_source;
  XpString m_path;
  bool m_isFolder;
};

int Extract(const MpoOptions& options) {
  const std::string& name = options.files.front();
  PictureFile file(name);
  std::vector<MpPictureSummary> pictures;
  std::string cause = ReadPictures(file, pictures);
  if (cause.empty()) pictures = Choose(pictures, options, cause);
  if (!cause.empty()) return Fail(name + ": " + cause);
  PictureWriter writer(file, options.output, pictures.size() == 1);
  cause = writer.Prepare();
  if (!cause.empty()) return Fail(options.output + ": " + cause);
  int status = kDone;
  for (const MpPictureSummary& picture : pictures) {
    const std::string where = name + ": " + NameOf(picture) + ": ";
    cause = writer.Write(picture);
    if (!cause.empty()) {
      status = Fail(where + cause);
    } else if (picture.IsCut()) {
      Say("warning: " + where + ProblemOf(picture));
    }
  }
  return status;
}

}  // namespace

CommandRun AddMpo(CLI::App& mpo) {
  const auto options = std::make_shared<MpoOptions>();
  mpo.require_subcommand(1);
  CLI::App* list = mpo.add_subcommand("list", "Print the pictures that the index of a file names");
  list->add_option("FILE", options->files, "Multi-picture files, also JPEG files with an index")->required();
  list->add_flag("--json", options->json, "Print one JSON document");
  CLI::App* extract =
      mpo.add_subcommand("extract", "Write pictures of a file as JPEG files, byte for byte as they are");
  extract->callback([options] { options->extracts = true; });
  extract->add_option("FILE", options->files, "The multi-picture file")->required()->expected(1);
  extract
      ->add_option("-o,--output", options->output,
                   "The JPEG file to write, or a folder: of several pictures each gets a file there")
      ->required();
  CLI::Option* frame = extract->add_option("--frame", options->frame, "This frame only, from 0")
                           ->check(CheckCount)
                           ->option_text("N");
  extract->add_flag("--all", options->all, "Also pictures that are parts of others, such as thumbnails")
      ->excludes(frame);
  mpo.footer(
      "Exit status: 0 done, 1 it cannot be read or written or a picture to be written is damaged, 2 wrong "
      "use.");
  return [options] { return options->extracts ? Extract(*options) : List(*options); };
}

}  // namespace vrx::host
