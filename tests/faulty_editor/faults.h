#pragma once

#include <string_view>

#include "core/json.h"
#include "tests/faulty_editor/faulty_editor.h"

namespace zorvik::tests {

// One way to break the rules. `play` is called with the request in place of sound work.
struct Fault {
  std::string_view kind;
  void (*play)(FaultyEditor& editor, const core::Json& request);
};

// The fault of that kind, or null. A new kind is a function and a row in faults.cpp.
const Fault* FindFault(std::string_view kind);

}  // namespace zorvik::tests
