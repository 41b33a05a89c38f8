#include "content/plist/PlistReader.h"

#include <string>
#include <string_view>
#include <vector>

#include <xercesc/dom/DOM.hpp>

#include "content/plist/PlistNumbers.h"

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

  /// Of a repeated key the first value counts; null is returned for the others.
  XpIniElement* Put(XpIniType type, const XpIniValue& value) const {
    if (container.GetType() == XpIniType::Array) {
      container.InsertAt(XpIniElement::kAppend, type, value);
      return container.GetAt(container.GetCount() - 1);
    }
    return container.Add(key, type, value) == XpOk ? container.Get(key) : nullptr;
  }
};

XpResult ReadDict(const DOMNode* node, XpIniElement& dict);
XpResult ReadArray(const DOMNode* node, XpIniElement& array);

// The recursion of these three is bounded by the depth limit of the XML layer.
XpResult ReadContainer(const DOMNode* node, XpIniType type, const Place& place) {
  XpIniElement* container = place.Put(type, {});
  if (container == nullptr) return XpOk;
  return type == XpIniType::Dict ? ReadDict(node, *container) : ReadArray(node, *container);
}

XpResult ReadValue(const DOMNode* node, const Place& place) {
  if (!IsElement(node)) return XpErrWrongRoot;
  const std::u16string_view name = NameOf(node);
  if (name == u"dict") return ReadContainer(node, XpIniType::Dict, place);
  if (name == u"array") return ReadContainer(node, XpIniType::Array, place);
  if (name == u"true" || name == u"false") {
    place.Put(XpIniType::Bool, name == u"true");
    return XpOk;
  }
  const std::u16string text = xml::FirstText(node);
  if (name == u"integer") {
    place.Put(XpIniType::Int, ParseInteger(text));
  } else if (name == u"real") {
    place.Put(XpIniType::Real, ParseReal(text));
  } else if (name == u"string") {
    place.Put(XpIniType::String, XpString(text));
  } else if (name == u"data") {
    const std::vector<std::byte> bytes = ParseHexadecimal(text);
    place.Put(XpIniType::MemChunk, std::span<const std::byte>(bytes));
  } else if (name == u"date") {
    place.Put(XpIniType::Date, ParseDate(text));
  } else {
    return XpErrWrongRoot;
  }
  return XpOk;
}

XpResult ReadDict(const DOMNode* node, XpIniElement& dict) {
  const DOMNode* at = SkipIgnored(node->getFirstChild());
  while (at != nullptr) {
    if (!IsElement(at) || NameOf(at) != u"key") return XpOk;
    const XpString key(xml::FirstText(at));
    if (key.IsEmpty()) return XpOk;
    const DOMNode* value = SkipIgnored(at->getNextSibling());
    if (value == nullptr) return XpErrWrongRoot;
    if (const XpResult result = ReadValue(value, {dict, key}); result != XpOk) return result;
    at = SkipIgnored(value->getNextSibling());
  }
  return XpOk;
}

XpResult ReadArray(const DOMNode* node, XpIniElement& array) {
  for (const DOMNode* at = SkipIgnored(node->getFirstChild()); at != nullptr;
       at = SkipIgnored(at->getNextSibling())) {
    if (const XpResult result = ReadValue(at, {array, {}}); result != XpOk) return result;
  }
  return XpOk;
}

XpResult ReadDocument(const xercesc::DOMDocument* document, XpIniDict& dict, XmlProblem& problem) {
  const DOMNode* root = document == nullptr ? nullptr : document->getDocumentElement();
  if (root == nullptr) {
    problem = {"the document has no content"};
    return XpErrNoDocument;
  }
  if (NameOf(root) != u"plist") {
    problem = {"the document element is not plist"};
    return XpErrWrongRoot;
  }
  for (const DOMNode* at = root->getFirstChild(); at != nullptr; at = at->getNextSibling()) {
    if (!IsElement(at) || NameOf(at) != u"dict") continue;
    const XpResult result = ReadDict(at, dict);
    if (result != XpOk) problem = {"a key is followed by something that is no property-list value"};
    return result;
  }
  problem = {"plist holds no dict"};
  return XpErrWrongRoot;
}

}  // namespace

XpResult ReadFile(const XpString& path, XpIniDict& dict, XmlProblem* problem) {
  XmlProblem ignored;
  dict.Clear();
  std::vector<char> bytes;
  const XpResult result = xml::ReadDocumentBytes(path, {}, bytes, problem == nullptr ? ignored : *problem);
  return result == XpOk ? ReadBytes(bytes, nullptr, dict, problem) : result;
}

XpResult ReadBytes(std::span<const char> bytes, const char* encoding, XpIniDict& dict, XmlProblem* problem,
                   const XmlLimits& limits) {
  XmlProblem ignored;
  dict.Clear();
  xml::XmlDocument document;
  if (!document.Parse(bytes, encoding, limits, problem)) return XpErrNoDocument;
  const XpResult result = ReadDocument(document.Get(), dict, problem == nullptr ? ignored : *problem);
  if (result != XpOk) dict.Clear();
  return result;
}

}  // namespace vrx::plist
