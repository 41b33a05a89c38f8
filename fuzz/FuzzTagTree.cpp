// Reads any bytes as a tag tree, in all modes and with both answers to damage; what was read must survive
// being stored and read again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "imaging/tags/ExifVersion.h"
#include "imaging/tags/TagNames.h"
#include "imaging/tags/TagReading.h"

namespace {

using namespace vrx::imaging;

void Require(bool holds) {
  if (!holds) std::abort();
}

const XpTiffTagDataIFD* AsIfds(const XpTiffTagDataBase& value) {
  return value.GetType() == XpTiffIfd ? static_cast<const XpTiffTagDataIFD*>(&value) : nullptr;
}

/// An empty maker note is not read back.
bool IsReadBack(const XpTiffTagDataBase& value) {
  const XpTiffTagDataIFD* below = AsIfds(value);
  return below == nullptr || value.tag != kTagMakerNote || !below->ifds.empty();
}

void RequireSame(const XpTiffTagIFD& stored, const XpTiffTagIFD& loaded) {
  Require(stored.isMakerNote == loaded.isMakerNote && stored.isCamSignature == loaded.isCamSignature);
  std::size_t at = 0;
  for (const auto& value : stored.values) {
    if (!IsReadBack(*value)) continue;
    const XpTiffTagDataBase* same = loaded.GetTagAt(at++);
    Require(same != nullptr && same->tag == value->tag && same->GetType() == value->GetType());
    const XpTiffTagDataIFD* below = AsIfds(*value);
    if (below == nullptr) {
      Require(same->count == value->count &&
              std::memcmp(same->GetData(), value->GetData(),
                          static_cast<std::size_t>(value->GetByteSize())) == 0);
      continue;
    }
    const auto& belowSame = static_cast<const XpTiffTagDataIFD&>(*same);
    Require(belowSame.ifds.size() == below->ifds.size());
    for (std::size_t i = 0; i < below->ifds.size(); ++i) RequireSame(*below->ifds[i], *belowSame.ifds[i]);
  }
  Require(at == loaded.GetTagCount());
}

/// Bytes of all values outside their entries, which the file bounds.
std::uint64_t ValueBytes(const XpTiffTagIFD& ifd) {
  std::uint64_t bytes = 0;
  for (const auto& value : ifd.values) {
    if (value->GetByteSize() > 4) bytes += value->GetByteSize();
    const XpTiffTagDataIFD* below = AsIfds(*value);
    if (below == nullptr) continue;
    for (const auto& child : below->ifds) bytes += ValueBytes(*child);
  }
  return bytes;
}

void RoundTrip(XpTiffTagManager& tree, const TagReadOptions& options) {
  RaiseExifVersion(tree);
  XpMemoryFile file;
  const std::int64_t written = tree.Store(file);
  Require(written == file.GetSize() && written >= 8);
  file.Seek(0, XpSeekStart);
  XpTiffTagManager again;
  Require(ReadTagTree(file, options, again) == tree.HasIfds());
  Require(again.GetIfdCount() == tree.GetIfdCount());
  for (std::size_t i = 0; i < tree.GetIfdCount(); ++i) RequireSame(*tree.GetIfd(i), *again.GetIfd(i));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  XpMemoryFile file;
  file.Attach(const_cast<std::uint8_t*>(data), static_cast<std::int64_t>(size), false);
  for (const OnBadTag onBadTag : {OnBadTag::EndIfd, OnBadTag::SkipTag}) {
    for (const std::int32_t mode : {XpTagModeKnownNotes, XpTagModeNoNotes, XpTagModeAllNotes}) {
      const TagReadOptions options{.mode = mode, .onBadTag = onBadTag};
      XpTiffTagManager tree;
      file.Seek(0, XpSeekStart);
      if (!ReadTagTree(file, options, tree)) return 0;
      std::uint64_t bytes = 0;
      for (std::size_t i = 0; i < tree.GetIfdCount(); ++i) bytes += ValueBytes(*tree.GetIfd(i));
      Require(bytes <= size);
      RoundTrip(*tree.Clone(), options);
    }
  }
  return 0;
}
