#include "foundation/xml/XpXmlParser.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <mutex>
#include <optional>
#include <span>
#include <string_view>
#include <thread>

#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufFormatTarget.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "foundation/file/XpReplaceFile.h"

namespace {

using xercesc::XMLPlatformUtils;

static_assert(sizeof(XMLCh) == sizeof(char16_t));

/// Made on first use, so that static initialisers of other files can parse, too.
struct Runtime {
  std::mutex mutex;
  std::optional<std::thread::id> starter;  // set while the XML library is up
};

Runtime& TheRuntime() {
  static auto* runtime = new Runtime;  // outlives every exit handler
  return *runtime;
}

/// Runs when the library is loaded; the exit handler runs when it is unloaded or the process ends.
[[maybe_unused]] const bool g_started = [] {
  XpXmlInitialize();
  return std::atexit(&XpXmlTerminate) == 0;
}();

bool IsBlank(char16_t c) { return c == u' ' || (c >= u'\t' && c <= u'\r'); }
bool IsDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

/// As atoi, but clamped to the range.
std::int32_t ToInt(std::u16string_view text) {
  constexpr std::int64_t kBase = 10;
  using Limits = std::numeric_limits<std::int32_t>;
  std::size_t at = 0;
  while (at < text.size() && IsBlank(text[at])) ++at;
  const bool isNegative = at < text.size() && text[at] == u'-';
  if (at < text.size() && (text[at] == u'-' || text[at] == u'+')) ++at;
  const std::int64_t limit = isNegative ? -std::int64_t{Limits::min()} : std::int64_t{Limits::max()};
  std::int64_t number = 0;
  for (; at < text.size() && IsDigit(text[at]); ++at) {
    number = std::min(number * kBase + (text[at] - u'0'), limit);
  }
  return static_cast<std::int32_t>(isNegative ? -number : number);
}

template <class Object>
void ReleaseObject(Object*& object) {
  if (object != nullptr) object->release();
  object = nullptr;
}

}  // namespace

void XpXmlInitialize() {
  Runtime& runtime = TheRuntime();
  const std::scoped_lock lock(runtime.mutex);
  if (runtime.starter) return;
  XMLPlatformUtils::Initialize(xercesc::XMLUni::fgXercescDefaultLocale);
  runtime.starter = std::this_thread::get_id();
}

void XpXmlTerminate() {
  Runtime& runtime = TheRuntime();
  const std::scoped_lock lock(runtime.mutex);
  if (runtime.starter != std::this_thread::get_id()) return;
  XMLPlatformUtils::Terminate();
  runtime.starter.reset();
}

bool ReadAttributeInt(const xercesc::DOMElement& element, const char16_t* name, std::int64_t& value) {
  if (!element.hasAttribute(name)) return false;
  value = ToInt(element.getAttribute(name));
  return true;
}

bool ReadAttributeString(const xercesc::DOMElement& element, const char16_t* name, XpString& value) {
  if (!element.hasAttribute(name)) return false;
  value = XpString(element.getAttribute(name));
  return true;
}

XpXmlParser::~XpXmlParser() {
  ReleaseObject(input);
  ReleaseObject(output);
  ReleaseObject(lsParser);
  ReleaseObject(serializer);
  delete target;
}

XpResult XpXmlParser::Parse() { return XpErrFailed; }

XpResult XpXmlParser::ParseFile(XpString) { return XpErrFailed; }

bool XpXmlParser::EnsureDom() {
  if (domReady) return true;
  XpXmlInitialize();
  constexpr char16_t kLoadAndSave[] = u"LS";
  if (auto* implementation = xercesc::DOMImplementationRegistry::getDOMImplementation(kLoadAndSave)) {
    lsParser = implementation->createLSParser(xercesc::DOMImplementationLS::MODE_SYNCHRONOUS, nullptr,
                                              XMLPlatformUtils::fgMemoryManager);
    input = implementation->createLSInput(XMLPlatformUtils::fgMemoryManager);
  }
  domReady = true;
  return true;
}

void XpXmlParser::ReleaseDom() {
  ReleaseObject(input);
  ReleaseObject(lsParser);
  domReady = false;
}

XpResult XpXmlParser::Save(XpString file) {
  if (document == nullptr) return XpErrFailed;
  try {
    auto* implementation = document->getImplementation();
    if (serializer == nullptr) serializer = implementation->createLSSerializer();
    if (output == nullptr) output = implementation->createLSOutput();
    if (target == nullptr) target = new xercesc::MemBufFormatTarget;
    target->reset();
    output->setByteStream(target);
    if (!serializer->write(document, output)) return XpErrFailed;
  } catch (const xercesc::OutOfMemoryException&) {
    return XpErrFailed;
  } catch (const xercesc::XMLException&) {
    return XpErrFailed;
  } catch (const xercesc::DOMException&) {
    return XpErrFailed;
  }
  const XMLSize_t size = target->getLen();
  if (size == 0) return XpErrFailed;
  const XpResult result = XpReplaceFile(file, std::as_bytes(std::span(target->getRawBuffer(), size)));
  return result == XpOk ? XpOk : XpErrFailed;
}
