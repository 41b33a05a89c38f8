#include "imaging/tags/TagReading.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "imaging/tags/StreamWindow.h"
#include "imaging/tags/TagLayout.h"
#include "imaging/tags/TagNames.h"

namespace vrx::imaging {
namespace {

// A preview that is part of an Exif block of a JPEG file is not larger. Others are only noted.
constexpr std::uint64_t kMostPreviewValue = 65536;

struct Entry {
  std::uint16_t tag;
  std::uint32_t type;
  std::uint32_t count;
  const std::uint8_t* field;  // the four bytes of the value field
};

enum class Reading {
  Done,    // kept, or left out by a rule
  Broken,  // left out as damaged
};

/// What the maker note of an IFD began with.
struct NoteKind {
  bool hasSignature = false;
  bool isCam = false;
};

/// One IFD while it is read.
struct IfdReading {
  XpTiffTagIFD& ifd;
  std::int64_t position;
  std::uint32_t depth;
  std::string name;  // for faults
  NoteKind note = {};
  std::unordered_map<std::uint16_t, std::size_t> places = {};  // of the tags read so far
};

bool IsSubIfdTag(std::uint16_t tag) {
  return tag == kTagSubIfds || tag == kTagExifIfd || tag == kTagGpsIfd || tag == kTagInteropIfd ||
         tag == kTagMakerSubIfd || tag == kTagMakerNote;
}

std::string NameBelow(std::uint16_t tag) {
  switch (tag) {
    case kTagExifIfd:
      return "exif";
    case kTagGpsIfd:
      return "gps";
    case kTagInteropIfd:
      return "interop";
    case kTagMakerNote:
      return "maker";
    default:
      return "sub";
  }
}

template <class T>
std::unique_ptr<XpTiffTagDataBase> Make(const Entry& entry) {
  return std::make_unique<XpTiffTagData<T>>(entry.tag, entry.count);
}

std::unique_ptr<XpTiffTagDataBase> MakeValue(const Entry& entry, bool leadsToIfds) {
  switch (entry.type) {
    case XpTiffByte:
      return Make<XpTiffTagTypeByte>(entry);
    case XpTiffAscii:
      return Make<XpTiffTagTypeAscii>(entry);
    case XpTiffShort:
      return Make<XpTiffTagTypeShort>(entry);
    case XpTiffLong:
    case kStoredIfdType:
      if (leadsToIfds) return std::make_unique<XpTiffTagDataIFD>(entry.tag, entry.count);
      return Make<XpTiffTagTypeLong>(entry);
    case XpTiffRational:
      return Make<XpTiffTagTypeRational>(entry);
    case XpTiffSByte:
      return Make<XpTiffTagTypeSByte>(entry);
    case XpTiffSShort:
      return Make<XpTiffTagTypeSShort>(entry);
    case XpTiffSLong:
      return Make<XpTiffTagTypeSLong>(entry);
    case XpTiffSRational:
      return Make<XpTiffTagTypeSRational>(entry);
    case XpTiffFloat:
      return Make<XpTiffTagTypeFloat>(entry);
    case XpTiffDouble:
      return Make<XpTiffTagTypeDouble>(entry);
    default:
      return Make<XpTiffTagTypeUndefined>(entry);
  }
}

bool IsOffsetTimeTag(std::uint16_t tag) {
  return tag == kTagOffsetTime || tag == kTagOffsetTimeOriginal || tag == kTagOffsetTimeDigitized;
}

/// "+09:00".
bool IsOffsetTime(const XpTiffTagDataBase& value) {
  const XpNarrowString text = value.ToString(0);
  const std::string_view t = text.AsView();
  const auto isDigit = [&](std::size_t at) { return t[at] >= '0' && t[at] <= '9'; };
  return t.size() == 6 && (t[0] == '+' || t[0] == '-') && isDigit(1) && isDigit(2) && t[3] == ':' &&
         isDigit(4) && isDigit(5);
}

class TreeReader {
 public:
  TreeReader(StreamWindow& window, std::int64_t base, const TagReadOptions& options,
             XpTiffTagManager& manager)
      : m_window(window), m_base(base), m_options(options), m_manager(manager) {
    m_bytesLeft = std::min(options.limits.bytes, static_cast<std::uint64_t>(window.GetSize() - base));
    m_entriesLeft = options.limits.entries;
    m_ifdsLeft = options.limits.ifds;
  }

  void ReadChain(std::int64_t position) {
    for (std::size_t i = 0; position != 0; ++i) {
      const std::string name = std::to_string(i);
      if (!MayRead(position, name, 0)) return;
      m_manager.root->ifds.push_back(std::make_unique<XpTiffTagIFD>());
      IfdReading reading{*m_manager.root->ifds.back(), position, 1, name};
      if (!ReadIfd(reading, position)) return;
    }
  }

 private:
  bool SkipsTags() const { return m_options.onBadTag == OnBadTag::SkipTag; }

  /// Something that is as it should not be, but costs nothing.
  void Fault(const std::string& ifd, std::uint16_t tag, std::string words) {
    m_manager.faults.push_back({ifd, tag, std::move(words)});
  }
  void Loss(const std::string& ifd, std::uint16_t tag, std::string words) {
    m_manager.faults.push_back({ifd, tag, std::move(words), true});
  }

  /// Whether the IFD at `position`, which `name` and `tag` say how to find, is to be read.
  bool MayRead(std::int64_t position, const std::string& name, std::uint16_t tag) {
    if (m_ifdsLeft == 0) {
      if (!std::exchange(m_toldIfds, true)) Loss(name, tag, "there are too many IFDs; the rest is left out");
      return false;
    }
    --m_ifdsLeft;
    if (position < m_base + kTiffHeaderSize) {
      Loss(name, tag, "the offset of an IFD leads into the header");
      return false;
    }
    if (!m_seen.insert(position).second) {
      Fault(name, tag, "an IFD that was read before is not read again");
      return false;
    }
    return true;
  }

  /// Gives in `next` the position of the IFD that follows, 0 for none.
  bool ReadIfd(IfdReading& reading, std::int64_t& next) {
    next = 0;
    std::array<std::uint8_t, kIfdCountSize> head;
    if (!m_window.Read(reading.position, head)) {
      Loss(reading.name, 0, "the IFD lies outside the file");
      return false;
    }
    const std::uint32_t entries = Get16(head.data(), m_manager.bigEndian);
    if (!ReadEntries(reading, entries) && !SkipsTags()) return false;
    next = ReadNext(reading, entries);
    // By index: values do not move, but what is read below must not depend on that.
    for (std::size_t i = 0; i < reading.ifd.values.size(); ++i) {
      XpTiffTagDataBase& value = *reading.ifd.values[i];
      if (value.GetType() == XpTiffIfd) ReadBelow(reading, static_cast<XpTiffTagDataIFD&>(value));
    }
    return true;
  }

  /// True when no entry was broken, missing or beyond the limit.
  bool ReadEntries(IfdReading& reading, std::uint32_t entries) {
    const std::int64_t first = reading.position + kIfdCountSize;
    const auto whole = static_cast<std::uint64_t>(m_window.GetSize() - first) / kEntrySize;
    const auto count = static_cast<std::uint32_t>(std::min({std::uint64_t{entries}, whole, m_entriesLeft}));
    m_entriesLeft -= count;
    std::vector<std::uint8_t> block(std::size_t{count} * kEntrySize);
    if (!m_window.Read(first, block)) {
      Loss(reading.name, 0, "the IFD cannot be read");
      return false;
    }
    reading.ifd.values.reserve(count);
    bool isWhole = true;
    for (std::uint32_t i = 0; i < count; ++i) {
      const std::uint8_t* bytes = block.data() + std::size_t{i} * kEntrySize;
      const bool big = m_manager.bigEndian;
      const Entry entry{Get16(bytes, big), Get16(bytes + 2, big), Get32(bytes + kEntryCountAt, big),
                        bytes + kEntryValueAt};
      if (ReadEntry(reading, entry) == Reading::Done) continue;
      isWhole = false;
      if (!SkipsTags()) return false;
    }
    if (count == entries) return isWhole;
    Loss(reading.name, 0,
         count == whole ? "the file ends within the IFD" : "there are too many tags; the rest is left out");
    return false;
  }

  Reading Broken(const IfdReading& reading, const Entry& entry, std::string words) {
    Loss(reading.name, entry.tag, std::move(words));
    return Reading::Broken;
  }

  Reading ReadEntry(IfdReading& reading, Entry entry) {
    if (StoredTypeSize(entry.type) == 0) {
      return Broken(reading, entry, "the type " + std::to_string(entry.type) + " is unknown");
    }
    if (reading.ifd.isMakerNote && entry.tag == kTagMakerPreview) NotePreview(entry);
    if (!m_window.Holds(m_base, SizeOf(entry))) {
      return Broken(reading, entry, "the value is longer than the file");
    }
    bool leadsToIfds = IsSubIfdTag(entry.tag);
    if (entry.tag == kTagMakerNote) {
      if (entry.count == 0) {
        Fault(reading.name, entry.tag, "the maker note is empty");
        return Reading::Done;
      }
      leadsToIfds = ReadNoteKind(entry, reading.note);
      if (leadsToIfds) {
        entry.type = XpTiffLong;
        entry.count = 1;
      }
    }
    return ReadValue(reading, entry, leadsToIfds);
  }

  static std::uint64_t SizeOf(const Entry& entry) {
    return std::uint64_t{entry.count} * StoredTypeSize(entry.type);
  }

  std::int64_t TargetOf(const Entry& entry) const {
    return m_base + std::int64_t{Get32(entry.field, m_manager.bigEndian)};
  }

  /// The place of a preview is kept. Its bytes only become a value when it is a small part of this block;
  /// otherwise the tag stays without any.
  void NotePreview(Entry& entry) {
    m_manager.previewOffset = Get32(entry.field, m_manager.bigEndian);
    m_manager.previewSize = entry.count;
    const std::uint64_t size = SizeOf(entry);
    if (size > kMostPreviewValue || (size > kEntryValueSize && !m_window.Holds(TargetOf(entry), size))) {
      entry.count = 0;
    }
  }

  /// Whether the maker note is to be read as an IFD.
  bool ReadNoteKind(const Entry& entry, NoteKind& kind) {
    kind = {};
    if (m_options.mode == XpTagModeNoNotes) return false;
    std::array<std::uint8_t, kNoteSignatureSize> block;
    if (m_window.Read(TargetOf(entry), block)) {
      for (const std::string_view signature : {kNoteDsc, kNoteCam, kNotePic}) {
        std::array<std::uint8_t, kNoteSignatureSize> known{};
        std::copy(signature.begin(), signature.end(), known.begin());
        if (block != known) continue;
        kind = {.hasSignature = true, .isCam = signature == kNoteCam};
      }
    }
    return kind.hasSignature || m_options.mode == XpTagModeAllNotes;
  }

  Reading ReadValue(IfdReading& reading, const Entry& entry, bool leadsToIfds) {
    const std::uint64_t size = SizeOf(entry);
    const bool isInline = size <= kEntryValueSize;
    if (!isInline) {
      const std::int64_t target = TargetOf(entry);
      if (target < m_base + kTiffHeaderSize) {
        return Broken(reading, entry, "the offset of the value leads into the header");
      }
      if (!m_window.Holds(target, size)) return Broken(reading, entry, "the value lies outside the file");
      if (size > m_bytesLeft) return Broken(reading, entry, "the values are too large together");
      m_bytesLeft -= size;
    }
    std::unique_ptr<XpTiffTagDataBase> value = MakeValue(entry, leadsToIfds);
    const std::span bytes(static_cast<std::uint8_t*>(value->GetData()), static_cast<std::size_t>(size));
    if (isInline) {
      std::copy_n(entry.field, bytes.size(), bytes.begin());
    } else if (!m_window.Read(TargetOf(entry), bytes)) {
      return Broken(reading, entry, "the value cannot be read");
    }
    if (m_manager.bigEndian) ReverseUnits(bytes, value->GetSwapSize());
    if (IsOffsetTimeTag(entry.tag) && !IsOffsetTime(*value)) {
      Fault(reading.name, entry.tag, "the offset from UTC does not have the form +09:00");
      return Reading::Done;
    }
    Keep(reading, std::move(value));
    return Reading::Done;
  }

  /// As AddTag, without its search, which would take too long for an IFD of many thousand tags.
  void Keep(IfdReading& reading, std::unique_ptr<XpTiffTagDataBase> value) {
    auto& values = reading.ifd.values;
    const auto [place, isNew] = reading.places.try_emplace(value->tag, values.size());
    if (isNew) {
      values.push_back(std::move(value));
      return;
    }
    Fault(reading.name, value->tag, "the tag is there more than once; the last one counts");
    values[place->second] = std::move(value);
  }

  std::int64_t ReadNext(const IfdReading& reading, std::uint32_t entries) {
    std::array<std::uint8_t, kIfdNextSize> field;
    const std::int64_t at = reading.position + kIfdCountSize + std::int64_t{entries} * kEntrySize;
    if (!m_window.Read(at, field)) return 0;
    const std::uint32_t offset = Get32(field.data(), m_manager.bigEndian);
    if (offset == 0) return 0;
    if (m_base + offset == reading.position) {
      Fault(reading.name, 0, "the IFD names itself as the next one");
      return 0;
    }
    return m_base + offset;
  }

  void ReadBelow(const IfdReading& above, XpTiffTagDataIFD& value) {
    const bool isNote = value.tag == kTagMakerNote;
    for (std::uint32_t i = 0; i < value.count; ++i) {
      if (value.elements[i] == 0) continue;
      std::int64_t position = m_base + std::int64_t{value.elements[i]};
      if (position == above.position) {
        Fault(above.name, value.tag, "the tag leads back to its own IFD");
        return;
      }
      if (above.depth >= m_options.limits.depth) {
        Loss(above.name, value.tag, "IFDs lie too deep below one another");
        return;
      }
      if (isNote && above.note.hasSignature) position += kNoteSignatureSize;
      if (!MayRead(position, above.name, value.tag)) {
        if (m_ifdsLeft == 0) return;
        continue;
      }
      auto ifd = std::make_unique<XpTiffTagIFD>();
      ifd->isMakerNote = isNote;
      ifd->isCamSignature = isNote && above.note.isCam;
      IfdReading reading{*ifd, position, above.depth + 1, NameBelow(value.tag)};
      std::int64_t ignoredNext = 0;
      const bool isWhole = ReadIfd(reading, ignoredNext);
      if (isWhole || (isNote && m_options.mode != XpTagModeAllNotes)) {
        value.ifds.push_back(std::move(ifd));
      } else {
        Loss(above.name, value.tag, "the IFD that the tag leads to is damaged and left out");
      }
    }
  }

  StreamWindow& m_window;
  std::int64_t m_base;
  const TagReadOptions& m_options;
  XpTiffTagManager& m_manager;
  std::uint64_t m_bytesLeft = 0;
  std::uint64_t m_entriesLeft = 0;
  std::uint32_t m_ifdsLeft = 0;
  bool m_toldIfds = false;
  std::unordered_set<std::int64_t> m_seen;
};

}  // namespace

bool ReadTiffHeader(StreamWindow& window, std::int64_t base, TiffHeader& header) {
  std::array<std::uint8_t, kTiffHeaderSize> bytes;
  if (!window.Read(base, bytes)) return false;
  if (bytes[0] != bytes[1] || (bytes[0] != 'I' && bytes[0] != 'M')) return false;
  header.bigEndian = bytes[0] == 'M';
  if (Get16(bytes.data() + 2, header.bigEndian) != kTiffMagic) return false;
  header.ifd = base + std::int64_t{Get32(bytes.data() + 4, header.bigEndian)};
  return header.ifd < window.GetSize();
}

bool ReadTagTree(XpAbstractFile& stream, const TagReadOptions& options, XpTiffTagManager& manager) {
  manager.Clear();
  manager.previewOffset = manager.previewSize = 0;
  manager.bigEndian = false;
  const std::int64_t base = stream.Tell();
  StreamWindow window(stream);
  TiffHeader header;
  if (!ReadTiffHeader(window, base, header)) return false;
  manager.Create();
  manager.bigEndian = header.bigEndian;
  TreeReader(window, base, options, manager).ReadChain(header.ifd);
  return true;
}

}  // namespace vrx::imaging
