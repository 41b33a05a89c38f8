// Decodes the pictures of baseband documents ahead of the engine, on a thread of its own, into a bounded
// cache. VRXWBasebandVideoObject, which is what the engine sees, owns one.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <vector>

#include "foundation/memory/XpSharedPtr.h"
#include "foundation/sync/XpCriticalSection.h"
#include "foundation/sync/XpThread.h"
#include "foundation/xml/XpXmlParser.h"
#include "imaging/pixmap/XpPixmap.h"
#include "src/baseband/BasebandPicture.h"

/// Replaced by tests: the files and the waiting time.
struct VRXWBasebandHooks {
  vrx::baseband::PictureReader reader = vrx::baseband::PictureReader::OfFiles();
  std::uint32_t waitMilliseconds = 250;  // one wait of GetFrame for a picture
  std::uint32_t mostWaits = 101;         // timed-out waits before GetFrame gives up
};

/// Documents are added by the host's thread, frames taken by the engine's. Each document of a project has an
/// index, from 0. Frames must be asked for in rising order of index and number: earlier ones are dropped.
class VRXWBasebandDecImage final : public XpXmlParser {
 public:
  static constexpr std::size_t kMostCached = 11;  // pictures

  /// The pictures and counters since the last Close.
  struct Counts {
    std::uint32_t decoded = 0;  // failed ones included
    std::uint32_t skipped = 0;  // not decoded: GetFrame was past them
    std::uint32_t waits = 0;    // pictures that GetFrame had to wait for
    double waitedSeconds = 0.0;
    double waitedForFirstSeconds = 0.0;  // the part of it before any picture was there
  };

  explicit VRXWBasebandDecImage(VRXWBasebandHooks hooks = {});
  /// Stops the decoder, which gives up the picture that it is decoding.
  ~VRXWBasebandDecImage() override;

  void Open(const XpString& newPath) override;
  /// Stops the decoder and forgets all documents and pictures.
  void Close() override;

  /// Reads the document at `file`, appends its pictures to those of earlier documents and starts the decoder
  /// if none runs. The movie's size is taken from the first call after Close. `index` gets the document's
  /// index, also on failure; the document then has no picture. Results are those of ReadBasebandDocument, or
  /// XpErrThread.
  XpResult Start(std::int32_t width, std::int32_t height, const XpString& file, std::uint32_t& index);

  /// Writes the picture that document `index` puts on `frame`. False when there is none, when it could not be
  /// decoded or did not come in time, or when the buffer is smaller than the picture. After a picture came
  /// late once, its span waits no more but shows it as soon as it is there. The first frame that lies on no
  /// span, or past the last one, ends the document.
  bool GetFrame(std::uint32_t index, std::uint64_t frame, void* buffer, std::uint32_t size);

  /// Ends every wait of GetFrame and the decoding of pictures, now and later: a picture that is not there yet
  /// is then missing. From any thread.
  void CancelWaits();

  Counts GetCounts();

 private:
  struct Place {  // of a picture in the order of all documents
    std::uint32_t document = 0;
    std::uint64_t number = 0;  // of the picture, over all documents
    std::uint64_t line = 0;    // of its document
  };
  struct QueuedJob {
    Place place;
    vrx::baseband::DecodeJob job;
  };
  struct QueuedSpan {
    Place place;
    vrx::baseband::FrameSpan span;
    bool givenUp = false;  // its picture did not come in time
  };
  struct CachedImage {
    Place place;
    std::int64_t imageId = 0;
    XpSharedPtr<XpPixmapBase> pixmap;  // null: could not be decoded
  };
  class Held;

  static std::uint32_t DecoderEntry(void* object);
  void DecodeAll();
  bool TakeJob(QueuedJob& job);
  bool IsPassed(const QueuedJob& job) const;
  XpSharedPtr<XpPixmapBase> Decode(const QueuedJob& job);
  void Report(const Place& place, const XpString& picture, const XpString& cause, bool isPartial);
  bool EnsureDecoder();
  QueuedSpan* FindSpan(std::uint32_t index, std::uint64_t frame);
  bool WaitForImage(Held& held, QueuedSpan& span);
  void AddImages(const vrx::baseband::BasebandDocument& source, const XpString& file, std::uint32_t index);
  void DropDocument(std::uint32_t index);
  void LogCounts() const;

  const VRXWBasebandHooks m_hooks;
  std::int32_t targetWidth = 0;
  std::int32_t targetHeight = 0;
  // The lock guards all of these. It is never held while a picture is decoded or copied.
  std::deque<QueuedJob> jobs;
  std::deque<QueuedSpan> spans;
  std::deque<CachedImage> cache;  // oldest first
  bool running = false;           // the decoder thread works or waits
  XpThread* decoder = nullptr;
  XpCriticalSection lock;
  std::condition_variable_any m_changed;  // a picture came or went, the decoder stopped
  std::vector<XpString> m_documents;      // their paths
  std::uint64_t m_images = 0;
  QueuedSpan m_wanted;  // the one that GetFrame shows
  bool m_hasWanted = false;
  bool m_isCancelled = false;
  std::atomic<bool> m_stopsReading = false;  // the picture that is being decoded is no longer wanted
  Counts m_counts;
};
