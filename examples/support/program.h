// What the example programs have in common: failures as exceptions, and main().
#pragma once

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>

#include "ky/image.h"

/// Throws the message of a call that has just failed, for programs that have no use for a failure.
inline void Must(KY_ERRORS error) {
  if (error != KY_OK) throw std::runtime_error(KyGetErrorMessage());
}

/// An image of `width` x `height` pixels. Throws.
template <class T>
KyImage<T> NewImage(int width, int height) {
  KyImage<T> image(width, height);
  Must(KyGetError());
  return image;
}

/// An image of the size of `roi`. Throws.
template <class T>
KyImage<T> SameSize(const KyGenericROI& roi) {
  return NewImage<T>(roi.GetWidth(), roi.GetHeight());
}

/// The folder that examples write to unless they are told another.
inline constexpr const char* kOutputFolder = "demo";

/// main() of a program without options that takes up to `most` operands: runs `body`, and tells the
/// user of an exception.
template <class Body>
int RunProgram(int argc, char** argv, int most, const char* operands, Body body) {
  if (argc > most + 1 || (argc > 1 && argv[1][0] == '-')) {
    std::fprintf(stderr, "usage: %s %s\n", argv[0], operands);
    return EXIT_FAILURE;
  }
  try {
    body();
    return EXIT_SUCCESS;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
    return EXIT_FAILURE;
  }
}
