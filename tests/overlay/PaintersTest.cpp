// Painters are made once a kind, configured, and drawn from the lowest layer to the highest. What they drew
// is blended over the frame by its alpha, the right way up, whether it was drawn again or kept.
#include <array>
#include <cstring>
#include <random>
#include <set>

#include <gmock/gmock.h>

#include "foundation/registry/SfRegistry.h"
#include "overlay/callback/BlendOverlay.h"
#include "overlay/callback/DrawnArea.h"
#include "overlay/callback/VRXIntermediateRawOutputCallback.h"
#include "overlay/painter/IKVSDynamicInfoPainter.h"
#include "overlay/painter/TextResolution.h"
#include "tests/foundation/ScopedVariable.h"
#include "tests/support/TempFolder.h"

namespace {

using testing::ElementsAre;
using vrx::overlay::BlendOverlay;
using vrx::overlay::DrawnArea;
using vrx::overlay::PainterClock;
using vrx::overlay::PainterKind;
using vrx::overlay::PainterRange;
using vrx::overlay::RecordOf;
using Bytes = std::vector<unsigned char>;

/// Marks the pixmap with its colour and keeps a record of what it was asked.
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
    s_journal = &journal;
    IKVSDynamicInfoPainter* made = nullptr;
    EXPECT_TRUE(CreateDynamicInfoPainter(&made, kKinds, {}));
    painters.reset(made);
  }
  FakePainter& Painter(std::int32_t id) { return *static_cast<FakePainter*>(painters->GetPainter(id)); }

  template <std::int32_t type>
  static std::unique_ptr<KVSPainterPlugInBase> Make(const vrx::overlay::PainterTools&) {
    return std::make_unique<FakePainter>(type, *s_journal);
  }
  static constexpr std::array<PainterKind, 4> kKinds{
      PainterKind{1, nullptr, RecordOf<&PainterInfo::templateInfo>, PainterClock::Gps, PainterRange::Template,
                  Make<1>},
      {2, nullptr, RecordOf<&PainterInfo::tennisMetaInfo>, PainterClock::Tennis, PainterRange::Template,
       nullptr},
      {3, nullptr, RecordOf<&PainterInfo::captionInfo>, PainterClock::Caption, PainterRange::Captions,
       Make<3>},
      {0, nullptr, RecordOf<&PainterInfo::contentImageInfo>, PainterClock::None, PainterRange::None,
       Make<0>}};

  struct Release {
    void operator()(IKVSDynamicInfoPainter* manager) const { manager->Release(); }
  };
  static inline std::vector<std::string>* s_journal = nullptr;  // that of the test which runs
  std::vector<std::string> journal;
  std::unique_ptr<IKVSDynamicInfoPainter, Release> painters;
};

class PainterManagerTest : public FakePaintersTest {
 protected:
  PainterManagerTest() { EXPECT_EQ(holder->Allocate(4, 4), XpOk); }
  std::vector<std::string> DrawAll() {
    journal.clear();
    EXPECT_TRUE(painters->DrawAllForVideo(0, 0, 0, 0, holder));
    return journal;
  }

  PixmapHolder holder{new XpPixmap32};
  std::int32_t id = -7;
};

TEST_F(PainterManagerTest, EnabledPaintersDrawInTheOrderOfTheirLayers) {
  for (const std::int32_t type : {-1, 2, 4, INT32_MAX, INT32_MIN}) {
    EXPECT_FALSE(painters->CreatePainter(id, type, 1)) << type << ", a kind without a painter";
  }
  EXPECT_EQ(id, -7);
  ASSERT_TRUE(painters->CreatePainter(id, 3, 5));
  ASSERT_TRUE(painters->CreatePainter(id, 0, 1));
  ASSERT_TRUE(painters->CreatePainter(id, 1, 1));
  EXPECT_EQ(id, 2);
  EXPECT_FALSE(painters->IsAnyDrawable());
  for (std::int32_t i = 0; i < 3; ++i) EXPECT_TRUE(painters->EnablePainter(i, true));
  EXPECT_THAT(DrawAll(), ElementsAre("0video", "1video", "3video"));
  painters->EnablePainter(1, false);
  EXPECT_THAT(DrawAll(), ElementsAre("1video", "3video"));
  PixmapHolder empty;
  EXPECT_FALSE(painters->DrawAllForVideo(0, 0, 0, 0, empty));
  EXPECT_TRUE(painters->DrawPainter(1, 0, 0, 0, holder));
  EXPECT_FALSE(painters->DrawPainter(1, 0, 0, 0, empty));
  EXPECT_FALSE(painters->DrawPainter(9, 0, 0, 0, holder));
  Painter(0).drawable = false;
  EXPECT_TRUE(painters->IsAnyDrawable());
  Painter(2).drawable = false;
  EXPECT_FALSE(painters->IsAnyDrawable());
}

TEST_F(PainterManagerTest, ConfigurationMakesEachPainterOnce) {
  painters->SetPainterInfo(nullptr);
  PainterInfo info;
  painters->SetPainterInfo(&info);
  EXPECT_EQ(painters->GetPainter(0), nullptr);
  EXPECT_THAT(DrawAll(), ElementsAre());
  info.captionInfo.valid = info.templateInfo.valid = info.tennisMetaInfo.valid = info.contentImageInfo.valid =
      true;
  journal.clear();
  painters->SetPainterInfo(&info);
  painters->SetPainterInfo(&info);
  EXPECT_THAT(journal, ElementsAre("1info", "3info", "1info", "3info"));
  EXPECT_EQ(painters->FindPainterByType(3), painters->GetPainter(1));
  info.captionInfo.valid = false;
  painters->SetPainterInfo(&info);
  EXPECT_THAT(DrawAll(), ElementsAre("1video", "3video"));  // stays enabled

  painters->ClearPainters();
  EXPECT_EQ(painters->FindPainterByType(3), nullptr);
  ASSERT_TRUE(painters->CreatePainter(id, 3, 1));
  EXPECT_EQ(id, 2);
}

TEST_F(PainterManagerTest, VideoPlacesFollowLayoutSizeAndOutput) {
  using vrx::drawing::Rect;
  painters->SetOutputSize(1280, 720);
  Rect rect;
  painters->SetVideoLayout(2, 0);
  EXPECT_TRUE(painters->GetVideoRect(1, rect, true));
  EXPECT_EQ(rect, (Rect{986, 543, 1253, 693}));
  painters->SetVideoLayout(2, 2);
  EXPECT_TRUE(painters->GetVideoRect(1, rect, false));
  EXPECT_EQ(rect, (Rect{1280, 702, 1880, 1040}));
  bool hasSizes = true;
  for (const std::int32_t unknown : {16, 99}) {
    painters->SetVideoLayout(unknown, 0);
    EXPECT_TRUE(painters->GetVideoRect(0, rect, true));
    EXPECT_EQ(rect, (Rect{1280, 702, 1880, 1040})) << "stays as it is";
    EXPECT_FALSE(painters->GetVideoLayoutFlag(hasSizes));
    EXPECT_TRUE(hasSizes);
  }
  painters->SetVideoLayout(7, 0);
  EXPECT_TRUE(painters->GetVideoRect(9, rect, true));
  EXPECT_TRUE(painters->GetVideoLayoutFlag(hasSizes));
  EXPECT_FALSE(hasSizes);
}

constexpr std::int32_t kWidth = 37;
constexpr std::int32_t kHeight = 11;
constexpr std::uint32_t kFrameBytes = kWidth * kHeight * 4;

class CallbackTest : public FakePaintersTest {
 protected:
  CallbackTest() {
    info.captionInfo.valid = true;
    painters->SetPainterInfo(&info);
  }
  OverlayContext Context() { return {kWidth, kHeight, {1, 10}, &info, painters.get(), kKinds}; }

  /// The frame after a picture of its own was made for it.
  Bytes PlainFrame(std::uint64_t frame) {
    PixmapHolder holder(new XpPixmap32);
    holder->Allocate(kWidth, kHeight);
    const std::size_t noted = journal.size();
    painters->DrawAllForVideo(0, 0, 0, VRXCaptionTimeGenerate().Generate(frame, {1, 10}), holder);
    journal.resize(noted);
    Bytes bytes(kFrameBytes, 50);
    BlendOverlay(*holder, bytes.data(), kFrameBytes);
    return bytes;
  }

  /// The rows that the callback names begin and end with the changed ones. The frame has its bottom row
  /// first.
  static void ExpectChangedRows(const VRXIntermediateRawOutputCallback& callback, const Bytes& bytes) {
    std::int32_t first = kHeight, end = 0, namedFirst = -1, namedEnd = -1;
    for (std::int32_t row = 0; row < kHeight; ++row) {
      const auto begin = bytes.begin() + (kHeight - 1 - row) * kWidth * 4;
      if (std::all_of(begin, begin + kWidth * 4, [](unsigned char byte) { return byte == 50; })) continue;
      first = std::min(first, row);
      end = row + 1;
    }
    callback.GetChangedRows(namedFirst, namedEnd);
    if (end == 0) {
      EXPECT_GE(namedFirst, namedEnd);
    } else {
      EXPECT_EQ(std::pair(namedFirst, namedEnd), std::pair(first, end));
    }
  }

  /// What the callback says it drew gives the same frame.
  static void ExpectDrawing(const VRXIntermediateRawOutputCallback& callback, const Bytes& bytes) {
    Bytes laid(kFrameBytes, 50);
    if (const std::uint32_t* drawing = callback.GetDrawing()) {
      XpPixmap32 picture;
      ASSERT_EQ(picture.Allocate(kWidth, kHeight), XpOk);
      std::memcpy(picture.data, drawing, kFrameBytes);
      BlendOverlay(picture, laid.data(), kFrameBytes);
    }
    EXPECT_EQ(laid, bytes);
  }

  PainterInfo info;
};

TEST_F(CallbackTest, KeptOverlaysEqualFreshOnesBitForBit) {
  for (const bool knowsContent : {true, false}) {
    Painter(0).knowsContent = knowsContent;
    VRXIntermediateRawOutputCallback callback(Context());
    callback.ResetTimeGenerators({});
    journal.clear();
    for (std::uint64_t frame = 0; frame < 95; ++frame) {
      Bytes bytes(kFrameBytes, 50);
      ASSERT_TRUE(callback.ProcessFrame(frame, bytes.data(), kFrameBytes, 2, 5));
      ASSERT_EQ(bytes, PlainFrame(frame)) << frame;
      ExpectChangedRows(callback, bytes);
      ExpectDrawing(callback, bytes);
    }
    EXPECT_EQ(journal.size(), knowsContent ? 10u : 95u);
  }
}

/// Shows its times in the picture's first bytes.
class TimesPainter final : public FakePainter {
 public:
  using FakePainter::FakePainter;
  bool DrawForVideo(std::int32_t videoId, std::int64_t gpsMs, std::int64_t tennisMs, std::int64_t,
                    PixmapHolder& holder) override {
    const std::int32_t shown[] = {videoId, static_cast<std::int32_t>(gpsMs),
                                  static_cast<std::int32_t>(tennisMs)};
    std::memcpy(holder->data, shown, sizeof shown);
    return true;
  }
  PainterStamp GetContentStamp(const PainterTimes&) override { return {}; }
};

TEST_F(CallbackTest, FrameAfterSkippedOnesShowsWhatItShowsInTheMovie) {
  const auto make = [](const vrx::overlay::PainterTools&) -> std::unique_ptr<KVSPainterPlugInBase> {
    return std::make_unique<TimesPainter>(KVSPainterTennisMeta, *s_journal);
  };
  const std::array kinds{PainterKind{1, nullptr, RecordOf<&PainterInfo::templateInfo>, PainterClock::Gps,
                                     PainterRange::Template, nullptr},
                         PainterKind{KVSPainterTennisMeta, nullptr, RecordOf<&PainterInfo::tennisMetaInfo>,
                                     PainterClock::Tennis, PainterRange::Template, make}};
  IKVSDynamicInfoPainter* made = nullptr;
  ASSERT_TRUE(CreateDynamicInfoPainter(&made, kinds, {}));
  painters.reset(made);
  info.templateInfo.valid = info.tennisMetaInfo.valid = true;
  info.templateInfo.drawEndTime = 9;
  painters->SetPainterInfo(&info);
  // Half speed from 1 to 3 s, backwards to 4 s, then as recorded; the range begins with frame 5.
  const std::vector<SlowInfoRecord> sections{{1, 1, 0, 1, 0, 0}, {2, 0.5, 1, 3, 1, 1}, {3, -1, 3, 4, 2, 2}};
  OverlayContext context = Context();
  context.kinds = kinds;
  const auto shown = [&](VRXIntermediateRawOutputCallback& callback, std::uint64_t frame) {
    Bytes bytes(kFrameBytes);
    EXPECT_TRUE(callback.ProcessFrame(frame, bytes.data(), kFrameBytes, 2, 5));
    return Bytes(callback.GetOverlay()->data, callback.GetOverlay()->data + 12);
  };
  VRXIntermediateRawOutputCallback movie(context);
  movie.ResetTimeGenerators(sections);
  std::set<Bytes> different;
  for (std::uint64_t frame = 5; frame < 100; ++frame) {
    VRXIntermediateRawOutputCallback single(context);
    single.ResetTimeGenerators(sections);
    single.SkipFrames(5, frame);
    const Bytes times = shown(movie, frame);
    EXPECT_EQ(shown(single, frame), times) << frame;
    different.insert(times);
  }
  EXPECT_GT(different.size(), 50u);
}

TEST_F(CallbackTest, ChangedPaintersAreDrawnAgain) {
  VRXIntermediateRawOutputCallback callback(Context());
  Bytes bytes(kFrameBytes, 50);
  callback.ProcessFrame(10, bytes.data(), kFrameBytes, 2, 5);
  EXPECT_NE(bytes, Bytes(kFrameBytes, 50));
  painters->EnablePainter(0, false);
  bytes.assign(kFrameBytes, 50);
  EXPECT_TRUE(callback.ProcessFrame(11, bytes.data(), kFrameBytes, 2, 5));
  EXPECT_EQ(bytes, Bytes(kFrameBytes, 50));
  ExpectChangedRows(callback, bytes);
}

TEST_F(CallbackTest, RefusesForeignFormatsAndUnusableSizes) {
  VRXIntermediateRawOutputCallback callback(Context());
  Bytes bytes(kFrameBytes, 50);
  EXPECT_TRUE(callback.ProcessFrame(10, nullptr, kFrameBytes, 2, 5));
  EXPECT_NE(callback.GetDrawing(), nullptr);
  EXPECT_FALSE(callback.ProcessFrame(10, bytes.data(), kFrameBytes, 1, 5));
  EXPECT_EQ(callback.GetDrawing(), nullptr);
  EXPECT_FALSE(callback.ProcessFrame(10, bytes.data(), kFrameBytes, 2, 4));
  for (const std::int32_t side : {0, 1 << 30}) {
    OverlayContext unusable = Context();
    unusable.width = unusable.height = side;
    VRXIntermediateRawOutputCallback refusing(unusable);
    EXPECT_FALSE(refusing.ProcessFrame(10, bytes.data(), kFrameBytes, 2, 5)) << side;
  }
  EXPECT_FALSE(VRXIntermediateRawOutputCallback({}).ProcessFrame(10, bytes.data(), kFrameBytes, 2, 5));
  EXPECT_TRUE(callback.ProcessFrame(10, bytes.data(), kWidth * kHeight - 1, 2, 5));  // too small to touch
  EXPECT_TRUE(callback.ProcessFrame(10, nullptr, kFrameBytes, 2, 5));
  BlendOverlay(XpPixmap32(), bytes.data(), kFrameBytes);
  info.captionInfo.valid = false;
  EXPECT_TRUE(callback.ProcessFrame(10, bytes.data(), kFrameBytes, 2, 5));
  EXPECT_EQ(callback.GetDrawing(), nullptr);
  EXPECT_EQ(bytes, Bytes(kFrameBytes, 50));
}

/// The rule, pixel by pixel.
void PlainBlend(const XpPixmap32& overlay, Bytes& frame, int pixelBytes) {
  for (int row = 0; row < overlay.height; ++row) {
    for (int x = 0; x < overlay.width; ++x) {
      const unsigned char* s = overlay.data + ((overlay.height - 1 - row) * overlay.width + x) * 4;
      unsigned char* d = frame.data() + (row * overlay.width + x) * pixelBytes;
      for (int c = 0; c < 3; ++c)
        d[c] = static_cast<unsigned char>((d[c] * (255 - s[3]) + s[c] * s[3]) / 255);
    }
  }
}

/// Mostly empty, as overlays are, with runs of all kinds of alpha.
void FillSparse(XpPixmap32& overlay, std::mt19937& random, int emptyInTen) {
  for (std::uint32_t i = 0; i < overlay.size;) {
    const std::uint32_t run = std::min(overlay.size - i, static_cast<std::uint32_t>(4 * (1 + random() % 40)));
    const bool isEmpty = static_cast<int>(random() % 10) < emptyInTen;
    for (std::uint32_t end = i + run; i < end; ++i) {
      const bool isAlpha = i % 4 == 3;
      const auto byte = static_cast<unsigned char>(isAlpha && random() % 3 == 0 ? 255 : random());
      overlay.data[i] = isEmpty ? 0 : byte;
    }
  }
}

TEST(TextResolutionTest, IsThatOfTheFrameUnlessTheUserAsksForTheOther) {
  using vrx::overlay::ChooseTextResolution, vrx::overlay::TextResolution;
  const TempFolder folder;
  const ScopedVariable registry("VRX_REGISTRY_DIR", folder.Path());
  EXPECT_EQ(ChooseTextResolution(), TextResolution::Frame);
  for (const std::uint32_t stored : {1u, 0u}) {
    SfRegistryOpenWrite(u"Common", u"Settings")->SetDword(u"StretchedText", stored);
    EXPECT_EQ(ChooseTextResolution(), stored == 1 ? TextResolution::Canvas : TextResolution::Frame);
  }
}

TEST(BlendOverlayTest, EqualsThePlainRuleForEverySizeAndPixel) {
  std::mt19937 random(7);
  for (const auto& [width, height] :
       {std::pair{1, 1}, {1, 7}, {3, 2}, {16, 4}, {17, 5}, {301, 5}, {640, 48}}) {
    for (const int pixelBytes : {3, 4, 5}) {
      for (const int emptyInTen : {0, 8, 10}) {
        XpPixmap32 overlay;
        ASSERT_EQ(overlay.Allocate(width, height), XpOk);
        FillSparse(overlay, random, emptyInTen);
        Bytes frame(static_cast<std::size_t>(width * height * pixelBytes));
        for (auto& byte : frame) byte = static_cast<unsigned char>(random());
        Bytes plain = frame;
        Bytes byArea = frame;
        PlainBlend(overlay, plain, pixelBytes);
        BlendOverlay(overlay, frame.data(), static_cast<std::uint32_t>(frame.size()));
        DrawnArea area;
        area.Find(overlay);
        BlendOverlay(overlay, area, byArea.data(), static_cast<std::uint32_t>(byArea.size()));
        EXPECT_EQ(frame, plain) << width << "x" << height << ", " << pixelBytes << " bytes";
        EXPECT_EQ(byArea, plain) << width << "x" << height << ", " << pixelBytes << " bytes";
      }
    }
  }
}

TEST(DrawnAreaTest, ClearingLeavesNothingBehind) {
  std::mt19937 random(3);
  for (const int emptyInTen : {0, 5, 9, 10}) {
    XpPixmap32 picture;
    ASSERT_EQ(picture.Allocate(301, 9), XpOk);
    FillSparse(picture, random, emptyInTen);
    // A colour without alpha is invisible, but a painter could build on it.
    picture.data[301 * 4 * 8 + 300 * 4] = emptyInTen < 10 ? 1 : 0;
    DrawnArea area;
    area.Find(picture);
    EXPECT_EQ(area.IsEmpty(), emptyInTen == 10);
    area.Clear(picture);
    EXPECT_TRUE(std::all_of(picture.data, picture.data + picture.size, [](auto byte) { return byte == 0; }));
    EXPECT_TRUE(area.IsEmpty());
  }
}

}  // namespace
