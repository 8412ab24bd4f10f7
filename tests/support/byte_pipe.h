#pragma once

#include <cstdint>

#include "core/platform/streams.h"

namespace zorvik::tests {

// A pipe of the system between two ends of this process.
class BytePipe {
 public:
  BytePipe();
  ~BytePipe();
  BytePipe(const BytePipe&) = delete;
  BytePipe& operator=(const BytePipe&) = delete;

  core::platform::InputStream Reader() const { return core::platform::InputStream::Borrow(reader); }
  core::platform::OutputStream Writer() const {
    return core::platform::OutputStream::Borrow(writer);
  }
  void CloseReader();
  void CloseWriter();

 private:
  std::intptr_t reader = -1;
  std::intptr_t writer = -1;
};

}  // namespace zorvik::tests
