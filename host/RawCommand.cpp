#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include <CLI/CLI.hpp>

#include "foundation/file/XpFile.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/platform/Paths.h"
#include "host/Commands.h"
#include "host/Console.h"
#include "host/FileCauses.h"
#include "host/NewPosition.h"
#include "imaging/codecs/RawVersion.h"
#include "imaging/codecs/XpImageIoRAW.h"

namespace vrx::host {
namespace {

constexpr double kDeepest = -12'000, kHighest = 100'000;  // metres

enum class RawAction { Preview, Position };

struct RawOptions {
  RawAction action = RawAction::Preview;
  std::string file;
  std::string output;    // of Preview
  std::string at, time;  // of Position; the time may be empty
  std::optional<double> altitude;
};

XpString PathOf(const std::string& file) { return platform::AbsolutePath(platform::PathFromNative(file)); }

/// `noData` is what it means here that something is not in the file.
std::string RawCause(XpResult result, const std::string& noData) {
  const std::string words = [&]() -> std::string {
    switch (result) {
      case XpErrImageNoData:
        return noData;
      case XpErrImageInvalid:
        return "it is damaged, or no RAW file";
      case XpErrImageMismatch:
        return "a value of its position has another size or type than the new one";
      case XpErrImageUnusable:
        return "something else lies between the values of its position";
      default:
        return {};
    }
  }();
  return words.empty() ? ReadCause(result) : words + " (" + CodeText(result) + ")";
}

int CopyPreview(const RawOptions& options) {
  const XpString path = PathOf(options.file), output = PathOf(options.output);
  if (platform::IsSameFile(path, output)) {
    return Fail(options.output + " is " + options.file + " and would be overwritten");
  }
  XpFile file(path);
  if (const XpResult result = file.Open(XpOpenRead, XpShareRead)) {
    return Fail(options.file + ": " + ReadCause(result));
  }
  const XpResult result = XpImageIoRAW().SavePreview(file, output);
  switch (result) {
    case XpOk:
      return kDone;
    case XpErrEndOfFile:
    case XpErrImageNoData:
    case XpErrImageInvalid:
      return Fail(options.file + ": " + RawCause(result, "it has no preview"));
    default:
      return Fail(options.output + " cannot be written: " + WriteCause(result));
  }
}

/// The cause of a failure, or nothing.
std::string SetPosition(const RawOptions& options) {
  const XpString path = PathOf(options.file);
  XpImageIoRAW codec;
  const std::uint32_t version = codec.GetRawVersion(path);
  if (codec.status != XpOk) return RawCause(codec.status, "");
  if (version < imaging::kRawVersionWithGpsPlace) {
    return "files of its version, " + CodeText(version) + ", have no place for another position";
  }
  const XpSharedPtr<XpTiffTagManager> tags = codec.LoadTags(path);
  if (tags.Get() == nullptr) return RawCause(codec.status, "");
  const XpTiffTagIFD* gps = tags->GetGpsIfd();
  if (gps == nullptr) return "it has no position that could be replaced";
  NewPosition position = *ReadPosition(options.at);
  position.altitude = options.altitude;
  position.moment = ReadMoment(options.time);
  XpGPSRecord record = imaging::ReadGpsTags(*gps);
  const std::string missing = PutPosition(position, record);
  if (!missing.empty()) return "its position has no " + missing + ", which could be changed";
  if (codec.ReplaceGps(path, record) == XpOk) return {};
  return RawCause(codec.status, "its position has tags of an unknown kind");
}

int RunRaw(const RawOptions& options) {
  if (options.action == RawAction::Preview) return CopyPreview(options);
  const std::string cause = SetPosition(options);
  if (!cause.empty()) return Fail(options.file + ": " + cause);
  std::printf("%s: position replaced\n", Masked(options.file).c_str());
  return kDone;
}

std::string CheckAt(const std::string& text) {
  return ReadPosition(text) ? "" : text + " is no latitude and longitude in degrees such as 48.137,11.575";
}

std::string CheckTime(const std::string& text) {
  return ReadMoment(text) ? "" : text + " is no date and time in UTC such as 2024-05-01T10:11:12Z";
}

CLI::App* AddRawAction(CLI::App& raw, RawOptions& options, const char* name, const char* help,
                       RawAction action) {
  CLI::App* command = raw.add_subcommand(name, help);
  command->callback([&options, action] { options.action = action; });
  command->add_option("FILE", options.file, "The RAW file")->required();
  return command;
}

}  // namespace

CommandRun AddRaw(CLI::App& raw) {
  const auto options = std::make_shared<RawOptions>();
  raw.require_subcommand(1);
  CLI::App* preview = AddRawAction(raw, *options, "preview", "Copy the preview, a JPEG file, byte by byte",
                                   RawAction::Preview);
  preview->add_option("-o,--output", options->output, "The JPEG file to write")->required();
  CLI::App* position =
      AddRawAction(raw, *options, "position", "Put another position into the place that the file has for it",
                   RawAction::Position);
  position
      ->add_option("--at", options->at,
                   "Degrees north and east, such as 48.137,11.575; south and west are below 0")
      ->check(CheckAt)
      ->required()
      ->option_text("LAT,LON");
  position->add_option("--altitude", options->altitude, "Above sea level; stays if not given")
      ->check(CLI::Range(kDeepest, kHighest))
      ->option_text("METRES");
  position
      ->add_option("--time", options->time,
                   "When the position was taken, UTC as 2024-05-01T10:11:12Z; stays if not given")
      ->check(CheckTime)
      ->option_text("TIME");
  raw.footer("Exit status: 0 done, 1 it cannot be read or changed, 2 wrong use.");
  return [options] { return RunRaw(*options); };
}

}  // namespace vrx::host
