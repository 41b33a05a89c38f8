// Containers of binary data: their bytes, what is read of damaged ones, and that a write never loses one.
#include <sys/stat.h>
#include <utime.h>

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
  if (block == nullptr) return size == 0 ? "(null)" : "(null) with a size";
  return {static_cast<const char*>(block.get()), static_cast<std::size_t>(size)};
}

/// A container in memory.
struct Tree {
  moff::FileTag root;
  moff::BodyRange range;
  XpMemoryFile file;

  XpResult ReadTables(const std::string& bytes, const moff::Limits& limits = {}) {
    file.Write(bytes.data(), bytes.size(), nullptr);
    return moff::ReadHeaders(file, root, range, limits);
  }
  XpResult ReadBodies() { return moff::ReadBodies(file, range, root); }
};

class MoffFileTest : public FolderTest {
 protected:
  MoffFileTest() { Put("clip.mts", "film"); }
  XpResult PutAndOpen(const std::string& bytes, bool fully = false) {
    Put("clip.mts.moff", bytes);
    return fully ? m_file.OpenFully(Path("clip.mts")) : m_file.Open(Path("clip.mts"));
  }

  SfMoffFile m_file;
};

TEST_F(MoffFileTest, TheBytesWrittenAreThoseOfTheFormat) {
  constexpr std::int64_t kWritten = 1'500'000'000;
  constexpr utimbuf kTimes{kWritten, kWritten};
  ASSERT_EQ(utime(Native("clip.mts").c_str(), &kTimes), 0);
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
  const bool keepsMarks = XpPathSetHidden(Path("clip.mts")) == XpOk;
  EXPECT_EQ(XpFile(Path("clip.mts.moff")).IsHidden(), keepsMarks);
}

TEST_F(MoffFileTest, TheNameOfTheSourceIsKeptWhole) {
  const std::string name = std::string(246, 'n') + ".mts";  // with ".moff" as long as a name can be
  ASSERT_EQ(m_file.Create(Put(name)), XpOk);
  EXPECT_EQ(moff::SourceName(m_file.GetHeader()), XpNarrowString(name).ToWide());
  moff::FileHeader header;
  header.sourceName.fill(u'x');
  EXPECT_EQ(moff::SourceName(header).Length(), 260) << "a name without an end";
}

TEST(MoffReadTest, LongerAndShorterRecordsAreRead) {
  const std::string whole = MoffBytes({.size = 99}, {{7, {{"BINA", "log"}}}});
  struct Case {
    std::size_t offset, oldSize, newSize;  // of a record
    const char16_t* name;                  // of the source, as the header then says
    std::int64_t size;
  };
  for (const Case& c : {Case{0, 824, 1000, u"clip.mts", 99},
                        {0, 824, 100, u"clip.mts", 0},
                        {0, 824, 8, u"", 0},
                        {824, 16, 50, u"clip.mts", 99},
                        {868, 16, 17, u"clip.mts", 99}}) {
    std::string bytes = whole;
    bytes.replace(c.offset, c.oldSize, Resized(whole.substr(c.offset, c.oldSize), c.newSize));
    Tree tree;
    ASSERT_EQ(tree.ReadTables(bytes), XpOk) << c.newSize;
    ASSERT_EQ(tree.root.child->GetChildren().size(), 1u);
    EXPECT_EQ(moff::SourceName(tree.root.record), c.name);
    EXPECT_EQ(tree.root.record.sourceSize, c.size) << c.newSize;
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
  constexpr std::uint32_t kHuge = 0xFFFFFFFF;
  const std::string header = HeaderBytes({}), noGroups = TableBytes("GRUP", 0), group = U32(7) + Zeros(24);
  const std::string oneGroup = header + TableBytes("GRUP", 1) + group;
  const auto sized = [](std::string record, std::uint32_t size) { return record.replace(4, 4, U32(size)); };
  const auto entryAt = [](std::uint32_t position) { return U32(position) + Zeros(12); };
  const auto body = [&](const char* kind, std::uint32_t size, std::uint32_t position = 32) {
    return oneGroup + TableBytes("INDX", 1) + entryAt(position) + kind + U32(size) + "data";
  };
  struct Case {
    const char* name;
    std::string bytes;
    XpResult tables = XpErrMalformedRecord;
    XpResult bodies = XpErrMalformedRecord;
  };
  const Case cases[] = {
      {"nothing", "", XpErrEndOfFile},
      {"other signature", "FFOM" + header.substr(4)},
      {"record of 7 bytes", sized(header, 7)},
      {"huge record", sized(header, kHuge)},
      {"no groups", header + noGroups, XpOk, XpOk},
      {"entries where groups belong", header + TableBytes("INDX", 0)},
      {"table record of 7 bytes", header + sized(noGroups, 7)},
      {"huge table record", header + sized(noGroups, kHuge)},
      {"one group too many", header + TableBytes("GRUP", 2) + group},
      {"groups without an index", oneGroup, XpErrEndOfFile},
      {"2^32 - 1 entries", oneGroup + TableBytes("INDX", kHuge) + entryAt(0)},
      {"count times size is 2^32", oneGroup + TableBytes("INDX", 1u << 28)},
      {"body", body("BINA", 12), XpOk, XpOk},
      {"body of the head alone", body("JPEG", 8), XpOk, XpOk},
      {"body size below its head", body("BINA", 7), XpOk},
      {"body past the end", body("BINA", 13), XpOk, XpErrFailed},
      {"huge body", body("BINA", kHuge), XpOk, XpErrFailed},
      {"unknown kind", body("bina", 12), XpOk, XpErrFailed},
      {"position past the end", body("BINA", 12, kHuge), XpOk, XpErrFailed},
      {"position in the tables", body("BINA", 12, 31), XpOk},
      {"entries that are their own body", body("BINA", 12, 0), XpOk},
      {"two entries of one body",
       oneGroup + TableBytes("INDX", 2) + entryAt(48) + entryAt(48) + "BINA" + U32(12) + "data", XpOk},
  };
  for (const Case& c : cases) {
    // With the second limits, the file's size alone decides.
    for (const moff::Limits& limits : {moff::Limits{}, {kHuge, kHuge}}) {
      Tree tree;
      ASSERT_EQ(tree.ReadTables(c.bytes, limits), c.tables) << c.name;
      EXPECT_EQ(c.tables == XpOk ? tree.ReadBodies() : c.bodies, c.bodies) << c.name;
    }
  }
}

TEST(MoffReadTest, LimitsHoldForAllGroupsTogether) {
  const std::string bytes = MoffBytes({}, {{1, {{"BINA", ""}, {"BINA", ""}}}, {2, {{"JPEG", ""}}}});
  EXPECT_EQ(Tree().ReadTables(bytes, {2, 3}), XpOk);
  EXPECT_EQ(Tree().ReadTables(bytes, {1, 3}), XpErrMalformedRecord);
  EXPECT_EQ(Tree().ReadTables(bytes, {2, 2}), XpErrMalformedRecord);
}

TEST(MoffReadTest, ACutContainerIsNeverReadWhole) {
  const std::string whole =
      MoffBytes({}, {{3, {{"JPEG", "picture"}, {"STPD", "chunk"}}}, {7, {{"BINA", "log"}}}});
  const std::size_t tables = 840 + 2 * 28 + 2 * 16 + 3 * 16;
  const std::vector<std::size_t> bodyEnds{tables + 15, whole.size() - 11, whole.size()};
  for (std::size_t size = 0; size <= whole.size(); ++size) {
    Tree tree;
    ASSERT_EQ(tree.ReadTables(whole.substr(0, size)) == XpOk, size >= tables) << size;
    if (size < tables) continue;
    std::ptrdiff_t readable = 0;
    for (const auto& group : moff::ListGroups(&tree.file, tree.range, tree.root)) {
      readable += std::ranges::count(group.entries, XpOk, &moff::EntryInfo::result);
    }
    EXPECT_EQ(readable, std::ranges::upper_bound(bodyEnds, size) - bodyEnds.begin()) << size;
    EXPECT_EQ(tree.ReadBodies() == XpOk, size == whole.size()) << size;
  }
}

TEST(MoffReadTest, WhatNewerVersionsKeepInUnknownFieldsIsKept) {
  std::string bytes = MoffBytes({}, {{7, {{"BINA", "log"}}}});
  for (const auto place : {12u, 19u, 540u, 568u, 823u, 836u, 844u, 880u, 888u, 899u}) bytes[place] = 'w';
  Tree tree;
  ASSERT_EQ(tree.ReadTables(bytes), XpOk);
  ASSERT_EQ(tree.ReadBodies(), XpOk);
  XpMemoryFile out;
  EXPECT_EQ(moff::PlaceTree(tree.root), XpOk);
  EXPECT_EQ(moff::WriteTree(out, tree.root), XpOk);
  EXPECT_EQ(TextOf(out), bytes);
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
    const char* source;     // empty when there is none
    std::int64_t size = 4;  // in the header; the files have 4 bytes
  };
  const Case cases[] = {
      {"same size", "a.mts.moff", {"a.mts"}, "a.mts"},
      {"other size", "a.mts.moff", {"a.mts"}, "", 5},
      {"changed JPEG", "a.jpg.moff", {"a.jpg"}, "a.jpg", 5},
      {"changed MPO", "a.MPO.moff", {"a.MPO"}, "a.MPO", 5},
      {"changed MP4", "a.mp4.moff", {"a.mp4"}, "a.mp4", 5},
      {"changed KRW", "a.krw.moff", {"a.krw"}, "a.krw", 5},
      {"changed KRQ", "a.krq.moff", {"a.krq"}, "a.krq", 5},
      {"changed other RAW", "a.kr2.moff", {"a.kr2"}, "", 5},
      {"changed TIFF", "a.tif.moff", {"a.tif"}, "", 5},
      {"changed MOV", "a.mov.moff", {"a.mov"}, "", 5},
      {"gone", "a.mts.moff", {"b.mts"}, ""},
      {"of the stem", "a.moff", {"a.txt", "a.MTS"}, "a.MTS"},
      {"of the stem, none is media", "a.moff", {"a.txt", "a.moff.bak"}, ""},
      {"of the stem, named one", "a.moff", {"a.jpg", "clip.mts", "a.thm"}, "a.jpg"},
      {"of another stem", "clip.moff", {"clip.jpg", "clip.mts", "clip.thm"}, "clip.mts"},
      {"the name without extension", "a.moff", {"a", "a.jpg"}, "a"},
      {"changed without extension", "a.moff", {"a", "a.jpg"}, "", 5},
  };
  for (const Case& c : cases) {
    const std::string folder = std::string(c.name) + "/";
    for (const char* file : c.media) Put(folder + file, "film");
    const XpString path = Put(folder + c.container, MoffBytes({.size = c.size}, {}));
    const bool isFound = *c.source != 0;
    EXPECT_EQ(m_file.Open(path), isFound ? XpOk : XpErrFileNotFound) << c.name;
    EXPECT_EQ(m_file.GetSourcePath(), isFound ? Path(folder + c.source) : XpString()) << c.name;
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
                     {8, {{"BINA", ""}}}});
  for (const bool fully : {false, true}) {
    ASSERT_EQ(PutAndOpen(bytes, fully), XpOk);
    EXPECT_EQ(GroupText(m_file, 5), "(null)");
    EXPECT_EQ(GroupText(m_file, 7), "log");
    EXPECT_EQ(GroupText(m_file, 8), "");
    EXPECT_EQ(GroupText(m_file, 10), "(null)");
    XpSharedPtr<SfMoffGroup> group;
    ASSERT_EQ(m_file.FindGpsGroup(group), XpOk);
    EXPECT_EQ(group->GetIndex(), 1u);
    EXPECT_EQ(group->GetValues(), (std::array<std::uint32_t, 4>{4, 3, 2, 1}));
    const auto groups = m_file.ListGroups();
    ASSERT_EQ(groups.size(), 4u);
    EXPECT_EQ(groups[1].entries[2].head.size, 13u);
    EXPECT_EQ(groups[0].entries[0].position, 840 + 4 * 44 + 6 * 16);
    XpSharedPtr<XpMemoryFile> data;
    ASSERT_EQ(m_file.ReadEntry(0, 0, data), XpOk);
    EXPECT_EQ(TextOf(*data), "chunk");
    EXPECT_NE(dynamic_cast<SfStpFile*>(data.Get()), nullptr);
    EXPECT_EQ(m_file.ReadEntry(0, 1, data), XpErrInvalidArgument);
    EXPECT_EQ(m_file.ReadEntry(4, 0, data), XpErrInvalidArgument);
  }
  ASSERT_EQ(PutAndOpen(bytes.substr(0, bytes.find("log") + 2)), XpOk);
  EXPECT_EQ(GroupText(m_file, 7), "(null)") << "a body that is cut off";
  EXPECT_EQ(PutAndOpen(bytes.substr(0, bytes.size() - 1), true), XpErrFailed);
  EXPECT_TRUE(m_file.GetMoffPath().IsEmpty());
}

TEST_F(MoffFileTest, AGroupOutlivesItsContainer) {
  Put("clip.mts.moff", MoffBytes({}, {{7, {{"BINA", "log"}}}}));
  XpSharedPtr<SfMoffGroup> group;
  std::int64_t size = -1;
  {
    SfMoffFile file;
    EXPECT_EQ(file.FindGpsGroup(group), XpErrNotOpen);
    ASSERT_EQ(file.Open(Path("clip.mts")), XpOk);
    ASSERT_EQ(file.FindGpsGroup(group), XpOk);
    std::free(group->ReadData(size));
    EXPECT_EQ(size, 3);
  }
  EXPECT_EQ(group->ReadData(size), nullptr);
  EXPECT_EQ(size, 0);
  ASSERT_EQ(PutAndOpen(MoffBytes({}, {})), XpOk);
  EXPECT_EQ(m_file.FindGpsGroup(group), XpOk);
  EXPECT_FALSE(group);
}

TEST_F(MoffFileTest, ChangingAGroupKeepsEverythingElse) {
  const MoffSource source{.created = 11, .written = 12};
  const std::string before =
      MoffBytes(source, {{3, {{"JPEG", "small"}}}, {7, {{"STPD", "chunk"}, {"BINA", "old log"}}}});
  ASSERT_EQ(PutAndOpen(before), XpOk);
  EXPECT_EQ(m_file.SetGroupData(7, kValues, AsBytes("x")), XpErrNotOpen) << "opened for reading";
  ASSERT_EQ(m_file.Close(true), XpOk);
  EXPECT_EQ(Get("clip.mts.moff"), before);
  ASSERT_EQ(m_file.OpenFully(Path("clip.mts")), XpOk);
  EXPECT_EQ(m_file.SetGroupData(7, {5, 6, 7, 8}, AsBytes("new log")), XpOk);
  EXPECT_EQ(m_file.SetGroupData(3, kValues, AsBytes("beside it")), XpOk);
  EXPECT_EQ(GroupText(m_file, 7), "new log");
  ASSERT_EQ(m_file.Close(true), XpOk);
  EXPECT_EQ(Get("clip.mts.moff"),
            MoffBytes(source, {{3, {{"JPEG", "small"}, {"BINA", "beside it"}}},
                               {7, {{"STPD", "chunk"}, {"BINA", "new log"}}, {5, 6, 7, 8}}}));
  EXPECT_EQ(m_file.SetGroupData(7, kValues, AsBytes("x")), XpErrNotOpen) << "closed";
}

TEST_F(MoffFileTest, OnlyAnEmptyFileIsRemovedWithoutCommit) {
  const auto createAndClose = [&](bool commit) {
    EXPECT_EQ(m_file.Create(Path("clip.mts")), XpOk);
    return m_file.Close(commit);
  };
  Put("clip.mts.moff");
  EXPECT_EQ(createAndClose(false), XpOk);
  EXPECT_FALSE(Exists("clip.mts.moff"));
  Put("clip.mts.moff", "x");
  createAndClose(false);
  EXPECT_EQ(Get("clip.mts.moff"), "x");

  fs::remove(Native("clip.mts.moff"));
  ASSERT_EQ(mkfifo(Native("clip.mts.moff").c_str(), 0600), 0);
  createAndClose(false);
  EXPECT_EQ(createAndClose(true), XpErrNotAFile);
  EXPECT_TRUE(fs::is_fifo(Native("clip.mts.moff")));
  EXPECT_EQ(m_file.Open(Path("clip.mts")), XpErrOpenFailed);

  EXPECT_EQ(m_file.Create(Path("none.mts")), XpErrFileNotFound);
  EXPECT_EQ(m_file.Create(Path("none.moff")), XpErrFileNotFound);
}

class MoffCommitTest : public MoffFileTest {
 protected:
  MoffCommitTest() { Put("clip.mts.moff", m_old); }
  XpResult Commit(const std::string& data) {
    EXPECT_EQ(m_file.OpenFully(Path("clip.mts")), XpOk);
    EXPECT_EQ(m_file.SetGroupData(7, kValues, AsBytes(data)), XpOk);
    return m_file.Close(true);
  }
  static std::string Container(const std::string& data) { return MoffBytes({}, {{7, {{"BINA", data}}}}); }

  const std::string m_old = Container("old log");
};

TEST_F(MoffCommitTest, AFullDiskAtAnyWriteLeavesTheOldContainerWithItsProtection) {
  const fs::path path = Native("clip.mts.moff");
  const auto mode = [&] { return static_cast<unsigned>(fs::status(path).permissions()); };
  ASSERT_EQ(chmod(path.c_str(), 0444), 0);
  const std::string data(3000, 'x');
  for (std::size_t room = 0; room < Container(data).size(); room += room < 1000 ? 7 : 500) {
    {
      const FullDisk disk(room);
      EXPECT_EQ(Commit(data), XpErrDiskFull) << room;
    }
    ASSERT_EQ(Get("clip.mts.moff"), m_old) << room;
    ASSERT_EQ(mode(), 0444u) << room;
    ASSERT_EQ(std::distance(fs::directory_iterator(Native("")), fs::directory_iterator()), 2) << room;
  }
  EXPECT_EQ(Commit(data), XpOk);
  EXPECT_EQ(Get("clip.mts.moff"), Container(data));
  EXPECT_EQ(mode(), 0644u);
}

TEST_F(MoffCommitTest, AnOldTemporaryFileIsRemovedAndNothingElse) {
  Put("clip.mofb", "of somebody else");
  Put("clip.mts.mofb", "left behind");
  EXPECT_EQ(Commit("a"), XpOk);
  EXPECT_FALSE(Exists("clip.mts.mofb"));
  EXPECT_TRUE(Exists("clip.mofb"));
  fs::create_symlink("clip.mts", Native("clip.mts.mofb"));
  EXPECT_EQ(Commit("b"), XpOk);
  EXPECT_FALSE(Exists("clip.mts.mofb"));
  EXPECT_EQ(Get("clip.mts"), "film");
  fs::create_directory(Native("clip.mts.mofb"));
  EXPECT_EQ(Commit("c"), XpOk);
  EXPECT_TRUE(fs::is_directory(Native("clip.mts.mofb")));
  EXPECT_EQ(Get("clip.mts.moff"), Container("c"));
}

TEST_F(MoffCommitTest, AContainerOpenedByARelativePathComesBackIntoItsLostFolder) {
  const fs::path before = fs::current_path();
  fs::current_path(Native(""));
  ASSERT_EQ(m_file.OpenFully(u"clip.mts"), XpOk);
  fs::current_path(before);
  fs::remove_all(Native(""));
  ASSERT_EQ(m_file.Close(true), XpOk);
  EXPECT_EQ(Get("clip.mts.moff"), m_old);
}

}  // namespace
