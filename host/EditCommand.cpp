#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "host/Commands.h"
#include "host/Console.h"
#include "host/LocalDate.h"
#include "host/PictureFile.h"
#include "imaging/codecs/XpImageIo.h"
#include "imaging/tags/TagNames.h"

namespace vrx::host {
namespace {

constexpr std::uint32_t kMostRating = 5;

struct EditOptions {
  std::vector<std::string> files;
  std::optional<std::uint32_t> quarterTurns;  // counter-clockwise
  std::optional<std::uint32_t> rating;
  std::string date;          // local, as 2024-05-01T10:11:12; empty: the edits make it now
  std::string originalDate;  // likewise; empty: stays
  bool stripGps = false;

  bool IsEmpty() const {
    return !quarterTurns && !rating && date.empty() && originalDate.empty() && !stripGps;
  }
};

/// Edits in the order in which they are carried out: the date of the last change comes last, since each of
/// the others makes it now.
class Edits {
 public:
  Edits(const EditOptions& options, const XpString& path, XpImageIo& codec)
      : m_options(options), m_path(path), m_codec(codec) {}

  /// The cause of the first failure; empty when all is done.
  std::string Run() {
    if (!CheckOriginalDate()) return "it has no date of when it was taken, which could be changed";
    const EditOptions& o = m_options;
    XpDateTime date;
    if (o.rating && !Did("rated", m_codec.SetRating(m_path, *o.rating))) return RatingCause();
    if (o.quarterTurns && !Did("turned", m_codec.SetRotation(m_path, *o.quarterTurns)))
      return Cause("no orientation");
    if (o.stripGps && !Did("position removed", m_codec.StripGps(m_path))) return Cause("no tags");
    if (ReadLocalDate(o.originalDate, date) &&
        !Did("date taken set", m_codec.SetOriginalDate(m_path, date))) {
      return Cause("no tags");
    }
    if (ReadLocalDate(o.date, date) && !Did("date set", m_codec.SetModifyDate(m_path, date, true))) {
      return Cause("no date of a change");
    }
    return {};
  }

  const std::string& Done() const { return m_done; }

 private:
  bool CheckOriginalDate() {
    if (m_options.originalDate.empty()) return true;
    const XpSharedPtr<XpTiffTagManager> tags = m_codec.LoadTags(m_path);
    const XpTiffTagIFD* exif = tags.Get() == nullptr ? nullptr : tags->GetExifIfd();
    return exif != nullptr && exif->HasTag(imaging::kTagDateTimeOriginal, false);
  }

  bool Did(const char* what, XpResult result) {
    if (result != XpOk) return false;
    m_done += (m_done.empty() ? "" : ", ") + std::string(what);
    return true;
  }

  std::string Cause(const char* missing) const {
    if (m_codec.status != XpErrImageNoData) return PictureCause(m_codec.status) + After();
    return "it has " + std::string(missing) + ", which could be changed (" + CodeText(m_codec.status) + ")" +
           After();
  }

  std::string RatingCause() const {
    if (m_codec.status == XpErrImageNoData) {
      return "it has no maker note of the kind that holds a rating (" + CodeText(m_codec.status) + ")";
    }
    if (m_codec.status == XpErrImageNotProvided) {
      return "data follow the picture that a new rating would lose (" + CodeText(m_codec.status) + ")";
    }
    return PictureCause(m_codec.status);
  }

  /// What was done before a failure stays done.
  std::string After() const { return m_done.empty() ? "" : "; done before: " + m_done; }

  const EditOptions& m_options;
  const XpString& m_path;
  XpImageIo& m_codec;
  std::string m_done;
};

/// Empty when the text is a date and time.
std::string CheckDate(const std::string& text) {
  XpDateTime date;
  return ReadLocalDate(text, date) ? "" : text + " is no date and time such as 2024-05-01T10:11:12";
}

int RunEdit(const EditOptions& options) {
  if (options.IsEmpty()) {
    Say("nothing to edit is named: give --rotate, --date, --original-date, --rating or --strip-gps");
    return kWrongUse;
  }
  return ForEachPicture(options.files, [&](const std::string& file) -> std::string {
    std::unique_ptr<XpImageIo> codec;
    XpString path;
    {
      const PictureFile picture(file);
      if (!picture.Cause().empty()) return picture.Cause();
      if (!picture.Format().hasTags) {
        return std::string("tags of ") + picture.Format().name + " files are not edited";
      }
      path = picture.Path();
      codec = picture.Format().makeCodec();
    }
    Edits edits(options, path, *codec);
    const std::string cause = edits.Run();
    if (cause.empty()) std::printf("%s: %s\n", Masked(file).c_str(), edits.Done().c_str());
    return cause;
  });
}

}  // namespace

CommandRun AddEdit(CLI::App& command) {
  const auto options = std::make_shared<EditOptions>();
  command.add_option("FILE", options->files, "The pictures to change: JPEG, MPO, RAW or TIFF")->required();
  command
      .add_option("--rotate", options->quarterTurns, "Quarter turns, counter-clockwise; the tag is changed")
      ->check(CLI::Range(1, 3))
      ->option_text("N");
  command
      .add_option("--date", options->date,
                  "When the picture was last changed, local time as 2024-05-01T10:11:12; the file's time too")
      ->check(CheckDate)
      ->option_text("DATE");
  command.add_option("--original-date", options->originalDate, "When the picture was taken, likewise")
      ->check(CheckDate)
      ->option_text("DATE");
  command.add_option("--rating", options->rating, "Stars, where the maker note has a place for them")
      ->check(CLI::Range(std::uint32_t{0}, kMostRating))
      ->option_text("N");
  command.add_flag("--strip-gps", options->stripGps, "Cut the position out of the tags");
  command.footer(
      "Without --date, an edit makes now the date of the last change.\n"
      "Exit status: 0 done, 1 a file cannot be changed, 2 wrong use.");
  return [options] { return RunEdit(*options); };
}

}  // namespace vrx::host
