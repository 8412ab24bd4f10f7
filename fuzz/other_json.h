#pragma once

#include <nlohmann/json.hpp>

#include <string>

// JSON as another library reads it. What that takes is JSON beyond doubt.
namespace zorvik::fuzz {

// Like the product, this kind keeps a repeated key's first place and takes the last value.
using OtherJson = nlohmann::ordered_json;

// The product passes any bytes on, and the library refuses what isn't UTF-8.
inline bool IsUtf8(const std::string& text) {
  using Handler = OtherJson::error_handler_t;
  const OtherJson json = text;
  return json.dump(-1, ' ', false, Handler::ignore) == json.dump(-1, ' ', false, Handler::replace);
}

}  // namespace zorvik::fuzz
