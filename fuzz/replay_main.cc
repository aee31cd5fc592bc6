// Replay driver for compilers without libFuzzer: runs the fuzz entry point
// on every file given (or found in every directory given), and on every
// prefix of each, so that the truncation paths run in every build.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size);

namespace {

int ReplayFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    std::fprintf(stderr, "replay: cannot read %s\n", path.string().c_str());
    return 1;
  }
  const std::vector<std::uint8_t> bytes((std::istreambuf_iterator<char>(in)),
                                        std::istreambuf_iterator<char>());
  for (size_t len = 0; len <= bytes.size(); ++len) {
    LLVMFuzzerTestOneInput(bytes.data(), len);
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  int failures = 0;
  size_t files = 0;
  for (int i = 1; i < argc; ++i) {
    const std::filesystem::path arg(argv[i]);
    if (std::filesystem::is_directory(arg)) {
      for (const auto& entry : std::filesystem::directory_iterator(arg)) {
        if (!entry.is_regular_file()) continue;
        failures += ReplayFile(entry.path());
        ++files;
      }
    } else {
      failures += ReplayFile(arg);
      ++files;
    }
  }
  std::printf("replay: %zu inputs\n", files);
  return (failures != 0 || files == 0) ? 1 : 0;
}
