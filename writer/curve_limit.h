// The most values a curve may hold when it is written: its length and the
// row of an error are signed 32-bit numbers at the interface, so a longer
// curve would be cut to its length modulo 2^32 or read past its arrays.
#ifndef QUARL_WRITER_CURVE_LIMIT_H
#define QUARL_WRITER_CURVE_LIMIT_H

#include <cstddef>

namespace quarl::detail {

// 2^31 - 1. The tests lower it, since a curve at the real bound takes 16 GB.
extern size_t g_maxCurveValues;

}  // namespace quarl::detail

#endif
