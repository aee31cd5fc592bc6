// Comparison of a rendered image with its reference: counts, the first differing pixels and the
// agreement measure that golden tests report.
#ifndef QVIS_TESTS_SCENE_GOLDEN_COMPARE_H_
#define QVIS_TESTS_SCENE_GOLDEN_COMPARE_H_

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "qvis/gdi/png_io.h"

namespace qvis::gdi {

// PixelDifference is one pixel where the two images disagree (colours 0xRRGGBB).
struct PixelDifference {
  int x = 0;
  int y = 0;
  std::uint32_t expected = 0;
  std::uint32_t actual = 0;
};

// ImageComparison summarises two images of one scene.
struct ImageComparison {
  bool same_size = false;
  long long differing = 0;  // pixels that differ
  // Pixels that either image changed from the canvas background: the drawn part, against which
  // agreement is measured so that an empty canvas cannot make a wrong drawing look good.
  long long ink = 0;
  std::vector<PixelDifference> first;  // up to the limit asked for, in row order

  // AgreementPercent is the share of the ink on which both images agree (100 with no ink).
  double AgreementPercent() const {
    if (!same_size) return 0.0;
    if (ink == 0) return 100.0;
    return 100.0 * static_cast<double>(ink - differing) / static_cast<double>(ink);
  }
};

// CompareImages compares pixel by pixel; images of different sizes give same_size = false and
// nothing else.
ImageComparison CompareImages(const PixelImage& expected, const PixelImage& actual,
                              std::uint32_t background, int max_listed = 10);

// GoldenRule says how strictly a scene's images must match their references. A budget is a
// count of pixels, never a share of the image: a share hides hundreds of wrong pixels.
//   kExact   every pixel equals the platform's reference;
//   kBudget  at most `budget` pixels of each image differ from the platform's reference;
//   kOurs    every pixel equals our own fixture (<scene>.ours.png), drawn by this engine with
//            our font stack where the platform's reference face differs; the platform's
//            reference is compared and reported too.
struct GoldenRule {
  enum class Kind { kExact, kBudget, kOurs };
  Kind kind = Kind::kExact;
  long long budget = 0;  // for kBudget: differing pixels allowed per image
};

// ParseGoldenRule reads the "# golden: exact | budget N | ours" comment of a scene (the first
// one found); no such line means exact. N is a whole number of pixels. A malformed rule is an
// error: `error` gets the reason and the rule stays exact.
GoldenRule ParseGoldenRule(std::string_view scene_text, std::string* error);

// DescribeDifferences formats a comparison for a failure message: count, agreement, and the
// listed pixels as "(x,y) expected 0xRRGGBB got 0xRRGGBB".
std::string DescribeDifferences(const ImageComparison& comparison);

// GoldenScene is one scene file of the golden tree, <root>/<area>/<scene>.txt; `area` is the
// folder below the root ('/'-separated where it is deeper than one level).
struct GoldenScene {
  std::filesystem::path file;
  std::string area;
};

// ListGoldenScenes lists every scene below `root`, sorted by path; none when `root` is not a
// folder.
std::vector<GoldenScene> ListGoldenScenes(const std::filesystem::path& root);

// GoldenSuiteName names the test suite of an area's scenes: `prefix` followed by the area, each
// '/' turned to '_'.
std::string GoldenSuiteName(std::string_view prefix, std::string_view area);

// ReadSceneText reads a whole file ("" when it cannot be read).
std::string ReadSceneText(const std::filesystem::path& path);

}  // namespace qvis::gdi

#endif  // QVIS_TESTS_SCENE_GOLDEN_COMPARE_H_
