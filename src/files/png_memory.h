// Memory for libpng.
#pragma once

#include <png.h>

#include <new>

namespace ky {

// What libpng allocates comes from operator new, like everything else, and failures are remembered.
struct PngMemory {
  bool failed = false;

  static png_voidp Allocate(png_structp png, png_alloc_size_t size) {
    void* const memory = ::operator new(size, std::nothrow);
    if (memory == nullptr) static_cast<PngMemory*>(png_get_mem_ptr(png))->failed = true;
    return memory;
  }
  static void Free(png_structp, png_voidp memory) { ::operator delete(memory); }
};

}  // namespace ky
