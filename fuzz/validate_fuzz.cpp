#include <algorithm>
#include <cstddef>
#include <string_view>

#include "authoring/catalog.h"
#include "authoring/validate.h"
#include "fuzz/generate.h"
#include "fuzz/require.h"
#include "fuzz/slow_json.h"
#include "fuzz/slow_validate.h"

// An input is either two JSON texts on a line each, a schema and a value, or bytes that choose a
// schema of the catalog and make a value for it.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  using namespace zorvik;
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const std::size_t feed = std::min(input.find('\n'), size);
  core::Json schema;
  core::Json value;
  std::string error;
  if (!fuzz::SlowParse(input.substr(0, feed), schema, error) ||
      !fuzz::SlowParse(input.substr(feed), value, error)) {
    fuzz::Bytes bytes(input);
    const authoring::ToolSpec& tool = bytes.Pick(authoring::Tools());
    schema = bytes.Below(4) == 3 ? tool.output : tool.input;
    value = bytes.Below(16) == 15 ? fuzz::AnyValue(bytes) : fuzz::Fitting(schema, bytes);
  }

  const fuzz::Fault fault = fuzz::SlowValidate(schema, value);
  std::string field = "left over";
  std::string reason = "left over";
  const bool fits = authoring::Validate(schema, value, field, reason);
  if (field == fault.field && reason == fault.reason && fits == reason.empty()) return 0;
  const std::string about = core::WriteJson(schema) + "\n" + core::WriteJson(value);
  fuzz::RequireEqual(fault.field + ": " + fault.reason, field + ": " + reason, about.c_str());
  fuzz::Require(false, "verdict", about);
  return 0;
}
