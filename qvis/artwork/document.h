// The board document: layers of artwork objects (tracks, arcs, flashes, regions, step-and-repeat
// blocks) drawn with apertures, as Gerber and Excellon files describe a board. Coordinates are
// whole nanometres so that reading, editing and writing never drift.
#ifndef QVIS_ARTWORK_DOCUMENT_H_
#define QVIS_ARTWORK_DOCUMENT_H_

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "qvis/artwork/macro.h"

namespace qvis {

// Board coordinate in nanometres. One inch is exactly 25,400,000, so both inch and millimetre
// files with up to six decimals land on whole units.
using Coord = std::int64_t;
inline constexpr Coord kNmPerMm = 1000000;
inline constexpr Coord kNmPerInch = 25400000;
// The largest coordinate a reader accepts, 10^9 mm either way. Written with six decimals of a
// millimetre it takes at most 16 digits, so whatever was read can be written and read again, and
// the sum of two coordinates (a point and an arc offset, a copy and its step) cannot overflow.
inline constexpr Coord kMaxCoord = 1000000000000000;

struct ArtPoint {
  Coord x = 0;
  Coord y = 0;
  friend bool operator==(const ArtPoint&, const ArtPoint&) = default;
};

enum class Polarity : std::uint8_t { kDark, kClear };
enum class ArcDirection : std::uint8_t { kClockwise, kCounterClockwise };
enum class Units : std::uint8_t { kMillimetre, kInch };

// How an aperture is placed: mirrored about the axes through its origin, then rotated
// (degrees, counter-clockwise), then scaled.
struct ApertureTransform {
  bool mirror_x = false;  // x -> -x
  bool mirror_y = false;  // y -> -y
  double rotation = 0.0;
  double scale = 1.0;
  bool IsIdentity() const { return !mirror_x && !mirror_y && rotation == 0.0 && scale == 1.0; }
  friend bool operator==(const ApertureTransform&, const ApertureTransform&) = default;
};

// A named attribute (file, aperture or object): the name with its comma-separated values.
struct Attribute {
  std::string name;
  std::vector<std::string> values;
  friend bool operator==(const Attribute&, const Attribute&) = default;
};

// One piece of a region contour, from the previous end point to `end`; arcs turn about
// `centre` in `direction` (end == start of the piece: a full circle).
struct ContourSegment {
  ArtPoint end;
  bool is_arc = false;
  ArtPoint centre;
  ArcDirection direction = ArcDirection::kCounterClockwise;
  friend bool operator==(const ContourSegment&, const ContourSegment&) = default;
};

struct Contour {
  ArtPoint start;
  std::vector<ContourSegment> segments;
  friend bool operator==(const Contour&, const Contour&) = default;
};

enum class ObjectKind : std::uint8_t { kTrack, kArc, kFlash, kRegion, kStepRepeat };

// ArtObject is one graphical object. Which fields count depends on the kind:
//   kTrack      start -> end drawn with `aperture`
//   kArc        start -> end about `centre` in `direction` (start == end: a full circle)
//   kFlash      the aperture's image at `end`
//   kRegion     the area of `contour`
//   kStepRepeat `children` repeated repeat_x by repeat_y times, step_x / step_y apart
struct ArtObject {
  ObjectKind kind = ObjectKind::kTrack;
  Polarity polarity = Polarity::kDark;
  ApertureTransform transform;
  int aperture = 0;  // D code in the layer's aperture table
  ArtPoint start;
  ArtPoint end;
  ArtPoint centre;
  ArcDirection direction = ArcDirection::kCounterClockwise;
  Contour contour;
  int repeat_x = 1;
  int repeat_y = 1;
  Coord step_x = 0;
  Coord step_y = 0;
  std::vector<ArtObject> children;
  std::vector<Attribute> attributes;
  friend bool operator==(const ArtObject&, const ArtObject&) = default;
};

enum class ApertureKind : std::uint8_t { kCircle, kRectangle, kObround, kPolygon, kMacro, kBlock };

// ApertureKindName: the kind's name as the board text format and the command line spell it
// ("circle", "rectangle", "obround", "polygon", "macro", "block").
constexpr const char* ApertureKindName(ApertureKind k) {
  switch (k) {
    case ApertureKind::kCircle: return "circle";
    case ApertureKind::kRectangle: return "rectangle";
    case ApertureKind::kObround: return "obround";
    case ApertureKind::kPolygon: return "polygon";
    case ApertureKind::kMacro: return "macro";
    case ApertureKind::kBlock: return "block";
  }
  return "?";
}

// Aperture is one entry of a layer's aperture table. Sizes are nanometres.
//   kCircle     size_x = diameter
//   kRectangle  size_x by size_y
//   kObround    size_x by size_y, the shorter side rounded
//   kPolygon    size_x = outer diameter, `vertices` corners, first at `rotation` degrees
//   kMacro      `macro` instantiated with `params` (in the file's units, `macro_units`)
//   kBlock      the objects of `block`, drawn relative to the flash point
// The standard shapes may have a round hole of diameter `hole` (0: none).
struct Aperture {
  ApertureKind kind = ApertureKind::kCircle;
  Coord size_x = 0;
  Coord size_y = 0;
  int vertices = 0;
  double rotation = 0.0;
  Coord hole = 0;
  std::string macro;
  std::vector<double> params;
  Units macro_units = Units::kMillimetre;
  std::vector<ArtObject> block;
  std::vector<Attribute> attributes;
  friend bool operator==(const Aperture&, const Aperture&) = default;
};

enum class LayerKind : std::uint8_t { kGerber, kDrill };

// Layer is one file's worth of artwork, drawn in `colour` (0xRRGGBB) when visible. Layers are
// drawn in ascending `order`.
struct Layer {
  std::string name;
  std::string file_function;  // the .FileFunction attribute, joined by commas
  std::uint32_t colour = 0x000000;
  bool visible = true;
  int order = 0;
  LayerKind kind = LayerKind::kGerber;
  Units units = Units::kMillimetre;  // the units the file was written in
  // A negative image (the deprecated IPNEG): the whole frame is dark and every object's
  // polarity is inverted.
  bool negative = false;
  std::map<int, Aperture> apertures;
  std::map<std::string, ApertureMacro> macros;
  std::vector<Attribute> file_attributes;
  std::vector<ArtObject> objects;
  friend bool operator==(const Layer&, const Layer&) = default;
};

struct ArtDocument {
  std::vector<Layer> layers;
  friend bool operator==(const ArtDocument&, const ArtDocument&) = default;
};

// A box in board units; empty when min > max.
struct ArtBox {
  Coord min_x = 1;
  Coord min_y = 1;
  Coord max_x = 0;
  Coord max_y = 0;
  bool IsEmpty() const { return min_x > max_x || min_y > max_y; }
  void Add(Coord x, Coord y);
  void Add(const ArtBox& b);
  friend bool operator==(const ArtBox&, const ArtBox&) = default;
};

// Counts of objects by kind, step-and-repeat children counted once.
struct ObjectCounts {
  std::int64_t tracks = 0;
  std::int64_t arcs = 0;
  std::int64_t flashes = 0;
  std::int64_t regions = 0;
  std::int64_t repeats = 0;
};
ObjectCounts CountObjects(const Layer& layer);

}  // namespace qvis

#endif  // QVIS_ARTWORK_DOCUMENT_H_
