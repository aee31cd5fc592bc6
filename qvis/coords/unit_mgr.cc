// CQVIS_UnitMgr: unit factors and unit names.
#include "qvis/coords/unit_mgr.h"

namespace {

constexpr double kPi = 3.141592653589793;

// The single-precision value nearest to 0.00254, widened to double. The
// centimetre-to-mil conversion divides by it (the mil-to-centimetre direction
// multiplies by the exact double 0.00254); results must match to the bit.
constexpr double kCmPerMilSingle = 0.0025400000158697367;

}  // namespace

double CQVIS_UnitMgr::Deg2Rad(double degrees) { return degrees * kPi / 180.0; }
double CQVIS_UnitMgr::Rad2Deg(double radians) { return radians * 180.0 / kPi; }

double CQVIS_UnitMgr::MIL2MM(double value) { return value * 0.0254; }
double CQVIS_UnitMgr::MIL2INCH(double value) { return value / 1000.0; }
double CQVIS_UnitMgr::MIL2CM(double value) { return value * 0.00254; }
double CQVIS_UnitMgr::MIL2MICRO(double value) { return value * 25.4; }
double CQVIS_UnitMgr::MM2MIL(double value) { return value / 0.0254; }
double CQVIS_UnitMgr::MM2INCH(double value) { return value / 25.4; }
double CQVIS_UnitMgr::MM2CM(double value) { return value / 10.0; }
double CQVIS_UnitMgr::MM2MICRO(double value) { return value * 1000.0; }
double CQVIS_UnitMgr::INCH2MIL(double value) { return value * 1000.0; }
double CQVIS_UnitMgr::INCH2MM(double value) { return value * 25.4; }
double CQVIS_UnitMgr::INCH2CM(double value) { return value * 2.54; }
double CQVIS_UnitMgr::INCH2MICRO(double value) { return value * 25400.0; }
double CQVIS_UnitMgr::CM2MIL(double value) { return value / kCmPerMilSingle; }
double CQVIS_UnitMgr::CM2MM(double value) { return value * 10.0; }
double CQVIS_UnitMgr::CM2INCH(double value) { return value / 2.54; }
double CQVIS_UnitMgr::CM2MICRO(double value) { return value * 10000.0; }

double CQVIS_UnitMgr::Change(int from, int to, double value) {
  // One factor at most, never a chain of two conversions. Micrometres are
  // never converted to anything: a value in micrometres is returned as is.
  switch (from) {
    case UNIT_MM:
      switch (to) {
        case UNIT_INCH: return MM2INCH(value);
        case UNIT_MIL: return MM2MIL(value);
        case UNIT_CM: return MM2CM(value);
        case UNIT_MICRO: return MM2MICRO(value);
        default: return value;
      }
    case UNIT_INCH:
      switch (to) {
        case UNIT_MM: return INCH2MM(value);
        case UNIT_MIL: return INCH2MIL(value);
        case UNIT_CM: return INCH2CM(value);
        case UNIT_MICRO: return INCH2MICRO(value);
        default: return value;
      }
    case UNIT_MIL:
      switch (to) {
        case UNIT_MM: return MIL2MM(value);
        case UNIT_INCH: return MIL2INCH(value);
        case UNIT_CM: return MIL2CM(value);
        case UNIT_MICRO: return MIL2MICRO(value);
        default: return value;
      }
    case UNIT_CM:
      switch (to) {
        case UNIT_MM: return CM2MM(value);
        case UNIT_INCH: return CM2INCH(value);
        case UNIT_MIL: return CM2MIL(value);
        case UNIT_MICRO: return CM2MICRO(value);
        default: return value;
      }
    default:
      return value;
  }
}

CString CQVIS_UnitMgr::Unit2String(int unit) {
  switch (unit) {
    case UNIT_MM: return "mm";
    case UNIT_INCH: return "inch";
    case UNIT_MIL: return "mil";
    case UNIT_CM: return "cm";
    case UNIT_MICRO: return "micro_meter";
    default: return "";
  }
}

int CQVIS_UnitMgr::String2Unit(const CString& name) {
  // Compared in this order; mil is the fallback unit for anything unknown.
  static constexpr struct {
    const char* key;
    int unit;
  } kKeys[] = {{"mil", UNIT_MIL},
               {"mm", UNIT_MM},
               {"inch", UNIT_INCH},
               {"cm", UNIT_CM},
               {"micro_meter", UNIT_MICRO}};
  for (const auto& k : kKeys) {
    if (name.str() == k.key) return k.unit;
  }
  return UNIT_MIL;
}
