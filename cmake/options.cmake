# How everything here is compiled.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(NOT CMAKE_BUILD_TYPE AND PROJECT_IS_TOP_LEVEL)
  set(CMAKE_BUILD_TYPE Release)
endif()

find_program(KY_CCACHE ccache)
if(KY_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${KY_CCACHE})
endif()

find_package(hwy 1.0 REQUIRED)

# Shared by the libraries, their tests and their benchmarks: the set of targets that Highway compiles
# decides what its headers define. The scalar target is the plain path, so it must always be among them.
# Of AVX-512 only the later form, with byte permutations, is compiled; processors that have only the
# first form slow down under AVX-512 and run AVX2. Builds for sanitizers, which are slow to compile,
# leave out targets that differ little from another one.
add_library(ky_build_options INTERFACE)
set(disabled ${KY_DISABLED_TARGETS})
if(CMAKE_SYSTEM_PROCESSOR MATCHES "aarch64|arm64")
  # Every 64-bit Arm processor has NEON. As long as Highway believes that it cannot ask the processor,
  # it compiles NEON without attributes of functions, and without instructions for AES that some lack.
  # SVE does not tell compilers the size of a vector, which kernels have to know.
  target_compile_definitions(ky_build_options INTERFACE TOOLCHAIN_MISS_SYS_AUXV_H)
  list(APPEND disabled HWY_SVE HWY_SVE2 HWY_SVE_256 HWY_SVE2_128)
  # g++ 12.2 turns the number of true comparisons in straight-line code into its negative there.
  target_compile_options(ky_build_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-fno-tree-slp-vectorize>)
endif()
list(JOIN disabled "|" disabled)
target_compile_definitions(ky_build_options INTERFACE
  HWY_COMPILE_ALL_ATTAINABLE HWY_WANT_AVX3_DL "HWY_DISABLED_TARGETS=(${disabled})")
# No contraction: a fused a * b + c differs from one processor to another. clang would have braces
# repeated around the members of nested aggregates. What a library exports may be inlined within it,
# which clang takes for granted: the checks of a call take 34 ns instead of 43.
target_compile_options(ky_build_options INTERFACE
  -ffp-contract=off -Wall -Wextra -Wshadow -Wconversion -Wno-sign-conversion -Wno-missing-braces
  $<$<BOOL:${KY_WERROR}>:-Werror>
  $<$<CXX_COMPILER_ID:GNU>:-fno-semantic-interposition>)
# For tests: what sanitizers pass over.
set(KY_SUPPRESSIONS "LSAN_OPTIONS=set:suppressions=${PROJECT_SOURCE_DIR}/cmake/leaks.supp:print_suppressions=0")
if(KY_SANITIZE STREQUAL "thread")
  set(KY_SUPPRESSIONS "TSAN_OPTIONS=set:suppressions=${PROJECT_SOURCE_DIR}/cmake/races.supp:print_suppressions=0")
endif()
if(KY_SANITIZE)
  target_compile_definitions(ky_build_options INTERFACE KY_SANITIZED=1)
  target_compile_options(ky_build_options INTERFACE
    -fsanitize=${KY_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(ky_build_options INTERFACE -fsanitize=${KY_SANITIZE})
endif()
