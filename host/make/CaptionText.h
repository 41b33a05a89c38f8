// Turns the captions of a subtitle file into the captions of a painter document.
#pragma once

#include <string>
#include <vector>

#include "content/subtitles/Subtitles.h"

namespace vrx::host {

/// Of a painter document: in the order of their times, none while another one is shown.
struct MovieCaption {
  std::int64_t startMs = 0;
  std::int64_t endMs = 0;
  std::string text;  // UTF-8
  bool bold = false;
  bool italic = false;
  subtitles::Place place = subtitles::Place::Bottom;
};

/// Painters show one caption at a time, so where `cues` overlap their lines are shown together, in the look
/// and at the place of the first. Captions after `movieMs` are left out, and one that goes on is cut.
std::vector<MovieCaption> ArrangeCaptions(const std::vector<subtitles::Cue>& cues, std::int64_t movieMs);

/// The text of the document's key CaptionString, in its tags. `startMs` is what the captions' own times begin
/// with. With `isAboveInstruments` the lower captions stay clear of those along the lower edge.
std::string CaptionString(const std::vector<MovieCaption>& captions, double startMs, bool isAboveInstruments);

}  // namespace vrx::host
