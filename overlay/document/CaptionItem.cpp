#include "overlay/document/CaptionItem.h"

#include <string_view>

#include "content/plist/PlistNumbers.h"
#include "foundation/number/Saturate.h"

namespace {

using View = std::u16string_view;

constexpr View kCaptionStart = u"<Caption>";
constexpr View kCaptionEnd = u"</Caption>";
constexpr std::int32_t kLastLayoutType = 9;
constexpr std::int64_t kColorMask = 0xFFFFFF;

struct Tag {
  View open;
  View close;
};

/// What lies between the tags of `body`; false when one of them is not there.
bool FindText(View body, const Tag& tag, View& text) {
  const std::size_t open = body.find(tag.open);
  if (open == View::npos) return false;
  const std::size_t start = open + tag.open.size();
  const std::size_t close = body.find(tag.close, start);
  if (close == View::npos) return false;
  text = body.substr(start, close - start);
  return true;
}

void ReadText(View body, const Tag& tag, XpString& value) {
  if (View text; FindText(body, tag, text)) value = XpString(text);
}

void ReadMilliseconds(View body, const Tag& tag, std::int32_t& value) {
  View text;
  if (FindText(body, tag, text)) value = vrx::Saturate<std::int32_t>(vrx::plist::ParseReal(text));
}

void ReadCaption(View body, CaptionItem& item) {
  View text;
  ReadText(body, {u"<Text>", u"</Text>"}, item.text);
  ReadText(body, {u"<FontName>", u"</FontName>"}, item.fontName);
  if (FindText(body, {u"<FontSize>", u"</FontSize>"}, text)) item.fontSize = vrx::plist::ParseReal(text);
  if (FindText(body, {u"<LayoutType>", u"</LayoutType>"}, text)) {
    const std::int64_t layout = vrx::plist::ParseInteger(text);
    item.layoutType = layout >= 1 && layout <= kLastLayoutType ? static_cast<std::int32_t>(layout) : 0;
  }
  if (FindText(body, {u"<FontColor>", u"</FontColor>"}, text)) {
    const auto color = vrx::Saturate<std::int64_t>(vrx::plist::ParseReal(text));
    item.fontColor = static_cast<std::uint32_t>(color & kColorMask);
  }
  ReadMilliseconds(body, {u"<LeftPos>", u"</LeftPos>"}, item.startMs);
  ReadMilliseconds(body, {u"<RightPos>", u"</RightPos>"}, item.endMs);
  ReadMilliseconds(body, {u"<VideoID>", u"</VideoID>"}, item.videoId);
}

}  // namespace

void ParseCaptionString(const XpString& text, std::vector<CaptionItem>& items) {
  const View all = text.AsView();
  CaptionItem item;
  std::size_t start = all.find(kCaptionStart);
  while (start != View::npos && items.size() < vrx::overlay::kMaxCaptions) {
    start += kCaptionStart.size();
    const std::size_t end = all.find(kCaptionEnd, start);
    if (end == View::npos) return;
    ReadCaption(all.substr(start, end - start), item);
    items.push_back(item);
    start = all.find(kCaptionStart, end + kCaptionEnd.size());
  }
}
