#pragma once

#include <cstdint>
#include <utility>

#include "core/platform/streams.h"

namespace zorvik::tests {

// A descriptor (POSIX) or handle (Windows) that closes itself.
class OwnedHandle {
 public:
  explicit OwnedHandle(std::intptr_t opened = -1) : native(opened) {}
  OwnedHandle(OwnedHandle&& other) noexcept : native(std::exchange(other.native, -1)) {}
  OwnedHandle& operator=(OwnedHandle&& other) noexcept {
    std::swap(native, other.native);
    return *this;
  }
  ~OwnedHandle() { Close(); }

  void Close();
  std::intptr_t Get() const { return native; }

 private:
  std::intptr_t native;
};

// A pipe of the system between two ends of this process, which no child inherits.
class BytePipe {
 public:
  enum class Kind : std::uint8_t { Pipe, SocketPair };  // On Windows both are a pipe.

  explicit BytePipe(Kind kind = Kind::Pipe);

  core::platform::InputStream Reader() const {
    return core::platform::InputStream::Borrow(reader.Get());
  }
  core::platform::OutputStream Writer() const {
    return core::platform::OutputStream::Borrow(writer.Get());
  }
  void CloseReader() { reader.Close(); }
  void CloseWriter() { writer.Close(); }

  OwnedHandle reader;
  OwnedHandle writer;
};

}  // namespace zorvik::tests
