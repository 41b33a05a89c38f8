#include "overlay/document/CaptionItem.h"

#include "content/plist/PlistNumbers.h"
#include "foundation/number/Saturate.h"

namespace {

using namespace vrx::overlay;
using View = std::u16string_view;

constexpr std::int32_t kLastLayoutType = 9;
constexpr std::int64_t kColorMask = 0xFFFFFF;

template <std::int32_t CaptionItem::*field>
void ReadInteger(View text, CaptionItem& item) {
  item.*field = vrx::Saturate<std::int32_t>(vrx::plist::ParseReal(text));
}

void ReadLayout(View text, CaptionItem& item) {
  const std::int64_t layout = vrx::plist::ParseInteger(text);
  item.layoutType = layout >= 1 && layout <= kLastLayoutType ? static_cast<std::int32_t>(layout) : 0;
}

void ReadColor(View text, CaptionItem& item) {
  const auto color = vrx::Saturate<std::int64_t>(vrx::plist::ParseReal(text));
  item.fontColor = static_cast<std::uint32_t>(color & kColorMask);
}

constexpr CaptionField kFields[] = {
    {{u"<Text>", u"</Text>"},
     CaptionValue::Text,
     [](View text, CaptionItem& item) { item.text = XpString(text); }},
    {{u"<FontName>", u"</FontName>"},
     CaptionValue::Name,
     [](View text, CaptionItem& item) { item.fontName = XpString(text); }},
    {{u"<FontSize>", u"</FontSize>"},
     CaptionValue::Size,
     [](View text, CaptionItem& item) { item.fontSize = vrx::plist::ParseReal(text); }},
    {{u"<LayoutType>", u"</LayoutType>"}, CaptionValue::Number, &ReadLayout},
    {{u"<FontColor>", u"</FontColor>"}, CaptionValue::Color, &ReadColor},
    {{u"<LeftPos>", u"</LeftPos>"}, CaptionValue::Integer, &ReadInteger<&CaptionItem::startMs>},
    {{u"<RightPos>", u"</RightPos>"}, CaptionValue::Integer, &ReadInteger<&CaptionItem::endMs>},
    {{u"<VideoID>", u"</VideoID>"}, CaptionValue::Integer, &ReadInteger<&CaptionItem::videoId>},
};

void ReadCaption(View body, CaptionItem& item) {
  for (const CaptionField& field : kFields) {
    if (View text; FindTagged(body, field.tag, text) == TagSearch::Found) field.read(text, item);
  }
}

}  // namespace

std::span<const CaptionField> vrx::overlay::CaptionFields() { return kFields; }

void ParseCaptionString(const XpString& text, std::vector<CaptionItem>& items) {
  CaptionBodies bodies(text.AsView());
  CaptionItem item;
  View body;
  while (items.size() < kMaxCaptions && bodies.Next(body) == TagSearch::Found) {
    ReadCaption(body, item);
    items.push_back(item);
  }
}
