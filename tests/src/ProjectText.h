// Project documents for tests, written piece by piece.
#pragma once

#include <string>

/// One entry of a track; times in ms as the document writes them.
inline std::string ClipText(const std::string& source, const std::string& start, const std::string& end,
                            const std::string& more = "") {
  return "<dict><key>SourceFile</key><string>" + source + "</string><key>StartTime</key><real>" + start +
         "</real><key>EndTime</key><real>" + end + "</real>" + more + "</dict>";
}

struct ProjectText {
  std::string videoTrack;
  std::string audioTrack;
  std::string output = "out.mp4";
  std::string video =
      "<key>Width</key><integer>640</integer><key>Height</key><integer>360</integer>"
      "<key>TimeValue</key><integer>1001</integer><key>TimeScale</key><integer>30000</integer>"
      "<key>AverageBitrate</key><integer>2000000</integer>"
      "<key>VideoSpecificationType</key><integer>1</integer>";
  std::string audio;  // without it the document has no AudioOutputSettings
  std::string moreOutput;

  std::string Text() const {
    std::string text =
        "<?xml version=\"1.0\" encoding=\"utf-8\"?><plist version=\"1.0\"><dict><key>VRXWrapper</key><dict>"
        "<key>VideoTrack</key><array>" +
        videoTrack +
        "</array>"
        "<key>AudioTrack</key><array>" +
        audioTrack +
        "</array>"
        "<key>OutputSettings</key><dict><key>OutputFilePath</key><string>" +
        output + "</string>" + moreOutput;
    if (!video.empty()) text += "<key>VideoOutputSettings</key><dict>" + video + "</dict>";
    if (!audio.empty()) text += "<key>AudioOutputSettings</key><dict>" + audio + "</dict>";
    return text + "</dict></dict></dict></plist>";
  }
};
