// Property-list documents: what is read, what is written, and what is refused.
#include <limits>

#include <gtest/gtest.h>

#include "content/plist/PlistNumbers.h"
#include "content/plist/PlistReader.h"
#include "content/plist/PlistWriter.h"
#include "content/plist/XpIniArray.h"
#include "content/plist/XpIniDict.h"
#include "tests/support/FullDisk.h"
#include "tests/support/TempFolder.h"

namespace {

using vrx::plist::Findings;
using vrx::plist::ReadBytes;

XpResult Read(const std::string& content, XpIniDict& dict, Findings* findings = nullptr) {
  return ReadBytes(content, nullptr, dict, findings);
}

std::string InPlist(const std::string& dict) {
  return "<plist version=\"1.0\"><dict>" + dict + "</dict></plist>";
}

XpString Wide(const std::filesystem::path& path) { return XpNarrowString(path.string()).ToWide(); }

template <class T>
T Value(const XpIniDict& dict, const char16_t* key, XpResult (XpIniElement::*get)(T&) const) {
  T value{};
  const XpIniElement* element = dict.Get(key);
  if (element == nullptr) {
    ADD_FAILURE() << "no such key";
  } else {
    EXPECT_EQ((element->*get)(value), XpOk);
  }
  return value;
}

TEST(PlistReadTest, EveryTypeIsRead) {
  XpIniDict dict;
  ASSERT_EQ(
      Read(InPlist("<!-- hello --><key>i</key><!-- between --><integer> -12x</integer>"
                   "<key>r</key><real>1,5</real><key>s</key><string>a&amp;b<![CDATA[c]]></string>"
                   "<key>t</key><true/><key>f</key><false/>"
                   "<key>d</key><data>AB 01\n0F</data><key>when</key><date>2018-01-02 03.04.05</date>"
                   "<key>list</key><array><integer>1</integer><array/><string/></array>"
                   "<key>sub</key><dict><key>x</key><integer>9</integer></dict>"
                   "<key>sub</key><dict><key>y</key><true/></dict><key>sub</key><array><true/></array>"),
           dict),
      XpOk);
  EXPECT_EQ(Value(dict, u"i", &XpIniElement::GetInt64), -12);
  EXPECT_EQ(Value(dict, u"r", &XpIniElement::GetReal), 1.5);
  EXPECT_EQ(Value(dict, u"s", &XpIniElement::GetString), u"a&b");
  EXPECT_TRUE(Value(dict, u"t", &XpIniElement::GetBool));
  EXPECT_FALSE(Value(dict, u"f", &XpIniElement::GetBool));
  EXPECT_EQ(Value(dict, u"list/2", &XpIniElement::GetString), XpString());
  EXPECT_EQ(Value(dict, u"sub/x", &XpIniElement::GetInt64), 9);
  for (const char16_t* none : {u"list/3", u"list/4294967296", u"sub/none", u"sub/y", u"sub/0"}) {
    EXPECT_EQ(dict.Get(none), nullptr) << XpString(none).ToNarrow().c_str();
  }
  const std::byte* data = nullptr;
  std::uint64_t size = 0;
  ASSERT_EQ(dict.Get(u"d")->GetData(data, size), XpOk);
  EXPECT_EQ(std::vector(data, data + size), (std::vector{std::byte{0xAB}, std::byte{0x01}, std::byte{0x0F}}));
  EXPECT_EQ(Value(dict, u"when", &XpIniElement::GetDate).GetSecond(), 5);
}

TEST(PlistReadTest, CdataMayStandOnALineOfItsOwn) {
  const std::pair<const char*, const char16_t*> cases[] = {
      {"\n  <![CDATA[<a> b]]>\n", u"<a> b"},
      {" <!-- c -->\n<![CDATA[ ]]>", u" "},
      {"\n<![CDATA[]]>\n", u""},
      {"<![CDATA[a]]><![CDATA[b]]>", u"a"},
      {" <!-- c --> a ", u" a "},
      {" \n", u" \n"},
      {"", u""},
  };
  for (const auto& [text, expected] : cases) {
    XpIniDict dict;
    ASSERT_EQ(Read(InPlist("<key> <![CDATA[s]]></key><string>" + std::string(text) + "</string>"), dict),
              XpOk);
    EXPECT_EQ(Value(dict, u"s", &XpIniElement::GetString), expected) << text;
  }
}

TEST(PlistReadTest, StructureRulesHold) {
  struct Case {
    const char* name;
    std::string text;
    XpResult result;
    std::uint32_t count;
  };
  const std::string one = "<key>a</key><integer>1</integer>";
  const Case cases[] = {
      {"dict ends at what is no key", InPlist(one + "<integer>2</integer><key>b</key><true/>"), XpOk, 1},
      {"dict ends at loose text", InPlist(one + "loose<key>b</key><true/>"), XpOk, 1},
      {"dict ends at an empty key", InPlist(one + "<key/><true/><key>b</key><true/>"), XpOk, 1},
      {"repeated key keeps its first value", InPlist(one + "<key>a</key><true/>"), XpOk, 1},
      {"first dict of plist counts", "<plist><array/><dict>" + one + "</dict><dict/></plist>", XpOk, 1},
      {"usual document type line",
       "<?xml version=\"1.0\"?>\n<!DOCTYPE plist PUBLIC \"-//Some Maker//DTD PLIST 1.0//EN\" "
       "\"http://maker.invalid/p.dtd\">" +
           InPlist(one),
       XpOk, 1},
      {"key without value", InPlist(one + "<key>b</key>"), XpErrWrongRoot, 0},
      {"unknown value", InPlist(one + "<key>b</key><number>1</number>"), XpErrWrongRoot, 0},
      {"unknown value in an array", InPlist("<key>b</key><array><key>x</key></array>"), XpErrWrongRoot, 0},
      {"other document element", "<movie><dict/></movie>", XpErrWrongRoot, 0},
      {"plist without dict", "<plist><array/></plist>", XpErrWrongRoot, 0},
      {"not XML", "GIF89a", XpErrNoDocument, 0},
      {"undeclared entity", InPlist("<key>a</key><string>&lol;</string>"), XpErrNoDocument, 0},
  };
  for (const Case& c : cases) {
    XpIniDict dict;
    dict.Add(u"old", XpIniType::Bool, true);
    EXPECT_EQ(Read(c.text, dict), c.result) << c.name;
    EXPECT_EQ(dict.GetCount(), c.count) << c.name;
  }
}

TEST(PlistReadTest, ARefusedDocumentReportsCauseAndLine) {
  struct Case {
    const char* text;
    std::uint64_t line;
    const char* message;  // empty for the words of the XML library
  };
  for (const Case& c :
       {Case{"<plist>\n<dict>\n<key>a</kye>", 3, ""},
        Case{"<plist>\n<dict><key>a</key>\n<intger>1</intger></dict></plist>", 3,
             "<intger> is no value of a property list; did you mean <integer>?"},
        Case{"<plist><dict><key>a</key>\n<array>\n<number>1</number></array></dict></plist>", 3,
             "<number> is no value of a property list"},
        Case{"<plist><dict>\n<key>a</key>\n<key>b</key></dict></plist>", 3, "the key a has no value"},
        Case{"<plist><dict>\n<key>a</key></dict></plist>", 2, "the key a has no value"},
        Case{"<plist><dict>\n<key>a</key>x</dict></plist>", 1, "text stands where a value belongs"},
        Case{"\xEF\xBB\xBF<plist>\n<dict><key>\xC3\xA4\n\xFC</key>", 3, "the byte 0xFC is not UTF-8"},
        Case{"<?xml version='1.0' encoding='utf-8'?>\n<plist>\xC3", 2, "the byte 0xC3 is not UTF-8"},
        Case{"<?xml version='1.0' encoding='iso-8859-1'?>\n<plist>\xFC\n</a>", 3, ""},
        Case{"<?xml encoding=", 1, ""}, Case{"\n<plist><array/></plist>", 2, "plist holds no dict"}}) {
    XpIniDict dict;
    Findings findings;
    EXPECT_NE(Read(c.text, dict, &findings), XpOk);
    EXPECT_EQ(findings.problem.line, c.line) << c.text;
    EXPECT_FALSE(findings.problem.message.empty());
    if (*c.message != '\0') {
      EXPECT_EQ(findings.problem.message, c.message);
    }
  }
  XpIniDict dict;
  Findings findings;
  EXPECT_EQ(ReadBytes(InPlist("<key>a</key><true/>"), nullptr, dict, &findings, {.elements = 3}),
            XpErrNoDocument);
  EXPECT_EQ(findings.problem.message, "the document has too many elements");
  EXPECT_EQ(dict.GetCount(), 0u);
}

TEST(PlistReadTest, ElementsKnowTheirLines) {
  for (const char* doctype : {"", "<!DOCTYPE plist>"}) {
    XpIniDict dict;
    ASSERT_EQ(Read(std::string(doctype) +
                       "<plist>\n<dict>\n<key>s</key>\n<string><!-- a\n -->\n<![CDATA[\nx]]></string>\n"
                       "<key>a</key><array>\n<dict>\n<key>n</key><integer>1</integer></dict></array>"
                       "</dict></plist>",
                   dict),
              XpOk);
    EXPECT_EQ(dict.GetLines().element, 2u);
    EXPECT_EQ(dict.Get(u"s")->GetLines().element, 3u);
    EXPECT_EQ(dict.Get(u"s")->GetLines().text, 6u);
    EXPECT_EQ(dict.Get(u"a")->GetLines().element, 8u);
    EXPECT_EQ(dict.Get(u"a/0")->GetLines().element, 9u);
    EXPECT_EQ(dict.Get(u"a/0/n")->GetLines().element, 10u);
  }
}

TEST(PlistReadTest, WhatCountsAsSomethingElseIsRemarked) {
  struct Case {
    const char* dict;
    const char16_t* key;
    const char16_t* message;
  };
  for (const Case& c :
       {Case{"\n<key>n</key><integer>8M</integer>", u"n",
             u"is \"8M\", which is no whole number: it counts as 8"},
        Case{"\n<key>n</key><integer>1.5</integer>", u"n",
             u"is \"1.5\", which is no whole number: it counts as 1"},
        Case{"\n<key>r</key><real></real>", u"r", u"is \"\", which is no number: it counts as 0"},
        Case{"<key>a</key><true/>\n<key>a</key><false/>", u"a",
             u"stands here once more: the first value counts"},
        Case{"<key>a</key><true/>\n<kay>b</kay><true/>", u"",
             u"<kay> stands where a key belongs; did you mean <key>? What follows in the dict is not read"},
        Case{"\n<key>s</key><string>\n<b>x</b></string>", u"s",
             u"holds <b> without <![CDATA[ before and ]]> after its text: most of it is not read"},
        Case{"\n<key>s</key><string>a <![CDATA[b]]></string>", u"s",
             u"has text before <![CDATA[: what follows it is not read"},
        Case{"\n<key></key><true/>", u"",
             u"a key without a name ends its dict: what follows in it is not read"}}) {
    XpIniDict dict;
    Findings findings;
    ASSERT_EQ(Read(InPlist(c.dict), dict, &findings), XpOk) << c.dict;
    ASSERT_EQ(findings.remarks.size(), 1u) << c.dict;
    EXPECT_EQ(findings.remarks[0].key, c.key);
    EXPECT_EQ(findings.remarks[0].message, c.message);
    EXPECT_EQ(findings.remarks[0].line, 2u) << c.dict;
  }
  XpIniDict dict;
  Findings findings;
  Read(InPlist("<key>n</key><integer> -7\n</integer><key>r</key><real> 1,5e3 </real>"
               "<key>s</key><string>\n<!-- a --><![CDATA[<b>]]>\n</string>"),
       dict, &findings);
  EXPECT_TRUE(findings.remarks.empty());
}

TEST(PlistNumbersTest, TextAfterANumberIsIgnored) {
  using vrx::plist::ParseInteger;
  using vrx::plist::ParseReal;
  using Limits = std::numeric_limits<std::int64_t>;
  EXPECT_EQ(ParseInteger(u"9223372036854775808"), Limits::max());
  EXPECT_EQ(ParseInteger(u"-99999999999999999999"), Limits::min());
  EXPECT_EQ(ParseInteger(u"\n +7,5"), 7);
  EXPECT_EQ(ParseInteger(u"x"), 0);
  EXPECT_EQ(ParseReal(u" -.5e1 "), -5.0);
  for (const char16_t* text : {u"1e999", u"inf", u"nan"}) EXPECT_EQ(ParseReal(text), 0.0);
  for (const char16_t* date : {u"99:01:01T00:00:00", u"2018:01:01T00:00", u"2018::01:01T00:00:00"}) {
    EXPECT_FALSE(vrx::plist::ParseDate(date).IsValid());
  }
}

std::string Written(const XpIniDict& dict) {
  std::string text;
  EXPECT_EQ(vrx::plist::WriteDocument(dict, text), XpOk);
  return text;
}

TEST(PlistWriteTest, TheDocumentIsWrittenInItsExactForm) {
  XpIniDict dict;
  XpDateTime date;
  date.SetDateTime(2018, 1, 1, 12, 0, 5);
  const std::byte bytes[] = {std::byte{0xAB}, std::byte{0x01}};
  dict.Add(u"real", XpIniType::Real, 1.5);
  dict.Add(u"Zero", XpIniType::Int, std::int64_t{-7});
  dict.Add(u"date", XpIniType::Date, date);
  dict.Add(u"data", XpIniType::MemChunk, std::span<const std::byte>(bytes));
  dict.Add(u"text", XpIniType::String, XpString(u"<a> & \r\u0001\uFFFE\xD800"));
  dict.Add(u"none", XpIniType::String, XpString());
  dict.Add(u"yes", XpIniType::Bool, true);
  dict.Add(u"sub", XpIniType::Dict, {});
  dict.Add(u"list", XpIniType::Array, {});
  dict.Add(u"list/-1", XpIniType::Bool, false);
  dict.Add(u"never", XpIniType::Date, XpDateTime());
  EXPECT_EQ(Written(dict),
            "<?xml version=\"1.0\" encoding=\"utf-8\" ?><plist version=\"1.0\"><dict>"
            "<key>Zero</key><integer>-7</integer>"
            "<key>data</key><data>ab01</data>"
            "<key>date</key><date>2018:01:01T12:00:05Z</date>"
            "<key>list</key><array><false/></array>"
            "<key>never</key><date/>"
            "<key>none</key><string/>"
            "<key>real</key><real>1.500000000000000</real>"
            "<key>sub</key><dict/>"
            "<key>text</key><string>&lt;a&gt; &amp; &#13;\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD</string>"
            "<key>yes</key><true/>"
            "</dict></plist>");
}

TEST(PlistWriteTest, ATreeTooDeepForTheReaderIsNotWritten) {
  XpIniDict dict;
  XpString key;
  const auto deepen = [&] {
    key = key.IsEmpty() ? u"a" : key + u"/a";
    EXPECT_EQ(dict.Add(key, XpIniType::Dict, {}), XpOk);
  };
  constexpr int kPlistAndDict = 2;
  for (int i = kPlistAndDict; i < vrx::plist::XmlLimits().depth; ++i) deepen();
  XpIniDict again;
  EXPECT_EQ(Read(Written(dict), again), XpOk);
  EXPECT_EQ(Written(again), Written(dict));
  deepen();
  XpString text = u"kept";
  EXPECT_EQ(dict.SaveText(text), XpErrNoDocument);
  EXPECT_EQ(text, u"kept");
  const TempFolder folder;
  folder.Write("d.plist", "old");
  EXPECT_EQ(dict.Save(Wide(folder.Path() / "d.plist")), XpErrNoDocument);
  EXPECT_EQ(folder.Read("d.plist"), "old");
}

TEST(PlistWriteTest, SavedDocumentLoadsAgainAndAFailedSaveKeepsTheOldOne) {
  const TempFolder folder;
  const XpString path = Wide(folder.Path() / "d.plist");
  XpIniDict dict;
  dict.Add(u"名前", XpIniType::String, XpString(u"\U0001F3BE café"));
  ASSERT_EQ(dict.Save(path), XpOk);
  folder.Write("d.plist.new", "another file of the user");
  EXPECT_EQ(dict.Save(path + u"/below-a-file"), XpErrNotAFile);
  EXPECT_EQ(dict.Save(Wide(folder.Path())), XpErrAccessDenied);
  std::filesystem::permissions(folder.Path() / "d.plist", std::filesystem::perms::owner_read);
  EXPECT_EQ(XpIniDict().Save(path), XpErrAccessDenied);
  {
    const FullDisk disk(100);
    EXPECT_EQ(dict.Save(path + u".full"), XpErrNoDocument) << "the file itself could be opened";
  }
  EXPECT_EQ(folder.Count(), 2);
  EXPECT_EQ(folder.Read("d.plist.new"), "another file of the user");
  XpIniDict loaded;
  ASSERT_EQ(loaded.Load(path), XpOk);
  EXPECT_EQ(Value(loaded, u"名前", &XpIniElement::GetString), u"\U0001F3BE café");
  EXPECT_EQ(loaded.Load(path + u".none"), XpErrFileNotFound);
  XpString text;
  ASSERT_EQ(dict.SaveText(text), XpOk);
  XpIniDict copy;
  EXPECT_EQ(copy.LoadText(text), XpOk);
  EXPECT_EQ(copy.LoadClipboard(0), XpErrFailed);
  EXPECT_EQ(copy.GetCount(), 1u);
}

TEST(PlistTreeTest, OperationsFollowKeyPathsAndCheckTypes) {
  XpIniDict dict;
  EXPECT_EQ(dict.Add(u"a/b", XpIniType::Bool, true), XpErrElementNotFound);
  EXPECT_EQ(dict.Add(u"a", XpIniType::Int, std::int64_t{1} << 31), XpOk);
  EXPECT_EQ(dict.Add(u"a", XpIniType::Bool, true), XpErrKeyExists);
  EXPECT_EQ(dict.Add(u"", XpIniType::Bool, true), XpErrInvalidArgument);
  EXPECT_EQ(dict.Add(u"x", static_cast<XpIniType>(8), {}), XpErrUnknownElementType);
  EXPECT_EQ(dict.Add(u"x", XpIniType::Int, XpString(u"text")), XpErrWrongElementType);
  EXPECT_EQ(dict.GetCount(), 1u);
  std::int32_t low = 0;
  EXPECT_EQ(dict.Get(u"a")->GetInt32(low), XpErrValueDoesNotFit);
  EXPECT_EQ(low, INT32_MIN);
  XpString untouched = u"kept";
  EXPECT_EQ(dict.Get(u"a")->GetString(untouched), XpErrWrongElementType);
  EXPECT_EQ(untouched, u"kept");
  EXPECT_EQ(dict.Add(u"a/b", XpIniType::Bool, true), XpErrWrongElementType);
  dict.Add(u"list", XpIniType::Array, {});
  XpIniElement& list = *dict.Get(u"list");
  EXPECT_EQ(list.InsertAt(1, XpIniType::Bool, true), XpErrElementNotFound);
  EXPECT_EQ(list.InsertAt(XpIniElement::kAppendToo, XpIniType::Int, std::int64_t{2}), XpOk);
  EXPECT_EQ(list.Add(u"0", XpIniType::Dict, {}), XpOk);
  EXPECT_EQ(dict.Add(u"list/0/deep", XpIniType::Real, 2.5), XpOk);
  EXPECT_EQ(dict.Remove(u"list/0/none"), XpErrElementNotFound);
  EXPECT_EQ(dict.Remove(u"list/0"), XpOk);
  EXPECT_EQ(list.RemoveAt(7), XpErrElementNotFound);
  for (const char16_t* key : {u"list/4294967296", u"list/4294967295", u"list/-4294967296"}) {
    EXPECT_EQ(dict.Remove(key), XpErrElementNotFound) << XpString(key).ToNarrow().c_str();
    EXPECT_EQ(dict.Add(key, XpIniType::Bool, true), XpErrElementNotFound);
  }
  EXPECT_EQ(dict.Remove(u"list"), XpOk);
  XpString key;
  EXPECT_EQ(dict.GetKeyAt(0, key), XpOk);
  EXPECT_EQ(key, u"a");
  EXPECT_EQ(dict.GetKeyAt(1, key), XpErrElementNotFound);
  EXPECT_EQ(dict.GetValueAt(1), nullptr);
}

}  // namespace
