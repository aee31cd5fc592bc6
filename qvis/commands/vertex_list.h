// VertexListFlow: the protocol steps the two vertex-list commands (track and polygon) share:
// owning-list housekeeping, the click step with its automatic bend, moves, keys, finishing and
// removing the last vertex. Internal to qvis/commands; each command supplies its own drawing
// (Draw, DrawLineList ...) and its record type, and calls these steps from its public operations.
#ifndef QVIS_COMMANDS_VERTEX_LIST_H_
#define QVIS_COMMANDS_VERTEX_LIST_H_

#include <array>
#include <cstdio>
#include <memory>
#include <type_traits>

#include "qvis/commands/construction.h"
#include "qvis/commands/rubber_band.h"
#include "qvis/compat/carray.h"
#include "qvis/compat/cstring.h"

namespace qvis {

// Owned record lists: CArray<Record*> whose records the list owns.
template <class Record>
struct OwnedList {
  using List = CArray<Record*, Record*>;

  // Empty frees every record and empties the list. Null: nothing.
  static void Empty(List* list) {
    if (!list) return;
    for (Record* r : *list) delete r;
    list->RemoveAll();
  }
  // Destroy frees the records and the list and nulls the pointer. Null: nothing.
  static void Destroy(List*& list) {
    Empty(list);
    delete list;
    list = nullptr;
  }
  // CopyInto replaces the records of dst (created when null) by copies of src's.
  static void CopyInto(List*& dst, const List* src) {
    if (!dst) dst = new List;
    Empty(dst);
    if (src) {
      for (const Record* r : *src) dst->Add(new Record(*r));
    }
  }
  static bool IsLast(const List* list, double x, double y) {
    if (!list || list->IsEmpty()) return false;
    const Record* last = list->GetAt(list->GetUpperBound());
    return last->m_dX == x && last->m_dY == y;
  }
  static INT_PTR Count(const List* list) { return list ? list->GetSize() : 0; }
};

// VertexListFlow<Cmd>: the shared steps, over the public members both commands declare (the
// two lists, surface and target, m_nActive, m_nProgress, m_nPxy, anchor, cursor, bend point,
// info step, colours) and their operations (Draw, DrawLineList, DrawLineList(c),
// DrawLineListBackup, AddPoint, GetPxy, MakeBackup, ReleasePoints, SetInfoLine).
template <class Cmd>
struct VertexListFlow {
  using Owned = OwnedList<typename Cmd::Record>;

  // CopyState copies what both commands hold (lists deep-copied) from `o` into `c`; each
  // command's operator= adds its own members.
  static void CopyState(Cmd& c, const Cmd& o) {
    Owned::CopyInto(c.m_pPointList, o.m_pPointList);
    Owned::CopyInto(c.m_pBackupList, o.m_pBackupList);
    c.m_pSurface = o.m_pSurface;
    c.m_hTargetDC = o.m_hTargetDC;
    c.m_nActive = o.m_nActive;
    c.m_nLineStyle = o.m_nLineStyle;
    c.m_nPxy = o.m_nPxy;
    c.m_nLayer = o.m_nLayer;
    c.m_nApertureID = o.m_nApertureID;
    c.m_dAnchorX = o.m_dAnchorX;
    c.m_dAnchorY = o.m_dAnchorY;
    c.m_dCursorX = o.m_dCursorX;
    c.m_dCursorY = o.m_dCursorY;
    c.m_dPx = o.m_dPx;
    c.m_dPy = o.m_dPy;
    c.m_nProgress = o.m_nProgress;
    c.m_nInfoStep = o.m_nInfoStep;
    c.m_crColor = o.m_crColor;
    c.m_crXORColor = o.m_crXORColor;
    c.m_crBackupColor = o.m_crBackupColor;
    c.m_strInfo = o.m_strInfo;
  }

  // Init gives the command fresh empty lists (a second Init frees the lists it finds instead
  // of losing them), inactive, progress 0, anchor and cursor at the origin.
  static void Init(Cmd& c) {
    c.m_nInfoStep = 0;
    // Both new lists exist before the old ones go: a failed allocation changes nothing.
    auto points = std::make_unique<typename Owned::List>();
    auto backup = std::make_unique<typename Owned::List>();
    Owned::Destroy(c.m_pPointList);
    Owned::Destroy(c.m_pBackupList);
    c.m_pPointList = points.release();
    c.m_pBackupList = backup.release();
    c.m_nActive = 0;
    c.m_dAnchorX = c.m_dAnchorY = 0.0;
    c.m_dCursorX = c.m_dCursorY = 0.0;
    c.m_nProgress = 0;
  }

  // Clear empties both lists and resets anchor, cursor and progress; the lists stay allocated.
  static void Clear(Cmd& c) {
    c.m_dAnchorX = c.m_dAnchorY = 0.0;
    c.m_dCursorX = c.m_dCursorY = 0.0;
    c.m_nProgress = 0;
    Owned::Empty(c.m_pPointList);
    Owned::Empty(c.m_pBackupList);
  }

  // Release clears and frees both lists (the pointers become null).
  static void Release(Cmd& c) {
    Clear(c);
    Owned::Destroy(c.m_pPointList);
    Owned::Destroy(c.m_pBackupList);
  }

  // AddPoint appends the record `make()` builds unless (x, y) equals the last vertex's
  // position; a null list is created first.
  template <class Make>
  static void AddPoint(Cmd& c, double x, double y, Make&& make) {
    if (!c.m_pPointList) c.m_pPointList = new typename Owned::List;
    if (Owned::IsLast(c.m_pPointList, x, y)) return;
    // The vertex is held until the list has taken it: a failed Add frees it.
    std::unique_ptr<std::remove_pointer_t<decltype(make())>> vertex(make());
    c.m_pPointList->Add(vertex.get());
    vertex.release();
  }

  static int MouseDown(Cmd& c, unsigned flags, double x, double y) {
    if (!c.m_nActive || flags != kLeftButton) return kNotHandled;
    return ClickStep(c, x, y);
  }

  // MouseUp claims the right-button release while active (the host shows no menu then).
  static int MouseUp(const Cmd& c, unsigned flags) {
    if (!c.m_nActive) return kNotHandled;
    return flags == kRightButton ? kHandled : kNotHandled;
  }

  static int MouseDblClk(Cmd& c) {
    if (!c.m_nActive) return kNotHandled;
    Finish(c);
    return kHandled;
  }

  static void SetColor(Cmd& c, unsigned long color, unsigned long xor_color) {
    ListChange(c, [&] {
      c.m_crColor = static_cast<COLORREF>(color);
      c.m_crXORColor = static_cast<COLORREF>(xor_color);
    });
  }

  // PaintList runs `paint` over `list` with the target in copy mode, leaving it in XOR mode for
  // the rubber band; the erase pass (DrawLineList(c)) paints in merge mode and leaves copy mode.
  // Nothing while inactive or with fewer than 2 vertices.
  template <class Paint>
  static void PaintList(const Cmd& c, const typename Owned::List* list, bool erase_pass,
                        Paint&& paint) {
    if (!c.m_nActive || Owned::Count(list) < 2) return;
    const RubberBand band(c.m_pSurface, c.m_hTargetDC);
    if (erase_pass) {
      band.MergeMode();
    } else {
      band.CopyMode();
    }
    paint();
    if (erase_pass) {
      band.CopyMode();
    } else {
      band.XorMode();
    }
  }

  // Append adds a vertex with the command's current stroke data.
  static void Append(Cmd& c, double x, double y) {
    if constexpr (requires { c.m_dWidth; }) {
      c.AddPoint(x, y, c.m_dWidth);
    } else {
      c.AddPoint(x, y);
    }
  }

  static int GetPxy(Cmd& c) {
    TrackBend bend{{c.m_dAnchorX, c.m_dAnchorY}, {c.m_dCursorX, c.m_dCursorY}, c.m_nPxy};
    WorldPt p;
    const bool has = bend.BendPoint(&p);
    c.m_nPxy = bend.mode;
    if (!has) return 0;
    c.m_dPx = p.x;
    c.m_dPy = p.y;
    return 1;
  }

  // Legs are the rubber band's legs from the anchor to the cursor (see TrackBend::Legs); they
  // also leave the bend point in the members, as GetPxy does.
  static int Legs(Cmd& c, WorldSeg out[2]) {
    if (c.m_nPxy == kBendNone) {
      out[0] = {{c.m_dAnchorX, c.m_dAnchorY}, {c.m_dCursorX, c.m_dCursorY}};
      return 1;
    }
    if (!GetPxy(c)) return 0;
    out[0] = {{c.m_dAnchorX, c.m_dAnchorY}, {c.m_dPx, c.m_dPy}};
    out[1] = {{c.m_dPx, c.m_dPy}, {c.m_dCursorX, c.m_dCursorY}};
    return 2;
  }

  static int MouseMove(Cmd& c, double x, double y) {
    if (!c.m_nActive) return kNotHandled;
    if (c.m_nProgress == 0) {
      if (x == c.m_dAnchorX && y == c.m_dAnchorY) return kNotHandled;
      RubberBand::Update(c, [&] {
        c.m_dAnchorX = c.m_dCursorX = x;
        c.m_dAnchorY = c.m_dCursorY = y;
      });
    } else {
      if (x == c.m_dCursorX && y == c.m_dCursorY) return kNotHandled;
      RubberBand::Update(c, [&] {
        c.m_dCursorX = x;
        c.m_dCursorY = y;
      });
    }
    c.SetInfoLine();
    return kHandled;
  }

  // ClickStep fixes a vertex. Progress 0 starts a figure at (x, y). Progress 1 adds the cursor
  // (the position of the last move), preceded by the bend point when the bend mode gives one;
  // the new anchor is the click position.
  static int ClickStep(Cmd& c, double x, double y) {
    if (c.m_nProgress == 0) {
      RubberBand::Update(c, [&] {
        c.m_dAnchorX = c.m_dCursorX = x;
        c.m_dAnchorY = c.m_dCursorY = y;
        c.m_nProgress = 1;
        Append(c, x, y);
        // A list the host has not emptied goes on from its last vertex: paint the joining
        // segment at once, as every fixed vertex is painted.
        c.DrawLineList();
      });
      c.SetInfoLine();
      return kHandled;
    }
    if (c.m_nProgress != 1) return kNotHandled;
    RubberBand::Update(c, [&] {
      const INT_PTR n = Owned::Count(c.m_pPointList);
      INT_PTR expected;
      if (c.m_nPxy != kBendNone && c.GetPxy()) {
        c.MakeBackup();
        Append(c, c.m_dPx, c.m_dPy);
        Append(c, c.m_dCursorX, c.m_dCursorY);
        expected = n + 2;
      } else {
        if (c.m_nPxy != kBendNone) {
          c.m_dAnchorX = c.m_dCursorX = x;
          c.m_dAnchorY = c.m_dCursorY = y;
        }
        c.MakeBackup();
        Append(c, c.m_dCursorX, c.m_dCursorY);
        expected = n + 1;
      }
      // A vertex equal to the last one was skipped: repaint the list as it was first.
      if (Owned::Count(c.m_pPointList) != expected) {
        c.DrawLineListBackup(c.m_crBackupColor);
      }
      c.DrawLineList();
      c.m_dAnchorX = c.m_dCursorX = x;
      c.m_dAnchorY = c.m_dCursorY = y;
    });
    c.SetInfoLine();
    return kHandled;
  }

  // Finish ends the figure with the list kept: erase, progress 0 and the list painted (a
  // polygon closed), then the footprint.
  static void Finish(Cmd& c) {
    RubberBand::Update(c, [&] {
      c.m_nProgress = 0;
      c.DrawLineList();
    });
    c.SetInfoLine();
  }

  // Escape drops the figure in progress and shows the footprint at the cursor.
  static void Escape(Cmd& c) {
    c.ReleasePoints();
    RubberBand::Update(c, [&] {
      c.m_dAnchorX = c.m_dCursorX;
      c.m_dAnchorY = c.m_dCursorY;
      c.m_nProgress = 0;
    });
    c.SetInfoLine();
  }

  static int KeyPress(Cmd& c, int key) {
    if (!c.m_nActive) return kNotHandled;
    switch (key) {
      case kKeyEscape:
        if (c.m_nProgress == 0) return key - 28;  // -1: leave the command
        Escape(c);
        return kHandled;
      case kKeyReturn:
        c.MouseDown(kLeftButton, c.m_dCursorX, c.m_dCursorY);
        Finish(c);
        return kHandled;
      case kKeyBack:
        c.Back(0);
        return kHandled;
      case kKeySpace:
        RubberBand::Update(c, [&] { c.m_nPxy = NextBendMode(c.m_nPxy); });
        return kHandled;
      default:
        return kNotHandled;
    }
  }

  static void Back(Cmd& c, unsigned long color) {
    if (Owned::Count(c.m_pPointList) == 0) return;
    RubberBand::Update(c, [&] {
      c.DrawLineList(color);
      typename Cmd::Record* last = c.m_pPointList->GetAt(c.m_pPointList->GetUpperBound());
      c.m_pPointList->RemoveAt(c.m_pPointList->GetUpperBound());
      delete last;
      if (!c.m_pPointList->IsEmpty()) {
        const typename Cmd::Record* now = c.m_pPointList->GetAt(c.m_pPointList->GetUpperBound());
        c.m_dAnchorX = now->m_dX;
        c.m_dAnchorY = now->m_dY;
      }
      c.DrawLineList();
    });
  }

  // ListChange applies a change that alters the list's look while active: the rubber band is
  // erased, the list painted over in merge mode, the change made, the list painted in copy
  // mode and the band drawn again. (What the merge pass leaves under a narrowed or recoloured
  // list is cleaned by the host's next repaint.)
  template <class Change>
  static void ListChange(Cmd& c, Change&& change) {
    RubberBand::Update(c, [&] {
      c.DrawLineList(c.m_crColor);
      change();
      c.DrawLineList();
    });
  }

  static void Active(Cmd& c) {
    if (c.m_nActive) return;
    c.m_nProgress = 0;
    c.m_nActive = 1;
    c.Draw();
    c.m_nInfoStep = 0;
    c.SetInfoLine();
  }

  static void Deactive(Cmd& c) {
    if (!c.m_nActive) return;
    RubberBand::Update(c, [&] {
      c.DrawLineList();  // the list stays on screen
      c.ReleasePoints();
      c.m_nProgress = 0;
      c.m_nActive = 0;
    });
    c.m_nInfoStep = 0;
    c.SetInfoLine();
  }

  // InfoLine composes the prompt of the current step into a temporary text (cut at the
  // buffer's size). It runs on every mouse move, so the text lives on the stack.
  static std::array<char, 128> InfoLine(const Cmd& c) {
    std::array<char, 128> text{};
    if (c.m_nProgress == 1) {
      std::snprintf(text.data(), text.size(), "Click next position (dx=%2.3f,dy=%2.3f)",
                    c.m_dCursorX - c.m_dAnchorX, -(c.m_dCursorY - c.m_dAnchorY));
    } else {
      std::snprintf(text.data(), text.size(), "Click first position");
    }
    return text;
  }
};

}  // namespace qvis

// QVIS_VERTEX_LIST_OPERATIONS(Cmd) defines the public operations the track and polygon commands
// both hand to VertexListFlow unchanged; each command's .cc expands it once and writes its own
// constructors, drawing and setters.
#define QVIS_VERTEX_LIST_OPERATIONS(Cmd)                                                     \
  void Cmd::Init() { qvis::VertexListFlow<Cmd>::Init(*this); }                              \
  void Cmd::Clear() { qvis::VertexListFlow<Cmd>::Clear(*this); }                            \
  void Cmd::Release() { qvis::VertexListFlow<Cmd>::Release(*this); }                        \
  void Cmd::ReleasePoints() { qvis::OwnedList<Cmd::Record>::Empty(m_pPointList); }          \
  void Cmd::Active() { qvis::VertexListFlow<Cmd>::Active(*this); }                          \
  void Cmd::Deactive() { qvis::VertexListFlow<Cmd>::Deactive(*this); }                      \
  void Cmd::Cancel() {                                                                       \
    if (m_nActive) qvis::VertexListFlow<Cmd>::Escape(*this);                                 \
  }                                                                                          \
  int Cmd::MouseMove(double x, double y) {                                                   \
    return qvis::VertexListFlow<Cmd>::MouseMove(*this, x, y);                                \
  }                                                                                          \
  int Cmd::MouseDown(unsigned int nFlags, double x, double y) {                              \
    return qvis::VertexListFlow<Cmd>::MouseDown(*this, nFlags, x, y);                        \
  }                                                                                          \
  int Cmd::MouseUp(unsigned int nFlags, double, double) {                                    \
    return qvis::VertexListFlow<Cmd>::MouseUp(*this, nFlags);                                \
  }                                                                                          \
  int Cmd::MouseDblClk() { return qvis::VertexListFlow<Cmd>::MouseDblClk(*this); }          \
  int Cmd::KeyPress(int nKey) { return qvis::VertexListFlow<Cmd>::KeyPress(*this, nKey); }  \
  int Cmd::Done() { return qvis::VertexListFlow<Cmd>::KeyPress(*this, qvis::kKeyReturn); }  \
  void Cmd::OnDraw() {                                                                       \
    DrawLineList();                                                                          \
    Draw();                                                                                  \
  }                                                                                          \
  /* The prompt is composed for the step; the host builds its own from the state. */        \
  void Cmd::SetInfoLine() { (void)qvis::VertexListFlow<Cmd>::InfoLine(*this); }             \
  void Cmd::SetColor(unsigned long crColor, unsigned long crXORColor) {                      \
    qvis::VertexListFlow<Cmd>::SetColor(*this, crColor, crXORColor);                         \
  }                                                                                          \
  void Cmd::SetLineStyle(int nStyle) {                                                       \
    qvis::VertexListFlow<Cmd>::ListChange(*this, [&] { m_nLineStyle = nStyle; });            \
  }                                                                                          \
  int Cmd::IsLastPosition(double x, double y) const {                                        \
    return qvis::OwnedList<Cmd::Record>::IsLast(m_pPointList, x, y) ? 1 : 0;                 \
  }                                                                                          \
  void Cmd::MakeBackup() { qvis::OwnedList<Cmd::Record>::CopyInto(m_pBackupList, m_pPointList); } \
  int Cmd::GetPxy() { return qvis::VertexListFlow<Cmd>::GetPxy(*this); }                    \
  void Cmd::Back(unsigned long crColor) { qvis::VertexListFlow<Cmd>::Back(*this, crColor); }

#endif  // QVIS_COMMANDS_VERTEX_LIST_H_
