#include "imaging/codecs/XpImageIoMPO.h"

#include <set>

#include "imaging/codecs/MpIndex.h"
#include "imaging/codecs/XpImageIoJpeg.h"
#include "imaging/jpeg/JpegSegments.h"
#include "imaging/tags/TagEdits.h"

using namespace vrx::imaging;

namespace {

using Picture = XpImageIo::Picture;

}  // namespace

XpResult XpImageIoMPO::SeekToTiffHeader(XpAbstractFile& stream, std::int64_t offset) {
  std::int64_t header = 0;
  const XpResult result = FindMpHeader(stream, offset, header);
  return Fail(result == XpOk ? stream.Seek(header, XpSeekStart) : result);
}

XpSharedPtr<XpTiffTagManager> XpImageIoMPO::ReadIndexTags(XpAbstractFile& stream, std::int64_t offset) {
  return XpImageIo::ReadTags(stream, offset);
}

XpResult XpImageIoMPO::SeekToEntry(XpAbstractFile& stream, std::int64_t offset, const XpTiffTagManager* index,
                                   const std::function<const MpEntry*(const MpTable&)>& choose) {
  XpSharedPtr<XpTiffTagManager> own;
  if (index == nullptr) {
    own = ReadIndexTags(stream, offset);
    if (own.Get() == nullptr) return status;
    index = own.Get();
  }
  const MpTable table = ReadUsableMpTable(index);
  const MpEntry* entry = choose(table);
  if (entry == nullptr) return Fail(XpErrImageUnusable);
  std::int64_t header = 0, start = 0;
  if (entry->offset != 0 && Fail(FindMpHeader(stream, offset, header)) != XpOk) return status;
  if (Fail(FindMpPicture(stream, offset, header, *entry, start)) != XpOk) return status;
  return Fail(stream.Seek(start, XpSeekStart));
}

XpResult XpImageIoMPO::SeekToFrame(XpAbstractFile& stream, std::int64_t offset, std::int64_t frame,
                                   const XpTiffTagManager* index) {
  if (frame < 0) return Fail(XpErrImageArgument);
  return SeekToEntry(stream, offset, index, [frame](const MpTable& table) { return table.Frame(frame); });
}

XpResult XpImageIoMPO::SeekToRepresentative(XpAbstractFile& stream, std::int64_t offset,
                                            const XpTiffTagManager* index) {
  return SeekToEntry(stream, offset, index, [](const MpTable& table) { return table.Representative(); });
}

std::int64_t XpImageIoMPO::GetFrameCount(XpAbstractFile& stream, std::int64_t offset) {
  return ReadUsableMpTable(ReadIndexTags(stream, offset).Get()).CountFrames();
}

template <class Reading>
auto XpImageIoMPO::ReadByJpeg(const Reading& read) {
  XpImageIoJpeg jpeg;
  jpeg.onBadTag = onBadTag;
  auto found = read(jpeg);
  Fail(jpeg.status);
  return found;
}

XpResult XpImageIoMPO::SeekToShown(XpAbstractFile& stream, std::int64_t offset) {
  const XpSharedPtr<XpTiffTagManager> index = ReadIndexTags(stream, offset);
  if (index.Get() == nullptr) return status;
  if (SeekToRepresentative(stream, offset, index.Get()) == XpOk) return status;
  return SeekToFrame(stream, offset, 0, index.Get());
}

Picture XpImageIoMPO::Read(XpAbstractFile& stream, std::int64_t offset, std::int32_t scale,
                           const XpImageReading& reading) {
  if (SeekToShown(stream, offset) != XpOk) return nullptr;
  return ReadByJpeg([&](XpImageIoJpeg& jpeg) { return jpeg.Read(stream, stream.Tell(), scale, reading); });
}

Picture XpImageIoMPO::ReadThumbnail(XpAbstractFile& stream, std::int64_t offset,
                                    const XpImageReading& reading) {
  if (SeekToShown(stream, offset) != XpOk) return nullptr;
  return ReadByJpeg([&](XpImageIoJpeg& jpeg) { return jpeg.ReadThumbnail(stream, stream.Tell(), reading); });
}

Picture XpImageIoMPO::ReadThumbnailOfFrame(XpAbstractFile& stream, std::int64_t offset, std::int64_t frame,
                                           const XpImageReading& reading) {
  if (SeekToFrame(stream, offset, frame, nullptr) != XpOk) return nullptr;
  return ReadByJpeg([&](XpImageIoJpeg& jpeg) { return jpeg.ReadThumbnail(stream, stream.Tell(), reading); });
}

XpResult XpImageIoMPO::ReadImageSize(XpAbstractFile& stream, std::int64_t offset, XpImageSize& size,
                                     bool forceStereo) {
  return Fail(XpImageIoJpeg().ReadDimensions(stream, offset, size, false, forceStereo));
}

XpSharedPtr<XpTiffTagManager> XpImageIoMPO::ReadTags(XpAbstractFile& stream, std::int64_t offset) {
  return ReadByJpeg([&](XpImageIoJpeg& jpeg) { return jpeg.ReadTags(stream, offset); });
}

XpResult XpImageIoMPO::EditFrames(XpAbstractFile& stream, std::int64_t offset, LostFrame lost,
                                  const FrameEdit& edit) {
  const XpSharedPtr<XpTiffTagManager> index = ReadIndexTags(stream, offset);
  const MpTable table = ReadUsableMpTable(index.Get());
  if (table.CountFrames() == 0) return Fail(XpErrImageUnusable);
  std::int64_t header = 0;
  if (Fail(FindMpHeader(stream, offset, header)) != XpOk) return status;
  const MpEntry* first = table.Frame(0);
  std::set<std::int64_t> starts;
  MpHeadBudget heads(stream);
  for (const MpEntry& entry : table.entries) {
    if (entry.IsChild()) continue;
    std::int64_t start = 0;
    if (const XpResult result = FindMpPicture(stream, offset, header, entry, start)) {
      if (&entry == first || lost == LostFrame::EndsTheEdit) return Fail(result);
      continue;
    }
    // A turn must not be made twice in a picture that two entries lead to.
    if (!starts.insert(start).second) continue;
    if (!heads.Spend(start)) return Fail(XpErrImageInvalid);
    if (Fail(SeekToExif(stream, start)) != XpOk) return status;
    if (Fail(edit(stream.Tell())) != XpOk) return status;
  }
  return Fail(XpOk);
}

XpResult XpImageIoMPO::WriteRotation(XpAbstractFile& stream, std::int64_t offset,
                                     std::uint32_t quarterTurns) {
  return EditFrames(stream, offset, LostFrame::IsPassedOver, [&](std::int64_t base) {
    return TouchDates(stream, PatchOrientation(stream, base, quarterTurns), base);
  });
}

XpResult XpImageIoMPO::WriteModifyDate(XpAbstractFile& stream, std::int64_t offset, const XpDateTime& date,
                                       bool setFileTime) {
  return EditFrames(stream, offset, LostFrame::IsPassedOver,
                    [&](std::int64_t base) { return PatchDateTime(stream, base, date, setFileTime); });
}

XpResult XpImageIoMPO::WriteOriginalDate(XpAbstractFile& stream, std::int64_t offset,
                                         const XpDateTime& date) {
  return EditFrames(stream, offset, LostFrame::IsPassedOver, [&](std::int64_t base) {
    return TouchDates(stream, PatchOriginalDate(stream, base, date), base);
  });
}

XpResult XpImageIoMPO::WriteStrippedGps(XpAbstractFile& stream, std::int64_t offset) {
  // A position that stays in a frame must not go unnoticed.
  return EditFrames(stream, offset, LostFrame::EndsTheEdit, [&](std::int64_t base) {
    return TouchDates(stream, RemoveGpsPointer(stream, base), base);
  });
}

XpResult XpImageIoMPO::SetRating(XpString path, std::uint32_t rating) {
  return EditFile(path, [&](XpAbstractFile& file) {
    return EditFrames(file, 0, LostFrame::IsPassedOver, [&](std::int64_t base) {
      return TouchDates(file, PatchRating(file, base, rating, RequiresNoteSignature()), base);
    });
  });
}
