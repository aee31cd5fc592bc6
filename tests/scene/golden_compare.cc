// Image comparison for the golden tests.
#include "tests/scene/golden_compare.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace qvis::gdi {

ImageComparison CompareImages(const PixelImage& expected, const PixelImage& actual,
                              std::uint32_t background, int max_listed) {
  ImageComparison result;
  if (expected.width != actual.width || expected.height != actual.height ||
      expected.pixels.size() != actual.pixels.size()) {
    return result;
  }
  result.same_size = true;
  background &= 0xFFFFFFu;
  for (int y = 0; y < expected.height; ++y) {
    for (int x = 0; x < expected.width; ++x) {
      std::uint32_t e = expected.At(x, y);
      std::uint32_t a = actual.At(x, y);
      if (e != background || a != background) ++result.ink;
      if (e == a) continue;
      ++result.differing;
      if (static_cast<int>(result.first.size()) < max_listed) result.first.push_back({x, y, e, a});
    }
  }
  return result;
}

GoldenRule ParseGoldenRule(std::string_view text, std::string* error) {
  GoldenRule rule;
  constexpr std::string_view kTag = "# golden:";
  std::size_t at = text.find(kTag);
  if (at == std::string_view::npos) return rule;
  std::size_t end = text.find('\n', at);
  std::string line(text.substr(at + kTag.size(),
                               end == std::string_view::npos ? std::string_view::npos
                                                             : end - at - kTag.size()));
  std::istringstream words(line);
  std::string kind;
  words >> kind;
  std::string extra;
  if (kind == "exact" && !(words >> extra)) return rule;
  if (kind == "ours" && !(words >> extra)) {
    rule.kind = GoldenRule::Kind::kOurs;
    return rule;
  }
  if (kind == "budget") {
    std::string value;
    words >> value;
    char* stop = nullptr;
    const long long pixels = std::strtoll(value.c_str(), &stop, 10);
    if (!value.empty() && *stop == '\0' && pixels >= 0 && !(words >> extra)) {
      rule.kind = GoldenRule::Kind::kBudget;
      rule.budget = pixels;
      return rule;
    }
  }
  if (error != nullptr) *error = "bad golden rule '" + line + "'";
  return rule;
}

std::string DescribeDifferences(const ImageComparison& c) {
  if (!c.same_size) return "image sizes differ";
  std::ostringstream out;
  char agreement[32];
  std::snprintf(agreement, sizeof agreement, "%.2f", c.AgreementPercent());
  out << c.differing << " differing pixels of " << c.ink << " drawn (agreement " << agreement
      << " %)";
  for (const PixelDifference& d : c.first) {
    char line[96];
    std::snprintf(line, sizeof line, "\n  (%d,%d) expected 0x%06X got 0x%06X", d.x, d.y,
                  static_cast<unsigned>(d.expected), static_cast<unsigned>(d.actual));
    out << line;
  }
  if (c.differing > static_cast<long long>(c.first.size())) out << "\n  ...";
  return out.str();
}

std::vector<GoldenScene> ListGoldenScenes(const std::filesystem::path& root) {
  std::vector<GoldenScene> scenes;
  std::error_code ec;
  if (!std::filesystem::is_directory(root, ec)) return scenes;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root, ec)) {
    if (entry.is_regular_file() && entry.path().extension() == ".txt") {
      scenes.push_back({entry.path(), entry.path().parent_path().lexically_relative(root).generic_string()});
    }
  }
  std::sort(scenes.begin(), scenes.end(),
            [](const GoldenScene& a, const GoldenScene& b) { return a.file < b.file; });
  return scenes;
}

std::string GoldenSuiteName(std::string_view prefix, std::string_view area) {
  std::string suite = std::string(prefix) + std::string(area);
  std::replace(suite.begin(), suite.end(), '/', '_');
  return suite;
}

std::string ReadSceneText(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

}  // namespace qvis::gdi
