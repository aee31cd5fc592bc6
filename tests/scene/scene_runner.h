// The scene runner: draws a small text scene (one GDI call per line: canvas, pen, brush, rop2,
// line, polygon, regions, paths, text, blits, alpha drawing, checkpoints) through qvis::gdi and
// returns the pixels. Reference images of the same scenes drawn by real GDI are the device
// layer's golden fixtures. A test facility: it is not part of the library.
#ifndef QVIS_TESTS_SCENE_SCENE_RUNNER_H_
#define QVIS_TESTS_SCENE_SCENE_RUNNER_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "qvis/gdi/png_io.h"

namespace qvis::gdi {

// The scene language: one command per line, words separated by blanks, `#` starts a comment,
// "double quotes" hold text with blanks. Colours are 0xRRGGBB (0xAARRGGBB for gp_*); numbers
// may be decimal or 0x hex and saturate to 32 bits. Symbolic names or numbers are accepted
// wherever a mode is asked for. The first command must be `canvas W H COLOR` (1..4096 a side).
//   state:   clear COLOR | save [NAME] | target canvas|src | pen STYLE W COLOR |
//            extpen STYLE W COLOR [cap_*] [join_*] [cosmetic] [style N...] (STYLE user: the
//            lengths after `style`) | brush solid COLOR |
//            brush hatch N COLOR | brush hollow | rop2 N | bkmode transparent|opaque |
//            bkcolor C | textcolor C | fillmode alternate|winding | arcdir ccw|cw |
//            brushorg X Y | miterlimit F | textalign N | textcharextra N |
//            font FACE HEIGHT ESCAPEMENT WEIGHT [italic] [underline] [strikeout]
//   drawing: moveto | lineto | line | polyline | polylineto | polygon MODE ... |
//            polypolygon MODE N1,N2,... ... | rectangle | ellipse | roundrect |
//            arc | arcto | pie | chord L T R B XS YS XE YE | setpixel | fillrect | patblt
//   regions: rgn_rect | rgn_ellipse NAME L T R B | rgn_polygon NAME MODE ... |
//            combine DST A B and|or|xor|diff|copy | fillrgn NAME COLOR | fillrgn NAME hatch N C |
//            framergn NAME COLOR W H | paintrgn | invertrgn NAME | cliprgn NAME|none
//   paths:   beginpath | endpath | closefigure | abortpath | strokepath | fillpath |
//            strokeandfillpath
//   text, blits: textout X Y "TEXT" | exttextout X Y 0|opaque|clipped|opaque+clipped
//            L,T,R,B|- "TEXT" [DX ...] | srcdc mono|color W H COLOR | srcdc_text mono|color C "T" |
//            bitblt X Y W H SX SY ROP | bitblt_srcinvert X Y
//   alpha:   gp_drawline | gp_drawellipse | gp_drawarc | gp_drawpie | gp_fillpolygon |
//            gp_fillrect | gp_fillrgn | gp_smoothing N (drawn without anti-aliasing)

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

// SplitSceneLine splits one line of the scene language into *words (replacing them): blanks
// separate words, "double quotes" hold a word with blanks, `#` starts a comment. False when a
// quote is not closed (*words then holds the words before it).
bool SplitSceneLine(std::string_view line, std::vector<std::string>* words);

}  // namespace qvis::gdi

#endif  // QVIS_TESTS_SCENE_SCENE_RUNNER_H_
