// qvis::editor::EditorWindow: the editor's main window: the canvas (a drawing window on the Qt
// port that paints the board through its host hook), menus and a tool bar for every command,
// the status bar, and the layers and properties panels. Tests drive it on Qt's offscreen
// platform through the same actions the menus hold.
#ifndef APPS_QVIS_EDITOR_EDITOR_WINDOW_H_
#define APPS_QVIS_EDITOR_EDITOR_WINDOW_H_

#include <QMainWindow>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "apps/qvis-editor/board.h"
#include "qvis/artwork/render.h"
#include "qvis/window/drawing_window.h"
#include "qvis/window/qt/qt_port.h"

class QAction;
class QDoubleSpinBox;
class QLabel;
class QListWidget;
class QComboBox;
class QSpinBox;

namespace qvis::editor {

// Canvas: the drawing window with the board drawn in its host hook through the board's index
// (each visible layer in its colour and opacity, the selection highlighted, over major grid
// lines), and the crosshair on the snapped point while a drawing command runs.
//
// The composed picture of the last frame (grid and board) is kept. A frame whose view only
// moved by whole pixels (a pan), with nothing else changed, shifts that picture and draws the
// board just in the strips the shift uncovered; anything else (zoom, size, an edit, the
// selection, layers, the grid) draws the whole frame.
class Canvas : public CQVIS_Wnd {
 public:
  explicit Canvas(Board* board) : board_(board) {}
  void OnPaint() override;
  BOOL OnMouseWheel(UINT nFlags, short zDelta, CPoint pt) override;
  void OnDrawHost(CQVIS_GDI* surface, qvis::HDC dc) override;
  void OnMouseMove(UINT nFlags, CPoint point) override;
  // NormalizeView puts the view where a pan by whole pixels moves every object, grid line and
  // sample of the board drawing by exactly whole pixels (see the .cc); every paint starts with
  // it. False at zooms where it would change the zoom visibly (then pans draw whole).
  bool NormalizeView();
  // Below this many nanometres per pixel the view is left alone.
  static constexpr double kMinNmPerPixel = 99.0;
  // DrawingCommandActive: a command that places figures is running (the crosshair snaps).
  bool DrawingCommandActive();
  // The pixels between major grid lines are `major_every` minor spacings.
  int major_every = 10;
  std::uint32_t highlight = 0xFFFFFF;

  // How the last frame was made: kFull drew everything, kShifted moved the kept picture (by
  // (dx, dy) pixels, possibly none) and drew the strips it uncovered.
  enum class Frame { kFull, kShifted };
  Frame last_frame() const { return last_frame_; }
  int last_shift_x() const { return shift_x_; }
  int last_shift_y() const { return shift_y_; }
  // Off: every frame is drawn whole (tests compare the two). Either way drops the picture.
  void SetKeepPicture(bool keep);
  // The next frame is drawn whole (for changes the canvas cannot see for itself).
  void DropPicture() { picture_.clear(); }
  // The ghost of a drag: `objects` drawn over the frame, translucent, moved by (dx, dy) world
  // mm; it is no part of the kept picture. ClearGhost removes it.
  void SetGhost(ArtDocument objects);
  void MoveGhost(double dx, double dy);
  void ClearGhost() { ghost_.reset(); }
  bool HasGhost() const { return ghost_ != nullptr; }

 private:
  // What the picture depends on besides the view's position.
  struct PictureKey {
    std::uint64_t revision = 0;
    double zoom = 0, scale = 0, grid_x = 0, grid_y = 0, snap_x = 0, snap_y = 0;
    int width = 0, height = 0, major_every = 0;
    int show_grid = 0, show_snap = 0, show_origin = 0;
    std::uint32_t highlight = 0, background = 0;
    bool operator==(const PictureKey&) const = default;
  };
  PictureKey KeyNow(CQVIS_GDI* surface, int width, int height);
  void DrawMajorGrid(qvis::HDC dc, int width, int height);

  Board* board_;
  bool keep_picture_ = true;
  std::vector<std::uint32_t> picture_;  // the last frame, rows top down
  std::vector<std::uint32_t> marks_;    // the last frame before the board was drawn on it
  PictureKey key_;
  double view_x_ = 0, view_y_ = 0;
  qvis::Coord origin_x_ = 0, origin_y_ = 0;  // the board origin the kept picture was drawn at
  Frame last_frame_ = Frame::kFull;
  bool normalized_ = false;  // the view of this paint is on the lattice
  CPoint pivot_;             // the point NormalizeView keeps: the cursor, or the wheel's point
  std::unique_ptr<ArtBoard> ghost_;
  double ghost_dx_ = 0, ghost_dy_ = 0;
  int shift_x_ = 0, shift_y_ = 0;
};

enum class DisplayUnit { kMm, kInch, kMil, kCm, kMicron };

class EditorWindow : public QMainWindow {
 public:
  EditorWindow();
  ~EditorWindow() override;

  Board& board() { return board_; }
  Canvas& canvas() { return canvas_; }
  QtWindowPort* port() { return port_; }
  CQVIS_Design* design() { return canvas_.GetDesign(); }

  // Files. Each returns false (and leaves the board as it was) when it fails; `Error` has
  // the message, which is also shown unless messages are quiet (tests, --snapshot).
  bool OpenFiles(const QStringList& paths);
  bool SaveAs(const QString& path);
  bool ExportGerberLayer(int layer, const QString& path);
  bool ExportPng(const QString& path);
  bool ExportSvg(const QString& path);
  const QString& Error() const { return error_; }
  void SetQuiet(bool quiet) { quiet_ = quiet; }
  QStringList RecentFiles() const { return recent_; }

  // View.
  void FitView();
  void SetDisplayUnit(DisplayUnit unit);
  DisplayUnit display_unit() const { return unit_; }
  // FormatLength: a world length in the display unit, with the unit's name.
  QString FormatLength(double mm) const;
  QString StatusText() const;  // position, zoom, grid and snap, prompt, as shown
  // The world spacing of the grid as drawn, for the zoom now (the base spacing coarsened by
  // powers of ten until it is at least kMinGridPixels apart).
  double DisplayedGrid() const;
  static constexpr double kMinGridPixels = 8.0;
  void SetBaseGrid(double mm);
  void SetSnap(double mm);

  // The tool bar's and menus' actions by name ("track", "pad-round", "undo", "fit", ...).
  QAction* Action(const std::string& name) const;
  std::vector<std::string> ActionNames() const;
  // Measure: the last measurement's text (dx, dy, distance, angle). Points snap unless Shift
  // is held (on the click that places the point); the prompt says so.
  const QString& Measurement() const { return measurement_; }
  static constexpr const char* kMeasureFreeKey = "hold Shift to measure without snapping";
  // True when the window may close (no unsaved changes, or the user said so).
  bool MaybeKeepChanges();
  // Tests answer the unsaved-changes question: 0 save, 1 discard, 2 cancel.
  void SetCloseAnswerForTests(int answer) { close_answer_ = answer; }

  // Refresh: repaint the canvas and update the status bar and panels after a change.
  void Refresh();

 protected:
  void closeEvent(QCloseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void BuildActions();
  void BuildPanels();
  // StartTool takes the name by value: it may be previous_tool_, which it changes.
  void StartTool(std::string name);
  void ApplyDefaults();
  void UpdateStatus();
  // The cursor's world point as the active tool takes it: snapped, unless snapping is
  // suspended (Shift held while measuring).
  void CursorPoint(double* x, double* y) const;
  bool SnapSuspended() const;
  QString MeasureText(double x, double y) const;
  void UpdateLayers();
  // LayerRow: the row of `layer` in the layers list (-1 when it is not listed).
  int LayerRow(int layer) const;
  void UpdateProperties();
  // The panel's settings into the library's commands (their rubber bands follow at the next
  // repaint; the figures they finish carry them).
  void ApplyTrackSettings();
  // The panel edits the selection in the select tool; with a placing tool, that tool's settings.
  bool EditsSelection() const { return tool_ == "select" && !board_.selection().empty(); }
  void ApplyPadSettings(const std::string& tool);
  void UpdateGrid();
  void Before(UINT message, WPARAM wparam, LPARAM lparam);
  void After(UINT message, WPARAM wparam);
  LRESULT OnParentNotify(UINT message, WPARAM wparam, LPARAM lparam);
  bool OnKey(QKeyEvent* event);
  void ShowError(const QString& text);
  void AddRecent(const QStringList& paths);
  QAction* AddAction(const std::string& name, const QString& text, const QString& icon,
                     const QKeySequence& key, std::function<void()> run);

  Board board_;
  QtWindowPort* port_ = nullptr;
  Canvas canvas_{&board_};
  // Finished figures join the board as they come, through the window's figure notification.
  class FigureTaker : public FigureListener {
   public:
    explicit FigureTaker(EditorWindow* w) : w_(w) {}
    void OnFigureFinished(const FinishedFigure& figure) override;

   private:
    EditorWindow* w_;
  };
  FigureTaker figure_taker_{this};
  std::map<std::string, QAction*> actions_;
  std::vector<std::string> action_order_;
  QLabel* position_label_ = nullptr;
  QLabel* zoom_label_ = nullptr;
  QLabel* grid_label_ = nullptr;
  QLabel* prompt_label_ = nullptr;
  QListWidget* layers_ = nullptr;
  std::vector<int> layer_rows_;  // the layer shown in each row of layers_, front first
  QDoubleSpinBox* width_box_ = nullptr;
  QComboBox* cap_box_ = nullptr;
  QComboBox* bend_box_ = nullptr;
  QComboBox* style_box_ = nullptr;
  QDoubleSpinBox* pad_width_box_ = nullptr;
  QDoubleSpinBox* pad_height_box_ = nullptr;
  QDoubleSpinBox* hole_box_ = nullptr;
  QSpinBox* sides_box_ = nullptr;
  QComboBox* layer_box_ = nullptr;
  QLabel* selection_label_ = nullptr;
  bool updating_panels_ = false;
  DisplayUnit unit_ = DisplayUnit::kMm;
  double base_grid_ = 1.0;
  double snap_ = 0.25;
  double track_width_ = 0.25;
  // The track command's settings as the panel shows them: end cap (0 round, 1 square,
  // 2 flat), bend mode (the command's 0..4) and line style (0 the band as the end cap asks,
  // 1 a pen line).
  int end_cap_ = 0, bend_ = 0, line_style_ = 0;
  // Each pad tool's sizes (mm): width (diameter of round and polygon pads), height, hole.
  struct PadSettings {
    double width, height, hole;
    int sides;
  };
  std::map<std::string, PadSettings> pads_;
  double last_zoom_ = 0.0;
  std::string tool_ = "select";
  std::string previous_tool_ = "select";
  bool esc_pending_ = false;
  bool busy_before_ = false;
  // Select tool: a press on a selected object drags it; elsewhere the library's select
  // command draws the box.
  bool dragging_ = false;
  double drag_x_ = 0, drag_y_ = 0, press_x_ = 0, press_y_ = 0;
  bool shift_held_ = false;  // on the last mouse message
  bool measuring_ = false;
  double measure_x_ = 0, measure_y_ = 0;
  QString measurement_;
  QString error_;
  bool quiet_ = false;
  int close_answer_ = -1;
  QStringList recent_;
};

}  // namespace qvis::editor

#endif  // APPS_QVIS_EDITOR_EDITOR_WINDOW_H_
