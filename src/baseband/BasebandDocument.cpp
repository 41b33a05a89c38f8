#include "src/baseband/BasebandDocument.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include <xercesc/dom/DOM.hpp>

#include "foundation/text/NearestName.h"
#include "foundation/text/XpFormat.h"
#include "foundation/xml/XpXmlParser.h"

namespace vrx::baseband {
namespace {

using xercesc::DOMElement;

constexpr char16_t kRoot[] = u"VRXBaseband";
constexpr char16_t kProperties[] = u"Properties";
constexpr char16_t kBasebandType[] = u"BasebandType";
constexpr char16_t kSystemType[] = u"SystemType";
constexpr char16_t kSourceType[] = u"SourceType";
constexpr char16_t kTimeline[] = u"Timeline";
constexpr char16_t kDecImage[] = u"DecImage";
constexpr std::array<std::u16string_view, 10> kAttributes{
    u"ImageId",    u"ImagePath", u"InFrame",   u"OutFrame", u"RectTop",
    u"RectBottom", u"RectLeft",  u"RectRight", u"Mirror",   u"Rotation"};
constexpr std::size_t kMostProblems = 100;  // of one document; a fatal one is always kept

const DOMElement* FirstChild(const DOMElement* parent, std::u16string_view name) {
  if (parent == nullptr) return nullptr;
  for (const DOMElement* at = parent->getFirstElementChild(); at; at = at->getNextElementSibling()) {
    if (at->getNodeName() == name) return at;
  }
  return nullptr;
}

/// A whole decimal number and nothing else.
bool IsPlainNumber(std::u16string_view text) {
  if (!text.empty() && (text.front() == u'-' || text.front() == u'+')) text.remove_prefix(1);
  constexpr std::size_t kMostDigits = 9;
  return !text.empty() && text.size() <= kMostDigits &&
         std::all_of(text.begin(), text.end(), [](char16_t c) { return c >= u'0' && c <= u'9'; });
}

class Reader {
 public:
  Reader(const xml::XmlDocument& source, BasebandDocument& document)
      : m_source(source), m_document(document) {}

  XpResult Run() {
    const DOMElement* root = m_source.Get() == nullptr ? nullptr : m_source.Get()->getDocumentElement();
    if (root == nullptr) {
      Report(true, nullptr, XpString(), u"the document has no content");
      return XpErrNoDocument;
    }
    if (!CheckKind(*root)) return XpErrWrongElementType;
    for (const DOMElement* at = root->getFirstElementChild(); at; at = at->getNextElementSibling()) {
      if (std::u16string_view(at->getNodeName()) == kTimeline) {
        ReadTimeline(*at);
      } else {
        CheckName(*at, kTimeline);
      }
    }
    if (m_document.images.empty() && !m_failed) ReportNoImage(*root);
    return m_failed ? XpErrWrongRoot : XpOk;
  }

 private:
  void Report(bool isFatal, const DOMElement* element, const XpString& attribute, const XpString& message) {
    const bool isFirstFatal = isFatal && !m_failed;
    m_failed = m_failed || isFatal;
    if (m_document.problems.size() >= kMostProblems && !isFirstFatal) return;
    DocumentProblem problem{isFatal, 0, XpString(), attribute, message};
    if (element != nullptr) {
      problem.line = m_source.LineOf(element);
      problem.element = XpString(element->getNodeName());
    }
    m_document.problems.push_back(problem);
  }

  bool CheckKind(const DOMElement& root) {
    if (std::u16string_view(root.getNodeName()) != kRoot) {
      Report(true, &root, XpString(), u"is not the element VRXBaseband");
      return false;
    }
    const DOMElement* properties = FirstChild(&root, kProperties);
    const DOMElement* type = FirstChild(properties, kBasebandType);
    if (type == nullptr) {
      const DOMElement& parent = properties == nullptr ? root : *properties;
      const char16_t* wanted = properties == nullptr ? kProperties : kBasebandType;
      for (const DOMElement* at = parent.getFirstElementChild(); at; at = at->getNextElementSibling()) {
        CheckName(*at, wanted);
      }
      if (!MakeSuggestionFatal()) Report(true, &root, XpString(), u"has no BasebandType in its Properties");
      return false;
    }
    CheckValue(*type, kSystemType, u"Video");
    CheckValue(*type, kSourceType, u"ImageFile");
    return !m_failed;
  }

  /// Reports an element that is nearly called `wanted`.
  void CheckName(const DOMElement& element, std::u16string_view wanted) {
    const std::u16string_view name = element.getNodeName();
    if (name == wanted || !NearestName(name, {&wanted, 1})) return;
    m_suggestion = m_suggestion.value_or(m_document.problems.size());
    Report(false, &element, XpString(), u"is an unknown element; did you mean " + XpString(wanted) + u"?");
  }

  /// What the document lacks is said by a suggestion, where there is one.
  bool MakeSuggestionFatal() {
    if (!m_suggestion || *m_suggestion >= m_document.problems.size()) return false;
    m_document.problems[*m_suggestion].isFatal = m_failed = true;
    return true;
  }

  void ReportNoImage(const DOMElement& root) {
    if (!MakeSuggestionFatal()) Report(true, &root, XpString(), u"holds no DecImage in a Timeline");
  }

  void CheckValue(const DOMElement& element, const char16_t* name, const char16_t* wanted) {
    XpString value;
    if (ReadAttributeString(element, name, value) && value == wanted) return;
    XpString message;
    XpFormat(message, u"must be \"%s\"", XpString(wanted));
    Report(true, &element, name, message);
  }

  void ReadTimeline(const DOMElement& timeline) {
    for (const DOMElement* at = timeline.getFirstElementChild(); at; at = at->getNextElementSibling()) {
      if (std::u16string_view(at->getNodeName()) == kDecImage) {
        ReadImage(*at);
      } else {
        CheckName(*at, kDecImage);
      }
    }
  }

  void ReadImage(const DOMElement& element) {
    BasebandImage image;
    image.line = m_source.LineOf(&element);
    bool isWhole = ReadNumber(element, u"ImageId", image.job.imageId);
    if (!ReadAttributeString(element, u"ImagePath", image.job.imagePath)) {
      ReportMissing(element, u"ImagePath");
      isWhole = false;
    }
    std::int64_t rotation = 0;
    isWhole &= ReadNumber(element, u"InFrame", image.span.inFrame);
    isWhole &= ReadNumber(element, u"OutFrame", image.span.outFrame);
    isWhole &= ReadSide(element, u"RectTop", image.job.rect.top);
    isWhole &= ReadSide(element, u"RectBottom", image.job.rect.bottom);
    isWhole &= ReadSide(element, u"RectLeft", image.job.rect.left);
    isWhole &= ReadSide(element, u"RectRight", image.job.rect.right);
    isWhole &= ReadNumber(element, u"Mirror", image.mirror);
    isWhole &= ReadNumber(element, u"Rotation", rotation);
    if (!isWhole) return;
    image.span.imageId = image.job.imageId;
    image.job.mirror = image.mirror == 1;
    image.job.rotation = static_cast<std::int32_t>(rotation);
    m_document.images.push_back(image);
  }

  void ReportMissing(const DOMElement& element, std::u16string_view name) {
    const xercesc::DOMNamedNodeMap* attributes = element.getAttributes();
    for (XMLSize_t i = 0; i < attributes->getLength(); ++i) {
      const std::u16string_view other = attributes->item(i)->getNodeName();
      if (!NearestName(other, {&name, 1}) || std::ranges::find(kAttributes, other) != kAttributes.end())
        continue;
      return Report(true, &element, XpString(other),
                    u"is an unknown attribute; did you mean " + XpString(name) + u"?");
    }
    Report(true, &element, XpString(name), u"is missing");
  }

  bool ReadNumber(const DOMElement& element, const char16_t* name, std::int64_t& value) {
    if (!ReadAttributeInt(element, name, value)) {
      ReportMissing(element, name);
      return false;
    }
    if (!IsPlainNumber(element.getAttribute(name))) {
      XpString message;
      XpFormat(message, u"is no whole number of at most nine digits, and is read as %I64d", value);
      Report(false, &element, name, message);
    }
    return true;
  }

  bool ReadSide(const DOMElement& element, const char16_t* name, std::int32_t& value) {
    std::int64_t number = 0;
    if (!ReadNumber(element, name, number)) return false;
    value = static_cast<std::int32_t>(number);
    return true;
  }

  const xml::XmlDocument& m_source;
  BasebandDocument& m_document;
  bool m_failed = false;
  std::optional<std::size_t> m_suggestion;  // the first problem of an element that is misspelt
};

void ReportUnreadable(const xml::XmlProblem& problem, const XpString& otherwise, BasebandDocument& document) {
  XpString message = otherwise;
  if (!problem.message.empty()) {
    message = u"is no readable XML: " + XpNarrowString(problem.message).ToWide();
  }
  document.problems.push_back({true, problem.line, XpString(), XpString(), message});
}

}  // namespace

XpString BasebandDocument::Cause() const {
  const auto found =
      std::find_if(problems.begin(), problems.end(), [](const auto& problem) { return problem.isFatal; });
  XpString cause;
  if (found == problems.end()) return cause;
  if (found->line != 0) XpAppendFormat(cause, u"line %I64u: ", found->line);
  if (!found->element.IsEmpty()) XpAppendFormat(cause, u"%s ", found->element);
  if (!found->attribute.IsEmpty()) XpAppendFormat(cause, u"%s ", found->attribute);
  return cause + found->message;
}

XpResult ReadBasebandBytes(std::span<const char> bytes, BasebandDocument& document) {
  document = {};
  xml::XmlDocument source;
  source.KeepLines();
  xml::XmlProblem problem;
  if (!source.Parse(bytes, nullptr, {}, &problem)) {
    ReportUnreadable(problem, u"is no readable XML", document);
    return XpErrNotWellFormed;
  }
  return Reader(source, document).Run();
}

XpResult ReadBasebandDocument(const XpString& path, BasebandDocument& document) {
  document = {};
  if (path.IsEmpty()) {
    ReportUnreadable({}, u"no document is named", document);
    return XpErrUnknownElementType;
  }
  std::vector<char> bytes;
  xml::XmlProblem problem;
  if (const XpResult result = xml::ReadDocumentBytes(path, {}, bytes, problem); result != XpOk) {
    XpString message = u"does not exist";
    if (result != XpErrFileNotFound && result != XpErrPathNotFound) {
      XpFormat(message, u"cannot be read (error 0x%04x)", result);
    }
    ReportUnreadable({}, message, document);
    return result;
  }
  return ReadBasebandBytes(bytes, document);
}

}  // namespace vrx::baseband
