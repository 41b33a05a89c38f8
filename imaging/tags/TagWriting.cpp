#include "imaging/tags/TagWriting.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <new>
#include <vector>

#include "imaging/tags/TagLayout.h"
#include "imaging/tags/TagNames.h"

namespace vrx::imaging {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint64_t kMostOffset = std::numeric_limits<std::uint32_t>::max();
constexpr std::size_t kMostEntries = std::numeric_limits<std::uint16_t>::max();

XpTiffTagDataIFD* AsIfds(XpTiffTagDataBase& value) {
  return value.GetType() == XpTiffIfd ? static_cast<XpTiffTagDataIFD*>(&value) : nullptr;
}

/// Sorts a whole branch and fits its counts, so that sizes do not change while it is written. False when an
/// IFD has more entries than its count can say.
bool NormalizeAll(XpTiffTagIFD& ifd) {
  if (ifd.values.size() > kMostEntries) return false;
  ifd.Normalize();
  for (const auto& value : ifd.values) {
    const XpTiffTagDataIFD* below = AsIfds(*value);
    if (below == nullptr) continue;
    for (const auto& child : below->ifds) {
      if (!NormalizeAll(*child)) return false;
    }
  }
  return true;
}

std::uint64_t StoredSize(const XpTiffTagDataIFD& value) {
  std::uint64_t size = 0;
  for (const auto& ifd : value.ifds) size += ifd->GetStoredSize(true);
  return size;
}

/// Collects the bytes of a branch. All sizes were checked before, so that offsets fit 32 bits.
class BranchWriter {
 public:
  BranchWriter(Bytes& bytes, bool bigEndian) : m_bytes(bytes), m_bigEndian(bigEndian) {}

  void Add16(std::uint16_t value) { Put16(Grow(sizeof(value)), value, m_bigEndian); }
  void Add32(std::uint32_t value) { Put32(Grow(sizeof(value)), value, m_bigEndian); }

  void AddIfd(const XpTiffTagIFD& ifd, std::uint64_t position, std::uint32_t next) {
    const std::size_t start = m_bytes.size();
    const bool ownOffsets = ifd.isMakerNote && ifd.headerVersion >= kNoteOwnOffsets;
    const std::uint64_t origin = ownOffsets ? 0 : position;
    Places places{.data = origin + IfdHeadSize(ifd.values.size()),
                  .below = origin + ifd.GetStoredSize(false)};
    if (ifd.isMakerNote) {
      AddSignature(ifd);
      places.data += kNoteSignatureSize;
    }
    Bytes outOfLine;
    Add16(static_cast<std::uint16_t>(ifd.values.size()));
    for (const auto& value : ifd.values) AddEntry(*value, places, outOfLine);
    Add32(next);
    m_bytes.insert(m_bytes.end(), outOfLine.begin(), outOfLine.end());
    for (const auto& value : ifd.values) {
      const XpTiffTagDataIFD* below = AsIfds(*value);
      if (below == nullptr) continue;
      for (const auto& child : below->ifds) AddIfd(*child, position + (m_bytes.size() - start), 0);
    }
  }

 private:
  struct Places {
    std::uint64_t data;   // of the next bytes out of line
    std::uint64_t below;  // of the next IFD below
  };

  std::uint8_t* Grow(std::size_t size) {
    m_bytes.resize(m_bytes.size() + size);
    return m_bytes.data() + m_bytes.size() - size;
  }

  void AddSignature(const XpTiffTagIFD& ifd) {
    const std::string_view signature = ifd.isCamSignature ? kNoteCam : kNoteDsc;
    std::uint8_t* block = Grow(kNoteSignatureSize);
    std::memcpy(block, signature.data(), signature.size());
    block[kNoteVersionAt] = ifd.headerVersion;
  }

  void AddEntry(const XpTiffTagDataBase& value, Places& places, Bytes& outOfLine) {
    Add16(value.tag);
    if (value.GetType() != XpTiffIfd) {
      Add16(static_cast<std::uint16_t>(value.GetType()));
      Add32(value.count);
      return AddValue(value, places, outOfLine);
    }
    const auto& below = static_cast<const XpTiffTagDataIFD&>(value);
    // Other programs know the maker note as one block of bytes.
    const bool isNote = below.tag == kTagMakerNote;
    Add16(isNote ? XpTiffUndefined : XpTiffLong);
    Add32(isNote ? static_cast<std::uint32_t>(StoredSize(below)) : below.count);
    AddOffsets(below, places, outOfLine);
  }

  void AddOffsets(const XpTiffTagDataIFD& value, Places& places, Bytes& outOfLine) {
    if (value.ifds.size() < 2) {
      Add32(value.ifds.empty() ? 0 : static_cast<std::uint32_t>(places.below));
      places.below += StoredSize(value);
      return;
    }
    Add32(static_cast<std::uint32_t>(places.data));
    for (const auto& ifd : value.ifds) {
      BranchWriter(outOfLine, m_bigEndian).Add32(static_cast<std::uint32_t>(places.below));
      places.below += ifd->GetStoredSize(true);
      places.data += sizeof(std::uint32_t);
    }
  }

  void AddValue(const XpTiffTagDataBase& value, Places& places, Bytes& outOfLine) {
    const auto size = static_cast<std::size_t>(value.GetByteSize());
    const bool isInline = size <= kEntryValueSize;
    std::uint8_t* target = nullptr;
    if (isInline) {
      target = Grow(kEntryValueSize);
    } else {
      Add32(static_cast<std::uint32_t>(places.data));
      const std::size_t at = outOfLine.size();
      outOfLine.resize(at + RoundedToEven(size));
      target = outOfLine.data() + at;
      places.data += RoundedToEven(size);
    }
    if (size != 0) std::memcpy(target, value.GetData(), size);
    if (m_bigEndian) ReverseUnits({target, size}, value.GetSwapSize());
  }

  Bytes& m_bytes;
  bool m_bigEndian;
};

XpResult WriteAll(XpAbstractFile& stream, const Bytes& bytes, std::int64_t& written) {
  std::uint64_t done = 0;
  const XpResult result = stream.Write(bytes.data(), bytes.size(), &done);
  written = static_cast<std::int64_t>(done);
  return result == XpOk && done < bytes.size() ? XpErrDiskFull : result;
}

}  // namespace

XpResult WriteTagTree(XpAbstractFile& stream, XpTiffTagManager& manager, std::int64_t& written) {
  written = 0;
  if (manager.root == nullptr) return XpOk;
  const auto& chain = manager.root->ifds;
  try {
    std::uint64_t total = kTiffHeaderSize;
    for (const auto& ifd : chain) {
      if (!NormalizeAll(*ifd)) return XpErrValueDoesNotFit;
      total += ifd->GetStoredSize(true);
    }
    if (total > kMostOffset) return XpErrValueDoesNotFit;
    Bytes bytes;
    bytes.reserve(static_cast<std::size_t>(total));
    const std::uint8_t order = manager.bigEndian ? 'M' : 'I';
    bytes.assign({order, order});
    BranchWriter writer(bytes, manager.bigEndian);
    writer.Add16(kTiffMagic);
    writer.Add32(static_cast<std::uint32_t>(kTiffHeaderSize));
    for (const auto& ifd : chain) {
      const std::uint64_t position = bytes.size();
      const bool isLast = ifd == chain.back();
      writer.AddIfd(*ifd, position,
                    isLast ? 0 : static_cast<std::uint32_t>(position + ifd->GetStoredSize(true)));
    }
    return WriteAll(stream, bytes, written);
  } catch (const std::bad_alloc&) {
    return XpErrOutOfMemory;
  }
}

XpResult WriteIfd(XpAbstractFile& stream, XpTiffTagIFD& ifd, bool bigEndian, std::uint32_t position,
                  std::uint32_t next, std::int64_t& written) {
  written = 0;
  try {
    if (!NormalizeAll(ifd) || position + ifd.GetStoredSize(true) > kMostOffset) return XpErrValueDoesNotFit;
    Bytes bytes;
    BranchWriter(bytes, bigEndian).AddIfd(ifd, position, next);
    return WriteAll(stream, bytes, written);
  } catch (const std::bad_alloc&) {
    return XpErrOutOfMemory;
  }
}

}  // namespace vrx::imaging
