// Comparison of a rendered image with its reference: counts, the first differing pixels and the
// agreement measure that golden tests report.
#ifndef QVIS_TESTS_SCENE_GOLDEN_COMPARE_H_
#define QVIS_TESTS_SCENE_GOLDEN_COMPARE_H_

#include <cstdint>
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

// GoldenRule says how strictly a scene's images must match its references.
struct GoldenRule {
  enum class Kind { kExact, kAgreement, kReport };
  Kind kind = Kind::kExact;
  double min_agreement = 100.0;  // for kAgreement, in per cent
};

// ParseGoldenRule reads the "# golden: exact | agreement N | report" comment of a scene (the
// first one found); no such line means exact. A malformed rule is an error: `error` gets the
// reason and the rule stays exact.
GoldenRule ParseGoldenRule(std::string_view scene_text, std::string* error);

// DescribeDifferences formats a comparison for a failure message: count, agreement, and the
// listed pixels as "(x,y) expected 0xRRGGBB got 0xRRGGBB".
std::string DescribeDifferences(const ImageComparison& comparison);

}  // namespace qvis::gdi

#endif  // QVIS_TESTS_SCENE_GOLDEN_COMPARE_H_
