// A host that uses every function of the installed headers: what is declared there has to be defined there or
// in the library. check-install puts the list of headers into all-headers.h.
#include "all-headers.h"

#include <cstdio>

namespace {

/// True when every operation of the text class did what it should.
template <class Ch>
bool UsesText(const Ch* ab, const Ch* c, const std::basic_string<Ch>& whole) {
  using Text = XpBasicString<Ch>;
  Text text(ab);
  Text copy;
  copy = text;
  text.Append(c).Append(std::basic_string_view<Ch>(c)).Append(Text(whole));
  const Text joined = Text(ab) + c + Text(c) + Text(whole);
  const bool areParts = joined.Left(2) == ab && joined.Right(1) == c && joined.Mid(0, 2) == copy;
  const bool isNew = text == joined && !(text < joined) && text.Find(c[0]) == 2 && text[0] == ab[0];
  text = c;
  return areParts && isNew && (ab + text).AsView() == whole && text.Length() == 1 && text.Capacity() > 1 &&
         !text.IsEmpty() && text.c_str()[1] == 0 && text.ToWide().ToNarrow().ToWide() == XpString(u"c");
}

bool UsesCodec() {
  using namespace vrx::textcodec;
  char32_t scalar = 0;
  std::string bytes;
  AppendUtf8(bytes, 0xE9);
  return DecodeOne(bytes, scalar) == 2 && scalar == 0xE9 && ToUtf8(ToUtf16(bytes)) == bytes &&
         IsHighSurrogate(0xD800) && IsLowSurrogate(0xDC00) && IsEscapedByte(0xDC80);
}

}  // namespace

int main() {
  const bool text = UsesText<char16_t>(u"ab", u"c", u"abc") && UsesText<char>("ab", "c", "abc");
  std::puts(text && UsesCodec() ? "all is there" : "something is different");
}
