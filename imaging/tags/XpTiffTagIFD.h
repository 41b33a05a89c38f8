// One IFD of a tag tree, and the value that leads to IFDs below it. Readers fill them, writers and the users
// of pictures look tags up in them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "imaging/tags/XpTiffTagData.h"

class XpTiffTagIFD;

/// The elements are the offsets as they were stored. One with tag 0 and no offsets is the root of a tree, and
/// `ifds` its chain IFD 0, IFD 1 and so on.
class XpTiffTagDataIFD : public XpTiffTagData<XpTiffTagTypeLong> {
 public:
  XpTiffTagDataIFD(std::uint16_t tagNumber, std::uint32_t elementCount);
  XpTiffTagDataIFD(const XpTiffTagDataIFD& other);
  ~XpTiffTagDataIFD() override;

  std::uint32_t GetType() const override { return XpTiffIfd; }
  std::unique_ptr<XpTiffTagDataBase> Clone() const override;

  /// Makes `count` the number of IFDs, with a new array of zeros.
  void FitCount();

  std::vector<std::unique_ptr<XpTiffTagIFD>> ifds;  // none is null
};

/// `recursive` also searches the IFDs below, in order, except those of the maker note and of its sub-IFD tag.
class XpTiffTagIFD {
 public:
  XpTiffTagIFD();
  XpTiffTagIFD(const XpTiffTagIFD&) = delete;
  XpTiffTagIFD& operator=(const XpTiffTagIFD&) = delete;
  virtual ~XpTiffTagIFD();

  std::size_t GetTagCount() const { return values.size(); }
  /// Null for an index out of range.
  XpTiffTagDataBase* GetTagAt(std::size_t index) const;
  /// The first value with this number, an IFD's own before those below it. Null when there is none.
  XpTiffTagDataBase* FindTag(std::uint16_t tag, bool recursive) const;
  bool HasTag(std::uint16_t tag, bool recursive) const { return FindTag(tag, recursive) != nullptr; }
  /// The first IFD under an own tag of this number; null when there is none.
  XpTiffTagIFD* GetSubIfd(std::uint16_t tag) const;

  /// Takes the place of a value with the same number, or goes to the end. The last index; -1 for null.
  std::int32_t AddTag(std::unique_ptr<XpTiffTagDataBase> value);
  /// An index out of range removes nothing.
  void RemoveTagAt(std::size_t index);
  void Clear();

  // 0 or an empty text unless there is an element of the named type.
  std::uint16_t GetShort(std::uint16_t tag, bool recursive) const;
  std::uint32_t GetLong(std::uint16_t tag, std::uint32_t index, bool recursive) const;
  std::uint8_t GetUndefinedByte(std::uint16_t tag, std::uint32_t index, bool recursive) const;
  XpNarrowString GetAscii(std::uint16_t tag) const;

  // Make a value and add it; the result is that of AddTag.
  std::int32_t SetByte(std::uint16_t tag, std::uint8_t value);
  std::int32_t SetShort(std::uint16_t tag, std::uint16_t value);
  std::int32_t SetLong(std::uint16_t tag, std::uint32_t value);
  std::int32_t SetRational(std::uint16_t tag, std::uint32_t numerator, std::uint32_t denominator);
  /// A negative count means the length with a terminator. A longer one is filled up with zeros.
  std::int32_t SetAscii(std::uint16_t tag, std::string_view text, std::int32_t count = -1);
  /// `bytes` holds `count` bytes; null means zeros.
  std::int32_t SetUndefined(std::uint16_t tag, const void* bytes, std::uint32_t count);

  /// The bytes that this IFD takes in a file; with all IFDs below it when `recursive`.
  std::uint64_t GetStoredSize(bool recursive) const;
  /// Sorts by tag number, and fits the counts of the tags that lead to IFDs.
  void Normalize();
  std::unique_ptr<XpTiffTagIFD> Clone() const;

  std::vector<std::unique_ptr<XpTiffTagDataBase>> values;  // none is null
  bool isMakerNote = false;
  bool isCamSignature = false;     // the maker note begins with the second of the known signatures
  std::uint8_t headerVersion = 0;  // from 2 on, offsets in the maker note count from its own start
};
