// Turns artwork objects into filled outlines: every track, arc, flash and region becomes one or
// more sets of closed rings in board nanometres, handed to a ShapeSink with its polarity. The
// renderer and the extent computation are both sinks.
#ifndef QVIS_ARTWORK_SHAPES_H_
#define QVIS_ARTWORK_SHAPES_H_

#include <vector>

#include "qvis/artwork/document.h"

namespace qvis {

struct DPoint {
  double x = 0.0;
  double y = 0.0;
};
using Ring = std::vector<DPoint>;

// Affine is x' = a x + c y + tx, y' = b x + d y + ty.
struct Affine {
  double a = 1.0, b = 0.0, c = 0.0, d = 1.0, tx = 0.0, ty = 0.0;
  DPoint Apply(DPoint p) const { return {a * p.x + c * p.y + tx, b * p.x + d * p.y + ty}; }
  // Then(o): apply `o` first, then this.
  Affine Then(const Affine& o) const;
  static Affine Translate(double x, double y) { return {1, 0, 0, 1, x, y}; }
  static Affine FromTransform(const ApertureTransform& t);
  double Scale() const;  // the length factor of a similarity
};

class ShapeSink {
 public:
  virtual ~ShapeSink() = default;
  // Fill draws the area of `rings` (even-odd between rings when `even_odd`, else nonzero) dark
  // or clear.
  virtual void Fill(const std::vector<Ring>& rings, bool even_odd, bool dark) = 0;
  // Between BeginGroup and EndGroup, Fill builds one aperture image on its own (its clear
  // parts erase only that image); EndGroup then draws the image dark or clear.
  virtual void BeginGroup() = 0;
  virtual void EndGroup(bool dark) = 0;
};

struct ShapeOptions {
  // Largest distance between a curve and the chords that stand for it.
  double tolerance_nm = 1000.0;
  // Lines drawn with a thinner aperture are drawn this wide (0: as they are).
  double min_line_width_nm = 0.0;
};

// EmitLayer sends every object of `layer`, in order.
void EmitLayer(const Layer& layer, const ShapeOptions& options, ShapeSink& sink);
// EmitObject sends one object placed through `place`, its polarity inverted when `invert`.
void EmitObject(const Layer& layer, const ArtObject& object, const Affine& place, bool invert,
                const ShapeOptions& options, ShapeSink& sink, int depth = 0);
// ApertureImage sends the image of aperture `code` placed through `place` as one group.
void EmitAperture(const Layer& layer, int code, const Affine& place, bool dark,
                  const ShapeOptions& options, ShapeSink& sink, int depth = 0);

// LayerExtent is the box of every dark outline of the layer (empty when none).
ArtBox LayerExtent(const Layer& layer);
ArtBox DocumentExtent(const ArtDocument& doc);

// How arcs are cut into straight pieces: a full circle has at least kMinCircleSegments;
// ArcSegments gives the pieces of an arc of `radius` sweeping `sweep` radians (>= 0) so that
// no piece strays more than `tol` from the arc. The renderer's fast paths cut arcs with it too,
// so that they draw exactly the outlines built here.
constexpr int kMinCircleSegments = 8;
constexpr int kMaxCircleSegments = 4096;
int ArcSegments(double radius, double sweep, double tol);

// Arc geometry shared by the readers and the shape code: the sweep in radians (positive) from
// start to end about centre; start == end gives a full turn.
double ArcSweep(ArtPoint start, ArtPoint end, ArtPoint centre, ArcDirection dir);

}  // namespace qvis

#endif  // QVIS_ARTWORK_SHAPES_H_
