// The values of TIFF 6.0 and Exif tags: a number, a count and an array of one of twelve element types. The
// tag tree is made of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "vrx/XpString.h"

/// Type ids as TIFF stores them. XpTiffIfd is XpTiffLong with the mark of a value that leads to IFDs.
enum : std::uint32_t {
  XpTiffByte = 1,
  XpTiffAscii = 2,
  XpTiffShort = 3,
  XpTiffLong = 4,
  XpTiffRational = 5,
  XpTiffSByte = 6,
  XpTiffUndefined = 7,
  XpTiffSShort = 8,
  XpTiffSLong = 9,
  XpTiffSRational = 10,
  XpTiffFloat = 11,
  XpTiffDouble = 12,
  XpTiffIfd = 0x8004,
};

struct XpTiffFraction {
  std::uint32_t numerator = 0;
  std::uint32_t denominator = 0;
  friend bool operator==(const XpTiffFraction&, const XpTiffFraction&) = default;
};
struct XpTiffSignedFraction {
  std::int32_t numerator = 0;
  std::int32_t denominator = 0;
  friend bool operator==(const XpTiffSignedFraction&, const XpTiffSignedFraction&) = default;
};

/// What an element is, its type id, and the width of the units that byte order reverses.
template <class T, std::uint32_t Type, std::uint32_t SwapSize>
struct XpTiffTagType {
  using Element = T;
  static constexpr std::uint32_t kType = Type;
  static constexpr std::uint32_t kSwapSize = SwapSize;
};
struct XpTiffTagTypeByte : XpTiffTagType<std::uint8_t, XpTiffByte, 1> {};
struct XpTiffTagTypeAscii : XpTiffTagType<char, XpTiffAscii, 1> {};
struct XpTiffTagTypeShort : XpTiffTagType<std::uint16_t, XpTiffShort, 2> {};
struct XpTiffTagTypeLong : XpTiffTagType<std::uint32_t, XpTiffLong, 4> {};
struct XpTiffTagTypeRational : XpTiffTagType<XpTiffFraction, XpTiffRational, 4> {};
struct XpTiffTagTypeSByte : XpTiffTagType<std::int8_t, XpTiffSByte, 1> {};
struct XpTiffTagTypeUndefined : XpTiffTagType<std::uint8_t, XpTiffUndefined, 1> {};
struct XpTiffTagTypeSShort : XpTiffTagType<std::int16_t, XpTiffSShort, 2> {};
struct XpTiffTagTypeSLong : XpTiffTagType<std::int32_t, XpTiffSLong, 4> {};
struct XpTiffTagTypeSRational : XpTiffTagType<XpTiffSignedFraction, XpTiffSRational, 4> {};
struct XpTiffTagTypeFloat : XpTiffTagType<float, XpTiffFloat, 4> {};
struct XpTiffTagTypeDouble : XpTiffTagType<double, XpTiffDouble, 8> {};

/// Elements are in the machine's byte order. `count` describes the array; both change only together.
class XpTiffTagDataBase {
 public:
  XpTiffTagDataBase(std::uint16_t tagNumber, std::uint32_t elementCount)
      : tag(tagNumber), count(elementCount) {}
  XpTiffTagDataBase& operator=(const XpTiffTagDataBase&) = delete;

  virtual ~XpTiffTagDataBase() = default;
  /// XpTiffByte and its like.
  virtual std::uint32_t GetType() const = 0;
  /// Bytes of one element.
  virtual std::uint32_t GetElementSize() const = 0;
  virtual std::uint32_t GetSwapSize() const = 0;
  /// The elements, which belong to this object. Never null.
  virtual const void* GetData() const = 0;
  /// Bytes of `count` elements.
  virtual std::uint64_t GetByteSize() const = 0;
  virtual void Prepare() = 0;
  /// An element as text, empty past the end. ASCII gives the bytes before the first zero among its elements,
  /// and an empty text without one; UNDEFINED gives its bytes up to a zero. Both ignore the index. Whole
  /// numbers are printed as signed 32-bit ones.
  virtual XpNarrowString ToString(std::uint32_t index) const = 0;
  virtual std::unique_ptr<XpTiffTagDataBase> Clone() const = 0;

  void* GetData() { return const_cast<void*>(static_cast<const XpTiffTagDataBase*>(this)->GetData()); }

  std::uint16_t tag;
  std::uint32_t count;

 protected:
  XpTiffTagDataBase(const XpTiffTagDataBase&) = default;
};

/// `T` is one of the types above. Making one throws std::bad_alloc when memory fails.
template <class T>
class XpTiffTagData : public XpTiffTagDataBase {
 public:
  using Element = typename T::Element;

  /// All elements are zero, and so is one more after the last.
  XpTiffTagData(std::uint16_t tagNumber, std::uint32_t elementCount)
      : XpTiffTagDataBase(tagNumber, elementCount),
        elements(std::make_unique<Element[]>(std::size_t{elementCount} + 1)) {}
  XpTiffTagData(const XpTiffTagData& other);

  std::uint32_t GetType() const override { return T::kType; }
  std::uint32_t GetElementSize() const override { return sizeof(Element); }
  std::uint32_t GetSwapSize() const override { return T::kSwapSize; }
  const void* GetData() const override { return elements.get(); }
  using XpTiffTagDataBase::GetData;
  std::uint64_t GetByteSize() const override { return std::uint64_t{count} * sizeof(Element); }
  void Prepare() override {}
  XpNarrowString ToString(std::uint32_t index) const override;
  std::unique_ptr<XpTiffTagDataBase> Clone() const override;

  std::unique_ptr<Element[]> elements;  // count + 1, never null
};
