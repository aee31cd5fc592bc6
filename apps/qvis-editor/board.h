// qvis::editor::Board: what the editor keeps beside the library's board document (ArtBoard,
// which holds the layers, the index, the selection and undo): the file the board came from,
// the layers' opacity on screen, the clipboard, and the editor's file operations (opening
// artwork files as layers, exports). Knows no window system, so tests drive it directly.
//
// World coordinates of the canvas are millimetres with y growing downwards (as the screen);
// the board's are nanometres with y up (as every Gerber file), see qvis/artwork/board_window.h.
#ifndef APPS_QVIS_EDITOR_BOARD_H_
#define APPS_QVIS_EDITOR_BOARD_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "qvis/artwork/board.h"
#include "qvis/artwork/board_window.h"
#include "qvis/commands/finished_figure.h"

namespace qvis::editor {

// The colours new layers get, in turn.
std::uint32_t DefaultLayerColour(std::size_t index);

class Board {
 public:
  Board();
  ~Board();
  // The board listens to its document; it stays where it was made.
  Board(const Board&) = delete;
  Board& operator=(const Board&) = delete;

  ArtBoard& art() { return art_; }
  const ArtBoard& art() const { return art_; }
  // The live objects, in drawing order (a copy: for tests and exports, not for every frame).
  ArtDocument document() const { return art_.Document(); }
  // The layer new figures go to (within the layers there are: undo may remove the last).
  int active_layer() const;
  void SetActiveLayer(int layer);
  bool modified() const { return art_.IsModified(); }
  // Counts every change to what the canvas shows of the board (edits, undo, selection, layers,
  // opacity, a new board): equal revisions draw the same picture at the same view.
  std::uint64_t revision() const { return revision_; }
  const std::string& path() const { return path_; }

  // Opening. ReadArtworkFile reads one Gerber or Excellon file into a layer named after the
  // file; on failure `error` names the file, the line and column, and the cause. OpenFiles
  // reads every file first and replaces the board only when all of them were read (each one a
  // layer, in the order given); otherwise the board is left as it was. The layers stack as the
  // board does seen from the top (back legend at the back, front copper over back copper, the
  // outline and drills in front) when every file says what it is, by its function attribute
  // or its name; otherwise in the order given, the last in front.
  static bool ReadArtworkFile(const std::string& path, Layer* layer, std::string* error);
  bool OpenFiles(const std::vector<std::string>& paths, std::string* error);
  // Reset replaces the board with `doc` (no undo, not modified); programs that make boards.
  void Reset(ArtDocument doc);
  // AddFiles adds the files as new layers (one undoable step), all or nothing.
  bool AddFiles(const std::vector<std::string>& paths, std::string* error);

  // The board file is the library's board text format with `view` (a failed save keeps the
  // old file; Load replaces the board only when the whole file was read). Opacity is how the
  // editor shows a layer, not part of the board: it is not saved.
  bool Save(const std::string& path, const BoardView& view, std::string* error);
  bool Load(const std::string& path, BoardView* view, std::string* error);

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
  // Per layer, 0..255, for drawing.
  std::vector<std::uint8_t> LayerAlpha() const;

  // Editing; every call below is one undoable step.
  // AddFigure turns a figure a command finished into objects of the active layer.
  void AddFigure(const FinishedFigure& figure);
  void DeleteSelection();
  // MoveSelection moves the selected objects by (dx, dy) world millimetres.
  void MoveSelection(double dx, double dy);
  void Copy();
  // SelectionPicture: the selected objects alone, on layers with the board's apertures, all
  // in `colour` (negative images and clear objects made dark: a preview shows where objects
  // go, not what they erase). For the ghost of a drag.
  ArtDocument SelectionPicture(std::uint32_t colour) const;
  // Paste adds the copied objects to the active layer, offset by (dx, dy) world mm, and
  // selects them.
  void Paste(double dx, double dy);
  // SetSelectionWidth gives selected tracks and arcs a round aperture of `width` world mm.
  void SetSelectionWidth(double width);
  // SetSelectionPad gives the selected pads (flashes) an aperture of their shape with the
  // given width (the diameter of round and polygon pads), height (rectangles and obrounds),
  // hole and side count (polygons); a negative value (sides below 3) keeps that property.
  // Other selected objects are left alone.
  void SetSelectionPad(double width, double height, double hole, int sides);
  // MoveSelectionToLayer moves the selected objects to another layer (apertures copied).
  void MoveSelectionToLayer(int layer);
  bool Undo();
  bool Redo();
  bool CanUndo() const { return art_.CanUndo(); }
  bool CanRedo() const { return art_.CanRedo(); }

  // Selection. HitTest finds the topmost object of a visible layer within `tolerance` world mm
  // of a world point; SelectBox picks the objects wholly inside a world box.
  bool HitTest(double wx, double wy, double tolerance, ObjectRef* hit) const;
  void SelectAt(double wx, double wy, double tolerance, bool add);
  void SelectBox(double x1, double y1, double x2, double y2, bool add);
  void SelectAll();
  void ClearSelection() { art_.Select({}); }
  const std::vector<ObjectRef>& selection() const { return art_.selection(); }
  const ArtObject* Object(const ObjectRef& ref) const;

  // Extent of the visible artwork in world mm; false when there is none.
  bool Extent(double* x1, double* y1, double* x2, double* y2) const;

 private:
  void Replace(ArtBoard board);

  class Watcher : public BoardListener {
   public:
    explicit Watcher(std::uint64_t* revision) : revision_(revision) {}
    void OnBoardChanged(const ArtBox&) override { ++*revision_; }

   private:
    std::uint64_t* revision_;
  };

  ArtBoard art_;
  BoardFigureSink sink_{&art_, 1e6};
  std::vector<int> opacity_;  // by layer; missing: opaque
  std::vector<ArtObject> clipboard_;
  std::vector<Aperture> clipboard_apertures_;  // by the clipboard object's index
  std::string path_;
  std::uint64_t revision_ = 0;
  Watcher watcher_{&revision_};
};

}  // namespace qvis::editor

#endif  // APPS_QVIS_EDITOR_BOARD_H_
