#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "host/Commands.h"
#include "host/PictureFile.h"
#include "host/TagListing.h"
#include "imaging/tags/TagReading.h"

namespace vrx::host {
namespace {

struct TagsOptions {
  std::vector<std::string> files;
  bool json = false;
};

/// The tags of a file, as many as can be saved. Null with the cause in words.
XpSharedPtr<XpTiffTagManager> ReadAllTags(PictureFile& picture, std::string& cause) {
  if (!picture.Format().hasTags) {
    cause = std::string("tags of ") + picture.Format().name + " files are not read";
    return {};
  }
  picture.Codec().onBadTag = imaging::OnBadTag::SkipTag;
  const XpSharedPtr<XpTiffTagManager> tags = picture.Codec().LoadTags(picture.Path());
  if (tags.Get() == nullptr) {
    cause = picture.Codec().status == XpErrImageNoData ? "it has no tags" : picture.CodecCause();
  }
  return tags;
}

Json LineJson(const TagLine& line) {
  return {{"ifd", line.ifd},   {"tag", line.tag},     {"name", line.name.empty() ? Json() : Json(line.name)},
          {"type", line.type}, {"count", line.count}, {"value", line.value}};
}

Json FileJson(const std::string& file, const XpTiffTagManager& tags) {
  Json lines = Json::array();
  Json maker = Json::array();
  for (const TagLine& line : ListTags(tags)) (line.ifd == "maker" ? maker : lines).push_back(LineJson(line));
  Json faults = Json::array();
  for (const imaging::TagFault& fault : tags.faults) {
    faults.push_back({{"ifd", fault.ifd}, {"tag", fault.tag}, {"fault", fault.words}});
  }
  Json json{{"file", file},
            {"byteOrder", tags.bigEndian ? "big-endian" : "little-endian"},
            {"tags", lines},
            {"faults", faults}};
  if (!maker.empty()) json["makerTags"] = maker;
  return json;
}

void PrintText(const std::string& file, const XpTiffTagManager& tags) {
  std::printf("%s  (%s)\n", Masked(file).c_str(), tags.bigEndian ? "big-endian" : "little-endian");
  for (const TagLine& line : ListTags(tags)) {
    const std::string value = ShortValue(line);
    std::printf("  %-7s  0x%04X  %-27s  %-9s  %5u  %s\n", line.ifd.c_str(), line.tag, line.name.c_str(),
                line.type.c_str(), line.count, value.c_str());
  }
  for (const imaging::TagFault& fault : tags.faults) {
    std::printf("  %-7s  0x%04X  fault: %s\n", fault.ifd.c_str(), fault.tag, fault.words.c_str());
  }
}

int RunTags(const TagsOptions& options) {
  Json documents = Json::array();
  const int status = ForEachPicture(options.files, [&](const std::string& file) {
    PictureFile picture(file);
    std::string cause = picture.Cause();
    if (!cause.empty()) return cause;
    const XpSharedPtr<XpTiffTagManager> tags = ReadAllTags(picture, cause);
    if (tags.Get() == nullptr) return cause;
    if (options.json) {
      documents.push_back(FileJson(file, *tags));
    } else {
      PrintText(file, *tags);
    }
    return cause;
  });
  if (options.json) PrintJson(documents, 2);
  return status;
}

}  // namespace

CommandRun AddTags(CLI::App& command) {
  const auto options = std::make_shared<TagsOptions>();
  command.add_option("FILE", options->files, "The pictures: JPEG, MPO, RAW or TIFF")->required();
  command.add_flag("--json", options->json, "Print one JSON document");
  command.footer("Exit status: 0 done, 1 the tags of a file cannot be read, 2 wrong use.");
  return [options] { return RunTags(*options); };
}

}  // namespace vrx::host
