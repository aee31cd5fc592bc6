#include "qvis/artwork/io/board_format.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <sstream>
#include <utility>
#include <vector>

#include "qvis/compat/atomic_file.h"
#include "qvis/compat/exceptions.h"

namespace qvis {

namespace {

constexpr std::string_view kMagic = "qvis-board";

// --- writing ---

std::string Num(double v) {
  char buf[64];
  const auto r = std::to_chars(buf, buf + sizeof buf, v);
  return std::string(buf, r.ptr);
}

std::string Quote(std::string_view s) {
  std::string out = "\"";
  for (const char c : s) {
    const auto u = static_cast<unsigned char>(c);
    switch (c) {
      case '"': out += "\\\""; break;
      case '\\': out += "\\\\"; break;
      case '\n': out += "\\n"; break;
      case '\t': out += "\\t"; break;
      case '\r': out += "\\r"; break;
      default:
        if (u < 0x20 || u == 0x7F) {
          char buf[8];
          std::snprintf(buf, sizeof buf, "\\x%02X", u);
          out += buf;
        } else {
          out += c;
        }
    }
  }
  out += '"';
  return out;
}

const char* Dir(ArcDirection d) { return d == ArcDirection::kClockwise ? "cw" : "ccw"; }
const char* UnitsName(Units u) { return u == Units::kInch ? "inch" : "mm"; }

class Writer {
 public:
  std::string out;

  void Line(int depth, const std::string& s) {
    out.append(static_cast<std::size_t>(depth) * 2, ' ');
    out += s;
    out += '\n';
  }

  void Attributes(int depth, const char* key, const std::vector<Attribute>& attrs) {
    for (const Attribute& a : attrs) {
      std::string s = std::string(key) + " " + Quote(a.name);
      for (const std::string& v : a.values) s += " " + Quote(v);
      Line(depth, s);
    }
  }

  static std::string P(ArtPoint p) { return std::to_string(p.x) + " " + std::to_string(p.y); }

  // The fields an object's kind does not place by position, written only when they differ
  // from their defaults, so that reading gives back the very same object.
  static std::string Options(const ArtObject& o) {
    std::string s;
    const ArtObject d;
    if (o.polarity == Polarity::kClear) s += " clear";
    if (o.transform.mirror_x) s += " mirror-x";
    if (o.transform.mirror_y) s += " mirror-y";
    if (o.transform.rotation != 0.0) s += " rotate " + Num(o.transform.rotation);
    if (o.transform.scale != 1.0) s += " scale " + Num(o.transform.scale);
    const bool has_ap = o.kind == ObjectKind::kTrack || o.kind == ObjectKind::kArc ||
                        o.kind == ObjectKind::kFlash;
    const bool has_start = o.kind == ObjectKind::kTrack || o.kind == ObjectKind::kArc;
    const bool has_end = has_ap;
    const bool has_centre = o.kind == ObjectKind::kArc;
    if (!has_ap && o.aperture != d.aperture) s += " aperture " + std::to_string(o.aperture);
    if (!has_start && o.start != d.start) s += " start " + P(o.start);
    if (!has_end && o.end != d.end) s += " end " + P(o.end);
    if (!has_centre && o.centre != d.centre) s += " centre " + P(o.centre);
    if (!has_centre && o.direction != d.direction) s += std::string(" ") + Dir(o.direction);
    return s;
  }

  void Object(int depth, const ArtObject& o) {
    const std::string ap = std::to_string(o.aperture);
    switch (o.kind) {
      case ObjectKind::kTrack:
        Line(depth, "track " + ap + " " + P(o.start) + " " + P(o.end) + Options(o));
        break;
      case ObjectKind::kArc:
        Line(depth, "arc " + ap + " " + P(o.start) + " " + P(o.end) + " " + P(o.centre) + " " +
                        Dir(o.direction) + Options(o));
        break;
      case ObjectKind::kFlash:
        Line(depth, "flash " + ap + " " + P(o.end) + Options(o));
        break;
      case ObjectKind::kRegion:
        Line(depth, "region" + Options(o));
        Line(depth + 1, "start " + P(o.contour.start));
        for (const ContourSegment& s : o.contour.segments) {
          if (s.is_arc) {
            Line(depth + 1, "arc " + P(s.end) + " " + P(s.centre) + " " + Dir(s.direction));
          } else {
            Line(depth + 1, "line " + P(s.end) +
                                (s.centre != ArtPoint{} || s.direction != ArcDirection::kCounterClockwise
                                     ? " " + P(s.centre) + " " + Dir(s.direction)
                                     : std::string()));
          }
        }
        Line(depth, "end");
        break;
      case ObjectKind::kStepRepeat:
        Line(depth, "repeat " + std::to_string(o.repeat_x) + " " + std::to_string(o.repeat_y) +
                        " " + std::to_string(o.step_x) + " " + std::to_string(o.step_y) +
                        Options(o));
        for (const ArtObject& c : o.children) Object(depth + 1, c);
        Line(depth, "end");
        break;
    }
    Attributes(depth, "attr", o.attributes);
  }

  void Macro(int depth, const ApertureMacro& m) {
    Line(depth, "macro " + Quote(m.name));
    for (const MacroStatement& st : m.statements) {
      switch (st.kind) {
        case MacroStatement::Kind::kPrimitive: {
          std::string s = "primitive " + std::to_string(st.code);
          for (const MacroExpr& e : st.modifiers) s += " " + Quote(e.ToString());
          Line(depth + 1, s);
          break;
        }
        case MacroStatement::Kind::kAssign:
          Line(depth + 1, "assign " + std::to_string(st.var) + " " + Quote(st.value.ToString()));
          break;
        case MacroStatement::Kind::kComment:
          Line(depth + 1, "comment " + Quote(st.comment));
          break;
      }
    }
    Line(depth, "end");
  }

  void Aperture(int depth, int code, const qvis::Aperture& a) {
    Line(depth, "aperture " + std::to_string(code) + " " + ApertureKindName(a.kind) + " " +
                    std::to_string(a.size_x) + " " + std::to_string(a.size_y) + " " +
                    std::to_string(a.vertices) + " " + Num(a.rotation) + " " +
                    std::to_string(a.hole));
    if (!a.macro.empty() || !a.params.empty() || a.macro_units != Units::kMillimetre) {
      std::string s = "instance " + Quote(a.macro) + " " + UnitsName(a.macro_units);
      for (double p : a.params) s += " " + Num(p);
      Line(depth + 1, s);
    }
    Attributes(depth + 1, "aperture-attribute", a.attributes);
    for (const ArtObject& o : a.block) Object(depth + 1, o);
    Line(depth, "end");
  }

  void LayerOut(const Layer& l) {
    Line(0, "layer " + Quote(l.name));
    Line(1, "function " + Quote(l.file_function));
    char colour[16];
    std::snprintf(colour, sizeof colour, "%06X", static_cast<unsigned>(l.colour & 0xFFFFFFu));
    Line(1, std::string("colour ") + colour);
    Line(1, std::string("visible ") + (l.visible ? "1" : "0"));
    Line(1, "order " + std::to_string(l.order));
    Line(1, std::string("kind ") + (l.kind == LayerKind::kDrill ? "drill" : "gerber"));
    Line(1, std::string("units ") + UnitsName(l.units));
    Attributes(1, "file-attribute", l.file_attributes);
    for (const auto& [name, m] : l.macros) Macro(1, m);
    for (const auto& [code, a] : l.apertures) Aperture(1, code, a);
    for (const ArtObject& o : l.objects) Object(1, o);
    Line(0, "end");
  }
};

// --- reading ---

struct Token {
  std::string text;  // quoted strings decoded
  int column = 0;
  bool quoted = false;
};

struct ParseError {
  int line;
  int column;
  std::string text;
};

class Parser {
 public:
  Parser(std::string_view text, const ReadLimits& limits) : text_(text), limits_(limits) {}

  void Run(ArtDocument* doc, BoardView* view) {
    if (!NextLine()) Fail(1, 1, "the first line \"qvis-board 1\"");
    if (toks_.empty() || toks_[0].quoted || toks_[0].text != kMagic) {
      Fail(line_, toks_.empty() ? 1 : toks_[0].column, "the first line \"qvis-board 1\"");
    }
    Need(2, "a format version after qvis-board");
    const std::int64_t version = Int(1);
    if (version < 1 || version > kBoardFormatVersion) {
      Fail(line_, toks_[1].column,
           "a format version from 1 to " + std::to_string(kBoardFormatVersion));
    }
    NoMore(2);
    while (NextLine()) {
      const std::string& k = Key();
      if (k == "view") {
        Need(6, "view X Y ZOOM UNIT LAYER");
        view->view_x = Real(1);
        view->view_y = Real(2);
        view->zoom = Real(3);
        if (!(view->zoom > 0)) Fail(line_, toks_[3].column, "a zoom above 0");
        view->unit = static_cast<int>(IntIn(4, 0, 4));
        view->active_layer = static_cast<int>(IntIn(5, 0, 1 << 20));
        NoMore(6);
      } else if (k == "layer") {
        Need(2, "a layer name");
        Layer l;
        l.name = Str(1);
        NoMore(2);
        ReadLayer(&l);
        if (doc->layers.size() >= 4096) Fail(line_, 1, "at most 4096 layers");
        doc->layers.push_back(std::move(l));
      } else {
        Fail(line_, toks_[0].column, "\"view\" or \"layer\"");
      }
    }
  }

 private:
  [[noreturn]] void Fail(int line, int column, const std::string& expected) {
    throw ParseError{line, column, "expected " + expected};
  }

  // Reads the next line that holds anything but blanks and a comment; false at the end.
  bool NextLine() {
    while (pos_ < text_.size()) {
      std::size_t eol = text_.find('\n', pos_);
      if (eol == std::string_view::npos) eol = text_.size();
      std::string_view line = text_.substr(pos_, eol - pos_);
      pos_ = eol + 1;
      ++line_;
      if (line.size() > limits_.max_block_bytes) Fail(line_, 1, "a line shorter than the limit");
      if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
      Tokenize(line);
      if (!toks_.empty()) return true;
    }
    return false;
  }

  void Tokenize(std::string_view line) {
    toks_.clear();
    std::size_t i = 0;
    while (i < line.size()) {
      const char c = line[i];
      if (c == ' ' || c == '\t') {
        ++i;
        continue;
      }
      if (c == '#') break;
      Token t;
      t.column = static_cast<int>(i) + 1;
      if (c == '"') {
        t.quoted = true;
        ++i;
        bool closed = false;
        while (i < line.size()) {
          const char d = line[i];
          if (d == '"') {
            closed = true;
            ++i;
            break;
          }
          if (d == '\\') {
            if (i + 1 >= line.size()) break;
            const char e = line[i + 1];
            i += 2;
            switch (e) {
              case 'n': t.text += '\n'; break;
              case 't': t.text += '\t'; break;
              case 'r': t.text += '\r'; break;
              case '"': t.text += '"'; break;
              case '\\': t.text += '\\'; break;
              case 'x': {
                unsigned v = 0;
                if (i + 2 > line.size() ||
                    std::from_chars(line.data() + i, line.data() + i + 2, v, 16).ptr !=
                        line.data() + i + 2) {
                  Fail(line_, static_cast<int>(i) + 1, "two hexadecimal digits after \\x");
                }
                t.text += static_cast<char>(v);
                i += 2;
                break;
              }
              default:
                Fail(line_, static_cast<int>(i) - 1, "an escape \\n \\t \\r \\\" \\\\ or \\xHH");
            }
            continue;
          }
          t.text += d;
          ++i;
        }
        if (!closed) Fail(line_, static_cast<int>(line.size()) + 1, "a closing quote");
        if (i < line.size() && line[i] != ' ' && line[i] != '\t' && line[i] != '#') {
          Fail(line_, static_cast<int>(i) + 1, "a space after a quoted string");
        }
      } else {
        const std::size_t s = i;
        while (i < line.size() && line[i] != ' ' && line[i] != '\t' && line[i] != '"') ++i;
        t.text = std::string(line.substr(s, i - s));
      }
      toks_.push_back(std::move(t));
    }
  }

  const std::string& Key() {
    if (toks_[0].quoted) Fail(line_, toks_[0].column, "a keyword");
    return toks_[0].text;
  }
  void Need(std::size_t n, const std::string& what) {
    if (toks_.size() < n) {
      const Token& last = toks_.back();
      Fail(line_, last.column + static_cast<int>(last.text.size()) + (last.quoted ? 2 : 0),
           what);
    }
  }
  void NoMore(std::size_t n) {
    if (toks_.size() > n) Fail(line_, toks_[n].column, "the end of the line");
  }
  const Token& Bare(std::size_t i, const char* what) {
    Need(i + 1, what);
    if (toks_[i].quoted) Fail(line_, toks_[i].column, what);
    return toks_[i];
  }
  std::int64_t Int(std::size_t i) {
    const Token& t = Bare(i, "an integer");
    std::int64_t v = 0;
    const char* b = t.text.data();
    const char* e = b + t.text.size();
    const auto r = std::from_chars(b, e, v);
    if (r.ec != std::errc() || r.ptr != e) Fail(line_, t.column, "an integer");
    return v;
  }
  std::int64_t IntIn(std::size_t i, std::int64_t lo, std::int64_t hi) {
    const std::int64_t v = Int(i);
    if (v < lo || v > hi) {
      Fail(line_, toks_[i].column,
           "an integer from " + std::to_string(lo) + " to " + std::to_string(hi));
    }
    return v;
  }
  // Coordinates and sizes keep to the range every reader shares, so that a board saved here
  // exports as Gerber that reads again, and sums of them cannot overflow.
  Coord C(std::size_t i) { return IntIn(i, -kMaxCoord, kMaxCoord); }
  double Real(std::size_t i) {
    const Token& t = Bare(i, "a number");
    double v = 0;
    const char* b = t.text.data();
    const char* e = b + t.text.size();
    const auto r = std::from_chars(b, e, v);
    if (r.ec != std::errc() || r.ptr != e || !std::isfinite(v)) Fail(line_, t.column, "a number");
    return v;
  }
  std::string Str(std::size_t i) {
    Need(i + 1, "a quoted string");
    if (!toks_[i].quoted) Fail(line_, toks_[i].column, "a quoted string");
    return toks_[i].text;
  }
  ArtPoint Pt(std::size_t i) { return {C(i), C(i + 1)}; }
  ArcDirection Direction(std::size_t i) {
    const Token& t = Bare(i, "cw or ccw");
    if (t.text == "cw") return ArcDirection::kClockwise;
    if (t.text == "ccw") return ArcDirection::kCounterClockwise;
    Fail(line_, t.column, "cw or ccw");
  }
  Units UnitsAt(std::size_t i) {
    const Token& t = Bare(i, "mm or inch");
    if (t.text == "mm") return Units::kMillimetre;
    if (t.text == "inch") return Units::kInch;
    Fail(line_, t.column, "mm or inch");
  }
  Attribute AttributeFrom(std::size_t first) {
    Attribute a;
    a.name = Str(first);
    if (toks_.size() - first - 1 > static_cast<std::size_t>(limits_.max_params)) {
      Fail(line_, toks_[first].column, "fewer attribute values");
    }
    for (std::size_t i = first + 1; i < toks_.size(); ++i) a.values.push_back(Str(i));
    return a;
  }
  void Count(std::int64_t n) {
    stored_ += n;
    if (stored_ > limits_.max_objects) Fail(line_, 1, "fewer objects than the limit");
  }
  bool AtEnd() {
    if (!NextLine()) Fail(line_ + 1, 1, "\"end\"");
    return Key() == "end" && (NoMore(1), true);
  }

  void ReadLayer(Layer* l) {
    pending_list_ = &l->objects;
    while (!AtEnd()) {
      if (TryAttr()) continue;
      const std::string k = Key();
      if (k == "function") {
        l->file_function = Str(1);
        NoMore(2);
      } else if (k == "colour") {
        const Token& t = Bare(1, "a colour RRGGBB");
        unsigned v = 0;
        const auto r = std::from_chars(t.text.data(), t.text.data() + t.text.size(), v, 16);
        if (t.text.size() != 6 || r.ec != std::errc() || r.ptr != t.text.data() + 6) {
          Fail(line_, t.column, "a colour RRGGBB");
        }
        l->colour = v;
        NoMore(2);
      } else if (k == "visible") {
        l->visible = IntIn(1, 0, 1) != 0;
        NoMore(2);
      } else if (k == "order") {
        l->order = static_cast<int>(IntIn(1, -(1 << 30), 1 << 30));
        NoMore(2);
      } else if (k == "kind") {
        const Token& t = Bare(1, "gerber or drill");
        if (t.text == "gerber") {
          l->kind = LayerKind::kGerber;
        } else if (t.text == "drill") {
          l->kind = LayerKind::kDrill;
        } else {
          Fail(line_, t.column, "gerber or drill");
        }
        NoMore(2);
      } else if (k == "units") {
        l->units = UnitsAt(1);
        NoMore(2);
      } else if (k == "file-attribute") {
        l->file_attributes.push_back(AttributeFrom(1));
      } else if (k == "macro") {
        ApertureMacro m;
        m.name = Str(1);
        NoMore(2);
        const int at = line_;
        std::vector<ArtObject>* saved = pending_list_;
        if (l->macros.count(m.name)) Fail(at, toks_[1].column, "a macro name not used before");
        if (static_cast<int>(l->macros.size()) >= limits_.max_macros) {
          Fail(at, 1, "fewer macros than the limit");
        }
        ReadMacro(&m);
        pending_list_ = saved;
        l->macros.emplace(m.name, std::move(m));
      } else if (k == "aperture") {
        Need(8, "aperture CODE KIND SIZE-X SIZE-Y VERTICES ROTATION HOLE");
        const int code = static_cast<int>(IntIn(1, 0, 1 << 30));
        if (l->apertures.count(code)) Fail(line_, toks_[1].column, "an aperture code not used before");
        if (static_cast<int>(l->apertures.size()) >= limits_.max_apertures) {
          Fail(line_, 1, "fewer apertures than the limit");
        }
        qvis::Aperture a;
        const Token& kind = Bare(2, "an aperture kind");
        bool found = false;
        for (ApertureKind value : {ApertureKind::kCircle, ApertureKind::kRectangle,
                                   ApertureKind::kObround, ApertureKind::kPolygon,
                                   ApertureKind::kMacro, ApertureKind::kBlock}) {
          if (kind.text == ApertureKindName(value)) {
            a.kind = value;
            found = true;
          }
        }
        if (!found) Fail(line_, kind.column, "circle, rectangle, obround, polygon, macro or block");
        a.size_x = C(3);
        a.size_y = C(4);
        a.vertices = static_cast<int>(IntIn(5, 0, 1 << 20));
        a.rotation = Real(6);
        a.hole = C(7);
        NoMore(8);
        ReadAperture(&a);
        pending_list_ = &l->objects;
        l->apertures.emplace(code, std::move(a));
      } else {
        ArtObject o;
        if (!ReadObject(&o, 0)) {
          Fail(line_, toks_[0].column,
               "a layer item (function, colour, visible, order, kind, units, file-attribute, "
               "macro, aperture) or an object (track, arc, flash, region, repeat), attr or end");
        }
        l->objects.push_back(std::move(o));
      }
    }
  }

  // "attr" lines after an object belong to it: pending_list_ is the list the last object
  // went to.
  bool TryAttr() {
    if (toks_.empty() || toks_[0].quoted || toks_[0].text != "attr") return false;
    if (pending_list_ == nullptr || pending_list_->empty()) {
      Fail(line_, toks_[0].column, "an object before its attr line");
    }
    pending_list_->back().attributes.push_back(AttributeFrom(1));
    return true;
  }

  void ReadMacro(ApertureMacro* m) {
    while (!AtEnd()) {
      const std::string k = Key();
      MacroStatement st;
      if (k == "primitive") {
        st.kind = MacroStatement::Kind::kPrimitive;
        st.code = static_cast<int>(IntIn(1, 0, 99));
        if (toks_.size() - 2 > static_cast<std::size_t>(limits_.max_params)) {
          Fail(line_, toks_[1].column, "fewer modifiers than the limit");
        }
        for (std::size_t i = 2; i < toks_.size(); ++i) st.modifiers.push_back(Expr(i));
      } else if (k == "assign") {
        st.kind = MacroStatement::Kind::kAssign;
        st.var = static_cast<int>(IntIn(1, 1, kMaxMacroVariable));
        st.value = Expr(2);
        NoMore(3);
      } else if (k == "comment") {
        st.kind = MacroStatement::Kind::kComment;
        st.comment = Str(1);
        NoMore(2);
      } else {
        Fail(line_, toks_[0].column, "primitive, assign, comment or end");
      }
      if (static_cast<std::int64_t>(m->statements.size()) >= limits_.max_params * 10) {
        Fail(line_, 1, "fewer macro statements than the limit");
      }
      m->statements.push_back(std::move(st));
    }
  }

  MacroExpr Expr(std::size_t i) {
    const std::string s = Str(i);
    MacroExpr e;
    std::string error;
    std::size_t at = 0;
    if (!ParseMacroExpr(s, &e, &error, &at)) {
      Fail(line_, toks_[i].column + 1 + static_cast<int>(at), error);
    }
    return e;
  }

  void ReadAperture(qvis::Aperture* a) {
    std::vector<ArtObject>* saved = pending_list_;
    pending_list_ = nullptr;
    while (!AtEnd()) {
      const std::string k = Key();
      if (k == "instance") {
        a->macro = Str(1);
        a->macro_units = UnitsAt(2);
        if (toks_.size() - 3 > static_cast<std::size_t>(limits_.max_params)) {
          Fail(line_, toks_[2].column, "fewer parameters than the limit");
        }
        a->params.clear();
        for (std::size_t i = 3; i < toks_.size(); ++i) a->params.push_back(Real(i));
      } else if (k == "aperture-attribute") {
        a->attributes.push_back(AttributeFrom(1));
      } else if (TryAttr()) {
      } else {
        ArtObject o;
        if (!ReadObject(&o, 1)) {
          Fail(line_, toks_[0].column, "instance, aperture-attribute, an object, attr or end");
        }
        a->block.push_back(std::move(o));
        pending_list_ = &a->block;
        continue;
      }
    }
    pending_list_ = saved;
  }

  // Reads the object on the current line (and its block). False when the line is none.
  bool ReadObject(ArtObject* o, int depth) {
    const std::string k = Key();
    std::size_t next = 0;
    if (k == "track") {
      o->kind = ObjectKind::kTrack;
      o->aperture = static_cast<int>(IntIn(1, 0, 1 << 30));
      o->start = Pt(2);
      o->end = Pt(4);
      next = 6;
    } else if (k == "arc") {
      o->kind = ObjectKind::kArc;
      o->aperture = static_cast<int>(IntIn(1, 0, 1 << 30));
      o->start = Pt(2);
      o->end = Pt(4);
      o->centre = Pt(6);
      o->direction = Direction(8);
      next = 9;
    } else if (k == "flash") {
      o->kind = ObjectKind::kFlash;
      o->aperture = static_cast<int>(IntIn(1, 0, 1 << 30));
      o->end = Pt(2);
      next = 4;
    } else if (k == "region") {
      o->kind = ObjectKind::kRegion;
      next = 1;
    } else if (k == "repeat") {
      o->kind = ObjectKind::kStepRepeat;
      o->repeat_x = static_cast<int>(IntIn(1, 1, limits_.max_repeat));
      o->repeat_y = static_cast<int>(IntIn(2, 1, limits_.max_repeat));
      if (static_cast<std::int64_t>(o->repeat_x) * o->repeat_y > limits_.max_repeat) {
        Fail(line_, toks_[2].column, "fewer repeats than the limit");
      }
      o->step_x = C(3);
      o->step_y = C(4);
      next = 5;
    } else {
      return false;
    }
    Options(o, next);
    Count(1);
    if (o->kind == ObjectKind::kRegion) {
      if (!NextLine() || Key() != "start") Fail(line_, 1, "start X Y of the region's contour");
      o->contour.start = Pt(1);
      NoMore(3);
      while (!AtEnd()) {
        const std::string s = Key();
        ContourSegment seg;
        seg.end = Pt(1);
        if (s == "line") {
          if (toks_.size() > 3) {
            seg.centre = Pt(3);
            seg.direction = Direction(5);
            NoMore(6);
          }
        } else if (s == "arc") {
          seg.is_arc = true;
          seg.centre = Pt(3);
          seg.direction = Direction(5);
          NoMore(6);
        } else {
          Fail(line_, toks_[0].column, "line, arc or end");
        }
        Count(1);
        o->contour.segments.push_back(seg);
      }
    } else if (o->kind == ObjectKind::kStepRepeat) {
      if (depth >= limits_.max_block_depth) Fail(line_, 1, "less nesting than the limit");
      std::vector<ArtObject>* saved = pending_list_;
      pending_list_ = nullptr;
      while (!AtEnd()) {
        if (TryAttr()) continue;
        ArtObject c;
        if (!ReadObject(&c, depth + 1)) Fail(line_, toks_[0].column, "an object, attr or end");
        o->children.push_back(std::move(c));
        pending_list_ = &o->children;
      }
      pending_list_ = saved;
    }
    return true;
  }

  void Options(ArtObject* o, std::size_t i) {
    while (i < toks_.size()) {
      const Token& t = Bare(i, "an object option");
      const std::string& k = t.text;
      if (k == "clear") {
        o->polarity = Polarity::kClear;
        i += 1;
      } else if (k == "mirror-x") {
        o->transform.mirror_x = true;
        i += 1;
      } else if (k == "mirror-y") {
        o->transform.mirror_y = true;
        i += 1;
      } else if (k == "rotate") {
        o->transform.rotation = Real(i + 1);
        i += 2;
      } else if (k == "scale") {
        o->transform.scale = Real(i + 1);
        i += 2;
      } else if (k == "aperture") {
        o->aperture = static_cast<int>(IntIn(i + 1, 0, 1 << 30));
        i += 2;
      } else if (k == "start") {
        o->start = Pt(i + 1);
        i += 3;
      } else if (k == "end") {
        o->end = Pt(i + 1);
        i += 3;
      } else if (k == "centre") {
        o->centre = Pt(i + 1);
        i += 3;
      } else if (k == "cw" || k == "ccw") {
        o->direction = Direction(i);
        i += 1;
      } else {
        Fail(line_, t.column,
             "an option (clear, mirror-x, mirror-y, rotate, scale, aperture, start, end, "
             "centre, cw, ccw)");
      }
    }
  }

  std::string_view text_;
  const ReadLimits& limits_;
  std::size_t pos_ = 0;
  int line_ = 0;
  std::vector<Token> toks_;
  std::int64_t stored_ = 0;
  std::vector<ArtObject>* pending_list_ = nullptr;
};

}  // namespace

bool LooksLikeBoardText(std::string_view text) {
  return text.substr(0, kMagic.size()) == kMagic &&
         (text.size() == kMagic.size() || text[kMagic.size()] == ' ');
}

std::string WriteBoardText(const ArtDocument& doc, const BoardView& view) {
  Writer w;
  w.Line(0, std::string(kMagic) + " " + std::to_string(kBoardFormatVersion));
  w.Line(0, "view " + Num(view.view_x) + " " + Num(view.view_y) + " " + Num(view.zoom) + " " +
                std::to_string(view.unit) + " " + std::to_string(view.active_layer));
  for (const Layer& l : doc.layers) w.LayerOut(l);
  return std::move(w.out);
}

ReadResult ReadBoardText(std::string_view text, ArtDocument* doc, BoardView* view,
                         const ReadLimits& limits) {
  ReadResult r;
  ArtDocument d;
  BoardView v;
  try {
    Parser p(text, limits);
    p.Run(&d, &v);
  } catch (const ParseError& e) {
    r.error.line = e.line;
    r.error.column = e.column;
    r.error.text = e.text;
    return r;
  }
  *doc = std::move(d);
  *view = v;
  r.ok = true;
  return r;
}

void SaveBoard(const std::string& path, ArtBoard& board) {
  const std::string text = WriteBoardText(board.Document(), board.view());
  WriteFileAtomically(path, text.data(), text.size());
  board.MarkClean();
}

ReadResult LoadBoard(const std::string& path, ArtBoard* board, const ReadLimits& limits) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    const int err = errno;
    throw CFileException(FileCauseFromErrno(err), CString(path.c_str()), "cannot open for reading");
  }
  std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (in.bad()) throw CFileException(CFileException::hardIO, CString(path.c_str()), "read error");
  ArtDocument doc;
  BoardView view;
  ReadResult r = ReadBoardText(text, &doc, &view, limits);
  if (r.ok) *board = ArtBoard(std::move(doc), view);
  return r;
}

}  // namespace qvis
