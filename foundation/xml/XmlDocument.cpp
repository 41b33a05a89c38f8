#include "foundation/xml/XmlDocument.h"

#include <algorithm>
#include <string>
#include <unordered_map>

#include <xercesc/dom/DOM.hpp>
#include <xercesc/internal/XMLScanner.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/Locator.hpp>

#include "foundation/file/XpFile.h"
#include "foundation/xml/GuardedParser.h"

namespace vrx::xml {

class XmlDocument::LineTable : public std::unordered_map<const xercesc::DOMNode*, std::uint64_t> {};

class XmlDocument::Parser : public GuardedParser<xercesc::XercesDOMParser> {
 public:
  Parser(const XmlLimits& limits, LineTable* lines, const XMLCh* scanner)
      : GuardedParser(limits, scanner), m_lines(lines) {
    setCreateEntityReferenceNodes(false);
  }

  void startElement(const xercesc::XMLElementDecl& declaration, unsigned int uri, const XMLCh* prefix,
                    const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes, XMLSize_t attributeCount,
                    bool isEmpty, bool isRoot) override {
    GuardedParser::startElement(declaration, uri, prefix, attributes, attributeCount, isEmpty, isRoot);
    if (m_lines != nullptr) m_lines->emplace(fCurrentNode, getScanner()->getLocator()->getLineNumber());
  }

 private:
  LineTable* m_lines;  // not owned; null keeps none
};

XmlDocument::XmlDocument() = default;
XmlDocument::XmlDocument(XmlDocument&&) noexcept = default;
XmlDocument& XmlDocument::operator=(XmlDocument&&) noexcept = default;
XmlDocument::~XmlDocument() = default;

bool XmlDocument::Parse(std::span<const char> bytes, const char* encoding, const XmlLimits& limits,
                        XmlProblem* problem) {
  XmlProblem ignored;
  m_parser.reset();
  if (m_lines) m_lines->clear();
  const auto makeParser = [&](const XMLCh* scanner) {
    return std::make_unique<Parser>(limits, m_lines.get(), scanner);
  };
  m_parser = ParseGuarded(bytes, encoding, limits, problem == nullptr ? ignored : *problem, makeParser);
  return m_parser != nullptr;
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

std::u16string FirstText(const xercesc::DOMNode* node, std::uint32_t* linesBefore) {
  std::u16string_view blank;
  std::uint32_t lines = 0;
  std::uint32_t ignored = 0;
  std::uint32_t& before = linesBefore == nullptr ? ignored : *linesBefore;
  before = 0;
  // Depth first, without recursion.
  const xercesc::DOMNode* at = node->getFirstChild();
  while (at != nullptr && at != node) {
    const auto type = at->getNodeType();
    const bool isText = type == xercesc::DOMNode::TEXT_NODE;
    if (isText || type == xercesc::DOMNode::CDATA_SECTION_NODE) {
      const std::u16string_view text = at->getNodeValue();
      if (!isText || !IsWhiteSpace(text)) {
        before = lines;
        return std::u16string(text);
      }
      if (blank.empty()) blank = text;
    }
    if (const XMLCh* passed = at->getNodeValue()) {
      lines += static_cast<std::uint32_t>(std::ranges::count(std::u16string_view(passed), u'\n'));
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
