// qvis-session: runs a session script on a headless drawing window (see README.md).
#include <cstring>
#include <iostream>
#include <string>

#include "apps/qvis-session/session.h"

int main(int argc, char** argv) {
  std::string script;
  std::string out_dir = ".";
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--out") == 0 && i + 1 < argc) {
      out_dir = argv[++i];
    } else if (script.empty() && argv[i][0] != '-') {
      script = argv[i];
    } else {
      script.clear();
      break;
    }
  }
  if (script.empty()) {
    std::cerr << "usage: qvis-session SCRIPT [--out DIR]\n";
    return 2;
  }
  qvis::session::Session session(out_dir, std::cout);
  const int rc = session.RunFile(script, std::cerr);
  for (const std::string& path : session.written()) std::cout << "wrote " << path << "\n";
  return rc;
}
