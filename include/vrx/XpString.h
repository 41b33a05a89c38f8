// The string of this system: reference-counted, copied on write and passed by value. XpString holds UTF-16,
// XpNarrowString bytes in the system's code page, which is UTF-8.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

#include "vrx/XpStringRep.h"
#include "vrx/XpTextCodec.h"

/// A value is not thread-safe as an object; two values that share a block may be used on two threads.
/// Every operation that needs memory throws std::bad_alloc when there is none.
template <class Ch>
class XpBasicString {
  using Rep = XpStringRep<Ch>;

 public:
  using View = std::basic_string_view<Ch>;

  XpBasicString() noexcept { Adopt(Rep::Empty()); }
  /// A null pointer counts as the empty text.
  XpBasicString(const Ch* text) : XpBasicString(text == nullptr ? View() : View(text)) {}
  XpBasicString(View text) : XpBasicString() { Assign(text); }
  XpBasicString(const std::basic_string<Ch>& text) : XpBasicString(View(text)) {}
  XpBasicString(const XpBasicString& other) noexcept { Adopt(other.m_rep->Share()); }
  ~XpBasicString() {
    m_rep->Release();
    m_rep = nullptr;
    m_characters = nullptr;
  }

  XpBasicString& operator=(const XpBasicString& other) noexcept {
    if (m_rep == other.m_rep) return *this;
    Rep* old = m_rep;
    Adopt(other.m_rep->Share());
    old->Release();
    return *this;
  }
  /// Reuses this string's own memory when no copy shares it. A null pointer counts as the empty text.
  XpBasicString& operator=(const Ch* text) { return ReplaceFrom(0, text == nullptr ? View() : View(text)); }

  const Ch* c_str() const noexcept { return m_characters; }
  std::int32_t Length() const noexcept { return m_rep->length; }
  std::int32_t Capacity() const noexcept { return m_rep->capacity; }
  bool IsEmpty() const noexcept { return m_rep->length == 0; }
  Ch operator[](std::int32_t index) const noexcept { return m_characters[index]; }
  View AsView() const noexcept { return View(m_characters, static_cast<std::size_t>(m_rep->length)); }

  /// Index of the first `ch` at or after `from`, else -1.
  std::int32_t Find(Ch ch, std::int32_t from = 0) const noexcept {
    const auto found = AsView().find(ch, static_cast<std::size_t>(std::max(from, 0)));
    return found == View::npos ? -1 : static_cast<std::int32_t>(found);
  }
  /// The first `count` characters; below 0 counts as 0, at or above the length gives the whole string.
  XpBasicString Left(std::int32_t count) const {
    if (count >= Length()) return *this;
    return XpBasicString(AsView().substr(0, static_cast<std::size_t>(std::max(count, 0))));
  }
  /// The last `count` characters, with the limits of Left.
  XpBasicString Right(std::int32_t count) const {
    if (count >= Length()) return *this;
    return XpBasicString(AsView().substr(static_cast<std::size_t>(Length() - std::max(count, 0))));
  }
  /// Right(Length() - first), then Left(count). A `first` at or past the end gives the whole string.
  XpBasicString Mid(std::int32_t first, std::int32_t count) const {
    if (first >= Length()) return *this;
    return Right(Length() - std::max(first, 0)).Left(count);
  }

  /// Appends `text`, which may be part of this string's own buffer. A null pointer appends nothing.
  XpBasicString& Append(const Ch* text) { return text == nullptr ? *this : Append(View(text)); }
  XpBasicString& Append(View text) { return text.empty() ? *this : ReplaceFrom(Length(), text); }
  XpBasicString& Append(const XpBasicString& other) { return Append(other.AsView()); }

  XpBasicString<char> ToNarrow() const;
  XpBasicString<char16_t> ToWide() const;

  friend bool operator==(const XpBasicString& a, const XpBasicString& b) noexcept {
    return a.m_rep == b.m_rep || a.AsView() == b.AsView();
  }
  friend bool operator==(const XpBasicString& a, const Ch* b) noexcept {
    return a.AsView() == (b == nullptr ? View() : View(b));
  }
  /// Ordinal comparison of code units, for ordered containers.
  friend bool operator<(const XpBasicString& a, const XpBasicString& b) noexcept {
    return a.AsView() < b.AsView();
  }
  friend XpBasicString operator+(XpBasicString a, const XpBasicString& b) { return a.Append(b); }
  friend XpBasicString operator+(XpBasicString a, const Ch* b) { return a.Append(b); }
  friend XpBasicString operator+(const Ch* a, const XpBasicString& b) { return XpBasicString(a).Append(b); }

 private:
  void Adopt(Rep* rep) noexcept {
    m_rep = rep;
    m_characters = rep->buffer;
  }
  void Assign(View text);
  XpBasicString& ReplaceFrom(std::int64_t kept, View text);

  Ch* m_characters;  // copy of the block's buffer pointer, so that reading needs one load
  Rep* m_rep;
};

using XpString = XpBasicString<char16_t>;
using XpNarrowString = XpBasicString<char>;

template <class Ch>
void XpBasicString<Ch>::Assign(View text) {
  if (text.empty()) return;
  Rep* rep = Rep::Create(static_cast<std::int64_t>(text.size()));
  std::copy(text.begin(), text.end(), rep->buffer);
  rep->length = static_cast<std::int32_t>(text.size());
  rep->buffer[rep->length] = 0;
  Adopt(rep);
}

/// Replaces what follows the first `kept` characters by `text`, which may be part of this string's own
/// buffer.
template <class Ch>
XpBasicString<Ch>& XpBasicString<Ch>::ReplaceFrom(std::int64_t kept, View text) {
  const std::int64_t newLength = kept + static_cast<std::int64_t>(text.size());
  const bool own = text.data() >= m_characters && text.data() <= m_characters + Length();
  if (m_rep->IsUnshared() && !own) {
    m_rep->Fit(newLength);
    Adopt(m_rep);
    std::copy(text.begin(), text.end(), m_rep->buffer + kept);
  } else {
    Rep* rep = Rep::Create(newLength);
    std::copy_n(m_characters, kept, rep->buffer);
    std::copy(text.begin(), text.end(), rep->buffer + kept);
    m_rep->Release();
    Adopt(rep);
  }
  m_rep->length = static_cast<std::int32_t>(newLength);
  m_rep->buffer[newLength] = 0;
  return *this;
}

template <class Ch>
XpBasicString<char> XpBasicString<Ch>::ToNarrow() const {
  if constexpr (std::is_same_v<Ch, char>) {
    return *this;
  } else {
    return XpNarrowString(vrx::textcodec::ToUtf8(AsView()));
  }
}

template <class Ch>
XpBasicString<char16_t> XpBasicString<Ch>::ToWide() const {
  if constexpr (std::is_same_v<Ch, char>) {
    return XpString(vrx::textcodec::ToUtf16(AsView()));
  } else {
    return *this;
  }
}
