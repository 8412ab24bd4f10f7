#pragma once

namespace zorvik::mcp {

// Serves the first of --version, --catalogo and --help among the arguments by printing its text to
// standard output. False when there is none: the server is to be started. All other arguments are
// ignored.
bool ServeInformationOption(int argc, char** argv);

}  // namespace zorvik::mcp
