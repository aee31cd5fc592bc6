// Golden tests: every tests/golden/<area>/<scene>.txt is drawn by the engine and compared with
// <scene>.png (the final canvas) and <scene>.<NAME>.png (each `save NAME`), which real GDI
// rendered from the same scene. One test per scene, named Golden_<area>.<scene>. The scene's
// "# golden:" comment picks exact comparison (the default), a budget of differing pixels, or
// exact comparison with our own fixtures <scene>[.<NAME>].ours.png where the platform's face
// differs (then the platform's reference is reported as well). On a mismatch the engine's
// images are written to $QVIS_GOLDEN_OUT (default /tmp/qvis-golden/<area>/) for inspection.
// With QVIS_GOLDEN_WRITE_OURS=1 the test writes the "ours" fixtures of such scenes instead of
// checking them (to be reviewed by eye before they are committed).
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "qvis/gdi/png_io.h"
#include "tests/scene/golden_compare.h"
#include "tests/scene/scene_runner.h"

namespace qvis::gdi {
namespace {

namespace fs = std::filesystem;

fs::path OutputDir(const std::string& area) {
  const char* env = std::getenv("QVIS_GOLDEN_OUT");
  fs::path dir = env != nullptr && *env != '\0' ? fs::path(env) : fs::path("/tmp/qvis-golden");
  return dir / area;
}

class GoldenSceneTest : public testing::Test {
 public:
  GoldenSceneTest(std::string area, fs::path scene) : area_(std::move(area)), scene_(std::move(scene)) {}

  void TestBody() override {
#ifdef _WIN32
    // The text fixtures are drawn with the FreeType backend's faces; a Windows build takes its
    // glyphs from the system's fonts (text_test.cc checks that backend's rules on pixels).
    if (area_ == "text") GTEST_SKIP() << "text fixtures belong to the FreeType font backend";
#endif
    const std::string text = ReadSceneText(scene_);
    std::string rule_error;
    const GoldenRule rule = ParseGoldenRule(text, &rule_error);
    ASSERT_TRUE(rule_error.empty()) << scene_ << ": " << rule_error;

    const std::string stem = scene_.stem().string();
    SceneOutcome outcome = RunScene(text, scene_.filename().string());
    ASSERT_TRUE(outcome.ok) << outcome.error;

    // The final canvas first, then each checkpoint that has a reference image.
    struct Pair {
      std::string label;
      const PixelImage* actual;
      fs::path expected;
    };
    std::vector<Pair> pairs = {{"final", &outcome.final_image, scene_.parent_path() / (stem + ".png")}};
    for (const SceneCheckpoint& cp : outcome.checkpoints) {
      pairs.push_back({cp.name, &cp.image, scene_.parent_path() / (stem + "." + cp.name + ".png")});
    }
    const bool write_ours = std::getenv("QVIS_GOLDEN_WRITE_OURS") != nullptr;
    for (const Pair& pair : pairs) {
      PixelImage expected;
      if (!ReadPngImage(pair.expected.string(), &expected)) {
        ADD_FAILURE() << "missing or unreadable reference " << pair.expected;
        continue;
      }
      ImageComparison cmp = CompareImages(expected, *pair.actual, outcome.background);
      ASSERT_TRUE(cmp.same_size) << pair.expected << ": reference is " << expected.width << "x"
                                 << expected.height << ", engine drew " << pair.actual->width
                                 << "x" << pair.actual->height;
      std::printf("[ golden   ] %s/%s %s: %lld of %lld drawn pixels differ from the platform\n",
                  area_.c_str(), stem.c_str(), pair.label.c_str(), cmp.differing, cmp.ink);
      bool pass = (rule.kind == GoldenRule::Kind::kExact && cmp.differing == 0) ||
                  (rule.kind == GoldenRule::Kind::kBudget && cmp.differing <= rule.budget);
      if (rule.kind == GoldenRule::Kind::kOurs) {
        // The platform's face is not ours: the check is against our own fixture.
        fs::path ours_path = pair.expected;
        ours_path.replace_extension(".ours.png");
        if (write_ours) {
          ASSERT_TRUE(WritePngImage(*pair.actual, ours_path.string())) << ours_path;
          continue;
        }
        PixelImage ours;
        if (!ReadPngImage(ours_path.string(), &ours)) {
          ADD_FAILURE() << "missing or unreadable fixture " << ours_path;
          continue;
        }
        cmp = CompareImages(ours, *pair.actual, outcome.background);
        ASSERT_TRUE(cmp.same_size) << ours_path << ": wrong size";
        std::printf("[ golden   ] %s/%s %s: %lld of %lld drawn pixels differ from our fixture\n",
                    area_.c_str(), stem.c_str(), pair.label.c_str(), cmp.differing, cmp.ink);
        pass = cmp.differing == 0;
      }
      if (!pass || (cmp.differing > 0 && std::getenv("QVIS_GOLDEN_KEEP") != nullptr)) {
        std::error_code ec;
        fs::create_directories(OutputDir(area_), ec);
        fs::path out = OutputDir(area_) / (stem + (pair.label == "final" ? "" : "." + pair.label) +
                                           ".actual.png");
        WritePngImage(*pair.actual, out.string());
      }
      EXPECT_TRUE(pass) << scene_ << " (" << pair.label << "): " << DescribeDifferences(cmp)
                        << "\n  engine image: " << OutputDir(area_).string();
    }
  }

 private:
  std::string area_;
  fs::path scene_;
};

// Registers one test per scene file when the test binary starts.
const bool kRegistered = [] {
  for (const GoldenScene& scene : ListGoldenScenes(fs::path(QVIS_TEST_DATA_DIR) / "golden")) {
    const std::string suite = GoldenSuiteName("Golden_", scene.area);
    testing::RegisterTest(suite.c_str(), scene.file.stem().string().c_str(), nullptr, nullptr,
                          scene.file.string().c_str(), 0, [scene]() -> testing::Test* {
                            return new GoldenSceneTest(scene.area, scene.file);
                          });
  }
  return true;
}();

}  // namespace
}  // namespace qvis::gdi
