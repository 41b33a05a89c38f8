#include "content/mp4/MovieInfo.h"

#include <limits>

namespace vrx::mp4 {
namespace {

constexpr std::size_t kMostBrands = 256;
constexpr FourCc kFileType = MakeFourCc("ftyp");
constexpr FourCc kMovie = MakeFourCc("moov");
constexpr FourCc kMediaData = MakeFourCc("mdat");

bool ReadBrands(BoxFile& file, const Box& box, FileType& type) {
  BoxPayload payload(file, box);
  type = {};
  type.majorBrand = payload.ReadUInt32();
  type.minorVersion = payload.ReadUInt32();
  if (payload.HasFailed()) return false;
  while (payload.GetLeft() >= sizeof(FourCc) && type.compatibleBrands.size() < kMostBrands) {
    type.compatibleBrands.push_back(payload.ReadUInt32());
  }
  return true;
}

/// A number that has 64 bits in version 1 of a box and else 32; all ones mean that it is not known.
std::optional<std::uint64_t> ReadByVersion(BoxPayload& payload, std::uint8_t version) {
  const std::uint64_t value = version == 1 ? payload.ReadUInt64() : payload.ReadUInt32();
  const std::uint64_t unknown =
      version == 1 ? std::numeric_limits<std::uint64_t>::max() : std::numeric_limits<std::uint32_t>::max();
  return payload.HasFailed() || value == unknown ? std::nullopt : std::optional(value);
}

void ReadMovieHeader(BoxFile& file, const Box& header, MovieInfo& info) {
  BoxPayload payload(file, header);
  const std::uint8_t version = payload.ReadFullBoxHead().version;
  if (version > 1) return;
  info.creationTime = ReadByVersion(payload, version).value_or(0);
  ReadByVersion(payload, version);  // modification
  const std::uint32_t timescale = payload.ReadUInt32();
  const auto ticks = ReadByVersion(payload, version);
  if (timescale != 0 && ticks) info.duration = MovieDuration{*ticks, timescale};
}

/// The length of a movie in fragments; none when the file leaves it open.
std::optional<std::uint64_t> ReadFragmentsLength(BoxFile& file, const Box& extends) {
  Box header;
  if (!file.Children(extends).Next(MakeFourCc("mehd"), header)) return std::nullopt;
  BoxPayload payload(file, header);
  const std::uint8_t version = payload.ReadFullBoxHead().version;
  return version > 1 ? std::nullopt : ReadByVersion(payload, version);
}

void ReadMovie(BoxFile& file, const Box& movie, MovieInfo& info) {
  MetadataItems items;
  bool hasFragments = false;
  std::optional<std::uint64_t> ticksOfFragments;
  BoxList children = file.Children(movie);
  for (Box child; children.Next(child);) {
    switch (child.type) {
      case MakeFourCc("mvhd"):
        ReadMovieHeader(file, child, info);
        break;
      case MakeFourCc("mvex"):
        hasFragments = true;
        ticksOfFragments = ReadFragmentsLength(file, child);
        break;
      case MakeFourCc("udta"):
        ReadUserData(file, child, items);
        break;
      case MakeFourCc("meta"):
        ReadMetadata(file, child, items);
        break;
      default:
        break;
    }
  }
  // The header of a movie in fragments only counts what lies before them.
  if (hasFragments && info.duration && info.duration->ticks == 0) {
    if (ticksOfFragments) {
      info.duration->ticks = *ticksOfFragments;
    } else {
      info.duration.reset();
    }
  }
  info.recording = DecideRecordingDate(items, info.creationTime);
}

}  // namespace

XpResult ReadFileType(XpAbstractFile& file, FileType& type, const BoxLimits& limits) {
  BoxFile boxes(file, limits);
  BoxList list = boxes.Boxes();
  for (Box box; list.Next(box) && box.type != kMovie && box.type != kMediaData;) {
    if (box.type == kFileType) return ReadBrands(boxes, box, type) ? XpOk : boxes.GetResult();
  }
  return boxes.GetResult() == XpOk ? XpErrInvalidFile : boxes.GetResult();
}

XpResult ReadMovieInfo(XpAbstractFile& file, MovieInfo& info, const BoxLimits& limits) {
  info = {};
  BoxFile boxes(file, limits);
  BoxList list = boxes.Boxes();
  for (Box box; list.Next(box);) {
    if (box.type == kFileType && !info.fileType) {
      FileType type;
      if (ReadBrands(boxes, box, type)) info.fileType = std::move(type);
    } else if (box.type == kMovie) {
      ReadMovie(boxes, box, info);
      return boxes.GetResult();
    }
  }
  return boxes.GetResult() == XpOk ? XpErrInvalidFile : boxes.GetResult();
}

}  // namespace vrx::mp4
