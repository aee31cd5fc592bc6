// The scene runner: draws a small text scene (one GDI call per line: canvas, pen, brush, rop2,
// line, polygon, regions, paths, text, blits, alpha drawing, checkpoints) through qvis::gdi and
// returns the pixels. Reference images of the same scenes drawn by real GDI are the device
// layer's golden fixtures; apps use it to show a scene. Owner: gditext.
#ifndef QVIS_GDI_SCENE_SCENE_RUNNER_H_
#define QVIS_GDI_SCENE_SCENE_RUNNER_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "qvis/gdi/png_io.h"

namespace qvis::gdi {

// SceneCheckpoint is the canvas as a `save NAME` line found it.
struct SceneCheckpoint {
  std::string name;
  PixelImage image;
};

// SceneOutcome is what running a scene produced.
struct SceneOutcome {
  bool ok = false;
  // "NAME:LINE: error: ..." when the scene could not be run (bad syntax, unknown command, a
  // command the engine does not offer); the images then hold what was drawn before that line.
  std::string error;
  // "NAME:LINE: note: ..." for calls that reported failure (returned 0); the run goes on.
  std::vector<std::string> notes;
  std::uint32_t background = 0;  // the canvas colour, 0xRRGGBB
  PixelImage final_image;
  std::vector<SceneCheckpoint> checkpoints;
};

// RunScene runs the scene text; `name` prefixes the diagnostics. An empty text or one whose
// first command is not `canvas` gives ok = false with an error and no image.
SceneOutcome RunScene(std::string_view text, std::string_view name = "scene");
// RunSceneFile reads and runs a scene file; an unreadable file gives ok = false.
SceneOutcome RunSceneFile(const std::string& path);

}  // namespace qvis::gdi

#endif  // QVIS_GDI_SCENE_SCENE_RUNNER_H_
