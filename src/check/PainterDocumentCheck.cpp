#include "src/check/PainterDocumentCheck.h"

#include <array>

#include "overlay/document/PainterKeys.h"
#include "src/check/KeyCheck.h"

namespace vrx::check {
namespace {

using namespace overlay;

class PainterDocumentChecker {
 public:
  PainterDocumentChecker(const XpString& file, std::vector<Problem>& problems)
      : m_file(file), m_problems(problems) {}

  void Run(const XpIniDict& document) {
    Check(document, XpString(), std::array{kPainterInfo});
    const XpIniElement* info = Find(&document, kPainterInfo);
    if (info == nullptr) {
      return Report(XpString(), Severity::Warning, kPainterInfo.name,
                    u"is missing: the movie will have no overlays");
    }
    Check(*info, XpString(), kPainterInfoKeys);
    CheckPart(*info, kCaptionInfo, kCaptionKeys);
    CheckPart(*info, kGeneralInfo, kGeneralKeys);
    CheckPart(*info, kTemplateInfo, kTemplateKeys);
    CheckPart(*info, kTennisMetaInfo, kTennisKeys);
    CheckLogs(Find(Find(info, kTemplateInfo), kLogDataArray));
    CheckStrings(Find(Find(info, kGeneralInfo), kStringManager));
  }

 private:
  void Report(const XpString& part, Severity severity, const XpString& key, const XpString& message,
              std::uint64_t line = 0) {
    const XpString place = part.IsEmpty() ? key : key.IsEmpty() ? part : part + u"/" + key;
    m_problems.push_back(
        {.severity = severity, .file = m_file, .key = place, .message = message, .line = line});
  }

  void Check(const XpIniElement& dict, const XpString& part, std::span<const Key> known) {
    CheckKeys(dict, known, PainterParts(), [&](const KeyProblem& problem) {
      Report(part, problem.severity, problem.key, problem.message, problem.line);
      m_problems.back().meant = problem.meant;
    });
  }

  void CheckPart(const XpIniElement& info, const Key& key, std::span<const Key> known) {
    if (const XpIniElement* dict = Find(&info, key)) Check(*dict, key.name, known);
  }

  void CheckLogs(const XpIniElement* logs) {
    for (std::uint32_t i = 0; logs != nullptr && i < logs->GetCount(); ++i) {
      const XpIniElement& entry = *logs->GetAt(i);
      if (entry.GetType() == XpIniType::Dict) {
        Check(entry, kLogDataArray.name, kLogDataKeys);
      } else {
        Report(kLogDataArray.name, Severity::Warning, XpString(),
               u"holds " + TypeWithArticle(entry.GetType()) + u", not a dict: left out",
               entry.GetLines().element);
      }
    }
  }

  void CheckStrings(const XpIniElement* strings) {
    for (std::uint32_t i = 0; strings != nullptr && i < strings->GetCount(); ++i) {
      const XpIniElement& text = *strings->GetAt(i);
      if (text.GetType() == XpIniType::String) continue;
      Report(kStringManager.name, Severity::Warning, XpString(),
             u"holds " + TypeName(text.GetType()) + u", not a string: it counts as empty",
             text.GetLines().element);
    }
  }

  const XpString& m_file;
  std::vector<Problem>& m_problems;
};

bool HasLogs(const XpIniElement* templateInfo) {
  const XpIniElement* logs = Find(templateInfo, kLogDataArray);
  for (std::uint32_t i = 0; logs != nullptr && i < logs->GetCount(); ++i) {
    if (logs->GetAt(i)->GetType() == XpIniType::Dict) return true;
  }
  return false;
}

}  // namespace

void CheckPainterDocument(const XpIniDict& document, const XpString& file, std::vector<Problem>& problems) {
  PainterDocumentChecker(file, problems).Run(document);
}

XpString DecidingKey(const XpIniDict& document) {
  const XpIniElement* info = Find(&document, kPainterInfo);
  const auto path = [](const Key& part, const Key& key) { return XpString(part.name) + u"/" + key.name; };
  if (Find(info, kTennisMetaInfo) != nullptr) return path(kTennisMetaInfo, kTrimedShift);
  if (const XpIniElement* dict = Find(info, kTemplateInfo)) {
    return HasLogs(dict) ? path(kLogDataArray, kDuration) : path(kTemplateInfo, kDrawEndTime);
  }
  return path(kGeneralInfo, kVideoWidth);
}

}  // namespace vrx::check
