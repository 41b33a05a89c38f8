#include "content/plist/PlistWriter.h"

#include <cstddef>
#include <string_view>

#include "content/plist/PlistNumbers.h"
#include "foundation/file/XpReplaceFile.h"
#include "foundation/xml/XmlDocument.h"

namespace vrx::plist {
namespace {

using xml::XmlLimits;

constexpr std::string_view kHead = R"(<?xml version="1.0" encoding="utf-8" ?><plist version="1.0">)";
constexpr std::string_view kTail = "</plist>";
constexpr char32_t kReplacement = 0xFFFD;

/// The characters of XML 1.0, production 2.
bool IsXmlCharacter(char32_t c) {
  return c == '\t' || c == '\n' || c == '\r' || (c >= 0x20 && c <= 0xD7FF) || (c >= 0xE000 && c <= 0xFFFD) ||
         c >= 0x10000;
}

void AppendElement(std::string& out, std::string_view name, std::string_view content) {
  if (content.empty()) {
    out.append("<").append(name).append("/>");
  } else {
    out.append("<").append(name).append(">").append(content).append("</").append(name).append(">");
  }
}

std::string Hexadecimal(const std::byte* data, std::uint64_t size) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  text.reserve(2 * size);
  for (std::uint64_t i = 0; i < size; ++i) {
    text.push_back(kDigits[std::to_integer<std::size_t>(data[i]) >> 4]);
    text.push_back(kDigits[std::to_integer<std::size_t>(data[i]) & 15]);
  }
  return text;
}

void AppendDict(std::string& out, const XpIniDict& dict);

void AppendValue(std::string& out, const XpIniElement& element) {
  switch (element.GetType()) {
    case XpIniType::Bool: {
      bool value = false;
      element.GetBool(value);
      return AppendElement(out, value ? "true" : "false", "");
    }
    case XpIniType::Int: {
      std::int64_t value = 0;
      element.GetInt64(value);
      return AppendElement(out, "integer", std::to_string(value));
    }
    case XpIniType::Real: {
      double value = 0;
      element.GetReal(value);
      return AppendElement(out, "real", FormatReal(value));
    }
    case XpIniType::String: {
      XpString text;
      element.GetString(text);
      std::string escaped;
      AppendEscaped(escaped, text.AsView());
      return AppendElement(out, "string", escaped);
    }
    case XpIniType::MemChunk: {
      const std::byte* data = nullptr;
      std::uint64_t size = 0;
      element.GetData(data, size);
      return AppendElement(out, "data", Hexadecimal(data, size));
    }
    case XpIniType::Date: {
      XpDateTime date;
      element.GetDate(date);
      return AppendElement(out, "date", FormatDate(date));
    }
    case XpIniType::Array: {
      std::string content;
      for (std::uint32_t i = 0; i < element.GetCount(); ++i) AppendValue(content, *element.GetAt(i));
      return AppendElement(out, "array", content);
    }
    case XpIniType::Dict:
      return AppendDict(out, static_cast<const XpIniDict&>(element));
  }
}

void AppendDict(std::string& out, const XpIniDict& dict) {
  std::string content;
  for (const auto& [key, element] : dict.GetElements()) {
    content += "<key>";
    AppendEscaped(content, key.AsView());
    content += "</key>";
    AppendValue(content, *element);
  }
  AppendElement(out, "dict", content);
}

/// True when the reader takes an element at this depth with all that it holds. `elements` counts them.
bool IsWithinLimits(const XpIniElement& element, int depth, std::size_t& elements) {
  constexpr XmlLimits kLimits;
  if (depth > kLimits.depth || ++elements > kLimits.elements) return false;
  if (element.GetType() == XpIniType::Array) {
    for (std::uint32_t i = 0; i < element.GetCount(); ++i) {
      if (!IsWithinLimits(*element.GetAt(i), depth + 1, elements)) return false;
    }
  } else if (element.GetType() == XpIniType::Dict) {
    elements += element.GetCount();  // the keys
    for (const auto& [key, value] : static_cast<const XpIniDict&>(element).GetElements()) {
      if (!IsWithinLimits(*value, depth + 1, elements)) return false;
    }
  }
  return true;
}

}  // namespace

void AppendEscaped(std::string& out, std::u16string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t c = text[i];
    if (textcodec::IsHighSurrogate(c) && i + 1 < text.size() && textcodec::IsLowSurrogate(text[i + 1])) {
      c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - char32_t{0xDC00});
    }
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '\r':
        out += "&#13;";
        break;  // a plain one would be read as a line feed
      default:
        textcodec::AppendUtf8(out, IsXmlCharacter(c) ? c : kReplacement);
    }
  }
}

XpResult WriteDocument(const XpIniDict& dict, std::string& text) {
  std::size_t elements = 1;        // plist itself
  constexpr int kDepthOfDict = 2;  // it is in plist
  if (!IsWithinLimits(dict, kDepthOfDict, elements)) return XpErrNoDocument;
  text = kHead;
  AppendDict(text, dict);
  text.append(kTail);
  return text.size() > XmlLimits().bytes ? XpErrNoDocument : XpOk;
}

XpResult WriteFile(const XpIniDict& dict, const XpString& path) {
  std::string text;
  if (const XpResult result = WriteDocument(dict, text)) return result;
  bool isOpen = false;
  const XpResult result = XpReplaceFile(path, [&](XpAbstractFile& file) {
    isOpen = true;
    return file.Write(text.data(), text.size(), nullptr);
  });
  return result != XpOk && isOpen ? XpErrNoDocument : result;
}

}  // namespace vrx::plist
