#include <gtest/gtest.h>

#include <xercesc/dom/DOM.hpp>

#include "foundation/xml/XmlDocument.h"
#include "foundation/xml/XpXmlParser.h"
#include "tests/foundation/FolderTest.h"

namespace {

/// A document that a program changes and writes.
class Notes final : public XpXmlParser {
 public:
  void Open(const XpString& newPath) override {
    path = newPath;
    opened = EnsureDom();
  }
  void Close() override {
    ReleaseDom();
    opened = false;
  }
  bool Read(const std::string& text) {
    const bool isRead = m_source.Parse({text.data(), text.size()}, nullptr, {}, nullptr);
    document = m_source.Get();
    root = document == nullptr ? nullptr : document->getDocumentElement();
    return isRead;
  }
  xercesc::DOMElement& Root() { return *root; }

 private:
  vrx::xml::XmlDocument m_source;
};

using XmlParserTest = FolderTest;

TEST_F(XmlParserTest, NumbersAreReadAsFarAsTheyGoAndStayWithin32Bits) {
  const std::pair<const char*, std::int64_t> cases[] = {{"", 0},
                                                        {" \t42", 42},
                                                        {"-7.9", -7},
                                                        {"+3 4", 3},
                                                        {"--1", 0},
                                                        {"2147483648", INT32_MAX},
                                                        {"-2147483649", INT32_MIN},
                                                        {"99999999999999999999999", INT32_MAX}};
  for (const auto& [text, expected] : cases) {
    Notes notes;
    ASSERT_TRUE(notes.Read(std::string("<a n=\"") + text + "\"/>"));
    std::int64_t number = 1;
    EXPECT_TRUE(ReadAttributeInt(notes.Root(), u"n", number));
    EXPECT_EQ(number, expected) << text;
    EXPECT_FALSE(ReadAttributeInt(notes.Root(), u"N", number));
    EXPECT_EQ(number, expected) << text;
    XpString kept(u"old");
    EXPECT_FALSE(ReadAttributeString(notes.Root(), u"other", kept));
    EXPECT_EQ(kept, u"old");
  }
}

TEST_F(XmlParserTest, AChangedDocumentTakesTheOldOnesPlace) {
  Notes notes;
  EXPECT_EQ(notes.Parse(), XpErrFailed);
  EXPECT_EQ(notes.ParseFile(Path("notes.xml")), XpErrFailed);
  EXPECT_EQ(notes.Save(Path("notes.xml")), XpErrFailed) << "there is no document";
  notes.Open(Put("notes.xml", std::string(5000, ' ')));
  ASSERT_TRUE(notes.Read("<notes a=\"1\">text</notes>"));
  for (const char16_t* value : {u"first", u"ä <&"}) {
    notes.Root().setAttribute(u"a", value);
    ASSERT_EQ(notes.Save(Path("notes.xml")), XpOk);
    Notes again;
    ASSERT_TRUE(again.Read(Get("notes.xml"))) << Get("notes.xml");
    XpString read;
    EXPECT_TRUE(ReadAttributeString(again.Root(), u"a", read));
    EXPECT_EQ(read, value);
  }
  EXPECT_EQ(notes.Save(Path("none/notes.xml")), XpErrFailed);
  notes.Close();
  notes.Close();
}

}  // namespace
