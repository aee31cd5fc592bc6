// Whole-turn stepping of angles (repeated +-360) that finishes at once for any input. Internal to
// the geometry code.
//
// Where the geometry code departs from a literal loop so that every loop ends promptly for any
// input (1e300, infinities, NaN), with unchanged results for ordinary input:
//  - every "add / subtract 360 while ..." angle loop goes through the functions below, which
//    take more than ~1000 turns in one fmod (exact) first and give NaN for an infinite gap;
//  - CQVIS_Math::MakeArcToLine treats a zero, negative or NaN step as one step over the whole
//    sweep, widens steps that would append more than kMaxArcPoints points, never iterates more
//    often than the sweep holds steps (a += step may stop changing a), and appends the start
//    and end points only when the sweep is not finite;
//  - CQVIS_Math::MakeArcToLineC takes n = NaN like n = 0 (the fine cap).
#ifndef QVIS_GEOMETRY_TURNS_H_
#define QVIS_GEOMETRY_TURNS_H_

namespace qvis::geom {

// RaiseByTurns adds 360 to a while a < limit. For ordinary values this is exactly the literal
// loop; when more than ~1000 turns would be needed the bulk is taken by one fmod of the gap
// first (equal to the loop's result up to the rounding of the gap), so it ends at once for 1e300.
// An infinite distance (a = -inf or limit = +inf) gives NaN; NaN gives a unchanged.
double RaiseByTurns(double a, double limit);

// LowerByTurns subtracts 360 from a while a > limit, with the same guarantees.
double LowerByTurns(double a, double limit);

// LowerByTurnsBelow subtracts 360 from a while a >= limit, with the same guarantees.
double LowerByTurnsBelow(double a, double limit);

// WrapDegrees brings a into [0, 360) by repeated +-360 (with the fmod shortcut above); NaN and
// infinities give NaN. The result may be exactly 360 where adding 360 to a tiny negative value
// rounds up; callers that need [0, 360) strictly map that to 0.
double WrapDegrees(double a);

// SaturateToInt32 truncates v toward zero into the 32-bit range, saturating beyond it; NaN gives 0.
int SaturateToInt32(double v);

}  // namespace qvis::geom

#endif  // QVIS_GEOMETRY_TURNS_H_
