// A painter for tests: marks the pixmap with its colour and keeps a record of what it was asked.
#pragma once

#include <string>
#include <vector>

#include "overlay/painter/KVSPainterPlugInBase.h"

class FakePainter : public KVSPainterPlugInBase {
 public:
  explicit FakePainter(std::int32_t type, std::vector<std::string>* journal) : m_journal(journal) {
    painterType = type;
  }
  bool SetPainterInfo(const PainterInfo*, const PainterInfoBase*) override { return Note("info"); }
  bool Draw(std::int64_t, std::int64_t, std::int64_t, PixmapHolder&) override { return Note("draw"); }
  bool DrawForVideo(std::int32_t videoId, std::int64_t, std::int64_t, std::int64_t captionMs,
                    PixmapHolder& holder) override {
    Note("video");
    const auto content = static_cast<std::uint32_t>(captionMs / periodMs);
    for (std::uint32_t i = 0; i < holder->size && content % 3 != 0; i += 4 * (2 + content)) {
      holder->data[i] = static_cast<unsigned char>(content + static_cast<std::uint32_t>(videoId));
      holder->data[i + 3] = 200;
    }
    return false;
  }
  void SetClipDateTime(std::uint32_t, std::uint32_t, std::uint32_t) override {}
  void SetClipRange(double, double, std::int32_t) override {}
  bool IsDrawable() const override { return drawable; }
  void Configure(const PainterInfo*, const PainterInfoBase*) override {}
  void SetOutputSize(std::int32_t, std::int32_t) override { Note("size"); }
  void SetVideoLayout(std::int32_t, std::int32_t) override {}
  void SetMode(std::uint32_t) override { Note("mode"); }
  PainterStamp GetContentStamp(const PainterTimes& times) override {
    return {.isKnown = knowsContent, .content = static_cast<std::uint64_t>(times.captionMs / periodMs)};
  }

  bool drawable = true;
  bool knowsContent = true;
  std::int64_t periodMs = 1000;  // the picture changes once in it

 private:
  bool Note(const std::string& what) {
    m_journal->push_back(std::to_string(painterType) + what);
    return true;
  }
  std::vector<std::string>* m_journal;
};

struct PaintersRelease {
  template <class T>
  void operator()(T* painters) const {
    painters->Release();
  }
};
