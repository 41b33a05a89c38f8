#include "host/make/CaptionText.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <string_view>

namespace vrx::host {
namespace {

constexpr std::string_view kFirstTags =
    "<FontName>DejaVu Sans</FontName><FontSize>60</FontSize><FontColor>16777215</FontColor>"
    "<Outline>4</Outline><OutlineColor>0</OutlineColor><Balance>1</Balance>"
    "<VideoID>1</VideoID>";
constexpr int kMargin = 40;               // pixels of a picture of 1080
constexpr int kRaisedMargin = 200;        // the instruments take the lowest sixth
constexpr std::size_t kMostTogether = 4;  // cues; more would not fit into the picture

/// The number of a place in the document.
int LayoutOf(subtitles::Place place) {
  constexpr int kTopCentre = 2, kMiddle = 5, kBottomCentre = 8;
  switch (place) {
    case subtitles::Place::Top:
      return kTopCentre;
    case subtitles::Place::Middle:
      return kMiddle;
    case subtitles::Place::Bottom:
      break;
  }
  return kBottomCentre;
}

/// Tags are found by searching for them, so a text must not hold one of the two that end it.
std::string WithoutTags(std::string text) {
  constexpr std::string_view kAngle = "\u2039";  // looks alike
  for (const std::string_view tag : {"</Text>", "</Caption>", "<Caption>"}) {
    for (std::size_t at = 0; (at = text.find(tag, at)) != text.npos; at += kAngle.size())
      text.replace(at, 1, kAngle);
  }
  return text;
}

}  // namespace

std::vector<MovieCaption> ArrangeCaptions(const std::vector<subtitles::Cue>& cues, std::int64_t movieMs) {
  std::set<std::int64_t> moments;
  for (const subtitles::Cue& cue : cues) {
    moments.insert(std::min(cue.startMs, movieMs));
    moments.insert(std::min(cue.endMs, movieMs));
  }
  std::vector<MovieCaption> captions;
  std::vector<const subtitles::Cue*> shown;
  std::size_t next = 0;
  for (auto moment = moments.begin(); moment != moments.end(); ++moment) {
    const auto end = std::next(moment);
    if (end == moments.end()) break;
    std::erase_if(shown, [&](const subtitles::Cue* cue) { return cue->endMs <= *moment; });
    for (; next < cues.size() && cues[next].startMs <= *moment; ++next) {
      if (cues[next].endMs > *moment) shown.push_back(&cues[next]);
    }
    if (shown.empty()) continue;
    const subtitles::Cue& first = *shown.front();
    MovieCaption caption{*moment, *end, first.text, first.bold, first.italic, first.place};
    for (std::size_t i = 1; i < std::min(shown.size(), kMostTogether); ++i)
      caption.text += "\n" + shown[i]->text;
    const bool goesOn = !captions.empty() && captions.back().endMs == caption.startMs &&
                        captions.back().text == caption.text && captions.back().place == caption.place &&
                        captions.back().bold == caption.bold && captions.back().italic == caption.italic;
    if (goesOn) {
      captions.back().endMs = caption.endMs;
    } else {
      captions.push_back(std::move(caption));
    }
  }
  return captions;
}

std::string CaptionString(const std::vector<MovieCaption>& captions, double startMs,
                          bool isAboveInstruments) {
  std::string text;
  const auto time = [&](std::int64_t ms) {
    return std::to_string(std::llround(std::max(static_cast<double>(ms) - startMs, 0.0)));
  };
  for (const MovieCaption& caption : captions) {
    text += "<Caption><Text>" + WithoutTags(caption.text) + "</Text>";
    if (&caption == &captions.front()) text += kFirstTags;
    const bool isRaised = isAboveInstruments && caption.place == subtitles::Place::Bottom;
    text += "<Margin>" + std::to_string(isRaised ? kRaisedMargin : kMargin) + "</Margin>";
    text += "<LayoutType>" + std::to_string(LayoutOf(caption.place)) + "</LayoutType><LeftPos>" +
            time(caption.startMs) + "</LeftPos><RightPos>" + time(caption.endMs) + "</RightPos><Bold>" +
            (caption.bold ? "1" : "0") + "</Bold><Italic>" + (caption.italic ? "1" : "0") +
            "</Italic></Caption>\n";
  }
  return text;
}

}  // namespace vrx::host
