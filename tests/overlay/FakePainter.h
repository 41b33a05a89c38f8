// A painter for tests: marks the pixmap with its colour and keeps a record of what it was asked.
#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "overlay/painter/IKVSDynamicInfoPainter.h"

class FakePainter : public KVSPainterPlugInBase {
 public:
  FakePainter(std::int32_t type, std::vector<std::string>& journal) : m_journal(journal) {
    painterType = type;
  }
  bool SetPainterInfo(const PainterInfo*, const PainterInfoBase*) override { return Note("info"); }
  bool Draw(std::int64_t, std::int64_t, std::int64_t, PixmapHolder&) override { return Note("draw"); }
  bool DrawForVideo(std::int32_t videoId, std::int64_t, std::int64_t, std::int64_t captionMs,
                    PixmapHolder& holder) override {
    Note("video");
    const auto content = static_cast<std::uint32_t>(captionMs / kPeriodMs);
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
  void SetOutputSize(std::int32_t, std::int32_t) override {}
  void SetVideoLayout(std::int32_t, std::int32_t) override {}
  void SetMode(std::uint32_t) override {}
  PainterStamp GetContentStamp(const PainterTimes& times) override {
    return {.isKnown = knowsContent, .content = static_cast<std::uint64_t>(times.captionMs / kPeriodMs)};
  }

  bool drawable = true;
  bool knowsContent = true;

 private:
  static constexpr std::int64_t kPeriodMs = 1000;  // the picture changes once in it
  bool Note(const std::string& what) {
    m_journal.push_back(std::to_string(painterType) + what);
    return true;
  }
  std::vector<std::string>& m_journal;
};

/// A manager whose painters of the kinds 0, 1 and 3 are fakes.
class FakePaintersTest : public testing::Test {
 protected:
  FakePaintersTest() {
    PainterMakers makers;
    for (const std::int32_t type : {0, 1, 3}) {
      makers[static_cast<std::size_t>(type)] = [this, type] {
        return std::make_unique<FakePainter>(type, journal);
      };
    }
    IKVSDynamicInfoPainter* made = nullptr;
    EXPECT_TRUE(CreateDynamicInfoPainter(&made, makers));
    painters.reset(made);
  }
  FakePainter& Painter(std::int32_t id) { return *static_cast<FakePainter*>(painters->GetPainter(id)); }

  struct Release {
    void operator()(IKVSDynamicInfoPainter* manager) const { manager->Release(); }
  };
  std::vector<std::string> journal;
  std::unique_ptr<IKVSDynamicInfoPainter, Release> painters;
};
