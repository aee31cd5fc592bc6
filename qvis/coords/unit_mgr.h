// CQVIS_UnitMgr: conversion of lengths between the five units of length, of
// angles between degrees and radians, and of unit codes to names and back.
// Stateless; callers create it on the stack where they need it.
#ifndef QVIS_COORDS_UNIT_MGR_H_
#define QVIS_COORDS_UNIT_MGR_H_

#include "qvis/compat/cstring.h"
#include "qvis/compat/export.h"

// Unit codes: the same ints are stored in the view coordinates, the design
// and the design file.
enum {
  UNIT_MM = 0,
  UNIT_INCH = 1,
  UNIT_MIL = 2,
  UNIT_CM = 3,
  UNIT_MICRO = 4,
};

class QVIS_API CQVIS_UnitMgr {
 public:
  CQVIS_UnitMgr() {}
  CQVIS_UnitMgr(const CQVIS_UnitMgr&) = default;
  CQVIS_UnitMgr& operator=(const CQVIS_UnitMgr&) { return *this; }
  ~CQVIS_UnitMgr() {}

  // Deg2Rad returns degrees * pi / 180 (multiply first). NaN and infinities
  // propagate.
  static double Deg2Rad(double degrees);
  // Rad2Deg returns radians * 180 / pi (multiply first). NaN and infinities
  // propagate.
  static double Rad2Deg(double radians);

  // Each conversion below applies one constant factor, multiplying or
  // dividing exactly as named, so results are bit-identical to the reference
  // tables. Any double (NaN, inf) passes through the arithmetic unchecked.
  // They are static so that they can be called with or without an object.
  static double MIL2MM(double value);
  static double MIL2INCH(double value);
  static double MIL2CM(double value);
  static double MIL2MICRO(double value);
  static double MM2MIL(double value);
  static double MM2INCH(double value);
  static double MM2CM(double value);
  static double MM2MICRO(double value);
  static double INCH2MIL(double value);
  static double INCH2MM(double value);
  static double INCH2CM(double value);
  static double INCH2MICRO(double value);
  static double CM2MIL(double value);
  static double CM2MM(double value);
  static double CM2INCH(double value);
  static double CM2MICRO(double value);

  // Change converts `value` from unit `from` to unit `to` with one factor.
  // A value in micrometres, an unknown code on either side, or from == to
  // returns the value unchanged.
  static double Change(int from, int to, double value);

  // Unit2String returns the lower-case key of a unit ("mm", "inch", "mil",
  // "cm", "micro_meter"); an unknown code gives "".
  static CString Unit2String(int unit);

  // String2Unit parses a lower-case key (exact, case-sensitive, whole string);
  // anything else, the empty string included, gives UNIT_MIL.
  static int String2Unit(const CString& name);
};

#endif  // QVIS_COORDS_UNIT_MGR_H_
