// What a user keeps when a render fails or is cancelled, and what the result and the log say of the cause.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <fstream>

#include "tests/engine/RenderJob.h"
#include "tests/engine/TinyMovie.h"

namespace vrx::engine::test {
namespace {

using testing::UnorderedElementsAre;

std::string Content(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

class Fault : public testing::Test {
 protected:
  Fault() {
    Write({.path = folder / "source.mp4", .frames = 50});
    std::ofstream(folder / "out.mp4") << "older";
  }
  const Folder folder;
};

TEST_F(Fault, CancelMidwayLeavesTheOlderMovie) {
  RenderJob job(folder / "out.mp4");
  for (int i = 0; i < 20; ++i) job.AddClip(folder / "source.mp4", 0, 50);
  ASSERT_EQ(job.Create(), kOk) << job.log;
  while (job.progress.processed < 20) ASSERT_EQ(job.sequence->Execute(&job.progress, &job.endFlag), kOk);
  ASSERT_FALSE(job.endFlag);
  job.endFlag = true;
  const auto before = job.progress.processed;
  EXPECT_EQ(job.sequence->Execute(&job.progress, &job.endFlag), kOk);
  EXPECT_EQ(job.progress.processed, before);
  EXPECT_EQ(job.progress.total, 1000u);
  EXPECT_EQ(VRX_ReleaseSequence(job.handle, &job.sequence), kOk);
  EXPECT_THAT(folder.Names(), UnorderedElementsAre("source.mp4", "out.mp4"));
  EXPECT_EQ(Content(folder / "out.mp4"), "older");
}

TEST_F(Fault, ReleasingTheEngineEndsForgottenSequences) {
  RenderJob job(folder / "out.mp4");
  job.AddClip(folder / "source.mp4", 0, 50);
  ASSERT_EQ(job.Create(), kOk);
  ASSERT_EQ(job.sequence->Execute(&job.progress, &job.endFlag), kOk);
  VRXHandle second = nullptr;
  ASSERT_EQ(VRX_CreateVRX(&second), kOk);
  EXPECT_EQ(VRX_ReleaseSequence(second, &job.sequence), kInvalidArgument);
  EXPECT_EQ(VRX_ReleaseVRX(&second), kOk);
  EXPECT_EQ(VRX_ReleaseVRX(&job.handle), kOk);
  job.sequence = nullptr;
  EXPECT_THAT(folder.Names(), UnorderedElementsAre("source.mp4", "out.mp4"));
}

struct RefusedCase {
  const char* name;
  Result expected;
  const char* logged;
  void (*spoil)(const Folder&, RenderJob&);
};

class Refused : public Fault, public testing::WithParamInterface<RefusedCase> {};

TEST_P(Refused, FailsWithItsOwnCodeAndAReadableLine) {
  RenderJob job(folder / "out.mp4");
  job.AddClip(folder / "source.mp4", 0, 50);
  GetParam().spoil(folder, job);
  const auto names = folder.Names();
  EXPECT_EQ(job.Run(), GetParam().expected) << job.log;
  EXPECT_TRUE(job.Logged(GetParam().logged)) << job.log;
  EXPECT_THAT(folder.Names(), testing::UnorderedElementsAreArray(names));
  EXPECT_EQ(Content(folder / "out.mp4"), "older");
}

void SetOutput(RenderJob& job, const std::string& path) {
  job.output.outputFilePath->Set(textcodec::ToUtf16(path));
}

INSTANTIATE_TEST_SUITE_P(
    Render, Refused,
    testing::Values(RefusedCase{"Missing", kSourceMissing, "source not found: ",
                                [](const Folder& f, RenderJob& j) { j.AddClip(f / "none.mp4", 0, 5); }},
                    RefusedCase{
                        "BelowAFile", kSourceMissing, "source not found: ",
                        [](const Folder& f, RenderJob& j) { j.AddClip(f / "source.mp4/x.mp4", 0, 5); }},
                    RefusedCase{"OtherDrive", kSourceMissing, "source not found: ",
                                [](const Folder&, RenderJob& j) { j.AddClip("C:\\a\\b.mp4", 0, 5); }},
                    RefusedCase{"Folder", kSourceUnreadable, "not readable",
                                [](const Folder& f, RenderJob& j) {
                                  std::filesystem::create_directory(f / "folder");
                                  j.AddClip(f / "folder", 0, 5);
                                }},
                    RefusedCase{"Text", kSourceNotMovie, "text.mp4",
                                [](const Folder& f, RenderJob& j) {
                                  std::ofstream(f / "text.mp4") << std::string(3000, 'x') << "\nno movie\n";
                                  j.AddClip(f / "text.mp4", 0, 5);
                                }},
                    RefusedCase{"Empty", kSourceNotMovie, "empty.mp4",
                                [](const Folder& f, RenderJob& j) {
                                  std::ofstream(f / "empty.mp4").close();
                                  j.AddClip(f / "empty.mp4", 0, 5);
                                }},
                    RefusedCase{"OddWidth", kUnusableSettings, "width",
                                [](const Folder&, RenderJob& j) { j.output.video->width = 63; }},
                    RefusedCase{"NoFrames", kUnusableSettings, "no frame",
                                [](const Folder&, RenderJob& j) { j.timeline.video.Clear(); }},
                    RefusedCase{"NoChannels", kUnusableSettings, "channels",
                                [](const Folder&, RenderJob& j) { j.AddSound(0, 48000, 0); }},
                    RefusedCase{"Ac3Rate", kUnusableSettings, "samplingRate",
                                [](const Folder&, RenderJob& j) { j.AddSound(2, 22050, 2); }},
                    RefusedCase{"Mpeg2Rate", kUnusableSettings, "frameDuration",
                                [](const Folder&, RenderJob& j) {
                                  j.output.video->codecType = 1;
                                  j.output.video->frameDuration = VRXTimeInfo(1, 997);
                                }},
                    RefusedCase{"NoOutputFolder", kOutputFailed, "none/out.mp4",
                                [](const Folder& f, RenderJob& j) { SetOutput(j, f / "none/out.mp4"); }},
                    RefusedCase{"OutputIsFolder", kOutputFailed, "folder.mp4",
                                [](const Folder& f, RenderJob& j) {
                                  std::filesystem::create_directory(f / "folder.mp4");
                                  SetOutput(j, f / "folder.mp4");
                                }}),
    [](const auto& kind) { return std::string(kind.param.name); });

/// As long as it lives, no file of the process may grow beyond `bytes`; the system tells so by a deadly
/// signal.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &m_before);
    const rlimit limited{bytes, m_before.rlim_max};
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limited), 0);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;
  ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &m_before); }

 private:
  rlimit m_before{};
};

TEST_F(Fault, AFullDiskIsToldApartAndSurvived) {
  // The first limit strikes at the header or the data, the last only in the last bytes of the file.
  std::uintmax_t whole = 0;
  {
    RenderJob job(folder / "whole.mp4");
    for (int i = 0; i < 4; ++i) job.AddClip(folder / "source.mp4", 0, 50);
    ASSERT_EQ(job.Run(), kOk);
    whole = std::filesystem::file_size(folder / "whole.mp4");
    std::filesystem::remove(folder / "whole.mp4");
  }
  for (const std::uintmax_t limit : {std::uintmax_t{16}, whole / 2, whole - 4}) {
    RenderJob job(folder / "out.mp4");
    for (int i = 0; i < 4; ++i) job.AddClip(folder / "source.mp4", 0, 50);
    Result result = kOk;
    {
      const FileSizeLimit limited(limit);
      result = job.Run();
    }
    EXPECT_EQ(result, kDiskFull) << "at " << limit << " bytes: " << job.log;
    EXPECT_TRUE(job.Logged("out.mp4")) << job.log;
    EXPECT_THAT(folder.Names(), UnorderedElementsAre("source.mp4", "out.mp4"));
    EXPECT_EQ(Content(folder / "out.mp4"), "older");
  }
}

TEST_F(Fault, ASourceWithoutPicturesFailsAgainAndAgain) {
  const std::string bytes = Content(folder / "source.mp4");
  const std::size_t data = bytes.find("mdat");
  const std::size_t index = bytes.find("moov");
  ASSERT_LT(data, index);
  std::string damaged = bytes;
  std::fill(damaged.begin() + static_cast<std::ptrdiff_t>(data) + 4,
            damaged.begin() + static_cast<std::ptrdiff_t>(index) - 4, '\xFF');
  std::ofstream(folder / "damaged.mp4", std::ios::binary) << damaged;
  RenderJob job(folder / "new.mp4");
  job.AddClip(folder / "damaged.mp4", 0, 50);
  ASSERT_EQ(job.Create(), kOk);
  Result result = kOk;
  while (result == kOk && !job.endFlag) result = job.sequence->Execute(&job.progress, &job.endFlag);
  EXPECT_EQ(result, kSourceNotMovie) << job.log;
  EXPECT_TRUE(job.Logged("damaged.mp4"));
  EXPECT_EQ(job.sequence->Execute(&job.progress, &job.endFlag), result);
  EXPECT_FALSE(std::filesystem::exists(folder / "new.mp4"));
  EXPECT_EQ(folder.Names().size(), 3u) << "the temporary file outlives the failure";
}

TEST(Handles, NullAndForeignOnesAreRefused) {
  int foreign = 0;
  VRXHandle handle = &foreign;
  IVRXSequence* sequence = nullptr;
  VRXTimeline timeline;
  VRXSystemOutputSetting output;
  EXPECT_EQ(VRX_CreateVRX(nullptr), kInvalidArgument);
  EXPECT_EQ(VRX_ReleaseVRX(&handle), kInvalidArgument);
  EXPECT_EQ(VRX_CreateSequence(handle, &timeline, &output, &sequence), kInvalidArgument);
  EXPECT_EQ(VRX_SetSTPVSetting(handle, &foreign, 4), kInvalidArgument);
  EXPECT_EQ(VRX_IsSmartRenderingCapable(nullptr, 0, 0), kInvalidArgument);
  ASSERT_EQ(VRX_CreateVRX(&handle), kOk);
  EXPECT_EQ(VRX_CreateSequence(handle, &timeline, &output, &sequence), kInvalidArgument)
      << "a record without parts";
  EXPECT_EQ(VRX_CreateSequence(handle, nullptr, &output, &sequence), kInvalidArgument);
  EXPECT_EQ(VRX_ReleaseSequence(handle, &sequence), kInvalidArgument);
  EXPECT_EQ(VRX_SetSTPVSetting(handle, nullptr, 4), kInvalidArgument);
  EXPECT_EQ(VRX_SetSTPVSetting(handle, &foreign, 0), kInvalidArgument);
  EXPECT_EQ(VRX_SetSTPVSetting(handle, &foreign, 4), kOk);
  EXPECT_EQ(VRX_IsSmartRenderingCapable(handle, 0, 0), kNotCapable);
  EXPECT_EQ(VRX_ReleaseVRX(&handle), kOk);
  EXPECT_EQ(handle, nullptr);
}

}  // namespace
}  // namespace vrx::engine::test
