// A parser of the XML library with everything switched off that foreign bytes could abuse. XmlDocument and
// XmlEvents build on it.
#pragma once

#include <memory>
#include <new>
#include <string>
#include <string_view>

#include <xercesc/dom/DOMException.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/framework/XMLAttr.hpp>
#include <xercesc/framework/XMLElementDecl.hpp>
#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLUni.hpp>
#include <xercesc/validators/DTD/DTDElementDecl.hpp>

#include "foundation/xml/Utf8Check.h"
#include "foundation/xml/XmlDocument.h"
#include "foundation/xml/XpXmlParser.h"
#include "vrx/XpTextCodec.h"

namespace vrx::xml {

static_assert(sizeof(XMLCh) == sizeof(char16_t));

inline std::string Narrow(const XMLCh* text) {
  return text == nullptr ? std::string() : textcodec::ToUtf8(std::u16string_view(text));
}

/// Thrown through the parser when a document breaks one of the rules here.
struct Refusal {
  const char* message;
};

/// Thrown at the first element after a document type without declarations.
struct DoctypeLine {};

/// Characters by which the second scanner finds the end of a document type.
inline constexpr std::u16string_view kEndsDoctype = u"[]>";

class ThrowingErrorHandler : public xercesc::ErrorHandler {
 public:
  void warning(const xercesc::SAXParseException&) override {}
  void error(const xercesc::SAXParseException& problem) override {
    throw xercesc::SAXParseException(problem);
  }
  void fatalError(const xercesc::SAXParseException& problem) override { error(problem); }
  void resetErrors() override {}
};

/// `Base` is one of the library's parser classes.
template <class Base>
class GuardedParser : public Base {
 public:
  GuardedParser(const XmlLimits& limits, const XMLCh* scanner) : m_limits(limits) {
    this->useScanner(scanner);
    this->setValidationScheme(Base::Val_Never);
    this->setDoNamespaces(false);
    this->setLoadExternalDTD(false);
    this->setDisableDefaultEntityResolution(true);
    this->setErrorHandler(&m_errors);
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
    Base::startElement(declaration, uri, prefix, attributes, attributeCount, isEmpty, isRoot);
  }
  void endElement(const xercesc::XMLElementDecl& declaration, unsigned int uri, bool isRoot,
                  const XMLCh* prefix) override {
    --m_depth;
    Base::endElement(declaration, uri, isRoot, prefix);
  }

 private:
  XmlLimits m_limits;
  bool m_hasDoctypeLine = false;
  int m_depth = 0;
  std::size_t m_elements = 0;
  ThrowingErrorHandler m_errors;
};

/// Parses `bytes` with what `makeParser(scanner)` makes, and gives that parser; null with the cause.
template <class MakeParser>
auto ParseGuarded(std::span<const char> bytes, const char* encoding, const XmlLimits& limits,
                  XmlProblem& cause, MakeParser makeParser)
    -> decltype(makeParser(static_cast<const XMLCh*>(nullptr))) {
  if (bytes.empty()) {
    cause = {"the document is empty"};
    return nullptr;
  }
  if (bytes.size() > limits.bytes) {
    cause = {"the document is larger than " + std::to_string(limits.bytes >> 20) + " MiB"};
    return nullptr;
  }
  XpXmlInitialize();
  try {
    xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(bytes.data()), bytes.size(), "memory");
    if (encoding != nullptr) source.setEncoding(textcodec::ToUtf16(encoding).c_str());
    auto parser = makeParser(xercesc::XMLUni::fgIGXMLScanner);
    try {
      parser->parse(source);
    } catch (const DoctypeLine&) {
      // After a document type the usual scanner accepts unknown entities, as if an external file declared
      // them. This one ignores document types and refuses every entity but XML's own five.
      parser = makeParser(xercesc::XMLUni::fgWFXMLScanner);
      parser->parse(source);
    }
    return parser;
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
  if (encoding == nullptr) {
    if (const XmlProblem foreign = FindForeignByte(bytes); !foreign.message.empty()) cause = foreign;
  }
  return nullptr;
}

}  // namespace vrx::xml
