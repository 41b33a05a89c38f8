#include "src/baseband/VRXWBasebandDecImage.h"

#include <chrono>
#include <cstring>
#include <exception>
#include <new>
#include <utility>

#include "foundation/text/XpFormat.h"
#include "src/baseband/PictureProblems.h"
#include "src/project/ProjectPath.h"
#include "src/renderlog/RenderLog.h"

using vrx::baseband::BasebandDocument;
using vrx::renderlog::LogLine;

/// Holds the lock for a scope, in the form that a condition variable waits with.
class VRXWBasebandDecImage::Held {
 public:
  explicit Held(XpCriticalSection& section) : m_section(section) { lock(); }
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;
  ~Held() { unlock(); }
  void lock() { m_section.Lock(); }
  void unlock() { m_section.Unlock(); }

 private:
  XpCriticalSection& m_section;
};

VRXWBasebandDecImage::VRXWBasebandDecImage(VRXWBasebandHooks hooks) : m_hooks(std::move(hooks)) {}

VRXWBasebandDecImage::~VRXWBasebandDecImage() { VRXWBasebandDecImage::Close(); }

void VRXWBasebandDecImage::Open(const XpString& newPath) {
  if (!opened) Close();
  opened = true;
  path = newPath;
}

void VRXWBasebandDecImage::Close() {
  {
    const Held held(lock);
    running = false;
  }
  m_stopsReading = true;
  m_changed.notify_all();
  XpThreadJoin(std::exchange(decoder, nullptr));
  LogCounts();
  const Held held(lock);
  path = XpString();
  jobs.clear();
  spans.clear();
  cache.clear();
  m_documents.clear();
  m_images = 0;
  m_hasWanted = false;
  m_counts = {};
  m_stopsReading = m_isCancelled;
  opened = false;
}

/// Explains in the log why a render of photographs took long.
void VRXWBasebandDecImage::LogCounts() const {
  if (m_counts.decoded == 0) return;
  constexpr double kMillisecondsPerSecond = 1000.0;
  XpString line;
  XpFormat(
      line, u"Still images: %u decoded, %u passed over, waited for %u of them %.0f ms, the first %.0f ms",
      m_counts.decoded, m_counts.skipped, m_counts.waits, m_counts.waitedSeconds * kMillisecondsPerSecond,
      m_counts.waitedForFirstSeconds * kMillisecondsPerSecond);
  LogLine(u"Close", line);
}

XpResult VRXWBasebandDecImage::Start(std::int32_t width, std::int32_t height, const XpString& file,
                                     std::uint32_t& index) {
  if (!opened) {
    Open(file);
    targetWidth = width;
    targetHeight = height;
  }
  path = file;
  {
    const Held held(lock);
    index = static_cast<std::uint32_t>(m_documents.size());
    m_documents.push_back(file);
  }
  BasebandDocument source;
  if (const XpResult result = ReadBasebandDocument(file, source); result != XpOk) {
    LogLine(u"Start", file + u": " + source.Cause());
    return result;
  }
  AddImages(source, file, index);
  if (EnsureDecoder()) return XpOk;
  LogLine(u"Start", file + u": no thread could be started to decode its pictures");
  DropDocument(index);
  return XpErrThread;
}

void VRXWBasebandDecImage::AddImages(const BasebandDocument& source, const XpString& file,
                                     std::uint32_t index) {
  const Held held(lock);
  for (const vrx::baseband::BasebandImage& image : source.images) {
    const Place place{index, m_images++, image.line};
    jobs.push_back({place, image.job});
    jobs.back().job.imagePath = vrx::project::ResolvePath(file, image.job.imagePath);
    spans.push_back({place, image.span});
  }
}

void VRXWBasebandDecImage::DropDocument(std::uint32_t index) {
  const Held held(lock);
  const auto isOfDocument = [index](const auto& entry) { return entry.place.document == index; };
  std::erase_if(jobs, isOfDocument);
  std::erase_if(spans, isOfDocument);
}

/// A decoder that ran out of jobs has ended; a new one is started.
bool VRXWBasebandDecImage::EnsureDecoder() {
  {
    const Held held(lock);
    if (running) {
      m_changed.notify_all();
      return true;
    }
    running = true;
  }
  XpThreadJoin(decoder);
  decoder = XpThreadCreate(&DecoderEntry, this, 0);
  if (decoder != nullptr) return true;
  const Held held(lock);
  running = false;
  return false;
}

std::uint32_t VRXWBasebandDecImage::DecoderEntry(void* object) {
  static_cast<VRXWBasebandDecImage*>(object)->DecodeAll();
  return XpOk;
}

void VRXWBasebandDecImage::DecodeAll() {
  try {
    QueuedJob job;
    while (TakeJob(job)) {
      XpSharedPtr<XpPixmapBase> pixmap = Decode(job);
      const Held held(lock);
      cache.push_back({job.place, job.job.imageId, pixmap});
      ++m_counts.decoded;
      m_changed.notify_all();
    }
  } catch (const std::bad_alloc&) {
    // There is no memory even to note a missing picture: the frames that are left have none.
    const Held held(lock);
    jobs.clear();
    running = false;
    m_changed.notify_all();
  }
}

/// Waits for room in the cache. False when the decoder must end.
bool VRXWBasebandDecImage::TakeJob(QueuedJob& job) {
  Held held(lock);
  m_changed.wait(held, [this] { return !running || cache.size() < kMostCached; });
  while (running && !jobs.empty() && IsPassed(jobs.front())) {
    jobs.pop_front();
    ++m_counts.skipped;
  }
  if (running && !jobs.empty()) {
    job = jobs.front();
    jobs.pop_front();
    return true;
  }
  running = false;
  m_changed.notify_all();
  return false;
}

/// GetFrame would drop the picture of such a job unseen, so it need not be decoded. A job with the image id
/// of the span that is shown is kept: its picture would be taken for that span.
bool VRXWBasebandDecImage::IsPassed(const QueuedJob& job) const {
  if (!m_hasWanted || job.place.number >= m_wanted.place.number) return false;
  return job.place.document != m_wanted.place.document || job.job.imageId != m_wanted.span.imageId;
}

XpSharedPtr<XpPixmapBase> VRXWBasebandDecImage::Decode(const QueuedJob& queued) {
  const vrx::baseband::DecodeJob& job = queued.job;
  XpSharedPtr<XpPixmapBase> pixmap;
  XpString problem;
  try {
    auto picture = vrx::baseband::DecodePicture(job, targetWidth, targetHeight, m_hooks.reader, problem,
                                                &m_stopsReading);
    if (picture) pixmap = XpSharedPtr<XpPixmapBase>(picture.release());
  } catch (const std::exception& error) {
    problem = XpNarrowString(error.what()).ToWide();
  }
  if ((pixmap && problem.IsEmpty()) || m_stopsReading) return pixmap;
  LogLine(u"Decode", job.imagePath + (pixmap ? u" is shown only in part: " : u" is left out: ") + problem);
  Report(queued.place, job.imagePath, problem, static_cast<bool>(pixmap));
  return pixmap;
}

void VRXWBasebandDecImage::Report(const Place& place, const XpString& picture, const XpString& cause,
                                  bool isPartial) {
  vrx::baseband::PictureProblem problem{
      .line = place.line, .picture = picture, .cause = cause, .isPartial = isPartial};
  {
    const Held held(lock);
    if (place.document < m_documents.size()) problem.document = m_documents[place.document];
  }
  ReportPicture(problem);
}

/// Drops the spans before the frame, also those of earlier documents.
VRXWBasebandDecImage::QueuedSpan* VRXWBasebandDecImage::FindSpan(std::uint32_t index, std::uint64_t frame) {
  while (!spans.empty() && spans.front().place.document <= index) {
    QueuedSpan& first = spans.front();
    if (first.place.document == index && first.span.Contains(frame)) return &first;
    spans.pop_front();
  }
  return nullptr;
}

/// True when the first entry of the cache is the span's picture; entries before it are dropped.
bool VRXWBasebandDecImage::WaitForImage(Held& held, QueuedSpan& span) {
  using Clock = std::chrono::steady_clock;
  std::uint32_t waits = 0;
  const Clock::time_point begin = Clock::now();
  const bool isFirst = m_counts.decoded == 0;
  bool hasWaited = false;
  const auto hasNews = [this] { return !cache.empty() || !running || m_isCancelled; };
  bool found = false;
  while (!found) {
    if (!cache.empty()) {
      const CachedImage& first = cache.front();
      found = first.place.document == span.place.document && first.imageId == span.span.imageId;
      if (found) break;
      cache.pop_front();
      m_changed.notify_all();
      continue;
    }
    if (!running || m_isCancelled) break;  // nothing more will come, or it is no longer wanted
    if (span.givenUp || waits >= m_hooks.mostWaits) break;
    hasWaited = true;
    const auto length = std::chrono::milliseconds(m_hooks.waitMilliseconds);
    if (!m_changed.wait_for(held, length, hasNews)) ++waits;
  }
  if (hasWaited) {
    const double seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    ++m_counts.waits;
    m_counts.waitedSeconds += seconds;
    if (isFirst) m_counts.waitedForFirstSeconds += seconds;
  }
  if (!found && waits >= m_hooks.mostWaits) span.givenUp = true;
  return found;
}

bool VRXWBasebandDecImage::GetFrame(std::uint32_t index, std::uint64_t frame, void* buffer,
                                    std::uint32_t size) {
  XpSharedPtr<XpPixmapBase> pixmap;
  bool isLate = false;
  Place late;
  {
    Held held(lock);
    QueuedSpan* span = FindSpan(index, frame);
    if (span == nullptr) return false;
    m_wanted = *span;
    m_hasWanted = true;
    if (WaitForImage(held, *span)) {
      pixmap = cache.front().pixmap;
    } else {
      isLate = span->givenUp && !m_wanted.givenUp;
      late = span->place;
    }
  }
  if (isLate) {
    XpString line;
    XpFormat(line, u"The still image of frame %I64u did not come in time", frame);
    LogLine(u"GetFrame", line);
    Report(late, {}, line, false);
  }
  if (!pixmap || buffer == nullptr || size < pixmap->size) return false;
  std::memcpy(buffer, pixmap->data, pixmap->size);
  return true;
}

void VRXWBasebandDecImage::CancelWaits() {
  const Held held(lock);
  m_isCancelled = true;
  m_stopsReading = true;
  m_changed.notify_all();
}

VRXWBasebandDecImage::Counts VRXWBasebandDecImage::GetCounts() {
  const Held held(lock);
  return m_counts;
}
