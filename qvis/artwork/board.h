// ArtBoard: a board document being viewed and edited. It keeps an ArtDocument, a spatial index
// over every live object (so drawing a view and hit-testing cost what is near, not what the
// board holds), a selection, and an undo stack whose every edit knows how to reverse itself.
//
// Objects are named by ObjectRef (layer index, slot in the layer's object list). Slots are
// stable for the life of the board: deleting an object leaves its slot dead (undo revives it)
// and never renumbers the others, so references held by the host, the selection and the undo
// stack stay valid. Document() gives the live objects only, in drawing order.
#ifndef QVIS_ARTWORK_BOARD_H_
#define QVIS_ARTWORK_BOARD_H_

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "qvis/artwork/document.h"
#include "qvis/compat/export.h"

namespace qvis {

struct ObjectRef {
  int layer = -1;
  std::uint32_t index = 0;
  friend bool operator==(const ObjectRef&, const ObjectRef&) = default;
  friend auto operator<=>(const ObjectRef&, const ObjectRef&) = default;
};

// The view a board was last shown in, in the window's own terms: the world point at the
// client area's origin in the design's unit, and the zoom in pixels per unit.
struct BoardView {
  double view_x = 0.0;
  double view_y = 0.0;
  double zoom = 1.0;
  int unit = 0;          // the design's unit code (0 mm, 1 inch, ...)
  int active_layer = 0;  // where new figures go
  friend bool operator==(const BoardView&, const BoardView&) = default;
};

class ArtBoard;

// ArtEdit is one reversible change. Apply does it, Revert undoes it; the board calls them in
// strict last-in first-out order, so an edit may rely on the board being exactly as it left it.
class ArtEdit {
 public:
  virtual ~ArtEdit() = default;
  virtual void Apply(ArtBoard& board) = 0;
  virtual void Revert(ArtBoard& board) = 0;
  virtual std::string Name() const = 0;
};

// What an edit or undo changed, for a host that repaints or refreshes its panels.
class BoardListener {
 public:
  virtual ~BoardListener() = default;
  // `area` holds the board area whose drawing may have changed (empty: none, e.g. only the
  // modified flag or the selection moved).
  virtual void OnBoardChanged(const ArtBox& area) = 0;
};

enum class BoxHit : std::uint8_t {
  kInside,      // objects whose whole extent lies inside the box
  kIntersects,  // objects whose extent meets the box
};

class QVIS_API ArtBoard {
 public:
  ArtBoard();
  explicit ArtBoard(ArtDocument doc, BoardView view = {});
  ~ArtBoard();
  ArtBoard(ArtBoard&&) noexcept;
  ArtBoard& operator=(ArtBoard&&) noexcept;
  ArtBoard(const ArtBoard&) = delete;
  ArtBoard& operator=(const ArtBoard&) = delete;

  // --- reading ---
  int LayerCount() const;
  // The layer with every slot, dead ones included (see IsLive).
  const Layer& layer(int i) const;
  bool IsLive(ObjectRef r) const;
  const ArtObject& object(ObjectRef r) const;
  std::int64_t LiveCount() const;
  // The document with the live objects only, in order.
  ArtDocument Document() const;
  const BoardView& view() const { return view_; }
  void set_view(const BoardView& v) { view_ = v; }

  // The extent of one object (its outline with the aperture), as the index keeps it.
  ArtBox Bounds(ObjectRef r) const;
  // Board extent over the visible layers.
  ArtBox Extent() const;

  // --- spatial queries (logarithmic in the board, linear in what they return) ---
  // Live objects of `layer` whose extent meets `area`, in drawing order.
  std::vector<std::uint32_t> Visible(int layer, const ArtBox& area) const;
  // Objects of visible layers under point (x, y) within `tolerance`, topmost first (last
  // layer in order, last drawn object first). Exact: the object's outline is tested.
  std::vector<ObjectRef> HitPoint(Coord x, Coord y, Coord tolerance) const;
  std::vector<ObjectRef> HitBox(const ArtBox& box, BoxHit mode) const;

  // --- selection (not an edit: not undone) ---
  const std::vector<ObjectRef>& selection() const { return selection_; }
  void Select(std::vector<ObjectRef> refs);
  bool IsSelected(ObjectRef r) const;

  // --- editing; each call is one undo step unless inside BeginGroup/EndGroup ---
  ObjectRef AddObject(int layer, ArtObject object);
  void DeleteObjects(const std::vector<ObjectRef>& refs);
  void MoveObjects(const std::vector<ObjectRef>& refs, Coord dx, Coord dy);
  void SetAperture(const std::vector<ObjectRef>& refs, int aperture);
  // Gives tracks and arcs a round aperture of diameter `width`, adding it to the layer's
  // table when the layer has none.
  void SetWidth(const std::vector<ObjectRef>& refs, Coord width);
  // Moves objects to another layer (at its end), copying their apertures over. Returns the
  // new references, in the order given.
  std::vector<ObjectRef> SetLayer(const std::vector<ObjectRef>& refs, int layer);
  // Adds a layer at the end; returns its index.
  int AddLayer(Layer layer);
  // Changes a layer's name, colour, visibility, order or function (its objects stay).
  void SetLayerProperties(int layer, const std::string& name, std::uint32_t colour,
                          bool visible, int order, const std::string& file_function);
  // Finds the D code of an aperture equal to `a` in the layer, or adds one (as an edit).
  int EnsureAperture(int layer, const Aperture& a);

  // Runs `edit` and records it.
  void Do(std::unique_ptr<ArtEdit> edit);
  // Edits between BeginGroup and EndGroup are one undo step (groups nest; the outermost wins).
  void BeginGroup(std::string name);
  void EndGroup();
  bool CanUndo() const;
  bool CanRedo() const;
  std::string UndoName() const;
  std::string RedoName() const;
  void Undo();
  void Redo();
  // The current state is what is saved: IsModified() is false until the next edit, or until
  // undo/redo leave this state.
  void MarkClean();
  bool IsModified() const;

  void AddListener(BoardListener* l);
  void RemoveListener(BoardListener* l);

  // --- primitive operations for ArtEdit implementations (keep the index in step) ---
  std::uint32_t AppendSlot(int layer, ArtObject object);
  void PopSlot(int layer);
  void SetLive(ObjectRef r, bool live);
  // Replaces an object in place (re-indexes it).
  void Replace(ObjectRef r, ArtObject object);
  void SetAperture(int layer, int code, const Aperture& a);
  void EraseAperture(int layer, int code);
  Layer& MutableLayerHeader(int layer);  // name, colour ...: never objects
  void PushLayer(Layer layer);
  void PopLayer();
  void Touch(const ArtBox& area);

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
  BoardView view_;
  std::vector<ObjectRef> selection_;
};

}  // namespace qvis

#endif  // QVIS_ARTWORK_BOARD_H_
