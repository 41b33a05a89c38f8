#include "src/check/Checks.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "foundation/text/XpFormat.h"
#include "src/check/KeyCheck.h"
#include "src/project/ProjectKeys.h"

namespace vrx::check {
namespace {

using namespace vrx::project;

/// A number that chooses one of several things, from 0 to `last`. Others count as 0.
struct Choice {
  Key key;
  std::int64_t last;
};

constexpr Choice kChoices[] = {
    {kSourceType, VRXSourceBaseband}, {kVideoCodecType, 1}, {kAvcEncoderMode, 2}, {kAudioCodecType, 3}};

class DocumentChecker {
 public:
  DocumentChecker(const XpString& file, std::vector<Problem>& problems)
      : m_file(file), m_problems(problems) {}

  void Run(const XpIniDict& document) {
    CheckKeys(document, std::array{kRoot});
    const XpIniElement* wrapper = Require(document, kRoot);
    if (wrapper == nullptr) return;
    CheckKeys(*wrapper, kWrapperKeys);
    CheckTrack(*wrapper, kVideoTrack);
    CheckTrack(*wrapper, kAudioTrack);
    const XpIniElement* output = Require(*wrapper, kOutputSettings);
    if (output == nullptr) return;
    CheckKeys(*output, kOutputKeys);
    if (const XpIniElement* video = Require(*output, kVideoOutputSettings)) CheckKeys(*video, kVideoKeys);
    if (const XpIniElement* audio = Find(output, kAudioOutputSettings)) {
      CheckKeys(*audio, kAudioKeys);
    } else {
      ReportNoSound(Find(wrapper, kAudioTrack));
    }
  }

 private:
  void Report(Severity severity, const XpString& key, const XpString& message, std::uint64_t line = 0) {
    m_problems.push_back({.severity = severity,
                          .file = m_file,
                          .track = m_track,
                          .clip = m_clip,
                          .key = key,
                          .message = message,
                          .line = line});
  }

  /// The element under `key`, or null after reporting that it is not there.
  const XpIniElement* Require(const XpIniElement& dict, const Key& key) {
    const XpIniElement* element = Find(&dict, key);
    if (element == nullptr) Report(Severity::Error, key.name, u"is missing");
    return element;
  }

  void ReportNoSound(const XpIniElement* audioTrack) {
    const bool hasClips = audioTrack != nullptr && audioTrack->GetCount() > 0;
    Report(hasClips ? Severity::Warning : Severity::Note, kAudioOutputSettings.name,
           hasClips ? u"is missing: the clips of AudioTrack are not heard"
                    : u"is missing: the movie will have no sound");
  }

  void CheckTrack(const XpIniElement& wrapper, const Key& key) {
    const XpIniElement* track = Find(&wrapper, key);
    if (track == nullptr) return;
    std::uint32_t clips = 0;
    for (std::uint32_t i = 0; i < track->GetCount(); ++i) {
      const XpIniElement& clip = *track->GetAt(i);
      if (clip.GetType() == XpIniType::Dict) {
        m_track = key.name;
        m_clip = ++clips;
        CheckKeys(clip, kClipKeys);
        m_track = XpString();
        m_clip = 0;
      } else {
        Report(Severity::Warning, key.name,
               u"holds " + TypeWithArticle(clip.GetType()) + u", not a dict: left out",
               clip.GetLines().element);
      }
    }
  }

  void CheckKeys(const XpIniElement& dict, std::span<const Key> known) {
    check::CheckKeys(dict, known, ProjectParts(), [this](const KeyProblem& problem) {
      Report(problem.severity, problem.key, problem.message, problem.line);
      m_problems.back().meant = problem.meant;
    });
    CheckChoices(dict, known);
  }

  void CheckChoices(const XpIniElement& dict, std::span<const Key> known) {
    for (const Choice& choice : kChoices) {
      const auto isIt = [&](const Key& key) { return std::u16string_view(key.name) == choice.key.name; };
      if (std::ranges::none_of(known, isIt)) continue;
      const XpIniElement* element = Find(&dict, choice.key);
      std::int64_t number = 0;
      if (element != nullptr) element->GetInt64(number);
      if (number >= 0 && number <= choice.last) continue;
      XpString message;
      XpFormat(message, u"is %I64d, not one of 0 to %I64d: it counts as 0", number, choice.last);
      Report(Severity::Warning, choice.key.name, message, element->GetLines().element);
    }
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
