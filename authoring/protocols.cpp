#include "authoring/protocols.h"

namespace zorvik::authoring {

const char* const kServerVersion = ZORVIK_VERSION;

const std::vector<std::string>& LegacyProtocols() {
  static const std::vector<std::string> protocols = {"2025-11-25", "2025-06-18", "2025-03-26"};
  return protocols;
}

}  // namespace zorvik::authoring
