#include "foundation/xml/XmlDocument.h"

#include <mutex>
#include <new>
#include <string>
#include <string_view>

#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLException.hpp>

#include "vrx/XpTextCodec.h"

namespace vrx::xml {
namespace {

static_assert(sizeof(XMLCh) == sizeof(char16_t));

/// The parser library lives as long as the process: the host may use it too.
void StartXmlRuntime() {
  static std::once_flag started;
  std::call_once(started, [] { xercesc::XMLPlatformUtils::Initialize(); });
}

std::string Narrow(const XMLCh* text) {
  return text == nullptr ? std::string() : textcodec::ToUtf8(std::u16string_view(text));
}

/// Thrown through the parser when a document breaks a rule of ours.
struct Refusal {
  const char* message;
};

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

class XmlDocument::Parser : public xercesc::XercesDOMParser {
 public:
  explicit Parser(const XmlLimits& limits) : m_limits(limits) {
    setValidationScheme(Val_Never);
    setDoNamespaces(false);
    setLoadExternalDTD(false);
    setDisableDefaultEntityResolution(true);
    setCreateEntityReferenceNodes(false);
    setErrorHandler(&m_errors);
  }

  void doctypeDecl(const xercesc::DTDElementDecl&, const XMLCh*, const XMLCh*, bool, bool) override {
    throw Refusal{"document types are not allowed"};
  }
  void startElement(const xercesc::XMLElementDecl& declaration, unsigned int uri, const XMLCh* prefix,
                    const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes, XMLSize_t attributeCount,
                    bool isEmpty, bool isRoot) override {
    if (++m_depth > m_limits.depth) throw Refusal{"elements are nested too deeply"};
    if (++m_elements > m_limits.elements) throw Refusal{"the document has too many elements"};
    XercesDOMParser::startElement(declaration, uri, prefix, attributes, attributeCount, isEmpty, isRoot);
  }
  void endElement(const xercesc::XMLElementDecl& declaration, unsigned int uri, bool isRoot,
                  const XMLCh* prefix) override {
    --m_depth;
    XercesDOMParser::endElement(declaration, uri, isRoot, prefix);
  }

 private:
  XmlLimits m_limits;
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
  if (bytes.empty()) {
    cause = {"the document is empty"};
    return false;
  }
  if (bytes.size() > limits.bytes) {
    cause = {"the document is larger than " + std::to_string(limits.bytes >> 20) + " MiB"};
    return false;
  }
  StartXmlRuntime();
  try {
    auto parser = std::make_unique<Parser>(limits);
    xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(bytes.data()), bytes.size(), "memory");
    if (encoding != nullptr) source.setEncoding(textcodec::ToUtf16(encoding).c_str());
    parser->parse(source);
    m_parser = std::move(parser);
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

xercesc::DOMDocument* XmlDocument::Get() const { return m_parser ? m_parser->getDocument() : nullptr; }

std::u16string FirstText(const xercesc::DOMNode* node) {
  // Depth first without recursion; the depth limit bounds the way back up.
  const xercesc::DOMNode* at = node->getFirstChild();
  while (at != nullptr && at != node) {
    const auto type = at->getNodeType();
    if (type == xercesc::DOMNode::TEXT_NODE || type == xercesc::DOMNode::CDATA_SECTION_NODE) {
      return at->getNodeValue();
    }
    if (at->getFirstChild() != nullptr) {
      at = at->getFirstChild();
      continue;
    }
    while (at != node && at->getNextSibling() == nullptr) at = at->getParentNode();
    if (at != node) at = at->getNextSibling();
  }
  return {};
}

}  // namespace vrx::xml
