// Which vector instructions the byte kernels use: the widest that the processor has, unless
// a test or benchmark narrows the choice to check or time each kernel against the others.
#pragma once

enum class VectorWidth {
  Widest, // AVX2 where the processor has it, else SSE2 on x86-64, else none
  Sse2,   // at most SSE2
  None,   // one byte or word at a time
};

// Narrows (or, with Widest, restores) the choice for the whole process. Not for production
// code: it is meant to be set once, before any kernel runs.
void limitVectorWidth(VectorWidth width);

// Whether the kernels may use AVX2, and SSE2.
bool useAvx2();
bool useSse2();
