// The table of one level. Included by simd/<level>.cpp after its target options.
#pragma once

#include "runtime/kernels/simd/gemm.hpp"
#include "runtime/kernels/simd/rotate.hpp"
#include "runtime/kernels/simd/solve.hpp"
#include "runtime/kernels/simd/substitute.hpp"
#include "runtime/kernels/simd/symmetric.hpp"
#include "runtime/kernels/simd/transpose.hpp"
#include "runtime/kernels/simd/vectors.hpp"

namespace zent::fast::ZENT_LEVEL {

template <class T>
constexpr Kernels<T> table = {axpy<T>,
                              scal<T>,
                              dot<T>,
                              sum_of_squares<T>,
                              asum<T>,
                              rot<T>,
                              swap<T>,
                              iamax<T>,
                              add_columns<T>,
                              dot_columns<T>,
                              add_outer<T>,
                              mirror_columns<T>,
                              gemm<T>,
                              solve_rows<T>,
                              rotate<T>,
                              transpose<T>,
                              transpose_square<T>,
                              substitute<T>};

}  // namespace zent::fast::ZENT_LEVEL
