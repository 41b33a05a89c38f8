#include "foundation/xml/XmlDocument.h"

#include <algorithm>
#include <new>
#include <string>
#include <string_view>
#include <unordered_map>

#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/internal/XMLScanner.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "foundation/file/XpFile.h"
#include "foundation/xml/XpXmlParser.h"
#include "vrx/XpTextCodec.h"

namespace vrx::xml {
namespace {

static_assert(sizeof(XMLCh) == sizeof(char16_t));

std::string Narrow(const XMLCh* text) {
  return text == nullptr ? std::string() : textcodec::ToUtf8(std::u16string_view(text));
}

/// Thrown through the parser when a document breaks one of the rules here.
struct Refusal {
  const char* message;
};

/// Thrown at the first element after a document type without declarations.
struct DoctypeLine {};

/// Characters by which the second scanner finds the end of a document type.
constexpr std::u16string_view kEndsDoctype = u"[]>";

class ThrowingErrorHandler : public xercesc::ErrorHandler {
 public:
  void warning(const xercesc::SAXParseException&) override {}
  void error(const xercesc::SAXParseException& problem) override {
    throw xercesc::SAXParseException(problem);
  }
  void fatalError(const xercesc::SAXParseException& problem) override { error(problem); }
  void resetErrors() override {}
};

}  // namespace

class XmlDocument::LineTable : public std::unordered_map<const xercesc::DOMNode*, std::uint64_t> {};

class XmlDocument::Parser : public xercesc::XercesDOMParser {
 public:
  Parser(const XmlLimits& limits, LineTable* lines, const XMLCh* scanner) : m_limits(limits), m_lines(lines) {
    useScanner(scanner);
    setValidationScheme(Val_Never);
    setDoNamespaces(false);
    setLoadExternalDTD(false);
    setDisableDefaultEntityResolution(true);
    setCreateEntityReferenceNodes(false);
    setErrorHandler(&m_errors);
  }

  void doctypeDecl(const xercesc::DTDElementDecl&, const XMLCh* publicId, const XMLCh* systemId,
                   bool hasInternalSubset, bool) override {
    if (hasInternalSubset) throw Refusal{"document types with declarations are not allowed"};
    for (const XMLCh* id : {publicId, systemId}) {
      if (id != nullptr && std::u16string_view(id).find_first_of(kEndsDoctype) != std::u16string_view::npos) {
        throw Refusal{"the identifier of a document type must not contain [, ] or >"};
      }
    }
    m_hasDoctypeLine = true;
  }
  void startElement(const xercesc::XMLElementDecl& declaration, unsigned int uri, const XMLCh* prefix,
                    const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes, XMLSize_t attributeCount,
                    bool isEmpty, bool isRoot) override {
    if (m_hasDoctypeLine) throw DoctypeLine();
    if (++m_depth > m_limits.depth) throw Refusal{"elements are nested too deeply"};
    if (++m_elements > m_limits.elements) throw Refusal{"the document has too many elements"};
    XercesDOMParser::startElement(declaration, uri, prefix, attributes, attributeCount, isEmpty, isRoot);
    if (m_lines != nullptr) m_lines->emplace(fCurrentNode, getScanner()->getLocator()->getLineNumber());
  }
  void endElement(const xercesc::XMLElementDecl& declaration, unsigned int uri, bool isRoot,
                  const XMLCh* prefix) override {
    --m_depth;
    XercesDOMParser::endElement(declaration, uri, isRoot, prefix);
  }

 private:
  XmlLimits m_limits;
  LineTable* m_lines;  // not owned; null keeps none
  bool m_hasDoctypeLine = false;
  int m_depth = 0;
  std::size_t m_elements = 0;
  ThrowingErrorHandler m_errors;
};

XmlDocument::XmlDocument() = default;
XmlDocument::XmlDocument(XmlDocument&&) noexcept = default;
XmlDocument& XmlDocument::operator=(XmlDocument&&) noexcept = default;
XmlDocument::~XmlDocument() = default;

bool XmlDocument::Parse(std::span<const char> bytes, const char* encoding, const XmlLimits& limits,
                        XmlProblem* problem) {
  XmlProblem ignored;
  XmlProblem& cause = problem == nullptr ? ignored : *problem;
  m_parser.reset();
  if (m_lines) m_lines->clear();
  if (bytes.empty()) {
    cause = {"the document is empty"};
    return false;
  }
  if (bytes.size() > limits.bytes) {
    cause = {"the document is larger than " + std::to_string(limits.bytes >> 20) + " MiB"};
    return false;
  }
  XpXmlInitialize();
  try {
    xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(bytes.data()), bytes.size(), "memory");
    if (encoding != nullptr) source.setEncoding(textcodec::ToUtf16(encoding).c_str());
    m_parser = ParseSource(source, limits);
    return true;
  } catch (const Refusal& refusal) {
    cause = {refusal.message};
  } catch (const xercesc::SAXParseException& error) {
    cause = {Narrow(error.getMessage()), error.getLineNumber(), error.getColumnNumber()};
  } catch (const xercesc::XMLException& error) {
    cause = {Narrow(error.getMessage()), error.getSrcLine()};
  } catch (const xercesc::DOMException& error) {
    cause = {Narrow(error.getMessage())};
  } catch (const xercesc::OutOfMemoryException&) {
    throw std::bad_alloc();
  }
  return false;
}

std::unique_ptr<XmlDocument::Parser> XmlDocument::ParseSource(const xercesc::InputSource& source,
                                                              const XmlLimits& limits) {
  auto parser = std::make_unique<Parser>(limits, m_lines.get(), xercesc::XMLUni::fgIGXMLScanner);
  try {
    parser->parse(source);
  } catch (const DoctypeLine&) {
    // After a document type the usual scanner accepts unknown entities, as if an external file declared them.
    // This one ignores document types and refuses every entity but XML's own five.
    parser = std::make_unique<Parser>(limits, m_lines.get(), xercesc::XMLUni::fgWFXMLScanner);
    parser->parse(source);
  }
  return parser;
}

void XmlDocument::KeepLines() {
  if (!m_lines) m_lines = std::make_unique<LineTable>();
}

std::uint64_t XmlDocument::LineOf(const xercesc::DOMNode* element) const {
  if (!m_lines) return 0;
  const auto found = m_lines->find(element);
  return found == m_lines->end() ? 0 : found->second;
}

xercesc::DOMDocument* XmlDocument::Get() const { return m_parser ? m_parser->getDocument() : nullptr; }

XpResult ReadDocumentBytes(const XpString& path, const XmlLimits& limits, std::vector<char>& bytes,
                           XmlProblem& problem) {
  XpFile file;
  if (const XpResult result = file.OpenPath(path, XpOpenRead, XpShareRead); result != XpOk) return result;
  const std::int64_t size = file.GetSize();
  if (size < 0) return XpErrNotAFile;
  bytes.resize(std::min(static_cast<std::size_t>(size), limits.bytes + 1));
  if (bytes.empty()) return XpOk;
  std::uint64_t read = 0;
  const XpResult result = file.Read(bytes.data(), bytes.size(), &read);
  bytes.resize(read);
  if (result == XpOk || result == XpErrEndOfFile) return XpOk;
  problem = {"the file cannot be read"};
  return result;
}

bool IsWhiteSpace(std::u16string_view text) {
  return text.find_first_not_of(u" \t\r\n") == std::u16string_view::npos;
}

std::u16string FirstText(const xercesc::DOMNode* node) {
  std::u16string_view blank;
  // Depth first, without recursion.
  const xercesc::DOMNode* at = node->getFirstChild();
  while (at != nullptr && at != node) {
    const auto type = at->getNodeType();
    const bool isText = type == xercesc::DOMNode::TEXT_NODE;
    if (isText || type == xercesc::DOMNode::CDATA_SECTION_NODE) {
      const std::u16string_view text = at->getNodeValue();
      if (!isText || !IsWhiteSpace(text)) return std::u16string(text);
      if (blank.empty()) blank = text;
    }
    if (at->getFirstChild() != nullptr) {
      at = at->getFirstChild();
      continue;
    }
    while (at != node && at->getNextSibling() == nullptr) at = at->getParentNode();
    if (at != node) at = at->getNextSibling();
  }
  return std::u16string(blank);
}

}  // namespace vrx::xml
