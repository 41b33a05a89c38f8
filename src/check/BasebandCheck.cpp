#include "src/check/BasebandCheck.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "foundation/text/XpFormat.h"
#include "imaging/loader/StillImage.h"
#include "src/baseband/BasebandDocument.h"
#include "src/baseband/BasebandPicture.h"
#include "src/project/ProjectKeys.h"
#include "src/project/ProjectPath.h"
#include "vrx/VRXLimits.h"

namespace vrx::check {
namespace {

using baseband::BasebandImage;
using baseband::PictureProblem;

class BasebandChecker {
 public:
  BasebandChecker(const BasebandClip& clip, StillLook look, ProjectReport& report)
      : m_clip(clip), m_look(look), m_report(report) {}

  void Run() {
    baseband::BasebandDocument document;
    const XpResult result = ReadBasebandDocument(m_clip.document, document);
    for (const baseband::DocumentProblem& problem : document.problems) ReportProblem(problem);
    for (const BasebandImage& image : document.images) {
      CheckImage(image);
      CheckPicture(image);
    }
    // What an element that is misspelt leaves open is no mistake of its own.
    const auto isElement = [](const baseband::DocumentProblem& problem) {
      return problem.attribute.IsEmpty();
    };
    if (result == XpOk && std::ranges::none_of(document.problems, isElement)) CheckSpans(document);
  }

 private:
  void Report(std::uint64_t line, const XpString& key, const XpString& message) {
    m_report.problems.push_back(
        {Severity::Warning, m_clip.document, project::kVideoTrack.name, m_clip.clip, key, message, line});
  }

  void Report(Problem problem) {
    problem.track = project::kVideoTrack.name;
    problem.clip = m_clip.clip;
    m_report.problems.push_back(problem);
  }

  void ReportProblem(const baseband::DocumentProblem& problem) {
    XpString message;
    if (!problem.element.IsEmpty() && problem.attribute.IsEmpty()) message = problem.element + u" ";
    message.Append(problem.message);
    if (!problem.isFatal) return Report(problem.line, problem.attribute, message);
    message.Append(message.AsView().ends_with(u'?') ? u" The" : u": the");
    message.Append(u" document is not used, and the clip is black");
    Report({.severity = Severity::Error,
            .file = m_clip.document,
            .key = problem.attribute,
            .message = message,
            .line = problem.line,
            .isMissingPicture = true});
  }

  void CheckImage(const BasebandImage& image) {
    XpString message;
    if (image.job.rotation < baseband::RotateNone || image.job.rotation > baseband::RotateQuarterCcw) {
      XpFormat(message, u"%d is none of 0 to 3: the picture is not turned", image.job.rotation);
      Report(image.line, u"Rotation", message);
    }
    if (image.mirror != 0 && image.mirror != 1) {
      XpFormat(message, u"%I64d is neither 0 nor 1: the picture is not mirrored", image.mirror);
      Report(image.line, u"Mirror", message);
    }
    if (!m_ids.insert(image.job.imageId).second) {
      XpFormat(message, u"%I64d is used before: next to each other, both would show the first picture",
               image.job.imageId);
      Report(image.line, u"ImageId", message);
    }
  }

  void CheckPicture(const BasebandImage& image) {
    StillImageRow row{.clip = m_clip.clip,
                      .line = image.line,
                      .imageId = image.job.imageId,
                      .picture = project::ResolvePath(m_clip.document, image.job.imagePath),
                      .inFrame = image.span.inFrame,
                      .outFrame = image.span.outFrame,
                      .rotation = image.job.rotation,
                      .mirror = image.job.mirror};
    const auto [found, isNew] = m_sizes.try_emplace(row.picture, 0, 0);
    auto& [width, height] = found->second;
    if (isNew) LookInto(image, row.picture, width, height);
    row.width = width;
    row.height = height;
    m_report.stillImages.push_back(row);
  }

  /// The size is 0 when the picture cannot be read.
  void LookInto(const BasebandImage& image, const XpString& path, std::int32_t& width, std::int32_t& height) {
    PictureProblem problem{.document = m_clip.document, .line = image.line, .picture = path};
    if (imaging::ReadStillImageSize(path, {}, width, height, &problem.cause) != XpOk) {
      width = height = 0;
    } else if (m_look == StillLook::Size || !m_report.videoSettings) {
      return;
    } else {
      baseband::DecodeJob job = image.job;
      job.imagePath = path;
      const VRXVideoOutputSetting& video = *m_report.videoSettings;
      const bool isUsable = limits::IsUsableSide(video.width) && limits::IsUsableSide(video.height);
      if (!isUsable) return;
      problem.isPartial =
          baseband::DecodePicture(job, video.width, video.height, baseband::PictureReader::OfFiles(),
                                  problem.cause) != nullptr;
    }
    if (!problem.cause.IsEmpty()) Report(PictureProblemOf(problem));
  }

  void CheckSpans(const baseband::BasebandDocument& document) {
    m_next = m_clip.firstFrame;
    // One that is out of place leaves its own frames without an image.
    m_isBroken = HasMisplaced(document.images);
    for (const BasebandImage& image : document.images) CheckSpan(image);
    if (m_clip.frames <= 0 || m_isBroken) return;
    const std::int64_t end = m_clip.firstFrame + m_clip.frames;
    const std::uint64_t line = document.images.empty() ? 0 : document.images.back().line;
    XpString message;
    if (m_next < end) {
      XpFormat(message,
               u"the images end with frame %I64d, the clip with frame %I64d: the frames between are black",
               m_next - 1, end - 1);
      Report(line, XpString(), message);
    } else if (m_next > end) {
      XpFormat(message, u"the images go on to frame %I64d, the clip ends with frame %I64d", m_next - 1,
               end - 1);
      Report(line, XpString(), message);
    }
  }

  static bool HasMisplaced(const std::vector<BasebandImage>& images) {
    std::int64_t last = 0;
    return std::ranges::any_of(images, [&](const BasebandImage& image) {
      const std::int64_t before = std::exchange(last, image.span.inFrame);
      return image.span.inFrame < before || image.span.outFrame < image.span.inFrame;
    });
  }

  /// Frames are asked for in rising order, and a frame on no span ends the clip's pictures.
  void CheckSpan(const BasebandImage& image) {
    const std::int64_t in = image.span.inFrame;
    const std::int64_t out = image.span.outFrame;
    XpString message;
    if (in < 0 || out < 0) return Report(image.line, u"InFrame", u"frames below 0 are never shown");
    if (out < in) return Report(image.line, u"OutFrame", u"lies before InFrame: the image is never shown");
    if (m_hasSpan && in < m_lastIn) {
      Report(image.line, u"InFrame",
             u"lies before that of the previous image: images must be listed in order");
    } else if (out < m_next) {
      Report(image.line, u"OutFrame", u"lies before the end of the previous image: this one is never shown");
    } else if (m_hasSpan && in < m_next) {
      XpFormat(message, u"frames %I64d to %I64d already have an image, and that one is shown", in,
               std::min(out, m_next - 1));
      Report(image.line, u"InFrame", message);
    } else if (in > m_next && m_next < m_clip.firstFrame + m_clip.frames && !m_isBroken) {
      XpFormat(message, u"frames %I64d to %I64d have no image: the clip is black from there to its end",
               m_next, in - 1);
      Report(image.line, u"InFrame", message);
      m_isBroken = true;
    }
    m_hasSpan = true;
    m_lastIn = in;
    m_next = std::max(m_next, out + 1);
  }

  const BasebandClip& m_clip;
  StillLook m_look;
  ProjectReport& m_report;
  std::set<std::int64_t> m_ids;
  std::map<XpString, std::pair<std::int32_t, std::int32_t>> m_sizes;  // of the pictures looked into
  std::int64_t m_next = 0;                                            // the first frame without an image
  std::int64_t m_lastIn = 0;
  bool m_hasSpan = false;
  bool m_isBroken = false;  // where the pictures end says nothing of its own
};

}  // namespace

void CheckBasebandClip(const BasebandClip& clip, StillLook look, ProjectReport& report) {
  BasebandChecker(clip, look, report).Run();
}

Problem PictureProblemOf(const baseband::PictureProblem& problem) {
  const char16_t* effect = problem.isPartial ? u" is shown only in part: " : u" is left out: ";
  return {.severity = problem.isPartial ? Severity::Warning : Severity::Error,
          .file = problem.document,
          .key = u"ImagePath",
          .message = problem.picture.IsEmpty() ? problem.cause : problem.picture + effect + problem.cause,
          .line = problem.line,
          .isMissingPicture = !problem.isPartial};
}

}  // namespace vrx::check
