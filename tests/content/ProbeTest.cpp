// What a file is: the kinds of one extension that the deep check tells apart, and the kind by the bytes
// alone.
#include <gmock/gmock.h>

#include <sys/stat.h>

#include <filesystem>
#include <functional>

#include "content/probe/AviProbe.h"
#include "content/probe/ContentKind.h"
#include "content/probe/DeepCheck.h"
#include "content/probe/JpegProbe.h"
#include "content/probe/TransportProbe.h"
#include "foundation/file/XpMemoryFile.h"
#include "tests/content/CameraPictures.h"
#include "tests/content/Mp4Boxes.h"
#include "tests/content/StreamFiles.h"
#include "tests/imaging/GifFile.h"
#include "tests/imaging/MpoFile.h"
#include "tests/imaging/RawFile.h"
#include "tests/support/TempFolder.h"

namespace {

using namespace camerapictures;
using namespace streamfiles;
using namespace vrx::formats;
using jpegfiles::App;
using jpegfiles::kMpChild;
using testing::HasSubstr;

XpString Wide(const std::string& path) { return XpNarrowString(path.c_str()).ToWide(); }

struct Case {
  const char* what;
  Bytes bytes;
  FormatCode code;
  const char* name = nullptr;
};

class ProbeTest : public testing::Test {
 protected:
  FormatCode Check(const std::string& name, const Bytes& bytes) {
    return CheckFormat(Wide(m_folder.Write(name, bytes)));
  }
  void ExpectCodes(const char* name, const std::vector<Case>& cases) {
    for (const Case& one : cases) {
      EXPECT_EQ(Check(one.name == nullptr ? name : one.name, one.bytes), one.code)
          << name << ": " << one.what;
    }
  }

  TempFolder m_folder;
};

TEST_F(ProbeTest, JpegPicturesOfOneExtensionAreToldApart) {
  const auto mark = [](XpTiffTagIFD& note) { note.SetUndefined(0x1000, "\1", 1); };
  const Bytes marked = Picture({.note = mark, .segments = {Spf(257)}});
  const Bytes wide = Picture({.width = 3424, .height = 1920});
  ExpectCodes(
      "a.jpg",
      {{"plain", Picture({}), kJpegPlain},
       {"marked", marked, kJpegMarked},
       {"marked, capitals", marked, kJpegMarked, "A.JPG"},
       {"marked, other endings", marked, kJpegPlain, "a.jpeg"},
       {"marked, other endings", marked, kJpegPlain, "a.jpe"},
       {"mark of 0", Picture({.note = [](XpTiffTagIFD& note) { note.SetUndefined(0x1000, "\0", 1); }}),
        kJpegPlain},
       {"mark of another type", Picture({.note = [](XpTiffTagIFD& note) { note.SetByte(0x1000, 1); }}),
        kJpegPlain},
       {"SPF 257", Picture({.segments = {Spf(257)}}), kSpf257},
       {"SPF 258", Picture({.segments = {Spf(258)}}), kSpf258},
       {"SPF of another kind", Picture({.segments = {Spf(259)}}), kSpf},
       {"damaged SPF", Picture({.segments = {Spf(257, 1u << 30)}}), kSpf},
       {"wide SPF", Picture({.width = 3424, .height = 1920, .segments = {Spf(258)}}), kSpf258},
       {"wide", wide, kJpegPanorama},
       {"not quite wide", Picture({.width = 3423, .height = 1920}), kJpegPlain},
       {"a strip", Picture({.width = 3424, .height = 1079}), kJpegPlain},
       {"the lowest", Picture({.width = 1926, .height = 1080}), kJpegPanorama},
       {"tall", Picture({.width = 1920, .height = 3424}), kJpegPanorama},
       {"wide on its side", Picture({.width = 3424, .height = 1920, .orientation = 6}), kJpegPanorama},
       {"a record", Picture({.note = Record({1, 640, 480, 0, 0, 0, 640, 480})}), kJpegPanorama},
       {"a record of the stored size, on its side",
        Picture({.orientation = 8, .note = Record({1, 640, 480, 0, 0, 0, 640, 480})}), kJpegPanorama},
       {"wide without tags", "\xFF\xD8" + wide.substr(wide.find("\xFF\xDB")), kJpegPlain},
       {"no picture", "text", kJpegPlain},
       {"nothing", "", kJpegPlain}});
  EXPECT_EQ(CheckFormat(Wide("/no/such.jpg")), kJpegPlain);

  // What the caller has open and has read counts.
  m_folder.Write("a.jpg", "text");
  jpegfiles::Stream stream(wide);
  const XpSharedPtr<XpTiffTagManager> tags = XpImageIoJpeg().ReadTags(stream, 0);
  const XpString path = Wide((m_folder.Path() / "a.jpg").string());
  EXPECT_EQ(CheckFormat(path, &stream), kJpegPanorama);
  EXPECT_EQ(CheckFormat(path, &stream, tags), kJpegPanorama);
  EXPECT_EQ(CheckFormat(path, nullptr, tags), kJpegPlain);

  std::filesystem::create_directory(m_folder.Path() / "folder.jpg");
  const XpString folder = Wide((m_folder.Path() / "folder.jpg").string());
  EXPECT_EQ(CheckFormat(folder), kDirectory);
  EXPECT_EQ(CheckFormat(folder, nullptr, tags), kJpegPlain);
}

TEST_F(ProbeTest, RecordOfAPanoramaHasToFitThePicture) {
  const std::vector<std::uint32_t> right{9, 640, 480, 7, 639, 479, 640, 480};
  const auto isPanorama = [](const std::vector<std::uint32_t>& values) {
    const Bytes bytes = Picture({.note = Record(values)});
    jpegfiles::Stream stream(bytes);
    bool isWide = true;
    const bool is = IsPanorama({640, 480}, *XpImageIoJpeg().ReadTags(stream, 0), isWide);
    EXPECT_FALSE(isWide);
    return is;
  };
  EXPECT_TRUE(isPanorama(right));
  const std::pair<std::size_t, std::uint32_t> wrong[] = {{0, 0},   {1, 641}, {2, 479},        {4, 640},
                                                         {5, 480}, {6, 641}, {7, 0xFFFFFFFFu}};
  for (const auto& [place, value] : wrong) {
    std::vector<std::uint32_t> values = right;
    values[place] = value;
    EXPECT_FALSE(isPanorama(values)) << place;
  }
  EXPECT_FALSE(isPanorama({right.begin(), right.end() - 1}));
  bool isWide = false;
  EXPECT_TRUE(IsPanorama({0x7FFFFFFF, 1080}, XpTiffTagManager(), isWide));
  EXPECT_TRUE(isWide);
}

TEST_F(ProbeTest, MultiPictureFilesAreToldApartByModeAndViews) {
  constexpr std::uint32_t kEye = 0x020002;
  const Bytes second = imagefiles::Jpeg(imagefiles::Smooth(8, 8, 3));
  const auto file = [&](const PictureForm& form, const std::vector<std::uint32_t>& attributes) {
    std::vector<jpegfiles::MpoPicture> pictures;
    for (const std::uint32_t attribute : attributes) {
      pictures.push_back({attribute, pictures.empty() ? Picture(form) : second});
    }
    return jpegfiles::MpoFile(pictures);
  };
  const auto mode = [](std::uint32_t value) {
    return PictureForm{.note = [=](XpTiffTagIFD& note) { note.SetLong(0x200C, value); }};
  };
  const PictureForm wide{.width = 3424, .height = 1920};
  const jpegfiles::MpoFile stereo = file({}, {kEye, kEye});
  const std::size_t end = stereo.bytes.size() - stereo.header;
  using jpegfiles::MpField;
  ExpectCodes(
      "a.mpo",
      {{"two eyes", stereo.bytes, kMpoStereo},
       {"three views", file({}, {kEye, kEye, 0}).bytes, kMpoFrames},
       {"one view and its preview", file({}, {kEye, kMpChild | 0x010001}).bytes, kMpoOther},
       {"two views and a preview", file({}, {kEye, kMpChild | 0x010001, kEye}).bytes, kMpoStereo},
       {"disparity of a part", file({}, {0, kMpChild | kEye, 0}).bytes, kMpoStereo},
       {"many views without disparity", file(mode(2), {0x020003, 0x020003, 0x020003}).bytes, kMpoOther},
       {"two wide views", file(wide, {kEye, kEye}).bytes, kMpoPanorama},
       {"two wide views on their side",
        file({.width = 3424, .height = 1920, .orientation = 6}, {kEye, kEye}).bytes, kMpoPanorama},
       {"mode 1", file(mode(1), {kEye, kEye, kEye}).bytes, kMpoPanorama},
       {"mode 2", file(mode(2), {kEye, kEye, kEye}).bytes, kMpoStereo},
       {"mode 5", file(mode(5), {kEye, kEye}).bytes, kMpoFrames},
       {"mode 3", file(mode(3), {kEye, kEye}).bytes, kMpoStereo},
       {"mode 3 of one view", file(mode(3), {kEye}).bytes, kMpoOther},
       {"a picture at the last byte", jpegfiles::MpoFile(stereo).Set(1, MpField::Offset, end - 1).bytes,
        kMpoStereo},
       {"a picture past the end", jpegfiles::MpoFile(stereo).Set(1, MpField::Offset, end).bytes, kMpoOther},
       {"an index of one IFD", jpegfiles::MpoFile({{kEye, Picture({})}, {kEye, second}}, {.ifds = 1}).bytes,
        kMpoOther},
       {"more entries than there are",
        jpegfiles::MpoFile({{kEye, Picture({})}, {kEye, second}}, {.moreEntries = 1u << 28}).bytes,
        kMpoStereo},
       {"no index", Picture({}), kMpoOther},
       {"nothing", "", kMpoOther}});
  EXPECT_EQ(CheckFormat(Wide("/no/such.mpo")), kMpoOther);
}

TEST_F(ProbeTest, AnimationsRawVersionsAndProgramStreams) {
  using namespace giffiles;
  const Bytes image = Image({}, Pixels({1}));
  ExpectCodes("a.gif", {{"two images with a delay", giffiles::Head(1, 1) + Control(5) + image + image + kEnd,
                         kGifAnimation},
                        {"one image with a delay", giffiles::Head(1, 1) + Control(5) + image + kEnd, kGif},
                        {"two images", giffiles::Head(1, 1) + image + image + kEnd, kGif},
                        {"no GIF", "GIF90a", kUnknown}});
  const auto raw = [](std::uint32_t version, std::function<void(XpTiffTagManager&)> change = {}) {
    return rawfiles::RawFile({.version = version, .change = std::move(change)});
  };
  const auto early = [](XpTiffTagManager& tags) { tags.GetIfd(0)->SetAscii(0x0131, "KLX-Q1000 v1"); };
  const auto later = [](XpTiffTagManager& tags) { tags.GetIfd(0)->SetAscii(0x0131, "KLX-Q1000v1"); };
  const auto oneByte = [](XpTiffTagManager& tags) { tags.GetMakerIfd()->SetByte(0xB000, 3); };
  const auto number = [](XpTiffTagManager& tags) { tags.GetMakerIfd()->SetShort(0xB000, 0x300); };
  ExpectCodes("a.krw", {{"0x300", raw(0x300), kKrwVersion300},
                        {"0x301", raw(0x301), kKrwVersion301},
                        {"0x303", raw(0x303), kKrwVersion301},
                        {"0x304", raw(0x304), kUnknown},
                        {"0x2FF", raw(0x2FF), kUnknown},
                        {"first camera", raw(0x302, early), kKrwVersion100},
                        {"almost the first camera", raw(0x302, later), kKrwVersion301},
                        {"one byte", raw(0x302, oneByte), kKrwVersion300},
                        {"no bytes", raw(0x302, number), kUnknown},
                        {"no note", raw(0), kUnknown},
                        {"no tags", "II", kUnknown}});
  ExpectCodes("a.mpg", {{"MPEG-1", Bytes("\0\0\1\xBA\x2F", 5), kMpeg1Program},
                        {"MPEG-2", Bytes("\0\0\1\xBA\x7F", 5), kMpeg2Program, "a.MPEG"},
                        {"neither", Bytes("\0\0\1\xBA\x80", 5), kUnknown},
                        {"another start code", Bytes("\0\0\1\xBB\x44", 5), kUnknown},
                        {"cut", Bytes("\0\0\1\xBA", 4), kUnknown}});
  // These are not looked into.
  const Bytes text = "text";
  ExpectCodes("a", {{"", text, kMpeg2Program, "a.m2p"},
                    {"", text, kUnknown, "a.xmp"},
                    {"", text, kUnknown, "a.txt"},
                    {"", text, kPng, "a.png"},
                    {"", text, kTiff, "a.TIF"},
                    {"", text, kModd, "a.rodd"},
                    {"", text, kMmv, "a.mmv"}});
}

TEST_F(ProbeTest, TransportStreamsAreToldApartByTheirProgramMap) {
  const Bytes map = Map(kHdmv), other = OtherPacket();
  const Bytes cutMap = Packet('\0' + MapSection(Descriptor(1, Bytes(165, 'x')) + kHdmv, 200));
  const auto mapIn = [](const PacketForm& form) {
    return Transport({Packet('\0' + MapSection(kHdmv), form)});
  };
  const auto pointed = [](std::size_t bytes, std::size_t pointer) {
    return Transport({Packet(static_cast<char>(pointer) + Bytes(bytes, 'x') + MapSection(kHdmv))});
  };
  const auto program = [](const Bytes& descriptors) { return Transport({Map(descriptors)}); };
  Bytes unsynced = other;
  unsynced[0] = '\x46';
  // The map is the last packet that begins in the first 400 KB, and the one after it.
  std::vector<Bytes> far(2178, other);
  far.push_back(map);
  const Bytes lastMap = Transport(far);
  far.insert(far.begin(), other);
  ExpectCodes(
      "a.mts",
      {{"HDMV", Transport({map}), kTransportHdmv},
       {"other endings", Transport({map}), kTransportHdmv, "a.m2t"},
       {"other endings", Transport({map}), kTransportHdmv, "a.M2TS"},
       {"HDMV of 8 bytes", program(Descriptor(5, "HDMV1234")), kUnknown},
       {"HDMV under another tag", program(Descriptor(6, "HDMV")), kUnknown},
       {"TSHV", program(kTshv), kTransportTshv},
       {"TSHV of 4 bytes", program(Descriptor(5, "TSHV")), kUnknown},
       {"HDPR under any tag", program(Descriptor(0x88, "HDPR and more")), kTransportHdmv},
       {"HDPR past its descriptor", program(Descriptor(0x88, "HDP") + "R"), kUnknown},
       {"after others", program(Descriptor(1, "") + Descriptor(2, "abc") + kTshv + kHdmv), kTransportTshv},
       {"two maps", Transport({Map(Descriptor(5, "AC-3")), other, map}), kTransportHdmv},
       {"the fifth map", Transport({Map(""), Map(""), Map(""), Map(""), map}), kTransportHdmv},
       {"the sixth map", Transport({Map(""), Map(""), Map(""), Map(""), Map(""), map}), kUnknown},
       {"PID 0x81", mapIn({.pid = 0x81}), kTransportHdmv},
       {"PID 0x101", mapIn({.pid = 0x101}), kUnknown},
       {"no start", mapIn({.startsUnit = false}), kUnknown},
       {"adaptation field", mapIn({.control = 3, .field = "\x02xy"}), kTransportHdmv},
       {"no payload", mapIn({.control = 2}), kUnknown},
       {"only an adaptation field", mapIn({.control = 3, .field = "\xB7"}), kUnknown},
       {"adaptation field past the packet", mapIn({.control = 3, .field = "\xFF"}), kUnknown},
       {"another table", Transport({Packet('\0' + MapSection(kHdmv, -1, 0))}), kUnknown},
       {"after the end of another section", pointed(3, 3), kTransportHdmv},
       {"a pointer past the packet", pointed(0, 200), kUnknown},
       {"a pointer to the end", Transport({Packet(Bytes(1, '\xB7'))}), kUnknown},
       {"only the first descriptor", Transport({Packet('\0' + MapSection(Descriptor(1, "") + kHdmv, 2))}),
        kUnknown},
       {"a map cut by its packet", Transport({cutMap, other}), kUnknown},
       {"arrival times", Transport({other, map}, "time"), kTransportHdmv},
       {"bytes before", Transport({map}, "", Bytes(570, 'x')), kTransportHdmv},
       {"many bytes before", Transport({map}, "", Bytes(576, 'x')), kUnknown},
       {"arrival times after many bytes", Transport({map}, "time", Bytes(571, 'x')), kTransportHdmv},
       {"three packets with arrival times, the first without",
        map + "time" + other + "time" + other + Bytes(400, 'x'), kUnknown},
       {"two sync bytes by chance", Transport({map}, "", 'G' + Bytes(187, 'x') + 'G' + Bytes(10, 'x')),
        kTransportHdmv},
       {"a damaged packet", Transport({other, other, other, unsynced, map}), kTransportHdmv},
       {"the map at 400 KB", lastMap, kTransportHdmv},
       {"the map past 400 KB", Transport(far), kUnknown},
       {"960 bytes", Transport({map}).substr(0, 960), kTransportHdmv},
       {"959 bytes", Transport({map}).substr(0, 959), kUnknown},
       {"nothing", "", kUnknown}});
}

TEST_F(ProbeTest, AviFilesAreToldApartByTheirFirstVideo) {
  const Bytes dv = Stream("vids", "dvsd"), sound = Stream("auds", Bytes(4, '\0'));
  const auto before = [&](const Bytes& chunks) { return Avi(chunks + List("hdrl", kAvih + dv)); };
  const auto headers = [](const Bytes& chunks) { return Avi(List("hdrl", chunks)); };
  Bytes manyChunks;
  for (int i = 0; i < 5000; ++i) manyChunks += Chunk("JUNK", "");
  Bytes endlessList = AviOf(dv);
  endlessList.replace(endlessList.find("LIST") + 4, 4, "\xFF\xFF\xFF\xFF");
  ExpectCodes("a.avi", {{"DV", AviOf(dv), kAviDv},
                        {"DV with its sound", AviOf(Stream("iavs", "dvsd")), kAviDv},
                        {"Motion JPEG", AviOf(Stream("vids", "MJPG")), kAviMotionJpeg},
                        {"Motion JPEG", AviOf(Stream("vids", "mjpg")), kAviMotionJpeg, "a.AVI"},
                        {"other video", AviOf(Stream("vids", "DVSD")), kUnknown},
                        {"the second video does not count", AviOf(Stream("vids", "H264") + dv), kUnknown},
                        {"sound first", AviOf(sound + dv), kAviDv},
                        {"sound alone", AviOf(sound), kUnknown},
                        {"a stream without head first", AviOf(List("strl", Chunk("strf", "x")) + dv), kAviDv},
                        {"chunks and lists first",
                         before(Chunk("JUNK", "odd") + List("INFO", Chunk("ISFT", "ab"))), kAviDv},
                        {"a large chunk first", before(Chunk("JUNK", Bytes(70000, 'x'))), kAviDv},
                        {"odd main header", headers(Chunk("avih", "odd") + dv), kAviDv},
                        {"chunks before the main header", headers(Chunk("JUNK", "odd") + kAvih + dv), kAviDv},
                        {"no main header", headers(dv), kUnknown},
                        {"an empty chunk before it", headers(Chunk("JUNK", "") + kAvih + dv), kUnknown},
                        {"an empty main header", headers(Chunk("avih", "") + dv), kUnknown},
                        {"streams past the headers", Avi(List("hdrl", kAvih) + dv), kUnknown},
                        {"a list too small for its form", before(Head("LIST", 0)), kAviDv},
                        {"a chunk past the end", before(Head("JUNK", 0xFFFFFFF0)), kUnknown},
                        {"headers past the end", endlessList, kAviDv},
                        {"too many chunks", before(manyChunks), kUnknown},
                        {"another form", Chunk("RIFF", "AVIX" + List("hdrl", kAvih + dv)), kUnknown},
                        {"another container", "RIFX" + AviOf(dv).substr(4), kUnknown}});
}

TEST_F(ProbeTest, FilesThatAreCutAtAnyByteAreWhatIsLeftOfThem) {
  struct Whole {
    FormatCode (*check)(XpAbstractFile& file);
    Bytes bytes;
    FormatCode code, cutCode;
    std::size_t needed, enough;  // bytes; in between, a decoder may fill in what is missing
  };
  const Bytes avi = AviOf(Stream("vids", "dvsd")), transport = Transport({OtherPacket(), Map(kTshv)});
  const Bytes spf = Picture({.segments = {Spf(257)}});
  const auto checkJpeg = [](XpAbstractFile& file) { return CheckJpeg(file, {}); };
  const Whole files[] = {
      {CheckAvi, avi, kAviDv, kUnknown, avi.find("dvsd") + 4, avi.find("dvsd") + 4},
      {CheckTransport, transport, kTransportTshv, kUnknown, 960, 960},
      {checkJpeg, spf, kSpf257, kJpegPlain, spf.find("\xFF\xDA"), spf.find("\xFF\xDA") + 14}};
  for (const Whole& file : files) {
    for (std::size_t size = 0; size <= file.bytes.size(); ++size) {
      const Bytes cut = file.bytes.substr(0, size);
      jpegfiles::Stream stream(cut);
      const FormatCode code = file.check(stream);
      if (size >= file.needed && size < file.enough && code == file.code) continue;
      ASSERT_EQ(code, size < file.enough ? file.cutCode : file.code) << file.code << " of " << size;
    }
  }
}

class CountingFile : public jpegfiles::Stream {
 public:
  using Stream::Stream;
  XpResult Read(void* buffer, std::uint64_t count, std::uint64_t* read) override {
    std::uint64_t done = 0;
    const XpResult result = Stream::Read(buffer, count, &done);
    bytes += done;
    if (read != nullptr) *read = done;
    return result;
  }

  std::uint64_t bytes = 0;
};

TEST_F(ProbeTest, OnlyTheHeadOfALargeFileIsRead) {
  constexpr std::size_t kLarge = 4u << 20;
  const Bytes stream = Transport(std::vector<Bytes>(kLarge / kPacketBytes, OtherPacket()));
  CountingFile transport(stream);
  EXPECT_EQ(CheckTransport(transport), kUnknown);
  EXPECT_LE(transport.bytes, 0x64000u + 0x4000u);
  const Bytes picture = Picture({}) + Bytes(kLarge, 'x');
  CountingFile jpeg(picture);
  EXPECT_EQ(CheckJpeg(jpeg, {}), kJpegPlain);
  EXPECT_LE(jpeg.bytes, 0x40000u);
}

TEST_F(ProbeTest, KindIsWhatTheBytesAreWhateverTheNameSays) {
  using mp4boxes::FileType;
  const Bytes jpeg = Picture({}),
              gif = giffiles::Head(1, 1) + giffiles::Control(5) + giffiles::Image({}, giffiles::Pixels({1}));
  const Bytes text(5000, 'a'), ebml = "\x1A\x45\xDF\xA3\x93\x42\x86\x81\x01\x42\x82";
  const Bytes longText = Bytes(4095, 'a') + "\xC3\xA9 and more";  // a character across the first 4 KiB
  struct KindCase {
    Bytes bytes;
    const char* kind;
    const char* why;
    FormatCode fits = kUnknown;
    FormatCode odd = kPng;
  };
  const KindCase cases[] = {
      {"", "empty file", "no bytes"},
      {jpeg, "JPEG picture", "begins with FF D8 FF", kThumbnail, kMpo},
      {jpegfiles::MpoFile({{0, jpeg}, {0, jpeg}}).bytes, "multi-picture file", "MPF) names 2 pictures",
       kJpeg},
      {jpegfiles::MpoFile({{0, jpeg}, {kMpChild, jpeg}}).bytes, "JPEG picture", "FF D8 FF", kJpeg, kMpo},
      {imagefiles::Png(imagefiles::Smooth(2, 2, 3)), "PNG picture", "89 50 4E 47 0D 0A 1A 0A", kPng, kJpeg},
      {gif + gif.substr(gif.size() - 20), "GIF picture", "\"GIF89a\"", kGif},
      {gif + giffiles::Image({}, giffiles::Pixels({1})), "GIF animation", "several images", kGif},
      {rawfiles::RawFile({.bigEndian = true}), "TIFF picture", "4D 4D 00 2A (big-endian)", kKrw},
      {Bytes("II+\0\10\0\0\0", 8), "BigTIFF picture", "49 49 2B 00 (little-endian)", kTiff},
      {imagefiles::Bmp(1, 1, {.data = "abcd"}), "BMP picture", "header has 40 bytes"},
      {"BM" + Bytes(12, '\0') + Little(41, 4), "unknown", "42 4D"},
      {"BM" + Bytes(12, '\0') + Bytes("\x6C\0\0\0", 4), "BMP picture", "header has 108 bytes"},
      {"BMW is a word that begins like a picture", "text (UTF-8)", "all its bytes"},
      {FileType("isom", "mp41"), "MP4 movie", "ftyp box with brand isom at byte 4", kMp4, kMov},
      {FileType("\1\xFF\2\3", ""), "MP4 movie", "brand 01 FF 02 03", kMp4},
      {FileType("qt  ", ""), "QuickTime movie", "brand qt at byte 4", kMov, kMp4},
      {mp4boxes::Box("moov", ""), "QuickTime movie", "moov box at byte 4", kMov},
      {"The wide road", "text (UTF-8)", "all its bytes"},
      {FileType("3gp5", ""), "3GP movie", "brand 3gp5", kThreeGp, kMov},
      {FileType("M4A ", ""), "MPEG-4 sound", "brand M4A"},
      {FileType("heic", ""), "HEIF picture", "brand heic"},
      {FileType("avif", ""), "AVIF picture", "brand avif"},
      {AviOf(""), "AVI movie", "\"AVI \" at byte 8", kAvi},
      {Chunk("RIFF", "WAVEfmt "), "WAVE sound", "\"WAVE\" at byte 8"},
      {Bytes("\x30\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\x00\xAA\x00\x62\xCE\x6C", 16),
       "Windows Media file (ASF)", "30 26 B2", kWmv},
      {ebml + "\x88matroska", "Matroska movie", "document type matroska"},
      {ebml + "\x84webm\x42\x87\x81\x04", "WebM movie", "document type webm"},
      {ebml + "\x08matroska", "unknown", "1A 45 DF A3"},
      {ebml, "unknown", "1A 45 DF A3"},
      {Bytes("\0\0\1\xBA\x21", 5), "MPEG-1 program stream", "00 00 01 BA 21", kMpeg, kMpeg2},
      {Bytes("\0\0\1\xBA\x44", 5), "MPEG-2 program stream", "00 00 01 BA 44", kMpeg2},
      {Transport({}, "", "x"), "MPEG transport stream", "0x47 every 188 bytes from byte 1", kMpeg2, kMpeg},
      {Transport({}, "time"), "MPEG transport stream with arrival times", "every 192 bytes from byte 4",
       kMpeg2},
      {Bytes("MOFF\0\3", 6), "tagged container (MOFF)", "\"MOFF\"", kMoff},
      {"<?xml version='1.0'?>\n<!-- - -->\n<!DOCTYPE plist>\n<plist>", "property list",
       "root element is plist", kModd},
      {"\xEF\xBB\xBF<plist version='1.0'/>", "property list", "plist", kModd},
      {Bytes("\xFF\xFE<\0p\0l\0i\0s\0t\0>\0", 16), "property list", "plist", kModd},
      {"<?xml version='1.0'?><gpx>", "XML document", "root element is gpx", kXmp},
      {"<?xml version='1.0'?><\xC3\xA9>", "XML document", "\"<?xml\""},
      {"<?xml <!--", "XML document", "\"<?xml\""},
      {"<html>", "text (UTF-8)", "all its bytes"},
      {text, "text (UTF-8)", "its first 4096 bytes"},
      {longText, "text (UTF-8)", "its first 4096 bytes"},
      {"caf\xC3", "unknown", "63 61 66 C3"},
      {"caf\xE9", "unknown", "63 61 66 E9"},
      {Bytes("\xFE\xFF\0a", 4), "text (UTF-16)", "byte order mark FE FF"},
      {Bytes("\xFE\xFF\xDC\0", 4), "unknown", "FE FF DC 00"},
      {Bytes("\xFE\xFF\xD8\0\0a", 6), "unknown", "FE FF D8 00"},
      {Bytes("a\0b", 3), "unknown", "begins with 61 00 62, as no"},
  };
  for (const KindCase& one : cases) {
    ContentKind kind;
    ASSERT_EQ(FindContentKind(Wide(m_folder.Write("a.png", one.bytes)), kind), XpOk);
    EXPECT_EQ(kind.name, one.kind) << one.why;
    EXPECT_THAT(kind.why, HasSubstr(one.why));
    EXPECT_TRUE(kind.Fits(one.fits)) << one.kind;
    EXPECT_FALSE(kind.Fits(one.odd)) << one.kind;
  }
  ContentKind kind;
  EXPECT_EQ(FindContentKind(Wide(m_folder.Path().string()), kind), XpOk);
  EXPECT_EQ(kind.name, "folder");
  EXPECT_EQ(FindContentKind(Wide("/no/such.jpg"), kind), XpErrPathNotFound);
  const std::string pipe = (m_folder.Path() / "pipe.jpg").string();
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_EQ(FindContentKind(Wide(pipe), kind), XpErrNotAFile);
  EXPECT_EQ(CheckFormat(Wide(pipe)), kJpegPlain);
}

}  // namespace
