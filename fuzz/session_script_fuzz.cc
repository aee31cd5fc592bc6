// Fuzz target for the session script reader of apps/qvis-session: any bytes are a script that a
// fresh session runs line by line over a headless window. Every script must end in success or
// in a reported error ("NAME:LINE: error: ..."); a crash, a sanitizer report, a hang or another
// exception is a bug. File access is off (a script cannot read or write files here), and the
// window is kept small so that a run stays fast. Built as a libFuzzer target under clang and as
// a corpus replay driver otherwise (see README.md).
#include <cstdint>
#include <sstream>
#include <string>

#include "apps/qvis-session/session.h"
#include "fuzz/fuzz_util.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  if (size > 4096) return 0;  // longer scripts only repeat what shorter ones reach
  std::string text(reinterpret_cast<const char*>(data), size);
  // Windows larger than 512 pixels a side are refused here: they exercise nothing new and a few
  // of them would make every run slow.
  std::istringstream lines(text);
  std::string line;
  while (std::getline(lines, line)) {
    std::istringstream words(line);
    std::string verb;
    long w = 0, h = 0;
    if (words >> verb && verb == "window" && words >> w >> h && (w > 512 || h > 512)) return 0;
  }
  std::ostringstream out;
  std::ostringstream err;
  qvis::session::Session session("", out, 64, 48);
  session.AllowFiles(false);
  const int status = session.RunScript(text, "fuzz.qs", err);
  qvis::fuzz::CheckInvariant(status == 0 || status == 1, "session_script_fuzz", "status 0 or 1");
  qvis::fuzz::CheckInvariant(status == 0 || err.str().find(": error: ") != std::string::npos,
                             "session_script_fuzz", "a failed script reports its error");
  return 0;
}
