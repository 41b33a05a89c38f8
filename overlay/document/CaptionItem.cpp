#include "overlay/document/CaptionItem.h"

#include "content/plist/PlistNumbers.h"
#include "foundation/number/Saturate.h"
#include "overlay/document/CaptionTags.h"

namespace {

using namespace vrx::overlay;
using View = std::u16string_view;

constexpr std::int32_t kLastLayoutType = 9;
constexpr std::int64_t kColorMask = 0xFFFFFF;

bool FindText(View body, const CaptionTag& tag, View& text) {
  return FindTagged(body, tag, text) == TagSearch::Found;
}

void ReadText(View body, const CaptionTag& tag, XpString& value) {
  if (View text; FindText(body, tag, text)) value = XpString(text);
}

void ReadInteger(View body, const CaptionTag& tag, std::int32_t& value) {
  View text;
  if (FindText(body, tag, text)) value = vrx::Saturate<std::int32_t>(vrx::plist::ParseReal(text));
}

void ReadCaption(View body, CaptionItem& item) {
  View text;
  ReadText(body, kTextTag, item.text);
  ReadText(body, kFontNameTag, item.fontName);
  if (FindText(body, kFontSizeTag, text)) item.fontSize = vrx::plist::ParseReal(text);
  if (FindText(body, kLayoutTypeTag, text)) {
    const std::int64_t layout = vrx::plist::ParseInteger(text);
    item.layoutType = layout >= 1 && layout <= kLastLayoutType ? static_cast<std::int32_t>(layout) : 0;
  }
  if (FindText(body, kFontColorTag, text)) {
    const auto color = vrx::Saturate<std::int64_t>(vrx::plist::ParseReal(text));
    item.fontColor = static_cast<std::uint32_t>(color & kColorMask);
  }
  ReadInteger(body, kLeftPosTag, item.startMs);
  ReadInteger(body, kRightPosTag, item.endMs);
  ReadInteger(body, kVideoIdTag, item.videoId);
}

}  // namespace

void ParseCaptionString(const XpString& text, std::vector<CaptionItem>& items) {
  CaptionBodies bodies(text.AsView());
  CaptionItem item;
  View body;
  while (items.size() < kMaxCaptions && bodies.Next(body) == TagSearch::Found) {
    ReadCaption(body, item);
    items.push_back(item);
  }
}
