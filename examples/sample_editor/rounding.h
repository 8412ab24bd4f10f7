#pragma once

#include "core/json.h"

namespace zorvik::sample_editor {

// Leaves no more digits of the lengths and angles in an answer than mean something: they move by
// about half a millimetre, or half a thousandth of a degree, at most. The world itself keeps all.
void RoundForAnswer(core::Json& value);

}  // namespace zorvik::sample_editor
