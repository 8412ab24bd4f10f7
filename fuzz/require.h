#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace zorvik::fuzz {

// Ends the run with a finding unless `holds`. `what` and `about` tell it.
inline void Require(bool holds, const char* what, const std::string& about) {
  if (holds) return;
  std::fprintf(stderr, "FINDING: %s: %s\n", what, about.c_str());
  std::abort();
}

inline void RequireEqual(const std::string& expected, const std::string& got, const char* what) {
  if (expected == got) return;
  Require(false, what, "\n  expected: " + expected + "\n  got:      " + got);
}

}  // namespace zorvik::fuzz
