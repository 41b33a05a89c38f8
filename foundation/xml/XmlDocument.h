// Parses XML from memory into a DOM tree with everything switched off that foreign bytes could abuse:
// declarations of document types, entities and boundless nesting or size. Used by property-list and baseband
// documents.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <xercesc/util/XercesDefs.hpp>

#include "vrx/XpResult.h"
#include "vrx/XpString.h"

XERCES_CPP_NAMESPACE_BEGIN
class DOMDocument;
class DOMNode;
XERCES_CPP_NAMESPACE_END

namespace vrx::xml {

/// Limits far above any real document.
struct XmlLimits {
  std::size_t bytes = std::size_t{64} << 20;
  int depth = 64;  // elements inside each other
  std::size_t elements = 2'000'000;
};

/// Why a document was refused. `line` and `column` count from 1; 0 means unknown.
struct XmlProblem {
  std::string message;
  std::uint64_t line = 0;
  std::uint64_t column = 0;
};

/// A parsed document; owns its DOM tree.
class XmlDocument {
 public:
  XmlDocument();
  XmlDocument(XmlDocument&&) noexcept;
  XmlDocument& operator=(XmlDocument&&) noexcept;
  ~XmlDocument();

  /// Reads `bytes`, whose encoding is `encoding` or, when that is null, the one they declare. A document type
  /// line that only names its type is ignored, and what it names is never fetched. False with the cause in
  /// `problem` (may be null) when the bytes are not a well-formed document within the limits.
  bool Parse(std::span<const char> bytes, const char* encoding, const XmlLimits& limits, XmlProblem* problem);

  /// Must be called before Parse for LineOf to work.
  void KeepLines();
  /// The line on which the start tag of `element` ends, from 1; 0 without KeepLines.
  std::uint64_t LineOf(const xercesc::DOMNode* element) const;

  /// Null without a parsed document.
  xercesc::DOMDocument* Get() const;

 private:
  class LineTable;
  class Parser;
  std::unique_ptr<LineTable> m_lines;
  std::unique_ptr<Parser> m_parser;
};

/// Reads the file at `path`, at most one byte beyond the limit, so that Parse can still refuse it. The file
/// layer's code when it can't be read.
XpResult ReadDocumentBytes(const XpString& path, const XmlLimits& limits, std::vector<char>& bytes,
                           XmlProblem& problem);

/// True also for no text.
bool IsWhiteSpace(std::u16string_view text);

/// Text of the first text or CDATA node met when walking down from `node`; empty when there is none. White
/// space before it, as before a CDATA section on a line of its own, counts only when nothing else follows.
/// `linesBefore` (may be null) gets how many line breaks lie between the start tag and the text.
std::u16string FirstText(const xercesc::DOMNode* node, std::uint32_t* linesBefore = nullptr);

}  // namespace vrx::xml
