// The qvis-gerber command line: render, info and convert over Gerber and Excellon files.
#ifndef APPS_QVIS_GERBER_CLI_H_
#define APPS_QVIS_GERBER_CLI_H_

#include <ostream>
#include <string>
#include <vector>

#include "qvis/artwork/document.h"
#include "qvis/artwork/io/messages.h"

namespace qvis {

// LoadArtworkFile reads a Gerber or Excellon file (told apart by its content) into `layer`.
ReadResult LoadArtworkFile(const std::string& path, Layer* layer);

// RunGerberCli runs one command; returns the process exit status (0 ok, 1 failure, 2 usage).
int RunGerberCli(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

}  // namespace qvis

#endif  // APPS_QVIS_GERBER_CLI_H_
