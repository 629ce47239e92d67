// Runs a test's body at each vector width this machine can take, the widest, SSE2 and none,
// and puts the widest back after.
#pragma once

#include "store/VectorWidth.h"

#include <gtest/gtest.h>

template <class Body> void atEachWidth(Body body) {
  for (const VectorWidth width : {VectorWidth::Widest, VectorWidth::Sse2, VectorWidth::None}) {
    limitVectorWidth(width);
    SCOPED_TRACE(static_cast<int>(width));
    body();
  }
  limitVectorWidth(VectorWidth::Widest);
}
