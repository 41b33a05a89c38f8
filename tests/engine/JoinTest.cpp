// A movie that is rendered in pieces and joined is the movie that one render makes.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/engine/RenderJob.h"
#include "tests/engine/StreamPackets.h"
#include "tests/support/MovieReader.h"

namespace vrx::engine {
namespace {

using namespace test_support;

struct Movie {
  std::string ending = ".mp4";  // of pieces and movie
  VRXVideoCodec codec = VRXVideoCodecOfRecord;
  std::int32_t recordCodec = 0;
  std::uint64_t frameValue = 1;  // a frame lasts frameValue / frameScale seconds
  std::uint64_t frameScale = 25;
  std::int32_t soundCodec = 1;  // -1: silent
  VRXSmartRendering smart = VRXSmartAuto;
  std::int32_t width = 64;
  std::int32_t height = 48;
  const char* preset = nullptr;
};

class JoinTest : public EngineRenderTest {
 protected:
  ~JoinTest() override { VRX_SetRenderOverrides(nullptr); }

  /// 110 frames: cuts of two sources whose streams have other parameters, with sound of a third.
  void FillTimeline(const Movie& movie, RenderJob& job) const {
    const auto value = static_cast<std::int64_t>(movie.frameValue);
    for (const auto& [name, from, to] : {std::tuple{"a", 12, 50}, {"b", 24, 60}, {"a", 30, 66}})
      job.AddClip(Path(name), from * value, to * value, movie.frameScale);
    job.output.video->frameDuration = VRXTimeInfo(movie.frameValue, movie.frameScale);
    job.output.video->codecType = movie.recordCodec;
    job.output.video->averageBitrate = 0;
    job.output.video->width = movie.width;
    job.output.video->height = movie.height;
    if (movie.soundCodec < 0) return;
    job.AddSoundClip(Path("sound"), 7 * value, 117 * value, movie.frameScale);
    job.AddSound(2, 48000, movie.soundCodec);
  }

  /// Renders part of the movie, or all of it where there are no frames, to `name`, and gives its path.
  std::string Render(const Movie& movie, const std::string& name, VRXRenderOverrides overrides) const {
    overrides.codec = movie.codec;
    overrides.smart = movie.smart;
    overrides.preset = movie.preset;
    EXPECT_EQ(VRX_SetRenderOverrides(&overrides), kOk);
    RenderJob job(Path(name + movie.ending));
    FillTimeline(movie, job);
    VRXMetaData item;
    item.kind = VRXMetaData::kTimeZone;
    const std::uint8_t zone[] = {0xCA, 0xFE};
    item.SetData(zone, sizeof zone);
    job.output.metaData = new VRXMetaDataSetting;
    job.output.metaData->Add(item);
    EXPECT_EQ(job.Run(), kOk) << job.log;
    return Path(name + movie.ending);
  }

  static VRXRenderOverrides PieceOf(const char* name, std::uint32_t number, std::uint32_t count,
                                    std::uint64_t first, std::uint64_t frames) {
    VRXRenderOverrides overrides;
    overrides.pieceOf = name;
    overrides.piece = number;
    overrides.pieceCount = count;
    overrides.firstFrame = first;
    overrides.frameCount = frames;
    overrides.tracks = number == 0 ? VRXSoundAlone : VRXPictureAlone;
    return overrides;
  }

  /// The pieces that begin at these frames, with the sound last.
  std::vector<std::string> RenderPieces(const Movie& movie, const std::vector<std::uint64_t>& starts) const {
    std::vector<std::string> paths;
    const auto count = static_cast<std::uint32_t>(starts.size());
    for (std::uint32_t i = 0; i < count; ++i) {
      const std::uint64_t end = i + 1 < count ? starts[i + 1] : 110;
      paths.push_back(Render(movie, "piece" + std::to_string(i + 1),
                             PieceOf("Movie1", i + 1, count, starts[i], end - starts[i])));
    }
    if (movie.soundCodec >= 0) paths.push_back(Render(movie, "sound0", PieceOf("Movie1", 0, count, 0, 110)));
    return paths;
  }

  static Result Create(RenderJob& job, const std::vector<std::string>& paths, const std::string& output) {
    std::vector<std::u16string> wide;
    for (const std::string& path : paths) wide.push_back(textcodec::ToUtf16(path));
    std::vector<const char16_t*> pointers;
    for (const std::u16string& path : wide) pointers.push_back(path.c_str());
    const std::u16string movie = textcodec::ToUtf16(output);
    VRXPieces pieces;
    pieces.paths = pointers.data();
    pieces.count = static_cast<std::uint32_t>(pointers.size());
    pieces.output = movie.c_str();
    return VRX_CreateJoin(job.handle, &pieces, &job.sequence);
  }

  void WriteSources(const std::string& codec = "h264") const {
    Write("a", {.frames = 70, .codec = codec, .crf = 18, .bt601 = true, .firstNumber = 100}, ".mp4");
    Write(
        "b",
        {.frames = 70, .codec = codec, .gop = 6, .bFrames = 0, .crf = 30, .bt601 = true, .firstNumber = 200},
        ".mp4");
    Write("sound", {.frames = 120, .hasSound = true, .sound = {.style = ClipSoundStyle::kClickOverTone}},
          ".mp4");
  }

  /// The engine knows files by what is in them.
  void Write(const std::string& name, const PatternClip& clip, const std::string& ending) const {
    std::filesystem::rename(EngineRenderTest::Write("new" + ending, clip), Path(name));
  }
};

std::string MetadataOf(const std::string& path, const char* key) {
  AVFormatContext* opened = nullptr;
  Check(avformat_open_input(&opened, path.c_str(), nullptr, nullptr), path);
  const DemuxerPtr demuxer(opened);
  const AVDictionaryEntry* entry = av_dict_get(opened->metadata, key, nullptr, 0);
  return entry == nullptr ? "" : entry->value;
}

/// The time of the first picture in samples of sound.
std::int64_t FirstPicture(const std::string& path, int rate) {
  const StreamPackets pictures = ReadPackets(path, AVMEDIA_TYPE_VIDEO, {1, rate});
  return std::ranges::min(pictures.packets, {}, &StreamPacket::time).time;
}

/// A transport stream has headers before each packet of AAC.
void ExpectSameSound(const std::string& joined, const std::string& whole, bool isStream, bool isEncoded) {
  const MovieSound sound = MovieReader(joined).ReadSound();
  const MovieSound wanted = MovieReader(whole).ReadSound();
  std::vector<std::int64_t> clicks = sound.Clicks();
  for (std::int64_t& click : clicks) click -= isStream ? FirstPicture(joined, sound.rate) : 0;
  EXPECT_EQ(clicks, wanted.Clicks());
  if (isEncoded) return;
  const StreamPackets packets = ReadSoundPackets(joined);
  const StreamPackets reference = ReadSoundPackets(whole);
  EXPECT_TRUE(BytesOf(packets) == BytesOf(reference));
  if (isStream) return;
  EXPECT_TRUE(sound.samples == wanted.samples);
  EXPECT_EQ(packets.end, reference.end);
}

TEST_F(JoinTest, JoinedPiecesAreTheMovieOfOneRender) {
  const struct {
    Movie movie;
    std::vector<std::uint64_t> starts;
    const char* output;
    const char* sources = "h264";
    bool copiesPictures = false;  // of the sources
    bool encodesSound = false;    // the movie of one render copies it
  } cases[] = {
      {{}, {0, 1, 36, 70, 109}, "joined.mp4", "h264", true},
      {{.soundCodec = -1},
       {0},
       "joined.mp4",
       "h264",
       true},                                              // with parameter sets that change within the piece
      {{}, {0, 45, 80}, "joined.ts", "h264", true, true},  // as it begins within a packet
      {{.smart = VRXSmartOff}, {0, 45, 80}, "joined.ts"},
      {{.smart = VRXSmartOff}, {0, 50}, "joined.mov"},
      {{.ending = ".mov", .soundCodec = 3}, {0, 26, 90}, "joined.mov", "h264", true},
      {{.ending = ".mov", .soundCodec = 3}, {0}, "joined.mp4", "h264", true},
      {{.frameValue = 1001, .frameScale = 30000, .soundCodec = 2}, {0, 13, 26, 39}, "joined.mp4"},
      {{.codec = VRXVideoCodecHevc}, {0, 40, 77}, "joined.mp4"},
      {{.codec = VRXVideoCodecHevc, .soundCodec = -1}, {0, 40, 77}, "joined.ts"},
      {{.codec = VRXVideoCodecAv1, .soundCodec = -1, .height = 64, .preset = "ultrafast"},
       {0, 100},
       "joined.mp4"},
      {{.codec = VRXVideoCodecHevc, .soundCodec = -1}, {0, 40, 77}, "joined.mp4", "hevc", true},
      {{.recordCodec = 1, .soundCodec = 2}, {0, 40, 77}, "joined.ts", "mpeg2video", true},
  };
  std::string written;
  for (const auto& test : cases) {
    SCOPED_TRACE(testing::Message() << test.movie.ending << " " << test.movie.codec << " "
                                    << test.movie.soundCodec << " to " << test.output);
    if (written != test.sources) WriteSources(written = test.sources);
    std::vector<std::string> paths = RenderPieces(test.movie, test.starts);
    const std::string whole = Render(test.movie, "whole", {});
    VRXRenderSummary summary;
    EXPECT_EQ(VRX_GetRenderSummary(&summary), kOk);
    EXPECT_EQ(summary.copiedFrames > 0, test.copiesPictures);
    VRX_SetRenderOverrides(nullptr);
    std::ranges::reverse(paths);
    RenderJob job(Path("unused.mp4"));
    const std::string joined = Path(test.output);
    ASSERT_EQ(Create(job, paths, joined), kOk) << job.log;
    ASSERT_EQ(job.Execute(), kOk) << job.log;
    EXPECT_EQ(job.progress.total, 110u);

    MovieReader movie(joined);
    MovieReader reference(whole);
    EXPECT_EQ(movie.RemainingNumbers(), reference.RemainingNumbers());
    EXPECT_EQ(movie.Info().matrix, reference.Info().matrix);
    const AVRational frame{static_cast<int>(test.movie.frameValue), static_cast<int>(test.movie.frameScale)};
    const StreamPackets pictures = ReadPackets(joined, AVMEDIA_TYPE_VIDEO, frame);
    std::vector<std::int64_t> times;
    for (const StreamPacket& packet : pictures.packets) times.push_back(packet.time);
    std::ranges::sort(times);
    const std::int64_t start = times.front();
    for (std::size_t i = 0; i < times.size(); ++i) EXPECT_EQ(times[i], start + static_cast<std::int64_t>(i));
    const bool isStream = std::string(test.output) == "joined.ts";
    if (test.movie.soundCodec >= 0) ExpectSameSound(joined, whole, isStream, test.encodesSound);
    if (isStream) continue;
    EXPECT_EQ(start, 0);
    EXPECT_EQ(pictures.end, 110);
    EXPECT_EQ(pictures.tag, ReadPackets(whole, AVMEDIA_TYPE_VIDEO, frame).tag);
    EXPECT_EQ(MetadataOf(joined, "com.vrx.time-zone"), "cafe");
    EXPECT_EQ(MetadataOf(joined, "com.vrx.piece"), "");
  }
}

/// A piece without copied pictures knows those of the others.
TEST_F(JoinTest, EncodedAndCopiedPiecesHaveTheirParameterSetsInOneHeader) {
  Write("a", {.frames = 70, .crf = 18, .bt601 = true}, ".mp4");
  const auto render = [&](const std::string& name, const VRXRenderOverrides& overrides) {
    EXPECT_EQ(VRX_SetRenderOverrides(&overrides), kOk);
    RenderJob job(Path(name));
    job.AddClip(Path("a"), 0, 40);
    job.AddClip(Path("a"), 13, 23);  // without a key frame at which copying can begin
    job.output.video->averageBitrate = 0;
    EXPECT_EQ(job.Run(), kOk) << job.log;
    return Path(name);
  };
  const std::vector<std::string> pieces{render("1.mp4", PieceOf("Movie1", 1, 2, 0, 40)),
                                        render("2.mp4", PieceOf("Movie1", 2, 2, 40, 10))};
  const std::uint32_t tag = ReadPackets(render("whole.mp4", {}), AVMEDIA_TYPE_VIDEO, {1, 25}).tag;
  VRX_SetRenderOverrides(nullptr);
  RenderJob job(Path("unused.mp4"));
  ASSERT_EQ(Create(job, pieces, Path("joined.mp4")), kOk) << job.log;
  ASSERT_EQ(job.Execute(), kOk) << job.log;
  EXPECT_EQ(tag, MKTAG('a', 'v', 'c', '1'));
  EXPECT_EQ(ReadPackets(Path("joined.mp4"), AVMEDIA_TYPE_VIDEO, {1, 25}).tag, tag);
}

void Shorten(const std::string& path, const std::string& whole, double share) {
  std::filesystem::copy_file(whole, path, std::filesystem::copy_options::overwrite_existing);
  const auto size = static_cast<double>(std::filesystem::file_size(path));
  std::filesystem::resize_file(path, static_cast<std::uintmax_t>(size * share));
}

/// A copy of a piece in which another text of the same length stands.
std::string Forge(const std::string& path, const std::string& piece, const std::string& text,
                  const std::string& other) {
  std::ifstream in(piece, std::ios::binary);
  std::string bytes{std::istreambuf_iterator<char>(in), {}};
  EXPECT_NE(bytes.rfind(text), std::string::npos) << text;
  std::ofstream(path, std::ios::binary) << bytes.replace(bytes.rfind(text), text.size(), other);
  return path;
}

TEST_F(JoinTest, PiecesThatMakeNoMovieAreRefusedByName) {
  WriteSources();
  const std::vector<std::string> good = RenderPieces({}, {0, 50});
  const std::string &first = good[0], &second = good[1], &sound = good[2];
  const std::string foreign = Render({}, "foreign", PieceOf("Movie2", 2, 2, 50, 60));
  const std::string late = Render({}, "late", PieceOf("Movie1", 2, 2, 51, 59));
  const std::string wide = Render({.width = 96}, "wide", PieceOf("Movie1", 2, 2, 50, 60));
  const std::string fast =
      Render({.frameValue = 1, .frameScale = 24}, "fast", PieceOf("Movie1", 2, 2, 50, 60));
  const std::string mute = Render({.soundCodec = -1}, "mute", PieceOf("Movie1", 2, 2, 50, 60));
  const std::string hevc = Render({.codec = VRXVideoCodecHevc}, "hevc", PieceOf("Movie1", 2, 2, 50, 60));
  const std::string third = Forge(Path("third.mp4"), second, "Movie1 2/2", "Movie1 2/3");
  const std::string more = Forge(Path("more.mp4"), second, "50+60", "50+61");
  const std::string rate = Forge(Path("rate.mp4"), second, "+60 1/25", "+60 1/26");
  const std::string zone = Forge(Path("zone.mp4"), second, "cafe", "caf\n");
  const std::string moved = Forge(Path("moved.mp4"), sound, " 0+110", " 1+110");
  const std::string part = Render({}, "part", PieceOf("Movie1", 0, 2, 0, 100));
  Shorten(Path("damaged.mp4"), second, 0.9);
  Shorten(Path("silent.mp4"), sound, 0.9);
  const Movie uncompressed{.ending = ".mov", .soundCodec = 3};
  Shorten(Path("pcm.mov"), Render(uncompressed, "whole", PieceOf("Movie1", 0, 2, 0, 110)), 0.9);
  std::filesystem::create_hard_link(first, Path("joined.ts"));
  std::filesystem::copy_file(second, Path("twin.mp4"));
  const auto files = folder.Count();
  const struct {
    std::vector<std::string> pieces;
    Result result;
    const char* said;
    const char* output = "joined.mp4";
  } cases[] = {
      {{first, sound}, kUnusableSettings, "piece 2 of 2 is missing"},
      {{first, second}, kUnusableSettings, "piece 0 of 2, the sound, is missing"},
      {{first, second, sound, Path("twin.mp4")}, kUnusableSettings, "piece 2 of 2 is there twice"},
      {{first, foreign, sound}, kUnusableSettings, "foreign.mp4 is piece 2 of 2 of the movie Movie2"},
      {{first, late, sound}, kUnusableSettings, "late.mp4 begins with frame 51, and frame 50 is next"},
      {{first, wide, sound}, kUnusableSettings, "wide.mp4 has another size than"},
      {{first, fast, sound}, kUnusableSettings, "fast.mp4 was made with other settings"},
      {{first, mute, sound}, kUnusableSettings, "mute.mp4 was made with other settings"},
      {{first, hevc, sound}, kUnusableSettings, "hevc.mp4 has another codec than"},
      {{first, third, sound}, kUnusableSettings, "third.mp4 is piece 2 of 3 of the movie Movie1"},
      {{first, more, sound}, kSourceUnreadable, "more.mp4 is damaged: it has 60 frames of its 61"},
      {{first, rate, sound}, kSourceUnreadable, "rate.mp4 is damaged: picture 2 is not as it was written"},
      {{first, zone, sound}, kUnusableSettings, "zone.mp4 has a time-zone item that is none"},
      {{first, second, moved}, kUnusableSettings, "moved.mp4 has the sound of 110 frames from 1 on"},
      {{first, second, part}, kUnusableSettings, "part.mp4 has the sound of 100 frames from 0 on"},
      {{first, Path("a"), sound}, kUnusableSettings, "/a is no piece of a movie"},
      {{first, Path("nowhere.mp4"), sound}, kSourceMissing, "nowhere.mp4 does not exist"},
      {{first, Path("damaged.mp4"), sound}, kSourceUnreadable, "damaged.mp4 is damaged"},
      {{first, second, Path("silent.mp4")}, kUnusableSettings, "silent.mp4 has not all of the movie's sound"},
      {{first, second, Path("pcm.mov")}, kUnusableSettings, "pcm.mov has not all of the movie's sound"},
      {good, kUnusableSettings, "the movie would replace its piece", "joined.ts"},
  };
  for (const auto& test : cases) {
    RenderJob job(Path("unused.mp4"));
    EXPECT_EQ(Create(job, test.pieces, Path(test.output)), test.result) << test.said;
    EXPECT_TRUE(job.Logged(test.said)) << test.said << "\n" << job.log;
    EXPECT_EQ(std::ranges::count(job.log, '\n'), 1) << job.log;
    EXPECT_EQ(folder.Count(), files);
  }
}

TEST_F(JoinTest, PieceIsNoTransportStream) {
  WriteSources();
  const VRXRenderOverrides overrides = PieceOf("Movie1", 1, 2, 0, 50);
  ASSERT_EQ(VRX_SetRenderOverrides(&overrides), kOk);
  RenderJob job(Path("piece.ts"));
  FillTimeline({}, job);
  EXPECT_EQ(job.Create(), kUnusableSettings);
  EXPECT_TRUE(job.Logged("a piece of a movie is no transport stream")) << job.log;
}

TEST_F(JoinTest, MovieThatIsNotFinishedLeavesNothing) {
  WriteSources();
  const std::vector<std::string> pieces = RenderPieces({}, {0, 50});
  const auto files = folder.Count();
  {
    RenderJob job(Path("unused.mp4"));
    ASSERT_EQ(Create(job, pieces, Path("joined.mp4")), kOk) << job.log;
    EXPECT_EQ(folder.Count(), files + 1);
    Shorten(pieces[1], pieces[0], 0.9);
    EXPECT_EQ(job.Execute(), kSourceUnreadable);
    EXPECT_TRUE(job.Logged("piece2.mp4 was changed while it was copied from")) << job.log;
    EXPECT_EQ(folder.Count(), files);
  }
  RenderPieces({}, {0, 50});
  RenderJob job(Path("unused.mp4"));
  ASSERT_EQ(Create(job, pieces, Path("joined.mp4")), kOk) << job.log;
  ASSERT_EQ(job.sequence->Execute(&job.progress, &job.endFlag), kOk);
  EXPECT_LT(job.progress.processed, 110u);
  job.endFlag = true;
  ASSERT_EQ(job.sequence->Execute(&job.progress, &job.endFlag), kOk);
  EXPECT_EQ(VRX_ReleaseSequence(job.handle, &job.sequence), kOk);
  EXPECT_EQ(folder.Count(), files);
}

}  // namespace
}  // namespace vrx::engine
