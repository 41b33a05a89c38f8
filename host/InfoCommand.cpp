#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "host/Commands.h"
#include "host/Console.h"
#include "host/PictureFile.h"
#include "imaging/codecs/JpegSummary.h"
#include "imaging/loader/StillImage.h"

namespace vrx::host {
namespace {

struct InfoOptions {
  std::vector<std::string> files;
  bool json = false;
};

Json SegmentsJson(const std::vector<imaging::JpegSegmentSummary>& segments) {
  Json array = Json::array();
  for (const imaging::JpegSegmentSummary& segment : segments) {
    array.push_back({{"marker", segment.marker}, {"name", segment.name}, {"bytes", segment.bytes}});
  }
  return array;
}

struct PictureFacts {
  std::string format;
  imaging::JpegSummary summary;
};

std::string ReadFacts(const std::string& file, PictureFacts& facts) {
  PictureFile picture(file);
  if (!picture.Cause().empty()) return picture.Cause();
  facts.format = picture.Format();
  if (picture.IsJpeg()) {
    const XpResult result = imaging::SummarizeJpeg(picture.File(), facts.summary);
    return result == XpOk ? "" : PictureCause(result);
  }
  XpImageSize size;
  XpString problem;
  const XpResult result = imaging::ReadStillImageSize(picture.Path(), {}, size.width, size.height, &problem);
  facts.summary.size = facts.summary.storedSize = size;
  return result == XpOk ? "" : Utf8(problem);
}

Json FactsJson(const std::string& file, const PictureFacts& facts) {
  const imaging::JpegSummary& summary = facts.summary;
  return {{"file", file},
          {"format", facts.format},
          {"width", summary.size.width},
          {"height", summary.size.height},
          {"storedWidth", summary.storedSize.width},
          {"storedHeight", summary.storedSize.height},
          {"orientation", summary.orientation == 0 ? Json() : Json(summary.orientation)},
          {"frames", summary.frames},
          {"profile", summary.hasProfile ? Json(summary.profile) : Json()},
          {"segments", SegmentsJson(summary.segments)}};
}

void PrintText(const std::string& file, const PictureFacts& facts) {
  const imaging::JpegSummary& summary = facts.summary;
  std::printf("%s\n  %s, %d by %d pixels", Masked(file).c_str(), facts.format.c_str(), summary.size.width,
              summary.size.height);
  if (summary.size != summary.storedSize) {
    std::printf(", stored as %d by %d", summary.storedSize.width, summary.storedSize.height);
  }
  if (summary.orientation != 0) std::printf(", orientation %d", summary.orientation);
  if (summary.frames > 1) std::printf(", %d pictures", summary.frames);
  std::printf("\n");
  if (summary.hasProfile) {
    std::printf("  profile: %s\n",
                summary.profile.empty() ? "without a name" : Masked(summary.profile).c_str());
  }
  for (const imaging::JpegSegmentSummary& segment : summary.segments) {
    std::printf("  %-5s  %-12s  %u bytes\n", segment.marker.c_str(), segment.name.c_str(), segment.bytes);
  }
}

int RunInfo(const InfoOptions& options) {
  Json documents = Json::array();
  const int status = ForEachPicture(options.files, [&](const std::string& file) {
    PictureFacts facts;
    std::string cause = ReadFacts(file, facts);
    if (!cause.empty()) return cause;
    if (options.json) {
      documents.push_back(FactsJson(file, facts));
    } else {
      PrintText(file, facts);
    }
    return cause;
  });
  if (options.json) PrintJson(documents, 2);
  return status;
}

}  // namespace

CommandRun AddInfo(CLI::App& command) {
  const auto options = std::make_shared<InfoOptions>();
  command.add_option("FILE", options->files, "The pictures: JPEG, PNG, TIFF, GIF or BMP")->required();
  command.add_flag("--json", options->json, "Print one JSON document");
  command.footer("Exit status: 0 done, 1 a file is no picture or cannot be read, 2 wrong use.");
  return [options] { return RunInfo(*options); };
}

}  // namespace vrx::host
