// Reads a project document into plain records: the clips of both tracks and the output settings. The render
// driver turns them into the timeline.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "content/plist/PlistReader.h"
#include "content/plist/XpIniDict.h"
#include "foundation/memory/XpSharedPtr.h"
#include "vrx/VRXOutputSetting.h"

/// One clip of a track as the document gives it.
struct TKLXOutputXmlInfo {
  XpString sourceFile;
  std::int32_t sourceType = VRXSourceFile;
  double startTime = -1.0;    // ms on the source's clock
  double endTime = -1.0;      // ms on the source's clock
  double inPosition = -1.0;   // kept for compatibility; not used
  double outPosition = -1.0;  // kept for compatibility; not used
  bool enableOverlay = true;
};

class TKLXOutputXml {
 public:
  using Track = std::vector<XpSharedPtr<TKLXOutputXmlInfo>>;

  /// XpErrFileNotFound when the file, or `VRXWrapper` or `OutputSettings` in it, is missing; the document
  /// layer's code when it cannot be read; XpErrNoObject without audio settings, which is no reason to stop.
  /// What could be read is kept in every case. `findings` (may be null) gets the reader's words.
  XpResult LoadXmlFile(const XpString& path, vrx::plist::Findings* findings = nullptr);
  /// The same for a document in memory.
  XpResult LoadXmlBytes(std::span<const char> bytes, vrx::plist::Findings* findings = nullptr);

  XpString GetOutputFilePath() const { return outputFilePath; }
  XpString GetPainterEffect() const { return painterEffect; }

  std::unique_ptr<XpIniDict> document = std::make_unique<XpIniDict>();
  XpString outputFilePath;
  XpString painterEffect;
  Track videoTracks;
  Track audioTracks;
  std::unique_ptr<VRXVideoOutputSetting> videoSettings;  // null until read
  std::unique_ptr<VRXAudioOutputSetting> audioSettings;  // null until read

 private:
  XpResult ReadDocument();
  XpResult ReadVideoSettings(const XpIniElement& output);
  XpResult ReadAudioSettings(const XpIniElement& output);
};
