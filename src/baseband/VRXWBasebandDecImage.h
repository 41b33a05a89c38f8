// Decodes the pictures of baseband documents ahead of the engine, on a thread of its own, into a bounded
// cache. VRXWBasebandVideoObject, which is what the engine sees, owns one.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>

#include "foundation/memory/XpSharedPtr.h"
#include "foundation/sync/XpCriticalSection.h"
#include "foundation/sync/XpThread.h"
#include "foundation/xml/XpXmlParser.h"
#include "imaging/pixmap/XpPixmap.h"
#include "src/baseband/BasebandPicture.h"

/// What a test puts in the place of files and of time.
struct VRXWBasebandHooks {
  vrx::baseband::PictureReader reader = vrx::baseband::PictureReader::OfFiles();
  std::uint32_t waitMilliseconds = 250;  // one wait of GetFrame for a picture
  std::uint32_t mostWaits = 101;         // that run out before GetFrame gives up
};

/// Documents are added by the host's thread, frames taken by the engine's. Each document of a project has an
/// index, from 0; frames come in rising order of index and number, for what is passed is dropped.
class VRXWBasebandDecImage final : public XpXmlParser {
 public:
  static constexpr std::size_t kMostCached = 11;  // pictures

  /// The pictures and counters since the last Close.
  struct Counts {
    std::uint32_t decoded = 0;  // failed ones included
    std::uint32_t skipped = 0;  // passed by GetFrame before their turn
    std::uint32_t waits = 0;    // pictures that GetFrame had to wait for
    double waitedSeconds = 0.0;
    double waitedForFirstSeconds = 0.0;  // the part of it before any picture was there
  };

  explicit VRXWBasebandDecImage(VRXWBasebandHooks hooks = {});
  /// Stops the decoder, which takes as long as the picture that it is at.
  ~VRXWBasebandDecImage() override;

  void Open(const XpString& newPath) override;
  /// Stops the decoder and forgets all documents and pictures.
  void Close() override;

  /// Reads the document at `file`, appends its pictures to those of earlier documents and sees to it that the
  /// decoder runs. The size is that of the movie and counts for the first document after Close. `index` is
  /// the document's, also when it fails and has no picture: as ReadBasebandDocument, or XpErrThread.
  XpResult Start(std::int32_t width, std::int32_t height, const XpString& file, std::uint32_t& index);

  /// Writes the picture that document `index` puts on `frame`. False when there is none, when it could not be
  /// decoded or did not come in time, or when the buffer is smaller than the picture. A span whose picture
  /// did not come in time is not waited for again, but shows it as soon as it is there. The first frame that
  /// lies on no span ends the document, as does one behind its last.
  bool GetFrame(std::uint32_t index, std::uint64_t frame, void* buffer, std::uint32_t size);

  /// Ends every wait of GetFrame for a picture, now and later: a picture that is not there yet is then missing.
  /// From any thread.
  void CancelWaits();

  Counts GetCounts();

 private:
  struct Place {  // of a picture among all documents
    std::uint32_t document = 0;
    std::uint64_t number = 0;  // counted through all documents
  };
  struct DecodeJob {
    Place place;
    vrx::baseband::DecodeJob job;
  };
  struct FrameSpan {
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
  bool TakeJob(DecodeJob& job);
  bool IsPassed(const DecodeJob& job) const;
  XpSharedPtr<XpPixmapBase> Decode(const vrx::baseband::DecodeJob& job);
  bool EnsureDecoder();
  FrameSpan* FindSpan(std::uint32_t index, std::uint64_t frame);
  bool WaitForImage(Held& held, FrameSpan& span);
  void AddImages(const vrx::baseband::BasebandDocument& source, const XpString& file, std::uint32_t index);
  void DropDocument(std::uint32_t index);
  void LogCounts() const;

  const VRXWBasebandHooks m_hooks;
  std::int32_t targetWidth = 0;
  std::int32_t targetHeight = 0;
  // The lock guards all of these. It is never held while a picture is decoded or copied.
  std::deque<DecodeJob> jobs;
  std::deque<FrameSpan> spans;
  std::deque<CachedImage> cache;  // oldest first
  bool running = false;           // the decoder shall go on
  XpThread* decoder = nullptr;
  XpCriticalSection lock;
  std::condition_variable_any m_changed;  // a picture came or went, the decoder stopped
  std::uint32_t m_documents = 0;
  std::uint64_t m_images = 0;
  FrameSpan m_wanted;  // the one that GetFrame shows
  bool m_hasWanted = false;
  bool m_isCancelled = false;
  Counts m_counts;
};
