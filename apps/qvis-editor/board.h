// qvis::editor::Board: the board the editor shows and edits: the artwork document (layers of
// Gerber and Excellon objects), the active layer, the selection, undo and redo of every change,
// and the files it comes from and goes to. Knows no window system, so tests drive it directly.
//
// World coordinates of the canvas are millimetres with y growing downwards (as the screen);
// the board's are nanometres with y up (as every Gerber file). BoardPoint and WorldPoint map
// between them.
#ifndef APPS_QVIS_EDITOR_BOARD_H_
#define APPS_QVIS_EDITOR_BOARD_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "apps/qvis-session/host_document.h"
#include "qvis/artwork/document.h"

namespace qvis::editor {

ArtPoint BoardPoint(double world_x, double world_y);
void WorldPoint(const ArtPoint& p, double* world_x, double* world_y);

// ObjectRef names one object: the layer's index in the document and the object's in the layer.
struct ObjectRef {
  int layer = 0;
  std::size_t index = 0;
  friend bool operator==(const ObjectRef&, const ObjectRef&) = default;
  friend auto operator<=>(const ObjectRef&, const ObjectRef&) = default;
};

// The colours new layers get, in turn.
std::uint32_t DefaultLayerColour(std::size_t index);

class Board {
 public:
  Board();

  const ArtDocument& document() const { return doc_; }
  int active_layer() const { return active_; }
  void SetActiveLayer(int layer);
  // Revision grows with every change of what the board shows (edits, undo, layer settings).
  std::uint64_t revision() const { return revision_; }
  bool modified() const { return modified_; }
  void MarkSaved() { modified_ = false; }
  const std::string& path() const { return path_; }
  void SetPath(std::string path) { path_ = std::move(path); }

  // Opening. ReadArtworkFile reads one Gerber or Excellon file into a layer named after the
  // file; on failure `error` names the file, the line and column, and the cause. OpenFiles
  // reads every file first and replaces the board only when all of them were read (each one a
  // layer, in the order given); otherwise the board is left as it was.
  static bool ReadArtworkFile(const std::string& path, Layer* layer, std::string* error);
  bool OpenFiles(const std::vector<std::string>& paths, std::string* error);
  // Reset replaces the board with `doc` (no undo, not modified); programs that make boards.
  void Reset(ArtDocument doc);
  // AddFiles adds the files as new layers (one undoable step), all or nothing.
  bool AddFiles(const std::vector<std::string>& paths, std::string* error);

  // The board file: every layer (name, colour, visibility, order, kind, opacity) with its
  // artwork as Gerber, and the view. Save writes through a temporary file, so a failed save
  // keeps the old file; `error` says why. Load replaces the board only when the whole file
  // was read.
  struct View {
    double zoom = 0.0;  // 0: no view stored
    double x = 0.0;
    double y = 0.0;
  };
  bool Save(const std::string& path, const View& view, std::string* error);
  bool Load(const std::string& path, View* view, std::string* error);
  static std::string Serialize(const ArtDocument& doc, const std::vector<int>& opacity,
                               const View& view);
  static bool Parse(const std::string& text, ArtDocument* doc, std::vector<int>* opacity,
                    View* view, std::string* error);

  // Exports: the layer as a Gerber file; the visible layers as SVG (board coordinates, mm).
  bool ExportGerber(int layer, const std::string& path, std::string* error) const;
  std::string SvgOfVisibleLayers() const;

  // Layers panel.
  int AddLayer(const std::string& name);
  void SetLayerVisible(int layer, bool visible);
  void SetLayerColour(int layer, std::uint32_t colour);
  // MoveLayer swaps the drawing order of `layer` with its neighbour (delta -1 or +1).
  void MoveLayer(int layer, int delta);
  int opacity(int layer) const;  // percent, 100 opaque
  void SetOpacity(int layer, int percent);

  // Editing; every call below is one undoable step.
  // AddFigure turns a figure a command finished into objects of the active layer.
  void AddFigure(const session::Figure& figure);
  void DeleteSelection();
  // MoveSelection moves the selected objects by (dx, dy) world millimetres.
  void MoveSelection(double dx, double dy);
  void Copy();
  // Paste adds the copied objects to the active layer, offset by (dx, dy) world mm, and
  // selects them.
  void Paste(double dx, double dy);
  // SetSelectionWidth gives selected tracks and arcs a round aperture of `width` world mm.
  void SetSelectionWidth(double width);
  // MoveSelectionToLayer moves the selected objects to another layer (apertures copied).
  void MoveSelectionToLayer(int layer);
  bool Undo();
  bool Redo();
  bool CanUndo() const { return !undo_.empty(); }
  bool CanRedo() const { return !redo_.empty(); }

  // Selection. HitTest finds the topmost object of a visible layer within `tolerance` world mm
  // of a world point; SelectBox picks the objects wholly inside a world box.
  bool HitTest(double wx, double wy, double tolerance, ObjectRef* hit) const;
  void SelectAt(double wx, double wy, double tolerance, bool add);
  void SelectBox(double x1, double y1, double x2, double y2, bool add);
  void SelectAll();
  void ClearSelection();
  const std::vector<ObjectRef>& selection() const { return selection_; }
  const ArtObject* Object(const ObjectRef& ref) const;
  // SelectionLayer: a layer with copies of the selected objects (and their apertures), for
  // drawing the highlight.
  Layer SelectionLayer(std::uint32_t colour) const;

  // Extent of the visible artwork in world mm; false when there is none.
  bool Extent(double* x1, double* y1, double* x2, double* y2) const;

 private:
  struct State {
    ArtDocument doc;
    std::vector<int> opacity;
    int active = 0;
  };
  void Checkpoint();
  void Changed();
  static int ApertureFor(Layer* layer, const Aperture& aperture);
  static int CircleAperture(Layer* layer, double width_mm);

  ArtDocument doc_;
  std::vector<int> opacity_;
  int active_ = 0;
  std::vector<State> undo_;
  std::vector<State> redo_;
  std::vector<ObjectRef> selection_;
  std::vector<ArtObject> clipboard_;
  std::vector<Aperture> clipboard_apertures_;  // by the clipboard object's index
  std::uint64_t revision_ = 1;
  bool modified_ = false;
  std::string path_;
};

}  // namespace qvis::editor

#endif  // APPS_QVIS_EDITOR_BOARD_H_
