// Containers of binary data: their bytes, what is read of damaged ones, and that a write never loses one.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>

#include "content/moff/MoffSource.h"
#include "content/moff/MoffTags.h"
#include "content/moff/SfMoffFile.h"
#include "content/moff/SfStpFile.h"
#include "foundation/file/XpFileOperations.h"
#include "tests/content/MoffBytes.h"
#include "tests/foundation/FolderTest.h"
#include "tests/support/FullDisk.h"

namespace {

using namespace vrx::test_support;
namespace fs = std::filesystem;
namespace moff = vrx::moff;

constexpr std::array<std::uint32_t, 4> kValues{1, 2, 3, 4};

std::span<const std::byte> AsBytes(std::string_view text) { return std::as_bytes(std::span(text)); }

std::string TextOf(const XpMemoryFile& file) {
  return {static_cast<const char*>(file.GetData()), static_cast<std::size_t>(file.GetSize())};
}

/// The data of the group, or "(null)".
std::string GroupText(SfMoffFile& file, std::uint32_t id) {
  std::int64_t size = -1;
  const std::unique_ptr<void, decltype(&std::free)> block(file.ReadGroupData(id, size), &std::free);
  if (block == nullptr) {
    EXPECT_EQ(size, 0);
    return "(null)";
  }
  return {static_cast<const char*>(block.get()), static_cast<std::size_t>(size)};
}

/// A container in memory.
struct Tree {
  moff::FileTag root;
  moff::BodyRange range;
  XpMemoryFile file;

  XpResult ReadTables(const std::string& bytes, const moff::Limits& limits = {}) {
    if (!bytes.empty()) file.Write(bytes.data(), bytes.size(), nullptr);
    return moff::ReadHeaders(file, root, range, limits);
  }
  XpResult ReadBodies() { return moff::ReadBodies(file, range, root); }
  std::string Written() {
    XpMemoryFile out;
    EXPECT_EQ(moff::PlaceTree(root), XpOk);
    EXPECT_EQ(moff::WriteTree(out, root), XpOk);
    return TextOf(out);
  }
};

class MoffFileTest : public FolderTest {
 protected:
  MoffFileTest() { Put("clip.mts", "film"); }
  XpResult PutAndOpen(const std::string& bytes) {
    Put("clip.mts.moff", bytes);
    return m_file.Open(Path("clip.mts"));
  }
  XpResult PutAndOpenFully(const std::string& bytes) {
    Put("clip.mts.moff", bytes);
    return m_file.OpenFully(Path("clip.mts"));
  }

  SfMoffFile m_file;
};

TEST_F(MoffFileTest, TheBytesWrittenAreThoseOfTheFormat) {
  constexpr std::int64_t kWritten = 1'500'000'000;
  const timespec times[2] = {{kWritten, 0}, {kWritten, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, Native("clip.mts").c_str(), times, 0), 0);
  ASSERT_EQ(m_file.Create(Path("clip.mts")), XpOk);
  EXPECT_EQ(m_file.GetMoffPath(), Path("clip.mts.moff"));
  ASSERT_EQ(m_file.SetGroupData(7, kValues, AsBytes("old")), XpOk);
  ASSERT_EQ(m_file.SetGroupData(0xFFFFFFFF, {9, 8, 7, 6}, AsBytes("")), XpOk);
  ASSERT_EQ(m_file.SetGroupData(7, kValues, AsBytes("GPS log")), XpOk);
  EXPECT_FALSE(Exists("clip.mts.moff")) << "written before it was committed";
  ASSERT_EQ(m_file.Close(true), XpOk);
  XpDateTime created;
  XpFile(Path("clip.mts")).GetCreationTime(created);
  EXPECT_EQ(Get("clip.mts.moff"),
            MoffBytes({"clip.mts", 4, created.ToTimeT(), kWritten},
                      {{7, {{"BINA", "GPS log"}}}, {0xFFFFFFFF, {{"BINA", ""}}, {9, 8, 7, 6}}}));
  EXPECT_TRUE(m_file.GetMoffPath().IsEmpty());
  const bool keepsMarks = XpPathSetHidden(Path("clip.mts")) == XpOk;
  EXPECT_EQ(XpFile(Path("clip.mts.moff")).IsHidden(), keepsMarks);
}

TEST_F(MoffFileTest, TheNameOfTheSourceIsKeptWhole) {
  std::string name;  // as long as a name can be, each character of two units
  for (int i = 0; i < 62; ++i) name += "\xF0\x9F\x8E\xAC";
  const XpString path = Put(name + ".mts");
  ASSERT_EQ(m_file.Create(path), XpOk);
  EXPECT_EQ(moff::SourceName(m_file.GetHeader()), XpNarrowString(name + ".mts").ToWide());
  moff::FileHeader header;
  header.sourceName.fill(u'x');
  EXPECT_EQ(moff::SourceName(header).Length(), 260) << "a name without an end";
}

TEST(MoffReadTest, LongerAndShorterRecordsAreRead) {
  const std::string whole = MoffBytes({.size = 99, .created = 5, .written = -6}, {{7, {{"BINA", "log"}}}});
  struct Case {
    std::size_t offset;  // of the record
    std::size_t oldSize;
    std::size_t newSize;
    XpResult result;
    std::size_t groups;
  };
  for (const Case& c : {Case{0, 824, 1000, XpOk, 1}, Case{0, 824, 100, XpOk, 1}, Case{0, 824, 8, XpOk, 1},
                        Case{840 - 16, 16, 50, XpOk, 1}, Case{868, 16, 17, XpOk, 1}}) {
    std::string bytes = whole;
    bytes.replace(c.offset, c.oldSize, Resized(whole.substr(c.offset, c.oldSize), c.newSize));
    Tree tree;
    ASSERT_EQ(tree.ReadTables(bytes), c.result) << c.newSize;
    ASSERT_EQ(tree.root.child->GetChildren().size(), c.groups);
    const bool isCut = c.newSize < 568;
    EXPECT_EQ(tree.root.record.sourceSize, c.offset == 0 && isCut ? 0 : 99) << c.newSize;
    EXPECT_EQ(tree.root.record.written, c.offset == 0 && isCut ? 0 : -6) << c.newSize;
    EXPECT_EQ(moff::SourceName(tree.root.record), c.newSize == 8 ? u"" : u"clip.mts");
    // Positions count from where the table is found, so that only that of a moved body is another one.
    EXPECT_EQ(tree.range.first, static_cast<std::int64_t>(900 + c.newSize - c.oldSize));
    EXPECT_EQ(tree.ReadBodies(), c.offset == 868 ? XpErrMalformedRecord : XpOk) << c.newSize;
  }
  // A table of eight bytes has no count, and so no records.
  Tree empty;
  EXPECT_EQ(empty.ReadTables(HeaderBytes({}) + Resized(TableBytes("GRUP", 3), 8)), XpOk);
  EXPECT_TRUE(empty.root.child->GetChildren().empty());
}

TEST(MoffReadTest, DamagedContainersAreRefused) {
  const std::string header = HeaderBytes({});
  const std::string group = U32(7) + Zeros(24);
  const std::string oneGroup = header + TableBytes("GRUP", 1) + group;
  const std::string oneEntry = oneGroup + TableBytes("INDX", 1);
  const auto entryAt = [](std::uint32_t position) { return U32(position) + Zeros(12); };
  const auto body = [](const char* kind, std::uint32_t size) { return kind + U32(size) + "data"; };
  constexpr std::uint32_t kHuge = 0xFFFFFFFF;
  struct Case {
    const char* name;
    std::string bytes;
    XpResult tables;
    XpResult bodies;
  };
  const Case cases[] = {
      {"nothing", "", XpErrEndOfFile, 0},
      {"other signature", "FFOM" + header.substr(4), XpErrMalformedRecord, 0},
      {"record of 7 bytes", Resized(header, 824).replace(4, 4, U32(7)), XpErrMalformedRecord, 0},
      {"record of 0 bytes", Resized(header, 824).replace(4, 4, U32(0)), XpErrMalformedRecord, 0},
      {"huge record", Resized(header, 824).replace(4, 4, U32(kHuge)), XpErrMalformedRecord, 0},
      {"no groups", header + TableBytes("GRUP", 0), XpOk, XpOk},
      {"entries where groups belong", header + TableBytes("INDX", 0), XpErrMalformedRecord, 0},
      {"table record of 7 bytes", header + TableBytes("GRUP", 0).replace(4, 4, U32(7)), XpErrMalformedRecord,
       0},
      {"huge table record", header + TableBytes("GRUP", 0).replace(4, 4, U32(kHuge)), XpErrMalformedRecord,
       0},
      {"2^32 - 1 groups", header + TableBytes("GRUP", kHuge) + group, XpErrMalformedRecord, 0},
      {"one group too many", header + TableBytes("GRUP", 2) + group, XpErrMalformedRecord, 0},
      {"groups without an index", oneGroup, XpErrEndOfFile, 0},
      {"2^32 - 1 entries", oneGroup + TableBytes("INDX", kHuge) + entryAt(0), XpErrMalformedRecord, 0},
      {"count times size is 2^32", oneGroup + TableBytes("INDX", 1u << 28), XpErrMalformedRecord, 0},
      {"body", oneEntry + entryAt(32) + body("BINA", 12), XpOk, XpOk},
      {"body of the head alone", oneEntry + entryAt(32) + body("JPEG", 8), XpOk, XpOk},
      {"body size below its head", oneEntry + entryAt(32) + body("BINA", 7), XpOk, XpErrMalformedRecord},
      {"body size 0", oneEntry + entryAt(32) + body("BINA", 0), XpOk, XpErrMalformedRecord},
      {"body past the end", oneEntry + entryAt(32) + body("BINA", 13), XpOk, XpErrFailed},
      {"huge body", oneEntry + entryAt(32) + body("BINA", kHuge), XpOk, XpErrFailed},
      {"unknown kind", oneEntry + entryAt(32) + body("bina", 12), XpOk, XpErrFailed},
      {"position past the end", oneEntry + entryAt(kHuge) + body("BINA", 12), XpOk, XpErrFailed},
      {"position in the tables", oneEntry + entryAt(31) + body("BINA", 12), XpOk, XpErrMalformedRecord},
      {"entries that are their own body", oneEntry + entryAt(0) + body("BINA", 12), XpOk,
       XpErrMalformedRecord},
      {"two entries of one body",
       oneGroup + TableBytes("INDX", 2) + entryAt(48) + entryAt(48) + body("BINA", 12), XpOk,
       XpErrMalformedRecord},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Tree().ReadTables(c.bytes, {kHuge, kHuge}), c.tables)
        << c.name << ", the file's size alone decides";
    Tree tree;
    EXPECT_EQ(tree.ReadTables(c.bytes), c.tables) << c.name;
    if (c.tables == XpOk) {
      EXPECT_EQ(tree.ReadBodies(), c.bodies) << c.name;
      EXPECT_EQ(moff::ListGroups(&tree.file, tree.range, tree.root).size(),
                tree.root.child->GetChildren().size());
    }
  }
}

TEST(MoffReadTest, LimitsHoldForAllGroupsTogether) {
  const std::vector<MoffGroup> groups{{1, {{"BINA", ""}, {"BINA", ""}}}, {2, {{"JPEG", ""}}}};
  for (const auto& [limits, expected] :
       {std::pair{moff::Limits{2, 3}, XpOk}, std::pair{moff::Limits{1, 3}, XpErrMalformedRecord},
        std::pair{moff::Limits{2, 2}, XpErrMalformedRecord}}) {
    Tree tree;
    EXPECT_EQ(tree.ReadTables(MoffBytes({}, groups), limits), expected);
  }
}

TEST(MoffReadTest, ACutContainerIsNeverReadWhole) {
  const std::string whole =
      MoffBytes({}, {{3, {{"JPEG", "picture"}, {"STPD", "chunk"}}}, {7, {{"BINA", "log"}}}});
  const std::size_t tables = 840 + 2 * 28 + 2 * 16 + 3 * 16;
  for (std::size_t size = 0; size <= whole.size(); ++size) {
    Tree tree;
    ASSERT_EQ(tree.ReadTables(whole.substr(0, size)) == XpOk, size >= tables) << size;
    if (size < tables) continue;
    EXPECT_EQ(tree.ReadBodies() == XpOk, size == whole.size()) << size;
    std::size_t readable = 0;
    Tree listed;
    listed.ReadTables(whole.substr(0, size));
    for (const auto& group : moff::ListGroups(&listed.file, listed.range, listed.root)) {
      for (const auto& entry : group.entries) readable += entry.result == XpOk ? 1u : 0u;
    }
    EXPECT_EQ(readable, size == whole.size()        ? 3u
                        : size >= whole.size() - 11 ? 2u
                        : size >= tables + 15       ? 1u
                                                    : 0u)
        << size;
  }
}

TEST(MoffReadTest, WhatNewerVersionsKeepInUnknownFieldsIsKept) {
  std::string bytes = MoffBytes({}, {{7, {{"BINA", "log"}}}});
  for (const std::size_t unknown :
       {12u, 19u, 540u, 568u, 823u, 824u + 12, 840u + 4, 868u + 12, 884u + 4, 884u + 15})
    bytes[unknown] = '\x77';
  Tree tree;
  ASSERT_EQ(tree.ReadTables(bytes), XpOk);
  ASSERT_EQ(tree.ReadBodies(), XpOk);
  EXPECT_EQ(tree.Written(), bytes);
}

TEST(MoffWriteTest, WhatCannotBeReadAgainIsNotWritten) {
  moff::FileTag root;
  moff::GroupTag& group = root.child->Add();
  for (int i = 0; i < 2; ++i) {
    group.child->Add().body = XpSharedPtr<moff::FileBody>(
        new moff::FileBody{moff::kBinaryBody, 0x90000000, XpSharedPtr<XpMemoryFile>(new XpMemoryFile)});
  }
  EXPECT_EQ(moff::PlaceTree(root), XpOk) << "the second body begins within 32 bits";
  group.child->Add();
  EXPECT_EQ(moff::PlaceTree(root), XpErrMalformedRecord);
  moff::FileTag crowded;
  for (std::uint32_t i = 0; i <= moff::Limits().groups; ++i) crowded.child->Add();
  EXPECT_EQ(moff::PlaceTree(crowded), XpErrMalformedRecord);
}

TEST_F(MoffFileTest, TheContainerOfTheStemComesBeforeThatOfTheFile) {
  EXPECT_EQ(moff::MoffPathFor(Path("a.mp4")), Path("a.mp4.moff"));
  Put("a.moff");
  Put("a.mp4.moff");
  EXPECT_EQ(moff::MoffPathFor(Path("a.mp4")), Path("a.moff"));
  EXPECT_EQ(moff::MoffPathFor(Path("a.mp4.moff")), Path("a.mp4.moff"));
  EXPECT_EQ(moff::MoffPathFor(Path("x.MOFF")), Path("x.MOFF.moff"));
  fs::create_directory(Native("b.moff"));
  EXPECT_EQ(moff::MoffPathFor(Path("b.mp4")), Path("b.mp4.moff"));
  EXPECT_EQ(moff::MoffPathFor(u"C:\\v\\c.mp4"), u"C:\\v\\c.mp4.moff");
  EXPECT_EQ(moff::MoffPathFor(Path("plain")), Path("plain.moff"));
  EXPECT_EQ(m_file.Open(u""), XpErrOpenFailed);
  EXPECT_EQ(m_file.Create(u""), XpErrOpenFailed);
}

TEST_F(MoffFileTest, AContainerIsOpenedForItsOwnMediaFileOnly) {
  struct Case {
    const char* name;
    const char* container;
    std::vector<const char*> media;
    std::int64_t size;  // in the header; the files have 4 bytes
    const char* source;
    XpResult result;
  };
  const Case cases[] = {
      {"same size", "a.mts.moff", {"a.mts"}, 4, "a.mts", XpOk},
      {"other size", "a.mts.moff", {"a.mts"}, 5, "", XpErrFileNotFound},
      {"changed JPEG", "a.jpg.moff", {"a.jpg"}, 5, "a.jpg", XpOk},
      {"changed MPO", "a.MPO.moff", {"a.MPO"}, 5, "a.MPO", XpOk},
      {"changed MP4", "a.mp4.moff", {"a.mp4"}, 5, "a.mp4", XpOk},
      {"changed KRW", "a.krw.moff", {"a.krw"}, 5, "a.krw", XpOk},
      {"changed KRQ", "a.krq.moff", {"a.krq"}, 5, "a.krq", XpOk},
      {"changed other RAW", "a.kr2.moff", {"a.kr2"}, 5, "", XpErrFileNotFound},
      {"changed TIFF", "a.tif.moff", {"a.tif"}, 5, "", XpErrFileNotFound},
      {"changed MOV", "a.mov.moff", {"a.mov"}, 5, "", XpErrFileNotFound},
      {"gone", "a.mts.moff", {"b.mts"}, 4, "", XpErrFileNotFound},
      {"of the stem", "a.moff", {"a.txt", "a.MTS"}, 4, "a.MTS", XpOk},
      {"of the stem, none is media", "a.moff", {"a.txt", "a.moff.bak"}, 4, "", XpErrFileNotFound},
      {"of the stem, named one", "a.moff", {"a.jpg", "clip.mts", "a.thm"}, 4, "a.jpg", XpOk},
      {"of another stem", "clip.moff", {"clip.jpg", "clip.mts", "clip.thm"}, 4, "clip.mts", XpOk},
      {"the name without extension", "a.moff", {"a", "a.jpg"}, 4, "a", XpOk},
      {"changed without extension", "a.moff", {"a", "a.jpg"}, 5, "", XpErrFileNotFound},
  };
  for (const Case& c : cases) {
    const std::string folder = std::string(c.name) + "/";
    for (const char* file : c.media) Put(folder + file, "film");
    const XpString path = Put(folder + c.container, MoffBytes({.size = c.size}, {}));
    EXPECT_EQ(m_file.Open(path), c.result) << c.name;
    EXPECT_EQ(m_file.GetSourcePath(), *c.source == 0 ? XpString() : Path(folder + c.source)) << c.name;
    EXPECT_EQ(m_file.OpenFully(path), c.result) << c.name;
    m_file.SetSkipValidation(true);
    EXPECT_EQ(m_file.Open(path), XpOk) << c.name;
    m_file.SetSkipValidation(false);
  }
}

TEST_F(MoffFileTest, TheFirstBinaryBodyOfAGroupIsReadInBothStates) {
  const std::string bytes =
      MoffBytes({}, {{5, {{"STPD", "chunk"}}},
                     {7, {{"JPEG", "picture"}, {"BINA", "log"}, {"BINA", "later"}}, {4, 3, 2, 1}},
                     {7, {{"BINA", "second group"}}},
                     {8, {{"BINA", ""}}},
                     {9, {}}});
  for (const bool fully : {false, true}) {
    ASSERT_EQ(fully ? PutAndOpenFully(bytes) : PutAndOpen(bytes), XpOk);
    EXPECT_EQ(GroupText(m_file, 5), "(null)");
    EXPECT_EQ(GroupText(m_file, 7), "log");
    EXPECT_EQ(GroupText(m_file, 8), "");
    EXPECT_EQ(GroupText(m_file, 9), "(null)");
    EXPECT_EQ(GroupText(m_file, 10), "(null)");
    XpSharedPtr<SfMoffGroup> group;
    ASSERT_EQ(m_file.FindGpsGroup(group), XpOk);
    ASSERT_TRUE(group);
    EXPECT_EQ(group->GetIndex(), 1u);
    EXPECT_EQ(group->GetId(), 7u);
    EXPECT_EQ(group->GetValues(), (std::array<std::uint32_t, 4>{4, 3, 2, 1}));
    EXPECT_EQ(group->GetOwner(), &m_file);
    const auto groups = m_file.ListGroups();
    ASSERT_EQ(groups.size(), 5u);
    EXPECT_EQ(groups[1].entries[2].head.size, 13u);
    EXPECT_EQ(groups[0].entries[0].position, 840 + 5 * 44 + 6 * 16);
    XpSharedPtr<XpMemoryFile> data;
    ASSERT_EQ(m_file.ReadEntry(0, 0, data), XpOk);
    EXPECT_EQ(TextOf(*data), "chunk");
    EXPECT_NE(dynamic_cast<SfStpFile*>(data.Get()), nullptr);
    EXPECT_EQ(m_file.ReadEntry(0, 1, data), XpErrInvalidArgument);
    EXPECT_EQ(m_file.ReadEntry(5, 0, data), XpErrInvalidArgument);
  }
  ASSERT_EQ(PutAndOpen(bytes.substr(0, bytes.find("log") + 2)), XpOk);
  EXPECT_EQ(GroupText(m_file, 7), "(null)") << "a body that is cut off";
  EXPECT_EQ(PutAndOpenFully(bytes.substr(0, bytes.size() - 1)), XpErrFailed);
  EXPECT_TRUE(m_file.GetMoffPath().IsEmpty());
}

TEST_F(MoffFileTest, AGroupOutlivesItsContainer) {
  const std::string bytes = MoffBytes({}, {{7, {{"BINA", "log"}}}});
  XpSharedPtr<SfMoffGroup> group;
  std::int64_t size = -1;
  {
    SfMoffFile file;
    EXPECT_EQ(file.FindGpsGroup(group), XpErrNotOpen);
    Put("clip.mts.moff", bytes);
    ASSERT_EQ(file.Open(Path("clip.mts")), XpOk);
    ASSERT_EQ(file.FindGpsGroup(group), XpOk);
    void* block = group->ReadData(size);
    EXPECT_EQ(size, 3);
    std::free(block);
  }
  EXPECT_EQ(group->GetOwner(), nullptr);
  EXPECT_EQ(group->ReadData(size), nullptr);
  EXPECT_EQ(size, 0);
  ASSERT_EQ(PutAndOpen(MoffBytes({}, {})), XpOk);
  EXPECT_EQ(m_file.FindGpsGroup(group), XpOk);
  EXPECT_FALSE(group);
}

TEST_F(MoffFileTest, ChangingAGroupKeepsEverythingElse) {
  const MoffSource source{.created = 11, .written = 12};
  const std::vector<MoffGroup> before{{3, {{"JPEG", "thumbnail"}}},
                                      {7, {{"STPD", "chunk"}, {"BINA", "old log"}}}};
  ASSERT_EQ(PutAndOpen(MoffBytes(source, before)), XpOk);
  EXPECT_EQ(m_file.SetGroupData(7, kValues, AsBytes("x")), XpErrNotOpen) << "opened for reading";
  ASSERT_EQ(m_file.Close(true), XpOk);
  EXPECT_EQ(Get("clip.mts.moff"), MoffBytes(source, before));
  ASSERT_EQ(m_file.OpenFully(Path("clip.mts")), XpOk);
  EXPECT_EQ(m_file.SetGroupData(7, {5, 6, 7, 8}, AsBytes("new log")), XpOk);
  EXPECT_EQ(m_file.SetGroupData(3, kValues, AsBytes("beside it")), XpOk);
  EXPECT_EQ(GroupText(m_file, 7), "new log");
  ASSERT_EQ(m_file.Close(true), XpOk);
  EXPECT_EQ(Get("clip.mts.moff"),
            MoffBytes(source, {{3, {{"JPEG", "thumbnail"}, {"BINA", "beside it"}}},
                               {7, {{"STPD", "chunk"}, {"BINA", "new log"}}, {5, 6, 7, 8}}}));
  EXPECT_EQ(m_file.SetGroupData(7, kValues, AsBytes("x")), XpErrNotOpen) << "closed";
}

TEST_F(MoffFileTest, OnlyAnEmptyFileIsRemovedWithoutCommit) {
  Put("clip.mts.moff");
  ASSERT_EQ(m_file.Create(Path("clip.mts")), XpOk);
  ASSERT_EQ(m_file.Close(false), XpOk);
  EXPECT_FALSE(Exists("clip.mts.moff"));

  Put("clip.mts.moff", "x");
  ASSERT_EQ(m_file.Create(Path("clip.mts")), XpOk);
  m_file.Close(false);
  EXPECT_EQ(Get("clip.mts.moff"), "x");
  fs::remove(Native("clip.mts.moff"));

  ASSERT_EQ(mkfifo(Native("clip.mts.moff").c_str(), 0600), 0);
  ASSERT_EQ(m_file.Create(Path("clip.mts")), XpOk);
  m_file.Close(false);
  EXPECT_TRUE(Exists("clip.mts.moff"));
  ASSERT_EQ(m_file.Create(Path("clip.mts")), XpOk);
  EXPECT_EQ(m_file.Close(true), XpErrNotAFile);
  EXPECT_TRUE(fs::is_fifo(Native("clip.mts.moff")));
  EXPECT_EQ(m_file.Open(Path("clip.mts")), XpErrOpenFailed);

  EXPECT_EQ(m_file.Create(Path("none.mts")), XpErrFileNotFound);
  EXPECT_EQ(m_file.Create(Path("none.moff")), XpErrFileNotFound);
}

class MoffCommitTest : public MoffFileTest {
 protected:
  MoffCommitTest() { Put("clip.mts.moff", m_old); }
  XpResult Commit(const std::string& data = std::string(3000, 'x')) {
    EXPECT_EQ(m_file.OpenFully(Path("clip.mts")), XpOk);
    EXPECT_EQ(m_file.SetGroupData(7, kValues, AsBytes(data)), XpOk);
    return m_file.Close(true);
  }
  std::string New(const std::string& data = std::string(3000, 'x')) const {
    return MoffBytes({}, {{7, {{"BINA", data}}}});
  }
  mode_t Mode() const {
    struct stat status {};
    stat(Native("clip.mts.moff").c_str(), &status);
    return status.st_mode & 07777;
  }

  const std::string m_old = MoffBytes({}, {{7, {{"BINA", "old log"}}}});
};

TEST_F(MoffCommitTest, AFullDiskAtAnyWriteLeavesTheOldContainer) {
  const std::size_t size = New().size();
  for (std::size_t room = 0; room < size; room += room < 1000 ? 7 : 500) {
    {
      const FullDisk disk(room);
      EXPECT_EQ(Commit(), XpErrDiskFull) << room;
    }
    ASSERT_EQ(Get("clip.mts.moff"), m_old) << room;
    ASSERT_EQ(std::distance(fs::directory_iterator(Native("")), fs::directory_iterator()), 2) << room;
  }
  EXPECT_EQ(Commit(), XpOk);
  EXPECT_EQ(Get("clip.mts.moff"), New());
}

TEST_F(MoffCommitTest, AWriteProtectedContainerIsReplacedOrStaysProtected) {
  ASSERT_EQ(chmod(Native("clip.mts.moff").c_str(), 0444), 0);
  {
    const FullDisk disk(100);
    EXPECT_EQ(Commit(), XpErrDiskFull);
  }
  EXPECT_EQ(Get("clip.mts.moff"), m_old);
  EXPECT_EQ(Mode(), 0444u);
  EXPECT_EQ(Commit(), XpOk);
  EXPECT_EQ(Get("clip.mts.moff"), New());
  EXPECT_EQ(Mode(), 0644u);
}

TEST_F(MoffCommitTest, AnOldTemporaryFileIsRemovedAndNothingElse) {
  Put("clip.mts.mofb", "left behind");
  Put("clip.mofb", "of somebody else");
  EXPECT_EQ(Commit(), XpOk);
  EXPECT_FALSE(Exists("clip.mts.mofb"));
  EXPECT_TRUE(Exists("clip.mofb"));
  fs::create_symlink("clip.mts", Native("clip.mts.mofb"));
  EXPECT_EQ(Commit("a"), XpOk);
  EXPECT_FALSE(Exists("clip.mts.mofb"));
  EXPECT_EQ(Get("clip.mts"), "film");
  fs::create_directory(Native("clip.mts.mofb"));
  EXPECT_EQ(Commit("b"), XpOk);
  EXPECT_TRUE(fs::is_directory(Native("clip.mts.mofb")));
  EXPECT_EQ(Get("clip.mts.moff"), New("b"));
}

TEST_F(MoffCommitTest, ALostFolderIsMadeAgain) {
  ASSERT_EQ(m_file.OpenFully(Path("clip.mts")), XpOk);
  fs::remove_all(Native(""));
  ASSERT_EQ(m_file.Close(true), XpOk);
  EXPECT_EQ(Get("clip.mts.moff"), m_old);
}

TEST_F(MoffCommitTest, ARelativePathStaysThatOfTheFolderItWasOpenedIn) {
  const fs::path before = fs::current_path();
  fs::current_path(Native(""));
  ASSERT_EQ(m_file.OpenFully(u"clip.mts"), XpOk);
  fs::current_path(before);
  ASSERT_EQ(m_file.SetGroupData(7, kValues, AsBytes("log")), XpOk);
  ASSERT_EQ(m_file.Close(true), XpOk);
  EXPECT_EQ(Get("clip.mts.moff"), New("log"));
}

}  // namespace
