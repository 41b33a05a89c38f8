#include "foundation/xml/XmlEvents.h"

#include <xercesc/parsers/SAXParser.hpp>
#include <xercesc/sax/AttributeList.hpp>
#include <xercesc/sax/HandlerBase.hpp>

#include "foundation/xml/GuardedParser.h"

namespace vrx::xml {
namespace {

/// Hands over what the parser finds.
class EventSource final : public xercesc::HandlerBase {
 public:
  explicit EventSource(XmlEvents& events) : m_events(events) {}

  void startElement(const XMLCh* name, xercesc::AttributeList& attributes) override {
    m_attributes.clear();
    for (XMLSize_t i = 0; i < attributes.getLength(); ++i) {
      m_attributes.push_back({attributes.getName(i), attributes.getValue(i)});
    }
    m_events.Start(name, m_attributes);
  }
  void characters(const XMLCh* text, XMLSize_t length) override { m_events.Text({text, length}); }
  void endElement(const XMLCh*) override { m_events.End(); }

 private:
  XmlEvents& m_events;
  std::vector<XmlAttribute> m_attributes;
};

class EventParser final : public GuardedParser<xercesc::SAXParser> {
 public:
  EventParser(const XmlLimits& limits, XmlEvents& events, const XMLCh* scanner)
      : GuardedParser(limits, scanner), m_source(events) {
    setDocumentHandler(&m_source);
    setDTDHandler(&m_source);  // without one the parser does not report document types
  }

  void startElement(const xercesc::XMLElementDecl& declaration, unsigned int uri, const XMLCh* prefix,
                    const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes, XMLSize_t attributeCount,
                    bool isEmpty, bool isRoot) override {
    // The base would close an empty element without endElement, which counts the depth.
    GuardedParser::startElement(declaration, uri, prefix, attributes, attributeCount, false, isRoot);
    if (isEmpty) endElement(declaration, uri, isRoot, prefix);
  }

 private:
  EventSource m_source;
};

}  // namespace

std::u16string_view LocalName(std::u16string_view name) {
  return name.substr(name.find(u':') + 1);  // npos + 1 is 0
}

bool ReadXmlEvents(std::span<const char> bytes, const XmlLimits& limits, XmlEvents& events,
                   XmlProblem& problem) {
  return ParseGuarded(bytes, nullptr, limits, problem, [&](const XMLCh* scanner) {
           return std::make_unique<EventParser>(limits, events, scanner);
         }) != nullptr;
}

}  // namespace vrx::xml
