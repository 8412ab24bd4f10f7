#pragma once

#ifdef _WIN32
#include <windows.h>
#endif

namespace zorvik::tests {

// Whether this is a Windows build that runs under Wine, for the few tests that meet a difference.
inline bool RunsUnderWine() {
#ifdef _WIN32
  return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
#else
  return false;
#endif
}

}  // namespace zorvik::tests
