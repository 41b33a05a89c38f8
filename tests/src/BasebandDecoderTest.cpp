// GetFrame and the decoder thread, with pictures that a test makes, holds back or refuses.
#include <condition_variable>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "src/baseband/VRXWBasebandVideoObject.h"
#include "tests/foundation/ScopedVariable.h"
#include "tests/src/BasebandText.h"
#include "tests/support/TempFolder.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using vrx::imaging::StillImage;
using vrx::imaging::StillImageRequest;

constexpr int kWidth = 16;
constexpr int kHeight = 2;

/// Gives plain pictures whose brightness is the number that the file's name begins with, as a partial one
/// when it ends in ".part"; "bad" is refused and "held" comes only after Let.
class Pictures {
 public:
  VRXWBasebandHooks Hooks(std::uint32_t waitMilliseconds) {
    VRXWBasebandHooks hooks;
    hooks.waitMilliseconds = waitMilliseconds;
    hooks.reader.measure = [](const XpString&, const auto&, std::int32_t& width, std::int32_t& height,
                              XpString*) {
      width = kWidth;
      height = kHeight;
      return XpResult{XpOk};
    };
    hooks.reader.load = [this](const XpString& path, const StillImageRequest&, StillImage& image,
                               XpString* problem) { return Load(path, image, problem); };
    return hooks;
  }
  void Let() {
    const std::scoped_lock lock(m_mutex);
    m_let = true;
    m_changed.notify_all();
  }
  /// Returns once `count` pictures were asked for.
  void AwaitLoads(std::size_t count) {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [&] { return m_loads.size() >= count; });
  }
  std::vector<std::string> Loads() {
    const std::scoped_lock lock(m_mutex);
    return m_loads;
  }

 private:
  XpResult Load(const XpString& path, StillImage& image, XpString* problem) {
    const std::string full = path.ToNarrow().c_str();
    const std::string name = full.substr(full.rfind('/') + 1);
    {
      std::unique_lock lock(m_mutex);
      m_loads.push_back(name);
      m_changed.notify_all();
      if (name == "held") m_changed.wait(lock, [this] { return m_let; });
    }
    if (name == "bad") {
      *problem = u"it is bad";
      return XpErrInvalidFile;
    }
    image.pixmap = std::make_unique<XpPixmap24NoHandle>();
    image.pixmap->Allocate(kWidth, kHeight);
    std::memset(image.pixmap->data, name == "held" ? 99 : std::stoi(name), image.pixmap->size);
    image.fullWidth = kWidth;
    image.fullHeight = kHeight;
    image.isPartial = name.ends_with(".part");
    if (image.isPartial) *problem = u"it ends early";
    return XpOk;
  }

  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_let = false;
  std::vector<std::string> m_loads;
};

class BasebandDecoderTest : public testing::Test {
 protected:
  void SetUp() override { Make(60'000); }
  void Make(std::uint32_t waitMilliseconds) {
    object.emplace(kWidth, kHeight, VRXTimeInfo(1, 25), pictures.Hooks(waitMilliseconds));
  }
  IVRXRawInputCallback* Parse(const std::string& images) {
    const std::string name = std::to_string(m_documents++) + ".xml";
    EXPECT_EQ(object->Parse(XpNarrowString(folder.Write(name, BasebandText(images))).ToWide()), XpOk);
    return object->GetLastSource();
  }
  /// The picture's brightness, or -1 for none.
  static int Frame(IVRXRawInputCallback& source, std::uint64_t number) {
    std::vector<unsigned char> bytes(kWidth * kHeight * 3, 255);
    return source.GetFrame(number, bytes.data(), static_cast<std::uint32_t>(bytes.size())) ? bytes.back()
                                                                                           : -1;
  }
  /// What frames 0 to `last` show, one after the other.
  static std::vector<int> Frames(IVRXRawInputCallback& source, std::uint64_t last) {
    std::vector<int> shown;
    for (std::uint64_t frame = 0; frame <= last; ++frame) shown.push_back(Frame(source, frame));
    return shown;
  }
  /// A document with a picture a frame, from `first` on.
  static std::string Each(int first, int last) {
    std::string images;
    for (int n = first; n <= last; ++n) images += ImageText(n, std::to_string(n), n, n);
    return images;
  }
  std::string Log() {
    std::string log;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(m_home.Path())) {
      if (entry.path().extension() != ".log") continue;
      std::ifstream file(entry.path(), std::ios::binary);
      log.append(std::istreambuf_iterator<char>(file), {});
    }
    return log;
  }

  TempFolder folder;
  Pictures pictures;
  std::optional<VRXWBasebandVideoObject> object;

 private:
  TempFolder m_home;  // of the log
  ScopedVariable m_temporary{"TMPDIR", m_home.Path()};
  ScopedVariable m_registry{"VRX_REGISTRY_DIR", m_home.Path()};
  int m_documents = 0;
};

TEST_F(BasebandDecoderTest, CancelEndsTheWaitForAPictureAndLaterOnes) {
  IVRXRawInputCallback* source = Parse(ImageText(1, "held", 0, 9));
  pictures.AwaitLoads(1);
  std::thread cancels([&] { object->CancelWaits(); });
  EXPECT_EQ(Frame(*source, 0), -1);  // a wait that runs out takes a minute each time
  EXPECT_EQ(Frame(*source, 1), -1);
  cancels.join();
  pictures.Let();
}

TEST_F(BasebandDecoderTest, SpansShowTheirPicturesOnBothEndsAndFailuresShowNone) {
  // Of adjacent images of one id the first shows.
  Parse(ImageText(1, "10", 0, 0) + ImageText(1, "20", 1, 1) + ImageText(2, "bad", 2, 3) +
        ImageText(3, "30.part", 4, 5) + ImageText(1, "40", 6, 6));
  EXPECT_THAT(Frames(*object, 7), ElementsAre(10, 10, -1, -1, 30, 30, 40, -1));
  EXPECT_THAT(Log(), HasSubstr("bad is left out: it is bad"));
  EXPECT_THAT(Log(), HasSubstr("30.part is shown only in part: it ends early"));
  EXPECT_EQ(object->GetFormat(), 5u);
  unsigned char small[8];
  EXPECT_FALSE(Parse(Each(0, 0))->GetFrame(0, small, sizeof(small)));
}

TEST_F(BasebandDecoderTest, FrameOfALaterSpanSkipsThePicturesBetween) {
  Make(0);
  Parse(ImageText(0, "held", 0, 0) + Each(1, 59));
  pictures.AwaitLoads(1);
  EXPECT_EQ(Frame(*object, 50), -1);
  pictures.Let();
  while (Frame(*object, 50) != 50) std::this_thread::yield();
  EXPECT_EQ(object->GetCounts().skipped, 49u);
  EXPECT_EQ(Frame(*object, 3), -1) << "what is passed is gone";
}

TEST_F(BasebandDecoderTest, DecoderStaysElevenPicturesAheadAndNoMore) {
  Parse(Each(0, 29));
  pictures.AwaitLoads(11);
  EXPECT_EQ(pictures.Loads().size(), 11u);
  for (int n = 0; n < 30; ++n) EXPECT_EQ(Frame(*object, static_cast<std::uint64_t>(n)), n);
}

TEST_F(BasebandDecoderTest, LatePictureIsWaitedForOnceAndShownWhenItIsThere) {
  Make(0);
  Parse(ImageText(1, "held", 0, 1000) + ImageText(2, "20", 1001, 1002));
  for (std::uint64_t frame = 0; frame < 100; ++frame) EXPECT_EQ(Frame(*object, frame), -1);
  EXPECT_EQ(object->GetCounts().waits, 1u);
  EXPECT_THAT(Log(), HasSubstr("still image of frame 0 did not come in time"));
  EXPECT_EQ(Log().find("in time"), Log().rfind("in time")) << Log();
  pictures.Let();
  while (object->GetCounts().decoded == 0) std::this_thread::yield();
  EXPECT_EQ(Frame(*object, 100), 99);
}

TEST_F(BasebandDecoderTest, FrameWithoutASpanEndsItsOwnClipOnly) {
  const std::string same = ImageText(1, "10", 0, 1) + ImageText(2, "20", 4, 9);
  IVRXRawInputCallback* first = Parse(same);
  IVRXRawInputCallback* next = Parse(same);
  EXPECT_EQ(Frame(*first, 0), 10);
  EXPECT_EQ(Frame(*first, 3), -1);
  EXPECT_EQ(Frame(*first, 4), -1);
  EXPECT_EQ(Frame(*next, 4), 20);
  EXPECT_EQ(object->Parse(u"/no/such.xml"), XpErrBasebandDocument);
  EXPECT_EQ(object->GetLastSource()->GetStage(), 0u);
  EXPECT_THAT(Log(), HasSubstr("/no/such.xml: does not exist"));
}

TEST_F(BasebandDecoderTest, NewProjectShowsNothingOfTheOldOne) {
  Parse(ImageText(1, "10", 0, 9));
  EXPECT_EQ(Frame(*object, 0), 10);
  object->Restart(kWidth, kHeight, VRXTimeInfo(1, 25));
  EXPECT_EQ(Frame(*object, 1), -1);
  EXPECT_EQ(Parse(ImageText(1, "77", 0, 9)), &*object);
  EXPECT_EQ(Frame(*object, 0), 77);
}

TEST_F(BasebandDecoderTest, DestructionDuringADecodeWaitsForIt) {
  Parse(ImageText(0, "held", 0, 0) + Each(1, 9));
  pictures.AwaitLoads(1);
  std::thread host([&] { object.reset(); });
  pictures.Let();
  host.join();
  EXPECT_FALSE(object.has_value());
}

}  // namespace
