// Every tolerance and fixed constant of the geometry code, named once with the reason it has the
// value it has. The values are part of the library's observable behaviour: hosts compare results
// against them, so none may be "improved".
#ifndef QVIS_GEOMETRY_TOLERANCE_H_
#define QVIS_GEOMETRY_TOLERANCE_H_

namespace qvis::tol {

// Zero tests on coordinate differences, point-on-line and point-on-circle tests, the special
// angles of the vector rotation, the axis tests of the angle of a vector, and the intersection
// functions. Absolute, in world units (or degrees, or squared units for the circle tests).
inline constexpr double kZero = 1e-5;

// Default equality of values and points, near-vertical / near-horizontal segments, and the
// coincident end points of an arc given by its end points. Coarser than kZero because it
// compares positions a user placed, not results of arithmetic.
inline constexpr double kSame = 0.001;

// Every "same coordinate" test of the infinite-line crossing. It serves device-sized values,
// where anything within one unit is the same pixel column or row.
inline constexpr double kCrossLine = 1.0;

// A track whose ends differ by less than this in x is measured as a vertical track at its first
// end's x by the point-to-line clearance (a fast path for hand-drawn vertical tracks).
inline constexpr double kVerticalTrack = 0.1;

// Two points closer than this have no direction for the outline's own angle function.
inline constexpr double kOutlineShortLine = 0.01;

// One degree in radians as the outline's own angle function divides by it (it does not share
// the kernel's truncated radians-to-degrees constant).
inline constexpr double kOutlineRadPerDegree = 0.017453292519943295;

// Radians to degrees in the angle of a vector: deliberately this truncated value, not 180/pi.
// The relative error (about 2.1e-7) shows in every angle a host has ever stored, so it stays.
inline constexpr double kRadToDeg = 57.2957914;

// Degrees to radians everywhere else.
inline constexpr double kPi = 3.141592653589793;
inline constexpr double kDegToRad = kPi / 180.0;
inline constexpr double kTwoPi = 6.283185307179586;

// The quarter-turn angles the bounding box of an arc compares against, truncated as stored
// extents expect them (not pi/2 and 3*pi/2 to full precision).
inline constexpr double kQuarterTurnTrunc = 1.570796325;
inline constexpr double kThreeQuarterTurnTrunc = 4.712388975;

// Arc flattening from end points: the largest step for a fine (n > 0) and a coarse (n < 0)
// flattening, and the step used when the sweep is empty.
inline constexpr double kFineArcStep = 3.0;
inline constexpr double kCoarseArcStep = 10.0;
inline constexpr double kEmptyArcStep = 0.1;

// The most points one arc flattening appends. A step too small for the sweep is widened so the
// flattening stops here (a million-point polyline is never what a caller wants, and a step
// below the angle's resolution would never advance).
inline constexpr long kMaxArcPoints = 1 << 17;

// Angle normalisation by repeated +-360 is exact as long as 360 is a multiple of the value's
// unit in the last place; beyond this magnitude the loops are replaced by one fmod (exact) so
// they finish at once for 1e300 and infinity.
inline constexpr double kTurnLoopLimit = 360.0 * 1024.0;

// Three points whose triangle is flatter than this (sine of the angle at the first point) have
// no circle through them.
inline constexpr double kCollinearSine = 1e-12;

}  // namespace qvis::tol

#endif  // QVIS_GEOMETRY_TOLERANCE_H_
