#include "src/check/Checks.h"

#include "src/check/KeyCheck.h"
#include "src/project/ProjectKeys.h"

namespace vrx::check {
namespace {

using namespace vrx::project;

class DocumentChecker {
 public:
  DocumentChecker(const XpString& file, std::vector<Problem>& problems)
      : m_file(file), m_problems(problems) {}

  void Run(const XpIniDict& document) {
    const XpIniElement* wrapper = Require(document, kRoot, Severity::Error);
    if (wrapper == nullptr) return;
    CheckKeys(*wrapper, kWrapperKeys);
    CheckTrack(*wrapper, kVideoTrack);
    CheckTrack(*wrapper, kAudioTrack);
    const XpIniElement* output = Require(*wrapper, kOutputSettings, Severity::Error);
    if (output == nullptr) return;
    CheckKeys(*output, kOutputKeys);
    if (const XpIniElement* video = Require(*output, kVideoOutputSettings, Severity::Error)) {
      CheckKeys(*video, kVideoKeys);
    }
    if (const XpIniElement* audio = Require(*output, kAudioOutputSettings, Severity::Note,
                                            u"is missing: the movie will have no sound")) {
      CheckKeys(*audio, kAudioKeys);
    }
  }

 private:
  void Report(Severity severity, const XpString& key, const XpString& message) {
    m_problems.push_back({severity, m_file, m_track, m_clip, key, message});
  }

  /// The element under `key`, or null after reporting that it is not there: `absent` says what that means.
  const XpIniElement* Require(const XpIniElement& dict, const Key& key, Severity severity,
                              const char16_t* absent = u"is missing") {
    const XpIniElement* element = Find(&dict, key);
    if (element != nullptr) return element;
    const bool wrongType = dict.Get(key.name) != nullptr;
    Report(severity, key.name, wrongType ? u"is not a dict, so it counts as missing" : absent);
    return nullptr;
  }

  void CheckTrack(const XpIniElement& wrapper, const Key& key) {
    const XpIniElement* track = Find(&wrapper, key);
    if (track == nullptr) return;
    m_track = key.name;
    for (std::uint32_t i = 0; i < track->GetCount(); ++i) {
      m_clip = i + 1;
      const XpIniElement& clip = *track->GetAt(i);
      if (clip.GetType() == XpIniType::Dict) {
        CheckKeys(clip, kClipKeys);
      } else {
        Report(Severity::Warning, XpString(),
               u"is a " + TypeName(clip.GetType()) + u", not a dict: left out");
      }
    }
    m_track = XpString();
    m_clip = 0;
  }

  void CheckKeys(const XpIniElement& dict, std::span<const Key> known) {
    check::CheckKeys(dict, known, [this](Severity severity, const XpString& key, const XpString& message) {
      Report(severity, key, message);
    });
  }

  const XpString& m_file;
  std::vector<Problem>& m_problems;
  XpString m_track;
  std::uint32_t m_clip = 0;
};

}  // namespace

void CheckDocument(const XpIniDict& document, const XpString& file, std::vector<Problem>& problems) {
  DocumentChecker(file, problems).Run(document);
}

}  // namespace vrx::check
