#pragma once

#include <string>
#include <vector>

#include "core/json.h"

namespace zorvik::editor_check {

// The smallest value that the schema lets pass: required fields only, the shortest lists and texts,
// numbers as near to 0 as they may be. Null when this finds none.
core::Json SmallestValid(const core::Json& schema);

// Values that the schema doesn't let pass, each wrong in one way.
std::vector<core::Json> Refused(const core::Json& schema);

// The members that the description of a row's output names, without those inside of others.
std::vector<std::string> NamedMembers(const std::string& description);

}  // namespace zorvik::editor_check
