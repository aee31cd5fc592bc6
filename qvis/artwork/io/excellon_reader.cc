#include "qvis/artwork/io/excellon_reader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

namespace qvis {

namespace {

struct ParseFailure {
  std::size_t offset;
  std::string text;
};

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

class ExcellonParser {
 public:
  ExcellonParser(std::string_view text, Layer* layer, const ReadLimits& limits)
      : text_(text), layer_(layer), limits_(limits), lines_(text) {}

  ReadResult Run() {
    ReadResult r;
    layer_->kind = LayerKind::kDrill;
    layer_->units = Units::kInch;
    layer_->file_function = "Plated,1,2,PTH";
    try {
      std::size_t pos = 0;
      while (pos < text_.size() && !ended_) {
        std::size_t eol = text_.find('\n', pos);
        if (eol == std::string_view::npos) eol = text_.size();
        std::string_view line = text_.substr(pos, eol - pos);
        while (!line.empty() && (line.back() == '\r' || line.back() == ' ' || line.back() == '\t')) {
          line.remove_suffix(1);
        }
        std::size_t lead = 0;
        while (lead < line.size() && (line[lead] == ' ' || line[lead] == '\t')) ++lead;
        Line(line.substr(lead), pos + lead);
        pos = eol + 1;
      }
      if (!ended_) Warn(text_.size(), "the file does not end with M30");
      r.ok = true;
    } catch (const ParseFailure& f) {
      r.error.text = f.text;
      LineCounter lc(text_);
      lc.Locate(f.offset, &r.error.line, &r.error.column);
    }
    r.warnings = std::move(warnings_);
    return r;
  }

 private:
  [[noreturn]] void Fail(std::size_t at, std::string text) { throw ParseFailure{at, std::move(text)}; }

  void Warn(std::size_t at, const std::string& text) {
    if (warnings_.size() >= limits_.max_warnings) return;
    for (const ReadMessage& w : warnings_) {
      if (w.text == text) return;
    }
    ReadMessage m;
    m.text = text;
    lines_.Locate(at, &m.line, &m.column);
    warnings_.push_back(std::move(m));
  }

  static bool StartsWith(std::string_view s, std::string_view p) { return s.substr(0, p.size()) == p; }

  Coord UnitNm() const { return metric_ ? kNmPerMm : kNmPerInch; }

  void Units(std::string_view s, std::size_t at) {
    metric_ = StartsWith(s, "METRIC");
    layer_->units = metric_ ? Units::kMillimetre : Units::kInch;
    int_digits_ = metric_ ? 3 : 2;
    dec_digits_ = metric_ ? 3 : 4;
    std::size_t i = s.find(',');
    while (i != std::string_view::npos) {
      const std::size_t j = s.find(',', i + 1);
      std::string_view f = s.substr(i + 1, j == std::string_view::npos ? s.npos : j - i - 1);
      if (f == "LZ") leading_kept_ = true;
      else if (f == "TZ") leading_kept_ = false;
      else if (!f.empty() && f.find_first_not_of("0.") == std::string_view::npos) {
        const std::size_t dot = f.find('.');
        if (dot == std::string_view::npos) Fail(at + i + 1, "a format such as 000.000");
        int_digits_ = static_cast<int>(dot);
        dec_digits_ = static_cast<int>(f.size() - dot - 1);
      } else {
        Fail(at + i + 1, "LZ, TZ or a format such as 000.000");
      }
      i = j;
    }
    if (int_digits_ > 9 || dec_digits_ > 9) Fail(at, "at most 9 integer and 9 decimal digits");
  }

  double Decimal(std::string_view s, std::size_t at, const char* what) {
    double v = 0;
    const char* b = s.data();
    if (!s.empty() && *b == '+') ++b;
    const auto r = std::from_chars(b, s.data() + s.size(), v);
    if (b == s.data() + s.size() || r.ec != std::errc() || r.ptr != s.data() + s.size() ||
        !std::isfinite(v) || std::fabs(v) > 1e9) {
      Fail(at, what);
    }
    return v;
  }

  Coord CoordValue(std::string_view s, std::size_t at) {
    if (s.empty()) Fail(at, "a coordinate number");
    if (s.find('.') != std::string_view::npos) {
      return Nm(Decimal(s, at, "a coordinate number"), at);
    }
    bool neg = false;
    std::size_t i = 0;
    if (s[0] == '+' || s[0] == '-') neg = s[i++] == '-';
    std::string_view d = s.substr(i);
    if (d.empty() || d.size() > 18 || d.find_first_not_of("0123456789") != std::string_view::npos) {
      Fail(at, "a coordinate of at most 18 digits");
    }
    std::int64_t v = 0;
    for (char c : d) v = v * 10 + (c - '0');
    // Leading zeros kept: the first int_digits_ digits are the integer part.
    const int dec = leading_kept_ ? static_cast<int>(d.size()) - int_digits_ : dec_digits_;
    static constexpr double kTen[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9,
                                      1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18};
    double value = dec >= 0 && dec <= 18   ? static_cast<double>(v) / kTen[dec]
                   : dec < 0 && dec >= -18 ? static_cast<double>(v) * kTen[-dec]
                                           : static_cast<double>(v) * std::pow(10.0, -dec);
    if (neg) value = -value;
    return Nm(value, at);
  }

  // Nm converts a coordinate in the file's unit, refusing one beyond the largest coordinate.
  Coord Nm(double value, std::size_t at) {
    const double nm = value * static_cast<double>(UnitNm());
    if (!(std::fabs(nm) <= static_cast<double>(kMaxCoord))) Fail(at, "a coordinate within 10^9 mm");
    return static_cast<Coord>(std::llround(nm));
  }

  // Within refuses a point that incremental coordinates or repeats carried past the largest one.
  Coord Within(Coord v, std::size_t at) {
    if (v > kMaxCoord || v < -kMaxCoord) Fail(at, "a coordinate within 10^9 mm");
    return v;
  }

  // Reads letter-number words of a body line: X, Y, I, J, A, G, M, T, R.
  struct Words {
    bool x = false, y = false, i = false, j = false, a = false;
    std::string_view vx, vy, vi, vj, va;
    std::size_t at = 0;
  };

  void Line(std::string_view s, std::size_t at) {
    if (s.empty() || s[0] == ';') return;
    if (header_) return HeaderLine(s, at);
    if (s == "M48") {
      header_ = true;
      return;
    }
    if (s == "M30" || s == "M00") {
      ended_ = true;
      return;
    }
    if (s == "%" || s == "M95") return;
    if (StartsWith(s, "METRIC") || StartsWith(s, "INCH")) return Units(s, at);
    if (s == "M71") return Units("METRIC", at);
    if (s == "M72") return Units("INCH", at);
    if (s == "G90" || s == "G05" || s == "G81") {
      if (s == "G05") routing_ = false;
      return;
    }
    if (s == "G91") {
      Warn(at, "incremental coordinates (G91)");
      incremental_ = true;
      return;
    }
    if (s == "M15") {
      tool_down_ = true;
      return;
    }
    if (s == "M16" || s == "M17") {
      tool_down_ = false;
      return;
    }
    if (s[0] == 'T') return SelectTool(s, at);
    if (s[0] == 'R') return Repeat(s, at);
    Body(s, at);
  }

  void HeaderLine(std::string_view s, std::size_t at) {
    if (s == "%" || s == "M95") {
      header_ = false;
      return;
    }
    if (StartsWith(s, "METRIC") || StartsWith(s, "INCH")) return Units(s, at);
    if (s[0] == 'T' && s.size() > 1 && IsDigit(s[1])) return DefineTool(s, at);
    // FMAT, ICI, VER, ATC, and the rest of the header carry nothing we draw.
  }

  int ToolNumber(std::string_view s, std::size_t at, std::size_t* end) {
    std::size_t i = 1;
    while (i < s.size() && IsDigit(s[i])) ++i;
    if (i == 1 || i > 6) Fail(at + 1, "a tool number");
    int t = 0;
    std::from_chars(s.data() + 1, s.data() + i, t);
    *end = i;
    return t;
  }

  void DefineTool(std::string_view s, std::size_t at) {
    std::size_t i = 0;
    const int t = ToolNumber(s, at, &i);
    const std::size_t c = s.find('C', i);
    if (c == std::string_view::npos) Fail(at + i, "the tool's diameter (C)");
    std::size_t e = c + 1;
    while (e < s.size() && (IsDigit(s[e]) || s[e] == '.')) ++e;
    const double dia = Decimal(s.substr(c + 1, e - c - 1), at + c + 1, "a diameter");
    if (static_cast<int>(layer_->apertures.size()) >= limits_.max_apertures) {
      Fail(at, "fewer tools");
    }
    // The same bound as every Gerber size, so that a drill layer always writes as Gerber.
    const double dia_nm = dia * static_cast<double>(UnitNm());
    if (!(std::fabs(dia_nm) <= static_cast<double>(kMaxCoord))) Fail(at + c + 1, "a diameter below 10^9 mm");
    Aperture ap;
    ap.kind = ApertureKind::kCircle;
    ap.size_x = ap.size_y = static_cast<Coord>(std::llround(dia_nm));
    layer_->apertures[DrillAperture(t)] = ap;
  }

  void SelectTool(std::string_view s, std::size_t at) {
    std::size_t i = 0;
    const int t = ToolNumber(s, at, &i);
    if (s.find('C', i) != std::string_view::npos) {
      Warn(at, "tool defined outside the header");
      DefineTool(s, at);
    }
    if (t == 0) {
      tool_ = 0;
      return;
    }
    if (!layer_->apertures.count(DrillAperture(t))) Fail(at, "a tool defined in the header");
    tool_ = t;
  }

  void ParseWords(std::string_view s, std::size_t at, Words* w, int* g) {
    std::size_t i = 0;
    while (i < s.size()) {
      const char c = s[i];
      const std::size_t b = ++i;
      while (i < s.size() && (IsDigit(s[i]) || s[i] == '.' || s[i] == '-' || s[i] == '+')) ++i;
      std::string_view v = s.substr(b, i - b);
      switch (c) {
        case 'X': w->x = true, w->vx = v; break;
        case 'Y': w->y = true, w->vy = v; break;
        case 'I': w->i = true, w->vi = v; break;
        case 'J': w->j = true, w->vj = v; break;
        case 'A': w->a = true, w->va = v; break;
        case 'G': {
          int code = -1;
          std::from_chars(v.data(), v.data() + v.size(), code);
          *g = code;
          return;  // the rest belongs to the G code (G85's end point)
        }
        case 'M':
        case 'F':
        case 'S':
          break;
        default:
          Fail(at + b - 1, "X, Y, I, J, A, G or M");
      }
    }
  }

  ArtPoint Point(const Words& w, std::size_t at) {
    ArtPoint p = incremental_ ? ArtPoint{} : at_;
    if (w.x) p.x = CoordValue(w.vx, at);
    if (w.y) p.y = CoordValue(w.vy, at);
    if (incremental_) p = {Within(at_.x + p.x, at), Within(at_.y + p.y, at)};
    return p;
  }

  ArtObject& Add(ObjectKind kind, std::size_t at) {
    if (tool_ == 0) Fail(at, "a tool selected (Tn) before the first hole");
    if (++count_ > limits_.max_objects) Fail(at, "fewer holes");
    ArtObject& o = layer_->objects.emplace_back();
    o.kind = kind;
    o.aperture = DrillAperture(tool_);
    return o;
  }

  void Body(std::string_view s, std::size_t at) {
    int g = -1;
    Words w;
    std::size_t gpos = s.find('G');
    ParseWords(s, at, &w, &g);
    if (g == 0 || g == 1 || g == 2 || g == 3) {
      Words rest;
      int g2 = -1;
      std::size_t b = gpos + 1;
      while (b < s.size() && IsDigit(s[b])) ++b;
      ParseWords(s.substr(b), at + b, &rest, &g2);
      return Route(g, rest, at);
    }
    const ArtPoint p = Point(w, at);
    if (g == 85) {
      Words end;
      int g2 = -1;
      std::size_t b = gpos + 3;
      ParseWords(s.substr(b), at + b, &end, &g2);
      at_ = p;
      const ArtPoint q = Point(end, at + b);
      ArtObject& o = Add(ObjectKind::kTrack, at);
      o.start = p;
      o.end = q;
      at_ = q;
      return;
    }
    if (g >= 0) {
      Warn(at, "G" + std::to_string(g) + " ignored");
      return;
    }
    if (!w.x && !w.y) return;
    if (routing_) {
      // In route mode a line of bare coordinates repeats the last G00-G03.
      return Route(route_g_, w, at);
    }
    at_ = p;
    Add(ObjectKind::kFlash, at).end = p;
  }

  void Route(int g, const Words& w, std::size_t at) {
    routing_ = true;
    route_g_ = g;
    const ArtPoint p = Point(w, at);
    if (g == 0 || !tool_down_) {
      at_ = p;
      return;
    }
    if (g == 1) {
      ArtObject& o = Add(ObjectKind::kTrack, at);
      o.start = at_;
      o.end = p;
    } else {
      ArtObject& o = Add(ObjectKind::kArc, at);
      o.start = at_;
      o.end = p;
      o.direction = g == 2 ? ArcDirection::kClockwise : ArcDirection::kCounterClockwise;
      if (w.a) {
        // Radius given: the centre on the side that makes the shorter arc.
        const double r = Decimal(w.va, at, "a radius") * static_cast<double>(UnitNm());
        const double mx = (at_.x + p.x) / 2.0, my = (at_.y + p.y) / 2.0;
        const double dx = static_cast<double>(p.x - at_.x), dy = static_cast<double>(p.y - at_.y);
        const double half = std::hypot(dx, dy) / 2;
        const double h = half > 0 && r > half ? std::sqrt(r * r - half * half) : 0.0;
        const double side = g == 2 ? -1.0 : 1.0;
        const double nx = half > 0 ? -dy / (2 * half) : 0, ny = half > 0 ? dx / (2 * half) : 0;
        o.centre = {static_cast<Coord>(std::llround(mx + side * h * nx)),
                    static_cast<Coord>(std::llround(my + side * h * ny))};
      } else {
        o.centre = {at_.x + (w.i ? CoordValue(w.vi, at) : 0), at_.y + (w.j ? CoordValue(w.vj, at) : 0)};
      }
    }
    at_ = p;
  }

  void Repeat(std::string_view s, std::size_t at) {
    std::size_t i = 1;
    while (i < s.size() && IsDigit(s[i])) ++i;
    if (i == 1 || i > 8) Fail(at + 1, "a repeat count");
    int n = 0;
    std::from_chars(s.data() + 1, s.data() + i, n);
    Words w;
    int g = -1;
    ParseWords(s.substr(i), at + i, &w, &g);
    const Coord dx = w.x ? CoordValue(w.vx, at) : 0, dy = w.y ? CoordValue(w.vy, at) : 0;
    if (count_ + n > limits_.max_objects) Fail(at, "fewer holes");
    for (int k = 0; k < n; ++k) {
      at_ = {Within(at_.x + dx, at), Within(at_.y + dy, at)};
      Add(ObjectKind::kFlash, at).end = at_;
    }
  }

  std::string_view text_;
  Layer* layer_;
  ReadLimits limits_;
  LineCounter lines_;
  std::vector<ReadMessage> warnings_;
  bool header_ = false;
  bool ended_ = false;
  bool metric_ = false;
  bool leading_kept_ = false;
  int int_digits_ = 2;
  int dec_digits_ = 4;
  bool incremental_ = false;
  bool routing_ = false;
  bool tool_down_ = false;
  int route_g_ = 0;
  int tool_ = 0;
  ArtPoint at_;
  std::int64_t count_ = 0;
};

}  // namespace

ReadResult ReadExcellon(std::string_view text, Layer* layer, const ReadLimits& limits) {
  *layer = Layer{};
  // Room for the holes up front (a hole is a line of at least four bytes) saves moving every
  // object each time the table grows.
  const std::size_t lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
  layer->objects.reserve(std::min({lines, text.size() / 4,
                                   static_cast<std::size_t>(std::max<std::int64_t>(0, limits.max_objects))}));
  ExcellonParser p(text, layer, limits);
  return p.Run();
}

}  // namespace qvis
