#pragma once

namespace zorvik::mcp {

// Serves the first of --version, --catalogo and --help among the arguments by printing its text to
// standard output, and ignores all other arguments. Returns false when there is none of the three:
// then the server is to start.
bool ServeInformationOption(int argc, char** argv);

}  // namespace zorvik::mcp
