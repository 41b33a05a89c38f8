#include "content/plist/PlistReader.h"

#include <string>
#include <string_view>
#include <vector>

#include <xercesc/dom/DOM.hpp>

#include "content/plist/PlistNumbers.h"
#include "foundation/text/NearestName.h"
#include "foundation/text/XpFormat.h"
#include "vrx/XpTextCodec.h"

namespace vrx::plist {
namespace {

using xercesc::DOMNode;

bool IsElement(const DOMNode* node) { return node->getNodeType() == DOMNode::ELEMENT_NODE; }

std::u16string_view NameOf(const DOMNode* node) { return node->getNodeName(); }

/// Comments and text of white space alone are skipped.
bool IsSkipped(const DOMNode* node) {
  if (node->getNodeType() == DOMNode::COMMENT_NODE) return true;
  return node->getNodeType() == DOMNode::TEXT_NODE && xml::IsWhiteSpace(node->getNodeValue());
}

const DOMNode* SkipIgnored(const DOMNode* node) {
  while (node != nullptr && IsSkipped(node)) node = node->getNextSibling();
  return node;
}

int HexDigit(char16_t c) {
  if (c >= u'0' && c <= u'9') return c - u'0';
  if (c >= u'a' && c <= u'f') return c - u'a' + 10;
  return c >= u'A' && c <= u'F' ? c - u'A' + 10 : -1;
}

/// Pairs of digits. White space is skipped; any other character ends the data.
std::vector<std::byte> ParseHexadecimal(std::u16string_view text) {
  std::vector<std::byte> bytes;
  bytes.reserve(text.size() / 2);
  int high = -1;
  for (const char16_t c : text) {
    if (c == u' ' || (c >= u'\t' && c <= u'\r')) continue;
    const int digit = HexDigit(c);
    if (digit < 0) break;
    if (high < 0) {
      high = digit;
    } else {
      bytes.push_back(static_cast<std::byte>(high << 4 | digit));
      high = -1;
    }
  }
  return bytes;
}

/// Where the next value goes: a dict under a key, or the end of an array.
struct Place {
  XpIniElement& container;
  XpString key;
  std::uint64_t keyLine = 0;

  /// Of a repeated key the first value counts; null is returned for the others.
  XpIniElement* Put(XpIniType type, const XpIniValue& value) const {
    if (container.GetType() == XpIniType::Array) {
      container.InsertAt(XpIniElement::kAppend, type, value);
      return container.GetAt(container.GetCount() - 1);
    }
    return container.Add(key, type, value) == XpOk ? container.Get(key) : nullptr;
  }
};

constexpr std::u16string_view kValueNames[] = {u"dict", u"array",  u"true", u"false", u"integer",
                                               u"real", u"string", u"data", u"date"};
constexpr std::size_t kMostRemarks = 50;

/// "<intger> is no value of a property list; did you mean <integer>?"
std::u16string UnknownName(std::u16string_view name, const char16_t* what,
                           std::span<const std::u16string_view> known) {
  std::u16string message = u"<" + std::u16string(name) + u"> " + what;
  if (const auto nearest = NearestName(name, known)) {
    message += u"; did you mean <" + std::u16string(*nearest) + u">?";
  }
  return message;
}

class Reader {
 public:
  Reader(const xml::XmlDocument& source, Findings& findings) : m_source(source), m_findings(findings) {}

  XpResult Run(XpIniDict& dict) {
    const auto* document = m_source.Get();
    const DOMNode* root = document == nullptr ? nullptr : document->getDocumentElement();
    if (root == nullptr) {
      m_findings.problem = {"the document has no content"};
      return XpErrNoDocument;
    }
    if (NameOf(root) != u"plist") return Refuse(root, u"the document element is not plist");
    for (const DOMNode* at = root->getFirstChild(); at != nullptr; at = at->getNextSibling()) {
      if (!IsElement(at) || NameOf(at) != u"dict") continue;
      SetLines(dict, m_source.LineOf(at));
      return ReadDict(at, dict);
    }
    return Refuse(root, u"plist holds no dict");
  }

 private:
  XpResult Refuse(const DOMNode* node, std::u16string_view message) {
    m_findings.problem = {textcodec::ToUtf8(message), m_source.LineOf(node)};
    return XpErrWrongRoot;
  }

  void AddRemark(const Remark& remark) {
    if (m_findings.remarks.size() < kMostRemarks) m_findings.remarks.push_back(remark);
  }

  static void SetLines(XpIniElement& element, std::uint64_t line, std::uint64_t textLine = 0) {
    element.SetLines({static_cast<std::uint32_t>(line), static_cast<std::uint32_t>(textLine)});
  }

  /// Null for the value of a repeated key.
  XpIniElement* Put(const DOMNode* node, const Place& place, XpIniType type, const XpIniValue& value,
                    std::uint32_t linesBeforeText = 0) {
    const std::uint64_t line = m_source.LineOf(node);
    XpIniElement* element = place.Put(type, value);
    if (element != nullptr) {
      SetLines(*element, place.keyLine != 0 ? place.keyLine : line, line + linesBeforeText);
    } else {
      AddRemark({place.key, u"stands here once more: the first value counts", place.keyLine});
    }
    return element;
  }

  // The recursion of these three is bounded by the depth limit of the XML layer.
  XpResult ReadContainer(const DOMNode* node, XpIniType type, const Place& place) {
    XpIniElement* container = Put(node, place, type, {});
    if (container == nullptr) return XpOk;
    return type == XpIniType::Dict ? ReadDict(node, *container) : ReadArray(node, *container);
  }

  XpResult ReadValue(const DOMNode* node, const Place& place) {
    if (!IsElement(node)) {
      return Refuse(node->getParentNode(), u"text stands where a value belongs");
    }
    const std::u16string_view name = NameOf(node);
    if (name == u"dict") return ReadContainer(node, XpIniType::Dict, place);
    if (name == u"array") return ReadContainer(node, XpIniType::Array, place);
    if (name == u"true" || name == u"false") {
      Put(node, place, XpIniType::Bool, name == u"true");
      return XpOk;
    }
    std::uint32_t linesBefore = 0;
    const std::u16string text = xml::FirstText(node, &linesBefore);
    if (name == u"integer") {
      const std::int64_t value = ParseInteger(text);
      Put(node, place, XpIniType::Int, value);
      if (!IsInteger(text)) RemarkNumber(node, place, text, u"no whole number", static_cast<double>(value));
    } else if (name == u"real") {
      const double value = ParseReal(text);
      Put(node, place, XpIniType::Real, value);
      if (!IsReal(text)) RemarkNumber(node, place, text, u"no number", value);
    } else if (name == u"string") {
      Put(node, place, XpIniType::String, XpString(text), linesBefore);
      RemarkLostText(node, place);
    } else if (name == u"data") {
      const std::vector<std::byte> bytes = ParseHexadecimal(text);
      Put(node, place, XpIniType::MemChunk, std::span<const std::byte>(bytes));
    } else if (name == u"date") {
      Put(node, place, XpIniType::Date, ParseDate(text));
    } else if (name == u"key" && !place.key.IsEmpty()) {
      return Refuse(node, u"the key " + std::u16string(place.key.AsView()) + u" has no value");
    } else {
      return Refuse(node, UnknownName(name, u"is no value of a property list", kValueNames));
    }
    return XpOk;
  }

  /// Only the first text of a string is read. Where tags are meant as text, that is a small part of them.
  void RemarkLostText(const DOMNode* node, const Place& place) {
    const std::uint64_t line = place.keyLine != 0 ? place.keyLine : m_source.LineOf(node);
    const DOMNode* first = SkipIgnored(node->getFirstChild());
    for (const DOMNode* at = first; at != nullptr; at = at->getNextSibling()) {
      if (IsElement(at)) {
        return AddRemark({place.key,
                          XpString(u"holds <") + XpString(NameOf(at)) +
                              u"> without <![CDATA[ before and ]]> after its text: most of it is not read",
                          line});
      }
      if (at != first && at->getNodeType() == DOMNode::CDATA_SECTION_NODE) {
        return AddRemark({place.key, u"has text before <![CDATA[: what follows it is not read", line});
      }
    }
  }

  void RemarkNumber(const DOMNode* node, const Place& place, const std::u16string& text, const char16_t* what,
                    double value) {
    constexpr std::size_t kMostQuoted = 24;
    XpString message;
    XpFormat(message, u"is \"%s\", which is %s: it counts as %.15g", XpString(text.substr(0, kMostQuoted)),
             XpString(what), value);
    AddRemark({place.key, message, place.keyLine != 0 ? place.keyLine : m_source.LineOf(node)});
  }

  XpResult ReadDict(const DOMNode* node, XpIniElement& dict) {
    const DOMNode* at = SkipIgnored(node->getFirstChild());
    while (at != nullptr) {
      if (!IsElement(at) || NameOf(at) != u"key") {
        EndDict(node, dict, at);
        return XpOk;
      }
      const std::uint64_t line = m_source.LineOf(at);
      const XpString key(xml::FirstText(at));
      if (key.IsEmpty()) {
        AddRemark({key, u"a key without a name ends its dict: what follows in it is not read", line,
                   dict.GetLines().element});
        return XpOk;
      }
      const DOMNode* value = SkipIgnored(at->getNextSibling());
      if (value == nullptr) return Refuse(at, u"the key " + std::u16string(key.AsView()) + u" has no value");
      if (const XpResult result = ReadValue(value, {dict, key, line}); result != XpOk) return result;
      at = SkipIgnored(value->getNextSibling());
    }
    return XpOk;
  }

  /// `at` stands in the dict where a key belongs.
  void EndDict(const DOMNode* node, const XpIniElement& dict, const DOMNode* at) {
    constexpr std::u16string_view kKeyName[] = {u"key"};
    const std::u16string message = IsElement(at)
                                       ? UnknownName(NameOf(at), u"stands where a key belongs", kKeyName)
                                       : u"text stands where a key belongs";
    const char16_t* link = message.back() == u'?' ? u" What" : u": what";
    AddRemark({XpString(), XpString(message) + link + u" follows in the dict is not read",
               m_source.LineOf(IsElement(at) ? at : node), dict.GetLines().element});
  }

  XpResult ReadArray(const DOMNode* node, XpIniElement& array) {
    for (const DOMNode* at = SkipIgnored(node->getFirstChild()); at != nullptr;
         at = SkipIgnored(at->getNextSibling())) {
      if (const XpResult result = ReadValue(at, {array, {}}); result != XpOk) return result;
    }
    return XpOk;
  }

  const xml::XmlDocument& m_source;
  Findings& m_findings;
};

}  // namespace

XpResult ReadFile(const XpString& path, XpIniDict& dict, Findings* findings) {
  Findings ignored;
  dict.Clear();
  std::vector<char> bytes;
  XmlProblem& problem = findings == nullptr ? ignored.problem : findings->problem;
  const XpResult result = xml::ReadDocumentBytes(path, {}, bytes, problem);
  return result == XpOk ? ReadBytes(bytes, nullptr, dict, findings) : result;
}

XpResult ReadBytes(std::span<const char> bytes, const char* encoding, XpIniDict& dict, Findings* findings,
                   const XmlLimits& limits) {
  Findings ignored;
  Findings& found = findings == nullptr ? ignored : *findings;
  found.remarks.clear();
  dict.Clear();
  xml::XmlDocument document;
  document.KeepLines();
  if (!document.Parse(bytes, encoding, limits, &found.problem)) return XpErrNoDocument;
  const XpResult result = Reader(document, found).Run(dict);
  if (result != XpOk) dict.Clear();
  return result;
}

}  // namespace vrx::plist
