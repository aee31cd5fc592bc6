// The session runner: script lines to window messages, finished figures to the host document,
// and the outputs (snapshots, listings, design files).
#include "apps/qvis-session/session.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>

#include "qvis/compat/atomic_file.h"
#include "qvis/compat/exceptions.h"
#include "qvis/compat/win32_names.h"
#include "qvis/design/design.h"
#include "qvis/design/design_objects.h"
#include "qvis/gdi/gdi.h"

namespace qvis::session {
namespace {

// One notch of the wheel, as the platform reports it.
constexpr int kWheelNotch = 120;
constexpr int kDefaultDragSteps = 4;
constexpr int kMaxDragSteps = 10000;
constexpr int kMaxWindowSide = FrontBuffer::kMaxSide;

using Words = std::vector<std::string>;

// Splits a line into words; "#" starts a comment and double quotes keep spaces in a word.
Words Split(const std::string& line) {
  Words words;
  std::string cur;
  bool in_word = false;
  bool quoted = false;
  for (char ch : line) {
    if (quoted) {
      if (ch == '"') {
        quoted = false;
      } else {
        cur += ch;
      }
      continue;
    }
    if (ch == '"') {
      quoted = true;
      in_word = true;
      continue;
    }
    if (ch == '#') break;
    if (std::isspace(static_cast<unsigned char>(ch))) {
      if (in_word) words.push_back(cur);
      cur.clear();
      in_word = false;
    } else {
      cur += ch;
      in_word = true;
    }
  }
  if (quoted) throw ScriptError("expected a closing '\"'");
  if (in_word) words.push_back(cur);
  return words;
}

bool ParseDouble(const std::string& s, double* v) {
  if (s.empty()) return false;
  char* end = nullptr;
  errno = 0;
  const double d = std::strtod(s.c_str(), &end);
  if (end != s.c_str() + s.size() || errno == ERANGE || !std::isfinite(d)) return false;
  *v = d;
  return true;
}

LPARAM Pack(CPoint p) { return PackPointLParam(p.x, p.y); }

}  // namespace

int SessionDesign::ZoomAll(double width, double height, bool /*flag*/, double margin) {
  CQVIS_MaxRegionInfo extent;
  if (document_ == nullptr || !document_->Extent(&extent)) return 0;
  ZoomWindow(width, height, extent.m_dMinX, extent.m_dMinY, extent.m_dMaxX, extent.m_dMaxY,
             margin);
  return 1;
}

SessionWindow::SessionWindow(const HostDocument* document) : document_(document) {
  SetDesign(std::make_unique<SessionDesign>(document));
}

void SessionWindow::OnDrawHost(CQVIS_GDI* surface, qvis::HDC dc) {
  if (document_ != nullptr) document_->Paint(surface, dc);
}

Session::Session(std::string out_dir, std::ostream& out, int width, int height)
    : out_dir_(std::move(out_dir)), out_(out) {
  port_ = std::make_unique<HeadlessPort>(width, height);
  window_ = std::make_unique<SessionWindow>(&document_);
  window_->Create(port_.get());
  window_->SetFigureListener(&taker_);
  Repaint();
}

Session::~Session() {
  window_.reset();
  port_.reset();
}

std::string Session::Resolve(const std::string& path) const {
  if (path.empty() || path[0] == '/' || out_dir_.empty()) return path;
  return out_dir_ + "/" + path;
}

int Session::RunFile(const std::string& path, std::ostream& err) {
  std::ifstream in(path);
  if (!in) {
    err << path << ": error: cannot read the script\n";
    return 1;
  }
  std::stringstream text;
  text << in.rdbuf();
  return RunScript(text.str(), path, err);
}

int Session::RunScript(const std::string& text, const std::string& name, std::ostream& err) {
  std::istringstream in(text);
  std::string line;
  int number = 0;
  while (std::getline(in, line)) {
    ++number;
    try {
      RunLine(line);
    } catch (const ScriptError& e) {
      err << name << ":" << number << ": error: " << e.what() << "\n";
      return 1;
    } catch (const CException& e) {
      err << name << ":" << number << ": error: " << e.what() << "\n";
      return 1;
    }
  }
  return 0;
}

void Session::RunLine(const std::string& line) {
  const Words w = Split(line);
  if (w.empty()) return;
  const std::string& verb = w[0];
  if (verb == "window" || verb == "unit" || verb == "view" || verb == "zoom" ||
      verb == "grid" || verb == "snap" || verb == "show" || verb == "background") {
    Setup(w);
  } else if (verb == "command") {
    StartCommand(w);
  } else if (verb == "set") {
    Set(w);
  } else if (verb == "move" || verb == "click" || verb == "dblclick" || verb == "drag" ||
             verb == "rdrag" || verb == "rclick" || verb == "wheel" || verb == "key" ||
             verb == "char" || verb == "alt1") {
    Input(w);
  } else if (verb == "snapshot" || verb == "save" || verb == "load" || verb == "list" ||
             verb == "echo") {
    Output(w);
  } else if (verb == "expect") {
    Expect(w);
  } else {
    throw ScriptError("expected a statement (window, unit, view, zoom, grid, snap, show, "
                      "background, command, set, move, click, dblclick, drag, rdrag, rclick, "
                      "wheel, key, char, alt1, snapshot, save, load, list, echo, expect), got '" +
                      verb + "'");
  }
}

// ---------------------------------------------------------------------------------------------
// Argument helpers.

double Session::Number(const Words& w, size_t i, const char* what) const {
  double v = 0;
  if (i >= w.size()) {
    throw ScriptError(std::string("expected ") + what + " after '" + w[0] + "', got end of line");
  }
  if (!ParseDouble(w[i], &v)) {
    throw ScriptError(std::string("expected ") + what + " after '" + w[0] + "', got '" + w[i] +
                      "'");
  }
  return v;
}

int Session::Integer(const Words& w, size_t i, const char* what) const {
  const double v = Number(w, i, what);
  if (v != std::floor(v) || std::fabs(v) > 1e9) {
    throw ScriptError(std::string("expected ") + what + " (a whole number) after '" + w[0] +
                      "', got '" + w[i] + "'");
  }
  return static_cast<int>(v);
}

bool Session::OnOff(const Words& w, size_t i, const char* what) const {
  if (i < w.size() && w[i] == "on") return true;
  if (i < w.size() && w[i] == "off") return false;
  throw ScriptError(std::string("expected 'on' or 'off' for ") + what + ", got " +
                    (i < w.size() ? "'" + w[i] + "'" : std::string("end of line")));
}

void Session::NoMore(const Words& w, size_t i) const {
  if (i < w.size()) {
    throw ScriptError("expected end of line after '" + w[0] + "', got '" + w[i] + "'");
  }
}

CPoint Session::ParsePos(const Words& w, size_t* i, const char* what) const {
  if (*i < w.size() && w[*i] == "px") {
    const int x = Integer(w, *i + 1, "a pixel x");
    const int y = Integer(w, *i + 2, "a pixel y");
    if (x < -32768 || x > 32767 || y < -32768 || y > 32767) {
      throw ScriptError("expected pixel coordinates from -32768 to 32767");
    }
    *i += 3;
    return CPoint(x, y);
  }
  if (*i >= w.size()) {
    throw ScriptError(std::string("expected ") + what + " ('X Y' in world units or 'px X Y')" +
                      " after '" + w[0] + "', got end of line");
  }
  const double x = Number(w, *i, "a world x ('X Y' or 'px X Y')");
  const double y = Number(w, *i + 1, "a world y");
  *i += 2;
  CQVIS_Coords* c = window_->GetDesign()->m_pCoords;
  // Messages carry 16-bit coordinates: a world point far off the window lands on the edge of
  // that range instead of wrapping around to the other side.
  auto clamp16 = [](LONG v) { return std::clamp<LONG>(v, -32768, 32767); };
  return CPoint(clamp16(c->V2RX(x)), clamp16(c->V2RY(y)));
}

void Session::Repaint() {
  port_->Invalidate(true);
  port_->PaintIfNeeded();
}

// ---------------------------------------------------------------------------------------------
// Set-up.

void Session::Setup(const Words& w) {
  CQVIS_Design* d = window_->GetDesign();
  CQVIS_Coords* c = d->m_pCoords;
  const std::string& verb = w[0];
  if (verb == "window") {
    const int width = Integer(w, 1, "a width in pixels");
    const int height = Integer(w, 2, "a height in pixels");
    NoMore(w, 3);
    if (width < 1 || height < 1 || width > kMaxWindowSide || height > kMaxWindowSide) {
      throw ScriptError("expected a window size from 1 to 8192 pixels");
    }
    port_->Resize(width, height);
  } else if (verb == "unit") {
    static const std::map<std::string, int> kUnits = {
        {"mm", 0}, {"inch", 1}, {"mil", 2}, {"cm", 3}, {"micro", 4}};
    const auto it = w.size() > 1 ? kUnits.find(w[1]) : kUnits.end();
    if (it == kUnits.end()) throw ScriptError("expected a unit (mm, inch, mil, cm, micro)");
    NoMore(w, 2);
    // Clear brings the view to the new unit; the layer the session works on stays.
    const int layer = d->GetCurrentLayerID();
    d->SetUnit(it->second);
    d->Clear();
    d->SetCurrentLayerID(layer);
  } else if (verb == "view") {
    const double x = Number(w, 1, "a world x");
    const double y = Number(w, 2, "a world y");
    NoMore(w, 3);
    c->SetScreenViewPosition(x, y);
  } else if (verb == "zoom") {
    const double z = Number(w, 1, "a zoom (pixels per world unit)");
    NoMore(w, 2);
    if (!(z > 0)) throw ScriptError("expected a zoom above 0");
    c->SetZoom(z);
  } else if (verb == "grid") {
    const double x = Number(w, 1, "a grid spacing");
    const double y = w.size() > 2 ? Number(w, 2, "a grid spacing") : x;
    NoMore(w, w.size() > 2 ? 3 : 2);
    if (!(x > 0) || !(y > 0)) throw ScriptError("expected grid spacings above 0");
    c->SetGrid(x, y);
  } else if (verb == "snap") {
    if (w.size() > 1 && (w[1] == "on" || w[1] == "off")) {
      NoMore(w, 2);
      if (w[1] == "on") {
        c->ActivateSnap();
      } else {
        c->DeactivateSnap();
      }
    } else {
      const double x = Number(w, 1, "a snap spacing or 'on'/'off'");
      const double y = w.size() > 2 ? Number(w, 2, "a snap spacing") : x;
      NoMore(w, w.size() > 2 ? 3 : 2);
      if (!(x > 0) || !(y > 0)) throw ScriptError("expected snap spacings above 0");
      c->SetSnap(x, y);
    }
  } else if (verb == "show") {
    if (w.size() < 2 || (w[1] != "grid" && w[1] != "snap" && w[1] != "origin")) {
      throw ScriptError("expected 'grid', 'snap' or 'origin' after 'show'");
    }
    const int on = OnOff(w, 2, ("show " + w[1]).c_str()) ? 1 : 0;
    NoMore(w, 3);
    if (w[1] == "grid") d->m_pGridSnapMgr->SetShowGrid(on);
    if (w[1] == "snap") d->m_pGridSnapMgr->SetShowSnap(on);
    if (w[1] == "origin") d->m_pGridSnapMgr->SetShowOrigin(on);
  } else if (verb == "background") {
    unsigned long rgb = 0;
    char* end = nullptr;
    if (w.size() > 1) rgb = std::strtoul(w[1].c_str(), &end, 16);
    if (w.size() < 2 || w[1].size() != 6 || end != w[1].c_str() + 6) {
      throw ScriptError("expected a colour RRGGBB in hex after 'background'");
    }
    NoMore(w, 2);
    d->m_pSurface->SetBkColor(Rgb((rgb >> 16) & 0xFF, (rgb >> 8) & 0xFF, rgb & 0xFF));
  }
  Repaint();
}

// ---------------------------------------------------------------------------------------------
// Commands and their settings.

void Session::StartCommand(const Words& w) {
  static const char* kNames =
      "select, line, arc, rect, polygon, zoombox, circle, circle3, flash-circle, flash-rect, "
      "flash-obround, flash-polygon";
  if (w.size() < 2) throw ScriptError(std::string("expected a command name: ") + kNames);
  NoMore(w, 2);
  CQVIS_Design* d = window_->GetDesign();
  const std::string& name = w[1];
  auto start = [&](auto* cmd) {
    if (cmd->IsActived()) return;
    d->AllDeactiveCmd();
    cmd->Active();
  };
  if (name == "select") {
    window_->OnEditSelect();
  } else if (name == "line") {
    window_->OnDrawLine();
  } else if (name == "arc") {
    window_->OnDrawArc();
  } else if (name == "rect") {
    window_->OnDrawRectangle();
  } else if (name == "polygon") {
    window_->OnDrawPolygon();
  } else if (name == "zoombox") {
    window_->OnZoomZoombox();
  } else if (name == "circle") {
    start(d->m_pDrawCircleCmd);
  } else if (name == "circle3") {
    start(d->m_pDraw3PCircleCmd);
  } else if (name == "flash-circle") {
    start(d->m_pDrawFlashCircleCmd);
  } else if (name == "flash-rect") {
    start(d->m_pDrawFlashRectCmd);
  } else if (name == "flash-obround") {
    start(d->m_pDrawFlashObroundCmd);
  } else if (name == "flash-polygon") {
    start(d->m_pDrawFlashPolygonCmd);
  } else {
    throw ScriptError("expected a command name (" + std::string(kNames) + "), got '" + name +
                      "'");
  }
  command_ = name;
  ApplySettings(name);
  port_->PaintIfNeeded();
}

void Session::Set(const Words& w) {
  if (w.size() < 2) throw ScriptError("expected a setting name after 'set'");
  const std::string& key = w[1];
  CommandSettings& s = settings_[command_];
  if (key == "width") {
    const double v = Number(w, 2, "a width");
    NoMore(w, 3);
    if (v < 0) throw ScriptError("expected a width of 0 or more");
    s.width = v;
  } else if (key == "height") {
    const double v = Number(w, 2, "a height");
    NoMore(w, 3);
    if (v < 0) throw ScriptError("expected a height of 0 or more");
    s.height = v;
  } else if (key == "size") {
    const double a = Number(w, 2, "a pad width");
    const double b = Number(w, 3, "a pad height");
    NoMore(w, 4);
    if (a < 0 || b < 0) throw ScriptError("expected pad sizes of 0 or more");
    s.width = a;
    s.height = b;
  } else if (key == "endcap") {
    static const std::map<std::string, int> kCaps = {{"round", 0}, {"square", 256}, {"flat", 512}};
    const auto it = w.size() > 2 ? kCaps.find(w[2]) : kCaps.end();
    if (it == kCaps.end()) throw ScriptError("expected an end cap (round, square, flat)");
    NoMore(w, 3);
    s.end_cap = it->second;
  } else if (key == "bend") {
    const int v = Integer(w, 2, "a bend mode 0..4");
    NoMore(w, 3);
    if (v < 0 || v > 4) throw ScriptError("expected a bend mode from 0 to 4");
    s.bend = v;
  } else if (key == "diameter") {
    const double v = Number(w, 2, "a diameter");
    NoMore(w, 3);
    if (v < 0) throw ScriptError("expected a diameter of 0 or more");
    s.diameter = v;
  } else if (key == "sides") {
    const int v = Integer(w, 2, "a side count");
    NoMore(w, 3);
    if (v < 3 || v > 360) throw ScriptError("expected a side count from 3 to 360");
    s.sides = v;
  } else if (key == "hole") {
    const double a = Number(w, 2, "a hole size");
    const double b = w.size() > 3 ? Number(w, 3, "a hole height") : 0.0;
    NoMore(w, w.size() > 3 ? 4 : 3);
    if (a < 0 || b < 0) throw ScriptError("expected hole sizes of 0 or more");
    s.hole_width = a;
    s.hole_height = b;
  } else if (key == "aperture") {
    s.aperture = Integer(w, 2, "an aperture number");
    NoMore(w, 3);
  } else if (key == "layer") {
    const int layer = Integer(w, 2, "a layer number");
    NoMore(w, 3);
    window_->GetDesign()->SetCurrentLayerID(layer);
  } else if (key == "fill") {
    s.fill = OnOff(w, 2, "fill") ? 1 : 0;
    NoMore(w, 3);
  } else if (key == "drawtype") {
    if (w.size() < 3 || (w[2] != "filled" && w[2] != "outline")) {
      throw ScriptError("expected 'filled' or 'outline' after 'set drawtype'");
    }
    NoMore(w, 3);
    s.draw_type = w[2] == "filled" ? 0 : 1;
  } else {
    throw ScriptError("expected a setting (width, height, size, endcap, bend, diameter, sides, "
                      "hole, aperture, layer, fill, drawtype), got '" + key + "'");
  }
  ApplySettings(command_);
  port_->PaintIfNeeded();
}

void Session::ApplySettings(const std::string& name) {
  CQVIS_Design* d = window_->GetDesign();
  const CommandSettings& s = settings_[name];
  // A pad's size setters only store; an active pad is erased first and drawn again after.
  auto redrawn = [](auto* cmd, auto&& change) {
    const bool active = cmd->IsActived();
    if (active) cmd->Draw();
    change();
    if (active) cmd->Draw();
  };
  if (CQVIS_DrawLineCmd* line = d->m_pDrawLineCmd; line && name == "line") {
    redrawn(line, [&] {
      if (s.end_cap) line->SetEndCapStyle(*s.end_cap);
      if (s.bend) line->m_nPxy = *s.bend;
    });
    if (s.width) line->SetWidth(*s.width, false);
    if (s.aperture) line->SetApertureID(*s.aperture);
  }
  if (CQVIS_DrawCircleCmd* circle = d->m_pDrawCircleCmd; circle && name == "circle") {
    if (s.width) circle->SetWidth(*s.width);
    if (s.fill) circle->SetFill(*s.fill);
    if (s.aperture) circle->SetApertureID(*s.aperture);
  }
  if (CQVIS_Draw3PCircleCmd* circle3 = d->m_pDraw3PCircleCmd; circle3 && name == "circle3") {
    redrawn(circle3, [&] {
      if (s.width) circle3->SetWidth(*s.width);
    });
    if (s.aperture) circle3->SetApertureID(*s.aperture);
  }
  if (CQVIS_DrawArcCmd* arc = d->m_pDrawArcCmd; arc && name == "arc") {
    if (s.width) arc->SetWidth(*s.width);
    if (s.aperture) arc->SetApertureID(*s.aperture);
  }
  if (CQVIS_DrawRectCmd* rect = d->m_pDrawRectCmd; rect && name == "rect") {
    redrawn(rect, [&] {
      if (s.draw_type) rect->SetDrawType(*s.draw_type);
    });
    if (s.aperture) rect->SetApertureID(*s.aperture);
  }
  if (CQVIS_DrawPolygonCmd* polygon = d->m_pDrawPolygonCmd; polygon && name == "polygon") {
    redrawn(polygon, [&] {
      if (s.bend) polygon->m_nPxy = *s.bend;
    });
    if (s.aperture) polygon->SetApertureID(*s.aperture);
  }
  const double hole_w = s.hole_width.value_or(0.0);
  const double hole_h = s.hole_height.value_or(0.0);
  if (CQVIS_DrawFlashCircleCmd* pad = d->m_pDrawFlashCircleCmd; pad && name == "flash-circle") {
    redrawn(pad, [&] {
      if (s.diameter) pad->SetDiameter(*s.diameter);
      if (s.hole_width) pad->SetHoleSize(hole_w, hole_h);
    });
    if (s.aperture) pad->SetApertureID(*s.aperture);
  }
  // The rectangular and obround pads take the same sizes.
  auto sized_pad = [&](auto* pad) {
    redrawn(pad, [&] {
      if (s.width) pad->SetWidth(*s.width);
      if (s.height) pad->SetHeight(*s.height);
      if (s.hole_width) pad->SetHoleSize(hole_w, hole_h);
    });
    if (s.aperture) pad->SetApertureID(*s.aperture);
  };
  if (CQVIS_DrawFlashRectCmd* pad = d->m_pDrawFlashRectCmd; pad && name == "flash-rect") {
    sized_pad(pad);
  }
  if (CQVIS_DrawFlashObroundCmd* pad = d->m_pDrawFlashObroundCmd; pad && name == "flash-obround") {
    sized_pad(pad);
  }
  if (CQVIS_DrawFlashPolygonCmd* pad = d->m_pDrawFlashPolygonCmd; pad && name == "flash-polygon") {
    redrawn(pad, [&] {
      if (s.diameter) pad->SetDiameter(*s.diameter);
      if (s.sides) pad->SetSideCount(*s.sides);
      if (s.hole_width) pad->SetHoleSize(hole_w, hole_h);
    });
    if (s.aperture) pad->SetApertureID(*s.aperture);
  }
}

// ---------------------------------------------------------------------------------------------
// Input.

void Session::Feed(UINT message, WPARAM wparam, LPARAM lparam) {
  port_->Post(message, wparam, lparam);
  // The host paints what it took over from now on; the commands' own copies are gone.
  if (taker_.TakeTaken()) Repaint();
}

void Session::FeedMouse(UINT message, CPoint p) {
  WPARAM flags = 0;
  // The button of a down message is held when the window reads the flags; an up message
  // lets it go first (the port does the same with the key state).
  const bool left = message == WM_LBUTTONDOWN || message == WM_LBUTTONDBLCLK ||
                    (message != WM_LBUTTONUP && port_->IsKeyDown(VK_LBUTTON));
  const bool right =
      message == WM_RBUTTONDOWN || (message != WM_RBUTTONUP && port_->IsKeyDown(VK_RBUTTON));
  if (left) flags |= MK_LBUTTON;
  if (right) flags |= MK_RBUTTON;
  if (port_->IsKeyDown(VK_SHIFT)) flags |= MK_SHIFT;
  Feed(message, flags, Pack(p));
}

void Session::Input(const Words& w) {
  const std::string& verb = w[0];
  size_t i = 1;
  if (verb == "move") {
    const CPoint p = ParsePos(w, &i, "a position");
    NoMore(w, i);
    FeedMouse(WM_MOUSEMOVE, p);
  } else if (verb == "click" || verb == "dblclick") {
    const CPoint p = ParsePos(w, &i, "a position");
    NoMore(w, i);
    FeedMouse(WM_MOUSEMOVE, p);
    FeedMouse(WM_LBUTTONDOWN, p);
    FeedMouse(WM_LBUTTONUP, p);
    if (verb == "dblclick") {
      FeedMouse(WM_LBUTTONDBLCLK, p);
      FeedMouse(WM_LBUTTONUP, p);
    }
  } else if (verb == "drag" || verb == "rdrag") {
    const CPoint a = ParsePos(w, &i, "a start position");
    if (i >= w.size() || w[i] != "to") {
      throw ScriptError("expected 'to' between the two positions of '" + verb + "'");
    }
    ++i;
    const CPoint b = ParsePos(w, &i, "an end position");
    int steps = kDefaultDragSteps;
    if (i < w.size() && w[i] == "steps") {
      steps = Integer(w, i + 1, "a step count");
      if (steps < 1 || steps > kMaxDragSteps) {
        throw ScriptError("expected a step count from 1 to 10000");
      }
      i += 2;
    }
    NoMore(w, i);
    const bool left = verb == "drag";
    FeedMouse(WM_MOUSEMOVE, a);
    FeedMouse(left ? WM_LBUTTONDOWN : WM_RBUTTONDOWN, a);
    for (int s = 1; s <= steps; ++s) {
      const CPoint p(a.x + static_cast<LONG>(std::lround(double(b.x - a.x) * s / steps)),
                     a.y + static_cast<LONG>(std::lround(double(b.y - a.y) * s / steps)));
      FeedMouse(WM_MOUSEMOVE, p);
    }
    FeedMouse(left ? WM_LBUTTONUP : WM_RBUTTONUP, b);
  } else if (verb == "rclick") {
    const CPoint p = ParsePos(w, &i, "a position");
    NoMore(w, i);
    FeedMouse(WM_MOUSEMOVE, p);
    FeedMouse(WM_RBUTTONDOWN, p);
    FeedMouse(WM_RBUTTONUP, p);
  } else if (verb == "wheel") {
    if (w.size() < 2 || (w[1] != "up" && w[1] != "down")) {
      throw ScriptError("expected 'up' or 'down' after 'wheel'");
    }
    i = 2;
    const CPoint p = ParsePos(w, &i, "a position");
    bool shift = false;
    if (i < w.size() && w[i] == "shift") {
      shift = true;
      ++i;
    }
    NoMore(w, i);
    if (p.x >= 0 && p.y >= 0) FeedMouse(WM_MOUSEMOVE, p);
    if (shift) port_->SetKeyDown(VK_SHIFT, true);
    const int delta = w[1] == "up" ? kWheelNotch : -kWheelNotch;
    const WPARAM flags = shift ? MK_SHIFT : 0;
    Feed(WM_MOUSEWHEEL, PackWheelWParam(flags, static_cast<short>(delta)),
         Pack(port_->ClientToScreen(p)));
    if (shift) port_->SetKeyDown(VK_SHIFT, false);
  } else if (verb == "key") {
    static const std::map<std::string, int> kKeys = {
        {"esc", VK_ESCAPE}, {"enter", VK_RETURN}, {"backspace", VK_BACK}, {"space", VK_SPACE},
        {"delete", VK_DELETE}, {"r", 'R'}};
    const auto it = w.size() > 1 ? kKeys.find(w[1]) : kKeys.end();
    if (it == kKeys.end()) {
      throw ScriptError("expected a key (esc, enter, backspace, space, delete, r)");
    }
    NoMore(w, 2);
    Feed(WM_KEYDOWN, static_cast<WPARAM>(it->second), 1);
    Feed(WM_KEYUP, static_cast<WPARAM>(it->second), static_cast<LPARAM>(0xC0000001u));
  } else if (verb == "char") {
    if (w.size() < 2 || w[1].size() != 1) throw ScriptError("expected one character after 'char'");
    NoMore(w, 2);
    Feed(WM_CHAR, static_cast<WPARAM>(static_cast<unsigned char>(w[1][0])), 1);
  } else if (verb == "alt1") {
    NoMore(w, 1);
    port_->SetKeyDown(VK_MENU, true);
    Feed(WM_SYSKEYDOWN, '1', static_cast<LPARAM>(0x20000001));
    Feed(WM_SYSKEYUP, '1', static_cast<LPARAM>(0xE0000001u));
    port_->SetKeyDown(VK_MENU, false);
  }
}

// ---------------------------------------------------------------------------------------------
// Output.

void Session::Output(const Words& w) {
  const std::string& verb = w[0];
  if (verb == "echo") {
    for (size_t i = 1; i < w.size(); ++i) out_ << (i > 1 ? " " : "") << w[i];
    out_ << "\n";
    return;
  }
  if (w.size() < 2) throw ScriptError("expected a file name after '" + verb + "'");
  NoMore(w, 2);
  CQVIS_Design* d = window_->GetDesign();
  if (verb == "list" && w[1] == "-") {
    out_ << document_.Listing();
    return;
  }
  if (!files_allowed_) throw ScriptError("'" + verb + "' reads or writes a file; files are off");
  const std::string path = Resolve(w[1]);
  if (verb == "snapshot") {
    port_->PaintIfNeeded();
    if (!gdi::WritePng(port_->FrontBitmap(), path.c_str())) {
      throw ScriptError("expected a writable PNG path, could not write '" + path + "'");
    }
    written_.push_back(path);
  } else if (verb == "save") {
    d->SaveToFile(path.c_str());
    written_.push_back(path);
  } else if (verb == "load") {
    d->LoadFromFile(path.c_str());
    Repaint();
  } else if (verb == "list") {
    const std::string listing = document_.Listing();
    qvis::WriteFileAtomically(path, listing.data(), listing.size());  // throws CFileException
    written_.push_back(path);
  }
}

void Session::Expect(const Words& w) {
  if (w.size() < 3) throw ScriptError("expected 'expect KEY VALUE'");
  CQVIS_Design* d = window_->GetDesign();
  const std::string& key = w[1];
  auto fail = [&](const std::string& actual) {
    throw ScriptError("expectation failed: " + key + " is " + actual + ", expected " + w[2]);
  };
  if (key == "proc") {
    NoMore(w, 3);
    const std::string actual = d->GetCurrentProcInfo().GetString();
    if (actual != w[2]) fail("\"" + actual + "\"");
  } else if (key == "zoom") {
    const double z = Number(w, 2, "a zoom");
    NoMore(w, 3);
    if (std::fabs(d->m_pCoords->m_dZoom - z) > 1e-9 * std::max(1.0, std::fabs(z))) {
      fail(std::to_string(d->m_pCoords->m_dZoom));
    }
  } else if (key == "figures") {
    const int n = Integer(w, 2, "a figure count");
    NoMore(w, 3);
    if (static_cast<int>(document_.figures().size()) != n) {
      fail(std::to_string(document_.figures().size()));
    }
  } else if (key == "parent-keydowns") {
    const int n = Integer(w, 2, "a message count");
    NoMore(w, 3);
    int count = 0;
    for (const MSG& m : port_->ParentMessages()) count += m.message == WM_KEYDOWN ? 1 : 0;
    if (count != n) fail(std::to_string(count));
  } else {
    throw ScriptError("expected an expectation (proc, zoom, figures, parent-keydowns), got '" +
                      key + "'");
  }
}

}  // namespace qvis::session
