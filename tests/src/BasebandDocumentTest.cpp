// What a baseband document says, and why one is refused.
#include <gmock/gmock.h>

#include "src/baseband/BasebandDocument.h"
#include "tests/src/BasebandText.h"

namespace {

using namespace vrx::baseband;

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  const std::size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return text.replace(at, from.size(), to);
}

TEST(BasebandDocumentTest, ImagesAreReadInDocumentOrderAndForeignElementsAreSkipped) {
  BasebandDocument document;
  const std::string text = BasebandText(ImageText(7, "a.jpg", 0, 9, 3, 1) + "<!-- c --><Other/>words\n" +
                                        ImageText(-2, "b.png", 10, 12, 9, 2));
  ASSERT_EQ(ReadBasebandBytes(text, document), XpOk) << document.Cause().ToNarrow().c_str();
  ASSERT_EQ(document.images.size(), 2u);
  const BasebandImage& first = document.images[0];
  EXPECT_EQ(first.job.imagePath, u"a.jpg");
  EXPECT_TRUE(first.job.mirror);
  EXPECT_EQ(first.job.rotation, RotateQuarterCcw);
  EXPECT_EQ(first.line, 2u);
  const BasebandImage& second = document.images[1];
  EXPECT_EQ(second.span.imageId, -2);
  EXPECT_FALSE(second.job.mirror) << "only 1 mirrors";
  EXPECT_EQ(second.line, 4u);
  EXPECT_TRUE(document.problems.empty());
}

TEST(BasebandDocumentTest, RefusedDocumentNamesTheLineAndTheCause) {
  const std::string good = BasebandText(ImageText(1, "a.jpg", 0, 9));
  struct Case {
    std::string text;
    XpResult result;
    const char* cause;
  };
  const Case cases[] = {
      {"", XpErrNotWellFormed, "empty"},
      {"<VRXBaseband>", XpErrNotWellFormed, "line 1"},
      {Replaced(good, "\"Video\"", "\"video\""), XpErrWrongElementType, "SystemType must be \"Video\""},
      {Replaced(good, "SourceType=", "Type="), XpErrWrongElementType, "SourceType must be \"ImageFile\""},
      {"<Baseband/>", XpErrWrongElementType, "is not the element VRXBaseband"},
      {Replaced(good, "RectTop=\"0\"", ""), XpErrWrongRoot, "line 2: DecImage RectTop is missing"},
      {Replaced(good, "ImagePath", "Path"), XpErrWrongRoot, "line 2: DecImage ImagePath is missing"},
  };
  for (const Case& c : cases) {
    BasebandDocument document;
    EXPECT_EQ(ReadBasebandBytes(c.text, document), c.result) << c.text;
    EXPECT_THAT(document.Cause().ToNarrow().c_str(), testing::HasSubstr(c.cause)) << c.text;
  }
  BasebandDocument document;
  EXPECT_EQ(ReadBasebandDocument(u"/no/such.xml", document), XpErrPathNotFound);
  EXPECT_EQ(document.Cause(), u"does not exist");
  EXPECT_EQ(ReadBasebandDocument(XpString(), document), XpErrUnknownElementType);
}

TEST(BasebandDocumentTest, SpansOfHostileNumbersHoldNoFrame) {
  EXPECT_FALSE((FrameSpan{1, -5, 5}.Contains(0)));
  EXPECT_FALSE((FrameSpan{1, 9, 3}.Contains(5)));
  EXPECT_TRUE((FrameSpan{1, 0, -1}.Contains(5))) << "without a sign, -1 is the last frame there can be";
  EXPECT_TRUE((FrameSpan{1, 4, 4}.Contains(4)));
}

}  // namespace
