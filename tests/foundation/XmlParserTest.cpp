// XML documents are read within limits and written again; foreign declarations are refused.
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>

#include <gtest/gtest.h>

#include <xercesc/dom/DOM.hpp>

#include "foundation/xml/XmlDocument.h"
#include "foundation/xml/XmlEvents.h"
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

using vrx::xml::XmlDocument;
using vrx::xml::XmlLimits;

/// What the piecewise reader hands over, as text.
class Recorder final : public vrx::xml::XmlEvents {
 public:
  void Start(std::u16string_view name, std::span<const vrx::xml::XmlAttribute> attributes) override {
    pieces += u"<" + std::u16string(name);
    for (const auto& [key, value] : attributes) {
      pieces += u" " + std::u16string(vrx::xml::LocalName(key)) + u"=" + std::u16string(value);
    }
    pieces += u">";
  }
  void Text(std::u16string_view text) override { pieces += text; }
  void End() override { pieces += u"</>"; }

  std::u16string pieces;
};

/// Why the text was refused, by the reader of trees and the piecewise one alike; empty when it was read.
std::string Refusal(const std::string& text, const XmlLimits& limits = {}) {
  XmlDocument document;
  vrx::xml::XmlProblem problem;
  const bool isRead = document.Parse(text, nullptr, limits, &problem);
  EXPECT_EQ(isRead, problem.message.empty());
  Recorder recorder;
  vrx::xml::XmlProblem sameProblem;
  EXPECT_EQ(vrx::xml::ReadXmlEvents(text, limits, recorder, sameProblem), isRead);
  EXPECT_EQ(sameProblem.message, problem.message);
  return problem.message;
}

std::string Repeat(const std::string& text, std::size_t times) {
  std::string all;
  for (std::size_t i = 0; i < times; ++i) all += text;
  return all;
}

using XmlDocumentTest = FolderTest;

TEST_F(XmlDocumentTest, ADocumentTypeLineIsIgnoredAndItsFileNeverOpened) {
  const std::string dtd = Put("p.dtd", "<!ENTITY lol \"fetched\">").ToNarrow().c_str();
  const int watch = inotify_init1(IN_NONBLOCK);
  ASSERT_GE(inotify_add_watch(watch, dtd.c_str(), IN_OPEN | IN_ACCESS), 0);
  const std::string root = "<plist a='1&amp;2'>&lt;text</plist>";
  for (const std::string& line :
       {"<!DOCTYPE plist SYSTEM \"" + dtd + "\">", "<!DOCTYPE plist SYSTEM 'file://" + dtd + "' >\n",
        "<!-- <!DOCTYPE x [ -->\n<!DOCTYPE plist PUBLIC \"-//Maker//DTD PLIST 1.0//EN\" \"" + dtd + "\">",
        std::string("<!DOCTYPE plist>")}) {
    XmlDocument document;
    document.KeepLines();
    vrx::xml::XmlProblem problem;
    ASSERT_TRUE(document.Parse(line + "\n" + root, nullptr, {}, &problem)) << line << problem.message;
    const xercesc::DOMElement* element = document.Get()->getDocumentElement();
    EXPECT_EQ(vrx::xml::FirstText(element), u"<text") << line;
    EXPECT_EQ(XpString(element->getAttribute(u"a")), u"1&2");
    EXPECT_EQ(document.LineOf(element), static_cast<std::uint64_t>(std::ranges::count(line, '\n') + 2));
    EXPECT_EQ(Refusal(line + "<plist>&lol;</plist>"), "entity 'lol' not found") << line;
    EXPECT_EQ(Refusal(line + "<plist a='&lol;'/>"), "entity 'lol' not found") << line;
  }
  char event[4096];
  EXPECT_LT(read(watch, event, sizeof(event)), 0) << "the file was opened";
  close(watch);
}

TEST_F(XmlDocumentTest, DeclarationsAndDocumentsBeyondTheLimitsAreRefused) {
  const std::string declares = "document types with declarations are not allowed";
  const std::string name = "the identifier of a document type must not contain [, ] or >";
  const std::pair<std::string, std::string> cases[] = {
      {"<!DOCTYPE p [<!ENTITY a \"aaaa\"><!ENTITY b \"&a;&a;\">]><p>&b;</p>", declares},
      {"<!DOCTYPE p SYSTEM \"p.dtd\" [<!ENTITY a \"aaaa\">]><p/>", declares},
      {"<!DOCTYPE p []><p/>", declares},
      {"<!DOCTYPE p SYSTEM \"[\"><p/>", name},
      {"<!DOCTYPE p SYSTEM \"]\"><p/>", name},
      {"<!DOCTYPE p SYSTEM \"><p/><!--\"><q/><!-- -->", name},
      {"<!DOCTYPE p PUBLIC \"x\" '>'><p/>", name},
      {"<!DOCTYPE p SYSTEM \"a\" b><p/>", "unterminated DOCTYPE declaration"},
      {"<p>&lol;</p>", "entity 'lol' not found"},
      {Repeat("<p>", 300'000), "elements are nested too deeply"},
      {"<!DOCTYPE p>" + Repeat("<p>", 300'000), "elements are nested too deeply"},
  };
  for (const auto& [text, reason] : cases) EXPECT_EQ(Refusal(text), reason) << text.substr(0, 100);
  const std::string wide = "<p>" + Repeat("<q/>", 100) + "</p>";
  EXPECT_EQ(Refusal(wide, {.elements = 101}), "");
  EXPECT_EQ(Refusal(wide, {.elements = 100}), "the document has too many elements");
  EXPECT_EQ(Refusal(wide, {.bytes = 100}), "the document is larger than 0 MiB");
  EXPECT_EQ(Refusal(std::string((64 << 20) + 1, ' ')), "the document is larger than 64 MiB");
  std::vector<char> bytes;
  vrx::xml::XmlProblem problem;
  EXPECT_EQ(vrx::xml::ReadDocumentBytes(Put("wide.xml", wide), {.bytes = 100}, bytes, problem), XpOk);
  EXPECT_EQ(bytes.size(), 101u) << "no more is read than shows that it is too large";
}

TEST_F(XmlDocumentTest, PiecesComeInTheOrderOfTheDocumentUpToWhereItBreaks) {
  const std::pair<std::string, std::u16string> cases[] = {
      {"<g><!-- no --><x:p lat='1' x:lon=\"&lt;2\"/>a&amp;b<![CDATA[<c]]><t>d</t></g>",
       u"<g><x:p lat=1 lon=<2></>a&b<c<t>d</></>"},
      {"<!DOCTYPE g><g><p/></g>", u"<g><p></></>"},
      {"<?xml version='1.0' encoding='ISO-8859-1'?><g>\xE4</g>", u"<g>ä</>"},
      {"<g><p>1</p><p>2</g>", u"<g><p>1</><p>2"},
  };
  for (const auto& [text, expected] : cases) {
    Recorder recorder;
    vrx::xml::XmlProblem problem;
    const bool isWhole = expected.ends_with(u"</>");
    EXPECT_EQ(vrx::xml::ReadXmlEvents(text, {}, recorder, problem), isWhole) << text << problem.message;
    EXPECT_EQ(XpString(recorder.pieces.c_str()), XpString(expected.c_str())) << text;
  }
}

using XmlParserTest = FolderTest;

TEST_F(XmlParserTest, AttributeNumbersIgnoreTextAfterThemAndStayWithin32Bits) {
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

TEST_F(XmlParserTest, SavingReplacesTheOldDocument) {
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
