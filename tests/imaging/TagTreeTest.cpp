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
  return {static_cast<const char*>(file.GetData()), static_cast<std::size_t>(file.GetSize())};
}

XpTiffTagIFD& AddIfd(XpTiffTagDataIFD& value) {
  return *value.ifds.emplace_back(std::make_unique<XpTiffTagIFD>());
}
/// The value of the new tag, for IFDs below `ifd`.
XpTiffTagDataIFD& AddIfds(XpTiffTagIFD& ifd, std::uint16_t tag) {
  auto value = std::make_unique<XpTiffTagDataIFD>(tag, 0u);
  XpTiffTagDataIFD& added = *value;
  ifd.AddTag(std::move(value));
  return added;
}
/// The first IFD of the new tree.
XpTiffTagIFD& Begin(XpTiffTagManager& tree) {
  tree.Create();
  return AddIfd(*tree.root);
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
  XpTiffTagDataIFD& value = AddIfds(ifd, tag);
  for (std::size_t i = 0; i < count; ++i) {
    XpTiffTagIFD& child = AddIfd(value);
    AddRandomValues(child, random);
    child.isMakerNote = tag == kTagMakerNote;
    child.isCamSignature = child.isMakerNote && random() % 2 == 0;
    const auto below = child.isMakerNote    ? kTagMakerSubIfd
                       : tag == kTagExifIfd ? kTagInteropIfd
                                            : kTagSubIfds;
    if (depth > 0) AddRandomIfds(child, below, random() % 4, depth - 1, random);
    if (depth > 0 && tag == kTagExifIfd) AddRandomIfds(child, kTagMakerNote, 1, 1, random);
  }
}

TEST(TagTree, RandomTreesComeBackFromStoreWithSizesAsForetold) {
  for (unsigned seed = 0; seed < 120; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    XpTiffTagManager tree;
    tree.Create();
    tree.bigEndian = seed % 2 == 1;
    for (auto i = 1 + random() % 3; i > 0; --i) {
      XpTiffTagIFD& ifd = AddIfd(*tree.root);
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
    file.Seek(12, XpSeekStart);
    XpTiffTagManager loaded;
    ASSERT_TRUE(loaded.Load(file, XpTagModeKnownNotes));
    EXPECT_EQ(FaultText(loaded), "");
    EXPECT_EQ(loaded.bigEndian, tree.bigEndian);
    EXPECT_EQ(Described(loaded), Described(tree));
    EXPECT_EQ(Stored(*copy), Stored(tree));
  }
}

TEST(TagTree, StoresTheLayoutOfTiff6) {
  for (const bool bigEndian : {false, true}) {
    const TagBytes b{bigEndian};
    XpTiffTagManager tree;
    XpTiffTagIFD& first = Begin(tree);
    tree.bigEndian = bigEndian;
    AddIfd(AddIfds(first, kTagExifIfd)).SetRational(0x829A, 1, 60);
    XpTiffTagDataIFD& subs = AddIfds(first, kTagSubIfds);
    AddIfd(subs);
    AddIfd(subs).SetShort(0x0101, 3);
    first.SetAscii(kTagSoftware, "abcd");
    first.SetUndefined(0x0002, "xyz", 3);
    first.SetShort(kTagOrientation, 6);
    AddIfd(*tree.root).SetLong(0x0201, 0x01020304);
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
    XpTiffTagIFD& maker = AddIfd(AddIfds(Begin(tree), kTagMakerNote));
    maker.isMakerNote = maker.isCamSignature = true;
    maker.headerVersion = static_cast<std::uint8_t>(version);
    maker.SetUndefined(0x1234, "12345", 5);
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
  XpTiffTagIFD& ifd = AddIfd(*tree.root);
  for (int i = 0; i < 65536; ++i) {
    ifd.values.push_back(std::make_unique<XpTiffTagData<XpTiffTagTypeByte>>(std::uint16_t{1}, 1u));
  }
  EXPECT_EQ(tree.Store(file), -1);
  EXPECT_EQ(file.GetSize(), 0);
  ifd.values.pop_back();
  std::int64_t written = 0;
  EXPECT_EQ(WriteIfd(file, ifd, false, 0xFFFFFFFF - 786424, 0, written), XpErrValueDoesNotFit);
  EXPECT_EQ(WriteIfd(file, ifd, false, 0xFFFFFFFF - 786426, 0, written), XpOk);
  EXPECT_EQ(written, 786426);
}

TEST(TagTree, DamageCostsWhatTheOptionSaysAndIsReported) {
  const TagBytes b;
  const std::string head = b.Header(), five = "5:3x1=0500 ", next = "{9:3x1=0900 }";
  const std::string good = b.Entry(5, 3, 1, b.U16(5) + "\0\0"s);
  const auto withNext = [&](std::uint32_t tag, std::uint32_t type, std::uint32_t count, std::uint32_t field) {
    return head + b.Ifd({b.Entry(tag, type, count, field), good}, 38) + b.Ifd({b.Entry(9, 3, 1, 9)});
  };
  const std::string whole = "{" + five + "}" + next, onlyFive = "{" + five + "}";
  const std::string noExif = "{34665:32772 " + five + "}" + next;
  struct DamagedBlock {
    std::string fault;
    std::string bytes;
    std::string skipTag;      // the tree when only damaged tags are skipped
    std::string endIfd = "";  // the tree when reading ends at the damage; empty if it is the same
  };
  const DamagedBlock blocks[] = {
      {"0/4: the type 14 is unknown", withNext(4, 14, 1, 0), whole, "{}"},
      {"0/4: the value is longer", withNext(4, 2, 57, 8), whole, "{}"},
      {"0/4: the value lies outside", withNext(4, 2, 9, 48), whole, "{}"},
      {"0/4: the offset of the value leads", withNext(4, 2, 9, 7), whole, "{}"},
      {"0/5: the tag is there more than once", withNext(5, 2, 1, 'a'), whole},
      {"0/36880: the offset from UTC", withNext(0x9010, 2, 4, 0), whole},
      {"0/36880: the offset from UTC", head + b.Ifd({b.Entry(0x9010, 2, 7, 26)}) + "+09-00\0"s, "{}"},
      {"", head + b.Ifd({b.Entry(0x9010, 2, 7, 26)}) + "+09:00\0"s, "{36880:2x7=2b30393a303000 }"},
      {"0/37500: the maker note is empty", withNext(kTagMakerNote, 7, 0, 0), whole},
      {"exif/0: the IFD lies outside", withNext(kTagExifIfd, 4, 1, 55), noExif},
      {"0/34665: the offset of an IFD leads into the header", withNext(kTagExifIfd, 4, 1, 7), noExif},
      {"0/34665: the tag leads back", withNext(kTagExifIfd, 4, 1, 8), noExif},
      {"", withNext(kTagExifIfd, 4, 1, 0), noExif},
      {"1/0: an IFD that was read before", withNext(kTagExifIfd, 4, 1, 38),
       "{34665:32772" + next + " " + five + "}"},
      {"0/0: the IFD names itself", head + b.Ifd({good}, 8), onlyFive},
      {"1/0: the IFD lies outside", head + b.Ifd({good}, 900), onlyFive + "{}"},
      {"0/0: the file ends within", head + b.U16(3) + good + good.substr(0, 9), onlyFive},
      {"exif/6: the type 99 is unknown",
       head + b.Ifd({b.Entry(kTagExifIfd, 4, 1, 26)}) + b.Ifd({good, b.Entry(6, 99, 1, 0)}),
       "{34665:32772" + onlyFive + " }", "{34665:32772 }"},
      {"", withNext(4, 2, 0, 0xFFFFFFFF), "{4:2x0= " + five + "}" + next},
  };
  XpTiffTagManager manager;
  for (const DamagedBlock& block : blocks) {
    ASSERT_TRUE(Read(block.bytes, manager, {.onBadTag = OnBadTag::SkipTag}));
    EXPECT_EQ(Described(manager), block.skipTag) << block.fault;
    ASSERT_TRUE(Read(block.bytes, manager, {.onBadTag = OnBadTag::EndIfd}));
    EXPECT_EQ(Described(manager), block.endIfd.empty() ? block.skipTag : block.endIfd) << block.fault;
    EXPECT_THAT(FaultText(manager), HasSubstr(block.fault));
    EXPECT_EQ(manager.faults.empty(), block.fault.empty()) << block.skipTag;
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
    std::string known, none, all;  // the tree in the three modes; empty if of no interest
  };
  const std::string asNote = "{37500:32772note{7:3x1=0700 } }", cam = "{37500:32772cam{7:3x1=0700 } }";
  const std::string ifd = b.Ifd({b.Entry(7, 3, 1, 7)}), asLong = "{37500:4x1=1a000000 }";
  const auto blob = [&](const std::string& signature) {
    XpTiffTagIFD tags;
    const std::string bytes = signature + ifd;
    tags.SetUndefined(kTagMakerNote, bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    return Described(tags);
  };
  const std::string dsc = "KELO DSC \0\0\0"s, version = "KELO DSC \0\1\0"s;
  const std::string camera = "KELO CAM \0\0\0"s, pic = "KELO PIC\0\0\0\0"s;
  const Case cases[] = {
      {dsc, 7, asNote, blob(dsc), asNote},
      {camera, 7, cam, blob(camera), cam},
      {pic, 7, asNote, blob(pic), asNote},
      {"", 7, blob(""), blob(""), asNote},
      {version, 7, blob(version), blob(version), ""},
      {dsc, 4, asNote, asLong, asNote},
      {"", 4, asLong, asLong, asNote},
  };
  XpTiffTagManager manager;
  for (const Case& c : cases) {
    const std::string note = c.signature + ifd;
    const auto count = c.type == 4 ? 1 : static_cast<std::uint32_t>(note.size());
    const std::string bytes = b.Header() + b.Ifd({b.Entry(kTagMakerNote, c.type, count, 26)}) + note;
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
  XpTiffTagIFD& first = Begin(tree);
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
  XpTiffTagIFD& below = AddIfd(AddIfds(ifd, kTagExifIfd));
  for (const std::uint16_t tag : {kTagMakerNote, kTagMakerSubIfd}) {
    AddIfd(AddIfds(below, tag)).SetByte(0x0077, 1);
  }
  below.SetShort(kTagOrientation, 8);
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
    XpTiffTagIFD& first = Begin(tree);
    XpTiffTagIFD& exif = AddIfd(AddIfds(first, kTagExifIfd));
    const auto count = static_cast<std::uint32_t>(c.stored.size());
    if (count > 0) exif.SetUndefined(kTagExifVersion, c.stored.data(), count);
    AddIfd(AddIfds(first, kTagGpsIfd)).SetUndefined(kTagGpsVersionId, "abcd", c.gpsCount);
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
