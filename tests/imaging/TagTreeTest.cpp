// Tag trees that are stored and loaded, exact bytes, and what is saved from damaged blocks.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

#include "imaging/tags/ExifVersion.h"
#include "imaging/tags/GpsTags.h"
#include "imaging/tags/TagNames.h"
#include "imaging/tags/TagReading.h"
#include "imaging/tags/TagWriting.h"
#include "tests/imaging/TagBytes.h"

namespace {

using namespace vrx::imaging;
using namespace std::string_literals;
using testing::HasSubstr;
using vrx::test_support::TagBytes;

/// The branch as text, so that two of them can be compared and differences be read.
std::string Described(const XpTiffTagIFD& ifd) {
  std::string text = ifd.isMakerNote ? ifd.isCamSignature ? "cam" : "note" : "";
  text += "{";
  for (const auto& value : ifd.values) {
    text += std::to_string(value->tag) + ":" + std::to_string(value->GetType());
    if (value->GetType() == XpTiffIfd) {
      for (const auto& child : static_cast<const XpTiffTagDataIFD&>(*value).ifds) text += Described(*child);
    } else {
      const auto* bytes = static_cast<const unsigned char*>(value->GetData());
      text += "x" + std::to_string(value->count) + "=";
      for (std::uint64_t i = 0; i < value->GetByteSize(); ++i)
        text += "0123456789abcdef"[bytes[i] >> 4 & 15], text += "0123456789abcdef"[bytes[i] & 15];
    }
    text += " ";
  }
  return text + "}";
}
std::string Described(const XpTiffTagManager& manager) {
  std::string text;
  for (std::size_t i = 0; i < manager.GetIfdCount(); ++i) text += Described(*manager.GetIfd(i));
  return text;
}

std::string FaultText(const XpTiffTagManager& manager) {
  std::string text;
  for (const TagFault& fault : manager.faults) {
    text += fault.ifd + "/" + std::to_string(fault.tag) + ": " + fault.words + "\n";
  }
  return text;
}

std::string Content(const XpMemoryFile& file) {
  return {static_cast<const char*>(file.GetData()), static_cast<std::size_t>(file.GetSize())};
}

bool Read(const std::string& bytes, XpTiffTagManager& manager, const TagReadOptions& options = {}) {
  XpMemoryFile file;
  // A block of exactly this size, so that the sanitizer sees every read past its end.
  std::vector<char> block(bytes.begin(), bytes.end());
  file.Attach(block.data(), static_cast<std::int64_t>(block.size()), false);
  return ReadTagTree(file, options, manager);
}

std::string Stored(XpTiffTagManager& manager) {
  XpMemoryFile file;
  const std::int64_t written = manager.Store(file);
  EXPECT_EQ(written, file.GetSize());
  return Content(file);
}

template <class T>
void AddRandom(XpTiffTagIFD& ifd, std::uint16_t tag, std::mt19937& random) {
  auto value = std::make_unique<XpTiffTagData<T>>(tag, static_cast<std::uint32_t>(random() % 7));
  auto* bytes = static_cast<unsigned char*>(value->GetData());
  for (std::uint64_t i = 0; i < value->GetByteSize(); ++i) bytes[i] = static_cast<unsigned char>(random());
  ifd.AddTag(std::move(value));
}

void AddRandomValues(XpTiffTagIFD& ifd, std::mt19937& random) {
  constexpr auto kMakers = std::to_array<void (*)(XpTiffTagIFD&, std::uint16_t, std::mt19937&)>(
      {AddRandom<XpTiffTagTypeByte>, AddRandom<XpTiffTagTypeAscii>, AddRandom<XpTiffTagTypeShort>,
       AddRandom<XpTiffTagTypeLong>, AddRandom<XpTiffTagTypeRational>, AddRandom<XpTiffTagTypeSByte>,
       AddRandom<XpTiffTagTypeUndefined>, AddRandom<XpTiffTagTypeSShort>, AddRandom<XpTiffTagTypeSLong>,
       AddRandom<XpTiffTagTypeSRational>, AddRandom<XpTiffTagTypeFloat>, AddRandom<XpTiffTagTypeDouble>});
  for (auto i = random() % 20; i > 0; --i) {
    const auto tag = static_cast<std::uint16_t>(random());
    const bool isSpecial = (tag >= 0x9010 && tag <= 0x9012) || tag == kTagMakerNote;
    if (!isSpecial) kMakers[random() % kMakers.size()](ifd, tag, random);
  }
}

void AddRandomIfds(XpTiffTagIFD& ifd, std::uint16_t tag, std::size_t count, int depth, std::mt19937& random) {
  auto value = std::make_unique<XpTiffTagDataIFD>(tag, 0u);
  for (std::size_t i = 0; i < count; ++i) {
    auto& child = *value->ifds.emplace_back(std::make_unique<XpTiffTagIFD>());
    AddRandomValues(child, random);
    child.isMakerNote = tag == kTagMakerNote;
    child.isCamSignature = child.isMakerNote && random() % 2 == 0;
    const auto below = child.isMakerNote    ? kTagMakerSubIfd
                       : tag == kTagExifIfd ? kTagInteropIfd
                                            : kTagSubIfds;
    if (depth > 0) AddRandomIfds(child, below, random() % 4, depth - 1, random);
    if (depth > 0 && tag == kTagExifIfd) AddRandomIfds(child, kTagMakerNote, 1, 1, random);
  }
  ifd.AddTag(std::move(value));
}

TEST(TagTree, RandomTreesComeBackFromStoreWithSizesAsForetold) {
  for (unsigned seed = 0; seed < 120; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    XpTiffTagManager tree;
    tree.Create();
    tree.bigEndian = seed % 2 == 1;
    for (auto i = 1 + random() % 3; i > 0; --i) {
      auto& ifd = *tree.root->ifds.emplace_back(std::make_unique<XpTiffTagIFD>());
      AddRandomValues(ifd, random);
      AddRandomIfds(ifd, kTagExifIfd, 1, 2, random);
      if (i % 2 == 0) AddRandomIfds(ifd, kTagGpsIfd, random() % 3, 1, random);
    }
    const std::unique_ptr<XpTiffTagManager> copy = tree.Clone();
    XpMemoryFile file;
    file.Write("12 bytes....", 12, nullptr);
    std::uint64_t foretold = 8;
    for (const auto& ifd : tree.root->ifds) foretold += ifd->GetStoredSize(true);
    ASSERT_EQ(tree.Store(file), static_cast<std::int64_t>(foretold));
    ASSERT_EQ(file.GetSize(), static_cast<std::int64_t>(12 + foretold));
    file.Seek(12, XpSeekStart);
    XpTiffTagManager loaded;
    ASSERT_TRUE(loaded.Load(file, XpTagModeKnownNotes));
    EXPECT_EQ(FaultText(loaded), "");
    EXPECT_EQ(loaded.bigEndian, tree.bigEndian);
    EXPECT_EQ(Described(loaded), Described(tree));
    EXPECT_EQ("12 bytes...." + Stored(*copy), Content(file));
  }
}

TEST(TagTree, StoresTheLayoutOfTiff6) {
  for (const bool bigEndian : {false, true}) {
    const TagBytes b{bigEndian};
    XpTiffTagManager tree;
    tree.Create();
    tree.bigEndian = bigEndian;
    for (int i = 0; i < 2; ++i) tree.root->ifds.push_back(std::make_unique<XpTiffTagIFD>());
    XpTiffTagIFD& first = *tree.GetIfd(0);
    auto exif = std::make_unique<XpTiffTagDataIFD>(kTagExifIfd, 7u);
    exif->ifds.push_back(std::make_unique<XpTiffTagIFD>());
    exif->ifds[0]->SetRational(0x829A, 1, 60);
    auto subs = std::make_unique<XpTiffTagDataIFD>(kTagSubIfds, 0u);
    for (int i = 0; i < 2; ++i) subs->ifds.push_back(std::make_unique<XpTiffTagIFD>());
    subs->ifds[1]->SetShort(0x0101, 3);
    first.AddTag(std::move(exif));
    first.AddTag(std::move(subs));
    first.SetAscii(kTagSoftware, "abcd");
    first.SetUndefined(0x0002, "xyz", 3);
    first.SetShort(kTagOrientation, 6);
    tree.GetIfd(1)->SetLong(0x0201, 0x01020304);
    // IFD 0 at 8 with 5 entries: its data at 74, "abcd" 74 to 80, two offsets 80 to 88; the IFDs below at 88,
    // 94, 112; IFD 1 at 138.
    const std::string expected =
        b.Header() +
        b.Ifd({b.Entry(0x0002, 7, 3, "xyz\0"s), b.Entry(0x0112, 3, 1, b.U16(6) + "\0\0"s),
               b.Entry(0x0131, 2, 5, 74), b.Entry(0x014A, 4, 2, 80), b.Entry(0x8769, 4, 1, 112)},
              138) +
        "abcd\0\0"s + b.U32(88) + b.U32(94) + b.Ifd({}) + b.Ifd({b.Entry(0x0101, 3, 1, b.U16(3) + "\0\0"s)}) +
        b.Ifd({b.Entry(0x829A, 5, 1, 130)}) + b.U32(1) + b.U32(60) +
        b.Ifd({b.Entry(0x0201, 4, 1, 0x01020304)});
    EXPECT_EQ(Stored(tree), expected);
  }
}

TEST(TagTree, MakerNoteFromVersion2OnHasOffsetsFromItsOwnStart) {
  for (const int version : {0, 1, 2, 3}) {
    const TagBytes b;
    XpTiffTagManager tree;
    tree.Create();
    tree.root->ifds.push_back(std::make_unique<XpTiffTagIFD>());
    auto note = std::make_unique<XpTiffTagDataIFD>(kTagMakerNote, 0u);
    XpTiffTagIFD& maker = *note->ifds.emplace_back(std::make_unique<XpTiffTagIFD>());
    maker.isMakerNote = maker.isCamSignature = true;
    maker.headerVersion = static_cast<std::uint8_t>(version);
    maker.SetUndefined(0x1234, "12345", 5);
    tree.GetIfd(0)->AddTag(std::move(note));
    const std::string versionBlock = "KELO CAM \0"s + static_cast<char>(version) + "\0"s;
    const std::uint32_t start = 26;  // the note's own, after the header and IFD 0 of one entry
    const std::string expected = b.Header() + b.Ifd({b.Entry(kTagMakerNote, 7, 36, start)}) + versionBlock +
                                 b.Ifd({b.Entry(0x1234, 7, 5, (version < 2 ? start : 0) + 30)}) + "12345\0"s;
    EXPECT_EQ(Stored(*tree.Clone()), expected);
    EXPECT_EQ(Stored(tree), expected);
  }
}

TEST(TagTree, TreeThatCannotBeWrittenIsReported) {
  class FullFile : public XpMemoryFile {
    XpResult Write(const void*, std::uint64_t, std::uint64_t*) override { return XpErrDiskFull; }
  } full;
  XpMemoryFile file;
  XpTiffTagManager tree;
  EXPECT_EQ(tree.Store(file), 0);
  tree.Create();
  EXPECT_FALSE(tree.HasIfds());
  EXPECT_EQ(Stored(tree), TagBytes().Header());
  EXPECT_EQ(tree.Store(full), -1);
  XpTiffTagIFD& ifd = *tree.root->ifds.emplace_back(std::make_unique<XpTiffTagIFD>());
  for (std::uint32_t i = 0; i < 65536; ++i) {
    ifd.values.push_back(
        std::make_unique<XpTiffTagData<XpTiffTagTypeByte>>(static_cast<std::uint16_t>(i), 1u));
  }
  EXPECT_EQ(tree.Store(file), -1);
  EXPECT_EQ(file.GetSize(), 0);
  ifd.values.pop_back();
  std::int64_t written = 0;
  EXPECT_EQ(WriteIfd(file, ifd, false, 0xFFFFFFFF - 786424, 0, written), XpErrValueDoesNotFit);
  EXPECT_EQ(WriteIfd(file, ifd, false, 0xFFFFFFFF - 786426, 0, written), XpOk);
  EXPECT_EQ(written, 786426);
}

struct DamagedBlock {
  const char* name;
  std::string bytes;
  std::string endIfd;   // the tree when reading ends at the damage
  std::string skipTag;  // the tree when only damaged tags are skipped
  std::string fault;
};

TEST(TagTree, DamageCostsWhatTheOptionSaysAndIsReported) {
  const TagBytes b;
  const std::string head = b.Header();
  const std::string five = "5:3x1=0500 ", next = "{9:3x1=0900 }";
  const std::string good = b.Entry(5, 3, 1, b.U16(5) + "\0\0"s), last = b.Ifd({b.Entry(9, 3, 1, 9)});
  const auto withNext = [&](const std::string& entry) { return head + b.Ifd({entry, good}, 38) + last; };
  const std::string whole = "{" + five + "}" + next;
  const DamagedBlock blocks[] = {
      {"unknown type", withNext(b.Entry(4, 14, 1, 0)), "{}", whole, "0/4: the type 14 is unknown"},
      {"value longer than the file", withNext(b.Entry(4, 2, 57, 8)), "{}", whole, "0/4: the value is longer"},
      {"value past the end", withNext(b.Entry(4, 2, 9, 48)), "{}", whole, "0/4: the value lies outside"},
      {"value in the header", withNext(b.Entry(4, 2, 9, 7)), "{}", whole,
       "0/4: the offset of the value leads"},
      {"duplicate", withNext(b.Entry(5, 2, 1, "a\0\0\0"s)), whole, whole,
       "0/5: the tag is there more than once"},
      {"short offset time", withNext(b.Entry(0x9010, 2, 4, "+9:0")), whole, whole,
       "0/36880: the offset from UTC"},
      {"empty note", withNext(b.Entry(kTagMakerNote, 7, 0, 0)), whole, whole,
       "0/37500: the maker note is empty"},
      {"IFD below outside", withNext(b.Entry(kTagExifIfd, 4, 1, 55)), "{34665:32772 " + five + "}" + next,
       "{34665:32772 " + five + "}" + next, "exif/0: the IFD lies outside"},
      {"IFD below in the header", withNext(b.Entry(kTagExifIfd, 4, 1, 7)),
       "{34665:32772 " + five + "}" + next, "{34665:32772 " + five + "}" + next,
       "0/34665: the offset of an IFD leads into the header"},
      {"own IFD below", withNext(b.Entry(kTagExifIfd, 4, 1, 8)), "{34665:32772 " + five + "}" + next,
       "{34665:32772 " + five + "}" + next, "0/34665: the tag leads back"},
      {"IFD 1 twice", withNext(b.Entry(kTagExifIfd, 4, 1, 38)), "{34665:32772" + next + " " + five + "}",
       "{34665:32772" + next + " " + five + "}", "1/0: an IFD that was read before"},
      {"next is itself", head + b.Ifd({good}, 8), "{" + five + "}", "{" + five + "}",
       "0/0: the IFD names itself"},
      {"next outside", head + b.Ifd({good}, 900), "{" + five + "}{}", "{" + five + "}{}",
       "1/0: the IFD lies outside"},
      {"cut in the entries", head + b.U16(3) + good + good.substr(0, 9), "{" + five + "}", "{" + five + "}",
       "0/0: the file ends within"},
      {"damage below", head + b.Ifd({b.Entry(kTagExifIfd, 4, 1, 26)}) + b.Ifd({good, b.Entry(6, 99, 1, 0)}),
       "{34665:32772 }", "{34665:32772{" + five + "} }", "exif/6: the type 99 is unknown"},
      {"count of 0", withNext(b.Entry(4, 2, 0, 0xFFFFFFFF)), "{4:2x0= " + five + "}" + next,
       "{4:2x0= " + five + "}" + next, ""},
      {"offset time without a colon", head + b.Ifd({b.Entry(0x9010, 2, 7, 26)}) + "+09-00\0"s, "{}", "{}",
       "0/36880: the offset from UTC"},
      {"no IFD below", withNext(b.Entry(kTagExifIfd, 4, 1, 0)), "{34665:32772 " + five + "}" + next,
       "{34665:32772 " + five + "}" + next, ""},
      {"good offset time", head + b.Ifd({b.Entry(0x9010, 2, 7, 26)}) + "+09:00\0"s,
       "{36880:2x7=2b30393a303000 }", "{36880:2x7=2b30393a303000 }", ""},
  };
  XpTiffTagManager manager;
  for (const DamagedBlock& block : blocks) {
    SCOPED_TRACE(block.name);
    for (const OnBadTag onBadTag : {OnBadTag::EndIfd, OnBadTag::SkipTag}) {
      ASSERT_TRUE(Read(block.bytes, manager, {.onBadTag = onBadTag}));
      EXPECT_EQ(Described(manager), onBadTag == OnBadTag::EndIfd ? block.endIfd : block.skipTag);
      EXPECT_THAT(FaultText(manager), HasSubstr(block.fault));
      EXPECT_EQ(manager.faults.empty(), block.fault.empty());
    }
  }
}

TEST(TagTree, UnreadablePlaceOfADiskCostsOnlyItsOwnValue) {
  class BadPlace : public XpMemoryFile {
    XpResult Read(void* buffer, std::uint64_t count, std::uint64_t* read) override {
      const bool isBad = Tell() <= 60 && Tell() + static_cast<std::int64_t>(count) > 60;
      return isBad ? XpResult{XpErrFailed} : XpMemoryFile::Read(buffer, count, read);
    }
  } file;
  const TagBytes b;
  const std::string bytes = b.Header() +
                            b.Ifd({b.Entry(1, 2, 6, 50), b.Entry(2, 2, 6, 56), b.Entry(3, 2, 6, 62)}) +
                            "first\0bad..\0last.\0"s;
  file.Write(bytes.data(), bytes.size(), nullptr);
  file.Seek(0, XpSeekStart);
  XpTiffTagManager manager;
  ASSERT_TRUE(ReadTagTree(file, {.onBadTag = OnBadTag::SkipTag}, manager));
  ASSERT_EQ(manager.GetIfdCount(), 1u);
  EXPECT_EQ(manager.GetIfd(0)->GetAscii(1), "first");
  EXPECT_EQ(manager.GetIfd(0)->GetAscii(3), "last.");
  EXPECT_EQ(FaultText(manager), "0/2: the value cannot be read\n");
}

TEST(TagTree, BlockWithoutHeaderIsNotRead) {
  const TagBytes b;
  const std::string ifd = b.Ifd({});
  for (const std::string& bytes :
       {""s, "II*"s, "IM*\0\x08\0\0\0"s + ifd, "II\x2B\0\x08\0\0\0"s + ifd, "XX*\0\x08\0\0\0"s + ifd,
        b.Header(14) + ifd, b.Header(0xFFFFFFFF) + ifd}) {
    XpTiffTagManager manager;
    manager.Create();
    EXPECT_FALSE(Read(bytes, manager)) << bytes;
    EXPECT_EQ(manager.root, nullptr);
  }
}

TEST(TagTree, MakerNoteIsReadAsTheModeSays) {
  const TagBytes b;
  struct Case {
    std::string signature;
    std::uint32_t type;
    std::string known, none, all;  // the tree in the three modes
  };
  const std::string asNote = "{37500:32772note{7:3x1=0700 } }", cam = "{37500:32772cam{7:3x1=0700 } }";
  const auto blob = [&](const std::string& signature) {
    XpTiffTagIFD ifd;
    const std::string bytes = signature + b.Ifd({b.Entry(7, 3, 1, 7)});
    ifd.SetUndefined(kTagMakerNote, bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    return Described(ifd);
  };
  const std::string dsc = "KELO DSC \0\0\0"s, version = "KELO DSC \0\1\0"s, pic = "KELO PIC\0\0\0\0"s;
  const Case cases[] = {
      {dsc, 7, asNote, blob(dsc), asNote},
      {"KELO CAM \0\0\0"s, 7, cam, blob("KELO CAM \0\0\0"s), cam},
      {pic, 7, asNote, blob(pic), asNote},
      {"", 7, blob(""), blob(""), asNote},
      {version, 7, blob(version), blob(version), ""},
      {dsc, 4, asNote, "{37500:4x1=1a000000 }", asNote},
      {"", 4, "{37500:4x1=1a000000 }", "{37500:4x1=1a000000 }", asNote},
  };
  for (const Case& c : cases) {
    const std::string note = c.signature + b.Ifd({b.Entry(7, 3, 1, 7)});
    const auto count = c.type == 4 ? 1 : static_cast<std::uint32_t>(note.size());
    const std::string bytes = b.Header() + b.Ifd({b.Entry(kTagMakerNote, c.type, count, 26)}) + note;
    XpTiffTagManager manager;
    for (const auto& [mode, expected] :
         {std::pair{XpTagModeKnownNotes, c.known}, {XpTagModeNoNotes, c.none}, {XpTagModeAllNotes, c.all}}) {
      ASSERT_TRUE(Read(bytes, manager, {.mode = mode}));
      if (expected.empty()) continue;
      EXPECT_EQ(Described(manager), expected) << c.signature << c.type << mode;
    }
  }
  // A damaged note stays as far as it could be read; where all notes are IFDs, it is dropped.
  const std::string damaged = b.Header() + b.Ifd({b.Entry(kTagMakerNote, 7, 36, 26)}) + dsc +
                              b.Ifd({b.Entry(7, 3, 1, 7), b.Entry(8, 99, 1, 7)});
  XpTiffTagManager manager;
  ASSERT_TRUE(Read(damaged, manager));
  EXPECT_EQ(Described(manager), asNote);
  ASSERT_TRUE(Read(damaged, manager, {.mode = XpTagModeAllNotes}));
  EXPECT_EQ(Described(manager), "{37500:32772 }");
}

TEST(TagTree, PreviewOfTheMakerNoteIsNotedAndOnlyASmallOneRead) {
  const TagBytes b{true};
  XpTiffTagManager manager;
  for (const auto& [count, offset, kept] :
       {std::tuple{6u, 86u, 6u}, {6u, 87u, 0u}, {0x500000u, 86u, 0u}, {70000u, 86u, 0u}}) {
    const std::string maker =
        b.Ifd({b.Entry(kTagMakerPreview, 7, count, offset), b.Entry(kTagMakerRating, 4, 1, 4)});
    std::string bytes = b.Header() + b.Ifd({b.Entry(kTagExifIfd, 4, 1, 26)}) +
                        b.Ifd({b.Entry(kTagMakerNote, 7, 42, 44)}) + "KELO DSC \0\0\0"s + maker + "123456";
    if (count == 70000) bytes.resize(100000);
    ASSERT_TRUE(Read(bytes, manager));
    EXPECT_EQ(manager.previewOffset, offset);
    EXPECT_EQ(manager.previewSize, count);
    ASSERT_NE(manager.GetMakerIfd(), nullptr);
    EXPECT_EQ(manager.GetMakerIfd()->FindTag(kTagMakerPreview, false)->count, kept);
    EXPECT_EQ(manager.GetMakerIfd()->GetLong(kTagMakerRating, 0, false), 4u);
    EXPECT_EQ(FaultText(manager), "");
  }
  ASSERT_TRUE(Read(b.Header() + b.Ifd({}), manager));
  EXPECT_EQ(manager.previewSize, 0u);  // nothing of the tree before
}

TEST(TagTree, LimitsHoldAndAreReported) {
  const TagBytes b;
  std::string nested = b.Header();
  for (std::uint32_t i = 1; i <= 40; ++i) nested += b.Ifd({b.Entry(kTagSubIfds, 4, 1, 8 + 18 * i)});
  std::string shared = b.Header() + b.Ifd(std::vector<std::string>(4, b.Entry(1, 7, 50, 8)));
  for (std::size_t i = 0; i < 4; ++i) shared[10 + 12 * i] = static_cast<char>(i);
  std::string fan = b.Header() + b.Ifd({b.Entry(kTagSubIfds, 4, 30, 26)});
  for (std::uint32_t i = 0; i < 30; ++i) fan += b.U32(146 + 6 * i);
  for (int i = 0; i < 30; ++i) fan += b.Ifd({});
  struct Case {
    const std::string& bytes;
    TagLimits limits;
    std::string fault;
    std::ptrdiff_t ifdsAndTags;
  };
  const Case cases[] = {
      {nested, {}, "IFDs lie too deep", 16 * 2},
      {nested, {.entries = 5}, "too many tags", 6 + 5},
      {shared, {}, "too large together", 1 + 1},  // more than the file holds
      {shared + std::string(200, ' '), {.bytes = 149}, "too large together", 1 + 2},
      {fan, {.ifds = 11}, "too many IFDs", 11 + 1},
  };
  for (const Case& c : cases) {
    XpTiffTagManager manager;
    ASSERT_TRUE(Read(c.bytes, manager, {.onBadTag = OnBadTag::SkipTag, .limits = c.limits}));
    EXPECT_THAT(FaultText(manager), HasSubstr(c.fault));
    const std::string text = Described(manager);
    EXPECT_EQ(std::count(text.begin(), text.end(), '{') + std::count(text.begin(), text.end(), ':'),
              c.ifdsAndTags)
        << text;
  }
}

TEST(TagTree, BlockCutAtAnyByteLosesOnlyWhatIsCut) {
  std::mt19937 random(7);
  XpTiffTagManager tree;
  tree.Create();
  auto& first = *tree.root->ifds.emplace_back(std::make_unique<XpTiffTagIFD>());
  AddRandomValues(first, random);
  AddRandomIfds(first, kTagExifIfd, 1, 1, random);
  const std::string bytes = Stored(tree);
  std::size_t before = 0;
  for (std::size_t size = 0; size <= bytes.size(); ++size) {
    for (const std::int32_t mode : {XpTagModeKnownNotes, XpTagModeNoNotes, XpTagModeAllNotes}) {
      XpTiffTagManager cut;
      ASSERT_EQ(Read(bytes.substr(0, size), cut, {.mode = mode, .onBadTag = OnBadTag::SkipTag}), size > 8);
      EXPECT_EQ(cut.faults.empty(), size <= 8 || size == bytes.size()) << size;
      if (mode != XpTagModeKnownNotes || cut.GetIfdCount() == 0) continue;
      EXPECT_GE(cut.GetIfd(0)->GetTagCount(), before) << size;
      before = cut.GetIfd(0)->GetTagCount();
      ASSERT_EQ(Read(bytes.substr(0, size), cut), size > 8);
    }
  }
  EXPECT_EQ(before, first.GetTagCount());
}

template <class T>
std::string TextOf(std::vector<typename T::Element> elements, std::uint32_t index = 0) {
  XpTiffTagData<T> value(1, static_cast<std::uint32_t>(elements.size()));
  std::copy(elements.begin(), elements.end(), value.elements.get());
  return value.Clone()->ToString(index).c_str();
}

TEST(TagValues, ElementsAsText) {
  EXPECT_EQ(TextOf<XpTiffTagTypeByte>({1, 200}, 1), "200");
  EXPECT_EQ(TextOf<XpTiffTagTypeByte>({1, 200}, 2), "");
  EXPECT_EQ(TextOf<XpTiffTagTypeAscii>({'a', 'b', 0, 'c'}, 9), "ab");
  EXPECT_EQ(TextOf<XpTiffTagTypeAscii>({'a', 'b'}), "");
  EXPECT_EQ(TextOf<XpTiffTagTypeShort>({65535}), "65535");
  EXPECT_EQ(TextOf<XpTiffTagTypeLong>({2147483647}), "2147483647");
  EXPECT_EQ(TextOf<XpTiffTagTypeRational>({{4294967295, 3}}), "4294967295/3");
  EXPECT_EQ(TextOf<XpTiffTagTypeSByte>({-5}), "-5");
  EXPECT_EQ(TextOf<XpTiffTagTypeUndefined>({'0', '2', '3', '1'}), "0231");
  EXPECT_EQ(TextOf<XpTiffTagTypeSShort>({-300}), "-300");
  EXPECT_EQ(TextOf<XpTiffTagTypeSLong>({-70000}), "-70000");
  EXPECT_EQ(TextOf<XpTiffTagTypeSRational>({{-1, 3}}), "-1/3");
  EXPECT_EQ(TextOf<XpTiffTagTypeFloat>({0.5f}), "0.500000");
  EXPECT_EQ(TextOf<XpTiffTagTypeDouble>({-1e10}), "-10000000000.000000");
}

TEST(TagValues, IfdIsSearchedAndChangedByNumber) {
  XpTiffTagIFD ifd;
  auto exif = std::make_unique<XpTiffTagDataIFD>(kTagExifIfd, 0u);
  exif->ifds.push_back(std::make_unique<XpTiffTagIFD>());
  XpTiffTagIFD& below = *exif->ifds[0];
  for (const std::uint16_t tag : {kTagMakerNote, kTagMakerSubIfd}) {
    auto note = std::make_unique<XpTiffTagDataIFD>(tag, 0u);
    note->ifds.push_back(std::make_unique<XpTiffTagIFD>());
    note->ifds[0]->SetByte(0x0077, 1);
    below.AddTag(std::move(note));
  }
  below.SetShort(kTagOrientation, 8);
  EXPECT_EQ(ifd.AddTag(std::move(exif)), 0);
  EXPECT_EQ(ifd.GetShort(kTagOrientation, false), 0);
  EXPECT_EQ(ifd.GetShort(kTagOrientation, true), 8);
  EXPECT_EQ(ifd.SetShort(kTagOrientation, 3), 1);
  EXPECT_EQ(ifd.GetShort(kTagOrientation, true), 3);
  EXPECT_EQ(ifd.SetLong(kTagOrientation, 5), 1);
  EXPECT_EQ(ifd.GetShort(kTagOrientation, false), 0);  // another type now
  EXPECT_EQ(ifd.GetLong(kTagOrientation, 0, false), 5u);
  EXPECT_EQ(ifd.GetLong(kTagOrientation, 1, false), 0u);
  EXPECT_FALSE(ifd.HasTag(0x0077, true));  // maker notes have numbers of their own
  EXPECT_EQ(ifd.AddTag(nullptr), -1);
  ifd.SetAscii(2, "abc");
  ifd.SetAscii(3, "abc", 2);
  ifd.SetAscii(4, "abc", 9);
  EXPECT_EQ(ifd.FindTag(2, false)->count, 4u);
  EXPECT_EQ(ifd.GetAscii(3), "");
  EXPECT_EQ(ifd.GetAscii(4), "abc");
  ifd.SetUndefined(6, "\1\2", 2);
  EXPECT_EQ(ifd.GetUndefinedByte(6, 1, false), 2);
  EXPECT_EQ(ifd.GetUndefinedByte(6, 2, false), 0);
  ifd.Normalize();
  EXPECT_EQ(ifd.GetTagAt(5)->tag, kTagExifIfd);
  EXPECT_EQ(ifd.GetTagAt(5)->count, 1u);
  ifd.RemoveTagAt(6);
  ifd.RemoveTagAt(0);
  EXPECT_EQ(ifd.GetTagAt(0)->tag, 3);
  EXPECT_EQ(ifd.GetTagAt(5), nullptr);
}

TEST(TagValues, ExifVersionIsRaisedAndThatOfGpsFollows) {
  struct Case {
    std::string stored, raised, gps;
    std::uint32_t gpsCount = 4;
  };
  for (const Case& c : {Case{"", "0231", "\2\3\0\0"s},
                        {"0210", "0221", "\2\2\0\0"s},
                        {"0210", "0221", "abc\0"s, 3},
                        {"0221", "0221", "\2\2\0\0"s},
                        {"0230", "0230", "abcd"},
                        {"02", "0221", "\2\2\0\0"s},
                        {"1000", "1000", "abcd"}}) {
    XpTiffTagManager tree;
    RaiseExifVersion(tree);  // has nothing to raise
    tree.Create();
    XpTiffTagIFD& first = *tree.root->ifds.emplace_back(std::make_unique<XpTiffTagIFD>());
    for (const std::uint16_t tag : {kTagExifIfd, kTagGpsIfd}) {
      auto value = std::make_unique<XpTiffTagDataIFD>(tag, 0u);
      value->ifds.push_back(std::make_unique<XpTiffTagIFD>());
      first.AddTag(std::move(value));
    }
    if (!c.stored.empty()) {
      tree.GetExifIfd()->SetUndefined(kTagExifVersion, c.stored.data(),
                                      static_cast<std::uint32_t>(c.stored.size()));
    }
    tree.GetGpsIfd()->SetUndefined(kTagGpsVersionId, "abcd", c.gpsCount);
    RaiseExifVersion(tree);
    EXPECT_EQ(tree.GetExifIfd()->FindTag(kTagExifVersion, false)->ToString(0), c.raised.c_str());
    EXPECT_EQ(std::memcmp(tree.GetGpsIfd()->FindTag(kTagGpsVersionId, false)->GetData(), c.gps.data(), 4), 0)
        << c.stored;
  }
}

TEST(TagValues, GpsFieldsBecomeTagsOfTheirTypes) {
  XpGPSRecord record;
  XpTiffTagIFD none;
  ASSERT_EQ(AddGpsTags(none, record), XpOk);
  EXPECT_EQ(none.GetTagCount(), 0u);
  record.versionId.present = record.longitude.present = record.altitude.present =
      record.areaInformation.present = true;
  record.altitudeRef.present = record.dateStamp.present = record.differential.present = true;
  record.versionId.version = {2, 3, 0, 0};
  record.longitude.values = {{{9, 1}, {8, 1}, {7, 2}}};
  record.altitude.value = {55, 10};
  record.altitudeRef.value = 1;
  record.areaInformation.bytes = {'x', 'y'};
  record.dateStamp.text = "2026:11:25";
  record.differential.value = 1;
  XpTiffTagIFD ifd;
  ASSERT_EQ(AddGpsTags(ifd, record), XpOk);
  EXPECT_EQ(Described(ifd),
            "{0:1x4=02030000 4:5x3=090000000100000008000000010000000700000002000000 5:1x1=01 "
            "6:5x1=370000000a000000 28:7x2=7879 29:2x11=323032363a31313a323500 30:3x1=0100 }");
}

TEST(TagValues, NamesDependOnTheIfd) {
  EXPECT_EQ(TagName(TagGroup::Image, 0x0001), "");
  EXPECT_EQ(TagName(TagGroup::Gps, 0x0001), "GPSLatitudeRef");
  EXPECT_EQ(TagName(TagGroup::Interop, 0x0001), "InteroperabilityIndex");
  EXPECT_EQ(TagName(TagGroup::Image, kTagOrientation), "Orientation");
  EXPECT_EQ(TagName(TagGroup::Exif, kTagDateTimeOriginal), "DateTimeOriginal");
  EXPECT_EQ(TagName(TagGroup::Maker, 0xFFFF), "");
}

}  // namespace
