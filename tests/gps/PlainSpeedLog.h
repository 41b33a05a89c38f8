// Draws a frame of the speed graph in the plain way: all points are walked, everything afresh, pixel after
// pixel. The product, which walks what is seen and keeps what does not change, has to give the same pixels.
#pragma once

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "drawing/BoxTextRenderer.h"
#include "drawing/PictureScaler.h"
#include "gps/speedlog/SpeedLogCanvas.h"
#include "imaging/pixmap/XpPixmapOverlay.h"

namespace vrx::gps {

class PlainSpeedLog {
 public:
  std::int32_t width = 422, height = 175, viewTime = 100, position = 50;
  bool linked = false;

  void AddClip(const KVUGPSInfoList& list, std::int32_t id, double& acc, double start, double end) {
    Layout(m_clips[id], list, acc, false, start, end);
  }
  void SetWhole(const KVUGPSInfoList& list) {
    double acc = 0;
    Layout(m_whole, list, acc, true, 0, 0);
  }

  void Draw(const drawing::Rect& rect, double time, const SpeedLogLook& look, XpPixmap32& target) {
    const Record* record = Find(time);
    if (record == nullptr) return;
    m_look = look;
    const double atKey = std::trunc(time / 1000);
    const auto sample = record->samples.find(static_cast<std::uint32_t>(atKey));
    const bool atSample = atKey >= 0 && sample != record->samples.end() && sample->second.valid;
    const bool inRange = !(time < record->firstMs);
    const double t = inRange ? time - record->firstMs : 0.0;
    const int rectWidth = rect.right - rect.left, rectHeight = rect.bottom - rect.top;
    s = static_cast<double>(rectWidth) / width;
    pps = record->pps;
    const double view = width / pps;
    W = Int(width * s);
    Hc = Int(height * s);
    graph = height - 45;
    H = Int(s * graph);
    const double anchor = position * view / 100, tSec = t / 1000;
    const int lead = tSec < anchor ? Int((anchor - tSec) * pps) : 0;
    const int scroll = tSec < anchor ? 0 : Int((tSec - anchor) * pps);
    const double d = t - position * view * 1000 / 100;
    ASSERT_EQ(m_canvas.Allocate(W, Hc), XpOk);
    m_on.Bind(m_canvas.GetBitmapHandle());
    if (lead > 0) {
      DrawScale(lead, record->firstMs / 1000);
    } else {
      DrawScale(Int(Int(d / 1000) * pps) - Int(d * pps / 1000),
                Int((record->firstMs + t - position * view * 1000 / 100) / 1000));
    }
    DrawCurve(*record, scroll, lead, inRange);
    if (atSample && m_found) Mark(Int(position * width / 100 * s), m_cursorY, m_look.positionMarker);
    OverlaySmoothPixmap(target, rect.left, rect.top, rectWidth, rectHeight, m_canvas, W, Hc);
  }

 private:
  struct Sample {
    double speed;
    bool valid;
  };
  struct Vertex {
    int x, y;
    bool valid;
  };
  struct Record {
    double pps = 0, start = 0, end = 0;
    std::uint32_t firstMs = 0;
    std::map<std::uint32_t, Sample> samples;
    std::vector<Vertex> points;
  };

  /// The 1 enlarges nothing on a small frame.
  int Length(int length) const { return Int(std::min(length * std::max(s, 1.0), length * s + 1)); }
  static int Int(double value) { return static_cast<int>(value); }

  void Layout(Record& record, const KVUGPSInfoList& list, double& acc, bool whole, double start, double end) {
    record = {};
    for (std::size_t i = 0; i < list.size(); ++i) {
      if (list[i].kind == 1 || list[i].kind == 3) continue;
      record.samples[static_cast<std::uint32_t>(i)] = {list[i].speed,
                                                       list[i].status != 0 || list[i].kind == 4};
    }
    if (!record.samples.empty()) record.firstMs = record.samples.begin()->first * 1000;
    record.start = acc;
    record.end = acc = end - start + acc;
    double fastest = -1;
    for (const auto& [key, sample] : record.samples) {
      if (sample.valid) fastest = std::max(fastest, sample.speed);
    }
    const double perPixel = fastest / (height - 45 - 10);
    record.pps = static_cast<double>(width) / viewTime;
    int n = 0;
    for (const auto& [key, sample] : record.samples) {
      if (whole || (start / 1000 <= n && n <= end / 1000)) {
        const int y = sample.speed > 0 && perPixel > 0 ? Int(sample.speed / perPixel) : 0;
        record.points.push_back(
            {Int(static_cast<double>(record.points.size()) * record.pps), y, sample.valid});
      }
      ++n;
    }
  }

  const Record* Find(double& time) const {
    if (linked) return &m_whole;
    if (m_clips.empty()) return nullptr;
    const double t = time + 0.0001;
    const Record* last = nullptr;
    for (const auto& [id, record] : m_clips) {
      if (last == nullptr || record.start >= last->start) last = &record;
    }
    for (const auto& [id, record] : m_clips) {
      if (record.start <= t && t <= record.end) {
        last = &record;
        break;
      }
    }
    time = t - last->start;
    return last;
  }

  int A(int x) const {
    const int half = W / 2;
    return std::max(0, 255 - 4 * std::max(0, std::abs(x - half) - (half - 64)));
  }
  unsigned char* At(int x, int y) const { return m_canvas.GetPlane(0)->Row(y) + x * 4; }
  static unsigned char Byte(int value) { return static_cast<unsigned char>(value); }

  void Lay(const PainterPicture& picture, int left, int top, int w, int h) {
    if (!picture || w < 1 || h < 1) return;
    const auto scaled = drawing::ScalePicture(*picture, w, h);
    const auto* same = dynamic_cast<const XpPixmap32*>(picture.Get());
    if (same->width != w || same->height != h) same = scaled.get();
    OverlaySmoothPixmap(m_canvas, left, top, w, h, *same, w, h);
  }
  void Mark(int x, int y, const PainterPicture& picture) {
    if (!picture) return;
    const int w = Length(picture->width);
    const int h = Length(picture->height);
    y = std::max({y, Length(5), h / 2});
    Lay(picture, x - w / 2, y - h / 2, w, h);
  }
  void Limit(int left, int right, int top, int bottom) {
    for (int y = std::max(top, 0); y <= std::min(bottom, Hc - 1); ++y) {
      for (int x = std::max(left, 0); x <= std::min(right, W - 1); ++x)
        At(x, y)[3] = Byte(std::min<int>(At(x, y)[3], A(x)));
    }
  }

  void DrawScale(int offset, int second) {
    const drawing::Font font{.face = u"Face", .height = -Int(24 * s)};
    const drawing::Size text = m_boxes.Measure(u"00:00:00", font, W, 0x800);
    const int labelTop = Int(Hc - Int(text.height + 3 * s) + 8 * s);
    const PainterPicture &major = m_look.scale1, &minor = m_look.scale2;
    const int majorWidth = major ? Length(major->width) : 0;
    const int majorHeight = Length(graph + 4);
    const int minorWidth = minor ? Length(minor->width) : 0;
    const int minorHeight = minor ? Length(minor->height) : 0;
    const int rowLimit = Int((graph + 4) * s), minorTop = Int((graph - 10) * s),
              bandBottom = Int((graph + 10) * s);
    double x = s * offset;
    while (x > 0 && second > 0) {
      --second;
      x -= pps * s;
    }
    for (; Int(x) < W + text.width / 2; ++second, x += pps * s) {
      const int xi = Int(x);
      if (second % 30 == 0) {
        Lay(major, xi - majorWidth / 2, 0, majorWidth, majorHeight);
        if (major) Limit(xi - majorWidth / 2, xi + majorWidth, 0, rowLimit - 1);
        if (second % 60 != 0) continue;
        char label[32];
        std::snprintf(label, sizeof label, "%02d:%02d:%02d", second / 3600, second / 60 % 60, second % 60);
        const int left = xi - text.width / 2;
        m_boxes.Draw(m_on, XpNarrowString(label).ToWide().AsView(), font, m_look.labelColor,
                     {left, labelTop, left + text.width, Hc}, 0x800);
      } else if (second % 6 == 0) {
        Lay(minor, xi - minorWidth / 2, minorTop, minorWidth, minorHeight);
        if (minor) Limit(xi - majorWidth / 2, xi + minorWidth, minorTop, rowLimit);
      }
    }
    for (int row = rowLimit; row < Hc; ++row) {
      for (int column = 0; column < W; ++column) {
        unsigned char* p = At(column, row);
        if (row < bandBottom) p[0] = p[1] = p[2] = 0x80;
        p[3] = Byte(row < bandBottom ? A(column) : p[3] * A(column) / 255);
      }
    }
  }

  /// Pens change colours, not the alpha, of what is no part of the graph.
  void Stroke(const std::vector<drawing::Point>& line) {
    if (line.empty()) return;
    XpPixmap32 before;
    ASSERT_EQ(before.Allocate(W, Hc), XpOk);
    std::memcpy(before.data, m_canvas.data, before.size);
    m_on.DrawPolyline(line, {0x202020, std::max(Int(10 * s), 3)});
    m_on.DrawPolyline(line, {0xF0F0F0, std::max(Int(6 * s), 1)});
    for (int row = Int((graph + 4) * s); row < Hc; ++row) {
      for (int x = 0; x < W; ++x) At(x, row)[3] = (before.GetPlane(0)->Row(row) + x * 4)[3];
    }
  }

  void DrawCurve(const Record& record, int scroll, int lead, bool inRange) {
    const int cursorX = (W - 1) * position / 100, rowLimit = Int((graph + 4) * s);
    m_found = false;
    std::vector<drawing::Point> line;
    drawing::Point previous, start, goal;
    bool hasPrevious = false, hasStart = false, hasGoal = false;
    for (std::size_t i = 0; i < record.points.size(); ++i) {
      const Vertex& v = record.points[i];
      if (!v.valid) {
        hasPrevious = false;
        Stroke(line);
        line.clear();
        continue;
      }
      const drawing::Point p{Int((v.x - scroll + lead) * s), Int((graph - v.y) * s)};
      if (p.x == cursorX) {
        m_cursorY = p.y;
        m_found = true;
      } else if (hasPrevious && previous.x < cursorX && cursorX < p.x) {
        m_cursorY = previous.y + (p.y - previous.y) * (cursorX - previous.x) / (p.x - previous.x);
        m_found = true;
      }
      if (p.x >= 0 || previous.x >= 0) {
        if (hasPrevious) {
          if (line.empty()) line.push_back(previous);
          line.push_back(p);
        }
        if (i == 0) {
          start = p;
          hasStart = true;
        }
      }
      if (previous.x > std::max(width, W)) break;
      if (i + 1 == record.points.size()) {
        goal = p;
        hasGoal = true;
      }
      previous = p;
      hasPrevious = true;
    }
    Stroke(line);
    const auto gradient = [&](int row, int c) {
      return c == 0 ? 45 - 20 * row / H : c == 1 ? 89 + 139 * row / H : 255;
    };
    const auto isGrey = [](const unsigned char* p, int grey) {
      return p[0] == grey && p[1] == grey && p[2] == grey;
    };
    for (int x = 0; x < W; ++x) {
      int lineRow = 0;
      bool fill = false;
      for (int y = 0; y < rowLimit; ++y) {
        unsigned char* p = At(x, y);
        if (isGrey(p, 0x20)) {
          p[3] = Byte(Int(A(x) * 0.9));
        } else if (isGrey(p, 0xF0)) {
          if (lineRow == 0) lineRow = y + 1;
          for (int c = 0; c < 3; ++c) p[c] = Byte(x > cursorX ? 0xFE : gradient(lineRow, c));
          p[3] = Byte(x > cursorX ? Int(A(x) * 0.7) : A(x));
          fill = fill || (x <= cursorX && inRange);
        } else if (fill) {
          const int fade = std::max(0, 255 * (H - y) / H);
          const bool isFree = p[0] == 0 || p[1] == 0 || p[2] == 0;
          for (int c = 0; c < 3; ++c)
            p[c] = Byte(isFree ? gradient(y, c) : gradient(y, c) * fade / 255 + p[c] * (255 - fade) / 255);
          p[3] = Byte(isFree ? fade : 255);
        }
      }
    }
    if (hasStart) Mark(start.x, start.y, m_look.startMarker);
    if (hasGoal) Mark(goal.x, goal.y, m_look.goalMarker);
    for (int x = 0; x < W; ++x) {
      for (int y = 0; y < rowLimit; ++y) {
        unsigned char* p = At(x, y);
        if (p[0] != 0 || (p[1] != 0 && p[2] != 0)) p[3] = Byte(std::min<int>(p[3], Int(A(x) * 0.9)));
      }
    }
  }

  Record m_whole;
  std::map<std::int32_t, Record> m_clips;
  SpeedLogLook m_look;
  XpPixmap32 m_canvas;
  drawing::Canvas m_on;
  drawing::BoxTextRenderer m_boxes;
  double s = 1, pps = 0;
  int W = 0, Hc = 0, graph = 0, H = 0, m_cursorY = 0;
  bool m_found = false;
};

}  // namespace vrx::gps
