#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "foundation/file/XpMemoryFile.h"
#include "imaging/icc/IccProfile.h"

namespace {

using namespace vrx::imaging;
using namespace std::string_literals;

std::string Number(std::uint32_t number) {
  return {static_cast<char>(number >> 24), static_cast<char>(number >> 16), static_cast<char>(number >> 8),
          static_cast<char>(number)};
}
std::string Words(std::initializer_list<std::uint32_t> numbers) {
  std::string bytes;
  for (const std::uint32_t number : numbers) bytes += Number(number);
  return bytes;
}

/// The numbers count up, so that one that is read from the wrong place shows.
std::string Header() {
  std::string bytes = Words({1000, 1, 0x02100000, 3, 4, 5});
  for (const char* part : {"\7", "\1", "\2", "\15", "\16", "\17"}) bytes += "\7"s + part;
  bytes += Words({6, 7, 8, 9, 10}) + "ATTRIBUT" + Words({11, 12, 0xFFFF0000, 14, 15});
  return bytes + "0123456789abcdef" + std::string(28, 'R');
}

std::string Description(const std::string& text) {
  return "desc" + Number(0) + Number(static_cast<std::uint32_t>(text.size())) + text;
}

struct Tag {
  std::string signature, content;
};

std::string Profile(const std::vector<Tag>& tags) {
  std::string table = Number(static_cast<std::uint32_t>(tags.size())), contents;
  for (const Tag& tag : tags) {
    table += tag.signature + Words({static_cast<std::uint32_t>(132 + 12 * tags.size() + contents.size()),
                                    static_cast<std::uint32_t>(tag.content.size())});
    contents += tag.content;
  }
  return Header() + table + contents;
}

void Fill(XpMemoryFile& file, std::string& bytes) {
  file.Attach(bytes.data(), static_cast<std::int64_t>(bytes.size()), false);
}

XpResult Read(std::string bytes, icc_profile& profile) {
  XpMemoryFile file;
  Fill(file, bytes);
  return profile.Read(file);
}

std::string Text(const icc_tag& tag) { return std::string(tag.GetTextDescription().text.AsView()); }

TEST(IccProfileTest, HeaderAndDescriptionAreRead) {
  icc_profile profile;
  ASSERT_EQ(Read(Profile({{"wtpt", "xxxx"},
                          {"desc", Description("Adobe RGB (1998)\0junk"s)},
                          {"cprt"},
                          {"desc", Description("Second")}}),
                 profile),
            XpOk);
  EXPECT_EQ(Text(profile.FindTag("desc")), "Adobe RGB (1998)");
  EXPECT_EQ(profile.FindTag("desc").typeSignature, IccSignature("desc"));
  EXPECT_EQ(profile.FindTag("desc").tagSignature, 0x64657363u);
  EXPECT_EQ(Text(profile.FindTag("wtpt")), "");
  EXPECT_EQ(profile.FindTag("wtpt").tagSignature, 0u);
  EXPECT_EQ(Text(profile.FindTag("desc ")), "");
  const icc_profile_header& h = profile.GetHeader();
  EXPECT_EQ((std::vector{h.size, h.cmm, h.version, h.deviceClass, h.colorSpace, h.connectionSpace,
                         h.signature, h.platform, h.flags, h.manufacturer, h.model, h.intent, h.creator}),
            (std::vector<std::uint32_t>{1000, 1, 0x02100000, 3, 4, 5, 6, 7, 8, 9, 10, 11, 15}));
  EXPECT_EQ((std::vector<int>{h.dateTime.year, h.dateTime.month, h.dateTime.day, h.dateTime.hour,
                              h.dateTime.minute, h.dateTime.second}),
            (std::vector<int>{0x707, 0x701, 0x702, 0x70D, 0x70E, 0x70F}));
  EXPECT_EQ((std::vector{h.illuminant.x.value, h.illuminant.y.value, h.illuminant.z.value}),
            (std::vector<std::int32_t>{12, -65536, 14}));
  EXPECT_EQ(std::string(h.id.begin(), h.id.end()), "0123456789abcdef");
}

TEST(IccProfileTest, WhatTheTagsSayDecidesTheResult) {
  const std::string lying = "desc" + Number(0) + Number(0xFFFFFFF0u);
  const std::string beyondTag =
      Header() + Number(1) + "desc" + Words({144, 15}) + Description("Name") + "more";
  const std::string farOffset = Header() + Number(1) + "desc" + Words({0xFFFFFFF0u, 20});
  const std::string skipped = Header() + Number(1) + "wtpt" + Words({0xFFFFFFF0u, 0xFFFFFFFFu});
  std::string repeated = Header() + Number(400);
  for (int i = 0; i < 400; ++i) repeated += "desc" + Words({132 + 12 * 400, 512});
  const struct {
    std::string what, bytes;
    XpResult expected;
    std::string text = "";
  } cases[] = {
      {"no tags", Profile({}), XpOk},
      {"no description", Profile({{"cprt", "text"}}), XpOk},
      {"empty name", Profile({{"desc", Description("")}}), XpOk},
      {"version 4", Profile({{"desc", "mluc" + Words({0, 1, 12})}}), XpErrIccType},
      {"second one of version 4", Profile({{"desc", Description("A")}, {"desc", "mluc1234"}}), XpErrIccType},
      {"count beyond the stream", Profile({{"desc", lying}}), XpErrEndOfFile},
      {"count beyond the tag", beyondTag, XpOk, "Name"},
      {"tag size below its head", Profile({{"desc", ""}}) + Description("A"), XpOk, "A"},
      {"offset beyond the stream", farOffset, XpErrEndOfFile},
      {"another tag is not looked at", skipped, XpOk},
      {"more tags than bytes", Header() + Number(0xFFFFFFFFu) + std::string(24, 'x'), XpErrEndOfFile},
      {"the same text again and again", repeated + Description(std::string(500, 'x')), XpErrEndOfFile},
  };
  for (const auto& [what, bytes, expected, text] : cases) {
    SCOPED_TRACE(what);
    icc_profile profile;
    EXPECT_EQ(Read(bytes, profile), expected);
    if (expected == XpOk) {
      EXPECT_EQ(Text(profile.FindTag("desc")), text);
    }
  }
}

TEST(IccProfileTest, EveryTruncationIsReported) {
  const std::string whole = Profile({{"desc", Description("Wide Gamut RGB")}, {"wtpt", ""}});
  for (std::size_t size = 0; size < whole.size(); ++size) {
    icc_profile profile;
    EXPECT_EQ(Read(whole.substr(0, size), profile), XpErrEndOfFile) << size;
  }
}

struct TypeCase {
  std::unique_ptr<icc_type> type;
  std::string bytes;  // without what follows the tag
  std::function<std::vector<std::int64_t>(const icc_type&)> values;
  std::vector<std::int64_t> expected;
};

template <class Type, class Values>
TypeCase Case(std::string bytes, Values values, std::vector<std::int64_t> expected) {
  const auto call = [values](const icc_type& type) { return values(static_cast<const Type&>(type)); };
  return {std::make_unique<Type>(), std::move(bytes), call, std::move(expected)};
}

std::vector<TypeCase> TypeCases() {
  using List = std::vector<std::int64_t>;
  const auto characters = [](const auto& t) { return List(t.text.AsView().begin(), t.text.AsView().end()); };
  const auto parameters = [](const parametricCurveType& t) {
    List list;
    for (const auto& number : t.parameters) list.push_back(number.value);
    return list;
  };
  const auto para = [&](std::uint32_t function, List expected) {
    std::string bytes = "para" + Words({0, function << 16});
    for (const std::int64_t value : expected) bytes += Number(static_cast<std::uint32_t>(value));
    return Case<parametricCurveType>(bytes, parameters, expected);
  };
  std::vector<TypeCase> cases;
  cases.push_back(Case<curveType>("curv" + Words({0, 2}) + "\xFF\x01\x02\x03",
                                  [](const curveType& t) { return List(t.values.begin(), t.values.end()); },
                                  {0xFF01, 0x0203}));
  cases.push_back(Case<multiLocalizedUnicodeType>("mluc" + Words({0, 3}),
                                                  [](const multiLocalizedUnicodeType& t) {
                                                    return List{t.languageCode, t.recordCount};
                                                  },
                                                  {0x7573656E, 3}));
  cases.push_back(para(0, {1}));
  cases.push_back(para(1, {1, -2, 3}));
  cases.push_back(para(2, {1, 2, 3, 4}));
  cases.push_back(para(3, {1, 2, 3, 4, 5}));
  cases.push_back(para(4, {1, 2, 3, 4, 5, 6, 7}));
  cases.push_back(Case<s15Fixed16ArrayType>(
      "sf32" + Words({0, 5, 0xFFFFFFFE}),
      [](const s15Fixed16ArrayType& t) {
        return List{t.values.at(0).value, t.values.at(1).value, static_cast<std::int64_t>(t.values.size())};
      },
      {5, -2, 2}));
  cases.push_back(Case<textType>("text" + Number(0) + "ab\0c"s, characters, {'a', 'b'}));
  cases.push_back(Case<textDescriptionType>(Description("xyz"), characters, {'x', 'y', 'z'}));
  cases.push_back(Case<XYZType>("XYZ " + Words({0, 1, 2, 3, 4, 5, 6}),
                                [](const XYZType& t) {
                                  return List{t.values.at(0).x.value, t.values.at(1).z.value,
                                              static_cast<std::int64_t>(t.values.size())};
                                },
                                {1, 6, 2}));
  return cases;
}

TEST(IccTypesTest, EachTypeReadsItsOwnTagAndNoOther) {
  for (const TypeCase& c : TypeCases()) {
    SCOPED_TRACE(c.bytes);
    const auto read = [&](std::string bytes) {
      XpMemoryFile file;
      Fill(file, bytes);
      return c.type->Read(file, static_cast<std::uint32_t>(c.bytes.size()));
    };
    EXPECT_EQ(read("?" + c.bytes), XpErrIccType);
    for (std::size_t size = 0; size < c.bytes.size(); ++size) {
      EXPECT_EQ(read(c.bytes.substr(0, size)), XpErrEndOfFile) << size;
    }
    ASSERT_EQ(read(c.bytes + "more"), XpOk);
    EXPECT_EQ(c.values(*c.type), c.expected);
  }
}

TEST(IccTypesTest, RealNumbersBecomeFixedPoint) {
  EXPECT_EQ(s15Fixed16Number().value, 0x23333);
  EXPECT_EQ(parametricCurveType().parameters.at(0).value, 0x23333);
  for (const auto& [number, value] : {std::pair{1.0, 0x10000},
                                      {0.5, 0x8000},
                                      {-1.5, -0x18000},
                                      {-0.1, -6554},
                                      {1e9, 0x7FFFFFFF},
                                      {0.99999999, 0xFFFF}}) {
    EXPECT_EQ(s15Fixed16Number(number).value, value) << number;
  }
}

}  // namespace
