#include "qvis/artwork/io/gerber_writer.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <set>

namespace qvis {

namespace {

std::string Num(double v) { return FormatDecimal(v, 15); }

// Modifier indexes of each macro primitive that are lengths (scaled with the units).
bool IsLengthModifier(int code, std::size_t i, std::size_t count) {
  switch (code) {
    case kMacroCircle: return i >= 1 && i <= 3;
    case kMacroVectorLine: return i >= 1 && i <= 5;
    case kMacroCenterLine: return i >= 1 && i <= 4;
    case kMacroOutline: return i >= 2 && i + 1 < count;
    case kMacroPolygon: return i >= 2 && i <= 4;
    case kMacroMoire: return i <= 7 && i != 5;
    case kMacroThermal: return i <= 4;
    default: return false;
  }
}

class Writer {
 public:
  Writer(const Layer& layer, const GerberWriteOptions& opt) : layer_(layer), opt_(opt) {}

  std::string Run() {
    const bool mm = opt_.units == Units::kMillimetre;
    out_ += "G04 Board artwork written by qvis*\n";
    out_ += mm ? "%FSLAX46Y46*%\n%MOMM*%\n" : "%FSLAX26Y26*%\n%MOIN*%\n";
    out_ += "G75*\n";
    for (const Attribute& a : layer_.file_attributes) Attr("TF", a);
    for (const auto& [name, macro] : layer_.macros) WriteMacro(macro, name, 1.0);
    // Macros instantiated in the other unit get a scaled copy.
    for (const auto& [code, ap] : layer_.apertures) {
      if (ap.kind == ApertureKind::kMacro && ap.macro_units != opt_.units &&
          !scaled_.count(ap.macro)) {
        auto it = layer_.macros.find(ap.macro);
        if (it == layer_.macros.end()) continue;
        scaled_.insert(ap.macro);
        WriteMacro(it->second, ScaledName(ap.macro), mm ? 25.4 : 1.0 / 25.4);
      }
    }
    for (const auto& [code, ap] : layer_.apertures) {
      if (ap.kind != ApertureKind::kBlock) WriteAperture(code, ap);
    }
    // Blocks after the apertures they use, in as many passes as they nest.
    std::set<int> written;
    for (bool progress = true; progress;) {
      progress = false;
      for (const auto& [code, ap] : layer_.apertures) {
        if (ap.kind != ApertureKind::kBlock || written.count(code)) continue;
        if (!BlockReady(ap.block, written)) continue;
        written.insert(code);
        progress = true;
        WriteAperture(code, ap);
      }
    }
    for (const ArtObject& o : layer_.objects) WriteObject(o);
    out_ += "M02*\n";
    return std::move(out_);
  }

 private:
  std::string ScaledName(const std::string& name) const {
    return name + (opt_.units == Units::kMillimetre ? "_MM" : "_IN");
  }

  bool BlockReady(const std::vector<ArtObject>& objs, const std::set<int>& written) const {
    for (const ArtObject& o : objs) {
      if (o.kind == ObjectKind::kStepRepeat) {
        if (!BlockReady(o.children, written)) return false;
        continue;
      }
      auto it = layer_.apertures.find(o.aperture);
      if (o.kind != ObjectKind::kRegion && it != layer_.apertures.end() &&
          it->second.kind == ApertureKind::kBlock && !written.count(o.aperture)) {
        return false;
      }
    }
    return true;
  }

  std::string Coord(qvis::Coord nm) const {
    if (opt_.units == Units::kMillimetre) return std::to_string(nm);  // 1e-6 mm is 1 nm
    return std::to_string(std::llround(static_cast<double>(nm) / 25.4));
  }

  std::string Size(qvis::Coord nm) const {
    const double unit = opt_.units == Units::kMillimetre ? 1e6 : 25.4e6;
    return Num(static_cast<double>(nm) / unit);
  }

  void Attr(const char* cmd, const Attribute& a) {
    out_ += "%";
    out_ += cmd;
    out_ += a.name;
    for (const std::string& v : a.values) out_ += "," + v;
    out_ += "*%\n";
  }

  void WriteMacro(const ApertureMacro& m, const std::string& name, double scale) {
    out_ += "%AM" + name + "*\n";
    for (const MacroStatement& s : m.statements) {
      switch (s.kind) {
        case MacroStatement::Kind::kComment:
          out_ += "0 " + s.comment + "*\n";
          break;
        case MacroStatement::Kind::kAssign:
          out_ += "$" + std::to_string(s.var) + "=" + s.value.ToString() + "*\n";
          break;
        case MacroStatement::Kind::kPrimitive: {
          out_ += std::to_string(s.code);
          for (std::size_t i = 0; i < s.modifiers.size(); ++i) {
            MacroExpr e = s.modifiers[i];
            if (scale != 1.0 && IsLengthModifier(s.code, i, s.modifiers.size())) {
              e.tokens.push_back({MacroExpr::Op::kConst, scale, 0});
              e.tokens.push_back({MacroExpr::Op::kMul, 0, 0});
            }
            out_ += "," + e.ToString();
          }
          out_ += "*\n";
          break;
        }
      }
    }
    out_ += "%\n";
  }

  void WriteAperture(int code, const Aperture& ap) {
    for (const Attribute& a : ap.attributes) Attr("TA", a);
    const std::string d = "D" + std::to_string(code);
    auto hole = [&] { return ap.hole > 0 ? "X" + Size(ap.hole) : std::string(); };
    switch (ap.kind) {
      case ApertureKind::kCircle:
        out_ += "%AD" + d + "C," + Size(ap.size_x) + hole() + "*%\n";
        break;
      case ApertureKind::kRectangle:
      case ApertureKind::kObround:
        out_ += "%AD" + d + (ap.kind == ApertureKind::kRectangle ? "R," : "O,") + Size(ap.size_x) +
                "X" + Size(ap.size_y) + hole() + "*%\n";
        break;
      case ApertureKind::kPolygon:
        out_ += "%AD" + d + "P," + Size(ap.size_x) + "X" + std::to_string(ap.vertices);
        if (ap.rotation != 0 || ap.hole > 0) out_ += "X" + Num(ap.rotation);
        out_ += hole() + "*%\n";
        break;
      case ApertureKind::kMacro: {
        out_ += "%AD" + d + (ap.macro_units != opt_.units ? ScaledName(ap.macro) : ap.macro);
        for (std::size_t i = 0; i < ap.params.size(); ++i) {
          out_ += (i == 0 ? "," : "X") + Num(ap.params[i]);
        }
        out_ += "*%\n";
        break;
      }
      case ApertureKind::kBlock: {
        out_ += "%AB" + d + "*%\n";
        // A block's objects start from the default state.
        SaveState saved = state_;
        state_ = SaveState{};
        for (const ArtObject& o : ap.block) WriteObject(o);
        ResetState();
        state_ = saved;
        out_ += "%AB*%\n";
        break;
      }
    }
    for (const Attribute& a : ap.attributes) out_ += "%TD" + a.name + "*%\n";
  }

  // Returns the objects' graphics state to the defaults the reader starts a block with.
  void ResetState() {
    if (state_.polarity != Polarity::kDark) out_ += "%LPD*%\n";
    if (!state_.transform.IsIdentity()) {
      out_ += "%LMN*%\n%LR0*%\n%LS1*%\n";
    }
    if (!state_.attrs.empty()) out_ += "%TD*%\n";
  }

  void Point(ArtPoint p) { out_ += "X" + Coord(p.x) + "Y" + Coord(p.y); }

  void MoveTo(ArtPoint p) {
    if (state_.have_point && state_.point == p) return;
    Point(p);
    out_ += "D02*\n";
    state_.point = p;
    state_.have_point = true;
  }

  void Interp(int g) {
    if (state_.interp == g) return;
    state_.interp = g;
    out_ += "G0" + std::to_string(g) + "*\n";
  }

  void Setup(const ArtObject& o, bool uses_aperture) {
    if (o.attributes != state_.attrs) {
      if (!state_.attrs.empty()) out_ += "%TD*%\n";
      for (const Attribute& a : o.attributes) Attr("TO", a);
      state_.attrs = o.attributes;
    }
    if (o.polarity != state_.polarity) {
      out_ += o.polarity == Polarity::kDark ? "%LPD*%\n" : "%LPC*%\n";
      state_.polarity = o.polarity;
    }
    if (!uses_aperture) return;
    const ApertureTransform& t = o.transform;
    if (t.mirror_x != state_.transform.mirror_x || t.mirror_y != state_.transform.mirror_y) {
      out_ += std::string("%LM") +
              (t.mirror_x ? (t.mirror_y ? "XY" : "X") : (t.mirror_y ? "Y" : "N")) + "*%\n";
    }
    if (t.rotation != state_.transform.rotation) out_ += "%LR" + Num(t.rotation) + "*%\n";
    if (t.scale != state_.transform.scale) out_ += "%LS" + Num(t.scale) + "*%\n";
    state_.transform = t;
    if (o.aperture != state_.aperture) {
      out_ += "D" + std::to_string(o.aperture) + "*\n";
      state_.aperture = o.aperture;
    }
  }

  void WriteObject(const ArtObject& o) {
    switch (o.kind) {
      case ObjectKind::kTrack:
        Setup(o, true);
        MoveTo(o.start);
        Interp(1);
        Point(o.end);
        out_ += "D01*\n";
        state_.point = o.end;
        break;
      case ObjectKind::kArc:
        Setup(o, true);
        MoveTo(o.start);
        Interp(o.direction == ArcDirection::kClockwise ? 2 : 3);
        Point(o.end);
        out_ += "I" + Coord(o.centre.x - o.start.x) + "J" + Coord(o.centre.y - o.start.y) + "D01*\n";
        state_.point = o.end;
        break;
      case ObjectKind::kFlash:
        Setup(o, true);
        Point(o.end);
        out_ += "D03*\n";
        state_.point = o.end;
        state_.have_point = true;
        break;
      case ObjectKind::kRegion: {
        Setup(o, false);
        out_ += "G36*\n";
        state_.have_point = false;
        MoveTo(o.contour.start);
        ArtPoint at = o.contour.start;
        for (const ContourSegment& s : o.contour.segments) {
          if (s.is_arc) {
            Interp(s.direction == ArcDirection::kClockwise ? 2 : 3);
            Point(s.end);
            out_ += "I" + Coord(s.centre.x - at.x) + "J" + Coord(s.centre.y - at.y) + "D01*\n";
          } else {
            Interp(1);
            Point(s.end);
            out_ += "D01*\n";
          }
          at = s.end;
        }
        state_.point = at;
        out_ += "G37*\n";
        break;
      }
      case ObjectKind::kStepRepeat: {
        Setup(o, false);
        out_ += "%SRX" + std::to_string(o.repeat_x) + "Y" + std::to_string(o.repeat_y) + "I" +
                Size(o.step_x) + "J" + Size(o.step_y) + "*%\n";
        for (const ArtObject& c : o.children) WriteObject(c);
        out_ += "%SR*%\n";
        break;
      }
    }
  }

  struct SaveState {
    Polarity polarity = Polarity::kDark;
    ApertureTransform transform;
    int aperture = 0;
    int interp = 0;
    ArtPoint point;
    bool have_point = false;
    std::vector<Attribute> attrs;
  };

  const Layer& layer_;
  GerberWriteOptions opt_;
  std::string out_;
  std::set<std::string> scaled_;
  SaveState state_;
};

}  // namespace

std::string WriteGerber(const Layer& layer, const GerberWriteOptions& options) {
  Writer w(layer, options);
  return w.Run();
}

}  // namespace qvis
