// Text in files: lines, line feeds, and bytes that are not valid UTF-8.
#include <string>

#include "foundation/file/XpFile.h"
#include "foundation/file/XpMemoryFile.h"
#include "tests/foundation/FolderTest.h"

namespace {

using FileTextTest = FolderTest;

std::u16string ReadUnits(XpAbstractFile& file) {
  std::u16string text;
  char16_t c = 0;
  while (file.ReadChar(&c) == XpOk) text += c;
  return text;
}

TEST_F(FileTextTest, TextModeWritesCrLfAndReadsOneLineFeed) {
  XpFile file(Path("log"));
  ASSERT_EQ(file.Open(XpOpenReadWrite | XpOpenText, XpShareRead), XpOk);
  EXPECT_EQ(file.WriteString(u"a\nb\rc\r"), XpOk);
  EXPECT_EQ(file.WriteString(nullptr), XpErrInvalidFileOperation);
  EXPECT_EQ(Get("log"), "a\r\nb\rc\r");
  ASSERT_EQ(file.Seek(0, XpSeekStart), XpOk);
  EXPECT_EQ(ReadUnits(file), u"a\nb\rc\r");
  ASSERT_EQ(file.Close(), XpOk);
  ASSERT_EQ(file.Open(XpOpenRead, XpShareRead), XpOk);
  EXPECT_EQ(ReadUnits(file), u"a\r\nb\rc\r");
}

TEST_F(FileTextTest, TextAndInvalidBytesSurviveARoundTrip) {
  const std::string bytes =
      "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x8E\xBEz\x80\xF0\x9F\x8E\xC3\xF0\x9F\x8E\xBE\xBE\xFF";
  XpFile file(Put("in", bytes));
  ASSERT_EQ(file.Open(XpOpenRead, XpShareRead), XpOk);
  const std::u16string text = ReadUnits(file);
  EXPECT_EQ(text, vrx::textcodec::ToUtf16(bytes));
  XpFile copy(Path("out"));
  ASSERT_EQ(copy.Open(XpOpenWrite, XpShareRead), XpOk);
  EXPECT_EQ(copy.WriteString(text.c_str()), XpOk);
  EXPECT_EQ(Get("out"), bytes);
}

TEST(MemoryTextTest, HalfASurrogatePairIsWrittenAsAReplacement) {
  XpMemoryFile file;
  EXPECT_EQ(file.WriteRawChar(0xD83C), XpOk);
  EXPECT_EQ(file.GetSize(), 0);
  EXPECT_EQ(file.WriteRawChar(u'a'), XpOk);
  EXPECT_EQ(std::string(static_cast<char*>(file.GetData()), 4),
            "\xEF\xBF\xBD"
            "a");
}

TEST_F(FileTextTest, LinesOfAnyLengthAreReadWithTheirLineFeed) {
  const std::string longLine(1500, 'x');
  XpFile file(Put("lines", "one\n" + longLine + "\n\nlast"));
  ASSERT_EQ(file.Open(XpOpenRead, XpShareRead), XpOk);
  for (const std::string& expected : {std::string("one\n"), longLine + "\n", std::string("\n"),
                                      std::string("last"), std::string(), std::string()}) {
    XpString line(u"before");
    EXPECT_EQ(file.ReadLine(line), XpOk);
    EXPECT_EQ(line.ToNarrow().AsView(), expected);
  }
}

TEST_F(FileTextTest, AFullBufferLeavesTheRestOfTheLine) {
  XpFile file(Put("lines", "abcdef\ngh"));
  ASSERT_EQ(file.Open(XpOpenRead, XpShareRead), XpOk);
  char16_t buffer[5];
  EXPECT_EQ(file.ReadLineBuffer(buffer, 1), XpErrInvalidFileOperation);
  EXPECT_EQ(file.ReadLineBuffer(nullptr, 5), XpErrInvalidFileOperation);
  const std::pair<XpResult, const char16_t*> expected[] = {
      {XpErrLineTooLong, u"abcd"}, {XpOk, u"ef\n"}, {XpOk, u"gh"}, {XpOk, u""}};
  for (const auto& [result, text] : expected) {
    EXPECT_EQ(file.ReadLineBuffer(buffer, 5), result);
    EXPECT_EQ(std::u16string(buffer), text);
  }
}

}  // namespace
