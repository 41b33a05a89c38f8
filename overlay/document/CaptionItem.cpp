#include "overlay/document/CaptionItem.h"

#include "content/plist/PlistNumbers.h"
#include "foundation/number/Saturate.h"
#include "foundation/text/XpPath.h"

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

template <std::uint32_t CaptionItem::*field>
void ReadColor(View text, CaptionItem& item) {
  const auto color = vrx::Saturate<std::int64_t>(vrx::plist::ParseReal(text));
  item.*field = static_cast<std::uint32_t>(color & kColorMask);
}

template <double CaptionItem::*field>
void ReadReal(View text, CaptionItem& item) {
  item.*field = vrx::plist::ParseReal(text);
}

template <bool CaptionItem::*field>
void ReadSwitch(View text, CaptionItem& item) {
  item.*field = IsSwitchedOn(text);
}

constexpr bool kOptional = true;

constexpr CaptionField kFields[] = {
    {{u"<Text>", u"</Text>"},
     CaptionValue::Text,
     [](View text, CaptionItem& item) { item.text = XpString(text); }},
    {{u"<FontName>", u"</FontName>"},
     CaptionValue::Name,
     [](View text, CaptionItem& item) { item.fontName = XpString(text); }},
    {{u"<FontSize>", u"</FontSize>"}, CaptionValue::Size, &ReadReal<&CaptionItem::fontSize>},
    {{u"<LayoutType>", u"</LayoutType>"}, CaptionValue::Number, &ReadLayout},
    {{u"<FontColor>", u"</FontColor>"}, CaptionValue::Color, &ReadColor<&CaptionItem::fontColor>},
    {{u"<LeftPos>", u"</LeftPos>"}, CaptionValue::Integer, &ReadInteger<&CaptionItem::startMs>},
    {{u"<RightPos>", u"</RightPos>"}, CaptionValue::Integer, &ReadInteger<&CaptionItem::endMs>},
    {{u"<VideoID>", u"</VideoID>"}, CaptionValue::Integer, &ReadInteger<&CaptionItem::videoId>},
    {{u"<Outline>", u"</Outline>"}, CaptionValue::Length, &ReadReal<&CaptionItem::outline>, kOptional},
    {{u"<OutlineColor>", u"</OutlineColor>"},
     CaptionValue::Color,
     &ReadColor<&CaptionItem::outlineColor>,
     kOptional},
    {{u"<Box>", u"</Box>"}, CaptionValue::Percent, &ReadReal<&CaptionItem::boxOpacity>, kOptional},
    {{u"<Bold>", u"</Bold>"}, CaptionValue::Switch, &ReadSwitch<&CaptionItem::isBold>, kOptional},
    {{u"<Italic>", u"</Italic>"}, CaptionValue::Switch, &ReadSwitch<&CaptionItem::isItalic>, kOptional},
    {{u"<Margin>", u"</Margin>"}, CaptionValue::Length, &ReadReal<&CaptionItem::margin>, kOptional},
    {{u"<Balance>", u"</Balance>"}, CaptionValue::Switch, &ReadSwitch<&CaptionItem::isBalanced>, kOptional},
};

void ReadCaption(View body, CaptionItem& item) {
  for (const CaptionField& field : kFields) {
    if (View text; FindTagged(body, field.tag, text) == TagSearch::Found) field.read(text, item);
  }
}

}  // namespace

std::span<const CaptionField> vrx::overlay::CaptionFields() { return kFields; }

bool vrx::overlay::IsSwitchedOn(View text) {
  constexpr char16_t kBlanks[] = u" \t\r\n";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == text.npos) return false;
  const XpString word(text.substr(first, text.find_last_not_of(kBlanks) - first + 1));
  return word == u"1" || XpCompareNoCase(word, u"true") == 0;
}

void ParseCaptionString(const XpString& text, std::vector<CaptionItem>& items) {
  CaptionBodies bodies(text.AsView());
  CaptionItem item;
  View body;
  while (items.size() < kMaxCaptions && bodies.Next(body) == TagSearch::Found) {
    ReadCaption(body, item);
    items.push_back(item);
  }
}
