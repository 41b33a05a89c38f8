// Draws a frame of the tennis overlay in the plain way: everything afresh, part after part, straight onto the
// frame. The painter, which keeps what does not change, has to give the same pixels.
#pragma once

#include <cmath>
#include <cstdlib>
#include <string>

#include "drawing/BoxTextRenderer.h"
#include "drawing/PictureScaler.h"
#include "imaging/pixmap/XpPixmapOverlay.h"
#include "overlay/document/PainterInfo.h"
#include "overlay/tennis/KVSTennisMetaPainterLayoutBase.h"
#include "overlay/tennis/TennisMetaData.h"

namespace vrx::overlay {

class PlainTennis {
 public:
  PlainTennis(const PainterInfo& info, std::int32_t unit, XpPixmap32& target)
      : m_info(info),
        m_resources(*info.tennisMetaInfo.resources),
        m_layout(MakeTennisLayout(info.tennisMetaInfo.layoutType, info.tennisMetaInfo.resources, target.width,
                                  target.height, u"")),
        m_unit(unit),
        m_target(target),
        m_canvas(target.GetBitmapHandle()) {
    ParseTennisMetaData(info.tennisMetaInfo.metaData, info.stringTable, m_shots);
  }

  void Draw(std::int64_t ms) {
    const std::int64_t t = ms + 33;
    std::int64_t index = -1;
    for (std::size_t i = 0; i < m_shots.size(); ++i) {
      if (Ms(m_shots[i]) <= t) index = static_cast<std::int64_t>(i);
    }
    Overlay(m_resources.shade, m_layout->GetPanelRect());
    DrawStats(index, t);
    DrawSwing(index, ms);
    if (m_layout->HasTimeLine()) DrawTimeLine(t);
  }

 private:
  using Rect = drawing::Rect;
  using Font = drawing::Font;
  enum Format : std::uint32_t {
    kNameFormat = 0x819,
    kLabelFormat = 0x810,
    kDigitFormat = 0x80A,
    kSignFormat = 0x806,
    kUnitFormat = 0x808,
    kDateFormat = 0x805,
    kSpanFormat = 0x821,
    kCalc = 0x400
  };

  static std::int64_t Ms(const TennisShot& shot) { return static_cast<std::int64_t>(shot.time * 1000); }
  const TennisShot* At(std::int64_t i) const {
    return i >= 0 && i < std::ssize(m_shots) ? &m_shots[static_cast<std::size_t>(i)] : nullptr;
  }
  static std::int32_t W(const Rect& r) { return r.right - r.left; }
  static std::int32_t H(const Rect& r) { return r.bottom - r.top; }

  void Overlay(const PainterPicture& picture, const Rect& r) {
    if (!picture) return;
    const auto scaled = drawing::ScalePicture(*picture, W(r), H(r));
    const auto* same = dynamic_cast<const XpPixmap32*>(picture.Get());
    if (same == nullptr || same->width != W(r) || same->height != H(r)) same = scaled.get();
    if (same != nullptr) OverlaySmoothPixmap(m_target, r.left, r.top, W(r), H(r), *same, W(r), H(r));
  }
  /// The measured rectangle of a text that begins in `rect`.
  Rect Calc(const XpString& text, const Font& font, Rect rect, std::uint32_t format) {
    m_boxes.DrawText(m_canvas, text.AsView(), font, 0, rect, format | kCalc);
    return rect;
  }
  void Text(const XpString& text, const Font& font, drawing::ColorRef color, const Rect& r,
            std::uint32_t format) {
    m_boxes.Draw(m_canvas, text.AsView(), font, color, r, format);
  }

  void DrawStats(std::int64_t index, std::int64_t t) {
    const TennisShot* cur = At(index);
    const TennisShot* next = At(index + 1);
    if (m_layout->HasTimeLine()) DrawName(cur == nullptr ? XpString() : cur->name);
    const std::int64_t rem =
        next == nullptr ? 300 : static_cast<std::int64_t>(next->time * 1000 - static_cast<double>(t));
    std::int64_t k = 0;
    if (rem < 300) {
      k = static_cast<std::int64_t>(
          std::min(40.0, (300 - next->time * 1000 + static_cast<double>(t)) * 400 / 3 / 1000));
    }
    m_p = (60 - k) * k * k;
    const std::int64_t h = m_layout->GetRollHeight();
    const std::int32_t nextCount = next == nullptr ? 0 : next->firstPanelValue;
    const std::int32_t count = cur == nullptr ? 0 : cur->firstPanelValue;
    const std::int64_t r = m_p * (nextCount != count ? h : 0) / 32000 % h;
    if (nextCount >= count) {
      DrawCounter(true, Count(nextCount), Count(count), m_layout->ScaleY(r), m_layout->GetCountRect(), 14);
    } else {
      DrawCounter(true, Count(count), Count(nextCount), m_layout->ScaleY(h - r), m_layout->GetCountRect(),
                  14);
    }
    DrawSpeed(cur, next, &TennisShot::secondPanelSpeed, m_layout->GetSecondSpeedRect(), 15);
    DrawSpeed(cur, next, &TennisShot::thirdPanelSpeed, m_layout->GetThirdSpeedRect(), 16);
  }

  void DrawSpeed(const TennisShot* cur, const TennisShot* next, double TennisShot::*field, const Rect& rect,
                 std::int32_t label) {
    const double factor = m_unit == 1 ? 0.62137 : 1.0;
    const double to = next == nullptr ? 0 : next->*field * factor,
                 from = cur == nullptr ? 0 : cur->*field * factor;
    const auto round = [](double value) { return static_cast<std::int64_t>(value + 0.5); };
    const std::int64_t d = std::abs(round(to) - round(from)), h = m_layout->GetRollHeight();
    const std::int64_t y = m_p * (d > 4 ? 4 : d) * h / 32000;
    const std::int64_t a = y / h, r = y % h;
    const int sign = round(to) >= round(from) ? 1 : -1;
    const auto value = [&](std::int64_t step) {
      const double steps = static_cast<double>(step);
      return Speed(d > 4 ? round(from + sign * steps * std::abs(to - from) * 0.25)
                         : round(from) + sign * step);
    };
    if (sign > 0) {
      DrawCounter(false, value(a + 1), value(a), m_layout->ScaleY(r), rect, label);
    } else {
      DrawCounter(false, value(a), value(a + 1), m_layout->ScaleY(h - r), rect, label);
    }
  }

  static std::string Count(std::int64_t value) { return std::to_string(value); }
  static std::string Speed(std::int64_t value) {
    const std::string digits = std::to_string(value);
    return std::string(digits.size() < 3 ? 3 - digits.size() : 0, ' ') + digits;
  }

  void DrawName(const XpString& name) {
    const Rect rect = m_layout->GetNameRect();
    const auto place = [&](const Font& font, const Rect& around) {
      Rect r = Calc(name, font, rect, 0x818);
      const std::int32_t left = around.left + (W(around) - W(r)) / 2;
      return Rect{left, rect.bottom - H(r), left + W(r), rect.bottom};
    };
    const Font* font = &m_layout->GetNameFont();
    Rect a = place(*font, rect);
    if (H(Calc(name, *font, rect, 0x828)) < H(a)) {
      font = &m_layout->GetSmallNameFont();
      a = place(*font, a);
    }
    Text(name, *font, m_layout->GetNameColor(), a, kNameFormat);
  }

  void DrawCounter(bool isCount, const std::string& upper, const std::string& lower, std::int32_t offset,
                   const Rect& rect, std::int32_t label) {
    const drawing::ColorRef white = m_layout->GetValueColor();
    std::int32_t pad = m_layout->ScaleX(10);
    if (m_layout->HasSeparator()) {
      m_canvas.DrawLine({rect.left, rect.top + m_layout->ScaleY(14)},
                        {rect.left, rect.bottom - m_layout->ScaleY(14)}, {0xFFFFFF, 1});
      pad = m_layout->ScaleX(16);
    }
    const XpString text = TextAt(m_info.stringTable, label);
    const Rect labels = m_layout->GetLabelRect();
    const Rect size = Calc(text, m_layout->GetLabelFont(), labels, kLabelFormat);
    const std::int32_t top = labels.top + (H(labels) - H(size)) / 2;
    Text(text, m_layout->GetLabelFont(), white,
         {rect.left + pad, top, rect.left + pad + W(size), top + H(size)}, kLabelFormat);

    const Font& font = m_layout->GetDigitFont();
    const std::int32_t w = W(Calc(isCount ? u"99" : u"999", font, rect, 0x804));
    const std::int32_t h = H(Calc(u"99", font, rect, 0x804));
    const Rect plus = Calc(u"+", m_layout->GetSignFont(), rect, 0x804);
    XpPixmap32 probe;
    std::int32_t y = h;
    if (probe.Allocate(w, h) == XpOk) {
      Font hard = font;
      hard.smooth = false;
      m_boxes.Draw(drawing::Canvas(probe.GetBitmapHandle()), u"999", hard, white, {0, 0, w, h}, kDigitFormat);
      const auto inked = [&](std::int32_t row) {
        const unsigned char* p = probe.GetPlane(0)->Row(row);
        return std::any_of(p, p + std::ptrdiff_t{w} * 4, [](unsigned char byte) { return byte != 0; });
      };
      while (y == h || !inked(y)) --y;
    }
    const std::int32_t gap = h - y;
    const auto m = isCount ? gap / 2 : static_cast<std::int32_t>(h * ((gap + 1.0) / h) * 0.5);
    const std::int32_t stripWidth = isCount ? w + W(plus) : w,
                       stripHeight = isCount ? 2 * h - gap : 2 * (h - m);
    const std::int32_t windowHeight = isCount ? h - gap : h - 2 * m;
    const std::int32_t left = rect.left + pad + (isCount ? 2 * W(plus) : 0);
    XpPixmap32 strip;
    if (strip.Allocate(stripWidth, stripHeight) == XpOk) {
      const drawing::Canvas on(strip.GetBitmapHandle());
      for (const auto& [line, at] : {std::pair(lower, stripHeight - h), std::pair(upper, 0)}) {
        std::string digits = line;
        if (isCount) {
          const char16_t* sign = line == "0" ? u"" : line[0] == '-' ? u"-" : u"+";
          if (line[0] == '-') digits.erase(0, 1);
          const std::int32_t right = stripWidth - W(Calc(Wide(digits), font, rect, 0x804));
          const std::int32_t signTop = at + (h - H(plus)) / 2;
          m_boxes.Draw(on, sign, m_layout->GetSignFont(), white,
                       {right - W(plus), signTop, right, signTop + H(plus)}, kSignFormat);
        }
        m_boxes.Draw(on, Wide(digits).AsView(), font, white, {0, at, stripWidth, at + h}, kDigitFormat);
      }
      OverlaySmoothPixmapBlock(m_target, left, rect.bottom + m_layout->ScaleY(10) - h + m, stripWidth,
                               windowHeight, strip, stripHeight - h + m - offset);
    }
    if (isCount) return;
    constexpr std::int32_t kUnitTexts[] = {2, 0, 4};
    const XpString unit =
        m_unit >= 0 && m_unit < 3 ? TextAt(m_info.stringTable, kUnitTexts[m_unit]) : XpString();
    const Rect unitSize = Calc(unit, m_layout->GetUnitFont(), rect, 0x804);
    const std::int32_t unitLeft = left + w + m_layout->ScaleX(10),
                       bottom = rect.bottom - m_layout->GetUnitMargin();
    Text(unit, m_layout->GetUnitFont(), white,
         {unitLeft, bottom - H(unitSize), unitLeft + W(unitSize), bottom}, kUnitFormat);
  }
  static XpString Wide(const std::string& text) { return XpNarrowString(text).ToWide(); }

  void DrawSwing(std::int64_t index, std::int64_t ms) {
    const Rect box = m_layout->GetSwingRect();
    const TennisShot* next = At(index + 1);
    std::int64_t frame = -1;
    const std::int64_t n = m_layout->GetRacketFrameCount();
    if (next != nullptr && n > 0) {
      const std::int64_t d = Ms(*next) - ms;
      if (d >= 0 && d < 300) frame = std::min(n - n * d / 300, n - 1);
    }
    const TennisShot* shot = At(index);
    if (frame < 0 && shot != nullptr) {
      if (n > 0) Overlay(FramesOf(m_resources, shot->GetFrameSet()).back(), box);
      Rect zone = m_layout->GetZoneRect(shot->GetFrameSet(), shot->impactZone);
      zone = {zone.left + box.left, zone.top + box.top, zone.right + box.left, zone.bottom + box.top};
      if (!m_layout->GetBlue() || !m_layout->GetYellow()) return;
      Overlay(m_layout->GetBlue(), zone);
      Overlay(m_layout->GetYellow(), zone);
    } else if (shot == nullptr) {
      if (n > 0) Overlay(m_resources.racketFrames.back(), box);
    } else {
      Overlay(m_layout->GetFrame(next->GetFrameSet(), static_cast<std::int32_t>(frame)), box);
    }
  }

  void DrawTimeLine(std::int64_t t) {
    const std::int64_t ct = TennisShots(m_shots).ClipTime(t);
    Overlay(m_resources.timeLine, m_layout->GetTimeLineRect());
    Overlay(m_resources.timeTop, m_layout->GetTimeMarkerRect(0, 10000, 14));
    std::int32_t current = -1;
    for (const TennisShot& shot : m_shots) {
      const auto d = static_cast<std::int64_t>(shot.time * 1000 - static_cast<double>(ct));
      if (d >= -500 && d <= 0) {
        current = shot.strokeClass;
      } else if (d >= 1 && d <= 10000) {
        Overlay(Pictogram(shot.strokeClass), m_layout->GetTimeMarkerRect(d, 10000, 10));
      }
    }
    const XpDateTime start = m_info.tennisMetaInfo.originalDateTime;
    XpDateTime end = start;
    end.AddMinutesSeconds(0, static_cast<std::int32_t>(m_info.tennisMetaInfo.duration));
    const XpString date = start.FormatDate(0);
    const XpString span =
        start.IsValid() ? start.FormatTime(1, false) + u" - " + end.FormatTime(1, false) : XpString();
    const std::int32_t top = m_layout->GetDateRect().top + m_layout->ScaleY(10);
    const Font& font = m_layout->GetLabelFont();
    const auto place = [&](const XpString& text, std::int32_t left, std::uint32_t format) {
      const Rect r = Calc(text, font, m_layout->GetDateLeftRect(), format);
      return Rect{left, top, left + W(r), top + H(r)};
    };
    const Rect l = place(date, m_layout->GetDateLeftRect().left, kDateFormat);
    Text(date, font, m_layout->GetDateColor(), l, kDateFormat);
    Text(span, font, m_layout->GetDateColor(), place(span, l.right + m_layout->ScaleX(20), kSpanFormat),
         kSpanFormat);
    if (current != -1) Overlay(Pictogram(current), m_layout->GetTimeMarkerRect(0, 10000, 10));
  }
  const PainterPicture& Pictogram(std::int32_t strokeClass) const {
    const TennisMetaResource& r = m_resources;
    const PainterPicture* pictures[] = {
        &r.forehandSpinFlat, &r.forehandSlice,  &r.forehandVolley, &r.backhandSpinFlat,
        &r.backhandSlice,    &r.backhandVolley, &r.smash,          &r.serve};
    return *pictures[strokeClass];
  }

  const PainterInfo& m_info;
  const TennisMetaResource& m_resources;
  std::unique_ptr<KVSTennisMetaPainterLayoutBase> m_layout;
  std::int32_t m_unit;
  XpPixmap32& m_target;
  drawing::Canvas m_canvas;
  drawing::BoxTextRenderer m_boxes;
  std::vector<TennisShot> m_shots;
  std::int64_t m_p = 0;
};

}  // namespace vrx::overlay
