/// @file
/// The visibility macro of everything public; all else in the libraries is hidden.
#pragma once

/// Marks everything public.
#define KY_API __attribute__((visibility("default")))
