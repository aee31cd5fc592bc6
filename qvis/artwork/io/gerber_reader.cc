#include "qvis/artwork/io/gerber_reader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <string>

#include "qvis/artwork/shapes.h"

namespace qvis {

namespace {

__extension__ typedef __int128 i128;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

std::string_view Trim(std::string_view s) {
  while (!s.empty() && IsSpace(s.front())) s.remove_prefix(1);
  while (!s.empty() && IsSpace(s.back())) s.remove_suffix(1);
  return s;
}

// Thrown inside the reader only; turned into the result's error.
struct ParseFailure {
  std::size_t offset;
  std::string text;
};

enum class Interp { kLinear, kClockwise, kCounterClockwise };
enum class Quadrant { kUnset, kSingle, kMulti };
enum class ZeroMode { kLeading, kTrailing, kNone };

// The image placement of the deprecated AS, MI, OF, SF and IR commands.
struct ImageTransform {
  bool swap = false;  // ASAYBX: the file's X is the image's Y
  bool mirror_a = false, mirror_b = false;
  double offset_a = 0, offset_b = 0;  // nanometres
  double scale_a = 1, scale_b = 1;
  int quarter_turns = 0;  // counter-clockwise

  bool IsIdentity() const {
    return !swap && !mirror_a && !mirror_b && offset_a == 0 && offset_b == 0 && scale_a == 1 &&
           scale_b == 1 && quarter_turns == 0;
  }
  bool Mirrors() const { return swap != (mirror_a != mirror_b); }
  Affine ToAffine() const {
    Affine m = swap ? Affine{0, 1, 1, 0, 0, 0} : Affine{};
    m = Affine{mirror_a ? -1.0 : 1.0, 0, 0, mirror_b ? -1.0 : 1.0, 0, 0}.Then(m);
    m = Affine::Translate(offset_a, offset_b).Then(m);
    m = Affine{scale_a, 0, 0, scale_b, 0, 0}.Then(m);
    static constexpr double kCos[4] = {1, 0, -1, 0};
    static constexpr double kSin[4] = {0, 1, 0, -1};
    const int q = quarter_turns & 3;
    return Affine{kCos[q], kSin[q], -kSin[q], kCos[q], 0, 0}.Then(m);
  }
};

struct Frame {
  bool is_block = false;  // AB (else SR)
  int code = 0;
  int repeat_x = 1, repeat_y = 1;
  Coord step_x = 0, step_y = 0;
  std::vector<ArtObject> objects;
  std::int64_t cost = 0;
};

class GerberParser {
 public:
  GerberParser(std::string_view text, Layer* layer, const ReadLimits& limits)
      : text_(text), layer_(layer), limits_(limits), lines_(text) {}

  ReadResult Run() {
    ReadResult result;
    try {
      Parse();
      result.ok = true;
    } catch (const ParseFailure& f) {
      result.error.text = f.text;
      LineCounter lc(text_);
      lc.Locate(f.offset, &result.error.line, &result.error.column);
    }
    result.warnings = std::move(warnings_);
    return result;
  }

 private:
  [[noreturn]] void Fail(std::size_t offset, std::string text) {
    throw ParseFailure{offset, std::move(text)};
  }

  void Warn(std::size_t offset, const std::string& text) {
    if (warnings_.size() >= limits_.max_warnings) return;
    for (const ReadMessage& w : warnings_) {
      if (w.text == text) return;
    }
    ReadMessage m;
    m.text = text;
    lines_.Locate(offset, &m.line, &m.column);
    warnings_.push_back(std::move(m));
  }

  void Parse() {
    const std::size_t n = text_.size();
    while (pos_ < n) {
      if (IsSpace(text_[pos_])) {
        ++pos_;
        continue;
      }
      if (text_[pos_] == '%') {
        ++pos_;
        ParseExtended();
      } else {
        const std::size_t start = pos_;
        std::string_view block = ReadBlock();
        DataBlock(block, start);
        if (ended_) break;
      }
    }
    if (!frames_.empty() && !frames_.back().is_block) {
      Warn(text_.size(), "step and repeat not closed with %SR*% at the end of the file");
      CloseRepeat(text_.size());
    }
    layer_->units = units_;
    if (!frames_.empty()) {
      Fail(text_.size(), frames_.back().is_block ? "'%AB*%' closing the aperture block"
                                                 : "'%SR*%' closing the step and repeat");
    }
    if (in_region_) Fail(text_.size(), "'G37*' closing the region");
    if (!ended_) Warn(text_.size(), "the file does not end with M02");
  }

  // The text up to the next '*' with line breaks removed; pos_ moves past the '*'.
  std::string_view ReadBlock() {
    const std::size_t start = pos_;
    const std::size_t star = text_.find('*', pos_);
    if (star == std::string_view::npos) Fail(text_.size(), "'*' ending the command");
    if (!in_extended_) {
      // Only the command itself is searched: looking for the next '%' in the whole rest of the
      // file made reading quadratic in the length of a run of data blocks.
      const std::size_t pct = text_.substr(start, star - start).find('%');
      if (pct != std::string_view::npos) Fail(start + pct, "'*' ending the command before '%'");
    }
    if (star - start > limits_.max_block_bytes) Fail(start, "a command shorter than 1 MB");
    pos_ = star + 1;
    std::string_view raw = text_.substr(start, star - start);
    if (raw.find_first_of("\r\n") == std::string_view::npos) return Trim(raw);
    block_buf_.clear();
    for (char c : raw) {
      if (c != '\r' && c != '\n') block_buf_.push_back(c);
    }
    return Trim(block_buf_);
  }

  void ParseExtended() {
    in_extended_ = true;
    bool first = true;
    std::size_t cmd_start = pos_;
    for (;;) {
      while (pos_ < text_.size() && IsSpace(text_[pos_])) ++pos_;
      if (pos_ >= text_.size()) Fail(text_.size(), "'%' closing the extended command");
      if (text_[pos_] == '%') {
        ++pos_;
        if (first) Warn(cmd_start, "empty extended command");
        break;
      }
      const std::size_t start = pos_;
      const std::size_t pct = text_.find('%', pos_);
      const std::size_t star = text_.find('*', pos_);
      if (star == std::string_view::npos || (pct != std::string_view::npos && pct < star)) {
        Fail(pct == std::string_view::npos ? text_.size() : pct, "'*' ending the command");
      }
      std::string_view block = ReadBlock();
      if (block.size() >= 2 && block.substr(0, 2) == "AM") {
        ParseMacro(block, start);
        first = false;
        continue;
      }
      ExtendedBlock(block, start);
      first = false;
    }
    in_extended_ = false;
  }

  // ---- numbers ----

  double ParseDecimal(std::string_view s, std::size_t offset, const char* what) {
    s = Trim(s);
    double v = 0;
    const char* b = s.data();
    const char* e = s.data() + s.size();
    if (b != e && *b == '+') ++b;
    const auto r = std::from_chars(b, e, v);
    if (b == e || r.ec != std::errc() || r.ptr != e || !std::isfinite(v)) Fail(offset, what);
    return v;
  }

  long ParseInt(std::string_view s, std::size_t offset, const char* what, long lo, long hi) {
    s = Trim(s);
    long v = 0;
    const auto r = std::from_chars(s.data(), s.data() + s.size(), v);
    if (s.empty() || r.ec != std::errc() || r.ptr != s.data() + s.size() || v < lo || v > hi) {
      Fail(offset, what);
    }
    return v;
  }

  Coord UnitNm() const { return units_ == Units::kInch ? kNmPerInch : kNmPerMm; }

  Coord LengthNm(double v, std::size_t offset) {
    const double nm = v * static_cast<double>(UnitNm());
    if (!(std::fabs(nm) <= static_cast<double>(kMaxCoord))) Fail(offset, "a size below 10^9 mm");
    return static_cast<Coord>(std::llround(nm));
  }

  // Within refuses a point that incremental coordinates carried past the largest coordinate.
  Coord Within(Coord v, std::size_t offset) {
    if (v > kMaxCoord || v < -kMaxCoord) Fail(offset, "a coordinate within 10^9 mm");
    return v;
  }

  void NeedUnits(std::size_t offset) {
    if (!units_set_) {
      Warn(offset, "no MO command before the first dimension; inches assumed");
      units_set_ = true;
    }
  }

  // A coordinate word value at text[b, e) for axis `axis` (0: x, 1: y) in the FS format.
  Coord ParseCoordinate(std::string_view s, std::size_t offset, int axis) {
    NeedUnits(offset);
    if (!format_set_) {
      Warn(offset, "no FS command before the first coordinate; leading zeros omitted, 6 "
                   "decimals assumed");
      format_set_ = true;
    }
    bool neg = false;
    std::size_t i = 0;
    if (i < s.size() && (s[i] == '+' || s[i] == '-')) neg = s[i++] == '-';
    if (s.find('.') != std::string_view::npos) {
      Warn(offset, "coordinate with a decimal point");
      double v = ParseDecimal(s.substr(i), offset, "a coordinate number");
      return LengthNm(neg ? -v : v, offset);
    }
    std::string_view digits = s.substr(i);
    if (digits.empty()) Fail(offset, "digits of a coordinate");
    for (char c : digits) {
      if (!IsDigit(c)) Fail(offset, "digits of a coordinate");
    }
    const int int_digits = format_int_[axis];
    const int dec = format_dec_[axis];
    if (digits.size() > 18) Fail(offset, "a coordinate of at most 18 digits");
    std::int64_t v = 0;
    for (char c : digits) v = v * 10 + (c - '0');
    if (zero_mode_ == ZeroMode::kTrailing) {
      const int total = int_digits + dec;
      for (int k = static_cast<int>(digits.size()); k < total; ++k) {
        if (v > 100000000000000000LL) Fail(offset, "a coordinate of at most 18 digits");
        v *= 10;
      }
    }
    i128 pow = 1;
    for (int k = 0; k < dec; ++k) pow *= 10;
    i128 nm = i128{v} * UnitNm();
    // Round half away from zero.
    i128 q = (nm * 2 + pow) / (pow * 2);
    if (q > kMaxCoord) Fail(offset, "a coordinate within 10^9 mm");
    const Coord r = static_cast<Coord>(q);
    return neg ? -r : r;
  }

  // ---- data blocks ----

  void DataBlock(std::string_view block, std::size_t offset) {
    if (block.empty()) return;
    if (block.size() >= 3 && block[0] == 'G' && block.substr(0, 3) == "G04") return;
    if (block.size() >= 2 && block[0] == 'G' && block[1] == '4' &&
        (block.size() == 2 || !IsDigit(block[2]))) {
      return;  // G4 comment
    }
    bool have_x = false, have_y = false, have_i = false, have_j = false;
    std::string_view vx, vy, vi, vj;
    int d = -1;
    std::size_t i = 0;
    while (i < block.size()) {
      const char c = block[i];
      if (IsSpace(c)) {
        ++i;
        continue;
      }
      const std::size_t word = i++;
      std::size_t b = i;
      if (c == 'X' || c == 'Y' || c == 'I' || c == 'J') {
        if (i < block.size() && (block[i] == '+' || block[i] == '-')) ++i;
        while (i < block.size() && (IsDigit(block[i]) || block[i] == '.')) ++i;
        std::string_view v = block.substr(b, i - b);
        if (v.empty() || v == "+" || v == "-") Fail(offset + word + 1, "a number after the letter");
        if (c == 'X') have_x = true, vx = v;
        if (c == 'Y') have_y = true, vy = v;
        if (c == 'I') have_i = true, vi = v;
        if (c == 'J') have_j = true, vj = v;
        continue;
      }
      if (c == 'G' || c == 'D' || c == 'M') {
        while (i < block.size() && IsDigit(block[i])) ++i;
        if (i == b) Fail(offset + i, "a number after the letter");
        const long code = ParseInt(block.substr(b, i - b), offset + b, "a code number", 0,
                                   2147483647L);
        if (c == 'G') {
          GCode(static_cast<int>(code), offset + word);
          if (code == 4) return;
        } else if (c == 'M') {
          if (code == 2 || code == 0 || code == 1) {
            if (code != 2) Warn(offset + word, "M00/M01 read as the end of the file (M02)");
            ended_ = true;
            return;
          }
          Fail(offset + word, "M02 (the only M code)");
        } else {
          d = static_cast<int>(code);
        }
        continue;
      }
      Fail(offset + word, "a G, D, M code or an X, Y, I, J coordinate");
    }
    const bool coords = have_x || have_y || have_i || have_j;
    if (d >= 10) {
      if (coords) Fail(offset, "no coordinates with an aperture selection");
      if (layer_->apertures.find(d) == layer_->apertures.end()) {
        Fail(offset, "an aperture defined with %ADD" + std::to_string(d) + "...*% before use");
      }
      aperture_ = d;
      return;
    }
    if (d < 0 && !coords) return;
    if (d < 0) {
      Warn(offset, "coordinates without D01/D02/D03 take the previous operation");
      d = last_op_ > 0 ? last_op_ : 1;
    }
    if (d != 1 && d != 2 && d != 3) Fail(offset, "D01, D02, D03 or an aperture number from D10");
    last_op_ = d;
    ArtPoint next = current_;
    Coord ci = 0, cj = 0;
    if (have_x) next.x = Within(ParseCoordinate(vx, offset, 0) + (incremental_ ? current_.x : 0), offset);
    if (have_y) next.y = Within(ParseCoordinate(vy, offset, 1) + (incremental_ ? current_.y : 0), offset);
    if (have_i) ci = ParseCoordinate(vi, offset, 0);
    if (have_j) cj = ParseCoordinate(vj, offset, 1);
    if (d == 1) Interpolate(next, ci, cj, offset);
    if (d == 2) Move();
    if (d == 3) Flash(next, offset);
    current_ = next;
  }

  void GCode(int code, std::size_t offset) {
    switch (code) {
      case 1: interp_ = Interp::kLinear; break;
      case 2: interp_ = Interp::kClockwise; break;
      case 3: interp_ = Interp::kCounterClockwise; break;
      case 4: break;
      case 74: quadrant_ = Quadrant::kSingle; break;
      case 75: quadrant_ = Quadrant::kMulti; break;
      case 36:
        if (in_region_) Fail(offset, "G37 before another G36");
        in_region_ = true;
        contour_open_ = false;
        break;
      case 37:
        if (!in_region_) Fail(offset, "G36 before G37");
        CloseContour(offset);
        in_region_ = false;
        break;
      case 54:
        Warn(offset, "G54 before an aperture selection is deprecated");
        break;
      case 55:
        Warn(offset, "G55 before a flash is deprecated");
        break;
      case 70:
        Warn(offset, "G70 is deprecated; read as %MOIN*%");
        units_ = Units::kInch;
        units_set_ = true;
        break;
      case 71:
        Warn(offset, "G71 is deprecated; read as %MOMM*%");
        units_ = Units::kMillimetre;
        units_set_ = true;
        break;
      case 90:
        Warn(offset, "G90 is deprecated");
        incremental_ = false;
        break;
      case 91:
        Warn(offset, "G91 (incremental coordinates) is deprecated");
        incremental_ = true;
        break;
      default:
        Warn(offset, "unknown G code G" + std::to_string(code) + " ignored");
        break;
    }
  }

  std::vector<ArtObject>& Target() {
    return frames_.empty() ? layer_->objects : frames_.back().objects;
  }

  void AddCost(std::int64_t cost, std::size_t offset) {
    std::int64_t& c = frames_.empty() ? top_cost_ : frames_.back().cost;
    c += cost;
    if (c > limits_.max_expanded) {
      Fail(offset, "fewer than " + std::to_string(limits_.max_expanded) +
                       " objects once blocks and repeats are expanded");
    }
  }

  ArtObject& NewObject(ObjectKind kind, std::size_t offset, std::int64_t cost = 1) {
    if (++stored_ > limits_.max_objects) {
      Fail(offset, "at most " + std::to_string(limits_.max_objects) + " objects");
    }
    AddCost(cost, offset);
    std::vector<ArtObject>& t = Target();
    ArtObject& o = t.emplace_back();
    o.kind = kind;
    o.polarity = polarity_;
    o.transform = PlaceTransform();
    o.aperture = aperture_;
    for (const auto& [name, values] : object_attrs_) o.attributes.push_back({name, values});
    return o;
  }

  void NeedAperture(std::size_t offset) {
    if (aperture_ == 0) Fail(offset, "an aperture selected (Dnn) before D01 or D03");
  }

  // Centre of an arc from the I, J offsets in the quadrant mode; false for a single-quadrant
  // arc that returns to its start (no sweep at all).
  ArtPoint ArcCentre(ArtPoint s, ArtPoint e, Coord ci, Coord cj, ArcDirection dir) {
    if (quadrant_ == Quadrant::kMulti) return {s.x + ci, s.y + cj};
    const Coord ai = ci < 0 ? -ci : ci, aj = cj < 0 ? -cj : cj;
    ArtPoint best{s.x + ai, s.y + aj};
    double best_err = 1e300;
    for (int sx : {1, -1}) {
      for (int sy : {1, -1}) {
        const ArtPoint c{s.x + sx * ai, s.y + sy * aj};
        const double sweep = ArcSweep(s, e, c, dir);
        if (sweep > std::numbers::pi / 2 + 1e-6) continue;
        const double r0 = std::hypot(double(s.x - c.x), double(s.y - c.y));
        const double r1 = std::hypot(double(e.x - c.x), double(e.y - c.y));
        const double err = std::fabs(r0 - r1);
        if (err < best_err) {
          best_err = err;
          best = c;
        }
      }
    }
    return best;
  }

  void Interpolate(ArtPoint next, Coord ci, Coord cj, std::size_t offset) {
    const bool arc = interp_ != Interp::kLinear;
    const ArcDirection dir =
        interp_ == Interp::kClockwise ? ArcDirection::kClockwise : ArcDirection::kCounterClockwise;
    if (arc && quadrant_ == Quadrant::kUnset) {
      Warn(offset, "arc before G74/G75; single quadrant mode assumed");
      quadrant_ = Quadrant::kSingle;
    }
    // A single quadrant arc that ends where it starts has no sweep: a zero-length line.
    const bool degenerate = arc && quadrant_ == Quadrant::kSingle && next == current_;
    if (in_region_) {
      if (!contour_open_) StartContour(current_);
      if (++stored_ > limits_.max_objects) Fail(offset, "fewer contour segments");
      ContourSegment seg;
      seg.end = Place(next);
      if (arc && !degenerate) {
        seg.is_arc = true;
        seg.direction = PlaceDirection(dir);
        seg.centre = Place(ArcCentre(current_, next, ci, cj, dir));
      }
      contour_.segments.push_back(seg);
      return;
    }
    NeedAperture(offset);
    CheckDrawAperture(offset, arc && !degenerate);
    ArtObject& o = NewObject(arc && !degenerate ? ObjectKind::kArc : ObjectKind::kTrack, offset);
    o.start = Place(current_);
    o.end = Place(next);
    if (arc && !degenerate) {
      o.direction = PlaceDirection(dir);
      o.centre = Place(ArcCentre(current_, next, ci, cj, dir));
    }
  }

  void CheckDrawAperture(std::size_t offset, bool arc) {
    const Aperture& ap = layer_->apertures[aperture_];
    if (ap.kind == ApertureKind::kCircle) return;
    if (ap.kind == ApertureKind::kRectangle && !arc) return;
    Warn(offset, arc ? "arc drawn with an aperture that is not a circle"
                     : "line drawn with an aperture that is not a circle or a rectangle");
  }

  void StartContour(ArtPoint at) {
    contour_ = Contour{};
    contour_.start = Place(at);
    contour_open_ = true;
  }

  void CloseContour(std::size_t offset) {
    if (!contour_open_) return;
    contour_open_ = false;
    if (contour_.segments.empty()) return;
    if (!(contour_.segments.back().end == contour_.start)) {
      Warn(offset, "region contour not closed; closed with a straight line");
      ContourSegment seg;
      seg.end = contour_.start;
      contour_.segments.push_back(seg);
    }
    ArtObject& o = NewObject(ObjectKind::kRegion, offset);
    o.aperture = 0;
    o.transform = ApertureTransform{};
    o.contour = std::move(contour_);
    contour_ = Contour{};
  }

  // D02 ends the contour being built; the next D01 starts one at the new point.
  void Move() {
    if (in_region_) CloseContour(pos_);
  }

  void Flash(ArtPoint at, std::size_t offset) {
    if (in_region_) Fail(offset, "D01 or D02 inside a region (D03 is not allowed there)");
    NeedAperture(offset);
    const Aperture& ap = layer_->apertures[aperture_];
    std::int64_t cost = 1;
    if (ap.kind == ApertureKind::kBlock) cost = std::max<std::int64_t>(1, block_cost_[aperture_]);
    ArtObject& o = NewObject(ObjectKind::kFlash, offset, cost);
    o.end = Place(at);
  }

  // ---- extended commands ----

  void ExtendedBlock(std::string_view block, std::size_t offset) {
    if (block.size() < 2) Fail(offset, "a two-letter command");
    const std::string_view code = block.substr(0, 2);
    const std::string_view rest = block.substr(2);
    const std::size_t at = offset + 2;
    if (code == "FS") return CoordinateFormat(rest, at);
    if (code == "MO") {
      if (rest == "MM") units_ = Units::kMillimetre;
      else if (rest == "IN") units_ = Units::kInch;
      else Fail(at, "MM or IN");
      units_set_ = true;
      layer_->units = units_;
      return;
    }
    if (code == "AD") return ApertureDefinition(rest, at);
    if (code == "AB") return ApertureBlock(rest, at);
    if (code == "SR") return StepRepeat(rest, at);
    if (code == "LP") {
      if (rest == "D") polarity_ = Polarity::kDark;
      else if (rest == "C") polarity_ = Polarity::kClear;
      else Fail(at, "D or C");
      return;
    }
    if (code == "LM") {
      if (rest == "N") transform_.mirror_x = transform_.mirror_y = false;
      else if (rest == "X") transform_.mirror_x = true, transform_.mirror_y = false;
      else if (rest == "Y") transform_.mirror_x = false, transform_.mirror_y = true;
      else if (rest == "XY") transform_.mirror_x = transform_.mirror_y = true;
      else Fail(at, "N, X, Y or XY");
      return;
    }
    if (code == "LR") {
      transform_.rotation = ParseDecimal(rest, at, "a rotation in degrees");
      return;
    }
    if (code == "LS") {
      const double s = ParseDecimal(rest, at, "a scale factor");
      if (!(s > 0) || s > 1e6) Fail(at, "a scale factor above 0");
      transform_.scale = s;
      return;
    }
    if (code == "TF" || code == "TA" || code == "TO") return AttributeCommand(code, rest, at);
    if (code == "TD") {
      std::string name(Trim(rest));
      if (name.empty()) {
        object_attrs_.clear();
        aperture_attrs_.clear();
      } else {
        object_attrs_.erase(name);
        aperture_attrs_.erase(name);
      }
      return;
    }
    if (code == "IP") {
      if (rest == "NEG") layer_->negative = true;
      else if (rest == "POS") layer_->negative = false;
      else Fail(at, "POS or NEG");
      Warn(offset, rest == "NEG" ? "IPNEG (negative image) is deprecated; the layer is drawn "
                                   "dark with its dark objects cleared"
                                 : "IP is deprecated");
      return;
    }
    if (code == "IN" || code == "LN") {
      Warn(offset, std::string(code) + " is deprecated");
      if (code == "IN" && layer_->name.empty()) layer_->name = std::string(rest);
      return;
    }
    if (code == "MI" || code == "OF" || code == "SF" || code == "AS" || code == "IR") {
      return ImageCommand(code, rest, offset);
    }
    if (code == "IJ" || code == "IO" || code == "KO" || code == "SM") {
      Warn(offset, std::string(code) + " is deprecated and ignored");
      return;
    }
    if (code == "G0" || code == "G4") return;  // comment written as an extended command
    Fail(offset, "an extended command (FS, MO, AD, AM, AB, SR, LP, LM, LR, LS, TF, TA, TO, TD)");
  }

  // The deprecated image commands place the whole image: a point p of the file lands at
  //   IR( SF( OF( MI( AS(p) ) ) ) )
  // (axes swapped, then mirrored, offset, scaled, and rotated about the origin last), which is
  // the order in which the reference viewers combine them. Apertures turn, mirror and scale
  // with the image. Each command applies to what follows it.
  void ImageCommand(std::string_view code, std::string_view rest, std::size_t offset) {
    const std::size_t at = offset + 2;
    Warn(offset, std::string(code) + " is deprecated; applied to the image");
    if (code == "AS") {
      if (rest == "AXBY") image_.swap = false;
      else if (rest == "AYBX") image_.swap = true;
      else Fail(at, "AXBY or AYBX");
    } else if (code == "IR") {
      const long r = ParseInt(rest, at, "a rotation of 0, 90, 180 or 270", 0, 270);
      if (r % 90 != 0) Fail(at, "a rotation of 0, 90, 180 or 270");
      image_.quarter_turns = static_cast<int>(r / 90);
    } else {
      // MI, OF and SF take an A and a B value, each optional.
      double v[2] = {code == "SF" ? 1.0 : 0.0, code == "SF" ? 1.0 : 0.0};
      std::size_t i = 0;
      while (i < rest.size()) {
        const char c = rest[i];
        if (c != 'A' && c != 'B') Fail(at + i, "A or B");
        const std::size_t b = ++i;
        while (i < rest.size() && rest[i] != 'A' && rest[i] != 'B') ++i;
        v[c == 'B'] = ParseDecimal(rest.substr(b, i - b), at + b, "a number after A or B");
      }
      if (code == "MI") {
        for (double m : v) {
          if (m != 0 && m != 1) Fail(at, "0 or 1 after A and B");
        }
        image_.mirror_a = v[0] == 1;
        image_.mirror_b = v[1] == 1;
      } else if (code == "OF") {
        NeedUnits(offset);
        image_.offset_a = static_cast<double>(LengthNm(v[0], at));
        image_.offset_b = static_cast<double>(LengthNm(v[1], at));
      } else {
        for (double f : v) {
          if (!(f > 0) || f > 1e6) Fail(at, "scale factors above 0");
        }
        if (v[0] != v[1]) {
          Warn(offset, "SF with different A and B factors: apertures are scaled by their "
                       "geometric mean");
        }
        image_.scale_a = v[0];
        image_.scale_b = v[1];
      }
    }
    image_affine_ = image_.ToAffine();
    image_identity_ = image_.IsIdentity();
  }

  bool InBlock() const {
    for (const Frame& f : frames_) {
      if (f.is_block) return true;
    }
    return false;
  }

  // Where a point of the file lands in the image; inside an aperture block the flash that
  // places the block applies the image transform instead.
  ArtPoint Place(ArtPoint p) {
    if (image_identity_ || in_block_) return p;
    const DPoint q = image_affine_.Apply({static_cast<double>(p.x), static_cast<double>(p.y)});
    constexpr double kMax = static_cast<double>(kMaxCoord);
    if (!(std::fabs(q.x) <= kMax) || !(std::fabs(q.y) <= kMax)) {
      Fail(pos_, "coordinates within 10^9 mm once the image is scaled and offset");
    }
    return {static_cast<Coord>(std::llround(q.x)), static_cast<Coord>(std::llround(q.y))};
  }

  ArcDirection PlaceDirection(ArcDirection d) const {
    if (image_identity_ || in_block_ || !image_.Mirrors()) return d;
    return d == ArcDirection::kClockwise ? ArcDirection::kCounterClockwise
                                         : ArcDirection::kClockwise;
  }

  // The aperture transform of a new object: the current LM/LR/LS, then the image's turn, mirror
  // and scale.
  ApertureTransform PlaceTransform() const {
    if (image_identity_ || in_block_) return transform_;
    Affine lin = image_affine_;
    lin.tx = lin.ty = 0;
    if (image_.scale_a != image_.scale_b) {
      // A non-uniform scale cannot be carried by an aperture: scale it by the mean.
      // The image is L = IR SF MI AS; undoing SF first needs its factors in the file's axes,
      // which AS exchanges.
      double fa = 1.0 / image_.scale_a, fb = 1.0 / image_.scale_b;
      if (image_.swap) std::swap(fa, fb);
      const double g = std::sqrt(image_.scale_a * image_.scale_b);
      lin = lin.Then(Affine{fa * g, 0, 0, fb * g, 0, 0});
    }
    const Affine m = lin.Then(Affine::FromTransform(transform_));
    ApertureTransform t;
    const double det = m.a * m.d - m.b * m.c;
    t.scale = std::sqrt(std::fabs(det));
    double a = m.a, b = m.b;
    if (det < 0) {
      t.mirror_x = true;
      a = -a;
      b = -b;
    }
    double deg = std::atan2(b, a) * 180.0 / std::numbers::pi;
    deg = std::round(deg * 1e9) / 1e9;
    if (deg < 0) deg += 360.0;
    if (deg >= 360.0) deg -= 360.0;
    t.rotation = deg;
    t.scale = std::round(t.scale * 1e12) / 1e12;
    return t;
  }

  void CoordinateFormat(std::string_view s, std::size_t at) {
    std::size_t i = 0;
    zero_mode_ = ZeroMode::kNone;
    bool absolute_set = false;
    bool have_x = false, have_y = false;
    while (i < s.size()) {
      const char c = s[i];
      if (c == 'L') zero_mode_ = ZeroMode::kLeading, ++i;
      else if (c == 'T') zero_mode_ = ZeroMode::kTrailing, ++i;
      else if (c == 'D') ++i;
      else if (c == 'A') absolute_set = true, incremental_ = false, ++i;
      else if (c == 'I') {
        absolute_set = true;
        incremental_ = true;
        Warn(at + i, "incremental coordinates (FS ...I) are deprecated");
        ++i;
      } else if (c == 'N' || c == 'G' || c == 'M') {
        ++i;
        while (i < s.size() && IsDigit(s[i])) ++i;
        Warn(at, "FS with N, G, D or M fields is deprecated");
      } else if (c == 'X' || c == 'Y') {
        if (i + 2 >= s.size() + 0 && i + 2 > s.size()) Fail(at + i, "two digits after X or Y");
        if (i + 2 >= s.size() + 1 || !IsDigit(s[i + 1]) || !IsDigit(s[i + 2])) {
          Fail(at + i + 1, "two digits (integer and decimal places) after X or Y");
        }
        const int axis = c == 'X' ? 0 : 1;
        format_int_[axis] = s[i + 1] - '0';
        format_dec_[axis] = s[i + 2] - '0';
        (axis == 0 ? have_x : have_y) = true;
        i += 3;
      } else {
        Fail(at + i, "L or T, A or I, and X and Y formats");
      }
    }
    if (!have_x || !have_y) Fail(at + s.size(), "both X and Y formats");
    if (zero_mode_ == ZeroMode::kTrailing) {
      Warn(at, "trailing zero omission (FST) is deprecated");
    } else if (zero_mode_ == ZeroMode::kNone) {
      Warn(at, "FS without L or T: coordinates read with no zeros omitted");
    }
    if (!absolute_set) Warn(at, "FS without A or I: absolute coordinates assumed");
    if (format_int_[0] != format_int_[1] || format_dec_[0] != format_dec_[1]) {
      Warn(at, "different X and Y formats are deprecated");
    }
    format_set_ = true;
  }

  void AttributeCommand(std::string_view code, std::string_view rest, std::size_t at) {
    std::vector<std::string> fields;
    std::size_t b = 0;
    for (;;) {
      const std::size_t comma = rest.find(',', b);
      fields.emplace_back(rest.substr(b, comma == std::string_view::npos ? rest.npos : comma - b));
      if (comma == std::string_view::npos) break;
      b = comma + 1;
      if (static_cast<int>(fields.size()) > limits_.max_params) Fail(at + b, "fewer fields");
    }
    if (fields[0].empty()) Fail(at, "an attribute name");
    std::string name = std::move(fields[0]);
    fields.erase(fields.begin());
    if (code == "TF") {
      if (name == ".FileFunction") {
        std::string joined;
        for (const std::string& f : fields) joined += (joined.empty() ? "" : ",") + f;
        layer_->file_function = joined;
      }
      for (Attribute& a : layer_->file_attributes) {
        if (a.name == name) {
          a.values = std::move(fields);
          return;
        }
      }
      layer_->file_attributes.push_back({std::move(name), std::move(fields)});
    } else if (code == "TA") {
      aperture_attrs_[name] = std::move(fields);
    } else {
      object_attrs_[name] = std::move(fields);
    }
  }

  void ApertureDefinition(std::string_view s, std::size_t at) {
    if (s.empty() || s[0] != 'D') Fail(at, "D and an aperture number");
    std::size_t i = 1;
    while (i < s.size() && IsDigit(s[i])) ++i;
    const long code = ParseInt(s.substr(1, i - 1), at + 1, "an aperture number from 10",
                               10, 2147483647L);
    if (layer_->apertures.count(static_cast<int>(code))) {
      // Redefinitions are refused: a block could otherwise come to flash itself.
      Fail(at + 1, "an aperture number not defined before");
    } else if (static_cast<int>(layer_->apertures.size()) >= limits_.max_apertures) {
      Fail(at, "at most " + std::to_string(limits_.max_apertures) + " apertures");
    }
    const std::size_t comma = s.find(',', i);
    std::string_view name = Trim(s.substr(i, comma == std::string_view::npos ? s.npos : comma - i));
    std::vector<double> params;
    if (comma != std::string_view::npos) {
      std::size_t b = comma + 1;
      for (;;) {
        const std::size_t x = s.find('X', b);
        if (static_cast<int>(params.size()) >= limits_.max_params) Fail(at + b, "fewer parameters");
        params.push_back(ParseDecimal(s.substr(b, x == std::string_view::npos ? s.npos : x - b),
                                      at + b, "a decimal parameter"));
        if (x == std::string_view::npos) break;
        b = x + 1;
      }
    }
    if (name.empty()) Fail(at + i, "an aperture template name (C, R, O, P or a macro)");
    NeedUnits(at);
    Aperture ap;
    auto need = [&](std::size_t lo, std::size_t hi) {
      if (params.size() < lo || params.size() > hi) {
        Fail(at + i, "between " + std::to_string(lo) + " and " + std::to_string(hi) +
                         " parameters for template " + std::string(name));
      }
    };
    auto size = [&](double v) {
      if (v < 0) Fail(at + i, "sizes of zero or more");
      return LengthNm(v, at + i);
    };
    auto hole = [&](std::size_t k) {
      if (params.size() > k + 1) {
        Warn(at, "rectangular aperture holes are deprecated; drawn as round holes");
      }
      if (params.size() > k) ap.hole = size(params[k]);
    };
    if (name == "C") {
      need(1, 3);
      ap.kind = ApertureKind::kCircle;
      ap.size_x = ap.size_y = size(params[0]);
      hole(1);
    } else if (name == "R" || name == "O") {
      need(2, 4);
      ap.kind = name == "R" ? ApertureKind::kRectangle : ApertureKind::kObround;
      ap.size_x = size(params[0]);
      ap.size_y = size(params[1]);
      hole(2);
    } else if (name == "P") {
      need(2, 5);
      ap.kind = ApertureKind::kPolygon;
      ap.size_x = ap.size_y = size(params[0]);
      if (params[1] < 3 || params[1] > 12 || params[1] != std::floor(params[1])) {
        Fail(at + i, "a polygon of 3 to 12 vertices");
      }
      ap.vertices = static_cast<int>(params[1]);
      if (params.size() > 2) ap.rotation = params[2];
      hole(3);
    } else {
      auto it = layer_->macros.find(std::string(name));
      if (it == layer_->macros.end()) {
        Fail(at + i, "a macro defined with %AM" + std::string(name) + "*...% before use");
      }
      ap.kind = ApertureKind::kMacro;
      ap.macro = std::string(name);
      ap.params = std::move(params);
      ap.macro_units = units_;
    }
    for (const auto& [n, v] : aperture_attrs_) ap.attributes.push_back({n, v});
    layer_->apertures[static_cast<int>(code)] = std::move(ap);
  }

  void ApertureBlock(std::string_view s, std::size_t at) {
    if (s.empty()) {
      if (frames_.empty() || !frames_.back().is_block) Fail(at, "%ABDnn*% before %AB*%");
      if (in_region_) Fail(at, "G37 before the block ends");
      Frame f = std::move(frames_.back());
      frames_.pop_back();
      in_block_ = InBlock();
      Aperture ap;
      ap.kind = ApertureKind::kBlock;
      ap.block = std::move(f.objects);
      for (const auto& [n, v] : aperture_attrs_) ap.attributes.push_back({n, v});
      if (layer_->apertures.count(f.code)) Fail(at, "an aperture number not defined before");
      if (static_cast<int>(layer_->apertures.size()) >= limits_.max_apertures) {
        Fail(at, "at most " + std::to_string(limits_.max_apertures) + " apertures");
      }
      layer_->apertures[f.code] = std::move(ap);
      block_cost_[f.code] = f.cost;
      return;
    }
    if (s[0] != 'D') Fail(at, "D and an aperture number, or nothing to end the block");
    const long code = ParseInt(s.substr(1), at + 1, "an aperture number from 10", 10,
                               2147483647L);
    if (static_cast<int>(frames_.size()) >= limits_.max_block_depth) {
      Fail(at, "blocks nested at most " + std::to_string(limits_.max_block_depth) + " deep");
    }
    Frame f;
    f.is_block = true;
    f.code = static_cast<int>(code);
    frames_.push_back(std::move(f));
    in_block_ = true;
  }

  void StepRepeat(std::string_view s, std::size_t at) {
    // An SR while another is open closes it first.
    if (!frames_.empty() && !frames_.back().is_block) CloseRepeat(at);
    if (s.empty()) return;
    int rx = 1, ry = 1;
    double ix = 0, jy = 0;
    std::size_t i = 0;
    while (i < s.size()) {
      const char c = s[i];
      std::size_t b = ++i;
      while (i < s.size() && !(s[i] >= 'A' && s[i] <= 'Z')) ++i;
      std::string_view v = s.substr(b, i - b);
      if (c == 'X') rx = static_cast<int>(ParseInt(v, at + b, "a repeat count from 1", 1, 1000000));
      else if (c == 'Y') ry = static_cast<int>(ParseInt(v, at + b, "a repeat count from 1", 1, 1000000));
      else if (c == 'I') ix = ParseDecimal(v, at + b, "a step distance");
      else if (c == 'J') jy = ParseDecimal(v, at + b, "a step distance");
      else Fail(at + b - 1, "X, Y, I or J");
    }
    if (std::int64_t{rx} * ry > limits_.max_repeat) {
      Fail(at, "at most " + std::to_string(limits_.max_repeat) + " repeated copies");
    }
    if (static_cast<int>(frames_.size()) >= limits_.max_block_depth) {
      Fail(at, "blocks nested at most " + std::to_string(limits_.max_block_depth) + " deep");
    }
    NeedUnits(at);
    Frame f;
    f.repeat_x = rx;
    f.repeat_y = ry;
    f.step_x = LengthNm(ix, at);
    f.step_y = LengthNm(jy, at);
    // The last copy lies within the coordinate range too, so that placing copies cannot overflow.
    if (std::fabs(static_cast<double>(f.step_x)) * (rx - 1) > static_cast<double>(kMaxCoord) ||
        std::fabs(static_cast<double>(f.step_y)) * (ry - 1) > static_cast<double>(kMaxCoord)) {
      Fail(at, "repeats spanning at most 10^9 mm");
    }
    frames_.push_back(std::move(f));
  }

  void CloseRepeat(std::size_t at) {
    if (in_region_) Fail(at, "G37 before the step and repeat ends");
    Frame f = std::move(frames_.back());
    frames_.pop_back();
    if (f.objects.empty()) return;
    const std::int64_t copies = std::int64_t{f.repeat_x} * f.repeat_y;
    if (f.cost > limits_.max_expanded / copies) {
      Fail(at, "fewer than " + std::to_string(limits_.max_expanded) +
                   " objects once blocks and repeats are expanded");
    }
    ArtObject& o = NewObject(ObjectKind::kStepRepeat, at, f.cost * copies);
    o.polarity = Polarity::kDark;
    o.transform = ApertureTransform{};
    o.aperture = 0;
    o.attributes.clear();
    o.repeat_x = f.repeat_x;
    o.repeat_y = f.repeat_y;
    o.step_x = f.step_x;
    o.step_y = f.step_y;
    if (!image_identity_ && !in_block_) {
      // The steps turn with the image; a quarter turn or a swap exchanges the two directions.
      const ArtPoint origin = Place({0, 0});
      const ArtPoint vx = Place({f.step_x, 0}), vy = Place({0, f.step_y});
      const Coord xx = vx.x - origin.x, xy = vx.y - origin.y;
      const Coord yx = vy.x - origin.x, yy = vy.y - origin.y;
      if (xy == 0 && yx == 0) {
        o.step_x = xx;
        o.step_y = yy;
      } else {
        o.repeat_x = f.repeat_y;
        o.repeat_y = f.repeat_x;
        o.step_x = yx;
        o.step_y = xy;
      }
    }
    o.children = std::move(f.objects);
  }

  // ---- macros ----

  void ParseMacro(std::string_view first, std::size_t offset) {
    std::string name(Trim(first.substr(2)));
    if (name.empty()) Fail(offset + 2, "a macro name");
    if (static_cast<int>(layer_->macros.size()) >= limits_.max_macros) {
      Fail(offset, "at most " + std::to_string(limits_.max_macros) + " macros");
    }
    ApertureMacro macro;
    macro.name = name;
    for (;;) {
      while (pos_ < text_.size() && IsSpace(text_[pos_])) ++pos_;
      if (pos_ >= text_.size()) Fail(text_.size(), "'%' closing the macro");
      if (text_[pos_] == '%') break;  // ParseExtended consumes it
      const std::size_t start = pos_;
      const std::size_t pct = text_.find('%', pos_);
      const std::size_t star = text_.find('*', pos_);
      if (star == std::string_view::npos || (pct != std::string_view::npos && pct < star)) {
        Fail(pct == std::string_view::npos ? text_.size() : pct, "'*' ending the macro statement");
      }
      std::string_view st = ReadBlock();
      if (macro.statements.size() >= 100000) Fail(start, "fewer macro statements");
      MacroStatementFrom(std::string(st), start, macro);
    }
    if (layer_->macros.count(name)) Warn(offset, "macro " + name + " defined again");
    layer_->macros[name] = std::move(macro);
  }

  MacroExpr Expr(std::string_view s, std::size_t offset) {
    MacroExpr e;
    std::string err;
    std::size_t p = 0;
    if (!ParseMacroExpr(s, &e, &err, &p)) Fail(offset + p, err);
    return e;
  }

  void MacroStatementFrom(const std::string& st, std::size_t offset, ApertureMacro& macro) {
    if (st.empty()) return;
    MacroStatement s;
    if (st[0] == '0' && (st.size() == 1 || st[1] == ' ' || st[1] == ',' || !IsDigit(st[1]))) {
      s.kind = MacroStatement::Kind::kComment;
      s.comment = st.size() > 1 ? st.substr(st[1] == ' ' ? 2 : 1) : "";
      macro.statements.push_back(std::move(s));
      return;
    }
    if (st[0] == '$') {
      const std::size_t eq = st.find('=');
      if (eq == std::string::npos) Fail(offset, "'=' in a variable definition");
      s.kind = MacroStatement::Kind::kAssign;
      s.var = static_cast<int>(ParseInt(std::string_view(st).substr(1, eq - 1), offset + 1,
                                        "a variable number from 1", 1, kMaxMacroVariable));
      s.value = Expr(std::string_view(st).substr(eq + 1), offset + eq + 1);
      macro.statements.push_back(std::move(s));
      return;
    }
    std::vector<std::string_view> fields;
    std::vector<std::size_t> starts;
    std::size_t b = 0;
    for (;;) {
      const std::size_t c = st.find(',', b);
      fields.push_back(std::string_view(st).substr(b, c == std::string::npos ? st.npos : c - b));
      starts.push_back(b);
      if (c == std::string::npos) break;
      b = c + 1;
      if (static_cast<int>(fields.size()) > limits_.max_params) Fail(offset + b, "fewer modifiers");
    }
    int code = static_cast<int>(ParseInt(fields[0], offset, "a primitive code (1, 4, 5, 6, 7, 20, 21)",
                                         0, 99));
    s.kind = MacroStatement::Kind::kPrimitive;
    for (std::size_t k = 1; k < fields.size(); ++k) {
      s.modifiers.push_back(Expr(fields[k], offset + starts[k]));
    }
    if (code == 2) {
      Warn(offset, "macro primitive 2 is deprecated; read as 20");
      code = kMacroVectorLine;
    }
    if (code == 22) {
      // Lower-left line: exposure, width, height, x, y, rotation -> a centre line.
      Warn(offset, "macro primitive 22 is deprecated; read as 21");
      if (s.modifiers.size() < 5) Fail(offset, "at least 5 modifiers for primitive 22");
      auto half_plus = [](const MacroExpr& corner, const MacroExpr& size) {
        MacroExpr e = corner;
        e.tokens.insert(e.tokens.end(), size.tokens.begin(), size.tokens.end());
        e.tokens.push_back({MacroExpr::Op::kConst, 2.0, 0});
        e.tokens.push_back({MacroExpr::Op::kDiv, 0, 0});
        e.tokens.push_back({MacroExpr::Op::kAdd, 0, 0});
        return e;
      };
      s.modifiers[3] = half_plus(s.modifiers[3], s.modifiers[1]);
      s.modifiers[4] = half_plus(s.modifiers[4], s.modifiers[2]);
      code = kMacroCenterLine;
    }
    std::size_t lo = 0, hi = 0;
    switch (code) {
      case kMacroCircle: lo = 4, hi = 5; break;
      case kMacroVectorLine: lo = 7, hi = 7; break;
      case kMacroCenterLine: lo = 6, hi = 6; break;
      case kMacroOutline: lo = 5, hi = static_cast<std::size_t>(limits_.max_params); break;
      case kMacroPolygon: lo = 6, hi = 6; break;
      case kMacroMoire: lo = 9, hi = 9; break;
      case kMacroThermal: lo = 6, hi = 6; break;
      default: Fail(offset, "a primitive code (0, 1, 4, 5, 6, 7, 20, 21)");
    }
    // Rotation is optional in older files for the line primitives.
    if ((code == kMacroVectorLine || code == kMacroCenterLine) && s.modifiers.size() == lo - 1) {
      Warn(offset, "macro primitive without rotation; 0 assumed");
      s.modifiers.push_back(MacroExpr::Constant(0));
    }
    if (s.modifiers.size() < lo || s.modifiers.size() > hi) {
      Fail(offset, "between " + std::to_string(lo) + " and " + std::to_string(hi) +
                       " modifiers for primitive " + std::to_string(code));
    }
    if (code == kMacroOutline) {
      // The vertex count must be a number when given as one, and match the modifiers.
      const auto& t = s.modifiers[1].tokens;
      if (t.size() == 1 && t[0].op == MacroExpr::Op::kConst) {
        const double n = t[0].value;
        if (n < 1 || n != std::floor(n) || s.modifiers.size() != 2 * static_cast<std::size_t>(n) + 5) {
          Fail(offset, "an outline with 2 x (vertices + 1) coordinates and a rotation");
        }
      }
    }
    s.code = code;
    macro.statements.push_back(std::move(s));
  }

  std::string_view text_;
  Layer* layer_;
  ReadLimits limits_;
  LineCounter lines_;
  std::vector<ReadMessage> warnings_;
  std::string block_buf_;
  std::size_t pos_ = 0;
  bool in_extended_ = false;
  bool ended_ = false;

  Units units_ = Units::kInch;
  bool units_set_ = false;
  bool format_set_ = false;
  int format_int_[2] = {3, 3};
  int format_dec_[2] = {6, 6};
  ZeroMode zero_mode_ = ZeroMode::kLeading;
  bool incremental_ = false;

  ArtPoint current_;
  Interp interp_ = Interp::kLinear;
  Quadrant quadrant_ = Quadrant::kUnset;
  int aperture_ = 0;
  int last_op_ = 0;
  Polarity polarity_ = Polarity::kDark;
  ApertureTransform transform_;
  ImageTransform image_;
  Affine image_affine_;
  bool image_identity_ = true;
  bool in_block_ = false;
  std::map<std::string, std::vector<std::string>> object_attrs_;
  std::map<std::string, std::vector<std::string>> aperture_attrs_;

  bool in_region_ = false;
  bool contour_open_ = false;
  Contour contour_;

  std::vector<Frame> frames_;
  std::map<int, std::int64_t> block_cost_;
  std::int64_t top_cost_ = 0;
  std::int64_t stored_ = 0;
};

}  // namespace

ReadResult ReadGerber(std::string_view text, Layer* layer, const ReadLimits& limits) {
  *layer = Layer{};
  // Room for the objects up front saves moving every object each time the table grows. An
  // object takes at least one '*' and about eight bytes of text, so the guess stays within a
  // small multiple of the input however the input is made.
  const std::size_t stars = static_cast<std::size_t>(std::count(text.begin(), text.end(), '*'));
  const std::size_t guess = std::min({stars, text.size() / 8,
                                      static_cast<std::size_t>(std::max<std::int64_t>(0, limits.max_objects))});
  layer->objects.reserve(guess);
  GerberParser parser(text, layer, limits);
  return parser.Run();
}

bool LooksLikeGerber(std::string_view text) {
  const std::size_t n = std::min<std::size_t>(text.size(), 4096);
  const std::string_view head = text.substr(0, n);
  return head.find("%FS") != std::string_view::npos || head.find("%MO") != std::string_view::npos ||
         head.find("%AD") != std::string_view::npos || head.find("G04") != std::string_view::npos ||
         head.find("%TF") != std::string_view::npos;
}

}  // namespace qvis
