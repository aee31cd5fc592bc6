#include <iostream>
#include <string>
#include <vector>

#include "apps/qvis-gerber/cli.h"

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  return qvis::RunGerberCli(args, std::cout, std::cerr);
}
