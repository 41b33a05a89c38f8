// Base of the values of a property-list document, with one interface for all types: an operation that does
// not fit the type returns XpErrWrongElementType. Project and painter documents are read through it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <variant>

#include "foundation/time/XpDateTime.h"
#include "vrx/XpResult.h"
#include "vrx/XpString.h"

enum class XpIniType : std::int32_t {
  Bool = 0,
  Int = 1,
  Real = 2,
  String = 3,
  MemChunk = 4,
  Date = 5,
  Array = 6,
  Dict = 7,
};

/// What Add and InsertAt give a new element; nothing for an empty one. Bytes are copied.
using XpIniValue = std::variant<std::monostate, bool, std::int64_t, double, XpString,
                                std::span<const std::byte>, XpDateTime>;

/// No locks: a tree belongs to the thread that uses it. Elements are owned by their container. Keys are
/// paths: "a/b/c" goes through nested dicts and arrays, an array taking its key as a decimal index.
class XpIniElement {
 public:
  /// Indices of InsertAt that append.
  static constexpr std::uint32_t kAppend = 0xFFFFFFFF;
  static constexpr std::uint32_t kAppendToo = 0xFFFFFFFE;

  virtual ~XpIniElement() = default;

  virtual std::uint32_t GetCount() const { return 0; }
  /// Null when there is no such element; stays owned by the container.
  virtual XpIniElement* Get(const XpString& /*key*/) const { return nullptr; }
  virtual XpIniElement* GetAt(std::uint32_t /*index*/) const { return nullptr; }
  virtual XpResult Remove(const XpString& /*key*/) { return XpErrWrongElementType; }
  virtual XpResult RemoveAt(std::uint32_t /*index*/) { return XpErrWrongElementType; }
  virtual XpResult Load(const XpString& /*path*/) { return XpErrWrongElementType; }
  virtual XpResult Save(const XpString& /*path*/) const { return XpErrWrongElementType; }
  /// XpErrKeyExists when the key exists, XpErrElementNotFound when a part of its path does not,
  /// XpErrUnknownElementType for a type outside the enumeration, XpErrWrongElementType for a value that is
  /// not of that type, XpErrInvalidArgument for an empty key of a dict.
  virtual XpResult Add(const XpString& /*key*/, XpIniType /*type*/, const XpIniValue& /*value*/) {
    return XpErrWrongElementType;
  }
  virtual XpResult InsertAt(std::uint32_t /*index*/, XpIniType /*type*/, const XpIniValue& /*value*/) {
    return XpErrWrongElementType;
  }
  virtual XpResult GetKeyAt(std::uint32_t /*index*/, XpString& /*key*/) const {
    return XpErrWrongElementType;
  }
  virtual XpIniType GetType() const = 0;

  /// Getters that fail do not change their argument, except GetInt32 on overflow.
  virtual XpResult GetData(const std::byte*& /*data*/, std::uint64_t& /*size*/) const {
    return XpErrWrongElementType;
  }
  virtual XpResult GetDate(XpDateTime& /*date*/) const { return XpErrWrongElementType; }
  virtual XpResult GetString(XpString& /*text*/) const { return XpErrWrongElementType; }
  virtual XpResult GetReal(double& /*value*/) const { return XpErrWrongElementType; }
  virtual XpResult GetInt64(std::int64_t& /*value*/) const { return XpErrWrongElementType; }
  /// XpErrValueDoesNotFit, with the low half in `value`, when the integer needs more than 32 bits.
  virtual XpResult GetInt32(std::int32_t& /*value*/) const { return XpErrWrongElementType; }
  virtual XpResult GetBool(bool& /*value*/) const { return XpErrWrongElementType; }

  virtual XpResult SetData(const std::byte* /*data*/, std::uint64_t /*size*/) {
    return XpErrWrongElementType;
  }
  virtual XpResult SetDate(const XpDateTime& /*date*/) { return XpErrWrongElementType; }
  virtual XpResult SetString(const XpString& /*text*/) { return XpErrWrongElementType; }
  virtual XpResult SetReal(double /*value*/) { return XpErrWrongElementType; }
  virtual XpResult SetInt(std::int64_t /*value*/) { return XpErrWrongElementType; }
  virtual XpResult SetBool(bool /*value*/) { return XpErrWrongElementType; }

  /// Where an element stands in the document that it was read from, counted from 1; 0 for one that was not
  /// read from a document.
  struct Lines {
    std::uint32_t element = 0;  // of its key or, in an array, of its own tag
    std::uint32_t text = 0;     // on which the text of a string begins
  };
  const Lines& GetLines() const { return m_lines; }
  void SetLines(const Lines& lines) { m_lines = lines; }

 protected:
  XpIniElement() = default;
  XpIniElement(const XpIniElement&) = delete;
  XpIniElement& operator=(const XpIniElement&) = delete;

 private:
  Lines m_lines;
};
