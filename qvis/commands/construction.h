// Construction values of the interactive commands: the pure geometry each command derives from
// the positions it has collected (bend point of a track leg, legs of the rubber band, the vertices
// of a regular-polygon pad, a three-click arc). Owned by the commands; no drawing, no state.
#ifndef QVIS_COMMANDS_CONSTRUCTION_H_
#define QVIS_COMMANDS_CONSTRUCTION_H_

#include <cstddef>
#include <vector>

namespace qvis {

// WorldPt is a world position (design units). Equality is exact: the commands compare positions
// with == on purpose, since the host's snapping makes repeated positions common.
struct WorldPt {
  double x = 0.0;
  double y = 0.0;
  friend bool operator==(const WorldPt& a, const WorldPt& b) { return a.x == b.x && a.y == b.y; }
};

// WorldSeg is one straight leg of a rubber band.
struct WorldSeg {
  WorldPt from;
  WorldPt to;
};

// Bend modes of the track and polygon rubber band: the number after a VK_SPACE cycle.
inline constexpr int kBendNone = 0;           // straight from anchor to cursor
inline constexpr int kBendDiagonalFirst = 1;  // 45-degree leg, then straight
inline constexpr int kBendStraightFirst = 2;  // straight leg, then 45 degrees
inline constexpr int kBendVerticalFirst = 3;  // right angle, vertical leg first
inline constexpr int kBendHorizontalFirst = 4;  // right angle, horizontal leg first
inline constexpr int kBendModeCount = 5;

// TrackBend is the route of one rubber-band step: from the anchor (last fixed vertex) to the
// cursor with an optional automatic bend.
struct TrackBend {
  WorldPt anchor;
  WorldPt cursor;
  int mode = kBendNone;

  // BendPoint computes the bend point P. Returns false for mode 0 and for any mode outside 1..4
  // (no bend point). Modes 3 and 4 are first rewritten when anchor and cursor share their x or
  // their y exactly: to 3 when |ay - cy| > |ax - cx|, else to 4; the rewritten mode is stored
  // in `mode` so that the caller can keep it (the corner follows the direction in which the
  // cursor last left the straight line). NaN or infinite positions give a NaN/inf point, never
  // a fault.
  bool BendPoint(WorldPt* p);

  // Legs fills `out` with the legs the rubber band shows and returns their number: one leg
  // anchor -> cursor in mode 0, two legs anchor -> P -> cursor with a bend point, none when a
  // non-zero mode yields no bend point. May rewrite `mode` as BendPoint does.
  int Legs(WorldSeg out[2]);
};

// NextBendMode is the mode after one VK_SPACE: mode + 1, with 5 wrapping to 0. A value the host
// stored outside 0..4 just counts on (INT_MAX wraps to INT_MIN, never overflowing).
int NextBendMode(int mode);

// RegularPolygonVertices returns the vertices of a regular-polygon pad of `sides` vertices on
// the circle of diameter `diameter` about (cx, cy). The angular step is 360 / sides computed in
// integers (7 sides step 51 degrees, so the last edge is longer); vertex 0 is (cx + r, cy) and
// the angles 0, 90, 180 and 270 give exact offsets. Fewer than 3 sides give no vertices. Above
// 360 sides the integer step is 0 and every vertex coincides with vertex 0; such a pad is
// returned as three coincident vertices (the same degenerate figure, without allocating one
// record per requested side).
std::vector<WorldPt> RegularPolygonVertices(double cx, double cy, double diameter, int sides);
// RegularPolygonVertexCount and RegularPolygonVertex give the same vertices one at a time, for
// a caller that keeps its own memory: the count (0, 3 or `sides`) and vertex i of it.
int RegularPolygonVertexCount(int sides);
WorldPt RegularPolygonVertex(double cx, double cy, double diameter, int sides, int i);

// Distance is the Euclidean distance between two world points (hypot, no overflow for 1e300).
double Distance(WorldPt a, WorldPt b);

// ArcFigure is a finished or growing arc: counter-clockwise (as angles are measured by the
// geometry kernel: from east, y negated) from the start point to the end point about the centre.
struct ArcFigure {
  WorldPt centre;
  WorldPt start;        // the start click; it fixes the radius
  WorldPt end;          // the end point projected onto the circle along the end ray
  double radius = 0.0;  // distance from the centre to the start point
  double start_angle = 0.0;  // degrees in [0, 360)
  double end_angle = 0.0;    // degrees in [0, 360)
};

// MakeArc builds the arc of centre `c` through `s`, ending on the ray from `c` through `e`.
// Returns false (and leaves *out unchanged) when the radius is 0 or not finite, or when `e`
// equals the centre (no end direction).
bool MakeArc(WorldPt c, WorldPt s, WorldPt e, ArcFigure* out);

// CircleThroughThree returns the centre of the circle through the three points; for collinear or
// coincident points the first point (a circle of radius 0 is then drawn).
WorldPt CircleThroughThree(WorldPt a, WorldPt b, WorldPt c);

}  // namespace qvis

#endif  // QVIS_COMMANDS_CONSTRUCTION_H_
