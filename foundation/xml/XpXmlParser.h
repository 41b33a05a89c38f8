// Base of documents that are read through a DOM, and the one set-up of the XML library for the process. The
// baseband document derives from it; XmlDocument shares the set-up.
#pragma once

#include <cstdint>

#include <xercesc/util/XercesDefs.hpp>

#include "vrx/XpResult.h"
#include "vrx/XpString.h"

XERCES_CPP_NAMESPACE_BEGIN
class DOMDocument;
class DOMElement;
class DOMLSInput;
class DOMLSOutput;
class DOMLSParser;
class DOMLSSerializer;
class MemBufFormatTarget;
XERCES_CPP_NAMESPACE_END

/// Brings the XML library up unless that is done already; runs once when the library is loaded. Any thread
/// may call it.
void XpXmlInitialize();
/// Takes the XML library down again. Does nothing on another thread than the one that brought it up, or when
/// it isn't up. Runs at the process's end.
void XpXmlTerminate();

/// False leaves `value` alone: the element lacks the attribute. A text that is no number reads as 0, what
/// follows a number is passed over, and a number beyond 32 bits stays at their limit.
bool ReadAttributeInt(const xercesc::DOMElement& element, const char16_t* name, std::int64_t& value);
bool ReadAttributeString(const xercesc::DOMElement& element, const char16_t* name, XpString& value);

/// No locks: a document belongs to one thread at a time.
class XpXmlParser {
 public:
  XpXmlParser() = default;
  XpXmlParser(const XpXmlParser&) = delete;
  XpXmlParser& operator=(const XpXmlParser&) = delete;
  virtual ~XpXmlParser();

  virtual void Open(const XpString& newPath) = 0;
  virtual void Close() = 0;
  /// Both return XpErrFailed unless a derived class overrides them.
  virtual XpResult Parse();
  virtual XpResult ParseFile(XpString file);
  /// Writes `document` in place of the file at `file`, as XpReplaceFile does. XpErrFailed without a document
  /// or when it can't be written.
  virtual XpResult Save(XpString file);

 protected:
  /// Creates the objects for reading a DOM, once; they stay null where the library offers none. Always true.
  bool EnsureDom();
  void ReleaseDom();

  XpString path;
  bool opened = false;
  bool domReady = false;
  xercesc::DOMElement* root = nullptr;       // not owned
  xercesc::DOMDocument* document = nullptr;  // not owned
  xercesc::DOMLSSerializer* serializer = nullptr;
  xercesc::DOMLSOutput* output = nullptr;
  xercesc::DOMLSInput* input = nullptr;
  xercesc::MemBufFormatTarget* target = nullptr;
  xercesc::DOMLSParser* lsParser = nullptr;
};
