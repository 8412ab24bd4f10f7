#pragma once

#include <string>

#include "examples/sample_editor/world.h"

namespace zorvik::sample_editor {

// The hand of the person at the editor: carries out a line such as "mover 4 10 -20" or
// "criar zorvik_rocha 0 0", and returns the line that answers it.
std::string DoAsPerson(World& world, const std::string& line);

}  // namespace zorvik::sample_editor
