// Scales pictures of any pixel format with one filter, Lanczos with three lobes, and converts their matrix,
// range and depth on the way; zimg does the work. Used by the fitter.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "engine/AvPointers.h"
#include "engine/EngineResult.h"
#include "engine/PictureColour.h"

struct zimg_filter_graph;

namespace vrx::engine {

/// Whether zimg may read and write `frame` as it is: its planes and rows begin where the widest vectors do.
bool IsAligned(const AVFrame& frame);

/// Belongs to one thread. What it makes for one kind of pictures is kept until another kind comes.
class PictureScaler {
 public:
  /// Fills `target`, a frame from a pool, whose format has eight bits or is planar RGB. `from` and `to` are
  /// the colours before and after; of their transfers and primaries nothing is used. Chroma that is sited as
  /// the source says, or left where it does not say, becomes sited left. Samples with more bits than the
  /// target's are dithered when it has eight; levels that eight bits hold stay exact. kSourceUnreadable, with
  /// a logged line, for a picture that cannot be converted.
  Result Scale(const AVFrame& source, const PictureColour& from, AVFrame& target, const PictureColour& to);

 private:
  struct Kind {
    int width, height, format;
    PictureColour colour;
    AVChromaLocation chroma;
    bool operator==(const Kind&) const = default;
  };
  struct GraphDeleter {
    void operator()(zimg_filter_graph* graph) const;
  };
  struct alignas(64) Block {
    std::byte bytes[64];
  };

  Result PrepareGraph(const Kind& from, const Kind& to);
  Result MakePlanar(const AVFrame& source, const AVFrame*& planar);
  Result Repack(const AVFrame& source);

  Kind m_from{}, m_to{};
  std::unique_ptr<zimg_filter_graph, GraphDeleter> m_graph;
  std::vector<Block> m_scratch;  // of the graph
  FramePtr m_planar;             // the source in a form that zimg takes
  Kind m_packed{};               // what m_repacker reads
  ScalerPtr m_repacker;
};

}  // namespace vrx::engine
