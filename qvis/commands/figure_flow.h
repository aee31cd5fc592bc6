// FigureFlow: the protocol steps every single-figure command shares (point, circles, arc,
// rectangle and the pads): switching on and off, dropping the figure in progress, recolouring. Internal to
// qvis/commands; each command calls these from its own public operations.
#ifndef QVIS_COMMANDS_FIGURE_FLOW_H_
#define QVIS_COMMANDS_FIGURE_FLOW_H_

#include "qvis/commands/rubber_band.h"

namespace qvis {

// FigureFlow<Cmd>: over the command's m_nActive and m_nProgress and its Draw, which paints
// the XOR figure of the current step (and nothing while inactive).
template <class Cmd>
struct FigureFlow {
  // Active: if inactive, progress 0, active and the footprint drawn. Active: nothing.
  static void Active(Cmd& c) {
    if (c.m_nActive) return;
    c.m_nProgress = 0;
    c.m_nActive = 1;
    c.Draw();
  }
  // Deactive: if active, the figure erased, progress 0 and inactive. Inactive: nothing.
  static void Deactive(Cmd& c) {
    if (!c.m_nActive) return;
    c.Draw();
    c.m_nProgress = 0;
    c.m_nActive = 0;
  }
  // Cancel drops the figure in progress (back to the footprint). Inactive: nothing.
  static void Cancel(Cmd& c) {
    if (c.m_nActive) RubberBand::Update(c, [&] { c.m_nProgress = 0; });
  }
  // SetColor sets the committed and the XOR colour with the figure erased and drawn again.
  static void SetColor(Cmd& c, unsigned long color, unsigned long xor_color) {
    RubberBand::Update(c, [&] {
      c.m_crColor = static_cast<COLORREF>(color);
      c.m_crXORColor = static_cast<COLORREF>(xor_color);
    });
  }
  // EscapeKey handles Esc: with nothing in progress it asks to leave the command (-1), else it
  // drops the figure (1). Any other key, or an inactive command: 0.
  static int EscapeKey(Cmd& c, int key) {
    if (!c.m_nActive || key != kKeyEscape) return kNotHandled;
    if (c.m_nProgress == 0) return kLeaveCommand;
    Cancel(c);
    return kHandled;
  }
};

}  // namespace qvis

#endif  // QVIS_COMMANDS_FIGURE_FLOW_H_
