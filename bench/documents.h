#pragma once

#include <string>
#include <vector>

namespace zorvik::bench {

// A JSON text that a server may have to read.
struct Document {
  std::string name;
  std::string text;
};

// What really passes through, and behind it what somebody could send to wear a server out (the
// names of those begin with "hostile"). Made at the first call.
const std::vector<Document>& Documents();

// Characters of base64 that no compression or prediction has an easy time with.
std::string Base64Noise(std::size_t size);

// The `arguments` of an objects_create with as many objects, each with all its fields.
std::string FullObjects(int count);

}  // namespace zorvik::bench
