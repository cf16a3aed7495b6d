# Flags every target of the project shares. Exact arithmetic needs
# -ffp-contract=off (no fused multiply-add) and no fast-math; the i386 preset
# adds -m32 -msse2 -mfpmath=sse so that float and double round as on x86-64.
# GCC 12's vectoriser drops float roundings: after packing two doubles to
# floats it reuses the unrounded doubles for the next product, so it stays
# off (-fno-tree-vectorize).
add_library(splinecore_flags INTERFACE)
target_compile_options(splinecore_flags INTERFACE
  -Wall -Wextra -Wpedantic -ffp-contract=off -fno-fast-math
  $<$<CXX_COMPILER_ID:GNU>:-fno-tree-vectorize>
  $<$<BOOL:${SPLINECORE_WERROR}>:-Werror>)
