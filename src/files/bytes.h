// The bytes of a file, and what kind of picture they are.
#pragma once

#include <cstddef>
#include <cstdint>

#include "foundation/growing.h"
#include "ky/status.h"

namespace ky {

// Bytes that live elsewhere.
struct Bytes {
  const std::uint8_t* first = nullptr;
  std::size_t size = 0;
};

enum class FileKind { kOther, kPng, kPgm, kPpm };

// By the first bytes.
FileKind KindOf(const Bytes& bytes) noexcept;

// Reads a file, and stops when its first bytes are those of no picture.
KY_ERRORS ReadFile(const char* path, Growing<std::uint8_t>& contents) noexcept;

}  // namespace ky
