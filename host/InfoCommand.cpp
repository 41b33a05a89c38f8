#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "host/Commands.h"
#include "host/Console.h"
#include "host/PictureFile.h"
#include "imaging/codecs/PictureSummary.h"

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
  imaging::PictureSummary summary;
};

std::string ReadFacts(const std::string& file, PictureFacts& facts) {
  PictureFile picture(file);
  if (!picture.Cause().empty()) return picture.Cause();
  facts.format = picture.Format().name;
  const XpResult result = picture.Format().summarize(picture.File(), picture.Codec(), facts.summary);
  if (result == XpOk) return {};
  const std::string words = Utf8(picture.Codec().problem);
  return words.empty() ? PictureCause(result) : words;
}

Json SizeJson(XpImageSize size) { return {{"width", size.width}, {"height", size.height}}; }

Json FactsJson(const std::string& file, const PictureFacts& facts) {
  const imaging::PictureSummary& summary = facts.summary;
  return {{"file", file},
          {"format", facts.format},
          {"width", summary.size.width},
          {"height", summary.size.height},
          {"storedWidth", summary.storedSize.width},
          {"storedHeight", summary.storedSize.height},
          {"orientation", summary.orientation == 0 ? Json() : Json(summary.orientation)},
          {"frames", summary.frames},
          {"animated", summary.isAnimation},
          {"preview", summary.preview ? SizeJson(*summary.preview) : Json()},
          {"profile", summary.hasProfile ? Json(summary.profile) : Json()},
          {"segments", SegmentsJson(summary.segments)}};
}

void PrintText(const std::string& file, const PictureFacts& facts) {
  const imaging::PictureSummary& summary = facts.summary;
  std::printf("%s\n  %s, %d by %d pixels", Masked(file).c_str(), facts.format.c_str(), summary.size.width,
              summary.size.height);
  if (summary.size != summary.storedSize) {
    std::printf(", stored as %d by %d", summary.storedSize.width, summary.storedSize.height);
  }
  if (summary.orientation != 0) std::printf(", orientation %d", summary.orientation);
  if (summary.frames > 1) std::printf(", %d pictures", summary.frames);
  if (summary.isAnimation) std::printf(", an animation");
  if (summary.preview) {
    std::printf(", preview %d by %d", summary.preview->width, summary.preview->height);
  }
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
  command.add_option("FILE", options->files, "The pictures: JPEG, MPO, RAW, TIFF, PNG, GIF or BMP")
      ->required();
  command.add_flag("--json", options->json, "Print one JSON document");
  command.footer("Exit status: 0 done, 1 a file is no picture or cannot be read, 2 wrong use.");
  return [options] { return RunInfo(*options); };
}

}  // namespace vrx::host
